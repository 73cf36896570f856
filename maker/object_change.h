/// Changes of an object that all happen, or none.
#pragma once

#include "foundation/dicom/object/object_state.h"
#include "quorvex/DicomObject.h"

#include <memory>
#include <utility>

namespace quorvex {

/// Gives an object its former content back at the end of its scope unless the changes are kept.
class ObjectChange {
public:
    explicit ObjectChange(CDcmObjectCommon& object) noexcept
        : state_(ObjectState::Of(object)), before_(state_.SharedContent()) {}
    ~ObjectChange() {
        if (!isKept_) state_.Adopt(std::move(before_));
    }
    ObjectChange(const ObjectChange&) = delete;
    ObjectChange& operator=(const ObjectChange&) = delete;

    void Keep() noexcept { isKept_ = true; }

private:
    ObjectState& state_;
    std::shared_ptr<dicom::DataSet> before_;
    bool isKept_ = false;
};

}  // namespace quorvex
