// Packet headers, the order of packets, and where codeword segments end.
#include "foundation/engines/jpeg2000/decoder/packets/codeword_segments.h"
#include "foundation/engines/jpeg2000/decoder/packets/progression.h"
#include "foundation/engines/jpeg2000/decoder/packets/tag_tree.h"

#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
#include <tuple>

namespace quorvex::j2k {
namespace {

TEST(Jpeg2000Packets, HeaderBitsSkipStuffing) {
    const unsigned char bytes[] = {0xFF, 0x7F, 0x80, 0xFF, 0x00, 0x12};
    HeaderBits bits(bytes);
    EXPECT_EQ(bits.Bits(15), 0x7FFFU);
    EXPECT_EQ(bits.Bits(1), 1U);
    EXPECT_EQ(bits.End(), 3U);
    HeaderBits stuffed(Bytes(bytes).subspan(3));
    EXPECT_EQ(stuffed.Bits(8), 0xFFU);
    EXPECT_EQ(stuffed.End(), 2U) << "a header never ends with 0xFF";
    EXPECT_FALSE(stuffed.RanOut());
    EXPECT_EQ(stuffed.Bits(16), 0x1200U);
    EXPECT_TRUE(stuffed.RanOut());
}

// ISO/IEC 15444-1 B.10.2, Figure B.12: 6 x 3 leaves, whose first are 1, 3, 2, 3, 2, 3 and 2, 2.
TEST(Jpeg2000Packets, TagTreeOfTheStandardsExample) {
    // 0 1 1 1 1 for the first leaf, 0 0 1 for the second, 1 0 1 for the third.
    const unsigned char coded[] = {0b01111001, 0b10100000};
    HeaderBits bits(coded);
    TagTree tree(6, 3);
    const auto value = [&](std::uint32_t x, std::uint32_t y) {
        std::uint32_t threshold = 1;
        while (!tree.IsBelow(x, y, threshold, bits)) ++threshold;
        return threshold - 1;
    };
    EXPECT_EQ(value(0, 0), 1U);
    EXPECT_EQ(value(1, 0), 3U);
    EXPECT_EQ(value(2, 0), 2U);
}

TEST(Jpeg2000Packets, PassCounts) {
    struct Row {
        std::uint32_t code;
        unsigned bits, passes;
    };
    for (const Row& row : {Row{0, 1, 1}, Row{0b10, 2, 2}, Row{0b1100, 4, 3}, Row{0b1110, 4, 5},
                           Row{0b111100000, 9, 6}, Row{0b111111110, 9, 36},
                           Row{0b1111111110000000, 16, 37}, Row{0xFFFF, 16, 164}}) {
        const std::uint32_t left = row.code << (32 - row.bits);
        const std::vector<unsigned char> bytes = {
            static_cast<unsigned char>(left >> 24),
            // Behind 0xFF a bit is stuffed.
            static_cast<unsigned char>((left >> 24) == 0xFF ? (left >> 17) & 0x7F : left >> 16),
            static_cast<unsigned char>((left >> 24) == 0xFF ? left >> 9 : left >> 8)};
        HeaderBits bits{Bytes(bytes)};
        EXPECT_EQ(ReadPassCount(bits), row.passes);
    }
}

// The lengths of the segments of 17 passes.
TEST(Jpeg2000Packets, SegmentsEndWhereTheStyleSays) {
    struct Row {
        unsigned style;
        std::vector<unsigned> lengths;
    };
    const Row rows[] = {
        {0, {17}},
        {kStyleBypass, {10, 2, 1, 2, 1, 1}},
        {kStyleTerminateAll, std::vector<unsigned>(17, 1)},
        {kStyleBypass | kStyleTerminateAll, std::vector<unsigned>(17, 1)},
        {kStyleHighThroughput, {1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 1}},
    };
    for (const Row& row : rows) {
        std::vector<unsigned> lengths;
        for (unsigned pass = 0; pass < 17; ++pass) {
            if (BeginsSegment(row.style, pass)) lengths.push_back(0);
            ++lengths.back();
            EXPECT_GE(PassesLeftInSegment(row.style, pass), 1U);
        }
        EXPECT_EQ(lengths, row.lengths) << row.style;
    }
}

/// A packet's component, resolution, precinct and layer.
using Packet = std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t>;

struct Geometry {
    ImageSize size;
    Parameters parameters;
    TileLayout layout;
};

Geometry RandomGeometry(unsigned seed) {
    std::mt19937 random(seed);
    const auto number = [&](unsigned least, unsigned most) {
        return static_cast<std::uint32_t>(least + random() % (most - least + 1));
    };
    Geometry made;
    made.size.image = {number(0, 9), number(0, 9), number(10, 50), number(10, 50)};
    made.size.tileWidth = number(10, 60);
    made.size.tileHeight = number(10, 60);
    const std::uint32_t components = number(1, 3);
    for (std::uint32_t c = 0; c < components; ++c) {
        made.size.components.push_back({8, false, static_cast<std::uint8_t>(number(1, 3)),
                                        static_cast<std::uint8_t>(number(1, 3))});
        ComponentParameters component;
        component.style.levels = static_cast<std::uint8_t>(number(0, 3));
        component.style.isReversible = true;
        for (std::uint8_t& size : component.style.precincts)
            size = static_cast<std::uint8_t>(number(1, 4) | (number(1, 4) << 4));
        component.quantisation.count = 97;
        made.parameters.components.push_back(component);
    }
    made.parameters.tile.layers = 2;
    EXPECT_TRUE(LayOutTile(made.size, made.parameters, 0, 1000000, made.layout));
    return made;
}

// ISO/IEC 15444-1 B.12.1.3 to .5, literally: is the next precinct of a resolution due at (x, y)?
bool IsDue(const Geometry& g, std::uint32_t c, std::uint32_t r, std::uint32_t x, std::uint32_t y) {
    const auto& component = g.layout.components[c];
    const ResolutionLayout& resolution = component.resolutions[r];
    const auto down = static_cast<unsigned>(component.resolutions.size() - 1 - r);
    const auto along = [&](std::uint32_t place, std::uint32_t tileBegin, std::uint32_t begin,
                           std::uint32_t sampling, unsigned exponent) {
        return place % (sampling << (exponent + down)) == 0 ||
               (place == tileBegin && (begin << down) % (1U << (exponent + down)) != 0);
    };
    const ComponentSize& size = g.size.components[c];
    return along(y, g.layout.area.y0, resolution.area.y0, size.dy,
                 resolution.precinctHeightExponent) &&
           along(x, g.layout.area.x0, resolution.area.x0, size.dx,
                 resolution.precinctWidthExponent);
}

std::vector<Packet> LiteralOrder(const Geometry& g, Progression order) {
    std::vector<Packet> packets;
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> next;
    const auto components = static_cast<std::uint32_t>(g.layout.components.size());
    const auto visit = [&](std::uint32_t c, std::uint32_t r, std::uint32_t x, std::uint32_t y) {
        if (r >= g.layout.components[c].resolutions.size()) return;
        const Rect& all = g.layout.components[c].resolutions[r].precincts;
        std::uint32_t& k = next[{c, r}];
        if (k >= all.Width() * all.Height() || !IsDue(g, c, r, x, y)) return;
        for (std::uint32_t layer = 0; layer < 2; ++layer) packets.emplace_back(c, r, k, layer);
        ++k;
    };
    const Rect& tile = g.layout.area;
    const auto places = [&](const auto& inner) {
        for (std::uint32_t y = tile.y0; y < tile.y1; ++y) {
            for (std::uint32_t x = tile.x0; x < tile.x1; ++x) inner(x, y);
        }
    };
    const auto forAll = [](std::uint32_t count, const auto& inner) {
        for (std::uint32_t i = 0; i < count; ++i) inner(i);
    };
    if (order == Progression::RPCL) {
        forAll(4, [&](auto r) {
            places([&](auto x, auto y) { forAll(components, [&](auto c) { visit(c, r, x, y); }); });
        });
    } else if (order == Progression::PCRL) {
        places([&](auto x, auto y) {
            forAll(components, [&](auto c) { forAll(4, [&](auto r) { visit(c, r, x, y); }); });
        });
    } else {
        forAll(components, [&](auto c) {
            places([&](auto x, auto y) { forAll(4, [&](auto r) { visit(c, r, x, y); }); });
        });
    }
    return packets;
}

TEST(Jpeg2000Packets, PositionsFollowTheStandardsLoops) {
    for (unsigned seed = 0; seed < 150; ++seed) {
        const Geometry geometry = RandomGeometry(seed);
        for (const auto order : {Progression::RPCL, Progression::PCRL, Progression::CPRL}) {
            ProgressionVolume volume;
            volume.endLayer = 2;
            volume.order = order;
            const auto places = PlacesInOrder(geometry.size, geometry.layout, volume);
            std::vector<Packet> packets;
            EXPECT_TRUE(ForPackets(places, volume, [&](const PrecinctPlace& place, auto layer) {
                packets.emplace_back(place.component, place.resolution, place.slot, layer);
                return true;
            }));
            EXPECT_EQ(packets, LiteralOrder(geometry, order)) << seed;
        }
    }
}

TEST(Jpeg2000Packets, LayersAndResolutionsLead) {
    const Geometry geometry = RandomGeometry(7);
    for (const auto order : {Progression::LRCP, Progression::RLCP}) {
        ProgressionVolume volume;
        volume.endLayer = 2;
        volume.order = order;
        const auto places = PlacesInOrder(geometry.size, geometry.layout, volume);
        std::vector<Packet> keys;
        EXPECT_TRUE(
            ForPackets(places, volume, [&](const PrecinctPlace& place, std::uint32_t layer) {
                const std::uint32_t r = place.resolution;
                keys.emplace_back(order == Progression::LRCP ? layer : r,
                                  order == Progression::LRCP ? r : layer, place.component,
                                  place.slot);
                return true;
            }));
        EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
        EXPECT_EQ(std::set<Packet>(keys.begin(), keys.end()).size(), 2 * geometry.layout.precincts);
    }
}

}  // namespace
}  // namespace quorvex::j2k
