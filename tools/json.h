/// Pieces of the JSON that the command writes.
#pragma once

#include <string>
#include <string_view>

namespace quorvex::tools {

/// Any text as a JSON string, quotes included. Bytes that are not UTF-8 become U+FFFD.
std::string JsonString(std::string_view text);

/// The shortest text that reads back as this number; "null" for what JSON has no number for.
std::string JsonNumber(double number);

/// `,"name":value`: one more member of an object; `json` is the value as it is to stand there.
std::string JsonMember(std::string_view name, std::string_view json);

/// An array with an entry for each value, which `asJson` makes.
template <class Values, class AsJson>
std::string JsonArray(const Values& values, AsJson asJson) {
    std::string json;
    for (const auto& value : values) json += (json.empty() ? "" : ",") + asJson(value);
    return '[' + json + ']';
}

/// Base64 (RFC 4648), with its padding.
std::string Base64(std::string_view bytes);

/// Two lower-case hexadecimal digits for each byte.
std::string Hexadecimal(std::string_view bytes, std::string_view separator = {});

}  // namespace quorvex::tools
