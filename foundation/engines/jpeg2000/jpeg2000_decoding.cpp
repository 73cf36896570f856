#include "foundation/engines/jpeg2000/decoder/decoder.h"
#include "foundation/engines/jpeg2000/jpeg2000_coders.h"
#include "foundation/engines/jpeg2000/jpeg2000_header.h"
#include "foundation/engines/jpeg2000/jpeg2000_reduction.h"
#include "foundation/types/answer.h"
#include "foundation/types/checked_size.h"
#include "foundation/types/limits.h"

#include <optional>
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

j2k::Wanted WantedOf(const PegasusParameters& parameters) {
    j2k::Wanted wanted;
    wanted.discardedLevels = static_cast<unsigned>(parameters.discardedLevels);
    const auto place = [&](std::int32_t atResolution) {
        return static_cast<std::uint32_t>(std::uint64_t(atResolution) << wanted.discardedLevels);
    };
    const CRect& region = parameters.region;
    wanted.region = {place(region.left), place(region.top), place(region.right),
                     place(region.bottom)};
    return wanted;
}

// Where a part is wanted, its size.
bool TakeRegionSize(PegasusParameters& parameters) noexcept {
    const CRect& region = parameters.region;
    if (region == CRect()) return true;
    if (region.left < 0 || region.top < 0 || region.left >= region.right ||
        region.top >= region.bottom || region.right > parameters.bitmap.biWidth ||
        region.bottom > parameters.bitmap.biHeight)
        return false;
    parameters.bitmap.biWidth = region.Width();
    parameters.bitmap.biHeight = region.Height();
    return true;
}

// Where levels are discarded, the size of what is left.
bool TakeReducedSize(PegasusParameters& parameters) noexcept {
    if (parameters.discardedLevels == 0) return true;
    const auto size = Contain(std::optional<CSize>(), [&] {
        return ReducedSizeOf(parameters.input, parameters.discardedLevels);
    });
    if (!size) return false;
    parameters.bitmap.biWidth = size->cx;
    parameters.bitmap.biHeight = size->cy;
    return true;
}

// Each component goes between the others; subsampled ones are repeated. Empty where a component is
// not as large as its sampling says.
std::vector<j2k::OutputPlane> PlanesFor(const j2k::Decoder& decoder,
                                        const PegasusParameters& parameters) {
    const auto& components = decoder.Size().components;
    const auto columns = static_cast<std::uint32_t>(parameters.columns);
    const auto rows = static_cast<std::uint32_t>(parameters.rows);
    if (components.size() != static_cast<std::size_t>(parameters.samples)) return {};
    const std::ptrdiff_t pixelBytes =
        static_cast<std::ptrdiff_t>(parameters.samples) * parameters.bytesPerSample;
    std::vector<j2k::OutputPlane> planes;
    for (unsigned i = 0; i < components.size(); ++i) {
        const j2k::Rect area = decoder.Area(i, WantedOf(parameters));
        const j2k::ComponentSize& component = components[i];
        if (area.IsEmpty() || std::uint64_t{area.Width()} * component.dx < columns ||
            std::uint64_t{area.Height()} * component.dy < rows)
            return {};
        planes.push_back(
            {.data = parameters.output.data() +
                     std::size_t{i} * static_cast<std::size_t>(parameters.bytesPerSample),
             .rowStride = pixelBytes * parameters.columns,
             .sampleStride = pixelBytes,
             .bytesPerSample = parameters.bytesPerSample,
             .isBigEndian = parameters.isBigEndian,
             .keepsSign = parameters.isSigned,
             .repeatX = component.dx,
             .repeatY = component.dy,
             .width = columns,
             .height = rows});
    }
    return planes;
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
    return TakeReducedSize(parameters) && TakeRegionSize(parameters);
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
    if (!codestream) return false;
    j2k::Decoder decoder;
    if (decoder.Open(*codestream) != j2k::Outcome::kDone) return false;
    const std::vector<j2k::OutputPlane> planes = PlanesFor(decoder, parameters);
    if (planes.empty()) return false;
    const j2k::Outcome outcome = decoder.Decode(WantedOf(parameters), planes);
    parameters.isIncomplete = outcome == j2k::Outcome::kIncomplete;
    return outcome == j2k::Outcome::kDone || outcome == j2k::Outcome::kIncomplete;
}

}  // namespace quorvex
