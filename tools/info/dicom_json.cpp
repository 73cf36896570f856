#include "tools/info/dicom_json.h"

#include "quorvex/Tags.h"
#include "tools/info/element_owner.h"
#include "tools/info/element_value.h"
#include "tools/json.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>

namespace quorvex::tools {
namespace {

constexpr std::size_t kMostInlineBytes = 1024;

std::string KeyOf(std::uint32_t tag) {
    std::array<char, 16> key{};
    std::snprintf(key.data(), key.size(), "%08X", tag);
    return key.data();
}

// The digits at the beginning, taken away.
bool TakeDigits(std::string_view& text) {
    const auto count = std::min(text.find_first_not_of("0123456789"), text.size());
    text.remove_prefix(count);
    return count > 0;
}

// The number grammar of RFC 8259, which knows no "+1", "007", ".5" and "1.".
bool IsJsonNumber(std::string_view text) {
    if (text.starts_with('-')) text.remove_prefix(1);
    const bool hasLeadingZero =
        text.size() > 1 && text[0] == '0' && text[1] >= '0' && text[1] <= '9';
    if (hasLeadingZero || !TakeDigits(text)) return false;
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        if (!TakeDigits(text)) return false;
    }
    if (text.starts_with('e') || text.starts_with('E')) {
        text.remove_prefix(1);
        if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
        if (!TakeDigits(text)) return false;
    }
    return text.empty();
}

// Decimal text as a number with all its digits; text that is none stays text.
std::string DecimalAsJson(std::string_view text) {
    while (text.starts_with(' ') || text.starts_with('+')) text.remove_prefix(1);
    if (text.empty()) return "null";
    if (IsJsonNumber(text)) return std::string(text);
    double number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = read.ec == std::errc{} && read.ptr == text.data() + text.size();
    return isNumber && std::isfinite(number) ? JsonNumber(number) : JsonString(text);
}

std::string NameAsJson(std::string_view name) {
    constexpr std::array kGroups = {"Alphabetic", "Ideographic", "Phonetic"};
    std::string json;
    for (const auto* group : kGroups) {
        const auto end = std::min(name.find('='), name.size());
        if (end > 0)
            json += (json.empty() ? "\"" : ",\"") + std::string(group) +
                    "\":" + JsonString(name.substr(0, end));
        name.remove_prefix(std::min(end + 1, name.size()));
    }
    return json.empty() ? "null" : '{' + json + '}';
}

std::string TextAsJson(MC_VR vr, const std::string& value) {
    if (value.empty()) return "null";
    if (vr == MC_VR_PN) return NameAsJson(value);
    if (vr == MC_VR_DS || vr == MC_VR_IS) return DecimalAsJson(value);
    return JsonString(value);
}

// The value that a single-precision number is, with the digits of a double.
std::string WidenedNumber(const std::string& number) {
    float value = 0;
    const auto read = std::from_chars(number.data(), number.data() + number.size(), value);
    return read.ec == std::errc{} && std::isfinite(value) ? JsonNumber(static_cast<double>(value))
                                                          : number;
}

// Whole numbers that a double does not hold, and what is no number, are strings.
std::string NumberAsJson(MC_VR vr, const std::string& number) {
    constexpr std::size_t kSafeDigits = 15;
    if (vr == MC_VR_AT) {
        std::string key;
        for (const char c : number)
            if (std::isxdigit(static_cast<unsigned char>(c)) != 0)
                key += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        return JsonString(key);
    }
    if (vr == MC_VR_FL) {
        const auto widened = WidenedNumber(number);
        return IsJsonNumber(widened) ? widened : JsonString(widened);
    }
    const bool isLong = (vr == MC_VR_SV || vr == MC_VR_UV) && number.size() > kSafeDigits;
    return isLong || !IsJsonNumber(number) ? JsonString(number) : number;
}

std::string UriOf(const std::string& path) {
    constexpr std::string_view kPlain = "-._~/";
    if (path.empty()) return {};
    std::string uri = "file://";
    for (const char c : std::filesystem::absolute(path).lexically_normal().string()) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPlain =
            byte < 0x80 && (std::isalnum(byte) != 0 || kPlain.find(c) != std::string_view::npos);
        uri += isPlain ? std::string(1, c) : '%' + Hexadecimal(std::string_view(&c, 1));
    }
    return uri;
}

