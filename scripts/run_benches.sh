#!/bin/sh
# Runs every bench of a build, one thread, and prints medians. Usage: run_benches.sh BUILD
set -eu
for bench in "$1"/bin/*_bench; do
    echo "== $(basename "$bench")"
    "$bench" --benchmark_repetitions=9 --benchmark_report_aggregates_only=true \
        --benchmark_enable_random_interleaving=true --benchmark_min_time=0.05 2>/dev/null |
        grep -E '_median|^Benchmark' | sed 's/_median//'
done
