#!/bin/sh
# Checks the program's sources with clang-tidy: all of them, or those that the changes since the merge base
# reach. Usage: tidy.sh [all|changed]
set -eu
cd "$(dirname "$0")/.."
what=${1:-all}
case "$what" in all|changed) ;; *) echo "usage: $0 [all|changed]" >&2; exit 2 ;; esac

# Without precompiled headers: with them a source that lacks an #include compiles all the same.
cmake --preset tidy > /dev/null

sources=$(scripts/tidy_files.py "$what")
[ -z "$sources" ] || echo "$sources" | xargs -P "$(nproc)" -n 2 clang-tidy -p build/tidy --quiet
