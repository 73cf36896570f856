#!/bin/sh
# Whether a host that was built against the last release still runs with this library.
# Usage: check_abi.sh BUILD [COMMIT]
#
# Builds the library of the last release, or of COMMIT, beside BUILD and compares the two with abidiff, as far
# as the public headers show types. A break is allowed only with another QUORVEX_ABI (CMakeLists.txt).
set -eu
cd "$(dirname "$0")/.."
build=${1:-build/release}
base=${2:-$(scripts/last_release.sh)}
if git diff --quiet "$base" -- CMakeLists.txt cmake include foundation codec presentation windowing parser \
    render maker pipeline states c; then
    echo "check_abi.sh: the library is the one of the last release ($(git rev-parse --short "$base"))"
    exit 0
fi

old=$(pwd)/build/abi
rm -rf "$old/source"
git worktree prune
git worktree add -q --force --detach "$old/source" "$base"
trap 'git worktree remove --force "$old/source"' EXIT
cmake -S "$old/source" -B "$old/build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DQUORVEX_TOOLS=OFF -DQUORVEX_TESTS=OFF >/dev/null
cmake --build "$old/build" --target QuorvexU >"$old/build.log" 2>&1 || {
    tail -20 "$old/build.log" >&2
    exit 1
}

soname() { readelf -d "$1" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p'; }
before=$old/build/lib/libQuorvexU.so
now=$build/lib/libQuorvexU.so
status=0
abidiff --headers-dir1 "$old/source/include" --headers-dir2 include --drop-private-types \
    "$before" "$now" >"$old/report.txt" || status=$?
# Bits of abidiff's answer: 1 error, 2 wrong usage, 4 a change, 8 a change that breaks.
if [ $((status & 3)) -ne 0 ]; then
    cat "$old/report.txt" >&2
    exit 1
fi
if [ $((status & 8)) -ne 0 ] && [ "$(soname "$before")" = "$(soname "$now")" ]; then
    cat "$old/report.txt" >&2
    echo "check_abi.sh: hosts of $(soname "$before") would break; count QUORVEX_ABI up" >&2
    exit 1
fi
echo "check_abi.sh: $(soname "$before") of the last release, $(soname "$now") now: abidiff $status"
