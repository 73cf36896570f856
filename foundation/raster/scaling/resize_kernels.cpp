#include "foundation/raster/scaling/resize_kernels.h"

#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/raster/scaling/resize_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Half of what the truncated products lose on average, on top of the half of a grey level.
constexpr std::uint32_t kVerticalRounding = 33;

std::uint16_t HighHalf(std::uint32_t a, std::uint32_t b) {
    return static_cast<std::uint16_t>((a * b) >> 16);
}

/// Brings the two bytes of each pair together in the row itself, the left one in the low half.
/// Bytes that lie side by side are read by one instruction.
template <class Distance>
void GatherPairs(const HorizontalPlan& plan, const unsigned char* bytes, Distance toRight,
                 std::uint16_t* row) {
    const std::uint32_t* const lefts = plan.lefts.data();
    const auto gather = [=](std::size_t i) {
        const unsigned char* const left = bytes + lefts[i];
        row[i] = static_cast<std::uint16_t>(left[0] | left[toRight] << 8);
    };
    const std::size_t count = plan.lefts.size();
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        gather(i);
        gather(i + 1);
        gather(i + 2);
        gather(i + 3);
    }
    for (; i < count; ++i) gather(i);
}

void PairsOneByOne(const HorizontalPlan& plan, const unsigned char* bytes, std::uint16_t* row) {
    if (plan.toRight == 1) {
        GatherPairs(plan, bytes, std::integral_constant<std::size_t, 1>(), row);
    } else {
        GatherPairs(plan, bytes, plan.toRight, row);
    }
    const hn::ScalableTag<std::uint16_t> words;
    const auto whole = hn::Set(words, kWholeWeight);
    const auto highBytes = hn::Set(words, std::uint16_t{0xFF00});
    for (std::size_t i = 0; i < plan.lefts.size(); i += hn::Lanes(words)) {
        const auto pairs = hn::LoadU(words, row + i);
        const auto weights = hn::LoadU(words, plan.leftWeights.data() + i);
        const auto left = hn::MulHigh(hn::ShiftLeft<8>(pairs), weights);
        const auto right = hn::MulHigh(hn::And(pairs, highBytes), hn::Sub(whole, weights));
        hn::StoreU(hn::Add(left, right), words, row + i);
    }
}

#if HWY_TARGET != HWY_SCALAR
/// Of each window 4 left products, their 4 partners behind them.
template <class Words>
hn::Vec<Words> WindowProducts(Words words, hn::Vec<hn::Repartition<std::uint8_t, Words>> bytes,
                              const WindowGroup& group, std::size_t place) {
    const hn::Repartition<std::uint8_t, Words> octets;
    const auto chosen = hn::TableLookupBytesOr0(bytes, hn::LoadU(octets, group.shuffle[place]));
    return hn::MulHigh(hn::BitCast(words, chosen), hn::LoadU(words, group.weights[place]));
}

#if HWY_CAP_GE256
using WindowWords = hn::FixedTag<std::uint16_t, 16>;

/// Two windows side by side.
inline hn::Vec<hn::Repartition<std::uint8_t, WindowWords>> WindowBytes(const unsigned char* bytes,
                                                                       const WindowGroup& group,
                                                                       std::size_t place) {
    const hn::FixedTag<std::uint8_t, 16> octets;
    return hn::Combine(hn::Repartition<std::uint8_t, WindowWords>(),
                       hn::LoadU(octets, bytes + group.starts[place + 1]),
                       hn::LoadU(octets, bytes + group.starts[place]));
}
#else
using WindowWords = hn::FixedTag<std::uint16_t, 8>;

inline hn::Vec<hn::Repartition<std::uint8_t, WindowWords>> WindowBytes(const unsigned char* bytes,
                                                                       const WindowGroup& group,
                                                                       std::size_t place) {
    return hn::LoadU(hn::Repartition<std::uint8_t, WindowWords>(), bytes + group.starts[place]);
}
#endif

