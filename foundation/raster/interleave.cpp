#include "foundation/raster/interleave.h"

#include <cstdint>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/raster/interleave.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using Planes = std::span<const unsigned char* const>;

#if HWY_TARGET != HWY_SCALAR
template <class Samples>
hn::Vec<Samples> LoadAt(Samples samples, const unsigned char* bytes) {
    const hn::Repartition<std::uint8_t, Samples> octets;
    return hn::BitCast(samples, hn::LoadU(octets, bytes));
}

template <std::size_t kPlanes, class Samples>
void WeaveVector(Samples samples, Planes planes, std::size_t offset, hn::TFromD<Samples>* out) {
    const auto a = LoadAt(samples, planes[0] + offset);
    const auto b = LoadAt(samples, planes[1] + offset);
    if constexpr (kPlanes == 2) {
        hn::StoreInterleaved2(a, b, samples, out);
    } else if constexpr (kPlanes == 3) {
        hn::StoreInterleaved3(a, b, LoadAt(samples, planes[2] + offset), samples, out);
    } else {
        hn::StoreInterleaved4(a, b, LoadAt(samples, planes[2] + offset),
                              LoadAt(samples, planes[3] + offset), samples, out);
    }
}

/// As many whole vectors as there are; gives their places.
template <std::size_t kPlanes, class Sample>
std::size_t WeaveVectors(Planes planes, std::size_t places, unsigned char* out) {
    const hn::ScalableTag<Sample> samples;
    const std::size_t lanes = hn::Lanes(samples);
    void* const begin = out;
    std::size_t p = 0;
    for (; p + lanes <= places; p += lanes) {
        WeaveVector<kPlanes>(samples, planes, p * sizeof(Sample),
                             static_cast<Sample*>(begin) + p * kPlanes);
    }
    return p;
}

template <class Sample>
std::size_t WeaveMost(Planes planes, std::size_t places, unsigned char* out) {
    switch (planes.size()) {
        case 2:
            return WeaveVectors<2, Sample>(planes, places, out);
        case 3:
            return WeaveVectors<3, Sample>(planes, places, out);
        case 4:
            return WeaveVectors<4, Sample>(planes, places, out);
        default:
            return 0;
    }
}
#else
template <class Sample>
std::size_t WeaveMost(Planes /*planes*/, std::size_t /*places*/, unsigned char* /*out*/) {
    return 0;
}
#endif

template <class Sample>
void Weave(Planes planes, std::size_t places, unsigned char* out) {
    const std::size_t done = WeaveMost<Sample>(planes, places, out);
    for (std::size_t i = 0; i < planes.size(); ++i) {
        unsigned char* to = out + (done * planes.size() + i) * sizeof(Sample);
        for (std::size_t p = done; p < places; ++p, to += planes.size() * sizeof(Sample)) {
            std::memcpy(to, planes[i] + p * sizeof(Sample), sizeof(Sample));
        }
    }
}

void WeaveBytes(Planes planes, std::size_t places, unsigned char* out) {
    Weave<std::uint8_t>(planes, places, out);
}
void WeaveWords(Planes planes, std::size_t places, unsigned char* out) {
    Weave<std::uint16_t>(planes, places, out);
}
void WeaveLongWords(Planes planes, std::size_t places, unsigned char* out) {
    Weave<std::uint32_t>(planes, places, out);
}

}  // namespace quorvex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorvex {

HWY_EXPORT(WeaveBytes);
HWY_EXPORT(WeaveWords);
HWY_EXPORT(WeaveLongWords);

void InterleavePlanes(std::span<const unsigned char* const> planes, std::size_t places,
                      std::size_t sampleBytes, unsigned char* out) {
    switch (sampleBytes) {
        case 1:
            return HWY_DYNAMIC_DISPATCH(WeaveBytes)(planes, places, out);
        case 2:
            return HWY_DYNAMIC_DISPATCH(WeaveWords)(planes, places, out);
        default:
            return HWY_DYNAMIC_DISPATCH(WeaveLongWords)(planes, places, out);
    }
}

}  // namespace quorvex
#endif
