/// Raster operations on rows in the caller's memory: resize, turn, mirror, or, copy, set, and 4:2:2
/// video to R, G, B.
///
/// A name gives the samples and the channels: 8u bytes, 16u words, 32f floats; C1, C3 and C4
/// channels of interleaved pixels; R for a region of the image, I in place.
///
/// Sizes and rectangles are in pixels, steps in bytes from one row to the next. An operation does
/// its work inside the buffers that its sizes describe, whatever rectangle, factor or shift it is
/// given, and answers false, with nothing written, where there is nothing that it could do: a null
/// buffer, a size below 1, a step shorter than a row, a factor that is NaN, infinite or not
/// positive.
#pragma once

#include "quorvex/Types.h"

#include <cstddef>
#include <cstdint>

namespace quorvex {

struct RasterRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

inline constexpr int kLinearInterpolation = 2;
inline constexpr int kHorizontalAxis = 0;  ///< top and bottom change places
inline constexpr int kVerticalAxis = 1;    ///< left and right change places

/// Resample a rectangle of the source by two factors (destination pixels for one source pixel).
///
/// The rectangle is first cut to the image. Destination pixel i reads it at
/// (i + 0.5) / factor - 0.5, clamped to its first and last pixel, so every pixel of the
/// destination is written. Always linear: `interpolation` is ignored. Within one grey level of the
/// exact value. May throw std::bad_alloc, before anything is written.
bool ippiResize_8u_C1R(const unsigned char* source, CSize sourceSize, std::ptrdiff_t sourceStep,
                       RasterRect rect, unsigned char* destination, std::ptrdiff_t destinationStep,
                       CSize destinationSize, double xFactor, double yFactor, int interpolation);
bool ippiResize_8u_C3R(const unsigned char* source, CSize sourceSize, std::ptrdiff_t sourceStep,
                       RasterRect rect, unsigned char* destination, std::ptrdiff_t destinationStep,
                       CSize destinationSize, double xFactor, double yFactor, int interpolation);
bool ippiResize_8u_C4R(const unsigned char* source, CSize sourceSize, std::ptrdiff_t sourceStep,
                       RasterRect rect, unsigned char* destination, std::ptrdiff_t destinationStep,
                       CSize destinationSize, double xFactor, double yFactor, int interpolation);
bool ippiResize_16u_C1R(const std::uint16_t* source, CSize sourceSize, std::ptrdiff_t sourceStep,
                        RasterRect rect, std::uint16_t* destination, std::ptrdiff_t destinationStep,
                        CSize destinationSize, double xFactor, double yFactor, int interpolation);

/// Turn a rectangle of the source by a multiple of 90 degrees, counter-clockwise as rows run down,
/// and then shift it: x' = x cos a + y sin a + xShift, y' = y cos a - x sin a + yShift.
///
/// A permutation of pixels: the rule holds for their corners, so a shift by the size brings the
/// turned image back into the destination. What falls outside `destinationRect` is dropped, and
/// pixels that nothing falls on stay. Any other angle is refused. `interpolation` is ignored: no
/// pixel is interpolated.
bool ippiRotate_8u_C1R(const unsigned char* source, CSize sourceSize, std::ptrdiff_t sourceStep,
                       RasterRect rect, unsigned char* destination, std::ptrdiff_t destinationStep,
                       RasterRect destinationRect, double angle, double xShift, double yShift,
                       int interpolation);
bool ippiRotate_8u_C3R(const unsigned char* source, CSize sourceSize, std::ptrdiff_t sourceStep,
                       RasterRect rect, unsigned char* destination, std::ptrdiff_t destinationStep,
                       RasterRect destinationRect, double angle, double xShift, double yShift,
                       int interpolation);

/// Mirror in place about kHorizontalAxis or kVerticalAxis.
bool ippiMirror_8u_C1IR(unsigned char* image, std::ptrdiff_t step, CSize size, int axis);
bool ippiMirror_8u_C3IR(unsigned char* image, std::ptrdiff_t step, CSize size, int axis);
bool ippiMirror_16u_C1IR(std::uint16_t* image, std::ptrdiff_t step, CSize size, int axis);

/// Bitwise or of the source into the image.
bool ippiOr_8u_C1IR(const unsigned char* source, std::ptrdiff_t sourceStep, unsigned char* image,
                    std::ptrdiff_t step, CSize size);
bool ippiOr_8u_C3IR(const unsigned char* source, std::ptrdiff_t sourceStep, unsigned char* image,
                    std::ptrdiff_t step, CSize size);

/// Copy a region as it stands, for hosts' surfaces and tables. The two blocks do not overlap.
bool ippiCopy_8u_C1R(const unsigned char* source, std::ptrdiff_t sourceStep,
                     unsigned char* destination, std::ptrdiff_t destinationStep, CSize size);
bool ippiCopy_8u_C3R(const unsigned char* source, std::ptrdiff_t sourceStep,
                     unsigned char* destination, std::ptrdiff_t destinationStep, CSize size);
bool ippiCopy_32f_C1R(const float* source, std::ptrdiff_t sourceStep, float* destination,
                      std::ptrdiff_t destinationStep, CSize size);

/// Set every byte of a region.
bool ippiSet_8u_C1R(unsigned char value, unsigned char* destination, std::ptrdiff_t destinationStep,
                    CSize size);

/// Y, Cb, Y, Cr for two pixels, in the partial range of ITU-R BT.601 (Y 16 to 235, chroma 16 to
/// 240), to R, G, B; clamped to 0 and 255. The last pixel of an odd row has a Cb of its own and
/// takes the Cr of the pair before it.
bool ippiYCbCr422ToRGB_8u_C2C3R(const unsigned char* source, std::ptrdiff_t sourceStep,
                                unsigned char* destination, std::ptrdiff_t destinationStep,
                                CSize size);

}  // namespace quorvex
