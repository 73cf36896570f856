#include "c/calls.h"
#include "c/pane.h"

#include <cmath>

namespace quorvex::c {
namespace {

constexpr auto kNoPixels = QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
/// A side of a pane that never limits the fit.
constexpr int kNoLimit = 1 << 30;

QUORVEX_MESSAGE OpenFrame(quorvex_view& view, const quorvex_image& image, int frame) {
    CDcmApp app;
    const CSize size{kNoLimit, kNoLimit};
    if (view.origin == image.origin) return view.shown.Initialize(&app, size, frame);
    auto header = std::make_unique<CxDcmParser>(image.parser);
    Origin origin = image.origin;
    view.shown.SetRules(image.rules);
    const QUORVEX_MESSAGE result = origin.Show(view.shown, size, frame);
    if (result != QVM_SUCCESS) return result;
    view.origin = std::move(origin);
    view.header = std::move(header);
    view.rules = image.rules;
    view.state.reset();
    view.choices = {};
    return result;
}

void SetWindow(quorvex_view& view) {
    const Choices::Window& window = *view.choices.window;
    if (window.function)
        view.shown.UpdateVOILUT_ABS(window.centre, window.width, *window.function);
    else
        view.shown.UpdateVOILUT_ABS(window.centre, window.width);
}

/// Fits the image into the pane, and puts it where the host has put it.
void LayOut(quorvex_view& view) {
    view.shown.UpdateViewSize({kNoLimit, kNoLimit});
    view.shown.UpdateViewSize(view.size);
    if (view.choices.zoom > 0.0) view.shown.UpdateZoom_ABS(view.choices.zoom);
    const CPoint fitted = view.shown.GetPanOffset();
    view.shown.UpdatePan_ABS({fitted.x + view.choices.pan.x, fitted.y + view.choices.pan.y});
}

/// Brings a frame that has just come in to what the host has set.
void Dress(quorvex_view& view) {
    if (view.state) {
        CDcmApp app;
        view.shown.ApllyGSPSObject(&app, view.state->GetHeader());
    }
    const Choices& choices = view.choices;
    if (choices.voi) view.shown.SelectVOI(*choices.voi);
    if (choices.window) SetWindow(view);
    if (choices.degrees != 0) view.shown.UpdateRotate_Offset(choices.degrees);
    if (choices.isFlipped) view.shown.UpdateHFlip_Toggle();
    if (choices.isInverted) view.shown.UpdatePresentationLUT_Toggle();
    LayOut(view);
}

void ShowLayers(quorvex_view& view) {
    view.shown.ShowOverlays((view.layers & QUORVEX_LAYER_OVERLAYS) != 0 ? 1 : 0);
    view.shown.ShowShutter((view.layers & QUORVEX_LAYER_SHUTTER) != 0 ? 1 : 0);
    view.shown.ShowAnnotations((view.layers & QUORVEX_LAYER_ANNOTATIONS) != 0 ? 1 : 0);
}

/// Shows the frame once more, as it states it and by another state: nothing of the former one
/// stays.
QUORVEX_MESSAGE ShowBy(quorvex_view& view, std::shared_ptr<CxDcmParser> state) {
    CXDIPP fresh;
    fresh.SetRules(view.rules);
    const QUORVEX_MESSAGE result = view.origin->Show(fresh, {kNoLimit, kNoLimit}, view.frame);
    if (result != QVM_SUCCESS) return result;
    view.shown = fresh;
    view.shown.SetInterpolation(view.interpolation);
    ShowLayers(view);
    view.state = std::move(state);
    view.choices = {};
    Dress(view);
    return result;
}

/// A call that needs an image on show.
template <class Work>
quorvex_result OnShow(quorvex_view* view, Work work) noexcept {
    if (view == nullptr) return QVM_ERROR_NULL_SOURCE;
    return Call(*view->settings, kNoPixels, [&]() -> QUORVEX_MESSAGE {
        if (!view->origin) return QVM_ERROR_NO_IMAGE;
        return work();
    });
}

std::optional<VoiFunction> FunctionOf(std::int32_t function) noexcept {
    switch (function) {
        case QUORVEX_VOI_LINEAR:
            return VoiFunction::kLinear;
        case QUORVEX_VOI_LINEAR_EXACT:
            return VoiFunction::kLinearExact;
        case QUORVEX_VOI_SIGMOID:
            return VoiFunction::kSigmoid;
        default:
            return std::nullopt;
    }
}

}  // namespace
}  // namespace quorvex::c

