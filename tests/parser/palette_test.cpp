#include "parser/palette/palette_image.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/CxPaletteLUT.h"
#include "tests/support/dicom_builder.h"
#include "tests/support/temporary_file.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace quorvex {
namespace {

using test::Bytes;
using Words = std::vector<unsigned>;

/// A parser on a file with the given elements ahead of Pixel Data.
struct Parsed {
    CDcmApp app;
    CxDcmParser parser;
    explicit Parsed(const test::DicomBuilder& file) {
        const test::TemporaryFile onDisk(file.Bytes());
        EXPECT_EQ(parser.Initialize(&app, CString(onDisk.Path()), 0), QVM_SUCCESS);
    }
    [[nodiscard]] CDcmObject* Object() const { return parser.GetHeader(); }
};

Parsed WithTable(const Words& descriptor, const Words& data, bool isSegmented) {
    return Parsed(test::ImageFile(test::kExplicitUid, {})
                      .Words(0x00281101, "US", descriptor)
                      .Words(isSegmented ? 0x00281221 : 0x00281201, "OW", data));
}

Words Entries(const CxPaletteLUT& lut, int first, int count) {
    Words entries;
    for (int i = 0; i < count; ++i) entries.push_back(lut.Lookup(first + i));
    return entries;
}

TEST(PaletteLut, ClampsOutsideItsTable) {
    CxPaletteLUT lut(0);
    EXPECT_EQ(lut.Lookup(5), 0);
    ASSERT_EQ(lut.LoadLUT(WithTable({3, 100, 16}, {5000, 6000, 7000}, false).Object(), 0x00281101,
                          0x00281201, 0),
              1);
    EXPECT_EQ(Entries(lut, 98, 6), (Words{5000, 5000, 5000, 6000, 7000, 7000}));
    EXPECT_EQ(lut.GetEntryBits(), 16);
    CxPaletteLUT below(1);
    ASSERT_EQ(below.LoadLUT(WithTable({2, 65535, 16}, {4095, 1}, false).Object(), 0x00281101,
                            0x00281201, 0),
              1);
    EXPECT_EQ(below.GetEntryBits(), 12);
    EXPECT_EQ(below.Lookup(65535), 4095);
    EXPECT_EQ(Entries(below, -2, 3), (Words{4095, 4095, 1}));
}

TEST(PaletteLut, ReadsByteEntriesWhereverTheyLie) {
    CxPaletteLUT lut(0);
    ASSERT_EQ(lut.LoadLUT(WithTable({3, 0, 8}, {171 * 256, 0, 9}, false).Object(), 0x00281101,
                          0x00281201, 0),
              1);
    EXPECT_EQ(Entries(lut, 0, 3), (Words{171, 0, 9}));
    ASSERT_EQ(lut.LoadLUT(WithTable({3, 0, 8}, {0x0201, 0x0003}, false).Object(), 0x00281101,
                          0x00281201, 0),
              1);
    EXPECT_EQ(Entries(lut, 0, 3), (Words{1, 2, 3}));
}

struct SegmentCase {
    const char* what;
    unsigned entries;
    Words data;
    Words expected;  ///< empty: refused
};

const SegmentCase kSegments[] = {
    {"discrete, then linear", 5, {0, 1, 0, 1, 4, 100}, {0, 25, 50, 75, 100}},
    {"linear at the start", 4, {1, 4, 100}, {25, 50, 75, 100}},
    {"linear downwards", 3, {0, 1, 9, 1, 2, 0}, {9, 4, 0}},
    {"indirect repeats and returns", 6, {0, 1, 7, 1, 2, 9, 2, 2, 0, 0}, {7, 8, 9, 7, 8, 9}},
    {"goes on behind an indirect", 3, {0, 1, 7, 2, 1, 0, 0, 0, 1, 8}, {7, 7, 8}},
    {"words behind the last entry", 1, {0, 1, 7, 0}, {}},
    {"too few entries", 2, {0, 1, 7}, {}},
    {"more than the table", 1, {0, 2, 7, 8}, {}},
    {"linear past the table", 1, {1, 65535, 7}, {}},
    {"discrete past the data", 9, {0, 9, 7}, {}},
    {"unknown", 1, {3, 1, 7}, {}},
    {"indirect out of the data", 2, {0, 1, 7, 2, 1, 4000, 0}, {}},
    {"indirect to itself", 2, {0, 1, 7, 2, 1, 6, 0}, {}},
    {"nothing but an opcode", 1, {1}, {}},
};

TEST(PaletteLut, ExpandsSegments) {
    for (const SegmentCase& c : kSegments) {
        CxPaletteLUT lut(0);
        const Parsed parsed = WithTable({c.entries, 0, 16}, c.data, true);
        EXPECT_EQ(lut.LoadLUT(parsed.Object(), 0x00281101, 0x00281201, 0), 0) << c.what;
        EXPECT_EQ(lut.LoadLUT(parsed.Object(), 0x00281101, 0x00281221, 1),
                  c.expected.empty() ? 0 : 1)
            << c.what;
        EXPECT_EQ(Entries(lut, 0, static_cast<int>(c.expected.size())), c.expected) << c.what;
    }
}

TEST(PaletteLut, RefusesWhatIsMissingOrShort) {
    CxPaletteLUT lut(0);
    EXPECT_EQ(lut.LoadLUT(nullptr, 0x00281101, 0x00281201, 0), 0);
    EXPECT_EQ(lut.LoadLUT(WithTable({2, 0}, {1, 2}, false).Object(), 0x00281101, 0x00281201, 0), 0);
    EXPECT_EQ(lut.LoadLUT(WithTable({3, 0, 16}, {1, 2}, false).Object(), 0x00281101, 0x00281201, 0),
              0);
    EXPECT_EQ(lut.LoadLUT(WithTable({0, 0, 16}, Words(65536, 3), false).Object(), 0x00281101,
                          0x00281201, 0),
              1);
    EXPECT_EQ(lut.Lookup(65535), 3);
}

Bytes Colours(const Words& red, const Words& green, const Words& blue, unsigned entryBits) {
    auto writer = test::ImageFile(test::kExplicitUid, {.photometric = "PALETTE COLOR"});
    const auto entries = static_cast<unsigned>(red.size());
    for (const unsigned tag : {0x00281101U, 0x00281102U, 0x00281103U}) {
        writer.Words(tag, "US", {entries, 0, entryBits});
    }
    writer.Words(0x00281201, "OW", red).Words(0x00281202, "OW", green);
    writer.Words(0x00281203, "OW", blue);
    Parsed parsed(writer);
    Bytes pixels{0, 0, 1, 0};
    unsigned short bits = 16;
    unsigned short samples = 1;
    CString photometric("PALETTE COLOR");
    unsigned char* rgb = nullptr;
    EXPECT_EQ(parsed.parser.GetRGBBufferFromPaletteImage(pixels.data(), 2, 1, bits, samples,
                                                         photometric, rgb, 0),
              QVM_SUCCESS);
    EXPECT_EQ(bits, 24);
    EXPECT_EQ(samples, 3);
    EXPECT_EQ(photometric, CString("RGB"));
    const Bytes result(rgb, rgb + 6);
    delete[] rgb;
    return result;
}

TEST(PaletteImage, ScalesEntriesToBytes) {
    EXPECT_EQ(Colours({65535, 0}, {32768, 256}, {0, 65535}, 16), (Bytes{254, 127, 0, 0, 0, 254}));
    EXPECT_EQ(Colours({4095, 0}, {2048, 16}, {0, 4095}, 16), (Bytes{254, 127, 0, 0, 0, 254}));
    EXPECT_EQ(Colours({255, 0}, {128, 16}, {0, 255}, 12), (Bytes{254, 127, 0, 0, 15, 254}));
    EXPECT_EQ(Colours({255, 0}, {128, 16}, {0, 255}, 8), (Bytes{254, 127, 0, 0, 15, 254}));
    EXPECT_EQ(Colours({0, 9}, {65535, 0}, {0, 65535}, 16), (Bytes{0, 254, 0, 0, 0, 254}));
}

TEST(PaletteImage, NeedsAllThreeTables) {
    Parsed parsed = WithTable({2, 0, 16}, {1, 2}, false);
    Bytes pixels(2);
    unsigned short bits = 8;
    unsigned short samples = 1;
    CString photometric("PALETTE COLOR");
    unsigned char* rgb = nullptr;
    EXPECT_EQ(parsed.parser.GetRGBBufferFromPaletteImage(pixels.data(), 2, 1, bits, samples,
                                                         photometric, rgb, 0),
              QVM_ERROR_INVALID_PHOTOMETRIC);
    EXPECT_EQ(rgb, nullptr);
    EXPECT_EQ(bits, 8);
}

}  // namespace
}  // namespace quorvex
