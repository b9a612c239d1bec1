#!/bin/sh
# Installs what the tests need, builds every configuration and runs every test.
# Usage: test.sh [release|asan|tsan|tidy ...]; without arguments all of them.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh test

jobs=$(nproc)

run_preset() {
  echo "== $1"
  cmake --preset "$1"
  cmake --build --preset "$1" -j "$jobs"
  # Under a sanitizer the virtual machine would say nothing new and take minutes.
  case "$1" in
    release) ctest --preset "$1" -j "$jobs" ;;
    *) ctest --preset "$1" -j "$jobs" -LE 'vm|package' ;;
  esac
}

for what in ${*:-release asan tsan tidy}; do
  case "$what" in
    release|asan|tsan) run_preset "$what" ;;
    tidy) scripts/tidy.sh ;;
    *) echo "usage: $0 [release|asan|tsan|tidy ...]" >&2; exit 2 ;;
  esac
done
