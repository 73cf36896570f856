/// Work done in a process of its own, so that a crash, an endless loop or a claim on memory is seen
/// and does no harm.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace quorvex::test {

/// Expects that `work` ends by itself, within so many seconds of processor time (more under a
/// sanitizer, a minute in any case) and bytes of address space above what there was before.
void ExpectCost(const std::string& what, double seconds, const std::function<void()>& work,
                std::size_t memory = SIZE_MAX);

}  // namespace quorvex::test
