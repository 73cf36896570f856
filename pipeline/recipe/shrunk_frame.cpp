#include "pipeline/recipe/shrunk_frame.h"

#include "foundation/raster/bit_marks.h"
#include "pipeline/displayed_image.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace quorvex {

namespace {

ValueKind KindOf(const DisplayedImage& image) {
    const bool isSigned = image.standard->form.isSigned;
    if (image.bytesPerPixel == 1) {
        return isSigned ? ValueKind::kSignedByte : ValueKind::kUnsignedByte;
    }
    return isSigned ? ValueKind::kSignedWord : ValueKind::kUnsignedWord;
}

ValueImage ValuesOf(const DisplayedImage& image) {
    return {image.pixels.data.get(), KindOf(image), static_cast<std::size_t>(image.imageSize.cx)};
}

/// Black and white.
ValueLimits ClampOf(const DisplayFunction::Line& line) {
    const auto zero = static_cast<float>(line.zero);
    const auto white = static_cast<float>(line.zero + UINT8_MAX / line.gain);
    return {std::min(zero, white), std::max(zero, white)};
}

std::size_t Width(CSize size) {
    return static_cast<std::size_t>(size.cx);
}

std::size_t PixelCount(CSize size) {
    return Width(size) * static_cast<std::size_t>(size.cy);
}

/// Coverage that is made row by row; 0 where none is.
class CoverageMaker {
public:
    CoverageMaker(CSize image, CSize size)
        : averager_(image, size), row_(Width(size)), coverage_(PixelCount(size)) {}

    [[nodiscard]] AreaAverager::RowSpan RowsOf(int y) const { return averager_.RowsOf(y); }
    void Make(const ValueImage& mask, int y, int next) {
        averager_.Average(mask, {0.0F, UINT8_MAX}, y, next, 0, row_);
        const std::size_t first = static_cast<std::size_t>(y) * row_.size();
        RoundRow(row_, std::span(coverage_).subspan(first, row_.size()));
    }
    std::vector<unsigned char> Release() { return std::move(coverage_); }

private:
    AreaAverager averager_;
    std::vector<float> row_;
    std::vector<unsigned char> coverage_;
};

}  // namespace

CSize ShrunkSize(CSize image, CSize scaled) noexcept {
    return {std::min(image.cx, scaled.cx), std::min(image.cy, scaled.cy)};
}

bool CanShrink(const DisplayedImage& image, const DisplayFunction& function) noexcept {
    const StandardImage& standard = *image.standard;
    if (!standard.isGrey || image.bytesPerPixel > 2 || !standard.colours.empty()) return false;
    const auto line = function.AsLine();
    if (!line) return false;
    // Weights of single precision miss a sum of 1 by some millionths.
    constexpr double kNarrowest = 1.0 / 1024.0;
    constexpr double kFarthest = 1e30;
    const double extent = UINT8_MAX / std::abs(line->gain);
    const double size = static_cast<double>(
        std::max(std::abs(standard.stored.low), std::abs(standard.stored.high)));
    return extent > kNarrowest * size && extent < kFarthest && std::abs(line->zero) < kFarthest;
}

ShrunkFrame::ShrunkFrame(const DisplayedImage& image, CSize size)
    : source_(image.imageSize),
      width_(Width(size)),
      groups_((width_ + kColumnGroup - 1) / kColumnGroup),
      averager_(image.imageSize, size),
      isWorthKeeping_(2 * PixelCount(size) <= PixelCount(image.imageSize)),
      computed_(width_),
      bytes_(width_) {
    if (!isWorthKeeping_) return;
    const auto rows = static_cast<std::size_t>(size.cy);
    averages_.reserve(rows * width_);
    limits_.reserve(rows * groups_);
    isKept_.reserve(rows);
}

void ShrunkFrame::KeepAverages() {
    if (!isWorthKeeping_ || !isKept_.empty()) return;
    const auto rows = static_cast<std::size_t>(Size().cy);
    averages_.resize(rows * width_);
    limits_.resize(rows * groups_);
    isKept_.resize(rows);
}

/// A row that is shown, and the one after it.
struct ShrunkFrame::Rows {
    ValueImage image;
    ValueLimits clamp;  ///< black and white
    float gain;
    float zero;
    int y;
    int next;
    [[nodiscard]] std::size_t Row() const { return static_cast<std::size_t>(y); }
};

