/// What a CXWindowing hides.
#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

namespace quorvex {

class CXGSPSInfo;

struct WindowingSettings {
    std::int32_t inverted = 0;  ///< 1 when the user asks for the inverse
    std::int32_t pixelBits = 12;
    std::int32_t windowLevel = 500;  ///< in output units, after the rescale
    std::int32_t windowWidth = 1000;
    std::int32_t maxValue = 4095;  ///< last value of the table's domain
    std::int32_t minValue = 0;     ///< first value of the table's domain
    std::int16_t modalityFirstValue = 0;
    std::int32_t modalityEntryCount = 4096;
    std::int32_t tableSize = 4096;
    std::int32_t presentationShape = 0;  ///< as in CXGSPSInfo
    double postIntercept = 0.0;
    double rescaleSlope = 1.0;
    double rescaleIntercept = 0.0;
};

/// A table that is not there is empty.
struct WindowingTables {
    std::vector<std::int32_t> modalityTable;
    std::vector<std::uint8_t> voiTable;           ///< tableSize bytes
    std::vector<std::uint8_t> presentationTable;  ///< 256 bytes
    std::vector<std::uint8_t> windowingTable;     ///< tableSize bytes: the result
};

/// Settings and tables of a CXWindowing, and the lock that guards them: whoever calls an operation
/// of this object holds it. An operation that throws std::bad_alloc may leave settings and tables
/// of two times; its caller puts the old ones back.
struct WindowingState {
    WindowingSettings settings;
    WindowingTables tables;
    std::recursive_mutex tableLock;

    /// Makes the modality table that the record asks for, and sets the domain that it leads to.
    void MakeModalityTable(const CXGSPSInfo& info);
    /// Makes the VOI and the presentation table of the record, or takes its window and its shape.
    void PrepareWindowingTable(const CXGSPSInfo& info);
    /// A window that shows the whole domain.
    void TakeFullRangeWindow() noexcept;
    /// Makes the display table anew from all that is set.
    void UpdateWindowingTable();

private:
    void MakeModalityEntries(const CXGSPSInfo& info);
    void SetDomain(std::int32_t oneEnd, std::int32_t otherEnd) noexcept;
    void SetEmptyDomain() noexcept;
    void TakeWindow(const CXGSPSInfo& info) noexcept;
    void FillFromVoiTable();
    void FillFromWindow();
    [[nodiscard]] bool IsInverse() const noexcept;
};

}  // namespace quorvex
