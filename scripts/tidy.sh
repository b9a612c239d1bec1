#!/bin/sh
# Checks the format of all C++ sources, and the program's with clang-tidy and the project's own checks.
set -eu
cd "$(dirname "$0")/.."
find . -path ./build -prune -o \( -name '*.cpp' -o -name '*.h' \) -print0 |
  xargs -0 clang-format --dry-run --Werror
[ -f build/release/compile_commands.json ] || cmake --preset release
cmake --build --preset release -j "$(nproc)"  # generated sources must exist
find src tools -name '*.cpp' -print0 |
  xargs -0 -P "$(nproc)" -n 4 clang-tidy -p build/release --quiet
