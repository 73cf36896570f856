/// High-throughput blocks for tests. The coded bytes are OpenJPH's, of pictures without a wavelet
/// level: the coefficients are the samples less half their range.
#pragma once

#include "foundation/engines/jpeg2000/decoder/blocks/ht_block.h"
#include "tests/reliability/guarded_bytes.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::j2k::testing {

using Coefficients = std::vector<std::int32_t>;
using CodedBytes = std::vector<unsigned char>;

inline CodedBytes FromHex(std::string_view digits) {
    CodedBytes bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        const std::string digit(digits.substr(i, 2));
        bytes.push_back(static_cast<unsigned char>(std::strtoul(digit.c_str(), nullptr, 16)));
    }
    return bytes;
}

struct Part {
    CodedBytes bytes;
    std::uint32_t passes = 1;
};

struct Block {
    int width = 1;
    int height = 1;
    int bitPlanes = 1;
    int totalPlanes = 9;
    std::vector<Part> parts;
    unsigned style = kStyleHighThroughput;
};

struct Result {
    bool isSound = false;
    Coefficients values;
    bool operator==(const Result&) const = default;
};

/// Decodes with every segment alone in its memory, into rows that stand apart.
inline Result Decode(const Block& block, test::GuardPlace place = test::GuardPlace::kBehind) {
    constexpr int kGap = 3;
    constexpr std::int32_t kMark = 0x5A5A5A5A;
    std::vector<std::unique_ptr<test::GuardedBytes>> memory;
    std::vector<BlockSegment> segments;
    for (const Part& part : block.parts) {
        memory.push_back(std::make_unique<test::GuardedBytes>(part.bytes, place));
        segments.push_back(
            {memory.back()->Data(), static_cast<std::uint32_t>(part.bytes.size()), part.passes});
    }
    const CodedBlock coded{.width = block.width,
                           .height = block.height,
                           .bitPlanes = block.bitPlanes,
                           .totalPlanes = block.totalPlanes,
                           .segments = segments,
                           .style = block.style};
    const int stride = block.width + kGap;
    Coefficients rows(static_cast<std::size_t>(stride * block.height), kMark);
    static const auto scratch = std::make_unique<HtScratch>();
    Result result;
    result.isSound = DecodeHtBlock(coded, rows.data(), stride, *scratch);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (static_cast<int>(i) % stride < block.width) {
            result.values.push_back(rows[i]);
        } else {
            EXPECT_EQ(rows[i], kMark) << "written behind a row";
        }
    }
    return result;
}

// The pictures: x and y to a sample of so many bits.
inline int Noisy(int x, int y, int bits) {
    return (x * x * 37 + y * 101 + x * y * 29 + (x ^ y) * 7) % (1 << bits);
}
inline int Steps(int x, int y, int bits) {
    return (1 << (bits - 1)) + (x / 3 + y / 2) % 5 - 2;
}
inline int Sparse(int x, int y, int bits) {
    const int half = 1 << (bits - 1);
    return (x * 7 + y * 13) % 251 == 0 ? half + (x + y) * 11 % half : half;
}

struct Picture {
    int (*sample)(int x, int y, int bits);
    int width;
    int height;
    int bits;
    std::string_view coded;

    [[nodiscard]] Block AsBlock() const {
        return {
            .width = width, .height = height, .totalPlanes = bits + 1, .parts = {{FromHex(coded)}}};
    }
    /// Coefficients have one more bit, 1 where the coefficient is not 0.
    [[nodiscard]] Coefficients Expected() const {
        Coefficients values;
        for (int i = 0; i < width * height; ++i) {
            const int value = sample(i % width, i / width, bits) - (1 << (bits - 1));
            values.push_back(value == 0 ? 0 : value > 0 ? 2 * value + 1 : 2 * value - 1);
        }
        return values;
    }
};

inline constexpr Picture kPictures[] = {
    {&Noisy, 1, 1, 8, "01077400"},
    {&Noisy, 2, 1, 8, "ff2700423400"},
    {&Noisy, 1, 3, 8, "ff13d70087f1037600"},
    {&Noisy, 5, 3, 8, "ff531353f8de45cfd37520b23cfd00817bdcc237800020bb00"},
    {&Noisy, 4, 2, 1, "06f57400"},
    {&Steps, 7, 6, 8, "ff7f1f807fc14ce81ea45751ba00"},
    {&Noisy, 9, 5, 12,
     "ff3ff2a71feb5dbf75a7d13bd959fe10eaa11e9e8b1b772d7bf25d0f7623b7f8b033f5e3f4e75d64ab26"
     "f2c865c07c60ae4ffeda6246ee9207d198f41dfb00c0bb5bf73bfe43d65ca378c80055210031b401"},
    {&Steps, 33, 7, 12,
     "ff3f00f87f00f87f00f87f00f87f00f87f00f87fc06fd03ffe5486676fdf7ea9a9b7bfbef5a9068ebf5e"
     "336063d7afac14c746bf5eb05341a3afd78cd81ea7f31ab5b2fca9b3189fa45751b403"},
    {&Noisy, 11, 8, 16,
     "ff7f27ff27ff63fa77fd6ffd9d7ef4fe647f96ff430fb50fd51fe673f190f743fb4c7d818e2a2f8adfbe"
     "4ffebbfec1fe46fe16ff61fe4cdf8f3fbd9fd717e9adf289f8b7fb99dda7fe3d5f94a7c48ddf45ee5bf6"
     "937fbcff353f4dbf98ff411fb9e7d62fe9d7f28378ca7b9cfdaa5e416797dfc4c7df476e7276c3fa2f7d"
     "d75fe8efe417e157eedff5277ab9fc227ef59e68d7ac67d17fe6c3714df8a37ba75db6165037a0ff4c01"
     "7febf5ebf5977ff5faf5facb7ffafd7afd65d0800f990800c6420031bf01"},
    {&Sparse, 1024, 4, 8,
     "201241683603148b4138ddff0fe13fd37fa4ff27620765fe8c0ecbfc10288070017009c101420392f9c0"
     "81f821e8809801fc007e207a08260f02"},
    {&Sparse, 4, 1024, 16,
     "6ea9a00a900590e6cd634496a4c39bce9b1620211412b0c8c8faff707079f9157239b9153279f9157239"
     "b918489c485c4815207242e813a007201502710170e05381c70b9c4e601c405103"},
    {&Sparse, 64, 64, 12,
     "00f9f885af8f1d78cba7d72d9cecb9032d3598ff0fe6bf9b7b91776206adde45ed77fbd944e180a281cc"
     "270a17280e080a142e413940e140a513830b82829007020f7103"},
};
inline constexpr const Picture& kGrey8 = kPictures[3];
inline constexpr const Picture& kGrey12 = kPictures[6];
inline constexpr const Picture& kGrey16 = kPictures[8];

/// Nine by nine samples: three stripes, the last of one row. The refinement's bytes are arbitrary,
/// with stuffing at both ends.
inline Block RefinedBlock(std::uint32_t passes, unsigned style) {
    return {.width = 9,
            .height = 9,
            .bitPlanes = 3,
            .totalPlanes = 11,
            .parts = {{FromHex("ed78f88006be54877900")},
                      {FromHex("5ac3ff5e913ca768d20fb4e1ff7f9ae7"), passes}},
            .style = style};
}

}  // namespace quorvex::j2k::testing
