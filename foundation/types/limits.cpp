#include "foundation/types/limits.h"

#include <array>
#include <string_view>

namespace quorvex {
namespace {

thread_local Limit latest = Limit::kNone;

/// A number of bytes that is written as whole MiB or GiB.
struct Bytes {
    std::uint64_t count;
};

/// A sentence whose numbers are those of the limits. It is put together by the compiler.
class Sentence {
public:
    template <class... Parts>
    constexpr explicit Sentence(Parts... parts) {
        (Add(parts), ...);
    }
    [[nodiscard]] constexpr const char* Text() const noexcept { return text_.data(); }

private:
    constexpr void Add(std::string_view words) {
        for (const char letter : words) text_.at(length_++) = letter;
    }
    constexpr void Add(const char* words) { Add(std::string_view(words)); }
    /// With a comma between thousands.
    constexpr void Add(std::uint64_t number) {
        if (number >= 1000) {
            Add(number / 1000);
            Add(",");
            AddDigit(number / 100 % 10);
            AddDigit(number / 10 % 10);
        } else if (number >= 10) {
            Add(number / 10);
        }
        AddDigit(number % 10);
    }
    constexpr void Add(std::int64_t number) { Add(static_cast<std::uint64_t>(number)); }
    constexpr void Add(int number) { Add(static_cast<std::uint64_t>(number)); }
    constexpr void Add(Bytes bytes) {
        constexpr unsigned kMebi = 20;
        constexpr unsigned kGibi = 30;
        const bool isGibi = bytes.count >> kGibi != 0;
        Add(bytes.count >> (isGibi ? kGibi : kMebi));
        Add(isGibi ? " GiB" : " MiB");
    }
    constexpr void AddDigit(std::uint64_t digit) {
        text_.at(length_++) = static_cast<char>('0' + digit);
    }

    std::array<char, 96> text_{};  // ends with a 0
    std::size_t length_ = 0;
};

struct LimitRow {
    Limit limit;
    std::uint64_t value;
    Sentence sentence;
};
constexpr std::array kRows = {
    LimitRow{Limit::kNone, 0, Sentence()},
    LimitRow{Limit::kLargestBlock, kLargestBlock,
             Sentence("it asks for more than ", Bytes{kLargestBlock}, " of memory at once")},
    LimitRow{Limit::kLargestPicture, kMostPicturePerByte,
             Sentence("it claims a picture of more than ", Bytes{kPictureAllowance},
                      " that its few bytes cannot hold")},
    LimitRow{Limit::kLargestObject, kMostObjectPerByte,
             Sentence("its frames would take more than ", Bytes{kObjectAllowance},
                      ", which its few bytes cannot hold")},
    LimitRow{Limit::kDeepestNesting, kDeepestNesting,
             Sentence("its sequences are nested deeper than ", kDeepestNesting, " levels")},
    LimitRow{Limit::kMostParts, kMostParts,
             Sentence("it has more than ", kMostParts, " elements, items and fragments")},
    LimitRow{Limit::kMostFrames, kMostFrames,
             Sentence("it has more than ", kMostFrames, " frames")},
    LimitRow{Limit::kLongestValue, kLongestValue,
             Sentence("one of its values is longer than ", kLongestValue, " bytes")},
    LimitRow{Limit::kMostInflated, kMostInflatedPerByte,
             Sentence("it inflates to more than ", Bytes{kInflatedAllowance}, " and ",
                      kMostInflatedPerByte, " times its size")},
    LimitRow{Limit::kMostScans, kMostJpegScans,
             Sentence("its JPEG stream has more than ", kMostJpegScans, " scans")},
    LimitRow{Limit::kJpeg2000Work, kMostPacketsPerByte,
             Sentence("its JPEG 2000 stream announces more than its few bytes can hold")},
    LimitRow{Limit::kMostSegments, kMostRleSegments,
             Sentence("its RLE frame has more than ", kMostRleSegments, " segments")},
    LimitRow{Limit::kPolygonCrossings, kMostPolygonCrossings,
             Sentence("its polygon crosses the rows of the image more than ", kMostPolygonCrossings,
                      " times")},
    LimitRow{
        Limit::kPaletteSegments, kMostPaletteSegments,
        Sentence("its palette is expanded from more than ", kMostPaletteSegments, " segments")},
    LimitRow{Limit::kMemory, 0, Sentence("there is not enough memory")},
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
    return RowOf(limit).sentence.Text();
}

}  // namespace quorvex
