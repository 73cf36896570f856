#include "tools/info/element_value.h"

#include "tools/json.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace quorvex::tools {
namespace {

enum class Kind { kText, kUnsigned, kSigned, kFloat, kTag, kBytes, kSequence };

struct Representation {
    MC_VR vr;
    std::string_view name;
    Kind kind;
    std::size_t width;  // bytes of one number
};
constexpr std::array kRepresentations = {
    Representation{MC_VR_AE, "AE", Kind::kText, 1},
    Representation{MC_VR_AS, "AS", Kind::kText, 1},
    Representation{MC_VR_AT, "AT", Kind::kTag, 4},
    Representation{MC_VR_CS, "CS", Kind::kText, 1},
    Representation{MC_VR_DA, "DA", Kind::kText, 1},
    Representation{MC_VR_DS, "DS", Kind::kText, 1},
    Representation{MC_VR_DT, "DT", Kind::kText, 1},
    Representation{MC_VR_IS, "IS", Kind::kText, 1},
    Representation{MC_VR_LO, "LO", Kind::kText, 1},
    Representation{MC_VR_LT, "LT", Kind::kText, 1},
    Representation{MC_VR_PN, "PN", Kind::kText, 1},
    Representation{MC_VR_SH, "SH", Kind::kText, 1},
    Representation{MC_VR_ST, "ST", Kind::kText, 1},
    Representation{MC_VR_TM, "TM", Kind::kText, 1},
    Representation{MC_VR_UC, "UC", Kind::kText, 1},
    Representation{MC_VR_UI, "UI", Kind::kText, 1},
    Representation{MC_VR_UR, "UR", Kind::kText, 1},
    Representation{MC_VR_UT, "UT", Kind::kText, 1},
    Representation{MC_VR_SQ, "SQ", Kind::kSequence, 1},
    Representation{MC_VR_UN, "UN", Kind::kBytes, 1},
    Representation{MC_VR_OB, "OB", Kind::kBytes, 1},
    Representation{MC_VR_OF, "OF", Kind::kFloat, 4},
    Representation{MC_VR_OD, "OD", Kind::kFloat, 8},
    Representation{MC_VR_OW, "OW", Kind::kUnsigned, 2},
    Representation{MC_VR_OL, "OL", Kind::kUnsigned, 4},
    Representation{MC_VR_OV, "OV", Kind::kUnsigned, 8},
    Representation{MC_VR_FL, "FL", Kind::kFloat, 4},
    Representation{MC_VR_FD, "FD", Kind::kFloat, 8},
    Representation{MC_VR_SL, "SL", Kind::kSigned, 4},
    Representation{MC_VR_SS, "SS", Kind::kSigned, 2},
    Representation{MC_VR_SV, "SV", Kind::kSigned, 8},
    Representation{MC_VR_UL, "UL", Kind::kUnsigned, 4},
    Representation{MC_VR_US, "US", Kind::kUnsigned, 2},
    Representation{MC_VR_UV, "UV", Kind::kUnsigned, 8},
};
constexpr Representation kUnknown = {MC_VR_UN, "??", Kind::kBytes, 1};

constexpr std::size_t kMostNumbersShown = 12;
constexpr std::size_t kMostBytesShown = 16;
constexpr std::size_t kMostNumbersInJson = 4096;
constexpr std::size_t kMostBytesInJson = 1024;

const Representation& RepresentationOf(MC_VR vr) noexcept {
    const auto* found = std::ranges::find(kRepresentations, vr, &Representation::vr);
    return found != kRepresentations.end() ? *found : kUnknown;
}

std::uint64_t ReadNumber(std::string_view bytes, bool bigEndian) noexcept {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto place = bigEndian ? bytes.size() - 1 - i : i;
        number |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * place);
    }
    return number;
}

std::int64_t ExtendSign(std::uint64_t number, std::size_t width) noexcept {
    const auto unused = 64 - 8 * width;
    return std::bit_cast<std::int64_t>(number << unused) >> unused;
}

std::string ShortestText(auto number) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return {text.data(), end};
}

std::string TagText(std::string_view bytes, bool bigEndian) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "(%04x,%04x)",
                  static_cast<unsigned>(ReadNumber(bytes.substr(0, 2), bigEndian)),
                  static_cast<unsigned>(ReadNumber(bytes.substr(2, 2), bigEndian)));
    return text.data();
}

std::string FloatText(std::uint64_t bits, std::size_t width) {
    return width == 4 ? ShortestText(std::bit_cast<float>(static_cast<std::uint32_t>(bits)))
                      : ShortestText(std::bit_cast<double>(bits));
}

// Meta information is little-endian in every file.
bool IsBigEndian(const DcmElementView& element, bool isDataSetBigEndian) {
    constexpr std::uint32_t kMetaGroup = 0x0002;
    return isDataSetBigEndian && element.tag >> 16 != kMetaGroup;
}

