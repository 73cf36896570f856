// The presentation state that goes with the slice.
#include "tools/phantom/phantom_objects.h"

#include <array>

namespace quorvex::tools {
namespace {

constexpr const char* kGreyscaleState = "1.2.840.10008.5.1.4.1.1.11.1";
constexpr const char* kLayer = "FINDINGS";

constexpr Attribute kState[] = {
    {0x00080060, "PR"},
    {0x00280303, "MODIFIED"},
    {0x00700041, "N"},
    {0x00700042, static_cast<unsigned short>(0)},
    {0x00700080, "LUNG NODULE"},
    {0x00700081, "Nodule in the right lung"},
    {0x00700082, "20260105"},
    {0x00700083, "103000"},
    {0x00700084, "Phantom^Reader"},
    {0x20500020, "IDENTITY"},
    {0x00281052, "-1024"},
    {0x00281053, "1"},
    {0x00281054, "HU"},
};

CDcmItem ImageReference() {
    const auto slice = SliceIdentity();
    CDcmItem reference(1);
    SetText(reference, 0x00081150, slice.sopClass);
    SetText(reference, 0x00081155, slice.instance);
    return reference;
}

void AddImageReference(CDcmObjectCommon& target) {
    auto reference = ImageReference();
    AddItem(target, 0x00081140, reference);
}

void AddRelationship(CDcmObject& state) {
    CDcmItem series(1);
    AddImageReference(series);
    SetText(series, 0x0020000E, SliceIdentity().series);
    AddItem(state, 0x00081115, series);
}

void AddWindow(CDcmObject& state) {
    CDcmItem window(1);
    AddImageReference(window);
    SetText(window, 0x00281050, "-500");
    SetText(window, 0x00281051, "1500");
    AddItem(state, 0x00283110, window);
}

void AddDisplayedArea(CDcmObject& state) {
    CDcmItem area(1);
    AddImageReference(area);
    SetWholeNumbers(area, 0x00700052, std::array{51, 101});
    SetWholeNumbers(area, 0x00700053, std::array{350, 400});
    SetText(area, 0x00700100, "SCALE TO FIT");
    SetText(area, 0x00700101, "0.78125\\0.78125");
    AddItem(state, 0x0070005A, area);
}

CDcmItem Words() {
    CDcmItem words(1);
    SetText(words, 0x00700004, "PIXEL");
    SetText(words, 0x00700006, "Nodule, 12 mm");
    SetNumbers(words, 0x00700014, std::array{123.0, 300.0});
    SetText(words, 0x00700015, "Y");
    return words;
}

CDcmItem Ring() {
    CDcmItem ring(1);
    SetText(ring, 0x00700005, "PIXEL");
    SetAttributes(ring, std::array{Attribute{0x00700020, static_cast<unsigned short>(2)},
                                   Attribute{0x00700021, static_cast<unsigned short>(2)}});
    SetNumbers(ring, 0x00700022, std::array{123.0, 289.0, 123.0, 303.0});
    SetText(ring, 0x00700023, "CIRCLE");
    SetText(ring, 0x00700024, "N");
    return ring;
}

void AddAnnotation(CDcmObject& state) {
    CDcmItem annotation(1);
    AddImageReference(annotation);
    SetText(annotation, 0x00700002, kLayer);
    auto words = Words();
    AddItem(annotation, 0x00700008, words);
    auto ring = Ring();
    AddItem(annotation, 0x00700009, ring);
    AddItem(state, 0x00700001, annotation);
}

void AddLayer(CDcmObject& state) {
    CDcmItem layer(1);
    SetText(layer, 0x00700002, kLayer);
    SetText(layer, 0x00700062, "1");
    AddItem(state, 0x00700060, layer);
}

}  // namespace

std::unique_ptr<CDcmObject> MakeSliceState() {
    auto state = std::make_unique<CDcmObject>();
    SetIdentity(*state, IdentityOf(kGreyscaleState, 1, 2));
    SetAttributes(*state, kState);
    AddRelationship(*state);
    AddWindow(*state);
    AddDisplayedArea(*state);
    AddAnnotation(*state);
    AddLayer(*state);
    return state;
}

}  // namespace quorvex::tools
