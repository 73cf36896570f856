#include "quorvex/TransferSyntaxes.h"
#include "tests/engines/jpeg_test_streams.h"
#include "tests/maker/maker_objects.h"

#include <gtest/gtest.h>
#include <thread>

namespace quorvex {
namespace {

using namespace test;

CDcmObject Source() {
    auto source =
        With("00080016=1.2.840.10008.5.1.4.1.1.7; 0020000D=1.2.3.4; 00281052=-1024; 00281053=2");
    pipeline_test::FillImage<std::uint16_t>(source, {}, {1, 2, 3, 4});
    return source;
}

struct Form {
    std::int32_t type;
    TRANSFER_SYNTAX syntax;
    const char* lossyFlag;
    bool isLossless;
    [[nodiscard]] bool Takes(unsigned bits) const {
        return bits == 8 ? type != kXferJpegExtended
                         : type != kXferJpegBaseline && (bits == 12 || type != kXferJpegExtended);
    }
};

constexpr Form kForms[] = {
    {0, kImplicitLittleEndian, "", true},
    {kXferUncompressedImplicit, kImplicitLittleEndian, "", true},
    {kXferUncompressedExplicit, kExplicitLittleEndian, "", true},
    {kXferJpegBaseline, kJpegBaseline, "=01", false},
    {kXferJpegExtended, kJpegExtended, "=01", false},
    {kXferJpegLossless, kJpegLosslessFirstOrder, "=00", true},
    {kXferJpeg2000, kJpeg2000, "=01", false},
    {kXferJpeg2000Lossless, kJpeg2000Lossless, "=00", true},
    {kXferHtj2k, kHtj2k, "=01", false},
    {kXferHtj2kLossless, kHtj2kLossless, "=00", true},
    {kXferHtj2kRpclLossless, kHtj2kRpclLossless, "=00", true},
};

_FRAME_INFO Info(std::uint16_t samples, std::uint16_t bits, const char* photometric,
                 std::uint16_t isSigned = 0) {
    const auto allocated = static_cast<std::uint16_t>(bits > 8 ? 16 : 8);
    return {samples, photometric, 24, 36, {}, allocated, bits, isSigned, {}, {}};
}

const _FRAME_INFO kBytes = Info(1, 8, "MONOCHROME2");
const _FRAME_INFO k12 = Info(1, 12, "MONOCHROME1");
const _FRAME_INFO kColour = Info(3, 8, "YBR_FULL");  // RGB whatever is said
const _FRAME_INFO kKinds[] = {kBytes, k12, Info(1, 16, "MONOCHROME2"),
                              Info(1, 16, "MONOCHROME2", 1), kColour};

Frame FrameFor(const _FRAME_INFO& kind, unsigned number = 0) {
    const unsigned most = (1U << (kind.bitsStored - kind.pixelRepresentation)) - 1;
    Frame frame =
        WavyFrame(std::size_t{24} * 36 * kind.samplesPerPixel, kind.bitsAllocated / 8U, most);
    frame[0] = static_cast<unsigned char>(number);
    return frame;
}

/// Makes an object of three frames and writes, reads and compares it.
void MakeAndReadBack(const Form& form, const _FRAME_INFO& kind) {
    if (!TransferSyntaxOf(form.syntax)->isWritten) return;  // not by this build
    const std::string bits = std::to_string(kind.bitsStored);
    const std::string samples = std::to_string(kind.samplesPerPixel);
    SCOPED_TRACE(std::to_string(form.type) + ", " + bits + " bits, " + samples + " samples");
    CDcmObject source = Source();
    _USER_SETTING_INFO settings;
    settings.compressionType = form.type;
    _FRAME_INFO frameInfo = kind;
    CxDcmMaker maker;
    maker.SetQuality(form.type == kXferJpegBaseline ? 95 : 1);
    ASSERT_EQ(maker.DcmMakerInit(&source, &settings, &frameInfo), QVM_SUCCESS);
    std::vector<Frame> frames;
    for (unsigned i = 0; i < 3; ++i) {
        frames.push_back(FrameFor(kind, i));
        ASSERT_EQ(maker.AddFrame(NewCopy(frames.back())), QVM_SUCCESS);
    }
    CDcmObject* made = nullptr;
    const bool isTaken = form.Takes(kind.bitsStored);
    ASSERT_EQ(maker.MakeDcmObject(made), isTaken ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_COMPRESS);
    const std::unique_ptr<CDcmObject> owner(made);
    ASSERT_EQ(made != nullptr, isTaken);
    if (!isTaken) return;
    EXPECT_EQ(SyntaxOf(*made), form.syntax);
    ExpectAttributes(
        *made,
        std::string("00282110") + form.lossyFlag + "; 00280008=3; 00280002=" + samples +
            "; 00280004=" + (samples == "3" ? "RGB" : kind.photometricInterpretation.ToUtf8()) +
            "; 00280101=" + bits + "; 00280102=" + std::to_string(kind.bitsStored - 1));
    const auto read = FramesOfFile(*made);
    ASSERT_EQ(read.size(), frames.size());
    EXPECT_TRUE(read == frames || !form.isLossless);
    const bool isNear = form.type == kXferJpegBaseline && kind.samplesPerPixel == 1;
    EXPECT_TRUE(!isNear || testing::GreatestError(read[1], frames[1], 1) <= 40);
}

TEST(Creation, WritesEveryFormOfEveryKindInSeveralThreadsAtOnce) {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([] {
            for (const Form& form : kForms)
                for (const _FRAME_INFO& kind : kKinds) MakeAndReadBack(form, kind);
        });
    }
}

std::unique_ptr<CDcmObject> MakeOne(_FRAME_INFO* frameInfo, const Frame& frame,
                                    std::int32_t type = kXferUncompressedExplicit) {
    CDcmObject source = Source();
    _USER_SETTING_INFO settings;
    settings.compressionType = type;
    CDcmObject* made = nullptr;
    EXPECT_EQ(CxDcmMaker().MakeDcmObject(&source, &settings, frameInfo, NewCopy(frame), made),
              QVM_SUCCESS);
    return std::unique_ptr<CDcmObject>(made);
}

TEST(Creation, WritesWhatFollowsFromTheRecord) {
    const struct {
        _FRAME_INFO info;
        CString rows, columns, centre, width;
        const char* expected;
    } kCases[] = {
        {kColour,
         "0.5",
         {},
         {},
         {},
         "00280030=0.5\\0.5; 00281050=128; 00281051=256; 00280006=0; 00280008"},
        {kBytes, {}, "0.5", {}, {}, "00280030; 00281050; 00281051"},
        {k12, {}, {}, "40", "400", "00281050=40; 00281051=400; 00281053=2"},
        {k12, {}, {}, "40", {}, "00281050; 00281051"},
    };
    for (const auto& c : kCases) {
        _FRAME_INFO info = c.info;
        info.pixelSpacing[0] = c.rows;
        info.pixelSpacing[1] = c.columns;
        info.windowCenter = c.centre;
        info.windowWidth = c.width;
        const auto made = MakeOne(&info, FrameFor(info));
        ASSERT_NE(made, nullptr) << c.expected;
        ExpectAttributes(*made, c.expected);
    }
}

/// Readers that go by Photometric Interpretation take the components for what it says.
TEST(Creation, CodesColourAsItsPhotometricInterpretationSays) {
    _FRAME_INFO info = kColour;
    Frame red(24 * 36 * 3, 0);
    for (std::size_t i = 0; i < red.size(); i += 3) red[i] = 200;
    const auto made = MakeOne(&info, red, kXferJpegBaseline);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(TextOf(*made, tag::kPhotometricInterpretation), "RGB");
    const Frame file = Written(*made);
    const std::string marker = {'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, 0};
    EXPECT_NE(std::search(file.begin(), file.end(), marker.begin(), marker.end()), file.end());
    const auto frames = FramesOf(*made);
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_LE(testing::GreatestError(frames[0], red, 1), 8);
}

TEST(Creation, CountsSamplesAsTheStandardKnowsThem) {
    for (const auto samples : {std::uint16_t{2}, std::uint16_t{4}}) {
        _FRAME_INFO info = kBytes;
        info.samplesPerPixel = samples;
        const Frame frame(std::size_t{24} * 36 * samples, 1);
        const auto made = MakeOne(&info, frame);
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(TextOf(*made, tag::kSamplesPerPixel), samples == 2 ? "1" : "3");
        EXPECT_EQ(MakeOne(&info, frame, kXferJpegLossless), nullptr);
    }
}

TEST(Creation, ReadsFromTheSourceWhatNoRecordHas) {
    const Frame frame = {9, 0, 8, 0, 7, 0, 6, 0};
    const auto made = MakeOne(nullptr, frame);
    ASSERT_NE(made, nullptr);
    ExpectAttributes(*made, "00280011=4; 00280101=12; 00281053=2");
    EXPECT_EQ(FramesOf(*made), std::vector<Frame>{frame});
}

constexpr struct {
    const char* what;
    std::int32_t type;
    std::uint32_t missing;
    QUORVEX_MESSAGE code;
} kRefusals[] = {
    {"RLE is not written", 4, 0, QVM_ERROR_INVALID_TRANSFER_SYNTAX},
    {"no such form", 10, 0, QVM_ERROR_INVALID_TRANSFER_SYNTAX},
    {"Rows", 3, tag::kRows, QVM_ERROR_INVALID_ROWS},
    {"Columns", 3, tag::kColumns, QVM_ERROR_INVALID_COLUMNS},
    {"Bits Allocated", 3, tag::kBitsAllocated, QVM_ERROR_INVALID_BITS_ALLOCATED},
    {"Bits Stored", 3, tag::kBitsStored, QVM_ERROR_INVALID_BITS_STORED},
    {"Samples per Pixel", 3, tag::kSamplesPerPixel, QVM_ERROR_INVALID_SAMPLES_PER_PIXEL},
    {"Photometric Interpretation", 3, tag::kPhotometricInterpretation,
     QVM_ERROR_INVALID_PHOTOMETRIC},
    {"Pixel Representation", 3, tag::kPixelRepresentation, QVM_ERROR_INVALID_PIXEL_REPRESENTATION},
};

TEST(Creation, RefusesAndLosesNothing) {
    for (const auto& c : kRefusals) {
        CDcmObject source = Source();
        if (c.missing != 0) source.RemoveValue(c.missing);
        _USER_SETTING_INFO settings;
        settings.compressionType = c.type;
        CxDcmMaker maker;
        CDcmObject* made = nullptr;
        ASSERT_EQ(maker.DcmMakerInit(&source, &settings, nullptr), QVM_SUCCESS);
        EXPECT_EQ(maker.MakeDcmObject(made), QVM_ERROR_INVALID_IMAGE_FORMAT) << c.what;
        ASSERT_EQ(maker.AddFrame(NewCopy(Frame(8))), QVM_SUCCESS);
        EXPECT_EQ(maker.MakeDcmObject(made), c.code) << c.what;
        EXPECT_EQ(maker.MakeDcmObject(made), c.code) << c.what << ", again";
        EXPECT_EQ(made, nullptr) << c.what;
    }
}

TEST(Creation, KeepsToItsCycle) {
    CDcmObject source = Source();
    CxDcmMaker maker;
    CDcmObject* made = nullptr;
    const std::unique_ptr<unsigned char[]> kept(NewCopy(Frame(8)));
    EXPECT_EQ(maker.AddFrame(kept.get()), QVM_ERROR_NO_PIXEL_INFO);
    EXPECT_EQ(maker.MakeDcmObject(made), QVM_ERROR_INVALID_IMAGE_FORMAT);
    EXPECT_EQ(maker.DcmMakerInit(nullptr, nullptr, nullptr), QVM_ERROR_NO_SOURCE_OBJECT);
    EXPECT_EQ(maker.MakeDcmObject(nullptr, nullptr, nullptr, kept.get(), made),
              QVM_ERROR_NO_SOURCE_OBJECT);
    for (int cycle = 0; cycle < 2; ++cycle) {
        ASSERT_EQ(maker.DcmMakerInit(&source, nullptr, nullptr), QVM_SUCCESS);
        ASSERT_EQ(maker.AddFrame(NewCopy(Frame(8, 1))), QVM_SUCCESS);  // and begins anew
        ASSERT_EQ(maker.DcmMakerInit(&source, nullptr, nullptr), QVM_SUCCESS);
        ASSERT_EQ(maker.AddFrame(NewCopy(Frame(8, 2))), QVM_SUCCESS);
        ASSERT_EQ(maker.MakeDcmObject(made), QVM_SUCCESS);
        const std::unique_ptr<CDcmObject> owner(made);
        EXPECT_EQ(FramesOf(*made), std::vector<Frame>{Frame(8, 2)});
        EXPECT_EQ(maker.MakeDcmObject(made), QVM_ERROR_INVALID_IMAGE_FORMAT);
        made = nullptr;
    }
    ASSERT_EQ(maker.DcmMakerInit(&source, nullptr, nullptr), QVM_SUCCESS);
    ASSERT_EQ(maker.AddFrame(nullptr), QVM_SUCCESS);
    EXPECT_EQ(maker.MakeDcmObject(made), QVM_ERROR_NULL_SOURCE);
}

}  // namespace
}  // namespace quorvex
