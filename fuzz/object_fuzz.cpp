// An object that its host has read, with its file's image in memory and without.
#include "fuzz/drawing.h"
#include "fuzz/elements.h"
#include "fuzz/frames.h"
#include "fuzz/memory_feed.h"
#include "fuzz/options.h"

namespace {

using namespace quorvex;

MC_STATUS Count(int /*messageId*/, std::uint32_t /*tag*/, void* user, int /*item*/,
                unsigned long length, unsigned char* data, int /*first*/, int /*last*/) {
    auto& sum = *static_cast<unsigned long*>(user);
    if (length > 0) sum += data[0] + data[length - 1];
    return kMcContinue;
}

/// The header alone, its pixels in the image of the file; sometimes the place of them is wrong.
void ReadWithImage(std::vector<unsigned char> bytes, fuzz::Options& options) {
    CDcmApp app;
    fuzz::MemoryFeed feed(bytes);
    CDcmObject object;
    unsigned long offset = 0;
    if (object.ReadFileUptoTag(&app, 0x7FE0000F, &offset, &feed, fuzz::MemoryFeed::GiveFile) !=
        kDcmSuccess) {
        return;
    }
    if (options.Below(8) == 1) offset = options.Word();
    CxDcmParser parser;
    if (parser.Initialize(&app, &object, bytes.data(), bytes.size(), offset) != QVM_SUCCESS) return;
    fuzz::FetchFrames(parser, options);
    fuzz::MakeThumbnail(parser, options);
    CxDcmParser copy(parser);
    fuzz::FetchFrames(copy, options);
}

/// The whole object, and what a walk over its pixels gives.
void ReadWhole(const std::vector<unsigned char>& bytes, fuzz::Options& options) {
    CDcmApp app;
    fuzz::MemoryFeed feed(bytes);
    CDcmObject object;
    if (object.ReadFile(&app, &feed, fuzz::MemoryFeed::GiveFile) != kDcmSuccess) return;
    unsigned long sum = fuzz::Fingerprint(object);
    (void)object.GetValueEx(0x7FE00010, &sum, Count);
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
    constexpr std::size_t kLargestInput = 1 << 17;
    constexpr std::size_t kOptions = 40;
    if (size > kLargestInput) return 0;
    fuzz::Options options(data, size, kOptions);
    const std::vector<unsigned char> bytes = options.Front();
    ReadWithImage(bytes, options);
    ReadWhole(bytes, options);
    return 0;
}
