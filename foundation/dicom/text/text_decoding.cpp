#include "foundation/dicom/text/character_set_table.h"
#include "foundation/dicom/text/text_codec.h"
#include "foundation/dicom/text/text_conversion.h"

#include <algorithm>

namespace quorvex::dicom {
namespace {

using enum CharacterSetForm;

constexpr char16_t kReplacement = 0xFFFD;

bool IsHigh(char c) {
    return static_cast<unsigned char>(c) > 0x7F;
}
bool IsLowGraphic(char c) {
    return c > ' ' && c < 0x7F;
}
bool IsPlain(char c) {
    return !IsHigh(c) && c != kEscape;
}

bool IsHighForm(CharacterSet set) {
    const auto form = RowOf(set).form;
    return form == kSingleHigh || form == kDoubleHigh;
}

/// A value of code extensions: what bytes mean hangs on the escapes that came before them.
class ExtendedTextDecoder {
public:
    ExtendedTextDecoder(const CharacterSets& sets, bool isPersonName)
        : sets_(sets), isPersonName_(isPersonName) {}

    std::u16string Decode(std::string_view bytes) {
        text_.reserve(bytes.size());
        while (!bytes.empty()) bytes.remove_prefix(TakeRun(bytes));
        return std::move(text_);
    }

private:
    /// Decodes what stands at the beginning of `bytes`; gives its length, at least 1.
    std::size_t TakeRun(std::string_view bytes) {
        if (bytes[0] == kEscape) return TakeEscape(bytes);
        if (IsHigh(bytes[0])) return TakeHigh(bytes);
        if (low_ != CharacterSet::kIr6 && IsLowGraphic(bytes[0])) return TakeDoubleLow(bytes);
        if (EndsExtension(bytes[0])) Reset();
        text_ += static_cast<char16_t>(bytes[0]);
        return 1;
    }

    std::size_t TakeEscape(std::string_view bytes) {
        std::size_t length = 0;
        const auto* row = RowOfEscape(bytes.substr(1), length);
        if (row == nullptr) {
            text_ += kReplacement;
        } else if (IsHighForm(row->set)) {
            high_ = row->set;
        } else {
            low_ = row->set;
        }
        return 1 + length;
    }

    std::size_t TakeHigh(std::string_view bytes) {
        const auto run = bytes.substr(0, RunLength(bytes, IsHigh));
        AppendDecoded(run, high_, text_);
        return run.size();
    }

    /// In a set of two low bytes every graphic byte is half a character, ^ = and \ included.
    std::size_t TakeDoubleLow(std::string_view bytes) {
        const auto run = bytes.substr(0, RunLength(bytes, IsLowGraphic));
        std::string raised;
        for (std::size_t i = 0; i + 1 < run.size(); i += 2) {
            if (low_ == CharacterSet::kIr159) raised += '\x8F';
            raised += static_cast<char>(run[i] | 0x80);
            raised += static_cast<char>(run[i + 1] | 0x80);
        }
        AppendDecoded(raised, low_, text_);
        if (run.size() % 2 != 0) text_ += kReplacement;
        return run.size();
    }

    static std::size_t RunLength(std::string_view bytes, bool (*belongs)(char)) {
        const auto* end = std::find_if_not(bytes.begin(), bytes.end(), belongs);
        return static_cast<std::size_t>(end - bytes.begin());
    }

    [[nodiscard]] bool EndsExtension(char c) const {
        if (isPersonName_ && (c == '^' || c == '=')) return true;
        return c == '\\' || c == '\r' || c == '\n' || c == '\f' || c == '\t';
    }

    void Reset() {
        low_ = CharacterSet::kIr6;
        high_ = InitialHigh(sets_);
    }

    /// The first set that has bytes above 127. By the rules that can only be the first value, but
    /// some writers forget to repeat the escape behind a delimiter.
    static CharacterSet InitialHigh(const CharacterSets& sets) {
        const auto all = sets.All();
        const auto found = std::ranges::find_if(all, IsHighForm);
        return found == all.end() ? CharacterSet::kIr6 : *found;
    }

    const CharacterSets& sets_;
    const bool isPersonName_;
    CharacterSet low_ = CharacterSet::kIr6;
    CharacterSet high_ = InitialHigh(sets_);
    std::u16string text_;
};

}  // namespace

bool IsPlainText(std::string_view text) noexcept {
    return std::ranges::all_of(text, IsPlain);
}

std::u16string DecodeText(std::string_view bytes, const CharacterSets& sets, bool isPersonName) {
    if (IsPlainText(bytes)) return {bytes.begin(), bytes.end()};
    if (RowOf(sets.First()).form != kWhole)
        return ExtendedTextDecoder(sets, isPersonName).Decode(bytes);
    std::u16string text;
    AppendDecoded(bytes, sets.First(), text);
    return text;
}

}  // namespace quorvex::dicom
