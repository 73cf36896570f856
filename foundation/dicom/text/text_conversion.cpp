#include "foundation/dicom/text/text_conversion.h"

#include "foundation/dicom/text/character_set_table.h"
#include "foundation/types/utf.h"

#include <array>
#include <bit>
#include <cerrno>
#include <iconv.h>
#include <new>

namespace quorvex::dicom {
namespace {

constexpr char16_t kReplacement = 0xFFFD;
constexpr const char* kUtf16 = std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";
constexpr std::size_t kSetCount = static_cast<std::size_t>(CharacterSet::kGbk) + 1;

/// One conversion descriptor, opened when it is first asked for.
class Converter {
public:
    Converter() = default;
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() {
        if (IsOpen()) iconv_close(handle_);
    }

    /// False where this system does not know the encoding.
    bool Open(const char* to, const char* from) {
        if (!IsOpen()) handle_ = iconv_open(to, from);
        if (!IsOpen() && errno == ENOMEM) throw std::bad_alloc();
        if (IsOpen()) iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        return IsOpen();
    }

    /// Takes both ends on as far as it comes; 0, or why it stopped.
    int Convert(std::string_view& from, char*& to, std::size_t& room) noexcept {
        char* source = const_cast<char*>(from.data());  // iconv writes no source
        std::size_t left = from.size();
        const bool isDone =
            iconv(handle_, &source, &left, &to, &room) != static_cast<std::size_t>(-1);
        const int error = isDone ? 0 : errno;
        from.remove_prefix(from.size() - left);
        return error;
    }

private:
    [[nodiscard]] bool IsOpen() const noexcept {
        return handle_ != reinterpret_cast<iconv_t>(std::intptr_t{-1});
    }
    iconv_t handle_ = reinterpret_cast<iconv_t>(std::intptr_t{-1});
};

Converter& ConverterOf(std::array<Converter, kSetCount>& converters, CharacterSet set) {
    return converters[static_cast<std::size_t>(set)];
}

Converter& DecoderOf(CharacterSet set) {
    thread_local std::array<Converter, kSetCount> decoders;
    return ConverterOf(decoders, set);
}

Converter& EncoderOf(CharacterSet set) {
    thread_local std::array<Converter, kSetCount> encoders;
    return ConverterOf(encoders, set);
}

void AppendLatin1(std::string_view bytes, std::u16string& text) {
    for (const char c : bytes) text += static_cast<unsigned char>(c);
}

/// Room for the most that a byte can become, and a loop that grows it should that be wrong.
void AppendConverted(Converter& decoder, std::string_view bytes, std::u16string& text) {
    while (!bytes.empty()) {
        const std::size_t before = text.size();
        text.resize(before + 2 * bytes.size() + 2);
        char* to = reinterpret_cast<char*>(text.data() + before);
        std::size_t room = (text.size() - before) * sizeof(char16_t);
        const int error = decoder.Convert(bytes, to, room);
        text.resize(text.size() - room / sizeof(char16_t));
        if (error == 0) return;
        if (error == E2BIG) continue;
        text += kReplacement;
        if (error == EINVAL) return;  // the last character is cut off
        bytes.remove_prefix(1);
    }
}

}  // namespace

void AppendDecoded(std::string_view bytes, CharacterSet set, std::u16string& text) {
    if (set == CharacterSet::kIr6 || set == CharacterSet::kIr100) return AppendLatin1(bytes, text);
    if (set == CharacterSet::kIr192) {
        text += Utf16FromUtf8(bytes);
        return;
    }
    Converter& decoder = DecoderOf(set);
    if (decoder.Open(kUtf16, RowOf(set).encoding)) return AppendConverted(decoder, bytes, text);
    text.append(bytes.size(), kReplacement);
}

std::optional<std::string> EncodedAs(CharacterSet set, std::u16string_view text) {
    Converter& encoder = EncoderOf(set);
    if (!encoder.Open(RowOf(set).encoding, kUtf16)) return std::nullopt;
    std::string bytes(text.size() * 4 + 4, '\0');
    char* to = bytes.data();
    std::size_t room = bytes.size();
    std::string_view from(reinterpret_cast<const char*>(text.data()),
                          text.size() * sizeof(char16_t));
    if (encoder.Convert(from, to, room) != 0) return std::nullopt;
    bytes.resize(bytes.size() - room);
    return bytes;
}

}  // namespace quorvex::dicom
