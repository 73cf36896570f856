#include "tools/stored_image.h"

#include "quorvex/Attributes.h"

namespace quorvex::tools {

std::string TextOf(const CDcmObjectCommon& object, std::uint32_t tag) {
    return Read<CString>(object, tag).value_or(CString()).ToUtf8();
}

bool IsPaletteColour(const CString& photometric) {
    return photometric.Find("PALETTE") >= 0;
}

FetchedFrame FetchFrame(CxDcmParser& parser, int index) {
    FetchedFrame frame;
    unsigned char* bytes = nullptr;
    frame.result = parser.GetAFrameUnpacked(index, bytes, frame.size);
    frame.bytes.reset(bytes);
    return frame;
}

}  // namespace quorvex::tools
