/// Changes of an object that all happen, or none.
#pragma once

#include "quorvex/DicomObject.h"

namespace quorvex {

/// Gives an object its former content back at the end of its scope unless the changes are kept.
class ObjectChange {
public:
    explicit ObjectChange(CDcmObjectCommon& object) : object_(object), before_(object) {}
    ~ObjectChange() {
        if (!isKept_) object_ = before_;
    }
    ObjectChange(const ObjectChange&) = delete;
    ObjectChange& operator=(const ObjectChange&) = delete;

    void Keep() noexcept { isKept_ = true; }

private:
    CDcmObjectCommon& object_;
    const CDcmObjectCommon before_;
    bool isKept_ = false;
};

}  // namespace quorvex
