/// The stored bytes of one coded frame: its pieces as a walk over Pixel Data shows them, joined.
#pragma once

#include "foundation/dicom/frames/item_scan.h"
#include "foundation/types/block.h"
#include "quorvex/DicomObject.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace quorvex {

class FileReading;
class FrameIndex;

/// Takes the wanted frame's pieces from an index of the file, or from a walk over an object.
class StoredFrame {
public:
    explicit StoredFrame(int frameIndex) noexcept : frameIndex_(frameIndex) {}

    /// Callback of a walk over an object, whose `user` is the StoredFrame; pieces are copied, since
    /// they do not outlive the call.
    static MC_STATUS CollectFromObject(int messageId, std::uint32_t tag, void* user, int item,
                                       unsigned long length, unsigned char* data, int first,
                                       int last);

    /// Learns from an index where the pieces lie.
    void Find(const FrameIndex& index);
    /// Reads the pieces that were found; a lone piece in memory stays where it lies. False where
    /// they cannot be read.
    [[nodiscard]] bool Read(FileReading& file);

    /// A walk over an object has met the offset table, which only encapsulated data has.
    [[nodiscard]] bool HasOffsetTable() const noexcept { return hasOffsetTable_; }
    /// Bytes of all pieces.
    [[nodiscard]] std::size_t Length() const noexcept { return length_; }
    /// Where the first piece lies in the file; 0 without pieces.
    [[nodiscard]] std::uint64_t Offset() const noexcept { return offset_; }
    /// All pieces as one block, once they were read.
    [[nodiscard]] std::span<const unsigned char> Bytes() const noexcept { return bytes_; }

private:
    int frameIndex_;
    std::vector<dicom::FragmentPlace> pieces_;
    std::vector<unsigned char> joined_;  ///< from an object
    HeapBlock block_;                    ///< from a file
    std::span<const unsigned char> bytes_;
    std::uint64_t offset_ = 0;
    std::size_t length_ = 0;
    bool hasOffsetTable_ = false;
};

}  // namespace quorvex
