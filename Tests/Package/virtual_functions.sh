#!/bin/bash
# virtual_functions.sh <prefix> <scratch folder> <recorded list>: compares the order of the virtual functions of the
# public classes with the order recorded before. Programs that are already built call them by position. When a
# change is meant, record it with
#   Tests/Package/virtual_functions.sh <prefix> <scratch folder> > Tests/Package/virtual_functions.txt
set -euo pipefail
prefix=$(realpath "$1") scratch=$2 recorded=${3:-}

rm -rf "$scratch"
mkdir -p "$scratch"
# The table of an interface does not tell its functions apart, that of a class which implements it does.
{
    (cd "$prefix/include/zelnor" && find . -name '*.h' -printf '#include "%P"\n' | sort)
    cat <<'END'
namespace Zelnor::Implemented
{
struct IPreset : Conf::IPreset
{
    void GetStreamIndexes(const std::string&, std::vector<int>&) const override;
    std::uint32_t GetStreamCount() const override;
    const Core::Property& GetProperty() const override;
    int Release() const override;
    int GetRefCount() const override;
    int AddRef() const override;
};
} // namespace Zelnor::Implemented
END
} >"$scratch/all.cpp"
(cd "$scratch" && g++ -std=c++17 -fsyntax-only -fdump-lang-class -I "$prefix/include/zelnor" all.cpp)

# Offsets within an object follow from its members and are left out; position and function stay.
order() {
    awk '
        /^Vtable for / { ours = /^Vtable for Zelnor::/; if (ours) print $3; next }
        /^$/ { ours = 0 }
        ours && /\(int \(\*\)\(\.\.\.\)\)[A-Za-z_]/ { sub(/\(int \(\*\)\(\.\.\.\)\)/, ""); print "    " $1 " " $2 }
    ' "$scratch"/*.class
}

if [[ -z $recorded ]]; then
    order
    exit
fi
order | diff "$recorded" -
