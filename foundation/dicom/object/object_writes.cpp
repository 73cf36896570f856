#include "foundation/dicom/object/object_state.h"
#include "foundation/dicom/object/value_setting.h"
#include "foundation/types/answer.h"
#include "quorvex/DicomObject.h"

#include <memory>

namespace quorvex {
namespace {

using dicom::DataSet;
using dicom::Number;

bool Set(DataSet& dataSet, std::uint32_t tag, const Number& number, bool isNext) {
    return dicom::SetNumber(dataSet, tag, number, isNext);
}

bool Set(DataSet& dataSet, std::uint32_t tag, const CString& text, bool isNext) {
    return dicom::SetText(dataSet, tag, text.ToValidUtf8(), isNext);
}

template <class Value>
DCMRESULT Write(ObjectState& state, std::uint32_t tag, const Value& value, bool isNext) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        state.ForgetCursor(tag);
        if (Set(state.Writable(), tag, value, isNext)) return kDcmSuccess;
        return state.Fail(kDcmFailure, "the attribute cannot have this value");
    });
}

/// A text that a host gives: it may be too long for the memory that is left.
DCMRESULT WriteText(ObjectState& state, std::uint32_t tag, const char* value, bool isNext) {
    return Answer(DCMRESULT{kDcmOutOfMemory},
                  [&] { return Write(state, tag, CString(value), isNext); });
}

DCMRESULT WriteItem(ObjectState& state, std::uint32_t tag, const CDcmItem* item, bool isNext) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        if (item == nullptr) return kDcmFailure;
        state.ForgetCursor(tag);
        // Kept here, so that an item put into itself is put there as it was.
        const std::shared_ptr<DataSet> content = ObjectState::Of(*item).SharedContent();
        if (dicom::SetItem(state.Writable(), tag, content, isNext)) return kDcmSuccess;
        return state.Fail(kDcmFailure, "the sequences would be nested too deeply");
    });
}

}  // namespace

DCMRESULT CDcmObjectCommon::SetValue(std::uint32_t tag, const CString& value, int) {
    return Write(ObjectState::Of(*this), tag, value, false);
}
DCMRESULT CDcmObjectCommon::SetValue(std::uint32_t tag, const char* value) {
    return WriteText(ObjectState::Of(*this), tag, value, false);
}
DCMRESULT CDcmObjectCommon::SetValue(std::uint32_t tag, unsigned short value) {
    return Write(ObjectState::Of(*this), tag, Number::Whole(value), false);
}
DCMRESULT CDcmObjectCommon::SetValue(std::uint32_t tag, int value) {
    return Write(ObjectState::Of(*this), tag, Number::Whole(value), false);
}
DCMRESULT CDcmObjectCommon::SetValue(std::uint32_t tag, long value) {
    return Write(ObjectState::Of(*this), tag, Number::Whole(value), false);
}
DCMRESULT CDcmObjectCommon::SetValue(std::uint32_t tag, double value) {
    return Write(ObjectState::Of(*this), tag, Number::Real(value), false);
}
DCMRESULT CDcmObjectCommon::SetValue(std::uint32_t tag, CDcmItem* item) {
    return WriteItem(ObjectState::Of(*this), tag, item, false);
}

DCMRESULT CDcmObjectCommon::SetNextValue(std::uint32_t tag, const CString& value, int) {
    return Write(ObjectState::Of(*this), tag, value, true);
}
DCMRESULT CDcmObjectCommon::SetNextValue(std::uint32_t tag, const char* value) {
    return WriteText(ObjectState::Of(*this), tag, value, true);
}
DCMRESULT CDcmObjectCommon::SetNextValue(std::uint32_t tag, unsigned short value) {
    return Write(ObjectState::Of(*this), tag, Number::Whole(value), true);
}
DCMRESULT CDcmObjectCommon::SetNextValue(std::uint32_t tag, int value) {
    return Write(ObjectState::Of(*this), tag, Number::Whole(value), true);
}
DCMRESULT CDcmObjectCommon::SetNextValue(std::uint32_t tag, long value) {
    return Write(ObjectState::Of(*this), tag, Number::Whole(value), true);
}
DCMRESULT CDcmObjectCommon::SetNextValue(std::uint32_t tag, double value) {
    return Write(ObjectState::Of(*this), tag, Number::Real(value), true);
}
DCMRESULT CDcmObjectCommon::SetNextValue(std::uint32_t tag, CDcmItem* item) {
    return WriteItem(ObjectState::Of(*this), tag, item, true);
}

DCMRESULT CDcmObjectCommon::RemoveValue(std::uint32_t tag) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        auto& state = ObjectState::Of(*this);
        state.ForgetCursor(tag);
        if (state.Content().Find(tag) != nullptr) state.Writable().Remove(tag);
        return kDcmSuccess;
    });
}

}  // namespace quorvex
