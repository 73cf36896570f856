#include "foundation/engines/jpegxl/jpegxl_boxes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace quorvex {
namespace {

using Bytes = std::span<const unsigned char>;

constexpr std::array<unsigned char, 2> kBareSignature = {0xFF, 0x0A};
constexpr std::array<unsigned char, 12> kBoxSignature = {0,   0,   0,    0x0C, 'J',  'X',
                                                         'L', ' ', 0x0D, 0x0A, 0x87, 0x0A};
constexpr std::array<unsigned char, 20> kFileType = {0,   0,   0, 20, 'f', 't', 'y', 'p', 'j', 'x',
                                                     'l', ' ', 0, 0,  0,   0,   'j', 'x', 'l', ' '};

constexpr std::uint32_t TypeOf(const char (&name)[5]) {
    std::uint32_t type = 0;
    for (int i = 0; i < 4; ++i) type = type << 8 | static_cast<unsigned char>(name[i]);
    return type;
}

std::uint64_t BigEndian(Bytes bytes) noexcept {
    std::uint64_t value = 0;
    for (const unsigned char byte : bytes) value = value << 8 | byte;
    return value;
}

bool StartsWith(Bytes bytes, Bytes start) noexcept {
    return bytes.size() >= start.size() && std::ranges::equal(bytes.first(start.size()), start);
}

struct Box {
    std::uint32_t type = 0;
    Bytes content;
};

/// Takes the first box off; one that is cut off has what is there.
std::optional<Box> NextBox(Bytes& rest) noexcept {
    constexpr std::size_t kShortHeader = 8;
    constexpr std::size_t kLongHeader = 16;
    if (rest.size() < kShortHeader) return std::nullopt;
    std::uint64_t length = BigEndian(rest.first(4));
    std::size_t header = kShortHeader;
    if (length == 1 && rest.size() >= kLongHeader) {
        length = BigEndian(rest.subspan(kShortHeader, 8));
        header = kLongHeader;
    }
    if (length == 0) length = rest.size();  // the last box
    if (length < header) return std::nullopt;
    const auto whole = rest.first(std::min<std::uint64_t>(length, rest.size()));
    const Box box{static_cast<std::uint32_t>(BigEndian(rest.subspan(4, 4))), whole.subspan(header)};
    rest = rest.subspan(whole.size());
    return box;
}

void Append(std::vector<unsigned char>& all, Bytes bytes) {
    all.insert(all.end(), bytes.begin(), bytes.end());
}

void AppendBox(std::vector<unsigned char>& all, const char (&type)[5], Bytes content) {
    constexpr std::uint32_t kHeader = 8;
    const auto length = static_cast<std::uint32_t>(content.size() + kHeader);
    for (const int shift : {24, 16, 8, 0})
        all.push_back(static_cast<unsigned char>(length >> shift));
    for (int i = 0; i < 4; ++i) all.push_back(static_cast<unsigned char>(type[i]));
    Append(all, content);
}

}  // namespace

std::optional<JpegXlParts> TakeApart(Bytes stream) {
    if (StartsWith(stream, kBareSignature)) return JpegXlParts{{}, stream, {}};
    if (!StartsWith(stream, kBoxSignature)) return std::nullopt;
    constexpr std::size_t kPartNumber = 4;  // their order in the stream is that of their numbers
    JpegXlParts parts;
    Bytes rest = stream.subspan(kBoxSignature.size());
    while (const auto box = NextBox(rest)) {
        if (box->type == TypeOf("jbrd") && parts.jpegBox.empty()) parts.jpegBox = box->content;
        if (box->type == TypeOf("jxlp") && box->content.size() >= kPartNumber)
            Append(parts.joined, box->content.subspan(kPartNumber));
        if (box->type == TypeOf("jxlc") && parts.codestream.empty())
            parts.codestream = box->content;
    }
    if (parts.codestream.empty()) parts.codestream = parts.joined;
    if (!StartsWith(parts.codestream, kBareSignature)) return std::nullopt;
    return parts;
}

std::vector<unsigned char> PutIntoBoxes(Bytes codestream, Bytes jpegBox) {
    std::vector<unsigned char> all(kBoxSignature.begin(), kBoxSignature.end());
    Append(all, kFileType);
    AppendBox(all, "jbrd", jpegBox);
    AppendBox(all, "jxlc", codestream);
    return all;
}

}  // namespace quorvex
