#!/bin/bash
# pkg_config.sh <source tree> <prefix> <scratch folder>
set -euo pipefail
source=$1 prefix=$2 scratch=$3

rm -rf "$scratch"
mkdir -p "$scratch"
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name zelnor-conf.pc)")
export PKG_CONFIG_PATH
read -ra flags <<<"$(pkg-config --cflags --libs zelnor-conf)"
libraries=$(pkg-config --variable=libdir zelnor-conf)
c++ -std=c++17 "$source/Examples/road_of_a_job.cpp" "${flags[@]}" "-Wl,-rpath,$libraries" -o "$scratch/consumer"
"$scratch/consumer" | diff "$source/Examples/road_of_a_job.txt" -
