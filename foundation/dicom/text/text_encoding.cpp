#include "foundation/dicom/text/character_set_table.h"
#include "foundation/dicom/text/text_codec.h"
#include "foundation/dicom/text/text_conversion.h"
#include "foundation/types/utf.h"

#include <algorithm>

namespace quorvex::dicom {
namespace {

using enum CharacterSetForm;

bool IsAscii(char16_t c) {
    return c < 0x80;
}
bool IsHigh(char c) {
    return static_cast<unsigned char>(c) > 0x7F;
}

/// The bytes of one character as they stand in a value once `set` is in force.
std::optional<std::string> CharacterBytes(CharacterSet set, std::u16string_view character) {
    const auto form = RowOf(set).form;
    if (form == kAscii || form == kWhole) return std::nullopt;
    auto bytes = EncodedAs(set, character);
    if (!bytes || !std::ranges::all_of(*bytes, IsHigh)) return std::nullopt;
    if (set == CharacterSet::kIr159) {
        if (bytes->size() != 3) return std::nullopt;
        bytes->erase(0, 1);
    }
    const bool isHalfWidthKatakana = form == kDoubleLow && (*bytes)[0] == '\x8E';
    if (bytes->size() != (form == kSingleHigh ? 1U : 2U) || isHalfWidthKatakana)
        return std::nullopt;
    if (form == kDoubleLow) {
        for (char& c : *bytes) c = static_cast<char>(c & 0x7F);
    }
    return bytes;
}

class ExtendedTextEncoder {
public:
    ExtendedTextEncoder(const CharacterSets& sets, bool isPersonName)
        : sets_(sets), isPersonName_(isPersonName) {}

    std::optional<std::string> Encode(std::u16string_view text) {
        while (!text.empty()) {
            const std::size_t length = IsPair(text) ? 2 : 1;
            if (!Put(text.substr(0, length))) return std::nullopt;
            text.remove_prefix(length);
        }
        Designate(CharacterSet::kIr6);
        return std::move(bytes_);
    }

private:
    static bool IsPair(std::u16string_view text) {
        return text.size() > 1 && (text[0] & 0xFC00) == 0xD800 && (text[1] & 0xFC00) == 0xDC00;
    }

    bool Put(std::u16string_view character) {
        if (IsAscii(character[0])) return PutAscii(static_cast<char>(character[0]));
        for (const CharacterSet set : {low_, high_}) {
            if (PutIn(set, character)) return true;
        }
        return std::ranges::any_of(sets_.All(),
                                   [&](CharacterSet set) { return PutIn(set, character); });
    }

    bool PutAscii(char c) {
        Designate(CharacterSet::kIr6);
        bytes_ += c;
        const bool isDelimiter = c == '\\' || c == '\r' || c == '\n' || c == '\f' || c == '\t' ||
                                 (isPersonName_ && (c == '^' || c == '='));
        if (isDelimiter) high_ = sets_.First();
        return true;
    }

    bool PutIn(CharacterSet set, std::u16string_view character) {
        const auto bytes = CharacterBytes(set, character);
        if (!bytes) return false;
        Designate(set);
        bytes_ += *bytes;
        return true;
    }

    void Designate(CharacterSet set) {
        const auto& row = RowOf(set);
        const bool isLow = row.form == kAscii || row.form == kDoubleLow;
        CharacterSet& inForce = isLow ? low_ : high_;
        if (inForce == set) return;
        inForce = set;
        bytes_ += kEscape;
        bytes_ += IsJapaneseRoman(set) ? std::string_view("(J") : row.escape;
    }

    [[nodiscard]] bool IsJapaneseRoman(CharacterSet set) const {
        return set == CharacterSet::kIr6 && sets_.First() == CharacterSet::kIr13;
    }

    const CharacterSets& sets_;
    const bool isPersonName_;
    CharacterSet low_ = CharacterSet::kIr6;
    CharacterSet high_ = sets_.First();
    std::string bytes_;
};

}  // namespace

std::optional<std::string> EncodeText(std::u16string_view text, const CharacterSets& sets,
                                      bool isPersonName) {
    if (std::ranges::all_of(text, IsAscii)) return Utf8FromUtf16(text);
    if (sets.First() == CharacterSet::kIr192) return Utf8FromUtf16(text);
    if (RowOf(sets.First()).form == kWhole) return EncodedAs(sets.First(), text);
    return ExtendedTextEncoder(sets, isPersonName).Encode(text);
}

}  // namespace quorvex::dicom
