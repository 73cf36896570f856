/// Reading a file of the operating system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace quorvex {

/// Which file it is, and in what state: another one under the same name, or one that was written
/// to, differs. A change within the same tick of the system's clock (some milliseconds) does not
/// show.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::uint64_t size = 0;
    std::int64_t writtenSeconds = 0;
    std::int64_t writtenNanoseconds = 0;
    std::int64_t changedSeconds = 0;
    std::int64_t changedNanoseconds = 0;
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// A regular file, open for reading; others may read and write it meanwhile.
class FileReader {
public:
    /// `path` is UTF-8. Directories, devices and pipes count as files that cannot be opened.
    explicit FileReader(const std::string& path) noexcept;
    ~FileReader();
    FileReader(const FileReader&) = delete;
    FileReader& operator=(const FileReader&) = delete;

    [[nodiscard]] bool IsOpen() const noexcept { return descriptor_ >= 0; }
    /// The system's number for why the file is not open; 0 when it is.
    [[nodiscard]] int Error() const noexcept { return error_; }
    [[nodiscard]] std::size_t Size() const noexcept { return identity_.size; }
    /// What the file was when it was opened.
    [[nodiscard]] const FileIdentity& Identity() const noexcept { return identity_; }
    /// Whether nobody has written to it since then.
    [[nodiscard]] bool IsUnchanged() const noexcept;
    /// Fills `bytes` from `offset` on; false when the file gives less.
    [[nodiscard]] bool Read(std::uint64_t offset, std::span<unsigned char> bytes) const noexcept;

private:
    void Refuse(int error) noexcept;

    int descriptor_ = -1;
    int error_ = 0;
    FileIdentity identity_;
};

}  // namespace quorvex
