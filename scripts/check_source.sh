#!/bin/sh
# What a look at the source alone can tell: format, line width, and the include rule.
set -eu
cd "$(dirname "$0")/.."

git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run -Werror
wide=$(git ls-files '*.cpp' '*.h' '*.inc' '*.py' '*.sh' '*.cmake' |
    grep -v dictionary_table.inc | xargs awk 'length > 120 || (FILENAME ~ /\.(cpp|h)$/ && length > 100) {
        print FILENAME ":" FNR ": " length " columns" }')
if [ -n "$wide" ]; then
    echo "$wide" >&2
    exit 1
fi
python3 scripts/check_includes.py
