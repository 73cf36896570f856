#include "tests/engines/lossless_test_streams.h"
#include "tests/reliability/guarded_bytes.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using testing::ByteVector;
using testing::Decode;
using testing::DecodeByLibrary;
using testing::LosslessDecoding;
using testing::LosslessOutcome;
using testing::LosslessShape;
using testing::LosslessWriter;

using Values = std::vector<std::uint16_t>;

LosslessShape RandomShape(std::minstd_rand& random) {
    const auto pick = [&](int below) {
        return static_cast<int>(random() % static_cast<unsigned>(below));
    };
    LosslessShape shape{.columns = 1 + pick(17),
                        .rows = 1 + pick(17),
                        .samples = pick(2) == 0 ? 1 : 3,
                        .precision = 2 + pick(15)};
    if (pick(8) == 0) shape.columns = 100 + pick(900);
    if (pick(8) == 0) shape.rows = 100;
    if (pick(3) == 0) shape.pointTransform = pick(shape.precision);
    if (pick(2) == 0) shape.rowsInInterval = 1 + pick(5);
    shape.tablesFirst = pick(2) == 0;
    shape.oneTable = pick(2) == 0;
    shape.fillsPerMarker = static_cast<unsigned>(pick(3));
    for (auto& table : shape.tables) table = testing::RandomTable(random);
    return shape;
}

/// Noise of `bits` bits upon a slope, without the bits that the point transform takes.
Values RandomValues(const LosslessShape& shape, int bits, std::minstd_rand& random) {
    Values values(static_cast<std::size_t>(shape.columns * shape.rows * shape.samples));
    const unsigned greatest = (1U << shape.precision) - 1;
    const unsigned kept = greatest & ~((1U << shape.pointTransform) - 1);
    const bool isHalf = bits == 16 && random() % 2 == 0;  // differences of 32768 and 0
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto noise = static_cast<unsigned>(random() >> 8);
        values[i] = static_cast<std::uint16_t>(isHalf ? noise % 2 << (shape.precision - 1)
                                                      : ((noise & ((1U << bits) - 1)) + i) & kept);
    }
    return values;
}

ByteVector AsBytes(const Values& values, int bytesPerSample) {
    ByteVector bytes;
    for (const std::uint16_t value : values) {
        bytes.push_back(static_cast<unsigned char>(value));
        if (bytesPerSample == 2) bytes.push_back(static_cast<unsigned char>(value >> 8));
    }
    return bytes;
}

std::string Describe(const LosslessShape& s) {
    return std::to_string(s.columns) + "x" + std::to_string(s.rows) + "x" +
           std::to_string(s.samples) + ", " + std::to_string(s.precision) + " bits, shift " +
           std::to_string(s.pointTransform) + ", interval " + std::to_string(s.rowsInInterval);
}

LosslessDecoding RandomDecoding(const LosslessShape& shape, std::minstd_rand& random) {
    return {.bytesPerSample = shape.precision > 8 || random() % 4 == 0 ? 2 : 1,
            .stripe = 1 + static_cast<int>(random() % 20),
            .block = random() % 4 == 0 ? 1 + random() % 50 : kJpegBufferBytes};
}

TEST(LosslessDecoding, PicturesOfEveryShapeComeOutAsTheyWent) {
    std::minstd_rand random(3);
    for (int round = 0; round < 600; ++round) {
        const LosslessShape shape = RandomShape(random);
        const Values values = RandomValues(shape, static_cast<int>(random() % 17), random);
        const ByteVector stream = LosslessWriter(shape).Write(values);
        const LosslessDecoding how = RandomDecoding(shape, random);
        const auto header = testing::LosslessHeader(stream);
        ASSERT_TRUE(header);
        const auto ours = Decode(stream, *header, how);
        EXPECT_TRUE(ours.isOurs) << Describe(shape);
        EXPECT_EQ(ours.lines, shape.rows) << Describe(shape);
        EXPECT_EQ(ours.pixels, AsBytes(values, how.bytesPerSample)) << Describe(shape);
        EXPECT_TRUE(ours.IsLike(DecodeByLibrary(stream, *header, how))) << Describe(shape);
    }
}

