/// Typed access to elements that lie in a block of bytes.
#pragma once

#include "pipeline/intake/stored_elements.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quorvex {

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

/// Calls `work` with a value of the type that the elements have.
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
