#include "foundation/engines/jpeg2000/decoder/codestream/markers.h"

#include <algorithm>

namespace quorvex::j2k {
namespace {

constexpr std::uint32_t kMostTiles = 65535;

bool IsSound(const ImageSize& size) noexcept {
    const Rect& image = size.image;
    const auto reaches = [](std::uint32_t begin, std::uint32_t length, std::uint32_t into) {
        return std::uint64_t{begin} + length > into;
    };
    // The reference grid has 2^32 - 1 places, but sums of two must not pass 32 bits.
    constexpr std::uint32_t kFarthest = 0x7FFFFFFF;
    return !image.IsEmpty() && image.x1 <= kFarthest && image.y1 <= kFarthest &&
           size.tileWidth > 0 && size.tileHeight > 0 && size.tileX0 <= image.x0 &&
           size.tileY0 <= image.y0 && reaches(size.tileX0, size.tileWidth, image.x0) &&
           reaches(size.tileY0, size.tileHeight, image.y0) &&
           size.TilesAcross() * size.TilesDown() <= kMostTiles;
}

bool ReadComponentSizes(ByteReader& reader, ImageSize& size) {
    const std::uint32_t count = reader.Word();
    if (count == 0 || count > kMostComponents || reader.Left() < 3 * std::size_t{count})
        return false;
    size.components.resize(count);
    for (ComponentSize& component : size.components) {
        const std::uint32_t depth = reader.Byte();
        component.isSigned = (depth & 0x80) != 0;
        component.precision = static_cast<std::uint8_t>((depth & 0x7F) + 1);
        component.dx = static_cast<std::uint8_t>(reader.Byte());
        component.dy = static_cast<std::uint8_t>(reader.Byte());
        if (component.dx == 0 || component.dy == 0 || component.precision > kMostPrecision)
            return false;
    }
    return true;
}

// From the number of levels on, COD and COC are alike.
bool ReadCodingStyle(ByteReader& reader, bool hasPrecincts, CodingStyle& style) noexcept {
    constexpr unsigned kMostExponent = 10;
    constexpr unsigned kMostArea = 12;
    style.levels = static_cast<std::uint8_t>(reader.Byte());
    const unsigned width = reader.Byte() + 2;
    const unsigned height = reader.Byte() + 2;
    style.blockStyle = static_cast<std::uint8_t>(reader.Byte());
    const unsigned transform = reader.Byte();
    if (reader.RanOut() || style.levels > kMostLevels || width > kMostExponent ||
        height > kMostExponent || width + height > kMostArea || transform > 1)
        return false;
    style.blockWidthExponent = static_cast<std::uint8_t>(width);
    style.blockHeightExponent = static_cast<std::uint8_t>(height);
    style.isReversible = transform == 1;
    style.precincts.fill(0xFF);
    for (unsigned r = 0; hasPrecincts && r <= style.levels; ++r) {
        const unsigned size = reader.Byte();
        // Above the lowest resolution a precinct is halved among the bands.
        if (r > 0 && ((size & 15) == 0 || (size >> 4) == 0)) return false;
        style.precincts[r] = static_cast<std::uint8_t>(size);
    }
    return !reader.RanOut();
}

bool ReadCod(ByteReader reader, Parameters& parameters) noexcept {
    constexpr unsigned kLastProgression = 4;
    const unsigned flags = reader.Byte();
    const unsigned progression = reader.Byte();
    const unsigned layers = reader.Word();
    const unsigned transform = reader.Byte();
    CodingStyle style;
    if (progression > kLastProgression || layers == 0 || transform > 1 ||
        !ReadCodingStyle(reader, (flags & 1) != 0, style))
        return false;
    parameters.tile = {.hasSop = (flags & 2) != 0,
                       .hasEph = (flags & 4) != 0,
                       .hasColourTransform = transform == 1,
                       .progression = static_cast<Progression>(progression),
                       .layers = static_cast<std::uint16_t>(layers)};
    for (ComponentParameters& component : parameters.components) {
        if (!component.hasOwnStyle) component.style = style;
    }
    parameters.hasStyle = true;
    return true;
}

// Null for a component that is not there.
ComponentParameters* ReadComponent(ByteReader& reader, Parameters& parameters) noexcept {
    constexpr std::size_t kMostWithOneByte = 256;
    const std::uint32_t index =
        parameters.components.size() > kMostWithOneByte ? reader.Word() : reader.Byte();
    if (reader.RanOut() || index >= parameters.components.size()) return nullptr;
    return &parameters.components[index];
}

bool ReadCoc(ByteReader reader, Parameters& parameters) noexcept {
    ComponentParameters* component = ReadComponent(reader, parameters);
    if (component == nullptr) return false;
    const unsigned flags = reader.Byte();
    CodingStyle style;
    if (!ReadCodingStyle(reader, (flags & 1) != 0, style)) return false;
    component->style = style;
    component->hasOwnStyle = true;
    return true;
}

bool ReadQuantisation(ByteReader& reader, Quantisation& quantisation) noexcept {
    const unsigned style = reader.Byte();
    const unsigned kind = style & 31;
    if (reader.RanOut() || kind > 2) return false;
    quantisation.kind = static_cast<QuantisationKind>(kind);
    quantisation.guardBits = static_cast<std::uint8_t>(style >> 5);
    const std::size_t width = kind == 0 ? 1 : 2;
    const std::size_t count =
        kind == 1 ? 1 : std::min(reader.Left() / width, quantisation.steps.size());
    if (count == 0) return false;
    quantisation.count = static_cast<std::uint8_t>(count);
    for (std::size_t i = 0; i < count; ++i) {
        // Without quantisation there is an exponent only, in the upper five bits.
        const unsigned step = kind == 0 ? (reader.Byte() >> 3) << 11 : reader.Word();
        quantisation.steps[i] = static_cast<std::uint16_t>(step);
    }
    return !reader.RanOut();
}

bool ReadQcd(ByteReader reader, Parameters& parameters) noexcept {
    Quantisation quantisation;
    if (!ReadQuantisation(reader, quantisation)) return false;
    for (ComponentParameters& component : parameters.components) {
        if (!component.hasOwnQuantisation) component.quantisation = quantisation;
    }
    parameters.hasQuantisation = true;
    return true;
}

bool ReadQcc(ByteReader reader, Parameters& parameters) noexcept {
    ComponentParameters* component = ReadComponent(reader, parameters);
    Quantisation quantisation;
    if (component == nullptr || !ReadQuantisation(reader, quantisation)) return false;
    component->quantisation = quantisation;
    component->hasOwnQuantisation = true;
    return true;
}

bool ReadRgn(ByteReader reader, Parameters& parameters) noexcept {
    constexpr unsigned kMostShift = 37;
    ComponentParameters* component = ReadComponent(reader, parameters);
    if (component == nullptr) return false;
    const unsigned style = reader.Byte();
    const unsigned shift = reader.Byte();
    if (reader.RanOut() || style != 0 || shift > kMostShift) return false;
    component->roiShift = static_cast<std::uint8_t>(shift);
    return true;
}

bool ReadPoc(ByteReader reader, Parameters& parameters) {
    const bool isWide = parameters.components.size() > 256;
    const auto component = [&] { return isWide ? reader.Word() : reader.Byte(); };
    const std::size_t rowBytes = isWide ? 9 : 7;
    if (reader.Left() < rowBytes) return false;
    while (reader.Left() >= rowBytes) {
        ProgressionVolume volume;
        volume.firstResolution = static_cast<std::uint8_t>(reader.Byte());
        volume.firstComponent = static_cast<std::uint16_t>(component());
        volume.endLayer = static_cast<std::uint16_t>(reader.Word());
        volume.endResolution = static_cast<std::uint8_t>(reader.Byte());
        std::uint32_t end = component();
        if (end == 0) end = isWide ? kMostComponents : 256;
        volume.endComponent = static_cast<std::uint16_t>(std::min(end, kMostComponents));
        const unsigned order = reader.Byte();
        if (order > 4) return false;
        volume.order = static_cast<Progression>(order);
        parameters.volumes.push_back(volume);
    }
    return true;
}

}  // namespace

std::uint64_t ImageSize::TilesAcross() const noexcept {
    return (std::uint64_t{image.x1} - tileX0 + tileWidth - 1) / tileWidth;
}

std::uint64_t ImageSize::TilesDown() const noexcept {
    return (std::uint64_t{image.y1} - tileY0 + tileHeight - 1) / tileHeight;
}

Rect ImageSize::Tile(std::uint32_t index) const noexcept {
    const std::uint64_t across = TilesAcross();
    const std::uint64_t left = tileX0 + (index % across) * tileWidth;
    const std::uint64_t top = tileY0 + (index / across) * tileHeight;
    const auto clip = [](std::uint64_t place, std::uint32_t least, std::uint32_t most) {
        return static_cast<std::uint32_t>(std::clamp<std::uint64_t>(place, least, most));
    };
    return {clip(left, image.x0, image.x1), clip(top, image.y0, image.y1),
            clip(left + tileWidth, image.x0, image.x1), clip(top + tileHeight, image.y0, image.y1)};
}

bool ReadSize(Bytes content, ImageSize& size) {
    ByteReader reader(content);
    static_cast<void>(reader.Word());  // capabilities: the segments themselves tell
    size.image.x1 = reader.Long();
    size.image.y1 = reader.Long();
    size.image.x0 = reader.Long();
    size.image.y0 = reader.Long();
    size.tileWidth = reader.Long();
    size.tileHeight = reader.Long();
    size.tileX0 = reader.Long();
    size.tileY0 = reader.Long();
    return !reader.RanOut() && IsSound(size) && ReadComponentSizes(reader, size);
}

bool ReadSegment(unsigned marker, Bytes content, Parameters& parameters) {
    const ByteReader reader(content);
    switch (marker) {
        case kCod:
            return ReadCod(reader, parameters);
        case kCoc:
            return ReadCoc(reader, parameters);
        case kQcd:
            return ReadQcd(reader, parameters);
        case kQcc:
            return ReadQcc(reader, parameters);
        case kRgn:
            return ReadRgn(reader, parameters);
        case kPoc:
            return ReadPoc(reader, parameters);
        default:
            return true;
    }
}

}  // namespace quorvex::j2k
