#!/bin/bash
# pkg_config.sh <source tree> <prefix> <scratch folder>
set -euo pipefail
source=$1 prefix=$2 scratch=$3

rm -rf "$scratch"
mkdir -p "$scratch"
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name zelnor-conf.pc)")
export PKG_CONFIG_PATH
# Whoever links ours links no other library.
if pkg-config --libs zelnor-media | grep -E -- '-l(av|glog)'; then
    echo "a shared library of ours is linked with more than itself"
    exit 1
fi
read -ra flags <<<"$(pkg-config --cflags --libs zelnor-conf)"
libraries=$(pkg-config --variable=libdir zelnor-conf)
c++ -std=c++17 "$source/Examples/road_of_a_job.cpp" "${flags[@]}" "-Wl,-rpath,$libraries" -o "$scratch/consumer"
"$scratch/consumer" | diff "$source/Examples/road_of_a_job.txt" -

read -ra flags <<<"$(pkg-config --cflags --libs zelnor-media)"
c++ -std=c++17 "$source/Tests/Package/consumer/planner.cpp" "${flags[@]}" "-Wl,-rpath,$libraries" -o "$scratch/planner"
"$source/Tests/Package/consumer/plans.sh" "$scratch/planner" "$prefix/share/zelnor/Presets" "$scratch"

static=$(pkg-config --static --libs zelnor-media)
for library in ZelnorMedia ZelnorConf ZelnorCore avformat avcodec avutil; do
    if [[ " $static " != *" -l$library "* ]]; then
        echo "without -l$library for a static link: $static"
        exit 1
    fi
done
