// Files of a few bytes that claim gigabytes: sizes are multiplied without overflow, and memory is
// asked for by what is there.
#include "foundation/types/limits.h"
#include "tests/reliability/hostile_image.h"
#include "tests/reliability/measured_child.h"
#include "tests/support/every_route.h"

#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

/// What files of some kilobytes may cost: a few pictures of the size that any file may ask for.
constexpr std::size_t kMostMemory = 8 * kPictureAllowance;
constexpr double kMostSeconds = 1.0;

void ExpectCheap(const std::string& what, const DicomBuilder& file) {
    ExpectCost(
        what, kMostSeconds, [&] { ThroughEverything(file.Bytes()); }, kMostMemory);
}

TEST(ClaimedSize, TheLargestHeadersCostNothing) {
    constexpr ImageClaim kClaims[] = {{"65535", "65535", "4", "16", "2147483647"},
                                      {"65535", "65535", "3", "32"},
                                      {"65535", "65535", "1", "8"},
                                      {"65535", "32769", "1", "16"},
                                      {"8192", "8192", "1", "8", "2147483647"},
                                      {"64", "64", "1", "8", "99999999999"},
                                      {"65535", "65535", "65535", "65535"},
                                      {"1", "1", "1", "1", "2147483647"}};
    for (const auto& claim : kClaims) {
        for (const auto syntax : kImageSyntaxes)
            ExpectCheap(claim.Text() + " " + std::string(syntax), HostileImage(claim, syntax));
    }
}

TEST(ClaimedSize, DimensionsOfAForeignRepresentationCostNothing) {
    for (const char* vr : {"UL", "SL", "DS", "IS", "FD", "UN", "SS", "UV", "LO", "AT"}) {
        for (const char* side : {"4294967295", "65537", "-1", "1e300", "2147483648"}) {
            const ImageClaim claim{.rows = side, .columns = side, .samples = "3", .vr = vr};
            ExpectCheap(claim.Text(), HostileImage(claim, kExplicitUid));
        }
    }
}

/// What other attributes claim, each in an image that is good otherwise.
TEST(ClaimedSize, TablesOverlaysAndStatesCostNothing) {
    const auto image = [] { return HostileImage({}); };
    auto palette = image();
    for (const std::uint32_t colour : {0U, 1U, 2U})
        palette.Words(tag::kRedPaletteColorLookupTableDescriptor + colour, "US", {0, 0, 16});
    palette.Words(tag::kSegmentedRedPaletteColorLookupTableData, "OW", {1, 65535, 65535});
    ExpectCheap("a palette that one segment fills", palette);

    auto overlay = image();
    for (std::uint32_t group = 0x6000; group <= 0x601E; group += 2) {
        const auto of = [group](std::uint32_t tag) { return tag::InGroup(group, tag); };
        overlay.Us(of(tag::kOverlayRows), 65535).Us(of(tag::kOverlayColumns), 65535);
        overlay.Words(of(tag::kOverlayOrigin), "SS", {1, 1}).Us(of(tag::kOverlayBitsAllocated), 1);
        overlay.Us(of(tag::kOverlayBitPosition), 0).Add(of(tag::kOverlayData), "OW", "\xFF\xFF");
    }
    ExpectCheap("sixteen overlays of 65,535 x 65,535", overlay);

    auto shutter = image();
    shutter.Add(tag::kShutterShape, "CS", "CIRCULAR")
        .Add(tag::kCenterOfCircularShutter, "IS", "0\\0 ");
    shutter.Add(tag::kRadiusOfCircularShutter, "IS", "2147483647");
    ExpectCheap("a shutter of any radius", shutter);

    auto modality = image();
    modality.Sequence(tag::kModalityLUTSequence).Item();
    modality.Words(tag::kLUTDescriptor, "US", {0, 0, 16});
    modality.Add(tag::kLUTData, "OW", "\x01\x02").EndItem().EndSequence();
    ExpectCheap("a modality table of two bytes", modality);
}

TEST(ClaimedSize, LengthsBeyondTheFileGiveWhatIsThere) {
    for (const char* vr : {"OB", "OW", "UN", "UT", "UC", "OV"}) {
        auto file = HostileImage({});
        file.Header(tag::kPixelData, vr, 0xFFFFFFFE).Raw("rest");
        ExpectCheap(vr, file);
        CDcmObject object;
        auto memory = file.File();
        ASSERT_EQ(ReadUpTo(object, memory, kToTheEnd), kDcmSuccess) << vr;
        unsigned long length = 0;
        EXPECT_EQ(object.GetValueLength(tag::kPixelData, 1, length), kDcmSuccess) << vr;
        EXPECT_EQ(length, 4U) << vr;
    }
    auto sequence = HostileImage({});
    sequence.Sequence(0x00081140, 0xFFFFFFF0).Item(0xFFFFFFF0).Add(0x00081155, "UI", "1.2 ");
    ExpectCheap("a sequence that claims 4 GiB", sequence);
    // Any file may ask for one such frame, but not for all of them together.
    ExpectCheap("500 pictures of 64 MiB in 64 bytes each",
                HostileImage({"8192", "8192", "1", "8", "500"}, kRleUid, 500));
}

TEST(ClaimedSize, DeflateBombsEndAtTheirRatio) {
    const auto bomb = DeflatedZeros(std::size_t{256} << 20);
    const auto memory = 12 * kMostInflatedPerByte * bomb.size();
    ExpectCost(
        "zeros", 10 * kMostSeconds, [&] { ThroughEverything(bomb); }, memory);
}

}  // namespace
}  // namespace quorvex::test
