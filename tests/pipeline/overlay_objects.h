/// Overlay planes and palettes for hand-made data sets, and what they should look like.
#pragma once

#include "tests/pipeline/test_objects.h"

#include <random>

namespace quorvex::pipeline_test {

struct TestOverlay {
    unsigned short rows = 0;
    unsigned short columns = 0;
    int originRow = 1;
    int originColumn = 1;
    unsigned short bitsAllocated = 1;
    unsigned short bitPosition = 0;
    std::vector<unsigned char> data = {};

    /// The bit of the plane that lies on an image pixel, counted from 0.
    [[nodiscard]] bool Covers(std::int64_t y, std::int64_t x) const {
        const std::int64_t row = y - (std::int64_t{originRow} - 1);
        const std::int64_t column = x - (std::int64_t{originColumn} - 1);
        if (row < 0 || column < 0 || row >= rows || column >= columns) return false;
        const auto bit = static_cast<std::size_t>(row * columns + column);
        return bit / 8 < data.size() && (data[bit / 8] >> (bit % 8) & 1) != 0;
    }
};

inline std::vector<unsigned char> RandomBytes(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<unsigned char> bytes(count);
    for (auto& byte : bytes) byte = static_cast<unsigned char>(random());
    return bytes;
}

/// 32 bits a value, of which a file has 16: so a value may be as far outside as can be.
inline std::vector<unsigned char> OriginBytes(const TestOverlay& overlay) {
    std::vector<unsigned char> bytes(8);
    std::memcpy(bytes.data(), &overlay.originRow, 4);
    std::memcpy(bytes.data() + 4, &overlay.originColumn, 4);
    return bytes;
}

inline void AddOverlay(CDcmObject& object, std::uint32_t group, const TestOverlay& overlay) {
    const auto of = [group](std::uint32_t tag) { return tag::InGroup(group, tag); };
    object.SetValue(of(tag::kOverlayRows), overlay.rows);
    object.SetValue(of(tag::kOverlayColumns), overlay.columns);
    SetBytes(object, of(tag::kOverlayOrigin), OriginBytes(overlay), MC_VR_SL);
    object.SetValue(of(tag::kOverlayBitsAllocated), overlay.bitsAllocated);
    object.SetValue(of(tag::kOverlayBitPosition), overlay.bitPosition);
    if (!overlay.data.empty()) SetBytes(object, of(tag::kOverlayData), overlay.data);
}

/// The header of a picture with planes in the groups 6000, 6002 ...
inline CDcmObject Picture(CSize size, unsigned short bits,
                          const std::vector<TestOverlay>& planes = {}, unsigned short samples = 1) {
    CDcmObject object;
    object.SetValue(tag::kSamplesPerPixel, samples);
    object.SetValue(tag::kRows, static_cast<unsigned short>(size.cy));
    object.SetValue(tag::kColumns, static_cast<unsigned short>(size.cx));
    object.SetValue(tag::kBitsAllocated, bits);
    std::uint32_t group = 0x6000;
    for (const auto& plane : planes) AddOverlay(object, std::exchange(group, group + 2), plane);
    return object;
}

struct TestTable {
    int first = 0;
    std::vector<std::uint16_t> entries = {};
};

inline void AddPalette(CDcmObject& object, const TestTable& red, const TestTable& green,
                       const TestTable& blue, unsigned short bits) {
    const TestTable* const tables[] = {&red, &green, &blue};
    for (std::uint32_t colour = 0; colour < 3; ++colour) {
        const TestTable& table = *tables[colour];
        const std::uint32_t descriptor = tag::kRedPaletteColorLookupTableDescriptor + colour;
        object.SetValue(descriptor, static_cast<int>(table.entries.size()));
        object.SetValueRepresentation(descriptor, table.first < 0 ? MC_VR_SS : MC_VR_US);
        object.SetNextValue(descriptor, table.first);
        object.SetNextValue(descriptor, static_cast<int>(bits));
        const auto* const data = reinterpret_cast<const unsigned char*>(table.entries.data());
        SetBytes(object, tag::kRedPaletteColorLookupTableData + colour,
                 {data, data + 2 * table.entries.size()});
    }
}

}  // namespace quorvex::pipeline_test
