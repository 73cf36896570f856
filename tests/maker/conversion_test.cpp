#include "tests/maker/maker_objects.h"
#include "tests/support/answers.h"
#include "tests/support/corpus.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;

constexpr int kFrames = 3;

CDcmObject GreyObject() {
    auto object = With("00080016=1.2.840.10008.5.1.4.1.1.7; 00280008=3; 00281050=40; 00281051=400");
    std::vector<std::uint16_t> samples;
    for (unsigned i = 0; i < 32 * 20 * kFrames; ++i)
        samples.push_back(static_cast<std::uint16_t>(i * 5 % 4096));
    pipeline_test::FillImage(object, {.size = {32, 20}}, samples);
    return object;
}

TEST(Conversion, GoesThroughEveryFormAndBack) {
    const CDcmObject original = GreyObject();
    const auto frames = FramesOf(original);
    CDcmObject object = original;
    for (const std::int32_t type : {9, 7, 3, 7, 9, 1}) {
        ASSERT_EQ(ConvertTo(type, object).Code(), QVM_SUCCESS) << type;
        EXPECT_TRUE(FramesOf(object) == frames) << type;
        EXPECT_EQ(ConvertTo(type, object).Code(), QVM_FRAME_COPIED) << type;
    }
    EXPECT_EQ(TextOf(object, tag::kSOPInstanceUID), TextOf(original, tag::kSOPInstanceUID));
    EXPECT_EQ(TextOf(object, tag::kWindowWidth), "400");
}

TEST(Conversion, OfExtendedJpegHasTwelveBits) {
    CDcmObject object = GreyObject();
    object.SetValue(tag::kBitsStored, 16);
    object.SetValue(tag::kHighBit, 15);
    ASSERT_EQ(ConvertTo(kXferJpegExtended, object).Code(), QVM_SUCCESS);
    ExpectAttributes(object, "00280101=12; 00280102=11; 00282110=01");
}

using O = CDcmObject&;
const struct {
    const char* what;
    std::int32_t type;
    QUORVEX_MESSAGE outcome;
    void (*spoil)(O) = [](O) {};
} kFailures[] = {
    {"form 0", 0, QVM_ERROR_INVALID_TARGET_SYNTAX},
    {"RLE", 4, QVM_ERROR_INVALID_TRANSFER_SYNTAX},
    {"16 bits as baseline JPEG", 5, QVM_ERROR_FAILED_TO_COMPRESS},
    {"negative values as extended JPEG", 6, QVM_ERROR_FAILED_TO_COMPRESS,
     [](O object) {
         const std::vector<std::int16_t> samples(32 * 20 * kFrames, -5);
         pipeline_test::FillImage(object, {.size = {32, 20}, .pixelRepresentation = 1}, samples);
     }},
    {"fewer frames than said", 9, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA,
     [](O object) { object.SetValue(tag::kNumberOfFrames, "4"); }},
    {"no Pixel Data", 7, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA,
     [](O object) { object.RemoveValue(tag::kPixelData); }},
    {"no frames", 7, QVM_ERROR_INVALID_IMAGE_FORMAT,
     [](O object) { object.SetValue(tag::kNumberOfFrames, "0"); }},
    {"no Rows", 7, QVM_ERROR_INVALID_ROWS, [](O object) { object.RemoveValue(tag::kRows); }},
    {"four samples", 9, QVM_ERROR_INVALID_PHOTOMETRIC,
     [](O object) { object = With(object, "00280002=4; 00280004=CMYK"); }},
    {"palette without tables", 7, QVM_ERROR_INVALID_PHOTOMETRIC,
     [](O object) { object = With(object, "00280004=PALETTE COLOR"); }},
};

TEST(Conversion, ThatFailsLeavesTheObjectAsItWas) {
    for (const auto& c : kFailures) {
        CDcmObject object = GreyObject();
        c.spoil(object);
        const Frame before = Written(object);
        EXPECT_EQ(ConvertTo(c.type, object).Code(), c.outcome) << c.what;
        EXPECT_TRUE(Written(object) == before) << c.what;
    }
}

