#!/bin/bash
# install.sh <build tree> <prefix>: installs and moves the result, so that whatever holds a path to its old place fails
# the tests that come after.
set -euo pipefail
build=$1 prefix=$2

rm -rf "$prefix" "$prefix.elsewhere"
cmake --install "$build" --prefix "$prefix.elsewhere" >/dev/null
mv "$prefix.elsewhere" "$prefix"
if [[ -e $build/bin/zconf ]]; then
    "$prefix/bin/zconf" --help >/dev/null
fi
