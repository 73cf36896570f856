// Lossless streams of selection value 1, bit for bit as the library writes them; other pictures go
// to the library.
#include "foundation/engines/jpeg/jpeg_coders.h"
#include "foundation/engines/jpeg/jpeg_output.h"
#include "foundation/engines/lossless/lossless_codes.h"
#include "foundation/engines/lossless/lossless_differences.h"
#include "foundation/types/cancellation.h"
#include "foundation/types/progress.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <initializer_list>
#include <numeric>
#include <optional>
#include <string_view>
#include <vector>

namespace quorvex {
namespace {

constexpr int kLongestSide = 65500;            // of the library, and so of ours
constexpr std::size_t kMostBytesOfSample = 4;  // a code of 16 bits and 15 of a difference
constexpr std::size_t kWriteAhead = 16;        // by whole words, past a row's last bit

/// Bits on their way into whole bytes.
struct BitTail {
    std::uint64_t bits = 0;  ///< below; what stands above has gone out
    unsigned held = 0;       ///< fewer than 8 between two calls
};

/// `AtOnce` differences take 56 bits at most. Gives the place behind the last whole byte.
template <std::size_t AtOnce>
unsigned char* PutDifferences(const LosslessDigest& digest, std::size_t samples,
                              const LosslessCodes& codes, BitTail& given,
                              unsigned char* out) noexcept {
    BitTail tail = given;
    const auto put = [&](std::size_t i) {
        const LosslessCode code = codes[digest.categories[i]];
        tail.bits = tail.bits << code.length | code.code | digest.bits[i];
        tail.held += code.length;
    };
    const auto flush = [&] {
        static_assert(std::endian::native == std::endian::little);
        const std::uint64_t word = __builtin_bswap64(tail.bits << (64 - tail.held));
        std::memcpy(out, &word, sizeof word);
        out += tail.held / 8;
        tail.held %= 8;
    };
    std::size_t i = 0;
    for (; i + AtOnce <= samples; i += AtOnce) {
#pragma GCC unroll 4
        for (std::size_t j = 0; j < AtOnce; ++j) put(i + j);
        flush();
    }
    for (; i < samples; ++i) {
        put(i);
        flush();
    }
    given = tail;
    return out;
}

class LosslessCoder final : public JpegLineCoder {
public:
    explicit LosslessCoder(const JpegCodingBlock& coding)
        : coding_(coding),
          output_(coding.writeContext, coding.write),
          rowBytes_(std::size_t{coding.columns} * coding.samples * coding.bytesPerSample),
          differences_(coding.columns, coding.samples, coding.bytesPerSample, coding.precision) {}

    [[nodiscard]] bool Start() override { return output_.Begin(); }

    [[nodiscard]] bool Write(const unsigned char* rows, int lines) noexcept override {
        linesSeen_ = lines;
        const ProgressStretch first(0, 2);
        return lines <= coding_.rows &&
               ForEachDigest(rows, lines, [this](auto& digest, auto count) {
                   tally_.Add(digest, count);
                   return true;
               });
    }

    [[nodiscard]] bool Finish(const unsigned char* rows, int lines) noexcept override {
        if (linesSeen_ != coding_.rows || lines != coding_.rows) return false;
        const ProgressStretch second(1, 2);
        return PutHead() && PutRows(rows) && PutEnd();
    }

private:
    template <class Use>
    [[nodiscard]] bool ForEachDigest(const unsigned char* rows, int lines,
                                     const Use& use) noexcept {
        differences_.Rewind();
        bool isFine = true;
        const auto cancellation = Cancellation::OfThisThread();
        for (int y = 0; isFine && y < lines; ++y, rows += rowBytes_) {
            TellProgress(static_cast<std::size_t>(y), static_cast<std::size_t>(lines));
            if (cancellation.IsAsked()) return false;
            if (!differences_.Take(rows)) return false;
            differences_.ForEach([&](const LosslessDigest& digest, std::size_t count) {
                isFine = isFine && use(digest, count);
            });
        }
        return isFine;
    }

    [[nodiscard]] bool PutRows(const unsigned char* rows) noexcept {
        const LosslessCodes codes = CodesOf(table_);
        const auto longest = std::ranges::max(codes, {}, &LosslessCode::length).length;
        if (longest <= 14) return PutRows<4>(rows, codes);
        if (longest <= 28) return PutRows<2>(rows, codes);
        return PutRows<1>(rows, codes);
    }
    template <std::size_t AtOnce>
    [[nodiscard]] bool PutRows(const unsigned char* rows, const LosslessCodes& codes) noexcept {
        return ForEachDigest(rows, coding_.rows, [&](auto& digest, auto count) {
            unsigned char* first = bytes_.data();
            const unsigned char* end = PutDifferences<AtOnce>(digest, count, codes, tail_, first);
            bits_ += 8 * static_cast<std::uint64_t>(end - first);
            return output_.PutStuffed({first, static_cast<std::size_t>(end - first)});
        });
    }

