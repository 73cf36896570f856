#include "foundation/engines/lossless/lossless_codes.h"
#include "tests/engines/lossless_test_streams.h"

#include <gtest/gtest.h>
#include <utility>

namespace quorvex {
namespace {

using testing::ByteVector;
using testing::Encode;
using testing::EncodeByLibrary;
using testing::LosslessCoding;

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
        testing::CodedOutput output;
        int callsLeft;
    };
    const auto take = [](int event, void* context, unsigned char** buffer, std::uint16_t* length) {
        auto& receiver = *static_cast<Receiver*>(context);
        if (receiver.callsLeft-- == 0) return 1;
        return testing::TakeCoded(event, &receiver.output, buffer, length);
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
    testing::CodedOutput output;
    coding.write = testing::TakeCoded;
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
