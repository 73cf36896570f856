#include "foundation/engines/jpeg/jpeg_header.h"

#include <algorithm>
#include <string_view>

namespace quorvex {
namespace {

constexpr std::uint8_t kSoi = 0xD8;
constexpr std::uint8_t kEoi = 0xD9;
constexpr std::uint8_t kSos = 0xDA;
constexpr std::uint8_t kDri = 0xDD;
constexpr std::uint8_t kDhp = 0xDE;
constexpr std::uint8_t kApp0 = 0xE0;
constexpr std::uint8_t kApp14 = 0xEE;
constexpr std::uint8_t kTem = 0x01;
constexpr std::size_t kAdobeTransformPlace = 11;

std::uint16_t BigEndian16(std::span<const unsigned char> bytes, std::size_t place) noexcept {
    return static_cast<std::uint16_t>((bytes[place] << 8) | bytes[place + 1]);
}

bool IsFrameHeader(std::uint8_t marker) noexcept {
    constexpr std::uint8_t kDht = 0xC4;
    constexpr std::uint8_t kJpg = 0xC8;
    constexpr std::uint8_t kDac = 0xCC;
    return marker >= 0xC0 && marker <= 0xCF && marker != kDht && marker != kJpg && marker != kDac;
}

bool StandsAlone(std::uint8_t marker) noexcept {
    return marker == kTem || (marker >= 0xD0 && marker <= kSoi);
}

bool BeginsWith(std::span<const unsigned char> content, std::string_view name) noexcept {
    return content.size() >= name.size() &&
           std::equal(name.begin(), name.end(), content.begin(),
                      [](char a, unsigned char b) { return static_cast<unsigned char>(a) == b; });
}

/// What is decoded, by frame header: a process and precisions.
struct DecodableRow {
    std::uint8_t sofMarker;
    std::uint8_t leastPrecision;
    std::uint8_t mostPrecision;
    std::uint8_t step;
};
constexpr DecodableRow kDecodable[] = {
    {0xC0, 8, 12, 4},  // baseline; some write it with 12 bits
    {0xC1, 8, 12, 4},  // extended sequential
    {0xC2, 8, 12, 4},  // progressive: spectral selection, full progression
    {0xC3, 2, 16, 1},  // lossless, every selection value and point transform
    {0xC9, 8, 8, 1},   // extended sequential, arithmetic
    {0xCA, 8, 8, 1},   // progressive, arithmetic
};

bool IsDecodableFrame(std::uint8_t sofMarker, int precision) noexcept {
    const auto* const row = std::ranges::find(kDecodable, sofMarker, &DecodableRow::sofMarker);
    return row != std::end(kDecodable) && precision >= row->leastPrecision &&
           precision <= row->mostPrecision && (precision - row->leastPrecision) % row->step == 0;
}

bool AreRgbIds(std::span<const JpegComponent, 4> components) noexcept {
    return components[0].id == 'R' && components[1].id == 'G' && components[2].id == 'B';
}

bool IsSamplingFactor(int factor) noexcept {
    return factor >= 1 && factor <= 4;
}

}  // namespace

JpegProcess JpegHeader::Process() const noexcept {
    return static_cast<JpegProcess>(sofMarker & 3);
}

bool JpegHeader::IsArithmetic() const noexcept {
    constexpr std::uint8_t kFirstArithmetic = 0xC9;
    return sofMarker >= kFirstArithmetic;
}

bool JpegHeader::IsDecodable() const noexcept {
    if (isHierarchical || width == 0 || height == 0) return false;
    if (componentCount != 1 && componentCount != 3 && componentCount != 4) return false;
    const auto* const first = components.begin();
    return IsDecodableFrame(sofMarker, precision) &&
           std::all_of(first, first + componentCount, [](const JpegComponent& c) {
               return IsSamplingFactor(c.horizontal) && IsSamplingFactor(c.vertical);
           });
}

bool JpegHeader::IsSubsampled() const noexcept {
    const auto* const first = components.begin();
    return std::any_of(
        first, first + std::min<int>(componentCount, 4), [&](const JpegComponent& c) {
            return c.horizontal != first->horizontal || c.vertical != first->vertical;
        });
}

bool JpegHeader::NeedsWholePicture() const noexcept {
    return Process() == JpegProcess::kProgressive || scanComponents < componentCount;
}

bool JpegHeader::ColourIsMarked() const noexcept {
    return componentCount == 1 || hasJfif || adobeTransform || AreRgbIds(components) ||
           IsSubsampled();
}

JpegColourForm JpegHeader::ColourForm() const noexcept {
    if (componentCount == 1) return JpegColourForm::kGrey;
    if (componentCount == 4) {
        return adobeTransform == 2 ? JpegColourForm::kYccInks : JpegColourForm::kInks;
    }
    if (Process() == JpegProcess::kLossless) return JpegColourForm::kRgb;
    return MarksRgb() ? JpegColourForm::kRgb : JpegColourForm::kYcc;
}

bool JpegHeader::MarksRgb() const noexcept {
    if (componentCount != 3 || hasJfif) return false;
    return adobeTransform ? *adobeTransform == 0 : AreRgbIds(components);
}

std::uint64_t JpegHeader::LeastBytes() const noexcept {
    constexpr std::uint64_t kBlockSide = 8;
    const std::uint64_t side = Process() == JpegProcess::kLossless ? 1 : kBlockSide;
    const std::span shown(components.data(), std::min<std::size_t>(componentCount, 4));
    std::uint64_t widest = 1;
    std::uint64_t highest = 1;
    for (const JpegComponent& c : shown) {
        widest = std::max<std::uint64_t>(widest, c.horizontal);
        highest = std::max<std::uint64_t>(highest, c.vertical);
    }
    std::uint64_t bits = 0;
    for (const JpegComponent& c : shown) {
        bits += (width * std::uint64_t{c.horizontal} / (widest * side)) *
                (height * std::uint64_t{c.vertical} / (highest * side));
    }
    constexpr std::uint64_t kArithmeticBlocks = 64;
    return bits / (IsArithmetic() ? 8 * kArithmeticBlocks : 8);
}

JpegHeaderScanner::State JpegHeaderScanner::Scan(std::span<const unsigned char> head) noexcept {
    if (place_ == 0) {
        if (head.size() < 2) return State::kNeedsMore;
        if (head[0] != 0xFF || head[1] != kSoi) return State::kNoJpeg;
        place_ = 2;
    }
    State state = State::kNeedsMore;
    while (place_ + 1 < head.size()) {
        const std::size_t before = place_;
        state = ScanSegment(head);
        if (state != State::kNeedsMore || place_ == before) return state;
    }
    return state;
}

// Stops with kNeedsMore and an unmoved place when the segment is not there whole.
JpegHeaderScanner::State JpegHeaderScanner::ScanSegment(
    std::span<const unsigned char> head) noexcept {
    const std::uint8_t marker = head[place_ + 1];
    // Fill bytes, and stray bytes that decoders skip on their way to the next marker.
    if (head[place_] != 0xFF || marker == 0xFF || marker == 0) {
        ++place_;
        return State::kNeedsMore;
    }
    if (StandsAlone(marker)) {
        place_ += 2;
        return State::kNeedsMore;
    }
    if (marker == kEoi) return State::kBroken;
    if (place_ + 4 > head.size()) return State::kNeedsMore;
    const std::size_t length = BigEndian16(head, place_ + 2);
    if (length < 2) return State::kBroken;
    if (place_ + 2 + length > head.size()) return State::kNeedsMore;
    ReadSegment(marker, head.subspan(place_ + 4, length - 2));
    place_ += 2 + length;
    if (marker != kSos) return State::kNeedsMore;
    return header_.sofMarker != 0 ? State::kDone : State::kBroken;
}

void JpegHeaderScanner::ReadSegment(std::uint8_t marker,
                                    std::span<const unsigned char> content) noexcept {
    if (IsFrameHeader(marker) && header_.sofMarker == 0) ReadFrame(marker, content);
    if (marker == kDri && content.size() >= 2) header_.restartInterval = BigEndian16(content, 0);
    if (marker == kDhp) header_.isHierarchical = true;
    if (marker == kSos && !content.empty()) header_.scanComponents = content[0];
    if (marker == kApp0 && BeginsWith(content, {"JFIF\0", 5})) header_.hasJfif = true;
    // Some writers leave the marker short of its last byte, which says what the transform is.
    if (marker == kApp14 && BeginsWith(content, "Adobe") && content.size() > kAdobeTransformPlace) {
        header_.adobeTransform = content[kAdobeTransformPlace];
    }
}

void JpegHeaderScanner::ReadFrame(std::uint8_t marker,
                                  std::span<const unsigned char> content) noexcept {
    constexpr std::size_t kFixedPart = 6;
    if (content.size() < kFixedPart) return;
    if (content.size() < kFixedPart + 3 * std::size_t{content[5]}) return;
    header_.sofMarker = marker;
    header_.precision = content[0];
    header_.height = BigEndian16(content, 1);
    header_.width = BigEndian16(content, 3);
    header_.componentCount = content[5];
    const std::size_t kept = std::min<std::size_t>(content[5], header_.components.size());
    for (std::size_t i = 0; i < kept; ++i) {
        const auto entry = content.subspan(kFixedPart + 3 * i, 3);
        header_.components[i] = {.id = entry[0],
                                 .horizontal = static_cast<std::uint8_t>(entry[1] >> 4),
                                 .vertical = static_cast<std::uint8_t>(entry[1] & 15)};
    }
}

}  // namespace quorvex
