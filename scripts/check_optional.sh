#!/bin/sh
# Compiles what differs in a build without libjxl and OpenJPH; "all" builds everything so and runs its tests.
# Usage: check_optional.sh [all]
set -eu
cd "$(dirname "$0")/.."
build=build/optional
tests=OFF  # they have libraries of their own to compare with
if [ "${1:-}" = all ]; then tests=ON; fi

cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS="-O0" -DCMAKE_COMPILE_WARNING_AS_ERROR=ON \
    -DQUORVEX_JPEGXL=OFF -DQUORVEX_HTJ2K=OFF -DQUORVEX_TESTS=$tests >/dev/null
if [ $tests = ON ]; then
    cmake --build $build
    cd $build
    exec ctest --output-on-failure
fi
objects=
for source in foundation/dicom/model/transfer_syntax foundation/engines/jpegxl/jpegxl_without_library \
    foundation/engines/jpeg2000/high_throughput_encoding_without_library; do
    objects="$objects CMakeFiles/quorvex_objects.dir/$source.cpp.o"
done
# shellcheck disable=SC2086  # a list of paths without blanks
cmake --build $build --target $objects tools/CMakeFiles/quorvex.dir/convert_target.cpp.o >/dev/null
if grep -q -e '-ljxl' -e 'libjxl' -e 'openjph' $build/build.ninja; then
    echo "check_optional.sh: the build still links a library that it was to do without" >&2
    exit 1
fi
