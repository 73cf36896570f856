#include "parser/thumbnail/thumbnail_pixels.h"
#include "parser/thumbnail/thumbnail_window.h"
#include "quorvex/CxDcmParser.h"
#include "tests/support/dicom_builder.h"
#include "tests/support/temporary_file.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>

namespace quorvex {
namespace {

using test::Bytes;

struct RangeCase {
    const char* what;
    std::vector<int> values;
    bool isSigned;
    int low;   ///< the last value of 0
    int high;  ///< the first value of 255
};

const RangeCase kRanges[] = {
    {"wide, above 0", {100, 5000}, false, 100, 3100},
    {"wide on both sides", {-4000, 4000}, true, -3000, 3000},
    {"wide, little below 0", {-1000, 3500}, true, -1000, 2000},
    {"wide, below 0", {-5000, -100}, true, -3100, -100},
    {"narrow", {10, 265}, false, 10, 265},
};

std::vector<std::uint16_t> Words(const std::vector<int>& values) {
    std::vector<std::uint16_t> words;
    for (const int value : values) words.push_back(static_cast<std::uint16_t>(value));
    return words;
}

TEST(ThumbnailWindow, SpansTheData) {
    for (const RangeCase& c : kRanges) {
        const ThumbnailWindow window = MakeWindowTable(Words(c.values), c.isSigned, 0);
        EXPECT_EQ(window.At(-65536), 0) << c.what;
        EXPECT_EQ(window.At(c.low), 0) << c.what;
        EXPECT_EQ(window.At((c.low + c.high) / 2), 127) << c.what;
        EXPECT_LT(window.At(c.high - 1), 255) << c.what;
        EXPECT_EQ(window.At(c.high), 255) << c.what;
        EXPECT_EQ(window.At(65535), 255) << c.what;
    }
    EXPECT_EQ(MakeWindowTable(Words({7, 7}), false, 0).At(60000), 0);
    const ThumbnailWindow padded = MakeWindowTable(Words({-2000, 0, 255}), true, -2000);
    EXPECT_EQ(padded.At(128), 128);
    EXPECT_EQ(MakeWindowTable(Words({0, 100, 9000}), false, 9000).At(9000), 0);
}

CDcmObject Header(const char* photometric, const char* center, const char* width, const char* slope,
                  unsigned short bitsStored = 12) {
    CDcmObject header;
    header.SetValue(0x00280004, photometric);
    header.SetValue(0x00280101, bitsStored);
    if (center != nullptr) header.SetValue(0x00281050, center);
    if (width != nullptr) header.SetValue(0x00281051, width);
    if (slope != nullptr) header.SetValue(0x00281053, slope);
    return header;
}

TEST(ThumbnailWindow, FollowsTheHeader) {
    const auto plain = MakeWindowTableFromHeader(Header("MONOCHROME2", "100", "200", nullptr));
    EXPECT_EQ(plain.At(-1), 0);
    EXPECT_EQ(plain.At(100), 127);
    EXPECT_EQ(plain.At(200), 255);
    const auto halved = MakeWindowTableFromHeader(Header("MONOCHROME2", "200", "400", "2"));
    for (int i = -10; i < 300; ++i) EXPECT_EQ(halved.At(i), plain.At(i));
    const auto inverse = MakeWindowTableFromHeader(Header("MONOCHROME1", "100", "200", nullptr));
    EXPECT_EQ(inverse.At(-1), 255);
    EXPECT_EQ(inverse.At(200), 0);
    const auto none = MakeWindowTableFromHeader(Header("MONOCHROME2", nullptr, nullptr, nullptr));
    EXPECT_EQ(none.At(1200), 127);
    EXPECT_EQ(none.At(2400), 255);
    const auto bytes = MakeWindowTableFromHeader(Header("MONOCHROME2", nullptr, nullptr, nullptr, 8));
    EXPECT_EQ(bytes.At(255), 127);
    const auto partner = MakeWindowTableFromHeader(Header("MONOCHROME2", "100", nullptr, nullptr));
    EXPECT_EQ(partner.At(1300), 255);
    for (const auto& [width, slope] :
         {std::pair{"0", "1"}, {"200", "0"}, {"-5", "1"}, {"2147483647", "1e-30"}}) {
        const auto odd = MakeWindowTableFromHeader(Header("MONOCHROME2", "100", width, slope));
        EXPECT_LE(odd.At(-60000), odd.At(60000)) << width;
    }
}

struct Thumbnail {
    QUORVEX_MESSAGE code;
    Bytes image;
    unsigned long headerSize = 0;
    tagBITMAPINFOHEADER header;
};

Thumbnail Make(const Bytes& file, CSize size, int format = 1, int useDataRange = 1, int frame = 0) {
    CDcmApp app;
    CxDcmParser parser;
    const test::TemporaryFile onDisk(file);
    EXPECT_EQ(parser.Initialize(&app, CString(onDisk.Path()), 0), QVM_SUCCESS);
    unsigned char* image = nullptr;
    unsigned long imageSize = 0;
    tagBITMAPINFOHEADER* header = nullptr;
    unsigned long headerSize = 0;
    Thumbnail made{parser.MakeThumbNail(frame, size, static_cast<QUORVEX_XFERSYNTAX>(format),
                                        useDataRange, image, imageSize, header, headerSize, 90),
                   {},
                   0,
                   {}};
    const std::unique_ptr<unsigned char[]> imageOwner(image);
    auto* headerBytes = static_cast<unsigned char*>(static_cast<void*>(header));
    const std::unique_ptr<unsigned char[]> headerOwner(headerBytes);
    if (made.code != QVM_SUCCESS || format != 1) {
        if (made.code == QVM_SUCCESS) {
            made.image.assign(image, image + imageSize);
        } else {
            EXPECT_EQ(image, nullptr);
        }
        EXPECT_EQ(header, nullptr);
        made.headerSize = headerSize;
        return made;
    }
    made.image.assign(image, image + imageSize);
    made.headerSize = headerSize;
    std::memcpy(&made.header, headerBytes, sizeof made.header);
    if (headerSize > 40) {
        EXPECT_EQ(headerBytes[40 + 4 * 200 + 2], 200);
    }
    return made;
}

TEST(Thumbnail, IsGreyOrColour) {
    const test::ImageFacts grey{.rows = 8, .columns = 8, .bits = 16};
    Bytes pixels(128);
    for (std::size_t i = 0; i < 64; ++i)
        pixels[2 * i] = static_cast<unsigned char>(i < 32 ? 10 : 110);
    const Bytes file = test::NativeFile(test::kExplicitUid, grey, pixels);
    const Thumbnail small = Make(file, {4, 4});
    ASSERT_EQ(small.code, QVM_SUCCESS);
    EXPECT_EQ(small.image.size(), 16U);
    EXPECT_EQ(small.image.front(), 0);
    EXPECT_EQ(small.image.back(), 255);
    EXPECT_EQ(small.headerSize, 1064U);
    EXPECT_EQ(small.header.biWidth, 4);
    EXPECT_EQ(small.header.biHeight, 4);
    EXPECT_EQ(small.header.biBitCount, 8);
    EXPECT_EQ(Make(file, {4, 4}, 1, 0).code, QVM_SUCCESS);

    const test::ImageFacts colour{
        .rows = 4, .columns = 4, .bits = 8, .photometric = "RGB", .samples = 3};
    const Thumbnail rgb = Make(test::NativeFile(test::kExplicitUid, colour, Bytes(48, 77)), {8, 2});
    EXPECT_EQ(rgb.image, Bytes(48, 77));
    EXPECT_EQ(rgb.headerSize, 40U);
    EXPECT_EQ(rgb.header.biBitCount, 24);

    const test::ImageFacts bytes{.rows = 4, .columns = 4, .bits = 8};
    EXPECT_EQ(Make(test::NativeFile(test::kExplicitUid, bytes, Bytes(16, 5)), {4, 4}).image,
              Bytes(16, 5));
}

TEST(Thumbnail, IsCodedWhereAsked) {
    const test::ImageFacts colour{
        .rows = 4, .columns = 4, .bits = 8, .photometric = "RGB", .samples = 3};
    const Bytes rgb = test::NativeFile(test::kExplicitUid, colour, Bytes(48, 77));
    Bytes words(32, 0);
    std::fill(words.begin() + 16, words.end(), static_cast<unsigned char>(0xFF));
    const test::ImageFacts facts{.rows = 4, .columns = 4, .representation = 1};
    const Bytes grey = test::NativeFile(test::kExplicitUid, facts, words);
    for (const Bytes& file : {rgb, grey}) {
        for (const int format : {5, 7}) {
            Thumbnail coded = Make(file, {8, 8}, format);
            ASSERT_EQ(coded.code, QVM_SUCCESS) << format;
            EXPECT_EQ(coded.headerSize, 0U);
            unsigned char* pixels = nullptr;
            unsigned long size = 0;
            unsigned short columns = 0;
            unsigned short rows = 0;
            unsigned short samples = 0;
            unsigned short bits = 0;
            unsigned short bytesPerPixel = 0;
            CxImageProcessor processor;
            ASSERT_EQ(processor.DecompressBlindJPEGData(coded.image.data(), coded.image.size(),
                                                        pixels, size, columns, rows, samples, bits,
                                                        bytesPerPixel),
                      QVM_SUCCESS);
            const Bytes decoded(pixels, pixels + size);
            delete[] pixels;
            EXPECT_EQ(columns, 8);
            EXPECT_EQ(rows, 8);
            const Bytes plain = Make(file, {8, 8}).image;
            ASSERT_EQ(decoded.size(), plain.size());
            for (std::size_t i = 0; i < plain.size(); ++i) EXPECT_NEAR(decoded[i], plain[i], 8);
        }
    }
}

TEST(ThumbnailPixels, TakeEveryDepth) {
    const struct {
        const char* what;
        std::uint16_t bitsAllocated;
        std::uint16_t samples;
        Bytes frame;
        Bytes bytes;
    } cases[] = {
        // one row of two pixels
        {"bits", 1, 1, {0b10}, {0, 255}},
        {"bytes, cut", 8, 1, {7}, {7, 0}},
        {"32-bit grey", 32, 1, {0, 0, 0, 64, 0, 0, 0, 192}, {0, 255}},
        {"16-bit colour", 16, 3, {9, 1, 9, 2, 9, 3, 9, 4, 9, 5, 9, 6}, {1, 2, 3, 4, 5, 6}},
        {"four samples", 8, 4, {1, 2, 3, 4, 5, 6, 7, 8}, {1, 2, 3, 4, 5, 6, 7, 8}},
    };
    for (const auto& c : cases) {
        CDcmObject header;
        FrameShape shape;
        shape.rows = 1;
        shape.columns = 2;
        shape.samplesPerPixel = c.samples;
        shape.bitsAllocated = c.bitsAllocated;
        EXPECT_EQ(ReduceToBytes(header, shape, c.frame, false, 1).bytes, c.bytes) << c.what;
    }
}

TEST(Thumbnail, SaysWhyThereIsNone) {
    const Bytes file = test::NativeFile(test::kExplicitUid, {}, Bytes(8, 1));
    EXPECT_EQ(Make(file, {50, 4}).code, QVM_ERROR_INVALID_OUTPUT_SIZE);
    EXPECT_EQ(Make(file, {4, 0}).code, QVM_ERROR_INVALID_OUTPUT_SIZE);
    EXPECT_EQ(Make(file, {4, 4}, 6).code, QVM_ERROR_INVALID_TARGET_SYNTAX);
    EXPECT_EQ(Make(file, {4, 4}, 1, 1, 1).code, QVM_ERROR_INVALID_FRAME_INDEX);
    const test::ImageFacts odd{.bits = 12};
    EXPECT_EQ(Make(test::NativeFile(test::kExplicitUid, odd, Bytes(6, 1)), {4, 4}).code,
              QVM_ERROR_INVALID_BITS_ALLOCATED);
    const test::ImageFacts palette{.bits = 8, .photometric = "PALETTE COLOR"};
    EXPECT_EQ(Make(test::NativeFile(test::kExplicitUid, palette, Bytes(4, 1)), {4, 4}).code,
              QVM_ERROR_INVALID_PHOTOMETRIC);
}

struct SliceCase {
    const char* what;
    const char* position;
    const char* orientation;
    const char* location;
    double expected;  ///< -999: none
};

constexpr SliceCase kSlices[] = {
    {"axial", "1\\2\\3", "1\\0\\0\\0\\1\\0", "9", 3},
    {"coronal", "1\\2\\3", "1\\0\\0\\0\\0\\-1", nullptr, 2},
    {"sagittal", "1\\2\\3", "0\\1\\0\\0\\0\\-1", nullptr, 1},
    {"a tie goes to y", "1\\2\\3", "0.7\\0.7\\0\\0\\0\\1", nullptr, 1},
    {"shared axis", "1\\2\\3", "1\\0\\0\\1\\0\\0", nullptr, 3},
    {"row along z", "1\\2\\3", "0\\0\\1\\0\\1\\0", nullptr, 1},
    {"no orientation", "1\\2\\-3.5", nullptr, nullptr, -3.5},
    {"four numbers of orientation", "1\\2\\3", "0\\1\\0\\0", nullptr, 3},
    {"two numbers of position", "1\\2", "1\\0\\0\\0\\1\\0", "+9.25", 9.25},
    {"no position", nullptr, nullptr, "-4e1", -40},
    {"nothing", nullptr, nullptr, nullptr, -999},
    {"no numbers", "a\\b\\c", nullptr, "x", -999},
};

TEST(SliceLocation, IsThePositionAcrossTheSlice) {
    for (const SliceCase& c : kSlices) {
        auto full = test::DicomBuilder::Part10(test::kExplicitUid).SopUids();
        if (c.position != nullptr) full.Padded(0x00200032, "DS", c.position);
        if (c.orientation != nullptr) full.Padded(0x00200037, "DS", c.orientation);
        if (c.location != nullptr) full.Padded(0x00201041, "DS", c.location);
        Bytes file = full.Bytes();
        file.resize(std::max<std::size_t>(file.size(), 133));
        CDcmApp app;
        CxDcmParser parser;
        const test::TemporaryFile onDisk(file);
        ASSERT_EQ(parser.Initialize(&app, CString(onDisk.Path()), 0), QVM_SUCCESS) << c.what;
        double location = -999;
        EXPECT_EQ(parser.GetSliceLocation(parser.GetHeader(), location), c.expected == -999 ? 0 : 1)
            << c.what;
        EXPECT_DOUBLE_EQ(location, c.expected) << c.what;
    }
    double location = 5;
    EXPECT_EQ(CxDcmParser::GetSliceLocation(nullptr, location), 0);
}

}  // namespace
}  // namespace quorvex
