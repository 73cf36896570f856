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
    const char* what;
    std::int32_t type;
    TRANSFER_SYNTAX syntax;
    const char* lossyFlag;
    bool isLossless;
};

constexpr Form kForms[] = {
    {"implicit by default", 0, kImplicitLittleEndian, "", true},
    {"implicit", 2, kImplicitLittleEndian, "", true},
    {"explicit", 3, kExplicitLittleEndian, "", true},
    {"JPEG", 5, kJpegBaseline, "=01", false},
    {"JPEG 12", 6, kJpegExtended, "=01", false},
    {"JPEG lossless", 7, kJpegLosslessFirstOrder, "=00", true},
    {"JPEG 2000", 8, kJpeg2000, "=01", false},
    {"JPEG 2000 lossless", 9, kJpeg2000Lossless, "=00", true},
};

struct Kind {
    const char* what;
    std::uint16_t samples;
    std::uint16_t bitsAllocated;
    std::uint16_t bitsStored;
    std::uint16_t isSigned;
    const char* photometric;
};

constexpr Kind kKinds[] = {
    {"grey bytes", 1, 8, 8, 0, "MONOCHROME2"}, {"12 bits", 1, 16, 12, 0, "MONOCHROME1"},
    {"16 bits", 1, 16, 16, 0, "MONOCHROME2"},  {"signed", 1, 16, 16, 1, "MONOCHROME2"},
    {"colour", 3, 8, 8, 0, "YBR_FULL"},  // several samples are RGB whatever is said
};

_FRAME_INFO FrameInfoOf(const Kind& kind) {
    _FRAME_INFO info;
    info.samplesPerPixel = kind.samples;
    info.photometricInterpretation = kind.photometric;
    info.rows = 24;
    info.columns = 36;
    info.bitsAllocated = kind.bitsAllocated;
    info.bitsStored = kind.bitsStored;
    info.pixelRepresentation = kind.isSigned;
    return info;
}

bool IsPossible(const Kind& kind, std::int32_t type) {
    if (type == kXferJpegBaseline) return kind.bitsAllocated == 8;
    if (type == kXferJpegExtended) return kind.bitsStored == 12;
    return true;
}

Frame FrameOf(const Kind& kind, unsigned shift) {
    const unsigned most = (1U << (kind.isSigned != 0 ? 15U : kind.bitsStored)) - 1;
    Frame frame = WavyFrame(std::size_t{24} * 36 * kind.samples, kind.bitsAllocated / 8U, most);
    frame[0] = static_cast<unsigned char>(shift);
    return frame;
}

double GreatestError(const Frame& a, const Frame& b) {
    double worst = a.size() == b.size() ? 0 : 1e9;
    for (std::size_t i = 0; i < a.size() && i < b.size(); ++i)
        worst = std::max(worst, std::abs(static_cast<double>(a[i]) - static_cast<double>(b[i])));
    return worst;
}

/// Makes an object of three frames and writes, reads and compares it.
void MakeAndReadBack(const Form& form, const Kind& kind) {
    const std::string what = std::string(form.what) + ", " + kind.what;
    CDcmObject source = Source();
    _USER_SETTING_INFO settings;
    settings.compressionType = form.type;
    _FRAME_INFO frameInfo = FrameInfoOf(kind);
    CxDcmMaker maker;
    maker.SetQuality(form.type == kXferJpegBaseline ? 95 : 1);
    ASSERT_EQ(maker.DcmMakerInit(&source, &settings, &frameInfo), QVM_SUCCESS) << what;
    std::vector<Frame> frames;
    for (unsigned i = 0; i < 3; ++i) {
        frames.push_back(FrameOf(kind, i));
        ASSERT_EQ(maker.AddFrame(NewCopy(frames.back())), QVM_SUCCESS) << what;
    }
    CDcmObject* made = nullptr;
    if (!IsPossible(kind, form.type)) {
        EXPECT_EQ(maker.MakeDcmObject(made), QVM_ERROR_FAILED_TO_COMPRESS) << what;
        EXPECT_EQ(made, nullptr) << what;
        return;
    }
    ASSERT_EQ(maker.MakeDcmObject(made), QVM_SUCCESS) << what;
    const std::unique_ptr<CDcmObject> owner(made);
    EXPECT_EQ(SyntaxOf(*made), form.syntax) << what;
    ExpectAttributes(*made,
                     std::string("00282110") + form.lossyFlag +
                         "; 00280008=3; 00280002=" + std::to_string(kind.samples) +
                         "; 00280004=" + (kind.samples == 3 ? "RGB" : kind.photometric) +
                         "; 00280101=" + std::to_string(kind.bitsStored) +
                         "; 00280102=" + std::to_string(kind.bitsStored - 1),
                     what);
    const auto read = FramesOfFile(*made);
    ASSERT_EQ(read.size(), frames.size()) << what;
    if (form.isLossless) {
        EXPECT_TRUE(read == frames) << what;
    }
    if (form.type == kXferJpegBaseline && kind.samples == 1) {
        EXPECT_LE(GreatestError(read[1], frames[1]), 40.0) << what;
    }
}

TEST(Creation, WritesEveryFormOfEveryKind) {
    for (const Form& form : kForms) {
        for (const Kind& kind : kKinds) MakeAndReadBack(form, kind);
    }
}

