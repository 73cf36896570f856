#include "foundation/platform/host.h"
#include "maker_objects.h"
#include "quorvex/CXGSPSInfo.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;

/// What a new object takes over as it is.
constexpr std::pair<std::uint32_t, const char*> kTakenOver[] = {
    {0x00020002, "1.2.840.10008.5.1.4.1.1.2"},
    {0x00020003, "1.2.3.99"},
    {0x00080016, "1.2.840.10008.5.1.4.1.1.2"},
    {0x00080020, "20260102"},
    {0x00080030, "101112"},
    {0x00080050, "A-1"},
    {0x00080060, "CT"},
    {0x00080080, "Clinic"},
    {0x00080090, "Who^Refers"},
    {0x00081030, "Study"},
    {0x0008103E, "Series"},
    {0x00100010, "M\xC3\xBCller^Anna"},
    {0x00100020, "4711"},
    {0x00100030, "19700101"},
    {0x00100032, "0000"},
    {0x00100040, "F"},
    {0x00101010, "056Y"},
    {0x00101020, "1.7"},
    {0x00101030, "62"},
    {0x001021B0, "None"},
    {0x00104000, "Calm"},
    {0x00180015, "HEAD"},
    {0x00185100, "HFS"},
    {0x0020000D, "1.2.3.4"},
    {0x00200010, "S1"},
    {0x00200060, "L"},
    {0x00280108, "-1000"},
    {0x00280109, "3000"},
    {0x00280120, "-2000"},
    {0x00400244, "20260102"},
    {0x00400245, "1010"},
    {0x00400253, "P1"},
    {0x00400254, "Step"},
};

CDcmObject Source() {
    CDcmObject source;
    for (const auto& [tag, value] : kTakenOver) source.SetValue(tag, CString(value));
    source.SetValue(0x00080005, CString("ISO_IR 100"));
    source.SetValue(0x00080018, "1.2.3.99");
    source.SetValue(0x0020000E, "1.2.3.5");
    source.SetValue(0x00200013, "7");
    source.SetValue(0x00280010, static_cast<unsigned short>(512));
    source.SetValue(0x00080008, CString("ORIGINAL\\PRIMARY\\AXIAL"));
    source.SetValue(0x00200032, CString("1\\2\\3\\4"));
    source.SetValue(0x00200037, CString("1\\0\\0\\0\\1\\0"));
    source.SetValue(0x00281052, CString("-1024"));
    source.SetValue(0x00281053, CString("1"));
    return source;
}

class Skeleton : public testing::Test {
protected:
    void SetUp() override { SetHostDirectory(folder_.Path("")); }
    void TearDown() override { SetHostDirectory(std::nullopt); }
    void Configure(const char* text) const { folder_.Write("Quorvex.INI", text); }
    static CDcmObject Made(CDcmObject source) {
        CDcmObject target;
        target.Open("test.dcm");
        EXPECT_EQ(CxDcmMaker().MakeDcmSkeleton(&source, &target), 1);
        return target;
    }

    test::ScratchFolder folder_;
};

TEST_F(Skeleton, TakesPatientAndStudyOverAndMakesTheRestNew) {
    const CDcmObject made = Made(Source());
    for (const auto& [tag, value] : kTakenOver)
        EXPECT_EQ(TextOf(made, tag), CString(value)) << std::hex << tag;
    EXPECT_EQ(SyntaxOf(made), kExplicitLittleEndian);
    EXPECT_EQ(TextOf(made, 0x0020000E).Left(15), CString("1.2.999.700040."));
    EXPECT_EQ(TextOf(made, 0x00080018).Left(15), CString("1.2.999.700040."));
    EXPECT_EQ(TextOf(made, 0x00080070), CString("SORVANEX"));
    EXPECT_EQ(TextOf(made, 0x00081090), CString("SORVANEX PACS"));
    for (const std::uint32_t date : {0x00080021U, 0x00080012U})
        EXPECT_EQ(TextOf(made, date), CxDcmMaker::GetDate());
    for (const std::uint32_t tag : {0x00080008U, 0x00200011U, 0x00200013U, 0x00280010U})
        EXPECT_EQ(TextOf(made, tag), CString("(absent)")) << std::hex << tag;
}

TEST_F(Skeleton, NamesTheModelOnlyBesideAnInstitution) {
    CDcmObject source = Source();
    source.RemoveValue(0x00080080);
    EXPECT_EQ(TextOf(Made(source), 0x00081090), CString("(absent)"));
    EXPECT_EQ(TextOf(Made(source), 0x00080070), CString("SORVANEX"));
}

