/// How data sets are written down: the facts that reading, writing and frames share.
#pragma once

#include "foundation/dicom/model/byte_order.h"
#include "foundation/dicom/model/tags.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace quorvex::dicom {

struct Encoding {
    bool isExplicit = true;
    bool isBigEndian = false;
    friend bool operator==(const Encoding&, const Encoding&) = default;
};

/// What a Part 10 file begins with: bytes of any content, then the marker.
inline constexpr std::size_t kPreambleBytes = 128;
inline constexpr std::string_view kPart10Marker = "DICM";
inline constexpr std::size_t kPart10Start = kPreambleBytes + kPart10Marker.size();

[[nodiscard]] inline bool HasPart10Marker(std::span<const unsigned char> file) noexcept {
    return file.size() >= kPart10Start &&
           std::memcmp(file.data() + kPreambleBytes, kPart10Marker.data(), kPart10Marker.size()) ==
               0;
}

/// The length of a sequence, item or encapsulated value that ends with a delimiter.
inline constexpr std::uint32_t kUndefinedLength = 0xFFFFFFFF;

inline constexpr std::size_t kTagBytes = 4;
/// Bytes of an element's header without, and with, two reserved bytes and a 32-bit length behind
/// its VR.
inline constexpr std::size_t kShortHeader = 8;
inline constexpr std::size_t kLongHeader = 12;
/// Items and delimiters: the tag and a 32-bit length, in every encoding.
inline constexpr std::size_t kItemHeader = 8;

[[nodiscard]] inline std::uint32_t LoadTag(const unsigned char* bytes, bool isBigEndian) noexcept {
    return TagOf(Load<std::uint16_t>(bytes, isBigEndian),
                 Load<std::uint16_t>(bytes + 2, isBigEndian));
}

/// The length in the header of an item or delimiter.
[[nodiscard]] inline std::uint32_t LoadItemLength(const unsigned char* header,
                                                  bool isBigEndian) noexcept {
    return Load<std::uint32_t>(header + kTagBytes, isBigEndian);
}

}  // namespace quorvex::dicom