using namespace quorvex;
using namespace quorvex::c;

quorvex_result quorvex_view_new(quorvex_context* context, int32_t width, int32_t height,
                                quorvex_view** view) {
    if (!AreThere(context, view)) return QVM_ERROR_NULL_SOURCE;
    if (width < 1 || height < 1) return QVM_ERROR_INVALID_OUTPUT_SIZE;
    return Call(*context->settings, kNoPixels, [&] {
        auto made = std::make_unique<quorvex_view>();
        made->settings = context->settings;
        made->rules = context->settings->rules;
        made->size = {width, height};
        *view = made.release();
        return QVM_SUCCESS;
    });
}

void quorvex_view_free(quorvex_view* view) {
    delete view;
}

quorvex_result quorvex_view_show(quorvex_view* view, const quorvex_image* image, int32_t frame) {
    if (!AreThere(view, image)) return QVM_ERROR_NULL_SOURCE;
    return Call(*view->settings, kNoPixels, [&] {
        const QUORVEX_MESSAGE result = OpenFrame(*view, *image, frame);
        if (result != QVM_SUCCESS) return result;
        view->frame = frame;
        Dress(*view);
        return result;
    });
}

quorvex_result quorvex_view_apply_state(quorvex_view* view, const quorvex_image* state) {
    return OnShow(view, [&] {
        return ShowBy(*view,
                      state == nullptr ? nullptr : std::make_shared<CxDcmParser>(state->parser));
    });
}

quorvex_result quorvex_view_set_window(quorvex_view* view, double centre, double width,
                                       int32_t function) {
    return OnShow(view, [&] {
        const auto chosen = FunctionOf(function);
        const bool isKnown = chosen || function == QUORVEX_VOI_AS_IT_IS;
        if (!isKnown || !std::isfinite(centre) || !std::isfinite(width) || width <= 0.0)
            return QVM_ERROR_INVALID_IMAGE_FORMAT;
        view->choices.window = Choices::Window{centre, width, chosen};
        SetWindow(*view);
        return QVM_SUCCESS;
    });
}

quorvex_result quorvex_view_get_window(quorvex_view* view, double* centre, double* width) {
    if (!AreThere(centre, width)) return QVM_ERROR_NULL_SOURCE;
    return OnShow(view, [&] {
        view->shown.GetWindowingFactor(*width, *centre);
        return QVM_SUCCESS;
    });
}

quorvex_result quorvex_view_voi_count(quorvex_view* view, int32_t* count) {
    if (!AreThere(count)) return QVM_ERROR_NULL_SOURCE;
    return OnShow(view, [&] {
        *count = view->shown.GetVOIChoiceCount();
        return QVM_SUCCESS;
    });
}

quorvex_result quorvex_view_voi_name(quorvex_view* view, int32_t choice, char* text,
                                     size_t capacity, size_t* length) {
    return OnShow(view, [&] {
        if (choice < 0 || choice >= view->shown.GetVOIChoiceCount())
            return QVM_ERROR_INVALID_FRAME_INDEX;
        return GiveText(view->shown.GetVOIExplanation(choice).ToValidUtf8(), text, capacity,
                        length);
    });
}

quorvex_result quorvex_view_select_voi(quorvex_view* view, int32_t choice) {
    return OnShow(view, [&] {
        if (choice < CXDIPP::kOverTheValues || choice >= view->shown.GetVOIChoiceCount())
            return QVM_ERROR_INVALID_FRAME_INDEX;
        view->choices.voi = choice;
        view->choices.window.reset();
        view->shown.SelectVOI(choice);
        return QVM_SUCCESS;
    });
}

