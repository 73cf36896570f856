#include "pipeline/recipe/standard_image.h"

#include "pipeline/displayed_image.h"
#include "pipeline/pixel_elements.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

namespace quorvex {
namespace {

constexpr int kByteBits = 8;

/// Calls `take` with every element that is no padding.
template <class Element, class Take>
void ForEachElement(const DisplayedImage& image, Take take) {
    const auto& padding = image.standard->padding;
    const std::size_t count = image.pixels.size / sizeof(Element);
    for (std::size_t i = 0; i < count; ++i) {
        const auto element = ElementAt<Element>(image.pixels.data.get(), i);
        const std::int64_t value = +element;
        if (!padding || !padding->Holds(value)) take(value);
    }
}

/// The same, each value once where they lie within 16 bits.
template <class Element, class Take>
void ForEachValue(const DisplayedImage& image, Take take) {
    constexpr std::int64_t kWords = 65536;
    const ValueSpan stored = image.standard->stored;
    if (stored.high - stored.low >= kWords) return ForEachElement<Element>(image, take);
    std::array<bool, kWords> occurring{};  // no memory is asked for: nothing here may fail
    ForEachElement<Element>(image, [&](std::int64_t value) {
        occurring[static_cast<std::size_t>(value - stored.low)] = true;
    });
    for (std::int64_t value = stored.low; value <= stored.high; ++value) {
        if (occurring[static_cast<std::size_t>(value - stored.low)]) take(value);
    }
}

StoredLayout LayoutOf(const DisplayedImage& image) {
    StoredLayout layout;
    layout.bitsAllocated = kByteBits * image.bytesPerPixel;
    layout.isSigned = image.standard->form.isSigned;
    return layout;
}

struct RealSpan {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    void Add(double value) {
        low = std::min(low, value);
        high = std::max(high, value);
    }
};

/// Modality values of the frame without its padding; of a table only entries that occur count.
RealSpan SpanOfFrame(const DisplayedImage& image, const ModalityStage& modality) {
    RealSpan span;
    const StandardImage& standard = *image.standard;
    if (!standard.padding && !modality.table) {
        span.Add(modality(standard.stored.low));
        span.Add(modality(standard.stored.high));
        return span;
    }
    WithElementType(LayoutOf(image), [&](auto element) {
        using Element = decltype(element);
        if (modality.table) {
            return ForEachValue<Element>(image,
                                         [&](std::int64_t value) { span.Add(modality(value)); });
        }
        std::int64_t low = std::numeric_limits<std::int64_t>::max();
        std::int64_t high = std::numeric_limits<std::int64_t>::min();
        ForEachElement<Element>(image, [&](std::int64_t value) {
            low = std::min(low, value);
            high = std::max(high, value);
        });
        if (low > high) return;
        span.Add(modality(low));
        span.Add(modality(high));
    });
    return span;
}

/// The window whose ends are the lowest and the highest real value, whatever their unit is.
GreyWindow WindowOverReals(const StandardImage& standard, const ModalityStage& modality) {
    if (standard.real.low > standard.real.high) return GreyWindow::Over(0.0, 0.0);
    const double one = modality.OfReal(standard.real.low);
    const double other = modality.OfReal(standard.real.high);
    constexpr double kMost = std::numeric_limits<double>::max();
    const double low = std::clamp(std::min(one, other), -kMost, kMost);
    const double high = std::clamp(std::max(one, other), -kMost, kMost);
    if (low == high) return GreyWindow::Over(low, high);
    return {low / 2.0 + high / 2.0, std::min(high - low, kMost), VoiFunction::kLinearExact};
}

RealSpan SpanOfBits(const StoredForm& form, const ModalityStage& modality) {
    RealSpan span;
    constexpr int kWordBits = 16;
    if (!modality.table || form.bitsStored > kWordBits) {
        span.Add(modality(form.Lowest()));
        span.Add(modality(form.Highest()));
        return span;
    }
    for (std::int64_t value = form.Lowest(); value <= form.Highest(); ++value) {
        span.Add(modality(value));
    }
    return span;
}

}  // namespace

GreyWindow WindowOverValues(const DisplayedImage& image) {
    const StandardImage& standard = *image.standard;
    if (!standard.isGrey) return GreyWindow::Over(0.0, 255.0);
    if (const auto& range = standard.statedRange) {
        return GreyWindow::Over(static_cast<double>(range->low), static_cast<double>(range->high));
    }
    const ModalityStage& modality = standard.Stages().modality;
    if (standard.IsReal()) return WindowOverReals(standard, modality);
    // A state without a window shows all that its modality stage can give (DICOM PS3.3 C.11.6.1).
    const bool showsAllBits = standard.form.bitsStored <= kByteBits || standard.applied;
    RealSpan span =
        showsAllBits ? SpanOfBits(standard.form, modality) : SpanOfFrame(image, modality);
    if (span.low > span.high) span = {0.0, 0.0};  // nothing but padding
    if (span.high - span.low >= 1.0 || span.high == span.low) {
        return GreyWindow::Over(span.low, span.high);
    }
    return {(span.low + span.high) / 2.0, span.high - span.low, VoiFunction::kLinearExact};
}

VoiChoice PresentVoi(const DisplayedImage& image) {
    const StandardImage& standard = *image.standard;
    if (standard.userWindow) return *standard.userWindow;
    const VoiStage& voi = standard.Stages().voi;
    std::size_t choice = standard.voiChoice;
    if (!standard.isGrey || choice >= voi.ChoiceCount()) return WindowOverValues(image);
    if (choice < voi.tables.size()) return voi.tables[choice];
    return voi.windows[choice - voi.tables.size()].window;
}

GreyWindow PresentWindow(const DisplayedImage& image) {
    const VoiChoice voi = PresentVoi(image);
    if (const auto* const window = std::get_if<GreyWindow>(&voi)) return *window;
    const GreyTable& table = *std::get<std::shared_ptr<const GreyTable>>(voi);
    const auto first = static_cast<double>(table.first);
    return GreyWindow::Over(first, first + static_cast<double>(table.entries.size() - 1));
}

}  // namespace quorvex
