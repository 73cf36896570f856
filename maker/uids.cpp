#include "maker/uids.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <string_view>

namespace quorvex {
namespace {

constexpr std::size_t kLongestUid = 64;
constexpr std::size_t kFewestDigits = 20;  ///< of 64 random bits

/// A number of 128 bits, the highest word first.
using Number = std::array<std::uint32_t, 4>;

Number RandomUuid() {
    std::random_device source;
    Number number{};
    std::ranges::generate(number, std::ref(source));
    number[1] = (number[1] & 0xFFFF0FFFU) | 0x00004000U;  // version 4
    number[2] = (number[2] & 0x3FFFFFFFU) | 0x80000000U;  // the usual variant
    return number;
}

/// Divides by ten; gives the remainder.
std::uint32_t TakeDigit(Number& number) {
    std::uint64_t rest = 0;
    for (std::uint32_t& word : number) {
        rest = rest << 32U | word;
        word = static_cast<std::uint32_t>(rest / 10);
        rest %= 10;
    }
    return static_cast<std::uint32_t>(rest);
}

/// In decimal, the lowest digits of it; it begins with none that is 0.
std::string DigitsOf(Number number, std::size_t most) {
    std::string digits;
    while (digits.size() < most && std::ranges::any_of(number, [](auto word) { return word != 0; }))
        digits.insert(digits.begin(), static_cast<char>('0' + TakeDigit(number)));
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
    return digits.empty() ? "0" : digits;
}

bool IsComponent(std::string_view text) {
    const bool isNumber =
        !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
    return isNumber && (text.size() == 1 || text.front() != '0');
}

bool IsRoot(std::string_view text) {
    constexpr std::string_view kFirst = "012";
    if (text.empty() || kFirst.find(text.front()) == std::string_view::npos) return false;
    for (;;) {
        const std::size_t dot = text.find('.');
        if (!IsComponent(text.substr(0, dot))) return false;
        if (dot == std::string_view::npos) return true;
        text.remove_prefix(dot + 1);
    }
}

}  // namespace

std::optional<CString> NewUid(const CString& root) {
    constexpr std::string_view kOfUuids = "2.25";
    const std::string above = root.IsEmpty() ? std::string(kOfUuids) : root.ToUtf8();
    if (!IsRoot(above) || above.size() + 1 + kFewestDigits > kLongestUid) return std::nullopt;
    return CString(above + "." + DigitsOf(RandomUuid(), kLongestUid - 1 - above.size()));
}

bool IsValidUid(const CString& uid) {
    const std::string text = uid.ToUtf8();
    return text.size() <= kLongestUid && text.find('.') != std::string::npos && IsRoot(text);
}

}  // namespace quorvex
