#!/bin/sh
# Long checks on the samples and on the real files that are there.
# Usage: run_stress.sh threads BUILD [LARGEST FILE IN KiB]
#        run_stress.sh soak BUILD [OBJECTS]
#        run_stress.sh verbs|memcheck BUILD [SHARE, as in 1/8]
# QUORVEX_CORPUS may name a folder of more files, with a MANIFEST.json beside its folder files/, and more in
# made/files/.
set -eu
job=$1
build=$2
pydicom=/usr/lib/python3/dist-packages/pydicom/data
corpus=${QUORVEX_CORPUS:-}

places=samples
for folder in "$pydicom" "$corpus/files" "$corpus/made/files"; do
    if [ -d "$folder" ]; then places="$places $folder"; fi
done
manifest=
if [ -f "$corpus/MANIFEST.json" ]; then manifest="--manifest $corpus/MANIFEST.json"; fi

# One and more of each transfer syntax, of each depth and colour, and some that end too soon.
memcheck_files() {
    for name in CT_small MR_small_implicit MR_small_bigendian MR_truncated rtdose_1frame liver_1frame \
        SC_ybr_full_422_uncompressed SC_rgb_small_odd image_dfl MR_small_RLE SC_rgb_rle_16bit \
        rtdose_rle_1frame SC_rgb_jpeg_dcmtk SC_rgb_dcmtk_+eb+cy+s2 JPEG-lossy SC_rgb_jpeg_gdcm \
        693_J2KI SC_rgb_gdcm_KY MR_small_jp2klossless; do
        echo "$pydicom/test_files/$name.dcm"
    done
    for name in jls_8u_1f jlsn_8u_rgb_ilv2_near1_1f jxl110_8_bare_1f jxl111_ycc2x2_2f htj2k201_1u_rpcl_2f rle_1bit_3f \
        deflateframe_1u_grey_3f encapsulated_1u_grey_3f jpeg57_sv2_8u_1f jpeg52_arithmetic_grey native_float_1f; do
        if [ -f "$corpus/made/files/$name.dcm" ]; then echo "$corpus/made/files/$name.dcm"; fi
    done
}

every_verb() {
    python3 tests/stress/every_verb.py "$build/bin/quorvex" "$@"
}

# shellcheck disable=SC2046,SC2086  # lists of paths without blanks
case $job in
    threads)
        TSAN_OPTIONS="suppressions=$PWD/tests/stress/tsan.supp" "$build/bin/quorvex_threads" \
            $(find $places -type f -size "-${3:-100000}k")
        ;;
    soak) GLIBC_TUNABLES=glibc.malloc.tcache_count=0 "$build/bin/quorvex_soak" "${3:-20000}" $places ;;
    verbs) every_verb $places $manifest --share "${3:-1/1}" ;;
    memcheck)
        echo "-- every output the same, whatever fresh heap memory holds"
        every_verb $places --share "${3:-1/1}" --twice
        echo "-- valgrind"
        every_verb samples $(memcheck_files) --share "${3:-1/1}" --cuts 85 \
            --verbs frame,render,thumbnail,convert --limit 600 \
            --under "valgrind --quiet --error-exitcode=99 --suppressions=tests/stress/valgrind.supp"
        ;;
    *)
        echo "run_stress.sh: unknown job '$job'" >&2
        exit 2
        ;;
esac
