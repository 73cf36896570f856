// High-throughput blocks in whole codestreams of one block each: layers, placeholder passes,
// several sets; and blocks where high throughput is mixed with arithmetic coding.
#include "foundation/engines/jpeg2000/decoder/decoder.h"
#include "foundation/engines/jpeg2000/decoder/tile_data.h"
#include "tests/engines/jpeg2000/ht_test_blocks.h"
#include "tests/engines/jpeg2000/mq_coding.h"

#include <bit>

namespace quorvex::j2k {
namespace {

using namespace testing;

/// A packet header (ISO/IEC 15444-1 B.10).
class HeaderWriter {
public:
    HeaderWriter& Put(unsigned bits, unsigned count) {
        while (count-- > 0) bits_.push_back((bits >> count & 1) != 0);
        return *this;
    }
    /// Table B.4, up to 36.
    HeaderWriter& PutPasses(unsigned passes) {
        if (passes <= 2) return passes == 1 ? Put(0, 1) : Put(2, 2);
        return passes <= 5 ? Put(0xC | (passes - 3), 4) : Put(0x1E0 | (passes - 6), 9);
    }
    /// Bytes, with a 0 stuffed behind each FF.
    [[nodiscard]] CodedBytes Bytes() const {
        CodedBytes bytes;
        unsigned room = 0;
        for (const bool bit : bits_) {
            if (room == 0) {
                room = !bytes.empty() && bytes.back() == 0xFF ? 7 : 8;
                bytes.push_back(0);
            }
            bytes.back() = static_cast<unsigned char>(bytes.back() | (bit ? 1U : 0U) << --room);
        }
        if (!bytes.empty() && bytes.back() == 0xFF) bytes.push_back(0);
        return bytes;
    }

private:
    std::vector<bool> bits_;
};

/// A length in a packet header, and how many bits it has.
struct Length {
    std::size_t bytes;
    unsigned bits;
};

struct Packet {
    unsigned passes = 0;  ///< 0: the block is not in it
    std::vector<Length> lengths;
    CodedBytes body;
};

constexpr unsigned kLengthBits = 8;  ///< Lblock, as the first packet of a block sets it

void Append(CodedBytes& stream, const CodedBytes& more) {
    stream.insert(stream.end(), more.begin(), more.end());
}

/// A picture of 8 bits, reversible, without levels; a packet for each layer.
CodedBytes Codestream(const Picture& picture, int zeroPlanes, const std::vector<Packet>& packets,
                      unsigned char style = kStyleHighThroughput,
                      unsigned lengthBits = kLengthBits) {
    const auto byte = [](std::size_t value) { return static_cast<unsigned char>(value); };
    CodedBytes stream = FromHex("ff4fff5100294000");
    const CodedBytes size = {0, 0, 0, byte(picture.width), 0, 0, 0, byte(picture.height)};
    const CodedBytes origin(8);
    for (const auto& field : {size, origin, size, origin}) Append(stream, field);
    Append(stream, FromHex("0001070101"));            // one component
    Append(stream, FromHex("ff500008000200000000"));  // high throughput
    Append(stream, FromHex("ff52000c0000"));          // progression by layers
    Append(stream, {0, byte(packets.size()), 0, 0, 4, 4, style, 1});
    Append(stream, FromHex("ff5c00042048"));  // one guard bit, 9 planes in all
    Append(stream, FromHex("ff90000a0000000000000001ff93"));
    bool isIncluded = false;
    for (const Packet& packet : packets) {
        HeaderWriter header;
        header.Put(1, 1);
        if (packet.passes == 0) {
            header.Put(0, 1);
        } else {
            header.Put(1, 1);
            if (!isIncluded) header.Put(1, static_cast<unsigned>(zeroPlanes) + 1);
            header.PutPasses(packet.passes);
            const unsigned more = isIncluded ? 0 : lengthBits - 3;
            header.Put((1U << (more + 1)) - 2, more + 1);
            for (const Length& length : packet.lengths) {
                header.Put(static_cast<unsigned>(length.bytes), length.bits);
            }
            isIncluded = true;
        }
        Append(stream, header.Bytes());
        Append(stream, packet.body);
    }
    Append(stream, {0xFF, 0xD9});
    return stream;
}

struct Samples {
    Outcome outcome = Outcome::kRefused;
    std::vector<unsigned char> values;
};

Samples Decode(const Picture& picture, const CodedBytes& stream) {
    Samples samples;
    Decoder decoder;
    samples.outcome = decoder.Open(stream);
    if (samples.outcome != Outcome::kDone) return samples;
    samples.values.resize(static_cast<std::size_t>(picture.width * picture.height));
    const OutputPlane plane{.data = samples.values.data(),
                            .rowStride = picture.width,
                            .sampleStride = 1,
                            .width = static_cast<std::uint32_t>(picture.width),
                            .height = static_cast<std::uint32_t>(picture.height)};
    samples.outcome = decoder.Decode({}, {&plane, 1});
    return samples;
}

struct Sets {
    const char* what;
    int zeroPlanes;
    std::vector<Packet> packets;
};

std::vector<Sets> KindsOfSets() {
    const CodedBytes whole = FromHex(kGrey8.coded);
    CodedBytes other = whole;  // sound, and another picture
    other[1] ^= 4;
    const std::size_t size = whole.size();
    const CodedBytes refinement = FromHex("5ac35e913c");
    CodedBytes refined = other;
    Append(refined, refinement);
    CodedBytes second = refinement;
    Append(second, whole);
    return {
        {"one clean-up pass", 8, {{1, {{size, 8}}, whole}}},
        {"a layer before it that has nothing", 8, {{0, {}, {}}, {1, {{size, 8}}, whole}}},
        {"three placeholder passes before it", 7, {{4, {{size, 10}}, whole}}},
        {"six placeholder passes before it", 6, {{7, {{size, 10}}, whole}}},
        {"placeholder passes in a layer of their own",
         7,
         {{3, {{0, 9}}, {}}, {1, {{size, 8}}, whole}}},
        {"two of them, and the third with the clean-up pass",
         7,
         {{2, {{0, 9}}, {}}, {2, {{size, 9}}, whole}}},
        {"a set, its refinement, and the set below",
         7,
         {{3, {{size, 8}, {refinement.size(), 9}}, refined}, {1, {{size, 8}}, whole}}},
        {"a set, and the next layer refines it and goes below",
         7,
         {{1, {{size, 8}}, other}, {3, {{refinement.size(), 9}, {size, 8}}, second}}},
    };
}

void Expect(const Picture& picture, const CodedBytes& stream) {
    std::vector<unsigned char> expected;
    for (int i = 0; i < picture.width * picture.height; ++i) {
        expected.push_back(static_cast<unsigned char>(
            picture.sample(i % picture.width, i / picture.width, picture.bits)));
    }
    const Samples samples = Decode(picture, stream);
    EXPECT_EQ(samples.outcome, Outcome::kDone);
    EXPECT_EQ(samples.values, expected);
    // Cut anywhere, it says so.
    for (std::size_t length = 0; length + 2 < stream.size(); ++length) {
        const auto end = stream.begin() + static_cast<std::ptrdiff_t>(length);
        EXPECT_NE(Decode(picture, CodedBytes(stream.begin(), end)).outcome, Outcome::kDone)
            << length;
    }
}

TEST(HtStream, SetsAndPlaceholders) {
    for (const Sets& sets : KindsOfSets()) {
        SCOPED_TRACE(sets.what);
        Expect(kGrey8, Codestream(kGrey8, sets.zeroPlanes, sets.packets));
    }
}

constexpr unsigned char kMixed = kStyleHighThroughput | kStyleMixed;

// A length with a leading zero, in more than three bits.
TEST(HtStream, MixedBlocksOfHighThroughput) {
    const CodedBytes whole = FromHex(kGrey8.coded);
    const auto bits = static_cast<unsigned>(std::bit_width(whole.size())) + 1;
    const Length length{whole.size(), bits};
    const std::vector<Packet> rows[] = {{{1, {length}, whole}},
                                        {{0, {}, {}}, {1, {length}, whole}}};
    for (const auto& packets : rows) {
        Expect(kGrey8, Codestream(kGrey8, 8, packets, kMixed, bits));
    }
    const Length placeholders{whole.size(), bits + 2};
    Expect(kGrey8, Codestream(kGrey8, 7, {{4, {placeholders}, whole}}, kMixed, bits));
}

/// The picture's one block as OpenJPEG codes it.
struct ArithmeticBlock {
    CodedBytes bytes;
    unsigned passes = 0;
    int zeroPlanes = 0;
};

ArithmeticBlock CodeArithmetically(const Picture& picture) {
    test::Planes planes{.planes = {{static_cast<std::uint32_t>(picture.width),
                                    static_cast<std::uint32_t>(picture.height),
                                    {}}}};
    for (int i = 0; i < picture.width * picture.height; ++i) {
        planes.planes[0].samples.push_back(
            picture.sample(i % picture.width, i / picture.width, picture.bits));
    }
    const test::Stream stream = test::EncodeMq(planes, {.levels = 0});
    j2k::Codestream codestream;
    TileData tile;
    ArithmeticBlock block;
    EXPECT_TRUE(ReadCodestream(stream, codestream));
    EXPECT_EQ(ReadTile(codestream, 0, {}, 100, tile), TileRead::kDone);
    const BlockState* state = tile.layout.components.at(0).resolutions.at(0).Find(0, 0, 0);
    if (state == nullptr || state->firstChunk == kNoChunk) return block;
    const Chunk& chunk = tile.chunks[state->firstChunk];
    const auto bytes = tile.data.subspan(chunk.offset, chunk.size);
    block.bytes.assign(bytes.begin(), bytes.end());
    block.passes = chunk.passes;
    block.zeroPlanes = state->zeroPlanes;
    return block;
}

// As short as it can be written: in the least number of length bits, or with a leading one.
TEST(HtStream, MixedBlocksThatAreArithmetic) {
    Picture large = kGrey8;
    large.width = 40;
    large.height = 30;
    for (const Picture& picture : {kGrey8, large}) {
        const ArithmeticBlock block = CodeArithmetically(picture);
        ASSERT_GT(block.passes, 4U);
        // All passes at once, or one without bytes first.
        for (const unsigned before : {0U, 1U}) {
            SCOPED_TRACE(::testing::Message() << picture.width << " " << before);
            const unsigned passes = block.passes - before;
            const auto more = static_cast<unsigned>(std::bit_width(passes)) - 1;
            const auto size = static_cast<unsigned>(std::bit_width(block.bytes.size()));
            const unsigned lengthBits = std::max(3U, size - std::min(size, more));
            const Length length{block.bytes.size(), lengthBits + more};
            std::vector<Packet> packets = {{passes, {length}, block.bytes}};
            if (before > 0) packets.insert(packets.begin(), {before, {{0, lengthBits}}, {}});
            Expect(picture, Codestream(picture, block.zeroPlanes, packets, kMixed, lengthBits));
        }
    }
}

}  // namespace
}  // namespace quorvex::j2k
