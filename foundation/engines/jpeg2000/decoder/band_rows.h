/// The rows of one band, a row of code blocks in memory at a time.
#pragma once

#include "foundation/engines/jpeg2000/decoder/block_decoding.h"
#include "foundation/engines/jpeg2000/decoder/wavelet/synthesis.h"
#include "foundation/types/cancellation.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

namespace quorvex::j2k {

/// What all bands of a decoding share.
struct BlockContext {
    const TileData* tile = nullptr;
    BlockScratch* scratch = nullptr;  ///< for blocks that are decoded when they are asked for
    std::atomic<bool>* isDamaged = nullptr;
    Cancellation cancellation = Cancellation::OfThisThread();
};

/// A block that may be decoded ahead, by any thread.
class BlockJob {
public:
    BlockJob() = default;
    BlockJob(const BlockJob&) = delete;
    BlockJob& operator=(const BlockJob&) = delete;
    virtual ~BlockJob() = default;
    /// Throws std::bad_alloc.
    virtual void Run(BlockScratch& scratch) = 0;
};

struct BandPlace {
    unsigned component = 0;
    unsigned resolution = 0;
    unsigned band = 0;
};

template <class T>
class BandRows final : public RowSource<T> {
public:
    /// `window` lies in the band's area; rows begin with its first column. Coefficients are
    /// multiplied by `scale`, or halved where they are whole numbers. Throws std::bad_alloc.
    BandRows(const BlockContext& context, const BandPlace& place, const Rect& window, float scale);

    [[nodiscard]] const T* Row(std::uint32_t y) override;

    /// The blocks for all rows before `yEnd` that are not decoded yet: all must have run before
    /// such a row is asked for. Throws std::bad_alloc.
    void Plan(std::uint32_t yEnd, std::vector<std::unique_ptr<BlockJob>>& jobs);

private:
    /// One row of code blocks.
    struct Stripe {
        std::uint32_t y0 = 0;
        std::uint32_t height = 0;
        std::vector<T> values;
    };
    class Job;

    void AddStripe();
    void DecodeBlockAt(Stripe& stripe, std::uint32_t x, std::uint32_t y, BlockScratch& scratch);
    void Convert(const std::int32_t* from, int width, int height, T* to) const noexcept;

    BlockContext context_;
    BandPlace place_;
    const ResolutionLayout& resolution_;
    const BandLayout& band_;
    Rect window_;
    float scale_;
    std::uint32_t firstBlock_, endBlock_;  ///< columns of blocks
    std::uint32_t left_;                   ///< the first column of the stripes
    std::size_t stride_;
    std::uint32_t nextBlockRow_;
    std::deque<std::unique_ptr<Stripe>> stripes_;
    std::unique_ptr<Stripe> spare_;
};

extern template class BandRows<std::int32_t>;
extern template class BandRows<float>;

}  // namespace quorvex::j2k
