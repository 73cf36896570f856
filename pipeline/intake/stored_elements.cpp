#include "pipeline/intake/stored_elements.h"

#include "foundation/types/block.h"
#include "foundation/types/checked_size.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <span>
#include <type_traits>
#include <utility>

namespace quorvex {

namespace {

PixelBlock Lengthened(const PixelBlock& frame, std::size_t size) {
    PixelBlock whole = NewPixelBlock(size);
    const std::size_t there = std::min(frame.size, size);
    std::memcpy(whole.data.get(), frame.data.get(), there);
    std::memset(whole.data.get() + there, 0, size - there);
    return whole;
}

bool BitAt(std::span<const unsigned char> bytes, std::size_t bit) {
    return bit / 8 < bytes.size() && ((bytes[bit / 8] >> (bit % 8)) & 1U) != 0;
}

// Packed pixels follow one another from the lowest bit of the first byte on.
PixelBlock Unpacked(std::span<const unsigned char> packed, const StoredLayout& layout) {
    const auto elementBytes = static_cast<std::size_t>(layout.ElementBytes());
    const auto bits = static_cast<std::size_t>(layout.bitsAllocated);
    PixelBlock elements = NewPixelBlock(layout.pixelCount * elementBytes);
    for (std::size_t i = 0; i < layout.pixelCount; ++i) {
        std::uint32_t value = 0;
        for (std::size_t bit = 0; bit < bits; ++bit) {
            value |= static_cast<std::uint32_t>(BitAt(packed, i * bits + bit)) << bit;
        }
        std::memcpy(elements.data.get() + i * elementBytes, &value, elementBytes);
    }
    return elements;
}

/// Where the stored bits lie in an element.
struct BitPlace {
    int above = 0;  ///< unused bits above the stored ones
    int below = 0;  ///< unused bits below them
};

BitPlace StoredBits(const StoredLayout& layout) {
    const int width = layout.ElementBytes() * 8;
    const int stored = std::clamp(layout.bitsStored, 1, width);
    const bool isShifted = layout.highBit >= stored && layout.highBit < width;
    const int below = isShifted ? layout.highBit + 1 - stored : 0;
    return {width - stored - below, below};
}

template <class Element>
void KeepStoredBits(unsigned char* elements, std::size_t count, BitPlace place) {
    using Unsigned = std::make_unsigned_t<Element>;
    const int down = place.above + place.below;
    for (std::size_t i = 0; i < count; ++i) {
        const auto raw = ElementAt<Unsigned>(elements, i);
        const auto topmost = static_cast<Element>(static_cast<Unsigned>(raw << place.above));
        SetElementAt(elements, i, static_cast<Element>(topmost >> down));
    }
}

template <class Element>
ValueSpan SpanOf(const unsigned char* elements, std::size_t count) {
    // Words are compared as signed numbers, which every vector unit can do: shifted by half.
    constexpr bool isShifted = std::is_same_v<Element, std::uint16_t>;
    using Compared = std::conditional_t<isShifted, std::int16_t, Element>;
    constexpr auto kShift = static_cast<Element>(isShifted ? 0x8000U : 0U);
    Compared low = std::numeric_limits<Compared>::max();
    Compared high = std::numeric_limits<Compared>::lowest();
    for (std::size_t i = 0; i < count; ++i) {
        const auto element = ElementAt<Element>(elements, i);
        const auto compared = static_cast<Compared>(element ^ kShift);
        low = std::min(low, compared);
        high = std::max(high, compared);
    }
    return {static_cast<Element>(low ^ kShift), static_cast<Element>(high ^ kShift)};
}

PixelBlock WholeElements(PixelBlock frame, const StoredLayout& layout, std::size_t size) {
    const bool isPacked = layout.bitsAllocated != layout.ElementBytes() * 8;
    if (isPacked) return Unpacked(frame.Bytes(), layout);
    if (frame.size < size) return Lengthened(frame, size);
    frame.size = size;
    return frame;
}

// Most frames have nothing in their unused bits, which their span shows without another pass.
bool HasOtherBits(const StoredLayout& layout, BitPlace place, ValueSpan span) {
    if (place.below > 0) return true;
    const int stored = layout.ElementBytes() * 8 - place.above;
    const std::int64_t limit = std::int64_t{1} << (layout.isSigned ? stored - 1 : stored);
    return span.high >= limit || span.low < (layout.isSigned ? -limit : 0);
}

}  // namespace

ElementFrame StoredElements(PixelBlock frame, const StoredLayout& layout) {
    const auto size = CheckedProduct(layout.pixelCount, layout.ElementBytes());
    if (!size) throw BlockTooLarge();
    PixelBlock elements = WholeElements(std::move(frame), layout, *size);
    const BitPlace place = StoredBits(layout);
    return WithElementType(layout, [&](auto element) {
        using Element = decltype(element);
        unsigned char* data = elements.data.get();
        ValueSpan span = SpanOf<Element>(data, layout.pixelCount);
        if (HasOtherBits(layout, place, span)) {
            KeepStoredBits<Element>(data, layout.pixelCount, place);
            span = SpanOf<Element>(data, layout.pixelCount);
        }
        return ElementFrame{std::move(elements), span};
    });
}

}  // namespace quorvex
