#include "foundation/raster/interleave.h"
#include "tests/raster/raster_calls.h"

namespace quorvex {
namespace {

using Bytes = std::vector<unsigned char>;

TEST(RowOperations, LeaveTheGapBetweenRowsAlone) {
    const Bytes source = {1, 2, 4, 99, 8, 16, 32, 99};
    Bytes image(10, 64);
    ASSERT_TRUE(ippiOr_8u_C1IR(source.data(), 4, image.data(), 5, {3, 2}));
    EXPECT_EQ(image, (Bytes{65, 66, 68, 64, 64, 72, 80, 96, 64, 64}));
    ASSERT_TRUE(ippiCopy_8u_C1R(source.data(), 4, image.data(), 5, {3, 2}));
    EXPECT_EQ(image, (Bytes{1, 2, 4, 64, 64, 8, 16, 32, 64, 64}));
    ASSERT_TRUE(ippiSet_8u_C1R(0, image.data(), 5, {2, 2}));
    EXPECT_EQ(image, (Bytes{0, 0, 4, 64, 64, 0, 0, 32, 64, 64}));
    ASSERT_TRUE(ippiOr_8u_C3IR(source.data(), 4, image.data(), 5, {1, 2}));
    EXPECT_EQ(image, (Bytes{1, 2, 4, 64, 64, 8, 16, 32, 64, 64}));
    EXPECT_FALSE(ippiSet_8u_C1R(0, nullptr, 5, {2, 2}));
    EXPECT_FALSE(ippiCopy_8u_C3R(source.data(), 2, image.data(), 5, {1, 2}));
}

// Expected colours by ITU-R BT.601 in floating point, clamped to 0 and 255.
TEST(PartialRange422, GivesRgb) {
    constexpr struct {
        unsigned char y, cb, cr;
        Bytes::value_type rgb[3];
    } kColours[] = {
        {16, 128, 128, {0, 0, 0}},        {235, 128, 128, {255, 255, 255}},
        {125, 128, 128, {127, 127, 127}}, {81, 90, 240, {254, 0, 0}},
        {145, 54, 34, {0, 255, 1}},       {41, 240, 110, {0, 0, 255}},
        {0, 0, 0, {0, 136, 0}},           {255, 255, 255, {255, 125, 255}},
    };
    for (const auto& colour : kColours) {
        const Bytes source = {colour.y, colour.cb, colour.y, colour.cr, colour.y, colour.cb};
        Bytes rgb(9);
        ASSERT_TRUE(ippiYCbCr422ToRGB_8u_C2C3R(source.data(), 6, rgb.data(), 9, {3, 1}));
        for (std::size_t i = 0; i < rgb.size(); ++i)
            EXPECT_NEAR(rgb[i], colour.rgb[i % 3], 1) << "Y " << int{colour.y} << " byte " << i;
    }
}

/// Planes one behind the other, at an odd address.
void ExpectEachSampleInItsPlace(std::size_t planes, std::size_t places, std::size_t sampleBytes) {
    const std::size_t bytes = planes * places * sampleBytes;
    const auto source = NoiseImage({static_cast<int>(1 + bytes), 1}, 1, 11).samples;
    std::vector<const unsigned char*> begins;
    for (std::size_t i = 0; i < planes; ++i)
        begins.push_back(source.data() + 1 + i * places * sampleBytes);
    std::vector<unsigned char> woven(bytes);
    InterleavePlanes(begins, places, sampleBytes, woven.data());
    for (std::size_t i = 0; i < bytes; ++i) {
        const std::size_t sample = i / sampleBytes;
        const std::size_t place = sample % planes * places + sample / planes;
        ASSERT_EQ(woven[i], source[1 + place * sampleBytes + i % sampleBytes]) << i;
    }
}

TEST(InterleavedPlanes, HaveEachSampleInItsPlaceWithEveryInstructionSet) {
    ForEachInstructionSet([] {
        for (const std::size_t planes : {1, 2, 3, 4, 5}) {
            for (const std::size_t sampleBytes : {1, 2, 4}) {
                for (const std::size_t places : {0, 1, 63, 64, 333})
                    ExpectEachSampleInItsPlace(planes, places, sampleBytes);
            }
        }
    });
}

}  // namespace
}  // namespace quorvex
