#include "pipeline/intake/modality_stage.h"

#include "pipeline/intake/stored_elements.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace quorvex {

namespace {

constexpr std::int64_t kLargestWord = 65535;

/// The modality value of each stored value from `low` on.
template <class Value>
struct ModalityTable {
    std::int64_t low = 0;
    std::vector<Value> entries;

    [[nodiscard]] Value operator()(std::int64_t stored) const {
        return entries[static_cast<std::size_t>(stored - low)];
    }
};

template <class Value, class Entry>
ModalityTable<Value> MakeModalityTable(ValueSpan stored, Entry&& entry) {
    ModalityTable<Value> table{stored.low, {}};
    table.entries.reserve(static_cast<std::size_t>(stored.high - stored.low + 1));
    for (std::int64_t value = stored.low; value <= stored.high; ++value) {
        table.entries.push_back(static_cast<Value>(entry(value)));
    }
    return table;
}

template <class Lookup>
ValueSpan SpanThrough(const unsigned char* elements, const StoredLayout& layout,
                      const Lookup& lookup) {
    return WithElementType(layout, [&](auto element) {
        using Element = decltype(element);
        ValueSpan span{lookup(ElementAt<Element>(elements, 0)), 0};
        span.high = span.low;
        for (std::size_t i = 1; i < layout.pixelCount; ++i) {
            const std::int64_t value = lookup(ElementAt<Element>(elements, i));
            span.low = std::min(span.low, value);
            span.high = std::max(span.high, value);
        }
        return span;
    });
}

// A table's entries need not rise or fall with the stored value: only those that occur count.
ValueSpan ModalitySpan(const ElementFrame& stored, const StoredLayout& layout,
                       const ModalityTransform& transform) {
    if (transform.IsIdentity()) return stored.span;
    if (!transform.IsTable()) return transform.SpanOfRescaled(stored.span);
    const unsigned char* elements = stored.elements.data.get();
    if (layout.ElementBytes() > 2) return SpanThrough(elements, layout, transform);
    return SpanThrough(elements, layout, MakeModalityTable<std::int32_t>(stored.span, transform));
}

bool FitsInto(ValueSpan values, int bytes) {
    return values.high - values.low < (std::int64_t{1} << (8 * bytes));
}

ValueScale ScaleToWords(ValueSpan values, ValueSpan met) {
    const std::int64_t low = std::min(values.low, met.low);
    const std::int64_t high = std::max(values.high, met.high);
    return {static_cast<double>(high - low) / static_cast<double>(kLargestWord),
            static_cast<double>(low)};
}

template <class From, class To, class Lookup>
void MapElements(const unsigned char* from, unsigned char* to, std::size_t count,
                 const Lookup& lookup) {
    for (std::size_t i = 0; i < count; ++i) {
        SetElementAt(to, i, static_cast<To>(lookup(ElementAt<From>(from, i))));
    }
}

/// Stored elements become modality ones of type `To`, in place where they are as wide.
template <class To, class Map>
PixelBlock Rewritten(PixelBlock stored, const StoredLayout& layout, const Map& map) {
    const bool isInPlace = layout.ElementBytes() == static_cast<int>(sizeof(To));
    PixelBlock wider = isInPlace ? PixelBlock{} : NewPixelBlock(layout.pixelCount * sizeof(To));
    map(stored.data.get(), isInPlace ? stored.data.get() : wider.data.get());
    return isInPlace ? std::move(stored) : std::move(wider);
}

template <class To, class Entry>
PixelBlock Mapped(ElementFrame stored, const StoredLayout& layout, const Entry& entry) {
    const auto map = [&](const unsigned char* from, unsigned char* to) {
        WithElementType(layout, [&](auto element) {
            using From = decltype(element);
            if constexpr (sizeof(From) > 2) {
                MapElements<From, To>(from, to, layout.pixelCount, entry);
            } else {
                const auto table = MakeModalityTable<To>(stored.span, entry);
                MapElements<From, To>(from, to, layout.pixelCount, table);
            }
        });
    };
    return Rewritten<To>(std::move(stored.elements), layout, map);
}

// Adding needs no table. Arithmetic in the width of the result is what vectorises.
template <class To>
PixelBlock Moved(ElementFrame stored, const StoredLayout& layout, std::int64_t offset) {
    const auto step = static_cast<To>(offset);
    const auto map = [&](const unsigned char* from, unsigned char* to) {
        WithElementType(layout, [&](auto element) {
            using From = decltype(element);
            MapElements<From, To>(from, to, layout.pixelCount, [step](From value) {
                return static_cast<To>(static_cast<To>(value) + step);
            });
        });
    };
    return Rewritten<To>(std::move(stored.elements), layout, map);
}

template <class To>
PixelBlock Transformed(ElementFrame stored, const StoredLayout& layout,
                       const ModalityTransform& transform) {
    if (const auto offset = transform.Offset()) {
        return Moved<To>(std::move(stored), layout, *offset);
    }
    return Mapped<To>(std::move(stored), layout, transform);
}

std::int64_t ScaledElement(double value, const ValueScale& scale) noexcept {
    const double element = std::round((value - scale.offset) / scale.step);
    return static_cast<std::int64_t>(std::clamp(element, 0.0, double{kLargestWord}));
}

void ScaleWholeValues(ModalityFrame& frame, ElementFrame stored, const StoredLayout& layout,
                      const ModalityTransform& transform, ValueSpan met) {
    const ValueScale scale = ScaleToWords(frame.values, met);
    const auto element = [scale](std::int64_t value) {
        return ScaledElement(static_cast<double>(value), scale);
    };
    frame.scale = scale;
    frame.elements = {element(frame.values.low), element(frame.values.high)};
    frame.pixels = Mapped<std::uint16_t>(
        std::move(stored), layout, [&](std::int64_t value) { return element(transform(value)); });
}

void ScaleExactValues(ModalityFrame& frame, ElementFrame stored, const StoredLayout& layout,
                      const ModalityTransform& transform) {
    const auto [low, high] =
        std::minmax({transform.Exact(stored.span.low), transform.Exact(stored.span.high)});
    const double step = (high - low) / double{kLargestWord};
    const ValueScale scale{step > 0.0 ? step : 1.0 / double{kLargestWord}, low};
    frame.scale = scale;
    frame.elements = {0, ScaledElement(high, scale)};
    frame.pixels = Mapped<std::uint16_t>(std::move(stored), layout, [&](std::int64_t value) {
        return ScaledElement(transform.Exact(value), scale);
    });
}

// The complement of an element is what is left of the highest one, or -1, less the element: values
// that fall with stored ones rise with it.
void KeepComplement(ModalityFrame& frame, ElementFrame stored, const StoredLayout& layout,
                    const ModalityTransform& transform) {
    const std::int64_t sum =
        layout.isSigned ? -1 : (std::int64_t{1} << (8 * layout.ElementBytes())) - 1;
    frame.scale = {-transform.Slope(), transform.Exact(sum)};
    frame.elements = {sum - stored.span.high, sum - stored.span.low};
    for (auto& byte : stored.elements.Bytes()) byte = static_cast<unsigned char>(~byte);
    frame.pixels = std::move(stored.elements);
}

void KeepDetail(ModalityFrame& frame, ElementFrame stored, const StoredLayout& layout,
                const ModalityTransform& transform) {
    if (layout.ElementBytes() > 2) {
        return ScaleExactValues(frame, std::move(stored), layout, transform);
    }
    frame.bytesPerPixel = layout.ElementBytes();
    if (transform.Slope() < 0.0) {
        return KeepComplement(frame, std::move(stored), layout, transform);
    }
    frame.scale = {transform.Slope(), transform.Intercept()};
    frame.elements = stored.span;
    frame.pixels = std::move(stored.elements);
}

}  // namespace

ModalityFrame ApplyModalityStage(PixelBlock frame, const StoredLayout& layout,
                                 const ModalityTransform& transform, ValueSpan met) {
    ElementFrame stored = StoredElements(std::move(frame), layout);
    ModalityFrame result;
    result.values = ModalitySpan(stored, layout, transform);
    result.elements = result.values;
    result.bytesPerPixel = layout.ElementBytes() == 1 && FitsInto(result.values, 1) ? 1 : 2;
    if (transform.LosesDetail()) {
        KeepDetail(result, std::move(stored), layout, transform);
    } else if (!FitsInto(result.values, 2)) {
        ScaleWholeValues(result, std::move(stored), layout, transform, met);
    } else if (transform.IsIdentity() && layout.ElementBytes() == result.bytesPerPixel) {
        result.pixels = std::move(stored.elements);
    } else if (result.bytesPerPixel == 1) {
        result.pixels = Transformed<std::uint8_t>(std::move(stored), layout, transform);
    } else {
        result.pixels = Transformed<std::uint16_t>(std::move(stored), layout, transform);
    }
    return result;
}

}  // namespace quorvex
