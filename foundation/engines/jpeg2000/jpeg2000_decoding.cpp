#include "foundation/engines/jpeg2000/decoder/decoder.h"
#include "foundation/engines/jpeg2000/jpeg2000_coders.h"
#include "foundation/engines/jpeg2000/jpeg2000_header.h"
#include "foundation/types/checked_size.h"
#include "foundation/types/limits.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvex {
namespace {

constexpr int kMostBits = 16;

bool IsJustified(const Jpeg2000Header& header, std::uint64_t length) noexcept {
    const std::uint64_t samples =
        std::uint64_t{header.width} * header.height * static_cast<std::uint64_t>(header.components);
    const bool isJustified = header.tiles <= kTileAllowance + length / kLeastBytesOfTile &&
                             header.packets <= kPacketAllowance + length * kMostPacketsPerByte &&
                             samples <= kSampleAllowance + length * kMostSamplesPerByte;
    return isJustified || RefuseBy(Limit::kJpeg2000Work);
}

bool IsDecodable(const Jpeg2000Header& header) noexcept {
    return (header.components == 1 || header.components == 3 || header.components == 4) &&
           header.precision <= kMostBits && header.width <= kLongestCodedSide &&
           header.height <= kLongestCodedSide;
}

// Where each component's samples go: beside each other, each as often as its sampling says.
std::vector<j2k::OutputPlane> PlanesOf(const PegasusParameters& p, const j2k::ImageSize& size) {
    const std::ptrdiff_t pixel = std::ptrdiff_t{p.samples} * p.bytesPerSample;
    std::vector<j2k::OutputPlane> planes;
    for (int i = 0; i < p.samples; ++i) {
        const j2k::ComponentSize& component = size.components[static_cast<std::size_t>(i)];
        planes.push_back({.data = p.output.data() + std::ptrdiff_t{i} * p.bytesPerSample,
                          .rowStride = pixel * p.columns,
                          .sampleStride = pixel,
                          .bytesPerSample = p.bytesPerSample,
                          .isBigEndian = p.isBigEndian,
                          .keepsSign = p.isSigned,
                          .repeatX = component.dx,
                          .repeatY = component.dy,
                          .width = static_cast<std::uint32_t>(p.columns),
                          .height = static_cast<std::uint32_t>(p.rows)});
    }
    return planes;
}

// The components that the header announced, each with samples for the whole picture.
bool IsAsAnnounced(const j2k::Decoder& decoder, const PegasusParameters& p) noexcept {
    const auto& components = decoder.Size().components;
    if (components.size() != static_cast<std::size_t>(p.samples)) return false;
    for (unsigned i = 0; i < components.size(); ++i) {
        const j2k::Rect area = decoder.Area(i, {});
        const auto fits = [](std::uint32_t count, std::uint8_t step, int wanted) {
            return std::uint64_t{count} * step >= static_cast<std::uint64_t>(wanted);
        };
        if (components[i].precision > kMostBits ||
            !fits(area.Width(), components[i].dx, p.columns) ||
            !fits(area.Height(), components[i].dy, p.rows))
            return false;
    }
    return true;
}

}  // namespace

bool QueryJpeg2000(PegasusParameters& parameters) noexcept {
    const auto codestream = FindCodestream(parameters.input);
    if (!codestream) return false;
    const auto header = ReadJpeg2000Header(*codestream);
    if (!header || !IsDecodable(*header) || !IsJustified(*header, codestream->size())) return false;
    parameters.bitmap.biWidth = static_cast<std::int32_t>(header->width);
    parameters.bitmap.biHeight = static_cast<std::int32_t>(header->height);
    parameters.bitmap.biBitCount =
        static_cast<std::uint16_t>(header->components * header->precision);
    parameters.components = header->components;
    parameters.precision = header->precision;
    parameters.streamIsSigned = header->isSigned;
    parameters.hasColourTransform = header->hasColourTransform && header->components >= 3;
    return true;
}

bool CanDecodeJpeg2000(const PegasusParameters& parameters) noexcept {
    const int bytes = parameters.bytesPerSample;
    const auto size =
        CheckedProduct(parameters.columns, parameters.rows, parameters.samples, bytes);
    return parameters.components > 0 && parameters.samples == parameters.components &&
           parameters.columns == parameters.bitmap.biWidth &&
           parameters.rows == parameters.bitmap.biHeight && (bytes == 1 || bytes == 2) &&
           parameters.precision <= 8 * bytes && size == parameters.output.size();
}

bool DecodeJpeg2000(PegasusParameters& parameters) {
    const auto codestream = FindCodestream(parameters.input);
    j2k::Decoder decoder;
    if (!codestream || decoder.Open(*codestream) != j2k::Outcome::kDone ||
        !IsAsAnnounced(decoder, parameters))
        return false;
    const auto outcome = decoder.Decode({}, PlanesOf(parameters, decoder.Size()));
    parameters.isIncomplete = outcome == j2k::Outcome::kIncomplete;
    return outcome == j2k::Outcome::kDone || parameters.isIncomplete;
}

}  // namespace quorvex
