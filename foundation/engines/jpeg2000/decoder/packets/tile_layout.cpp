#include "foundation/engines/jpeg2000/decoder/packets/tile_layout.h"

#include <algorithm>
#include <cmath>

namespace quorvex::j2k {
namespace {

// ISO/IEC 15444-1 equation B-15: the area of a band `down` levels below the component's.
Rect BandArea(const Rect& area, Orientation orientation, unsigned down) noexcept {
    if (down == 0) return area;
    const auto place = [down](std::uint32_t value, bool isHigh) {
        const std::uint64_t half = isHigh ? std::uint64_t{1} << (down - 1) : 0;
        const std::uint64_t unit = std::uint64_t{1} << down;
        return value <= half ? 0U : static_cast<std::uint32_t>((value - half + unit - 1) >> down);
    };
    const bool isRight = (static_cast<unsigned>(orientation) & 1) != 0;
    const bool isLower = (static_cast<unsigned>(orientation) & 2) != 0;
    return {place(area.x0, isRight), place(area.y0, isLower), place(area.x1, isRight),
            place(area.y1, isLower)};
}

struct Step {
    unsigned exponent = 0;
    unsigned mantissa = 0;
};

// Band `index` of all bands; derived steps go down with the levels (equation E-5).
bool StepOf(const Quantisation& quantisation, unsigned index, Step& step) noexcept {
    const bool isDerived = quantisation.kind == QuantisationKind::kDerived;
    if (!isDerived && index >= quantisation.count) return false;
    const unsigned coded = quantisation.steps[isDerived ? 0 : index];
    step = {coded >> 11, coded & 0x7FF};
    const unsigned down = isDerived && index > 0 ? (index - 1) / 3 : 0;
    step.exponent = step.exponent > down ? step.exponent - down : 0;
    return true;
}

unsigned GainOf(Orientation orientation) noexcept {
    constexpr unsigned kGains[] = {0, 1, 1, 2};
    return kGains[static_cast<std::size_t>(orientation)];
}

bool LayOutBand(const ComponentParameters& parameters, unsigned precision, const Rect& area,
                unsigned resolution, Orientation orientation, BandLayout& band) noexcept {
    const unsigned levels = parameters.style.levels;
    const unsigned down = resolution == 0 ? levels : levels - resolution + 1;
    const unsigned index =
        resolution == 0 ? 0 : 3 * (resolution - 1) + static_cast<unsigned>(orientation);
    Step step;
    if (!StepOf(parameters.quantisation, index, step)) return false;
    band.orientation = orientation;
    band.area = BandArea(area, orientation, down);
    band.totalPlanes = static_cast<int>(parameters.quantisation.guardBits + step.exponent) - 1;
    const int range = static_cast<int>(precision + GainOf(orientation));
    band.step = static_cast<float>(
        std::ldexp(1.0 + step.mantissa / 2048.0, range - static_cast<int>(step.exponent)));
    return true;
}

bool LayOutResolution(const ComponentParameters& parameters, unsigned precision, const Rect& area,
                      unsigned index, ResolutionLayout& resolution) {
    const CodingStyle& style = parameters.style;
    const unsigned down = style.levels - index;
    resolution.area = {CeilShift(area.x0, down), CeilShift(area.y0, down), CeilShift(area.x1, down),
                       CeilShift(area.y1, down)};
    resolution.precinctWidthExponent = style.precincts[index] & 15;
    resolution.precinctHeightExponent = style.precincts[index] >> 4;
    resolution.bands.resize(index == 0 ? 1 : 3);
    for (std::size_t i = 0; i < resolution.bands.size(); ++i) {
        const auto orientation = static_cast<Orientation>(index == 0 ? 0 : i + 1);
        if (!LayOutBand(parameters, precision, area, index, orientation, resolution.bands[i]))
            return false;
    }
    resolution.blockWidthExponent = static_cast<std::uint8_t>(
        std::min<unsigned>(style.blockWidthExponent, resolution.BandPrecinctWidth()));
    resolution.blockHeightExponent = static_cast<std::uint8_t>(
        std::min<unsigned>(style.blockHeightExponent, resolution.BandPrecinctHeight()));
    if (resolution.area.IsEmpty()) return true;
    const unsigned px = resolution.precinctWidthExponent;
    const unsigned py = resolution.precinctHeightExponent;
    resolution.precincts = {resolution.area.x0 >> px, resolution.area.y0 >> py,
                            CeilShift(resolution.area.x1, px), CeilShift(resolution.area.y1, py)};
    return true;
}

bool LayOutComponent(const ComponentParameters& parameters, const ComponentSize& size,
                     const Rect& tile, ComponentLayout& component) {
    component.area = {CeilDivide(tile.x0, size.dx), CeilDivide(tile.y0, size.dy),
                      CeilDivide(tile.x1, size.dx), CeilDivide(tile.y1, size.dy)};
    component.resolutions.resize(std::size_t{parameters.style.levels} + 1);
    for (unsigned r = 0; r <= parameters.style.levels; ++r) {
        if (!LayOutResolution(parameters, size.precision, component.area, r,
                              component.resolutions[r]))
            return false;
    }
    return true;
}

// The blocks of one band that lie in a precinct, by the band's grid of blocks.
Rect BlocksOf(const ResolutionLayout& resolution, const BandLayout& band, std::uint32_t px,
              std::uint32_t py) noexcept {
    const unsigned width = resolution.BandPrecinctWidth();
    const unsigned height = resolution.BandPrecinctHeight();
    const auto clip = [](std::uint64_t place, std::uint32_t least, std::uint32_t most) {
        return static_cast<std::uint32_t>(std::clamp<std::uint64_t>(place, least, most));
    };
    const Rect area = {clip(std::uint64_t{px} << width, band.area.x0, band.area.x1),
                       clip(std::uint64_t{py} << height, band.area.y0, band.area.y1),
                       clip((std::uint64_t{px} + 1) << width, band.area.x0, band.area.x1),
                       clip((std::uint64_t{py} + 1) << height, band.area.y0, band.area.y1)};
    if (area.IsEmpty()) return {};
    const unsigned bw = resolution.blockWidthExponent;
    const unsigned bh = resolution.blockHeightExponent;
    return {area.x0 >> bw, area.y0 >> bh, CeilShift(area.x1, bw), CeilShift(area.y1, bh)};
}

}  // namespace

// Above the lowest resolution a precinct covers half of its width and height in each band.
unsigned ResolutionLayout::BandPrecinctWidth() const noexcept {
    return bands.size() == 1 ? precinctWidthExponent : precinctWidthExponent - 1U;
}

unsigned ResolutionLayout::BandPrecinctHeight() const noexcept {
    return bands.size() == 1 ? precinctHeightExponent : precinctHeightExponent - 1U;
}

const BlockState* ResolutionLayout::Find(std::size_t band, std::uint32_t x,
                                         std::uint32_t y) const noexcept {
    const std::uint32_t px = x >> (BandPrecinctWidth() - blockWidthExponent);
    const std::uint32_t py = y >> (BandPrecinctHeight() - blockHeightExponent);
    const std::size_t slot =
        std::size_t{py - precincts.y0} * precincts.Width() + (px - precincts.x0);
    if (slot >= slots.size() || !slots[slot].precinct) return nullptr;
    const PrecinctBand& content = slots[slot].precinct->bands[band];
    const std::size_t place =
        std::size_t{y - content.blocks.y0} * content.blocks.Width() + (x - content.blocks.x0);
    return place < content.states.size() ? &content.states[place] : nullptr;
}

bool LayOutTile(const ImageSize& size, const Parameters& parameters, std::uint32_t tile,
                std::uint64_t mostPrecincts, TileLayout& layout) {
    layout.area = size.Tile(tile);
    layout.components.resize(size.components.size());
    for (std::size_t c = 0; c < size.components.size(); ++c) {
        if (!LayOutComponent(parameters.components[c], size.components[c], layout.area,
                             layout.components[c]))
            return false;
        for (const ResolutionLayout& resolution : layout.components[c].resolutions) {
            layout.precincts +=
                std::uint64_t{resolution.precincts.Width()} * resolution.precincts.Height();
            if (layout.precincts > mostPrecincts) return false;
        }
    }
    for (ComponentLayout& component : layout.components) {
        for (ResolutionLayout& resolution : component.resolutions) {
            resolution.slots.resize(std::size_t{resolution.precincts.Width()} *
                                    resolution.precincts.Height());
        }
    }
    return true;
}

Precinct& BuildPrecinct(ResolutionLayout& resolution, std::uint32_t index) {
    PrecinctSlot& slot = resolution.slots[index];
    if (slot.precinct) return *slot.precinct;
    auto precinct = std::make_unique<Precinct>();
    const std::uint32_t across = resolution.precincts.Width();
    for (const BandLayout& band : resolution.bands) {
        PrecinctBand content;
        content.blocks = BlocksOf(resolution, band, resolution.precincts.x0 + index % across,
                                  resolution.precincts.y0 + index / across);
        const std::uint32_t width = content.blocks.Width();
        const std::uint32_t height = content.blocks.Height();
        content.inclusion = TagTree(width, height);
        content.zeroPlanes = TagTree(width, height);
        content.states.resize(std::size_t{width} * height);
        precinct->bands.push_back(std::move(content));
    }
    slot.precinct = std::move(precinct);
    return *slot.precinct;
}

}  // namespace quorvex::j2k
