#include "codec/rle/rle_segment.h"

#include <algorithm>
#include <cstring>

namespace quorvex {
namespace {

constexpr std::size_t kLongestRun = 128;
constexpr std::size_t kStride = 16;
/// Room that a run may need when it is copied in whole strides: its bytes and a stride too many.
constexpr std::size_t kFastRoom = kLongestRun + kStride;
constexpr unsigned kNoOperation = 128;

inline void CopyStrides(const unsigned char* from, unsigned char* to, std::size_t count) noexcept {
    std::memcpy(to, from, kStride);
    for (std::size_t done = kStride; done < count; done += kStride) {
        std::memcpy(to + done, from + done, kStride);
    }
}

inline void FillStrides(int value, unsigned char* to, std::size_t count) noexcept {
    std::memset(to, value, kStride);
    for (std::size_t done = kStride; done < count; done += kStride) {
        std::memset(to + done, value, kStride);
    }
}

}  // namespace

std::size_t RleSegmentReader::Read(std::span<unsigned char> plane) noexcept {
    write_ = plane.data();
    writeEnd_ = write_ + plane.size();
    GoOn();
    if (left_ == 0) ReadFast();
    while (left_ == 0 && !isDamaged_ && read_ < readEnd_ && write_ < writeEnd_) {
        BeginRun();
        GoOn();
    }
    std::fill(write_, writeEnd_, static_cast<unsigned char>(0));
    return static_cast<std::size_t>(write_ - plane.data());
}

/// Runs far from either end, in strides that may write past the run: the next run, or the clearing
/// at the end, puts that right.
void RleSegmentReader::ReadFast() noexcept {
    if (Stored() <= kFastRoom || Room() < kFastRoom) return;
    const unsigned char* const lastRead = readEnd_ - kFastRoom;
    const unsigned char* const lastWrite = writeEnd_ - kFastRoom;
    // Places of its own: a byte written might otherwise be one of this object's.
    const unsigned char* read = read_;
    unsigned char* write = write_;
    while (read < lastRead && write <= lastWrite) {
        const unsigned control = *read++;
        if (control < kNoOperation) {
            CopyStrides(read, write, control + 1);
            read += control + 1;
            write += control + 1;
        } else if (control > kNoOperation) {
            FillStrides(*read++, write, 257 - control);
            write += 257 - control;
        }
    }
    read_ = read;
    write_ = write;
}

/// Takes the next control byte, near one of the ends.
void RleSegmentReader::BeginRun() noexcept {
    const unsigned control = *read_++;
    if (control == kNoOperation) return;
    isLiteral_ = control < kNoOperation;
    left_ = isLiteral_ ? control + 1 : 257 - control;
    if (isLiteral_ && left_ > Stored()) {
        left_ = 0;
        read_ = readEnd_;
    } else if (read_ == readEnd_) {
        left_ = 0;
        isDamaged_ = true;
    }
}

/// Gives what fits of the begun run. A replicate run's byte is passed with its last copy.
void RleSegmentReader::GoOn() noexcept {
    const std::size_t count = std::min(left_, Room());
    if (count == 0) return;
    left_ -= count;
    if (isLiteral_) {
        std::memcpy(write_, read_, count);
        read_ += count;
    } else {
        std::memset(write_, *read_, count);
        if (left_ == 0) ++read_;
    }
    write_ += count;
}

}  // namespace quorvex
