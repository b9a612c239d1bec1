#!/bin/sh
# Installs into a staging root, runs the program from there, and checks what it needs at run time.
# Usage: install_test.sh <build directory>
set -eu
build=$1
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT

fail() { echo "FAILED: $*" >&2; exit 1; }

DESTDIR="$stage" cmake --install "$build" > "$stage/log" || { cat "$stage/log"; fail "cmake --install"; }
program="$stage/usr/sbin/quenlor"

for file in usr/share/quenlor/quenlor.conf etc/quenlor/DovTrace.properties usr/share/quenlor/DovHWConfig.xml \
            usr/share/quenlor/quenlor.xsd usr/share/man/man8/quenlor.8.gz \
            usr/share/man/man5/quenlor.conf.5.gz usr/share/doc/quenlor/copyright \
            usr/share/doc/quenlor/fields.md usr/share/doc/quenlor/examples/scan-sample.xml \
            usr/share/bash-completion/completions/quenlor; do
  [ -f "$stage/$file" ] || fail "$file is not installed"
done

[ ! -e "$stage/etc/quenlor/quenlor.conf" ] || fail "the administrator's configuration would be overwritten"

# Only the C library and libgcc_s may be needed from the machine.
needed=$(readelf -d "$program" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | sort | tr '\n' ' ')
for library in $needed; do
  case "$library" in
    libc.so.6|libgcc_s.so.1|libm.so.6|ld-linux-x86-64.so.2) ;;
    *) fail "the program needs $library" ;;
  esac
done
case "$needed" in *libgcc_s.so.1*) ;; *) fail "libgcc_s, which ends cancelled threads, is not needed" ;; esac

# Hardening: position independent, relocations read-only and bound at start.
readelf -h "$program" | grep -q 'DYN ' || fail "not position independent"
readelf -d "$program" | grep -q 'BIND_NOW\|FLAGS.*NOW' || fail "not bound at start"
readelf -l "$program" | grep -q GNU_RELRO || fail "relocations stay writable"

# It runs from there, finds its processor descriptions and gives a valid document.
"$program" -o "$stage/document.xml" 2> "$stage/errors" || fail "the installed program ended with $?"
[ ! -s "$stage/errors" ] || { cat "$stage/errors"; fail "messages on standard error"; }
xmllint --noout --schema "$stage/usr/share/quenlor/quenlor.xsd" "$stage/document.xml"
"$program" -c "$stage/usr/share/doc/quenlor/examples/scan-sample.xml" > "$stage/sample.xml"
[ "$(grep -c '^	<[A-Z]' "$stage/sample.xml")" = "$(grep -c '^	<[A-Z]' "$stage/document.xml")" ] ||
  fail "the sample configuration does not scan everything"
"$program" -l | grep -q '^cpu_mhertz:	' || fail "the plain listing lacks its first line"

# The companion program reads what the scanner writes; without it nothing of it is there.
ctl="$stage/usr/bin/quenlorctl"
if [ -x "$build/bin/quenlorctl" ]; then
  "$ctl" validate "$stage/document.xml" || fail "quenlorctl ended with $?"
  for file in usr/share/man/man1/quenlorctl.1.gz usr/share/bash-completion/completions/quenlorctl \
              usr/share/zsh/vendor-completions/_quenlorctl usr/share/doc/quenlorctl/copyright; do
    [ -f "$stage/$file" ] || fail "$file is not installed"
  done
else
  [ ! -e "$ctl" ] || fail "quenlorctl is installed and was not built"
fi

# Tracing is switched on by the installed settings file.
sed "s|^trace.level.*|trace.level = MAX|; s|^trace.file.*|trace.file = $stage/trace|" \
  "$stage/etc/quenlor/DovTrace.properties" > "$stage/usr/share/quenlor/new" &&
  mv "$stage/usr/share/quenlor/new" "$stage/usr/share/quenlor/DovTrace.properties"
"$program" > /dev/null
grep -q 'hardware After getIstance' "$stage/trace" || fail "nothing was traced"
echo "installed program runs; needs: $needed"
