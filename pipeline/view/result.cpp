// CXDIPP: the last result, rendered, drawn and handed out.
#include "foundation/types/answer.h"
#include "pipeline/displayed_image.h"
#include "pipeline/recipe/display_rules.h"
#include "quorvex/CXDIPP.h"

#include <algorithm>
#include <cstring>

namespace quorvex {

QUORVEX_MESSAGE CXDIPP::Render() {
    return Answer(QVM_ERROR_NO_IMAGE, [&] { return RulesOf(*image_).Render(*image_); });
}

QUORVEX_MESSAGE CXDIPP::RenderInto(const PixelTarget& target) {
    return Answer(QVM_ERROR_NO_IMAGE, [&] { return RulesOf(*image_).RenderInto(*image_, target); });
}

QUORVEX_MESSAGE CXDIPP::GetPictureInfo(PictureInfo& picture) const {
    return Answer(QVM_ERROR_NO_IMAGE,
                  [&] { return RulesOf(*image_).DescribePicture(*image_, picture); });
}

QUORVEX_MESSAGE CXDIPP::Draw(CDC* deviceContext) {
    return Answer(QVM_ERROR_NO_IMAGE, [&] {
        if (!image_->resultImage.data) return QVM_ERROR_NO_IMAGE;
        DrawingSurface* surface = deviceContext != nullptr ? deviceContext->GetSafeHdc() : nullptr;
        if (surface != nullptr) RulesOf(*image_).DrawOnto(*surface, *image_);
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CXDIPP::GetResultImageInfo(CSize& size, int& pixelSize) const {
    if (!image_->resultImage.data) return QVM_ERROR_NO_IMAGE;
    size = image_->resultSize;
    pixelSize = image_->renderedPixelSize;
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::GetResultImage(unsigned char*& destination, int length) const {
    const PixelBlock& result = image_->resultImage;
    if (!result.data || destination == nullptr || length < 1) return QVM_SUCCESS;
    std::memcpy(destination, result.data.get(),
                std::min(result.size, static_cast<std::size_t>(length)));
    return QVM_SUCCESS;
}

}  // namespace quorvex
