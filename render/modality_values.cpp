// CXImageCreator: pixels put through the modality table.
#include "foundation/types/answer.h"
#include "foundation/types/checked_size.h"
#include "render/job_rules.h"
#include "windowing/table_snapshot.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace quorvex {
namespace {

std::int32_t ValueOf(const ModalityTableSnapshot& table, int stored) noexcept {
    const std::int64_t last = static_cast<std::int64_t>(table.entries.size()) - 1;
    const auto index = std::clamp<std::int64_t>(std::int64_t{stored} - table.first, 0, last);
    return table.entries[static_cast<std::size_t>(index)];
}

template <class Read, class Stored>
void ReplaceAll(const ModalityTableSnapshot& table, unsigned char* pixels, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, pixels += sizeof(Stored)) {
        Read value;
        std::memcpy(&value, pixels, sizeof(value));
        const auto replaced = static_cast<Stored>(ValueOf(table, value));
        std::memcpy(pixels, &replaced, sizeof(replaced));
    }
}

}  // namespace

int CXImageCreator::ApplyModalityLUT(CXWindowing* windowing, unsigned char* pixels, CSize size,
                                     int bytesPerPixel) {
    return Answer(kModalityRefused, [&] {
        if (windowing == nullptr) return kJobDone;
        const ModalityTableSnapshot table = WindowingReader::ModalityTable(*windowing);
        if (table.entries.empty()) return kJobDone;
        const auto count = CheckedProduct(std::max(size.cx, 0), std::max(size.cy, 0));
        if (pixels == nullptr || !count) return kModalityRefused;
        switch (bytesPerPixel) {
            case 1:
                ReplaceAll<std::uint8_t, std::uint8_t>(table, pixels, *count);
                break;
            case 2:
                ReplaceAll<std::int16_t, std::uint16_t>(table, pixels, *count);
                break;
            default:
                return kModalityRefused;
        }
        return kJobDone;
    });
}

}  // namespace quorvex
