#include "foundation/engines/jpeg2000/decoder/blocks/ht_refinement.h"

#include "foundation/engines/jpeg2000/decoder/blocks/ht_cleanup.h"

#include <algorithm>
#include <array>

namespace quorvex::j2k {
namespace {

/// A group of 4 x 4 samples: bit 4 x column + row.
using Group = std::uint32_t;

constexpr Group kTopRow = 0x1111;
constexpr Group kBottomRow = 0x8888;
constexpr Group kColumn = 0xF;

/// For each sample, its neighbours within the group that the scan comes to later.
constexpr std::array<Group, 16> LaterNeighbours() {
    std::array<Group, 16> neighbours{};
    for (unsigned sample = 0; sample < 16; ++sample) {
        for (unsigned other = sample + 1; other < 16; ++other) {
            const unsigned columns = other / 4 - sample / 4;
            const int rows = static_cast<int>(other % 4) - static_cast<int>(sample % 4);
            if (columns <= 1 && rows >= -1 && rows <= 1) neighbours[sample] |= 1U << other;
        }
    }
    return neighbours;
}
constexpr std::array<Group, 16> kLater = LaterNeighbours();

/// A column and the rows right above and below its samples.
constexpr Group Tall(Group columns) {
    return columns | (columns & ~kBottomRow) << 1 | (columns & ~kTopRow) >> 1;
}

/// The significance of a block's groups around one of them.
class Neighbourhood {
public:
    Neighbourhood(const std::uint16_t* groups, std::size_t perStripe)
        : groups_(groups), perStripe_(perStripe) {}

    /// Samples of a group that have a significant neighbour. `left` and `above` tell of the groups
    /// before it with what the pass has found there.
    [[nodiscard]] Group Members(std::size_t at, const std::uint16_t* found, bool isCausal) const {
        const Group here = groups_[at];
        const Group left = (groups_[at - 1] | found[at - 1]) >> 12;
        const Group right = groups_[at + 1] & kColumn;
        Group members = Tall((here | here << 4 | here >> 4 | left | right << 12) & 0xFFFF);
        const auto row = [&](std::size_t middle, const std::uint16_t* more, unsigned shift) {
            const auto of = [&](std::size_t i) {
                return (groups_[i] | (more != nullptr ? more[i] : 0U)) >> shift & kTopRow;
            };
            const Group line = of(middle);
            return line | line << 4 | line >> 4 | of(middle - 1) >> 12 | of(middle + 1) << 12;
        };
        members |= row(at - perStripe_, found, 3) & kTopRow;
        if (!isCausal) members |= (row(at + perStripe_, nullptr, 0) & kTopRow) << 3;
        return members & ~here;
    }

private:
    const std::uint16_t* groups_;
    std::size_t perStripe_;
};

class Refiner {
public:
    Refiner(const HtRefinement& passes, std::int32_t* out, std::ptrdiff_t stride,
            HtScratch& scratch)
        : passes_(passes),
          out_(out),
          stride_(stride),
          groups_(scratch.groups.data()),
          found_(scratch.found.data()),
          half_(1 << (passes.shift - 1)) {}

    void Propagate(HtBitReader bits);
    void Refine(HtBitReader bits);

private:
    /// Calls `work(index of the group, its first coefficient, its samples inside the block)`.
    template <class Work>
    void ForEachGroup(Work work) const {
        for (int y = 0; y < passes_.height; y += 4) {
            const int rows = std::min(4, passes_.height - y);
            const Group lines = kTopRow * ((1U << rows) - 1);
            std::size_t at = GroupsAt(passes_.width, y / 4);
            for (int x = 0; x < passes_.width; x += 4, ++at) {
                const int columns = std::min(4, passes_.width - x);
                work(at, out_ + y * stride_ + x, lines & ((1U << 4 * columns) - 1));
            }
        }
    }

    /// Calls `work(coefficient)` for each sample of a set.
    template <class Work>
    void ForEachSample(Group samples, std::int32_t* first, Work work) const {
        for (; samples != 0; samples &= samples - 1) {
            const int sample = std::countr_zero(samples);
            work(first[sample % 4 * stride_ + sample / 4]);
        }
    }

    HtRefinement passes_;
    std::int32_t* out_;
    std::ptrdiff_t stride_;
    const std::uint16_t* groups_;
    std::uint16_t* found_;
    std::int32_t half_;  ///< the midpoint one plane below the clean-up pass
};

/// For a group its significance bits, then the signs of those that it found.
void Refiner::Propagate(HtBitReader bits) {
    const Neighbourhood neighbourhood(groups_,
                                      GroupsAt(passes_.width, 1) - GroupsAt(passes_.width, 0));
    ForEachGroup([&](std::size_t at, std::int32_t* first, Group inside) {
        const Group open = inside & ~Group{groups_[at]};
        Group members = neighbourhood.Members(at, found_, passes_.isVerticallyCausal) & inside;
        if (members == 0) return;
        bits.Refill();  // at most 16 bits and 16 signs
        Group found = 0;
        while (members != 0) {
            const int sample = std::countr_zero(members);
            members &= members - 1;
            if ((bits.Peek() & 1) != 0) {
                found |= 1U << sample;
                members |= kLater[static_cast<std::size_t>(sample)] & open;
            }
            bits.Skip(1);
        }
        found_[at] = static_cast<std::uint16_t>(found);
        ForEachSample(found, first, [&](std::int32_t& value) {
            value = (bits.Peek() & 1) != 0 ? -3 * half_ : 3 * half_;
            bits.Skip(1);
        });
    });
}

/// One more bit of each sample that the clean-up pass found.
void Refiner::Refine(HtBitReader bits) {
    ForEachGroup([&](std::size_t at, std::int32_t* first, Group) {
        bits.Refill();
        ForEachSample(groups_[at], first, [&](std::int32_t& value) {
            const bool isUp = ((bits.Peek() & 1) != 0) == (value > 0);
            value += isUp ? half_ : -half_;
            bits.Skip(1);
        });
    });
}

}  // namespace

void DecodeHtRefinement(const HtRefinement& passes, std::int32_t* out, std::ptrdiff_t stride,
                        HtScratch& scratch) {
    const auto segment = passes.segment;
    Refiner refiner(passes, out, stride, scratch);
    scratch.found.fill(0);
    // All samples and as many signs: zeros follow what there is.
    constexpr std::size_t kMore = kLargestBlock / 4;
    bool isSound = true;
    const auto head = segment.first(std::min(segment.size(), kLargestHtMagnitudes));
    refiner.Propagate(HtBitReader(UnstuffForward(head, 0, kMore, scratch.forward.data(), isSound)));
    if (!passes.refines) return;
    const auto tail = segment.last(std::min(segment.size(), kLargestHtSuffix));
    refiner.Refine(HtBitReader(UnstuffBackward(tail, {}, kMore, scratch.backward.data())));
}

}  // namespace quorvex::j2k
