#include "pipeline/displayed_image.h"
#include "quorvex/CXDIPP.h"

namespace quorvex {

QUORVEX_MESSAGE CXDIPP::ShowShutter(int on) {
    image_->shutterShown = on;
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::ShowAnnotations(int on) {
    image_->annotationsShown = on;
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::ShowOverlays(int on) noexcept {
    image_->overlaysShown = on;
    return QVM_SUCCESS;
}

}  // namespace quorvex