void PairsByWindow(const HorizontalPlan& plan, const unsigned char* bytes, std::uint16_t* row) {
    const WindowWords words;
    const hn::Repartition<std::uint64_t, WindowWords> fours;
    constexpr std::size_t kAtOnce = hn::MaxLanes(WindowWords()) / 8;
    const auto productsAt = [&](const WindowGroup& group, std::size_t place) HWY_ATTR {
        const auto products = WindowProducts(words, WindowBytes(bytes, group, place), group, place);
        return hn::BitCast(fours, products);
    };
    for (const WindowGroup& group : plan.groups) {
        for (std::size_t i = 0; i < 2; i += kAtOnce, row += 8 * kAtOnce) {
            const auto first = productsAt(group, i);
            const auto second = productsAt(group, i + 2);
            const auto lefts = hn::InterleaveLower(fours, first, second);
            const auto rights = hn::InterleaveUpper(fours, first, second);
            hn::StoreU(hn::Add(hn::BitCast(words, lefts), hn::BitCast(words, rights)), words, row);
        }
    }
}
#else
void PairsByWindow(const HorizontalPlan& plan, const unsigned char* bytes, std::uint16_t* row) {
    PairsOneByOne(plan, bytes, row);
}
#endif

void Horizontal(const HorizontalPlan& plan, const unsigned char* bytes, std::uint16_t* row) {
    plan.groups.empty() ? PairsOneByOne(plan, bytes, row) : PairsByWindow(plan, bytes, row);
}

void Vertical(const std::uint16_t* upper, const std::uint16_t* lower, std::uint16_t lowerWeight,
              unsigned char* destination, std::size_t count) {
    const hn::ScalableTag<std::uint16_t> words;
    const hn::Rebind<std::int16_t, decltype(words)> signedWords;
    const hn::Rebind<std::uint8_t, decltype(words)> octets;
    const auto upperWeight = static_cast<std::uint16_t>(kWholeWeight - lowerWeight);
    const auto upperWeights = hn::Set(words, upperWeight);
    const auto lowerWeights = hn::Set(words, lowerWeight);
    const auto rounding = hn::Set(words, static_cast<std::uint16_t>(kVerticalRounding));
    const std::size_t lanes = hn::Lanes(words);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto sum = hn::Add(hn::MulHigh(hn::LoadU(words, upper + i), upperWeights),
                                 hn::MulHigh(hn::LoadU(words, lower + i), lowerWeights));
        const auto value = hn::ShiftRight<6>(hn::Add(sum, rounding));
        hn::StoreU(hn::DemoteTo(octets, hn::BitCast(signedWords, value)), octets, destination + i);
    }
    for (; i < count; ++i) {
        const std::uint32_t sum = HighHalf(upper[i], upperWeight) + HighHalf(lower[i], lowerWeight);
        destination[i] = static_cast<unsigned char>((sum + kVerticalRounding) >> 6);
    }
}

#if HWY_TARGET != HWY_SCALAR
/// The mean of neighbours in two rows.
template <class Words, class Octets>
auto Means(Words words, hn::Vec<Octets> upper, hn::Vec<Octets> lower) {
    const hn::Rebind<std::int16_t, Words> signedWords;
    const hn::Rebind<std::uint8_t, Words> halfOctets;
    const auto low = hn::Set(words, std::uint16_t{0xFF});
    const auto a = hn::BitCast(words, upper);
    const auto b = hn::BitCast(words, lower);
    const auto sum = hn::Add(hn::Add(hn::And(a, low), hn::ShiftRight<8>(a)),
                             hn::Add(hn::And(b, low), hn::ShiftRight<8>(b)));
    const auto mean = hn::ShiftRight<2>(hn::Add(sum, hn::Set(words, std::uint16_t{2})));
    return hn::DemoteTo(halfOctets, hn::BitCast(signedWords, mean));
}

/// Halves as many whole vectors of pixels as there are, and gives their number of pixels.
std::size_t HalveGrey(const unsigned char* upper, const unsigned char* lower,
                      unsigned char* destination, std::size_t pixels) {
    const hn::ScalableTag<std::uint16_t> words;
    using Octets = hn::Repartition<std::uint8_t, decltype(words)>;
    const hn::Rebind<std::uint8_t, decltype(words)> halfOctets;
    const std::size_t lanes = hn::Lanes(words);
    std::size_t i = 0;
    for (; i + lanes <= pixels; i += lanes) {
        const auto mean = Means<decltype(words), Octets>(words, hn::LoadU(Octets(), upper + 2 * i),
                                                         hn::LoadU(Octets(), lower + 2 * i));
        hn::StoreU(mean, halfOctets, destination + i);
    }
    return i;
}

