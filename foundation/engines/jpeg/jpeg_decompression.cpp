#include "foundation/engines/jpeg/jpeg_coders.h"
#include "foundation/engines/jpeg/jpeg_engine.h"
#include "foundation/types/answer.h"
#include "foundation/types/limits.h"

#include <algorithm>
#include <optional>

namespace quorvex {

class JpegDecompression {
public:
    JpegDecompression(void* context, JpegReadCallback read, std::uint64_t streamLength)
        : input(context, read, streamLength) {}

    JpegHeader header;
    JpegPixelLayout layout;
    int linesDone = 0;
    JpegInput input;  // outlives the decoder, which pulls from it
    std::unique_ptr<JpegLineDecoder> decoder;
};

namespace {

constexpr int kFailure = -1;

JpegHeaderScanner::State ReadHeader(JpegInput& input, JpegHeaderScanner& scanner) {
    auto state = JpegHeaderScanner::State::kNeedsMore;
    while (state == JpegHeaderScanner::State::kNeedsMore) {
        if (input.Head().size() > kLongestJpegHead || !input.GrowHead()) return state;
        state = scanner.Scan(input.Head());
    }
    return state;
}

int KindOf(const JpegHeader& header) noexcept {
    switch (header.ColourForm()) {
        case JpegColourForm::kGrey:
            return kJpegGrey;
        case JpegColourForm::kRgb:
            return kJpegRgb;
        case JpegColourForm::kYcc:
            return header.IsSubsampled() ? kJpegSubsampledYcc : kJpegYcc;
        case JpegColourForm::kInks:
            return kJpegInks;
        case JpegColourForm::kYccInks:
            return kJpegYccInks;
    }
    return 0;
}

JpegDescription Describe(const JpegHeader& header, std::uint64_t length) noexcept {
    JpegDescription description{.frame = {.width = header.width, .height = header.height},
                                .process = header.Process(),
                                .precision = header.precision,
                                .componentCount = header.componentCount,
                                .colourIsMarked = header.ColourIsMarked(),
                                .marksRgb = header.MarksRgb(),
                                .canBeWhole = header.LeastBytes() <= length};
    for (std::size_t i = 0; i < header.componentCount; ++i) {
        auto& frame = description.frame;
        frame.horizontalSampling =
            std::max(frame.horizontalSampling, header.components[i].horizontal);
        frame.verticalSampling = std::max(frame.verticalSampling, header.components[i].vertical);
    }
    return description;
}

// A decoder of several scans holds coefficients for every pixel that the header claims.
bool IsWorthDecoding(const JpegHeader& header, std::uint64_t length) noexcept {
    if (!header.IsDecodable()) return false;
    const bool isPlausible = !header.NeedsWholePicture() || header.LeastBytes() <= length;
    return isPlausible || RefuseBy(Limit::kLargestPicture);
}

MakeJpegDecoder DecoderFor(const JpegHeader& header) noexcept {
    if (header.Process() == JpegProcess::kLossless) return MakeLosslessDecoder;
    return header.precision > 8 ? Make12BitDecoder : MakeTurboDecoder;
}

struct FormOfPixels {
    JpegColourForm stored;
    bool toRgb = false;
    std::uint8_t samples = 0;
};

// Nothing where the stream's components cannot be delivered in that form.
std::optional<FormOfPixels> FormFor(const JpegHeader& header, JpegColour colour) noexcept {
    const auto marked = header.ColourForm();
    const bool isThree = header.componentCount == 3;
    const bool isFour = header.componentCount == 4;
    switch (colour) {
        case JpegColour::kByStream:
            return FormOfPixels{marked, marked == JpegColourForm::kYcc, header.componentCount};
        case JpegColour::kStored:
            return FormOfPixels{isThree ? JpegColourForm::kRgb : marked, false,
                                header.componentCount};
        case JpegColour::kRgbFromYcc:
        case JpegColour::kRgbFromSubsampledYcc:
            if (!isThree) return std::nullopt;
            return FormOfPixels{JpegColourForm::kYcc, true, 3};
        case JpegColour::kInks:
            if (!isFour) return std::nullopt;
            return FormOfPixels{JpegColourForm::kInks, false, 4};
        case JpegColour::kInksFromYcc:
            if (!isFour) return std::nullopt;
            return FormOfPixels{JpegColourForm::kYccInks, false, 4};
        case JpegColour::kRgbFromInks:
            if (!isFour) return std::nullopt;
            return FormOfPixels{marked, true, 3};
    }
    return std::nullopt;
}

int Open(JpegDecompressionHandle& handle, JpegDescription& description, std::uint64_t streamLength,
         void* context, JpegReadCallback read) {
    auto opened = std::make_unique<JpegDecompression>(context, read, streamLength);
    JpegHeaderScanner scanner;
    const auto state = ReadHeader(opened->input, scanner);
    const bool hasNoStart = opened->input.Head().size() < 2;
    if (state == JpegHeaderScanner::State::kNoJpeg || hasNoStart) return kFailure;
    if (state != JpegHeaderScanner::State::kDone) return 0;
    const JpegHeader& header = scanner.Header();
    description = {};
    description.isUnsupported = !header.IsDecodable();
    if (!IsWorthDecoding(header, streamLength)) return 0;
    opened->header = header;
    description = Describe(header, streamLength);
    handle.reset(opened.release());
    return KindOf(header);
}

int LayOut(JpegDecompression& stream, JpegPixelLayout& layout, int bytesPerSample,
           JpegColour colour, bool subsampled) {
    const JpegHeader& header = stream.header;
    const auto form = FormFor(header, colour);
    if (!form || (header.precision > 8 && bytesPerSample < 2)) return kFailure;
    auto decoder = DecoderFor(header)(stream.input);
    // Those who mark four components write light instead of ink.
    const bool isOpen = decoder->Start({.header = header,
                                        .stored = form->stored,
                                        .toRgb = form->toRgb,
                                        .inksAreInverted = header.adobeTransform.has_value(),
                                        .interpolateChroma = subsampled,
                                        .bytesPerSample = bytesPerSample,
                                        .samples = form->samples});
    if (!isOpen) return kFailure;
    stream.decoder = std::move(decoder);
    layout = {.samples = form->samples,
              .bytesPerSample = static_cast<std::uint8_t>(bytesPerSample),
              .rowBytes = std::size_t{header.width} * form->samples *
                          static_cast<std::size_t>(bytesPerSample)};
    stream.layout = layout;
    return 0;
}

}  // namespace

void EndJpegDecompression::operator()(JpegDecompression* decompression) const noexcept {
    delete decompression;
}

int init_decompression(JpegDecompressionHandle& handle, JpegDescription& description,
                       std::uint64_t streamLength, void* readContext,
                       JpegReadCallback read) noexcept {
    handle.reset();
    return Contain(kFailure,
                   [&] { return Open(handle, description, streamLength, readContext, read); });
}

int pix_layout(const JpegDecompressionHandle& handle, JpegPixelLayout& layout, int bytesPerSample,
               int interleave, JpegColour colour, bool subsampled) noexcept {
    const bool isPossible = handle != nullptr && handle->decoder == nullptr &&
                            (interleave == 1 || interleave == 3) &&
                            (bytesPerSample == 1 || bytesPerSample == 2);
    if (!isPossible) return kFailure;
    return Contain(kFailure,
                   [&] { return LayOut(*handle, layout, bytesPerSample, colour, subsampled); });
}

int decompress(const JpegDecompressionHandle& handle, unsigned char*& rows, int lines) noexcept {
    if (handle == nullptr || handle->decoder == nullptr || lines < 1) return kFailure;
    const int wanted = std::min(lines, handle->header.height - handle->linesDone);
    const int read = wanted < 1 ? 0 : handle->decoder->Read(rows, wanted);
    handle->linesDone += read;
    if (read < wanted) return kFailure;
    if (handle->linesDone < handle->header.height) return 0;
    return handle->decoder->BrokeOff() ? kFailure : 1;
}

int decompressed_lines(const JpegDecompressionHandle& handle) noexcept {
    return handle == nullptr ? 0 : handle->linesDone;
}

long decompression_warnings(const JpegDecompressionHandle& handle) noexcept {
    return handle == nullptr || handle->decoder == nullptr ? 0 : handle->decoder->Warnings();
}

void close_decompression(JpegDecompressionHandle& handle) noexcept {
    handle.reset();
}

}  // namespace quorvex
