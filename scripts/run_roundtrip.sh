#!/bin/sh
# Holds conversions of real files against independent tools: what lies below QUORVEX_CORPUS, and the files of pydicom.
# Then a conversion of many copies that is killed and resumed against one that nobody disturbs.
# Usage: run_roundtrip.sh QUORVEX [SHARE [OPTION...]]
set -eu
quorvex=$1
share=${2:-1/1}
shift
[ $# -eq 0 ] || shift
options="--share $share $*"
set -- samples
for folder in "${QUORVEX_CORPUS:-}/files" "${QUORVEX_CORPUS:-}/made/files" \
        /usr/lib/python3/dist-packages/pydicom/data; do
    [ ! -d "$folder" ] || set -- "$@" "$folder"
done
# shellcheck disable=SC2086 # options are words
/usr/bin/python3 tests/support/roundtrip.py "$quorvex" $options "$@"
/usr/bin/python3 tests/support/kill_and_resume.py "$quorvex" "$@"
