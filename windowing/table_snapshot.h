/// Tables of a CXWindowing as they are at one moment.
///
/// A count, a first value and a table that are read one after the other belong to three moments
/// when another thread changes the window in between. Here all are copied under one lock.
#pragma once

#include <cstdint>
#include <memory_resource>
#include <span>
#include <vector>

namespace quorvex {

class CXWindowing;

/// `entries` has as many as the windowing counts: zeros before the first rebuild.
struct DisplayTableSnapshot {
    std::span<const std::uint8_t> entries;
    int first = 0;            ///< the value of entry 0
    int firstAsReported = 0;  ///< that value less the post intercept
};
struct ModalityTableSnapshot {
    std::vector<std::int32_t> entries;
    int first = 0;
};

/// Reads a CXWindowing. Both operations throw std::bad_alloc.
struct WindowingReader {
    /// @param memory  which the entries live in
    [[nodiscard]] static DisplayTableSnapshot DisplayTable(const CXWindowing& windowing,
                                                           std::pmr::memory_resource& memory);
    [[nodiscard]] static ModalityTableSnapshot ModalityTable(const CXWindowing& windowing);
};

}  // namespace quorvex