quorvex_result quorvex_view_set_size(quorvex_view* view, int32_t width, int32_t height) {
    if (view == nullptr) return QVM_ERROR_NULL_SOURCE;
    if (width < 1 || height < 1) return QVM_ERROR_INVALID_OUTPUT_SIZE;
    return Call(*view->settings, kNoPixels, [&] {
        view->size = {width, height};
        view->choices.zoom = 0.0;
        view->choices.pan = {};
        if (view->origin) LayOut(*view);
        return QVM_SUCCESS;
    });
}

quorvex_result quorvex_view_set_zoom(quorvex_view* view, double zoom) {
    return OnShow(view, [&] {
        if (!std::isfinite(zoom) || zoom < 0.0) return QVM_ERROR_INVALID_OUTPUT_SIZE;
        view->choices.zoom = zoom;
        LayOut(*view);
        return QVM_SUCCESS;
    });
}

quorvex_result quorvex_view_get_zoom(quorvex_view* view, double* zoom) {
    if (!AreThere(zoom)) return QVM_ERROR_NULL_SOURCE;
    return OnShow(view, [&] {
        *zoom = view->shown.GetZoomFactor();
        return QVM_SUCCESS;
    });
}

quorvex_result quorvex_view_set_pan(quorvex_view* view, int32_t x, int32_t y) {
    return OnShow(view, [&] {
        const CPoint before = view->choices.pan;
        view->choices.pan = {x, y};
        view->shown.UpdatePan_Offset({x - before.x, y - before.y});
        return QVM_SUCCESS;
    });
}

quorvex_result quorvex_view_set_orientation(quorvex_view* view, int32_t degrees, int32_t flip) {
    return OnShow(view, [&] {
        if (degrees < 0 || degrees > 270 || degrees % 90 != 0)
            return QVM_ERROR_INVALID_IMAGE_FORMAT;
        Choices& choices = view->choices;
        if (degrees != choices.degrees) view->shown.UpdateRotate_Offset(degrees - choices.degrees);
        if ((flip != 0) != choices.isFlipped) view->shown.UpdateHFlip_Toggle();
        choices.degrees = degrees;
        choices.isFlipped = flip != 0;
        LayOut(*view);
        return QVM_SUCCESS;
    });
}

quorvex_result quorvex_view_set_inverted(quorvex_view* view, int32_t on) {
    return OnShow(view, [&] {
        if ((on != 0) != view->choices.isInverted) view->shown.UpdatePresentationLUT_Toggle();
        view->choices.isInverted = on != 0;
        return QVM_SUCCESS;
    });
}

quorvex_result quorvex_view_set_interpolation(quorvex_view* view, int32_t enlarging) {
    if (view == nullptr) return QVM_ERROR_NULL_SOURCE;
    static_assert(QUORVEX_ENLARGE_LINEAR == static_cast<int>(Interpolation::kLinear) &&
                  QUORVEX_ENLARGE_NEAREST == static_cast<int>(Interpolation::kNearest) &&
                  QUORVEX_ENLARGE_CUBIC == static_cast<int>(Interpolation::kCubic));
    if (enlarging < QUORVEX_ENLARGE_LINEAR || enlarging > QUORVEX_ENLARGE_CUBIC)
        return QVM_ERROR_INVALID_IMAGE_FORMAT;
    view->interpolation = static_cast<Interpolation>(enlarging);
    view->shown.SetInterpolation(view->interpolation);
    return QVM_SUCCESS;
}

quorvex_result quorvex_view_set_layers(quorvex_view* view, uint32_t layers) {
    if (view == nullptr) return QVM_ERROR_NULL_SOURCE;
    return Call(*view->settings, kNoPixels, [&] {
        view->layers = layers;
        ShowLayers(*view);
        return QVM_SUCCESS;
    });
}

quorvex_result quorvex_view_render(quorvex_view* view, const quorvex_target* target) {
    const auto taken = Taken(target);
    if (!taken || taken->pixels == nullptr) return QVM_ERROR_NULL_SOURCE;
    return OnShow(view, [&] { return DrawPane(*view, *taken); });
}

quorvex_result quorvex_view_picture(quorvex_view* view, quorvex_picture* picture) {
    return OnShow(view, [&] {
        PictureInfo info;
        const QUORVEX_MESSAGE result = view->shown.GetPictureInfo(info);
        return result == QVM_SUCCESS ? Give(PictureOf(info), picture) : result;
    });
}
