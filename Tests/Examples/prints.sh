#!/bin/bash
# prints.sh <program> <expected output>
set -euo pipefail
"$1" | diff "$2" -
