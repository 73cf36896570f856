#include "foundation/dicom/object/cursors.h"
#include "foundation/dicom/object/value_setting.h"
#include "foundation/types/answer.h"
#include "quorvex/DicomObject.h"

#include <atomic>

namespace quorvex {
namespace {

using dicom::DataSet;
using dicom::Number;

bool Set(DataSet& dataSet, std::uint32_t tag, const Number& number, bool isNext) {
    return dicom::SetNumber(dataSet, tag, number, isNext);
}

bool Set(DataSet& dataSet, std::uint32_t tag, const CString& text, bool isNext) {
    return dicom::SetText(dataSet, tag, text.ToUtf8(), isNext);
}

}  // namespace

DataSet& CDcmObjectCommon::Writable() {
    if (dataSet_.use_count() > 1) dataSet_ = std::make_shared<DataSet>(*dataSet_);
    // Other owners may have let go in other threads: what they read came before what is written now.
    std::atomic_thread_fence(std::memory_order_acquire);
    return *dataSet_;
}

template <class Value>
DCMRESULT CDcmObjectCommon::Write(std::uint32_t tag, const Value& value, bool isNext) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        if (cursors_ != nullptr) cursors_->Forget(tag);
        if (Set(Writable(), tag, value, isNext)) return kDcmSuccess;
        SetErrorMessage("the attribute cannot have this value");
        return kDcmFailure;
    });
}

DCMRESULT CDcmObjectCommon::WriteItem(std::uint32_t tag, const CDcmItem* item, bool isNext) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        if (item == nullptr) return kDcmFailure;
        if (cursors_ != nullptr) cursors_->Forget(tag);
        // Held here, so that an item put into itself is put there as it was.
        const std::shared_ptr<DataSet> content = item->dataSet_;
        if (dicom::SetItem(Writable(), tag, content, isNext)) return kDcmSuccess;
        SetErrorMessage("the sequences would be nested too deeply");
        return kDcmFailure;
    });
}

DCMRESULT CDcmObjectCommon::SetValue(std::uint32_t tag, const CString& value, int) {
    return Write(tag, value, false);
}
DCMRESULT CDcmObjectCommon::SetValue(std::uint32_t tag, const char* value) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&] { return Write(tag, CString(value), false); });
}
DCMRESULT CDcmObjectCommon::SetValue(std::uint32_t tag, unsigned short value) {
    return Write(tag, Number::Whole(value), false);
}
DCMRESULT CDcmObjectCommon::SetValue(std::uint32_t tag, int value) {
    return Write(tag, Number::Whole(value), false);
}
DCMRESULT CDcmObjectCommon::SetValue(std::uint32_t tag, long value) {
    return Write(tag, Number::Whole(value), false);
}
DCMRESULT CDcmObjectCommon::SetValue(std::uint32_t tag, double value) {
    return Write(tag, Number::Real(value), false);
}
DCMRESULT CDcmObjectCommon::SetValue(std::uint32_t tag, CDcmItem* item) {
    return WriteItem(tag, item, false);
}

DCMRESULT CDcmObjectCommon::SetNextValue(std::uint32_t tag, const CString& value, int) {
    return Write(tag, value, true);
}
DCMRESULT CDcmObjectCommon::SetNextValue(std::uint32_t tag, const char* value) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&] { return Write(tag, CString(value), true); });
}
DCMRESULT CDcmObjectCommon::SetNextValue(std::uint32_t tag, unsigned short value) {
    return Write(tag, Number::Whole(value), true);
}
DCMRESULT CDcmObjectCommon::SetNextValue(std::uint32_t tag, int value) {
    return Write(tag, Number::Whole(value), true);
}
DCMRESULT CDcmObjectCommon::SetNextValue(std::uint32_t tag, long value) {
    return Write(tag, Number::Whole(value), true);
}
DCMRESULT CDcmObjectCommon::SetNextValue(std::uint32_t tag, double value) {
    return Write(tag, Number::Real(value), true);
}
DCMRESULT CDcmObjectCommon::SetNextValue(std::uint32_t tag, CDcmItem* item) {
    return WriteItem(tag, item, true);
}

DCMRESULT CDcmObjectCommon::RemoveValue(std::uint32_t tag) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        if (cursors_ != nullptr) cursors_->Forget(tag);
        if (dataSet_->Find(tag) != nullptr) Writable().Remove(tag);
        return kDcmSuccess;
    });
}

}  // namespace quorvex
