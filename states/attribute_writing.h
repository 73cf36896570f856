/// Writes of attributes as the modules of a presentation state want them.
#pragma once

#include "maker/attribute_writing.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/DicomObject.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvex {

/// An empty item.
[[nodiscard]] CDcmItem NewItem();

/// The reference to the image of a record; its frame is left out where it is -1.
[[nodiscard]] CDcmItem ImageReference(const CXGSPSInfo& info);
/// An item with a Referenced Image Sequence of this one reference.
[[nodiscard]] CDcmItem ItemForImage(const CXGSPSInfo& info);

/// A look-up table of a record.
struct LUTContent {
    const std::uint16_t* data = nullptr;
    std::int32_t count = 0;  ///< 0: 65536
    std::uint16_t first = 0;
    std::int32_t bits = 0;
    bool isSigned = false;  ///< whether the values that it maps may be negative

    [[nodiscard]] std::size_t Entries() const noexcept {
        constexpr std::size_t kFullTable = 65536;
        return count == 0 ? kFullTable : static_cast<std::size_t>(count);
    }
};

/// The tables of a record; that of the VOI is signed where values ahead of it may be negative.
[[nodiscard]] LUTContent VOILUTOf(const CXGSPSInfo& info);
[[nodiscard]] LUTContent PresentationLUTOf(const CXGSPSInfo& info);

/// An item with the descriptor and the entries, each in a word.
[[nodiscard]] CDcmItem LUTItem(const LUTContent& lut);
/// The same, but tables of bytes that lie two to a word in the record lie so in the item.
[[nodiscard]] CDcmItem PackedLUTItem(const LUTContent& lut);

/// Sets bytes, of an even number, as words of VR OW.
void SetWords(CDcmObjectCommon& object, std::uint32_t tag, std::span<const unsigned char> bytes);

[[nodiscard]] constexpr const char* YesOrNo(std::int32_t flag) noexcept {
    return flag != 0 ? "Y" : "N";
}

}  // namespace quorvex
