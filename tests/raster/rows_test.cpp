#include "foundation/raster/byte_runs.h"
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

/// Noise of two values, so that equal neighbours abound.
void ExpectPlaneAndMarks(std::size_t pixelBytes, std::size_t place, std::size_t count) {
    auto pixels = NoiseImage({static_cast<int>(pixelBytes * count), 1}, 1, 5).samples;
    for (auto& byte : pixels) byte &= 1;
    PlaneRow row(count);
    row.Take(pixels.data(), pixelBytes, place);
    const auto byteAt = [&](std::size_t x) { return pixels[x * pixelBytes + place]; };
    for (std::size_t x = 0; x < count; ++x) {
        ASSERT_EQ(row.Bytes()[x], byteAt(x)) << x;
        const bool equal = x + 1 < count && byteAt(x) == byteAt(x + 1);
        ASSERT_EQ((row.EqualNext(x) & 1) != 0, equal) << x;
        const bool both = equal && x + 2 < count && byteAt(x) == byteAt(x + 2);
        ASSERT_EQ((row.EqualNextTwo(x) & 1) != 0, both) << x;
    }
    EXPECT_EQ(row.EqualNext(count), 0U);
    EXPECT_EQ(row.EqualNextTwo(count), 0U);
}

TEST(PlaneRows, HaveTheirBytesAndMarksWithEveryInstructionSet) {
    ForEachInstructionSet([] {
        for (const std::size_t pixelBytes : {1, 2, 3, 4, 6}) {
            for (std::size_t place = 0; place < pixelBytes; ++place) {
                for (const std::size_t count : {1, 2, 3, 63, 64, 65, 129, 512})
                    ExpectPlaneAndMarks(pixelBytes, place, count);
            }
        }
    });
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
