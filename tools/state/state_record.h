/// The presentation of one image, as it is to go into a state.
#pragma once

#include "quorvex/CXGSPSInfo.h"
#include "quorvex/DicomObject.h"
#include "tools/state/state.h"

namespace quorvex::tools {

/// What an image says of itself, changed as the arguments ask. Owns the tables of its record.
class StateRecord {
public:
    StateRecord(CDcmObject& image, const StateArguments& arguments);
    ~StateRecord();
    StateRecord(const StateRecord&) = delete;
    StateRecord& operator=(const StateRecord&) = delete;

    [[nodiscard]] CXGSPSInfo& Info() noexcept { return info_; }

private:
    void Refer(const CDcmObject& image);
    void ChooseWindow(const StateArguments& arguments);
    void ChooseArea(const StateArguments& arguments);
    void ChooseShutter(const ShutterShape& shutter);
    void Annotate(const StateArguments& arguments);

    CXGSPSInfo info_;
};

}  // namespace quorvex::tools
