#include "pipeline/recipe/view_values.h"

#include "foundation/types/scratch_memory.h"
#include "pipeline/displayed_image.h"
#include "pipeline/pixel_elements.h"

#include <algorithm>
#include <cstdint>

namespace quorvex {

namespace {

constexpr std::size_t kBytes = 256;
constexpr int kWidestTable = 2;  ///< bytes of an element

ViewTables TablesOver(const DisplayFunction& function, ValueSpan stored, std::size_t entries,
                      std::pmr::memory_resource& scratch) {
    const auto values =
        TakeArray<unsigned char>(scratch, static_cast<std::size_t>(stored.high - stored.low) + 1);
    function.Fill(stored.low, values);
    const auto table = TakeArray<unsigned char>(scratch, entries);
    std::ranges::fill(table, static_cast<unsigned char>(0));
    const std::size_t first = static_cast<std::size_t>(stored.low) & (entries - 1);
    const std::size_t ahead = std::min(values.size(), entries - first);
    std::copy_n(values.data(), ahead, table.data() + first);
    std::copy(values.data() + ahead, values.data() + values.size(), table.data());
    ViewTables tables{table, {}};
    const auto line = entries == kWords ? function.AsLine() : std::nullopt;
    if (line) tables.ramp = RampOfLine(line->gain, line->zero, stored.low, values);
    return tables;
}

template <class Element>
void ShowElements(const DisplayedImage& image, const DisplayFunction& function, std::size_t first,
                  std::span<unsigned char> bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = function(std::int64_t{ElementAt<Element>(image.pixels.data.get(), first + i)});
    }
}

/// Real elements. Padding is no part of the image: it is black.
template <class Element>
void ShowReals(const DisplayedImage& image, const DisplayFunction& function, std::size_t first,
               std::span<unsigned char> bytes) {
    const auto& padding = image.standard->realPadding;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto value =
            static_cast<double>(ElementAt<Element>(image.pixels.data.get(), first + i));
        bytes[i] = padding && padding->Holds(value) ? 0 : function.OfReal(value);
    }
}

}  // namespace

DisplayFunction FunctionOf(const DisplayedImage& image) {
    const StandardImage& standard = *image.standard;
    DisplayFunction function;
    function.voi = PresentVoi(image);
    function.isComplemented = (image.inverse != 0) != standard.isToggled;
    if (!standard.isGrey) return function;
    function.modality = standard.Stages().modality;
    function.presentation = standard.Stages().presentation;
    return function;
}

ViewTables MakeTables(const DisplayedImage& image, const DisplayFunction& function,
                      std::pmr::memory_resource& scratch) {
    const StandardImage& standard = *image.standard;
    if (!standard.isGrey) return TablesOver(function, {0, kBytes - 1}, kBytes, scratch);
    const std::size_t entries = image.bytesPerPixel == 1 ? kBytes : kWords;
    return TablesOver(function, standard.stored, entries, scratch);
}

ComputedRows::ComputedRows(DisplayedImage& image, const DisplayFunction& function)
    : image_(image), function_(function) {
    if (image.shrunk) line_ = function.AsLine();
}

bool ComputedRows::Serve(const DisplayedImage& image) noexcept {
    return image.shrunk || (image.standard->isGrey && image.bytesPerPixel > kWidestTable);
}

void ComputedRows::operator()(int y, int next, std::size_t first,
                              std::span<unsigned char> bytes) const {
    if (line_) return image_.shrunk->frame.ShowRow(image_, *line_, y, next, first, bytes);
    const StandardImage& standard = *image_.standard;
    first += static_cast<std::size_t>(y) * static_cast<std::size_t>(image_.imageSize.cx);
    switch (standard.sampleType) {
        case SampleType::kFloat32:
            return ShowReals<float>(image_, function_, first, bytes);
        case SampleType::kFloat64:
            return ShowReals<double>(image_, function_, first, bytes);
        case SampleType::kInteger:
            break;
    }
    standard.form.isSigned ? ShowElements<std::int32_t>(image_, function_, first, bytes)
                           : ShowElements<std::uint32_t>(image_, function_, first, bytes);
}

}  // namespace quorvex
