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
    for (std::size_t i = 0; i < elements.size(); ++i)
        elements[i] = ElementAt<Sample>(frame.pixels.data.get(), i);
    return elements;
}

using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;
using DoubleWords = std::vector<std::uint32_t>;
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

/// A layout of whole words that are all used.
StoredLayout Layout(std::size_t pixels, int bits, bool isSigned = false) {
    return {pixels, bits, bits, bits - 1, isSigned};
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
        const StoredLayout layout{c.stored.size(), 16, c.bitsStored, c.highBit, c.isSigned};
        const auto frame = Staged(FrameOf(c.stored), layout, c.rescale);
        EXPECT_EQ(frame.bytesPerPixel, 2);
        EXPECT_EQ(ElementsOf<std::int16_t>(frame), c.signedWords);
        EXPECT_EQ(frame.values.low, c.values.low);
        EXPECT_EQ(frame.values.high, c.values.high);
        EXPECT_TRUE(frame.scale.IsPlain());
    }
}

/// The elements and values of bytes after the stage.
template <class Sample>
void ExpectBytes(bool isSigned, Rescale rescale, const Ints& elements, ValueSpan values) {
    const auto frame = Staged(FrameOf(Bytes{0, 100, 255}), Layout(3, 8, isSigned), rescale);
    EXPECT_EQ(frame.bytesPerPixel, sizeof(Sample));
    EXPECT_EQ(ElementsOf<Sample>(frame), elements);
    EXPECT_EQ(frame.values.low, values.low);
    EXPECT_EQ(frame.values.high, values.high);
}

TEST(ModalityStage, MapsBytesAndWidensThoseThatOutgrowThem) {
    ExpectBytes<std::uint8_t>(false, {1, -1024}, {0, 100, 255}, {-1024, -769});
    ExpectBytes<std::int16_t>(false, {4, 0}, {0, 400, 1020}, {0, 1020});
    ExpectBytes<std::uint8_t>(true, {}, {0, 100, 255}, {-1, 100});
}

TEST(ModalityStage, OutsideALookUpTableItsNearestEntryCounts) {
    std::uint16_t entries[10];
    for (int i = 0; i < 10; ++i)
        entries[i] = static_cast<std::uint16_t>(1000 + i * (i % 2 * 2 - 1));
    CXGSPSInfo record;
    record.modalityLUTData = entries;
    record.modalityLUTCount = 10;
    record.modalityLUTFirst = 100;
    const auto frame = ApplyModalityStage(FrameOf(Words{50, 105, 1000, 104}), Layout(4, 16),
                                          ModalityTransform(record), {});
    EXPECT_EQ(ElementsOf<std::int16_t>(frame), (Ints{1000, 1005, 1009, 996}));
    EXPECT_EQ(frame.values.low, 996);
    EXPECT_EQ(frame.values.high, 1009);
}

