/// A file that is there whole, or not at all.
#pragma once

#include "foundation/dicom/writing/byte_sink.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace quorvex::dicom {

/// Writes beside its path under a name of its own, which `Commit` changes to the path. Without a
/// commit the destructor leaves nothing behind, and a file that was there stays as it was.
class OutputFile final : public ByteSink {
public:
    explicit OutputFile(std::string path);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile() override;

    [[nodiscard]] bool IsOpen() const noexcept { return file_ != nullptr; }
    [[nodiscard]] bool IsGood() const noexcept { return isGood_; }
    void Put(Bytes bytes) override;
    /// Replaces bytes that were put; the next ones go behind all of them.
    void PutAt(std::uint64_t offset, Bytes bytes);
    /// Puts what another file has from `offset` on.
    void PutRestOf(OutputFile& other, std::uint64_t offset);
    /// False when anything could not be written.
    [[nodiscard]] bool Commit();

private:
    struct Closer {
        void operator()(std::FILE* file) const noexcept { static_cast<void>(std::fclose(file)); }
    };

    std::string path_;
    std::string temporaryPath_;
    std::unique_ptr<std::FILE, Closer> file_;
    bool isGood_ = true;
};

}  // namespace quorvex::dicom
