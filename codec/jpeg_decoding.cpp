#include "codec/colour.h"
#include "foundation/engines/jpeg/jpeg_engine.h"
#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "quorvex/CxImageProcessor.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>

namespace quorvex {
namespace {

/// What the read callback hands to the engine.
struct JpegReadContext {
    const unsigned char* source = nullptr;  ///< the next byte to deliver
    unsigned long sourceLength = 0;
    unsigned long position = 0;  ///< bytes delivered
    unsigned char readBuffer[kJpegBufferBytes];
};

void FillReadBuffer(JpegReadContext& context, std::uint16_t& length) noexcept {
    const unsigned long count =
        std::min<unsigned long>(context.sourceLength - context.position, kJpegBufferBytes);
    if (count != 0) std::memcpy(context.readBuffer, context.source, count);
    length = static_cast<std::uint16_t>(count);
    context.source += count;
    context.position += count;
}

int ReadJpegSource(int event, void* user, unsigned char** buffer, std::uint16_t* length) noexcept {
    auto& context = *static_cast<JpegReadContext*>(user);
    if (event == kJpegReadFirst) {
        *buffer = context.readBuffer;
        context.position = 0;
    }
    if (event == kJpegReadFirst || event == kJpegReadMore) FillReadBuffer(context, *length);
    if (event == kJpegReadEnd) *buffer = nullptr;
    return 0;
}

/// An open stream; closed in every case.
struct JpegStream {
    JpegStream(const unsigned char* source, unsigned long sourceLength) noexcept {
        context.source = source;
        context.sourceLength = sourceLength;
        kind = init_decompression(handle, description, sourceLength, &context, ReadJpegSource);
    }
    JpegStream(const JpegStream&) = delete;
    JpegStream& operator=(const JpegStream&) = delete;
    ~JpegStream() { close_decompression(handle); }

    [[nodiscard]] bool IsUsable() const noexcept {
        return kind >= kJpegGrey && kind <= kJpegYccInks;
    }
    [[nodiscard]] bool IsLossless() const noexcept {
        return description.process == JpegProcess::kLossless;
    }
    [[nodiscard]] int LayOut(JpegPixelLayout& layout, int bytesPerSample, int interleave,
                             JpegColour colour) const noexcept {
        const bool isSubsampled =
            description.frame.horizontalSampling > 1 || description.frame.verticalSampling > 1;
        return pix_layout(handle, layout, bytesPerSample, interleave, colour, isSubsampled);
    }

