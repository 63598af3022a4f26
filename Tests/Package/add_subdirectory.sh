#!/bin/bash
# add_subdirectory.sh <source tree> <scratch folder>: as a subfolder of somebody else's project; with debug information, in which
# another test finds the layout of classes.
set -euo pipefail
source=$1 scratch=$2

rm -rf "$scratch"
cmake -G Ninja -S "$source/Tests/Package/consumer" -B "$scratch" -DZELNOR_SUBFOLDER="$source" \
    -DCONSUMER_SOURCE="$source/Examples/road_of_a_job.cpp" -DCMAKE_UNITY_BUILD=ON -DCMAKE_CXX_FLAGS=-g
cmake --build "$scratch" --target consumer
"$scratch/consumer" | diff "$source/Examples/road_of_a_job.txt" -
# A second build of all that the media library is made of takes long and would show no more than its plan: the tests of
# the installed library run the program.
cmake --build "$scratch" --target planner -- -n | grep --count 'Linking CXX shared library .*libZelnorMedia'