/// Writes the elements of one walk as nested objects; a sequence is open until an element arrives
/// that lies outside it.
class Model {
public:
    Model(const std::string& path, const CDcmObject& object, bool isBigEndian)
        : owner_(object), isBigEndian_(isBigEndian), uri_(UriOf(path)) {}

    void Add(const DcmElementView& element) {
        owner_.Follow(element);
        const bool isGroupLength = (element.tag & 0xFFFFU) == 0;
        const bool isMeta =
            element.depth == 0 && element.tag >> 16 == tag::kTransferSyntaxUID >> 16;
        if (isGroupLength || isMeta) return;
        CloseDownTo(static_cast<std::size_t>(element.depth));
        if (element.depth > 0) OpenItem(element.itemIndex);
        if (json_.back() != '{') json_ += ',';
        const auto understood = Understand(element, isBigEndian_);
        json_ += '"' + KeyOf(element.tag) + R"(":{"vr":")" +
                 std::string(RepresentationName(understood.view.vr)) + '"';
        if (element.vr != MC_VR_SQ) {
            json_ += ValueOf(understood) + '}';
        } else if (element.valueCount == 0) {
            json_ += '}';
        } else {
            json_ += ",\"Value\":[";
            open_.push_back({element.tag, element.valueCount, -1});
        }
    }

    [[nodiscard]] std::string Finish() {
        CloseDownTo(0);
        return std::move(json_) + "}\n";
    }

private:
    struct OpenSequence {
        std::uint32_t tag = 0;
        unsigned long count = 0;  // items that it has
        int item = -1;            // the one that is open
    };

    std::string ValueOf(const UnderstoodElement& element) {
        const auto& view = element.view;
        if (view.tag == tag::kSpecificCharacterSet) return R"(,"Value":["ISO_IR 192"])";
        if (ValueBytes(view).empty()) return {};
        if (IsBulk(view.vr)) return BulkOf(element);
        std::string json;
        bool isEmpty = true;
        const auto add = [&](const std::string& value) {
            json += (json.empty() ? "" : ",") + value;
            isEmpty = isEmpty && value == "null";
        };
        if (IsText(view.vr)) {
            for (const auto& value : owner_.Values(view)) add(TextAsJson(view.vr, value));
        } else {
            for (const auto& number : NumbersOf(element)) add(NumberAsJson(view.vr, number));
        }
        return isEmpty ? "" : ",\"Value\":[" + json + ']';
    }

    std::string BulkOf(const UnderstoodElement& element) {
        constexpr std::array kPixels = {tag::kPixelData, tag::kFloatPixelData,
                                        tag::kDoubleFloatPixelData};
        const bool isPixels = std::ranges::find(kPixels, element.view.tag) != kPixels.end();
        if (!isPixels && element.view.length <= kMostInlineBytes)
            return JsonMember("InlineBinary", JsonString(Base64(LittleEndianBytes(element))));
        std::string place = uri_ + '#';
        for (const auto& sequence : open_)
            place += '/' + KeyOf(sequence.tag) + "/Value/" + std::to_string(sequence.item);
        return JsonMember("BulkDataURI", JsonString(place + '/' + KeyOf(element.view.tag)));
    }

    // Items without elements are never visited and stand as empty objects.
    void OpenItem(int index) {
        auto& sequence = open_.back();
        if (sequence.item == index) return;
        if (sequence.item >= 0) json_ += '}';
        for (++sequence.item; sequence.item < index; ++sequence.item) AddItem("{}");
        AddItem("{");
    }
    void AddItem(const char* item) {
        if (json_.back() == '}') json_ += ',';
        json_ += item;
    }

    void CloseDownTo(std::size_t depth) {
        for (; open_.size() > depth; open_.pop_back()) {
            auto& sequence = open_.back();
            if (sequence.item >= 0) json_ += '}';
            for (auto i = sequence.item + 1; i < static_cast<int>(sequence.count); ++i)
                AddItem("{}");
            json_ += "]}";
        }
    }

    ElementOwner owner_;
    bool isBigEndian_;
    std::string uri_;
    std::vector<OpenSequence> open_;
    std::string json_ = "{";
};

}  // namespace

std::string DicomJson(const std::string& path, const CDcmObject& object,
                      const std::vector<WantedTag>& wanted) {
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    object.GetTransferSyntax(syntax);
    const auto* row = TransferSyntaxOf(syntax);
    Model model(path, object, row != nullptr && row->isBigEndian);
    WalkWanted(object, wanted, [&](const DcmElementView& element) { model.Add(element); });
    return model.Finish();
}

}  // namespace quorvex::tools
