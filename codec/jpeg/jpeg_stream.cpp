#include "codec/jpeg/jpeg_stream.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace quorvex {
namespace {

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

}  // namespace

JpegStream::JpegStream(std::span<const unsigned char> source) noexcept {
    context_.source = source.data();
    context_.sourceLength = source.size();
    // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer): the engine reads the context
    kind_ = init_decompression(handle_, description_, source.size(), &context_, ReadJpegSource);
}

JpegColour JpegStream::Colour() const noexcept {
    constexpr JpegColour kColours[] = {JpegColour::kByStream,
                                       JpegColour::kByStream,
                                       JpegColour::kByStream,
                                       JpegColour::kRgbFromYcc,
                                       JpegColour::kRgbFromSubsampledYcc,
                                       JpegColour::kInks,
                                       JpegColour::kInksFromYcc};
    // The engine knows about the other processes.
    const bool isSequential = description_.process == JpegProcess::kBaseline ||
                              description_.process == JpegProcess::kExtended;
    return isSequential ? kColours[kind_] : JpegColour::kByStream;
}

bool JpegStream::LayOut(int bytesPerSample, int interleave, JpegColour colour) noexcept {
    const JpegFrameDescription& frame = description_.frame;
    const bool isSubsampled = frame.horizontalSampling > 1 || frame.verticalSampling > 1;
    return pix_layout(handle_, layout_, bytesPerSample, interleave, colour, isSubsampled) != -1;
}

JpegStream::Lines JpegStream::Decode(std::span<unsigned char> block) const noexcept {
    constexpr int kBlockLines = 8;
    const JpegFrameDescription& frame = description_.frame;
    const int factor = std::max<int>(frame.verticalSampling, 1);
    const int stripeLines = IsLossless() ? factor : kBlockLines * factor;
    const auto room = block.size() / layout_.rowBytes;
    const int height = static_cast<int>(std::min<std::size_t>(frame.height, room));
    int answer = 0;
    for (int line = 0; line < height && answer == 0; line += stripeLines) {
        unsigned char* rows = block.data() + static_cast<std::size_t>(line) * layout_.rowBytes;
        answer = decompress(handle_, rows, std::min(stripeLines, height - line));
    }
    const auto lines = static_cast<std::size_t>(decompressed_lines(handle_));
    const bool isBroken = answer == -1;
    const Lines decoded{lines * layout_.rowBytes, isBroken,
                        isBroken || decompression_warnings(handle_) != 0};
    if (decoded.areBroken) std::ranges::fill(block.subspan(decoded.bytes), 0);
    return decoded;
}

}  // namespace quorvex
