#!/bin/sh
# The types of the Python package, and its tests. Usage: run_python_tests.sh BUILD
set -eu
cd "$(dirname "$0")/.."
QUORVEX_LIBRARY=$(pwd)/$1/lib/libQuorvexU.so
export QUORVEX_LIBRARY
(cd python && mypy --strict --cache-dir=/dev/null quorvex)
exec /usr/bin/python3 -B -W ignore -m pytest -q -p no:cacheprovider -p no:faulthandler python/tests
