/// Where the frames of one file lie in the picture that they are tiles of.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/Types.h"

#include <array>
#include <optional>
#include <vector>

namespace quorvex {

struct Tile {
    int opticalPath = 0;
    int focalPlane = 0;
    int y = 0;  ///< rows and columns of the whole picture, from 0
    int x = 0;
    int file = 0;   ///< of the level
    int frame = 0;  ///< of the file

    /// Tiles of one plane lie together, row by row.
    friend bool operator<(const Tile& one, const Tile& other) noexcept {
        return one.Order() < other.Order();
    }

private:
    using Numbers = std::array<int, 6>;
    [[nodiscard]] Numbers Order() const noexcept {
        return {opticalPath, focalPlane, y, x, file, frame};
    }
};

struct TileLayout {
    CSize picture;
    CSize tile;
    int opticalPaths = 1;
    int focalPlanes = 1;
    bool isTiled = true;             ///< else each frame is a plane of its own
    std::vector<CString> pathNames;  ///< identifiers of optical paths; empty where none are stated
    std::vector<double> planeHeights;  ///< ascending; empty where the frames do not state theirs
    std::vector<Tile> tiles;
};

/// Brings the tiles of one more file of the same picture in: the same optical paths and heights are
/// the same, others come behind; planes of files that are not tiled follow each other.
void JoinLayouts(TileLayout& one, const TileLayout& other, int file);

/// Nothing where the header gives no sizes. Tiles that lie wholly outside of the picture are left
/// out.
/// @param frames  how many the file has
[[nodiscard]] std::optional<TileLayout> LayoutOf(const CDcmObject& header, int frames);

}  // namespace quorvex
