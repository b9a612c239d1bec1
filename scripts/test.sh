#!/bin/sh
# Installs what the tests need, builds what is shipped, and tests it: units, fixture machines, fuzz corpora,
# the package, and one virtual machine. Sanitizers and style: scripts/check.sh; everything that
# takes long: scripts/long.sh. Usage: test.sh
set -eu
cd "$(dirname "$0")/.."
[ $# -eq 0 ] || { echo "usage: $0" >&2; exit 2; }
. scripts/parts.sh

part packages scripts/install-packages.sh test
part build build release
[ "$parts_failed" -ne 0 ] || part test run_tests release -LE long
finish
