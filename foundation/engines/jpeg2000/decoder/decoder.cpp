#include "foundation/engines/jpeg2000/decoder/decoder.h"

#include "foundation/engines/jpeg2000/decoder/tile_decoding.h"
#include "foundation/types/progress.h"

#include <algorithm>
#include <vector>

namespace quorvex::j2k {
namespace {

// Streams that break off keep some of what they were: the allowances are for those. Beyond, a
// tile's component, a precinct or a packet must cost some of the stream.
constexpr std::uint64_t kAllowance = 1 << 17;
constexpr std::uint64_t kMostPerByte = 4;
constexpr unsigned kMostDecodedPrecision = 31;

Rect Intersect(const Rect& a, const Rect& b) noexcept {
    Rect both{std::max(a.x0, b.x0), std::max(a.y0, b.y0), std::min(a.x1, b.x1),
              std::min(a.y1, b.y1)};
    both.x1 = std::max(both.x0, both.x1);
    both.y1 = std::max(both.y0, both.y1);
    return both;
}

// An area of the reference grid as a component has it, `down` levels lower.
Rect InComponent(const Rect& area, const ComponentSize& component, unsigned down) noexcept {
    return {CeilShift(CeilDivide(area.x0, component.dx), down),
            CeilShift(CeilDivide(area.y0, component.dy), down),
            CeilShift(CeilDivide(area.x1, component.dx), down),
            CeilShift(CeilDivide(area.y1, component.dy), down)};
}

void StoreNothing(std::span<const ComponentTarget> targets) noexcept {
    for (const ComponentTarget& target : targets) {
        for (std::uint32_t y = 0; y < target.region.Height(); ++y) {
            StoreZeros(*target.plane, target.x, target.y + y, target.region.Width());
        }
    }
}

/// One decoding: goes from tile to tile.
class TileWalk {
public:
    TileWalk(const Decoder& decoder, const Codestream& codestream, const Wanted& wanted,
             std::span<const OutputPlane> planes, std::uint64_t allowance)
        : decoder_(decoder),
          codestream_(codestream),
          wanted_(wanted),
          planes_(planes),
          allowance_(allowance) {}

    // A tile that is refused does not spoil the others.
    [[nodiscard]] Outcome Run() {
        const std::uint64_t tiles = codestream_.size.TilesAcross() * codestream_.size.TilesDown();
        bool isWhole = !codestream_.isCut;
        bool isAnyDecoded = false;
        bool isAnyRefused = false;
        for (std::uint32_t tile = 0; tile < tiles; ++tile) {
            const std::vector<ComponentTarget> targets = TargetsOf(tile);
            if (targets.empty()) continue;
            const ProgressStretch stretch(tile, tiles);
            const Outcome outcome = RunTile(tile, targets);
            if (outcome == Outcome::kRefused) StoreNothing(targets);
            isAnyRefused |= outcome == Outcome::kRefused;
            isAnyDecoded |= outcome != Outcome::kRefused;
            isWhole &= outcome == Outcome::kDone;
        }
        if (isAnyRefused && !isAnyDecoded) return Outcome::kRefused;
        return isWhole ? Outcome::kDone : Outcome::kIncomplete;
    }

private:
    // Empty where the tile gives nothing that is wanted.
    [[nodiscard]] std::vector<ComponentTarget> TargetsOf(std::uint32_t tile) const {
        const Rect area = codestream_.size.Tile(tile);
        std::vector<ComponentTarget> targets;
        bool isWanted = false;
        for (unsigned c = 0; c < planes_.size(); ++c) {
            const ComponentSize& component = codestream_.size.components[c];
            const Rect whole = decoder_.Area(c, wanted_);
            ComponentTarget target;
            target.region = Intersect(whole, InComponent(area, component, wanted_.discardedLevels));
            target.x = target.region.x0 - whole.x0;
            target.y = target.region.y0 - whole.y0;
            target.plane = &planes_[c];
            target.range = RangeOf(component.precision, component.isSigned, planes_[c].keepsSign);
            isWanted |= !target.region.IsEmpty();
            targets.push_back(target);
        }
        if (!isWanted) targets.clear();
        return targets;
    }

