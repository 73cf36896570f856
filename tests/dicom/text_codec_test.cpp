#include "foundation/dicom/text/text_codec.h"

#include "foundation/types/utf.h"

#include <gtest/gtest.h>

namespace quorvex::dicom {
namespace {

// Most are the examples of DICOM PS3.5 Annexes H to K.
const struct {
    const char* what;
    const char* sets;
    std::string bytes;
    const char* utf8;
    bool isWrittenAlike = true;  ///< encoding the text gives these bytes again
} kNames[] = {
    {"ASCII", "", "Buc^Jerome", "Buc^Jerome"},
    {"no set, Latin-1 bytes", "", "J\xE9r\xF4me", "Jérôme", false},
    {"Latin-1", "ISO_IR 100", "Buc^J\xE9r\xF4me", "Buc^Jérôme"},
    {"a hyphen in the name of the set", "ISO-IR 100", "J\xE9r\xF4me", "Jérôme"},
    {"Latin-2", "ISO_IR 101", "Wa\xB3\xEAsa", "Wałęsa"},
    {"Cyrillic", "ISO_IR 144", "\xBB\xEE", "Лю"},
    {"Greek", "ISO_IR 126", "\xC4\xE9\xEF", "Διο"},
    {"Arabic", "ISO_IR 127", "\xE2\xC8\xC7\xE6\xEA", "قباني"},
    {"Hebrew", "ISO_IR 138", "\xF9\xF8\xE5\xEF", "שרון"},
    {"Thai", "ISO_IR 166", "\xA1\xD2", "กา"},
    {"UTF-8", "ISO_IR 192", "Wang^XiaoDong=\xE7\x8E\x8B^\xE5\xB0\x8F\xE6\x9D\xB1",
     "Wang^XiaoDong=王^小東"},
    {"GB18030", "GB18030", "Wang^XiaoDong=\xCD\xF5^\xD0\xA1\xB6\xAB", "Wang^XiaoDong=王^小东"},
    {"GBK, a backslash in a character", "GBK", "\xC5\x5C\\\xC5\x5C", "臷\\臷", false},
    {"katakana", "ISO_IR 13", "\xD4\xCF\xC0\xDE^\xC0\xDB\xB3", "ﾔﾏﾀﾞ^ﾀﾛｳ"},
    {"kanji", "\\ISO 2022 IR 87",
     "Yamada^Tarou=\x1B$B;3ED\x1B(B^\x1B$BB@O:\x1B(B=\x1B$B$d$^$@\x1B(B^\x1B$B$?$m$&\x1B(B",
     "Yamada^Tarou=山田^太郎=やまだ^たろう"},
    {"katakana and kanji", "ISO 2022 IR 13\\ISO 2022 IR 87",
     "\xD4\xCF\xC0\xDE^\xC0\xDB\xB3=\x1B$B;3ED\x1B(J^\x1B$BB@O:\x1B(J", "ﾔﾏﾀﾞ^ﾀﾛｳ=山田^太郎"},
    {"supplementary kanji", "ISO 2022 IR 6\\ISO 2022 IR 87\\ISO 2022 IR 159",
     "\x1B$(D0!\x1B$B;3\x1B(B", "丂山"},
    {"Korean", "\\ISO 2022 IR 149",
     "Hong^Gildong=\x1B$)C\xFB\xF3^\x1B$)C\xD1\xCE\xD4\xD7=\x1B$)C\xC8\xAB^\x1B$)C\xB1\xE6\xB5\xBF",
     "Hong^Gildong=洪^吉洞=홍^길동"},
    {"Korean, the escape not repeated", "\\ISO 2022 IR 149",
     "Hong=\x1B$)C\xFB\xF3^\xD1\xCE\xD4\xD7", "Hong=洪^吉洞", false},
    {"simplified Chinese", "\\ISO 2022 IR 58",
     "Zhang^XiaoDong=\x1B$)A\xD5\xC5^\x1B$)A\xD0\xA1\xB6\xAB", "Zhang^XiaoDong=张^小东"},
    {"two single-byte sets", "ISO 2022 IR 100\\ISO 2022 IR 144", "J\xE9r\x1B-L\xBB\xEE^\xE9",
     "JérЛю^é"},
    {"an unknown escape", "\\ISO 2022 IR 87", "a\x1BZb", "a\xEF\xBF\xBDZb", false},
    {"an escape at the end", "\\ISO 2022 IR 87", "a\x1B", "a\xEF\xBF\xBD", false},
    {"half a kanji", "\\ISO 2022 IR 87", "\x1B$B;3E", "山\xEF\xBF\xBD", false},
    {"a bad byte in UTF-8", "ISO_IR 192", "a\xFFz", "a\xEF\xBF\xBDz", false},
    {"a bad byte among Korean ones", "ISO 2022 IR 149", "\xFB\xF3\xFF", "洪\xEF\xBF\xBD", false},
    {"an unknown set", "ISO_IR 999", "\xE9", "é", false},
};

TEST(TextCodec, ReadsNamesOfEverySetAndWritesThemAlike) {
    for (const auto& c : kNames) {
        const auto sets = ParseCharacterSets(c.sets);
        EXPECT_EQ(Utf8FromUtf16(DecodeText(c.bytes, sets, true)), c.utf8) << c.what;
        const auto bytes = EncodeText(Utf16FromUtf8(c.utf8), sets, true);
        EXPECT_TRUE(bytes == c.bytes || !c.isWrittenAlike) << c.what;
    }
}

TEST(TextCodec, RefusesWhatTheSetsCannotHold) {
    for (const char* sets : {"", "ISO_IR 100", "ISO 2022 IR 13", "\\ISO 2022 IR 87"})
        EXPECT_EQ(EncodeText(u"홍", ParseCharacterSets(sets), true), std::nullopt) << sets;
    EXPECT_EQ(EncodeText(u"é", ParseCharacterSets(""), true), std::nullopt);
    EXPECT_EQ(EncodeText(u"¥", ParseCharacterSets("ISO_IR 13"), true), std::nullopt);
}

TEST(TextCodec, CaretsAreDelimitersInPersonNamesOnly) {
    const auto sets = ParseCharacterSets("ISO 2022 IR 100\\ISO 2022 IR 144");
    const std::string bytes = "\x1B-L\xBB^\xE9\\\xE9";
    EXPECT_EQ(Utf8FromUtf16(DecodeText(bytes, sets, true)), "Л^é\\é");
    EXPECT_EQ(Utf8FromUtf16(DecodeText(bytes, sets, false)), "Л^щ\\é");
}

TEST(TextCodec, AnyBytesGiveSomeTextUnderEverySet) {
    for (const char* name : {"", "ISO_IR 13", "ISO_IR 192", "GB18030", "GBK", "\\ISO 2022 IR 87",
                             "\\ISO 2022 IR 159", "\\ISO 2022 IR 149", "\\ISO 2022 IR 58"}) {
        const auto sets = ParseCharacterSets(name);
        std::uint32_t noise = 7;
        for (int round = 0; round < 200; ++round) {
            std::string bytes = round % 2 == 0 ? "\x1B$B" : "\x1B$(D";
            for (int i = 0; i < 40; ++i) {
                noise = noise * 1664525 + 1013904223;
                bytes += static_cast<char>(noise >> 24);
            }
            EXPECT_FALSE(DecodeText(bytes, sets, true).empty()) << name;
        }
    }
}

}  // namespace
}  // namespace quorvex::dicom
