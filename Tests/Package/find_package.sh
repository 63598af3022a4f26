#!/bin/bash
# find_package.sh <source tree> <prefix> <scratch folder>
set -euo pipefail
source=$1 prefix=$2 scratch=$3

rm -rf "$scratch"
cmake -G Ninja -S "$source/Tests/Package/consumer" -B "$scratch" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCONSUMER_SOURCE="$source/Examples/road_of_a_job.cpp"
cmake --build "$scratch"
"$scratch/consumer" | diff "$source/Examples/road_of_a_job.txt" -
"$source/Tests/Package/consumer/plans.sh" "$scratch/planner" "$prefix/share/zelnor/Presets" "$scratch"
