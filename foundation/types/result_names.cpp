#include "quorvex/ResultCodes.h"

#include <algorithm>
#include <array>

namespace quorvex {
namespace {

struct ResultText {
    QUORVEX_MESSAGE code;
    const char* name;
    const char* sentence;
};

#define QUORVEX_RESULT(code, sentence) \
    ResultText {                       \
        code, #code, sentence          \
    }
constexpr std::array kResults = {
    QUORVEX_RESULT(QVM_SUCCESS, "done"),
    QUORVEX_RESULT(QVM_ERROR_FAILED_TO_DECOMPRESS, "the frame could not be decoded"),
    QUORVEX_RESULT(QVM_ERROR_FAILED_TO_COMPRESS, "the frame could not be compressed"),
    QUORVEX_RESULT(QVM_ERROR_CANNOT_OPEN_STREAM, "there is no compressed stream to decode"),
    QUORVEX_RESULT(QVM_ERROR_NOT_COLOR_IMAGE, "the frame is not a colour image"),
    QUORVEX_RESULT(QVM_ERROR_FAILED_TO_SET_PIXEL_DATA, "the pixel data could not be stored"),
    QUORVEX_RESULT(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA,
                   "there is no usable pixel data, or its size is not usable"),
    QUORVEX_RESULT(QVM_ERROR_FAILED_TO_READ_FILE, "the file could not be read"),
    QUORVEX_RESULT(QVM_ERROR_FAILED_TO_PARSE_DICOM, "this is not DICOM that can be read"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_JPEG_STREAM, "this kind of JPEG stream is not supported"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_JPEG_LAYOUT, "the JPEG pixel layout is not supported"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_JPEG_PRECISION, "the JPEG precision is not supported"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_PIXEL_REPRESENTATION,
                   "the pixel representation is missing or cannot be written"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_HIGH_BIT, "the high bit cannot be written"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_BITS_STORED, "the bits stored are missing or not writable"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_BITS_ALLOCATED,
                   "the bits allocated are missing or not writable"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_COLUMNS, "the columns are missing or not writable"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_ROWS, "the rows are missing or not writable"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_PHOTOMETRIC,
                   "the photometric interpretation is not supported, or its palette is missing"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_PLANAR_CONFIGURATION,
                   "the planar configuration is missing or not writable"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_SAMPLES_PER_PIXEL, "the samples per pixel are not usable"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_TRANSFER_SYNTAX,
                   "the transfer syntax cannot be set, read or written"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_DCMAPP, "no library context, or memory that is not DICOM"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_MAKER_PARAM, "no parameters for the new object"),
    QUORVEX_RESULT(QVM_ERROR_NO_PIXEL_INFO, "no description of the pixels"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_IMAGE_FORMAT,
                   "the size or bit depth of the image is not usable"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_OUTPUT_SIZE, "the size asked for is not usable"),
    QUORVEX_RESULT(QVM_ERROR_NULL_SOURCE, "there is nothing to compress"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_FRAME_INDEX, "there is no frame of that number"),
    QUORVEX_RESULT(QVM_ERROR_NO_SOURCE_OBJECT, "there is no source object"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_SOURCE_SYNTAX, "the source transfer syntax is not usable"),
    QUORVEX_RESULT(QVM_ERROR_INVALID_TARGET_SYNTAX, "the format asked for is not usable"),
    QUORVEX_RESULT(QVM_FRAME_COPIED, "the frame was copied as it is"),
    QUORVEX_RESULT(QVM_ERROR_NO_IMAGE, "there is no image yet"),
    QUORVEX_RESULT(QVM_ERROR_CANCELLED, "the operation was cancelled"),
};
#undef QUORVEX_RESULT

constexpr ResultText kUnknown = {QVM_SUCCESS, "QVM_UNKNOWN", "a result without a name"};

static_assert(std::ranges::is_sorted(kResults, {}, &ResultText::code));

const ResultText& TextOf(QUORVEX_MESSAGE result) noexcept {
    const auto* found = std::ranges::lower_bound(kResults, result, {}, &ResultText::code);
    return found != kResults.end() && found->code == result ? *found : kUnknown;
}

}  // namespace

const char* ResultName(QUORVEX_MESSAGE result) noexcept {
    return TextOf(result).name;
}
const char* ResultSentence(QUORVEX_MESSAGE result) noexcept {
    return TextOf(result).sentence;
}

}  // namespace quorvex
