// Frames that are native ones once they are out of their fragment.
#include "codec/rle/rle_coding.h"
#include "foundation/engines/deflate/deflate_engine.h"
#include "tests/codec/coded_frames.h"
#include "tests/parser/parsed.h"

#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

constexpr std::string_view kDeflatedUid = "1.2.840.10008.1.2.8.1";
constexpr std::string_view kFragmentUid = "1.2.840.10008.1.2.1.98";

Bytes Resized(Bytes bytes, std::size_t size) {
    bytes.resize(size);
    return bytes;
}

TEST(FragmentPixels, AreExactlyTheFrameOrRefused) {
    const FrameForm form{16, 12, 1, 16};
    const Bytes pixels = PictureOf(form);
    const Bytes deflated = DeflateFrame(pixels);
    Bytes damaged = deflated;
    damaged[0] = 0x07;  // a block of a kind that there is not
    const struct {
        const char* what;
        std::uint32_t syntax;
        Bytes fragment;
        bool isRead;
    } kFragments[] = {
        {"deflated", kDeflatedImageFrames, deflated, true},
        {"padded", kDeflatedImageFrames, Resized(deflated, deflated.size() + 1), true},
        {"a byte too many", kDeflatedImageFrames, DeflateFrame(Resized(pixels, 385)), false},
        {"a byte too few", kDeflatedImageFrames, DeflateFrame(Resized(pixels, 383)), false},
        {"far too many", kDeflatedImageFrames, DeflateFrame(Bytes(1U << 22U)), false},
        {"damaged", kDeflatedImageFrames, damaged, false},
        {"nothing deflated", kDeflatedImageFrames, DeflateFrame({}), false},
        {"uncompressed", kEncapsulatedUncompressed, pixels, true},
        {"padded", kEncapsulatedUncompressed, Resized(pixels, 386), true},
        {"short", kEncapsulatedUncompressed, Resized(pixels, 383), false},
    };
    for (const auto& c : kFragments) {
        const auto decoded = DecodeGuarded(ParamOf(c.syntax, form), c.fragment, form.Bytes());
        EXPECT_EQ(decoded.code, c.isRead ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_DECOMPRESS) << c.what;
        EXPECT_EQ(decoded.frame, c.isRead ? pixels : Bytes()) << c.what;
    }
    for (std::size_t length = 0; length < deflated.size(); ++length) {
        const auto code = DecodeGuarded(ParamOf(kDeflatedImageFrames, form),
                                        Resized(deflated, length), form.Bytes())
                              .code;
        EXPECT_EQ(code, QVM_ERROR_FAILED_TO_DECOMPRESS) << length;
    }
}

/// Every frame begins with a byte of its own, and comes out with one for each sample.
TEST(FragmentPixels, OfSingleBitsAreUnpacked) {
    const Bytes first = {0x05, 0x01};
    const Bytes second = {0xF0, 0x00};
    const std::vector<Bytes> samples = {{1, 0, 1, 0, 0, 0, 0, 0, 1}, {0, 0, 0, 0, 1, 1, 1, 1, 0}};
    const ImageFacts facts{.rows = 3, .columns = 3, .bits = 1, .frames = "2"};
    const auto rle = [](const Bytes& bytes) { return *quorvex::CodeRle({bytes, 1, 2, 1, 1}); };
    const std::pair<std::string_view, std::vector<Bytes>> kCoded[] = {
        {kDeflatedUid, {DeflateFrame(first), DeflateFrame(second)}},
        {kFragmentUid, {first, second}},
        {kRleUid, {rle(first), rle(second)}},
    };
    for (const auto& [uid, fragments] : kCoded) {
        Parsed parsed(EncapsulatedFile(uid, facts, fragments));
        ASSERT_EQ(parsed.code, QVM_SUCCESS) << uid;
        for (int i = 0; i < 2; ++i) {
            unsigned char* data = nullptr;
            unsigned long size = 0;
            ASSERT_EQ(parsed.parser.GetAFrameUnpacked(i, data, size), QVM_SUCCESS) << uid << i;
            const std::unique_ptr<unsigned char[]> owner(data);
            EXPECT_EQ(Bytes(data, data + size), samples[static_cast<std::size_t>(i)]) << uid << i;
        }
    }
}

/// A native frame of 4:2:2 has both Y ahead of their colours, in a fragment too.
TEST(FragmentPixels, OfSharedChromaAreShownAsNativeOnesAre) {
    const Bytes pixels = {10, 200, 90, 160};
    const ImageFacts facts{
        .rows = 1, .columns = 2, .bits = 8, .photometric = "YBR_FULL_422", .samples = 3};
    Parsed native(NativeFile(kExplicitUid, facts, pixels));
    for (const auto& [uid, fragment] :
         {std::pair(kFragmentUid, pixels), {kDeflatedUid, DeflateFrame(pixels)}}) {
        Parsed parsed(EncapsulatedFile(uid, facts, {fragment}));
        EXPECT_EQ(FrameOf(parsed.parser), FrameOf(native.parser)) << uid;
    }
}

}  // namespace
}  // namespace quorvex::test
