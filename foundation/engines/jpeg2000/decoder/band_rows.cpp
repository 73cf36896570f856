#include "foundation/engines/jpeg2000/decoder/band_rows.h"

#include <algorithm>
#include <type_traits>
#include <utility>

namespace quorvex::j2k {

template <class T>
class BandRows<T>::Job final : public BlockJob {
public:
    Job(BandRows& band, Stripe& stripe, std::uint32_t x, std::uint32_t y) noexcept
        : band_(band), stripe_(stripe), x_(x), y_(y) {}
    void Run(BlockScratch& scratch) override { band_.DecodeBlockAt(stripe_, x_, y_, scratch); }

private:
    BandRows& band_;
    Stripe& stripe_;
    std::uint32_t x_, y_;
};

template <class T>
BandRows<T>::BandRows(const BlockContext& context, const BandPlace& place, const Rect& window,
                      float scale)
    : context_(context),
      place_(place),
      resolution_(context.tile->layout.components[place.component].resolutions[place.resolution]),
      band_(resolution_.bands[place.band]),
      window_(window),
      scale_(scale),
      firstBlock_(window.x0 >> resolution_.blockWidthExponent),
      endBlock_(CeilShift(window.x1, resolution_.blockWidthExponent)),
      left_(std::max(firstBlock_ << resolution_.blockWidthExponent, band_.area.x0)),
      stride_(window.IsEmpty()
                  ? 0
                  : std::min(endBlock_ << resolution_.blockWidthExponent, band_.area.x1) - left_),
      nextBlockRow_(window.y0 >> resolution_.blockHeightExponent) {}

template <class T>
const T* BandRows<T>::Row(std::uint32_t y) {
    while (!stripes_.empty() && y - stripes_.front()->y0 >= stripes_.front()->height) {
        spare_ = std::move(stripes_.front());
        stripes_.pop_front();
    }
    if (stripes_.empty()) {
        nextBlockRow_ = y >> resolution_.blockHeightExponent;
        AddStripe();
        for (std::uint32_t x = firstBlock_; x < endBlock_; ++x) {
            DecodeBlockAt(*stripes_.front(), x, y >> resolution_.blockHeightExponent,
                          *context_.scratch);
        }
    }
    const Stripe& stripe = *stripes_.front();
    return stripe.values.data() + (y - stripe.y0) * stride_ + (window_.x0 - left_);
}

template <class T>
void BandRows<T>::AddStripe() {
    const unsigned exponent = resolution_.blockHeightExponent;
    auto stripe = spare_ ? std::move(spare_) : std::make_unique<Stripe>();
    stripe->y0 = std::max(nextBlockRow_ << exponent, band_.area.y0);
    stripe->height = std::min((nextBlockRow_ + 1) << exponent, band_.area.y1) - stripe->y0;
    stripe->values.resize(stride_ * stripe->height + kRowSlack);
    stripes_.push_back(std::move(stripe));
    ++nextBlockRow_;
}

template <class T>
void BandRows<T>::Plan(std::uint32_t yEnd, std::vector<std::unique_ptr<BlockJob>>& jobs) {
    if (window_.IsEmpty()) return;
    const std::uint32_t end =
        CeilShift(std::min(yEnd, window_.y1), resolution_.blockHeightExponent);
    while (nextBlockRow_ < end) {
        const std::uint32_t y = nextBlockRow_;
        AddStripe();
        for (std::uint32_t x = firstBlock_; x < endBlock_; ++x) {
            jobs.push_back(std::make_unique<Job>(*this, *stripes_.back(), x, y));
        }
    }
}

template <class T>
void BandRows<T>::DecodeBlockAt(Stripe& stripe, std::uint32_t x, std::uint32_t y,
                                BlockScratch& scratch) {
    context_.cancellation.ThrowIfAsked();
    const unsigned exponent = resolution_.blockWidthExponent;
    const std::uint32_t x0 = std::max(x << exponent, band_.area.x0);
    const std::uint32_t x1 = std::min((x + 1) << exponent, band_.area.x1);
    const auto width = static_cast<int>(x1 - x0);
    const auto height = static_cast<int>(stripe.height);
    T* const to = stripe.values.data() + (x0 - left_);
    const BlockState* state = resolution_.Find(place_.band, x, y);
    if (state == nullptr || state->firstChunk == kNoChunk) {
        for (int row = 0; row < height; ++row) {
            std::fill_n(to + static_cast<std::size_t>(row) * stride_, width, T{});
        }
        if (state != nullptr && state->isDamaged) *context_.isDamaged = true;
        return;
    }
    const BlockPlace place{place_.component, &band_, width, height};
    if (!DecodeBlock(*context_.tile, place, *state, scratch)) *context_.isDamaged = true;
    Convert(scratch.coefficients.data(), width, height, to);
}

template <class T>
void BandRows<T>::Convert(const std::int32_t* from, int width, int height, T* to) const noexcept {
    for (int y = 0; y < height; ++y, from += width, to += stride_) {
        if constexpr (std::is_same_v<T, float>) {
            for (int x = 0; x < width; ++x) to[x] = static_cast<float>(from[x]) * scale_;
        } else {
            for (int x = 0; x < width; ++x) to[x] = from[x] / 2;
        }
    }
}

template class BandRows<std::int32_t>;
template class BandRows<float>;

}  // namespace quorvex::j2k
