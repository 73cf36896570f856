// Subsampled chroma and odd sizes: every picture of 1 to 17 pixels a side, with every subsampling.
#include "tests/engines/jpeg_library_streams.h"
#include "tests/reliability/coded_frames.h"
#include "tests/support/every_route.h"
#include "tests/support/memory_file.h"
#include "tests/support/temporary_file.h"

#include <gtest/gtest.h>
#include <openjpeg.h>
#include <string>

namespace quorvex::test {
namespace {

constexpr unsigned kMostSide = 17;

template <class Check>
void ForEachSize(Check check) {
    for (unsigned columns = 1; columns <= kMostSide; ++columns) {
        for (unsigned rows = 1; rows <= kMostSide; ++rows) {
            SCOPED_TRACE(std::to_string(columns) + " x " + std::to_string(rows));
            check(FrameForm{.columns = columns, .rows = rows, .samples = 3});
        }
    }
}

constexpr testing::JpegRecipe kRecipes[] = {
    {"4:4:4"},
    {"4:2:2", 2, 1},
    {"4:2:0", 2, 2},
    {"4:4:0", 1, 2},
    {"4:1:1", 4, 1},
    {"4:2:0, progressive", 2, 2, true},
    {"4:2:2, restarts", 2, 1, false, 1},
    {.name = "arithmetic", .arithmetic = true},
    {.name = "4:2:0, arithmetic", .horizontal = 2, .vertical = 2, .arithmetic = true},
    {.name = "arithmetic, progressive", .progressive = true, .arithmetic = true}};

Bytes CodeSubsampled(const FrameForm& form, const Bytes& rgb, const testing::JpegRecipe& recipe) {
    return testing::MakeJpeg(static_cast<int>(form.columns), static_cast<int>(form.rows), rgb,
                             recipe);
}

/// As the library itself decodes, line by line.
Bytes DecodeDirectly(const FrameForm& form, const Bytes& stream) {
    jpeg_decompress_struct codec{};
    jpeg_error_mgr errors{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&codec);
    jpeg_mem_src(&codec, stream.data(), stream.size());
    jpeg_read_header(&codec, TRUE);
    jpeg_start_decompress(&codec);
    Bytes rgb(form.Bytes());
    for (unsigned char* row = rgb.data(); codec.output_scanline < form.rows;
         row += form.columns * 3)
        jpeg_read_scanlines(&codec, &row, 1);
    jpeg_finish_decompress(&codec);
    jpeg_destroy_decompress(&codec);
    return rgb;
}

Bytes Flat(const FrameForm& form, std::array<unsigned char, 3> colour) {
    Bytes rgb;
    for (unsigned i = 0; i < form.columns * form.rows; ++i)
        rgb.insert(rgb.end(), colour.begin(), colour.end());
    return rgb;
}

TEST(OddSizes, SubsampledJpegIsWhatItsLibraryDecodes) {
    const Coding& baseline = kCodings[2];
    ForEachSize([&](const FrameForm& form) {
        const auto param = DecodingParam(baseline, form);
        const Bytes flat = Flat(form, {200, 90, 30});
        for (const testing::JpegRecipe& recipe : kRecipes) {
            const Bytes stream = CodeSubsampled(form, PictureOf(form), recipe);
            _IMAGE_PROCESS_PARAM ybr = param;
            ybr.photometric = "YBR_FULL_422";
            const Bytes wanted = DecodeDirectly(form, stream);
            EXPECT_EQ(DecodeGuarded(ybr, stream, form.Bytes()).frame, wanted) << recipe.name;
            EXPECT_EQ(DecodeGuarded(param, stream, form.Bytes()).frame, wanted) << recipe.name;
            // An edge that takes its colour from elsewhere shows in a flat picture.
            const Bytes flatStream = CodeSubsampled(form, flat, recipe);
            const Bytes shown = DecodeGuarded(param, flatStream, form.Bytes()).frame;
            EXPECT_LE(testing::GreatestError(shown, flat, 1), 3) << recipe.name;
        }
    });
}

constexpr const char* kHalfChroma[] = {"YBR_FULL_422", "YBR_PARTIAL_422"};

TEST(OddSizes, NativeHalfChromaIsFlatWhereItsSourceIs) {
    ForEachSize([](const FrameForm& form) {
        const std::size_t pixels = std::size_t{form.columns} * form.rows;
        for (const char* photometric : kHalfChroma) {
            const bool isFull = std::string(photometric) == "YBR_FULL_422";
            Bytes stored;
            for (std::size_t p = 0; p < pixels; ++p) {
                const std::size_t place = isFull ? p : p % form.columns;
                stored.push_back(120);
                stored.push_back(place % 2 == 0 ? 100 : 150);
            }
            _IMAGE_PROCESS_PARAM param = DecodingParam(kCodings[0], form);
            param.photometric = photometric;
            const Bytes rgb = DecodeGuarded(param, stored, form.Bytes()).frame;
            ASSERT_EQ(rgb.size(), form.Bytes());
            // A pixel without its red difference: the last of an odd number, or a row of one.
            const bool lacksLast = isFull && pixels % 2 == 1;
            const bool lacksRed = !isFull && form.columns == 1;
            const Bytes first(rgb.begin(), rgb.begin() + 3);
            for (std::size_t p = 0; p + (lacksLast ? 1 : 0) < pixels; ++p)
                ASSERT_TRUE(std::equal(first.begin(), first.end(), &rgb[3 * p])) << photometric;
            if (lacksLast || lacksRed) continue;
            const Bytes wanted = isFull ? Bytes{151, 114, 70} : Bytes{156, 115, 65};
            EXPECT_LE(testing::GreatestError(first, wanted, 1), 1) << photometric;
        }
    });
}

using OpjImage = std::unique_ptr<opj_image_t, decltype(&opj_image_destroy)>;

/// Components of their own size each, the second and third one sample for dx x dy pixels.
OpjImage MakeComponents(const FrameForm& form, unsigned dx, unsigned dy, unsigned origin) {
    opj_image_cmptparm_t parameters[3]{};
    for (unsigned c = 0; c < 3; ++c) {
        auto& p = parameters[c];
        p.dx = c == 0 ? 1 : dx;
        p.dy = c == 0 ? 1 : dy;
        p.x0 = p.y0 = origin;
        p.w = (origin + form.columns + p.dx - 1) / p.dx - (origin + p.dx - 1) / p.dx;
        p.h = (origin + form.rows + p.dy - 1) / p.dy - (origin + p.dy - 1) / p.dy;
        p.prec = 8;
    }
    OpjImage image(opj_image_create(3, parameters, OPJ_CLRSPC_SRGB), opj_image_destroy);
    if (!image) return image;  // a component without a sample
    image->x0 = image->y0 = origin;
    image->x1 = origin + form.columns;
    image->y1 = origin + form.rows;
    for (unsigned c = 0; c < 3; ++c) {
        for (unsigned i = 0; i < parameters[c].w * parameters[c].h; ++i)
            image->comps[c].data[i] = static_cast<int>((i * 29 + c * 70 + 11) % 256);
    }
    return image;
}

Bytes CodeComponents(opj_image_t& image) {
    opj_cparameters_t settings{};
    opj_set_default_encoder_parameters(&settings);
    settings.numresolution = 1;
    settings.tcp_numlayers = 1;
    settings.cp_disto_alloc = 1;
    opj_codec_t* codec = opj_create_compress(OPJ_CODEC_J2K);
    const TemporaryFile file;
    opj_stream_t* stream = opj_stream_create_default_file_stream(file.Path().c_str(), OPJ_FALSE);
    const bool isCoded = opj_setup_encoder(codec, &settings, &image) != 0 &&
                         opj_start_compress(codec, &image, stream) != 0 &&
                         opj_encode(codec, stream) != 0 && opj_end_compress(codec, stream) != 0;
    opj_stream_destroy(stream);
    opj_destroy_codec(codec);
    return isCoded ? BytesOfFile(file.Path()) : Bytes();
}

Bytes Spread(const opj_image_t& image, const FrameForm& form) {
    Bytes rgb;
    for (unsigned y = 0; y < form.rows; ++y) {
        for (unsigned x = 0; x < form.columns; ++x) {
            for (const auto& c : std::span(image.comps, 3))
                rgb.push_back(static_cast<unsigned char>(c.data[y / c.dy * c.w + x / c.dx]));
        }
    }
    return rgb;
}

TEST(OddSizes, SubsampledJpeg2000IsSpreadOverItsPixels) {
    const Coding& lossless = kCodings[6];
    int coded = 0;
    ForEachSize([&](const FrameForm& form) {
        for (const auto& [dx, dy] : {std::pair{1U, 1U}, {2U, 1U}, {2U, 2U}, {1U, 2U}, {4U, 4U}}) {
            for (const unsigned origin : {0U, 1U, 3U}) {
                const OpjImage source = MakeComponents(form, dx, dy, origin);
                if (!source) continue;
                const Bytes wanted = origin == 0 ? Spread(*source, form) : Bytes();
                const Bytes stream = CodeComponents(*source);
                ASSERT_FALSE(stream.empty());
                const auto param = DecodingParam(lossless, form);
                const Bytes rgb = DecodeGuarded(param, stream, form.Bytes()).frame;
                EXPECT_TRUE(origin != 0 || rgb == wanted) << dx << ' ' << dy;
                ++coded;
            }
        }
    });
    EXPECT_GT(coded, 17 * 17 * 5 * 2);
}

/// Frames are scaled after they are decoded: a flat one stays flat at every size.
TEST(OddSizes, ThumbnailsOfFlatFramesAreFlat) {
    for (const Coding& coding : kCodings) {
        for (const unsigned columns : {1U, 2U, 3U, 7U, 8U, 9U, 16U, 17U}) {
            for (const unsigned rows : {1U, 2U, 5U, 9U, 17U}) {
                const FrameForm form{.columns = columns, .rows = rows, .samples = 3};
                const Bytes flat = Flat(form, {200, 90, 30});
                const Bytes frame = CodeFrame(coding, form, flat);
                if (frame.empty()) continue;
                const auto answers = AskEverything(FileOf(coding, form, frame));
                EXPECT_LE(testing::GreatestError(answers[0].bytes, flat, 1), 3);
                const Bytes& small = answers[2].bytes;
                ASSERT_EQ(small.size(), 16U * 12U * 3U);
                for (std::size_t i = 3; i < small.size(); ++i)
                    ASSERT_NEAR(small[i], small[i % 3], 2)
                        << coding.name << ' ' << columns << " x " << rows;
            }
        }
    }
}

}  // namespace
}  // namespace quorvex::test
