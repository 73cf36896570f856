#!/bin/sh
# Holds conversions of real files against independent tools: what lies below QUORVEX_CORPUS, and the files of pydicom.
# Usage: run_roundtrip.sh QUORVEX [SHARE [OPTION...]]
set -eu
quorvex=$1
share=${2:-1/1}
shift
[ $# -eq 0 ] || shift
set -- "$@" --share "$share" samples
for folder in "${QUORVEX_CORPUS:-}/files" "${QUORVEX_CORPUS:-}/made/files" \
        /usr/lib/python3/dist-packages/pydicom/data; do
    [ ! -d "$folder" ] || set -- "$@" "$folder"
done
exec /usr/bin/python3 tests/support/roundtrip.py "$quorvex" "$@"
