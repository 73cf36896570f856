#include "parser/tiles/tile_layout.h"

#include "foundation/types/limits.h"
#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace quorvex {
namespace {

constexpr std::int64_t kLargestSide = std::numeric_limits<std::int32_t>::max();

std::int64_t NumberOf(const CDcmObjectCommon& object, std::uint32_t tag, std::int64_t absent) {
    return Read<long>(object, tag).value_or(absent);
}

/// The values of an attribute, in the order of their first use.
template <class Value>
class Indices {
public:
    int Of(const Value& value) {
        const auto found = std::ranges::find(values_, value);
        if (found == values_.end()) {
            values_.push_back(value);
            return Count() - 1;
        }
        return static_cast<int>(found - values_.begin());
    }
    [[nodiscard]] int Count() const { return static_cast<int>(values_.size()); }
    [[nodiscard]] const std::vector<Value>& Values() const { return values_; }

private:
    std::vector<Value> values_;
};

/// A group of a frame, or else the shared one.
std::optional<CDcmItem> GroupOf(const CDcmItem& own, const std::optional<CDcmItem>& shared,
                                std::uint32_t sequence) {
    auto item = Read<CDcmItem>(own, sequence);
    if (!item && shared) item = Read<CDcmItem>(*shared, sequence);
    return item;
}

bool IsOutside(const Tile& tile, const TileLayout& layout) {
    return tile.x >= layout.picture.cx || tile.y >= layout.picture.cy ||
           std::int64_t{tile.x} + layout.tile.cx <= 0 || std::int64_t{tile.y} + layout.tile.cy <= 0;
}

/// Frames whose place follows from their number (PS3.3 C.7.6.17.3): row by row, then the focal
/// planes, then the optical paths.
class FullLayout {
public:
    FullLayout(const CDcmObject& header, TileLayout& layout) : layout_(layout) {
        const std::int64_t across = (std::int64_t{layout.picture.cx} - 1) / layout.tile.cx + 1;
        const std::int64_t down = (std::int64_t{layout.picture.cy} - 1) / layout.tile.cy + 1;
        across_ = across;
        perPlane_ = across * down;
        first_ =
            std::max<std::int64_t>(NumberOf(header, tag::kConcatenationFrameOffsetNumber, 0), 0);
    }

    void Place(int frames) {
        const std::int64_t planes = layout_.focalPlanes;
        for (int frame = 0; frame < frames; ++frame) {
            const std::int64_t number = first_ + frame;
            const std::int64_t plane = number / perPlane_;
            if (plane / planes >= layout_.opticalPaths) return;
            const std::int64_t place = number % perPlane_;
            layout_.tiles.push_back({.opticalPath = static_cast<int>(plane / planes),
                                     .focalPlane = static_cast<int>(plane % planes),
                                     .y = static_cast<int>(place / across_ * layout_.tile.cy),
                                     .x = static_cast<int>(place % across_ * layout_.tile.cx),
                                     .frame = frame});
        }
    }

private:
    TileLayout& layout_;
    std::int64_t across_ = 1;
    std::int64_t perPlane_ = 1;
    std::int64_t first_ = 0;
};

int CountOf(const CDcmObject& header, std::uint32_t tag, std::int64_t most) {
    return static_cast<int>(std::clamp<std::int64_t>(NumberOf(header, tag, 1), 1, most));
}

std::vector<CString> PathNamesOf(const CDcmObject& header) {
    std::vector<CString> names;
    ForEachItem(header, tag::kOpticalPathSequence, [&](const CDcmItem& path) {
        names.push_back(Read<CString>(path, tag::kOpticalPathIdentifier).value_or(CString()));
    });
    return names;
}

/// Where each of `more` is among `all`, which gets those that it does not have.
template <class Value>
std::vector<int> Merge(std::vector<Value>& all, const std::vector<Value>& more) {
    std::vector<int> places;
    for (const Value& value : more) {
        const auto found = std::ranges::find(all, value);
        places.push_back(static_cast<int>(found - all.begin()));
        if (found == all.end()) all.push_back(value);
    }
    return places;
}

int PlaceOf(const std::vector<int>& places, int index) {
    const auto at = static_cast<std::size_t>(index);
    return at < places.size() ? places[at] : index;
}

/// Heights in their order, and the planes of the tiles numbered by them.
void OrderPlanes(TileLayout& layout) {
    auto ordered = layout.planeHeights;
    std::ranges::sort(ordered);
    for (Tile& tile : layout.tiles) {
        const double height = layout.planeHeights[static_cast<std::size_t>(tile.focalPlane)];
        tile.focalPlane =
            static_cast<int>(std::ranges::lower_bound(ordered, height) - ordered.begin());
    }
    layout.planeHeights = std::move(ordered);
}

/// Frames that say where they lie.
class SparseLayout {
public:
    SparseLayout(const CDcmObject& header, TileLayout& layout) : header_(header), layout_(layout) {
        for (const CString& name : layout.pathNames) paths_.Of(name);
        shared_ = Read<CDcmItem>(header, tag::kSharedFunctionalGroupsSequence);
    }

