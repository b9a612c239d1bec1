#!/bin/sh
# Checks the format of all C++ sources; with --fix mends it.
set -eu
cd "$(dirname "$0")/.."
case "${1:-}" in
  '') options='--dry-run --Werror' ;;
  --fix) options='-i' ;;
  *) echo "usage: $0 [--fix]" >&2; exit 2 ;;
esac
# shellcheck disable=SC2086 # a list of words
find src tools tests bench \( -name '*.cpp' -o -name '*.h' \) -print0 | xargs -0 clang-format $options
