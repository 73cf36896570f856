#include "foundation/types/limits.h"

#include <array>

namespace quorvex {
namespace {

thread_local Limit latest = Limit::kNone;

struct LimitRow {
    Limit limit;
    std::uint64_t value;
    const char* sentence;
};
constexpr std::array kRows = {
    LimitRow{Limit::kNone, 0, ""},
    LimitRow{Limit::kLargestBlock, kLargestBlock, "it asks for more than 4 GiB of memory at once"},
    LimitRow{Limit::kLargestPicture, kMostPicturePerByte,
             "it claims a picture of more than 64 MiB that its few bytes cannot hold"},
    LimitRow{Limit::kLargestObject, kMostObjectPerByte,
             "its frames would take more than 512 MiB, which its few bytes cannot hold"},
    LimitRow{Limit::kDeepestNesting, kDeepestNesting,
             "its sequences are nested deeper than 64 levels"},
    LimitRow{Limit::kMostParts, kMostParts,
             "it has more than 33,554,432 elements, items and fragments"},
    LimitRow{Limit::kMostFrames, kMostFrames, "it has more than 16,777,216 frames"},
    LimitRow{Limit::kLongestValue, kLongestValue,
             "one of its values is longer than 4,294,967,294 bytes"},
    LimitRow{Limit::kMostInflated, kMostInflatedPerByte,
             "it inflates to more than 64 MiB and 400 times its size"},
    LimitRow{Limit::kMostScans, kMostJpegScans, "its JPEG stream has more than 128 scans"},
    LimitRow{Limit::kJpeg2000Work, kMostPacketsPerByte,
             "its JPEG 2000 stream announces more than its few bytes can hold"},
    LimitRow{Limit::kMostSegments, kMostRleSegments, "its RLE frame has more than 15 segments"},
    LimitRow{Limit::kPolygonCrossings, kMostPolygonCrossings,
             "its polygon crosses the rows of the image more than 67,108,864 times"},
    LimitRow{Limit::kPaletteSegments, kMostPaletteSegments,
             "its palette is expanded from more than 262,144 segments"},
};

constexpr bool AreInOrder() {
    for (std::size_t i = 0; i < kRows.size(); ++i) {
        if (static_cast<std::size_t>(kRows[i].limit) != i) return false;
    }
    return true;
}
static_assert(AreInOrder());

const LimitRow& RowOf(Limit limit) noexcept {
    const auto index = static_cast<std::size_t>(limit);
    return index < kRows.size() ? kRows[index] : kRows[0];
}

}  // namespace

bool RefuseBy(Limit limit) noexcept {
    latest = limit;
    return false;
}

Limit LatestLimit() noexcept {
    return latest;
}

void ForgetLimit() noexcept {
    latest = Limit::kNone;
}

std::uint64_t LimitValue(Limit limit) noexcept {
    return RowOf(limit).value;
}

const char* LimitSentence(Limit limit) noexcept {
    return RowOf(limit).sentence;
}

}  // namespace quorvex
