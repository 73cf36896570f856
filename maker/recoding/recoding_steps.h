/// The steps of a recoding, whoever holds the frames.
#pragma once

#include "maker/recoding/recoding_plan.h"
#include "quorvex/CxDcmParser.h"

#include <memory>
#include <span>
#include <vector>

namespace quorvex {

/// Coded frames may be far smaller than pictures, but a few bytes make no pictures of gigabytes.
[[nodiscard]] bool IsPlausible(std::size_t all, std::size_t stored);

/// One frame as it is stored, whole and of that size.
/// @return as RecodeByStandard() for a frame
[[nodiscard]] QUORVEX_MESSAGE FetchStoredFrame(CxDcmParser& parser, int index,
                                               std::size_t frameBytes,
                                               std::unique_ptr<unsigned char[]>& frame,
                                               unsigned long& size);

/// @param frame  with a byte for a sample of a single bit; may be changed
[[nodiscard]] QUORVEX_MESSAGE CodeOne(const RecodingPlan& plan, std::span<unsigned char> frame,
                                      std::vector<unsigned char>& coded);

[[nodiscard]] double RatioOf(std::size_t plain, std::size_t coded);

/// What the coding demands, and what is known of the source.
/// @param sourceRatio  of the source's coding
void DescribeRecoded(const RecodingPlan& plan, double sourceRatio, CDcmObject& object);

/// What a lossy form demands.
/// @param ratio  of the new frames
/// @return QVM_SUCCESS or QVM_ERROR_INVALID_MAKER_PARAM
[[nodiscard]] QUORVEX_MESSAGE DescribeLoss(const RecodingPlan& plan, double ratio,
                                           CDcmObject& object);

}  // namespace quorvex