TEST_F(Skeleton, ReadsTheConfigurationAnewEachTime) {
    Configure("[QUORVEX_MANUFACTURER]\nFirst\n");
    const CDcmObject first = Made(Source());
    Configure("[QUORVEX_UID_PREFIX]\r\n1.9\r\n[QUORVEX_MANUFACTURER]\r\nSecond\r\n");
    const CDcmObject second = Made(Source());
    EXPECT_EQ(TextOf(first, 0x00080070), CString("First"));
    EXPECT_EQ(TextOf(first, 0x00080018)[0], u'.');
    EXPECT_EQ(TextOf(first, 0x00081090), CString(""));
    EXPECT_EQ(TextOf(second, 0x00080070), CString("Second"));
    EXPECT_EQ(TextOf(second, 0x0020000E).Left(4), CString("1.9."));
}

TEST_F(Skeleton, KeepsAllCharacterSetsInOrder) {
    CDcmObject source = Source();
    source.SetValue(0x00080005, CString("\\ISO 2022 IR 87\\ISO 2022 IR 13"));
    EXPECT_EQ(AllOf(Made(source), 0x00080005), AllOf(source, 0x00080005));
}

TEST_F(Skeleton, GivesImagesTheirPlaceAndLetsSettingsWin) {
    CDcmObject source = Source();
    _USER_SETTING_INFO settings;
    settings.patientName = "Other^Name";
    settings.seriesNumber = "12";
    settings.modality = "SR";
    settings.documentKind = 5;
    settings.fileName = "chosen.dcm";
    pipeline_test::FillImage<std::uint8_t>(source, {.samples = 1, .bitsAllocated = 8},
                                           {1, 2, 3, 4});
    CDcmObject* made = nullptr;
    CxDcmMaker maker;
    ASSERT_EQ(maker.MakeDcmObject(&source, &settings, nullptr, NewCopy({5, 6, 7, 8}), made),
              QVM_SUCCESS);
    const std::unique_ptr<CDcmObject> owner(made);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(AllOf(*made, 0x00200032), "1\\2\\3");
    EXPECT_EQ(AllOf(*made, 0x00200037), "1\\0\\0\\0\\1\\0");
    EXPECT_EQ(AllOf(*made, 0x00080008), "ORIGINAL");
    EXPECT_EQ(TextOf(*made, 0x00281052), CString("-1024"));
    EXPECT_EQ(TextOf(*made, 0x00100010), CString("Other^Name"));
    EXPECT_EQ(TextOf(*made, 0x0008103E), CString("Series"));
    EXPECT_EQ(TextOf(*made, 0x00200011), CString("12"));
    EXPECT_EQ(TextOf(*made, 0x00080016), CString("1.2.840.10008.5.1.4.1.1.88.59"));
    EXPECT_EQ(made->GetFileName(), CString("chosen.dcm"));
}

struct SettingCase {
    int objectKind;
    const char* modality;
    const char* sopClass;
};

constexpr SettingCase kStateKinds[] = {
    {1, "PR", "1.2.840.10008.5.1.4.1.1.11.1"},  {2, "SR", "1.2.840.10008.5.1.4.1.1.88.11"},
    {7, "SR", "1.2.840.10008.5.1.4.1.1.88.65"}, {0, "CT", "1.2.840.10008.5.1.4.1.1.2"},
    {8, "CT", "1.2.840.10008.5.1.4.1.1.2"},
};

TEST_F(Skeleton, LetsPresentationRecordsChooseTheClass) {
    for (const auto& c : kStateKinds) {
        CDcmObject target = Source();
        CXGSPSInfo info;
        info.objectKind = c.objectKind;
        EXPECT_EQ(CxDcmMaker().UpdateUserSettingInfo(&info, &target), 1);
        EXPECT_EQ(TextOf(target, 0x00080060), CString(c.modality)) << c.objectKind;
        EXPECT_EQ(TextOf(target, 0x00080016), CString(c.sopClass)) << c.objectKind;
        EXPECT_EQ(TextOf(target, 0x00200011), CString("")) << c.objectKind;
        EXPECT_EQ(TextOf(target, 0x00200013), CString("")) << c.objectKind;
        EXPECT_EQ(TextOf(target, 0x00080080), CString("Clinic")) << c.objectKind;
    }
}

}  // namespace
}  // namespace quorvex
