#include "presentation/exact_shutter.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/raster/bit_marks.h"
#include "foundation/types/limits.h"
#include "presentation/cielab.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quorvex {
namespace {

/// The columns of a row that a shape leaves open, counted from 1 and inclusive.
struct OpenStretch {
    std::int64_t first = 1;
    std::int64_t last = 0;
};

/// A mask in the making: everything is open at first.
class Mask {
public:
    explicit Mask(CSize size)
        : size_(size),
          bytes_(static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(size.cy)) {}

    [[nodiscard]] CSize Size() const noexcept { return size_; }
    [[nodiscard]] std::vector<unsigned char> Take() noexcept { return std::move(bytes_); }

    /// Hides what no stretch of a row leaves open. `row` counts from 1.
    void KeepOpen(int row, const std::vector<OpenStretch>& stretches) {
        std::vector<unsigned char> isOpen(static_cast<std::size_t>(size_.cx));
        for (const OpenStretch& stretch : stretches) {
            const std::int64_t first = std::max<std::int64_t>(stretch.first, 1);
            const std::int64_t last = std::min<std::int64_t>(stretch.last, size_.cx);
            if (first <= last) {
                std::fill(isOpen.begin() + (first - 1), isOpen.begin() + last, 1);
            }
        }
        unsigned char* const bytes = RowAt(row);
        for (std::size_t i = 0; i < isOpen.size(); ++i) {
            if (isOpen[i] == 0) bytes[i] = 255;
        }
    }
    void Hide(std::size_t pixel) noexcept { bytes_[pixel] = 255; }

private:
    [[nodiscard]] unsigned char* RowAt(int row) noexcept {
        return bytes_.data() +
               static_cast<std::size_t>(row - 1) * static_cast<std::size_t>(size_.cx);
    }
    CSize size_;
    std::vector<unsigned char> bytes_;
};

bool HideByRectangle(const CDcmObject& object, Mask& mask) {
    const auto left = Read<int>(object, tag::kShutterLeftVerticalEdge);
    const auto right = Read<int>(object, tag::kShutterRightVerticalEdge);
    const auto upper = Read<int>(object, tag::kShutterUpperHorizontalEdge);
    const auto lower = Read<int>(object, tag::kShutterLowerHorizontalEdge);
    if (!left && !right && !upper && !lower) return false;
    const int bottom = lower.value_or(mask.Size().cy);
    for (int row = 1; row <= mask.Size().cy; ++row) {
        std::vector<OpenStretch> open;
        if (row >= upper.value_or(1) && row <= bottom) {
            open.push_back({left.value_or(1), right.value_or(mask.Size().cx)});
        }
        mask.KeepOpen(row, open);
    }
    return true;
}

bool HideByCircle(const CDcmObject& object, Mask& mask) {
    const auto centre = ReadPair<int>(object, tag::kCenterOfCircularShutter);
    const auto radius = Read<int>(object, tag::kRadiusOfCircularShutter);
    if (!centre || !radius || *radius < 0) return false;
    const double reach = *radius;
    for (int row = 1; row <= mask.Size().cy; ++row) {
        std::vector<OpenStretch> open;
        const double down = static_cast<double>(row) - centre->first;
        if (std::abs(down) <= reach) {
            const auto across =
                static_cast<std::int64_t>(std::floor(std::sqrt(reach * reach - down * down)));
            open.push_back({centre->second - across, centre->second + across});
        }
        mask.KeepOpen(row, open);
    }
    return true;
}

struct Vertex {
    std::int64_t row = 0;
    std::int64_t column = 0;
};

/// Where an edge meets a row.
double ColumnAt(const Vertex& from, const Vertex& to, int row) {
    const auto down = static_cast<double>(row - from.row) / static_cast<double>(to.row - from.row);
    return static_cast<double>(from.column) + down * static_cast<double>(to.column - from.column);
}

/// What a polygon leaves open of a row, its outline included.
std::vector<OpenStretch> OpenIn(const std::vector<Vertex>& polygon, int row) {
    std::vector<OpenStretch> open;
    std::vector<double> crossings;
    constexpr double kTolerance = 1e-9;
    const auto add = [&](double one, double other) {
        open.push_back({static_cast<std::int64_t>(std::ceil(std::min(one, other) - kTolerance)),
                        static_cast<std::int64_t>(std::floor(std::max(one, other) + kTolerance))});
    };
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Vertex& from = polygon[i];
        const Vertex& to = polygon[(i + 1) % polygon.size()];
        if (row < std::min(from.row, to.row) || row > std::max(from.row, to.row)) continue;
        if (from.row == to.row) {
            add(static_cast<double>(from.column), static_cast<double>(to.column));
            continue;
        }
        const double column = ColumnAt(from, to, row);
        add(column, column);
        if (row < std::max(from.row, to.row)) crossings.push_back(column);
    }
    std::ranges::sort(crossings);
    for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) add(crossings[i], crossings[i + 1]);
    return open;
}

