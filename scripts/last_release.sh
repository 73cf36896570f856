#!/bin/sh
# Prints the commit of the last release: the newest tag v*, or in a clone without tags the commit that gave the
# project its present version.
set -eu
tag=$(git describe --tags --abbrev=0 --match 'v*' 2>/dev/null || true)
if [ -n "$tag" ]; then
    git rev-list -n 1 "$tag"
else
    git log -1 --format=%H -G'^project\(QuorvexU VERSION' -- CMakeLists.txt
fi
