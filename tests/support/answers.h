/// The library's operations with values for results: two runs can be compared, and nothing leaks.
#pragma once

#include "quorvex/CXDIPP.h"
#include "quorvex/CxDcmMaker.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/CxImageProcessor.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace quorvex::test {

using Bytes = std::vector<unsigned char>;

/// What an operation answered, and a copy of what it handed over, whatever the code.
struct Answered {
    int code = -1;
    Bytes bytes;

    /// Takes a block over and releases it.
    static Answered Take(int code, unsigned char* block, unsigned long size);
    [[nodiscard]] bool IsDone() const noexcept {
        return code == QVM_SUCCESS || code == QVM_FRAME_COPIED;
    }
    bool operator==(const Answered&) const = default;
};

// --- Parser --------------------------------------------------------------------------------------

/// One decoded frame, from all of its stored bytes or from the first `sourceLength`.
Answered FrameOf(CxDcmParser& parser, int index = 0, unsigned long sourceLength = 0);

/// The stored bytes of one frame, by their place in the file.
Answered StoredFrameOf(CxDcmParser& parser, int index);

struct ThumbnailForm {
    CSize size{16, 12};
    QUORVEX_XFERSYNTAX format = kXferUncompressed;
    bool usesDataRange = false;
    std::uint16_t quality = 90;
};
Answered ThumbnailOf(CxDcmParser& parser, const ThumbnailForm& form);

/// The colours that the parser's palette gives to indices; null asks for a refusal.
Answered ColouredOf(CxDcmParser& parser, unsigned char* indices, unsigned short columns,
                    unsigned short rows, unsigned short bits);

// --- Display -------------------------------------------------------------------------------------

/// The rendered result, rows from the bottom.
struct RenderedResult : Answered {
    CSize size;
    int pixelSize = 0;
};
RenderedResult ResultOf(const CXDIPP& image);

/// Draws on a black surface: the code of Draw(), the surface.
Answered DrawnOf(CXDIPP& image, CSize size, int bytesPerPixel = 3);

// --- Codec ---------------------------------------------------------------------------------------

/// The record of an object's stored frames.
_IMAGE_PROCESS_PARAM ParamOf(const CDcmObject& object);

Answered DecodedOf(_IMAGE_PROCESS_PARAM param, std::span<unsigned char> stream,
                   bool isUnsignedOnly = false);
Answered CodedOf(_IMAGE_PROCESS_PARAM param, std::span<unsigned char> pixels,
                 bool keepsRgb = false);

/// A stream decoded with nothing else known: what the decoder found in its header, too.
struct BlindAnswer : Answered {
    unsigned short width = 0;
    unsigned short height = 0;
    unsigned short samples = 0;
    unsigned short bits = 0;
    unsigned short pixelBytes = 0;
    bool operator==(const BlindAnswer&) const = default;
};
using BlindDecoder = decltype(&CxImageProcessor::DecompressBlindJPEGData);
inline constexpr BlindDecoder kBlindDecoders[] = {&CxImageProcessor::DecompressBlindJPEGData,
                                                  &CxImageProcessor::DecompressBlindJP2KData};
BlindAnswer BlindlyDecoded(BlindDecoder decoder, std::span<unsigned char> stream);

// --- Objects -------------------------------------------------------------------------------------

struct Conversion {
    QUORVEX_MESSAGE answer;   ///< of the call
    QUORVEX_MESSAGE outcome;  ///< what became of the pixels
    [[nodiscard]] QUORVEX_MESSAGE Code() const noexcept {
        return answer == QVM_SUCCESS ? outcome : answer;
    }
};
/// Converts the object itself to a QUORVEX_XFERSYNTAX.
Conversion ConvertTo(std::int32_t form, CDcmObject& object, std::uint16_t quality = 0,
                     Rules rules = Rules::kEstablished);

}  // namespace quorvex::test
