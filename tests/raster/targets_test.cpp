#include "foundation/raster/byte_table.h"
#include "foundation/raster/word_ramp.h"
#include "tests/raster/raster_calls.h"

namespace quorvex {
namespace {

/// Every byte in every place of a pixel, through tables of noise.
Image8 ColourResult() {
    const auto image = NoiseImage(CSize{211, 5}, 3, 53);
    const auto table = NoiseImage(CSize{256, 1}, 1, 54);
    Image8 result(image.size, 3);
    MapColoursReversed(ByteTable256(table.samples.data(), 256), image.samples.data(),
                       result.samples.data(), image.samples.size() / 3);
    return result;
}

/// Words of noise through ramps up and down.
Image8 RampResult() {
    const CSize size{317, 4};
    const auto words = NoiseImage(CSize{2 * size.cx, size.cy}, 1, 52);
    Image8 result(size, 1);
    for (int y = 0; y < size.cy; ++y) {
        const unsigned char* const row = words.samples.data() + y * words.Step();
        WordRamp ramp{500, 1000, 60000, 900, 0, 1000000, y % 2 != 0, 3, 0xFF};
        ramp.inversion = y / 2 != 0 ? 0xFF : 0;
        MapByRamp(ramp, row, row, result.samples.data() + y * result.Step(), 317);
    }
    return result;
}

/// One of each operation that has kernels of its own for every instruction set.
std::vector<Image8> AllResults() {
    std::vector<Image8> results{ColourResult(), RampResult()};
    for (const int channels : {1, 3}) {
        const auto image = NoiseImage({203, 94}, channels, 51);
        for (const CSize size : {CSize{310, 120}, CSize{77, 31}, CSize{13, 9}})
            results.push_back(Resized(image, size));
        results.push_back(Resized(NoiseImage({202, 94}, channels, 51), {101, 47}));
        results.push_back(Turned(image, 90));
        results.push_back(Mirrored(image, kVerticalAxis));
    }
    return results;
}

TEST(InstructionSets, AllGiveTheSamePixels) {
    const auto expected = AllResults();
    ForEachInstructionSet([&] {
        const auto results = AllResults();
        for (std::size_t i = 0; i < results.size(); ++i)
            EXPECT_EQ(results[i], expected[i]) << "operation " << i;
    });
}

}  // namespace
}  // namespace quorvex
