#include "foundation/engines/jpeg2000/decoder/packets/progression.h"

#include <tuple>

namespace quorvex::j2k {
namespace {

// Where precinct row or column `index` begins on the reference grid; the first one begins with the
// tile. `unit` is the exponent of a precinct there, `scale` the component's sampling.
std::uint32_t PlaceOf(std::uint32_t index, std::uint32_t areaBegin, unsigned exponent,
                      unsigned down, std::uint32_t scale, std::uint32_t tileBegin) noexcept {
    const std::uint64_t begin = std::uint64_t{index} << exponent;
    if (begin < areaBegin) return tileBegin;
    // A place inside of the tile fits into 32 bits.
    return static_cast<std::uint32_t>((begin << down) * scale);
}

void AddPlaces(const ImageSize& size, const TileLayout& layout, std::size_t component,
               std::size_t index, std::vector<PrecinctPlace>& places) {
    const ComponentLayout& parent = layout.components[component];
    const ResolutionLayout& resolution = parent.resolutions[index];
    const auto down = static_cast<unsigned>(parent.resolutions.size() - 1 - index);
    const ComponentSize& sampling = size.components[component];
    PrecinctPlace place{.component = static_cast<std::uint16_t>(component),
                        .resolution = static_cast<std::uint8_t>(index)};
    const Rect& precincts = resolution.precincts;
    for (std::uint32_t py = precincts.y0; py < precincts.y1; ++py) {
        place.y = PlaceOf(py, resolution.area.y0, resolution.precinctHeightExponent, down,
                          sampling.dy, layout.area.y0);
        for (std::uint32_t px = precincts.x0; px < precincts.x1; ++px, ++place.slot) {
            place.x = PlaceOf(px, resolution.area.x0, resolution.precinctWidthExponent, down,
                              sampling.dx, layout.area.x0);
            places.push_back(place);
        }
    }
}

using Key = std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t>;

Key KeyOf(const PrecinctPlace& place, Progression order) noexcept {
    const std::uint32_t c = place.component;
    const std::uint32_t r = place.resolution;
    switch (order) {
        case Progression::LRCP:
        case Progression::RLCP:
            return {r, c, place.slot, 0, 0};
        case Progression::RPCL:
            return {r, place.y, place.x, c, place.slot};
        case Progression::PCRL:
            return {place.y, place.x, c, r, place.slot};
        case Progression::CPRL:
            break;
    }
    return {c, place.y, place.x, r, place.slot};
}

}  // namespace

std::vector<PrecinctPlace> PlacesInOrder(const ImageSize& size, const TileLayout& layout,
                                         const ProgressionVolume& volume) {
    std::vector<PrecinctPlace> places;
    const std::size_t endComponent =
        std::min<std::size_t>(volume.endComponent, layout.components.size());
    for (std::size_t c = volume.firstComponent; c < endComponent; ++c) {
        const std::size_t endResolution =
            std::min<std::size_t>(volume.endResolution, layout.components[c].resolutions.size());
        for (std::size_t r = volume.firstResolution; r < endResolution; ++r) {
            AddPlaces(size, layout, c, r, places);
        }
    }
    std::sort(places.begin(), places.end(), [&](const PrecinctPlace& a, const PrecinctPlace& b) {
        return KeyOf(a, volume.order) < KeyOf(b, volume.order);
    });
    return places;
}

std::span<const PrecinctPlace> LayerGroup(std::span<const PrecinctPlace> places,
                                          Progression order) noexcept {
    if (order == Progression::LRCP) return places;
    if (order != Progression::RLCP) return places.first(1);
    const auto end = std::find_if(places.begin(), places.end(), [&](const PrecinctPlace& place) {
        return place.resolution != places.front().resolution;
    });
    return places.first(static_cast<std::size_t>(end - places.begin()));
}

}  // namespace quorvex::j2k
