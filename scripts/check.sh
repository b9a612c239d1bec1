#!/bin/sh
# What scripts/test.sh does not see: style, the builds of other people, sanitizers. A change is ready when
# both pass. Usage: check.sh
set -eu
cd "$(dirname "$0")/.."
[ $# -eq 0 ] || { echo "usage: $0" >&2; exit 2; }
. scripts/parts.sh

# Of the tests only those that start threads: the others have nothing to race with.
tsan() {
  build tsan thread_tests
  run_tests tsan -L threads
}

# Units, fixture machines and fuzz corpora. In a virtual machine it would say nothing new and take minutes.
asan() {
  build asan
  run_tests asan -LE 'vm|package|long'
}

part packages scripts/install-packages.sh test
part format scripts/format.sh
part clang-tidy scripts/tidy.sh changed
part "build ($(scripts/builds.sh name))" scripts/builds.sh one
part tsan tsan
part asan asan
finish
