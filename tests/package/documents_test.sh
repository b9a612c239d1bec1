#!/bin/sh
# The documents say what the program does: generated ones are current, manuals are sound, every
# option stands in the manual and in the completion.
# Usage: documents_test.sh <source directory> <build directory>
set -eu
source=$1
build=$2
fail() { echo "FAILED: $*" >&2; exit 1; }

describe=$build/tools/describe_catalogue
fields=$source/data/fields.tsv
"$describe" fields "$fields" | diff -u "$source/docs/fields.md" - ||
  fail "docs/fields.md is not current: cmake --build build/release --target fields"
for line in 'Memory		' 'Memory	Page Size'; do
  ! grep -v "^$line" "$fields" | "$describe" fields /dev/stdin > /dev/null 2>&1 ||
    fail "nobody misses the line '$line' of the field texts"
done
! sed 's/Page Size/Page Sise/' "$fields" | "$describe" fields /dev/stdin > /dev/null 2>&1 ||
  fail "a text for an attribute that does not exist is taken"

schema=$(mktemp)
trap 'rm -f "$schema"' EXIT
"$describe" schema "$fields" > "$schema"
# Of the placeholders for what differs from scan to scan the schema cannot know.
for document in "$source"/tests/machines/*/golden.xml; do
  findings=$(xmllint --noout --schema "$schema" "$document" 2>&1 |
    grep -v -e ' validates$' -e "'@[A-Z0-9_]*@'" -e ' fails to validate$' || true)
  [ -z "$findings" ] || fail "$findings"
done

for page in "$source"/docs/man/*; do
  # Our own pages are not installed while they are tested.
  findings=$(mandoc -T lint "$page" 2>/dev/null | grep -v 'referenced manual not found: Xr quenlor' || true)
  [ -z "$findings" ] || fail "$findings"
  warnings=$(groff -man -ww -z "$page" 2>&1) || true
  [ -z "$warnings" ] || fail "$warnings"
done

for option in c o m l h w; do
  grep -q "case '$option':" "$source/src/scan/CommandLine.cpp" || fail "-$option is no option"
  grep -Eq "(It|Op) Fl $option|^\.Fl $option" "$source/docs/man/quenlor.8" || fail "-$option is not in the manual"
done
for option in c o m l h; do
  grep -q -- "-$option" "$source/docs/completion/quenlor" || fail "-$option is not completed"
done
# Of the companion program every option, with its subcommand, as its help lists them.
ctl=$build/bin/quenlorctl
if [ -x "$ctl" ]; then
  for command in json rows validate diff; do
    grep -q "^\.Ss $command$" "$source/docs/man/quenlorctl.1" || fail "$command is not in the manual"
    options=$("$ctl" "$command" --help | sed -n 's/^  \(-h,\)\{0,1\}--\([a-z]*\).*/\2/p')
    [ -n "$options" ] || fail "$command has no options"
    for option in $options; do
      [ "$option" = help ] || sed -n "/^\.Ss $command$/,/^\.S[sh] /p" "$source/docs/man/quenlorctl.1" |
        grep -q "It Fl -$option\( \|$\)" || fail "$command --$option is not in the manual"
      for shell in quenlorctl _quenlorctl; do
        grep -q -e "--$option" "$source/docs/completion/$shell" || fail "$command --$option is not completed"
      done
    done
  done
  bash -n "$source/docs/completion/quenlorctl" || fail "the completion for bash is none"
  zsh -n "$source/docs/completion/_quenlorctl" || fail "the completion for zsh is none"
fi
for key in config_dir hwscanner.config_file hwscanner.timeout hwscanner.sources hwscanner.group_limit_ms \
           hwscanner.mount_limit_ms hwscanner.scan_limit_ms; do
  grep -q "It Cm $key" "$source/docs/man/quenlor.conf.5" || fail "$key is not in the manual"
  grep -q "^#\?$key" "$source/data/quenlor.conf" || fail "$key is not in the sample"
done
for key in trace.file trace.level trace.size trace.count; do
  grep -q "Cm $key" "$source/docs/man/quenlor.8" || fail "$key is not in the manual"
  grep -q "^$key" "$source/data/DovTrace.properties" || fail "$key is not in the sample"
done
echo "documents are current"
