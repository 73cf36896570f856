#!/bin/sh
# Runs fuzz targets of a build for some seconds each, beginning with real files, the samples and the
# saved finds. A find is left in BUILD/finds, a line of figures in BUILD/fuzz_figures.txt.
# QUORVEX_CORPUS may name a folder whose files/ holds more real files.
# Usage: run_fuzzers.sh BUILD SECONDS [TARGET...]
set -eu
build=$1
seconds=$2
shift 2
seeds=$build/seeds
mkdir -p "$build/finds"
if [ ! -d "$seeds" ]; then
    folders="samples /usr/lib/python3/dist-packages/pydicom/data"
    [ -z "${QUORVEX_CORPUS:-}" ] || folders="$folders $QUORVEX_CORPUS/files $QUORVEX_CORPUS/made/files"
    # shellcheck disable=SC2086  # a word list
    /usr/bin/python3 -B scripts/make_fuzz_seeds.py "$seeds" $folders
fi
# shellcheck disable=SC2046  # a word list
[ $# -gt 0 ] || set -- $(cd "$build/bin" && ls -d -- *_fuzz)

failed=0
for name in "$@"; do
    log=$build/$name.log
    mkdir -p "$build/inputs/$name" "$seeds/$name"
    saved=tests/data/$name
    [ -d "$saved" ] || saved=
    echo "== $name, $seconds s"
    found=0
    # shellcheck disable=SC2086  # an empty word is none
    "$build/bin/$name" "$build/inputs/$name" "$seeds/$name" $saved -max_total_time="$seconds" \
        -dict="$seeds/dicom.dict" -timeout=25 -rss_limit_mb=1024 -malloc_limit_mb=512 -max_len=131072 \
        -artifact_prefix="$build/finds/$name-" -print_final_stats=1 >"$log" 2>&1 || found=$?
    awk -v name="$name" '/ cov: / { coverage = $4 } /^stat::number_of_executed/ { runs = $2 }
        /^stat::peak_rss/ { peak = $2 } /^Done/ { seconds = $5 }
        END { printf "%s: %d executions, %d s, peak %d MiB, %d places covered\n", name, runs, seconds,
              peak, coverage }' "$log" | tee -a "$build/fuzz_figures.txt"
    [ $found -eq 0 ] || {
        grep -E 'ERROR|SUMMARY|Test unit written' "$log" >&2 || true
        echo "$name has found something: see $log and $build/finds" >&2
        failed=1
    }
done
exit $failed
