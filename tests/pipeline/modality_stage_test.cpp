#include "pipeline/intake/modality_stage.h"

#include "pipeline/pixel_block.h"
#include "pipeline/pixel_elements.h"
#include "quorvex/CXGSPSInfo.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

namespace quorvex {
namespace {

template <class Sample>
PixelBlock FrameOf(const std::vector<Sample>& samples) {
    return CopyOf(
        {reinterpret_cast<const unsigned char*>(samples.data()), samples.size() * sizeof(Sample)});
}

template <class Sample>
std::vector<int> ElementsOf(const ModalityFrame& frame) {
    std::vector<int> elements(frame.pixels.size / sizeof(Sample));
    for (std::size_t i = 0; i < elements.size(); ++i) {
        elements[i] = ElementAt<Sample>(frame.pixels.data.get(), i);
    }
    return elements;
}

using Words = std::vector<std::uint16_t>;
using Ints = std::vector<int>;

struct Rescale {
    double slope = 0.0;
    double intercept = 0.0;
};

ModalityFrame Staged(PixelBlock frame, const StoredLayout& layout, Rescale rescale = {},
                     ValueSpan met = {}) {
    CXGSPSInfo record;
    record.rescaleSlope = rescale.slope;
    record.rescaleIntercept = rescale.intercept;
    return ApplyModalityStage(std::move(frame), layout, ModalityTransform(record), met);
}

struct WordCase {
    const char* what;
    int bitsStored;
    int highBit;
    bool isSigned;
    Rescale rescale;
    Words stored;
    Ints signedWords;  // the words after the stage, read as signed
    ValueSpan values;
};

const WordCase kWordCases[] = {
    {"CT", 12, 11, false, {1, -1024}, {0, 1024, 4095}, {-1024, 0, 3071}, {-1024, 3071}},
    {"no rescale", 12, 11, false, {}, {7, 4095}, {7, 4095}, {7, 4095}},
    {"cut towards zero", 12, 11, false, {0.5, -1.2}, {0, 1, 2, 5}, {-1, 0, 0, 1}, {-1, 1}},
    {"falling slope", 12, 11, false, {-1, 10}, {0, 100}, {10, -90}, {-90, 10}},
    {"sign not extended", 12, 11, true, {}, {0x0FFF, 0xFFFF, 0x07FF}, {-1, -1, 2047}, {-1, 2047}},
    {"signed, rescaled", 12, 11, true, {2, 1}, {0x0FFF, 3}, {-1, 7}, {-1, 7}},
    {"signed, all bits", 16, 15, true, {}, {0x8000, 0x7FFF}, {-32768, 32767}, {-32768, 32767}},
    {"unsigned, all bits", 16, 15, false, {}, {0, 0xFFFF}, {0, -1}, {0, 65535}},
    {"junk above", 12, 11, false, {}, {0xF001, 0x1002}, {1, 2}, {1, 2}},
    {"junk below", 12, 15, false, {}, {0x0011, 0xFFF0}, {1, 4095}, {1, 4095}},
    {"low byte of a word", 8, 7, false, {}, {0xAB01, 0x00FF}, {1, 255}, {1, 255}},
    {"low byte, rescaled", 8, 7, false, {41.1216, 0}, {0, 255}, {0, 10486}, {0, 10486}},
    {"wraps but is unmistakable", 16, 15, false, {1, 9}, {0, 65535}, {9, 8}, {9, 65544}},
    {"infinite slope", 12, 11, false, {HUGE_VAL, 1}, {5}, {5}, {5, 5}},
};

TEST(ModalityStage, MapsWords) {
    for (const auto& c : kWordCases) {
        SCOPED_TRACE(c.what);
        const StoredLayout layout{c.stored.size(), 16, c.bitsStored, c.highBit, c.isSigned, true};
        const auto frame = Staged(FrameOf(c.stored), layout, c.rescale);
        EXPECT_EQ(frame.bytesPerPixel, 2);
        EXPECT_EQ(ElementsOf<std::int16_t>(frame), c.signedWords);
        EXPECT_EQ(frame.values.low, c.values.low);
        EXPECT_EQ(frame.values.high, c.values.high);
        EXPECT_TRUE(frame.scale.IsPlain());
    }
}

TEST(ModalityStage, MapsBytesAndWidensThoseThatOutgrowThem) {
    const StoredLayout plain{3, 8, 8, 7, false, true};
    const std::vector<std::uint8_t> stored{0, 100, 255};
    const auto same = Staged(FrameOf(stored), plain, {1, -1024});
    EXPECT_EQ(same.bytesPerPixel, 1);
    EXPECT_EQ(same.values.low, -1024);
    EXPECT_EQ(same.values.high, -769);
    EXPECT_EQ(ElementsOf<std::uint8_t>(same), (Ints{0, 100, 255}));

    const auto wider = Staged(FrameOf(stored), plain, {4, 0});
    EXPECT_EQ(wider.bytesPerPixel, 2);
    EXPECT_EQ(ElementsOf<std::int16_t>(wider), (Ints{0, 400, 1020}));

    const StoredLayout signedBytes{3, 8, 8, 7, true, true};
    const auto negative = Staged(FrameOf(stored), signedBytes);
    EXPECT_EQ(negative.values.low, -1);
    EXPECT_EQ(negative.values.high, 100);
}

TEST(ModalityStage, OutsideALookUpTableItsNearestEntryCounts) {
    std::uint16_t entries[10];
    for (int i = 0; i < 10; ++i)
        entries[i] = static_cast<std::uint16_t>(1000 + i * (i % 2 * 2 - 1));
    CXGSPSInfo record;
    record.modalityLUTData = entries;
    record.modalityLUTCount = 10;
    record.modalityLUTFirst = 100;
    const StoredLayout layout{4, 16, 16, 15, false, true};
    const auto frame = ApplyModalityStage(FrameOf(Words{50, 105, 1000, 104}), layout,
                                          ModalityTransform(record), {});
    EXPECT_EQ(ElementsOf<std::int16_t>(frame), (Ints{1000, 1005, 1009, 996}));
    EXPECT_EQ(frame.values.low, 996);
    EXPECT_EQ(frame.values.high, 1009);
}

TEST(ModalityStage, ScalesWhatWordsCannotHold) {
    const std::vector<std::uint32_t> dose{0, 1'000'000'000, 4'000'000'000};
    const auto frame = Staged(FrameOf(dose), {3, 32, 32, 31, false, true});
    EXPECT_EQ(frame.bytesPerPixel, 2);
    EXPECT_EQ(ElementsOf<std::uint16_t>(frame), (Ints{0, 16384, 65535}));
    EXPECT_EQ(frame.values.high, 4'000'000'000);
    EXPECT_EQ(frame.elements.high, 65535);

    // A PET slope: the words span 0 .. 599,479.
    const auto pet =
        Staged(FrameOf(Words{0, 65535}), {2, 16, 16, 15, false, true}, {9.1475195822016, 0});
    EXPECT_EQ(ElementsOf<std::uint16_t>(pet), (Ints{0, 65535}));
    EXPECT_EQ(pet.values.high, 599'482);
    // A frame after one that went twice as high keeps its place.
    const auto next = Staged(FrameOf(Words{0, 65535}), {2, 16, 16, 15, false, true},
                             {9.1475195822016, 0}, {0, 2 * 599'482});
    EXPECT_EQ(ElementsOf<std::uint16_t>(next), (Ints{0, 32768}));

    const auto small = Staged(FrameOf(std::vector<std::uint32_t>{3, 70'000}),
                              {2, 32, 32, 31, false, true}, {0.5, 0});
    EXPECT_TRUE(small.scale.IsPlain());
    EXPECT_EQ(ElementsOf<std::uint16_t>(small), (Ints{1, 35'000}));
}

TEST(ModalityStage, KeepsStoredValuesWhereARescaleWouldLeaveNothing) {
    const StoredLayout layout{3, 16, 16, 15, true, true};
    const auto tiny = Staged(FrameOf(Words{0, 100, 65535}), layout, {1e-5, 0});
    EXPECT_EQ(ElementsOf<std::int16_t>(tiny), (Ints{0, 100, -1}));
    EXPECT_EQ(tiny.values.high, 0);
    EXPECT_EQ(tiny.elements.high, 100);
    EXPECT_DOUBLE_EQ(tiny.scale.step, 1e-5);
    EXPECT_TRUE(Staged(FrameOf(Words{0, 100, 4095}), layout, {0.5, 0}).scale.IsPlain());
    EXPECT_TRUE(Staged(FrameOf(Words{0, 1, 2}), layout, {0.4, 0}).scale.IsPlain());
}

TEST(ModalityStage, UnpacksPixelsThatShareBytes) {
    const auto bits =
        Staged(FrameOf(std::vector<std::uint8_t>{0b10110001, 0b10}), {10, 1, 1, 0, false, true});
    EXPECT_EQ(ElementsOf<std::uint8_t>(bits), (Ints{1, 0, 0, 0, 1, 1, 0, 1, 0, 1}));
    EXPECT_EQ(bits.values.high, 1);
    const auto twelve =
        Staged(FrameOf(std::vector<std::uint8_t>{0x34, 0x12, 0xAB}), {2, 12, 12, 11, false, true});
    EXPECT_EQ(ElementsOf<std::int16_t>(twelve), (Ints{0x234, 0xAB1}));
}

TEST(ModalityStage, EndsShortFramesInZerosForEveryShapeOfHeader) {
    for (int allocated = 1; allocated <= 32; ++allocated) {
        for (const int stored : {0, 1, 8, 12, 32, 65535}) {
            for (const int highBit : {0, 7, 15, 31, 65535}) {
                const StoredLayout layout{9, allocated, stored, highBit, stored % 2 == 0, true};
                const auto frame = Staged(FrameOf(std::vector<std::uint8_t>(1)), layout, {3e9, -7});
                EXPECT_EQ(frame.pixels.size, 9U * static_cast<unsigned>(frame.bytesPerPixel));
                EXPECT_EQ(frame.values.low, -7);
            }
        }
    }
    const auto cut = Staged(FrameOf(Words{5}), {3, 16, 16, 15, false, true});
    EXPECT_EQ(ElementsOf<std::int16_t>(cut), (Ints{5, 0, 0}));
}

}  // namespace
}  // namespace quorvex
