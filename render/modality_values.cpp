// CXImageCreator: pixels put through the modality table.
#include "foundation/types/answer.h"
#include "foundation/types/checked_size.h"
#include "quorvex/CXWindowing.h"
#include "render/job_rules.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace quorvex {
namespace {

struct ModalityTable {
    std::vector<std::int32_t> entries;
    int first = 0;

    [[nodiscard]] std::int32_t ValueOf(int stored) const noexcept {
        const std::int64_t last = static_cast<std::int64_t>(entries.size()) - 1;
        const auto index = std::clamp<std::int64_t>(std::int64_t{stored} - first, 0, last);
        return entries[static_cast<std::size_t>(index)];
    }
};

ModalityTable FetchTable(CXWindowing& windowing) {
    ModalityTable table;
    int count = 0;
    windowing.GetValue(CXWindowing::kModalityTableCount, &count, nullptr);
    windowing.GetValue(CXWindowing::kModalityTableFirst, &table.first, nullptr);
    if (count <= 0) return table;
    table.entries.resize(static_cast<std::size_t>(count));
    windowing.GetValue(CXWindowing::kModalityTable, table.entries.data(), nullptr);
    return table;
}

template <class Read, class Stored>
void ReplaceAll(const ModalityTable& table, unsigned char* pixels, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, pixels += sizeof(Stored)) {
        Read value;
        std::memcpy(&value, pixels, sizeof(value));
        const auto replaced = static_cast<Stored>(table.ValueOf(value));
        std::memcpy(pixels, &replaced, sizeof(replaced));
    }
}

}  // namespace

int CXImageCreator::ApplyModalityLUT(CXWindowing* windowing, unsigned char* pixels, CSize size,
                                     int bytesPerPixel) {
    return Answer(kModalityRefused, [&] {
        if (windowing == nullptr) return kJobDone;
        const ModalityTable table = FetchTable(*windowing);
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
