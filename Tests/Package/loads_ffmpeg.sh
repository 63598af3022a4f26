#!/bin/bash
# loads_ffmpeg.sh <compiler> <prefix> <scratch folder>: which commands load FFmpeg's libraries, and what one
# says that needs them when they cannot be had.
set -euo pipefail
compiler=$1 prefix=$2 scratch=$3
status=0

fail() {
    echo "$1"
    status=1
}

# whether <yes|no> <program> <argument>...: whether FFmpeg's libraries are loaded when the program runs.
whether() {
    local expected=$1 answer=no
    shift
    LD_DEBUG=files LD_DEBUG_OUTPUT="$scratch/loaded" "$@" >"$scratch/output" 2>&1 </dev/null || true
    ! grep -q 'calling init: .*libavutil' "$scratch"/loaded.* || answer=yes
    rm "$scratch"/loaded.*
    [[ $answer == "$expected" ]] || fail "${*:2}: FFmpeg is loaded: $answer, expected: $expected"
}

# refuses <reason> <prefix>: a program of that prefix, run in the scratch folder, cannot probe and says why.
refuses() {
    local code=0
    (cd "$scratch" && "$2/bin/zconf" probe clip.wav) >"$scratch/output" 2>&1 || code=$?
    if [[ $code != 2 || $(<"$scratch/output") != "zconf: FFmpeg's libraries cannot be used: $1" ]]; then
        fail "probing answers $code: $(<"$scratch/output")"
    fi
    "$2/bin/zconf" --version >/dev/null || fail "--version fails without FFmpeg"
}

rm -rf "$scratch"
mkdir -p "$scratch"
ffmpeg -v error -f lavfi -i sine=duration=0.1 "$scratch/clip.wav"
zconf=$prefix/bin/zconf
"$zconf" job new --preset flac --input "$scratch/clip.wav" --output "$scratch/out.flac" -o "$scratch/job.json"

whether no "$zconf" --version
whether no "$zconf" --help
whether no "$zconf" job new --help
whether no "$zconf" help job run
whether no "$zconf" job nwe
whether no "$zconf" job check --topology "$scratch/job.json"
whether no "$zconf" job draw "$scratch/job.json"
whether no "$zconf" job diff "$scratch/job.json" "$scratch/job.json"
whether no "$zconf" extensions
whether yes "$zconf" probe "$scratch/clip.wav"
grep -q PCM "$scratch/output" || fail "probing fails: $(<"$scratch/output")"

# A library without the table beside it, and one of that name where the program is run.
broken=$scratch/broken
mkdir "$broken"
cp -a "$prefix/bin" "$prefix"/lib* "$prefix/share" "$broken"
# As the program's path to its libraries says it.
table=$broken/bin/../$(cd "$broken" && echo lib*/libZelnorFFmpeg.so.1)
rm "$table" "$table".*
cat >"$scratch/taken.cpp" <<'END'
#include <cstdio>
#include <cstdlib>
static const int taken = (std::puts("taken"), std::exit(0), 0);
END
"$compiler" -shared -fPIC "$scratch/taken.cpp" -o "$scratch/libZelnorFFmpeg.so.1"
refuses "$table: cannot open shared object file: No such file or directory" "$broken"

# One that is no table of ours.
cp "$scratch/clip.wav" "$table"
refuses "$table: invalid ELF header" "$broken"

# The table of another build.
echo 'extern "C" { extern const unsigned long ZelnorFFmpegFunctions[500]; const unsigned long ZelnorFFmpegFunctions[500] = {1}; }' \
    >"$scratch/other.cpp"
"$compiler" -shared -fPIC "$scratch/other.cpp" -o "$table"
refuses "$table belongs to another build of this library" "$broken"

# A program that has FFmpeg itself gets the messages that nobody keeps.
cat >"$scratch/user.cpp" <<'END'
#include <Media/Probe/FFmpegLog.h>
extern "C" {
#include <libavutil/log.h>
}
#include <cstdio>
int main()
{
    Zelnor::Media::KeepFFmpegMessages([](void*, int, const char* format, std::va_list) { std::fputs(format, stdout); });
    av_log(nullptr, AV_LOG_ERROR, "message of the program");
}
END
library=$(dirname "$(find "$prefix" -name libZelnorMedia.so)")
"$compiler" -std=c++17 -I"$prefix/include/zelnor" "$scratch/user.cpp" -o "$scratch/user" -L"$library" \
    -Wl,-rpath,"$library" -lZelnorMedia -lavutil
[[ $("$scratch/user") == "message of the program" ]] || fail "the callback of a program with FFmpeg is not set"
exit "$status"
