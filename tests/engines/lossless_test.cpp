#include "tests/engines/lossless_test_streams.h"
#include "tests/reliability/guarded_bytes.h"

#include <gtest/gtest.h>
#include <span>
#include <utility>

namespace quorvex {
namespace {

using namespace testing;

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
    for (auto& table : shape.tables) table = RandomTable(random);
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
        const auto header = LosslessHeader(stream);
        ASSERT_TRUE(header);
        const auto ours = Decode(stream, *header, how);
        EXPECT_TRUE(ours.isOurs) << Describe(shape);
        EXPECT_EQ(ours.lines, shape.rows) << Describe(shape);
        EXPECT_EQ(ours.pixels, AsBytes(values, how.bytesPerSample)) << Describe(shape);
        EXPECT_TRUE(ours.IsLike(DecodeByLibrary(stream, *header, how))) << Describe(shape);
    }
}

/// Bits flipped, bytes lost, markers put in, the end cut off, or codes of whatever bytes.
void Damage(ByteVector& stream, std::size_t from, std::minstd_rand& random) {
    const std::size_t place = from + random() % (stream.size() - from);
    const auto at = stream.begin() + static_cast<std::ptrdiff_t>(place);
    const auto kind = random() % 6;
    if (kind == 0) stream.erase(at, stream.end());
    if (kind == 1) stream.erase(at);
    if (kind == 2) stream.insert(at, {0xFF, static_cast<unsigned char>(0xD0 + random() % 10)});
    if (kind == 3) stream.insert(at, random() % 4, 0xFF);
    if (kind == 4) *at ^= static_cast<unsigned char>(1U << random() % 8);
    if (kind < 5) return;
    for (auto& byte : std::span(stream).subspan(from))
        byte = static_cast<unsigned char>(random() >> 9);
}

TEST(LosslessDecoding, DamageComesOutAsTheLibraryHasIt) {
    std::minstd_rand random(4);
    int ours = 0;
    for (int round = 0; round < 3000; ++round) {
        const LosslessShape shape = RandomShape(random);
        LosslessWriter writer(shape);
        // In the header, too, now and then.
        const std::size_t from = round % 4 == 0 ? 2 : writer.Head().size();
        ByteVector stream =
            writer.Write(RandomValues(shape, static_cast<int>(random() % 17), random));
        Damage(stream, from, random);
        const auto header = LosslessHeader(stream);
        if (!header || header->width > 2000 || header->height > 2000) continue;
        LosslessDecoding how{.bytesPerSample = header->precision > 8 ? 2 : 1,
                             .stripe = 1 + round % 7};
        const auto byLibrary = DecodeByLibrary(stream, *header, how);
        const test::GuardedBytes guarded(std::size_t{header->width} * header->height *
                                         header->componentCount *
                                         static_cast<std::size_t>(how.bytesPerSample));
        how.pixels = guarded.Data();  // nothing is written behind the picture
        const auto outcome = Decode(stream, *header, how);
        ours += outcome.isOurs ? 1 : 0;
        EXPECT_TRUE(outcome.IsLike(byLibrary)) << Describe(shape) << ", round " << round;
    }
    EXPECT_GT(ours, 300);
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
        const auto header = LosslessHeader(stream);
        const auto outcome = Decode(stream, *header, {});
        EXPECT_EQ(outcome.isOpen && outcome.isOurs, c.isCode) << c.what;
        EXPECT_TRUE(outcome.IsLike(DecodeByLibrary(stream, *header, {}))) << c.what;
    }
    // Four components are the library's, even where one table serves all.
    LosslessShape inks{.columns = 8, .rows = 8, .samples = 4, .oneTable = true};
    std::minstd_rand random(9);
    inks.tables[0] = RandomTable(random);
    const ByteVector stream = LosslessWriter(inks).Write(RandomValues(inks, 8, random));
    const auto outcome = Decode(stream, *LosslessHeader(stream), {});
    EXPECT_FALSE(outcome.isOurs);
    EXPECT_EQ(outcome.lines, 8);
}

/// Samples of a kind, cut down to the precision.
ByteVector Samples(const JpegCodingBlock& coding, int kind, std::minstd_rand& random) {
    const std::size_t count = std::size_t{coding.columns} * coding.rows * coding.samples;
    const unsigned greatest = (1U << coding.precision) - 1;
    ByteVector bytes;
    for (std::size_t i = 0; i < count; ++i) {
        const auto noise = static_cast<unsigned>(random() >> 8);
        // Noise of any strength, one value, and the two that are farthest apart.
        unsigned sample = (noise & ((1U << kind) - 1)) + static_cast<unsigned>(i);
        if (kind == 17) sample = greatest / 3;
        if (kind == 18) sample = noise % 2 == 0 ? 0 : greatest;
        if (kind == 19) sample = i % 1000 == 0 ? noise : static_cast<unsigned>(i) / 50;
        sample &= greatest;
        bytes.push_back(static_cast<unsigned char>(sample));
        if (coding.bytesPerSample == 2) bytes.push_back(static_cast<unsigned char>(sample >> 8));
    }
    return bytes;
}

