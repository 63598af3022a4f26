#!/bin/bash
# reference.sh <source tree> <Doxyfile> <scratch folder> <header>...: doxygen finds nothing that is not documented, and would
# say so.
set -euo pipefail
source=$1 doxyfile=$2 scratch=$3
shift 3
rm -rf "$scratch"
bash "$source/Docs/reference/make.sh" "$source" "$doxyfile" "$scratch/all" NO "$@"
# The vocabulary is part of it.
for name in CODEC_ID_H264 FORMAT_MP4 PIX_FMT_YUV420P CH_LAYOUT_STEREO SetChildT PlanJob; do
    grep -q ">$name<" "$scratch/all/zelnor.tag" || { echo "$name is missing"; exit 1; }
done

mkdir -p "$scratch/source/Docs/reference" "$scratch/source/Core"
cp "$source"/Docs/reference/* "$scratch/source/Docs/reference"
printf '%s\n' '/// \file' '' '/// Said.' 'struct Said' '{' '    int one;' '' '    int two; ///< said' '};' >"$scratch/source/Core/Said.h"
if bash "$source/Docs/reference/make.sh" "$scratch/source" "$doxyfile" "$scratch/one" NO "$scratch/source/Core/Said.h" \
    >"$scratch/found"; then
    echo "what is not documented is not noticed"
    exit 1
fi
grep -q '^Core/Said.h:6: .*one' "$scratch/found"
[[ $(wc -l <"$scratch/found") -eq 1 ]]