/// Four pixels from each 12 bytes on, the samples of two neighbours side by side; the last four
/// bytes of each 16 count for nothing.
template <class Octets>
hn::Vec<Octets> LoadNeighbours(Octets octets, const unsigned char* bytes) {
    alignas(16) static constexpr std::uint8_t kPairs[16] = {0, 3,  1, 4,  2,  5,  6,  9,
                                                            7, 10, 8, 11, 12, 13, 14, 15};
    const hn::FixedTag<std::uint8_t, 16> block;
    const auto pairs = hn::LoadDup128(octets, kPairs);
    if constexpr (hn::MaxLanes(Octets()) == 32) {
        const auto blocks =
            hn::Combine(octets, hn::LoadU(block, bytes + 12), hn::LoadU(block, bytes));
        return hn::TableLookupBytes(blocks, pairs);
    } else {
        return hn::TableLookupBytes(hn::LoadU(octets, bytes), pairs);
    }
}

/// Of each 8 bytes the first 6, one after the other.
template <class Half>
hn::Vec<Half> CloseGaps(Half half, hn::Vec<Half> means) {
    if constexpr (hn::MaxLanes(Half()) == 16) {
        alignas(16) static constexpr std::uint8_t kFirstSix[16] = {0,  1,  2,  3,  4, 5, 8,  9,
                                                                   10, 11, 12, 13, 6, 7, 14, 15};
        return hn::TableLookupBytes(means, hn::Load(half, kFirstSix));
    } else {
        return means;
    }
}

/// Leaves at least as many pixels as whole vectors would read and write too far.
std::size_t HalveColour(const unsigned char* upper, const unsigned char* lower,
                        unsigned char* destination, std::size_t pixels) {
    const hn::FixedTag<std::uint8_t, HWY_ARCH_X86 && HWY_MAX_BYTES >= 32 ? 32 : 16> octets;
    using Octets = std::remove_const_t<decltype(octets)>;
    const hn::Repartition<std::uint16_t, Octets> words;
    const hn::Rebind<std::uint8_t, std::remove_const_t<decltype(words)>> half;
    constexpr std::size_t kStep = hn::MaxLanes(Octets()) / 8;
    std::size_t i = 0;
    for (; i + kStep + 2 <= pixels; i += kStep) {
        const auto means = Means<decltype(words), Octets>(
            words, LoadNeighbours(octets, upper + 6 * i), LoadNeighbours(octets, lower + 6 * i));
        hn::StoreU(CloseGaps(half, means), half, destination + 3 * i);
    }
    return i;
}
#else
std::size_t HalveGrey(const unsigned char*, const unsigned char*, unsigned char*, std::size_t) {
    return 0;
}
std::size_t HalveColour(const unsigned char*, const unsigned char*, unsigned char*, std::size_t) {
    return 0;
}
#endif

void Halve(const unsigned char* upper, const unsigned char* lower, std::size_t channels,
           unsigned char* destination, std::size_t pixels) {
    const std::size_t done = channels == 3 ? HalveColour(upper, lower, destination, pixels)
                                           : HalveGrey(upper, lower, destination, pixels);
    for (std::size_t i = done * channels; i < pixels * channels; ++i) {
        const std::size_t left = i + i / channels * channels;  // 2 pixels on for each pixel
        const int sum = upper[left] + upper[left + channels] + lower[left] + lower[left + channels];
        destination[i] = static_cast<unsigned char>((sum + 2) >> 2);
    }
}

}  // namespace quorvex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorvex {

HWY_EXPORT(Horizontal);
HWY_EXPORT(Vertical);
HWY_EXPORT(Halve);

void ResizeHorizontally(const HorizontalPlan& plan, const unsigned char* bytes,
                        std::span<std::uint16_t> row) {
    HWY_DYNAMIC_DISPATCH(Horizontal)(plan, bytes, row.data());
}

void ResizeVertically(std::span<const std::uint16_t> upper, std::span<const std::uint16_t> lower,
                      std::uint16_t lowerWeight, std::span<unsigned char> destination) {
    HWY_DYNAMIC_DISPATCH(Vertical)
    (upper.data(), lower.data(), lowerWeight, destination.data(), destination.size());
}

void HalveRows(const unsigned char* upper, const unsigned char* lower, std::size_t channels,
               std::span<unsigned char> destination) {
    HWY_DYNAMIC_DISPATCH(Halve)
    (upper, lower, channels, destination.data(), destination.size() / channels);
}

}  // namespace quorvex
#endif
