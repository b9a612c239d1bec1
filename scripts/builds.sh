#!/bin/sh
# Builds program and tests as people build them who know no preset: warnings are told, and are no errors.
# Usage: builds.sh [plain|release|debug|clang|one|all|name]
#   one   the build that is this commit's turn; name prints which that is
set -eu
cd "$(dirname "$0")/.."

# By the commit's last digit: every clone has that, however shallow, and each build gets its turn.
turn() {
  case "$(git rev-parse HEAD 2>/dev/null || true)" in
    *[4-7]) echo release ;;
    *[89ab]) echo debug ;;
    *[c-f]) echo clang ;;
    *) echo plain ;;
  esac
}

build() {
  name=$1
  shift
  echo "== cmake $*"
  cmake -S . -B "build/$name-build" "$@" > /dev/null
  cmake --build "build/$name-build" -j "$(nproc)"
}

one() {
  case "$1" in
    plain) build plain ;;
    release) build release -DCMAKE_BUILD_TYPE=Release ;;
    debug) build debug -DCMAKE_BUILD_TYPE=Debug ;;
    clang) build clang -DCMAKE_CXX_COMPILER=clang++ ;;
  esac
}

case "${1:-all}" in
  plain|release|debug|clang) one "$1" ;;
  one) one "$(turn)" ;;
  name) turn ;;
  all) for name in plain release debug clang; do one "$name"; done ;;
  *) echo "usage: $0 [plain|release|debug|clang|one|all|name]" >&2; exit 2 ;;
esac
