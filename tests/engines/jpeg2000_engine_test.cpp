#include "foundation/engines/jpeg2000/jpeg2000_engine.h"

#include "foundation/engines/jpeg2000/jpeg2000_header.h"
#include "quorvex/Limits.h"
#include "tests/engines/jpeg2000_test_streams.h"
#include "tests/engines/jpeg_test_streams.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace testing;

/// Signed samples of `bits`, around 0.
ByteVector SignedPicture(int columns, int rows, int bits) {
    ByteVector bytes = Picture(columns, rows, 1, 2, bits);
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        const int value = SampleAt(bytes, i / 2, 2) - (1 << (bits - 1));
        bytes[i] = static_cast<unsigned char>(value);
        bytes[i + 1] = static_cast<unsigned char>(value >> 8);
    }
    return bytes;
}

/// 8 and 16 bits in every size stand in the tests of round trips.
TEST(Jpeg2000Engine, LosslessPicturesOfEveryDepthComeBackAsTheyWere) {
    for (int bits = 1; bits <= 16; ++bits) {
        const int bytes = bits > 8 ? 2 : 1;
        const Jpeg2000Picture grey{41, 30, 1, bytes, bits};
        const ByteVector pixels = Picture(41, 30, 1, bytes, bits);
        EXPECT_EQ(DecodeJpeg2000Pixels(grey, CodeJpeg2000(grey, pixels)), pixels) << bits;
        if (bits < 2) continue;
        const Jpeg2000Picture sign{40, 30, 1, 2, bits, true};
        const ByteVector values = SignedPicture(40, 30, bits);
        EXPECT_EQ(DecodeJpeg2000Pixels(sign, CodeJpeg2000(sign, values)), values) << bits;
    }
}

TEST(Jpeg2000Engine, ASignIsNeitherSmearedNorInvented) {
    Jpeg2000Picture picture{8, 8, 1, 2, 12, true};
    const ByteVector values = SignedPicture(8, 8, 12);
    const ByteVector stream = CodeJpeg2000(picture, values);
    picture.isSigned = false;  // the header knows no sign: 12 bits are 12 bits
    const ByteVector masked = DecodeJpeg2000Pixels(picture, stream);
    ASSERT_EQ(masked.size(), values.size());
    for (std::size_t i = 0; i < values.size(); i += 2) {
        EXPECT_EQ(masked[i], values[i]);
        EXPECT_EQ(masked[i + 1], values[i + 1] & 0x0F);
    }
    const ByteVector plain = Picture(8, 8, 1, 2, 12);
    const ByteVector unsignedStream = CodeJpeg2000(picture, plain);
    picture.isSigned = true;
    EXPECT_EQ(DecodeJpeg2000Pixels(picture, unsignedStream), plain);
}

TEST(Jpeg2000Engine, TheByteTargetIsKept) {
    const Jpeg2000Picture picture{.columns = 256, .rows = 256, .bytesPerSample = 2, .bitDepth = 12};
    ByteVector pixels = Picture(256, 256, 1, 2, 12);
    for (std::size_t target : {400U, 2000U, 5000U, 9000U}) {
        const ByteVector stream = CodeJpeg2000(picture, pixels, target);
        EXPECT_LE(stream.size(), target);
        EXPECT_GE(stream.size(), target / 2);
        EXPECT_EQ(DecodeJpeg2000Pixels(picture, stream).size(), pixels.size());
    }
}

void AppendLongWord(ByteVector& file, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        file.push_back(static_cast<unsigned char>(value >> shift));
}

