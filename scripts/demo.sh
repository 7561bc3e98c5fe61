#!/usr/bin/env bash
# Builds the examples and runs them over real texts of this machine: licences, the Unicode data files
# and readings of Chinese, Japanese and Korean characters. textinfo converts each text between the encodings,
# and the result is compared with what iconv writes, byte for byte. findfiles walks a tree, and find beside it.
# agent inspects the texts in several threads, one damaged, one missing and one without a recorded checksum, and
# its trace file is shown. In the end it encrypts a value with the cryptographic module, which tvxssl-info shows.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh base test demo crypto
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
{ cmake --preset release && cmake --build --preset release --target textinfo findfiles agent tvxssl-info; } >"$work/log" 2>&1 ||
  { cat "$work/log" >&2; exit 1; }
textinfo=$PWD/build/release/examples/textinfo
findfiles=$PWD/build/release/examples/findfiles
agent=$PWD/build/release/examples/agent
tvxssl_info=$PWD/build/release/tools/tvxssl-info

declare -A ICONV_NAMES=([utf8]=UTF-8 [utf16]=UTF-16LE [utf16be]=UTF-16BE [wchar_t]=UTF-32LE [iso-8859-1]=ISO-8859-1)

# The texts, as UTF-8 in $work/texts. Characters beyond Latin-1 are left out of the last one.
mkdir "$work/texts"
cp -L /usr/share/common-licenses/GPL-3 /usr/share/common-licenses/Apache-2.0 "$work/texts"
cp /usr/share/unicode/UnicodeData.txt /usr/share/unicode/emoji/emoji-test.txt "$work/texts"
bzcat /usr/share/unicode/Unihan_Readings.txt.bz2 >"$work/texts/Unihan_Readings.txt"
cp /usr/share/unicode/NamesList.txt "$work/texts"
iconv -c -f UTF-8 -t ISO-8859-1 /usr/share/unicode/NamesList.txt | iconv -f ISO-8859-1 -t UTF-8 \
  >"$work/texts/NamesList-Latin1.txt"

cd "$work/texts"
echo "What textinfo says about them:"
"$textinfo" ./*

echo
echo "The same texts from one encoding to another, and what iconv makes of them:"
count=0
# convert TEXT FROM TO: one conversion, compared.
convert() {
  local text=$1 from=$2 to=$3
  iconv -f UTF-8 -t "${ICONV_NAMES[$from]}" "$text" >"$work/input"
  iconv -f "${ICONV_NAMES[$from]}" -t "${ICONV_NAMES[$to]}" "$work/input" >"$work/expected"
  "$textinfo" --from "$from" --to "$to" --out "$work/output" "$work/input" >"$work/report"
  grep -q 'nothing lost' "$work/report"
  cmp "$work/output" "$work/expected"
  printf '  %-22s %-10s -> %-10s %9d bytes, as iconv\n' "$text" "$from" "$to" "$(stat -c %s "$work/output")"
  count=$((count + 1))
}

for text in *; do
  encodings=(utf8 utf16 utf16be wchar_t)
  iconv -f UTF-8 -t ISO-8859-1 "$text" >/dev/null 2>&1 && encodings+=(iso-8859-1)
  for encoding in "${encodings[@]}"; do
    convert "$text" utf8 "$encoding"
    [ "$encoding" = utf8 ] || convert "$text" "$encoding" utf8
  done
done
echo "$count conversions, all byte for byte what iconv writes."

echo
echo "The headers that findfiles finds below /usr/include, which are those that find finds:"
"$findfiles" --name '*.h' /usr/include | sort >"$work/found"
find /usr/include -name '*.h' -printf '%s %p\n' | sort | cmp - "$work/found"
awk '{ bytes += $1 } END { printf "  %d files, %d bytes\n", NR, bytes }' "$work/found"

echo
echo "What agent finds when one of them has been damaged and one is gone:"
for text in GPL-3 NamesList.txt; do cksum <"$text" >"$text.sum"; done   # none for the others
printf 'x' | dd of=GPL-3 bs=1 seek=100 conv=notrunc status=none
cat >"$work/profile" <<PROFILE
# the files, not each piece that is read; and all that went wrong
agent
-agent/file/read
Error
timestamp = yes
show_class = yes
trace_timers = yes
filename = $work/trace
PROFILE
"$agent" --profile "$work/profile" Apache-2.0 GPL-3 NamesList.txt missing.txt || [ $? -eq 1 ]

echo
echo "What it has traced:"
sed 's/^/  /' "$work/trace"

echo
echo "The cryptographic module that it has used:"
"$tvxssl_info" | sed 's/^/  /' || [ "${PIPESTATUS[0]}" -eq 1 ]
