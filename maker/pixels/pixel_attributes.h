/// The attributes that describe Pixel Data, on their way from a record into an object.
#pragma once

#include "quorvex/CxDcmMaker.h"
#include "quorvex/CxImageProcessor.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace quorvex {

inline constexpr std::uint16_t kUnset = 65535;

/// The values by which frames are coded and decoded; all are known.
struct PixelLayout {
    std::uint16_t bitsAllocated = 0;
    std::uint16_t samplesPerPixel = 0;
    std::uint16_t bitsStored = 0;
    std::uint16_t rows = 0;
    std::uint16_t columns = 0;
    CString photometric;
    std::uint16_t pixelRepresentation = 0;
    std::uint16_t planarConfiguration = 0;

    /// Whole bytes of a plain frame; nothing for more than we would ever allocate.
    [[nodiscard]] std::optional<std::size_t> FrameBytes() const noexcept;
    [[nodiscard]] bool IsPalette() const { return photometric.Find("PALETTE") >= 0; }
    [[nodiscard]] _IMAGE_PROCESS_PARAM ProcessParam() const;
};

/// The same by a record whose fields may be unset.
[[nodiscard]] std::optional<std::size_t> FrameBytes(const _DCM_PIXEL_INFO& format) noexcept;

/// Takes each value from `format`, or where that does not set it from `object`.
/// @return QVM_SUCCESS, or the code of the first value that neither has
[[nodiscard]] QUORVEX_MESSAGE ResolveLayout(const _DCM_PIXEL_INFO& format, const CDcmObject& object,
                                            PixelLayout& layout);

/// Writes what `format` sets, and what follows from `layout`.
/// @return QVM_SUCCESS, or the code of the attribute that the object refused
[[nodiscard]] QUORVEX_MESSAGE WritePixelAttributes(const _DCM_PIXEL_INFO& format,
                                                   const PixelLayout& layout, int frameCount,
                                                   CDcmObject& object);

/// Writes what follows from the coding: whether it loses anything, and the bits that it always has.
void WriteCodingAttributes(const _DCM_PIXEL_INFO& format, const TransferSyntax& written,
                           CDcmObject& object);

/// Reads the description of an object's frames, all but the rescale. Values that the object does
/// not have stay as they are in `format`.
void ReadPixelInfo(const CDcmObject& object, _DCM_PIXEL_INFO& format);
void ReadRescale(const CDcmObject& object, _DCM_PIXEL_INFO& format);

}  // namespace quorvex
