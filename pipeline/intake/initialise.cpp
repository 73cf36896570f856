#include "foundation/types/answer.h"
#include "pipeline/displayed_image.h"
#include "pipeline/recipe/display_rules.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CxDcmParser.h"

#include <memory>
#include <utility>

namespace quorvex {

namespace {

constexpr auto kNoPixels = QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;

/// Shows a frame of what `open` makes a parser open. The parser of the image on show stays until
/// that is done.
template <class Open>
QUORVEX_MESSAGE OpenAndShow(DisplayedImage& image, CSize viewSize, int frameIndex, Open open) {
    auto parser = std::make_unique<CxDcmParser>();
    parser->SetRules(image.rules);
    auto result = open(*parser);
    if (result == QVM_SUCCESS) {
        result = RulesForNext(image).ShowFrame(image, *parser, viewSize, frameIndex);
    }
    if (result == QVM_SUCCESS) image.parser = std::move(parser);
    return result;
}

}  // namespace

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp* app, CString path, CSize viewSize, int frameIndex) {
    return Answer(kNoPixels, [&] {
        return OpenAndShow(*image_, viewSize, frameIndex, [&](CxDcmParser& parser) {
            return parser.Initialize(app, std::move(path), 0);
        });
    });
}

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp* app, std::shared_ptr<FileSource> source, CSize viewSize,
                                   int frameIndex) {
    return Answer(kNoPixels, [&] {
        return OpenAndShow(*image_, viewSize, frameIndex, [&](CxDcmParser& parser) {
            return parser.Initialize(app, std::move(source), 0);
        });
    });
}

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp* app, CDcmObject* object, CSize viewSize,
                                   int frameIndex) {
    return Answer(kNoPixels, [&] {
        return OpenAndShow(*image_, viewSize, frameIndex, [&](CxDcmParser& parser) {
            return parser.Initialize(app, object, nullptr, 0, 0);
        });
    });
}

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp*, CSize viewSize, int frameIndex) {
    return Answer(kNoPixels, [&] {
        return RulesForNext(*image_).ShowFrame(*image_, *image_->parser, viewSize, frameIndex);
    });
}

}  // namespace quorvex
