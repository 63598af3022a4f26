#!/bin/bash
# readme.sh <source tree>: the program and the output that the README shows are those of the example.
set -euo pipefail
source=$1

# block <language>: the first block of that language in the README.
block() {
    awk -v begin="\`\`\`$1" '$0 == "```" && inside { exit } inside { print } $0 == begin { inside = 1 }' "$source/README.md"
}

diff "$source/Examples/road_of_a_job.cpp" <(block cpp)
diff "$source/Examples/road_of_a_job.txt" <(block text)
