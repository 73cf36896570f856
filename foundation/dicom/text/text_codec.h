/// Text of a data set: bytes under a Specific Character Set to UTF-16, and back.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quorvex::dicom {

/// A coded character set that Specific Character Set (0008,0005) can name.
enum class CharacterSet : std::uint8_t {
    kIr6,    ///< ASCII; bytes above 127, which it does not have, are read as Latin-1
    kIr100,  ///< Latin alphabets 1 to 5 and 9
    kIr101,
    kIr109,
    kIr110,
    kIr148,
    kIr203,
    kIr144,  ///< Cyrillic
    kIr127,  ///< Arabic
    kIr126,  ///< Greek
    kIr138,  ///< Hebrew
    kIr166,  ///< Thai
    kIr13,   ///< Japanese: half-width katakana
    kIr87,   ///< Japanese: kanji
    kIr159,  ///< Japanese: supplementary kanji
    kIr149,  ///< Korean
    kIr58,   ///< simplified Chinese
    kIr192,  ///< UTF-8
    kGb18030,
    kGbk,
};

/// What (0008,0005) of a data set says. The default is what an absent one says.
struct CharacterSets {
    static constexpr std::size_t kMost = 8;

    std::array<CharacterSet, kMost> sets{};  ///< the first is in force where no escape was met
    std::uint8_t count = 1;

    [[nodiscard]] CharacterSet First() const noexcept { return sets[0]; }
    [[nodiscard]] std::span<const CharacterSet> All() const noexcept {
        return std::span(sets).first(count);
    }
    friend bool operator==(const CharacterSets&, const CharacterSets&) = default;
};

/// True for text that means the same in every character set: ASCII without escapes.
[[nodiscard]] bool IsPlainText(std::string_view text) noexcept;

/// Reads the stored value of (0008,0005), backslashes included. Spellings with other blanks,
/// underscores or hyphens, and lower case, are understood; an unknown name counts as ASCII.
[[nodiscard]] CharacterSets ParseCharacterSets(std::string_view specificCharacterSet);

/// Decodes a stored value, escapes and all; bytes that mean nothing become U+FFFD.
///
/// Give it the whole stored value and split the result at u'\\', not the bytes: the second byte of
/// a Chinese or Japanese character may be a backslash. `isPersonName` makes ^ and = delimiters too,
/// behind which the first set is in force again. Padding stays.
[[nodiscard]] std::u16string DecodeText(std::string_view bytes, const CharacterSets& sets,
                                        bool isPersonName);

/// Encodes text, with the escapes it takes; nothing when the sets cannot hold every character.
[[nodiscard]] std::optional<std::string> EncodeText(std::u16string_view text,
                                                    const CharacterSets& sets, bool isPersonName);

}  // namespace quorvex::dicom
