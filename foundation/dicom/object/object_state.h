/// What an object of the library keeps behind its one pointer.
#pragma once

#include "foundation/dicom/model/data_set.h"
#include "foundation/dicom/object/cursors.h"
#include "quorvex/DicomObject.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quorvex {

/// A copy shares the content, which is copied before it is changed, and reads from the first value
/// on. Reading value by value and failing change the state of an object that is const.
class ObjectState {
public:
    ObjectState();
    ObjectState(const ObjectState& other);
    /// Changes nothing where it fails.
    ObjectState& operator=(const ObjectState& other);
    ~ObjectState() = default;

    [[nodiscard]] static ObjectState& Of(const CDcmCommon& object) noexcept {
        return *object.state_;
    }

    [[nodiscard]] const dicom::DataSet& Content() const noexcept { return *content_; }
    /// To keep the content while host code runs that may change the object.
    [[nodiscard]] const std::shared_ptr<dicom::DataSet>& SharedContent() const noexcept {
        return content_;
    }
    /// The content for changing, after a copy where it is shared.
    [[nodiscard]] dicom::DataSet& Writable();
    /// Takes another content; what was being read value by value starts over.
    void Adopt(std::shared_ptr<dicom::DataSet> content) noexcept;
    void Clear() noexcept;

    /// Where the attribute has been read up to; null where it is not being read value by value.
    [[nodiscard]] dicom::Cursor* FindCursor(std::uint32_t tag) noexcept;
    dicom::Cursor& AddCursor(dicom::Cursor cursor);
    void ForgetCursor(std::uint32_t tag) noexcept {
        if (!cursors_.empty()) EraseCursor(tag);
    }

    /// Gives the result and keeps its reason, which lives as long as the program.
    DCMRESULT Fail(DCMRESULT result, const char* sentence) noexcept {
        errorMessage_ = sentence;
        return result;
    }
    DCMRESULT Missing() noexcept { return Fail(kDcmNotFound, "the attribute is not there"); }
    [[nodiscard]] const char* ErrorMessage() const noexcept { return errorMessage_; }

    CString name;

private:
    void EraseCursor(std::uint32_t tag) noexcept;

    std::shared_ptr<dicom::DataSet> content_;
    std::vector<dicom::Cursor> cursors_;
    const char* errorMessage_ = "";
};

}  // namespace quorvex
