/// The rows of one component of a tile, from its bands upwards.
#pragma once

#include "foundation/engines/jpeg2000/decoder/band_rows.h"

#include <memory>
#include <vector>

namespace quorvex::j2k {

/// Rows of a component at one resolution. `region` is in that resolution's coordinates, not empty.
template <class T>
class ComponentRows {
public:
    /// Throws std::bad_alloc.
    ComponentRows(const BlockContext& context, unsigned component, unsigned resolution,
                  const Rect& region);

    /// The samples from the region's first column on, without level shift. Rows are asked for from
    /// the top; each is valid until the next.
    [[nodiscard]] const T* Row(std::uint32_t y) { return top_->Row(y) + skip_; }

    /// The blocks for all rows before `yEnd` that are not decoded yet. Throws std::bad_alloc.
    void Plan(std::uint32_t yEnd, std::vector<std::unique_ptr<BlockJob>>& jobs);

private:
    struct Level {
        std::vector<std::unique_ptr<BandRows<T>>> bands;
        std::unique_ptr<Synthesis<T>> synthesis;  ///< none at the lowest resolution
    };

    void AddBand(Level& level, const BlockContext& context, const BandPlace& place,
                 const Rect& window, unsigned top);

    std::vector<Level> levels_;  ///< the lowest resolution first
    RowSource<T>* top_ = nullptr;
    std::size_t skip_ = 0;
};

extern template class ComponentRows<std::int32_t>;
extern template class ComponentRows<float>;

}  // namespace quorvex::j2k
