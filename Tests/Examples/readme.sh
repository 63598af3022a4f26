#!/bin/bash
# readme.sh <source tree>: the programs and the outputs that the README shows are those of the examples.
set -euo pipefail
source=$1

# block <language> <number>: that block of the language in the README, counted from 1.
block() {
    awk -v begin="\`\`\`$1" -v number="$2" '
        $0 == "```" && inside { exit }
        inside { print }
        $0 == begin && ++count == number { inside = 1 }' "$source/README.md"
}

number=0
for example in transcode_file road_of_a_job; do
    ((++number))
    diff "$source/Examples/$example.cpp" <(block cpp $number)
    diff "$source/Examples/$example.txt" <(block text $number)
done
