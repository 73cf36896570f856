// A look-up table or palette indexed unchecked: every value that a pixel can hold meets tables that
// are short, shifted, empty, or described wrongly.
#include "quorvex/CxPaletteLUT.h"
#include "tests/pipeline/test_objects.h"
#include "tests/presentation/presentation_objects.h"
#include "tests/reliability/guarded_bytes.h"
#include "tests/support/answers.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <numeric>
#include <set>
#include <string>

namespace quorvex::test {
namespace {

using Words = std::vector<std::uint16_t>;

constexpr auto kDescriptor = tag::kRedPaletteColorLookupTableDescriptor;
constexpr auto kEntries = tag::kRedPaletteColorLookupTableData;

/// What a descriptor says, and how many entries there really are.
struct Table {
    int count;
    int first;
    int bits;
    int there;

    [[nodiscard]] std::string Text() const {
        return std::to_string(count) + " from " + std::to_string(first) + ", " +
               std::to_string(bits) + " bits, " + std::to_string(there) + " there";
    }
};

/// The latter half is described wrongly.
constexpr Table kTables[] = {
    {256, 0, 16, 256},     {256, 0, 8, 256},          {256, 0, 8, 128},
    {1, 0, 16, 1},         {2, 65535, 16, 2},         {2, -1, 16, 2},
    {256, -128, 16, 256},  {100, 200, 16, 100},       {300, -32768, 12, 300},
    {256, 32767, 16, 256}, {0, 0, 16, 65536},         {0, -32768, 16, 65536},
    {0, 1, 8, 65536},      {65535, 65535, 16, 65535}, {0, 0, 16, 256},
    {256, 0, 16, 0},       {256, 0, 16, 1},           {65535, -32768, 16, 2},
    {1, 0, 16, 65536},     {256, 0, 0, 256},          {256, 0, 1, 256},
    {256, 0, 17, 256},     {256, 0, 255, 256},        {256, 0, 65535, 256},
    {255, 0, 9, 256},      {257, 0, 7, 256}};

Words EntriesOf(const Table& table) {
    Words entries(static_cast<std::size_t>(table.there));
    for (std::size_t i = 0; i < entries.size(); ++i)
        entries[i] = static_cast<std::uint16_t>(i * 40503 + 257);
    return entries;
}

void SetWords(CDcmObjectCommon& object, std::uint32_t tag, const Words& words) {
    pipeline_test::detail::Bytes bytes;
    bytes.data.resize(words.size() * 2);
    if (!words.empty()) std::memcpy(bytes.data.data(), words.data(), bytes.data.size());
    object.SetValue(tag, &bytes, pipeline_test::detail::Bytes::Give);
    object.SetValueRepresentation(tag, MC_VR_OW);
}

void SetDescriptor(CDcmObjectCommon& object, std::uint32_t tag, const Table& table) {
    Put(object, tag,
        {static_cast<unsigned short>(table.count), static_cast<unsigned short>(table.first),
         static_cast<unsigned short>(table.bits)});
}

/// An image that holds every value of its pixels once, in their order.
CDcmObject AllValues(unsigned short bits, unsigned short representation, const char* photometric) {
    CDcmObject object;
    const CSize size = bits == 8 ? CSize{16, 16} : CSize{256, 256};
    Words values(std::size_t{1} << bits);
    std::iota(values.begin(), values.end(), std::uint16_t{0});
    const pipeline_test::ImageShape shape{size, 1, bits, bits, representation, photometric};
    if (bits == 16) pipeline_test::FillImage(object, shape, values);
    if (bits == 8) pipeline_test::FillImage(object, shape, Bytes(values.begin(), values.end()));
    return object;
}

/// Does `check` with every kind of pixels.
template <class Check>
void ForEachKind(Check check) {
    for (const unsigned short bits : {std::uint16_t{8}, std::uint16_t{16}}) {
        check(bits, std::uint16_t{0});
        check(bits, std::uint16_t{1});
    }
}

TEST(TableIndices, APaletteTableTakesItsNearestEnd) {
    for (const Table& table : kTables) {
        for (const int representation : {0, 1}) {
            CDcmObject object;
            SetDescriptor(object, kDescriptor, table);
            SetWords(object, kEntries, EntriesOf(table));
            CxPaletteLUT lut(representation);
            const int count = table.count == 0 ? 65536 : table.count;
            const bool isLoaded = lut.LoadLUT(&object, kDescriptor, kEntries, 0) != 0;
            EXPECT_TRUE(isLoaded || table.there < count) << table.Text();
            EXPECT_TRUE(isLoaded || (lut.GetEntries().empty() && lut.Lookup(0) == 0));
            if (!isLoaded) continue;
            const int first = lut.GetFirstValue();
            for (int value = -70000; value <= 140000; value += 7) {
                const int seen = representation == 1 ? static_cast<std::int16_t>(value) : value;
                const int nearest = std::clamp(seen, first, first + count - 1);
                const bool wraps = representation == 1 && nearest > 32767;
                ASSERT_TRUE(wraps || lut.Lookup(value) == lut.Lookup(nearest))
                    << table.Text() << ": " << value;
            }
        }
    }
}

/// Every way that colours an image by its object's palettes.
std::vector<Answered> Colourings(CDcmObject& object, unsigned short bits) {
    CDcmApp app;
    CxDcmParser parser;
    parser.Initialize(&app, &object, nullptr, 0, 0);
    const Answered frame = FrameOf(parser);
    EXPECT_EQ(frame.code, QVM_SUCCESS);
    const GuardedBytes pixels(frame.bytes);
    const unsigned short side = bits == 8 ? 16 : 256;
    const CXDIPP viewer;
    unsigned short padded = 0;
    unsigned char* rgb[3] = {};
    unsigned long size[3] = {};
    const int codes[] = {
        viewer.MakePaletteColorImage(&object, pixels.Data(), rgb[0], size[0], padded),
        viewer.MakeSPCOverlay(&object, pixels.Data(), rgb[1], size[1]),
        viewer.MakeSPCOverlayForMPR(&object, pixels.Data(), side, side, rgb[2], size[2])};
    std::vector<Answered> all = {ColouredOf(parser, pixels.Data(), side, side, bits)};
    for (int i = 0; i < 3; ++i) all.push_back(Answered::Take(codes[i], rgb[i], size[i]));
    return all;
}

int FirstOf(const Table& table, int representation) {
    const auto word = static_cast<std::uint16_t>(table.first);
    return representation == 1 ? static_cast<std::int16_t>(word) : word;
}

std::span<const unsigned char> ColourAt(const Answered& image, std::size_t pixel) {
    return {&image.bytes[3 * pixel], 3};
}

/// Unsigned pixels outside the table have the colour of its nearest end.
void ExpectEnds(const Answered& image, const Table& table, int pixels) {
    const int count = table.count == 0 ? 65536 : table.count;
    const int first = FirstOf(table, 0);
    for (int value = 0; value < pixels; ++value) {
        const int nearest = std::clamp(value, first, first + count - 1);
        if (nearest >= pixels) continue;
        ASSERT_TRUE(std::ranges::equal(ColourAt(image, static_cast<std::size_t>(value)),
                                       ColourAt(image, static_cast<std::size_t>(nearest))))
            << table.Text() << ": " << value;
    }
}

/// The supplemental palette colours nothing below its first value; words count as signed.
void ExpectNothingBelow(const Answered& image, int first) {
    constexpr std::array<unsigned char, 3> kBlack{};
    for (std::size_t p = 0; p < 65536; ++p) {
        if (static_cast<std::int16_t>(p) >= first) continue;
        ASSERT_TRUE(std::ranges::equal(ColourAt(image, p), kBlack)) << first << ": " << p;
    }
}

TEST(TableIndices, EveryRouteColoursEveryValue) {
    ForEachKind([](unsigned short bits, unsigned short representation) {
        CDcmObject object = AllValues(bits, representation, "PALETTE COLOR");
        for (const Table& table : kTables) {
            for (const unsigned colour : {0U, 1U, 2U}) {
                SetDescriptor(object, kDescriptor + colour, table);
                SetWords(object, kEntries + colour, EntriesOf(table));
            }
            const auto images = Colourings(object, bits);
            EXPECT_EQ(images[0].code == QVM_SUCCESS, images[1].code == QVM_SUCCESS);
            if (images[0].code != QVM_SUCCESS) continue;
            ASSERT_TRUE(images[0].bytes == images[1].bytes) << table.Text();
            if (representation == 0) ExpectEnds(images[0], table, bits == 8 ? 256 : 65536);
            if (images[2].code == QVM_SUCCESS && bits == 16)
                ExpectNothingBelow(images[2], FirstOf(table, representation));
        }
    });
}

CDcmItem LutItemOf(const Table& table) {
    CDcmItem item;
    SetDescriptor(item, tag::kLUTDescriptor, table);
    SetWords(item, tag::kLUTData, EntriesOf(table));
    item.SetValue(0x00283004, "HU");
    return item;
}

/// The rendered image, one byte for each value in the order of the pixels; empty for a code.
std::vector<unsigned char> Displayed(CDcmObject& object, CSize size) {
    CDcmApp app;
    CXDIPP viewer;
    if (viewer.Initialize(&app, &object, size, 0) != QVM_SUCCESS) return {};
    EXPECT_EQ(viewer.UpdateZoom_ABS(1.0), QVM_SUCCESS);
    if (viewer.Render() != QVM_SUCCESS) return {};
    const Bytes upsideDown = ResultOf(viewer).bytes;
    EXPECT_EQ(upsideDown.size(), static_cast<std::size_t>(size.cx * size.cy));
    std::vector<unsigned char> image;
    for (auto row = upsideDown.end(); row != upsideDown.begin(); row -= size.cx)
        image.insert(image.end(), row - size.cx, row);
    return image;
}

void ExpectShown(CDcmObject object, std::uint32_t stage, const Table& table, CSize size) {
    CDcmItem item = LutItemOf(table);
    object.SetValue(stage, &item);
    const auto shown = Displayed(object, size);
    ASSERT_FALSE(shown.empty()) << stage << ": " << table.Text();
    EXPECT_EQ(Displayed(object, size), shown) << "not the same twice";
    if (stage != tag::kVOILUTSequence || table.there == 0) return;
    std::set<unsigned char> wanted;
    for (const auto entry : EntriesOf(table))
        wanted.insert(static_cast<unsigned char>(entry >> std::clamp(table.bits - 8, 0, 16)));
    for (const unsigned char byte : shown)
        ASSERT_TRUE(wanted.contains(byte)) << table.Text() << ": " << int{byte};
}

TEST(TableIndices, EveryStoredValueHasADisplayValueUnderEveryTable) {
    ForEachKind([](unsigned short bits, unsigned short representation) {
        const CDcmObject object = AllValues(bits, representation, "MONOCHROME2");
        const CSize size = bits == 8 ? CSize{16, 16} : CSize{256, 256};
        for (const auto stage :
             {tag::kModalityLUTSequence, tag::kVOILUTSequence, tag::kPresentationLUTSequence}) {
            for (const Table& table : kTables) ExpectShown(object, stage, table, size);
        }
    });
}

}  // namespace
}  // namespace quorvex::test
