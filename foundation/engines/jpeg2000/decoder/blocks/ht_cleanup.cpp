#include "foundation/engines/jpeg2000/decoder/blocks/ht_cleanup.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/engines/jpeg2000/decoder/blocks/ht_cleanup.cpp"
#include <hwy/foreach_target.h>
// After it: each target has them anew.
#include "foundation/engines/jpeg2000/decoder/blocks/ht_codes-inl.h"
#include "foundation/engines/jpeg2000/decoder/blocks/ht_magnitudes-inl.h"
#include "foundation/engines/jpeg2000/decoder/blocks/ht_plan-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quorvex::j2k::HWY_NAMESPACE {

/// One pass over one block. The codes of a row of quads are read one after the other, together with
/// the magnitudes of the row above; then the places of the row's own magnitudes are known.
class Decoder {
public:
    Decoder(const HtCleanup& pass, std::int32_t* out, std::ptrdiff_t stride, HtScratch& scratch)
        : pass_(pass),
          out_(out),
          stride_(stride),
          scratch_(scratch),
          rows_(scratch, pass.width),
          codes_(pass, rows_),
          inside_(static_cast<std::size_t>(pass.width) / 4) {}

    int Run();

private:
    /// Codes of row `y`, magnitudes of the row of quads above it.
    void ReadRow(int y);
    void ReadEdge(std::size_t first, std::int32_t* upper, std::int32_t* lower);
    void ReadMagnitudes(int y);
    bool Plan(int y);
    [[nodiscard]] bool IsOutside(int y) const;
    void ClearRows();
    void KeepSignificance(int y);

    std::int32_t* Upper(int y) { return out_ + y * stride_; }
    std::int32_t* Lower(int y) {
        return y + 1 < pass_.height ? Upper(y + 1) : scratch_.below.data();
    }

    HtCleanup pass_;
    std::int32_t* out_;
    std::ptrdiff_t stride_;
    HtScratch& scratch_;
    HtRows rows_;
    CodeReader codes_;
    std::size_t inside_;          ///< pairs of quads that lie within the width
    std::uint32_t place_ = 0;     ///< in the stream of magnitudes, bits
    std::uint32_t mostBits_ = 0;  ///< of the row that is planned
};

/// Quads from `first` on, whose right samples may lie outside the block.
void Decoder::ReadEdge(std::size_t first, std::int32_t* upper, std::int32_t* lower) {
    if (first == rows_.count) return;
    std::int32_t edge[2][4] = {};
    ReadQuads(pass_, rows_, first, rows_.count, edge[0], edge[1]);
    const std::size_t samples = static_cast<std::size_t>(pass_.width) - 2 * first;
    std::copy_n(edge[0], samples, upper + 2 * first);
    std::copy_n(edge[1], samples, lower + 2 * first);
}

void Decoder::ReadMagnitudes(int y) {
    std::int32_t* upper = Upper(y);
    std::int32_t* lower = Lower(y);
    std::size_t done = 0;
    if (mostBits_ <= PairReader::MostBits(pass_)) {
        const PairReader pairs(pass_, rows_, upper, lower);
        for (; done < inside_; ++done) pairs.Read(done);
    }
    ReadQuads(pass_, rows_, 2 * done, 2 * inside_, upper + 4 * done, lower + 4 * done);
    ReadEdge(2 * inside_, upper, lower);
}

void Decoder::ReadRow(int y) {
    const auto nothing = [](std::size_t) {};
    if (y == 0) {
        codes_.ReadRow<true>(0, nothing);
        return;
    }
    if (mostBits_ <= PairReader::MostBits(pass_)) {
        const PairReader pairs(pass_, rows_, Upper(y - 2), Lower(y - 2));
        codes_.ReadRow<false>(inside_, [&](std::size_t pair) HWY_ATTR { pairs.Read(pair); });
        ReadEdge(2 * inside_, Upper(y - 2), Lower(y - 2));
        return;
    }
    codes_.ReadRow<false>(0, nothing);
    ReadMagnitudes(y - 2);
}

/// Whether a sample outside the block is significant.
bool Decoder::IsOutside(int y) const {
    constexpr std::uint32_t kRight = 0xCU << ht_quad::kSignificance;
    constexpr std::uint32_t kLower = 0xAU << ht_quad::kSignificance;
    const std::uint32_t* quads = rows_.Quads();
    if (pass_.width % 2 != 0 && (quads[rows_.count - 1] & kRight) != 0) return true;
    if (y + 1 < pass_.height) return false;
    return std::any_of(quads, quads + rows_.count,
                       [](std::uint32_t quad) { return (quad & kLower) != 0; });
}

/// Gives whether all is within bounds.
bool Decoder::Plan(int y) {
    mostBits_ = PlanRow(rows_);
    if (mostBits_ > pass_.mostBits || IsOutside(y)) return false;

    std::uint32_t place = place_;
    for (std::size_t i = 0; i < rows_.count; ++i) {
        const std::uint32_t bits = rows_.Places()[i];
        rows_.Places()[i] = place;
        place += bits;
    }
    rows_.Places()[rows_.count] = place;
    place_ = std::min(place, pass_.magnitudes.count);  // behind the end all bits are the same
    return true;
}

void Decoder::KeepSignificance(int y) {
    std::uint16_t* groups = scratch_.groups.data() + GroupsAt(pass_.width, y / 4);
    for (std::size_t i = 0; i < rows_.count; i += 2) {
        const auto samples = [&](std::size_t quad) {
            const std::uint32_t set = rows_.Quads()[quad] >> ht_quad::kSignificance & 15;
            return (set & 3) | (set & 12) << 2;
        };
        const std::uint32_t right = i + 1 < rows_.count ? samples(i + 1) << 8 : 0;
        groups[i / 2] = static_cast<std::uint16_t>(groups[i / 2] | (samples(i) | right) << (y & 2));
    }
}

/// What is read beyond a row's ends, and above the first row.
void Decoder::ClearRows() {
    constexpr std::size_t kPad = HtScratch::kPad;
    *(rows_.Quads() - 1) = 0;
    std::fill_n(rows_.Quads() + rows_.count, kPad, 0);
    std::fill_n(rows_.Offsets() + (rows_.count + 1) / 2, kPad, 0);
    std::fill_n(rows_.Lowers() - kPad, 2 * rows_.count + 2 * kPad, 0);
}

int Decoder::Run() {
    ClearRows();
    int y = 0;
    for (; y < pass_.height; y += 2) {
        ReadRow(y);
        if (!Plan(y) || codes_.IsOverrun()) return y;
        if (pass_.keepsSignificance) KeepSignificance(y);
    }
    ReadMagnitudes(y - 2);
    return pass_.height;
}

int DecodeCleanup(const HtCleanup& pass, std::int32_t* out, std::ptrdiff_t stride,
                  HtScratch& scratch) {
    return Decoder(pass, out, stride, scratch).Run();
}

}  // namespace quorvex::j2k::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorvex::j2k {

HWY_EXPORT(DecodeCleanup);

int DecodeHtCleanup(const HtCleanup& pass, std::int32_t* out, std::ptrdiff_t stride,
                    HtScratch& scratch) {
    return HWY_DYNAMIC_DISPATCH(DecodeCleanup)(pass, out, stride, scratch);
}

}  // namespace quorvex::j2k
#endif
