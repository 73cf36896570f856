// A file in memory: header, every element, some frames, a thumbnail and a picture.
#include "quorvex/CXDIPP.h"
#include "quorvex/CxDcmParser.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <vector>

namespace {

using namespace quorvex;

constexpr std::size_t kLargestInput = 1 << 20;

struct Feed {
    std::vector<unsigned char> bytes;
    std::size_t given = 0;
};

MC_STATUS Give(const char* /*name*/, void* user, int* length, void** data, int first, int* last) {
    auto& feed = *static_cast<Feed*>(user);
    if (first != 0) feed.given = 0;
    const std::size_t count = std::min<std::size_t>(feed.bytes.size() - feed.given, 16384);
    *data = feed.bytes.data() + feed.given;
    *length = static_cast<int>(count);
    feed.given += count;
    *last = feed.given == feed.bytes.size() ? 1 : 0;
    return kMcContinue;
}

MC_STATUS Touch(const DcmElementView& element, void* user) {
    auto& sum = *static_cast<unsigned*>(user);
    if (element.data != nullptr && element.length > 0) sum += element.data[element.length - 1];
    return kMcContinue;
}

void FetchFrames(CxDcmParser& parser) {
    for (int i = 0; i < std::min(parser.GetFrameCount(), 3); ++i) {
        unsigned char* frame = nullptr;
        unsigned long size = 0;
        (void)parser.GetAFrame(i, frame, size, 0);
        delete[] frame;
    }
    unsigned char* image = nullptr;
    unsigned long imageSize = 0;
    tagBITMAPINFOHEADER* header = nullptr;
    unsigned long headerSize = 0;
    (void)parser.MakeThumbNail(0, {32, 32}, kXferUncompressed, 1, image, imageSize, header,
                               headerSize, 0);
    delete[] image;
    delete[] static_cast<unsigned char*>(static_cast<void*>(header));
}

void Show(CDcmApp& app, CDcmObject& object) {
    CXDIPP image;
    if (image.Initialize(&app, &object, CSize{64, 64}, 0) != QVM_SUCCESS) return;
    image.ShowShutter(1);
    image.ShowOverlays(1);
    if (image.GetZoomFactor() > 4) image.UpdateZoom_ABS(4);
    (void)image.Render();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > kLargestInput) return 0;
    CDcmApp app;
    Feed feed{{data, data + size}};
    unsigned long offset = 0;
    CDcmObject object;
    if (object.ReadFileUptoTag(&app, 0x7FE0000F, &offset, &feed, Give) != kDcmSuccess) {
        (void)object.ReadFile(&app, &feed, Give);
    }
    unsigned sum = 0;
    (void)object.WalkElements(&sum, Touch);
    CxDcmParser parser;
    if (parser.Initialize(&app, &object, feed.bytes.data(), size, offset) == QVM_SUCCESS) {
        FetchFrames(parser);
    }
    CDcmObject whole;
    if (whole.ReadFile(&app, &feed, Give) == kDcmSuccess) Show(app, whole);
    return 0;
}
