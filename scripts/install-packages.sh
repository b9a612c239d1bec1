#!/bin/sh
# Installs the Debian packages that building (build), testing (test) or the tests that take long (long) need
# and this machine lacks.
# Usage: install-packages.sh build|test|long
set -eu

build='g++ cmake ninja-build python3 libexpat1-dev libspdlog-dev libfmt-dev
       libarchive-dev libcli11-dev libzstd-dev nlohmann-json3-dev rapidjson-dev zlib1g-dev'
test="$build libgtest-dev libgmock-dev libbenchmark-dev clang libclang-rt-14-dev clang-format clang-tidy
      busybox-static cpio dmidecode dpkg-dev e2fsprogs edid-decode fdisk file git groff hostname iproute2 kmod
      libxml2-utils lintian lld locales man-db mandoc mount net-tools ovmf pci.ids pciutils procps
      qemu-system-x86 sg3-utils strace swtpm udev usbutils util-linux xz-utils zsh zstd"
long="$test btrfs-progs dmsetup ethtool mdadm nvme-cli xfsprogs"

case "${1:-}" in
  build) wanted=$build ;;
  test) wanted=$test ;;
  long) wanted=$long ;;
  *) echo "usage: $0 build|test|long" >&2; exit 2 ;;
esac

missing=''
for package in $wanted; do
  state=$(dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null || true)
  case "$state" in ii*) ;; *) missing="$missing $package" ;; esac
done
[ -z "$missing" ] && exit 0

if [ "$(id -u)" -ne 0 ]; then
  echo "$0: these packages are missing; install them as root: apt-get install$missing" >&2
  exit 1
fi
echo "Installing:$missing" >&2
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq >&2
# shellcheck disable=SC2086 # a list of words
apt-get install -y -qq --no-install-recommends $missing >&2
