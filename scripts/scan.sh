#!/bin/sh
# Builds quenlor, installing what that needs, and scans this machine. Options are quenlor's own.
# Build messages go to standard error, so that standard output holds the document alone.
set -eu
cd "$(dirname "$0")/.."
here=$PWD
scripts/install-packages.sh build
{
  cmake --preset release -DQUENLOR_BUILD_TESTS=OFF -B build/scan
  cmake --build build/scan --target quenlor
} >&2
cd - >/dev/null 2>&1 || cd "$here"
exec "$here/build/scan/bin/quenlor" "$@"
