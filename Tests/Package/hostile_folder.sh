#!/bin/bash
# hostile_folder.sh <compiler> <zconf> <scratch folder>: a built program that runs in a folder where
# somebody has put libraries under the names of all that it loads takes none of them.
set -euo pipefail
compiler=$1 zconf=$2 scratch=$3

rm -rf "$scratch"
mkdir -p "$scratch/hostile"
cd "$scratch/hostile"
ffmpeg -v error -f lavfi -i sine=duration=0.1 "$scratch/clip.wav"
cat >"$scratch/taken.c" <<'END'
#include <unistd.h>
__attribute__((constructor)) static void Take(void)
{
    (void)!write(1, "taken\n", 6);
    _exit(0);
}
END
"$compiler" -x c -shared -fPIC "$scratch/taken.c" -o "$scratch/taken.so"
LD_DEBUG=files LD_DEBUG_OUTPUT="$scratch/loaded" "$zconf" probe "$scratch/clip.wav" >"$scratch/expected"
names=$(sed -nE 's/.*file=([^/ ]*\.so[^/ ]*) \[0\];.*/\1/p' "$scratch"/loaded.* | sort -u)
[[ $names == *libavformat.so* && $names == *libZelnorCore.so* ]]
for name in $names; do
    cp "$scratch/taken.so" "$name"
done
"$zconf" probe "$scratch/clip.wav" | diff "$scratch/expected" -