void ShrunkFrame::KeepRow(const Rows& rows) {
    constexpr ValueLimits kAll{-65536.0F, 65536.0F};
    averager_.Average(rows.image, kAll, rows.y, rows.next, 0,
                      std::span(averages_).subspan(rows.Row() * width_, width_));
    averager_.FindLimits(rows.image, rows.y,
                         std::span(limits_).subspan(rows.Row() * groups_, groups_));
    isKept_[rows.Row()] = 1;
}

void ShrunkFrame::Compute(const Rows& rows, std::size_t begin, std::size_t end) {
    const std::size_t first = begin * kColumnGroup;
    const auto computed = std::span(computed_).first(std::min(end * kColumnGroup, width_) - first);
    averager_.Average(rows.image, rows.clamp, rows.y, rows.next, first, computed);
    RoundLine(computed, rows.gain, rows.zero, 0, std::span(bytes_).subspan(first));
}

void ShrunkFrame::ShowAverages(const Rows& rows, std::size_t begin, std::size_t end) {
    const std::size_t first = begin * kColumnGroup;
    const std::size_t count = std::min(end * kColumnGroup, width_) - first;
    const auto width = static_cast<std::ptrdiff_t>(width_);
    RoundLine(std::span(averages_).subspan(rows.Row() * width_ + first, count), rows.gain,
              rows.zero, (rows.next - rows.y) * width, std::span(bytes_).subspan(first));
}

/// Values that are all on the line, or all on one side of it, need no clamp ahead of their average.
void ShrunkFrame::ShowKept(const Rows& rows, std::size_t begin, std::size_t end) {
    const ValueLimits* const limits = limits_.data() + rows.Row() * groups_;
    const auto isCut = [&](std::size_t group) {
        const auto [low, high] = limits[group];
        return (low < rows.clamp.low && rows.clamp.low < high) ||
               (low < rows.clamp.high && rows.clamp.high < high);
    };
    for (std::size_t group = begin; group < end;) {
        const std::size_t first = group;
        const bool areCut = isCut(group++);
        while (group < end && isCut(group) == areCut) ++group;
        areCut ? Compute(rows, first, group) : ShowAverages(rows, first, group);
    }
}

void ShrunkFrame::ShowRow(const DisplayedImage& image, const DisplayFunction::Line& line, int y,
                          int next, std::size_t first, std::span<unsigned char> bytes) {
    const Rows rows{ValuesOf(image),
                    ClampOf(line),
                    static_cast<float>(line.gain),
                    static_cast<float>(line.zero),
                    y,
                    next};
    const std::size_t begin = first / kColumnGroup;
    const std::size_t end = (first + bytes.size() + kColumnGroup - 1) / kColumnGroup;
    if (isKept_.empty()) {
        Compute(rows, begin, end);
    } else {
        if (isKept_[rows.Row()] == 0) KeepRow(rows);
        ShowKept(rows, begin, end);
    }
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(first), bytes.size(), bytes.begin());
}

std::vector<unsigned char> CoverageOfMask(const std::vector<unsigned char>& mask, CSize image,
                                          CSize size) {
    CoverageMaker maker(image, size);
    const ValueImage values{mask.data(), ValueKind::kUnsignedByte, Width(image)};
    for (int y = 0; y < size.cy; ++y) maker.Make(values, y, std::min(y + 1, size.cy - 1));
    return maker.Release();
}

std::vector<unsigned char> CoverageOfBits(const std::vector<unsigned char>& bits, CSize image,
                                          CSize size) {
    CoverageMaker maker(image, size);
    std::vector<unsigned char> mask;
    for (int y = 0; y < size.cy; ++y) {
        const auto [top, count] = maker.RowsOf(y);
        bool isMarked = false;
        mask.assign(count * Width(image), 0);
        ForEachSetBit(bits, top * Width(image), mask.size(), [&](std::size_t i) {
            mask[i] = UINT8_MAX;
            isMarked = true;
        });
        if (isMarked) maker.Make({mask.data(), ValueKind::kUnsignedByte, Width(image), top}, y, y);
    }
    return maker.Release();
}

}  // namespace quorvex
