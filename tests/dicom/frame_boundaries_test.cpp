#include "foundation/dicom/frames/frame_boundaries.h"

#include <gtest/gtest.h>
#include <string>

namespace quorvex::dicom {
namespace {

using Data = std::vector<unsigned char>;
using Starts = std::vector<std::size_t>;

Data Jpeg(std::size_t size = 10) {
    Data bytes = {0xFF, 0xD8, 0xFF, 0xE0};
    bytes.resize(size);
    return bytes;
}

Data Codestream() {
    return {0xFF, 0x4F, 0xFF, 0x51, 0, 0};
}

Data Jp2File() {
    return {0, 0, 0, 0x0C, 'j', 'P', ' ', ' ', 0x0D, 0x0A};
}

Data Rle() {
    Data bytes(70);
    bytes[0] = 2;
    bytes[4] = 64;
    bytes[8] = 66;
    return bytes;
}

Data Tail(std::size_t size = 6) {
    return Data(size, 0x55);
}

template <class Offset>
Data Table(std::initializer_list<Offset> offsets) {
    Data bytes;
    for (const Offset offset : offsets) {
        for (std::size_t i = 0; i < sizeof(Offset); ++i)
            bytes.push_back(static_cast<unsigned char>(offset >> (8 * i)));
    }
    return bytes;
}
Data Basic(std::initializer_list<std::uint32_t> offsets) {
    return Table(offsets);
}
Data Extended(std::initializer_list<std::uint64_t> offsets) {
    return Table(offsets);
}

struct BoundaryCase {
    const char* what;
    std::vector<Data> fragments;
    std::uint32_t frameCount;
    Starts starts;
    Data offsetTable = {};
    Data extendedOffsets = {};
    TRANSFER_SYNTAX syntax = kJpegBaseline;
};

std::vector<Fragment> Laid(const std::vector<Data>& contents) {
    std::vector<Fragment> fragments;
    std::uint64_t offset = 0;
    for (const auto& content : contents) {
        fragments.push_back({content, offset});
        offset += 8 + content.size();
    }
    return fragments;
}

// Ten bytes of JPEG take 18 with their item header.
const BoundaryCase kCases[] = {
    {"nothing", {}, 3, {}},
    {"one fragment a frame", {Jpeg(), Tail(), Jpeg()}, 3, {0, 1, 2}},
    {"a single frame takes all", {Jpeg(), Tail(), Tail()}, 1, {0}},
    {"no frame count is one frame", {Jpeg(), Tail()}, 0, {0}},
    {"three fragments in each of five frames, no table",
     {Jpeg(), Tail(), Tail(), Jpeg(), Tail(), Tail(), Jpeg(), Tail(), Tail(), Jpeg(), Tail(),
      Tail(), Jpeg(), Tail(), Tail()},
     5,
     {0, 3, 6, 9, 12}},
    {"uneven frames by the table", {Jpeg(), Jpeg(), Tail(), Jpeg()}, 2, {0, 1}, Basic({0, 18})},
    {"uneven frames by the extended table, which wins",
     {Jpeg(), Jpeg(), Tail(), Jpeg()},
     2,
     {0, 3},
     Basic({0, 18}),
     Extended({0, 50})},
    {"a table that points between items", {Jpeg(), Tail(), Jpeg()}, 2, {0, 2}, Basic({0, 17})},
    {"a table that descends", {Jpeg(), Tail(), Jpeg()}, 2, {0, 2}, Basic({32, 0})},
    {"a table that repeats itself", {Jpeg(), Tail(), Jpeg()}, 2, {0, 2}, Basic({0, 0})},
    {"a table that does not begin at 0", {Jpeg(), Tail(), Jpeg()}, 2, {0, 2}, Basic({18, 32})},
    {"a table of too few entries", {Jpeg(), Tail(), Jpeg()}, 2, {0, 2}, Basic({0})},
    {"a table that was cut", {Jpeg(), Tail(), Jpeg()}, 2, {0, 2}, Data{0, 0, 0, 0, 32, 0}},
    {"a file that was cut", {Jpeg(), Tail(), Jpeg()}, 3, {0, 2}, Basic({0, 32, 50})},
    {"an empty fragment at the end", {Jpeg(), Jpeg(), {}}, 2, {0, 1}},
    {"JPEG 2000 codestreams", {Codestream(), Tail(), Codestream()}, 2, {0, 2}, {}, {}, kJpeg2000},
    {"JP2 files", {Jp2File(), Tail(), Jp2File()}, 2, {0, 2}, {}, {}, kJpeg2000Lossless},
    {"RLE", {Rle(), Tail(80), Rle(), Tail()}, 2, {0, 2}, {}, {}, kRle},
    {"a JPEG start means nothing in RLE", {Rle(), Jpeg(), Rle()}, 2, {0, 2}, {}, {}, kRle},
    {"missing frames", {Jpeg(), Tail(), Jpeg()}, 9, {0, 2}},
    {"a codec that we cannot tell", {Tail(), Tail(), Tail()}, 2, {0}, {}, {}, kOtherEncapsulated},
};

TEST(FrameBoundaries, FollowTablesThenCountsThenMarkers) {
    for (const auto& c : kCases) {
        const auto fragments = Laid(c.fragments);
        EXPECT_EQ(FirstFragments({.fragments = fragments,
                                  .offsetTable = c.offsetTable,
                                  .extendedOffsets = c.extendedOffsets,
                                  .frameCount = c.frameCount,
                                  .syntax = c.syntax}),
                  c.starts)
            << c.what;
    }
}

}  // namespace
}  // namespace quorvex::dicom
