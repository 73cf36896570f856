/// What the marker segments of a codestream say (ISO/IEC 15444-1 Annex A), checked.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace quorvex::j2k {

inline constexpr unsigned kMostLevels = 32;
inline constexpr unsigned kMostComponents = 16384;
inline constexpr unsigned kMostPrecision = 38;

/// Half open; x1 >= x0 and y1 >= y0.
struct Rect {
    std::uint32_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    [[nodiscard]] std::uint32_t Width() const noexcept { return x1 - x0; }
    [[nodiscard]] std::uint32_t Height() const noexcept { return y1 - y0; }
    [[nodiscard]] bool IsEmpty() const noexcept { return x0 >= x1 || y0 >= y1; }
};

struct ComponentSize {
    std::uint8_t precision = 8;
    bool isSigned = false;
    std::uint8_t dx = 1, dy = 1;
};

/// SIZ. All areas are on the reference grid.
struct ImageSize {
    Rect image;
    std::uint32_t tileX0 = 0, tileY0 = 0, tileWidth = 0, tileHeight = 0;
    std::vector<ComponentSize> components;

    [[nodiscard]] std::uint64_t TilesAcross() const noexcept;
    [[nodiscard]] std::uint64_t TilesDown() const noexcept;
    [[nodiscard]] Rect Tile(std::uint32_t index) const noexcept;
};

// NOLINTNEXTLINE(readability-identifier-naming): the standard's own names
enum class Progression : std::uint8_t { LRCP = 0, RLCP = 1, RPCL = 2, PCRL = 3, CPRL = 4 };

/// What COD says of the whole tile.
struct TileStyle {
    bool hasSop = false;
    bool hasEph = false;
    bool hasColourTransform = false;
    Progression progression = Progression::LRCP;
    std::uint16_t layers = 1;
};

/// What COD or COC says of a component.
struct CodingStyle {
    std::uint8_t levels = 0;
    std::uint8_t blockWidthExponent = 6;
    std::uint8_t blockHeightExponent = 6;
    std::uint8_t blockStyle = 0;
    bool isReversible = false;
    std::array<std::uint8_t, kMostLevels + 1> precincts{};  ///< width in the lower four bits
};

enum class QuantisationKind : std::uint8_t { kNone = 0, kDerived = 1, kExpounded = 2 };

/// What QCD or QCC says: one step a band, lowest resolution first; exponent above 11 bits mantissa.
struct Quantisation {
    QuantisationKind kind = QuantisationKind::kNone;
    std::uint8_t guardBits = 0;
    std::uint8_t count = 0;
    std::array<std::uint16_t, 3 * kMostLevels + 1> steps{};
};

struct ComponentParameters {
    CodingStyle style;
    Quantisation quantisation;
    std::uint8_t roiShift = 0;
    bool hasOwnStyle = false;
    bool hasOwnQuantisation = false;
};

/// One row of POC, or the whole progression where there is none.
struct ProgressionVolume {
    std::uint8_t firstResolution = 0, endResolution = kMostLevels + 1;
    std::uint16_t firstComponent = 0, endComponent = kMostComponents;
    std::uint16_t endLayer = 0;
    Progression order = Progression::LRCP;
};

/// The main header's, or a tile's where its first tile-part has changed it.
struct Parameters {
    TileStyle tile;
    std::vector<ComponentParameters> components;
    std::vector<ProgressionVolume> volumes;
    bool hasStyle = false;
    bool hasQuantisation = false;
};

}  // namespace quorvex::j2k
