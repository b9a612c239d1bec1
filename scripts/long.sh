#!/bin/sh
# What takes longer than anybody waits for, part by part; all of it before a release.
# Usage: long.sh [PART ...]; without PART all of them:
#   vm       every virtual machine
#   slow     tests of the shipped program that take minutes: thousands of mounts, full disks, signals
#   tsan     every test under the thread sanitizer
#   tidy     clang-tidy of every source
#   builds   plain, Release, Debug and clang
#   sweeps   every test program three times, its tests in random order
#   fuzz     every fuzz target for QUENLOR_FUZZ_MINUTES (10) minutes
set -eu
cd "$(dirname "$0")/.."
all='vm slow tsan tidy builds sweeps fuzz'
for name in "$@"; do
  case " $all " in
    *" $name "*) ;;
    *) echo "usage: $0 [PART ...]; a PART is one of: $all" >&2; exit 2 ;;
  esac
done
minutes=${QUENLOR_FUZZ_MINUTES:-10}
case "$minutes" in
  ''|*[!0-9]*|0*) echo "$0: QUENLOR_FUZZ_MINUTES is a number of minutes, not \"$minutes\"" >&2; exit 2 ;;
esac
. scripts/parts.sh

vm() {
  build release
  run_tests release -L vm
}

slow() {
  build release
  run_tests release -L long -LE vm
}

tsan() {
  build tsan
  run_tests tsan -LE 'vm|package'
}

# A test that leans on what another left behind fails in one order or another.
sweeps() {
  build release
  first=$(($(date +%s) % 90000))
  for program in $(test_programs); do
    for seed in $((first + 1)) $((first + 2)) $((first + 3)); do
      echo "$program --gtest_shuffle --gtest_random_seed=$seed"
      "$program" --gtest_brief=1 --gtest_shuffle --gtest_random_seed="$seed"
    done
  done
}

test_programs() {
  find build/release/tests -name 'test_*' -type f -perm -u+x ! -name test_headers | sort
}

# fuzz_target <program>: what it learns stays in the build directory; what it finds ends the part.
fuzz_target() {
  name=${1##*/fuzz_}
  learnt=build/fuzz/learnt/$name
  mkdir -p "$learnt" build/fuzz/findings
  "$1" -max_total_time="$((minutes * 60))" -print_final_stats=1 -artifact_prefix="build/fuzz/findings/$name-" \
    "$learnt" "tests/fuzz/corpus/$name"
}

part packages scripts/install-packages.sh long
for name in ${*:-$all}; do
  case "$name" in
    tidy) part tidy scripts/tidy.sh all ;;
    builds) for one in plain release debug clang; do part "build $one" scripts/builds.sh "$one"; done ;;
    fuzz)
      part 'build fuzzers' build fuzz
      for program in $(find build/fuzz/tests/fuzz -name 'fuzz_*' -type f -perm -u+x 2>/dev/null | sort); do
        part "fuzz ${program##*/fuzz_}" fuzz_target "$program"
      done ;;
    *) part "$name" "$name" ;;
  esac
done
finish
