#include "foundation/dicom/text/character_set_table.h"

#include <algorithm>
#include <string>

namespace quorvex::dicom {
namespace {

using enum CharacterSet;
using enum CharacterSetForm;

constexpr CharacterSetRow kRows[] = {
    {kIr6, "6", "ISO-8859-1", "(B", kAscii},
    {kIr100, "100", "ISO-8859-1", "-A", kSingleHigh},
    {kIr101, "101", "ISO-8859-2", "-B", kSingleHigh},
    {kIr109, "109", "ISO-8859-3", "-C", kSingleHigh},
    {kIr110, "110", "ISO-8859-4", "-D", kSingleHigh},
    {kIr148, "148", "ISO-8859-9", "-M", kSingleHigh},
    {kIr203, "203", "ISO-8859-15", "-b", kSingleHigh},
    {kIr144, "144", "ISO-8859-5", "-L", kSingleHigh},
    {kIr127, "127", "ISO-8859-6", "-G", kSingleHigh},
    {kIr126, "126", "ISO-8859-7", "-F", kSingleHigh},
    {kIr138, "138", "ISO-8859-8", "-H", kSingleHigh},
    {kIr166, "166", "TIS-620", "-T", kSingleHigh},
    {kIr13, "13", "SHIFT_JIS", ")I", kSingleHigh},
    {kIr87, "87", "EUC-JP", "$B", kDoubleLow},
    {kIr159, "159", "EUC-JP", "$(D", kDoubleLow},
    {kIr149, "149", "EUC-KR", "$)C", kDoubleHigh},
    {kIr58, "58", "GB2312", "$)A", kDoubleHigh},
    {kIr192, "192", "UTF-8", "", kWhole},
    {kGb18030, "GB18030", "GB18030", "", kWhole},
    {kGbk, "GBK", "GBK", "", kWhole},
};

constexpr bool RowsStandInTheOrderOfTheirSets() {
    for (std::size_t i = 0; i < std::size(kRows); ++i)
        if (static_cast<std::size_t>(kRows[i].set) != i) return false;
    return true;
}
static_assert(RowsStandInTheOrderOfTheirSets());

struct EscapeAlias {
    std::string_view escape;
    CharacterSet set;
};
constexpr EscapeAlias kEscapeAliases[] = {
    {"(J", kIr6},   // the Roman half of JIS X 0201, ASCII but for two signs
    {"$@", kIr87},  // kanji in its edition of 1978
};

/// "ISO 2022 IR 100", "ISO_IR 100", "ISO-IR 100" and "iso ir_100" all come to "100".
std::string PlainName(std::string_view term) {
    std::string name;
    for (const char c : term) {
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (isLetter) name += static_cast<char>(c & ~0x20);
        if (c >= '0' && c <= '9') name += c;
    }
    for (const std::string_view prefix : {"ISO", "2022", "IR"})
        if (name.starts_with(prefix)) name.erase(0, prefix.size());
    return name;
}

CharacterSet SetOfTerm(std::string_view term) {
    const std::string name = PlainName(term);
    if (name == "UTF8") return kIr192;
    const auto* row = std::ranges::find(kRows, name, &CharacterSetRow::name);
    return row == std::end(kRows) ? kIr6 : row->set;
}

}  // namespace

const CharacterSetRow& RowOf(CharacterSet set) noexcept {
    return kRows[static_cast<std::size_t>(set)];
}

const CharacterSetRow* RowOfEscape(std::string_view afterEscape, std::size_t& length) noexcept {
    for (const auto& row : kRows) {
        if (row.escape.empty() || !afterEscape.starts_with(row.escape)) continue;
        length = row.escape.size();
        return &row;
    }
    for (const auto& alias : kEscapeAliases) {
        if (!afterEscape.starts_with(alias.escape)) continue;
        length = alias.escape.size();
        return &RowOf(alias.set);
    }
    return nullptr;
}

CharacterSets ParseCharacterSets(std::string_view specificCharacterSet) {
    CharacterSets result;
    result.count = 0;
    for (std::size_t begin = 0; result.count < CharacterSets::kMost;) {
        const std::size_t end =
            std::min(specificCharacterSet.find('\\', begin), specificCharacterSet.size());
        result.sets[result.count++] = SetOfTerm(specificCharacterSet.substr(begin, end - begin));
        if (end == specificCharacterSet.size()) break;
        begin = end + 1;
    }
    return result;
}

}  // namespace quorvex::dicom
