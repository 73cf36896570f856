#include "tools/convert/streaming/outline.h"

#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"
#include "tools/convert/checks/source_checks.h"
#include "tools/convert_target.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <vector>

namespace quorvex::tools {
namespace {

constexpr std::uint64_t kItemHeader = 8;
constexpr std::size_t kPiece = std::size_t{1} << 20;

class RandomFile {
public:
    explicit RandomFile(const std::string& path) : file_(path, std::ios::binary) {
        file_.seekg(0, std::ios::end);
        size_ = file_ ? static_cast<std::uint64_t>(file_.tellg()) : 0;
    }
    [[nodiscard]] std::uint64_t Size() const noexcept { return size_; }
    template <std::size_t count>
    [[nodiscard]] std::optional<std::array<unsigned char, count>> At(std::uint64_t offset) {
        std::array<unsigned char, count> bytes{};
        if (offset > size_ || count > size_ - offset || Read(offset, bytes.data(), count) != count)
            return std::nullopt;
        return bytes;
    }
    /// How many bytes were read.
    std::size_t Read(std::uint64_t offset, void* to, std::size_t count) {
        file_.clear();
        file_.seekg(static_cast<std::streamoff>(offset));
        file_.read(static_cast<char*>(to), static_cast<std::streamsize>(count));
        return static_cast<std::size_t>(file_.gcount());
    }

private:
    std::ifstream file_;
    std::uint64_t size_ = 0;
};

/// A file with a part left out, and a length of 0 ahead of that where it was a native value.
struct Cut {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    bool isNative = false;
    std::uint64_t storedBytes = 0;
};

std::uint32_t Number(std::span<const unsigned char> four, bool isBigEndian) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i) number = number << 8 | four[isBigEndian ? i : 3 - i];
    return number;
}

/// An item's or delimiter's tag, little endian, and its length; nothing for any other tag.
std::optional<std::uint32_t> LengthAt(RandomFile& file, std::uint64_t offset,
                                      unsigned char element) {
    const auto header = file.At<kItemHeader>(offset);
    const std::array<unsigned char, 4> tag = {0xFE, 0xFF, element, 0xE0};
    if (!header || !std::equal(tag.begin(), tag.end(), header->begin())) return std::nullopt;
    return Number(std::span(*header).subspan(4), false);
}

/// Whether the header of Pixel Data ends here.
bool FollowsPixelDataHeader(RandomFile& file, std::uint64_t offset, const TransferSyntax& syntax) {
    const std::uint64_t length = syntax.isExplicit ? 12 : 8;
    const auto tag = offset < length ? std::nullopt : file.At<4>(offset - length);
    if (!tag) return false;
    const std::uint32_t words = Number(*tag, syntax.isBigEndian);
    return (syntax.isBigEndian ? words : words << 16 | words >> 16) == tag::kPixelData;
}

std::optional<Cut> CutNative(RandomFile& file, const TransferSyntax& syntax, std::uint64_t offset,
                             std::uint64_t pixelBytes) {
    if (!FollowsPixelDataHeader(file, offset, syntax)) return std::nullopt;
    const auto stored = file.At<4>(offset - 4);
    const std::uint64_t length = stored ? Number(*stored, syntax.isBigEndian) : 0;
    if (length != pixelBytes + pixelBytes % 2 || length > file.Size() - offset) return std::nullopt;
    return Cut{.begin = offset, .end = offset + length, .isNative = true, .storedBytes = length};
}

/// Bytes of the offset table ahead of the first frame's item; nothing where none is plainly there.
std::optional<std::uint64_t> TableAhead(RandomFile& file, const TransferSyntax& syntax,
                                        std::uint64_t firstItem, std::uint64_t frames) {
    for (const std::uint64_t table : {std::uint64_t{0}, 4 * frames}) {
        if (firstItem < table + kItemHeader) continue;
        const std::uint64_t start = firstItem - table - kItemHeader;
        if (LengthAt(file, start, 0x00) == table && FollowsPixelDataHeader(file, start, syntax))
            return table;
    }
    return std::nullopt;
}

std::optional<Cut> CutCoded(RandomFile& file, const TransferSyntax& syntax, std::uint64_t offset,
                            std::uint64_t frames) {
    const auto table = offset < kItemHeader
                           ? std::nullopt
                           : TableAhead(file, syntax, offset - kItemHeader, frames);
    if (!table) return std::nullopt;
    Cut cut{.storedBytes = *table};
    std::uint64_t place = offset - kItemHeader;
    std::uint64_t count = 0;
    for (; const auto length = LengthAt(file, place, 0x00); ++count) {
        place += kItemHeader + *length;
        if (count == 0) cut.begin = place;
        cut.storedBytes += *length;
    }
    cut.end = place;
    const bool isWhole = count == frames && LengthAt(file, place, 0xDD) == 0U;
    return isWhole ? std::optional(cut) : std::nullopt;
}

