#include "quorvex/CxPaletteLUT.h"
#include "tests/parser/parsed.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;
using Words = std::vector<unsigned>;

constexpr std::uint32_t kDescriptor = tag::kRedPaletteColorLookupTableDescriptor;
constexpr std::uint32_t kPlain = tag::kRedPaletteColorLookupTableData;
constexpr std::uint32_t kSegmented = tag::kSegmentedRedPaletteColorLookupTableData;

/// A file with a red table.
Parsed WithTable(const Words& descriptor, const Words& data, std::uint32_t dataTag = kPlain,
                 const char* descriptorVr = "US") {
    return Parsed(ImageFile(kExplicitUid, {})
                      .Words(kDescriptor, descriptorVr, descriptor)
                      .Words(dataTag, "OW", data)
                      .Bytes());
}

Words Entries(const CxPaletteLUT& lut, int first, std::size_t count) {
    Words entries;
    for (std::size_t i = 0; i < count; ++i)
        entries.push_back(lut.Lookup(first + static_cast<int>(i)));
    return entries;
}

const struct {
    const char* what;
    int representation;
    Words descriptor;
    Words data;
    int entryBits;  ///< 0: refused
    int first;
    Words entries;  ///< from pixel value `first` on
} kTables[] = {
    {"clamps", 0, {3, 100, 16}, {5000, 6000, 7000}, 16, 98, {5000, 5000, 5000, 6000, 7000, 7000}},
    {"signed", 1, {2, 65535, 16}, {4095, 1}, 12, -2, {4095, 4095, 1}},
    {"signed, as a word", 1, {2, 65535, 16}, {4095, 1}, 12, 65535, {4095}},
    {"bytes in high bytes", 0, {3, 0, 8}, {171 * 256, 0, 9}, 8, 0, {171, 0, 9}},
    {"bytes packed", 0, {3, 0, 8}, {0x0201, 0x0003}, 8, 0, {1, 2, 3}},
    {"0 for 65,536 entries", 0, {0, 0, 16}, Words(65536, 3), 12, 65534, {3, 3, 3}},
    {"half a descriptor", 0, {2, 0}, {1, 2}, 0, 0, {}},
    {"short data", 0, {3, 0, 16}, {1, 2}, 0, 0, {0}},
};

TEST(PaletteLut, ReadsPlainTables) {
    for (const auto& c : kTables) {
        CxPaletteLUT lut(c.representation);
        EXPECT_EQ(lut.Lookup(5), 0) << c.what;
        const Parsed parsed = WithTable(c.descriptor, c.data);
        EXPECT_EQ(lut.LoadLUT(parsed.Header(), kDescriptor, kPlain, 0), c.entryBits == 0 ? 0 : 1)
            << c.what;
        if (c.entryBits != 0) {
            EXPECT_EQ(lut.GetEntryBits(), c.entryBits) << c.what;
        }
        EXPECT_EQ(Entries(lut, c.first, c.entries.size()), c.entries) << c.what;
        EXPECT_EQ(lut.LoadLUT(nullptr, kDescriptor, kPlain, 0), 0);
        EXPECT_TRUE(lut.GetEntries().empty());
    }
}

const struct {
    const char* what;
    unsigned entries;
    Words data;
    Words expected;  ///< empty: refused
} kSegments[] = {
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
    for (const auto& c : kSegments) {
        CxPaletteLUT lut(0);
        const Parsed parsed = WithTable({c.entries, 0, 16}, c.data, kSegmented);
        EXPECT_EQ(lut.LoadLUT(parsed.Header(), kDescriptor, kPlain, 0), 0) << c.what;
        EXPECT_EQ(lut.LoadLUT(parsed.Header(), kDescriptor, kSegmented, 1),
                  c.expected.empty() ? 0 : 1)
            << c.what;
        EXPECT_EQ(Entries(lut, 0, c.expected.size()), c.expected) << c.what;
    }
}

const struct {
    const char* what;
    int representation;
    const char* descriptorVr;
    Words descriptor;
    std::uint32_t dataTag;
    Words data;
    int entryBits;
    int first;
    Words entries;  ///< from pixel value `first` on; empty: refused
} kByStandard[] = {
    {"no guess of 12 bits", 0, "US", {2, 0, 16}, kPlain, {4095, 1}, 16, 0, {4095, 1}},
    {"signed", 1, "SS", {2, 65535, 16}, kPlain, {7, 9}, 16, -2, {7, 7, 9, 9}},
    {"unsigned, written as signed", 0, "SS", {2, 65535, 16}, kPlain, {7, 9}, 16, 65534, {7, 7, 9}},
    {"signed, written as unsigned", 1, "US", {2, 65535, 16}, kPlain, {7, 9}, 16, -2, {7, 7, 9}},
    {"bytes, one a word", 0, "US", {3, 0, 8}, kPlain, {1, 2, 255}, 8, 0, {1, 2, 255}},
    {"bytes, two a word", 0, "US", {3, 0, 8}, kPlain, {0x0201, 0x00FF}, 8, 0, {1, 2, 255}},
    {"bytes, high", 0, "US", {3, 0, 8}, kPlain, {0x100, 0, 0xFF00}, 8, 0, {1, 0, 255}},
    {"bytes, twice", 0, "US", {3, 0, 8}, kPlain, {0x101, 0, 0xFFFF}, 8, 0, {1, 0, 255}},
    {"0 for 65,536 entries", 0, "US", {0, 0, 16}, kPlain, Words(65536, 3), 16, 65534, {3, 3, 3}},
    {"rounded lines",
     0,
     "US",
     {5, 0, 16},
     kSegmented,
     {0, 1, 10, 1, 4, 20},
     16,
     0,
     {10, 13, 15, 18, 20}},
    {"a line downwards", 0, "US", {4, 0, 16}, kSegmented, {0, 1, 9, 1, 3, 0}, 16, 0, {9, 6, 3, 0}},
    // 0 2 7 9, 1 2 5, then those two segments again, from byte 0 on, and a byte of padding.
    {"segments of bytes",
     0,
     "US",
     {8, 0, 8},
     kSegmented,
     {0x0200, 0x0907, 0x0201, 0x0205, 0x0002, 0x0000, 0x0000},
     8,
     0,
     {7, 9, 7, 5, 7, 9, 7, 5}},
    {"8 bits in segments of words",
     0,
     "US",
     {3, 0, 8},
     kSegmented,
     {0, 1, 9, 1, 2, 5},
     8,
     0,
     {9, 7, 5}},
    {"half a segment of bytes", 0, "US", {8, 0, 8}, kSegmented, {0x0300, 0x0907}, 8, 0, {}},
};