TEST(Conversion, AppliesSettingsWhateverBecomesOfThePixels) {
    CDcmApp app;
    for (const std::int32_t type : {3, 4, 7}) {
        CDcmObject object = GreyObject();
        _USER_SETTING_INFO settings;
        settings.compressionType = type;
        settings.patientName = "New^Name";
        settings.fileName = "renamed.dcm";
        CxDcmMaker maker;
        EXPECT_EQ(maker.MakeDcmObject(&app, &object, &settings), QVM_SUCCESS);
        EXPECT_EQ(TextOf(object, tag::kPatientName), "New^Name") << type;
        EXPECT_EQ(object.GetFileName(), CString("renamed.dcm")) << type;
    }
    CDcmObject object = GreyObject();
    CDcmObject bare;
    CxDcmMaker maker;
    EXPECT_EQ(maker.MakeDcmObject(&app, &object, nullptr), QVM_SUCCESS);
    EXPECT_EQ(maker.GetOutcome(), QVM_FRAME_COPIED);
    EXPECT_EQ(maker.MakeDcmObject(nullptr, &object, nullptr), QVM_ERROR_INVALID_DCMAPP);
    EXPECT_EQ(maker.MakeDcmObject(&app, &bare, nullptr), QVM_ERROR_INVALID_TRANSFER_SYNTAX);
}

void PutTable(CDcmObject& object, unsigned colour, const std::vector<unsigned char>& bytes) {
    const std::string descriptor = std::to_string(bytes.size() / 2) + "\\0\\16";
    object.SetValue(tag::kRedPaletteColorLookupTableDescriptor + colour, descriptor.c_str());
    pipeline_test::SetBytes(object, tag::kRedPaletteColorLookupTableData + colour, bytes);
}

TEST(Conversion, ExpandsPalettesOfEveryFrame) {
    auto object = With("00280008=2");
    pipeline_test::FillImage<std::uint8_t>(
        object,
        {.size = {2, 1}, .bitsAllocated = 8, .bitsStored = 8, .photometric = "PALETTE COLOR"},
        {0, 1, 1, 2});
    PutTable(object, 0, {0, 0, 0xFF, 0xFF, 0, 0x80});
    PutTable(object, 1, {0, 0, 0, 0x80, 0, 0});
    PutTable(object, 2, {0xFF, 0xFF, 0, 0, 0, 0x80});
    ASSERT_EQ(ConvertTo(kXferJpegLossless, object).Code(), QVM_SUCCESS);
    const std::vector<Frame> expected = {{0, 0, 254, 254, 127, 0}, {254, 127, 0, 127, 0, 127}};
    EXPECT_EQ(FramesOf(object), expected);
    ExpectAttributes(object, "00280004=RGB; 00280002=3; 00280102=7; 00280006=0");
    EXPECT_NE(TextOf(object, tag::kRedPaletteColorLookupTableDescriptor), kAbsent)
        << "the tables stay";
}

TEST(Conversion, ForgetsTheOffsetTablesOfCodedFrames) {
    CDcmObject object = GreyObject();
    ASSERT_EQ(ConvertTo(kXferJpegLossless, object).Code(), QVM_SUCCESS);
    object.SetValue(0x7FE00001, 1);
    object.SetValue(0x7FE00002, 1);
    ASSERT_EQ(ConvertTo(kXferUncompressedExplicit, object).Code(), QVM_SUCCESS);
    ExpectAttributes(object, "7FE00001; 7FE00002");
}

/// Slow with every form: larger files are left to the command's own check.
constexpr std::uintmax_t kLargestFile = 300'000;

TEST(Conversion, OfRealFilesGivesTheSameFramesInEveryLosslessForm) {
    int made = 0;
    int refused = 0;
    for (const auto& path : RealFiles()) {
        if (std::filesystem::file_size(path) > kLargestFile) continue;
        CDcmApp app;
        CxDcmParser parser;
        if (parser.Initialize(&app, CString(path.string()), 1) != QVM_SUCCESS) continue;
        const CDcmObject original = *parser.GetHeader();
        const auto frames = FramesOf(parser);
        const bool isWhole = frames.size() == static_cast<std::size_t>(parser.GetFrameCount());
        if (SyntaxOf(original) == kSyntaxNone || !isWhole) continue;
        const bool isPalette =
            TextOf(original, tag::kPhotometricInterpretation).starts_with("PALETTE");
        for (const auto form : {kXferUncompressedImplicit, kXferUncompressedExplicit,
                                kXferJpegLossless, kXferJpeg2000Lossless}) {
            SCOPED_TRACE(path.string() + " form " + std::to_string(form));
            CDcmObject object = original;
            const auto outcome = ConvertTo(form, object).Code();
            const bool isMade = outcome == QVM_SUCCESS || outcome == QVM_FRAME_COPIED;
            ++(isMade ? made : refused);
            if (!isMade) {
                EXPECT_EQ(Written(object), Written(original));
            } else if (isPalette && outcome == QVM_SUCCESS) {
                EXPECT_FALSE(FramesOfFile(object).empty()) << "frames of colours now";
            } else {
                EXPECT_EQ(FramesOfFile(object), frames);
            }
        }
    }
    EXPECT_LE(refused * 5, made);
}

}  // namespace
}  // namespace quorvex
