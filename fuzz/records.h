/// Presentation records that clean up after themselves.
#pragma once

#include "quorvex/CXGSPSInfo.h"

namespace quorvex::fuzz {

struct Record : CXGSPSInfo {
    Record() = default;
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;
    ~Record() {
        delete[] modalityLUTData;
        delete[] voiLUTData;
        delete[] presentationLUTData;
        delete[] shutterMask;
        delete[] maskFrameRanges;
        delete[] maskFrameNumbers;
    }
};

}  // namespace quorvex::fuzz
