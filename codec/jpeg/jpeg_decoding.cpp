#include "codec/frame_decoder.h"
#include "codec/jpeg/jpeg_stream.h"

#include <algorithm>
#include <cstring>

namespace quorvex {
namespace {

/// Where a header says more than the stream: unmarked components are what it says, and four of them
/// in a frame of three samples are inks.
JpegColour ColourOf(const JpegStream& stream, const FrameDescription& frame) noexcept {
    const JpegDescription& description = stream.Description();
    if (description.componentCount == 4 && frame.IsColour()) return JpegColour::kRgbFromInks;
    const bool isPlain = description.componentCount == 3 && !description.colourIsMarked;
    return isPlain && frame.photometric == u"RGB" ? JpegColour::kStored : stream.Colour();
}

/// Rows longer than the header's, or of another sample count, could only come out sheared.
bool FitsHeader(const JpegDescription& description, const FrameDescription& frame) noexcept {
    const bool isInks = description.componentCount == 4 && frame.IsColour();
    return description.frame.width <= frame.columns &&
           (isInks || description.componentCount == frame.samplesPerPixel);
}

/// Moves lines that lie close together to where the frame has them, with zeros between them.
void SpreadLines(std::span<unsigned char> lines, std::size_t count, std::size_t lineBytes,
                 std::size_t stride) noexcept {
    for (std::size_t line = count; line-- > 0;) {
        unsigned char* const to = lines.data() + line * stride;
        std::memmove(to, lines.data() + line * lineBytes, lineBytes);
        std::fill(to + lineBytes, to + stride, static_cast<unsigned char>(0));
    }
}

/// Lossless samples are what the header says; lossy ones have been converted by the engine.
bool IsStoredYbr(const JpegStream& stream, const FrameDescription& frame) noexcept {
    return frame.IsFullRangeYbr() && stream.IsLossless() && !stream.Description().marksRgb &&
           stream.Layout().samples == kColourSamples && stream.Layout().bytesPerSample == 1;
}

}  // namespace

int FrameDecoder::DecompressJpegData() {
    told_ = 0;
    if (frame_.IsFullRangeYbr()) frame_.planarConfiguration = 0;
    JpegStream stream(source_);
    isSupported_ = !stream.Description().isUnsupported;
    if (!stream.IsUsable() || !FitsHeader(stream.Description(), frame_)) return 0;
    const int sampleBytes = static_cast<int>(frame_.BytesPerSample());
    const int interleave = frame_.planarConfiguration == 1 ? 3 : 1;
    if (!stream.LayOut(sampleBytes, interleave, ColourOf(stream, frame_))) return 0;
    const std::size_t lineBytes = stream.Layout().rowBytes;
    const std::size_t stride = target_.size() / frame_.rows;
    const JpegStream::Lines decoded = stream.Decode(target_.first(lineBytes * frame_.rows));
    const std::size_t lines = decoded.bytes / lineBytes;
    if (IsStoredYbr(stream, frame_))
        ConvertYbrInPlace(target_.first(decoded.bytes), frame_.CodedArithmetic());
    if (lineBytes != stride) SpreadLines(target_, lines, lineBytes, stride);
    written_ = lines * stride;
    told_ = written_;
    isWhole_ = lineBytes == stride && lines == frame_.rows && !decoded.areDamaged;
    return 1;
}

}  // namespace quorvex
