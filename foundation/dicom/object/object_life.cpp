#include "foundation/dicom/model/data_set.h"
#include "foundation/dicom/object/cursors.h"
#include "foundation/types/answer.h"
#include "quorvex/DicomObject.h"

#include <utility>

namespace quorvex {

CDcmCommon::~CDcmCommon() = default;

CString CDcmCommon::GetErrorMessage() const {
    return Answer(CString(), [&] { return CString(errorMessage_); });
}

void CDcmCommon::SetErrorMessage(const char* sentence) const noexcept {
    errorMessage_ = sentence;
}

CDcmObjectCommon::CDcmObjectCommon() : dataSet_(std::make_shared<dicom::DataSet>()) {}

CDcmObjectCommon::CDcmObjectCommon(std::shared_ptr<dicom::DataSet> dataSet)
    : dataSet_(std::move(dataSet)) {}

CDcmObjectCommon::CDcmObjectCommon(const CDcmObjectCommon& other)
    : CDcmCommon(other), dataSet_(other.dataSet_) {}

CDcmObjectCommon& CDcmObjectCommon::operator=(const CDcmObjectCommon& other) {
    CDcmCommon::operator=(other);
    Adopt(other.dataSet_);
    return *this;
}

CDcmObjectCommon::~CDcmObjectCommon() = default;

void CDcmObjectCommon::Adopt(std::shared_ptr<dicom::DataSet> dataSet) noexcept {
    dataSet_ = std::move(dataSet);
    cursors_.reset();
}

DCMRESULT CDcmObjectCommon::Close() {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        Adopt(std::make_shared<dicom::DataSet>());
        return kDcmSuccess;
    });
}

CDcmItem::CDcmItem(int) {}

DCMRESULT CDcmItem::Create(const CString&) {
    return Close();
}

}  // namespace quorvex
