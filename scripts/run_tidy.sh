#!/bin/sh
# clang-tidy over the product. Usage: run_tidy.sh BUILD [all]
#
# Without "all": the source files that changed since the last release, and for each header that changed one that
# includes it. BUILD has been configured; any finding is an error.
set -eu
cd "$(dirname "$0")/.."
build=$1
rooms='^(foundation|codec|presentation|windowing|parser|render|maker|pipeline|states|c|tools)/'
if [ "${2:-}" = all ]; then
    files=$(git ls-files '*.cpp' | grep -E "$rooms")
else
    changed=$(git diff --name-only --diff-filter=d "$(scripts/last_release.sh)")
    files=$(echo "$changed" | grep -E "$rooms.*\.cpp$" || true)
    for header in $(echo "$changed" | grep -E '\.(h|inc)$' | sed 's|^include/||'); do
        files="$files
$(git grep -lF "#include \"$header\"" -- '*.cpp' | grep -E "$rooms" | head -n 1 || true)"
    done
    files=$(echo "$files" | sort -u | sed '/^$/d')
fi
[ -n "$files" ] || exit 0
# GCC's own warning flags are no flags of clang; header-only files of this build are not compiled.
compiled=$(python3 -c '
import json, os, sys
print("\n".join(os.path.relpath(row["file"]) for row in json.load(open(sys.argv[1]))))' "$build/compile_commands.json")
echo "$files" | grep -Fx "$compiled" | xargs -P "$(nproc)" -n 4 clang-tidy -p "$build" --quiet \
    --warnings-as-errors='*' --extra-arg=-Wno-unknown-warning-option
