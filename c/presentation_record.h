/// A presentation record with the blocks that belong to its holder.
#pragma once

#include "quorvex/CXGSPSInfo.h"

namespace quorvex::c {

class PresentationRecord {
public:
    PresentationRecord() = default;
    PresentationRecord(const PresentationRecord&) = delete;
    PresentationRecord& operator=(const PresentationRecord&) = delete;
    ~PresentationRecord() {
        delete[] info_.modalityLUTData;
        ReleaseVoiTable();
        delete[] info_.presentationLUTData;
        delete[] info_.shutterMask;
        delete[] info_.maskFrameRanges;
        delete[] info_.maskFrameNumbers;
    }
    void ReleaseVoiTable() noexcept {
        delete[] info_.voiLUTData;
        info_.voiLUTData = nullptr;
    }
    [[nodiscard]] CXGSPSInfo& Info() noexcept { return info_; }

private:
    CXGSPSInfo info_;
};

}  // namespace quorvex::c
