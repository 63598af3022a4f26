#!/bin/bash
# installed_tree.sh <source tree> <build tree> <prefix>: what was installed is complete and names nothing of ours.
set -euo pipefail
source=$1 build=$2 prefix=$3

missing=$(comm -23 \
    <(cd "$source" && find Core/Interfaces Conf/Interfaces -name '*.h' -o -name '*.def' | sort) \
    <(cd "$prefix/include/zelnor" && find . -type f -printf '%P\n' | sort))
if [[ -n $missing ]]; then
    echo "not installed:"
    echo "$missing"
    exit 1
fi
if grep -rnF -e "$source" -e "$build" "$prefix"; then
    echo "the installed tree names the place it was built in"
    exit 1
fi
if grep -rniE 'glog|/usr/' "$prefix"/lib*/cmake "$prefix"/lib*/pkgconfig; then
    echo "the package names what only the build needs"
    exit 1
fi
