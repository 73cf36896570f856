// Float and double pixels: every sample against numbers that the test made, whatever their order in
// the file; and none where the header does not describe them.
#include "quorvex/CXDIPP.h"
#include "tests/parser/parsed.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>

namespace quorvex {
namespace {

using namespace test;

constexpr double kNumbers[] = {0.0, -1.5, 3.25e-7, 1e9, std::numeric_limits<double>::infinity(),
                               0.1};

struct FloatFile {
    std::string_view uid = kExplicitUid;
    bool isDouble = false;
    unsigned bits = isDouble ? 64 : 32;
    std::size_t missing = 0;  ///< bytes that the value is too short
    unsigned samples = 1;
    bool hasIntegersToo = false;

    [[nodiscard]] std::size_t SampleBytes() const { return isDouble ? 8 : 4; }
    /// Two frames of three samples.
    [[nodiscard]] Bytes Content() const {
        auto file = DicomBuilder::Part10(uid).SopUids();
        file.Us(tag::kSamplesPerPixel, samples)
            .Padded(tag::kPhotometricInterpretation, "CS", samples == 1 ? "MONOCHROME2" : "RGB")
            .Padded(tag::kNumberOfFrames, "IS", "2");
        file.Us(tag::kRows, 1).Us(tag::kColumns, 3).Us(tag::kBitsAllocated, bits);
        DicomBuilder value = DicomBuilder::In(uid);
        for (const double number : kNumbers) {
            if (isDouble) {
                value.Number(std::bit_cast<std::uint64_t>(number), 8);
            } else {
                value.Number(std::bit_cast<std::uint32_t>(static_cast<float>(number)), 4);
            }
        }
        const Bytes bytes(value.Bytes().begin(), value.Bytes().end() - static_cast<long>(missing));
        const auto tag = isDouble ? tag::kDoubleFloatPixelData : tag::kFloatPixelData;
        file.Add(tag, isDouble ? "OD" : "OF", bytes);
        if (hasIntegersToo) file.Add(tag::kPixelData, "OW", Bytes(24, 1));
        return file.Bytes();
    }
    /// A frame as it is in memory; what the value lacks is 0.
    [[nodiscard]] Bytes Frame(std::size_t index) const {
        Bytes frame(3 * SampleBytes());
        const std::size_t there = 6 * SampleBytes() - missing;
        for (std::size_t i = 0; i < 3; ++i) {
            const double number = kNumbers[3 * index + i];
            const auto narrow = static_cast<float>(number);
            const bool isWhole = (3 * index + i + 1) * SampleBytes() <= there;
            const void* const source =
                isDouble ? static_cast<const void*>(&number) : static_cast<const void*>(&narrow);
            if (isWhole) std::memcpy(frame.data() + i * SampleBytes(), source, SampleBytes());
        }
        return frame;
    }
};

TEST(FloatPixels, ComeAsTheyAreFromEveryEncoding) {
    for (const std::string_view uid : {kExplicitUid, kImplicitUid, kBigEndianUid}) {
        for (const bool isDouble : {false, true}) {
            const FloatFile file{.uid = uid, .isDouble = isDouble};
            const Bytes content = file.Content();
            for (const Rules rules : {Rules::kEstablished, Rules::kStandard}) {
                for (const int readWholeFile : {0, 1}) {
                    Parsed parsed;
                    parsed.parser.SetRules(rules);
                    ASSERT_EQ(parsed.Read(content, readWholeFile), QVM_SUCCESS);
                    const auto type = isDouble ? SampleType::kFloat64 : SampleType::kFloat32;
                    EXPECT_EQ(parsed.parser.GetSampleType(), type);
                    for (const int frame : {1, 0})
                        EXPECT_EQ(FrameOf(parsed.parser, frame),
                                  Done(file.Frame(static_cast<std::size_t>(frame))))
                            << uid << ' ' << isDouble << readWholeFile;
                    EXPECT_EQ(parsed.parser.GetFrameQuality(), FrameQuality::kWhole);
                    EXPECT_EQ(FrameOf(parsed.parser, 2).code, QVM_ERROR_INVALID_FRAME_INDEX);
                }
            }
            Parsed parsed(content);
            const Place place = PlaceOf(parsed.parser, 1);
            ASSERT_EQ(place.code, QVM_SUCCESS);
            EXPECT_EQ(place.size, 3 * file.SampleBytes());
            EXPECT_EQ(place.offset + place.size, content.size());
        }
    }
}

TEST(FloatPixels, ThatAreCutAreZeroFromTheFirstSampleThatIsNotWhole) {
    for (const bool isDouble : {false, true}) {
        for (const std::size_t missing : {2U, 4U, 10U}) {
            const FloatFile file{.isDouble = isDouble, .missing = missing};
            Parsed parsed(file.Content());
            EXPECT_EQ(FrameOf(parsed.parser, 0), Done(file.Frame(0)));
            EXPECT_EQ(parsed.parser.GetFrameQuality(), FrameQuality::kWhole);
            EXPECT_EQ(FrameOf(parsed.parser, 1), Done(file.Frame(1))) << isDouble << missing;
            EXPECT_EQ(parsed.parser.GetFrameQuality(), FrameQuality::kPartial);
        }
    }
    const FloatFile first{.missing = 12};
    Parsed parsed(first.Content());
    EXPECT_EQ(FrameOf(parsed.parser, 1).code, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
}

TEST(FloatPixels, AreRefusedWhereTheHeaderDescribesOthers) {
    for (const FloatFile& file :
         {FloatFile{.bits = 16}, FloatFile{.bits = 64}, FloatFile{.isDouble = true, .bits = 32},
          FloatFile{.bits = 0}, FloatFile{.samples = 3}}) {
        Parsed parsed(file.Content());
        EXPECT_EQ(FrameOf(parsed.parser).code, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA) << file.bits;
        EXPECT_EQ(PlaceOf(parsed.parser).code, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA) << file.bits;
    }
    Parsed both(FloatFile{.hasIntegersToo = true}.Content());
    EXPECT_EQ(both.parser.GetSampleType(), SampleType::kInteger);
    EXPECT_EQ(FrameOf(both.parser), Done(Bytes(12, 1)));
}

TEST(FloatPixels, DoNotPassForIntegers) {
    Parsed parsed(FloatFile{}.Content());
    CXDIPP image;
    CDcmObject shown = *parsed.Header();
    EXPECT_NE(image.Initialize(&parsed.app, &shown, CSize(16, 16), 0), QVM_SUCCESS);
    CDcmObject object = *parsed.Header();
    EXPECT_NE(ConvertTo(kXferRle, object).Code(), QVM_SUCCESS);
}

}  // namespace
}  // namespace quorvex
