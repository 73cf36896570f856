/// Lines of samples as the coders hold them, to and from rows of 1 or 2 bytes a sample.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

namespace quorvex {

static_assert(std::endian::native == std::endian::little, "rows hold the lower byte first");

/// Turns values of 0 for full ink into values of 0 for no ink.
template <class Sample>
void InvertInks(std::span<Sample> line, unsigned greatest) noexcept {
    for (Sample& sample : line) {
        sample = static_cast<Sample>(greatest - static_cast<unsigned>(sample));
    }
}

/// Cyan, magenta, yellow, black in place to red, green, blue; gives the number of samples left.
template <class Sample>
std::size_t RgbFromInks(std::span<Sample> line, unsigned greatest) noexcept {
    const auto light = [greatest](Sample ink, Sample black) {
        const std::uint64_t product = std::uint64_t{greatest - static_cast<unsigned>(ink)} *
                                      (greatest - static_cast<unsigned>(black));
        return static_cast<Sample>((product + greatest / 2) / greatest);
    };
    std::size_t out = 0;
    for (std::size_t pixel = 0; pixel + 3 < line.size(); pixel += 4) {
        const Sample black = line[pixel + 3];
        for (std::size_t i = 0; i < 3; ++i) line[out++] = light(line[pixel + i], black);
    }
    return out;
}

template <class Sample>
void StoreSamples(std::span<const Sample> line, unsigned char* row, int bytesPerSample) noexcept {
    if (bytesPerSample == static_cast<int>(sizeof(Sample))) {
        std::memcpy(row, line.data(), line.size_bytes());
        return;
    }
    for (const Sample sample : line) {
        const auto value = static_cast<unsigned>(sample);
        *row++ = static_cast<unsigned char>(value);
        if (bytesPerSample == 2) *row++ = static_cast<unsigned char>(value >> 8);
    }
}

template <class Sample>
[[nodiscard]] bool IsAligned(const unsigned char* place) noexcept {
    return reinterpret_cast<std::uintptr_t>(place) % alignof(Sample) == 0;
}

/// False when a sample needs more bits than `precision`.
template <class Sample>
[[nodiscard]] bool FitPrecision(std::span<const Sample> line, int precision) noexcept {
    using Bits = std::make_unsigned_t<Sample>;
    constexpr std::size_t kAtOnce = sizeof(std::uint64_t) / sizeof(Sample);
    if (precision >= static_cast<int>(8 * sizeof(Sample))) return true;
    std::uint64_t seen = 0;
    std::size_t i = 0;
    for (; i + kAtOnce <= line.size(); i += kAtOnce) {
        std::uint64_t word;
        std::memcpy(&word, line.data() + i, sizeof word);
        seen |= word;
    }
    for (; i < line.size(); ++i) seen |= static_cast<Bits>(line[i]);
    Bits samples[kAtOnce];
    std::memcpy(samples, &seen, sizeof seen);
    unsigned bits = 0;
    for (const Bits sample : samples) bits |= sample;
    return bits >> precision == 0;
}

}  // namespace quorvex
