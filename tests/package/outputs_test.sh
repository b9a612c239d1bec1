#!/bin/sh
# The shipped program and output that cannot be written: a defined status and a message, never a crash.
# Usage: outputs_test.sh <build directory>
set -eu
program=$1/bin/quenlor
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
printf '<Hardware><Group Name="Regional"/></Hardware>' > "$work/scan.xml"

failed=0
# expect <status> <what> <command ...>
expect() {
  wanted=$1 what=$2
  shift 2
  status=0
  "$@" > "$work/out" 2> "$work/err" || status=$?
  if [ "$status" -ne "$wanted" ]; then echo "FAILED: $what: status $status, not $wanted"; failed=1; fi
  if [ "$wanted" -ne 0 ] && [ ! -s "$work/err" ]; then echo "FAILED: $what: no message"; failed=1; fi
}

expect 4 "a full device" "$program" -c "$work/scan.xml" -o /dev/full
expect 11 "a directory" "$program" -c "$work/scan.xml" -o "$work"
expect 4 "a missing directory" "$program" -c "$work/scan.xml" -o "$work/none/out"
expect 18 "a list in a missing directory" "$program" -l -o "$work/none/out"
expect 5 "a missing scan configuration" "$program" -c "$work/none.xml"
expect 5 "a directory as scan configuration" "$program" -c "$work"
mkfifo "$work/fifo"
expect 5 "a FIFO without a writer as scan configuration" timeout 10 "$program" -c "$work/fifo"
expect 5 "a device as scan configuration" timeout 10 "$program" -c /dev/zero
# shellcheck disable=SC2016 # the inner shell's variables
expect 0 "standard input as scan configuration" sh -c 'cat "$2" | "$1" -c /dev/stdin' sh "$program" "$work/scan.xml"
{ i=0; while [ $((i += 1)) -le 1100 ]; do printf '<Hardware>'; done; } > "$work/deep.xml"
expect 2 "a scan configuration nested too deeply" "$program" -c "$work/deep.xml"
grep -q 'nested too deeply' "$work/err" || { echo "FAILED: a deep scan configuration: no reason"; failed=1; }
printf '<Hardware><Group Name="PhysicalProcessor"/><Group Name="Regional"/></Hardware>' > "$work/two.xml"
for blocks in 0 1; do  # of 512 bytes; messages in a file would be under the limit too
  status=0
  (ulimit -f "$blocks"; "$program" -c "$work/two.xml" -o "$work/limited" > /dev/null 2>&1) || status=$?
  [ "$status" -eq 4 ] || { echo "FAILED: files of at most $blocks blocks: status $status, not 4"; failed=1; }
done
mkdir "$work/readonly"
read_only() {
  unshare -m sh -c 'mount -t tmpfs none "$1" && touch "$1/old" && mount -o remount,ro "$1" &&
    exec "$2" -c "$3" -o "$1/$4"' sh "$work/readonly" "$program" "$work/scan.xml" "$1"
}
skipped=''
if [ "$(id -u)" -ne 0 ]; then
  skipped='not root'
elif ! refusal=$(unshare -m mount -t tmpfs none "$work/readonly" 2>&1); then
  skipped=$refusal
else
  expect 4 "a new file on a read-only file system" read_only new
  expect 11 "an old file on a read-only file system" read_only old
fi
# Standard output has no status of its own, but a message.
status=0
"$program" -c "$work/scan.xml" > /dev/full 2> "$work/err" || status=$?
{ [ "$status" -eq 0 ] && grep -q 'standard output cannot be written' "$work/err"; } ||
  { echo "FAILED: a full standard output: status $status"; failed=1; }
# A caller that closed it does not find the document in the next file that is opened: the trace.
mkdir "$work/traced"
cp "$program" "$work/traced/"
echo "config_dir = $work/traced" > "$work/traced/quenlor.conf"
printf 'trace.level = MAX\ntrace.file = trace\n' > "$work/traced/DovTrace.properties"
status=0
"$work/traced/quenlor" -c "$work/scan.xml" >&- 2> "$work/err" || status=$?
{ [ "$status" -eq 0 ] && grep -q 'standard output cannot be written' "$work/err" &&
  grep -q 'hardware return=0' "$work/traced/trace" &&
  ! grep -q '</Hardware>' "$work/traced/trace"; } ||
  { echo "FAILED: a closed standard output: status $status"; failed=1; }

[ "$failed" -eq 0 ] || exit 1
if [ -n "$skipped" ]; then
  echo "skipped: no read-only file system: $skipped"
  exit 77
fi
echo "every output that cannot be written has its status"
