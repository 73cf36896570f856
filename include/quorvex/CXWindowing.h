/// From stored or modality values to 8-bit display values, by one table.
#pragma once

#include "quorvex/Export.h"

#include <cstdint>
#include <mutex>
#include <vector>

namespace quorvex {

class CXGSPSInfo;

/// Holds a table with one display byte for every value from `minValue` to `maxValue`, made of
/// a window or a VOI LUT, and of an inversion or a presentation LUT.
///
/// A renderer fetches a copy of the table and looks up each pixel, at the index value - minimum.
/// There is no table before the first rebuild: `PrepareGSPSProcessing`, `PrepareGSPSProcessing2` or
/// any `SetValue` that gives 0. A domain that no table can have (minimum above maximum, or more
/// than 2^28 values) leaves no table, and a table size of 0.
///
/// Safe in several threads at once: every operation takes the object's lock. A copy is deep and
/// takes the lock of what it copies, too. Whole numbers that would overflow stop at the ends of
/// their range.
class QUORVEX_API CXWindowing {
public:
    CXWindowing();
    CXWindowing(const CXWindowing& other);
    CXWindowing& operator=(const CXWindowing& other);
    ~CXWindowing();

    /// Reads one value.
    ///
    /// @param selector  0 the display table, into `first`: as many bytes as selector 2 says
    ///                  1 the modality table, into `first`: as many 32-bit entries as selector 3
    ///                  says 2 int: bytes of the display table; `second`, where not null, receives
    ///                  the
    ///                    lowest value of its domain less the post intercept (int)
    ///                  3 int: entries of the modality table
    ///                  4 int: lowest value of the domain
    ///                  5 int: the value that entry 0 of the modality table belongs to
    ///                  6 int: window level
    ///                  7 int: window width
    /// @return 0, also when there is no table to copy and nothing was written; 4 for an unknown
    ///         selector or a null `first`
    int GetValue(unsigned int selector, void* first, void* second);

    /// Changes the window or the inversion, and rebuilds the table.
    ///
    /// A step counts 2 for 12-bit pixels, 3 for 16-bit ones, else 1; a step never leads to a width
    /// below 2.
    ///
    /// @param selector  6 adds *first steps (int) to the level
    ///                  7 adds *first steps (int) to the width
    ///                  8 takes width and level as they stand from two ints
    ///                  9 turns the inversion on or off; `first` is not read
    /// @param second    never read
    /// @return 0; or 4 when nothing was changed: an unknown selector, a null `first`, a step that
    ///         leaves the value where it was, no memory
    int SetValue(unsigned int selector, void* first, void* second);

    /// Takes `offset` steps off the width. Results as of `SetValue`.
    int ChangeWWByOffset(int offset);
    /// Takes `offset` steps off the level. Results as of `SetValue`.
    int ChangeWLByOffset(int offset);

    /// Gives the window. Always 0.
    int GetWindowingFactor(int& width, int& level);

    /// Sets the rescale between the table's domain and the units of the window; a slope of 0 makes
    /// no sense. Takes effect with the next rebuild.
    void SetRescale(double slope, double intercept);
    /// Sets what selector 2 of `GetValue` takes off the domain's lowest value.
    void SetPostIntercept(double value);

    /// Makes modality table, domain, window and display table from the record, for pixels as they
    /// are stored.
    ///
    /// The LUTs of the record are copied. Tables that an earlier record left go: with a record
    /// without a VOI or presentation LUT there is none. The inversion stays. Pixels of more than 24
    /// bits have no table here.
    ///
    /// @return 0; without memory or without a record also 0, and all stays as it was
    int PrepareGSPSProcessing(CXGSPSInfo* info);
    /// The same for values that have been through the modality stage and lie from `minimum` to
    /// `maximum`; the object has no modality table then.
    int PrepareGSPSProcessing2(CXGSPSInfo* info, int minimum, int maximum);

private:
    struct Settings {
        std::int32_t inverted = 0;
        std::int32_t pixelBits = 12;
        std::int32_t windowLevel = 500;
        std::int32_t windowWidth = 1000;
        std::int32_t maxValue = 4095;
        std::int32_t minValue = 0;
        std::int16_t modalityFirstValue = 0;
        std::int32_t modalityEntryCount = 4096;
        std::int32_t tableSize = 4096;
        std::int32_t presentationShape = 0;
        double postIntercept = 0.0;
        double rescaleSlope = 1.0;
        double rescaleIntercept = 0.0;
    };
    struct Tables {
        std::vector<std::int32_t> modalityTable;
        std::vector<std::uint8_t> voiTable;
        std::vector<std::uint8_t> presentationTable;
        std::vector<std::uint8_t> windowingTable;
    };

    template <class Steps>
    int Prepare(Steps steps);
    template <class Change>
    int ChangeSettings(Change change);
    int MoveLevel(std::int64_t steps);
    int MoveWidth(std::int64_t steps);

    int MakeModalityTable(CXGSPSInfo* info);
    void MakeModalityEntries(const CXGSPSInfo& info);
    void SetDomain(std::int32_t oneEnd, std::int32_t otherEnd) noexcept;
    void SetEmptyDomain() noexcept;

    int PrepareWindowingTable(CXGSPSInfo* info);
    void TakeFullRangeWindow() noexcept;
    void TakeWindow(const CXGSPSInfo& info) noexcept;

    void UpdateWindowingTable();
    void FillFromVoiTable();
    void FillFromWindow();
    [[nodiscard]] bool IsInverse() const noexcept;

    Settings settings;
    Tables tables;
    mutable std::recursive_mutex tableLock;
};

}  // namespace quorvex