TEST(LosslessEncoding, StreamsAreThoseOfTheLibrary) {
    std::minstd_rand random(6);
    for (int round = 0; round < 1000; ++round) {
        const int columns = 1 + static_cast<int>(random() % (round % 20 == 0 ? 700 : 18));
        const int rows = 1 + static_cast<int>(random() % (round % 20 == 0 ? 200 : 18));
        auto coding = LosslessCoding(columns, rows, round % 2 == 0 ? 1 : 3, 2 + round % 15);
        if (round % 7 == 0) coding.bytesPerSample = 2;
        const int kind = static_cast<int>(random() % 20);
        ByteVector picture = Samples(coding, kind, random);
        // At any address.
        picture.insert(picture.begin(), 0);
        const ByteVector stream = Encode(MakeLosslessCoder, coding, picture.data() + 1);
        ASSERT_FALSE(stream.empty());
        ASSERT_EQ(stream, EncodeByLibrary(coding, picture.data() + 1))
            << columns << "x" << rows << "x" << int{coding.samples} << ", " << int{coding.precision}
            << " bits, kind " << kind;
    }
}

TEST(LosslessEncoding, CodesOfRareCategoriesStayWithin16Bits) {
    ByteVector row;
    unsigned sample = 1U << 15;
    unsigned count = 1;  // Fibonacci's numbers make the deepest tree
    unsigned next = 2;
    for (unsigned category = 0; category <= 16; ++category) {
        for (unsigned i = 0; i < count; ++i) {
            sample += (1U << category) / 2;
            row.push_back(static_cast<unsigned char>(sample));
            row.push_back(static_cast<unsigned char>(sample >> 8));
        }
        count = std::exchange(next, count + next);
    }
    const auto coding = LosslessCoding(static_cast<int>(row.size() / 2), 1, 1, 16);
    const ByteVector stream = Encode(MakeLosslessCoder, coding, row.data());
    EXPECT_EQ(stream, EncodeByLibrary(coding, row.data()));
    const unsigned char marker[] = {0xFF, 0xC4};
    const auto table = std::search(stream.begin(), stream.end(), marker, marker + 2);
    ASSERT_GT(stream.end() - table, 21);
    EXPECT_GT(table[20], 0);  // codes of 16 bits
}

TEST(LosslessEncoding, AReceiverThatGivesUpIsNotCalledAgain) {
    struct Receiver {
        CodedOutput output;
        int callsLeft;
    };
    const auto take = [](int event, void* context, unsigned char** buffer, std::uint16_t* length) {
        auto& receiver = *static_cast<Receiver*>(context);
        if (receiver.callsLeft-- == 0) return 1;
        return TakeCoded(event, &receiver.output, buffer, length);
    };
    std::minstd_rand random(7);
    auto coding = LosslessCoding(300, 300, 1, 16);
    const ByteVector picture = Samples(coding, 16, random);
    for (int last = 0; last < 5; ++last) {
        Receiver receiver{.output = {}, .callsLeft = last};
        coding.write = take;
        coding.writeContext = &receiver;
        JpegCompressionHandle handle;
        EXPECT_NE(comp_im_buf(handle, coding, picture.data(), 300), 0) << last;
        EXPECT_EQ(handle, nullptr) << last;
        EXPECT_EQ(receiver.callsLeft, -1) << last;
    }
}

TEST(LosslessEncoding, RowsThatChangeBetweenThePassesAreRefused) {
    std::minstd_rand random(8);
    auto coding = LosslessCoding(64, 64, 1, 12);
    CodedOutput output;
    coding.write = TakeCoded;
    coding.writeContext = &output;
    const ByteVector flat = Samples(coding, 17, random);
    const ByteVector noisy = Samples(coding, 12, random);
    const auto coder = MakeLosslessCoder(coding);
    ASSERT_TRUE(coder->Start() && coder->Write(flat.data(), 64));
    EXPECT_FALSE(coder->Finish(noisy.data(), 64));
    const auto other = MakeLosslessCoder(coding);
    ASSERT_TRUE(other->Start() && other->Write(flat.data(), 63));
    EXPECT_FALSE(other->Finish(flat.data(), 64));
}

}  // namespace
}  // namespace quorvex
