#!/bin/bash
# architecture_notices.sh <source tree> <scratch folder>: architecture.sh says so when something is wrong. Each case
# breaks one thing in a small tree of the same folders.
set -euo pipefail
source=$1
scratch=$2
tree=$scratch/tree

make_tree() {
    rm -rf "$tree"
    mkdir -p "$tree/Docs" "$tree/Tests/Docs"
    cp "$source"/Docs/architecture.{dot,svg} "$tree/Docs"
    cp "$source/Tests/Docs/includes.awk" "$tree/Tests/Docs"
    gvpr 'N[shape == "folder"] { print(name) }' "$source/Docs/architecture.dot" | (cd "$tree" && xargs mkdir -p)
    printf '#include "Core/Property.h"\n' >"$tree/Conf/IFormat.h"
}

look() {
    bash "$source/Tests/Docs/architecture.sh" "$tree" "$scratch/drawn"
}

# expect_fault <text>: it fails, and the text is among what it prints.
expect_fault() {
    local said
    if said=$(look); then
        echo "nothing was noticed, expected: $1"
        exit 1
    fi
    if ! grep -qF -- "$1" <<<"$said"; then
        printf 'expected: %s\nsaid:\n%s\n' "$1" "$said"
        exit 1
    fi
}

make_tree
look

printf '#include "Media/Running/JobRun.h"\n' >"$tree/Media/Planning/JobPlan.cpp"
expect_fault 'Media/Planning/JobPlan.cpp:1: Media/Planning must not include Media/Running (Media/Running/JobRun.h)'

make_tree
printf '\n#include "Conf/IFormat.h"\n' >"$tree/Core/Property.cpp"
expect_fault 'Core/Property.cpp:2: Core must not include Conf (Conf/IFormat.h)'

make_tree
printf '#include "Property.h"\n' >"$tree/Core/Property.cpp"
expect_fault 'Core/Property.cpp:1: "Property.h" is not in a folder of the drawing'

make_tree
rmdir "$tree/Media/Jobs"
expect_fault 'Docs/architecture.dot shows the folder Media/Jobs, which is not there'

make_tree
mkdir "$tree/Media/Attic"
expect_fault 'Docs/architecture.dot does not show the folder Media/Attic'

make_tree
rm "$tree/Conf/IFormat.h"
expect_fault 'there are no includes to look at'

make_tree
sed -i 's/preset files and their rules/preset files/' "$tree/Docs/architecture.dot"
expect_fault "Docs/architecture.svg is not what Docs/architecture.dot draws"

make_tree
sed -i 's|"Media" -> "Conf" -> "Core"|"Media" -> "Conf" -> "Core" -> "Media"|' "$tree/Docs/architecture.dot"
expect_fault 'the arrows lead from Core back to it'
