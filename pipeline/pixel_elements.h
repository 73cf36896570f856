/// Pixels as elements: whole numbers of 1, 2 or 4 bytes that lie in a block of bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quorvex {

/// How a grey frame stores its pixels.
struct StoredLayout {
    std::size_t pixelCount = 0;
    int bitsAllocated = 0;
    int bitsStored = 0;
    int highBit = 0;
    bool isSigned = false;

    /// Bytes of one element: 1, 2 or 4; 0 for more than 32 bits, or none.
    [[nodiscard]] constexpr int ElementBytes() const noexcept {
        if (bitsAllocated < 1 || bitsAllocated > 32) return 0;
        if (bitsAllocated <= 8) return 1;
        return bitsAllocated <= 16 ? 2 : 4;
    }
};

template <class Element>
[[nodiscard]] inline Element ElementAt(const unsigned char* block, std::size_t index) noexcept {
    Element element;
    std::memcpy(&element, block + index * sizeof(Element), sizeof(Element));
    return element;
}

template <class Element>
inline void SetElementAt(unsigned char* block, std::size_t index, Element element) noexcept {
    std::memcpy(block + index * sizeof(Element), &element, sizeof(Element));
}

/// Calls `work` with a value of the type that the elements of a frame have.
template <class Work>
auto WithElementType(const StoredLayout& layout, Work&& work) {
    switch (layout.ElementBytes()) {
        case 1:
            return layout.isSigned ? work(std::int8_t{}) : work(std::uint8_t{});
        case 2:
            return layout.isSigned ? work(std::int16_t{}) : work(std::uint16_t{});
        default:
            return layout.isSigned ? work(std::int32_t{}) : work(std::uint32_t{});
    }
}

}  // namespace quorvex
