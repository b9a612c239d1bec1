# Sourced by the scripts that check the project in parts: runs each, goes on after one that failed, and
# says at the end how each went, how long it took and what was skipped.

jobs=$(nproc)
parts_failed=0
parts_reports=build/reports/$(basename "$0" .sh)
rm -rf "$parts_reports"
mkdir -p "$parts_reports"
printf '%-24s %-7s %8s %10s\n' part result time processors > "$parts_reports/table"

# part <name> <command ...>: the command may be a function; it ends at its first failing line.
part() {
  parts_name=$1
  shift
  printf '\n== %s\n' "$parts_name"
  parts_start=$(date +%s)
  count_cpu_seconds
  parts_cpu_start=$cpu_seconds
  set +e
  (set -e; "$@")
  parts_status=$?
  set -e
  parts_result=ok
  if [ "$parts_status" -ne 0 ]; then parts_result=FAILED parts_failed=1; fi
  count_cpu_seconds
  printf '%-24s %-7s %6d s %8d s\n' "$parts_name" "$parts_result" "$(($(date +%s) - parts_start))" \
    "$((cpu_seconds - parts_cpu_start))" >> "$parts_reports/table"
}

# What the ended children of this shell have used of all processors: on a busy machine this, divided by
# the number of processors, tells more than the clock. A command substitution would count its own children.
count_cpu_seconds() {
  times > "$parts_reports/times"
  cpu_seconds=$(awk -F '[ms ]+' 'NR == 2 { printf "%d", $1 * 60 + $2 + $3 * 60 + $4 }' "$parts_reports/times")
}

# build <preset> [target ...]
build() {
  preset=$1
  shift
  cmake --preset "$preset" > build/configure.log || { cat build/configure.log; exit 1; }
  cmake --build --preset "$preset" -j "$jobs" ${1:+--target "$@"}
}

# run_tests <preset> <options of ctest ...>: one more at once than there are processors, as tests of hanging
# commands and dead mounts wait.
run_tests() {
  preset=$1
  shift
  ctest --preset "$preset" -j "$((jobs + 1))" --output-log "$PWD/$parts_reports/$preset.log" \
    --output-junit "$PWD/$parts_reports/$preset.xml" --test-output-size-passed 1048576 "$@"
}

# The summary of everything; its status is the script's. ctest's own last lines come last, so that whoever
# reads only the end of the output sees them.
finish() {
  echo
  cat "$parts_reports/table"
  for parts_log in "$parts_reports"/*.xml; do
    [ ! -f "$parts_log" ] || scripts/skipped.py "$parts_log"
  done
  for parts_log in "$parts_reports"/*.log; do
    [ ! -f "$parts_log" ] || sed -n '/% tests passed, /,$p' "$parts_log"
  done
  exit "$parts_failed"
}
