#!/bin/bash
# installed_tree.sh <source tree> <build tree> <prefix>: what was installed is complete and names nothing of ours.
set -euo pipefail
source=$1 build=$2 prefix=$3

# All headers of the public folders, and of the media library's those that do not call themselves private.
public() {
    cd "$source"
    find Core/Interfaces Conf/Interfaces \( -name '*.h' -o -name '*.def' \) -print
    find Media -name '*.h' -print0 | xargs -0 grep -LE '^// Private to the library'
    cd "$build/generated"
    find . -type f -printf '%P\n'
}
if ! diff <(public | sort) <(cd "$prefix/include/zelnor" && find . -type f -printf '%P\n' | sort); then
    echo "what is installed is not what is public"
    exit 1
fi
if grep -rnF -e "$source" -e "$build" "$prefix"; then
    echo "the installed tree names the place it was built in"
    exit 1
fi
# Where FFmpeg's headers were is part of the package: they belong together.
if grep -rnE 'glog|GLOG|/usr/' "$prefix"/lib*/cmake "$prefix"/lib*/pkgconfig | grep -v 'find_path(Zelnor_AVCODEC_INCLUDE_DIR'; then
    echo "the package names what only the build needs"
    exit 1
fi
