#include "foundation/raster/byte_table.h"
#include "foundation/raster/raster.h"
#include "foundation/raster/word_ramp.h"
#include "tests/raster/noise_image.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>
#include <vector>

namespace quorvex {
namespace {

using Image8 = TestImage<unsigned char>;

/// One of each operation that has kernels of its own for every instruction set.
std::vector<Image8> AllResults(int channels) {
    const CSize source{203, 94};
    const auto image = NoiseImage(source, channels, 51);
    const bool colour = channels == 3;
    std::vector<Image8> results;
    for (const CSize size : {CSize{310, 120}, CSize{77, 31}, CSize{13, 9}, CSize{101, 47}}) {
        Image8& to = results.emplace_back(size, channels);
        const CSize from = size.cx == 101 ? CSize{202, 94} : source;  // half the size
        (colour ? ippiResize_8u_C3R : ippiResize_8u_C1R)(
            image.samples.data(), source, image.Step(), {0, 0, from.cx, from.cy}, to.samples.data(),
            to.Step(), size, double(size.cx) / from.cx, double(size.cy) / from.cy,
            kLinearInterpolation);
    }
    Image8& turned = results.emplace_back(CSize{source.cy, source.cx}, channels);
    (colour ? ippiRotate_8u_C3R : ippiRotate_8u_C1R)(
        image.samples.data(), source, image.Step(), {0, 0, source.cx, source.cy},
        turned.samples.data(), turned.Step(), {0, 0, source.cy, source.cx}, 90, 0, source.cx,
        kLinearInterpolation);
    Image8& mirrored = results.emplace_back(image);
    (colour ? ippiMirror_8u_C3IR : ippiMirror_8u_C1IR)(mirrored.samples.data(), mirrored.Step(),
                                                       source, kVerticalAxis);
    return results;
}

/// Every byte in every place of a pixel, through tables of noise.
Image8 ColourResult() {
    const auto image = NoiseImage(CSize{211, 5}, 3, 53);
    const auto table = NoiseImage(CSize{256, 1}, 1, 54);
    Image8 result(image.size, 3);
    MapColoursTurned(ByteTable256(table.samples.data(), 256), image.samples.data(),
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
        ramp.turn = y / 2 != 0 ? 0xFF : 0;
        MapByRamp(ramp, row, row, result.samples.data() + y * result.Step(), 317);
    }
    return result;
}

TEST(InstructionSets, AllGiveTheSamePixels) {
    for (const int channels : {1, 3}) {
        const auto expected = AllResults(channels);
        const auto expectedRamp = RampResult();
        const auto expectedColours = ColourResult();
        for (const auto target : hwy::SupportedAndGeneratedTargets()) {
            SCOPED_TRACE(hwy::TargetName(target));
            hwy::SetSupportedTargetsForTest(target);
            hwy::GetChosenTarget().Update(hwy::SupportedTargets());
            const auto results = AllResults(channels);
            EXPECT_EQ(RampResult(), expectedRamp);
            EXPECT_EQ(ColourResult(), expectedColours);
            hwy::SetSupportedTargetsForTest(0);
            hwy::GetChosenTarget().Update(hwy::SupportedTargets());
            for (std::size_t i = 0; i < results.size(); ++i) {
                EXPECT_EQ(results[i], expected[i]) << "operation " << i;
            }
        }
    }
}

}  // namespace
}  // namespace quorvex
