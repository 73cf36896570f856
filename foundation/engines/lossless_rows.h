/// One row of a lossless picture, from its bits to its samples.
#pragma once

#include "foundation/engines/lossless_tables.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quorvex {

using LosslessPixel = std::array<std::uint32_t, 3>;

/// Decodes rows of interleaved samples, each predicted from its left neighbour.
class LosslessRowReader {
public:
    LosslessRowReader() = default;
    LosslessRowReader(const LosslessRowReader&) = delete;
    LosslessRowReader& operator=(const LosslessRowReader&) = delete;
    virtual ~LosslessRowReader() = default;

    /// `first` predicts the first pixel, and becomes it. False where the bits are no code.
    [[nodiscard]] virtual bool Read(LosslessBits& reader, LosslessPixel& first,
                                    unsigned char* row) noexcept = 0;
};

/// Samples wrap as their type does, and lie at any address.
template <class Sample, std::size_t Components>
class LosslessRows final : public LosslessRowReader {
public:
    using Tables = std::array<const LosslessTable*, 3>;

    LosslessRows(const Tables& tables, std::size_t pixels) noexcept
        : tables_(tables), pixels_(pixels) {}

    [[nodiscard]] bool Read(LosslessBits& reader, LosslessPixel& first,
                            unsigned char* row) noexcept override {
        const bool isWhole =
            rowsByCode_ == 0 ? ReadShort(reader, first, row) : ReadLong(reader, first, row);
        for (std::size_t i = 0; i < Components; ++i) first[i] = Load(row, i);
        return isWhole;
    }

private:
    using Values = LosslessPixel;

    // Differences that are often too long for one look-up cost less by their codes: for a while.
    static constexpr int kRowsByCode = 16;
    static constexpr std::size_t kSymbolsPerMiss = 12;
    static constexpr std::size_t kGroupPixels = Components == 1 ? 4 : 1;
    static constexpr std::size_t kGroup = kGroupPixels * Components;
    static_assert(kGroup * LosslessTable::kBits <= 56);

    static std::uint32_t Load(const unsigned char* row, std::size_t place) noexcept {
        Sample sample;
        std::memcpy(&sample, row + place * sizeof(Sample), sizeof sample);
        return sample;
    }
    static void Store(unsigned char* row, std::size_t place, std::uint32_t value) noexcept {
        const auto sample = static_cast<Sample>(value);
        std::memcpy(row + place * sizeof(Sample), &sample, sizeof sample);
    }

    /// Where a row's reading stands.
    struct Progress {
        LosslessBits reader;
        Values values;
        std::size_t place = 0;
        std::size_t misses = 0;
    };

    [[nodiscard]] bool ReadShort(LosslessBits& given, const Values& values,
                                 unsigned char* row) noexcept {
        Progress now{.reader = given, .values = values};
        const bool mayPair = Components == 1 && tables_[0]->HasPairs();
        if (mayPair && !ReadPairs(now, row)) return false;
        if (!ReadWholes(now, row)) return false;
        const std::size_t samples = pixels_ * Components;
        if (now.misses * kSymbolsPerMiss > samples) rowsByCode_ = kRowsByCode;
        const bool isWhole =
            ReadOneByOne(now.reader, now.values, row, now.place, samples - now.place);
        given = now.reader;
        return isWhole;
    }

