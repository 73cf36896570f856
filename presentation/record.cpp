#include "quorvex/CXGSPSInfo.h"

#include <memory>

namespace quorvex {
namespace {

template <class Element>
void ReleaseElements(const CPtrArray& elements) noexcept {
    for (int i = 0; i < elements.GetSize(); ++i) {
        const std::unique_ptr<Element> element(static_cast<Element*>(elements.GetAt(i)));
    }
}

}  // namespace

GSPSTextObject::~GSPSTextObject() {
    delete[] boundingBoxTopLeft;
    delete[] boundingBoxBottomRight;
    delete[] anchorPoint;
}

GSPSGraphicObject::~GSPSGraphicObject() {
    ReleaseElements<GSPSPoint>(points);
}

CXGSPSInfo::CXGSPSInfo() = default;

CXGSPSInfo::~CXGSPSInfo() {
    ReleaseElements<GSPSTextObject>(textObjects);
    ReleaseElements<GSPSGraphicObject>(graphicObjects);
}

}  // namespace quorvex