bool HasFewCrossings(const std::vector<Vertex>& polygon, std::int64_t rows) {
    std::int64_t crossings = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const auto [top, bottom] =
            std::minmax(polygon[i].row, polygon[(i + 1) % polygon.size()].row);
        crossings +=
            std::clamp<std::int64_t>(bottom, 0, rows) - std::clamp<std::int64_t>(top, 0, rows) + 1;
    }
    return crossings <= kMostPolygonCrossings || RefuseBy(Limit::kPolygonCrossings);
}

bool HideByPolygon(const CDcmObject& object, Mask& mask) {
    std::vector<Vertex> polygon;
    ForEachPair<int>(object, tag::kVerticesOfThePolygonalShutter, [&](const auto& vertex) {
        polygon.push_back({vertex.first, vertex.second});
    });
    if (polygon.size() < 3 || !HasFewCrossings(polygon, mask.Size().cy)) return false;
    for (int row = 1; row <= mask.Size().cy; ++row) mask.KeepOpen(row, OpenIn(polygon, row));
    return true;
}

bool HideByBitmap(const CDcmObject& object, Mask& mask) {
    const std::uint32_t group = Read<unsigned short>(object, tag::kShutterOverlayGroup).value_or(0);
    if (group < tag::kFirstOverlayGroup || group > tag::kLastOverlayGroup) return false;
    const auto at = [&](std::uint32_t tag) { return tag::InGroup(group, tag); };
    const auto rows = Read<unsigned short>(object, at(tag::kOverlayRows)).value_or(0);
    const auto columns = Read<unsigned short>(object, at(tag::kOverlayColumns)).value_or(0);
    const auto origin = ReadPair<int>(object, at(tag::kOverlayOrigin));
    const auto bits = ReadBytes(object, at(tag::kOverlayData));
    if (!bits) return false;
    const std::int64_t left = origin ? std::int64_t{origin->second} - 1 : 0;
    const std::int64_t top = origin ? std::int64_t{origin->first} - 1 : 0;
    for (std::int64_t row = 0; row < rows; ++row) {
        const std::int64_t y = top + row;
        if (y < 0 || y >= mask.Size().cy) continue;
        ForEachSetBit(*bits, static_cast<std::size_t>(row * columns), columns, [&](std::size_t i) {
            const std::int64_t x = left + static_cast<std::int64_t>(i);
            if (x >= 0 && x < mask.Size().cx) {
                mask.Hide(static_cast<std::size_t>(y * mask.Size().cx + x));
            }
        });
    }
    return rows != 0 && columns != 0;
}

std::array<std::uint8_t, 3> ReadColour(const CDcmObject& object) {
    const auto lab = ReadCieLab(object, tag::kShutterPresentationColorCIELabValue);
    if (lab) return RgbOfCieLab(*lab);
    return GreyOfPresentationValue(
        Read<unsigned short>(object, tag::kShutterPresentationValue).value_or(0));
}

struct Shape {
    const char* word;
    bool (*hide)(const CDcmObject&, Mask&);
};
constexpr Shape kShapes[] = {{"RECTANGULAR", HideByRectangle},
                             {"CIRCULAR", HideByCircle},
                             {"POLYGONAL", HideByPolygon},
                             {"BITMAP", HideByBitmap}};

}  // namespace

std::optional<ExactShutter> ReadExactShutter(const CDcmObject& object, CSize imageSize) {
    if (!Read<CString>(object, tag::kShutterShape)) return std::nullopt;
    Mask mask(imageSize);
    bool isUsable = false;
    ForEachValue<CString>(object, tag::kShutterShape, [&](const CString& word) {
        for (const Shape& shape : kShapes) {
            if (word.CompareNoCase(shape.word) == 0)
                isUsable = shape.hide(object, mask) || isUsable;
        }
    });
    if (!isUsable) return std::nullopt;
    return ExactShutter{mask.Take(), ReadColour(object)};
}

}  // namespace quorvex
