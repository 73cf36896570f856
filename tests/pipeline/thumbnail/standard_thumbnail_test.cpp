#include "foundation/raster/raster.h"
#include "quorvex/CxDcmParser.h"
#include "tests/pipeline/overlay_objects.h"
#include "tests/pipeline/shown.h"
#include "tests/pipeline/test_objects.h"
#include "tests/presentation/presentation_objects.h"

#include <algorithm>
#include <memory>

namespace quorvex::pipeline_test {
namespace {

struct Asked {
    CSize size;
    bool useDataRange = false;
    int frame = 0;
    int format = kXferUncompressed;
};

struct Thumbnail {
    int code = -1;
    Bytes bytes;
    tagBITMAPINFOHEADER header{.biSize = 0};
    unsigned long headerSize = 0;
    FrameQuality quality = FrameQuality::kNone;
};

Thumbnail ThumbnailOf(CDcmObject& object, const Asked& asked) {
    CDcmApp app;
    CxDcmParser parser;
    parser.SetRules(Rules::kStandard);
    EXPECT_EQ(parser.Initialize(&app, &object, nullptr, 0, 0), QVM_SUCCESS);
    Thumbnail made;
    unsigned char* image = nullptr;
    unsigned long size = 0;
    tagBITMAPINFOHEADER* header = nullptr;
    made.code =
        parser.MakeThumbNail(asked.frame, asked.size, static_cast<QUORVEX_XFERSYNTAX>(asked.format),
                             asked.useDataRange ? 1 : 0, image, size, header, made.headerSize, 90);
    made.bytes = test::Answered::Take(made.code, image, size).bytes;
    if (header != nullptr) made.header = *header;
    delete[] static_cast<unsigned char*>(static_cast<void*>(header));
    made.quality = parser.GetFrameQuality();
    return made;
}

/// The samples of a thumbnail, rows from the top, without what fills them up.
Values SamplesOf(const Thumbnail& made) {
    EXPECT_EQ(made.code, QVM_SUCCESS);
    const auto rowBytes =
        static_cast<std::size_t>(made.header.biWidth * made.header.biBitCount / 8);
    const std::size_t stride = (rowBytes + 3) / 4 * 4;
    EXPECT_EQ(made.bytes.size(), stride * static_cast<std::size_t>(-made.header.biHeight));
    Values samples;
    for (std::size_t i = 0; i < made.bytes.size(); ++i) {
        if (i % stride < rowBytes) samples.push_back(made.bytes[i]);
    }
    return samples;
}

constexpr ImageShape kWords{};
constexpr ImageShape kBytes{.bitsAllocated = 8, .bitsStored = 8};

// By hand, as for a view: PS3.3 C.11.2.1.2 or proportion over the range.
TEST(StandardThumbnail, ShowsTheValuesAsTheStandardDefines) {
    struct Row {
        const char* what;
        ImageShape shape;
        Words samples;
        const char* attributes;
        Values byWindow;
        Values byRange;
    };
    const ImageShape inverse{.photometric = "MONOCHROME1"};
    const ImageShape isSigned{.bitsStored = 16, .pixelRepresentation = 1};
    const Row rows[] = {
        {"a window in modality units",
         kWords,
         {0, 1024, 1424, 2048},
         "WindowCenter=200.5; WindowWidth=401; RescaleIntercept=-1024; RescaleSlope=1",
         {0, 0, 255, 255},
         {0, 128, 177, 255}},
        {"PET, a slope of its own",
         isSigned,
         {0, 100, 200, 300},
         "WindowCenter=50.5; WindowWidth=101; RescaleIntercept=0; RescaleSlope=0.5",
         {0, 128, 255, 255},
         {0, 85, 170, 255}},
        {"MONOCHROME1",
         inverse,
         {0, 100, 200, 300},
         "WindowCenter=50.5; WindowWidth=101",
         {255, 0, 0, 0},
         {255, 170, 85, 0}},
        {"padding is no value",
         kWords,
         {4000, 0, 100, 200},
         "PixelPaddingValue=4000; WindowCenter=100.5; WindowWidth=201",
         {255, 0, 128, 255},
         {255, 0, 128, 255}},
        {"up to 8 bits: all that they hold",
         {.bitsStored = 8},
         {0, 16, 128, 255},
         "WindowCenter=8.5; WindowWidth=17",
         {0, 255, 255, 255},
         {0, 16, 128, 255}},
        {"no window: all that occurs, however wide",
         kWords,
         {0, 500, 1000, 4095},
         "RescaleIntercept=-1024; RescaleSlope=1",
         {0, 31, 62, 255},
         {0, 31, 62, 255}},
    };
    for (const Row& row : rows) {
        CDcmObject object = ImageOf(row.shape, row.samples, row.attributes);
        EXPECT_EQ(SamplesOf(ThumbnailOf(object, {.size = {4, 1}})), row.byWindow) << row.what;
        EXPECT_EQ(SamplesOf(ThumbnailOf(object, {.size = {4, 1}, .useDataRange = true})),
                  row.byRange)
            << row.what;
    }
}

// Overlays and a shutter are there, and not shown; frames have windows of their own.
TEST(StandardThumbnail, IsWhatAViewShows) {
    const auto image = [](const char* attributes, unsigned short bits = 16) {
        const ImageShape shape{.size = {9, 5}, .bitsAllocated = bits, .bitsStored = bits};
        return ImageOf(shape, RandomBytes(9UL * 5 * 2 * bits / 8, 3), attributes);
    };
    CDcmObject ofFrames = image("NumberOfFrames=2");
    std::vector<CDcmItem> groups(2);
    test::PutItems(groups[0], tag::kFrameVOILUTSequence,
                   {test::With<CDcmItem>("WindowCenter=20000; WindowWidth=9000")});
    test::PutItems(groups[1], tag::kFrameVOILUTSequence,
                   {test::With<CDcmItem>("WindowCenter=40000; WindowWidth=500")});
    ofFrames = test::With(ofFrames, tag::kPerFrameFunctionalGroupsSequence, groups);
    CDcmObject supplemented = image("");
    AddPalette(supplemented, {200, {0xFFFF}}, {200, {0}}, {200, {0}}, 16);
    CDcmObject layered = image(
        "ShutterShape=RECTANGULAR; ShutterLeftVerticalEdge=3; "
        "ShutterRightVerticalEdge=5; ShutterUpperHorizontalEdge=2; "
        "ShutterLowerHorizontalEdge=3");
    AddOverlay(layered, 0x6000, {.rows = 5, .columns = 9, .data = Repeated(6, 255)});
    CDcmObject bits = image("", 1);
    CDcmObject wide = image("", 32);
    const std::pair<const char*, CDcmObject*> objects[] = {{"frames", &ofFrames},
                                                           {"supplemental", &supplemented},
                                                           {"layers", &layered},
                                                           {"bits", &bits},
                                                           {"32 bits", &wide}};
    for (const auto& [what, object] : objects) {
        for (int frame = 0; frame < (object == &ofFrames ? 2 : 1); ++frame) {
            for (const CSize size : {CSize{9, 5}, CSize{27, 15}}) {
                CXDIPP dipp;
                dipp.SetRules(Rules::kStandard);
                ShowObject(dipp, *object, size, frame);
                const Thumbnail made = ThumbnailOf(*object, {.size = size, .frame = frame});
                EXPECT_EQ(SamplesOf(made), Rendered(dipp)) << what << " " << frame;
            }
        }
    }
}

TEST(StandardThumbnail, KeepsTheShapeOfTheImageOnBlack) {
    const struct {
        CSize image;
        const char* attributes;
        CSize asked;
        RasterRect picture;  ///< where it lies, in white
    } kRows[] = {
        {{5, 3}, "", {7, 7}, {0, 1, 7, 4}},
        {{5, 3}, "", {1, 1}, {0, 0, 1, 1}},
        {{5, 3}, "", {2, 1}, {0, 0, 2, 1}},
        {{100, 99}, "", {10, 10}, {0, 0, 10, 10}},  // 9.9 fills 10
        {{99, 100}, "", {13, 13}, {0, 0, 13, 13}},  // 12.87 fills 13
        {{100, 90}, "", {10, 10}, {0, 0, 10, 9}},   // 9 does not
        {{2, 50}, "", {5, 5}, {2, 0, 1, 5}},        // 0.2 is still seen
        {{6, 3}, "PixelSpacing=2\\1", {9, 9}, {0, 0, 9, 9}},
        {{4, 4}, "PixelAspectRatio=1\\3", {9, 6}, {0, 1, 9, 3}},
        {{4, 4}, "ImagerPixelSpacing=3\\1", {9, 6}, {3, 0, 2, 6}},
    };
    for (const auto& row : kRows) {
        const ImageShape shape{.size = row.image, .bitsAllocated = 8, .bitsStored = 8};
        CDcmObject object =
            ImageOf(shape, Repeated(row.image.cx * row.image.cy, 255), row.attributes);
        const Values samples = SamplesOf(ThumbnailOf(object, {.size = row.asked}));
        Values expected(static_cast<std::size_t>(row.asked.cx * row.asked.cy));
        for (int y = row.picture.y; y < row.picture.y + row.picture.height; ++y) {
            const auto begin = std::ptrdiff_t{y} * row.asked.cx + row.picture.x;
            std::fill_n(expected.begin() + begin, row.picture.width, 255);
        }
        EXPECT_EQ(samples, expected) << row.image.cx << " x " << row.image.cy << " in "
                                     << row.asked.cx << " x " << row.asked.cy;
    }
}

// A mesh of single pixels is an even grey, whichever of them a copy would take.
TEST(StandardThumbnail, AveragesAreas) {
    Bytes mesh;
    for (int i = 0; i < 64; ++i) mesh.push_back((i / 8 + i) % 2 == 0 ? 0 : 200);
    const ImageShape shape{.size = {8, 8}, .bitsAllocated = 8, .bitsStored = 8};
    CDcmObject object = ImageOf(shape, mesh);
    EXPECT_EQ(SamplesOf(ThumbnailOf(object, {.size = {4, 4}})), Values(16, 100));
}

TEST(StandardThumbnail, IsATopDownBitmap) {
    const ImageShape rgb{
        .size = {3, 2}, .samples = 3, .bitsAllocated = 8, .bitsStored = 8, .photometric = "RGB"};
    CDcmObject colour =
        ImageOf(rgb, Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17, 18, 19});
    const Thumbnail coloured = ThumbnailOf(colour, {.size = {3, 2}});
    EXPECT_EQ(coloured.bytes, (Bytes{3,  2,  1,  6,  5,  4,  9,  8,  7,  0, 0, 0,
                                     13, 12, 11, 16, 15, 14, 19, 18, 17, 0, 0, 0}));
    EXPECT_EQ(coloured.headerSize, 40U);
    EXPECT_EQ(coloured.header.biWidth, 3);
    EXPECT_EQ(coloured.header.biHeight, -2);
    EXPECT_EQ(coloured.header.biBitCount, 24);
    EXPECT_EQ(coloured.header.biSizeImage, 24U);
    EXPECT_EQ(coloured.quality, FrameQuality::kWhole);