std::unique_ptr<CDcmObject> MakeOne(CDcmObject source, _FRAME_INFO* frameInfo, const Frame& frame,
                                    std::int32_t type = 3) {
    _USER_SETTING_INFO settings;
    settings.compressionType = type;
    CDcmObject* made = nullptr;
    EXPECT_EQ(CxDcmMaker().MakeDcmObject(&source, &settings, frameInfo, NewCopy(frame), made),
              QVM_SUCCESS);
    return std::unique_ptr<CDcmObject>(made);
}

TEST(Creation, WritesWhatFollowsFromTheRecord) {
    struct Case {
        const Kind& kind;
        void (*change)(_FRAME_INFO&);
        const char* expected;
    };
    const Case cases[] = {
        {kKinds[4], [](auto& info) { info.pixelSpacing[0] = "0.5"; },
         "00280030=0.5\\0.5; 00281050=128; 00281051=256; 00280006=0; 00280008"},
        {kKinds[0], [](auto& info) { info.pixelSpacing[1] = "0.5"; },
         "00280030; 00281050; 00281051"},
        {kKinds[1], [](auto& info) { info.windowCenter = "40", info.windowWidth = "400"; },
         "00281050=40; 00281051=400; 00281053=2"},
        {kKinds[1], [](auto& info) { info.windowCenter = "40"; }, "00281050; 00281051"},
    };
    for (const Case& c : cases) {
        _FRAME_INFO info = FrameInfoOf(c.kind);
        c.change(info);
        const auto made = MakeOne(Source(), &info, FrameOf(c.kind, 0));
        ASSERT_NE(made, nullptr) << c.kind.what;
        ExpectAttributes(*made, c.expected, c.kind.what);
    }
}

/// Readers that go by Photometric Interpretation take the components for what it says.
TEST(Creation, CodesColourAsItsPhotometricInterpretationSays) {
    _FRAME_INFO info = FrameInfoOf(kKinds[4]);
    const Frame red = [] {
        Frame frame(24 * 36 * 3, 0);
        for (std::size_t i = 0; i < frame.size(); i += 3) frame[i] = 200;
        return frame;
    }();
    const auto made = MakeOne(Source(), &info, red, kXferJpegBaseline);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(TextOf(*made, 0x00280004), "RGB");
    const Frame file = Written(*made);
    const std::string marker = {'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, 0};
    EXPECT_NE(std::search(file.begin(), file.end(), marker.begin(), marker.end()), file.end());
    const auto frames = FramesOf(*made);
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_LE(GreatestError(frames[0], red), 8.0);
}

TEST(Creation, CountsSamplesAsTheStandardKnowsThem) {
    for (const auto samples : {std::uint16_t{2}, std::uint16_t{4}}) {
        _FRAME_INFO info = FrameInfoOf(kKinds[0]);
        info.samplesPerPixel = samples;
        const Frame frame(std::size_t{24} * 36 * samples, 1);
        const auto made = MakeOne(Source(), &info, frame);
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(TextOf(*made, 0x00280002), samples == 2 ? "1" : "3");
        EXPECT_EQ(MakeOne(Source(), &info, frame, kXferJpegLossless), nullptr);
    }
}

TEST(Creation, ReadsFromTheSourceWhatNoRecordHas) {
    const Frame frame = {9, 0, 8, 0, 7, 0, 6, 0};
    const auto made = MakeOne(Source(), nullptr, frame);
    ASSERT_NE(made, nullptr);
    ExpectAttributes(*made, "00280011=4; 00280101=12; 00281053=2");
    EXPECT_EQ(FramesOf(*made), std::vector<Frame>{frame});
}

struct Refusal {
    const char* what;
    std::int32_t type;
    std::uint32_t missing;
    QUORVEX_MESSAGE code;
};

constexpr Refusal kRefusals[] = {
    {"RLE is not written", 4, 0, QVM_ERROR_INVALID_TRANSFER_SYNTAX},
    {"no such form", 10, 0, QVM_ERROR_INVALID_TRANSFER_SYNTAX},
    {"Rows", 3, 0x00280010, QVM_ERROR_INVALID_ROWS},
    {"Columns", 3, 0x00280011, QVM_ERROR_INVALID_COLUMNS},
    {"Bits Allocated", 3, 0x00280100, QVM_ERROR_INVALID_BITS_ALLOCATED},
    {"Bits Stored", 3, 0x00280101, QVM_ERROR_INVALID_BITS_STORED},
    {"Samples per Pixel", 3, 0x00280002, QVM_ERROR_INVALID_SAMPLES_PER_PIXEL},
    {"Photometric Interpretation", 3, 0x00280004, QVM_ERROR_INVALID_PHOTOMETRIC},
    {"Pixel Representation", 3, 0x00280103, QVM_ERROR_INVALID_PIXEL_REPRESENTATION},
};

TEST(Creation, RefusesAndLosesNothing) {
    for (const Refusal& c : kRefusals) {
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

TEST(Creation, WorksInSeveralThreadsAtOnce) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (const Form& form : kForms) MakeAndReadBack(form, kKinds[1]);
        });
    }
    for (auto& thread : threads) thread.join();
}

}  // namespace
}  // namespace quorvex
