#!/bin/bash
# without_media.sh <source tree> <scratch folder>: without the media library the build is configured where pkg-config knows
# nothing of FFmpeg, and builds the other libraries and their tests.
set -euo pipefail
source=$1 scratch=$2

rm -rf "$scratch"
mkdir -p "$scratch/nothing"
export PKG_CONFIG_LIBDIR=$scratch/nothing
configure() {
    cmake -G Ninja -S "$source" -B "$scratch/build" "$@" 2>&1 | tr -s ' \n' '  '
}

said=$(configure -DZELNOR_BUILD_MEDIA=OFF -DZELNOR_BUILD_TOOLS=ON)
sentence="The zconf command line is not built: it needs the media library, and ZELNOR_BUILD_MEDIA is OFF."
if [[ $said != *"$sentence"* ]]; then
    echo "$said"
    echo "does not say: $sentence"
    exit 1
fi

targets=$(cmake --build "$scratch/build" --target help)
for target in ZelnorCore ZelnorConf ZelnorCoreTests ZelnorConfTests ZelnorThreadTests; do
    if ! grep -q "^$target: phony" <<<"$targets"; then
        echo "not built without the media library: $target"
        exit 1
    fi
done
if grep -E '^(ZelnorMedia|zconf|Zconf|ZelnorTool)[A-Za-z]*: phony' <<<"$targets"; then
    echo "built without the media library"
    exit 1
fi
commands=$(ninja -C "$scratch/build" -t commands)
if grep -E 'libav(format|util|codec)\.|-lav' <<<"$commands"; then
    echo "uses FFmpeg's libraries"
    exit 1
fi

if configure -DZELNOR_BUILD_MEDIA=ON >"$scratch/log"; then
    echo "this test cannot tell: the media library is configured, so FFmpeg's libraries are still found"
    exit 1
fi
