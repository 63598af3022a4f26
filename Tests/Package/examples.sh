#!/bin/bash
# examples.sh <source tree> <prefix> <scratch folder>: the examples are built with the installed package, as somebody who
# copies one would do, and print what they print here.
set -euo pipefail
source=$1 prefix=$2 scratch=$3
examples=(file_dialog_filter bitrate_ladder read_job preset_store)

rm -rf "$scratch"
mkdir -p "$scratch"
for example in "${examples[@]}"; do
    cp "$source/Examples/$example.cpp" "$scratch"
done
cat >"$scratch/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(Examples LANGUAGES CXX)
find_package(Zelnor 1.0 REQUIRED COMPONENTS Conf)
file(GLOB sources *.cpp)
foreach(source IN LISTS sources)
  cmake_path(GET source STEM name)
  add_executable(${name} ${source})
  target_link_libraries(${name} PRIVATE Zelnor::Conf)
endforeach()
END
cmake -G Ninja -S "$scratch" -B "$scratch/build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$scratch/build" >/dev/null
for example in "${examples[@]}"; do
    "$scratch/build/$example" | diff "$source/Examples/$example.txt" -
done
