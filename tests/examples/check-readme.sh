#!/bin/sh
# Runs the first configuration of README.md and compares its table with the one printed there, to five
# digits. The run must not warn.
#
# usage: check-readme.sh SOURCE_DIR ZERITH
set -eu
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
readme=$1/README.md
sed -n '/^    \[global\]/,/^    \[\/monitor\]/s/^    //p' "$readme" >"$folder/beam.cfg"
round() { awk -F, 'NR > 1 { for (i = 1; i <= NF; ++i) printf "%.5g ", $i; print "" }'; }
sed -n '/^    z \[um\],power/,/^$/s/^    //p' "$readme" | round >"$folder/printed"

cd "$folder"
"$2" -p --fast -i beam.cfg 2>warnings >log
[ ! -s warnings ] || { cat warnings >&2; exit 1; }
awk -F, 'NR == 1 || NR % 20 == 2' beam.csv | cut -d, -f2,3,5,10 | round >found
[ "$(wc -l <printed)" -eq 4 ] || { echo "README.md has no table of four rows" >&2; exit 1; }
diff printed found
