#!/bin/bash
# plans.sh <planner> <folder of presets> <scratch folder>: the planner finds a clip's streams, plans and catches.
set -euo pipefail
planner=$1 presets=$2 scratch=$3

cd "$scratch"
ffmpeg -v error -y -f lavfi -i testsrc2=size=64x48:rate=25:duration=1 -f lavfi -i sine=duration=1 \
    -c:v mpeg4 -c:a mp2 clip.mkv
diff - <("$planner" clip.mkv "$presets/mp3.json") <<'END'
video mpeg4
audio mp2
sound.mp3: 3 nodes
cannot read missing.mkv
cannot read missing.mkv
cannot read missing.mkv
END
