/// Pixel Data that lies elsewhere than in memory.
#pragma once

#include <cstdint>
#include <span>

namespace quorvex::dicom {

/// Reads a value, wherever it lies.
class ValueReader {
public:
    virtual ~ValueReader() = default;
    /// Bytes that are there.
    [[nodiscard]] virtual std::uint64_t Size() const noexcept = 0;
    /// Fills all of `bytes` from `offset` of the value on, or answers false.
    [[nodiscard]] virtual bool Read(std::uint64_t offset, std::span<unsigned char> bytes) = 0;

protected:
    ValueReader() = default;
    ValueReader(const ValueReader&) = default;
    ValueReader& operator=(const ValueReader&) = default;
};

}  // namespace quorvex::dicom
