#include "tools/convert/manifest/flat_json.h"

#include "quorvex/Types.h"

#include <array>
#include <charconv>

namespace quorvex::tools {
namespace {

struct Escape {
    char letter;
    char meaning;
};
constexpr std::array kEscapes = {Escape{'"', '"'},  Escape{'\\', '\\'}, Escape{'/', '/'},
                                 Escape{'b', '\b'}, Escape{'f', '\f'},  Escape{'n', '\n'},
                                 Escape{'r', '\r'}, Escape{'t', '\t'}};

/// Takes a text apart from its front.
class Reader {
public:
    explicit Reader(std::string_view text) : rest_(text) {}

    bool Take(char c) {
        SkipSpace();
        if (!rest_.starts_with(c)) return false;
        rest_.remove_prefix(1);
        return true;
    }
    bool IsAtEnd() {
        SkipSpace();
        return rest_.empty();
    }

    std::optional<std::string> TakeString() {
        if (!Take('"')) return std::nullopt;
        std::string text;
        while (!rest_.empty() && rest_.front() != '"')
            if (!TakeCharacter(text)) return std::nullopt;
        return Take('"') ? std::optional(text) : std::nullopt;
    }

    std::optional<std::string> TakeValue() {
        SkipSpace();
        if (rest_.starts_with('"')) return TakeString();
        if (rest_.starts_with('[')) return TakeArray();
        const auto end = std::min(rest_.find_first_of(",}] \t"), rest_.size());
        const std::string_view word = rest_.substr(0, end);
        rest_.remove_prefix(end);
        double number = 0.0;
        const auto read = std::from_chars(word.data(), word.data() + word.size(), number);
        const bool isNumber = read.ec == std::errc{} && read.ptr == word.data() + word.size();
        const bool isWord = word == "true" || word == "false" || word == "null";
        return isNumber || isWord ? std::optional(std::string(word)) : std::nullopt;
    }

private:
    // Of strings and numbers, no arrays inside.
    std::optional<std::string> TakeArray() {
        const std::string_view whole = rest_;
        rest_.remove_prefix(1);
        if (!Take(']')) {
            do {
                SkipSpace();
                if (rest_.starts_with('[') || !TakeValue()) return std::nullopt;
            } while (Take(','));
            if (!Take(']')) return std::nullopt;
        }
        return std::string(whole.substr(0, whole.size() - rest_.size()));
    }

    void SkipSpace() {
        while (rest_.starts_with(' ') || rest_.starts_with('\t')) rest_.remove_prefix(1);
    }

    bool TakeCharacter(std::string& text) {
        if (rest_.front() != '\\') {
            text += rest_.front();
            rest_.remove_prefix(1);
            return true;
        }
        if (rest_.starts_with("\\u")) return TakeUnits(text);
        for (const auto& escape : kEscapes) {
            if (rest_.size() < 2 || rest_[1] != escape.letter) continue;
            text += escape.meaning;
            rest_.remove_prefix(2);
            return true;
        }
        return false;
    }

    // Units that follow each other may be the two halves of one character.
    bool TakeUnits(std::string& text) {
        std::u16string units;
        while (rest_.starts_with("\\u")) {
            unsigned unit = 0;
            const auto digits = rest_.substr(2, 4);
            const auto read =
                std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
            if (read.ptr != digits.data() + 4) return false;
            units += static_cast<char16_t>(unit);
            rest_.remove_prefix(6);
        }
        text += CString(std::u16string_view(units)).ToValidUtf8();
        return true;
    }

    std::string_view rest_;
};

}  // namespace

std::optional<std::map<std::string, std::string>> ReadFlatJson(std::string_view text) {
    Reader reader(text);
    std::map<std::string, std::string> members;
    if (!reader.Take('{')) return std::nullopt;
    do {
        const auto name = reader.TakeString();
        if (!name || !reader.Take(':')) return std::nullopt;
        const auto value = reader.TakeValue();
        if (!value) return std::nullopt;
        members[*name] = *value;
    } while (reader.Take(','));
    if (!reader.Take('}') || !reader.IsAtEnd()) return std::nullopt;
    return members;
}

}  // namespace quorvex::tools
