/// Files that change, vanish or fail while the library reads them.
#pragma once

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

}  // namespace quorvex::test
