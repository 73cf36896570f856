/// A device-independent bitmap that lives for one `Draw`.
#pragma once

#include "foundation/platform/surface.h"
#include "quorvex/Types.h"

#include <cstdint>
#include <span>
#include <vector>

namespace quorvex {

/// Header and colour table for a bottom-up image that lies elsewhere and must outlive it.
///
/// Rendered rows are a multiple of 4 pixels wide, as long as the rows of a bitmap: nothing has to
/// be copied.
class CXDib {
public:
    /// @param bitCount  1, 4 or 8 (with a grey ramp as colour table), or 16, 24, 32
    CXDib(CSize size, std::uint16_t bitCount, std::span<const unsigned char> bits);

    [[nodiscard]] const tagBITMAPINFOHEADER& Info() const noexcept { return info_; }
    [[nodiscard]] std::span<const RGBQUAD> Palette() const noexcept { return palette_; }
    [[nodiscard]] std::span<const unsigned char> Bits() const noexcept { return bits_; }

private:
    tagBITMAPINFOHEADER info_;
    std::vector<RGBQUAD> palette_;
    std::span<const unsigned char> bits_;
};

}  // namespace quorvex
