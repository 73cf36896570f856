#include "foundation/dicom/object/object_state.h"
#include "foundation/types/answer.h"
#include "quorvex/DicomObject.h"

namespace quorvex {

CDcmCommon::CDcmCommon() : state_(std::make_unique<ObjectState>()) {}

CDcmCommon::CDcmCommon(const CDcmCommon& other)
    : state_(std::make_unique<ObjectState>(*other.state_)) {}

CDcmCommon& CDcmCommon::operator=(const CDcmCommon& other) {
    *state_ = *other.state_;
    return *this;
}

CDcmCommon::~CDcmCommon() = default;

CString CDcmCommon::GetErrorMessage() const {
    return Answer(CString(), [&] { return CString(state_->ErrorMessage()); });
}

CDcmObjectCommon::CDcmObjectCommon() = default;
CDcmObjectCommon::CDcmObjectCommon(const CDcmObjectCommon& other) = default;
CDcmObjectCommon& CDcmObjectCommon::operator=(const CDcmObjectCommon& other) = default;
CDcmObjectCommon::~CDcmObjectCommon() = default;

DCMRESULT CDcmObjectCommon::Close() {
    ObjectState::Of(*this).Clear();
    return kDcmSuccess;
}

CDcmItem::CDcmItem(int) {}

DCMRESULT CDcmItem::Create(const CString&) {
    return Close();
}

}  // namespace quorvex
