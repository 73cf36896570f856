#include "codec/rle/rle.h"

#include "codec/rle/rle_planes.h"
#include "foundation/platform/pages.h"
#include "foundation/types/cancellation.h"
#include "foundation/types/progress.h"

#include <algorithm>
#include <vector>

namespace quorvex {
namespace {

constexpr std::size_t kColourSamples = 3;

/// Groups of segments, each of which gives one stretch of the frame.
struct RleGroups {
    std::size_t width = 1;  ///< segments of a group
    std::size_t bytes = 0;  ///< of the frame
    std::size_t count = 0;  ///< as many as lie inside the frame
    bool areAllInside = true;
};

/// A segment for each byte of a pixel.
bool IsSegmentEachByte(const RleLayout& layout, std::size_t segments) noexcept {
    return segments == layout.samplesPerPixel * layout.bytesPerSample;
}

RleGroups GroupsOf(const RleLayout& layout, std::size_t segments, std::size_t frameBytes) noexcept {
    if (segments == 0) return {};
    if (!layout.isPlanar) return {.width = segments, .bytes = frameBytes, .count = 1};
    RleGroups groups{.width = IsSegmentEachByte(layout, segments) ? layout.bytesPerSample : 1,
                     .bytes = layout.pixels * layout.bytesPerSample};
    const std::size_t fitting = groups.bytes == 0 ? 0 : frameBytes / groups.bytes;
    groups.count = std::min(segments / groups.width, fitting);
    groups.areAllInside = groups.count * groups.width == segments;
    return groups;
}

void ReadGroup(RlePlaneReader& reader, std::size_t group, std::size_t width,
               std::span<unsigned char> bytes) {
    const std::size_t band = RlePlaneReader::kBandPlaces * width;
    const auto cancellation = Cancellation::OfThisThread();
    for (std::size_t at = 0; at < bytes.size(); at += band) {
        cancellation.ThrowIfAsked();
        reader.Read(group, bytes.subspan(at, std::min(band, bytes.size() - at)));
        TellProgress(at + band, bytes.size());
    }
}

/// Decodes by `pass`, which reads all planes by a reader. Planes go side by side, so damage is
/// known only afterwards; then once more without the segments behind it.
template <class Pass>
RleOutcome DecodeUpToDamage(const RleHeader& header, std::size_t width, Pass pass) {
    RlePlaneReader reader(header, width, header.count);
    pass(reader);
    const std::size_t damaged = reader.FirstDamaged();
    if (damaged + 1 < header.count) {
        RlePlaneReader sound(header, width, damaged + 1);
        pass(sound);
    }
    const bool isSound = damaged == header.count;
    return {.isSound = isSound, .isWhole = isSound && !reader.IsShort()};
}

RleOutcome DecodeGroups(const RleHeader& header, const RleGroups& groups,
                        std::span<unsigned char> frame) {
    return DecodeUpToDamage(header, groups.width, [&](RlePlaneReader& reader) {
        for (std::size_t g = 0; g < groups.count; ++g) {
            const ProgressStretch stretch(g, groups.count);
            ReadGroup(reader, g, groups.width, frame.subspan(g * groups.bytes, groups.bytes));
        }
    });
}

/// Three planes, converted band by band.
RleOutcome DecodePlanes(const RleHeader& header, const ColourFrame& colour,
                        std::span<unsigned char> rgb) {
    const std::size_t sampleBytes = colour.bytesPerSample;
    std::vector<unsigned char> band(kColourSamples * RlePlaneReader::kBandPlaces * sampleBytes);
    return DecodeUpToDamage(header, sampleBytes, [&](RlePlaneReader& reader) {
        for (std::size_t pixel = 0; pixel < colour.Pixels(); pixel += RlePlaneReader::kBandPlaces) {
            Cancellation::OfThisThread().ThrowIfAsked();
            TellProgress(pixel, colour.Pixels());
            ColourFrame part = colour;
            part.rows = 1;
            part.columns = std::min(RlePlaneReader::kBandPlaces, colour.Pixels() - pixel);
            const std::size_t plane = part.columns * sampleBytes;
            for (std::size_t s = 0; s < kColourSamples; ++s) {
                reader.Read(s, std::span(band).subspan(s * plane, plane));
            }
            ConvertToRgb(part, std::span(band).first(kColourSamples * plane),
                         rgb.subspan(pixel * kColourSamples * sampleBytes, kColourSamples * plane));
        }
    });
}

}  // namespace

RleOutcome DecodeRle(std::span<const unsigned char> source, const RleLayout& layout,
                     std::span<unsigned char> frame) {
    const auto header = ReadRleHeader(source);
    const RleGroups groups = GroupsOf(layout, header ? header->count : 0, frame.size());
    std::ranges::fill(frame.subspan(groups.count * groups.bytes), static_cast<unsigned char>(0));
    if (!header) return {};
    RleOutcome outcome = DecodeGroups(*header, groups, frame);
    const bool isEverywhere = groups.count * groups.bytes == frame.size();
    outcome.isSound = outcome.isSound && groups.areAllInside;
    outcome.isWhole = outcome.isWhole && outcome.isSound && isEverywhere &&
                      IsSegmentEachByte(layout, header->count);
    return outcome;
}

RleOutcome DecodeRleColour(std::span<const unsigned char> source, const RleLayout& layout,
                           const ColourFrame& colour, std::span<unsigned char> rgb) {
    const auto header = ReadRleHeader(source);
    const bool isPlanar = layout.isPlanar && IsPlanar(colour.form);
    if (header && isPlanar && IsSegmentEachByte(layout, header->count)) {
        return DecodePlanes(*header, colour, rgb);
    }
    const PageBlock stored(rgb.size());
    const RleOutcome outcome = DecodeRle(source, layout, stored.Bytes());
    ConvertToRgb(colour, stored.Bytes(), rgb);
    return outcome;
}

}  // namespace quorvex
