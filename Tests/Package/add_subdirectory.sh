#!/bin/bash
# add_subdirectory.sh <source tree> <scratch folder>
set -euo pipefail
source=$1 scratch=$2

rm -rf "$scratch"
cmake -G Ninja -S "$source/Tests/Package/consumer" -B "$scratch" -DZELNOR_SUBFOLDER="$source" \
    -DCONSUMER_SOURCE="$source/Examples/road_of_a_job.cpp"
cmake --build "$scratch"
"$scratch/consumer" | diff "$source/Examples/road_of_a_job.txt" -
"$source/Tests/Package/consumer/plans.sh" "$scratch/planner" "$source/Presets" "$scratch"
