#include "foundation/raster/pixel_grid.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace quorvex {
namespace {

bool Or(const PixelGrid<const unsigned char>& source, const PixelGrid<unsigned char>& image) {
    if (!source.IsUsable() || !image.IsUsable()) return false;
    for (int y = 0; y < image.size.cy; ++y) {
        const auto row = image.Row(y);
        std::ranges::transform(row, source.Row(y), row.begin(), std::bit_or<>());
    }
    return true;
}

template <class Sample>
bool Copy(const PixelGrid<const Sample>& source, const PixelGrid<Sample>& destination) {
    if (!source.IsUsable() || !destination.IsUsable()) return false;
    for (int y = 0; y < source.size.cy; ++y) {
        std::memcpy(destination.Row(y).data(), source.Row(y).data(), source.Row(y).size_bytes());
    }
    return true;
}

}  // namespace

bool ippiOr_8u_C1IR(const unsigned char* source, std::ptrdiff_t sourceStep, unsigned char* image,
                    std::ptrdiff_t step, CSize size) {
    return Or({source, sourceStep, size, 1}, {image, step, size, 1});
}

bool ippiOr_8u_C3IR(const unsigned char* source, std::ptrdiff_t sourceStep, unsigned char* image,
                    std::ptrdiff_t step, CSize size) {
    return Or({source, sourceStep, size, 3}, {image, step, size, 3});
}

bool ippiCopy_8u_C1R(const unsigned char* source, std::ptrdiff_t sourceStep,
                     unsigned char* destination, std::ptrdiff_t destinationStep, CSize size) {
    return Copy<unsigned char>({source, sourceStep, size, 1},
                               {destination, destinationStep, size, 1});
}

bool ippiCopy_8u_C3R(const unsigned char* source, std::ptrdiff_t sourceStep,
                     unsigned char* destination, std::ptrdiff_t destinationStep, CSize size) {
    return Copy<unsigned char>({source, sourceStep, size, 3},
                               {destination, destinationStep, size, 3});
}

bool ippiCopy_32f_C1R(const float* source, std::ptrdiff_t sourceStep, float* destination,
                      std::ptrdiff_t destinationStep, CSize size) {
    return Copy<float>({source, sourceStep, size, 1}, {destination, destinationStep, size, 1});
}

bool ippiSet_8u_C1R(unsigned char value, unsigned char* destination, std::ptrdiff_t destinationStep,
                    CSize size) {
    const PixelGrid<unsigned char> grid{destination, destinationStep, size, 1};
    if (!grid.IsUsable()) return false;
    for (int y = 0; y < size.cy; ++y) std::memset(grid.Row(y).data(), value, grid.RowSamples());
    return true;
}

}  // namespace quorvex