    JpegReadContext context;
    JpegDecompressionHandle handle;
    JpegDescription description;
    int kind = 0;
};

/// By stream kind, for baseline and extended streams; the engine knows about the others.
JpegColour ColourFor(const JpegStream& stream) noexcept {
    constexpr JpegColour kColours[] = {JpegColour::kByStream,
                                       JpegColour::kByStream,
                                       JpegColour::kByStream,
                                       JpegColour::kRgbFromYcc,
                                       JpegColour::kRgbFromSubsampledYcc,
                                       JpegColour::kInks,
                                       JpegColour::kInksFromYcc};
    const bool isSequential = stream.description.process == JpegProcess::kBaseline ||
                              stream.description.process == JpegProcess::kExtended;
    return isSequential ? kColours[stream.kind] : JpegColour::kByStream;
}

/// The same where a header says more than the stream: unmarked components are what it says, and
/// four of them in a three-sample frame are inks.
JpegColour ColourFor(const JpegStream& stream, int samplesPerPixel, bool headerSaysRgb) noexcept {
    const auto& description = stream.description;
    if (description.componentCount == 4 && samplesPerPixel == 3) return JpegColour::kRgbFromInks;
    const bool isPlain = description.componentCount == 3 && !description.colourIsMarked;
    return isPlain && headerSaysRgb ? JpegColour::kStored : ColourFor(stream);
}

struct DecodedLines {
    std::size_t bytes = 0;
    bool isBroken = false;
};

/// Decodes stripe by stripe, each straight to its place, as many lines as `block` has room for.
/// What a broken stream does not give is 0.
DecodedLines DecodeStripes(const JpegStream& stream, const JpegPixelLayout& layout,
                           std::span<unsigned char> block) noexcept {
    constexpr int kBlockLines = 8;
    const JpegFrameDescription& frame = stream.description.frame;
    const int factor = std::max<int>(frame.verticalSampling, 1);
    const int stripeLines = stream.IsLossless() ? factor : kBlockLines * factor;
    const auto room = block.size() / layout.rowBytes;
    const int height = static_cast<int>(std::min<std::size_t>(frame.height, room));
    int answer = 0;
    for (int line = 0; line < height && answer == 0; line += stripeLines) {
        unsigned char* rows = block.data() + static_cast<std::size_t>(line) * layout.rowBytes;
        answer = decompress(stream.handle, rows, std::min(stripeLines, height - line));
    }
    const auto lines = static_cast<std::size_t>(decompressed_lines(stream.handle));
    const DecodedLines decoded{lines * layout.rowBytes, answer == -1};
    if (decoded.isBroken) std::ranges::fill(block.subspan(decoded.bytes), 0);
    return decoded;
}

/// Rows longer than the header's, or of another sample count, could only come out as a shambles.
bool FitsHeader(const JpegDescription& description, int columns, int samplesPerPixel) noexcept {
    const bool isInks = description.componentCount == 4 && samplesPerPixel == 3;
    return description.frame.width <= columns &&
           (isInks || description.componentCount == samplesPerPixel);
}

/// Lossless samples are whatever the header says.
void ConvertLosslessYbr(std::span<unsigned char> pixels) {
    const HeapBlock stored(pixels.size());
    std::ranges::copy(pixels, stored.Data());
    ConvertToRgb({.form = ColourForm::kFullInterleaved, .columns = pixels.size() / 3, .rows = 1},
                 stored.Bytes(), pixels);
}

}  // namespace

/// The width of a sample comes from the header, their number from the stream. A stream that does
/// not fit its header's rows is refused; surplus lines are left out.
int CxImageProcessor::DecompressJpegData(unsigned char* source, unsigned long sourceLength,
                                         unsigned char*& result, unsigned long& resultSize) {
    const std::span block(result, resultSize);
    resultSize = 0;
    const bool isYbr = photometric == "YBR_FULL" || photometric == "YBR_FULL_422";
    if (isYbr) planarConfiguration = 0;
    const JpegStream stream(source, sourceLength);
    if (!stream.IsUsable() || !FitsHeader(stream.description, columns, samplesPerPixel)) return 0;
    JpegPixelLayout layout;
    const int interleave = planarConfiguration == 1 ? 3 : 1;
    const JpegColour colour = ColourFor(stream, samplesPerPixel, photometric == "RGB");
    const int sampleBytes = static_cast<int>(BytesPerSample());
    if (stream.LayOut(layout, sampleBytes, interleave, colour) == -1) return 0;
    resultSize = DecodeStripes(stream, layout, block).bytes;
    const bool isStoredYbr = isYbr && stream.IsLossless() && !stream.description.marksRgb;
    if (isStoredYbr && layout.samples == 3 && layout.bytesPerSample == 1) {
        ConvertLosslessYbr(block.first(resultSize));
    }
    return 1;
}

QUORVEX_MESSAGE CxImageProcessor::DecompressBlindJPEGData(
    unsigned char* source, unsigned long sourceLength, unsigned char*& result,
    unsigned long& resultSize, unsigned short& width, unsigned short& height,
    unsigned short& samples, unsigned short& bits, unsigned short& bytesPerPixel) {
    return Answer(QVM_ERROR_FAILED_TO_DECOMPRESS, [&] {
        resultSize = 0;
        if (source == nullptr) return QVM_ERROR_CANNOT_OPEN_STREAM;
        const JpegStream stream(source, sourceLength);
        const JpegDescription& description = stream.description;
        if (stream.kind == -1) return QVM_ERROR_CANNOT_OPEN_STREAM;
        if (!stream.IsUsable()) return QVM_ERROR_INVALID_JPEG_STREAM;
        width = description.frame.width;
        height = description.frame.height;
        JpegPixelLayout layout;
        if (stream.LayOut(layout, description.precision > 8 ? 2 : 1, 1, ColourFor(stream)) == -1) {
            return QVM_ERROR_INVALID_JPEG_LAYOUT;
        }
        if (description.precision != 8 && description.precision != 16) {
            return QVM_ERROR_INVALID_JPEG_PRECISION;
        }
        samples = layout.samples;
        bits = description.precision;
        bytesPerPixel = static_cast<unsigned short>(layout.samples * layout.bytesPerSample);
        // A short stream cannot hold what its header claims: no memory for that.
        if (!description.canBeWhole) return QVM_ERROR_FAILED_TO_DECOMPRESS;
        HeapBlock block(layout.rowBytes * height);
        const DecodedLines decoded = DecodeStripes(stream, layout, block.Bytes());
        resultSize = decoded.bytes;
        result = block.Release();
        return decoded.isBroken ? QVM_ERROR_FAILED_TO_DECOMPRESS : QVM_SUCCESS;
    });
}

}  // namespace quorvex