/// Gives the file without what is cut out, piece by piece.
class CutFile {
public:
    CutFile(RandomFile& file, const Cut& cut) : file_(file), cut_(cut), piece_(kPiece) {}

    static MC_STATUS Give(const char*, void* user, int* length, void** data, int, int* last) {
        return static_cast<CutFile*>(user)->GivePiece(*length, *data, *last);
    }

private:
    MC_STATUS GivePiece(int& length, void*& data, int& last) {
        if (place_ == cut_.begin) place_ = cut_.end;
        const std::uint64_t end = place_ < cut_.begin ? cut_.begin : file_.Size();
        const std::size_t count = std::min<std::uint64_t>(kPiece, end - place_);
        if (file_.Read(place_, piece_.data(), count) != count) return kMcRefuse;
        ClearLength(count);
        place_ += count;
        length = static_cast<int>(count);
        data = piece_.data();
        last = place_ == file_.Size() || (place_ == cut_.begin && cut_.end == file_.Size()) ? 1 : 0;
        return kMcContinue;
    }
    void ClearLength(std::size_t count) {
        if (!cut_.isNative) return;
        for (std::uint64_t i = cut_.begin - 4; i < cut_.begin; ++i)
            if (i >= place_ && i < place_ + count) piece_[i - place_] = 0;
    }

    RandomFile& file_;
    const Cut& cut_;
    std::uint64_t place_ = 0;
    std::vector<unsigned char> piece_;
};

/// Bytes of all frames; nothing for samples that are not whole bytes, or not plainly described.
std::optional<std::uint64_t> PixelBytesOf(const CDcmObject& header) {
    const auto word = [&](std::uint32_t tag, std::uint64_t absent) {
        return std::uint64_t{
            Read<unsigned short>(header, tag).value_or(static_cast<unsigned short>(absent))};
    };
    const std::uint64_t bits = word(tag::kBitsAllocated, 0);
    const std::uint64_t samples = word(tag::kSamplesPerPixel, 1);
    const std::uint64_t pixels = word(tag::kRows, 0) * word(tag::kColumns, 0);
    const bool areWhole = bits == 8 || bits == 16 || bits == 32;
    if (!areWhole || pixels == 0 || (samples != 1 && samples != 3)) return std::nullopt;
    return pixels * samples * (bits / 8) * static_cast<std::uint64_t>(FramesOf(header));
}

std::optional<Cut> CutOf(RandomFile& file, CxDcmParser& parser) {
    const CDcmObject& header = *parser.GetHeader();
    const TransferSyntax* syntax = SyntaxOf(header);
    const auto pixelBytes = PixelBytesOf(header);
    unsigned long offset = 0;
    unsigned long size = 0;
    if (syntax == nullptr || syntax->isDeflated || syntax->coding == FrameCoding::kNone ||
        !pixelBytes || parser.GetSampleType() != SampleType::kInteger ||
        parser.GetAFrameOffsetSize(0, offset, size) != QVM_SUCCESS)
        return std::nullopt;
    const auto frames = static_cast<std::uint64_t>(FramesOf(header));
    return syntax->isEncapsulated ? CutCoded(file, *syntax, offset, frames)
                                  : CutNative(file, *syntax, offset, *pixelBytes);
}

bool HasMarker(RandomFile& file) {
    const auto marker = file.At<4>(128);
    return marker && std::memcmp(marker->data(), "DICM", marker->size()) == 0;
}

}  // namespace

std::optional<Outline> OutlineOf(const std::string& path) {
    CDcmApp app;
    Outline outline;
    outline.parser.SetRules(Rules::kStandard);
    if (outline.parser.Initialize(&app, path, 0) != QVM_SUCCESS ||
        FramesOf(*outline.parser.GetHeader()) < 2)
        return std::nullopt;
    RandomFile file(path);
    const auto cut = HasMarker(file) ? CutOf(file, outline.parser) : std::nullopt;
    if (!cut) return std::nullopt;
    CutFile rest(file, *cut);
    (void)outline.object.Open(path);
    if (outline.object.ReadFile(&app, &rest, CutFile::Give) != kDcmSuccess) return std::nullopt;
    outline.storedBytes = cut->storedBytes;
    return outline;
}

}  // namespace quorvex::tools
