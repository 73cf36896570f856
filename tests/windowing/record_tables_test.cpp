// The tables that a presentation record asks for.
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"

#include <climits>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <vector>

namespace quorvex {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;

int Get(CXWindowing& windowing, unsigned int selector) {
    int value = 0;
    EXPECT_EQ(windowing.GetValue(selector, &value, nullptr), 0);
    return value;
}

Bytes Table(CXWindowing& windowing) {
    Bytes table(static_cast<std::size_t>(Get(windowing, 2)));
    if (!table.empty()) windowing.GetValue(0, table.data(), nullptr);
    return table;
}

std::vector<std::int32_t> ModalityTable(CXWindowing& windowing) {
    std::vector<std::int32_t> table(static_cast<std::size_t>(Get(windowing, 3)));
    if (!table.empty()) windowing.GetValue(1, table.data(), nullptr);
    return table;
}

void SetVoiLut(CXGSPSInfo& info, Words& entries, int first, int bits) {
    info.voiLUTData = entries.data();
    info.voiLUTCount = static_cast<std::int32_t>(entries.size() % 65536);
    info.voiLUTFirst = static_cast<std::uint16_t>(first);
    info.voiLUTBits = bits;
}

void SetPresentationLut(CXGSPSInfo& info, Words& entries, int first, int bits) {
    info.presentationLUTData = entries.data();
    info.presentationLUTCount = static_cast<std::int32_t>(entries.size() % 65536);
    info.presentationLUTFirst = static_cast<std::uint16_t>(first);
    info.presentationLUTBits = bits;
}

void SetModalityLut(CXGSPSInfo& info, Words& entries, int first) {
    info.modalityLUTData = entries.data();
    info.modalityLUTCount = static_cast<std::int32_t>(entries.size() % 65536);
    info.modalityLUTFirst = static_cast<std::uint16_t>(first);
}

TEST(ModalityDomain, FollowsDepthAndRescale) {
    struct Case {
        const char* what;
        int bits;
        double slope;
        double intercept;
        int entryCount, firstValue, minimum, maximum;
    };
    const Case cases[] = {
        {"12 bits without rescale", 12, 0.0, 0.0, 0, 0, 0, 4095},
        {"16 bits are always signed", 16, 0.0, 0.0, 0, -32768, -32768, 32767},
        {"rising", 8, 2.0, -10.0, 256, 0, -10, 500},
        {"falling", 8, -1.0, 255.0, 256, 0, 0, 255},
        {"cut towards zero", 8, 0.5, -10.7, 256, 0, -10, 116},
        {"one value", 0, 3.0, 4.0, 1, 0, 4, 4},
        {"no number", 8, std::nan(""), 0.0, 256, 0, 0, 0},
    };
    for (const Case& c : cases) {
        CXGSPSInfo info;
        info.pixelBitDepth = c.bits;
        info.rescaleSlope = c.slope;
        info.rescaleIntercept = c.intercept;
        CXWindowing windowing;
        EXPECT_EQ(windowing.PrepareGSPSProcessing(&info), 0);
        EXPECT_EQ(Get(windowing, 3), c.entryCount) << c.what;
        EXPECT_EQ(Get(windowing, 5), c.firstValue) << c.what;
        EXPECT_EQ(Get(windowing, 4), c.minimum) << c.what;
        EXPECT_EQ(Get(windowing, 2), c.maximum - c.minimum + 1) << c.what;
    }
}

TEST(ModalityDomain, RescaleGivesItsEntries) {
    CXGSPSInfo info;
    info.pixelBitDepth = 8;
    info.rescaleSlope = 2.0;
    info.rescaleIntercept = -10.0;
    CXWindowing windowing;
    windowing.PrepareGSPSProcessing(&info);
    const auto table = ModalityTable(windowing);
    EXPECT_EQ(table.at(0), -10);
    EXPECT_EQ(table.at(1), -8);
    EXPECT_EQ(table.at(255), 500);
    info.rescaleSlope = 0.0;
    windowing.PrepareGSPSProcessing(&info);
    EXPECT_TRUE(ModalityTable(windowing).empty());
}

TEST(ModalityDomain, LutEntriesLieFromTheFirstMappedValueOn) {
    Words entries = {100, 65535, 7};
    CXGSPSInfo info;
    info.pixelBitDepth = 8;
    SetModalityLut(info, entries, 2);
    info.pixelValueOffset = 1;
    CXWindowing windowing;
    windowing.PrepareGSPSProcessing(&info);
    auto table = ModalityTable(windowing);
    EXPECT_EQ(std::vector<std::int32_t>(table.begin(), table.begin() + 7),
              (std::vector<std::int32_t>{99, 99, 100, 65535, 7, 6, 6}));
    EXPECT_EQ(Get(windowing, 4), 6);
    EXPECT_EQ(Get(windowing, 2), 94);

    info.pixelRepresentation = 1;
    SetModalityLut(info, entries, -1);  // clipped: the entries still begin with the first
    windowing.PrepareGSPSProcessing(&info);
    table = ModalityTable(windowing);
    EXPECT_EQ(table.at(0), 100);
    EXPECT_EQ(table.at(1), 65535);
    EXPECT_EQ(table.at(2), 6);
}

TEST(ModalityDomain, DepthsWithoutATableLeaveNone) {
    for (const int bits : {-1, 25, 32, 65535, INT_MAX, INT_MIN}) {
        CXGSPSInfo info;
        info.pixelBitDepth = bits;
        info.rescaleSlope = 1.0;
        CXWindowing windowing;
        windowing.PrepareGSPSProcessing(&info);
        EXPECT_EQ(Get(windowing, 2), 0) << bits;
        EXPECT_EQ(Get(windowing, 3), 0) << bits;
    }
    CXGSPSInfo info;
    info.pixelBitDepth = 12;
    info.rescaleSlope = 1e300;
    info.rescaleIntercept = -1e303;
    CXWindowing windowing;
    windowing.PrepareGSPSProcessing(&info);  // runs off both ends of int
    EXPECT_EQ(Table(windowing).size(), 4096U);
}

TEST(RecordWindow, IsChosenByRangeAndRecord) {
    struct Case {
        const char* what;
        int bits, minimum, maximum;
        double slope, intercept;
        int recordCenter, recordWidth;
        int level, width;
    };
    const Case cases[] = {
        {"8 bits", 8, 0, 255, 1.0, 0.0, 0, 0, 128, 256},
        {"8 bits with a window", 8, 0, 255, 1.0, 0.0, 90, 60, 90, 60},
        {"full range", 16, 0, 1000, 1.0, 0.0, 0, 0, 500, 1000},
        {"full range in output units", 16, 0, 1000, 2.0, -100.0, 0, 0, 900, 2000},
        {"small slopes do not count", 16, 0, 1000, 0.5, 0.0, 0, 0, 500, 1000},
        {"halves cut towards zero", 16, -4, 1, 1.0, 0.0, 0, 0, -1, 5},
        {"a window with an offset", 16, 0, 1000, 1.0, 0.0, 40, 400, 30, 400},
        {"one value only", 16, 77, 77, 1.0, 0.0, 0, 0, 0, 400},
    };
    for (const Case& c : cases) {
        CXGSPSInfo info;
        info.pixelBitDepth = c.bits;
        info.windowCenter = c.recordCenter;
        info.windowWidth = c.recordWidth;
        info.pixelValueOffset = c.recordCenter == 40 ? 10 : 0;
        CXWindowing windowing;
        windowing.SetRescale(c.slope, c.intercept);
        EXPECT_EQ(windowing.PrepareGSPSProcessing2(&info, c.minimum, c.maximum), 0);
        EXPECT_EQ(Get(windowing, 6), c.level) << c.what;
        EXPECT_EQ(Get(windowing, 7), c.width) << c.what;
    }
}

struct VoiCase {
    const char* what;
    Words entries;
    int first;
    int bits;
    int minimum, maximum;
    int isSigned;
    Bytes table;
};

TEST(VoiLut, LiesOverTheDomain) {
    VoiCase cases[] = {
        {"8 bits pack two entries", {10, 20, 30, 40}, 0, 8, 0, 6, 0, {10, 10, 20, 20, 40, 40, 40}},
        {"7 bits do not", {1, 2, 3}, 1, 7, 0, 5, 0, {1, 1, 2, 3, 3, 3}},
        {"12 bits shift by 4",
         {0x100, 0x200, 0xFFF},
         2,
         12,
         0,
         6,
         0,
         {16, 16, 16, 32, 255, 255, 255}},
        {"the last place is high", {1, 2, 3, 4, 5, 6}, 0, 7, 0, 3, 0, {1, 2, 3, 6}},
        {"clipped at the start", {1, 2, 3, 4}, -2, 7, 0, 4, 1, {1, 2, 4, 4, 4}},
        {"unsigned first value", {1, 2}, 65534, 7, 65533, 65536, 0, {1, 1, 2, 2}},
        {"signed domain", {1, 2, 3}, -1, 7, -2, 2, 1, {1, 1, 2, 3, 3}},
        {"past the domain", {1, 9}, 100, 7, 0, 3, 0, {1, 1, 1, 9}},
        {"below the domain", {1, 9}, 0, 7, 50, 53, 0, {9, 9, 9, 9}},
        {"one place", {1, 9}, 0, 7, 0, 0, 0, {9}},
        {"absurd bits", {0xFFFF, 0xFFFF}, 0, 60000, 0, 1, 0, {0, 0}},
    };
    for (VoiCase& c : cases) {
        CXGSPSInfo info;
        info.pixelBitDepth = 16;
        info.pixelRepresentation = c.isSigned;
        SetVoiLut(info, c.entries, c.first, c.bits);
        CXWindowing windowing;
        windowing.PrepareGSPSProcessing2(&info, c.minimum, c.maximum);
        EXPECT_EQ(Table(windowing), c.table) << c.what;
    }
}

TEST(VoiLut, StandsAboveTheWindowAndTurnsWithTheInversion) {
    Words entries = {10, 20, 30, 40};
    CXGSPSInfo info;
    info.pixelBitDepth = 16;
    SetVoiLut(info, entries, 0, 7);
    CXWindowing windowing;
    windowing.PrepareGSPSProcessing2(&info, 0, 4);
    const Bytes table = Table(windowing);
    EXPECT_EQ(windowing.ChangeWLByOffset(5), 0);
    EXPECT_EQ(Table(windowing), table);
    EXPECT_EQ(windowing.SetValue(9, nullptr, nullptr), 0);
    EXPECT_EQ(Table(windowing), (Bytes{245, 235, 225, 215, 215}));

    CXGSPSInfo plain;
    plain.pixelBitDepth = 16;
    plain.windowCenter = -100;
    plain.windowWidth = 1;
    windowing.PrepareGSPSProcessing2(&plain, 0, 2);  // the LUT goes, the inversion stays
    EXPECT_EQ(Table(windowing), (Bytes{0, 0, 0}));
}

TEST(VoiLut, CountZeroIs65536Entries) {
    Words entries(65536);
    for (std::size_t i = 0; i < entries.size(); ++i) entries[i] = static_cast<std::uint16_t>(i);
    CXGSPSInfo info;
    info.pixelBitDepth = 16;
    SetVoiLut(info, entries, 0, 16);
    CXWindowing windowing;
    windowing.PrepareGSPSProcessing2(&info, 0, 65535);
    const Bytes table = Table(windowing);
    for (std::size_t i = 0; i < table.size(); ++i) ASSERT_EQ(table[i], i >> 8) << i;
}

TEST(PresentationLut, IsSteppedThroughByTableIndex) {
    Words entries(4096);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        entries[i] = static_cast<std::uint16_t>(4095 - i);
    }
    CXGSPSInfo info;
    info.pixelBitDepth = 16;
    info.windowCenter = 128;
    info.windowWidth = 255;  // the ramp is the identity
    SetPresentationLut(info, entries, 0, 12);
    CXWindowing windowing;
    windowing.PrepareGSPSProcessing2(&info, 0, 255);
    const Bytes table = Table(windowing);
    EXPECT_EQ(table.at(0), 255);
    EXPECT_EQ(table.at(100), (4095 - 1600) >> 4);
    EXPECT_EQ(table.at(255), 0);
    windowing.SetValue(9, nullptr, nullptr);  // takes no part here
    EXPECT_EQ(Table(windowing), table);
}

