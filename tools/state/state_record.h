/// The presentation of one image, as it is to go into a state.
#pragma once

#include "quorvex/CXGSPSInfo.h"
#include "quorvex/DicomObject.h"
#include "tools/verbs.h"

namespace quorvex::tools {

/// What an image says of itself, with the wishes laid over it. Owns the tables of its record.
class StateRecord {
public:
    StateRecord(CDcmObject& image, const StateArguments& wishes);
    ~StateRecord();
    StateRecord(const StateRecord&) = delete;
    StateRecord& operator=(const StateRecord&) = delete;

    [[nodiscard]] CXGSPSInfo& Info() noexcept { return info_; }

private:
    void Refer(const CDcmObject& image);
    void ChooseWindow(const CDcmObject& image, const StateArguments& wishes);
    void ChooseArea(const StateArguments& wishes);
    void ChooseShutter(const ShutterWish& wish);
    void Annotate(const StateArguments& wishes);

    CXGSPSInfo info_;
};

}  // namespace quorvex::tools
