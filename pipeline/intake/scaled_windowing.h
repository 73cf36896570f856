/// Windowing over elements that may be scaled: it counts in elements, while records and hosts speak
/// in modality units.
#pragma once

#include "pipeline/value_range.h"

#include <optional>

namespace quorvex {

class CXGSPSInfo;
class CXWindowing;

/// A grey frame as windowing meets it.
struct WindowedFrame {
    ValueRange range;
    ValueScale scale;
    ExactSpan fullRange;  ///< what a window over all values covers, where elements are scaled
    int bitsStored = 0;
};

/// Makes the tables of windowing from the record, in which single bits without a window get one
/// that shows them black and white.
///
/// @return where elements are scaled the window that stands, in modality units; else nothing:
///         windowing itself has it
[[nodiscard]] std::optional<ValueWindow> PrepareWindowing(CXWindowing& windowing,
                                                          CXGSPSInfo& record,
                                                          const WindowedFrame& frame);

/// Sets the window of a windowing over scaled elements; false where that failed.
[[nodiscard]] bool PutWindow(CXWindowing& windowing, const ValueWindow& window,
                             const ValueScale& scale);

}  // namespace quorvex
