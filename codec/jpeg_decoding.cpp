#include "quorvex/CxImageProcessor.h"

namespace quorvex {

int CxImageProcessor::DecompressJpegData(unsigned char* /*source*/, unsigned long /*sourceLength*/,
                                         unsigned char*& /*result*/, unsigned long& resultSize) {
    resultSize = 0;
    return 0;
}

QUORVEX_MESSAGE CxImageProcessor::DecompressBlindJPEGData(
    unsigned char* /*source*/, unsigned long /*sourceLength*/, unsigned char*& /*result*/,
    unsigned long& resultSize, unsigned short& /*columns*/, unsigned short& /*rows*/,
    unsigned short& /*samples*/, unsigned short& /*bits*/, unsigned short& /*bytesPerPixel*/) {
    resultSize = 0;
    return QVM_ERROR_CANNOT_OPEN_STREAM;
}

}  // namespace quorvex
