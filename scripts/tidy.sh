#!/bin/sh
# Checks the program's sources with clang-tidy: all of them, or those that the changes since the merge base
# reach. Usage: tidy.sh [all|changed]
set -eu
cd "$(dirname "$0")/.."
what=${1:-all}
case "$what" in all|changed) ;; *) echo "usage: $0 [all|changed]" >&2; exit 2 ;; esac

# Generated sources must exist; where scripts/test.sh has run, this builds nothing.
cmake --preset release > /dev/null
cmake --build --preset release -j "$(nproc)" --target quenlor quenlorctl describe_catalogue

sources=$(scripts/tidy_files.py "$what")
[ -z "$sources" ] || echo "$sources" | xargs -P "$(nproc)" -n 2 clang-tidy -p build/release --quiet
