#!/bin/bash
# errors.sh <source tree>: Docs/errors.md has every class of exceptions of the headers, and every tag.
set -euo pipefail
cd "$1"
headers=(Core/Interfaces/Exception.h Conf/Interfaces/ConfException.h Media/MediaException.h
    Media/Pages/Graphviz.h Media/Verifying/Verification.h)
wrong=0
classes=$(sed -nE 's/^class ZELNOR_API ([A-Za-z]+) : public.*/\1/p' "${headers[@]}")
tags=$(sed -nE 's/^ *using (Tag[A-Za-z]+) =.*/\1/p' "${headers[@]}")
[[ -n $classes && -n $tags ]]
for class in $classes; do
    grep -qx "### $class" Docs/errors.md || { echo "Docs/errors.md does not describe $class"; wrong=1; }
done
for tag in $tags; do
    grep -q "^.*Tags: .*\`$tag\`" Docs/errors.md || { echo "Docs/errors.md does not list $tag"; wrong=1; }
done
exit "$wrong"
