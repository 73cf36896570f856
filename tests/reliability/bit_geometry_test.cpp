// Bits Allocated, Bits Stored and High Bit of every odd value.
#include "quorvex/Tags.h"
#include "tests/pipeline/overlay_objects.h"
#include "tests/support/answers.h"

#include <gtest/gtest.h>
#include <string>

namespace quorvex::test {
namespace {

constexpr unsigned short kBits[] = {0,  1,  2,  3,  4,   5,   7,   8,   9,   10,   11,    12,
                                    13, 14, 15, 16, 17,  23,  24,  25,  31,  32,   33,    40,
                                    48, 63, 64, 65, 127, 128, 255, 256, 257, 2048, 32768, 65535};

struct BitTriple {
    unsigned short allocated = 0;
    unsigned short stored = 0;
    unsigned short high = 0;

    [[nodiscard]] std::string Text() const {
        return std::to_string(allocated) + " allocated, " + std::to_string(stored) +
               " stored, high bit " + std::to_string(high);
    }
};

/// An image of 3 x 2 pixels with an overlay in each of its groups' bits.
void FillOdd(CDcmObject& object, const BitTriple& bits, unsigned short isSigned,
             unsigned short samples) {
    pipeline_test::FillImage<std::uint32_t>(
        object,
        {.size = {3, 2}, .samples = samples, .photometric = samples == 3 ? "RGB" : "MONOCHROME2"},
        std::vector<std::uint32_t>(6UL * samples, 0xA5C3'96F0));
    object.SetValue(tag::kBitsAllocated, bits.allocated);
    object.SetValue(tag::kBitsStored, bits.stored);
    object.SetValue(tag::kHighBit, bits.high);
    object.SetValue(tag::kPixelRepresentation, isSigned);
    std::uint32_t group = 0x6000;
    for (const int position : {0, 11, 15, 31, 32, 65535}) {
        pipeline_test::AddOverlay(
            object, group, {2, 3, 1, 1, bits.allocated, static_cast<unsigned short>(position)});
        group += 2;
    }
}

/// Whatever is refused, nothing is undefined: the sanitizers watch.
void ThroughAll(const BitTriple& bits, unsigned short isSigned, unsigned short samples) {
    CDcmApp app;
    CDcmObject object;
    FillOdd(object, bits, isSigned, samples);
    CxDcmParser parser;
    ASSERT_EQ(parser.Initialize(&app, &object, nullptr, 0, 0), QVM_SUCCESS) << bits.Text();
    const Answered frame = FrameOf(parser);
    EXPECT_EQ(frame.code == QVM_SUCCESS, !frame.bytes.empty()) << bits.Text();
    (void)ThumbnailOf(parser, {.size = {4, 4}});
    CXDIPP image;
    image.ShowOverlays(1);
    if (image.Initialize(&app, &object, {8, 8}, 0) == QVM_SUCCESS) (void)image.Render();
    std::vector<unsigned char> overlay(6UL * 8);
    unsigned long length = 0;
    unsigned short width = 0;
    (void)image.MakeOverlayImage2(&object, nullptr, overlay.data(), length, width, 0,
                                  bits.allocated, samples, 3, 2, isSigned);
}

TEST(BitGeometry, EveryTripleIsShownOrRefused) {
    for (const unsigned short allocated : kBits) {
        for (const unsigned short stored : kBits) {
            for (const unsigned short high : kBits) {
                const BitTriple bits{allocated, stored, high};
                const unsigned sum = allocated + stored + high;
                ThroughAll(bits, sum % 2, sum % 5 == 0 ? 3 : 1);
            }
        }
    }
}

/// A small triple in order shows its values, wherever they lie in the pixel.
TEST(BitGeometry, StoredBitsAreTheOnlyOnesThatCount) {
    for (unsigned short stored = 2; stored <= 16; ++stored) {
        CDcmApp app;
        CDcmObject object;
        const auto top = static_cast<unsigned short>((1U << stored) - 1);
        pipeline_test::FillImage<unsigned short>(
            object, {.size = {4, 1}, .bitsStored = stored},
            {0, top, static_cast<unsigned short>(top | ~unsigned{top}), 0});
        CXDIPP image;
        ASSERT_EQ(image.Initialize(&app, &object, {4, 1}, 0), QVM_SUCCESS) << stored;
        ASSERT_EQ(image.Render(), QVM_SUCCESS) << stored;
        const Bytes shown = ResultOf(image).bytes;
        ASSERT_EQ(shown.size(), 4U);
        EXPECT_EQ(shown[0], shown[3]) << stored;
        EXPECT_EQ(shown[1], shown[2]) << stored;
        EXPECT_GT(shown[1], shown[0]) << stored;
    }
}

}  // namespace
}  // namespace quorvex::test