    /// False where no frame says so.
    bool Place(int frames) {
        int frame = 0;
        ForEachItem(header_, tag::kPerFrameFunctionalGroupsSequence, [&](const CDcmItem& groups) {
            if (frame < frames) PlaceFrame(groups, frame);
            ++frame;
        });
        layout_.planeHeights = heights_.Values();
        OrderPlanes(layout_);
        layout_.focalPlanes = std::max(heights_.Count(), 1);
        layout_.opticalPaths = std::max(layout_.opticalPaths, paths_.Count());
        layout_.pathNames = paths_.Values();
        std::erase_if(layout_.tiles, [&](const Tile& tile) { return IsOutside(tile, layout_); });
        return isAnyPlaced_;
    }

private:
    void PlaceFrame(const CDcmItem& groups, int frame) {
        const auto position = GroupOf(groups, shared_, tag::kPlanePositionSlideSequence);
        if (!position) return;
        const std::int64_t x = NumberOf(*position, tag::kColumnPositionInTotalImagePixelMatrix, 0);
        const std::int64_t y = NumberOf(*position, tag::kRowPositionInTotalImagePixelMatrix, 0);
        const auto isPlace = [](std::int64_t number) {
            return number > -kLargestSide && number <= kLargestSide;
        };
        if (!isPlace(x) || !isPlace(y)) return;
        const auto path = GroupOf(groups, shared_, tag::kOpticalPathIdentificationSequence);
        Tile tile{.y = static_cast<int>(y - 1), .x = static_cast<int>(x - 1), .frame = frame};
        if (path)
            tile.opticalPath =
                paths_.Of(Read<CString>(*path, tag::kOpticalPathIdentifier).value_or(CString()));
        tile.focalPlane = heights_.Of(
            Read<double>(*position, tag::kZOffsetInSlideCoordinateSystem).value_or(0.0));
        layout_.tiles.push_back(tile);
        isAnyPlaced_ = true;
    }

    const CDcmObject& header_;
    TileLayout& layout_;
    std::optional<CDcmItem> shared_;
    Indices<CString> paths_;
    Indices<double> heights_;
    bool isAnyPlaced_ = false;
};

}  // namespace

void JoinLayouts(TileLayout& one, const TileLayout& other, int file) {
    const auto paths = Merge(one.pathNames, other.pathNames);
    const auto planes = Merge(one.planeHeights, other.planeHeights);
    const int planesAhead = one.isTiled || other.isTiled ? 0 : one.focalPlanes;
    for (Tile tile : other.tiles) {
        tile.file = file;
        tile.opticalPath = PlaceOf(paths, tile.opticalPath);
        tile.focalPlane = PlaceOf(planes, tile.focalPlane) + planesAhead;
        one.opticalPaths = std::max(one.opticalPaths, tile.opticalPath + 1);
        one.focalPlanes = std::max(one.focalPlanes, tile.focalPlane + 1);
        one.tiles.push_back(tile);
    }
    if (!one.planeHeights.empty() &&
        one.planeHeights.size() >= static_cast<std::size_t>(one.focalPlanes))
        OrderPlanes(one);
    one.tile = {std::max(one.tile.cx, other.tile.cx), std::max(one.tile.cy, other.tile.cy)};
    std::sort(one.tiles.begin(), one.tiles.end());
}

std::optional<TileLayout> LayoutOf(const CDcmObject& header, int frames) {
    TileLayout layout;
    layout.tile = {static_cast<int>(NumberOf(header, tag::kColumns, 0)),
                   static_cast<int>(NumberOf(header, tag::kRows, 0))};
    if (layout.tile.cx < 1 || layout.tile.cy < 1 || frames < 1) return std::nullopt;
    if (frames > kMostFrames && !RefuseBy(Limit::kMostFrames)) return std::nullopt;
    const std::int64_t columns = NumberOf(header, tag::kTotalPixelMatrixColumns, 0);
    const std::int64_t rows = NumberOf(header, tag::kTotalPixelMatrixRows, 0);
    if (columns < 1 || rows < 1) {
        layout.picture = layout.tile;
        layout.isTiled = false;
        layout.focalPlanes = frames;
        for (int frame = 0; frame < frames; ++frame)
            layout.tiles.push_back({.focalPlane = frame, .frame = frame});
        return layout;
    }
    if (columns > kLargestSide || rows > kLargestSide) return std::nullopt;
    layout.picture = {static_cast<int>(columns), static_cast<int>(rows)};
    layout.pathNames = PathNamesOf(header);
    const auto named = static_cast<std::int64_t>(layout.pathNames.size());
    const std::int64_t stated = CountOf(header, tag::kNumberOfOpticalPaths, frames);
    layout.opticalPaths = static_cast<int>(std::clamp<std::int64_t>(named, stated, frames));
    const auto organisation = Read<CString>(header, tag::kDimensionOrganizationType);
    if (organisation != CString("TILED_FULL") && SparseLayout(header, layout).Place(frames))
        return layout;
    layout.focalPlanes = CountOf(header, tag::kTotalPixelMatrixFocalPlanes, frames);
    FullLayout(header, layout).Place(frames);
    return layout;
}

}  // namespace quorvex
