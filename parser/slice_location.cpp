#include "foundation/dicom/model/attributes.h"
#include "foundation/types/answer.h"
#include "quorvex/CxDcmParser.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace quorvex {
namespace {

using Position = std::array<double, 3>;
using Orientation = std::array<double, 6>;
constexpr Orientation kDefaultOrientation = {1, 0, 0, 0, 1, 0};

/// The number that a text begins with, behind blanks.
std::optional<double> ToNumber(const std::string& text) {
    std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return std::nullopt;
    if (text[first] == '+') ++first;
    double value = 0;
    const auto [end, error] =
        std::from_chars(text.data() + first, text.data() + text.size(), value);
    (void)end;
    if (error != std::errc{} || !std::isfinite(value)) return std::nullopt;
    return value;
}

/// The texts of the first `most` values.
std::vector<std::string> Texts(const CDcmObject& object, std::uint32_t tag, std::size_t most) {
    std::vector<std::string> texts;
    ForEachValue<CString>(object, tag, [&](const CString& text) {
        if (texts.size() < most) texts.push_back(text.ToUtf8());
    });
    return texts;
}

template <std::size_t Count>
std::optional<std::array<double, Count>> ToNumbers(const std::vector<std::string>& texts) {
    if (texts.size() != Count) return std::nullopt;
    std::array<double, Count> numbers{};
    for (std::size_t i = 0; i < Count; ++i) {
        const auto number = ToNumber(texts[i]);
        if (!number) return std::nullopt;
        numbers[i] = *number;
    }
    return numbers;
}

std::vector<std::string> SplitAtBackslashes(const std::string& text) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == '\\') {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

Orientation ReadOrientation(const CDcmObject& object) {
    auto texts = Texts(object, tag::kImageOrientationPatient, 7);
    if (texts.size() == 1) texts = SplitAtBackslashes(texts.front());
    return ToNumbers<6>(texts).value_or(kDefaultOrientation);
}

/// 0, 1 or 2: the axis of the largest part. Of two equal first parts the later one is taken, a
/// third one only when it is larger.
std::size_t MainAxis(const Orientation& o, std::size_t first) {
    const double x = std::fabs(o[first]);
    const double y = std::fabs(o[first + 1]);
    const double z = std::fabs(o[first + 2]);
    const std::size_t axis = y >= x ? 1 : 0;
    return z > std::max(x, y) ? 2 : axis;
}

/// The position's part across the slice, by the axes of row and column.
constexpr std::size_t kAcross[3][3] = {{2, 2, 1}, {2, 2, 0}, {1, 0, 2}};

std::optional<double> FindLocation(const CDcmObject& object) {
    const auto texts = Texts(object, tag::kImagePositionPatient, 3);
    const auto position = ToNumbers<3>(texts);
    if (position) {
        const Orientation orientation = ReadOrientation(object);
        return (*position)[kAcross[MainAxis(orientation, 0)][MainAxis(orientation, 3)]];
    }
    const auto location = Read<CString>(object, tag::kSliceLocation);
    return location ? ToNumber(location->ToUtf8()) : std::nullopt;
}

}  // namespace

int CxDcmParser::GetSliceLocation(CDcmObject* object, double& location) {
    return Answer(0, [&] {
        if (object == nullptr) return 0;
        const auto found = FindLocation(*object);
        if (!found) return 0;
        location = *found;
        return 1;
    });
}

}  // namespace quorvex
