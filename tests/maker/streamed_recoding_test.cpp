// Conversions that are written as their frames come.
#include "quorvex/CxDcmConversion.h"
#include "tests/maker/maker_objects.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>
#include <thread>

namespace quorvex {
namespace {

using namespace test;
using pipeline_test::ImageShape;

constexpr int kFrames = 5;

/// Five frames.
CDcmObject LoopOf(const ImageShape& shape) {
    auto object =
        With<CDcmObject>("00080016=1.2.840.10008.5.1.4.1.1.7.3; 00080018=2.25.5; 00280008=5");
    const auto samples = static_cast<std::size_t>(shape.size.cx * shape.size.cy) * kFrames;
    const Frame all = WavyFrame(samples * shape.samples, 1, 200);
    pipeline_test::FillImage(object, shape, all);
    return object;
}

ImageShape BytesOf(CSize size) {
    return {.size = size, .bitsAllocated = 8, .bitsStored = 8};
}

/// A conversion of a file that can begin.
class Streaming {
public:
    explicit Streaming(const CDcmObject& object) : file_(Written(object)), outline_(object) {
        outline_.RemoveValue(tag::kPixelData);
        parser_.SetRules(Rules::kStandard);
        parser_.Initialize(&app_, file_.Path(), 0);
    }

    QUORVEX_MESSAGE Begin(QUORVEX_XFERSYNTAX form) {
        return conversion.Begin(parser_, outline_, {.form = form}, Path());
    }
    QUORVEX_MESSAGE Add(int frame) {
        std::vector<unsigned char> coded;
        const auto result = conversion.Code(parser_, frame, coded);
        return result == QVM_SUCCESS ? conversion.Add(coded) : result;
    }
    /// All frames coded by threads of their own, last one first.
    std::vector<std::vector<unsigned char>> CodedByThreads() {
        std::vector<std::vector<unsigned char>> coded(kFrames);
        std::vector<std::jthread> threads;
        for (int i = kFrames; i-- > 0;)
            threads.emplace_back([&, i, parser = CxDcmParser(parser_)]() mutable {
                EXPECT_EQ(conversion.Code(parser, i, coded[static_cast<std::size_t>(i)]),
                          QVM_SUCCESS);
            });
        threads.clear();
        return coded;
    }
    [[nodiscard]] std::string Path() const { return folder_.Path("made.dcm"); }
    [[nodiscard]] std::vector<std::string> Names() const { return folder_.Names(); }

    CxDcmConversion conversion;

private:
    CDcmApp app_;
    TemporaryFile file_;
    CDcmObject outline_;
    CxDcmParser parser_;
    ScratchFolder folder_;
};

TEST(StreamedRecoding, WritesTheFileThatTheWholeObjectBecomes) {
    const QUORVEX_XFERSYNTAX forms[] = {kXferRle, kXferJpegLossless, kXferJpeg2000Lossless,
                                        kXferEncapsulated};
    for (const CSize size : {CSize{16, 16}, CSize{17, 9}}) {
        const CDcmObject object = LoopOf(BytesOf(size));
        for (const auto form : forms) {
            CDcmObject whole = object;
            ASSERT_EQ(Recode(whole, form), QVM_SUCCESS);
            Streaming streaming(object);
            ASSERT_EQ(streaming.Begin(form), QVM_SUCCESS) << form;
            for (const auto& frame : streaming.CodedByThreads())
                ASSERT_EQ(streaming.conversion.Add(frame), QVM_SUCCESS);
            EXPECT_NE(streaming.Names(), std::vector<std::string>{"made.dcm"});
            ASSERT_EQ(streaming.conversion.End(nullptr), QVM_SUCCESS);
            EXPECT_EQ(BytesOfFile(streaming.Path()), Written(whole)) << form << ' ' << size.cx;
            EXPECT_EQ(streaming.Names(), std::vector<std::string>{"made.dcm"});
        }
    }
}

/// What is known only in the end is longer than what was written first.
TEST(StreamedRecoding, TellsOfLossesAheadOfTheFrames) {
    const CDcmObject object = LoopOf(BytesOf({16, 16}));
    Streaming streaming(object);
    ASSERT_EQ(streaming.Begin(kXferJpegBaseline), QVM_SUCCESS);
    for (int i = 0; i < kFrames; ++i) ASSERT_EQ(streaming.Add(i), QVM_SUCCESS);
    CDcmObject result;
    ASSERT_EQ(streaming.conversion.End(&result), QVM_SUCCESS);
    CDcmObject whole = object;
    ASSERT_EQ(Recode(whole, kXferJpegBaseline), QVM_SUCCESS);
    CDcmObject read;
    CDcmApp app;
    read.Open(streaming.Path());
    ASSERT_EQ(read.ReadFile(&app, nullptr, nullptr), kDcmSuccess);
    for (const auto tag : {tag::kLossyImageCompressionRatio, tag::kLossyImageCompression,
                           tag::kImageType, tag::kDerivationDescription})
        EXPECT_EQ(Read<CString>(read, tag), Read<CString>(whole, tag));
    EXPECT_EQ(Read<CString>(read, tag::kSOPInstanceUID),
              Read<CString>(result, tag::kSOPInstanceUID));
    EXPECT_EQ(FramesOf(read), FramesOf(whole));
    EXPECT_EQ(streaming.Names(), std::vector<std::string>{"made.dcm"});
}

TEST(StreamedRecoding, LeavesNothingThatIsNotWhole) {
    Streaming streaming(LoopOf(BytesOf({16, 16})));
    EXPECT_EQ(streaming.conversion.Add({}), QVM_ERROR_NO_PIXEL_INFO);
    EXPECT_EQ(streaming.conversion.End(nullptr), QVM_ERROR_NO_PIXEL_INFO);
    EXPECT_EQ(streaming.Begin(kXferUncompressed), QVM_FRAME_COPIED);
    EXPECT_EQ(streaming.Begin(kXferJpegExtended), QVM_ERROR_INVALID_BITS_ALLOCATED);
    ASSERT_EQ(streaming.Begin(kXferRle), QVM_SUCCESS);
    for (int i = 0; i + 1 < kFrames; ++i) ASSERT_EQ(streaming.Add(i), QVM_SUCCESS);
    EXPECT_EQ(streaming.conversion.End(nullptr), QVM_ERROR_NO_PIXEL_INFO);
    EXPECT_EQ(streaming.Add(kFrames), QVM_ERROR_INVALID_FRAME_INDEX);
    streaming.conversion.Abandon();
    EXPECT_TRUE(streaming.Names().empty());
    EXPECT_EQ(streaming.Add(0), QVM_ERROR_NO_PIXEL_INFO);
    ASSERT_EQ(streaming.Begin(kXferRle), QVM_SUCCESS);
    for (int i = 0; i < kFrames; ++i) ASSERT_EQ(streaming.Add(i), QVM_SUCCESS);
    EXPECT_EQ(streaming.Add(0), QVM_ERROR_NO_PIXEL_INFO);
    EXPECT_EQ(streaming.conversion.End(nullptr), QVM_SUCCESS);
}

}  // namespace
}  // namespace quorvex