TEST(ModalityStage, ScalesWhatWordsCannotHold) {
    const auto frame = Staged(FrameOf(DoubleWords{0, 1'000'000'000, 4'000'000'000}), Layout(3, 32));
    EXPECT_EQ(frame.bytesPerPixel, 2);
    EXPECT_EQ(ElementsOf<std::uint16_t>(frame), (Ints{0, 16384, 65535}));
    EXPECT_EQ(frame.values.high, 4'000'000'000);
    EXPECT_EQ(frame.elements.high, 65535);

    const Rescale pet{9.1475195822016, 0};  // the words span 0 .. 599,479
    const auto first = Staged(FrameOf(Words{0, 65535}), Layout(2, 16), pet);
    EXPECT_EQ(ElementsOf<std::uint16_t>(first), (Ints{0, 65535}));
    EXPECT_EQ(first.values.high, 599'482);
    // A frame after one that went twice as high keeps its place.
    const auto next = Staged(FrameOf(Words{0, 65535}), Layout(2, 16), pet, {0, 2 * 599'482});
    EXPECT_EQ(ElementsOf<std::uint16_t>(next), (Ints{0, 32768}));

    const auto small = Staged(FrameOf(DoubleWords{3, 70'000}), Layout(2, 32), {0.5, 0});
    EXPECT_TRUE(small.scale.IsPlain());
    EXPECT_EQ(ElementsOf<std::uint16_t>(small), (Ints{1, 35'000}));
}

TEST(ModalityStage, KeepsStoredValuesWhereARescaleWouldLeaveNothing) {
    const auto layout = Layout(3, 16, true);
    const auto tiny = Staged(FrameOf(Words{0, 100, 65535}), layout, {1e-5, 0});
    EXPECT_EQ(ElementsOf<std::int16_t>(tiny), (Ints{0, 100, -1}));
    EXPECT_EQ(tiny.values.high, 0);
    EXPECT_EQ(tiny.elements.high, 100);
    EXPECT_DOUBLE_EQ(tiny.scale.step, 1e-5);
    EXPECT_TRUE(Staged(FrameOf(Words{0, 100, 4095}), layout, {0.5, 0}).scale.IsPlain());
    EXPECT_TRUE(Staged(FrameOf(Words{0, 1, 2}), layout, {0.4, 0}).scale.IsPlain());
    // However many whole values are left, and however few stored ones there are.
    EXPECT_FALSE(Staged(FrameOf(Words{0, 100, 4095}), layout, {0.1, 0}).scale.IsPlain());
    EXPECT_FALSE(Staged(FrameOf(Words{0, 1, 2}), layout, {0.1, 0}).scale.IsPlain());
}

TEST(ModalityStage, ElementsRiseWithValuesThatFall) {
    const auto words = Staged(FrameOf(Words{0, 100, 65535}), Layout(3, 16), {-1e-3, 5});
    EXPECT_EQ(ElementsOf<std::uint16_t>(words), (Ints{65535, 65435, 0}));
    const auto bytes = Staged(FrameOf(Bytes{0x80, 0, 0x7F}), Layout(3, 8, true), {-1e-3, 5});
    EXPECT_EQ(ElementsOf<std::int8_t>(bytes), (Ints{127, -1, -128}));
    EXPECT_NEAR(words.scale.ValueOf(words.elements.high), 5, 1e-9);
    EXPECT_NEAR(bytes.scale.ValueOf(bytes.elements.low), 5 - 0.127, 1e-9);
    const auto deep = Staged(FrameOf(DoubleWords{0, 1, 4}), Layout(3, 32), {-1e-3, 5});
    EXPECT_EQ(ElementsOf<std::uint16_t>(deep), (Ints{65535, 49151, 0}));
}

TEST(ModalityStage, UnpacksPixelsThatShareBytes) {
    const auto bits = Staged(FrameOf(Bytes{0b10110001, 0b10}), Layout(10, 1));
    EXPECT_EQ(ElementsOf<std::uint8_t>(bits), (Ints{1, 0, 0, 0, 1, 1, 0, 1, 0, 1}));
    EXPECT_EQ(bits.values.high, 1);
    const auto twelve = Staged(FrameOf(Bytes{0x34, 0x12, 0xAB}), Layout(2, 12));
    EXPECT_EQ(ElementsOf<std::int16_t>(twelve), (Ints{0x234, 0xAB1}));
}

TEST(ModalityStage, EndsShortFramesInZerosForEveryShapeOfHeader) {
    for (int allocated = 1; allocated <= 32; ++allocated) {
        for (const int stored : {0, 1, 8, 12, 32, 65535}) {
            for (const int highBit : {0, 7, 15, 31, 65535}) {
                const StoredLayout layout{9, allocated, stored, highBit, stored % 2 == 0};
                const auto frame = Staged(FrameOf(Bytes(1)), layout, {3e9, -7});
                EXPECT_EQ(frame.pixels.size, 9U * static_cast<unsigned>(frame.bytesPerPixel));
                EXPECT_EQ(frame.values.low, -7);
            }
        }
    }
    const auto cut = Staged(FrameOf(Words{5}), Layout(3, 16));
    EXPECT_EQ(ElementsOf<std::int16_t>(cut), (Ints{5, 0, 0}));
}

}  // namespace
}  // namespace quorvex
