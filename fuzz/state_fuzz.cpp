// A presentation state laid over a small image that it is made to refer to.
#include "fuzz/drawing.h"
#include "fuzz/elements.h"
#include "fuzz/memory_feed.h"
#include "fuzz/options.h"
#include "fuzz/records.h"
#include "presentation/presentation_reader.h"
#include "quorvex/CXGSPSObject.h"

namespace {

using namespace quorvex;

bool ReadState(CDcmObject& state, const std::vector<unsigned char>& bytes) {
    CDcmApp app;
    fuzz::MemoryFeed feed(bytes);
    if (state.ReadFile(&app, &feed, fuzz::MemoryFeed::GiveFile) == kDcmSuccess) return true;
    unsigned long scratch = 0;
    unsigned long offset = 0;
    return state.ReadStream2(0x00080000, 0xFFFFFFFF, kExplicitLittleEndian, &scratch, &offset,
                             &feed, fuzz::MemoryFeed::GiveStream) == kDcmSuccess;
}

/// The image takes the UID of the first one that the state refers to.
CString ReferencedImage(const CDcmObject& state) {
    CDcmItem series;
    CDcmItem image;
    CString uid(fuzz::kImageUid);
    state.GetValue(0x00081115, series);
    series.GetValue(0x00081140, image);
    image.GetValue(0x00081155, uid);
    return uid;
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kLargestInput = 1 << 16;
    constexpr std::size_t kOptions = 40;
    if (size > kLargestInput) return 0;
    fuzz::Options options(data, size, kOptions);
    CDcmObject state;
    if (!ReadState(state, options.Front())) return 0;
    const CString uid = ReferencedImage(state);
    fuzz::Record record;
    record.imageRows = options.Between(0, 80);
    record.imageColumns = options.Between(0, 80);
    (void)CXGSPSObject().GSPSApplier(&state, &record, uid, options.Between(-1, 3));
    PresentationReader(state, record, uid, 0).GetMask();
    CDcmObject object;
    fuzz::DrawImage(object, options);
    object.SetValue(0x00080018, uid);
    CDcmApp app;
    CXDIPP image;
    if (image.Initialize(&app, &object, {50, 40}, 0) != QVM_SUCCESS) return 0;
    (void)image.ApllyGSPSObject(&app, &state);
    FollowState(image, options);
    return 0;
}
