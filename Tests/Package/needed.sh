#!/bin/bash
# needed.sh <prefix>: what the dynamic linker will load with each of our files, and where it will look for them. Only the
# table of FFmpeg's functions names FFmpeg's libraries: nothing else loads them before they are used.
set -euo pipefail
prefix=$1
status=0

# entries <file> <kind>: "libavformat.so.59" without its version, a line each
entries() {
    readelf -d "$1" | sed -nE "s/.*\($2\).*\[(.*)\]/\1/p" | sed -E 's/\.so(\.[0-9]+)*$//'
}

fail() {
    echo "$1"
    status=1
}

while IFS= read -r file; do
    name=$(basename "$file")
    ffmpeg=$(entries "$file" NEEDED | grep -E '^lib(av|sw|postproc)' || true)
    search=$(entries "$file" RUNPATH)
    case $name in
    libZelnorCore.so* | libZelnorConf.so* | libZelnorMedia.so* | zconf)
        [[ -z $ffmpeg ]] || fail "$name needs $ffmpeg"
        ;;
    libZelnorFFmpeg.so*)
        [[ $ffmpeg == *libavformat* ]] || fail "$name does not need libavformat"
        ;;
    *)
        fail "$name: a file that this test does not know"
        ;;
    esac
    case $name in
    zconf) expected="\$ORIGIN/../lib" ;;
    *) expected="\$ORIGIN" ;;
    esac
    [[ ${search/lib64/lib} == "$expected" ]] || fail "$name searches '$search', not '$expected'"
done < <(find "$prefix/bin" "$prefix"/lib* -maxdepth 1 -type f \( -name '*.so*' -o -name 'z*' \))
exit "$status"
