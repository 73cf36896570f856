// An object that its host has read, with its file's image in memory and without.
#include "fuzz/drawing.h"
#include "fuzz/reading.h"
#include "tests/support/digest.h"

namespace {

using namespace quorvex;

MC_STATUS AddEnds(int /*messageId*/, std::uint32_t /*tag*/, void* user, int /*item*/,
                  unsigned long length, unsigned char* data, int /*first*/, int /*last*/) {
    auto& sum = *static_cast<unsigned long*>(user);
    if (length > 0) sum += data[0] + data[length - 1];
    return kMcContinue;
}

/// The header alone, its pixels in the image of the file; sometimes the place of them is wrong.
void ReadWithImage(test::Bytes bytes, fuzz::Options& options) {
    CDcmApp app;
    test::MemoryFile file{.bytes = bytes};
    CDcmObject object;
    unsigned long offset = 0;
    if (test::ReadUpTo(object, file, test::kUpToPixelData, &offset) != kDcmSuccess) return;
    if (options.Below(8) == 1) offset = options.Word();
    CxDcmParser parser;
    if (parser.Initialize(&app, &object, bytes.data(), bytes.size(), offset) != QVM_SUCCESS) return;
    fuzz::FetchFrames(parser, options);
    fuzz::MakeThumbnail(parser, options);
    CxDcmParser copy(parser);
    fuzz::FetchFrames(copy, options);
}

/// The whole object, and what a walk over its pixels gives.
void ReadWhole(const test::Bytes& bytes, fuzz::Options& options) {
    CDcmApp app;
    CDcmObject object;
    if (!fuzz::ReadWhole(object, bytes)) return;
    unsigned long sum = test::DigestOf(object);
    (void)object.GetValueEx(tag::kPixelData, &sum, AddEnds);
    CxDcmParser parser;
    if (parser.Initialize(&app, &object, nullptr, 0, 0) != QVM_SUCCESS) return;
    fuzz::FetchFrames(parser, options);
    double location = 0.0;
    (void)CxDcmParser::GetSliceLocation(&object, location);
    CXDIPP image;
    if (image.Initialize(&app, &object, fuzz::DrawViewSize(options), 0) != QVM_SUCCESS) return;
    CXDIPP copy(image);
    fuzz::ShowAsDrawn(copy, options);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {1 << 17, 40}, [](fuzz::Options& options) {
        ReadWithImage(options.Front(), options);
        ReadWhole(options.Front(), options);
    });
}
