// Failing memory under the object library, the maker and the presentations.
#include "quorvex/Tags.h"
#include "tests/faults/failing_reads.h"
#include "tests/faults/fault_harness.h"
#include "tests/maker/maker_objects.h"
#include "tests/support/digest.h"

namespace quorvex {
namespace {

using namespace test;

std::string WithoutTheNew(CDcmObject object) {
    for (const auto tag : kNewEachTime) object.RemoveValue(tag);
    return Look(object) + object.GetFileName().ToUtf8();
}

std::string SeenObject(Host& s) {
    return Look(s.object) + s.object.GetFileName().ToUtf8();
}

std::string SeenConverted(Host& s) {
    return WithoutTheNew(s.object);
}

std::string SeenMade(Host& s) {
    return s.made ? WithoutTheNew(*s.made) : "none";
}

std::string SeenValues(Host& s) {
    return s.text.ToUtf8() + Look(s.item) + std::to_string(s.count);
}

std::string SeenFolder(Host& s) {
    std::string text;
    for (const auto& name : s.folder->Names()) text += name + ReadAll(s.folder->Path(name));
    return text;
}

/// The latest.
std::string SeenRecord(Host& s) {
    if (s.latest == 0) return "";
    const Record& r = s.records[s.latest - 1];
    std::string text;
    for (const auto& table :
         {Entries(r.modalityLUTData, r.modalityLUTCount), Entries(r.voiLUTData, r.voiLUTCount),
          Entries(r.presentationLUTData, r.presentationLUTCount)}) {
        for (const int entry : table) text += std::to_string(entry) + ' ';
        text += '|';
    }
    if (r.shutterMask != nullptr) text += TextOf({r.shutterMask, 720});
    return text + TextOfNumbers(r.windowCenter, r.windowWidth, r.rescaleSlope, r.rescaleIntercept,
                                r.pixelSpacingX, r.imageRotation, r.textObjects.GetSize(),
                                r.graphicObjects.GetSize());
}

template <class Length, class Bytes>
MC_STATUS AddLength(int, std::uint32_t, void* user, int, Length length, Bytes, int, int) {
    *static_cast<int*>(user) += static_cast<int>(length);
    return kMcContinue;
}
MC_STATUS AddPieceLength(int, std::uint32_t, void* user, int length, void*, int, int) {
    *static_cast<int*>(user) += length;
    return kMcContinue;
}
MC_STATUS CountElement(const DcmElementView&, void* user) {
    ++*static_cast<int*>(user);
    return kMcContinue;
}

/// Values one by one: one that could not be given comes with the next call.
DCMRESULT ReadSecondPosition(Host& s) {
    s.text = CString();
    s.object.GetValue(tag::kImageOrientationPatient, s.text);
    return s.object.GetNextValue(tag::kImagePositionPatient, s.text);
}
void ReadFirstPosition(Host& s) {
    double first = 0;
    s.object.GetValue(tag::kImagePositionPatient, first);
}

constexpr Operation kReads[] = {
    {"CDcmObject::GetValue, text", kOnAll, SeenValues,
     DONE(s.object.GetValue(tag::kPatientName, s.text))},
    {"CDcmObject::GetNextValue", kUsable, SeenValues, DONE(ReadSecondPosition(s)),
     ReadFirstPosition},
    {"CDcmObject::GetValue, item", On("tables"), SeenValues,
     DONE(s.object.GetValue(tag::kVOILUTSequence, s.item))},
    {"CDcmObject::GetValue, callback", On("native CT|big endian", Leaves::kUsable), SeenValues,
     DONE(s.count = 0, s.object.GetValue(tag::kPixelData, &s.count, AddPieceLength))},
    {"CDcmObject::GetValueEx", kOnImagesUsable, SeenValues,
     DONE(s.count = 0, s.object.GetValueEx(tag::kPixelData, &s.count, AddLength))},
    {"CDcmObject::WalkElements", kUsable, SeenValues,
     DONE(s.count = 0, s.object.WalkElements(&s.count, CountElement))},
};

void GiveText(Host& s) {
    s.text = "Gr\xC3\xB6\xC3\x9F, a longer description";
    s.item.SetValue(tag::kReferencedSOPClassUID, "1.2.3");
}

/// Adding a value may bring those that are there into another form first; what they say stays.
DCMRESULT AddOnce(Host& s) {
    if (s.count != 0) return kDcmSuccess;
    const DCMRESULT answer = s.object.SetNextValue(tag::kImageOrientationPatient, s.text);
    s.count = answer == kDcmSuccess ? 1 : 0;
    return answer;
}

DCMRESULT SetTwoFrames(Host& s) {
    const unsigned long lengths[] = {500, 500};
    unsigned char* const frames[] = {s.pixels.data(), s.pixels.data()};
    return s.object.SetValueEx(tag::kPixelData, 2, lengths, frames);
}

void BesideTheFirst(Host& s) {
    s.from = std::make_unique<Host>(s.kind);
    s.object = AllKinds().front().object;
}

constexpr Operation kChanges[] = {
    {"CDcmObject::SetValue, text", kOnAll, SeenObject,
     DONE(s.object.SetValue(tag::kSeriesDescription, s.text)), GiveText},
    {"CDcmObject::SetValue, number", kOnAll, SeenObject,
     DONE(s.object.SetValue(tag::kLargestImagePixelValue, 4095))},
    {"CDcmObject::SetValue, character set", kOnAll, SeenObject,
     DONE(s.object.SetValue(tag::kSpecificCharacterSet, "ISO_IR 100"))},
    {"CDcmObject::SetValue, item", kOnAll, SeenObject,
     DONE(s.object.SetValue(tag::kReferencedImageSequence, &s.item)), GiveText},
    {"CDcmObject::SetNextValue", NotOn("big endian"), SeenObject, DONE(AddOnce(s)), GiveText},
    {"CDcmObject::SetValueEx", On("JPEG baseline"), SeenObject, DONE(SetTwoFrames(s))},
    {"CDcmObject::SetTransferSyntax", kOnAll, SeenObject,
     DONE(s.object.SetTransferSyntax(kImplicitLittleEndian))},
    {"CDcmObject::SetValueRepresentation", On("native CT|big endian"), SeenObject,
     DONE(s.object.SetValueRepresentation(tag::kHighBit, MC_VR_SS))},
    {"CDcmObject::RemoveValue", kOnAll, SeenObject, DONE(s.object.RemoveValue(tag::kPatientName))},
    {"CDcmObject::Close", kOnAll, SeenObject, DONE(s.object.Close())},
    {"CDcmObject, copy", kThrows, SeenObject, DONE(s.object = s.from->object, true),
     BesideTheFirst},
};

DCMRESULT ReadUpToPixels(Host& s) {
    PieceGiver giver{s.kind.bytes, MemoryFile::kPiece};
    return s.object.ReadFileUptoTag(nullptr, kUpToPixelData, nullptr, &giver, PieceGiver::File);
}
DCMRESULT ReadStream(Host& s) {
    PieceGiver giver{s.kind.bytes, MemoryFile::kPiece};
    return s.object.ReadStream2(kFromTheStart, kToTheEnd, kImplicitLittleEndian, nullptr, nullptr,
                                &giver, PieceGiver::Stream);
}

constexpr Operation kFiles[] = {
    {"CDcmObject::ReadFile", NotOn("bare data set"), SeenObject,
     DONE(s.object.ReadFile(nullptr, nullptr, nullptr)), DO(s.object.Close())},
    {"CDcmObject::ReadFileUptoTag", NotOn("bare data set"), SeenObject, DONE(ReadUpToPixels(s)),
     DO(s.object.Close())},
    {"CDcmObject::ReadStream2", On("bare data set"), SeenObject, DONE(ReadStream(s)),
     DO(s.object.Close())},
    {"CDcmObject::WriteFile", kOnAll, SeenFolder, DONE(s.object.WriteFile(s.path.Give())),
     DO(s.path = GivenText(s.folder.emplace().Path("written.dcm")))},
};

bool Convert(Host& s, std::int32_t form) {
    s.settings.compressionType = form;
    const auto code = s.maker.MakeDcmObject(&s.app, &s.object, &s.settings);
    const auto outcome = s.maker.GetOutcome();
    return IsDone(code) && (IsDone(outcome) || outcome == QVM_FRAME_COPIED);
}

bool ConvertByStandard(Host& s, std::int32_t form) {
    s.maker.SetRules(Rules::kStandard);
    return Convert(s, form);
}

void GiveSettings(Host& s) {
    s.records[0].objectKind = 1;
    s.records[0].seriesNumber = "a series number";
    s.records[0].patientName = s.settings.patientName = "a name that needs memory";
    s.settings.fileName = "a file name that needs memory";
    s.made = std::make_unique<CDcmObject>(AllKinds().front().object);
}

void GiveFrames(Host& s) {
    GiveSettings(s);
    s.settings.compressionType = kXferJpeg2000Lossless;
    s.made.reset();
    for (int i = 0; i < 6; ++i) s.frames.emplace_back(NewCopy(StoredFrames(s.kind.object).front()));
}

bool AddFrame(Host& s) {
    if (!IsDone(s.maker.AddFrame(s.frames.back().get()))) return false;
    static_cast<void>(s.frames.back().release());
    s.frames.pop_back();
    return true;
}

/// A new object of two frames; where it fails it begins again, as a host would.
bool MakeOfTwoFrames(Host& s) {
    if (!IsDone(s.maker.DcmMakerInit(&s.object, &s.settings, nullptr))) return false;
    if (!AddFrame(s) || !AddFrame(s)) return false;
    CDcmObject* result = nullptr;
    const auto answer = s.maker.MakeDcmObject(result);
    s.made.reset(result);
    return IsDone(answer);
}

constexpr How kOfBytes =
    On("colour|palette|RLE colour|JPEG baseline|JPEG 2000|HTJ2K|JPEG XL of JPEG", Leaves::kUsable);
constexpr How kOfWords = NotOn(
    "colour|palette|RLE colour|RLE 32 bits|JPEG baseline|JPEG 2000|HTJ2K|JPEG XL of JPEG|"
    "presentation state",
    Leaves::kUsable);
constexpr How kNewlyCoded = On("native CT|colour|multi-frame", Leaves::kUsable);
constexpr How kOfNewCodings =
    On("RLE 32 bits|JPEG-LS|deflated frames|JPEG XL|JPEG XL of JPEG", Leaves::kUsable);

constexpr Operation kMakers[] = {
    {"CxDcmMaker::MakeDcmSkeleton", kOnAll, SeenMade,
     DONE(s.maker.MakeDcmSkeleton(&s.object, s.made.get())), GiveSettings},
    {"CxDcmMaker::UpdateUserSettingInfo", kOnAll, SeenObject,
     DONE(s.maker.UpdateUserSettingInfo(&s.records[0], &s.object)), GiveSettings},
    {"CxDcmMaker::MakeDcmObject, to uncompressed", kOfWords, SeenConverted,
     DONE(Convert(s, kXferUncompressed)), GiveSettings},
    {"CxDcmMaker::MakeDcmObject, to baseline", kOfBytes, SeenConverted,
     DONE(Convert(s, kXferJpegBaseline)), GiveSettings},
    {"CxDcmMaker::MakeDcmObject, to lossless", kOfWords, SeenConverted,
     DONE(Convert(s, kXferJpegLossless)), GiveSettings},
    {"CxDcmMaker::MakeDcmObject, to JPEG 2000", kOfWords, SeenConverted,
     DONE(Convert(s, kXferJpeg2000Lossless)), GiveSettings},
    {"CxDcmMaker::MakeDcmObject, out of newer codings", kOfNewCodings, SeenConverted,
     DONE(ConvertByStandard(s, kXferUncompressedExplicit)), GiveSettings},
    {"CxDcmMaker::MakeDcmObject, to RLE", kNewlyCoded, SeenConverted,
     DONE(ConvertByStandard(s, kXferRle)), GiveSettings},
    {"CxDcmMaker::MakeDcmObject, to deflated frames", kNewlyCoded, SeenConverted,
     DONE(ConvertByStandard(s, kXferDeflatedFrames)), GiveSettings},
    {"CxDcmMaker::MakeDcmObject, to JPEG-LS", kNewlyCoded, SeenConverted,
     DONE(ConvertByStandard(s, kXferJpegLsLossless)), GiveSettings},
    {"CxDcmMaker::MakeDcmObject, to JPEG-LS with losses", kNewlyCoded, SeenConverted,
     DONE(ConvertByStandard(s, kXferJpegLs)), GiveSettings},
    {"CxDcmMaker::MakeDcmObject, to JPEG XL", kNewlyCoded, SeenConverted,
     DONE(ConvertByStandard(s, kXferJpegXlLossless)), GiveSettings, kJpegXlLossless},
    {"CxDcmMaker::MakeDcmObject, to JPEG XL with losses", kNewlyCoded, SeenConverted,
     DONE(ConvertByStandard(s, kXferJpegXl)), GiveSettings, kJpegXl},
    {"CxDcmMaker::MakeDcmObject, JPEG kept in JPEG XL", On("JPEG baseline", Leaves::kUsable),
     SeenConverted, DONE(ConvertByStandard(s, kXferJpegXlOfJpeg)), GiveSettings, kJpegXlOfJpeg},
    {"CxDcmMaker::MakeDcmObject, JPEG out of JPEG XL", On("JPEG XL of JPEG", Leaves::kUsable),
     SeenConverted, DONE(ConvertByStandard(s, kXferJpegOriginal)), GiveSettings, kJpegXlOfJpeg},
    {"CxDcmMaker, cycle", On("native CT|colour"), SeenMade, DONE(MakeOfTwoFrames(s)), GiveFrames},
};

template <unsigned selector>
bool ReadModule(Host& s) {
    return IsDone(s.reader.GetGSPSModule(selector, &s.object, &s.Next()));
}

void ReadPresentation(Host& s) {
    CXGSPSObject().GSPSApplier(&s.object, &s.Next(), s.reader.imageUID, -1);
    s.path = GivenText(s.reader.imageUID);
}

bool MakeState(Host& s) {
    CXGSPSInfo* records[] = {s.records.data()};
    CDcmObject* result = nullptr;
    const int answer = CXGSPSObject().MakeGSPSObject(&s.object, records, 1, result);
    s.made.reset(result);
    return IsDone(answer);
}

constexpr Operation kPresentations[] = {
    {"CXGSPSObject::GSPSApplier", kUsable, SeenRecord,
     DONE(CXGSPSObject().GSPSApplier(&s.object, &s.Next(), s.path.Give(), -1)),
     DO(s.path = GivenText(s.reader.imageUID))},
    {"CXGSPSObject::GetGSPSModule, modality", kUsable, SeenRecord, ReadModule<0>},
    {"CXGSPSObject::GetGSPSModule, shutter", kUsable, SeenRecord, ReadModule<1>},
    {"CXGSPSObject::GetGSPSModule, VOI", kUsable, SeenRecord, ReadModule<2>},
    {"CXGSPSObject::GetGSPSModule, presentation", kUsable, SeenRecord, ReadModule<3>},
    {"CXGSPSObject::GetGSPSModule, area", kUsable, SeenRecord, ReadModule<6>},
    {"CXGSPSObject::MakeGSPSObject", kOnAll, SeenMade, MakeState, ReadPresentation},
};

INSTANTIATE_TEST_SUITE_P(ObjectMemoryReads, FailingAllocation, testing::ValuesIn(kReads));
INSTANTIATE_TEST_SUITE_P(ObjectMemoryChanges, FailingAllocation, testing::ValuesIn(kChanges));
INSTANTIATE_TEST_SUITE_P(ObjectMemoryFiles, FailingAllocation, testing::ValuesIn(kFiles));
INSTANTIATE_TEST_SUITE_P(MakerMemory, FailingAllocation, testing::ValuesIn(kMakers));
INSTANTIATE_TEST_SUITE_P(PresentationMemory, FailingAllocation, testing::ValuesIn(kPresentations));

}  // namespace
}  // namespace quorvex
