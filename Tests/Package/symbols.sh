#!/bin/bash
# symbols.sh <prefix> <recorded list>: compares what the libraries export with what they exported before. A removed
# line breaks programs that are already built; when a change is meant, record it with
#   Tests/Package/symbols.sh <prefix> > Tests/Package/exported_symbols.txt
set -euo pipefail
prefix=$1 recorded=${2:-}

exported() {
    local library
    for library in ZelnorCore ZelnorConf ZelnorMedia; do
        # Each list of FFmpeg's codec IDs has a symbol of its own.
        find "$prefix" -name "lib$library.so" -exec nm -DC --defined-only --without-symbol-versions {} + |
            sed -E "/ A ZELNOR_[0-9]+$/d; s/(codecNumbers_)[0-9a-f]+$/\1/; s/^[0-9a-f]+ ./$library/"
    done | LC_ALL=C sort -u
}

if [[ -z $recorded ]]; then
    exported
    exit
fi
if exported | grep -vE '^Zelnor(Core|Conf|Media) (Zelnor::|((construction )?vtable|VTT|typeinfo|typeinfo name) for Zelnor::|((non-)?virtual|covariant return) thunk to Zelnor::|typeinfo (name )?for boost::error_info<Zelnor::)'; then
    echo "exported, but not ours"
    exit 1
fi
exported | diff "$recorded" -
