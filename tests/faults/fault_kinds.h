/// One small file of each kind, made in memory by this library and kept as bytes and as a file.
#pragma once

#include "quorvex/DicomObject.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::test {

/// The last of the kinds; all others are images.
inline constexpr const char* kStates = "presentation state";

struct Kind {
    std::string name;
    CDcmObject object = {};  ///< whole, Pixel Data included
    std::string path;        ///< the file, Part 10 except for "bare data set"
    std::vector<unsigned char> bytes = {};
};

[[nodiscard]] std::span<const Kind> AllKinds();
[[nodiscard]] const Kind& KindOf(std::string_view name);

/// Every attribute with all its bytes, items included.
[[nodiscard]] std::string Look(const CDcmObjectCommon& object);

/// The value of every frame's Pixel Data, as stored: fragments joined, frame by frame.
[[nodiscard]] std::vector<std::vector<unsigned char>> StoredFrames(const CDcmObject& object);

}  // namespace quorvex::test
