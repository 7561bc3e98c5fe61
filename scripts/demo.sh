#!/usr/bin/env bash
# Builds the examples and runs them over real texts of this machine: licences, the Unicode data files
# and readings of Chinese, Japanese and Korean characters. textinfo converts each text between the encodings,
# and the result is compared with what iconv writes, byte for byte. findfiles walks a tree, and find beside it.
# Then four processes of agent share one settings file. Each looks after ten files and changes the settings more than
# twenty times, while the others do the same; in the end the file has to be what it was, comments included, with every
# change in it. What goes wrong on purpose is told with texts from the message catalog. Each agent's trace is
# shown, and the cryptographic module with which it encrypts a value.
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
install_dir=$PWD/build/release/examples   # the message catalogs are in its folder lib
tvxssl_info=$PWD/build/release/tools/tvxssl-info

# Ends the demonstration unless the command succeeds.
expect() { "$@" || { echo "demo.sh: failed: $*" >&2; exit 1; }; }

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

cd "$work"
agents=(licences characters names emoji)
declare -A SOURCES=([licences]=GPL-3 [characters]=UnicodeData.txt [names]=NamesList.txt [emoji]=emoji-test.txt)
for name in "${agents[@]}"; do
  mkdir "$name"
  split -n l/10 -d -a 1 "texts/${SOURCES[$name]}" "$name/part"
done

# settings STATE COUNT RECORD: the settings, with what the command RECORD tells of each file.
settings() {
  cat <<SETTINGS
; What all agents of this machine share. Sections are keys below
; HKEY_LOCAL_MACHINE\SOFTWARE\Corvantage Corp

[Corvantage]
; the message catalogs are in its folder lib
InstallDir=$install_dir

[Corvantage\Agents]
; what each agent traces
Profile=profile
; for how many seconds it waits for the others
Patience=60
SETTINGS
  local name file
  for name in "${agents[@]}"; do
    printf '\n; ---- %s: the parts of %s\n' "$name" "${SOURCES[$name]}"
    printf '[Corvantage\Agents\%s]\n; the agent itself changes these\nState=%s\nInspected=%s\n' "$name" "$1" "$2"
    printf '\n[Corvantage\Agents\%s\Files]\n; checksums as cksum prints them\n' "$name"
    for file in "$name"/*; do printf '%s=%s\n' "$file" "$("$3" "$file")"; done
  done
}
recordedBefore() { [ "$1" != licences/part3 ] || cksum <"$1"; }
recordedAfter() { [ "$1" = names/part7 ] || cksum <"$1"; }   # the one that will be gone
settings '' 0l recordedBefore >settings.ini
settings 'done' 10l recordedAfter >expected.ini
printf 'x' | dd of=licences/part3 bs=1 seek=100 conv=notrunc status=none
rm names/part7

cat >profile <<'PROFILE'
# what each agent does, but not with each file; and all that goes wrong
agent
-agent/file
-agent/settings/sum
-agent/report
Error
-Error/Catalog
timestamp = yes
show_class = yes
filename = trace.%p
PROFILE

echo
echo "Four agents at once on one settings file. Of their files one has been damaged, and one is gone:"
declare -A processes
for name in "${agents[@]}"; do
  "$agent" settings.ini "$name" >"report.$name" &
  processes[$name]=$!
done
for name in "${agents[@]}"; do
  status=0
  wait "${processes[$name]}" || status=$?
  sed 's/^/  /' "report.$name"
  case $name in licences | names) expected=1 ;; *) expected=0 ;; esac
  expect test "$status" -eq "$expected"
  for other in "${agents[@]}"; do
    [ "$other" = "$name" ] || expect grep -q "$other is done with 10 files" "report.$name"
  done
done

echo
echo "What each has traced:"
for name in "${agents[@]}"; do sed 's/^/  /' "trace.${processes[$name]}"; done

echo
echo "The settings as they are now:"
sed 's/^/  /' settings.ini
expect diff expected.ini settings.ini
echo
echo "The changes of all agents are there, and all $(grep -c '^;' settings.ini) comments: not a byte differs from what"
echo "the file has to be."

echo
echo "The cryptographic module that it has used:"
"$tvxssl_info" | sed 's/^/  /' || [ "${PIPESTATUS[0]}" -eq 1 ]
