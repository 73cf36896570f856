#include "foundation/engines/jpeg2000/encoding_samples.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

namespace quorvex {
namespace {

constexpr int kMostLevels = 5;

static_assert(std::endian::native == std::endian::little);

template <class Stored>
Stored SampleAt(const unsigned char* place, bool isBigEndian) noexcept {
    if constexpr (sizeof(Stored) == 1) return static_cast<Stored>(*place);
    std::uint16_t word;
    std::memcpy(&word, place, sizeof word);
    return static_cast<Stored>(isBigEndian ? __builtin_bswap16(word) : word);
}

template <class Stored>
bool Read(std::span<std::int32_t> values, const unsigned char* place,
          const PegasusParameters& p) noexcept {
    const std::size_t step = static_cast<std::size_t>(p.samples) * sizeof(Stored);
    std::int32_t least = 0;
    std::int32_t greatest = 0;
    for (std::int32_t& value : values) {
        // NOLINTNEXTLINE(bugprone-signed-char-misuse): samples may be signed
        value = SampleAt<Stored>(place, p.isBigEndian);
        least = std::min(least, value);
        greatest = std::max(greatest, value);
        place += step;
    }
    const std::int32_t span = std::int32_t{1} << p.bitDepth;
    const std::int32_t lowest = p.isSigned ? -span / 2 : 0;
    return least >= lowest && greatest < lowest + span;
}

}  // namespace

int UsefulLevels(const PegasusParameters& p) noexcept {
    int levels = 0;
    while (levels < kMostLevels && (std::min(p.columns, p.rows) >> (levels + 1)) > 0) ++levels;
    return levels;
}

bool ReadComponent(std::span<std::int32_t> values, const unsigned char* place,
                   const PegasusParameters& p) noexcept {
    constexpr auto kReads =
        std::array{Read<std::uint8_t>, Read<std::int8_t>, Read<std::uint16_t>, Read<std::int16_t>};
    return kReads[(p.bytesPerSample == 2 ? 2U : 0U) + (p.isSigned ? 1U : 0U)](values, place, p);
}

}  // namespace quorvex
