/// One call of CxImageProcessor::DecompressFrameData().
#pragma once

#include "codec/frame_block.h"
#include "codec/frame_description.h"
#include "quorvex/ResultCodes.h"

#include <cstddef>
#include <span>

namespace quorvex {

/// Decodes or copies one frame. Nothing of it outlives the call.
///
/// A coding is a row of kDecoders in frame_decoder.cpp and an operation of this class in a file of
/// its own. The operation decodes source_ to target_ as frame_ describes it, and tells in written_
/// how many bytes of it have a value.
class FrameDecoder {
public:
    /// @param allocMode     where a new result block comes from
    /// @param unsignedOnly  signed JPEG 2000 grey frames are decoded as unsigned
    FrameDecoder(const _IMAGE_PROCESS_PARAM& param, std::span<unsigned char> source, int allocMode,
                 bool unsignedOnly) noexcept
        : frame_(param), source_(source), allocMode_(allocMode), unsignedOnly_(unsignedOnly) {}

    /// The parameters and answers are those of CxImageProcessor::DecompressFrameData(). Throws
    /// std::bad_alloc.
    QUORVEX_MESSAGE Decode(unsigned char*& result, unsigned long& resultSize);

    /// Makes colours of Y, Cb, Cr rounded and clamped in every coding, and refuses a colour that it
    /// does not know with QVM_ERROR_INVALID_PHOTOMETRIC, where it would else be black. Samples of
    /// 16 bits have `bitsStored` of them, from the lowest on.
    void TakeExactColours(int bitsStored) noexcept {
        frame_.hasExactColour = true;
        frame_.bitsStored = bitsStored;
    }
    /// Of signed samples, whose sign some codings cut away: this many bits from the lowest on.
    void TakeSignBits(int bitsStored) noexcept { signBits_ = bitsStored; }
    /// False where the source failed for a process that nothing here decodes, and not for damage.
    [[nodiscard]] bool IsSupported() const noexcept { return isSupported_; }
    /// Of JPEG 2000: decodes a lower resolution, which the parameters describe. Each level halves
    /// width and height.
    void DiscardLevels(int levels) noexcept { discardedLevels_ = levels; }
    /// Of JPEG 2000: decodes a part of that resolution, whose size the parameters describe.
    void TakeRegion(const CRect& region) noexcept { region_ = region; }
    /// Whether the source gave every sample of the frame, undamaged; good after a success.
    [[nodiscard]] bool IsWhole() const noexcept { return isWhole_; }

    // The codings: 1 for a frame, also for a part of one; 0 for none.

    /// RLE. A damaged frame of three samples is shown as far as it goes.
    int DecompressRLEData();
    /// JPEG of every kind. The width of a sample comes from the header, their number from the
    /// stream. A stream with longer rows than its header's is refused, shorter ones have zeros
    /// behind them; surplus lines are left out.
    int DecompressJpegData();
    /// JPEG 2000. The stream must be as the header says in size and number of samples; samples of
    /// fewer bits than the header allocates are widened. Rows are packed.
    int DecompressJ2KData();
    /// JPEG-LS. The stream must be as the header says in size and number of samples; its own
    /// precision rules, and samples of fewer bits than the header allocates are widened.
    int DecompressJpegLsData();
    /// JPEG XL. The stream must be as the header says in size and number of samples; its own
    /// precision rules. One that was made of a JPEG stream is decoded as that one.
    int DecompressJpegXlData();

private:
    QUORVEX_MESSAGE CopyFrame(unsigned char*& result, unsigned long& resultSize);
    QUORVEX_MESSAGE CopyColourFrame(unsigned char*& result, unsigned long& resultSize);
    QUORVEX_MESSAGE DecodeFragment(unsigned char*& result, unsigned long& resultSize);
    /// Whether native samples of that length are the frame as they are.
    [[nodiscard]] bool IsFrame(std::size_t storedBytes) const noexcept;
    /// Straight into a block made here.
    QUORVEX_MESSAGE InflateWhole(unsigned char*& result, unsigned long& resultSize,
                                 std::size_t frameBytes);
    void ConvertStoredYbr(std::size_t sampleBytes);
    [[nodiscard]] bool IsDecodable(bool takesBits) const noexcept;
    /// What an RLE or a plain frame of three samples is converted from.
    [[nodiscard]] ColourFrame DescribeColour(std::size_t frameBytes) const noexcept;
    /// False for a colour that must not come out black.
    [[nodiscard]] bool IsShown(const ColourFrame& colour) const noexcept {
        return colour.form != ColourForm::kUnknown || !frame_.hasExactColour;
    }

    FrameDescription frame_;
    std::span<unsigned char> source_;
    int allocMode_;
    bool unsignedOnly_;
    std::span<unsigned char> target_;  ///< the whole frame's block
    std::size_t written_ = 0;          ///< bytes of target_ that have a value
    std::size_t told_ = 0;             ///< the size that the caller is told
    bool isWhole_ = true;
    int discardedLevels_ = 0;
    CRect region_;  ///< empty for all
    bool isSupported_ = true;
    int signBits_ = 0;  ///< 0: not known
};

}  // namespace quorvex
