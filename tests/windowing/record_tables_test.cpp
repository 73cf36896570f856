// The tables that a presentation record asks for.
#include "quorvex/CXGSPSInfo.h"
#include "tests/support/windowing_values.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <numeric>

namespace quorvex {
namespace {

using enum CXWindowing::Selector;
using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;
using Ints = std::vector<std::int32_t>;

/// A record whose LUTs lie in words of the test's own.
struct Record : CXGSPSInfo {
    explicit Record(int bits) { pixelBitDepth = bits; }

    void SetModalityLut(Words& words, int first) {
        modalityLUTData = words.data();
        modalityLUTFirst = static_cast<std::uint16_t>(first);
        modalityLUTCount = static_cast<int>(words.size() % 65536);
    }
    void SetVoiLut(Words& words, int first, int bits) {
        voiLUTData = words.data();
        voiLUTFirst = static_cast<std::uint16_t>(first);
        voiLUTCount = static_cast<int>(words.size() % 65536);
        voiLUTBits = bits;
    }
    void SetPresentationLut(Words& words, int first, int bits) {
        presentationLUTData = words.data();
        presentationLUTFirst = static_cast<std::uint16_t>(first);
        presentationLUTCount = static_cast<int>(words.size() % 65536);
        presentationLUTBits = bits;
    }
};

Bytes TableOver(Record& record, int minimum, int maximum) {
    CXWindowing windowing;
    EXPECT_EQ(windowing.PrepareGSPSProcessing2(&record, minimum, maximum), 0);
    return DisplayTableOf(windowing);
}

TEST(ModalityDomain, FollowsDepthAndRescale) {
    const struct {
        const char* what;
        int bits;
        double slope, intercept;
        std::size_t entryCount;
        int firstValue, minimum, maximum;
        Ints entries;  ///< the first ones of the table
    } cases[] = {
        {"12 bits without rescale", 12, 0.0, 0.0, 0, 0, 0, 4095, {}},
        {"16 bits are always signed", 16, 0.0, 0.0, 0, -32768, -32768, 32767, {}},
        {"rising", 8, 2.0, -10.0, 256, 0, -10, 500, {-10, -8}},
        {"falling", 8, -1.0, 255.0, 256, 0, 0, 255, {255, 254}},
        {"truncated", 8, 0.5, -10.7, 256, 0, -10, 116, {-10, -10, -9}},
        {"one value", 0, 3.0, 4.0, 1, 0, 4, 4, {4}},
        {"NaN", 8, std::nan(""), 0.0, 256, 0, 0, 0, {0, 0}},
        {"clamped at both ends of int", 12, 1e300, -1e303, 4096, 0, INT_MIN, INT_MAX, {INT_MIN}},
        {"negative bits have no table", -1, 1.0, 0.0, 0, 0, 0, -1, {}},
        {"nor have 25 bits", 25, 1.0, 0.0, 0, 0, 0, -1, {}},
        {"nor the largest int", INT_MAX, 1.0, 0.0, 0, 0, 0, -1, {}},
        {"nor the least", INT_MIN, 1.0, 0.0, 0, 0, 0, -1, {}},
    };
    for (const auto& c : cases) {
        Record record(c.bits);
        record.rescaleSlope = c.slope;
        record.rescaleIntercept = c.intercept;
        CXWindowing windowing;
        EXPECT_EQ(windowing.PrepareGSPSProcessing(&record), 0);
        EXPECT_EQ(ValueOf(windowing, kModalityTableFirst), c.firstValue) << c.what;
        EXPECT_EQ(ValueOf(windowing, kDisplayTableFirst), c.minimum) << c.what;
        const std::int64_t values = std::int64_t{c.maximum} - c.minimum + 1;
        EXPECT_EQ(ValueOf(windowing, kDisplayTableCount), values > INT_MAX ? 4096 : values)
            << c.what;
        const Ints table = ModalityTableOf(windowing);
        EXPECT_EQ(table.size(), c.entryCount) << c.what;
        if (table.empty()) continue;
        EXPECT_TRUE(std::equal(c.entries.begin(), c.entries.end(), table.begin())) << c.what;
        EXPECT_EQ(table.back(), c.slope < 0.0 ? c.minimum : c.maximum) << c.what;
    }
}

TEST(ModalityDomain, NeedsNoRecord) {
    EXPECT_EQ(CXWindowing().PrepareGSPSProcessing(nullptr), 0);
    EXPECT_EQ(CXWindowing().PrepareGSPSProcessing2(nullptr, 0, 1), 0);
}

TEST(ModalityDomain, LutEntriesLieFromTheFirstMappedValueOn) {
    Words words = {100, 65535, 7};
    Record record(8);
    record.SetModalityLut(words, 2);
    record.pixelValueOffset = 1;
    CXWindowing windowing;
    windowing.PrepareGSPSProcessing(&record);
    Ints table = ModalityTableOf(windowing);
    table.resize(7);
    EXPECT_EQ(table, (Ints{99, 99, 100, 65535, 7, 6, 6}));
    EXPECT_EQ(ValueOf(windowing, kDisplayTableFirst), 6);
    EXPECT_EQ(ValueOf(windowing, kDisplayTableCount), 94);

    record.pixelRepresentation = 1;
    record.SetModalityLut(words, -1);  // clipped: the entries still begin with the first
    windowing.PrepareGSPSProcessing(&record);
    table = ModalityTableOf(windowing);
    table.resize(3);
    EXPECT_EQ(table, (Ints{100, 65535, 6}));
}

TEST(RecordWindow, IsChosenByRangeAndRecord) {
    constexpr struct {
        const char* what;
        int bits, minimum, maximum;
        double slope, intercept;
        int recordCenter, recordWidth, offset;
        Window window;
    } kCases[] = {
        {"8 bits", 8, 0, 255, 1.0, 0.0, 0, 0, 0, {128, 256}},
        {"8 bits with a window", 8, 0, 255, 1.0, 0.0, 90, 60, 0, {90, 60}},
        {"full range", 16, 0, 1000, 1.0, 0.0, 0, 0, 0, {500, 1000}},
        {"full range in output units", 16, 0, 1000, 2.0, -100.0, 0, 0, 0, {900, 2000}},
        {"small slopes do not count", 16, 0, 1000, 0.5, 0.0, 0, 0, 0, {500, 1000}},
        {"halves are truncated", 16, -4, 1, 1.0, 0.0, 0, 0, 0, {-1, 5}},
        {"a window with an offset", 16, 0, 1000, 1.0, 0.0, 40, 400, 10, {30, 400}},
        {"one value only", 16, 77, 77, 1.0, 0.0, 0, 0, 0, {0, 400}},
    };
    for (const auto& c : kCases) {
        Record record(c.bits);
        record.windowCenter = c.recordCenter;
        record.windowWidth = c.recordWidth;
        record.pixelValueOffset = c.offset;
        CXWindowing windowing;
        windowing.SetRescale(c.slope, c.intercept);
        EXPECT_EQ(windowing.PrepareGSPSProcessing2(&record, c.minimum, c.maximum), 0);
        EXPECT_EQ(WindowOf(windowing), c.window) << c.what;
    }
}

TEST(VoiLut, LiesOverTheDomain) {
    struct {
        const char* what;
        Words words;
        int first, bits;
        int minimum, maximum, isSigned;
        Bytes table;
    } cases[] = {
        {"8 bits: two entries a word", {10, 20, 30, 40}, 0, 8, 0, 5, 0, {10, 10, 20, 20, 40, 40}},
        {"7 bits: one", {1, 2, 3}, 1, 7, 0, 5, 0, {1, 1, 2, 3, 3, 3}},
        {"12 bits shift by 4", {0x100, 0x200, 0xFFF}, 2, 12, 0, 5, 0, {16, 16, 16, 32, 255, 255}},
        {"the last place is high", {1, 2, 3, 4, 5, 6}, 0, 7, 0, 3, 0, {1, 2, 3, 6}},
        {"clipped at the start", {1, 2, 3, 4}, -2, 7, 0, 4, 1, {1, 2, 4, 4, 4}},
        {"unsigned first value", {1, 2}, 65534, 7, 65533, 65536, 0, {1, 1, 2, 2}},
        {"signed domain", {1, 2, 3}, -1, 7, -2, 2, 1, {1, 1, 2, 3, 3}},
        {"past the domain", {1, 9}, 100, 7, 0, 3, 0, {1, 1, 1, 9}},
        {"below the domain", {1, 9}, 0, 7, 50, 53, 0, {9, 9, 9, 9}},
        {"one place", {1, 9}, 0, 7, 0, 0, 0, {9}},
        {"absurd bits", {0xFFFF, 0xFFFF}, 0, 60000, 0, 1, 0, {0, 0}},
    };
    for (auto& c : cases) {
        Record record(16);
        record.pixelRepresentation = c.isSigned;
        record.SetVoiLut(c.words, c.first, c.bits);
        EXPECT_EQ(TableOver(record, c.minimum, c.maximum), c.table) << c.what;
    }
    Words every(65536);  // a count of 0
    std::iota(every.begin(), every.end(), std::uint16_t{0});
    Record record(16);
    record.SetVoiLut(every, 0, 16);
    const Bytes table = TableOver(record, 0, 65535);
    for (std::size_t i = 0; i < table.size(); ++i) ASSERT_EQ(table[i], i >> 8) << i;
}

TEST(VoiLut, StandsAboveTheWindowAndFollowsTheInversion) {
    Words words = {10, 20, 30, 40};
    Record record(16);
    record.SetVoiLut(words, 0, 7);
    CXWindowing windowing;
    windowing.PrepareGSPSProcessing2(&record, 0, 4);
    const Bytes table = DisplayTableOf(windowing);
    EXPECT_EQ(windowing.ChangeWLByOffset(5), 0);
    EXPECT_EQ(DisplayTableOf(windowing), table);
    EXPECT_EQ(windowing.SetValue(kInversion, nullptr, nullptr), 0);
    EXPECT_EQ(DisplayTableOf(windowing), (Bytes{245, 235, 225, 215, 215}));

    Record plain(16);
    plain.windowCenter = -100;
    plain.windowWidth = 1;
    windowing.PrepareGSPSProcessing2(&plain, 0, 2);  // the LUT goes, the inversion stays
    EXPECT_EQ(DisplayTableOf(windowing), (Bytes{0, 0, 0}));
}

TEST(PresentationLut, IsSteppedThroughByTableIndex) {
    Words falling(4096);
    std::iota(falling.rbegin(), falling.rend(), std::uint16_t{0});
    falling.back() = 0xFFF;
    Words three = {50, 60, 70};
    Record record(16);
    record.windowCenter = 128;
    record.windowWidth = 255;  // the ramp is the identity
    record.SetPresentationLut(falling, 0, 12);
    CXWindowing windowing;
    windowing.PrepareGSPSProcessing2(&record, 0, 255);
    const Bytes table = DisplayTableOf(windowing);
    EXPECT_EQ(table.at(0), 255);
    EXPECT_EQ(table.at(100), (4095 - 1600) >> 4);
    EXPECT_EQ(table.at(254), (4095 - 4064) >> 4);
    EXPECT_EQ(table.at(255), 255) << "the last place has the last entry";
    windowing.SetValue(kInversion, nullptr, nullptr);  // has no effect here
    EXPECT_EQ(DisplayTableOf(windowing), table);

    record.SetPresentationLut(three, 0, 7);  // too short for a step: its first entry only
    const Bytes flat = TableOver(record, 0, 255);
    EXPECT_EQ(flat.at(2), 50);
    EXPECT_EQ(flat.at(4), 70);
    EXPECT_EQ(flat.at(255), 70);
}

TEST(PresentationLut, FollowsTheVoiLut) {
    Words voi = {3, 2, 1, 0};
    Words falling(256);
    for (int i = 0; i < 256; ++i) falling.rbegin()[i] = static_cast<std::uint16_t>(i << 8);
    Record record(16);
    record.presentationShape = 1;
    record.SetVoiLut(voi, 0, 7);
    record.SetPresentationLut(falling, 0, 16);
    EXPECT_EQ(TableOver(record, 0, 4), (Bytes{252, 253, 254, 255, 255}));
}

}  // namespace
}  // namespace quorvex
