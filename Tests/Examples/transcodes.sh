#!/bin/bash
# transcodes.sh <program> <source tree> <scratch folder>: the example makes of a clip what its text says, tells how far it
# is, and says in one line why it cannot go on.
set -euo pipefail
program=$1 source=$2 scratch=$3

rm -rf "$scratch"
mkdir -p "$scratch"
cd "$scratch"
ffmpeg -nostdin -v error -f lavfi -i testsrc2=size=320x240:rate=25:duration=1 \
    -f lavfi -i sine=frequency=440:duration=1 -c:v mpeg4 -c:a aac holiday.mov
preset=$source/Presets/mp4-h264-aac.json

"$program" holiday.mov "$preset" holiday.mp4 >out.txt 2>progress.txt
diff "$source/Examples/transcode_file.txt" out.txt
grep -qx 'holiday.mp4: 0 %' progress.txt
[[ $(ls) == $'holiday.mov\nholiday.mp4\nout.txt\nprogress.txt' ]]

# fails <exit code> <text>: with the arguments that follow, it says the text and writes nothing else.
fails() {
    local code=0
    "$program" "${@:3}" >out.txt 2>errors.txt || code=$?
    [[ $code -eq $1 && ! -s out.txt ]]
    diff <(printf '%s\n' "$2") errors.txt
}
fails 2 'usage: transcode_file <media file> <preset file> <output file>' holiday.mov
fails 2 'transcode_file: missing.mov: cannot be read: No such file or directory' missing.mov "$preset" out.mp4
