#include "pipeline/displayed_image.h"
#include "quorvex/CXDIPP.h"

#include <memory>

namespace quorvex {

CXDIPP::CXDIPP() : image_(std::make_unique<DisplayedImage>()) {}

CXDIPP::CXDIPP(const CXDIPP& other) : image_(std::make_unique<DisplayedImage>(*other.image_)) {}

CXDIPP& CXDIPP::operator=(const CXDIPP& other) {
    if (this != &other) image_ = std::make_unique<DisplayedImage>(*other.image_);
    return *this;
}

CXDIPP::~CXDIPP() = default;

void CXDIPP::SetRules(Rules rules) noexcept {
    image_->rules = rules;
}

void CXDIPP::SetPreview(bool on) noexcept {
    image_->isPreview = on;
}

}  // namespace quorvex
