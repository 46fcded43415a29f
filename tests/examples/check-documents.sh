#!/bin/sh
# Fails when a document names, in backticks, a file or a test that does not exist.
set -eu
cd "${1:-.}"
status=0
complain() {
  echo "$1" >&2
  status=1
}

# The text of every pair of backticks, a line each.
# shellcheck disable=SC2016  # no command substitution
quoted() { grep -ohE '`[^`]+`' README.md CONTRIBUTING.md docs/*.md | tr -d '`' | sort -u; }

for path in $(quoted | grep -E '^(src|tests|inc|fftw\+\+|standin|scripts|examples|docs|bench|\.ci)/[^ ]*$'); do
  [ -e "$path" ] || complain "$path is named in a document and does not exist"
done
for name in $(quoted | grep -E '^[A-Z][A-Za-z]*\.[A-Z][A-Za-z0-9]*$'); do
  grep -rqE "^TEST(_F|_P)?\(${name%.*}, ${name#*.}\)" tests ||
    complain "the test $name is named in a document and does not exist"
done
exit $status
