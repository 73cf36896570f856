/// The result codes that every public operation of QuorvexU answers with.
#pragma once

#include "quorvex/Export.h"

#include <cstdint>

namespace quorvex {

/// Result of a public operation. The numbers are part of the interface and never change;
/// 4, 5, 6, 27, 30 and 31 have no meaning.
enum QUORVEX_MESSAGE : std::int32_t {
    QVM_SUCCESS = 0,
    QVM_ERROR_FAILED_TO_DECOMPRESS = 1,      ///< a frame's decoder reported failure
    QVM_ERROR_FAILED_TO_COMPRESS = 2,        ///< a coder failed or gave no output
    QVM_ERROR_CANNOT_OPEN_STREAM = 3,        ///< no stream to decode, or unusable bit count
    QVM_ERROR_NOT_COLOR_IMAGE = 7,           ///< not 3 samples: an expected answer for grey
    QVM_ERROR_FAILED_TO_SET_PIXEL_DATA = 8,  ///< the object refused Pixel Data
    QVM_ERROR_FAILED_TO_GET_PIXEL_DATA = 9,  ///< no usable Rows, Columns or Pixel Data
    QVM_ERROR_FAILED_TO_READ_FILE = 10,      ///< the file could not be read into memory
    QVM_ERROR_FAILED_TO_PARSE_DICOM = 11,    ///< no header, or an unreadable transfer syntax
    QVM_ERROR_INVALID_JPEG_STREAM = 12,      ///< kind of JPEG stream not usable
    QVM_ERROR_INVALID_JPEG_LAYOUT = 13,      ///< pixel layout refused by the JPEG engine
    QVM_ERROR_INVALID_JPEG_PRECISION = 14,   ///< sample precision neither 8 nor 16
    QVM_ERROR_INVALID_PIXEL_REPRESENTATION = 15,
    QVM_ERROR_INVALID_HIGH_BIT = 16,
    QVM_ERROR_INVALID_BITS_STORED = 17,
    QVM_ERROR_INVALID_BITS_ALLOCATED = 18,
    QVM_ERROR_INVALID_COLUMNS = 19,
    QVM_ERROR_INVALID_ROWS = 20,
    QVM_ERROR_INVALID_PHOTOMETRIC = 21,  ///< also: palette tables missing
    QVM_ERROR_INVALID_PLANAR_CONFIGURATION = 22,
    QVM_ERROR_INVALID_SAMPLES_PER_PIXEL = 23,
    QVM_ERROR_INVALID_TRANSFER_SYNTAX = 24,  ///< cannot be set, read or written
    QVM_ERROR_INVALID_DCMAPP = 25,           ///< no CDcmApp, or memory that is not DICOM
    QVM_ERROR_INVALID_MAKER_PARAM = 26,
    QVM_ERROR_NO_PIXEL_INFO = 28,
    QVM_ERROR_INVALID_IMAGE_FORMAT = 29,  ///< geometry or bit depth unusable for the codec
    QVM_ERROR_INVALID_OUTPUT_SIZE = 32,   ///< below 1, or width not a multiple of 4
    QVM_ERROR_NULL_SOURCE = 33,
    QVM_ERROR_INVALID_FRAME_INDEX = 34,  ///< below 0, or not below the frame count
    QVM_ERROR_NO_SOURCE_OBJECT = 35,
    QVM_ERROR_INVALID_SOURCE_SYNTAX = 36,
    QVM_ERROR_INVALID_TARGET_SYNTAX = 37,
    QVM_FRAME_COPIED = 38,     ///< success: nothing had to be decoded or coded
    QVM_ERROR_NO_IMAGE = 39,   ///< nothing to show yet
    QVM_ERROR_CANCELLED = 40,  ///< the host has called the operation off
};

/// Name of a result code ("QVM_ERROR_NO_IMAGE"), or "QVM_UNKNOWN" for a number without one.
QUORVEX_API const char* ResultName(QUORVEX_MESSAGE result) noexcept;

/// One plain English sentence for a person who meets the code, without a full stop.
QUORVEX_API const char* ResultSentence(QUORVEX_MESSAGE result) noexcept;

}  // namespace quorvex