std::string NumberText(std::string_view bytes, const Representation& representation,
                       bool bigEndian) {
    const auto number = ReadNumber(bytes, bigEndian);
    switch (representation.kind) {
        case Kind::kTag:
            return TagText(bytes, bigEndian);
        case Kind::kFloat:
            return FloatText(number, bytes.size());
        case Kind::kSigned:
            return ShortestText(ExtendSign(number, bytes.size()));
        default:
            return ShortestText(number);
    }
}

std::string JsonOf(const std::string& number, Kind kind) {
    if (kind == Kind::kTag) return '"' + number + '"';
    const bool isNumber = number.find_first_not_of("0123456789+-.e") == std::string::npos;
    return isNumber ? number : "null";  // infinities, and what is not a number
}

template <class Append>
void ForEachNumber(std::string_view bytes, std::size_t width, std::size_t most, Append append) {
    for (std::size_t i = 0; i < std::min(bytes.size() / width, most); ++i)
        append(bytes.substr(i * width, width));
}

}  // namespace

std::string_view RepresentationName(MC_VR vr) noexcept {
    return RepresentationOf(vr).name;
}

bool IsText(MC_VR vr) noexcept {
    return RepresentationOf(vr).kind == Kind::kText;
}

bool IsProse(MC_VR vr) noexcept {
    return vr == MC_VR_LT || vr == MC_VR_ST || vr == MC_VR_UT || vr == MC_VR_UR;
}

bool IsBulk(MC_VR vr) noexcept {
    return vr == MC_VR_UN || RepresentationOf(vr).name.starts_with('O');
}

UnderstoodElement Understand(const DcmElementView& element, bool isDataSetBigEndian) noexcept {
    UnderstoodElement understood{element, IsBigEndian(element, isDataSetBigEndian)};
    const bool isKnown = element.dictionaryVr != MC_VR_UN && element.dictionaryVr != MC_VR_SQ;
    if (element.vr != MC_VR_UN || !isKnown) return understood;
    if (element.length % RepresentationOf(element.dictionaryVr).width != 0) return understood;
    understood.view.vr = element.dictionaryVr;
    understood.isBigEndian = false;
    return understood;
}

std::vector<std::string> NumbersOf(const UnderstoodElement& element) {
    const auto bytes = ValueBytes(element.view);
    const auto& representation = RepresentationOf(element.view.vr);
    std::vector<std::string> numbers;
    ForEachNumber(bytes, representation.width, bytes.size(), [&](std::string_view number) {
        numbers.push_back(NumberText(number, representation, element.isBigEndian));
    });
    return numbers;
}

std::string LittleEndianBytes(const UnderstoodElement& element) {
    std::string bytes(ValueBytes(element.view));
    const auto width = static_cast<std::ptrdiff_t>(RepresentationOf(element.view.vr).width);
    if (!element.isBigEndian || width == 1) return bytes;
    for (auto word = bytes.begin(); bytes.end() - word >= width; word += width)
        std::reverse(word, word + width);
    return bytes;
}

bool IsPlainAscii(std::string_view bytes) noexcept {
    constexpr char kEscape = '\x1B';
    return std::ranges::all_of(bytes, [](char c) { return c >= 0 && c != kEscape; });
}

std::string_view ValueBytes(const DcmElementView& element) noexcept {
    if (element.data == nullptr || element.vr == MC_VR_SQ) return {};
    return {reinterpret_cast<const char*>(element.data), element.length};
}

std::string NumbersAsText(const UnderstoodElement& element) {
    const auto bytes = ValueBytes(element.view);
    const auto& representation = RepresentationOf(element.view.vr);
    if (representation.kind == Kind::kBytes)
        return Hexadecimal(bytes.substr(0, kMostBytesShown), " ") +
               (bytes.size() > kMostBytesShown ? " ..." : "");
    std::string text;
    ForEachNumber(bytes, representation.width, kMostNumbersShown, [&](std::string_view number) {
        if (!text.empty()) text += '\\';
        text += NumberText(number, representation, element.isBigEndian);
    });
    return bytes.size() / representation.width > kMostNumbersShown ? text + "\\..." : text;
}

std::string NumbersAsJson(const UnderstoodElement& element) {
    const auto bytes = ValueBytes(element.view);
    const auto& representation = RepresentationOf(element.view.vr);
    if (representation.kind == Kind::kBytes)
        return bytes.size() > kMostBytesInJson ? "null" : '"' + Hexadecimal(bytes) + '"';
    if (bytes.size() / representation.width > kMostNumbersInJson) return "null";
    std::string text;
    ForEachNumber(bytes, representation.width, kMostNumbersInJson, [&](std::string_view number) {
        if (!text.empty()) text += ',';
        text +=
            JsonOf(NumberText(number, representation, element.isBigEndian), representation.kind);
    });
    return '[' + text + ']';
}

}  // namespace quorvex::tools
