#!/bin/bash
# components.sh <build tree> <prefix> <scratch folder>: what find_package answers to each wish for components, with
# everything installed and with Conf alone.
set -euo pipefail
build=$1 whole=$2 scratch=$3

rm -rf "$scratch"
mkdir -p "$scratch/project"
for component in libzelnor1 libzelnor-dev; do
    cmake --install "$build" --component "$component" --prefix "$scratch/conf" >/dev/null
done
cat >"$scratch/project/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(Asks LANGUAGES CXX)
find_package(Zelnor 1.0 ${ASK})
foreach(target IN ITEMS Core Conf Media zconf)
  if(TARGET Zelnor::${target})
    list(APPEND targets ${target})
  endif()
endforeach()
message(STATUS "found: ${Zelnor_FOUND}, targets: ${targets}, Media: ${Zelnor_Media_FOUND}")
END

# answers <prefix> <what is asked> <expected answer>
answers() {
    local answer
    answer=$(cmake -S "$scratch/project" -B "$scratch/build" --fresh -DCMAKE_PREFIX_PATH="$1" "-DASK=$2" 2>&1 |
        tr -s ' \n' '  ') || true
    if [[ $answer != *"$3"* ]]; then
        printf 'find_package(Zelnor 1.0 %s) in %s answers\n%s\nand not\n%s\n' "$2" "$1" "$answer" "$3"
        exit 1
    fi
}

without="Reason given by package: This installation of Zelnor does not include the component"
unknown="Reason given by package: Zelnor does not have a component 'Sound'. Its components are Core, Conf, Media and Tools."

answers "$whole" 'CONFIG;REQUIRED' 'found: 1, targets: Core;Conf;Media;zconf, Media: TRUE'
answers "$whole" 'REQUIRED;COMPONENTS;Core;Conf;Media;Tools' 'found: 1, targets: Core;Conf;Media;zconf'
answers "$whole" 'REQUIRED;COMPONENTS;Media;Sound' "$unknown"
answers "$whole" 'REQUIRED;COMPONENTS;Media;OPTIONAL_COMPONENTS;Sound' 'found: 1, targets: Core;Conf;Media;zconf'
answers "$scratch/conf" 'CONFIG;REQUIRED' 'found: 1, targets: Core;Conf, Media: FALSE'
answers "$scratch/conf" 'REQUIRED;COMPONENTS;Conf;OPTIONAL_COMPONENTS;Media' 'found: 1, targets: Core;Conf, Media: FALSE'
answers "$scratch/conf" 'REQUIRED;COMPONENTS;Media' "$without 'Media'."
answers "$scratch/conf" 'REQUIRED;COMPONENTS;Conf;Tools' "$without 'Tools'."
answers "$scratch/conf" 'COMPONENTS;Media' 'found: 0, targets: , Media: FALSE'
