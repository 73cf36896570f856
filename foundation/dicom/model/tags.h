/// Tags by name, and what their numbers say.
#pragma once

#include "quorvex/Tags.h"

#include <cstdint>

namespace quorvex::dicom {

[[nodiscard]] constexpr std::uint32_t GroupOf(std::uint32_t tag) noexcept {
    return tag >> 16U;
}
[[nodiscard]] constexpr std::uint32_t ElementOf(std::uint32_t tag) noexcept {
    return tag & 0xFFFFU;
}
[[nodiscard]] constexpr std::uint32_t TagOf(std::uint32_t group, std::uint32_t element) noexcept {
    return group << 16U | element;
}

inline constexpr std::uint32_t kMetaGroup = GroupOf(tag::kFileMetaInformationGroupLength);
/// The group that data sets begin with, behind their file meta information.
inline constexpr std::uint32_t kFirstGroup = GroupOf(tag::kSpecificCharacterSet);

/// File meta information.
[[nodiscard]] constexpr bool IsMetaTag(std::uint32_t tag) noexcept {
    return GroupOf(tag) == kMetaGroup;
}
/// Items and delimiters.
[[nodiscard]] constexpr bool IsItemTag(std::uint32_t tag) noexcept {
    return GroupOf(tag) == GroupOf(tag::kItem);
}
[[nodiscard]] constexpr bool IsGroupLength(std::uint32_t tag) noexcept {
    return ElementOf(tag) == 0;
}
/// Private groups are odd.
[[nodiscard]] constexpr bool IsPrivate(std::uint32_t tag) noexcept {
    return GroupOf(tag) % 2 != 0;
}

}  // namespace quorvex::dicom
