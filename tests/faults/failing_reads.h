/// Files and callbacks that change, vanish or fail while the library reads them.
#pragma once

#include "quorvex/DicomObject.h"

#include <algorithm>
#include <span>
#include <string>

namespace quorvex::test {

enum class ReadFault {
    kTruncate,   ///< the file loses its second half
    kVanish,     ///< its name goes, and all its bytes
    kError,      ///< the system answers EIO
    kShort,      ///< a few bytes at a time, as pipes and network disks give them
    kInterrupt,  ///< a signal comes first
};

/// From its making to its end the n-th read of the library, counted from 1, meets a fault; short
/// reads and interruptions happen from then on.
class FailingReads {
public:
    FailingReads(std::string path, long n, ReadFault fault);
    ~FailingReads();
    FailingReads(const FailingReads&) = delete;
    FailingReads& operator=(const FailingReads&) = delete;

    /// Whether there was an n-th read.
    [[nodiscard]] bool HasStruck() const noexcept;
};

/// Gives a block piece by piece, without a copy, until the n-th call, which goes wrong.
struct PieceGiver {
    enum Wrong { kRefuses, kNoData, kNegative, kNothingMore };

    std::span<const unsigned char> bytes;
    std::size_t pieceBytes = 200;
    long failAt = 0;  ///< counted from 1; 0 for none
    Wrong wrong = kRefuses;
    long calls = 0;
    std::size_t at = 0;

    MC_STATUS Give(int* length, void** data, int first, int* last);
    static MC_STATUS File(const char*, void* user, int* length, void** data, int first, int* last) {
        return static_cast<PieceGiver*>(user)->Give(length, data, first, last);
    }
    static MC_STATUS Stream(int, void* user, int first, int* length, void** data, int* last) {
        return static_cast<PieceGiver*>(user)->Give(length, data, first, last);
    }
    static MC_STATUS Value(int, std::uint32_t, void* user, int first, int* length, void** data,
                           int* last) {
        return static_cast<PieceGiver*>(user)->Give(length, data, first, last);
    }
};

}  // namespace quorvex::test
