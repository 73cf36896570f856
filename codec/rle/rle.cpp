#include "codec/rle/rle.h"

#include "codec/rle/rle_planes.h"
#include "foundation/platform/pages.h"

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
    for (std::size_t at = 0; at < bytes.size(); at += band) {
        reader.Read(group, bytes.subspan(at, std::min(band, bytes.size() - at)));
    }
}

/// Decodes by `pass`, which is told how many segments count and tells the first damaged one. Planes
/// go side by side, so damage is known only afterwards; then once more without the segments behind
/// it.
template <class Pass>
bool DecodeUpToDamage(std::size_t segments, Pass pass) {
    const std::size_t damaged = pass(segments);
    if (damaged + 1 < segments) pass(damaged + 1);
    return damaged == segments;
}

bool DecodeGroups(const RleHeader& header, const RleGroups& groups,
                  std::span<unsigned char> frame) {
    return DecodeUpToDamage(header.count, [&](std::size_t active) {
        RlePlaneReader reader(header, groups.width, active);
        for (std::size_t g = 0; g < groups.count; ++g) {
            ReadGroup(reader, g, groups.width, frame.subspan(g * groups.bytes, groups.bytes));
        }
        return reader.FirstDamaged();
    });
}

/// Three planes, converted band by band.
bool DecodePlanes(const RleHeader& header, const ColourFrame& colour,
                  std::span<unsigned char> rgb) {
    const std::size_t sampleBytes = colour.bytesPerSample;
    std::vector<unsigned char> band(kColourSamples * RlePlaneReader::kBandPlaces * sampleBytes);
    return DecodeUpToDamage(header.count, [&](std::size_t active) {
        RlePlaneReader reader(header, sampleBytes, active);
        for (std::size_t pixel = 0; pixel < colour.Pixels(); pixel += RlePlaneReader::kBandPlaces) {
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
        return reader.FirstDamaged();
    });
}

}  // namespace

bool DecodeRle(std::span<const unsigned char> source, const RleLayout& layout,
               std::span<unsigned char> frame) {
    const auto header = ReadRleHeader(source);
    const RleGroups groups = GroupsOf(layout, header ? header->count : 0, frame.size());
    std::ranges::fill(frame.subspan(groups.count * groups.bytes), static_cast<unsigned char>(0));
    return header && DecodeGroups(*header, groups, frame) && groups.areAllInside;
}

bool DecodeRleColour(std::span<const unsigned char> source, const RleLayout& layout,
                     const ColourFrame& colour, std::span<unsigned char> rgb) {
    const auto header = ReadRleHeader(source);
    const bool isPlanar = layout.isPlanar && IsPlanar(colour.form);
    if (header && isPlanar && IsSegmentEachByte(layout, header->count)) {
        return DecodePlanes(*header, colour, rgb);
    }
    const PageBlock stored(rgb.size());
    const bool isWhole = DecodeRle(source, layout, stored.Bytes());
    ConvertToRgb(colour, stored.Bytes(), rgb);
    return isWhole;
}

}  // namespace quorvex
