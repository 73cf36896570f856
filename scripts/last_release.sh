#!/bin/sh
# Prints the commit of the last release: the one that gave the project its present version.
set -eu
git log -1 --format=%H -G'^project\(QuorvexU VERSION' -- CMakeLists.txt
