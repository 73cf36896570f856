/// One row of a lossless picture, from its bits to its samples.
#pragma once

#include "foundation/engines/lossless/lossless_tables.h"

#include <algorithm>
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
        : tables_(tables),
          samples_(pixels * Components),
          mayPair_(tables[0]->HasPairs() &&
                   std::all_of(tables.begin(), tables.begin() + Components,
                               [&](const auto* table) { return table == tables[0]; })) {}

    [[nodiscard]] bool Read(LosslessBits& reader, LosslessPixel& first,
                            unsigned char* row) noexcept override {
        const bool isWhole =
            rowsByCode_ == 0 ? ReadShort(reader, first, row) : ReadLong(reader, first, row);
        if (!isWhole) return false;
        for (std::size_t i = 0; i < Components; ++i) first[i] = Load(row, i);
        return true;
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
        const bool isWhole = mayPair_ ? ReadPairs(now, row) : ReadWholes(now, row);
        if (now.misses * kSymbolsPerMiss > samples_) rowsByCode_ = kRowsByCode;
        given = now.reader;
        if (isWhole && mayPair_ && Components > 1) AddUp(values, row);
        return isWhole;
    }

    [[nodiscard]] bool ReadWholes(Progress& given, unsigned char* row) const noexcept {
        Progress now = given;
        for (; now.place + kGroup <= samples_;) {
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
        return ReadOneByOne(given.reader, given.values, row, now.place, samples_ - now.place);
    }

    /// A row of one table. Of colours, differences alone: a pair has two of three.
    [[nodiscard]] bool ReadPairs(Progress& now, unsigned char* row) const noexcept {
        return ReadPairsBy<4>(now, row) && ReadPairsBy<1>(now, row) &&
               ReadAlone(now, row, samples_ - now.place);
    }

    /// As far as there is room for all of `LookUps` pairs.
    template <std::size_t LookUps>
    [[nodiscard]] bool ReadPairsBy(Progress& given, unsigned char* row) const noexcept {
        static_assert(LookUps * LosslessTable::kBits <= 56);
        Progress now = given;
        const LosslessTable& table = *tables_[0];
        const auto put = [&now, row](std::size_t place, std::uint32_t difference) {
            now.values[0] = (Components == 1 ? now.values[0] : 0) + difference;
            Store(row, place, now.values[0]);
        };
        while (now.place + 2 * LookUps <= samples_) {
            now.reader.Refill();
            std::uint32_t sum = 0;
            std::uint32_t pair = 0;
#pragma GCC unroll 4
            for (std::size_t i = 0; i < LookUps; ++i) {
                pair = table.Pair(now.reader.bits);
                now.reader.bits <<= pair & LosslessTable::kLengthMask;
                sum += pair;
                put(now.place, LosslessTable::FirstOf(pair));
                put(now.place + 1, LosslessTable::SecondOf(pair));
                now.place += LosslessTable::CountOf(pair);
            }
            now.reader.held -= sum & LosslessTable::kLengthMask;
            // What does not fit stays, and so do all look-ups behind it.
            if (pair == 0) {
                Progress slow = now;
                if (!ReadAlone(slow, row, 1)) return false;
                now = slow;
                ++now.misses;
            }
        }
        given = now;
        return true;
    }

    /// As pairs are read, but one by one.
    [[nodiscard]] bool ReadAlone(Progress& now, unsigned char* row,
                                 std::size_t count) const noexcept {
        for (; count > 0; --count, ++now.place) {
            const auto difference = tables_[0]->ReadOne(now.reader);
            if (!difference) return false;
            now.values[0] = (Components == 1 ? now.values[0] : 0) + *difference;
            Store(row, now.place, now.values[0]);
        }
        return true;
    }

    void AddUp(Values values, unsigned char* row) const noexcept {
        for (std::size_t place = 0; place < samples_; place += Components) {
#pragma GCC unroll 4
            for (std::size_t i = 0; i < Components; ++i) {
                values[i] += Load(row, place + i);
                Store(row, place + i, values[i]);
            }
        }
    }

    [[nodiscard]] bool ReadLong(LosslessBits& given, Values values, unsigned char* row) noexcept {
        --rowsByCode_;
        LosslessBits reader = given;
        std::size_t place = 0;
        for (; place + kGroup <= samples_; place += kGroup) {
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
        const bool isWhole = ReadOneByOne(reader, values, row, place, samples_ - place);
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
    std::size_t samples_;
    bool mayPair_;
    int rowsByCode_ = 0;
};

}  // namespace quorvex
