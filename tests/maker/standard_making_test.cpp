// New objects by the standard rules.
#include "foundation/dicom/model/attributes.h"
#include "foundation/platform/clock.h"
#include "foundation/platform/host.h"
#include "maker/uids.h"
#include "quorvex/CXGSPSInfo.h"
#include "tests/maker/maker_objects.h"
#include "tests/support/checkers.h"
#include "tests/support/corpus.h"
#include "tests/support/dicom_builder.h"

#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace quorvex {
namespace {

using namespace test;

class StandardMaking : public testing::Test {
protected:
    void SetUp() override {
        SetHostDirectory(folder_.Path(""));
        maker_.SetRules(Rules::kStandard);
    }
    void TearDown() override { SetHostDirectory(std::nullopt); }
    void Configure(const std::string& text) const { folder_.Write("Quorvex.INI", text); }

    std::unique_ptr<CDcmObject> Make(CDcmObject& source, _FRAME_INFO* info,
                                     const std::vector<Frame>& frames,
                                     std::int32_t form = kXferUncompressedExplicit,
                                     const char* modality = "", int kind = 0) {
        _USER_SETTING_INFO settings;
        settings.compressionType = form;
        settings.modality = modality;
        settings.documentKind = kind;
        CDcmObject* made = nullptr;
        begun_ = maker_.DcmMakerInit(&source, &settings, info);
        if (begun_ != QVM_SUCCESS) return nullptr;
        for (const Frame& frame : frames) EXPECT_EQ(maker_.AddFrame(NewCopy(frame)), QVM_SUCCESS);
        maker_.MakeDcmObject(made);
        return std::unique_ptr<CDcmObject>(made);
    }

