// Samples in the caller's layout.
#include "foundation/engines/jpeg2000/decoder/samples/output_plane.h"

#include "tests/support/instruction_sets.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

namespace quorvex::j2k {
namespace {

constexpr std::uint32_t kCount = 300;  // more than a vector, more than what is made at a time

/// Around zero, around the ends of every precision, and numbers that only damage gives.
std::vector<std::int32_t> Values() {
    std::vector<std::int32_t> values;
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(kCount) - 5; ++i) {
        values.push_back((i % 2 == 0 ? 1 : -1) * (1 << i % 20) + i % 7 - 3);
    }
    constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t kGreatest = std::numeric_limits<std::int32_t>::max();
    values.insert(values.end(), {kLeast, kLeast + 1, 0, kGreatest - 1, kGreatest});
    return values;
}

struct Layout {
    const char* what;
    unsigned precision;
    bool isSigned;
    bool keepsSign;
    int bytes;
    int step;  ///< from sample to sample
    bool isBigEndian;
    int begin;  ///< of the first sample, in bytes from an even place
};
constexpr Layout kLayouts[] = {
    {"8 bits side by side", 8, false, false, 1, 1, false, 0},
    {"1 bit", 1, false, false, 1, 1, false, 0},
    {"signed 8 bits, the sign over the whole sample", 5, true, true, 1, 1, false, 0},
    {"signed 7 bits, the sign within the precision", 7, true, false, 1, 1, false, 0},
    {"8 bits of three components", 8, false, false, 1, 3, false, 1},
    {"12 bits side by side", 12, false, false, 2, 2, false, 0},
    {"12 bits at an odd place", 12, false, false, 2, 2, false, 1},
    {"16 bits, the upper byte first", 16, false, false, 2, 2, true, 0},
    {"signed 16 bits", 16, true, true, 2, 2, false, 0},
    {"signed 13 bits within the precision", 13, true, false, 2, 2, false, 0},
    {"16 bits of three components", 16, false, false, 2, 6, false, 2},
    {"signed 20 bits in four bytes", 20, true, true, 4, 4, false, 0},
};

/// What a row holds at a place, by the definition: shifted with wrapping, clamped, masked.
std::uint32_t Expected(const Layout& layout, std::int32_t value) {
    const std::int64_t half = std::int64_t{1} << (layout.precision - 1);
    const std::int64_t least = layout.isSigned ? -half : 0;
    const auto shifted = static_cast<std::int32_t>(
        static_cast<std::uint32_t>(value) + static_cast<std::uint32_t>(layout.isSigned ? 0 : half));
    const std::int64_t clamped = std::clamp<std::int64_t>(shifted, least, least + 2 * half - 1);
    const std::int64_t kept =
        layout.keepsSign ? (std::int64_t{1} << (8 * layout.bytes)) - 1 : 2 * half - 1;
    return static_cast<std::uint32_t>(clamped & kept);
}

TEST(OutputPlane, SamplesGoWhereTheLayoutSays) {
    const std::vector<std::int32_t> values = Values();
    ForEachInstructionSet([&] {
        for (const Layout& layout : kLayouts) {
            SCOPED_TRACE(layout.what);
            const auto size =
                static_cast<std::size_t>(layout.begin + layout.step * int{kCount} + 8);
            std::vector<unsigned char> memory(size, 0xA5);
            const OutputPlane plane{.data = memory.data() + layout.begin,
                                    .sampleStride = layout.step,
                                    .bytesPerSample = layout.bytes,
                                    .isBigEndian = layout.isBigEndian,
                                    .width = kCount,
                                    .height = 1};
            StoreRow(plane, RangeOf(layout.precision, layout.isSigned, layout.keepsSign),
                     values.data(), 0, 0, kCount);
            std::vector<unsigned char> expected(size, 0xA5);
            for (std::size_t i = 0; i < kCount; ++i) {
                const std::uint32_t sample = Expected(layout, values[i]);
                for (int byte = 0; byte < layout.bytes; ++byte) {
                    const int shift = 8 * (layout.isBigEndian ? layout.bytes - 1 - byte : byte);
                    expected[static_cast<std::size_t>(layout.begin + byte) +
                             i * static_cast<std::size_t>(layout.step)] =
                        static_cast<unsigned char>(sample >> shift);
                }
            }
            EXPECT_EQ(memory, expected);
        }
    });
}

TEST(OutputPlane, RepeatedSamplesEndWithThePlane) {
    const std::int32_t values[] = {1, 2, 3};
    std::vector<unsigned char> memory(5 * 3, 9);
    const OutputPlane plane{.data = memory.data(),
                            .rowStride = 5,
                            .sampleStride = 1,
                            .repeatX = 2,
                            .repeatY = 2,
                            .width = 5,
                            .height = 3};
    const SampleRange range{0, 255, 0, 0xFF};
    StoreRow(plane, range, values, 0, 0, 3);
    StoreRow(plane, range, values + 1, 1, 1, 2);
    EXPECT_EQ(memory, (std::vector<unsigned char>{1, 1, 2, 2, 3, 1, 1, 2, 2, 3, 9, 9, 2, 2, 3}));
}

}  // namespace
}  // namespace quorvex::j2k
