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
if [ -x "$build/bin/quenlorctl" ]; then
  companion=$(echo "$work"/quenlorctl_*_amd64.deb)
  [ -f "$companion" ] || fail "no package of the companion program was made"
  dpkg-deb --info "$companion"
  ! dpkg-deb --contents "$package" | grep -q quenlorctl || fail "the scanner's package holds its companion"
  ! dpkg-deb --field "$companion" Depends | grep -q quenlor || fail "the companion needs the scanner"
  [ -z "$(dpkg-deb --ctrl-tarfile "$companion" | tar t | grep -e inst -e rm)" ] ||
    fail "the companion has scripts"
  lintian --fail-on error --allow-root "$companion" || fail "lintian has errors"
fi
for library in libarchive libzstd zlib; do
  ! dpkg-deb --field "$package" Depends | grep -q "$library" || fail "the scanner needs $library"
done
lintian --fail-on error --allow-root "$package" || fail "lintian has errors"

# The package as it was before the configuration became the administrator's: the same files, the
# configuration (without any choice of sources) a conffile, no scripts.
mkdir "$work/old"
dpkg-deb -R "$package" "$work/old"
rm "$work/old/DEBIAN/postinst" "$work/old/DEBIAN/postrm" "$work/old/DEBIAN/md5sums"
mv "$work/old/usr/share/quenlor/quenlor.conf" "$work/old/etc/quenlor/quenlor.conf"
sed -i '/^hwscanner.sources/d' "$work/old/etc/quenlor/quenlor.conf"
echo /etc/quenlor/quenlor.conf >> "$work/old/DEBIAN/conffiles"
sed -i 's/^Version: .*/Version: 2.3.1036/' "$work/old/DEBIAN/control"
dpkg-deb --root-owner-group -b "$work/old" "$work/old.deb" > /dev/null

remove() { dpkg --purge quenlor quenlorctl >/dev/null 2>&1 || true; rm -rf "$work"; }
trap remove EXIT
# Slim container images leave manuals and documents of packages out.
install() { dpkg --path-include='/usr/share/*' -i "$1" > "$work/dpkg.log" 2>&1 || { cat "$work/dpkg.log"; fail "dpkg -i $1"; }; }
is_modern() { /usr/sbin/quenlor | grep -q '<Sources>modern</Sources>'; }

# An upgrade leaves the machine as it is, edited or not.
for edit in ':' 'echo "# mine" >> /etc/quenlor/quenlor.conf'; do
  install "$work/old.deb"
  eval "$edit"
  cp /etc/quenlor/quenlor.conf "$work/before"
  install "$package"
  cmp /etc/quenlor/quenlor.conf "$work/before" || fail "an upgrade changed the configuration"
  ! is_modern || fail "an upgrade changed the sources"
  dpkg --purge quenlor > /dev/null
  [ ! -e /etc/quenlor ] || fail "/etc/quenlor is left behind after an upgrade and purging"
done

# A fresh installation uses the modern sources; installed again after removal, what stayed counts.
install "$package"
is_modern || fail "a fresh installation does not use the modern sources"
dpkg --remove quenlor > /dev/null
sed -i 's/^hwscanner.sources.*/hwscanner.sources = classic/' /etc/quenlor/quenlor.conf
install "$package"
! is_modern || fail "installing again overwrote the configuration"
dpkg --purge quenlor > /dev/null
[ ! -e /etc/quenlor ] || fail "/etc/quenlor is left behind after purging"

install "$package"
man -P cat quenlor > "$work/manual" 2>/dev/null || fail "man quenlor"
grep -q 'EXIT STATUS' "$work/manual" || fail "the manual lacks its exit statuses"
man -P cat 5 quenlor.conf > /dev/null 2>&1 || fail "man 5 quenlor.conf"

/usr/sbin/quenlor -o "$work/document.xml" || fail "the installed program ended with $?"
xmllint --noout --schema /usr/share/quenlor/quenlor.xsd "$work/document.xml"
/usr/sbin/quenlor -m | tail -n 1 | grep -q '^End Component$' || fail "the MIF document has no end"

if [ -n "${companion:-}" ]; then
  install "$companion"
  quenlorctl validate "$work/document.xml" || fail "quenlorctl ended with $?"
  man -P cat quenlorctl > "$work/manual" 2>/dev/null || fail "man quenlorctl"
  grep -q 'EXIT STATUS' "$work/manual" || fail "the companion's manual lacks its exit statuses"
  dpkg --purge quenlorctl > /dev/null
  for left in /usr/bin/quenlorctl /usr/share/doc/quenlorctl; do
    [ ! -e "$left" ] || fail "$left is left behind"
  done
fi

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
