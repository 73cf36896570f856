#include "foundation/dicom/frames/frame_boundaries.h"

#include <gtest/gtest.h>
#include <string_view>

namespace quorvex::dicom {
namespace {

using Data = std::vector<unsigned char>;

/// A fragment by its letter: the beginning of a frame, or what may follow one.
Data FragmentOf(char letter) {
    if (letter == 'J') return {0xFF, 0xD8, 0xFF, 0xE0, 0, 0, 0, 0, 0, 0};
    if (letter == 'C') return {0xFF, 0x4F, 0xFF, 0x51, 0, 0};  // a JPEG 2000 codestream
    if (letter == 'F') return {0, 0, 0, 0x0C, 'j', 'P', ' ', ' ', 0x0D, 0x0A};  // a JP2 file
    if (letter == 't') return Data(6, 0x55);
    if (letter == 'T') return Data(80, 0x55);
    if (letter == '-') return {};
    Data rle = {2, 0, 0, 0, 64, 0, 0, 0, 66};
    rle.resize(70);
    return rle;
}

Data Table(const std::vector<std::uint64_t>& offsets, std::size_t entryBytes) {
    Data bytes;
    for (const auto offset : offsets) {
        for (std::size_t i = 0; i < entryBytes; ++i)
            bytes.push_back(static_cast<unsigned char>(offset >> (8 * i)));
    }
    return bytes;
}

// Ten bytes of JPEG take 18 with their item header, six of a tail take 14.
const struct {
    const char* what;
    std::string_view fragments;
    std::uint32_t frameCount;
    std::vector<std::size_t> starts;
    std::vector<std::uint64_t> offsets = {};
    std::vector<std::uint64_t> extendedOffsets = {};
    TRANSFER_SYNTAX syntax = kJpegBaseline;
    std::size_t tableCut = 0;
} kCases[] = {
    {"nothing", "", 3, {}},
    {"one fragment a frame", "JtJ", 3, {0, 1, 2}},
    {"a single frame takes all", "Jtt", 1, {0}},
    {"no frame count is one frame", "Jt", 0, {0}},
    {"three fragments a frame, no table", "JttJttJttJttJtt", 5, {0, 3, 6, 9, 12}},
    {"uneven frames by the table", "JJtJ", 2, {0, 1}, {0, 18}},
    {"uneven frames by the extended table, which wins", "JJtJ", 2, {0, 3}, {0, 18}, {0, 50}},
    {"a table that points between items", "JtJ", 2, {0, 2}, {0, 17}},
    {"a table that descends", "JtJ", 2, {0, 2}, {32, 0}},
    {"a table that repeats itself", "JtJ", 2, {0, 2}, {0, 0}},
    {"a table that does not begin at 0", "JtJ", 2, {0, 2}, {18, 32}},
    {"a table of too few entries", "JtJ", 2, {0, 2}, {0}},
    {"a table that was cut", "JtJ", 2, {0, 2}, {0, 32}, {}, kJpegBaseline, 2},
    {"a file that was cut", "JtJ", 3, {0, 2}, {0, 32, 50}},
    {"an empty fragment at the end", "JJ-", 2, {0, 1}},
    {"JPEG 2000 codestreams", "CtC", 2, {0, 2}, {}, {}, kJpeg2000},
    {"JP2 files", "FtF", 2, {0, 2}, {}, {}, kJpeg2000Lossless},
    {"RLE", "RTRt", 2, {0, 2}, {}, {}, kRle},
    {"a JPEG start means nothing in RLE", "RJR", 2, {0, 2}, {}, {}, kRle},
    {"missing frames", "JtJ", 9, {0, 2}},
    {"a codec that we cannot tell", "ttt", 2, {0}, {}, {}, kOtherEncapsulated},
};

TEST(FrameBoundaries, FollowTablesThenCountsThenMarkers) {
    for (const auto& c : kCases) {
        std::vector<Data> contents;
        for (const char letter : c.fragments) contents.push_back(FragmentOf(letter));
        std::vector<Fragment> fragments;
        std::uint64_t offset = 0;
        for (const auto& content : contents) {
            fragments.push_back({content, offset});
            offset += 8 + content.size();
        }
        Data table = Table(c.offsets, 4);
        table.resize(table.size() - c.tableCut);
        const Data extendedTable = Table(c.extendedOffsets, 8);
        const FrameHints hints = {extendedTable, c.frameCount, c.syntax};
        EXPECT_EQ(FindFrames(fragments, table, hints).firstFragments, c.starts) << c.what;
    }
}

}  // namespace
}  // namespace quorvex::dicom
