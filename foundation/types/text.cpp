#include "foundation/types/utf.h"
#include "quorvex/Types.h"

#include <algorithm>
#include <compare>

namespace quorvex {
namespace {

constexpr char16_t Lower(char16_t c) {
    return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + (u'a' - u'A')) : c;
}

std::size_t Clamped(int value, std::size_t most) {
    return value < 0 ? 0 : std::min(static_cast<std::size_t>(value), most);
}

}  // namespace

CString::CString(const char* utf8) : CString(std::string_view(utf8 == nullptr ? "" : utf8)) {}
CString::CString(std::string_view utf8) : text_(Utf16FromBytes(utf8)) {}
CString::CString(const std::string& utf8) : CString(std::string_view(utf8)) {}
CString::CString(const char16_t* text) : text_(text == nullptr ? u"" : text) {}
CString::CString(std::u16string_view text) : text_(text) {}

std::string CString::ToUtf8() const {
    return BytesFromUtf16(text_);
}

std::string CString::ToValidUtf8() const {
    return Utf8FromUtf16(text_);
}

int CString::Find(const CString& part, int start) const noexcept {
    if (start < 0 || start > GetLength()) return -1;
    const auto place = text_.find(part.text_, static_cast<std::size_t>(start));
    return place == std::u16string::npos ? -1 : static_cast<int>(place);
}

CString CString::Left(int count) const {
    return Mid(0, std::max(count, 0));
}

CString CString::Right(int count) const {
    return Mid(GetLength() - static_cast<int>(Clamped(count, text_.size())));
}

CString CString::Mid(int first, int count) const {
    const std::size_t from = Clamped(first, text_.size());
    const std::size_t most = text_.size() - from;
    return std::u16string_view(text_).substr(from, count < 0 ? most : Clamped(count, most));
}

int CString::Compare(const CString& other) const noexcept {
    return text_.compare(other.text_);
}

int CString::CompareNoCase(const CString& other) const noexcept {
    const auto order = std::lexicographical_compare_three_way(
        text_.begin(), text_.end(), other.text_.begin(), other.text_.end(),
        [](char16_t a, char16_t b) { return Lower(a) <=> Lower(b); });
    if (std::is_lt(order)) return -1;
    return std::is_gt(order) ? 1 : 0;
}

char16_t CString::operator[](int index) const noexcept {
    return index < 0 || index >= GetLength() ? u'\0' : text_[static_cast<std::size_t>(index)];
}

CString& CString::operator+=(const CString& tail) {
    text_ += tail.text_;
    return *this;
}

}  // namespace quorvex
