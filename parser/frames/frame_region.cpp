#include "foundation/dicom/frames/native_frames.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/engines/jpeg2000/jpeg2000_reduction.h"
#include "foundation/types/block.h"
#include "parser/frames/frame_fetch.h"
#include "parser/frames/packed_samples.h"
#include "parser/frames/stored_range.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace quorvex {
namespace {

bool IsInside(const CRect& region, std::int64_t columns, std::int64_t rows) noexcept {
    return region.left >= 0 && region.top >= 0 && region.left < region.right &&
           region.top < region.bottom && region.right <= columns && region.bottom <= rows;
}

bool IsWhole(const CRect& region, const FrameShape& shape) noexcept {
    return region == CRect{0, 0, shape.columns, shape.rows};
}

}  // namespace

/// Narrows a native frame, of which `range` tells the bytes, to the rows that are wanted; `range`
/// then counts from where the frame begins. Only where rows lie one after the other as they are.
bool FrameFetch::TakeRowsOnly(dicom::ByteRange& range) {
    const bool liesByRows = shape_.samplesPerPixel == 1 || shape_.planarConfiguration == 0;
    const bool isPlain = IsWholeWord(shape_.bitsAllocated) && native_->LieReady() && liesByRows &&
                         shape_.photometric.Find("42") < 0;
    if (!isPlain || !IsInside(wantedRegion_, shape_.columns, shape_.rows)) return false;
    const std::size_t rowBytes =
        std::size_t{shape_.columns} * shape_.samplesPerPixel * (shape_.bitsAllocated / 8U);
    const auto rows = static_cast<std::size_t>(wantedRegion_.Height());
    const std::size_t begin = static_cast<std::size_t>(wantedRegion_.top) * rowBytes;
    if (begin >= range.length) return false;
    range = {begin, std::min(rows * rowBytes, range.length - begin)};
    native_.emplace(range.length, rows * rowBytes, dicom::NativeOrder{});
    frameIndex_ = 0;
    shape_.rows = static_cast<std::uint16_t>(rows);
    rowsAhead_ = wantedRegion_.top;
    return true;
}

/// How often the stream's picture can be halved.
int FrameFetch::LevelsOfStream() const {
    const bool isTaken = !native_ && isEncoded_ &&
                         CodingOf(shape_.syntax) == FrameCoding::kJpeg2000 &&
                         shape_.bitsAllocated != 1;
    const auto deepest = isTaken ? ReduceJpeg2000(coded_.Bytes(), {1, 1}) : std::nullopt;
    const bool isFrame = deepest && deepest->whole == CSize{shape_.columns, shape_.rows};
    return isFrame ? deepest->discardedLevels : 0;
}

/// From here on the frame is the region. False, with nothing changed, where all of it has to be
/// decoded.
bool FrameFetch::TakeRegionOfStream(const CRect& region, int level) {
    if (LevelsOfStream() < std::max(level, 1)) return false;
    const auto size = ReducedSizeOf(coded_.Bytes(), level);
    if (!size || !IsInside(region, size->cx, size->cy)) return false;
    codedRegion_ = region;
    discardedLevels_ = level;
    shape_.columns = static_cast<std::uint16_t>(region.Width());
    shape_.rows = static_cast<std::uint16_t>(region.Height());
    return true;
}

QUORVEX_MESSAGE FrameFetch::CountLevels(int& count) {
    const QUORVEX_MESSAGE checked = Check();
    const bool isOther =
        checked == QVM_SUCCESS && CodingOf(shape_.syntax) != FrameCoding::kJpeg2000;
    if (isOther) count = 1;
    if (isOther || checked != QVM_SUCCESS) return checked;
    unsigned long size = 0;
    const QUORVEX_MESSAGE collected = Collect(size);
    if (collected == QVM_SUCCESS) count = LevelsOfStream() + 1;
    return collected;
}

QUORVEX_MESSAGE FrameFetch::DecodeRegion(const CRect& region, int level, unsigned char*& data,
                                         unsigned long& size) {
    if (level == 0) wantedRegion_ = region;
    const QUORVEX_MESSAGE collected = Collect(size);
    if (collected != QVM_SUCCESS) return collected;
    CRect part{region.left, region.top - rowsAhead_, region.right, region.bottom - rowsAhead_};
    const bool isInside = level == 0 && IsInside(part, shape_.columns, shape_.rows);
    if (level < 0 || (level == 0 && !isInside)) return QVM_ERROR_INVALID_OUTPUT_SIZE;
    if (TakeRegionOfStream(part, level)) {
        part = {0, 0, shape_.columns, shape_.rows};
    } else if (level != 0) {
        return QVM_ERROR_INVALID_OUTPUT_SIZE;
    }
    unsigned char* decoded = nullptr;
    const QUORVEX_MESSAGE result = DecodeCollectedUnpacked(decoded, size);
    std::unique_ptr<unsigned char[]> frame(decoded);
    if (result != QVM_SUCCESS) return result;
    // Bits that may have a meaning of their own must not be mixed into the others.
    if (level != 0 && !BringNearToStored(shape_, {decoded, size}))
        return QVM_ERROR_FAILED_TO_DECOMPRESS;
    if (IsWhole(part, shape_)) {
        data = frame.release();
        return QVM_SUCCESS;
    }
    const std::size_t pixelBytes = size / (std::size_t{shape_.columns} * shape_.rows);
    const auto lineBytes = static_cast<std::size_t>(part.Width()) * pixelBytes;
    HeapBlock block(lineBytes * static_cast<std::size_t>(part.Height()));
    for (int y = part.top; y < part.bottom; ++y) {
        const std::size_t from =
            static_cast<std::size_t>(y) * shape_.columns + static_cast<std::size_t>(part.left);
        std::memcpy(block.Data() + static_cast<std::size_t>(y - part.top) * lineBytes,
                    frame.get() + from * pixelBytes, lineBytes);
    }
    size = block.Size();
    data = block.Release();
    return QVM_SUCCESS;
}

}  // namespace quorvex
