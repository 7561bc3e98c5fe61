#!/usr/bin/env bash
# Installs the release build and the Debian packages outside of the source tree, builds the consumer in
# tests/package against each of them, with CMake and with pkg-config, and runs it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh base test crypto package
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r tests/package "$work/consumer"

# Runs a command whose output matters only when it fails.
quietly() {
  "$@" >"$work/log" 2>&1 || { cat "$work/log" >&2; return 1; }
}

quietly cmake --preset release
targets=(tvxcmn tvxcmn_api tvxcmn_catalog tvxcat tvxtrace tvxssl-info tvxreg)
expected=3   # Debian packages
if cmake --build --preset release --target help | grep '^tvxssl:' >"$work/log"; then
  targets+=(tvxssl)
  expected=4
fi
quietly cmake --build --preset release --target "${targets[@]}"

# tryTree NAME PREFIX: builds and runs the consumer both ways against one installed tree.
tryTree() {
  local name=$1 prefix=$2 build=$work/build-$1
  local libdir=$prefix/lib
  quietly cmake -G Ninja -S "$work/consumer" -B "$build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release
  quietly cmake --build "$build"
  echo "$name, CMake:      $("$build/consumer" "$build/consumer_module.so")"

  local flags
  read -ra flags <<<"$(PKG_CONFIG_PATH=$libdir/pkgconfig pkg-config --cflags --libs tvxcmn)"
  g++ -std=c++17 -Wall -Wextra -Werror "$work/consumer/program.cpp" -o "$build/plain" "${flags[@]}" -ldl
  g++ -std=c++17 -Wall -Wextra -Werror -fPIC -shared "$work/consumer/module.cpp" -o "$build/plain.so" "${flags[@]}"
  echo "$name, tools:      $("$prefix/bin/tvxcat" explain s203m16 | sed -n 2p)"
  echo "$name, pkg-config: $(LD_LIBRARY_PATH=$libdir "$build/plain" "$build/plain.so")"
}

quietly cmake --install build/release --prefix "$work/installed"
tryTree installed "$work/installed"

quietly cpack --config build/release/CPackConfig.cmake -B "$work/cpack"
mapfile -t packages < <(find "$work/cpack" -name '*.deb' -not -path '*/_CPack_Packages/*' | sort)
[ ${#packages[@]} -eq $expected ] || { echo "expected $expected Debian packages, got: ${packages[*]}" >&2; exit 1; }
for package in "${packages[@]}"; do
  dpkg-deb --field "$package" Package Version Depends
  dpkg-deb --extract "$package" "$work/root"
done
tryTree packages "$work/root/usr"
