#include "presentation/one_modality.h"

#include "quorvex/CXGSPSObject.h"

#include <algorithm>
#include <cstddef>

namespace quorvex {
namespace {

struct Rescale {
    double slope = 1.0;
    double intercept = 0.0;
    friend bool operator==(const Rescale&, const Rescale&) = default;
};

Rescale RescaleOf(const CXGSPSInfo& record) {
    if (record.rescaleSlope == 0.0) return {};
    return {record.rescaleSlope, record.rescaleIntercept};
}

bool HaveOneTable(const CXGSPSInfo& one, const CXGSPSInfo& other) {
    constexpr std::size_t kFullTable = 65536;
    const bool isSameForm = one.modalityLUTCount == other.modalityLUTCount &&
                            one.modalityLUTFirst == other.modalityLUTFirst;
    const std::size_t entries =
        one.modalityLUTCount == 0 ? kFullTable : static_cast<std::size_t>(one.modalityLUTCount);
    return isSameForm &&
           std::equal(one.modalityLUTData, one.modalityLUTData + entries, other.modalityLUTData);
}

}  // namespace

bool KnowsModality(const CXGSPSInfo& record) noexcept {
    const bool isRead = record.pixelBitDepth != 0 || record.state != nullptr;
    return isRead || record.rescaleSlope != 0.0 || record.modalityLUTData != nullptr;
}

bool CXGSPSObject::HaveOneModality(const CXGSPSInfo& one, const CXGSPSInfo& other) {
    if (!KnowsModality(one) || !KnowsModality(other)) return true;
    const bool hasTable = one.modalityLUTData != nullptr;
    if (hasTable != (other.modalityLUTData != nullptr)) return false;
    return hasTable ? HaveOneTable(one, other) : RescaleOf(one) == RescaleOf(other);
}

}  // namespace quorvex
