#!/bin/sh
# Times whole conversions of COUNT copies of the CT sample, ours beside dcmcjpeg and gdcmconv.
# Usage: convert_archive.sh BUILD [COUNT]
set -eu
quorvex=$(realpath "$1")/bin/quorvex
count=${2:-500}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/in"
for i in $(seq "$count"); do cp samples/ct.dcm "$work/in/$i.dcm"; done

report() { # name command...
    name=$1
    shift
    rm -rf "$work/out"
    mkdir "$work/out"
    /usr/bin/time -f "$name: %e s, %U s user, %M KB at most" "$@" >/dev/null 2>"$work/log" ||
        cat "$work/log"
    tail -1 "$work/log"
}
each() { # command with {in} and {out}, once for every file
    report "$1" sh -c "for f in $work/in/*.dcm; do $2 \$f $work/out/\$(basename \$f); done"
}

for target in jpeg-lossless j2k-lossless; do
    for jobs in 1 2; do
        report "quorvex $target, $jobs jobs, verified" \
            "$quorvex" convert "$work/in" -o "$work/out" --to $target --jobs $jobs
        report "quorvex $target, $jobs jobs" \
            "$quorvex" convert "$work/in" -o "$work/out" --to $target --jobs $jobs --no-verify
    done
done
each "dcmcjpeg lossless" "dcmcjpeg +e1"
each "gdcmconv --jpeg" "gdcmconv --jpeg"
each "gdcmconv --j2k" "gdcmconv --j2k"
