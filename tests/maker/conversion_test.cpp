#include "tests/maker/maker_objects.h"
#include "tests/support/answers.h"

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
    EXPECT_EQ(TextOf(object, 0x00080018), TextOf(original, 0x00080018));
    EXPECT_EQ(TextOf(object, 0x00281051), "400");
}

TEST(Conversion, OfExtendedJpegHasTwelveBits) {
    CDcmObject object = GreyObject();
    object.SetValue(0x00280101, 16);
    object.SetValue(0x00280102, 15);
    ASSERT_EQ(ConvertTo(kXferJpegExtended, object).Code(), QVM_SUCCESS);
    ExpectAttributes(object, "00280101=12; 00280102=11; 00282110=01");
}

struct FailureCase {
    const char* what;
    std::int32_t type;
    QUORVEX_MESSAGE outcome;
    void (*spoil)(CDcmObject&);
};

const FailureCase kFailures[] = {
    {"form 0", 0, QVM_ERROR_INVALID_TARGET_SYNTAX, [](CDcmObject&) {}},
    {"RLE", 4, QVM_ERROR_INVALID_TRANSFER_SYNTAX, [](CDcmObject&) {}},
    {"16 bits as baseline JPEG", 5, QVM_ERROR_FAILED_TO_COMPRESS, [](CDcmObject&) {}},
    {"negative values as extended JPEG", 6, QVM_ERROR_FAILED_TO_COMPRESS,
     [](CDcmObject& object) {
         const std::vector<std::int16_t> samples(32 * 20 * kFrames, -5);
         pipeline_test::FillImage(object, {.size = {32, 20}, .pixelRepresentation = 1}, samples);
     }},
    {"fewer frames than said", 9, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA,
     [](CDcmObject& object) { object.SetValue(0x00280008, "4"); }},
    {"no Pixel Data", 7, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA,
     [](CDcmObject& object) { object.RemoveValue(0x7FE00010); }},
    {"no frames", 7, QVM_ERROR_INVALID_IMAGE_FORMAT,
     [](CDcmObject& object) { object.SetValue(0x00280008, "0"); }},
    {"no Rows", 7, QVM_ERROR_INVALID_ROWS,
     [](CDcmObject& object) { object.RemoveValue(0x00280010); }},
    {"four samples", 9, QVM_ERROR_INVALID_PHOTOMETRIC,
     [](CDcmObject& object) {
         object.SetValue(0x00280002, 4);
         object.SetValue(0x00280004, "CMYK");
     }},
    {"palette without tables", 7, QVM_ERROR_INVALID_PHOTOMETRIC,
     [](CDcmObject& object) { object.SetValue(0x00280004, "PALETTE COLOR"); }},
};

TEST(Conversion, ThatFailsLeavesTheObjectAsItWas) {
    for (const FailureCase& c : kFailures) {
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
        EXPECT_EQ(TextOf(object, 0x00100010), "New^Name") << type;
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
    object.SetValue(0x00281101 + colour, descriptor.c_str());
    pipeline_test::SetBytes(object, 0x00281201 + colour, bytes);
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
    EXPECT_NE(TextOf(object, 0x00281101), kAbsent) << "the tables stay";
}

TEST(Conversion, ForgetsTheOffsetTablesOfCodedFrames) {
    CDcmObject object = GreyObject();
    ASSERT_EQ(ConvertTo(kXferJpegLossless, object).Code(), QVM_SUCCESS);
    object.SetValue(0x7FE00001, 1);
    object.SetValue(0x7FE00002, 1);
    ASSERT_EQ(ConvertTo(kXferUncompressedExplicit, object).Code(), QVM_SUCCESS);
    ExpectAttributes(object, "7FE00001; 7FE00002");
}

}  // namespace
}  // namespace quorvex
