/// A presentation record that releases the blocks which reading puts into it.
#pragma once

#include "quorvex/CXGSPSInfo.h"

namespace quorvex::test {

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

}  // namespace quorvex::test
