#!/bin/bash
# header_example.sh <source tree> <header>: makes a test of the example that a public header opens with, and prints it.
# Examples are written as inside namespace Zelnor::Conf. What they assert is checked when the test runs.
set -euo pipefail
source=$1 header=$2

# The example stands before the header's first declaration.
begin=$(awk '/^(namespace|class|struct) / { exit } $0 == "/// \\code" { print NR + 1; exit }' "$source/$header")
if [[ -z $begin ]]; then
    echo "$header does not open with an example" >&2
    exit 1
fi
stem=$(basename "$header" .h)

cat << END
#include "$header"

#include <gtest/gtest.h>

// After all headers, which may turn assertions off and on.
#undef NDEBUG
#include <cassert>

namespace Zelnor::Conf
{

TEST(HeaderExample, Of$stem)
{
#line $begin "$header"
$(tail -n "+$begin" "$source/$header" | sed -n '/^\/\/\/ \\endcode$/q; s,^/// \?,,p')
}

} // namespace Zelnor::Conf
END
