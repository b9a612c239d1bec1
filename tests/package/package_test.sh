#!/bin/sh
# Builds the Debian package, checks it, installs it, uses it as its manual says, and removes it.
# Usage: package_test.sh <build directory>
set -eu
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() { echo "FAILED: $*" >&2; exit 1; }
command -v dpkg >/dev/null || fail "no dpkg: the package cannot be tested here"
command -v lintian >/dev/null || fail "no lintian: the package cannot be checked here"
[ "$(id -u)" -eq 0 ] || fail "installing a package needs root"
[ ! -e /etc/quenlor ] || fail "quenlor is installed here, and the test would remove it"

(cd "$build" && cpack -G DEB -B "$work" > "$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; fail cpack; }
package=$(echo "$work"/quenlor_*_amd64.deb)
[ -f "$package" ] || fail "no package was made"
dpkg-deb --info "$package"
lintian --fail-on error --allow-root "$package" || fail "lintian has errors"

# Slim container images leave manuals and documents of packages out.
dpkg --path-include='/usr/share/*' -i "$package"
remove() { dpkg --purge quenlor >/dev/null 2>&1 || true; rm -rf "$work"; }
trap remove EXIT

man -P cat quenlor > "$work/manual" 2>/dev/null || fail "man quenlor"
grep -q 'EXIT STATUS' "$work/manual" || fail "the manual lacks its exit statuses"
man -P cat 5 quenlor.conf > /dev/null 2>&1 || fail "man 5 quenlor.conf"

/usr/sbin/quenlor -o "$work/document.xml" || fail "the installed program ended with $?"
xmllint --noout --schema /usr/share/quenlor/quenlor.xsd "$work/document.xml"
/usr/sbin/quenlor -m | tail -n 1 | grep -q '^End Component$' || fail "the MIF document has no end"

# The system's configuration is the one that counts.
cp /etc/quenlor/quenlor.conf "$work/quenlor.conf"
echo 'nonsense' > /etc/quenlor/quenlor.conf
status=0
/usr/sbin/quenlor > /dev/null 2> "$work/errors" || status=$?
[ "$status" -eq 21 ] || fail "a malformed configuration gives status $status"
grep -q '^quenlor: /etc/quenlor/quenlor.conf:1: ' "$work/errors" || fail "no word of file and line"
cp "$work/quenlor.conf" /etc/quenlor/quenlor.conf

# A changed configuration stays when the package goes; everything else goes with it.
echo '# changed' >> /etc/quenlor/quenlor.conf
dpkg --remove quenlor
[ -f /etc/quenlor/quenlor.conf ] || fail "a changed configuration was removed"
for left in /usr/sbin/quenlor /usr/share/quenlor /usr/share/doc/quenlor \
            /usr/share/man/man8/quenlor.8.gz; do
  [ ! -e "$left" ] || fail "$left is left behind"
done
dpkg --purge quenlor
[ ! -e /etc/quenlor ] || fail "/etc/quenlor is left behind after purging"
trap 'rm -rf "$work"' EXIT
echo "package installs, scans, validates and goes"
