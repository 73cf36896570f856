/// 8-bit JPEG streams of any sampling, colour space and scans, from the library that others use.
#pragma once

#include "tests/engines/jpeg_test_streams.h"

// The library's header wants the standard's first.
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>

namespace quorvex::testing {

struct JpegRecipe {
    const char* name = "";
    int horizontal = 1;  ///< sampling of the first component
    int vertical = 1;
    bool progressive = false;
    int restartRows = 0;
    J_COLOR_SPACE in = JCS_RGB;
    J_COLOR_SPACE stored = JCS_YCbCr;
    bool arithmetic = false;
    bool marked = true;  ///< the stream says what its components are
};

inline ByteVector MakeJpeg(int columns, int rows, const ByteVector& picture,
                           const JpegRecipe& recipe) {
    const int samples = recipe.in == JCS_CMYK ? 4 : 3;
    jpeg_compress_struct codec{};
    jpeg_error_mgr errors{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_compress(&codec);
    unsigned char* out = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&codec, &out, &size);
    codec.image_width = static_cast<JDIMENSION>(columns);
    codec.image_height = static_cast<JDIMENSION>(rows);
    codec.input_components = samples;
    codec.in_color_space = recipe.in;
    jpeg_set_defaults(&codec);
    jpeg_set_colorspace(&codec, recipe.stored);
    jpeg_set_quality(&codec, 95, TRUE);
    codec.comp_info[0].h_samp_factor = recipe.horizontal;
    codec.comp_info[0].v_samp_factor = recipe.vertical;
    codec.restart_in_rows = recipe.restartRows;
    if (!recipe.marked) {
        codec.write_JFIF_header = FALSE;
        codec.write_Adobe_marker = FALSE;
        for (int i = 0; i < samples; ++i) codec.comp_info[i].component_id = i;
    }
    codec.arith_code = recipe.arithmetic ? TRUE : FALSE;
    if (recipe.progressive) jpeg_simple_progression(&codec);
    jpeg_start_compress(&codec, TRUE);
    auto* row = const_cast<JSAMPLE*>(picture.data());
    for (; codec.next_scanline < codec.image_height; row += columns * samples)
        jpeg_write_scanlines(&codec, &row, 1);
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
    ByteVector stream(out, out + size);
    std::free(out);
    return stream;
}

}  // namespace quorvex::testing
