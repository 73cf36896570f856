#include "tools/json.h"

#include "quorvex/Types.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace quorvex::tools {

std::string JsonString(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : CString(text).ToValidUtf8()) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            std::array<char, 8> escaped{};
            std::snprintf(escaped.data(), escaped.size(), "\\u%04x", static_cast<unsigned>(c));
            quoted += escaped.data();
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

std::string JsonNumber(double number) {
    if (!std::isfinite(number)) return "null";
    std::array<char, 32> text{};
    auto* const end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return {text.data(), end};
}

std::string JsonMember(std::string_view name, std::string_view json) {
    return (std::string(",\"") += name).append("\":").append(json);
}

std::string Base64(std::string_view bytes) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr std::size_t kGroup = 3;
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += kGroup) {
        const auto group = bytes.substr(i, kGroup);
        std::uint32_t bits = 0;
        for (std::size_t k = 0; k < kGroup; ++k)
            bits = bits << 8 | (k < group.size() ? static_cast<unsigned char>(group[k]) : 0U);
        for (std::size_t k = 0; k <= kGroup; ++k)
            text += k <= group.size() ? kDigits[bits >> (18 - 6 * k) & 63] : '=';
    }
    return text;
}

std::string Hexadecimal(std::string_view bytes, std::string_view separator) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        if (!text.empty()) text += separator;
        text += kDigits[value >> 4];
        text += kDigits[value & 15];
    }
    return text;
}

}  // namespace quorvex::tools
