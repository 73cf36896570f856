#include "foundation/engines/jpeg2000/jpeg2000_engine.h"
#include "quorvex/CxImageProcessor.h"

namespace quorvex {

CxImageProcessor::CxImageProcessor() noexcept {
    PegasusLibInit(0);
}

CxImageProcessor::CxImageProcessor(const CxImageProcessor& other)
    : samplesPerPixel(other.samplesPerPixel),
      photometric(other.photometric),
      planarConfiguration(other.planarConfiguration),
      rows(other.rows),
      columns(other.columns),
      bitsAllocated(other.bitsAllocated),
      pixelRepresentation(other.pixelRepresentation),
      transferSyntax(other.transferSyntax),
      targetSyntax(other.targetSyntax),
      quality(other.quality),
      quantizationTable(other.quantizationTable),
      lumaQuality(other.lumaQuality),
      chromaQuality(other.chromaQuality),
      allocMode(other.allocMode),
      keepsRgb(other.keepsRgb) {
    PegasusLibInit(0);
}

CxImageProcessor::~CxImageProcessor() {
    PegasusLibTerm();
}

}  // namespace quorvex