TEST(PaletteLut, ReadsTablesByTheStandard) {
    for (const auto& c : kByStandard) {
        CxPaletteLUT lut(c.representation);
        lut.SetRules(Rules::kStandard);
        const Parsed parsed = WithTable(c.descriptor, c.data, c.dataTag, c.descriptorVr);
        EXPECT_EQ(
            lut.LoadLUT(parsed.Header(), kDescriptor, c.dataTag, c.dataTag == kSegmented ? 1 : 0),
            c.entries.empty() ? 0 : 1)
            << c.what;
        if (c.entries.empty()) continue;
        EXPECT_EQ(lut.GetEntryBits(), c.entryBits) << c.what;
        EXPECT_EQ(Entries(lut, c.first, c.entries.size()), c.entries) << c.what;
    }
}

struct Coloured {
    Answered rgb;
    unsigned short bits = 16;
    unsigned short samples = 1;
    CString photometric = "PALETTE COLOR";
};

/// Two pixels, of the indices 0 and 1.
Coloured Colour(Parsed parsed, Rules rules = Rules::kEstablished) {
    parsed.parser.SetRules(rules);
    Bytes pixels{0, 0, 1, 0};
    Coloured coloured;
    unsigned char* rgb = nullptr;
    const auto code = parsed.parser.GetRGBBufferFromPaletteImage(
        pixels.data(), 2, 1, coloured.bits, coloured.samples, coloured.photometric, rgb, 0);
    coloured.rgb = Answered::Take(code, rgb, 6);
    return coloured;
}

TEST(PaletteImage, ScalesEntriesToBytes) {
    const struct {
        const char* what;
        unsigned entryBits;
        Words tables[3];  ///< red, green, blue
        Bytes rgb;
        Bytes exact;  ///< by the standard rules
    } kColours[] = {
        {"16 bits",
         16,
         {{65535, 0}, {32768, 256}, {0, 65535}},
         {254, 127, 0, 0, 0, 254},
         {255, 128, 0, 0, 1, 255}},
        {"12 in 16 bits",
         16,
         {{4095, 0}, {2048, 16}, {0, 4095}},
         {254, 127, 0, 0, 0, 254},
         {16, 8, 0, 0, 0, 16}},
        {"8 in 12 bits",
         12,
         {{255, 0}, {128, 16}, {0, 255}},
         {254, 127, 0, 0, 15, 254},
         {255, 128, 0, 0, 16, 255}},
        {"8 bits",
         8,
         {{255, 0}, {128, 16}, {0, 255}},
         {254, 127, 0, 0, 15, 254},
         {255, 128, 0, 0, 16, 255}},
        {"all of 12 bits",
         12,
         {{4095, 0}, {2048, 16}, {0, 4095}},
         {254, 127, 0, 0, 0, 254},
         {255, 128, 0, 0, 1, 255}},
        {"more than 12 bits",
         12,
         {{65535, 0}, {0, 0}, {0, 0}},
         {239, 0, 0, 0, 0, 0},
         {255, 0, 0, 0, 0, 0}},
        {"the deepest decides",
         16,
         {{0, 9}, {65535, 0}, {0, 65535}},
         {0, 254, 0, 0, 0, 254},
         {0, 255, 0, 0, 0, 255}},
    };
    for (const auto& c : kColours) {
        auto file = ImageFile(kExplicitUid, {.photometric = "PALETTE COLOR"});
        for (std::uint32_t s = 0; s < 3; ++s)
            file.Words(kDescriptor + s, "US", {2, 0, c.entryBits});
        for (std::uint32_t s = 0; s < 3; ++s) file.Words(kPlain + s, "OW", c.tables[s]);
        EXPECT_EQ(Colour(Parsed(file.Bytes()), Rules::kStandard).rgb, Done(c.exact)) << c.what;
        const Coloured coloured = Colour(Parsed(file.Bytes()));
        EXPECT_EQ(coloured.rgb, Done(c.rgb)) << c.what;
        EXPECT_EQ(coloured.bits, 24);
        EXPECT_EQ(coloured.samples, 3);
        EXPECT_EQ(coloured.photometric, CString("RGB"));
    }
    const Coloured red = Colour(WithTable({2, 0, 16}, {1, 2}));
    EXPECT_EQ(red.rgb, Refused(QVM_ERROR_INVALID_PHOTOMETRIC)) << "one table of three";
    EXPECT_EQ(red.bits, 16);
}

}  // namespace
}  // namespace quorvex
