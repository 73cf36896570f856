/// The table that a render job gets: a display value for every element that a pixel can hold.
#pragma once

#include "pipeline/value_range.h"

#include <memory_resource>
#include <span>

namespace quorvex {

class CXWindowing;

/// How a job reads the pixels.
enum class ElementWidth { kByte, kWord };

/// 256 or 65,536 display values, indexed by the element read as an unsigned number.
///
/// An element stands for the value of the frame whose low bits it holds. Elements that no value of
/// the frame has are read as they are, signed where the domain begins below 0. Values outside the
/// domain of windowing take the nearest entry of its table. Empty when windowing has no table.
/// @param memory  which it lives in, and what it is made with
[[nodiscard]] std::span<unsigned char> DisplayTable(const CXWindowing& windowing,
                                                    const ValueRange& range, ElementWidth width,
                                                    std::pmr::memory_resource& memory);

}  // namespace quorvex
