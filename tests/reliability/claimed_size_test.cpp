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
constexpr double kMostSeconds = 1.0 * kSlowness;

void ExpectCheap(const std::string& what, const DicomBuilder& file) {
    const Cost cost = CostOf([&] { ThroughEverything(file.Bytes()); });
    EXPECT_TRUE(cost.hasEnded) << what << ": " << cost;
    EXPECT_LT(cost.memory, kMostMemory) << what << ": " << cost;
    EXPECT_LT(cost.seconds, kMostSeconds) << what << ": " << cost;
}

TEST(ClaimedSize, TheLargestHeadersCostNothing) {
    constexpr ImageClaim kClaims[] = {
        {.rows = "65535", .columns = "65535", .samples = "4", .frames = "2147483647"},
        {.rows = "65535", .columns = "65535", .samples = "3", .bits = "32"},
        {.rows = "65535", .columns = "65535", .samples = "1", .bits = "8"},
        {.rows = "65535", .columns = "32769", .samples = "1", .bits = "16"},
        {.rows = "8192", .columns = "8192", .samples = "1", .bits = "8", .frames = "99999999999"},
        {.rows = "65535", .columns = "65535", .samples = "65535", .bits = "65535"},
        {.rows = "1", .columns = "1", .bits = "1", .frames = "2147483647"},
    };
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
    const auto lut = [](DicomBuilder& file, std::uint32_t tag, std::uint16_t count) {
        file.Header(tag, "US", 6).Number(count, 2).Number(0, 2).Number(16, 2);
    };
    auto palette = image();
    for (const std::uint32_t tag : {0x00281101U, 0x00281102U, 0x00281103U}) lut(palette, tag, 0);
    palette.Header(0x00281221, "OW", 6).Number(1, 2).Number(65535, 2).Number(65535, 2);
    ExpectCheap("a palette that one segment fills", palette);

    auto overlay = image();
    for (std::uint32_t group = 0x6000; group <= 0x601E; group += 2) {
        overlay.Us(group << 16 | 0x10, 65535).Us(group << 16 | 0x11, 65535);
        overlay.Header(group << 16 | 0x50, "SS", 4).Number(1, 2).Number(1, 2);
        overlay.Us(group << 16 | 0x100, 1).Us(group << 16 | 0x102, 0);
        overlay.Add(group << 16 | 0x3000, "OW", "\xFF\xFF");
    }
    ExpectCheap("sixteen overlays of 65,535 x 65,535", overlay);

    auto shutter = image();
    shutter.Add(0x00181600, "CS", "CIRCULAR").Add(0x00181610, "IS", "0\\0 ");
    shutter.Add(0x00181612, "IS", "2147483647");
    ExpectCheap("a shutter of any radius", shutter);

    auto modality = image();
    modality.Sequence(0x00283000).Item();
    lut(modality, 0x00283002, 0);
    modality.Add(0x00283006, "OW", "\x01\x02").EndItem().EndSequence();
    ExpectCheap("a modality table of two bytes", modality);
}

TEST(ClaimedSize, LengthsBeyondTheFileGiveWhatIsThere) {
    for (const char* vr : {"OB", "OW", "UN", "UT", "UC", "OV"}) {
        auto file = HostileImage({});
        file.Header(0x7FE00010, vr, 0xFFFFFFFE).Raw("rest");
        ExpectCheap(vr, file);
        CDcmObject object;
        auto memory = file.File();
        ASSERT_EQ(ReadUpTo(object, memory, kToTheEnd), kDcmSuccess) << vr;
        unsigned long length = 0;
        EXPECT_EQ(object.GetValueLength(0x7FE00010, 1, length), kDcmSuccess) << vr;
        EXPECT_EQ(length, 4U) << vr;
    }
    auto sequence = HostileImage({});
    sequence.Sequence(0x00081140, 0xFFFFFFF0).Item(0xFFFFFFF0).Add(0x00081155, "UI", "1.2 ");
    ExpectCheap("a sequence that claims 4 GiB", sequence);
}

/// Any file may ask for one such frame, but not for all of them together.
TEST(ClaimedSize, ManySmallFragmentsDoNotMakeAHugeObject) {
    const ImageClaim claim{.rows = "8192", .columns = "8192", .bits = "8", .frames = "500"};
    auto file = HostileImage(claim, kRleUid, 500);
    ExpectCheap("500 pictures of 64 MiB in 64 bytes each", file);
}

TEST(ClaimedSize, DeflateBombsEndAtTheirRatio) {
    const auto bomb = DeflatedZeros(std::size_t{256} << 20);
    const Cost cost = CostOf([&] { ThroughEverything(bomb); });
    EXPECT_TRUE(cost.hasEnded) << cost;
    EXPECT_LT(cost.memory, 12 * kMostInflatedPerByte * bomb.size()) << cost;
    EXPECT_LT(cost.seconds, 10 * kMostSeconds) << cost;
}

}  // namespace
}  // namespace quorvex::test
