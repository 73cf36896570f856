/// One level of the inverse wavelet transform, row by row: eight rows of memory.
#pragma once

#include "foundation/engines/jpeg2000/decoder/codestream/parameters.h"
#include "foundation/engines/jpeg2000/decoder/wavelet/lifting.h"

#include <cstdint>
#include <vector>

namespace quorvex::j2k {

/// Rows of one band or resolution, each valid until the next is asked for. Rows are asked for from
/// the top; they may be read kRowSlack values past their end.
template <class T>
class RowSource {
public:
    RowSource() = default;
    RowSource(const RowSource&) = delete;
    RowSource& operator=(const RowSource&) = delete;
    virtual ~RowSource() = default;
    /// May throw std::bad_alloc.
    [[nodiscard]] virtual const T* Row(std::uint32_t y) = 0;
};

/// The four bands that a level is made of.
template <class T>
struct BandSources {
    RowSource<T>* ll = nullptr;
    RowSource<T>* hl = nullptr;
    RowSource<T>* lh = nullptr;
    RowSource<T>* hh = nullptr;
    std::size_t llSkip = 0;  ///< values of an LL row before the first that is wanted
};

/// `window` is what is made of the resolution, in its own coordinates. It is taken for the whole:
/// where it ends inside of the resolution, the outer kMargin samples there are wrong.
template <class T>
class Synthesis final : public RowSource<T> {
public:
    static constexpr std::uint32_t kMargin = kLiftingSteps<T>;

    /// Throws std::bad_alloc.
    Synthesis(const Rect& window, const BandSources<T>& sources);

    [[nodiscard]] const T* Row(std::uint32_t y) override;

private:
    static constexpr std::size_t kRows = 8;

    void Push();
    void Load(std::uint32_t y);
    void LiftInside(std::uint32_t y) noexcept;
    void LiftAtEdge(std::uint32_t y) noexcept;
    void ScaleSingleRow() noexcept;
    [[nodiscard]] T* Slot(std::uint32_t y) noexcept { return ring_.data() + (y % kRows) * stride_; }

    Rect window_;
    BandSources<T> sources_;
    std::size_t stride_;
    std::vector<T> ring_;
    std::vector<T> work_;
    std::uint32_t next_;   ///< the row to push
    std::uint32_t ready_;  ///< rows before this one are done
};

extern template class Synthesis<std::int32_t>;
extern template class Synthesis<float>;

}  // namespace quorvex::j2k
