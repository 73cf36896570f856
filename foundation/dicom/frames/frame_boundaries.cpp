#include "foundation/dicom/frames/frame_boundaries.h"

#include "foundation/dicom/model/encoding.h"
#include "foundation/types/limits.h"

#include <algorithm>
#include <array>
#include <optional>

namespace quorvex::dicom {
namespace {

constexpr std::size_t kRleHeaderBytes = 64;

constexpr std::array<unsigned char, 3> kJpegStart = {0xFF, 0xD8, 0xFF};  // JPEG-LS too
constexpr std::array<unsigned char, 4> kJpeg2000Start = {0xFF, 0x4F, 0xFF, 0x51};
constexpr std::array<unsigned char, 8> kJp2Signature = {0, 0, 0, 0x0C, 'j', 'P', ' ', ' '};

template <std::size_t size>
bool StartsWith(std::span<const unsigned char> bytes,
                const std::array<unsigned char, size>& start) {
    return bytes.size() >= size && std::equal(start.begin(), start.end(), bytes.begin());
}

template <class Number>
Number LittleEndianAt(std::span<const unsigned char> bytes, std::size_t index) {
    return Load<Number>(bytes.subspan(index * sizeof(Number), sizeof(Number)).data(), false);
}

/// DICOM PS3.5 Annex G: a segment count, then ascending offsets of which the first is the header's
/// own length.
bool BeginsRle(std::span<const unsigned char> bytes) {
    if (bytes.size() < kRleHeaderBytes) return false;
    const auto count = LittleEndianAt<std::uint32_t>(bytes, 0);
    if (count == 0 || count > kMostRleSegments) return false;
    if (LittleEndianAt<std::uint32_t>(bytes, 1) != kRleHeaderBytes) return false;
    for (std::uint32_t i = 2; i <= count; ++i) {
        if (LittleEndianAt<std::uint32_t>(bytes, i) <= LittleEndianAt<std::uint32_t>(bytes, i - 1))
            return false;
    }
    return true;
}

std::uint64_t EndOf(const Fragment& fragment) {
    return fragment.offset + kItemHeader + fragment.bytes.size();
}

/// The fragments that a table of offsets points to; nothing when it does not make sense.
template <class Offset>
std::optional<std::vector<std::size_t>> FromTable(const EncapsulatedFrames& frames,
                                                  std::span<const unsigned char> table) {
    const std::size_t entries = table.size() / sizeof(Offset);
    if (entries == 0 || entries != frames.frameCount) return std::nullopt;
    std::vector<std::size_t> starts;
    const std::uint64_t end = EndOf(frames.fragments.back());
    for (std::size_t entry = 0, fragment = 0; entry < entries; ++entry) {
        const auto offset = LittleEndianAt<Offset>(table, entry);
        if (entry > 0 && offset >= end) break;
        while (fragment < frames.fragments.size() && frames.fragments[fragment].offset < offset)
            ++fragment;
        if (fragment == frames.fragments.size() || frames.fragments[fragment].offset != offset)
            return std::nullopt;
        if (starts.empty() ? fragment != 0 : fragment == starts.back()) return std::nullopt;
        starts.push_back(fragment);
    }
    return starts;
}

template <class Belongs>
std::vector<std::size_t> IndexesWhere(std::span<const Fragment> fragments, Belongs belongs) {
    std::vector<std::size_t> indexes;
    for (std::size_t i = 0; i < fragments.size(); ++i) {
        if (belongs(fragments[i])) indexes.push_back(i);
    }
    return indexes;
}

std::vector<std::size_t> FromStartsOfImage(const EncapsulatedFrames& frames) {
    auto starts = IndexesWhere(frames.fragments, [&](const Fragment& fragment) {
        return BeginsImage(fragment.bytes, frames.syntax);
    });
    if (starts.empty()) starts.push_back(0);
    starts.front() = 0;  // what stands ahead of the first start can only belong to the first frame
    return starts;
}

/// Some writers end with an empty fragment, so empty ones count only if the numbers ask for it.
std::optional<std::vector<std::size_t>> OneFragmentAFrame(const EncapsulatedFrames& frames) {
    auto all = IndexesWhere(frames.fragments, [](const Fragment&) { return true; });
    if (all.size() == frames.frameCount) return all;
    auto filled =
        IndexesWhere(frames.fragments, [](const Fragment& f) { return !f.bytes.empty(); });
    if (filled.size() == frames.frameCount) return filled;
    return std::nullopt;
}

/// What tables and numbers say; nothing where they say nothing.
std::optional<std::vector<std::size_t>> StatedFirstFragments(const EncapsulatedFrames& frames) {
    if (frames.fragments.empty()) return std::vector<std::size_t>{};
    if (auto starts = FromTable<std::uint64_t>(frames, frames.extendedOffsets)) return starts;
    if (auto starts = FromTable<std::uint32_t>(frames, frames.offsetTable)) return starts;
    if (auto starts = OneFragmentAFrame(frames)) return starts;
    if (frames.frameCount <= 1) return std::vector<std::size_t>{0};
    return std::nullopt;
}

}  // namespace

bool BeginsImage(std::span<const unsigned char> bytes, TRANSFER_SYNTAX syntax) noexcept {
    if (syntax == kRle) return BeginsRle(bytes);
    return StartsWith(bytes, kJpegStart) || StartsWith(bytes, kJpeg2000Start) ||
           StartsWith(bytes, kJp2Signature);
}

std::vector<std::size_t> FirstFragments(const EncapsulatedFrames& frames) {
    if (auto starts = StatedFirstFragments(frames)) return *starts;
    return FromStartsOfImage(frames);
}

bool AreFramesGuessed(const EncapsulatedFrames& frames) {
    return frames.frameCount > 1 && !StatedFirstFragments(frames);
}

}  // namespace quorvex::dicom
