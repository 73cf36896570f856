#include "maker/recoding/nested_pixels.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/object/object_state.h"
#include "quorvex/CxDcmParser.h"

#include <algorithm>
#include <string_view>

namespace quorvex {
namespace {

using dicom::DataSet;
using dicom::Element;

bool HoldsCodedPixels(const DataSet& item) {
    return std::ranges::any_of(item.Elements(), [&](const Element& element) {
        const dicom::Items* items = dicom::ItemsOf(element);
        if (items == nullptr)
            return element.tag == tag::kPixelData && !item.FragmentsOf(element).IsEmpty();
        return std::ranges::any_of(*items, [](const auto& one) { return HoldsCodedPixels(*one); });
    });
}

void PutText(DataSet& item, std::uint32_t tag, MC_VR vr, std::string_view text) {
    item.PutBytes(tag, vr, dicom::ByteBuffer(text.begin(), text.end()));
}

/// All frames of the picture that an item is, one behind the other.
QUORVEX_MESSAGE DecodeAll(TRANSFER_SYNTAX from, const DataSet& item, dicom::ByteBuffer& pixels) {
    CDcmObject picture;
    ObjectState::Of(picture).Adopt(std::make_shared<DataSet>(item));
    if (picture.SetTransferSyntax(from) != kDcmSuccess) return QVM_ERROR_INVALID_TRANSFER_SYNTAX;
    CDcmApp app;
    CxDcmParser parser;
    parser.SetRules(Rules::kStandard);
    auto result = parser.Initialize(&app, &picture, nullptr, 0, 0);
    for (int i = 0; result == QVM_SUCCESS && i < parser.GetFrameCount(); ++i) {
        unsigned char* data = nullptr;
        unsigned long size = 0;
        result = parser.GetAFrame(i, data, size, 0);
        const std::unique_ptr<unsigned char[]> frame(data);
        if (result == QVM_SUCCESS) pixels.insert(pixels.end(), data, data + size);
    }
    return result;
}

QUORVEX_MESSAGE DecodePixelsOf(TRANSFER_SYNTAX from, DataSet& item) {
    const Element* pixels = item.Find(tag::kPixelData);
    if (pixels == nullptr || item.FragmentsOf(*pixels).IsEmpty()) return QVM_SUCCESS;
    dicom::ByteBuffer plain;
    const auto result = DecodeAll(from, item, plain);
    if (result != QVM_SUCCESS) return result;
    CDcmObject header;
    ObjectState::Of(header).Adopt(std::make_shared<DataSet>(item));
    const int bits = Read<int>(header, tag::kBitsAllocated).value_or(0);
    if (Read<int>(header, tag::kSamplesPerPixel) == 3) {
        PutText(item, tag::kPhotometricInterpretation, MC_VR_CS, "RGB ");
        item.PutBytes(tag::kPlanarConfiguration, MC_VR_US, {0, 0});
    }
    item.PutBytes(tag::kPixelData, bits > 8 ? MC_VR_OW : MC_VR_OB, std::move(plain));
    return QVM_SUCCESS;
}

/// Replaces items by decoded ones: others may share them.
QUORVEX_MESSAGE DecodeItemsOf(TRANSFER_SYNTAX from, DataSet& dataSet) {
    std::vector<std::uint32_t> sequences;
    for (const Element& element : dataSet.Elements())
        if (dicom::ItemsOf(element) != nullptr) sequences.push_back(element.tag);
    for (const std::uint32_t sequence : sequences) {
        for (auto& item : dicom::Unshared<dicom::Items>(*dataSet.FindMutable(sequence))) {
            if (!HoldsCodedPixels(*item)) continue;
            auto plain = std::make_shared<DataSet>(*item);
            auto result = DecodeItemsOf(from, *plain);
            if (result == QVM_SUCCESS) result = DecodePixelsOf(from, *plain);
            if (result != QVM_SUCCESS) return result;
            item = std::move(plain);
        }
    }
    return QVM_SUCCESS;
}

bool HaveItemsCodedPixels(const DataSet& main) {
    return std::ranges::any_of(main.Elements(), [](const Element& element) {
        const dicom::Items* items = dicom::ItemsOf(element);
        return items != nullptr && std::ranges::any_of(*items, [](const auto& item) {
                   return HoldsCodedPixels(*item);
               });
    });
}

}  // namespace

QUORVEX_MESSAGE DecodeNestedPixels(TRANSFER_SYNTAX from, CDcmObject& object) {
    if (!HaveItemsCodedPixels(ObjectState::Of(object).Content())) return QVM_SUCCESS;
    return DecodeItemsOf(from, ObjectState::Of(object).Writable());
}

}  // namespace quorvex
