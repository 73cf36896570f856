#include "parser/palette/palette_segments.h"

#include "foundation/types/limits.h"

#include <algorithm>
#include <cstddef>

namespace quorvex {
namespace {

constexpr std::uint16_t kDiscrete = 0;
constexpr std::uint16_t kLinear = 1;
constexpr std::uint16_t kIndirect = 2;

class SegmentExpansion {
public:
    SegmentExpansion(std::span<const std::uint16_t> words, std::span<std::uint16_t> table) noexcept
        : words_(words), table_(table) {}

    bool Run() noexcept {
        for (int i = 0; at_ < words_.size() && index_ < table_.size(); ++i) {
            if (i == kMostPaletteSegments) return RefuseBy(Limit::kPaletteSegments);
            if (!Segment()) return false;
        }
        return at_ == words_.size() && index_ == table_.size();
    }

private:
    [[nodiscard]] std::size_t Left() const noexcept { return words_.size() - at_; }
    [[nodiscard]] std::size_t Room() const noexcept { return table_.size() - index_; }

    bool Segment() noexcept {
        const std::uint16_t opcode = words_[at_++];
        if (opcode == kIndirect) return Indirect();
        const bool isDone = opcode == kDiscrete ? Discrete() : opcode == kLinear && Linear();
        if (isDone && runLeft_ > 0 && --runLeft_ == 0) at_ = returnTo_;
        return isDone;
    }

    bool Discrete() noexcept {
        if (Left() < 1) return false;
        const std::size_t count = words_[at_++];
        if (count > Left() || count > Room()) return false;
        std::ranges::copy(words_.subspan(at_, count), table_.subspan(index_).begin());
        at_ += count;
        index_ += count;
        return true;
    }

    bool Linear() noexcept {
        if (Left() < 2) return false;
        const std::size_t count = words_[at_];
        const double end = words_[at_ + 1];
        at_ += 2;
        if (count > Room()) return false;
        const double start = index_ > 0 ? table_[index_ - 1] : 0.0;
        const double reciprocal = count > 0 ? 1.0 / static_cast<double>(count) : 0.0;
        for (std::size_t step = 1; step <= count; ++step) {
            const double value = start + static_cast<double>(step) * reciprocal * (end - start);
            table_[index_++] = static_cast<std::uint16_t>(value);
        }
        return true;
    }

    /// Goes on at a byte offset for some segments, then returns. The latest one counts.
    bool Indirect() noexcept {
        if (Left() < 3) return false;
        const std::size_t offset = words_[at_ + 1] + std::size_t{words_[at_ + 2]} * 65536;
        const std::size_t count = words_[at_];
        at_ += 3;
        if (count == 0) return true;
        if (offset % 2 != 0 || offset / 2 >= words_.size()) return false;
        runLeft_ = count;
        returnTo_ = at_;
        at_ = offset / 2;
        return true;
    }

    std::span<const std::uint16_t> words_;
    std::span<std::uint16_t> table_;
    std::size_t at_ = 0;
    std::size_t index_ = 0;
    std::size_t runLeft_ = 0;
    std::size_t returnTo_ = 0;
};

}  // namespace

bool ExpandPaletteSegments(std::span<const std::uint16_t> words,
                           std::span<std::uint16_t> table) noexcept {
    return SegmentExpansion(words, table).Run();
}

}  // namespace quorvex
