#!/bin/bash
# manual.sh <source tree> <ZelnorManual> <scratch folder>: the manual pages are those of the commands, and man and mandoc find
# nothing wrong with them.
set -euo pipefail
pages=$1/Docs/man generator=$2 scratch=$3
rm -rf "$scratch"
mkdir -p "$scratch/new" "$scratch/shown"

"$generator" "$pages/parts" "$scratch/new"
diff -u --exclude=parts -r "$pages" "$scratch/new"

for page in "$pages"/*.1; do
    MANWIDTH=100 LC_ALL=C.UTF-8 man --warnings -E UTF-8 -l "$page" >"$scratch/shown/$(basename "$page")" 2>>"$scratch/warnings"
done
# Style is no warning: it asks for a date, which says nothing of a page that is always new, and for short lines.
mandoc -T lint -W warning "$pages"/*.1 >>"$scratch/warnings" || true
grep -v 'missing date' "$scratch/warnings" && exit 1

# A page without a text would have no warnings either.
grep -q '^ *-n, --dry-run$' "$scratch/shown/zconf-job-run.1"
