#include "parser/frames/frame_fetch.h"

#include "codec/frame_block.h"
#include "codec/frame_decoder.h"
#include "codec/native/fragment_pixels.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/dicom/object/pixel_shape.h"
#include "foundation/engines/jpeg2000/jpeg2000_reduction.h"
#include "foundation/types/cancellation.h"
#include "foundation/types/undo.h"
#include "parser/frames/packed_samples.h"
#include "parser/frames/stored_range.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace quorvex {
namespace {

/// Coded bytes must never pass for pixels, and uncoded ones have no decoder.
bool IsDecodable(TRANSFER_SYNTAX syntax, bool isEncoded) noexcept {
    return IsEncapsulated(syntax) ? HasDecoder(syntax) : !isEncoded;
}

}  // namespace

QUORVEX_MESSAGE FrameFetch::Decode(unsigned char*& data, unsigned long& size,
                                   unsigned long sourceLength) {
    const QUORVEX_MESSAGE collected = Collect(size);
    return collected == QVM_SUCCESS ? DecodePacked(data, size, sourceLength) : collected;
}

QUORVEX_MESSAGE FrameFetch::DecodeReduced(CSize least, unsigned char*& data, unsigned long& size) {
    QUORVEX_MESSAGE result = Collect(size);
    if (result != QVM_SUCCESS) return result;
    const FrameShape whole = shape_;
    const bool isDeeper = Reduce(least);
    unsigned char* decoded = nullptr;
    result = DecodePacked(decoded, size, 0);
    std::unique_ptr<unsigned char[]> frame(decoded);
    if (result == QVM_SUCCESS && isDeeper && !BringNearToStored(shape_, {decoded, size})) {
        shape_ = whole;
        discardedLevels_ = 0;
        result = DecodePacked(decoded, size, 0);
        frame.reset(result == QVM_SUCCESS ? decoded : nullptr);
    }
    if (result == QVM_SUCCESS) data = frame.release();
    return result;
}

/// Whether the frame will be reduced, and its stream has more bits than Bits Stored: those above
/// may have a meaning of their own, which must not be mixed into the others.
bool FrameFetch::Reduce(CSize least) {
    const bool isTaken =
        !native_ && CodingOf(shape_.syntax) == FrameCoding::kJpeg2000 && shape_.bitsAllocated != 1;
    const auto reduction = isTaken ? ReduceJpeg2000(coded_.Bytes(), least) : std::nullopt;
    const bool isFrame =
        reduction && reduction->whole.cx == shape_.columns && reduction->whole.cy == shape_.rows;
    if (!isFrame) return false;
    shape_.columns = static_cast<std::uint16_t>(reduction->reduced.cx);
    shape_.rows = static_cast<std::uint16_t>(reduction->reduced.cy);
    discardedLevels_ = reduction->discardedLevels;
    return reduction->precision > shape_.StoredBits();
}

/// Samples of 1 bit come packed from every coding.
QUORVEX_MESSAGE FrameFetch::DecodePacked(unsigned char*& data, unsigned long& size,
                                         unsigned long sourceLength) {
    const QUORVEX_MESSAGE decoded = DecodeCollected(data, size, sourceLength);
    const bool areBits = shape_.bitsAllocated == 1 && !native_;
    if (decoded == QVM_SUCCESS && areBits) PackBits({data, size});
    return decoded;
}

QUORVEX_MESSAGE FrameFetch::DecodeUnpacked(unsigned char*& data, unsigned long& size) {
    const QUORVEX_MESSAGE collected = Collect(size);
    return collected == QVM_SUCCESS ? DecodeCollectedUnpacked(data, size) : collected;
}

QUORVEX_MESSAGE FrameFetch::DecodeCollectedUnpacked(unsigned char*& data, unsigned long& size) {
    const bool isPacked = native_ && !IsWholeWord(shape_.bitsAllocated);
    const auto sampleBytes = UnpackedBytes(shape_.bitsAllocated);
    if (!isPacked || !IsDecodable(shape_.syntax, isEncoded_)) return DecodeCollected(data, size, 0);
    if (!sampleBytes) return QVM_ERROR_INVALID_BITS_ALLOCATED;
    return Unpack(*sampleBytes, data, size);
}

/// From here on the frame is one of words.
QUORVEX_MESSAGE FrameFetch::Unpack(unsigned sampleBytes, unsigned char*& data,
                                   unsigned long& size) {
    const auto packed = NativeSource();
    const unsigned bits =
        std::exchange(shape_.bitsAllocated, static_cast<std::uint16_t>(8 * sampleBytes));
    const auto plainBytes = shape_.PlainFrameBytes();
    if (!IsPlausiblePicture(plainBytes, packed.size())) return QVM_ERROR_FAILED_TO_DECOMPRESS;
    const HeapBlock words(*plainBytes);
    UnpackSamples(packed, bits, sampleBytes, words.Bytes());
    return Decompress(words.Bytes(), data, size);
}