    const ImageShape indices{
        .size = {2, 1}, .bitsAllocated = 8, .bitsStored = 8, .photometric = "palette color"};
    CDcmObject palette = ImageOf(indices, Bytes{0, 1});
    AddPalette(palette, {0, {0, 0xFFFF}}, {0, {0x8000, 0xFFFF}}, {0, {0, 0xFFFF}}, 16);
    EXPECT_EQ(ThumbnailOf(palette, {.size = {2, 1}}).bytes,
              (Bytes{0, 128, 0, 255, 255, 255, 0, 0}));

    CDcmObject grey = ImageOf(kBytes, Bytes{1, 2, 3, 4});
    const Thumbnail small = ThumbnailOf(grey, {.size = {5, 1}});
    EXPECT_EQ(small.bytes.size(), 8U);
    EXPECT_EQ(small.headerSize, 1064U);
    EXPECT_EQ(small.header.biWidth, 5);
    EXPECT_EQ(small.header.biHeight, -1);
}

TEST(StandardThumbnail, IsCodedWithoutGapsAsRgb) {
    const ImageShape rgb{
        .size = {5, 3}, .samples = 3, .bitsAllocated = 8, .bitsStored = 8, .photometric = "RGB"};
    Bytes flat;
    for (int i = 0; i < 15; ++i) flat.insert(flat.end(), {200, 90, 30});
    const struct {
        CDcmObject object;
        Bytes expected;
        int format;
        int tolerance;
    } kRows[] = {
        {ImageOf(rgb, flat), flat, kXferJpegLossless, 0},
        {ImageOf(rgb, flat), flat, kXferJpegBaseline, 3},
        {ImageOf({.size = {5, 3}}, Words(15, 4095)), Bytes(15, 255), kXferJpegLossless, 0},
        {ImageOf({.size = {5, 3}}, Words(15, 4095)), Bytes(15, 255), kXferJpegBaseline, 3},
    };
    for (const auto& row : kRows) {
        CDcmObject object = test::With(row.object, "WindowCenter=1; WindowWidth=1");
        Thumbnail coded = ThumbnailOf(object, {.size = {5, 3}, .format = row.format});
        EXPECT_EQ(coded.headerSize, 0U);
        const auto decoded = test::BlindlyDecoded(test::kBlindDecoders[0], coded.bytes);
        EXPECT_EQ(decoded.width, 5);
        EXPECT_EQ(decoded.height, 3);
        ASSERT_EQ(decoded.bytes.size(), row.expected.size()) << row.format;
        for (std::size_t i = 0; i < row.expected.size(); ++i) {
            EXPECT_NEAR(decoded.bytes[i], row.expected[i], row.tolerance) << row.format << " " << i;
        }
    }
}

TEST(StandardThumbnail, SaysWhyThereIsNone) {
    constexpr ImageShape kUnknown{.bitsAllocated = 8, .bitsStored = 8, .photometric = "CMYK"};
    constexpr ImageShape kPalette{
        .bitsAllocated = 8, .bitsStored = 8, .photometric = "PALETTE COLOR"};
    constexpr ImageShape kSlim{.size = {1, 500}, .bitsAllocated = 8, .bitsStored = 8};
    const struct {
        const char* what;
        ImageShape shape;
        Asked asked;
        QUORVEX_MESSAGE code;
    } kRefusals[] = {
        {"no width", kBytes, {.size = {0, 4}}, QVM_ERROR_INVALID_OUTPUT_SIZE},
        {"no height", kBytes, {.size = {4, -1}}, QVM_ERROR_INVALID_OUTPUT_SIZE},
        {"picture too large", kBytes, {.size = {1 << 20, 1 << 20}}, QVM_ERROR_INVALID_OUTPUT_SIZE},
        {"too much black", kSlim, {.size = {1 << 22, 1 << 11}}, QVM_ERROR_INVALID_OUTPUT_SIZE},
        {"a side too long",
         kBytes,
         {.size = {0x7FFFFFFF, 0x7FFFFFFF}},
         QVM_ERROR_INVALID_OUTPUT_SIZE},
        {"format", kBytes, {.size = {4, 4}, .format = 6}, QVM_ERROR_INVALID_TARGET_SYNTAX},
        {"frame", kBytes, {.size = {4, 4}, .frame = 1}, QVM_ERROR_INVALID_FRAME_INDEX},
        {"unknown colours", kUnknown, {.size = {4, 4}}, QVM_ERROR_INVALID_PHOTOMETRIC},
        {"palette", kPalette, {.size = {4, 4}}, QVM_ERROR_INVALID_PHOTOMETRIC},
    };
    for (const auto& row : kRefusals) {
        CDcmObject object =
            ImageOf(row.shape, Repeated(row.shape.size.cx * row.shape.size.cy * 3, 1));
        const Thumbnail made = ThumbnailOf(object, row.asked);
        EXPECT_EQ(made.code, row.code) << row.what;
        EXPECT_TRUE(made.bytes.empty()) << row.what;
        EXPECT_EQ(made.headerSize, 0U) << row.what;
    }
    CxDcmParser parser;
    parser.SetRules(Rules::kStandard);
    EXPECT_EQ(test::ThumbnailOf(parser, {}).code, QVM_ERROR_FAILED_TO_PARSE_DICOM);
}

}  // namespace
}  // namespace quorvex::pipeline_test
