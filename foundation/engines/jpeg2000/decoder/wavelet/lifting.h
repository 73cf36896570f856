/// The lifting steps of ISO/IEC 15444-1 Annex F on whole rows, with vector units.
///
/// Integers are the reversible 5/3 transform, floats the irreversible 9/7 transform without its
/// scaling by K, which the caller puts into the bands' quantisation steps. Steps count from 1; odd
/// ones change samples at even places, even ones those at odd places. Rows may be written and read
/// up to kRowSlack values past their end.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvex::j2k {

inline constexpr std::size_t kRowSlack = 32;
inline constexpr float kLowScale = 1.230174104914001F;  ///< K of Table F.4

template <class T>
inline constexpr int kLiftingSteps = 4;
template <>
inline constexpr int kLiftingSteps<std::int32_t> = 2;

/// One step on row `target` between rows `above` and `below`.
void LiftRow(int step, std::int32_t* target, const std::int32_t* above, const std::int32_t* below,
             std::size_t count) noexcept;
void LiftRow(int step, float* target, const float* above, const float* below,
             std::size_t count) noexcept;

/// All steps on rows that follow each other, the last one at an odd place: step 1 on the last but
/// one, step 2 on the one before, and so on. 5/3 takes four rows, 9/7 six.
void LiftRows(std::int32_t* const* rows, std::size_t count) noexcept;
void LiftRows(float* const* rows, std::size_t count) noexcept;

/// The halves of a row: `low` for the even places, `high` for the odd ones.
template <class T>
struct RowHalves {
    const T* low = nullptr;
    std::size_t lowCount = 0;
    const T* high = nullptr;
    std::size_t highCount = 0;
    bool beginsHigh = false;  ///< the row begins at an odd place
};

/// One row from its halves, both of which have samples; `work` has room for
/// lowCount + highCount + 4 * kRowSlack values.
void JoinRow(const RowHalves<std::int32_t>& halves, std::int32_t* work, std::int32_t* out) noexcept;
void JoinRow(const RowHalves<float>& halves, float* work, float* out) noexcept;

}  // namespace quorvex::j2k
