#!/bin/bash
# extending.sh <source tree> <scratch folder>: every change that Docs/extending.md shows can be applied to the sources.
set -euo pipefail
source=$1
scratch=$2

rm -rf "$scratch"
mkdir -p "$scratch"
awk -v folder="$scratch" '
    /^```/ && inside { inside = 0; next }
    inside { print > (folder "/" count ".diff") }
    /^```diff$/ { inside = 1; ++count }' "$source/Docs/extending.md"

wrong=0
shopt -s nullglob
changes=("$scratch"/*.diff)
[[ ${#changes[@]} -eq 4 ]] || { echo "expected 4 changes, found ${#changes[@]}"; exit 1; }
cd "$source"
for change in "${changes[@]}"; do
    # Whatever is not a repository of its own must not be taken for a part of one around it.
    GIT_CEILING_DIRECTORIES=$(dirname "$source") git apply --check "$change" || wrong=1
done
exit "$wrong"
