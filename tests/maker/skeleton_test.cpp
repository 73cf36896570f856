#include "foundation/platform/host.h"
#include "quorvex/CXGSPSInfo.h"
#include "tests/maker/maker_objects.h"

#include <gtest/gtest.h>
#include <tuple>

namespace quorvex {
namespace {

using namespace test;

/// What a new object takes over as it is.
constexpr const char* kTakenOver =
    "00020002=1.2.840.10008.5.1.4.1.1.2; 00020003=1.2.3.99; "
    "00080016=1.2.840.10008.5.1.4.1.1.2; 00080020=20260102; 00080030=101112; 00080050=A-1; "
    "00080060=CT; 00080080=Clinic; 00080090=Who^Refers; 00081030=Study; 0008103E=Series; "
    "00100010=M\xC3\xBCller^Anna; 00100020=4711; 00100030=19700101; 00100032=0000; "
    "00100040=F; 00101010=056Y; 00101020=1.7; 00101030=62; 001021B0=None; 00104000=Calm; "
    "00180015=HEAD; 00185100=HFS; 0020000D=1.2.3.4; 00200010=S1; 00200060=L; 00280108=-1000; "
    "00280109=3000; 00280120=-2000; 00400244=20260102; 00400245=1010; 00400253=P1; "
    "00400254=Step";

CDcmObject Source() {
    return With(With(kTakenOver),
                "00080005=ISO_IR 100; 00080018=1.2.3.99; 0020000E=1.2.3.5; 00200013=7; "
                "00280010=512; 00080008=ORIGINAL\\PRIMARY\\AXIAL; 00200032=1\\2\\3\\4; "
                "00200037=1\\0\\0\\0\\1\\0; 00281052=-1024; 00281053=1");
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

private:
    ScratchFolder folder_;
};

TEST_F(Skeleton, TakesPatientAndStudyOverAndMakesTheRestNew) {
    const CDcmObject made = Made(Source());
    const std::string date = CxDcmMaker::GetDate().ToUtf8();
    ExpectAttributes(made, kTakenOver);
    ExpectAttributes(made,
                     "00080070=SORVANEX; 00081090=SORVANEX PACS; 00080008; 00200011; "
                     "00200013; 00280010; 00080021=" +
                         date + "; 00080012=" + date);
    EXPECT_EQ(SyntaxOf(made), kExplicitLittleEndian);
    for (const std::uint32_t uid : {tag::kSeriesInstanceUID, tag::kSOPInstanceUID})
        EXPECT_TRUE(TextOf(made, uid).starts_with("1.2.999.700040.")) << std::hex << uid;
}

TEST_F(Skeleton, ReadsTheConfigurationAnewEachTime) {
    Configure("[QUORVEX_MANUFACTURER]\nFirst\n");
    const CDcmObject first = Made(Source());
    Configure("[QUORVEX_UID_PREFIX]\r\n1.9\r\n[QUORVEX_MANUFACTURER]\r\nSecond\r\n");
    const CDcmObject second = Made(Source());
    ExpectAttributes(first, "00080070=First; 00081090=");
    EXPECT_TRUE(TextOf(first, tag::kSOPInstanceUID).starts_with("."));
    EXPECT_EQ(TextOf(second, tag::kManufacturer), "Second");
    EXPECT_TRUE(TextOf(second, tag::kSeriesInstanceUID).starts_with("1.9."));
}

TEST_F(Skeleton, KeepsAllCharacterSetsAndNamesTheModelOnlyBesideAnInstitution) {
    CDcmObject source = With(Source(), "00080005=\\ISO 2022 IR 87\\ISO 2022 IR 13");
    source.RemoveValue(tag::kInstitutionName);
    ExpectAttributes(Made(source),
                     "00080005=\\ISO 2022 IR 87\\ISO 2022 IR 13; 00081090; 00080070=SORVANEX");
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
    ExpectAttributes(*made,
                     "00200032=1\\2\\3; 00200037=1\\0\\0\\0\\1\\0; 00080008=ORIGINAL; "
                     "00281052=-1024; 00100010=Other^Name; 0008103E=Series; 00200011=12; "
                     "00080016=1.2.840.10008.5.1.4.1.1.88.59");
    EXPECT_EQ(made->GetFileName(), CString("chosen.dcm"));
}

TEST_F(Skeleton, LetsPresentationRecordsChooseTheClass) {
    const std::tuple<int, const char*, const char*> kinds[] = {
        {1, "PR", "1.2.840.10008.5.1.4.1.1.11.1"},
        {2, "SR", "1.2.840.10008.5.1.4.1.1.88.11"},
        {7, "SR", "1.2.840.10008.5.1.4.1.1.88.65"},
        {0, "CT", "1.2.840.10008.5.1.4.1.1.2"},
        {8, "CT", "1.2.840.10008.5.1.4.1.1.2"}};
    for (const auto& [kind, modality, sopClass] : kinds) {
        CDcmObject target = Source();
        CXGSPSInfo info;
        info.objectKind = kind;
        EXPECT_EQ(CxDcmMaker().UpdateUserSettingInfo(&info, &target), 1);
        ExpectAttributes(target, std::string("00200011=; 00200013=; 00080080=Clinic; 00080060=") +
                                     modality + "; 00080016=" + sopClass);
    }
}

}  // namespace
}  // namespace quorvex
