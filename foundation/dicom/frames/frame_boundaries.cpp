#include "foundation/dicom/frames/frame_boundaries.h"

#include "foundation/dicom/model/encoding.h"
#include "foundation/types/limits.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace quorvex::dicom {
namespace {

constexpr std::size_t kRleHeaderBytes = kLongestStartOfImage;

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

/// The fragments that a table of offsets points to; nothing when it does not make sense.
template <class Offset>
std::optional<std::vector<std::size_t>> FromTable(const FragmentList& fragments,
                                                  std::uint32_t frameCount,
                                                  std::span<const unsigned char> table) {
    const std::size_t entries = table.size() / sizeof(Offset);
    if (entries == 0 || entries != frameCount) return std::nullopt;
    std::vector<std::size_t> starts;
    const std::size_t count = fragments.Count();
    const std::uint64_t end =
        fragments.OffsetOf(count - 1) + kItemHeader + fragments.LengthOf(count - 1);
    for (std::size_t entry = 0, fragment = 0; entry < entries; ++entry) {
        const auto offset = LittleEndianAt<Offset>(table, entry);
        if (entry > 0 && offset >= end) break;
        while (fragment < count && fragments.OffsetOf(fragment) < offset) ++fragment;
        if (fragment == count || fragments.OffsetOf(fragment) != offset) return std::nullopt;
        if (starts.empty() ? fragment != 0 : fragment == starts.back()) return std::nullopt;
        starts.push_back(fragment);
    }
    return starts;
}

template <class Belongs>
std::vector<std::size_t> IndexesWhere(const FragmentList& fragments, Belongs belongs) {
    std::vector<std::size_t> indexes;
    for (std::size_t i = 0; i < fragments.Count(); ++i) {
        if (belongs(i)) indexes.push_back(i);
    }
    return indexes;
}

std::vector<std::size_t> FromStartsOfImage(FragmentList& fragments) {
    auto starts =
        IndexesWhere(fragments, [&](std::size_t i) { return fragments.IsStartOfImage(i); });
    if (starts.empty()) starts.push_back(0);
    starts.front() = 0;  // what stands ahead of the first start can only belong to the first frame
    return starts;
}

/// Some writers end with an empty fragment, so empty ones count only if the numbers ask for it.
std::optional<std::vector<std::size_t>> OneFragmentAFrame(const FragmentList& fragments,
                                                          std::uint32_t frameCount) {
    if (fragments.Count() == frameCount) return IndexesWhere(fragments, [](auto) { return true; });
    auto filled = IndexesWhere(fragments, [&](auto i) { return fragments.LengthOf(i) != 0; });
    if (filled.size() == frameCount) return filled;
    return std::nullopt;
}

/// What tables and numbers say; nothing where they say nothing.
std::optional<std::vector<std::size_t>> StatedFirstFragments(const FragmentList& fragments,
                                                             std::span<const unsigned char> table,
                                                             const FrameHints& hints) {
    const std::uint32_t frameCount = hints.frameCount;
    if (fragments.Count() == 0) return std::vector<std::size_t>{};
    if (auto starts = FromTable<std::uint64_t>(fragments, frameCount, hints.extendedOffsets))
        return starts;
    if (auto starts = FromTable<std::uint32_t>(fragments, frameCount, table)) return starts;
    if (auto starts = OneFragmentAFrame(fragments, frameCount)) return starts;
    if (frameCount <= 1) return std::vector<std::size_t>{0};
    return std::nullopt;
}

class FragmentsInMemory final : public FragmentList {
public:
    FragmentsInMemory(std::span<const Fragment> fragments, TRANSFER_SYNTAX syntax)
        : fragments_(fragments), syntax_(syntax) {}

    [[nodiscard]] std::size_t Count() const override { return fragments_.size(); }
    [[nodiscard]] std::uint64_t OffsetOf(std::size_t index) const override {
        return fragments_[index].offset;
    }
    [[nodiscard]] std::uint64_t LengthOf(std::size_t index) const override {
        return fragments_[index].bytes.size();
    }
    [[nodiscard]] bool IsStartOfImage(std::size_t index) override {
        return BeginsImage(fragments_[index].bytes, syntax_);
    }

private:
    std::span<const Fragment> fragments_;
    TRANSFER_SYNTAX syntax_;
};

}  // namespace

bool BeginsImage(std::span<const unsigned char> bytes, TRANSFER_SYNTAX syntax) noexcept {
    if (syntax == kRle) return BeginsRle(bytes);
    return StartsWith(bytes, kJpegStart) || StartsWith(bytes, kJpeg2000Start) ||
           StartsWith(bytes, kJp2Signature);
}

FrameStarts FindFrames(FragmentList& fragments, std::span<const unsigned char> offsetTable,
                       const FrameHints& hints) {
    if (auto starts = StatedFirstFragments(fragments, offsetTable, hints))
        return {.firstFragments = std::move(*starts)};
    return {.firstFragments = FromStartsOfImage(fragments), .isGuessed = true};
}

FrameStarts FindFrames(std::span<const Fragment> fragments,
                       std::span<const unsigned char> offsetTable, const FrameHints& hints) {
    FragmentsInMemory list(fragments, hints.syntax);
    return FindFrames(list, offsetTable, hints);
}

}  // namespace quorvex::dicom
