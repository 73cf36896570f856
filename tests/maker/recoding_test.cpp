// Conversions by the standard rules.
#include "codec/rle/rle.h"
#include "codec/rle/rle_coding.h"
#include "foundation/engines/jpegxl/jpegxl_engine.h"
#include "maker/uids.h"
#include "quorvex/TransferSyntaxes.h"
#include "tests/maker/maker_objects.h"

#include <gtest/gtest.h>
#include <random>
#include <set>

namespace quorvex {
namespace {

using namespace test;
using pipeline_test::ImageShape;

template <class Sample>
CDcmObject ImageOf(const ImageShape& shape, unsigned mask, const char* others = "") {
    const std::size_t pixels = static_cast<std::size_t>(shape.size.cx * shape.size.cy);
    std::vector<Sample> samples(pixels * shape.samples * 2);
    unsigned seed = 1;
    for (Sample& sample : samples) {
        seed = seed * 1664525U + 1013904223U;
        sample = static_cast<Sample>(seed >> 12U & mask);
    }
    auto object = With<CDcmObject>((std::string("00080016=1.2.840.10008.5.1.4.1.1.7; 00280008=2; "
                                                "00281050=40\\50; 00281051=400\\500; ") +
                                    others)
                                       .c_str());
    pipeline_test::FillImage(object, shape, samples);
    return object;
}

/// Everything but the pixels, and what a coding may change.
std::string Described(const CDcmObject& object) {
    std::string text;
    object.WalkElements(&text, [](const DcmElementView& element, void* user) -> MC_STATUS {
        const std::uint32_t mayChange[] = {tag::kPixelData, tag::kTransferSyntaxUID,
                                           tag::kPhotometricInterpretation};
        auto& all = *static_cast<std::string*>(user);
        if (std::ranges::find(mayChange, element.tag) == std::end(mayChange)) {
            all += std::to_string(element.tag) + ":" + std::to_string(element.length) + " ";
        }
        return kMcContinue;
    });
    return text;
}

struct Kept {
    const char* what;
    CDcmObject object;
    const char* asJpeg;      ///< photometric interpretation as lossless JPEG; null where refused
    const char* asJpeg2000;  ///< and as JPEG 2000
};

std::vector<Kept> KeptObjects() {
    const ImageShape grey{.size = {17, 9}};
    ImageShape bytes{.size = {17, 9}, .bitsAllocated = 8, .bitsStored = 8};
    ImageShape negative = grey;
    negative.pixelRepresentation = 1;
    ImageShape palette = bytes;
    palette.photometric = "PALETTE COLOR";
    ImageShape widePalette = grey;
    widePalette.photometric = "PALETTE COLOR";
    widePalette.bitsStored = 16;
    ImageShape rgb = bytes;
    rgb.samples = 3;
    rgb.photometric = "RGB";
    ImageShape ybr = rgb;
    ybr.photometric = "YBR_FULL";
    ImageShape words{.size = {5, 3}, .bitsAllocated = 32, .bitsStored = 32};
    std::vector<Kept> kept;
    kept.push_back({"12 bits", ImageOf<std::uint16_t>(grey, 0xFFF), "MONOCHROME2", "MONOCHROME2"});
    kept.push_back({"bits above Bits Stored", ImageOf<std::uint16_t>(grey, 0xFFFF), "MONOCHROME2",
                    "MONOCHROME2"});
    kept.push_back(
        {"signed", ImageOf<std::uint16_t>(negative, 0xFFFF), "MONOCHROME2", "MONOCHROME2"});
    kept.push_back({"bytes", ImageOf<std::uint8_t>(bytes, 0xFF), "MONOCHROME2", "MONOCHROME2"});
    kept.push_back(
        {"palette", ImageOf<std::uint8_t>(palette, 0x3F), "PALETTE COLOR", "PALETTE COLOR"});
    kept.push_back({"palette of 16 bits", ImageOf<std::uint16_t>(widePalette, 0xFFFF),
                    "PALETTE COLOR", "PALETTE COLOR"});
    kept.push_back({"RGB", ImageOf<std::uint8_t>(rgb, 0xFF, "00280006=0"), "RGB", "YBR_RCT"});
    kept.push_back({"YBR", ImageOf<std::uint8_t>(ybr, 0xFF, "00280006=0"), "YBR_FULL", "YBR_FULL"});
    kept.push_back({"32 bits", ImageOf<std::uint32_t>(words, 0xFFFFFFFF), nullptr, nullptr});
    return kept;
}

TEST(Recoding, ChangesHowPixelsAreStoredAndNothingElse) {
    for (const Kept& kept : KeptObjects()) {
        const struct {
            QUORVEX_XFERSYNTAX form;
            const char* photometric;
        } forms[] = {{kXferRle, ""},
                     {kXferDeflated, ""},
                     {kXferDeflatedFrames, ""},
                     {kXferEncapsulated, ""},
                     {kXferJpegLossless, kept.asJpeg},
                     {kXferJpeg2000Lossless, kept.asJpeg2000},
                     {kXferHtj2kLossless, kept.asJpeg2000},
                     {kXferHtj2kRpclLossless, kept.asJpeg2000},
                     {kXferJpegLsLossless, kept.asJpeg}};
        const std::string own = TextOf(kept.object, tag::kPhotometricInterpretation);
        for (const auto& [form, photometric] : forms) {
            if (TransferSyntaxOf(form) == nullptr) continue;  // not in this build
            SCOPED_TRACE(std::string(kept.what) + " as form " + std::to_string(form));
            CDcmObject object = kept.object;
            if (photometric == nullptr) {
                EXPECT_EQ(Recode(object, form), QVM_ERROR_INVALID_BITS_ALLOCATED);
                EXPECT_TRUE(Written(object) == Written(kept.object));
                continue;
            }
            const auto outcome = form == kXferDeflated ? QVM_FRAME_COPIED : QVM_SUCCESS;
            ASSERT_EQ(Recode(object, form), outcome);
            EXPECT_EQ(SyntaxOf(object), TransferSyntaxOf(form)->number);
            EXPECT_EQ(TextOf(object, tag::kPhotometricInterpretation),
                      *photometric != '\0' ? photometric : own);
            EXPECT_EQ(Described(object), Described(kept.object));
            ASSERT_EQ(Recode(object, kXferUncompressedExplicit),
                      form == kXferDeflated ? QVM_FRAME_COPIED : QVM_SUCCESS);
            EXPECT_TRUE(Written(object) == Written(kept.object)) << "there and back";
        }
    }
}

TEST(Recoding, WithLossesMakesAnObjectOfItsOwn) {
    const auto source = ImageOf<std::uint16_t>(
        {.size = {64, 64}}, 0xFFF, "00080008=ORIGINAL\\PRIMARY\\AXIAL; 00282110=01; 00282112=3");
    CDcmObject once = source;
    ASSERT_EQ(Recode(once, kXferJpeg2000, 8), QVM_SUCCESS);
    ExpectAttributes(once,
                     "00080008=DERIVED\\PRIMARY\\AXIAL; 00282110=01; 00282114=ISO_15444_1; "
                     "00281051=400\\500");
    EXPECT_TRUE(TextOf(once, tag::kLossyImageCompressionRatio).starts_with("3\\"));
    if (TransferSyntaxOf(kXferHtj2k) != nullptr) {
        CDcmObject fast = source;
        ASSERT_EQ(Recode(fast, kXferHtj2k, 8), QVM_SUCCESS);
        ExpectAttributes(fast, "00080008=DERIVED\\PRIMARY\\AXIAL; 00282114=ISO_15444_15");
    }
    EXPECT_NE(TextOf(once, tag::kSOPInstanceUID), TextOf(source, tag::kSOPInstanceUID));
    CDcmItem item;
    ASSERT_EQ(once.GetValue(tag::kSourceImageSequence, item), kDcmSuccess);
    EXPECT_EQ(TextOf(item, tag::kReferencedSOPInstanceUID), TextOf(source, tag::kSOPInstanceUID));
    ASSERT_EQ(once.GetValue(tag::kDerivationCodeSequence, item), kDcmSuccess);
    EXPECT_EQ(TextOf(item, tag::kCodeValue), "113040");

    CDcmObject back = once;
    ASSERT_EQ(Recode(back, kXferJpegLossless), QVM_SUCCESS);
    ExpectAttributes(back, "00282110=01");
    back.SetValue(tag::kLossyImageCompression, "00");
    CDcmObject told = once;
    told.SetValue(tag::kLossyImageCompression, "00");
    ASSERT_EQ(Recode(told, kXferUncompressedExplicit), QVM_SUCCESS);
    ExpectAttributes(told, "00282110=01");
}

/// Native frames follow each other bit by bit, and each of the others begins with its own byte.
TEST(Recoding, SingleBitsStayWhatTheyAre) {
    const ImageShape shape{.size = {3, 5}, .bitsAllocated = 1, .bitsStored = 1};
    const std::vector<std::uint8_t> packed = {0x5A, 0xC3, 0x99, 0x0F, 0xE1, 0x1F};  // 45 bits
    auto source = pipeline_test::ImageOf(shape, packed, "00280008=3");
    source.SetValueRepresentation(tag::kPixelData, MC_VR_OB);
    const auto frames = FramesOf(source);
    ASSERT_EQ(frames.size(), 3U);
    for (const auto form : {kXferRle, kXferDeflatedFrames, kXferEncapsulated}) {
        SCOPED_TRACE(form);
        CDcmObject object = source;
        ASSERT_EQ(Recode(object, form), QVM_SUCCESS);
        EXPECT_EQ(FramesOf(object), frames);
        EXPECT_EQ(FramesOfFile(object), frames);
        ASSERT_EQ(Recode(object, kXferUncompressedExplicit), QVM_SUCCESS);
        EXPECT_TRUE(Written(object) == Written(source));
    }
}

/// How far the samples of two objects of 16 bits are from each other.
int GreatestDistance(const CDcmObject& one, const CDcmObject& other) {
    const auto a = FramesOf(one).front();
    const auto b = FramesOf(other).front();
    int greatest = a.size() == b.size() ? 0 : 65536;
    for (std::size_t i = 0; i + 1 < a.size() && i + 1 < b.size(); i += 2) {
        const auto value = [i](const Frame& frame) {
            return static_cast<std::int16_t>(frame[i] | frame[i + 1] << 8);
        };
        greatest = std::max(greatest, std::abs(value(a) - value(b)));
    }
    return greatest;
}

TEST(Recoding, NearLosslessKeepsItsBoundAndTellsIt) {
    ImageShape negative{.size = {40, 30}, .bitsStored = 16};
    negative.pixelRepresentation = 1;
    for (const auto& [source, bound] :
         {std::pair(ImageOf<std::uint16_t>({.size = {40, 30}}, 0xFFF), 1),
          {ImageOf<std::uint16_t>({.size = {40, 30}}, 0xFFF), 9},
          {ImageOf<std::int16_t>(negative, 0x7FF), 3}}) {
        CDcmObject near = source;
        ASSERT_EQ(Recode(near, kXferJpegLs, static_cast<std::uint16_t>(bound)), QVM_SUCCESS);
        ExpectAttributes(near, "00282110=01; 00282114=ISO_14495_1");
        EXPECT_NE(TextOf(near, tag::kDerivationDescription)
                      .find("within " + std::to_string(bound) + " of"),
                  std::string::npos);
        ASSERT_EQ(Recode(near, kXferUncompressedExplicit), QVM_SUCCESS);
        EXPECT_EQ(GreatestDistance(near, source), bound);
    }
    // Next to the least value a bound of 2 would make a positive sample of a negative one.
    auto edge = ImageOf<std::int16_t>(negative, 0x8000);
    EXPECT_EQ(Recode(edge, kXferJpegLs, 2), QVM_ERROR_INVALID_BITS_STORED);
    // A bound of 0 under the lossy syntax has lost nothing.
    auto exact = ImageOf<std::uint16_t>({.size = {40, 30}}, 0xFFF);
    ASSERT_EQ(Recode(exact, kXferJpegLsLossless), QVM_SUCCESS);
    exact.SetTransferSyntax(kJpegLsNearLossless);
    ASSERT_EQ(Recode(exact, kXferUncompressedExplicit), QVM_SUCCESS);
    ExpectAttributes(exact, "00282110");
}

TEST(Recoding, JpegXlKeepsUnsignedSamplesAndTellsItsLosses) {
    if (!HasJpegXl()) GTEST_SKIP() << "built without libjxl";
    const ImageShape rgb{
        .size = {21, 13}, .samples = 3, .bitsAllocated = 8, .bitsStored = 8, .photometric = "RGB"};
    for (const auto& source : {ImageOf<std::uint16_t>({.size = {40, 30}}, 0xFFF),
                               // more bits than are stored
                               ImageOf<std::uint16_t>({.size = {40, 30}}, 0xFFFF),
                               ImageOf<std::uint8_t>(rgb, 0xFF, "00280006=0"),
                               ImageOf<std::uint8_t>(rgb, 0xFF, "00280004=YBR_FULL; 00280006=0")}) {
        CDcmObject object = source;
        ASSERT_EQ(Recode(object, kXferJpegXlLossless), QVM_SUCCESS);
        EXPECT_EQ(Described(object), Described(source));
        ASSERT_EQ(Recode(object, kXferUncompressedExplicit), QVM_SUCCESS);
        EXPECT_EQ(FramesOf(object), FramesOf(source));
        EXPECT_EQ(Described(object), Described(source));
    }
    auto lossy = ImageOf<std::uint8_t>(rgb, 0xFF, "00280006=0");
    ASSERT_EQ(Recode(lossy, kXferJpegXl), QVM_SUCCESS);
    ExpectAttributes(lossy, "00282110=01; 00282114=ISO_18181_1; 00280004=XYB");
    ASSERT_EQ(Recode(lossy, kXferUncompressedExplicit), QVM_SUCCESS);
    ExpectAttributes(lossy, "00280004=RGB");
}

TEST(Recoding, RefusesWhatACodingCannotHold) {
    const struct {
        const char* attributes;
        QUORVEX_XFERSYNTAX form;
        QUORVEX_MESSAGE outcome;
    } rows[] = {
        {"00280004=PALETTE COLOR; 00280100=8; 00280101=8", kXferJpegBaseline,
         QVM_ERROR_INVALID_PHOTOMETRIC},
        {"00280004=PALETTE COLOR", kXferJpeg2000, QVM_ERROR_INVALID_PHOTOMETRIC},
        {"00280103=1", kXferJpegExtended, QVM_ERROR_INVALID_PIXEL_REPRESENTATION},
        {"00280103=0", kXferJpegBaseline, QVM_ERROR_INVALID_BITS_ALLOCATED},
        {"00280100=1; 00280101=1; 00280102=0", kXferJpeg2000Lossless,
         QVM_ERROR_INVALID_BITS_ALLOCATED},
        {"00280103=1", kXferJpegXlLossless, QVM_ERROR_INVALID_PIXEL_REPRESENTATION},
        {"00280101=4", kXferJpeg2000, QVM_ERROR_INVALID_BITS_STORED},
        {"00280008=9", kXferJpegLossless, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA},
        {"00280103=0", kXferUncompressed, QVM_FRAME_COPIED},
    };
    for (const auto& row : rows) {
        if (TransferSyntaxOf(row.form) == nullptr) continue;  // not in this build
        const auto object = With(ImageOf<std::uint16_t>({.size = {17, 9}}, 0xFFF), row.attributes);
        CDcmObject converted = object;
        EXPECT_EQ(Recode(converted, row.form), row.outcome) << row.attributes;
        const bool isUnchanged = Written(converted) == Written(object);
        EXPECT_TRUE(isUnchanged || row.outcome == QVM_FRAME_COPIED) << row.attributes;
    }
}

TEST(RleCoding, IsReadBack) {
    std::mt19937 random(5);
    for (const std::size_t columns : {1U, 2U, 127U, 128U, 129U, 300U}) {
        for (const unsigned levels : {1U, 2U, 3U, 200U}) {
            for (const std::size_t bytes : {1U, 2U, 4U}) {
                Frame frame(columns * 7 * 3 * bytes);
                for (auto& byte : frame) byte = static_cast<unsigned char>(random() % levels);
                const auto coded = CodeRle({frame, 7, columns, 3, bytes});
                ASSERT_TRUE(coded);
                EXPECT_EQ(coded->size() % 2, 0U);
                // Planes for each sample, which the decoder gives with their bytes in order.
                Frame planes(frame.size());
                const auto outcome = DecodeRle(*coded, {columns * 7, 3, bytes, true}, planes);
                EXPECT_TRUE(outcome.isWhole);
                for (std::size_t pixel = 0; pixel < columns * 7; ++pixel)
                    for (std::size_t i = 0; i < 3 * bytes; ++i)
                        ASSERT_EQ(planes[(i / bytes * columns * 7 + pixel) * bytes + i % bytes],
                                  frame[pixel * 3 * bytes + i]);
            }
        }
    }
    EXPECT_FALSE(CodeRle({Frame(16), 1, 1, 1, 16})) << "more than 15 segments";
}

TEST(NewUids, AreValidAndDifferent) {
    std::set<std::string> all;
    for (const char* root :
         {"", "1.2.840.99999.1", "2.999", "1.2.3456789.3456789.3456789.34567.1"}) {
        for (int i = 0; i < 200; ++i) {
            const auto uid = NewUid(CString(root));
            ASSERT_TRUE(uid) << root;
            const std::string text = uid->ToUtf8();
            EXPECT_LE(text.size(), 64U);
            EXPECT_TRUE(text.starts_with(*root != '\0' ? root : "2.25")) << text;
            EXPECT_EQ(text.find(".0"), std::string::npos) << text;
            all.insert(text);
        }
    }
    EXPECT_EQ(all.size(), 800U);
    for (const char* root :
         {"1.2.", "1..2", "1.02", "3.1", "a", ".1", "1.2.3456789.3456789.3456789.3456789.34567890"})
        EXPECT_FALSE(NewUid(CString(root))) << root;
}

}  // namespace
}  // namespace quorvex
