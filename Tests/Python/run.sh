#!/bin/bash
# run.sh <python> <folder of the built package> <libraries of the address sanitizer, or empty> <argument of pytest>...
# Runs the tests of the Python package. Without arguments of pytest, all of them.
set -euo pipefail
python=$1 package=$2 runtime=$3
shift 3
here=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")

export PYTHONPATH=$package PYTHONDONTWRITEBYTECODE=1
if [[ -n $runtime ]]; then
    # The interpreter frees nothing at its end, so test_leaks.py looks for leaks before; and its own small objects would
    # hide what is done to ours.
    export LD_PRELOAD=$runtime PYTHONMALLOC=malloc ASAN_OPTIONS=detect_leaks=0${ASAN_OPTIONS:+:$ASAN_OPTIONS}
fi
exec "$python" -m pytest -q -p no:cacheprovider "${@:-$here}"
