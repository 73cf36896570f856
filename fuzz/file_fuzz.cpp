// A whole file by its path: header, every element, frames, thumbnail, palette and the displayed picture.
#include "fuzz/drawing.h"
#include "fuzz/elements.h"
#include "fuzz/frames.h"
#include "fuzz/memory_feed.h"
#include "fuzz/options.h"

namespace {

using namespace quorvex;

void ColourByPalette(CxDcmParser& parser) {
    const fuzz::Frame frame = fuzz::FetchFrame(parser, 0);
    unsigned short rows = 0;
    unsigned short columns = 0;
    unsigned short bits = 0;
    parser.GetHeader()->GetValue(0x00280010, rows);
    parser.GetHeader()->GetValue(0x00280011, columns);
    parser.GetHeader()->GetValue(0x00280100, bits);
    const std::size_t indexBytes = bits >= 16 && bits < 24 ? 2 : 1;
    if (!frame.bytes || frame.size < std::size_t{rows} * columns * indexBytes) return;
    unsigned short samples = 1;
    CString photometric;
    unsigned char* rgb = nullptr;
    (void)parser.GetRGBBufferFromPaletteImage(frame.bytes.get(), columns, rows, bits, samples,
                                              photometric, rgb, 0);
    delete[] rgb;
}

void Show(CDcmApp& app, const CString& path, fuzz::Options& options) {
    CXDIPP image;
    const CSize view = fuzz::DrawViewSize(options);
    const int frame = static_cast<int>(options.Below(4));
    if (image.Initialize(&app, path, view, frame) != QVM_SUCCESS) return;
    fuzz::ShowAsDrawn(image, options);
    if (image.Initialize(&app, fuzz::DrawViewSize(options), frame + 1) != QVM_SUCCESS) return;
    fuzz::ShowAsDrawn(image, options);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kLargestInput = 1 << 17;
    constexpr std::size_t kOptions = 48;
    if (size > kLargestInput) return 0;
    fuzz::Options options(data, size, kOptions);
    const fuzz::MemoryPath path(options.Front());
    CDcmApp app;
    CxDcmParser parser;
    const bool isRead = parser.Initialize(&app, path.Text(), options.Flag() ? 1 : 0) == QVM_SUCCESS;
    if (parser.GetHeader() != nullptr) (void)fuzz::Fingerprint(*parser.GetHeader());
    if (!isRead) return 0;
    fuzz::FetchFrames(parser, options);
    fuzz::MakeThumbnail(parser, options);
    ColourByPalette(parser);
    Show(app, path.Text(), options);
    return 0;
}
