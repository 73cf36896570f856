#include "foundation/engines/lossless/lossless_scan.h"

#include <algorithm>
#include <numeric>
#include <string_view>

namespace quorvex {
namespace {

using Bytes = std::span<const unsigned char>;

constexpr std::uint8_t kSof3 = 0xC3;
constexpr std::uint8_t kDht = 0xC4;
constexpr std::uint8_t kSos = 0xDA;
constexpr std::uint8_t kDri = 0xDD;
constexpr std::uint8_t kApp0 = 0xE0;
constexpr std::uint8_t kApp14 = 0xEE;
constexpr std::uint8_t kApp15 = 0xEF;
constexpr std::uint8_t kCom = 0xFE;
constexpr int kLongestSide = 65500;  // of the library that reads what is declined here

// One that scans cannot use, for the codes of a lossy process, is skipped.
bool ReadTable(Bytes& content, LosslessScan& scan) noexcept {
    constexpr std::size_t kFixedPart = 17;
    if (content.size() < kFixedPart) return false;
    const unsigned target = content[0];
    const auto counts = content.subspan(1, 16);
    const auto codes = std::accumulate(counts.begin(), counts.end(), std::size_t{0});
    if (target >= scan.tables.size() || codes > kLosslessCategories) return false;
    if (content.size() < kFixedPart + codes) return false;
    const auto categories = content.subspan(kFixedPart, codes);
    const auto isNone = [](unsigned char category) { return category >= kLosslessCategories; };
    if (std::ranges::any_of(categories, isNone)) return false;
    auto& table = scan.tables[target].emplace();
    std::ranges::copy(counts, table.counts.begin() + 1);
    std::ranges::copy(categories, table.categories.begin());
    content = content.subspan(kFixedPart + codes);
    return true;
}

bool ReadTables(Bytes content, LosslessScan& scan) noexcept {
    while (!content.empty()) {
        if (!ReadTable(content, scan)) return false;
    }
    return true;
}

bool ReadInterval(Bytes content, const JpegHeader& header, LosslessScan& scan) noexcept {
    if (content.size() != 2) return false;
    const int interval = (content[0] << 8) | content[1];
    if (header.width == 0 || interval % header.width != 0) return false;
    scan.rowsInInterval = interval / header.width;
    return true;
}

bool ReadScanHeader(Bytes content, const JpegHeader& header, LosslessScan& scan) noexcept {
    const std::size_t components = header.componentCount;
    if (content.size() != 4 + 2 * components || content[0] != components) return false;
    for (std::size_t i = 0; i < components; ++i) {
        const auto table = static_cast<std::uint8_t>(content[2 + 2 * i] >> 4);
        if (content[1 + 2 * i] != header.components[i].id || table >= scan.tables.size()) {
            return false;
        }
        if (!scan.tables[table]) return false;
        scan.tableOf[i] = table;
    }
    const auto selection = content.last(3);
    scan.pointTransform = selection[2];
    return selection[0] == 1 && selection[1] == 0 && selection[2] < header.precision;
}

// Only the library counts warnings about them.
bool IsUsualApplication(std::uint8_t marker, Bytes content) noexcept {
    const auto beginsWith = [content](std::string_view name) {
        return content.size() >= name.size() &&
               std::equal(name.begin(), name.end(), content.begin());
    };
    if (marker == kApp0 && beginsWith("JFIF")) return content.size() >= 14 && content[5] == 1;
    if (marker == kApp14 && beginsWith("Adobe")) return content.size() >= 12 && content[11] <= 2;
    return true;
}

bool ReadSegment(std::uint8_t marker, Bytes content, const JpegHeader& header,
                 LosslessScan& scan) noexcept {
    if (marker == kSof3) return content.size() == 6 + 3 * std::size_t{header.componentCount};
    if (marker == kDht) return ReadTables(content, scan);
    if (marker == kDri) return ReadInterval(content, header, scan);
    if (marker == kSos) return ReadScanHeader(content, header, scan);
    const bool isApplication = marker >= kApp0 && marker <= kApp15;
    return marker == kCom || (isApplication && IsUsualApplication(marker, content));
}

bool IsOurs(const JpegHeader& header) noexcept {
    if (header.sofMarker != kSof3 || std::max(header.width, header.height) > kLongestSide) {
        return false;
    }
    if (header.componentCount != 1 && header.componentCount != 3) return false;
    const auto& c = header.components;
    if (header.componentCount == 3 &&
        (c[0].id == c[1].id || c[1].id == c[2].id || c[0].id == c[2].id)) {
        return false;
    }
    return std::all_of(c.begin(), c.begin() + header.componentCount, [](const JpegComponent& one) {
        return one.horizontal == 1 && one.vertical == 1;
    });
}

}  // namespace

std::optional<LosslessScan> ReadLosslessScan(Bytes head, const JpegHeader& header) noexcept {
    if (!IsOurs(header)) return std::nullopt;
    LosslessScan scan;
    int frames = 0;
    for (std::size_t place = 2; place + 4 <= head.size();) {
        const std::uint8_t marker = head[place + 1];
        const std::size_t length = (std::size_t{head[place + 2]} << 8) | head[place + 3];
        if (head[place] != 0xFF || length < 2 || head.size() - place - 2 < length) break;
        frames += marker == kSof3 ? 1 : 0;
        if (!ReadSegment(marker, head.subspan(place + 4, length - 2), header, scan)) break;
        place += 2 + length;
        scan.dataPlace = place;
        if (marker == kSos) return frames == 1 ? std::optional(scan) : std::nullopt;
    }
    return std::nullopt;
}

}  // namespace quorvex
