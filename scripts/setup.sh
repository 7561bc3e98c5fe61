#!/usr/bin/env bash
# Installs the Debian packages that the named jobs need and this machine lacks.
#   scripts/setup.sh [GROUP...]     without a group: base and test
# Says nothing and changes nothing when all of them are there. With TVXCMN_OPENSSL=no in the environment the
# group crypto is left out, and the build leaves out the cryptographic module.
set -euo pipefail

declare -A PACKAGES=(
  [base]="g++ cmake ninja-build pkg-config"
  [test]="libgtest-dev libgmock-dev libicu-dev libssl-dev openssl binutils python3 unicode-data"
  [crypto]="libssl-dev openssl"
  [clang]="clang libclang-rt-14-dev"
  [lint]="clang-format-14 clang-tidy-14 shellcheck git python3"
  [fuzz]="clang libclang-rt-14-dev"
  [package]="dpkg-dev file binutils"
  [demo]="libc-bin base-files bzip2 diffutils unicode-data"
  [bench]="libbenchmark-dev crudini gettext git libc-dev-bin libabsl-dev libboost1.81-dev libfmt-dev libglib2.0-dev
           libicu-dev qt6-base-dev libgoogle-glog-dev libinih-dev libspdlog-dev python3 util-linux"
)

isInstalled() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

[ $# -gt 0 ] || set -- base test
missing=()
for group in "$@"; do
  [ "$group" != crypto ] || [ "${TVXCMN_OPENSSL:-}" != no ] || continue
  [ -n "${PACKAGES[$group]:-}" ] || { echo "setup.sh: no group '$group'; there are: ${!PACKAGES[*]}" >&2; exit 2; }
  for package in ${PACKAGES[$group]}; do
    isInstalled "$package" || missing+=("$package")
  done
done
[ ${#missing[@]} -gt 0 ] || exit 0

sudo=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || {
    echo "setup.sh: neither root nor sudo; please install: ${missing[*]}" >&2
    exit 1
  }
  sudo=(sudo)
fi

echo "Installing: ${missing[*]}"
apt=("${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y -q -o Acquire::Retries=3 -o DPkg::Lock::Timeout=300)
"${apt[@]}" update </dev/null
"${apt[@]}" install --no-install-recommends "${missing[@]}" </dev/null
