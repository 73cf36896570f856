#include "codec/jpegxl/jpegxl_coding.h"

#include "foundation/engines/jpegxl/jpegxl_engine.h"

#include <utility>

namespace quorvex {

QUORVEX_MESSAGE CodeToJpegXl(const StoredForms& forms, bool areWithinBitsStored,
                             std::span<const unsigned char> frame,
                             std::vector<unsigned char>& coded) {
    constexpr float kQualityOfDistanceOne = 10;
    if (forms.form == kXferJpegXlOfJpeg) return QVM_ERROR_INVALID_TARGET_SYNTAX;
    if (forms.isSigned || forms.bitsAllocated > 16) return QVM_ERROR_FAILED_TO_COMPRESS;
    const bool isLossy = forms.form == kXferJpegXl;
    const auto quality = static_cast<float>(forms.quality);
    auto made =
        CodeJpegXl({.columns = forms.columns,
                    .rows = forms.rows,
                    .components = forms.samplesPerPixel,
                    .precision = areWithinBitsStored ? forms.bitsStored : forms.bitsAllocated,
                    .sampleBytes = forms.bitsAllocated > 8 ? std::size_t{2} : 1,
                    .distance = isLossy ? quality / kQualityOfDistanceOne : 0,
                    .samples = frame});
    if (!made) return QVM_ERROR_FAILED_TO_COMPRESS;
    coded = *std::move(made);
    return QVM_SUCCESS;
}

}  // namespace quorvex
