#include "foundation/raster/interleave.h"

#include "tests/raster/raster_calls.h"

#include <vector>

namespace quorvex {
namespace {

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
