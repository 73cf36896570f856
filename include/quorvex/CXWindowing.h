/// From stored or modality values to 8-bit display values, by one table.
#pragma once

#include "quorvex/Export.h"

#include <memory>

namespace quorvex {

class CXGSPSInfo;
struct WindowingReader;
struct WindowingState;

/// Keeps a table with one display byte for every value of a domain, made of a window or a VOI LUT,
/// and of an inversion or a presentation LUT.
///
/// A renderer fetches a copy of the table and looks up each pixel, at the index value - first value
/// of the domain. There is no table before the first rebuild: `PrepareGSPSProcessing`,
/// `PrepareGSPSProcessing2` or any `SetValue` that gives 0. A domain that no table can have (its
/// first value above its last one, or more than 2^28 values) leaves no table: its count is 0 then.
///
/// Safe in several threads at once: every operation takes the object's lock. A copy is deep and
/// takes the lock of its source, too. Integers that would overflow are clamped to their range.
class QUORVEX_API CXWindowing {
public:
    /// What `GetValue` reads and `SetValue` changes.
    enum Selector : unsigned int {
        kDisplayTable = 0,
        kModalityTable = 1,
        kDisplayTableCount = 2,
        kModalityTableCount = 3,
        kDisplayTableFirst = 4,
        kModalityTableFirst = 5,
        kWindowLevel = 6,
        kWindowWidth = 7,
        kWindow = 8,
        kInversion = 9,
    };

    CXWindowing();
    CXWindowing(const CXWindowing& other);
    CXWindowing& operator=(const CXWindowing& other);
    ~CXWindowing();

    /// Reads one value into `first`, which the caller supplies.
    ///
    /// Each call is safe by itself, but a count, a first value and a table that are read in several
    /// calls belong together only if no other thread changes the window or the domain in between:
    /// a host that shares the object reads them from a copy of it.
    ///
    ///     selector               written to `first`
    ///     kDisplayTable          kDisplayTableCount bytes; none before the first rebuild
    ///     kModalityTable         kModalityTableCount entries of 32 bits; none without such a table
    ///     kDisplayTableCount     int: bytes of the display table
    ///     kModalityTableCount    int: entries of the modality table
    ///     kDisplayTableFirst     int: the value that byte 0 of the display table belongs to
    ///     kModalityTableFirst    int: the value that entry 0 of the modality table belongs to
    ///     kWindowLevel           int: window level
    ///     kWindowWidth           int: window width
    ///
    /// @param second  written for kDisplayTableCount only, and may be null: int, the first value of
    ///                the domain less the post intercept, cut towards zero
    /// @return 0, also when there is no table to copy and nothing was written; 4 for another
    ///         selector or a null `first`
    int GetValue(unsigned int selector, void* first, void* second);

    /// Changes the window or the inversion, and rebuilds the table.
    ///
    ///     selector               taken from `first`
    ///     kWindowLevel           int: steps that are added to the level
    ///     kWindowWidth           int: steps that are added to the width, which stays at least 2
    ///     kWindow                two ints: the new width, then the new level, as they are
    ///     kInversion             nothing, and it may be null: the inversion is toggled
    ///
    /// A step is 2 for 12-bit pixels, 3 for 16-bit ones, else 1.
    ///
    /// @param second  never read
    /// @return 0; or 4 when nothing was changed: another selector, a null `first`, a step that
    ///         leaves the value as it was, no memory
    int SetValue(unsigned int selector, void* first, void* second);

    /// Takes `offset` steps off the width. Results as of `SetValue`.
    int ChangeWWByOffset(int offset);
    /// Takes `offset` steps off the level. Results as of `SetValue`.
    int ChangeWLByOffset(int offset);

    /// Gives the window. Always 0.
    int GetWindowingFactor(int& width, int& level);

    /// Sets the rescale between the table's domain and the units of the window; the slope must not
    /// be 0. Takes effect with the next rebuild.
    void SetRescale(double slope, double intercept);
    /// Sets what `GetValue` takes off the first value of the domain (kDisplayTableCount, `second`).
    void SetPostIntercept(double value);

    /// Makes modality table, domain, window and display table from the record, for pixels as they
    /// are stored.
    ///
    /// The LUTs of the record are copied. Tables of an earlier record are dropped: a record without
    /// a VOI or presentation LUT leaves no such table. The inversion stays. Pixels of more than 24
    /// bits have no table here.
    ///
    /// Of a VOI or presentation LUT with 8 bits, entry k is the low byte of word k / 2, the first
    /// and the last one that of the first and the last word; of one with more bits it is the
    /// highest 8 of them. The last value of the domain shows the last entry.
    ///
    /// @return 0; without memory or without a record also 0, and all stays as it was
    int PrepareGSPSProcessing(CXGSPSInfo* info);
    /// The same for values that have been through the modality stage and lie from `minimum` to
    /// `maximum`; the object has no modality table then.
    int PrepareGSPSProcessing2(CXGSPSInfo* info, int minimum, int maximum);

private:
    friend struct WindowingReader;

    std::unique_ptr<WindowingState> state_;
};

}  // namespace quorvex