/// Bits flipped, bytes lost, markers put in, the end cut off.
void Damage(ByteVector& stream, std::size_t from, std::minstd_rand& random) {
    const std::size_t place = from + random() % (stream.size() - from);
    const auto at = stream.begin() + static_cast<std::ptrdiff_t>(place);
    const auto kind = random() % 5;
    if (kind == 0) stream.erase(at, stream.end());
    if (kind == 1) stream.erase(at);
    if (kind == 2) stream.insert(at, {0xFF, static_cast<unsigned char>(0xD0 + random() % 10)});
    if (kind == 3) stream.insert(at, random() % 4, 0xFF);
    if (kind == 4) *at ^= static_cast<unsigned char>(1U << random() % 8);
}

TEST(LosslessDecoding, DamageComesOutAsTheLibraryHasIt) {
    std::minstd_rand random(4);
    int ours = 0;
    for (int round = 0; round < 1000; ++round) {
        const LosslessShape shape = RandomShape(random);
        LosslessWriter writer(shape);
        // In the header, too, now and then.
        const std::size_t from = round % 4 == 0 ? 2 : writer.Head().size();
        ByteVector stream =
            writer.Write(RandomValues(shape, static_cast<int>(random() % 17), random));
        Damage(stream, from, random);
        const auto header = testing::LosslessHeader(stream);
        if (!header || header->width > 2000 || header->height > 2000) continue;
        const LosslessDecoding how{.bytesPerSample = header->precision > 8 ? 2 : 1,
                                   .stripe = 1 + round % 3};
        const auto outcome = Decode(stream, *header, how);
        ours += outcome.isOurs ? 1 : 0;
        EXPECT_TRUE(outcome.IsLike(DecodeByLibrary(stream, *header, how)))
            << Describe(shape) << ", round " << round;
    }
    EXPECT_GT(ours, 300);
}

TEST(LosslessDecoding, NothingIsWrittenBehindThePicture) {
    std::minstd_rand random(5);
    for (int round = 0; round < 300; ++round) {
        const LosslessShape shape = RandomShape(random);
        ByteVector stream = LosslessWriter(shape).Head();
        // Codes of whatever these bytes happen to be.
        for (int i = 0; i < 4000; ++i) stream.push_back(static_cast<unsigned char>(random() >> 9));
        const auto header = testing::LosslessHeader(stream);
        ASSERT_TRUE(header);
        LosslessDecoding how{.bytesPerSample = shape.precision > 8 ? 2 : 1, .stripe = 7};
        const test::GuardedBytes guarded(static_cast<std::size_t>(
            shape.columns * shape.rows * shape.samples * how.bytesPerSample));
        how.pixels = guarded.Data();
        const auto ours = Decode(stream, *header, how);
        how.pixels = nullptr;
        EXPECT_TRUE(ours.IsLike(DecodeByLibrary(stream, *header, how))) << Describe(shape);
    }
}

TEST(LosslessDecoding, TablesThatAreNoPrefixCodeAreRefused) {
    using Counts = std::array<std::uint8_t, 17>;
    const struct {
        const char* what;
        Counts counts;
        bool isCode;
    } kTables[] = {{"one code", {0, 1}, true},
                   {"a code of ones", {0, 2}, false},
                   {"a code of ones at the end", {0, 1, 1, 2}, false},
                   {"more codes than there are", {0, 1, 3}, false},
                   {"more long codes than there are", {0, 1, 1, 1, 5}, false},
                   {"no code", {0}, false},
                   {"all of 16 bits", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 17}, true}};
    for (const auto& c : kTables) {
        LosslessShape shape{.columns = 8, .rows = 8};
        shape.tables[0].counts = c.counts;
        ByteVector stream = LosslessWriter(shape).Head();
        stream.resize(stream.size() + 100);
        const auto header = testing::LosslessHeader(stream);
        const auto outcome = Decode(stream, *header, {});
        EXPECT_EQ(outcome.isOpen && outcome.isOurs, c.isCode) << c.what;
        EXPECT_TRUE(outcome.IsLike(DecodeByLibrary(stream, *header, {}))) << c.what;
    }
}

}  // namespace
}  // namespace quorvex
