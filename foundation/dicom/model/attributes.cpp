#include "foundation/dicom/model/attributes.h"

#include <algorithm>

namespace quorvex {
namespace {

struct CollectedBytes {
    std::vector<unsigned char> bytes;
    std::size_t most = 0;

    static MC_STATUS Take(int /*messageId*/, std::uint32_t /*tag*/, void* user, int length,
                          void* data, int /*first*/, int /*last*/) {
        auto& value = *static_cast<CollectedBytes*>(user);
        if (length <= 0) return kMcContinue;
        const std::size_t room = value.most - value.bytes.size();
        const auto* const piece = static_cast<const unsigned char*>(data);
        value.bytes.insert(value.bytes.end(), piece,
                           piece + std::min(room, static_cast<std::size_t>(length)));
        return kMcContinue;
    }
};

}  // namespace

std::optional<std::vector<unsigned char>> ReadBytes(const CDcmObjectCommon& object,
                                                    std::uint32_t tag, std::size_t most) {
    CollectedBytes value;
    value.most = most;
    if (object.GetValue(tag, &value, CollectedBytes::Take) != kDcmSuccess) return std::nullopt;
    return std::move(value.bytes);
}

}  // namespace quorvex
