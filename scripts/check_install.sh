#!/bin/sh
# Whether the packages install into an empty Debian 12, and run there. Needs root, debootstrap and Debian's mirror.
# Usage: check_install.sh FOLDER_OF_PACKAGES
set -eu
cd "$(dirname "$0")/.."
packages=$1
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
debootstrap --variant=minbase bookworm "$root" >"$root.log" 2>&1 || { tail -5 "$root.log" >&2; exit 1; }
rm -f "$root.log"
mkdir "$root/packages"
cp "$packages"/*.deb samples/ct.dcm "$root/packages"
chroot "$root" sh -c 'apt-get update -qq &&
    export DEBIAN_FRONTEND=noninteractive &&
    { apt-get install -y -qq --no-install-recommends /packages/*.deb >/packages/log 2>&1 ||
        { tail -5 /packages/log; exit 1; }; }
    quorvex info /packages/ct.dcm --tag Modality
    quorvex convert /packages/ct.dcm -o /packages/out.dcm --to htj2k-lossless
    python3 -c "import quorvex; print(quorvex.open(\"/packages/out.dcm\"))"
    apt-get remove -y -qq libquorvexu2 >/dev/null 2>&1 && ! test -e /usr/bin/quorvex'
echo "check_install.sh: installed, run and removed"
