#!/bin/sh
# Installs the Debian packages that a job needs and that are missing.
# Usage: install_packages.sh run|test|roundtrip|conformance|bench|fuzz|memcheck|matrix|check|docs|python|packages
set -eu
job=${1:-run}

build="g++ cmake ninja-build make ccache pkg-config zlib1g-dev libpng-dev libcli11-dev
       libjpeg62-turbo-dev libopenjp2-7-dev libopenjph-dev libcharls-dev libgdcm-dev
       libhwy-dev libssl-dev
       libcairo2-dev libfreetype-dev libjxl-dev fonts-dejavu-core"
tests="libgtest-dev python3 python3-numpy python3-pydicom dcmtk dicom3tools groff-base zsh fish"
displays="python3 python3-numpy python3-pydicom dcmtk"
conversions="python3 python3-numpy python3-pydicom dcmtk dicom3tools libgdcm-tools libjxl-tools libopenjp2-tools
             openjph-tools"
benches="time libgdcm-tools libbenchmark-dev libdcmtk-dev libopencv-core-dev libopencv-imgproc-dev
         libopenjph-dev"

pythons="python3 python3-cffi python3-numpy python3-pydicom python3-pil python3-gdcm python3-pytest
        python3-distributed mypy"
fuzzers="clang libclang-rt-14-dev python3 python3-pydicom"
checkers="clang-format clang-tidy abigail-tools git python3"

case $job in
    run) packages=$build ;;
    test) packages="$build $tests" ;;
    conformance) packages="$build $displays" ;;
    roundtrip) packages="$build $conversions" ;;
    bench) packages="$build $tests $benches" ;;
    memcheck) packages="$build $tests valgrind" ;;
    matrix) packages="$build $tests" ;;
    check) packages="$build $checkers" ;;
    python) packages="$build $pythons" ;;
    packages) packages="$build python3 python3-cffi python3-numpy dpkg-dev lintian man-db file" ;;
    docs) packages="make doxygen" ;;
    fuzz) packages="$build $fuzzers" ;;
    *) echo "install_packages.sh: unknown job '$job'" >&2; exit 2 ;;
esac

missing=
for package in $packages; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
        missing="$missing $package"
done
[ -n "$missing" ] || exit 0

as_root=
if [ "$(id -u)" -ne 0 ]; then as_root=sudo; fi
echo "Installing:$missing"
export DEBIAN_FRONTEND=noninteractive
# shellcheck disable=SC2086  # word lists
$as_root apt-get install -y -qq --no-install-recommends $missing >/dev/null 2>&1 || {
    $as_root apt-get update -qq
    $as_root apt-get install -y -qq --no-install-recommends $missing >/dev/null
}
