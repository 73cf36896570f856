// Subsampled chroma and odd sizes: every picture of 1 to 17 pixels a side, with every subsampling.
#include "tests/engines/jpeg_library_streams.h"
#include "tests/reliability/coded_frames.h"
#include "tests/support/every_route.h"

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

constexpr testing::JpegRecipe kRecipes[] = {{"4:4:4"},
                                            {"4:2:2", 2, 1},
                                            {"4:2:0", 2, 2},
                                            {"4:4:0", 1, 2},
                                            {"4:1:1", 4, 1},
                                            {"4:2:0, progressive", 2, 2, true},
                                            {"4:2:2, restarts", 2, 1, false, 1}};

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

int GreatestError(const Bytes& one, const Bytes& other) {
    int error = one.size() == other.size() ? 0 : 256;
    for (std::size_t i = 0; i < std::min(one.size(), other.size()); ++i)
        error = std::max(error, std::abs(one[i] - other[i]));
    return error;
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
            EXPECT_EQ(DecodeGuarded(ybr, stream, form.Bytes()).frame, DecodeDirectly(form, stream))
                << recipe.name;
            EXPECT_EQ(DecodeGuarded(param, stream, form.Bytes()).frame,
                      DecodeDirectly(form, stream))
                << recipe.name;
            // An edge that takes its colour from elsewhere shows in a flat picture.
            const Bytes shown =
                DecodeGuarded(param, CodeSubsampled(form, flat, recipe), form.Bytes()).frame;
            EXPECT_LE(GreatestError(shown, flat), 3) << recipe.name;
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
            EXPECT_LE(GreatestError(first, wanted), 1) << photometric;
        }
    });
}

struct OpjImageOwner {
    explicit OpjImageOwner(opj_image_t* made) : image(made) {}
    OpjImageOwner(const OpjImageOwner&) = delete;
    OpjImageOwner& operator=(const OpjImageOwner&) = delete;
    ~OpjImageOwner() { opj_image_destroy(image); }
    opj_image_t* image;
};

/// Components of their own size each, the second and third one sample for dx x dy pixels.
opj_image_t* MakeComponents(const FrameForm& form, unsigned dx, unsigned dy, unsigned origin) {
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
    opj_image_t* image = opj_image_create(3, parameters, OPJ_CLRSPC_SRGB);
    if (image == nullptr) return nullptr;  // a component without a sample
    image->x0 = image->y0 = origin;
    image->x1 = origin + form.columns;
    image->y1 = origin + form.rows;
    for (unsigned c = 0; c < 3; ++c) {
        for (unsigned i = 0; i < parameters[c].w * parameters[c].h; ++i)
            image->comps[c].data[i] = static_cast<int>((i * 29 + c * 70 + 11) % 256);
    }
    return image;
}

struct Sink {
    Bytes bytes;
    std::size_t at = 0;

    static OPJ_SIZE_T Write(void* buffer, OPJ_SIZE_T count, void* user) {
        Sink& sink = *static_cast<Sink*>(user);
        sink.bytes.resize(std::max(sink.bytes.size(), sink.at + count));
        std::copy_n(static_cast<unsigned char*>(buffer), count, sink.bytes.data() + sink.at);
        sink.at += count;
        return count;
    }
    static OPJ_BOOL Seek(OPJ_OFF_T place, void* user) {
        static_cast<Sink*>(user)->at = static_cast<std::size_t>(place);
        return OPJ_TRUE;
    }
};

Bytes CodeComponents(opj_image_t& image) {
    opj_cparameters_t settings{};
    opj_set_default_encoder_parameters(&settings);
    settings.numresolution = 1;
    settings.tcp_numlayers = 1;
    settings.cp_disto_alloc = 1;
    opj_codec_t* codec = opj_create_compress(OPJ_CODEC_J2K);
    opj_stream_t* stream = opj_stream_default_create(OPJ_FALSE);
    Sink sink;
    opj_stream_set_user_data(stream, &sink, nullptr);
    opj_stream_set_write_function(stream, Sink::Write);
    opj_stream_set_seek_function(stream, Sink::Seek);
    const bool isCoded = opj_setup_encoder(codec, &settings, &image) != 0 &&
                         opj_start_compress(codec, &image, stream) != 0 &&
                         opj_encode(codec, stream) != 0 && opj_end_compress(codec, stream) != 0;
    opj_stream_destroy(stream);
    opj_destroy_codec(codec);
    return isCoded ? sink.bytes : Bytes();
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
                const OpjImageOwner source(MakeComponents(form, dx, dy, origin));
                if (source.image == nullptr) continue;
                const Bytes wanted = origin == 0 ? Spread(*source.image, form) : Bytes();
                const Bytes stream = CodeComponents(*source.image);
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
                const Bytes frame = CodeFrame(coding, form, Flat(form, {200, 90, 30}));
                if (frame.empty()) continue;
                const auto answers = AskEverything(FileOf(coding, form, frame));
                EXPECT_LE(GreatestError(answers[0].bytes, Flat(form, {200, 90, 30})), 3);
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
