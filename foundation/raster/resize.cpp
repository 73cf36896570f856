#include "foundation/raster/scaling/resize_rows.h"

namespace quorvex {
namespace {

template <class Sample>
bool AreUsable(const PixelGrid<const Sample>& source, const PixelGrid<Sample>& destination,
               const RasterRect& cut) {
    return source.IsUsable() && destination.IsUsable() && cut.width > 0 && cut.height > 0;
}

constexpr int kFewestRead = 8;  ///< one pixel of so many

/// The rows that are read lie far apart, so the hardware does not prefetch them.
void FetchAhead(std::span<const unsigned char> row) noexcept {
    constexpr std::size_t kLine = 64;
    for (std::size_t at = 0; at < row.size(); at += kLine) __builtin_prefetch(&row[at]);
}

bool Resize8u(const PixelGrid<const unsigned char>& source, const RasterRect& rect,
              const PixelGrid<unsigned char>& destination, double xFactor, double yFactor) {
    const RasterRect cut = CutToSize(rect, source.size);
    if (!AreUsable(source, destination, cut)) return false;
    const auto part = Part(source, cut);
    RowResizer resizer({part.size, destination.size, xFactor, yFactor, source.channels});
    if (!resizer.IsUsable()) return false;
    // Of rows that are shrunk to a few pixels too little is read.
    const bool readsMost = part.size.cx / kFewestRead <= destination.size.cx;
    const auto rowAt = [&part, readsMost](int y, int prefetch) {
        if (readsMost && prefetch > y) FetchAhead(part.Row(prefetch));
        return part.Row(y).data();
    };
    resizer.Run(rowAt, destination);
    return true;
}

}  // namespace

bool ippiResize_8u_C1R(const unsigned char* source, CSize sourceSize, std::ptrdiff_t sourceStep,
                       RasterRect rect, unsigned char* destination, std::ptrdiff_t destinationStep,
                       CSize destinationSize, double xFactor, double yFactor,
                       int /*interpolation*/) {
    return Resize8u({source, sourceStep, sourceSize, 1}, rect,
                    {destination, destinationStep, destinationSize, 1}, xFactor, yFactor);
}

bool ippiResize_8u_C3R(const unsigned char* source, CSize sourceSize, std::ptrdiff_t sourceStep,
                       RasterRect rect, unsigned char* destination, std::ptrdiff_t destinationStep,
                       CSize destinationSize, double xFactor, double yFactor,
                       int /*interpolation*/) {
    return Resize8u({source, sourceStep, sourceSize, 3}, rect,
                    {destination, destinationStep, destinationSize, 3}, xFactor, yFactor);
}

bool ippiResize_8u_C4R(const unsigned char* source, CSize sourceSize, std::ptrdiff_t sourceStep,
                       RasterRect rect, unsigned char* destination, std::ptrdiff_t destinationStep,
                       CSize destinationSize, double xFactor, double yFactor,
                       int /*interpolation*/) {
    return Resize8u({source, sourceStep, sourceSize, 4}, rect,
                    {destination, destinationStep, destinationSize, 4}, xFactor, yFactor);
}

bool ippiResize_16u_C1R(const std::uint16_t* source, CSize sourceSize, std::ptrdiff_t sourceStep,
                        RasterRect rect, std::uint16_t* destination, std::ptrdiff_t destinationStep,
                        CSize destinationSize, double xFactor, double yFactor,
                        int /*interpolation*/) {
    const PixelGrid<const std::uint16_t> from{source, sourceStep, sourceSize, 1};
    const PixelGrid<std::uint16_t> to{destination, destinationStep, destinationSize, 1};
    const RasterRect cut = CutToSize(rect, sourceSize);
    return AreUsable(from, to, cut) && Resize16u(Part(from, cut), to, xFactor, yFactor);
}

}  // namespace quorvex
