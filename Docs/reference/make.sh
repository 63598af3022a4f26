#!/bin/bash
# make.sh <source tree> <Doxyfile> <folder> <YES or NO> <header>...: the reference of the headers, in <folder>/html if that is
# asked for. Fails with a line for each warning of doxygen.
set -euo pipefail
source=$1 doxyfile=$2 folder=$3 html=$4
shift 4

rm -rf "$folder"
mkdir -p "$folder"
"$source/Docs/reference/headers.py" "$source" "$folder/headers" "$@"
cd "$folder"
{
    cat "$doxyfile"
    echo "GENERATE_HTML = $html"
} >Doxyfile
doxygen Doxyfile 2>warnings || true
sed "s|^.*/headers/||" warnings
[[ ! -s warnings && -s zelnor.tag ]]
