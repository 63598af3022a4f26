#!/bin/bash
# object_sizes.sh <library> <another build of its tables>: what a library exports has the same size whatever FFmpeg it
# was made with, since programs hold copies of it whose size they know from their own build.
set -euo pipefail
library=$1 other=$2

# objects <file> <option of nm>...: name and size of our data, a line each
objects() {
    nm --print-size --defined-only --without-symbol-versions "${@:2}" "$1" |
        awk '$3 ~ /^[BbDdRrVv]$/ && $4 ~ /^_ZN6Zelnor4Conf/ { print $4, $2 }' | LC_ALL=C sort
}
compared=$(LC_ALL=C join <(objects "$library" -D) <(objects "$other"))
for table in video audio subtitle unknown; do
    grep -q "${table}CodecTable" <<<"$compared" || { echo "not compared: $table"; exit 1; }
done
if awk '$2 != $3 { print; found = 1 } END { exit !found }' <<<"$compared"; then
    echo "differ in size"
    exit 1
fi
