#!/bin/sh
# Renders the files named, or the samples, into a folder of pictures.
# Usage: run_samples.sh QUORVEX PICTURES [FILE...]
set -eu
quorvex=$1
pictures=$2
shift 2
mkdir -p "$pictures"
written=

render() { # source picture [options]
    source=$1
    picture=$pictures/$2
    shift 2
    "$quorvex" render "$source" -o "$picture" "$@"
    written="$written $picture"
}

if [ $# -gt 0 ]; then
    for file in "$@"; do render "$file" "$(basename "$file" .dcm).png"; done
else
    "$quorvex" phantom -o "$pictures/phantom"
    for file in samples/*.dcm "$pictures"/phantom/*.dcm; do
        case $file in
            *state*) continue ;;
            "$pictures"/*) name=full_$(basename "$file" .dcm).png ;;
            *) name=$(basename "$file" .dcm).png ;;
        esac
        render "$file" "$name"
    done
    render samples/ct.dcm ct_bone_turned.png --window 300,1500 --rotate 90 --view 768x768 --zoom 1.5
    render samples/ct.dcm ct_state.png --state samples/ct_state.dcm --annotations
fi
echo "Pictures:"
for picture in $written; do echo "  $picture"; done
