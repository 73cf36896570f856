/// Files and the frames that they hold, as the object library gives them.
#pragma once

#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"

#include <string>
#include <vector>

namespace quorvex::test {

inline bool ReadWhole(CDcmObject& object, const std::string& path) {
    object.Open(path);
    return object.ReadFile(nullptr, nullptr, nullptr) == kDcmSuccess;
}

inline TRANSFER_SYNTAX SyntaxOf(const CDcmObject& object) {
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    static_cast<void>(object.GetTransferSyntax(syntax));
    return syntax;
}

inline MC_STATUS JoinItem(int, std::uint32_t, void* user, int item, unsigned long length,
                          unsigned char* data, int, int) {
    auto& frames = *static_cast<std::vector<std::string>*>(user);
    if (item == 0) return kMcContinue;
    frames.resize(static_cast<std::size_t>(item));
    frames.back().append(data, data + length);
    return kMcContinue;
}

/// The frames of an object's own Pixel Data, each joined; empty where there are none.
inline std::vector<std::string> StoredFrames(const CDcmObject& object) {
    std::vector<std::string> frames;
    static_cast<void>(object.GetValueEx(tag::kPixelData, &frames, JoinItem));
    return frames;
}

}  // namespace quorvex::test