    [[nodiscard]] Outcome RunTile(std::uint32_t tile, std::vector<ComponentTarget> targets) const {
        if (codestream_.PartsOf(tile).empty()) return Outcome::kRefused;
        TileData data;
        const PacketSelection selection{wanted_.layers, wanted_.discardedLevels};
        if (ReadTile(codestream_, tile, selection, allowance_, data) != TileRead::kDone)
            return Outcome::kRefused;
        for (std::size_t c = 0; c < targets.size(); ++c) {
            const unsigned levels = data.parameters.components[c].style.levels;
            if (levels < wanted_.discardedLevels) return Outcome::kRefused;
            targets[c].resolution = levels - wanted_.discardedLevels;
        }
        const bool isSound = DecodeTile(data, targets, wanted_.executor);
        return isSound && data.isWhole ? Outcome::kDone : Outcome::kIncomplete;
    }

    const Decoder& decoder_;
    const Codestream& codestream_;
    const Wanted& wanted_;
    std::span<const OutputPlane> planes_;
    std::uint64_t allowance_;
};

}  // namespace

Outcome Decoder::Open(Bytes codestream) {
    codestream_ = Codestream();
    length_ = codestream.size();
    if (!ReadCodestream(codestream, codestream_)) return Outcome::kRefused;
    const auto& components = codestream_.size.components;
    const std::uint64_t tiles = codestream_.size.TilesAcross() * codestream_.size.TilesDown();
    if (tiles * components.size() > kAllowance + kMostPerByte * length_) return Outcome::kRefused;
    const bool isTooDeep = std::any_of(
        components.begin(), components.end(),
        [](const ComponentSize& component) { return component.precision > kMostDecodedPrecision; });
    return isTooDeep || codestream_.isMultiComponent ? Outcome::kUnsupported : Outcome::kDone;
}

unsigned Decoder::Levels() const {
    unsigned levels = kMostLevels;
    const auto include = [&](const Parameters& parameters) {
        for (const ComponentParameters& component : parameters.components) {
            levels = std::min<unsigned>(levels, component.style.levels);
        }
    };
    include(codestream_.parameters);
    for (const TilePart& part : codestream_.parts) {
        if (!part.header.empty()) include(ReadTileHeader(codestream_, part.tile).parameters);
    }
    return levels;
}

Rect Decoder::Area(unsigned component, const Wanted& wanted) const noexcept {
    const Rect& image = codestream_.size.image;
    Rect area = image;
    if (!wanted.region.IsEmpty()) {
        const auto place = [](std::uint32_t begin, std::uint32_t offset, std::uint32_t end) {
            return static_cast<std::uint32_t>(
                std::min<std::uint64_t>(std::uint64_t{begin} + offset, end));
        };
        area = {place(image.x0, wanted.region.x0, image.x1),
                place(image.y0, wanted.region.y0, image.y1),
                place(image.x0, wanted.region.x1, image.x1),
                place(image.y0, wanted.region.y1, image.y1)};
    }
    return InComponent(area, codestream_.size.components[component], wanted.discardedLevels);
}

bool Decoder::Fits(const Wanted& wanted, std::span<const OutputPlane> planes) const {
    if (planes.size() != codestream_.size.components.size()) return false;
    if (wanted.discardedLevels > kMostLevels) return false;
    return std::all_of(planes.begin(), planes.end(), [](const OutputPlane& plane) {
        return plane.data != nullptr && plane.repeatX > 0 && plane.repeatY > 0 &&
               (plane.bytesPerSample == 1 || plane.bytesPerSample == 2 ||
                plane.bytesPerSample == 4);
    });
}

Outcome Decoder::Decode(const Wanted& wanted, std::span<const OutputPlane> planes) const {
    if (!Fits(wanted, planes)) return Outcome::kRefused;
    return TileWalk(*this, codestream_, wanted, planes, kAllowance + kMostPerByte * length_).Run();
}

}  // namespace quorvex::j2k
