#!/bin/bash
# debian_packages.sh <source tree> <build tree> <scratch folder>: the Debian packages that cpack makes, installed into a root
# of their own: lintian finds nothing to warn of, a project builds against them, and the tool runs a job.
set -euo pipefail
source=$1 build=$2 scratch=$3
packages=(libzelnor1 libzelnor-media1 libzelnor-dev zconf)
root=$scratch/root

rm -rf "$scratch"
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$scratch/job"
touch "$root/var/lib/dpkg/status"
# What belongs to no package would be left out in silence. The Python package is for Python's own installer.
if find "$build" -name cmake_install.cmake -not -path '*/Tests/*' -exec sed -nE 's/.*CMAKE_INSTALL_COMPONENT STREQUAL "([^"]+)".*/\1/p' {} + |
    sort -u | grep -vxF "$(printf '%s\n' "${packages[@]}")" | grep -vi python; then
    echo "a component that no package has"
    exit 1
fi
(cd "$build" && cpack -G DEB -B "$scratch/packages") >"$scratch/packed"
# Folders for each architecture come with a build for /usr, which this one need not be.
lintian --no-cfg --fail-on error,warning --suppress-tags pkg-config-unavailable-for-cross-compilation "$scratch"/packages/*.deb

for package in "${packages[@]}"; do
    dpkg --root="$root" --force-depends --force-not-root --no-triggers --log=/dev/null \
        --unpack "$scratch/packages/${package}"_1*.deb >>"$scratch/installed"
done
# What is asked of a program that is linked with them.
for package in libzelnor1 libzelnor-media1; do
    for control in symbols shlibs triggers; do
        [[ -s $root/var/lib/dpkg/info/$package.$control ]] || { echo "$package has no $control"; exit 1; }
    done
    grep -q " _ZN6Zelnor.*@ZELNOR_1 1\.0\.0$" "$root/var/lib/dpkg/info/$package.symbols"
done
libraries=$(dirname "$(find "$root/usr/lib" -name libZelnorConf.so.1)")
if readelf -d "$root"/usr/bin/zconf "$libraries"/*.so.1 | grep -E 'RPATH|RUNPATH'; then
    echo "the dynamic linker is told where to look"
    exit 1
fi

LD_LIBRARY_PATH=$libraries
export LD_LIBRARY_PATH
cmake -G Ninja -S "$source/Tests/Package/consumer" -B "$scratch/consumer" -DCMAKE_PREFIX_PATH="$root/usr" \
    -DCONSUMER_SOURCE="$source/Examples/road_of_a_job.cpp" >/dev/null
cmake --build "$scratch/consumer"
"$scratch/consumer/consumer" | diff "$source/Examples/road_of_a_job.txt" -

cd "$scratch/job"
ffmpeg -v error -y -f lavfi -i testsrc2=size=64x48:rate=25:duration=1 -c:v mpeg4 clip.avi
"$root/usr/bin/zconf" job new --preset mp4-h264-aac --input clip.avi --output clip -o job.json
"$root/usr/bin/zconf" job run job.json
[[ -s clip.mp4 ]]
