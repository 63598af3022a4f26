#!/bin/bash
# short.sh <folder of examples>: each is read in one look, in less than 60 lines.
set -euo pipefail
for example in "$1"/*.cpp; do
    lines=$(wc -l <"$example")
    [[ $lines -lt 60 ]] || { echo "$example has $lines lines"; exit 1; }
done