    /// Rows that are not those of the first pass may have had no code.
    [[nodiscard]] bool IsAsMeasured() const noexcept {
        const LosslessCodes codes = CodesOf(table_);
        const LosslessCounts counts = tally_.Counts();
        std::uint64_t expected = 0;
        for (std::size_t i = 0; i < counts.size(); ++i) expected += counts[i] * codes[i].length;
        return bits_ + tail_.held == expected;
    }

    [[nodiscard]] bool PutEnd() noexcept {
        if (!IsAsMeasured()) return false;
        const unsigned free = 8 - tail_.held;
        const auto last = static_cast<unsigned char>((tail_.bits << free) | ((1U << free) - 1));
        const bool isPut = tail_.held == 0 || output_.PutStuffed({&last, 1});
        return isPut && PutMarker(0xD9) && output_.End();
    }

    [[nodiscard]] bool PutHead() noexcept {
        table_ = ShortestTable(tally_.Counts());
        return PutMarker(0xD8) && PutApplication() && PutFrame() && PutTable() && PutScan();
    }

    [[nodiscard]] bool PutMarker(unsigned char marker) noexcept {
        const unsigned char bytes[] = {0xFF, marker};
        return output_.Put(bytes);
    }
    [[nodiscard]] bool PutSegment(unsigned char marker,
                                  std::initializer_list<unsigned char> content) noexcept {
        return PutSegment(marker, std::span(content.begin(), content.size()));
    }
    [[nodiscard]] bool PutSegment(unsigned char marker,
                                  std::span<const unsigned char> content) noexcept {
        const unsigned char length[] = {0, static_cast<unsigned char>(content.size() + 2)};
        return PutMarker(marker) && output_.Put(length) && output_.Put(content);
    }

    [[nodiscard]] bool IsColour() const noexcept { return coding_.samples == 3; }
    [[nodiscard]] unsigned char Id(int component) const noexcept {
        constexpr std::string_view kColours = "RGB";
        return IsColour()
                   ? static_cast<unsigned char>(kColours[static_cast<std::size_t>(component)])
                   : std::uint8_t{1};
    }

    /// JFIF for grey; Adobe for R, G, B, which JFIF has no form for.
    [[nodiscard]] bool PutApplication() noexcept {
        return IsColour() ? PutSegment(0xEE, {'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, 0})
                          : PutSegment(0xE0, {'J', 'F', 'I', 'F', 0, 1, 1, 0, 0, 1, 0, 1, 0, 0});
    }

    [[nodiscard]] bool PutFrame() noexcept {
        constexpr unsigned char kUnsampled = 0x11;
        const auto high = [](int value) { return static_cast<unsigned char>(value >> 8); };
        const auto low = [](int value) { return static_cast<unsigned char>(value & 0xFF); };
        const int rows = coding_.rows;
        const int columns = coding_.columns;
        if (!IsColour()) {
            return PutSegment(0xC3, {coding_.precision, high(rows), low(rows), high(columns),
                                     low(columns), 1, Id(0), kUnsampled, 0});
        }
        return PutSegment(
            0xC3, {coding_.precision, high(rows), low(rows), high(columns), low(columns), 3, Id(0),
                   kUnsampled, 0, Id(1), kUnsampled, 0, Id(2), kUnsampled, 0});
    }

    [[nodiscard]] bool PutTable() noexcept {
        std::array<unsigned char, 1 + 16 + kLosslessCategories> content{};
        const auto& counts = table_.counts;
        const auto codes = std::accumulate(counts.begin(), counts.end(), std::size_t{0});
        std::copy(counts.begin() + 1, counts.end(), content.begin() + 1);
        std::ranges::copy(table_.categories, content.begin() + 17);
        return PutSegment(0xC4, std::span(content).first(17 + codes));
    }

    [[nodiscard]] bool PutScan() noexcept {
        if (!IsColour()) return PutSegment(0xDA, {1, Id(0), 0, 1, 0, 0});
        return PutSegment(0xDA, {3, Id(0), 0, Id(1), 0, Id(2), 0, 1, 0, 0});
    }

    JpegCodingBlock coding_;
    JpegOutput output_;
    std::size_t rowBytes_;
    LosslessDifferences differences_;
    LosslessTally tally_;
    int linesSeen_ = 0;
    LosslessTableSegment table_;
    BitTail tail_;
    std::uint64_t bits_ = 0;  // in whole bytes
    std::array<unsigned char, kMostBytesOfSample * LosslessDigest::kSamples + kWriteAhead> bytes_;
};

}  // namespace

std::unique_ptr<JpegLineCoder> MakeLosslessCoder(const JpegCodingBlock& coding) {
    const bool isOurs =
        coding.predictor == 1 && std::max(coding.columns, coding.rows) <= kLongestSide;
    if (isOurs) return std::make_unique<LosslessCoder>(coding);
    return coding.bytesPerSample > 1 ? Make16BitLosslessCoder(coding)
                                     : Make8BitLosslessCoder(coding);
}

}  // namespace quorvex