    ScratchFolder folder_;
    CxDcmMaker maker_;
    QUORVEX_MESSAGE begun_ = QVM_SUCCESS;
};

CDcmObject FromFile(const Bytes& bytes) {
    const TemporaryFile file(bytes);
    CDcmApp app;
    CDcmObject object;
    object.Open(CString(file.Path()));
    EXPECT_EQ(object.ReadFile(&app, nullptr, nullptr), kDcmSuccess);
    return object;
}

std::string BytesOf(const CDcmObject& object, std::uint32_t tag) {
    const auto bytes = ReadBytes(object, tag);
    return bytes ? std::string(bytes->begin(), bytes->end()) : kAbsent;
}

MC_VR VrOf(const CDcmObject& object, std::uint32_t tag) {
    std::pair<std::uint32_t, MC_VR> found(tag, MC_VR_UN);
    object.WalkElements(&found, [](const DcmElementView& element, void* user) -> MC_STATUS {
        auto& [wanted, vr] = *static_cast<std::pair<std::uint32_t, MC_VR>*>(user);
        if (element.tag == wanted && element.depth == 0) vr = element.vr;
        return kMcContinue;
    });
    return found.second;
}

/// A signed grey image with more than one value of everything, all in bytes of ISO_IR 13.
CDcmObject JapaneseImage() {
    auto builder = DicomBuilder::Part10(kExplicitUid);
    builder.Add(tag::kSpecificCharacterSet, "CS", "ISO_IR 13")
        .Add(tag::kImageType, "CS", "ORIGINAL\\PRIMARY\\AXIAL ")
        .Add(tag::kSOPClassUID, "UI", "1.2.840.10008.5.1.4.1.1.2\0")
        .Add(tag::kSOPInstanceUID, "UI", "1.2.3.99")
        .Add(tag::kModality, "CS", "CT")
        .Add(tag::kStudyDescription, "LO", "\xFF\xFE\x80\x81")  // no characters of that set
        .Add(tag::kPatientName, "PN", "\xD4\xCF\xC0\xDE^\xC0\xDB\xB3 ")
        .Add(tag::kBodyPartExamined, "CS", "HAND")
        .Add(tag::kStudyInstanceUID, "UI", "1.2.3.44");
    CDcmObject object = FromFile(builder.Bytes());
    pipeline_test::FillImage<std::int16_t>(object, {.pixelRepresentation = 1}, {1, -2, 3, 4});
    object = With(object,
                  "WindowCenter=40.25; WindowWidth=127.5; RescaleSlope=1; "
                  "RescaleIntercept=-1024; 00280030=0.5\\0.5");
    object.SetValue(tag::kPixelPaddingValue, 2000);
    object.SetValue(tag::kLargestPixelValueInSeries, 3000);
    return object;
}

/// The same in characters that the checker knows.
CDcmObject PlainImage() {
    return With(JapaneseImage(),
                "00080005=ISO_IR 100; PatientName=Doe^Jane; StudyDescription=Study");
}

const Frame kFrame = {1, 0, 2, 0, 3, 0, 4, 0};

TEST_F(StandardMaking, TakesOverBytesValuesAndSigns) {
    CDcmObject source = JapaneseImage();
    const auto made = Make(source, nullptr, {kFrame});
    ASSERT_NE(made, nullptr);
    for (const auto tag :
         {tag::kPatientName, tag::kStudyDescription, tag::kWindowCenter, tag::kWindowWidth})
        EXPECT_EQ(BytesOf(*made, tag), BytesOf(source, tag)) << std::hex << tag;
    ExpectAttributes(*made,
                     "ImageType=DERIVED\\PRIMARY\\AXIAL; WindowWidth=127.5; 00280008; Laterality=; "
                     "PatientID=; SeriesNumber=; PixelPaddingValue=2000; 00280010=1");
    for (const auto tag : {tag::kPixelPaddingValue, tag::kLargestPixelValueInSeries})
        EXPECT_EQ(VrOf(*made, tag), MC_VR_SS) << std::hex << tag;
    const Frame file = Written(*made);
    const std::string_view name = "\xD4\xCF\xC0\xDE^\xC0\xDB\xB3";
    EXPECT_NE(
        std::search(file.begin(), file.end(), name.begin(), name.end(),
                    [](unsigned char a, char b) { return a == static_cast<unsigned char>(b); }),
        file.end());
}

/// Numbers without leading zeros, the first one 0, 1 or 2, in 64 characters (PS3.5 section 9.1).
bool IsUid(const std::string& text) {
    std::istringstream components(text);
    std::string component;
    bool isValid = text.size() <= 64 && !text.ends_with('.') && text.find_first_of("012") == 0;
    while (std::getline(components, component, '.')) {
        isValid = isValid && !component.empty() && (component == "0" || component[0] != '0') &&
                  component.find_first_not_of("0123456789") == std::string::npos;
    }
    return isValid;
}

TEST_F(StandardMaking, GivesValidUidsOrNone) {
    const std::string longest(30, '7');
    const struct {
        std::string root;
        bool isTaken;
    } kRoots[] = {{"", true},
                  {"1.2.840.99", true},
                  {"1." + longest, true},
                  {"1." + longest + longest, false},
                  {"1.02", false},
                  {"root", false},
                  {"1.", false}};
    for (const auto& c : kRoots) {
        Configure("[QUORVEX_UID_PREFIX]\n" + c.root + "\n");
        CDcmObject source = JapaneseImage();
        const auto made = Make(source, nullptr, {kFrame});
        CDcmObject skeleton;
        EXPECT_EQ(maker_.MakeDcmSkeleton(&source, &skeleton), c.isTaken ? 1 : 0) << c.root;
        ASSERT_EQ(made != nullptr, c.isTaken) << c.root;
        EXPECT_EQ(begun_, c.isTaken ? QVM_SUCCESS : QVM_ERROR_INVALID_MAKER_PARAM);
        if (!c.isTaken) {
            EXPECT_EQ(TextOf(skeleton, tag::kPatientName), kAbsent);
            continue;
        }
        for (const auto tag : {tag::kSOPInstanceUID, tag::kSeriesInstanceUID}) {
            const std::string uid = TextOf(*made, tag);
            EXPECT_TRUE(IsUid(uid)) << uid;
            EXPECT_TRUE(uid.starts_with(c.root.empty() ? "2.25." : c.root + ".")) << uid;
        }
        EXPECT_EQ(TextOf(*made, tag::kMediaStorageSOPInstanceUID),
                  TextOf(*made, tag::kSOPInstanceUID));
    }
}

TEST_F(StandardMaking, CountsFractionsOfASecond) {
    SetClock([]() noexcept { return Moment(std::chrono::milliseconds(1'767'600'000'012)); });
    CDcmObject source = JapaneseImage();
    const auto made = Make(source, nullptr, {kFrame});
    SetClock(nullptr);
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(TextOf(*made, tag::kSeriesTime).ends_with(".012000"))
        << TextOf(*made, tag::kSeriesTime);
}

_FRAME_INFO Info(std::uint16_t samples, std::uint16_t bits, const char* photometric = "MONOCHROME2",
                 std::uint16_t isSigned = 0) {
    const auto allocated = static_cast<std::uint16_t>(bits > 16 ? 32 : bits > 8 ? 16 : 8);
    return {samples, photometric, 2, 3, {}, allocated, bits, isSigned, {}, {}};
}

constexpr const char* kSc = "1.2.840.10008.5.1.4.1.1.7";

TEST_F(StandardMaking, ChoosesClassesAndRefusesWhatTheyCannotHold) {
    const struct {
        const char* what;
        _FRAME_INFO info;
        int frames;
        QUORVEX_MESSAGE outcome;
        std::string sopClass;
        const char* expected;
    } kCases[] = {
        {"grey", Info(1, 8), 1, QVM_SUCCESS, kSc,
         "Modality=CT; 00280008; RescaleSlope; 00080064=WSD"},
        {"words keep their meaning", Info(1, 12), 1, QVM_SUCCESS, kSc,
         "RescaleIntercept=-1024; 00281054=US; PixelPaddingValue"},
        {"grey frames", Info(1, 8), 3, QVM_SUCCESS, std::string(kSc) + ".2",
         "NumberOfFrames=3; 20500020=IDENTITY; RescaleSlope=1; 00181063; 00182001=1\\2\\3"},
        {"deep frames", Info(1, 12), 2, QVM_SUCCESS, std::string(kSc) + ".3",
         "RescaleIntercept=0; 00281054=US; 00280301=YES"},
        {"colour frames", Info(3, 8), 2, QVM_SUCCESS, std::string(kSc) + ".4",
         "PhotometricInterpretation=RGB; PlanarConfiguration=0; WindowCenter; 20500020"},
        {"four bytes", Info(4, 8), 1, QVM_SUCCESS, kSc, "SamplesPerPixel=3; BitsAllocated=8"},
        {"one wide sample", Info(1, 32), 1, QVM_SUCCESS, kSc, "SamplesPerPixel=3; BitsStored=8"},
        {"two samples", Info(2, 8), 1, QVM_ERROR_INVALID_SAMPLES_PER_PIXEL, "", ""},
        {"two wide samples", Info(2, 16), 1, QVM_ERROR_INVALID_SAMPLES_PER_PIXEL, "", ""},
        {"signed frames", Info(1, 16, "MONOCHROME2", 1), 2, QVM_ERROR_INVALID_PIXEL_REPRESENTATION,
         "", ""},
        {"inverse frames", Info(1, 8, "MONOCHROME1"), 2, QVM_ERROR_INVALID_PHOTOMETRIC, "", ""},
        {"indices without tables", Info(1, 8, "PALETTE COLOR"), 1, QVM_ERROR_INVALID_PHOTOMETRIC,
         "", ""},
        {"no such interpretation", Info(1, 8, "GREY"), 1, QVM_ERROR_INVALID_PHOTOMETRIC, "", ""},
    };
    for (const auto& c : kCases) {
        CDcmObject source = PlainImage();
        _FRAME_INFO info = c.info;
        const Frame frame(std::size_t{6} * info.samplesPerPixel * info.bitsAllocated / 8, 9);
        const auto made =
            Make(source, &info, std::vector<Frame>(static_cast<std::size_t>(c.frames), frame));
        EXPECT_EQ(maker_.GetOutcome(), c.outcome) << c.what;
        ASSERT_EQ(made != nullptr, c.outcome == QVM_SUCCESS) << c.what;
        if (made == nullptr) continue;
        EXPECT_EQ(TextOf(*made, tag::kSOPClassUID), c.sopClass) << c.what;
        ExpectAttributes(*made, c.expected, c.what);
        const TemporaryFile file(Written(*made));
        EXPECT_EQ(ErrorsIn(file.Path()), "") << c.what;
    }
}

TEST_F(StandardMaking, PacksHostColours) {
    CDcmObject source = JapaneseImage();
    _FRAME_INFO info = Info(4, 8);
    const Frame bitmap = {1,  2,  3,  0, 4,  5,  6,  0, 7,  8,  9,  0,
                          10, 11, 12, 0, 13, 14, 15, 0, 16, 17, 18, 0};
    const auto made = Make(source, &info, {bitmap});
    ASSERT_NE(made, nullptr);
    const Frame packed = {3, 2, 1, 6, 5, 4, 9, 8, 7, 12, 11, 10, 15, 14, 13, 18, 17, 16};
    EXPECT_EQ(FramesOf(*made), std::vector<Frame>{packed});
}

CDcmObject PaletteImage() {
    auto source = With("00080016=1.2.840.10008.5.1.4.1.1.7; 0020000D=1.2.3.4");
    pipeline_test::FillImage<std::uint8_t>(
        source, {.bitsAllocated = 8, .bitsStored = 8, .photometric = "PALETTE COLOR"},
        {0, 1, 2, 3});
    for (std::uint32_t i = 0; i < 3; ++i) {
        for (const int word : {4, 0, 16})
            source.SetNextValue(tag::kRedPaletteColorLookupTableDescriptor + i, word);
        const auto channel = static_cast<unsigned char>(10 * i);
        pipeline_test::SetBytes(source, tag::kRedPaletteColorLookupTableData + i,
                                {0, channel, 0, 50, 0, 100, 0, 200});
    }
    return source;
}

TEST_F(StandardMaking, TakesAPaletteSourceAsTemplate) {
    CDcmObject source = PaletteImage();
    const auto kept = Make(source, nullptr, {{3, 2, 1, 0}});
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(FramesOf(*kept), (std::vector<Frame>{{3, 2, 1, 0}}));
    ExpectAttributes(*kept, "PhotometricInterpretation=PALETTE COLOR; 00281101=4\\0\\16");
    maker_.SetRules(Rules::kEstablished);
    const auto coloured = Make(source, nullptr, {{3, 2, 1, 0}});
    ASSERT_NE(coloured, nullptr) << maker_.GetOutcome();
    EXPECT_EQ(TextOf(*coloured, tag::kPhotometricInterpretation), "RGB");
    EXPECT_EQ(FramesOf(*coloured).at(0).size(), 12U);
}

TEST_F(StandardMaking, KeepsWhatWasLostInMind) {
    CDcmObject source = With(JapaneseImage(), "00282110=01; 00282112=10; 00282114=ISO_10918_1");
    _FRAME_INFO info = Info(3, 8);
    const Frame frame(18, 9);
    EXPECT_EQ(TextOf(*Make(source, &info, {frame}, kXferJpegLossless), tag::kLossyImageCompression),
              "01");
    const auto again = Make(source, &info, {frame}, kXferJpeg2000);
    ExpectAttributes(*again,
                     "00282110=01; 00282114=ISO_10918_1\\ISO_15444_1; "
                     "PhotometricInterpretation=YBR_ICT");
}

TEST_F(StandardMaking, PutsNoPixelsIntoDocuments) {
    CDcmObject source = JapaneseImage();
    for (const auto& [modality, kind] : {std::pair("SR", 1), {"SR", 5}, {"KO", 0}, {"PR", 0}}) {
        EXPECT_EQ(Make(source, nullptr, {kFrame}, 3, modality, kind), nullptr) << modality << kind;
        EXPECT_EQ(maker_.GetOutcome(), QVM_ERROR_FAILED_TO_SET_PIXEL_DATA) << modality << kind;
    }
    CDcmObject target;
    CXGSPSInfo record;
    record.objectKind = 6;
    maker_.UpdateUserSettingInfo(&record, &target);
    ExpectAttributes(target,
                     "Modality=KO; InstanceNumber=1; 00080016=1.2.840.10008.5.1.4.1.1.88.59");
}

TEST_F(StandardMaking, MakesKeyObjectDocuments) {
    CDcmObject first = With(PlainImage(), "0020000E=1.2.3.5; 00080018=1.2.3.100");
    CDcmObject second = With(first, "00080018=1.2.3.101");
    CDcmObject* objects[] = {&first, &second};
    _KEY_OBJECT_INFO info;
    info.titleCode = "113002";
    info.titleMeaning = "For Referring Provider";
    info.description = "both sides";
    CDcmObject* made = nullptr;
    ASSERT_EQ(maker_.MakeKeyObject(objects, 2, &info, nullptr, made), QVM_SUCCESS);
    const std::unique_ptr<CDcmObject> document(made);
    const std::string text = [&] {
        const TemporaryFile file(Written(*document));
        EXPECT_EQ(ErrorsIn(file.Path()), "");
        return PrintedBy("dcmdump +L " + file.Path() + " 2>&1");
    }();
    if (HasTool("dcmdump")) {
        for (const auto* part : {"[113002]", "[For Referring Provider]", "[both sides]", "[2010]"})
            EXPECT_NE(text.find(part), std::string::npos) << part;
    }
    ExpectAttributes(*document, "Modality=KO; 0040A040=CONTAINER; 00280010; 7FE00010");
    int count = 0;
    document->GetValueCount(tag::kContentSequence, count);
    EXPECT_EQ(count, 3);

    const auto ofSource = Make(first, nullptr, {}, 3, "SR", 5);
    ASSERT_NE(ofSource, nullptr);
    ExpectAttributes(*ofSource, "Modality=KO; 0040A040=CONTAINER");
    CDcmObject nameless;
    objects[1] = &nameless;
    EXPECT_EQ(maker_.MakeKeyObject(objects, 2, nullptr, nullptr, made), QVM_ERROR_NO_SOURCE_OBJECT);
}

/// Real objects as templates: no error that they do not have themselves.
TEST_F(StandardMaking, MakesValidObjectsOfRealOnes) {
    if (!HasTool("dciodvfy")) GTEST_SKIP() << "dicom3tools is not there";
    const auto sentences = [](const std::string& errors) {
        std::set<std::string> all;
        std::istringstream lines(errors);
        for (std::string line; std::getline(lines, line);) all.insert(line);
        return all;
    };
    for (const auto& path : RealFiles()) {
        CDcmApp app;
        CxDcmParser parser;
        parser.SetRules(Rules::kStandard);
        if (parser.Initialize(&app, CString(path.string()), 0) != QVM_SUCCESS) continue;
        const auto frames = FramesOf(parser);
        if (frames.empty() || frames.size() > 4) continue;
        const auto made = Make(*parser.GetHeader(), nullptr, frames);
        if (made == nullptr) continue;
        const TemporaryFile file(Written(*made));
        const std::string errors = ErrorsIn(path.string());
        if (errors.find("read failed") != std::string::npos) continue;
        const auto known = sentences(errors);
        for (const auto& sentence : sentences(ErrorsIn(file.Path())))
            EXPECT_TRUE(known.contains(sentence)) << path << ": " << sentence;
    }
}

}  // namespace
}  // namespace quorvex
