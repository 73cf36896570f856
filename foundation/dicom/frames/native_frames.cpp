#include "foundation/dicom/frames/native_frames.h"

#include "foundation/dicom/model/byte_order.h"
#include "foundation/types/checked_size.h"

#include <algorithm>
#include <cstring>

namespace quorvex::dicom {
namespace {

/// Where the byte `index` lies in stored words of `wordBytes` (a power of 2), highest byte first;
/// bytes of a word that is cut off stay.
std::size_t PlaceInWords(std::size_t index, std::size_t wordBytes, std::size_t size) noexcept {
    const std::size_t word = index & ~(wordBytes - 1);
    return word + wordBytes <= size ? index ^ (wordBytes - 1) : index;
}

template <class Word>
void CopySwapped(Bytes from, std::span<unsigned char> to) noexcept {
    for (std::size_t at = 0; at + sizeof(Word) <= to.size(); at += sizeof(Word)) {
        const Word word = Load<Word>(from.data() + at, true);
        std::memcpy(to.data() + at, &word, sizeof word);
    }
}

/// Where the byte `index` of a frame of 4:2:2 lies: the middle two of four have changed places.
std::size_t WithBothYFirst(std::size_t index, std::size_t length) {
    const std::size_t place = index % 4;
    const bool isInTheMiddle = (place == 1 || place == 2) && index - place + 4 <= length;
    return isInTheMiddle ? index - place + (3 - place) : index;
}

/// Whether a value is not longer than frames without a gap between them, made even.
bool IsBitByBit(std::size_t bytes, std::size_t frameBits, std::size_t frameCount) noexcept {
    // 2^32 bits a frame at most, and 2^31 frames.
    return bytes <= (frameBits * frameCount + 15) / 16 * 2;
}

std::optional<std::size_t> FrameBits(const PixelShape& shape) noexcept {
    // Two pixels of 4:2:2 have two samples of brightness and one each of the two colours.
    const std::uint32_t samples = shape.isHalfChroma ? 2 : shape.samplesPerPixel;
    return CheckedProduct(shape.rows, shape.columns, samples, shape.bitsAllocated);
}

}  // namespace

std::optional<std::size_t> StoredFrameBytes(const PixelShape& shape) noexcept {
    const auto bits = FrameBits(shape);
    if (!bits || *bits == 0) return std::nullopt;
    return (*bits + 7) / 8;
}

std::uint8_t PixelWordBytes(MC_VR vr, std::uint32_t bitsAllocated) noexcept {
    if (bitsAllocated == 32 || bitsAllocated == 64)
        return static_cast<std::uint8_t>(bitsAllocated / 8);
    return vr == MC_VR_OB && bitsAllocated <= 8 ? 1 : 2;
}

NativeOrder NativeOrder::Of(bool isBigEndian, MC_VR vr, const PixelShape& shape) noexcept {
    const std::uint8_t wordBytes = isBigEndian ? PixelWordBytes(vr, shape.bitsAllocated) : 1;
    return {.wordBytes = wordBytes, .sharesChroma = shape.isHalfChroma && shape.bitsAllocated == 8};
}

NativeFrames::NativeFrames(std::size_t storedBytes, std::size_t frameBytes,
                           NativeOrder order) noexcept
    : storedBytes_(storedBytes),
      frameBytes_(frameBytes == 0 ? storedBytes : frameBytes),
      order_(order) {
    if (frameBytes_ != 0)
        frameCount_ = storedBytes_ / frameBytes_ + (storedBytes_ % frameBytes_ != 0 ? 1 : 0);
}

NativeFrames NativeFrames::OfBits(std::size_t storedBytes, std::size_t frameBits,
                                  std::size_t frameCount, NativeOrder order) noexcept {
    NativeFrames frames(storedBytes, (frameBits + 7) / 8, order);
    frames.frameBits_ = frameBits;
    frames.frameCount_ = std::min(frameCount, (storedBytes * 8 + frameBits - 1) / frameBits);
    return frames;
}

void NativeFrames::DropPad(std::size_t frameCount) noexcept {
    const bool endsInPad = frameBytes_ > 1 && storedBytes_ % frameBytes_ == 1;
    if (endsInPad && frameCount_ == frameCount + 1) frameCount_ = frameCount;
}

/// Whole words of the longest kind, and the byte that the last bits may come from.
ByteRange NativeFrames::StoredRange(std::size_t index) const noexcept {
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    const std::size_t begin = LengthAhead(index);
    const std::size_t end = begin + Length(index);
    if (LieReady()) return {begin, end - begin};
    const std::size_t first = begin / kWord * kWord;
    const std::size_t behind = std::min(storedBytes_, (end + kWord) / kWord * kWord);
    return {first, behind - first};
}

std::size_t NativeFrames::Length(std::size_t index) const noexcept {
    if (frameBits_ == 0) return std::min(frameBytes_, storedBytes_ - LengthAhead(index));
    return std::min(frameBytes_, (storedBytes_ * 8 - index * frameBits_ + 7) / 8);
}

bool NativeFrames::LieReady() const noexcept {
    return frameBits_ == 0 && order_.wordBytes == 1 && !order_.sharesChroma;
}

std::size_t NativeFrames::BlockBytes() const noexcept {
    return LieReady() ? 0 : std::min(frameBytes_, storedBytes_);
}

unsigned char NativeFrames::StoredByte(std::size_t index) const noexcept {
    return stored_[PlaceInWords(index, order_.wordBytes, storedBytes_) - offset_];
}

unsigned char NativeFrames::StoredBits(std::size_t firstBit) const noexcept {
    const std::size_t index = firstBit / 8;
    const unsigned shift = firstBit % 8;
    const unsigned low = StoredByte(index);
    const unsigned high = index + 1 < storedBytes_ ? StoredByte(index + 1) : 0U;
    return static_cast<unsigned char>((low | high << 8U) >> shift);
}

/// The bits of a frame from bit 0 of `to` on.
void NativeFrames::CopyBits(std::size_t index, std::span<unsigned char> to) const noexcept {
    for (std::size_t i = 0; i < to.size(); ++i) to[i] = StoredBits(index * frameBits_ + i * 8);
    const unsigned bitsInLast = frameBits_ % 8;
    if (bitsInLast != 0 && to.size() == frameBytes_)
        to.back() = static_cast<unsigned char>(to.back() & ((1U << bitsInLast) - 1));
}

/// Copies the words from `begin` on that are whole in `to`, and gives their bytes. None where
/// frames are cut within a word.
std::size_t NativeFrames::CopyWords(std::size_t begin, std::span<unsigned char> to) const {
    if (order_.sharesChroma || begin % order_.wordBytes != 0) return 0;
    const auto words = to.first(to.size() / order_.wordBytes * order_.wordBytes);
    const Bytes from = stored_.subspan(begin - offset_, words.size());
    if (order_.wordBytes == 2) {
        CopySwapped<std::uint16_t>(from, words);
    } else if (order_.wordBytes == 4) {
        CopySwapped<std::uint32_t>(from, words);
    } else {
        CopySwapped<std::uint64_t>(from, words);
    }
    return words.size();
}

Bytes NativeFrames::Frame(std::size_t index, std::span<unsigned char> block) const noexcept {
    const std::size_t begin = LengthAhead(index);
    const std::size_t length = Length(index);
    if (LieReady()) return stored_.subspan(begin - offset_, length);
    if (frameBits_ != 0) {
        CopyBits(index, block.first(length));
        return block.first(length);
    }
    for (std::size_t i = CopyWords(begin, block.first(length)); i < length; ++i) {
        const std::size_t from = order_.sharesChroma ? WithBothYFirst(i, length) : i;
        block[i] = StoredByte(begin + from);
    }
    return block.first(length);
}

NativeFrames CutNative(std::size_t storedBytes, const PixelShape& shape, std::size_t frameBytes,
                       NativeOrder order) noexcept {
    const auto own = StoredFrameBytes(shape);
    const auto bits = FrameBits(shape);
    // A caller that cuts the started byte off means these frames, too.
    const bool endsInByte =
        own && *bits % 8 != 0 && (frameBytes == 0 || frameBytes == *own || frameBytes == *bits / 8);
    const std::size_t frameCount = std::max<std::size_t>(shape.frameCount, 1);
    if (endsInByte && IsBitByBit(storedBytes, *bits, frameCount))
        return NativeFrames::OfBits(storedBytes, *bits, frameCount, order);
    const bool takesOwn = own && (frameBytes == 0 || endsInByte || shape.isHalfChroma);
    NativeFrames frames(storedBytes, takesOwn ? *own : frameBytes, order);
    frames.DropPad(shape.frameCount);
    return frames;
}

NativeFrames CutNative(Bytes stored, const PixelShape& shape, std::size_t frameBytes,
                       NativeOrder order) noexcept {
    NativeFrames frames = CutNative(stored.size(), shape, frameBytes, order);
    frames.ShowStored(0, stored);
    return frames;
}

}  // namespace quorvex::dicom
