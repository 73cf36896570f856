// A presentation state laid over a small image that it is made to refer to.
#include "fuzz/drawing.h"
#include "fuzz/elements.h"
#include "fuzz/reading.h"
#include "presentation/presentation_reader.h"
#include "quorvex/Attributes.h"
#include "quorvex/CXGSPSObject.h"
#include "tests/support/record.h"

#include <memory>

namespace {

using namespace quorvex;

bool ReadState(CDcmObject& state, const test::Bytes& bytes) {
    if (fuzz::ReadWhole(state, bytes)) return true;
    test::MemoryFile file{.bytes = bytes};
    unsigned long scratch = 0;
    unsigned long offset = 0;
    return state.ReadStream2(0x00080000, test::kToTheEnd, kExplicitLittleEndian, &scratch, &offset,
                             &file, test::MemoryFile::GiveStream) == kDcmSuccess;
}

/// The image takes the UID of the first one that the state refers to.
CString ReferencedImage(const CDcmObject& state) {
    const CDcmItem series =
        Read<CDcmItem>(state, tag::kReferencedSeriesSequence).value_or(CDcmItem());
    const CDcmItem image =
        Read<CDcmItem>(series, tag::kReferencedImageSequence).value_or(CDcmItem());
    return Read<CString>(image, tag::kReferencedSOPInstanceUID).value_or(fuzz::kImageUid);
}

/// A displayed area of the state's own may ask for any magnification; here it stays small.
void FollowState(CXDIPP& image, fuzz::Options& options) {
    constexpr double kHighest = 20.0;
    image.UpdateViewSize(fuzz::DrawViewSize(options));
    if (image.GetZoomFactor() > kHighest) image.UpdateZoom_ABS(kHighest);
    fuzz::ShowLayers(image, options);
    fuzz::RenderAndDraw(image, options);
    if (image.GetZoomFactor() > 2.0) image.UpdateZoom_ABS(2.0);
    fuzz::ShowAsDrawn(image, options);
}

/// A state is made again of what was read.
void WriteAgain(const CDcmObject& image, test::Record& record, const CString& uid) {
    record.objectKind = 1;
    record.referencedSOPInstanceUID = uid;
    record.referencedSOPClassUID = "1.2.840.10008.5.1.4.1.1.7";
    record.referencedSeriesUID = "1.2.3";
    CDcmObject source = image;
    CXGSPSInfo* records[] = {&record};
    CDcmObject* made = nullptr;
    CXGSPSObject writer;
    writer.SetRules(Rules::kStandard);
    (void)writer.MakeGSPSObject(&source, records, 1, made);
    const std::unique_ptr<CDcmObject> state(made);
}

void ApplyState(fuzz::Options& options) {
    CDcmObject state;
    if (!ReadState(state, options.Front())) return;
    const CString uid = ReferencedImage(state);
    test::Record record;
    record.imageRows = options.Between(0, 80);
    record.imageColumns = options.Between(0, 80);
    (void)CXGSPSObject().GSPSApplier(&state, &record, uid, options.Between(-1, 3));
    PresentationReader(state, record, uid, 0).GetMask();
    CDcmObject object;
    fuzz::DrawImage(object, options);
    object.SetValue(tag::kSOPInstanceUID, uid);
    WriteAgain(object, record, uid);
    CDcmApp app;
    CXDIPP image;
    if (image.Initialize(&app, &object, {50, 40}, 0) != QVM_SUCCESS) return;
    (void)image.ApllyGSPSObject(&app, &state);
    FollowState(image, options);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {.options = 40}, ApplyState);
}
