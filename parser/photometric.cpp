#include "parser/photometric.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/types/checked_size.h"
#include "quorvex/Tags.h"

#include <algorithm>

namespace quorvex {
namespace {

// Four inks of a JPEG stream become R, G, B; other codings keep their four samples.
constexpr Photometric kPhotometrics[] = {
    {"MONOCHROME1", 1},     {"MONOCHROME2", 1},     {"PALETTE COLOR", 1}, {"RGB", 3},
    {"YBR_FULL", 3},        {"YBR_FULL_422", 3},    {"YBR_ICT", 3},       {"YBR_RCT", 3},
    {"YBR_PARTIAL_422", 3}, {"YBR_PARTIAL_420", 3}, {"XYB", 3},           {"CMYK", 3},
};

constexpr int kInks = 4;

constexpr bool IsSeparator(char16_t character) noexcept {
    return character == u' ' || character == u'_' || character == u'\t' || character == u'\0';
}

constexpr char16_t InCapitals(char16_t character) noexcept {
    const bool isSmall = character >= u'a' && character <= u'z';
    return isSmall ? static_cast<char16_t>(character - u'a' + u'A') : character;
}

/// The first letter or digit of a text in capitals, taken away; 0 behind the last one.
template <class Character>
char16_t TakeLetter(std::basic_string_view<Character>& text) noexcept {
    while (!text.empty()) {
        const auto character = static_cast<char16_t>(text.front());
        text.remove_prefix(1);
        if (!IsSeparator(character)) return InCapitals(character);
    }
    return 0;
}

bool HaveSameLetters(std::u16string_view text, std::string_view name) noexcept {
    for (;;) {
        const char16_t letter = TakeLetter(text);
        if (letter != TakeLetter(name)) return false;
        if (letter == 0) return true;
    }
}

/// Bytes of native Pixel Data with three samples for each pixel; 0 where the header does not say.
std::size_t WholeColourBytes(const CDcmObject& header) {
    const auto number = [&](std::uint32_t tag, int absent) {
        return static_cast<std::size_t>(std::max(Read<int>(header, tag).value_or(absent), 0));
    };
    const auto frame = CheckedProduct(number(tag::kRows, 0), number(tag::kColumns, 0),
                                      3 * (number(tag::kBitsAllocated, 0) / 8));
    if (!frame) return 0;
    return CheckedProduct(*frame, number(tag::kNumberOfFrames, 1)).value_or(0);
}

bool HasWholeColours(const CDcmObject& header, std::size_t nativeBytes) {
    const std::size_t whole = WholeColourBytes(header);
    return whole != 0 && nativeBytes >= whole && nativeBytes <= whole + whole % 2;
}

}  // namespace

bool KeepsInks(const CDcmObject& header) {
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    return Read<int>(header, tag::kSamplesPerPixel) == kInks &&
           header.GetTransferSyntax(syntax) == kDcmSuccess &&
           CodingOf(syntax) == FrameCoding::kJpeg2000 &&
           TextIs(header, tag::kPhotometricInterpretation, "CMYK");
}

std::optional<Photometric> UnderstoodPhotometric(std::u16string_view text) noexcept {
    for (const Photometric& photometric : kPhotometrics) {
        if (HaveSameLetters(text, photometric.name)) return photometric;
    }
    return std::nullopt;
}

void UnderstandPhotometric(CDcmObject& header, std::size_t nativeBytes) {
    const auto text = Read<CString>(header, tag::kPhotometricInterpretation);
    if (!text) return;
    const auto photometric = UnderstoodPhotometric(text->View());
    if (!photometric) return;
    const bool isMisnamed =
        photometric->name == "YBR_FULL_422" && HasWholeColours(header, nativeBytes);
    const CString name(isMisnamed ? std::string_view("YBR_FULL") : photometric->name);
    if (*text != name) header.SetValue(tag::kPhotometricInterpretation, name);
    if (!KeepsInks(header)) header.SetValue(tag::kSamplesPerPixel, photometric->samplesPerPixel);
}

}  // namespace quorvex
