/// From the elements of a frame to display bytes, as one render by the standard rules needs them.
#pragma once

#include "foundation/raster/word_ramp.h"
#include "windowing/display_function.h"

#include <cstddef>
#include <memory_resource>
#include <optional>
#include <span>

namespace quorvex {

struct DisplayedImage;

/// All stages as they stand now.
[[nodiscard]] DisplayFunction FunctionOf(const DisplayedImage& image);

/// Display bytes of all elements of a frame, each where its bits say.
struct ViewTables {
    std::span<const unsigned char> table;  ///< 256 or 65,536
    std::optional<WordRamp> ramp;          ///< the same, faster
};

/// Of a frame of up to two bytes an element, or of colours.
/// @param scratch  which the table lives in
[[nodiscard]] ViewTables MakeTables(const DisplayedImage& image, const DisplayFunction& function,
                                    std::pmr::memory_resource& scratch);

/// Rows of a frame that no table serves: one that is seen smaller, or whose elements are too wide.
/// Only what is asked for is computed.
class ComputedRows {
public:
    /// Both must outlive it.
    ComputedRows(DisplayedImage& image, const DisplayFunction& function);

    [[nodiscard]] static bool Serve(const DisplayedImage& image) noexcept;
    /// As `GreySource` of a view job.
    void operator()(int y, int next, std::size_t first, std::span<unsigned char> bytes) const;

private:
    DisplayedImage& image_;
    const DisplayFunction& function_;
    std::optional<DisplayFunction::Line> line_;
};

}  // namespace quorvex
