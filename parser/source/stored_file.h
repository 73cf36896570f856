/// The file behind a parser: in memory, or somewhere that it is read from when it is needed.
#pragma once

#include "foundation/platform/file_reader.h"
#include "foundation/platform/pages.h"
#include "foundation/types/block.h"
#include "quorvex/FileSource.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace quorvex {

/// A file's bytes in memory. Nobody writes to them, so that copies of a parser share them.
struct FileImage {
    explicit FileImage(HeapBlock block) noexcept : small(std::move(block)) {}
    explicit FileImage(PageBlock block) noexcept : large(std::move(block)) {}
    [[nodiscard]] std::span<const unsigned char> Bytes() const noexcept {
        return large ? large.Bytes() : small.Bytes();
    }

    HeapBlock small;
    PageBlock large;
};

/// Where a file's bytes are. No descriptor is open between two readings: a host may hold more
/// parsers than the system allows open files.
class StoredFile {
public:
    StoredFile() = default;
    /// A file of the system. A relative path counts from where the process stands now.
    [[nodiscard]] static StoredFile At(const std::string& path);
    /// A host's; nothing is called yet.
    [[nodiscard]] static StoredFile From(std::shared_ptr<FileSource> source);
    [[nodiscard]] static StoredFile In(FileImage image);

    [[nodiscard]] bool IsThere() const noexcept { return image_ || source_ || !path_.empty(); }
    /// Bytes, once it was read for the first time.
    [[nodiscard]] std::size_t Size() const noexcept { return size_; }
    /// All bytes; empty for a file that is not in memory.
    [[nodiscard]] std::span<const unsigned char> InMemory() const noexcept {
        return image_ ? image_->Bytes() : std::span<const unsigned char>{};
    }
    /// Bytes in memory take the place of where they came from.
    void KeepInMemory(FileImage image);

private:
    friend class FileReading;

    std::string path_;
    std::optional<FileIdentity> identity_;  ///< of the file that was read first
    std::shared_ptr<FileSource> source_;
    std::shared_ptr<const FileImage> image_;
    std::size_t size_ = 0;
};

/// One visit to a file, which is open as long as this lives.
class FileReading {
public:
    /// The first visit, which settles what the file is.
    explicit FileReading(StoredFile& file);
    /// A later one: a file that is another now is not open.
    explicit FileReading(const StoredFile& file);

    /// Goes on in another place of the same bytes.
    void TurnTo(const StoredFile& file);

    [[nodiscard]] bool IsOpen() const noexcept { return isOpen_; }
    /// The system's number for why a file is not open; 0 where it gives none.
    [[nodiscard]] int Error() const noexcept;
    [[nodiscard]] std::size_t Size() const noexcept { return size_; }

    /// Fills `bytes` from `offset` on; false, and nothing more is read, where that fails or would
    /// pass the end.
    [[nodiscard]] bool Read(std::uint64_t offset, std::span<unsigned char> bytes);
    /// The bytes where they lie in memory, or read into `block`; empty as Read() fails.
    [[nodiscard]] std::span<const unsigned char> Show(std::uint64_t offset, std::size_t length,
                                                      HeapBlock& block);
    /// Whether all reads were good, and of one and the same file. To be asked behind the last one:
    /// a file may be written to while it is read.
    [[nodiscard]] bool IsSound();

private:
    void Open(const StoredFile& file);
    [[nodiscard]] bool IsInside(std::uint64_t offset, std::size_t length) const noexcept {
        return offset <= size_ && length <= size_ - offset;
    }

    std::span<const unsigned char> memory_;
    FileSource* source_ = nullptr;
    std::optional<FileReader> reader_;
    std::size_t size_ = 0;
    bool isOpen_ = false;
    bool isGood_ = true;  ///< no read has failed
};

}  // namespace quorvex