void FrameFetch::TellQuality() noexcept {
    const bool isCut = native_ && !native_->IsWhole(static_cast<std::size_t>(frameIndex_));
    const auto whole = isGuessed_ ? FrameQuality::kGuessed : FrameQuality::kWhole;
    parser_.quality = isWhole_ && !isCut ? whole : FrameQuality::kPartial;
}

QUORVEX_MESSAGE FrameFetch::Collect(unsigned long& size) {
    Cancellation::OfThisThread().ThrowIfAsked();
    parser_.quality = FrameQuality::kNone;
    QUORVEX_MESSAGE checked = Check();
    if (checked == QVM_SUCCESS) checked = TakeRules();
    if (checked != QVM_SUCCESS) return checked;
    if (shape_.bitsAllocated == 0) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    if (HasFloats()) return CollectFloats();
    const QUORVEX_MESSAGE collected =
        file_.FramesLieInFile(shape_.syntax) ? CollectFromFile() : CollectFromObject();
    const QUORVEX_MESSAGE taken = collected == QVM_SUCCESS ? TakeNativeFrame() : collected;
    size = isEncoded_ ? 0 : shape_.NativeFrameBytes().value_or(0);
    return taken;
}

/// From here on a frame that its fragment has as native pixels is the only one of a native value.
QUORVEX_MESSAGE FrameFetch::TakeNativeFrame() {
    const _IMAGE_PROCESS_PARAM param = shape_.DecodingParam();
    const FrameDescription frame(param);
    if (native_ || !BecomesNative(frame)) return QVM_SUCCESS;
    auto pixels = TakeOutOfFragment(frame, coded_.Bytes());
    if (!pixels) return QVM_ERROR_FAILED_TO_DECOMPRESS;
    fragment_ = std::move(pixels->block);
    isWhole_ = pixels->isWhole;
    isEncoded_ = false;
    shape_.syntax = kExplicitLittleEndian;
    const dicom::PixelShape stored{.bitsAllocated = shape_.bitsAllocated,
                                   .isHalfChroma = dicom::IsHalfChroma(shape_.photometric)};
    native_.emplace(fragment_.Bytes(), fragment_.Size(),
                    dicom::NativeOrder::Of(false, MC_VR_OB, stored));
    frameIndex_ = 0;
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE FrameFetch::DecodeCollected(unsigned char*& data, unsigned long& size,
                                            unsigned long sourceLength) {
    if (!IsDecodable(shape_.syntax, isEncoded_)) return QVM_ERROR_FAILED_TO_DECOMPRESS;
    if (HasFloats()) return CopyFloats(data, size, sourceLength);
    auto source = native_ ? NativeSource() : coded_.Bytes();
    if (sourceLength != 0 && sourceLength < StoredBytes()) {
        source = source.first(sourceLength);
        isWhole_ = false;
    }
    if (!IsItsOwnResult(source)) return Decompress(source, data, size);
    size = block_.Size();
    data = block_.Release();
    TellQuality();
    return QVM_SUCCESS;
}

/// Half a sample is none.
QUORVEX_MESSAGE FrameFetch::CopyFloats(unsigned char*& data, unsigned long& size,
                                       unsigned long sourceLength) {
    auto source = NativeSource();
    if (sourceLength != 0 && sourceLength < source.size()) {
        source = source.first(sourceLength);
        isWhole_ = false;
    }
    const auto bytes = shape_.PlainFrameBytes();
    if (!IsPlausiblePicture(bytes, source.size())) return QVM_ERROR_FAILED_TO_DECOMPRESS;
    HeapBlock frame(*bytes);
    const std::size_t whole = source.size() - source.size() % (shape_.bitsAllocated / 8U);
    std::ranges::copy(source.first(whole), frame.Data());
    std::ranges::fill(frame.Bytes().subspan(whole), static_cast<unsigned char>(0));
    size = frame.Size();
    data = frame.Release();
    TellQuality();
    return QVM_SUCCESS;
}

/// Whether the block holds all of a frame that needs no more work.
bool FrameFetch::IsItsOwnResult(std::span<const unsigned char> source) const {
    const auto plainBytes = shape_.PlainFrameBytes();
    return block_ && source.size() == block_.Size() && !IsEncapsulated(shape_.syntax) &&
           shape_.samplesPerPixel != 3 && plainBytes && source.size() >= *plainBytes;
}

std::size_t FrameFetch::StoredBytes() const noexcept {
    return native_ ? native_->Length(static_cast<std::size_t>(frameIndex_)) : coded_.Length();
}

/// Whether the last byte of a cut frame is the high one of its sample. Of a colour pixel that is
/// cut nothing is shown.
bool FrameFetch::EndsInHighByte(std::size_t length) const noexcept {
    const bool isShown = shape_.samplesPerPixel != 3 || shape_.planarConfiguration == 1;
    return length % 2 != 0 && isShown && shape_.bitsAllocated == 16 && IsBigEndian(shape_.syntax);
}

/// The frame in this machine's byte order, where it lies or in the block.
std::span<const unsigned char> FrameFetch::NativeSource() {
    const auto frame = static_cast<std::size_t>(frameIndex_);
    const std::size_t length = native_->Length(frame);
    const bool endsInHighByte = EndsInHighByte(length);
    if (native_->LieReady() && !endsInHighByte) {
        if (!stored_) return native_->Frame(frame, {});
        block_ = std::move(stored_);
        return block_.Bytes();
    }
    block_ = HeapBlock(length + (endsInHighByte ? 1 : 0));
    const auto bytes = block_.Bytes();
    const auto pixels = native_->Frame(frame, bytes);
    if (native_->LieReady()) std::ranges::copy(pixels, bytes.begin());
    if (endsInHighByte) {
        bytes[length] = bytes[length - 1];
        bytes[length - 1] = 0;
    }
    return bytes;
}

QUORVEX_MESSAGE FrameFetch::Decompress(std::span<const unsigned char> source, unsigned char*& data,
                                       unsigned long& size) {
    _IMAGE_PROCESS_PARAM param = shape_.DecodingParam();
    // Only sources in another byte order are written to, and none comes here.
    auto* const bytes = const_cast<unsigned char*>(source.data());
    FrameDecoder decoder(param, {bytes, source.size()}, kGeneralAllocator, false);
    if (parser_.rules == Rules::kStandard) decoder.TakeExactColours(shape_.StoredBits());
    decoder.TakeSignBits(shape_.StoredBits());
    decoder.DiscardLevels(discardedLevels_);
    decoder.TakeRegion(codedRegion_);
    unsigned char* decoded = nullptr;
    unsigned long decodedSize = 0;
    const UndoUnlessKept release([&] { delete[] decoded; });  // the decoder may throw
    const QUORVEX_MESSAGE result = decoder.Decode(decoded, decodedSize);
    if (result == QVM_ERROR_INVALID_PHOTOMETRIC) return result;
    if (parser_.rules == Rules::kStandard && !decoder.IsSupported())
        return QVM_ERROR_INVALID_JPEG_STREAM;
    if (result != QVM_SUCCESS && result != QVM_FRAME_COPIED) return QVM_ERROR_FAILED_TO_DECOMPRESS;
    // The size of a broken stream is how far it came; the zeros behind that are of the frame too.
    size = std::max<unsigned long>(decodedSize, shape_.DecodedFrameBytes());
    if (parser_.rules == Rules::kStandard && MayOvershoot(shape_, source))
        ClampToBitsStored(shape_, {decoded, decodedSize});
    data = std::exchange(decoded, nullptr);
    isWhole_ = isWhole_ && decoder.IsWhole();
    TellQuality();
    return QVM_SUCCESS;
}

/// A frame of 16-bit grey that is its own decoded form; empty for any other.
std::span<const unsigned char> FrameFetch::WordsInPlace() const {
    const bool isPlainGrey =
        shape_.bitsAllocated == 16 && shape_.samplesPerPixel == 1 && !IsEncapsulated(shape_.syntax);
    if (!isPlainGrey || !native_ || !native_->LieReady()) return {};
    const auto frame = native_->Frame(static_cast<std::size_t>(frameIndex_), {});
    const bool isAligned = reinterpret_cast<std::uintptr_t>(frame.data()) % 2 == 0;
    if (!isAligned || frame.size() != shape_.DecodedFrameBytes()) return {};
    return frame;
}

QUORVEX_MESSAGE FrameFetch::View(std::unique_ptr<unsigned char[]>& owner,
                                 std::span<const unsigned char>& frame) {
    unsigned long size = 0;
    const QUORVEX_MESSAGE collected = Collect(size);
    if (collected != QVM_SUCCESS) return collected;
    frame = WordsInPlace();
    if (!frame.empty()) {
        TellQuality();
        return QVM_SUCCESS;
    }
    unsigned char* data = nullptr;
    const QUORVEX_MESSAGE decoded = DecodePacked(data, size, 0);
    owner.reset(data);
    frame = {data, size};
    return decoded;
}

QUORVEX_MESSAGE FrameFetch::Locate(unsigned long& offset, unsigned long& size) {
    const QUORVEX_MESSAGE checked = Check();
    if (checked != QVM_SUCCESS) return checked;
    if (HasFloats()) return LocateFloats(offset, size);
    if (!file_.FramesLieInFile(shape_.syntax)) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    FileReading reading(file_.File());
    const QUORVEX_MESSAGE located = LocateInFile(reading);
    if (located != QVM_SUCCESS) return located;
    const auto frame = static_cast<std::size_t>(frameIndex_);
    if (native_ && native_->BeginsInsideByte(frame)) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    offset = native_ ? value_.offset + native_->LengthAhead(frame) : coded_.Offset();
    size = StoredBytes();
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE FrameFetch::LocateFloats(unsigned long& offset, unsigned long& size) {
    const QUORVEX_MESSAGE collected = CollectFloats();
    if (collected != QVM_SUCCESS) return collected;
    const auto begin = file_.OffsetOfLast(shape_.FloatTag());
    if (!begin) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    offset = *begin + native_->LengthAhead(static_cast<std::size_t>(frameIndex_));
    size = StoredBytes();
    return QVM_SUCCESS;
}

}  // namespace quorvex
