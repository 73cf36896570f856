/// What a caller asks of a thumbnail, and what is made of it.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/ResultCodes.h"
#include "quorvex/Types.h"

#include <cstdint>
#include <memory>

namespace quorvex {

struct ThumbnailForm {
    int frame;
    CSize size;
    QUORVEX_XFERSYNTAX syntax;
    bool useDataRange;
    unsigned short quality;

    [[nodiscard]] bool IsCoded() const noexcept { return syntax != kXferUncompressed; }
};

/// Plain pixels, or a coded image.
struct ThumbnailImage {
    explicit ThumbnailImage(QUORVEX_MESSAGE answer = QVM_SUCCESS) noexcept : result(answer) {}

    QUORVEX_MESSAGE result;
    std::unique_ptr<unsigned char[]> block;
    unsigned long size = 0;
    std::uint16_t samples = 1;
    CString photometric;         ///< as the coder is to take the pixels
    tagBITMAPINFOHEADER bitmap;  ///< of plain pixels that are not to be coded
};

}  // namespace quorvex
