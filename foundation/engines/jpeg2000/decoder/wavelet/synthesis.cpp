#include "foundation/engines/jpeg2000/decoder/wavelet/synthesis.h"

#include <algorithm>
#include <type_traits>

namespace quorvex::j2k {
namespace {

// A single sample or row is not lifted: at an even place it stands as it is, at an odd one it is
// twice as large. The scaling by K, which the floats' bands have in them, is taken back.
template <class T>
T Single(T value, bool isHigh) noexcept {
    if constexpr (std::is_same_v<T, float>) {
        return isHigh ? value * (kLowScale / 2) : value / kLowScale;
    } else {
        return isHigh ? value / 2 : value;
    }
}

}  // namespace

template <class T>
Synthesis<T>::Synthesis(const Rect& window, const BandSources<T>& sources)
    : window_(window),
      sources_(sources),
      stride_(window.Width() + 2 * kRowSlack),
      ring_(kRows * stride_),
      work_(window.Width() + 4 * kRowSlack),
      next_(window.y0),
      ready_(window.y0) {}

template <class T>
const T* Synthesis<T>::Row(std::uint32_t y) {
    while (ready_ <= y) Push();
    return Slot(y);
}

template <class T>
void Synthesis<T>::Push() {
    const std::uint32_t y = next_++;
    if (y < window_.y1) Load(y);
    if (window_.Height() == 1) {
        ScaleSingleRow();
        ready_ = window_.y1;
        return;
    }
    if (y % 2 == 0) return;
    constexpr std::uint32_t kSteps = kLiftingSteps<T>;
    if (y >= window_.y0 + kSteps + 1 && y < window_.y1) {
        LiftInside(y);
    } else {
        LiftAtEdge(y);
    }
    if (y + 2 > kSteps) ready_ = std::max(ready_, std::min(y + 2 - kSteps, window_.y1));
}

template <class T>
void Synthesis<T>::Load(std::uint32_t y) {
    const bool isHigh = y % 2 != 0;
    RowSource<T>* const left = isHigh ? sources_.lh : sources_.ll;
    RowSource<T>* const right = isHigh ? sources_.hh : sources_.hl;
    RowHalves<T> halves;
    halves.lowCount = (window_.x1 + 1) / 2 - (window_.x0 + 1) / 2;
    halves.highCount = window_.x1 / 2 - window_.x0 / 2;
    halves.beginsHigh = window_.x0 % 2 != 0;
    if (halves.lowCount > 0) halves.low = left->Row(y / 2) + (isHigh ? 0 : sources_.llSkip);
    if (halves.highCount > 0) halves.high = right->Row(y / 2);
    if (halves.low == nullptr && halves.high != nullptr) {
        *Slot(y) = Single(*halves.high, true);
    } else if (halves.high == nullptr && halves.low != nullptr) {
        *Slot(y) = Single(*halves.low, false);
    } else if (halves.low != nullptr) {
        JoinRow(halves, work_.data(), Slot(y));
    }
}

template <class T>
void Synthesis<T>::LiftInside(std::uint32_t y) noexcept {
    constexpr std::uint32_t kCount = kLiftingSteps<T> + 2;
    T* rows[kCount];
    for (std::uint32_t i = 0; i < kCount; ++i) rows[i] = Slot(y + 1 - kCount + i);
    LiftRows(rows, window_.Width());
}

template <class T>
void Synthesis<T>::LiftAtEdge(std::uint32_t y) noexcept {
    for (std::uint32_t step = 1; step <= kLiftingSteps<T>; ++step) {
        if (y < window_.y0 + step || y - step >= window_.y1) continue;
        const std::uint32_t target = y - step;
        const std::uint32_t above = target > window_.y0 ? target - 1 : target + 1;
        const std::uint32_t below = target + 1 < window_.y1 ? target + 1 : target - 1;
        LiftRow(static_cast<int>(step), Slot(target), Slot(above), Slot(below), window_.Width());
    }
}

template <class T>
void Synthesis<T>::ScaleSingleRow() noexcept {
    T* const row = Slot(window_.y0);
    const bool isHigh = window_.y0 % 2 != 0;
    std::transform(row, row + window_.Width(), row, [&](T value) { return Single(value, isHigh); });
}

template class Synthesis<std::int32_t>;
template class Synthesis<float>;

}  // namespace quorvex::j2k
