#include "maker_objects.h"

#include <gtest/gtest.h>
#include <thread>

namespace quorvex {
namespace {

using namespace test;

CDcmObject Source() {
    CDcmObject source;
    pipeline_test::FillImage<std::uint16_t>(source, {}, {1, 2, 3, 4});
    source.SetValue(0x00080016, "1.2.840.10008.5.1.4.1.1.7");
    source.SetValue(0x0020000D, "1.2.3.4");
    source.SetValue(0x00281052, "-1024");
    source.SetValue(0x00281053, "2");
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
    {"implicit by default", 0, kImplicitLittleEndian, "(absent)", true},
    {"implicit", 2, kImplicitLittleEndian, "(absent)", true},
    {"explicit", 3, kExplicitLittleEndian, "(absent)", true},
    {"JPEG", 5, kJpegBaseline, "01", false},
    {"JPEG 12", 6, kJpegExtended, "01", false},
    {"JPEG lossless", 7, kJpegLosslessFirstOrder, "00", true},
    {"JPEG 2000", 8, kJpeg2000, "01", false},
    {"JPEG 2000 lossless", 9, kJpeg2000Lossless, "00", true},
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
    EXPECT_EQ(TextOf(*made, 0x00282110), CString(form.lossyFlag)) << what;
    EXPECT_EQ(TextOf(*made, 0x00280004), CString(kind.samples == 3 ? "RGB" : kind.photometric));
    EXPECT_EQ(NumberOf(*made, 0x00280002), kind.samples) << what;
    EXPECT_EQ(NumberOf(*made, 0x00280008), 3) << what;
    EXPECT_EQ(NumberOf(*made, 0x00280101), kind.bitsStored) << what;
    EXPECT_EQ(NumberOf(*made, 0x00280102), kind.bitsStored - 1) << what;

    const TemporaryFile file;
    ASSERT_EQ(made->WriteFile(CString(file.Path())), kDcmSuccess) << what;
    CDcmApp app;
    CxDcmParser parser;
    ASSERT_EQ(parser.Initialize(&app, CString(file.Path()), 0), QVM_SUCCESS) << what;
    const auto read = FramesOf(parser);
    ASSERT_EQ(read.size(), frames.size()) << what;
    for (std::size_t i = 0; form.isLossless && i < read.size(); ++i)
        EXPECT_TRUE(read[i] == frames[i]) << what << " frame " << i;
    if (form.type == kXferJpegBaseline && kind.samples == 1) {
        EXPECT_LE(GreatestError(read[1], frames[1]), 40.0) << what;
    }
}

TEST(Creation, WritesEveryFormOfEveryKind) {
    for (const Form& form : kForms) {
        for (const Kind& kind : kKinds) MakeAndReadBack(form, kind);
    }
}

CDcmObject* MakeOne(CDcmObject source, _FRAME_INFO* frameInfo, const Frame& frame,
                    std::int32_t type = 3) {
    _USER_SETTING_INFO settings;
    settings.compressionType = type;
    CDcmObject* made = nullptr;
    EXPECT_EQ(CxDcmMaker().MakeDcmObject(&source, &settings, frameInfo, NewCopy(frame), made),
              QVM_SUCCESS);
    return made;
}

TEST(Creation, WritesWhatFollowsFromTheRecord) {
    _FRAME_INFO info = FrameInfoOf(kKinds[4]);
    info.pixelSpacing[0] = "0.5";
    const std::unique_ptr<CDcmObject> colour(MakeOne(Source(), &info, FrameOf(kKinds[4], 0)));
    ASSERT_NE(colour, nullptr);
    EXPECT_EQ(AllOf(*colour, 0x00280030), "0.5\\0.5");
    EXPECT_EQ(TextOf(*colour, 0x00281050), CString("128"));
    EXPECT_EQ(TextOf(*colour, 0x00281051), CString("256"));
    EXPECT_EQ(NumberOf(*colour, 0x00280006), 0);
    EXPECT_EQ(TextOf(*colour, 0x00280008), CString("(absent)"));

    info = FrameInfoOf(kKinds[0]);
    info.pixelSpacing[1] = "0.5";
    const std::unique_ptr<CDcmObject> grey(MakeOne(Source(), &info, FrameOf(kKinds[0], 0)));
    ASSERT_NE(grey, nullptr);
    EXPECT_EQ(TextOf(*grey, 0x00281050), CString("(absent)"));
    EXPECT_EQ(TextOf(*grey, 0x00280030), CString("(absent)"));

    info = FrameInfoOf(kKinds[1]);
    info.windowCenter = "40";
    info.windowWidth = "400";
    const std::unique_ptr<CDcmObject> deep(MakeOne(Source(), &info, FrameOf(kKinds[1], 0)));
    ASSERT_NE(deep, nullptr);
    EXPECT_EQ(TextOf(*deep, 0x00281051), CString("400"));
    EXPECT_EQ(TextOf(*deep, 0x00281053), CString("2"));
}

/// Readers that go by Photometric Interpretation take the components for what it says.
TEST(Creation, CodesColourAsItsPhotometricInterpretationSays) {
    _FRAME_INFO info = FrameInfoOf(kKinds[4]);
    const Frame red = [] {
        Frame frame(24 * 36 * 3, 0);
        for (std::size_t i = 0; i < frame.size(); i += 3) frame[i] = 200;
        return frame;
    }();
    const std::unique_ptr<CDcmObject> made(MakeOne(Source(), &info, red, kXferJpegBaseline));
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(TextOf(*made, 0x00280004), CString("RGB"));
    const Frame file = Written(*made);
    const std::string marker = {'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, 0};
    EXPECT_NE(std::search(file.begin(), file.end(), marker.begin(), marker.end()), file.end());
    const auto frames = FramesOf(*made);
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_LE(GreatestError(frames[0], red), 8.0);
}

TEST(Creation, CountsSamplesAsTheStandardKnowsThem) {
    _FRAME_INFO info = FrameInfoOf(kKinds[0]);
    info.samplesPerPixel = 2;
    const std::unique_ptr<CDcmObject> two(MakeOne(Source(), &info, Frame(24 * 36 * 2, 1)));
    ASSERT_NE(two, nullptr);
    EXPECT_EQ(NumberOf(*two, 0x00280002), 1);
    info.samplesPerPixel = 4;
    const std::unique_ptr<CDcmObject> four(MakeOne(Source(), &info, Frame(24 * 36 * 4, 1)));
    ASSERT_NE(four, nullptr);
    EXPECT_EQ(NumberOf(*four, 0x00280002), 3);
    EXPECT_EQ(MakeOne(Source(), &info, Frame(24 * 36 * 4, 1), kXferJpegLossless), nullptr);
}

TEST(Creation, ReadsFromTheSourceWhatNoRecordTells) {
    const Frame frame = {9, 0, 8, 0, 7, 0, 6, 0};
    const std::unique_ptr<CDcmObject> made(MakeOne(Source(), nullptr, frame));
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(NumberOf(*made, 0x00280011), 4);
    EXPECT_EQ(NumberOf(*made, 0x00280101), 12);
    EXPECT_EQ(TextOf(*made, 0x00281053), CString("2"));
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
