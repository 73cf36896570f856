#!/bin/sh
# Whether the Debian packages hold what hosts need: laid out in an empty folder, with C, C++ and Python hosts built
# and run against what is there. Usage: check_packages.sh FOLDER_OF_PACKAGES
set -eu
cd "$(dirname "$0")/.."
packages=$1
sample=$(pwd)/samples/ct.dcm
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT

for package in "$packages"/*.deb; do
    dpkg-deb -x "$package" "$root"
    echo "$(dpkg-deb -f "$package" Package) $(dpkg-deb -f "$package" Installed-Size) KiB installed," \
        "$(($(stat -c %s "$package") / 1024)) KiB packed"
done
lintian --fail-on error --allow-root --suppress-tags initial-upload-closes-no-bugs "$packages"/*.deb

libraries=$(dirname "$(find "$root/usr" -name 'libQuorvexU.so.?')")
export LD_LIBRARY_PATH="$libraries"
cmake -S packaging/hosts -B "$root/hosts" -DCMAKE_PREFIX_PATH="$root/usr" >/dev/null
cmake --build "$root/hosts" >/dev/null
"$root/hosts/host_c" "$sample"
"$root/hosts/host_cpp" "$sample"
export PKG_CONFIG_PATH="$libraries/pkgconfig"
# shellcheck disable=SC2046  # flags
cc -std=c99 -o "$root/by_pkg_config" packaging/hosts/host.c $(pkg-config --cflags --libs quorvexu)
"$root/by_pkg_config" "$sample"
"$root/usr/bin/quorvex" info "$sample" --tag Modality
PYTHONPATH="$root/usr/lib/python3/dist-packages" /usr/bin/python3 -B -c '
import sys, quorvex
with quorvex.open(sys.argv[1]) as image:
    print("Python", quorvex.__version__, image.frame(0).shape)' "$sample"
man -l "$root/usr/share/man/man1/quorvex.1.gz" >/dev/null
echo "check_packages.sh: all hosts run"
