#include "foundation/engines/jpeg2000/decoder/tile_decoding.h"

#include "foundation/engines/jpeg2000/decoder/component_rows.h"
#include "foundation/engines/jpeg2000/decoder/job_queue.h"
#include "foundation/engines/jpeg2000/decoder/samples/colour.h"
#include "foundation/types/progress.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>

namespace quorvex::j2k {
namespace {

using Jobs = std::vector<std::unique_ptr<BlockJob>>;

/// Components whose rows are made together: one, or three with a colour transform.
class Group {
public:
    Group() = default;
    Group(const Group&) = delete;
    Group& operator=(const Group&) = delete;
    virtual ~Group() = default;
    virtual void Plan(std::uint32_t rows, Jobs& jobs) = 0;
    virtual void Store(std::uint32_t rows) = 0;
    [[nodiscard]] virtual std::uint32_t Rows() const noexcept = 0;
};

template <class T>
class GroupOf final : public Group {
public:
    GroupOf(const BlockContext& context, unsigned first, std::span<const ComponentTarget> targets)
        : targets_(targets), isColour_(targets.size() == 3) {
        for (unsigned i = 0; i < targets.size(); ++i) {
            components_[i] = std::make_unique<ComponentRows<T>>(
                context, first + i, targets[i].resolution, targets[i].region);
            values_[i].resize(targets[i].region.Width() + kRowSlack);
        }
    }

    [[nodiscard]] std::uint32_t Rows() const noexcept override {
        return targets_.front().region.Height();
    }

    // Both count rows from the region's top.
    void Plan(std::uint32_t rows, Jobs& jobs) override {
        for (std::size_t i = 0; i < targets_.size(); ++i) {
            components_[i]->Plan(targets_[i].region.y0 + std::min(rows, Rows()), jobs);
        }
    }

    void Store(std::uint32_t rows) override {
        for (const std::uint32_t end = std::min(rows, Rows()); done_ < end; ++done_) StoreNext();
    }

private:
    void StoreNext() {
        std::array<const T*, 3> rows{};
        std::array<std::int32_t*, 3> values{};
        for (std::size_t i = 0; i < targets_.size(); ++i) {
            rows[i] = components_[i]->Row(targets_[i].region.y0 + done_);
            values[i] = values_[i].data();
        }
        const std::size_t count = targets_.front().region.Width();
        if constexpr (std::is_same_v<T, float>) {
            isColour_ ? RestoreIrreversible(rows.data(), count, values.data())
                      : RoundRow(rows[0], count, values[0]);
        } else if (isColour_) {
            RestoreReversible(rows.data(), count, values.data());
        }
        for (std::size_t i = 0; i < targets_.size(); ++i) {
            const ComponentTarget& target = targets_[i];
            StoreRow(*target.plane, target.range, ValuesOf(rows[i], values[i]), target.x,
                     target.y + done_, target.region.Width());
        }
    }

    // Whole numbers without a colour transform are taken as they come.
    const std::int32_t* ValuesOf(const T* row, const std::int32_t* values) const noexcept {
        if constexpr (std::is_same_v<T, std::int32_t>) return isColour_ ? values : row;
        return values;
    }

    std::span<const ComponentTarget> targets_;
    bool isColour_;
    std::uint32_t done_ = 0;
    std::array<std::unique_ptr<ComponentRows<T>>, 3> components_;
    std::array<std::vector<std::int32_t>, 3> values_;
};

std::unique_ptr<Group> MakeGroup(const BlockContext& context, unsigned first,
                                 std::span<const ComponentTarget> targets) {
    if (context.tile->parameters.components[first].style.isReversible)
        return std::make_unique<GroupOf<std::int32_t>>(context, first, targets);
    return std::make_unique<GroupOf<float>>(context, first, targets);
}

// The colour transform needs three components that are alike.
bool HasColour(const TileData& tile, std::span<const ComponentTarget> targets) noexcept {
    if (!tile.parameters.tile.hasColourTransform || targets.size() < 3) return false;
    for (std::size_t i = 1; i < 3; ++i) {
        if (targets[i].region.Width() != targets[0].region.Width() ||
            targets[i].region.Height() != targets[0].region.Height() ||
            tile.parameters.components[i].style.isReversible !=
                tile.parameters.components[0].style.isReversible)
            return false;
    }
    return true;
}

std::vector<std::unique_ptr<Group>> MakeGroups(const BlockContext& context,
                                               std::span<const ComponentTarget> targets) {
    std::vector<std::unique_ptr<Group>> groups;
    for (unsigned i = 0; i < targets.size();) {
        const unsigned count = i == 0 && HasColour(*context.tile, targets) ? 3 : 1;
        if (!targets[i].region.IsEmpty()) {
            groups.push_back(MakeGroup(context, i, targets.subspan(i, count)));
        }
        i += count;
    }
    return groups;
}

// While the rows of one strip are stored, the blocks of the next are decoded.
void DecodeInStrips(std::span<const std::unique_ptr<Group>> groups, const Executor& executor) {
    constexpr std::uint32_t kStrip = 256;
    std::uint32_t rows = 0;
    for (const auto& group : groups) rows = std::max(rows, group->Rows());
    JobQueue queue(executor);
    for (std::uint32_t done = 0; done < rows + kStrip; done += kStrip) {
        Jobs jobs;
        for (const auto& group : groups) group->Plan(done + kStrip, jobs);
        const auto store = [&](std::size_t index, BlockScratch&) { groups[index]->Store(done); };
        const auto decode = [&](std::size_t index, BlockScratch& scratch) {
            jobs[index]->Run(scratch);
        };
        queue.Run(groups.size(), store, jobs.size(), decode);
        TellProgress(done, rows);
    }
}

// Blocks are decoded as their rows are asked for.
void DecodeInTurn(std::span<const std::unique_ptr<Group>> groups) {
    constexpr std::uint32_t kStep = 32;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const ProgressStretch stretch(i, groups.size());
        const std::uint32_t rows = groups[i]->Rows();
        for (std::uint32_t done = 0; done < rows;) {
            done += std::min(kStep, rows - done);
            groups[i]->Store(done);
            TellProgress(done, rows);
        }
    }
}

}  // namespace

bool DecodeTile(const TileData& tile, std::span<const ComponentTarget> targets,
                const Executor& executor) {
    std::atomic<bool> isDamaged = false;
    const auto scratch = std::make_unique<BlockScratch>();
    const BlockContext context{&tile, scratch.get(), &isDamaged};
    const auto groups = MakeGroups(context, targets);
    if (executor.threads > 1 && executor.run) {
        DecodeInStrips(groups, executor);
    } else {
        DecodeInTurn(groups);
    }
    return !isDamaged;
}

}  // namespace quorvex::j2k
