#!/bin/sh
# Runs every fuzz target of a build for some seconds, beginning with the samples; a find is left in
# the build folder. Usage: run_fuzzers.sh BUILD SECONDS
set -eu
build=$1
seconds=$2
for fuzzer in "$build"/bin/*_fuzz; do
    name=$(basename "$fuzzer")
    inputs=$build/inputs/$name
    mkdir -p "$inputs"
    echo "== $name, $seconds s"
    "$fuzzer" "$inputs" samples -max_total_time="$seconds" -timeout=10 -rss_limit_mb=4096 \
        -max_len=1048576 -artifact_prefix="$build/" -print_final_stats=1 2>&1 |
        grep -E 'ERROR|SUMMARY|stat::(number_of_executed|peak_rss)|Test unit written' || true
    if ls "$build"/crash-* "$build"/timeout-* "$build"/oom-* >/dev/null 2>&1; then
        echo "$name has found something: see $build" >&2
        exit 1
    fi
done
