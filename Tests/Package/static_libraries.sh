#!/bin/bash
# static_libraries.sh <source tree> <scratch folder> [media]: the libraries as archives, of a later C++ than ours, in the hands of
# somebody else who finds them through CMake and through pkg-config; with the media library and the tool, or without.
set -euo pipefail
source=$1 scratch=$2 media=OFF
[[ ${3:-} != media ]] || media=ON

rm -rf "$scratch"
mkdir -p "$scratch/project"
cmake -G Ninja -S "$source" -B "$scratch/build" -DBUILD_SHARED_LIBS=OFF "-DZELNOR_BUILD_MEDIA=$media" -DBUILD_TESTING=OFF \
    -DZELNOR_WERROR=ON -DCMAKE_CXX_STANDARD=20 -DCMAKE_UNITY_BUILD=ON -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_FLAGS_DEBUG=-O0 -DZELNOR_BUILD_PYTHON=ON >"$scratch/configured" 2>&1
grep -F "The Python package is not built: it needs shared libraries" "$scratch/configured" >/dev/null
cmake --build "$scratch/build"
cmake --install "$scratch/build" --prefix "$scratch/prefix" >/dev/null
if find "$scratch/prefix" -name '*.so*' | grep .; then
    echo "a shared library among the archives"
    exit 1
fi

cat >"$scratch/project/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(Static LANGUAGES CXX)
find_package(Zelnor 1.0 CONFIG REQUIRED COMPONENTS Core Conf)
add_executable(early "${SOURCE}/Tests/Package/consumer/early.cpp")
add_executable(road "${SOURCE}/Examples/road_of_a_job.cpp")
foreach(program IN ITEMS early road)
  target_link_libraries(${program} PRIVATE Zelnor::Conf)
endforeach()
END
cmake -G Ninja -S "$scratch/project" -B "$scratch/consumer" "-DSOURCE=$source" "-DCMAKE_PREFIX_PATH=$scratch/prefix" >/dev/null
cmake --build "$scratch/consumer"
[[ $("$scratch/consumer/early") == "the same before main" ]]
"$scratch/consumer/road" | diff "$source/Examples/road_of_a_job.txt" -

PKG_CONFIG_PATH=$(dirname "$(find "$scratch/prefix" -name zelnor-conf.pc)")
export PKG_CONFIG_PATH
for option in '' --static; do
    read -ra flags <<<"$(pkg-config $option --cflags --libs zelnor-conf)"
    c++ -std=c++17 "$source/Tests/Package/consumer/early.cpp" "${flags[@]}" -o "$scratch/early"
    [[ $("$scratch/early") == "the same before main" ]]
done

if [[ $media == ON ]]; then
    presets=$scratch/prefix/share/zelnor/Presets
    read -ra flags <<<"$(pkg-config --cflags --libs zelnor-media)"
    c++ -std=c++17 "$source/Tests/Package/consumer/planner.cpp" "${flags[@]}" -o "$scratch/planner"
    "$source/Tests/Package/consumer/plans.sh" "$scratch/planner" "$presets" "$scratch"
    cmake -G Ninja -S "$source/Tests/Package/consumer" -B "$scratch/planners" "-DCMAKE_PREFIX_PATH=$scratch/prefix" \
        -DCONSUMER_SOURCE="$source/Examples/road_of_a_job.cpp" >/dev/null
    cmake --build "$scratch/planners" --target planner
    "$source/Tests/Package/consumer/plans.sh" "$scratch/planners/planner" "$presets" "$scratch"
    (
        cd "$scratch"
        prefix/bin/zconf job new --preset mp4-h264-aac --input clip.mkv --output made -o job.json
        prefix/bin/zconf job run job.json
        [[ -s made.mp4 ]]
    )
fi

# All of it goes again.
cmake --build "$scratch/build" --target uninstall >/dev/null
if find "$scratch/prefix" -not -type d | grep . || find "$scratch/prefix" -iname '*zelnor*' | grep .; then
    echo "left behind"
    exit 1
fi
