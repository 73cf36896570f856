#include "codec/blind_decoding.h"

#include "codec/jpeg/jpeg_stream.h"
#include "codec/jpeg2000/jpeg2000_route.h"
#include "foundation/types/block.h"
#include "foundation/types/checked_size.h"
#include "foundation/types/limits.h"

#include <cstdlib>

namespace quorvex {
namespace {

constinit Jpeg2000Route route(kPegasusDecode);

/// The JPEG 2000 pixels that this route knows, by the bits of a whole pixel.
struct BlindForm {
    int bitCount;
    int components;
    unsigned short bits;
};
constexpr BlindForm kBlindForms[] = {{8, 1, 8}, {16, 1, 16}, {24, 3, 8}, {32, 4, 8}};

const BlindForm* BlindFormOf(const PegasusParameters& parameters) noexcept {
    for (const BlindForm& form : kBlindForms) {
        const bool isIt = form.bitCount == parameters.bitmap.biBitCount &&
                          form.components == parameters.components;
        if (isIt) return &form;
    }
    return nullptr;
}

/// Nothing but the stream's own word speaks for its size: a short one must not ask for much.
bool IsWorthItsMemory(std::size_t frameBytes, std::size_t sourceBytes) noexcept {
    return frameBytes <= kBarePictureAllowance ||
           frameBytes / kMostBarePicturePerByte <= sourceBytes || RefuseBy(Limit::kLargestPicture);
}

}  // namespace

QUORVEX_MESSAGE DecodeBlindJpeg(std::span<const unsigned char> source,
                                const BlindPicture& picture) {
    JpegStream stream(source);
    const JpegDescription& description = stream.Description();
    const JpegPixelLayout& layout = stream.Layout();
    if (!stream.IsJpeg()) return QVM_ERROR_CANNOT_OPEN_STREAM;
    if (!stream.IsUsable()) return QVM_ERROR_INVALID_JPEG_STREAM;
    picture.width = description.frame.width;
    picture.height = description.frame.height;
    if (!stream.LayOut(description.precision > 8 ? 2 : 1, 1, stream.Colour())) {
        return QVM_ERROR_INVALID_JPEG_LAYOUT;
    }
    if (description.precision != 8 && description.precision != 16) {
        return QVM_ERROR_INVALID_JPEG_PRECISION;
    }
    picture.samples = layout.samples;
    picture.bits = description.precision;
    picture.bytesPerPixel = static_cast<unsigned short>(layout.samples * layout.bytesPerSample);
    // A short stream cannot hold what its header claims: no memory for that.
    if (!description.canBeWhole) return QVM_ERROR_FAILED_TO_DECOMPRESS;
    HeapBlock block(layout.rowBytes * picture.height);
    const JpegStream::Lines decoded = stream.Decode(block.Bytes());
    picture.resultSize = decoded.bytes;
    picture.result = block.Release();
    return decoded.areBroken ? QVM_ERROR_FAILED_TO_DECOMPRESS : QVM_SUCCESS;
}

QUORVEX_MESSAGE DecodeBlindJpeg2000(std::span<const unsigned char> source,
                                    const BlindPicture& picture) {
    if (!route.Load()) return QVM_ERROR_CANNOT_OPEN_STREAM;
    PegasusParameters parameters;
    parameters.input = source;
    if (PegasusQuery(parameters) == 0) return QVM_ERROR_CANNOT_OPEN_STREAM;
    const BlindForm* form = BlindFormOf(parameters);
    picture.width = static_cast<unsigned short>(parameters.bitmap.biWidth);
    picture.height = static_cast<unsigned short>(std::abs(parameters.bitmap.biHeight));
    picture.bytesPerPixel = static_cast<unsigned short>(parameters.bitmap.biBitCount / 8);
    const auto frameBytes = CheckedProduct(picture.width, picture.height, picture.bytesPerPixel);
    if (form == nullptr || !frameBytes || !IsWorthItsMemory(*frameBytes, source.size())) {
        return QVM_ERROR_CANNOT_OPEN_STREAM;
    }
    picture.samples = static_cast<unsigned short>(form->components);
    picture.bits = form->bits;
    parameters.columns = picture.width;
    parameters.rows = picture.height;
    parameters.samples = picture.samples;
    parameters.bytesPerSample = picture.bits / 8;
    picture.result = nullptr;
    HeapBlock block(*frameBytes);
    parameters.output = block.Bytes();
    // Half a picture is none to a caller that knows nothing about it.
    if (RunRequests(parameters) != 1 || parameters.isIncomplete) {
        return QVM_ERROR_FAILED_TO_DECOMPRESS;
    }
    picture.resultSize = *frameBytes;
    picture.result = block.Release();
    return QVM_SUCCESS;
}

}  // namespace quorvex