    [[nodiscard]] bool ReadWholes(Progress& given, unsigned char* row) const noexcept {
        Progress now = given;
        const std::size_t samples = pixels_ * Components;
        for (; now.place + kGroup <= samples;) {
            now.reader.Refill();
            std::uint64_t bits = now.reader.bits;
            std::array<std::uint32_t, kGroup> entries;
            std::uint32_t sum = 0;
            std::uint32_t any = 0;
#pragma GCC unroll 4
            for (std::size_t i = 0; i < kGroup; ++i) {
                const std::uint32_t entry = tables_[i % Components]->Whole(bits);
                bits <<= entry & LosslessTable::kLengthMask;
                entries[i] = entry;
                sum += entry;
                any |= entry;
            }
            if ((any & LosslessTable::kMiss) != 0) {
                Progress slow = now;
                if (!ReadMissed(slow, row, kGroup)) return false;
                now = slow;
                continue;
            }
            now.reader.bits = bits;
            now.reader.held -= sum & LosslessTable::kLengthMask;
#pragma GCC unroll 4
            for (std::size_t i = 0; i < kGroup; ++i) {
                auto& value = now.values[i % Components];
                value += entries[i] >> 16;
                Store(row, now.place + i, value);
            }
            now.place += kGroup;
        }
        given = now;
        return true;
    }

    /// All but the last samples of a row of grey.
    [[nodiscard]] bool ReadPairs(Progress& given, unsigned char* row) const noexcept {
        Progress now = given;
        const LosslessTable& table = *tables_[0];
        std::uint32_t& value = now.values[0];
        while (now.place + 2 * kGroup <= pixels_) {
            now.reader.Refill();
            std::uint32_t sum = 0;
            std::uint32_t pair = 0;
#pragma GCC unroll 4
            for (std::size_t i = 0; i < kGroup; ++i) {
                pair = table.Pair(now.reader.bits);
                now.reader.bits <<= pair & LosslessTable::kLengthMask;
                sum += pair;
                value += LosslessTable::FirstOf(pair);
                Store(row, now.place, value);
                value += LosslessTable::SecondOf(pair);
                Store(row, now.place + 1, value);
                now.place += LosslessTable::CountOf(pair);
            }
            now.reader.held -= sum & LosslessTable::kLengthMask;
            // What does not fit stays, and so do all look-ups behind it.
            if (pair == 0) {
                Progress slow = now;
                if (!ReadMissed(slow, row, 1)) return false;
                now = slow;
            }
        }
        given = now;
        return true;
    }

    [[nodiscard]] bool ReadLong(LosslessBits& given, Values values, unsigned char* row) noexcept {
        --rowsByCode_;
        LosslessBits reader = given;
        std::size_t place = 0;
        const std::size_t samples = pixels_ * Components;
        for (; place + kGroup <= samples; place += kGroup) {
#pragma GCC unroll 4
            for (std::size_t i = 0; i < kGroup; ++i) {
                if (i % 2 == 0) reader.Refill();
                const LosslessTable& table = *tables_[i % Components];
                const std::uint32_t code = table.Code(reader.bits);
                auto& value = values[i % Components];
                if ((code & LosslessTable::kMiss) != 0) {
                    const auto difference = table.ReadOne(reader);
                    if (!difference) return false;
                    if (i % 2 == 0) reader.Refill();
                    value += *difference;
                } else {
                    value += table.Difference(reader.bits, code);
                    reader.Drop(code & LosslessTable::kLengthMask);
                }
                Store(row, place + i, value);
            }
        }
        const bool isWhole = ReadOneByOne(reader, values, row, place, samples - place);
        given = reader;
        return isWhole;
    }

    // Of a copy: what has an address does not stay in registers.
    [[nodiscard]] bool ReadMissed(Progress& now, unsigned char* row,
                                  std::size_t count) const noexcept {
        ++now.misses;
        const bool isWhole = ReadOneByOne(now.reader, now.values, row, now.place, count);
        now.place += count;
        return isWhole;
    }

    [[nodiscard]] bool ReadOneByOne(LosslessBits& reader, Values& values, unsigned char* row,
                                    std::size_t place, std::size_t count) const noexcept {
        for (std::size_t i = 0; i < count; ++i) {
            const auto difference = tables_[i % Components]->ReadOne(reader);
            if (!difference) return false;
            auto& value = values[i % Components];
            value += *difference;
            Store(row, place + i, value);
        }
        return true;
    }

    Tables tables_;
    std::size_t pixels_;
    int rowsByCode_ = 0;
};

}  // namespace quorvex