TEST(PresentationLut, ShortOnesShowTheirFirstEntry) {
    Words entries = {50, 60, 70};
    CXGSPSInfo info;
    info.pixelBitDepth = 16;
    info.windowCenter = 128;
    info.windowWidth = 255;
    SetPresentationLut(info, entries, 0, 7);
    CXWindowing windowing;
    windowing.PrepareGSPSProcessing2(&info, 0, 255);
    const Bytes table = Table(windowing);
    EXPECT_EQ(table.at(2), 50);
    EXPECT_EQ(table.at(4), 70);
    EXPECT_EQ(table.at(255), 70);
}

TEST(PresentationLut, FollowsTheVoiLut) {
    Words voi = {3, 2, 1, 0};
    Words presentation(256);
    for (std::size_t i = 0; i < presentation.size(); ++i) {
        presentation[i] = static_cast<std::uint16_t>((255 - i) << 8);
    }
    CXGSPSInfo info;
    info.pixelBitDepth = 16;
    info.presentationShape = 1;
    SetVoiLut(info, voi, 0, 7);
    SetPresentationLut(info, presentation, 0, 16);
    CXWindowing windowing;
    windowing.PrepareGSPSProcessing2(&info, 0, 4);
    EXPECT_EQ(Table(windowing), (Bytes{252, 253, 254, 255, 255}));
}

TEST(Record, LutsOfEveryPlaceAndLengthAreReadWithinTheirEntries) {
    for (const int count : {1, 2, 3, 255, 256, 257, 4096, 65536}) {
        Words entries(static_cast<std::size_t>(count), 0x8080);
        entries.shrink_to_fit();
        for (const int bits : {0, 7, 8, 9, 16, 255}) {
            for (const int first : {-32768, -300, -1, 0, 1, 255, 256, 32767}) {
                CXGSPSInfo info;
                info.pixelBitDepth = 12;
                info.pixelRepresentation = first < 0 ? 1 : 0;
                SetVoiLut(info, entries, first, bits);
                SetPresentationLut(info, entries, first, bits);
                SetModalityLut(info, entries, first);
                CXWindowing windowing;
                windowing.PrepareGSPSProcessing(&info);
                windowing.PrepareGSPSProcessing2(&info, -500, 1000);
                EXPECT_EQ(Table(windowing).size(), 1501U);
            }
        }
    }
    CXWindowing windowing;
    EXPECT_EQ(windowing.PrepareGSPSProcessing(nullptr), 0);
    EXPECT_EQ(windowing.PrepareGSPSProcessing2(nullptr, 0, 1), 0);
}

}  // namespace
}  // namespace quorvex
