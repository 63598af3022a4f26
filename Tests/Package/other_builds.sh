#!/bin/bash
# other_builds.sh <source tree> <prefix> <scratch folder>: the installed libraries in a build of Meson, beside packages that
# are elsewhere, and the sources in a project that fetches them.
set -euo pipefail
source=$1 prefix=$2 scratch=$3

rm -rf "$scratch"
mkdir -p "$scratch"/{meson,fetch,split,elsewhere/include}

PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name zelnor-conf.pc)")
export PKG_CONFIG_PATH
cp "$source"/Examples/road_of_a_job.cpp "$source"/Examples/FixedPreset.h "$scratch/meson"
cat >"$scratch/meson/meson.build" <<'END'
project('consumer', 'cpp', default_options: ['cpp_std=c++17', 'werror=true'])
executable('consumer', 'road_of_a_job.cpp', dependencies: dependency('zelnor-conf', version: '>= 1.0'))
END
meson setup "$scratch/meson/build" "$scratch/meson" >"$scratch/meson/log"
ninja -C "$scratch/meson/build" >>"$scratch/meson/log"
LD_LIBRARY_PATH=$(pkg-config --variable=libdir zelnor-conf) "$scratch/meson/build/consumer" |
    diff "$source/Examples/road_of_a_job.txt" -

cat >"$scratch/fetch/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(Fetches LANGUAGES CXX)
include(FetchContent)
set(ZELNOR_BUILD_MEDIA OFF)
FetchContent_Declare(zelnor SOURCE_DIR "${SOURCE}")
FetchContent_MakeAvailable(zelnor)
add_executable(consumer "${SOURCE}/Examples/road_of_a_job.cpp")
target_link_libraries(consumer PRIVATE Zelnor::Conf)
if(TARGET uninstall OR TARGET ZelnorCoreTests)
  message(FATAL_ERROR "What is for us alone is made for somebody else.")
endif()
END
cmake -G Ninja -S "$scratch/fetch" -B "$scratch/fetch/build" "-DSOURCE=$source" >"$scratch/fetch/log"
# Building the libraries once more would show nothing new.
ninja -C "$scratch/fetch/build" -n consumer | grep 'Linking CXX executable consumer' >/dev/null

ln -s "$(dirname "$(find /usr/include -path '*/rapidjson/rapidjson.h' -print -quit)")" "$scratch/elsewhere/include/rapidjson"
cat >"$scratch/split/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(Split LANGUAGES CXX)
find_package(Zelnor 1.0 CONFIG REQUIRED COMPONENTS Core Conf)
message(STATUS "RapidJSON: ${Zelnor_RAPIDJSON_INCLUDE_DIR}")
END
cmake -S "$scratch/split" -B "$scratch/split/build" "-DCMAKE_PREFIX_PATH=$prefix;$scratch/elsewhere" |
    grep -F "RapidJSON: $scratch/elsewhere/include" >/dev/null