TEST(Jpeg2000Engine, WrappedStreamsAndJunkAreSeenThrough) {
    const Jpeg2000Picture picture{.columns = 50, .rows = 40};
    const ByteVector pixels = Picture(50, 40, 1, 1, 8);
    const ByteVector stream = CodeJpeg2000(picture, pixels);
    for (std::uint32_t length : {static_cast<std::uint32_t>(stream.size() + 8), 0U}) {
        ByteVector wrapped = {0, 0, 0, 12, 'j', 'P', ' ', ' ', 0x0D, 0x0A, 0x87, 0x0A};
        AppendLongWord(wrapped, length);
        wrapped.insert(wrapped.end(), {'j', 'p', '2', 'c'});
        wrapped.insert(wrapped.end(), stream.begin(), stream.end());
        EXPECT_EQ(DecodeJpeg2000Pixels(picture, wrapped), pixels);
    }
    ByteVector junk(stream.begin(), stream.end() - 2);
    junk.insert(junk.end(), {'j', 'u', 'n', 'k', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    bool isIncomplete = true;
    EXPECT_EQ(DecodeJpeg2000Pixels(picture, junk, &isIncomplete), pixels);
    EXPECT_FALSE(isIncomplete);
}

TEST(Jpeg2000Engine, CutStreamsAreIncomplete) {
    const Jpeg2000Picture picture{97, 64, 1, 2, 12};
    const ByteVector stream = CodeJpeg2000(picture, Picture(97, 64, 1, 2, 12));
    for (std::size_t length = 0; length < stream.size(); length += 97) {
        const ByteVector cut(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(length));
        bool isIncomplete = false;
        const ByteVector pixels = DecodeJpeg2000Pixels(picture, cut, &isIncomplete);
        EXPECT_TRUE(pixels.empty() || isIncomplete) << length;
    }
}

/// A main header and one empty tile-part.
ByteVector BareHeader(std::uint32_t side, std::uint32_t tile, unsigned layers,
                      std::vector<unsigned char> precincts) {
    ByteVector bytes = {0xFF, 0x4F, 0xFF, 0x51, 0, 41, 0, 0};
    for (const std::uint32_t value : {side, side, 0U, 0U, tile, tile, 0U, 0U})
        AppendLongWord(bytes, value);
    const auto byte = [](auto value) { return static_cast<unsigned char>(value); };
    const bool hasPrecincts = !precincts.empty();
    bytes.insert(bytes.end(), {0, 1, 7, 1, 1});
    bytes.insert(bytes.end(),
                 {0xFF, 0x52, 0, byte(12 + precincts.size()), byte(hasPrecincts), 0,
                  byte(layers >> 8), byte(layers), 0, byte(hasPrecincts ? 0 : 5), 4, 4, 0, 1});
    bytes.insert(bytes.end(), precincts.begin(), precincts.end());
    bytes.insert(bytes.end(), {0xFF, 0x90, 0, 10, 0, 0, 0, 0, 0, 14, 0, 1, 0xFF, 0x93, 0xFF, 0xD9});
    return bytes;
}

TEST(Jpeg2000Engine, HeadersThatAskForMoreThanTheirStreamHoldsAreRefused) {
    const auto query = [](const ByteVector& stream) {
        PegasusParameters parameters;
        parameters.input = stream;
        return PegasusQuery(parameters);
    };
    EXPECT_NE(query(BareHeader(512, 512, 1, {})), 0);
    constexpr std::pair<const char*, std::pair<std::size_t, int>> kSpoilt[] = {
        {"begins behind its end", {16, 1}}, {"no tiles", {26, 0}}, {"a tile inside", {35, 1}},
        {"no components", {41, 0}},         {"no step", {43, 0}},  {"no step down", {44, 0}},
        {"subsampled at once", {43, 2}}};
    for (const auto& [what, change] : kSpoilt) {
        ByteVector stream = BareHeader(512, 512, 1, {});
        stream[change.first] = static_cast<unsigned char>(change.second);
        EXPECT_EQ(query(stream), 0) << what;
    }
    EXPECT_EQ(query(BareHeader(60000, 60000, 1, {})), 0) << "samples";
    EXPECT_EQ(query(BareHeader(4000, 10, 1, {})), 0) << "tiles";
    EXPECT_EQ(query(BareHeader(4000, 4000, 1, {0x00})), 0) << "precincts";
    ForgetLimit();
    EXPECT_EQ(query(BareHeader(512, 64, 65535, {})), 0) << "layers";
    EXPECT_EQ(LatestLimit(), Limit::kJpeg2000Work);
    // A component's or a tile's own style counts as much as the common one.
    const ByteVector ownStyle = {0xFF, 0x53, 0, 10, 0, 1, 0, 4, 4, 0, 1, 0x00};
    for (const int behind : {16, 4}) {  // the tile-part, and the data in it
        ByteVector stream = BareHeader(4000, 4000, 1, {});
        stream.insert(stream.end() - behind, ownStyle.begin(), ownStyle.end());
        EXPECT_EQ(query(stream), 0) << behind;
    }
    EXPECT_NE(query(BareHeader(4000, 4000, 1, {})), 0);
    EXPECT_EQ(query({}), 0);
    EXPECT_EQ(query({0xFF, 0x4F, 0xFF, 0x51, 0, 41}), 0);
}

TEST(Jpeg2000Engine, TheOrderOfRequestsIsKept) {
    PegasusParameters parameters;
    EXPECT_EQ(Pegasus(parameters, kPegasusWork), kPegasusFailed);
    EXPECT_EQ(Pegasus(parameters, kPegasusBegin), kPegasusFailed);  // never queried
    EXPECT_EQ(Pegasus(parameters, 3), kPegasusFailed);
    EXPECT_EQ(PegasusLoadFromRes(kPegasusDecode, 20, 0, 0), 0);
    EXPECT_NE(PegasusLoadFromRes(1, 20, 0, 0), 0);
}

}  // namespace
}  // namespace quorvex
