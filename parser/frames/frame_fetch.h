/// One fetch of one frame: its stored bytes found, and decoded into plain pixels.
#pragma once

#include "foundation/dicom/frames/native_frames.h"
#include "foundation/types/block.h"
#include "parser/frames/frame_shape.h"
#include "parser/frames/stored_frame.h"
#include "parser/parser_state.h"

#include <optional>
#include <span>

namespace quorvex {

/// The state of one call. The parser's index of frames is kept from fetch to fetch, as long as the
/// file stays the same.
///
/// Of a file only what is needed is read: coded frames are found by the index, native ones by their
/// number. Native pixels come in this machine's byte order: what is stored in another is swapped
/// once, on its way into the frame's block.
class FrameFetch {
public:
    FrameFetch(ParserState& parser, int frameIndex) noexcept
        : parser_(parser), file_(parser.file), frameIndex_(frameIndex), coded_(frameIndex) {}

    /// `GetAFrame` by index.
    QUORVEX_MESSAGE Decode(unsigned char*& data, unsigned long& size, unsigned long sourceLength);
    /// `GetAFrameUnpacked`.
    QUORVEX_MESSAGE DecodeUnpacked(unsigned char*& data, unsigned long& size);
    /// `GetAReducedFrame`.
    QUORVEX_MESSAGE DecodeReduced(CSize least, unsigned char*& data, unsigned long& size);
    /// `GetAFrameRegion`.
    QUORVEX_MESSAGE DecodeRegion(const CRect& region, int level, unsigned char*& data,
                                 unsigned long& size);
    /// `GetFrameLevelCount`.
    QUORVEX_MESSAGE CountLevels(int& count);
    /// A decoded frame to look at: where it is stored, if words may lie there, or in a new block
    /// that `owner` receives.
    QUORVEX_MESSAGE View(std::unique_ptr<unsigned char[]>& owner,
                         std::span<const unsigned char>& frame);
    /// `GetAFrameOffsetSize`.
    QUORVEX_MESSAGE Locate(unsigned long& offset, unsigned long& size);
    /// What the header says about the frame, or of a reduced one what is left of it; good after a
    /// success.
    [[nodiscard]] const FrameShape& Shape() const noexcept { return shape_; }

private:
    class ValueInFile;

    /// 1 when the value begins with an Item tag in the data set's byte order.
    [[nodiscard]] static int IsEncodedImage(std::span<const unsigned char> value,
                                            int littleEndian) noexcept;
    QUORVEX_MESSAGE Check();
    QUORVEX_MESSAGE TakeRules();
    QUORVEX_MESSAGE Collect(unsigned long& size);
    QUORVEX_MESSAGE TakeNativeFrame();
    QUORVEX_MESSAGE CollectFromFile();
    QUORVEX_MESSAGE CollectFromObject();
    QUORVEX_MESSAGE CollectFloats();
    QUORVEX_MESSAGE LocateFloats(unsigned long& offset, unsigned long& size);
    [[nodiscard]] bool HasFloats() const noexcept {
        return shape_.sampleType != SampleType::kInteger;
    }
    QUORVEX_MESSAGE LocateInFile(FileReading& reading);
    QUORVEX_MESSAGE LocateCoded(FileReading& reading);
    [[nodiscard]] std::optional<bool> IsChainOfItems(FileReading& reading) const;
    [[nodiscard]] const FrameIndex* IndexOf(FileReading& reading, std::optional<FrameIndex>& made);
    [[nodiscard]] bool ReadNative(FileReading& reading);
    [[nodiscard]] bool HasNativeFrame() const noexcept;
    [[nodiscard]] std::size_t StoredBytes() const noexcept;
    [[nodiscard]] bool EndsInHighByte(std::size_t length) const noexcept;
    [[nodiscard]] std::span<const unsigned char> NativeSource();
    [[nodiscard]] bool IsItsOwnResult(std::span<const unsigned char> source) const;
    [[nodiscard]] std::span<const unsigned char> WordsInPlace() const;
    QUORVEX_MESSAGE DecodePacked(unsigned char*& data, unsigned long& size,
                                 unsigned long sourceLength);
    QUORVEX_MESSAGE CopyFloats(unsigned char*& data, unsigned long& size,
                               unsigned long sourceLength);
    QUORVEX_MESSAGE DecodeCollected(unsigned char*& data, unsigned long& size,
                                    unsigned long sourceLength);
    [[nodiscard]] bool Reduce(CSize least);
    QUORVEX_MESSAGE Decompress(std::span<const unsigned char> source, unsigned char*& data,
                               unsigned long& size);
    QUORVEX_MESSAGE DecodeCollectedUnpacked(unsigned char*& data, unsigned long& size);
    [[nodiscard]] bool TakeRowsOnly(dicom::ByteRange& range);
    [[nodiscard]] int LevelsOfStream() const;
    [[nodiscard]] bool TakeRegionOfStream(const CRect& region, int level);
    QUORVEX_MESSAGE Unpack(unsigned sampleBytes, unsigned char*& data, unsigned long& size);
    void TellQuality() noexcept;

    ParserState& parser_;
    const ParsedFile& file_;
    int frameIndex_;
    FrameShape shape_;
    int discardedLevels_ = 0;  ///< of a frame that is decoded reduced
    CRect codedRegion_;        ///< of a frame that is decoded in part
    CRect wantedRegion_;       ///< of which native frames are read no other rows
    int rowsAhead_ = 0;        ///< of the frame that have not been read
    bool isEncoded_ = false;   ///< the bytes are coded, so must not pass for pixels
    bool isGuessed_ = false;   ///< where a coded frame begins is a guess
    bool isWhole_ = true;      ///< nothing of the frame is missing
    PixelValue value_;         ///< in the file
    StoredFrame coded_;
    std::optional<dicom::NativeFrames> native_;  ///< in place of `coded_`
    HeapBlock fragment_;                         ///< of a frame that was native in its fragment
    HeapBlock stored_;                           ///< stored bytes of a native frame of a file
    HeapBlock block_;                            ///< a native frame that does not lie in memory
};

}  // namespace quorvex
