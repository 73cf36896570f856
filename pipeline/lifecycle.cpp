#include "pipeline/intake/stored_elements.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"
#include "quorvex/CxDcmParser.h"

#include <cstring>
#include <memory>
#include <tuple>
#include <utility>

namespace quorvex {

namespace {

PixelBlock CopyOf(const PixelBlock& block) {
    if (!block.data) return {};
    PixelBlock copy = NewPixelBlock(block.size);
    std::memcpy(copy.data.get(), block.data.get(), block.size);
    return copy;
}

}  // namespace

CXDIPP::CXDIPP()
    : parser(std::make_unique<CxDcmParser>()), windowing(std::make_unique<CXWindowing>()) {}

CXDIPP::CXDIPP(const CXDIPP& other)
    : parser(std::make_unique<CxDcmParser>(*other.parser)),
      windowing(std::make_unique<CXWindowing>(*other.windowing)),
      presentation(other.presentation),
      overlayImage(CopyOf(other.overlayImage)),
      paletteImage(CopyOf(other.paletteImage)),
      headerOverlays(CopyOf(other.headerOverlays)),
      pixelRepresentation(other.pixelRepresentation),
      pixels(CopyOf(other.pixels)),
      resultImage(CopyOf(other.resultImage)),
      resultSize(other.resultSize),
      renderedPixelSize(other.renderedPixelSize),
      renderedView(other.renderedView),
      imageSize(other.imageSize),
      viewSize(other.viewSize),
      rotation(other.rotation),
      horizontalFlip(other.horizontalFlip),
      zoom(other.zoom),
      panOffset(other.panOffset),
      resultPixelSize(other.resultPixelSize),
      bytesPerPixel(other.bytesPerPixel),
      bitsStored(other.bitsStored),
      roi(other.roi),
      aspectRatio(other.aspectRatio),
      inverse(other.inverse),
      valueRange(other.valueRange),
      minValue(other.minValue),
      maxValue(other.maxValue),
      renderMode(other.renderMode),
      shutterShown(other.shutterShown),
      annotationsShown(other.annotationsShown),
      overlaysShown(other.overlaysShown) {}

CXDIPP& CXDIPP::operator=(const CXDIPP& other) {
    if (this == &other) return *this;
    const auto members = [](CXDIPP& d) {
        return std::tie(d.parser, d.windowing, d.presentation, d.overlayImage, d.paletteImage,
                        d.headerOverlays, d.pixelRepresentation, d.pixels, d.resultImage,
                        d.resultSize, d.renderedPixelSize, d.renderedView, d.imageSize, d.viewSize,
                        d.rotation, d.horizontalFlip, d.zoom, d.panOffset, d.resultPixelSize,
                        d.bytesPerPixel, d.bitsStored, d.roi, d.aspectRatio, d.inverse,
                        d.valueRange, d.minValue, d.maxValue, d.renderMode, d.shutterShown,
                        d.annotationsShown, d.overlaysShown);
    };
    CXDIPP copy(other);
    auto mine = members(*this);
    auto theirs = members(copy);
    mine.swap(theirs);
    return *this;
}

CXDIPP::~CXDIPP() = default;

}  // namespace quorvex
