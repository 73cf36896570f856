#include "foundation/raster/interleave.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>
#include <random>
#include <vector>

namespace quorvex {
namespace {

using Bytes = std::vector<unsigned char>;

/// Planes one behind the other, at an odd address.
Bytes Woven(const Bytes& source, std::size_t planes, std::size_t places, std::size_t sampleBytes) {
    std::vector<const unsigned char*> begins;
    for (std::size_t i = 0; i < planes; ++i) {
        begins.push_back(source.data() + 1 + i * places * sampleBytes);
    }
    Bytes out(planes * places * sampleBytes);
    InterleavePlanes(begins, places, sampleBytes, out.data());
    return out;
}

void ExpectEachSampleInItsPlace(std::size_t planes, std::size_t places, std::size_t sampleBytes) {
    std::mt19937 random(11);
    Bytes source(1 + planes * places * sampleBytes);
    for (auto& byte : source) byte = static_cast<unsigned char>(random());
    const Bytes woven = Woven(source, planes, places, sampleBytes);
    for (std::size_t i = 0; i < woven.size(); ++i) {
        const std::size_t sample = i / sampleBytes;
        const std::size_t place = sample % planes * places + sample / planes;
        ASSERT_EQ(woven[i], source[1 + place * sampleBytes + i % sampleBytes]) << i;
    }
}

TEST(InterleavedPlanes, HaveEachSampleInItsPlaceWithEveryInstructionSet) {
    for (const auto target : hwy::SupportedAndGeneratedTargets()) {
        SCOPED_TRACE(hwy::TargetName(target));
        hwy::SetSupportedTargetsForTest(target);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
        for (const std::size_t planes : {1, 2, 3, 4, 5}) {
            for (const std::size_t sampleBytes : {1, 2, 4}) {
                for (const std::size_t places : {0, 1, 63, 64, 333}) {
                    ExpectEachSampleInItsPlace(planes, places, sampleBytes);
                }
            }
        }
    }
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

}  // namespace
}  // namespace quorvex
