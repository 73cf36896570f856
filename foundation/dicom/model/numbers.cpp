#include "foundation/dicom/model/numbers.h"

#include <array>
#include <charconv>

namespace quorvex::dicom {
namespace {

constexpr std::size_t kDecimalStringLength = 16;
constexpr int kMostDigits = 17;
constexpr std::size_t kNumberText = 40;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string_view WithoutBlanks(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    return text;
}

/// Past "inf", "nan" and the like, which the library's reading would take.
bool BeginsNumber(std::string_view text) {
    if (!text.empty() && text.front() == '-') text.remove_prefix(1);
    if (!text.empty() && text.front() == '.') text.remove_prefix(1);
    return !text.empty() && IsDigit(text.front());
}

}  // namespace

std::optional<Number> LeadingNumber(std::string_view text) noexcept {
    text = WithoutBlanks(text);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return std::nullopt;
    }
    if (!BeginsNumber(text)) return std::nullopt;
    const char* end = text.data() + text.size();
    std::int64_t whole = 0;
    const auto [wholeEnd, wholeError] = std::from_chars(text.data(), end, whole);
    const bool isWhole = wholeError == std::errc() &&
                         (wholeEnd == end || (*wholeEnd != '.' && (*wholeEnd | 0x20) != 'e'));
    if (isWhole) return Number::Whole(whole);
    double real = 0;
    const auto [realEnd, realError] = std::from_chars(text.data(), end, real);
    if (realError == std::errc()) return Number::Real(real);
    return std::nullopt;  // beyond what a double holds
}

std::optional<std::uint32_t> TagOfText(std::string_view text) noexcept {
    constexpr std::size_t kTagDigits = 8;
    std::array<char, kTagDigits> digits{};
    std::size_t count = 0;
    for (const char c : text) {
        if (c == '(' || c == ')' || c == ',' || c == ' ') continue;
        if (count == kTagDigits) return std::nullopt;
        digits[count++] = c;
    }
    std::uint32_t tag = 0;
    const char* end = digits.data() + count;
    const auto [stop, error] = std::from_chars(digits.data(), end, tag, 16);
    const bool isGood = count == kTagDigits && stop == end && error == std::errc();
    return isGood ? std::optional(tag) : std::nullopt;
}

std::string TextOfTag(std::uint32_t tag) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text = "(0000,0000)";
    std::size_t place = text.size() - 1;
    for (int digit = 0; digit < 8; ++digit, tag >>= 4U) {
        place -= text[place - 1] == ',' ? 2 : 1;
        text[place] = kDigits[tag & 0xFU];
    }
    return text;
}

std::string TextOfNumber(const Number& number) {
    std::array<char, kNumberText> text{};
    const auto end = number.isReal
                         ? std::to_chars(text.data(), text.data() + text.size(), number.real)
                         : std::to_chars(text.data(), text.data() + text.size(), number.whole);
    return {text.data(), end.ptr};
}

std::string TextOfFloat(float number) {
    std::array<char, kNumberText> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

std::string DecimalString(const Number& number) {
    std::string text = TextOfNumber(number);
    for (int digits = kMostDigits; text.size() > kDecimalStringLength && digits > 0; --digits) {
        std::array<char, kNumberText> shorter{};
        const auto end = std::to_chars(shorter.data(), shorter.data() + shorter.size(),
                                       number.AsReal(), std::chars_format::general, digits);
        text.assign(shorter.data(), end.ptr);
    }
    return text;
}

}  // namespace quorvex::dicom
