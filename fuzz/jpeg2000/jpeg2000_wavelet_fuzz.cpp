// One level of the reversible wavelet, held against the standard's formulas sample by sample.
#include "foundation/engines/jpeg2000/decoder/wavelet/synthesis.h"
#include "fuzz/target.h"

#include <cstring>

namespace quorvex::fuzz {
namespace {

using Values = std::vector<std::int32_t>;

class Rows final : public j2k::RowSource<std::int32_t> {
public:
    Rows(std::uint32_t x0, std::uint32_t x1, std::uint32_t y0, std::uint32_t y1)
        : width_(x1 - x0), first_(y0), values_(std::size_t{width_} * (y1 - y0)) {}

    const std::int32_t* Row(std::uint32_t y) override {
        row_.assign(width_ + j2k::kRowSlack, 0x7FFFFF);
        std::copy_n(&At(0, y), width_, row_.data());
        return row_.data();
    }
    std::int32_t& At(std::uint32_t x, std::uint32_t y) {
        return values_[std::size_t{y - first_} * width_ + x];
    }
    Values& All() { return values_; }

private:
    std::uint32_t width_;
    std::uint32_t first_;
    Values values_;
    Values row_;
};

// ISO/IEC 15444-1 F.3.8: `line` has the low samples at even places.
void Synthesise(Values& line, std::uint32_t first) {
    const auto count = static_cast<std::int64_t>(line.size());
    if (count == 1) {
        if (first % 2 != 0) line[0] /= 2;
        return;
    }
    const auto at = [&](std::int64_t place) -> std::int32_t& {
        if (place < 0) place = -place;
        if (place >= count) place = 2 * (count - 1) - place;
        return line[static_cast<std::size_t>(place)];
    };
    const std::int64_t even = first % 2;
    for (std::int64_t i = even; i < count; i += 2) at(i) -= (at(i - 1) + at(i + 1) + 2) >> 2;
    for (std::int64_t i = 1 - even; i < count; i += 2) at(i) += (at(i - 1) + at(i + 1)) >> 1;
}

struct Level {
    j2k::Rect area;
    Rows ll, hl, lh, hh;
};

std::uint32_t Low(std::uint32_t place) {
    return (place + 1) / 2;
}

std::uint32_t High(std::uint32_t place) {
    return place / 2;
}

Level MakeLevel(const j2k::Rect& a) {
    return {a,
            {Low(a.x0), Low(a.x1), Low(a.y0), Low(a.y1)},
            {High(a.x0), High(a.x1), Low(a.y0), Low(a.y1)},
            {Low(a.x0), Low(a.x1), High(a.y0), High(a.y1)},
            {High(a.x0), High(a.x1), High(a.y0), High(a.y1)}};
}

void Fill(Values& values, std::span<const unsigned char> bytes) {
    for (std::size_t i = 0; i < values.size() && !bytes.empty(); ++i) {
        const auto byte = static_cast<signed char>(bytes[i % bytes.size()]);
        values[i] = byte * (i % 7 == 0 ? 4099 : 1);
    }
}

Values ByFormula(Level& level) {
    const j2k::Rect& a = level.area;
    Values all(std::size_t{a.Width()} * a.Height());
    for (std::uint32_t y = a.y0; y < a.y1; ++y) {
        Values line(a.Width());
        for (std::uint32_t x = a.x0; x < a.x1; ++x) {
            Rows& band = y % 2 == 0 ? (x % 2 == 0 ? level.ll : level.hl)
                                    : (x % 2 == 0 ? level.lh : level.hh);
            const std::uint32_t from = x % 2 == 0 ? Low(a.x0) : High(a.x0);
            line[x - a.x0] = band.At(x / 2 - from, y / 2);
        }
        Synthesise(line, a.x0);
        std::copy(line.begin(), line.end(), all.begin() + (y - a.y0) * std::ptrdiff_t{a.Width()});
    }
    for (std::uint32_t x = 0; x < a.Width(); ++x) {
        Values column;
        for (std::uint32_t y = 0; y < a.Height(); ++y)
            column.push_back(all[std::size_t{y} * a.Width() + x]);
        Synthesise(column, a.y0);
        for (std::uint32_t y = 0; y < a.Height(); ++y)
            all[std::size_t{y} * a.Width() + x] = column[y];
    }
    return all;
}

}  // namespace
}  // namespace quorvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvex;
    return fuzz::Run(data, size, {.options = 8}, [](fuzz::Options& options) {
        j2k::Rect area;
        area.x0 = options.Below(6);
        area.y0 = options.Below(6);
        area.x1 = area.x0 + 1 + options.Below(200);
        area.y1 = area.y0 + 1 + options.Below(60);
        auto level = fuzz::MakeLevel(area);
        const auto bytes = options.Front();
        const std::span<const unsigned char> all(bytes);
        fuzz::Fill(level.ll.All(), all);
        fuzz::Fill(level.hl.All(), all.subspan(all.size() / 4));
        fuzz::Fill(level.lh.All(), all.subspan(all.size() / 2));
        fuzz::Fill(level.hh.All(), all.subspan(all.size() / 4 * 3));
        const auto expected = fuzz::ByFormula(level);
        j2k::Synthesis<std::int32_t> synthesis(area,
                                               {&level.ll, &level.hl, &level.lh, &level.hh, 0});
        for (std::uint32_t y = area.y0; y < area.y1; ++y) {
            const auto* row = synthesis.Row(y);
            const auto* wanted = expected.data() + std::size_t{y - area.y0} * area.Width();
            fuzz::Require(std::memcmp(row, wanted, area.Width() * sizeof *row) == 0);
        }
    });
}
