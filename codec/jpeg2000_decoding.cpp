#include "quorvex/CxImageProcessor.h"

namespace quorvex {

int CxImageProcessor::DecompressJ2KData(unsigned char* /*source*/, unsigned long /*sourceLength*/,
                                        unsigned char*& /*result*/, unsigned long& /*resultSize*/,
                                        int /*unsignedOnly*/) {
    return 0;
}

QUORVEX_MESSAGE CxImageProcessor::DecompressBlindJP2KData(
    unsigned char* /*source*/, unsigned long /*sourceLength*/, unsigned char*& /*result*/,
    unsigned long& resultSize, unsigned short& /*width*/, unsigned short& /*height*/,
    unsigned short& /*samples*/, unsigned short& /*bits*/, unsigned short& /*bytesPerPixel*/) {
    resultSize = 0;
    return QVM_ERROR_CANNOT_OPEN_STREAM;
}

}  // namespace quorvex
