#!/bin/sh
# Builds quenlor, installing what that needs, and scans this machine as a fresh installation would:
# the program and its shipped configuration are installed into a tree of their own below build/.
# Options are quenlor's own. Build messages go to standard error, so that standard output holds the
# document alone.
set -eu
cd "$(dirname "$0")/.."
here=$PWD
scripts/install-packages.sh build
{
  cmake --preset release -DQUENLOR_BUILD_TESTS=OFF -DQUENLOR_BUILD_CTL=OFF -DQUENLOR_WERROR=OFF -B build/scan \
        -DCMAKE_INSTALL_PREFIX="$here/build/scan/installed"
  cmake --build build/scan
  cmake --install build/scan
} >&2
cd - >/dev/null 2>&1 || cd "$here"
exec "$here/build/scan/installed/sbin/quenlor" "$@"
