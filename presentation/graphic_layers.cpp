#include "presentation/graphic_layers.h"

#include "foundation/dicom/model/attributes.h"
#include "presentation/cielab.h"

#include <algorithm>

namespace quorvex {
namespace {

GSPSGraphicLayer LayerOf(const CDcmItem& item) {
    GSPSGraphicLayer layer;
    layer.name = Read<CString>(item, tag::kGraphicLayer).value_or(CString());
    layer.order = Read<int>(item, tag::kGraphicLayerOrder).value_or(0);
    layer.description = Read<CString>(item, tag::kGraphicLayerDescription).value_or(CString());
    layer.greyValue = Read<unsigned short>(item, tag::kGraphicLayerRecommendedDisplayGrayscaleValue)
                          .value_or(layer.greyValue);
    const auto lab = ReadCieLab(item, tag::kGraphicLayerRecommendedDisplayCIELabValue);
    if (!lab) return layer;
    layer.hasColour = 1;
    std::ranges::copy(*lab, layer.cieLab);
    return layer;
}

}  // namespace

std::vector<GSPSGraphicLayer> ReadGraphicLayers(const CDcmObjectCommon& state) {
    std::vector<GSPSGraphicLayer> layers;
    ForEachItem(state, tag::kGraphicLayerSequence,
                [&](const CDcmItem& item) { layers.push_back(LayerOf(item)); });
    std::ranges::stable_sort(layers, {}, &GSPSGraphicLayer::order);
    return layers;
}

std::array<std::uint8_t, 3> ColourOf(const GSPSGraphicLayer& layer) noexcept {
    if (layer.hasColour == 0) return GreyOfPresentationValue(layer.greyValue);
    return RgbOfCieLab({layer.cieLab[0], layer.cieLab[1], layer.cieLab[2]});
}

}  // namespace quorvex
