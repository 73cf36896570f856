// JPEG streams kept in JPEG XL: back to the byte, and nothing else of the object changed.
#include "foundation/engines/jpegxl/jpegxl_engine.h"
#include "quorvex/TransferSyntaxes.h"
#include "tests/engines/jpeg_library_streams.h"
#include "tests/maker/maker_objects.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;
using testing::JpegRecipe;

constexpr int kColumns = 45;
constexpr int kRows = 30;

class JpegStreams : public ::testing::Test {
protected:
    void SetUp() override {
        if (!HasJpegXl()) GTEST_SKIP() << "built without libjxl";
    }
};

Frame Jpeg(const JpegRecipe& recipe, unsigned most = 255) {
    const Frame picture = WavyFrame(std::size_t{3} * kColumns * kRows, 1, most);
    return testing::MakeJpeg(kColumns, kRows, picture, recipe);
}

void PutStreams(CDcmObject& object, std::vector<Frame> streams) {
    std::vector<unsigned char*> starts;
    std::vector<unsigned long> lengths;
    for (Frame& stream : streams) {
        starts.push_back(stream.data());
        lengths.push_back(stream.size());
    }
    object.SetValueEx(tag::kPixelData, static_cast<int>(streams.size()), lengths.data(),
                      starts.data());
}

CDcmObject ObjectOf(const std::vector<Frame>& streams, const char* uid, int samples) {
    auto object = With<CDcmObject>(
        "00080016=1.2.840.10008.5.1.4.1.1.7; 00080018=1.2.3; "
        "00280010=30; 00280011=45; 00280100=8; 00280101=8; 00280102=7; "
        "00280103=0; 00282110=01; 00282112=7; 00282114=ISO_10918_1");
    object.SetTransferSyntax(TransferSyntaxOfUid(uid)->number);
    object.SetValue(tag::kNumberOfFrames, static_cast<int>(streams.size()));
    object.SetValue(tag::kSamplesPerPixel, samples);
    object.SetValue(tag::kPhotometricInterpretation, samples == 1 ? "MONOCHROME2" : "YBR_FULL_422");
    if (samples == 3) object.SetValue(tag::kPlanarConfiguration, 0);
    PutStreams(object, streams);
    return object;
}

TEST_F(JpegStreams, ComeBackToTheByte) {
    const struct {
        JpegRecipe recipe;
        const char* uid;
        int samples = 3;
    } rows[] = {
        {{.horizontal = 2}, "1.2.840.10008.1.2.4.50"},
        {{.horizontal = 2, .vertical = 2, .restartRows = 1}, "1.2.840.10008.1.2.4.50"},
        {{.horizontal = 2, .progressive = true}, "1.2.840.10008.1.2.4.55"},
        {{.stored = JCS_GRAYSCALE}, "1.2.840.10008.1.2.4.50", 1},
    };
    for (const auto& row : rows) {
        for (const unsigned most : {255U, 100U, 30U}) {  // streams of even and odd lengths
            const auto source =
                ObjectOf({Jpeg(row.recipe), Jpeg(row.recipe, most)}, row.uid, row.samples);
            CDcmObject object = source;
            ASSERT_EQ(Recode(object, kXferJpegXlOfJpeg), QVM_SUCCESS) << row.uid;
            EXPECT_EQ(SyntaxOf(object), kJpegXlOfJpeg);
            EXPECT_EQ(FramesOfFile(object), FramesOfFile(source));
            ExpectAttributes(object, "00080018=1.2.3; 00282112=7");
            EXPECT_EQ(Recode(object, kXferJpegXlOfJpeg), QVM_FRAME_COPIED);
            ASSERT_EQ(Recode(object, kXferJpegOriginal), QVM_SUCCESS) << row.uid;
            EXPECT_EQ(Written(object), Written(source)) << row.uid << ' ' << most;
            EXPECT_EQ(Recode(object, kXferJpegOriginal), QVM_FRAME_COPIED);
        }
    }
}

TEST_F(JpegStreams, OfOtherKindsAreRefusedAndStayAsTheyAre) {
    const Frame whole = Jpeg({});
    const Frame cut(whole.begin(), whole.begin() + static_cast<long>(whole.size() / 2));
    const char* const baseline = "1.2.840.10008.1.2.4.50";
    auto native = ObjectOf({whole}, baseline, 3);
    ASSERT_EQ(Recode(native, kXferUncompressedExplicit), QVM_SUCCESS);
    auto lossless = native;
    ASSERT_EQ(Recode(lossless, kXferJpegLossless), QVM_SUCCESS);
    auto plainXl = native;
    ASSERT_EQ(Recode(plainXl, kXferJpegXlLossless), QVM_SUCCESS);
    auto mixed = ObjectOf({whole, whole}, baseline, 3);
    ASSERT_EQ(Recode(mixed, kXferJpegXlOfJpeg), QVM_SUCCESS);
    PutStreams(mixed, {*RecompressJpeg(whole), *RecompressJpeg(Jpeg({.progressive = true}))});
    auto missing = ObjectOf({whole, whole}, baseline, 3);
    missing.SetValue(tag::kNumberOfFrames, 3);
    const struct {
        const char* what;
        CDcmObject source;
        QUORVEX_XFERSYNTAX form;
        QUORVEX_MESSAGE outcome;
    } rows[] = {
        {"native", native, kXferJpegXlOfJpeg, QVM_ERROR_INVALID_TARGET_SYNTAX},
        {"native", native, kXferJpegOriginal, QVM_ERROR_INVALID_TARGET_SYNTAX},
        {"lossless", lossless, kXferJpegXlOfJpeg, QVM_ERROR_INVALID_TARGET_SYNTAX},
        {"samples", plainXl, kXferJpegXlOfJpeg, QVM_ERROR_INVALID_TARGET_SYNTAX},
        {"samples", plainXl, kXferJpegOriginal, QVM_ERROR_INVALID_TARGET_SYNTAX},
        {"processes", mixed, kXferJpegOriginal, QVM_ERROR_INVALID_JPEG_STREAM},
        {"missing", missing, kXferJpegXlOfJpeg, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA},
        {"cut", ObjectOf({whole, cut}, baseline, 3), kXferJpegXlOfJpeg,
         QVM_ERROR_FAILED_TO_DECOMPRESS},
        {"cut", ObjectOf({cut}, "1.2.840.10008.1.2.4.111", 3), kXferJpegOriginal,
         QVM_ERROR_FAILED_TO_DECOMPRESS},
        {"arithmetic", ObjectOf({Jpeg({.arithmetic = true})}, "1.2.840.10008.1.2.4.52", 3),
         kXferJpegXlOfJpeg, QVM_ERROR_INVALID_TARGET_SYNTAX},
    };
    for (const auto& row : rows) {
        CDcmObject object = row.source;
        EXPECT_EQ(Recode(object, row.form), row.outcome) << row.what << ' ' << row.form;
        EXPECT_EQ(Written(object), Written(row.source)) << row.what;
    }
}

}  // namespace
}  // namespace quorvex
