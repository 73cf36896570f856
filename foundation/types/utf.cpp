#include "foundation/types/utf.h"

#include <algorithm>
#include <cstddef>

namespace quorvex {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kNoCharacter = 0x110000;
/// Added to a byte above 127 that is no part of UTF-8, it gives the surrogate that stands for it.
constexpr char32_t kByteBase = 0xDC00;

constexpr bool IsSurrogate(char32_t c) {
    return c >= 0xD800 && c <= 0xDFFF;
}
constexpr bool StandsForByte(char32_t c) {
    return c >= kByteBase + 0x80 && c <= kByteBase + 0xFF;
}
constexpr bool IsContinuation(unsigned char c) {
    return (c & 0xC0U) == 0x80;
}

/// How many bytes the sequence that `lead` begins should have; 0 for no lead byte.
constexpr std::size_t SequenceLength(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return 2;
    if (lead >= 0xE0 && lead <= 0xEF) return 3;
    if (lead >= 0xF0 && lead <= 0xF4) return 4;
    return 0;
}

/// Takes one character off the front of `text`; a bad byte is taken alone, as no character.
char32_t TakeUtf8(std::string_view& text) {
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    constexpr unsigned char kLeadBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = SequenceLength(lead);
    char32_t c = lead & kLeadBits[length];
    bool isGood = length != 0 && length <= text.size();
    for (std::size_t i = 1; isGood && i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        isGood = IsContinuation(byte);
        c = (c << 6U) | (byte & 0x3FU);
    }
    isGood = isGood && c >= kSmallest[length] && c <= 0x10FFFF && !IsSurrogate(c);
    text.remove_prefix(isGood ? length : 1);
    return isGood ? c : kNoCharacter;
}

/// Characters at the beginning that are one byte each, as nearly all are.
std::size_t PlainLength(std::string_view utf8) {
    const auto isPlain = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    return static_cast<std::size_t>(std::find_if_not(utf8.begin(), utf8.end(), isPlain) -
                                    utf8.begin());
}

void AppendUtf16(std::u16string& text, char32_t c) {
    if (c < 0x10000) {
        text += static_cast<char16_t>(c);
        return;
    }
    text += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10U));
    text += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FFU));
}

/// Takes one character off the front of `text`; a surrogate without its partner is taken as it is.
char32_t TakeUtf16(std::u16string_view& text) {
    const char32_t first = text.front();
    text.remove_prefix(1);
    if (!IsSurrogate(first)) return first;
    const bool isPair =
        first < 0xDC00 && !text.empty() && text.front() >= 0xDC00 && text.front() <= 0xDFFF;
    if (!isPair) return first;
    const char32_t second = text.front();
    text.remove_prefix(1);
    return 0x10000 + ((first - 0xD800) << 10U) + (second - 0xDC00);
}

void AppendUtf8(std::string& text, char32_t c) {
    if (c < 0x80) {
        text += static_cast<char>(c);
        return;
    }
    const unsigned following = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    constexpr unsigned char kLead[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(kLead[following] | (c >> (6 * following)));
    for (unsigned i = following; i-- > 0;) {
        text += static_cast<char>(0x80U | ((c >> (6 * i)) & 0x3FU));
    }
}

/// `unreadable` gives the character for a byte that is no part of UTF-8.
template <class Unreadable>
std::u16string Utf16From(std::string_view utf8, Unreadable unreadable) {
    const auto* const begin = reinterpret_cast<const unsigned char*>(utf8.data());
    const std::size_t plain = PlainLength(utf8);
    std::u16string text(begin, begin + plain);
    utf8.remove_prefix(plain);
    text.reserve(plain + utf8.size());
    while (!utf8.empty()) {
        const auto lead = static_cast<unsigned char>(utf8.front());
        const char32_t c = TakeUtf8(utf8);
        AppendUtf16(text, c == kNoCharacter ? unreadable(lead) : c);
    }
    return text;
}

/// `takeLone` appends what a surrogate without its partner stands for.
template <class TakeLone>
std::string BytesFrom(std::u16string_view utf16, TakeLone takeLone) {
    std::string text;
    text.reserve(utf16.size());
    while (!utf16.empty()) {
        const char32_t c = TakeUtf16(utf16);
        if (IsSurrogate(c)) {
            takeLone(text, c);
        } else {
            AppendUtf8(text, c);
        }
    }
    return text;
}

}  // namespace

std::u16string Utf16FromUtf8(std::string_view utf8) {
    return Utf16From(utf8, [](unsigned char) { return kReplacement; });
}

std::string Utf8FromUtf16(std::u16string_view utf16) {
    return BytesFrom(utf16, [](std::string& text, char32_t) { AppendUtf8(text, kReplacement); });
}

std::u16string Utf16FromBytes(std::string_view bytes) {
    return Utf16From(bytes, [](unsigned char byte) { return kByteBase + byte; });
}

std::string BytesFromUtf16(std::u16string_view utf16) {
    return BytesFrom(utf16, [](std::string& text, char32_t c) {
        if (StandsForByte(c)) {
            text += static_cast<char>(c - kByteBase);
        } else {
            AppendUtf8(text, kReplacement);
        }
    });
}

}  // namespace quorvex
