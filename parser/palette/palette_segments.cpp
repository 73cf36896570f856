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
    SegmentExpansion(std::span<const std::uint16_t> fields, SegmentForm form,
                     std::span<std::uint16_t> table) noexcept
        : fields_(fields), form_(form), table_(table) {}

    bool Run() noexcept {
        for (int i = 0; at_ < fields_.size() && index_ < table_.size(); ++i) {
            if (i == kMostPaletteSegments) return RefuseBy(Limit::kPaletteSegments);
            if (!Segment()) return false;
        }
        const bool isPadded = form_.fieldBytes == 1 && Left() == 1;
        return (Left() == 0 || isPadded) && index_ == table_.size();
    }

private:
    [[nodiscard]] std::size_t Left() const noexcept { return fields_.size() - at_; }
    [[nodiscard]] std::size_t Room() const noexcept { return table_.size() - index_; }

    bool Segment() noexcept {
        const std::uint16_t opcode = fields_[at_++];
        if (opcode == kIndirect) return Indirect();
        const bool isDone = opcode == kDiscrete ? Discrete() : opcode == kLinear && Linear();
        if (isDone && runLeft_ > 0 && --runLeft_ == 0) at_ = returnTo_;
        return isDone;
    }

    bool Discrete() noexcept {
        if (Left() < 1) return false;
        const std::size_t count = fields_[at_++];
        if (count > Left() || count > Room()) return false;
        std::ranges::copy(fields_.subspan(at_, count), table_.subspan(index_).begin());
        at_ += count;
        index_ += count;
        return true;
    }

    bool Linear() noexcept {
        if (Left() < 2) return false;
        const std::size_t count = fields_[at_];
        const std::int64_t end = fields_[at_ + 1];
        at_ += 2;
        if (count > Room()) return false;
        const std::int64_t start = index_ > 0 ? table_[index_ - 1] : 0;
        for (std::size_t step = 1; step <= count; ++step) {
            table_[index_++] = form_.roundsEntries ? RoundedPoint(start, end, step, count)
                                                   : CutOffPoint(start, end, step, count);
        }
        return true;
    }

    static std::uint16_t RoundedPoint(std::int64_t start, std::int64_t end, std::size_t step,
                                      std::size_t count) noexcept {
        const auto steps = static_cast<std::int64_t>(count);
        const std::int64_t scaled = start * steps + static_cast<std::int64_t>(step) * (end - start);
        return static_cast<std::uint16_t>((2 * scaled + steps) / (2 * steps));
    }

    static std::uint16_t CutOffPoint(std::int64_t start, std::int64_t end, std::size_t step,
                                     std::size_t count) noexcept {
        const double reciprocal = 1.0 / static_cast<double>(count);
        return static_cast<std::uint16_t>(static_cast<double>(start) +
                                          static_cast<double>(step) * reciprocal *
                                              static_cast<double>(end - start));
    }

    /// Goes on at a byte offset for some segments, then returns. The latest one counts.
    bool Indirect() noexcept {
        const std::size_t offsetFields = 4 / form_.fieldBytes;
        if (Left() < 1 + offsetFields) return false;
        const std::size_t count = fields_[at_++];
        std::size_t offset = 0;
        for (std::size_t i = 0; i < offsetFields; ++i) {
            offset |= std::size_t{fields_[at_++]} << (8 * form_.fieldBytes * i);
        }
        if (count == 0) return true;
        if (offset % form_.fieldBytes != 0 || offset / form_.fieldBytes >= fields_.size()) {
            return false;
        }
        runLeft_ = count;
        returnTo_ = at_;
        at_ = offset / form_.fieldBytes;
        return true;
    }

    std::span<const std::uint16_t> fields_;
    SegmentForm form_;
    std::span<std::uint16_t> table_;
    std::size_t at_ = 0;
    std::size_t index_ = 0;
    std::size_t runLeft_ = 0;
    std::size_t returnTo_ = 0;
};

}  // namespace

bool ExpandPaletteSegments(std::span<const std::uint16_t> fields, SegmentForm form,
                           std::span<std::uint16_t> table) noexcept {
    return SegmentExpansion(fields, form, table).Run();
}

}  // namespace quorvex
