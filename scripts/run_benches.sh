#!/bin/sh
# Runs every bench of a build on one core beside its peers, then whole processes, and writes the
# report. Usage: run_benches.sh BUILD RESULTS
set -eu
build=$1
results=$2
mkdir -p "$results"
rm -f "$results"/*.json
one_core=
if command -v taskset >/dev/null; then one_core="taskset -c $(($(nproc) - 1))"; fi
for bench in "$build"/bin/*_bench; do
    name=$(basename "$bench")
    echo "== $name"
    $one_core "$bench" --benchmark_repetitions=9 --benchmark_report_aggregates_only=true \
        --benchmark_enable_random_interleaving=true --benchmark_min_time=0.05 \
        --benchmark_out="$results/$name.json" --benchmark_out_format=json >/dev/null 2>&1
done
python3 bench/report/whole_process.py "$build/bin/quorvex" "$results/whole_process.json"
python3 bench/report/large_file.py "$build/bin/quorvex" "$results/large_file.json" \
    >"$results/large_file.md"
python3 bench/report/cine.py "$build/bin/quorvex" "$build/bin/cine_host" >"$results/cine.md"
"$build/bin/large_objects" >"$results/large_objects.md"
python3 bench/report/report.py "$results"
