#!/bin/sh
# Builds program and tests as people build them who know no preset: warnings are told, and are no errors.
# Usage: builds.sh [plain|release|debug|clang|bare|one|all|name]
#   bare  the program without precompiled headers, which hide that a source lacks an #include
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
    bare) build bare -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON -DQUENLOR_BUILD_TESTS=OFF -DQUENLOR_WERROR=ON ;;
  esac
}

case "${1:-all}" in
  plain|release|debug|clang|bare) one "$1" ;;
  one) one "$(turn)" ;;
  name) turn ;;
  all) for name in plain release debug clang bare; do one "$name"; done ;;
  *) echo "usage: $0 [plain|release|debug|clang|bare|one|all|name]" >&2; exit 2 ;;
esac
