/// Reading a whole file from the operating system.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace quorvex {

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
    [[nodiscard]] std::size_t Size() const noexcept { return size_; }
    /// Fills `bytes` from the file's start; false when the file gives less.
    [[nodiscard]] bool Read(std::span<unsigned char> bytes) const noexcept;

private:
    void Refuse(int error) noexcept;

    int descriptor_ = -1;
    int error_ = 0;
    std::size_t size_ = 0;
};

}  // namespace quorvex
