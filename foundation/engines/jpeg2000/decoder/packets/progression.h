/// The order of a tile's packets (ISO/IEC 15444-1 B.12).
#pragma once

#include "foundation/engines/jpeg2000/decoder/packets/tile_layout.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace quorvex::j2k {

/// One precinct, and where on the reference grid its packets are due.
struct PrecinctPlace {
    std::uint32_t x = 0, y = 0;
    std::uint32_t slot = 0;
    std::uint16_t component = 0;
    std::uint8_t resolution = 0;
};

/// The precincts of a volume in the order of its progression, layers left aside.
/// Throws std::bad_alloc.
[[nodiscard]] std::vector<PrecinctPlace> PlacesInOrder(const ImageSize& size,
                                                       const TileLayout& layout,
                                                       const ProgressionVolume& volume);

/// The stretch of `places` that goes through all layers before the next one begins.
[[nodiscard]] std::span<const PrecinctPlace> LayerGroup(std::span<const PrecinctPlace> places,
                                                        Progression order) noexcept;

/// Calls `visit(place, layer)` for each packet of a volume until one answers false, and gives the
/// last answer.
template <class Visit>
bool ForPackets(std::span<const PrecinctPlace> places, const ProgressionVolume& volume,
                const Visit& visit) {
    while (!places.empty()) {
        const std::span<const PrecinctPlace> group = LayerGroup(places, volume.order);
        for (std::uint32_t layer = 0; layer < volume.endLayer; ++layer) {
            for (const PrecinctPlace& place : group) {
                if (!visit(place, layer)) return false;
            }
        }
        places = places.subspan(group.size());
    }
    return true;
}

}  // namespace quorvex::j2k
