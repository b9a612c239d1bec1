#!/bin/sh
# Runs clang-tidy with the project's own checks over the program's sources.
set -eu
cd "$(dirname "$0")/.."
[ -f build/release/compile_commands.json ] || cmake --preset release
cmake --build --preset release -j "$(nproc)"  # generated sources must exist
find base log config xmltree host vtcmd com SMBIOS linux scanengine tools -name '*.cpp' -print0 |
  xargs -0 -P "$(nproc)" -n 4 clang-tidy -p build/release --quiet
