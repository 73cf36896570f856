#include "foundation/engines/jpeg2000/decoder/codestream/packed_headers.h"

#include <algorithm>

namespace quorvex::j2k {

bool PackedHeaderParts::Add(Bytes content) {
    if (content.empty()) return false;
    parts_.push_back({(group_ << 8) | content[0], content.subspan(1)});
    return true;
}

std::vector<unsigned char> PackedHeaderParts::Join() const {
    std::vector<Part> sorted = parts_;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Part& a, const Part& b) { return a.order < b.order; });
    std::vector<unsigned char> joined;
    for (const Part& part : sorted) {
        joined.insert(joined.end(), part.content.begin(), part.content.end());
    }
    return joined;
}

Bytes PackedHeaderShares::Next() noexcept {
    if (reader_.Left() < 4) return {};
    const std::uint32_t length = reader_.Long();
    return reader_.Take(length);
}

}  // namespace quorvex::j2k
