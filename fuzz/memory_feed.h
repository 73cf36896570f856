/// Bytes in memory, given to the object library in pieces, or as a file that has a name.
#pragma once

#include "quorvex/DicomObject.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace quorvex::fuzz {

/// Gives a block piece by piece, each in a block of exactly its size that the next call releases: a read
/// past it, or a late one, is seen.
class MemoryFeed {
public:
    explicit MemoryFeed(std::vector<unsigned char> bytes) noexcept : bytes_(std::move(bytes)) {}

    static MC_STATUS GiveFile(const char* /*name*/, void* user, int* length, void** data, int first,
                              int* last) {
        return static_cast<MemoryFeed*>(user)->Give(length, data, first, last);
    }
    static MC_STATUS GiveStream(int /*messageId*/, void* user, int first, int* length, void** data,
                                int* last) {
        return static_cast<MemoryFeed*>(user)->Give(length, data, first, last);
    }
    /// The same for the value of one attribute.
    static MC_STATUS GiveValue(int /*messageId*/, std::uint32_t /*tag*/, void* user, int first,
                               int* length, void** data, int* last) {
        return static_cast<MemoryFeed*>(user)->Give(length, data, first, last);
    }

private:
    MC_STATUS Give(int* length, void** data, int first, int* last) {
        constexpr std::size_t kPiece = 16384;
        if (first != 0) given_ = 0;
        const auto begin = bytes_.begin() + static_cast<std::ptrdiff_t>(given_);
        const std::size_t count = std::min(bytes_.size() - given_, kPiece);
        piece_ = std::vector<unsigned char>(begin, begin + static_cast<std::ptrdiff_t>(count));
        given_ += count;
        *length = static_cast<int>(count);
        *data = piece_.data();
        *last = given_ == bytes_.size() ? 1 : 0;
        return kMcContinue;
    }

    std::vector<unsigned char> bytes_;
    std::vector<unsigned char> piece_;
    std::size_t given_ = 0;
};

/// A file that lies in memory only, for operations that take a path.
class MemoryPath {
public:
    explicit MemoryPath(const std::vector<unsigned char>& bytes)
        : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)) {
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t count = write(descriptor_, bytes.data() + done, bytes.size() - done);
            if (count <= 0) break;
            done += static_cast<std::size_t>(count);
        }
    }
    ~MemoryPath() { close(descriptor_); }
    MemoryPath(const MemoryPath&) = delete;
    MemoryPath& operator=(const MemoryPath&) = delete;
    [[nodiscard]] CString Text() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

}  // namespace quorvex::fuzz
