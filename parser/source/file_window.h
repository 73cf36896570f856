/// The part of a file that its header is read through.
#pragma once

#include "parser/source/stored_file.h"
#include "quorvex/DicomObject.h"

#include <cstddef>
#include <span>

namespace quorvex {

/// Looks at a file from its start on. A small file is read whole; of a larger one a first window is
/// read, and each one behind it is as long as all that were ahead, up to a limit: a long header
/// takes few reads, and a short one brings few bytes too many.
class FileWindow {
public:
    static constexpr std::size_t kSmallFile = std::size_t{64} << 10;

    explicit FileWindow(FileReading& reading) noexcept : reading_(reading) {}

    /// Bytes that are there until the next look; empty where they cannot be read.
    [[nodiscard]] std::span<const unsigned char> Look(std::size_t offset, std::size_t count);
    /// The file's first bytes, at least so many where it has them; empty where they cannot be read.
    [[nodiscard]] std::span<const unsigned char> LookFar(std::size_t count);
    /// Fills `bytes`, out of the window where that has them.
    [[nodiscard]] bool Copy(std::size_t offset, std::span<unsigned char> bytes);
    [[nodiscard]] std::size_t FileSize() const noexcept { return reading_.Size(); }
    /// The file, where the window holds all of it; the window is empty then.
    [[nodiscard]] HeapBlock TakeWhole() noexcept;

private:
    static constexpr std::size_t kFirstBytes = std::size_t{16} << 10;
    static constexpr std::size_t kMostBytes = std::size_t{1} << 20;

    [[nodiscard]] bool Has(std::size_t offset, std::size_t count) const noexcept {
        return offset >= start_ && offset + count <= start_ + bytes_.size();
    }

    FileReading& reading_;
    HeapBlock block_;
    std::span<const unsigned char> bytes_;
    std::size_t start_ = 0;
    std::size_t next_ = kFirstBytes;
};

/// Hands a file from one place on to the object library, piece by piece.
class PieceReader {
public:
    PieceReader(FileWindow& window, std::size_t base) noexcept
        : window_(window), base_(base), total_(window.FileSize() - base) {}

    // The callbacks of the object library, whose user data is a PieceReader.
    static MC_STATUS ReadFromFile(const char* fileName, void* user, int* length, void** data,
                                  int first, int* last);
    static MC_STATUS ReadFromStream(int messageId, void* user, int first, int* length, void** data,
                                    int* last);

private:
    MC_STATUS Deliver(bool isFirst, int* length, void** data, int* last);

    FileWindow& window_;
    std::size_t base_;
    std::size_t total_;
    std::size_t delivered_ = 0;
};

}  // namespace quorvex
