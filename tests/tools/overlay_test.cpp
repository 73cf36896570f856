// Overlays and palettes as the command shows them.
#include "tests/support/dicom_builder.h"
#include "tests/tools/run_command.h"

#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

constexpr ImageFacts kGrey = {.rows = 2, .columns = 4, .bits = 8};
const Bytes kPixels = {0, 1, 2, 3, 0, 1, 2, 3};
// Bits 0 and 5 of a plane that lies on the image: its first pixel, and the second one of row 2.
const Bytes kMarks = {0x21, 0};
constexpr bool IsMarked(std::size_t pixel) {
    return pixel == 0 || pixel == 5;
}

struct Overlay {
    unsigned rows = 2;
    unsigned columns = 4;
    unsigned originRow = 1;
    unsigned originColumn = 1;
    Bytes data = kMarks;
};

Bytes ImageUnder(const Overlay& overlay, DicomBuilder file) {
    return file.Us(tag::kOverlayRows, overlay.rows)
        .Us(tag::kOverlayColumns, overlay.columns)
        .Add(tag::kOverlayDescription, "LO", "marks ")
        .Words(tag::kOverlayOrigin, "SS", {overlay.originRow, overlay.originColumn})
        .Us(tag::kOverlayBitsAllocated, 1)
        .Us(tag::kOverlayBitPosition, 0)
        .Add(tag::kOverlayData, "OW", overlay.data)
        .Add(tag::kPixelData, "OW", kPixels)
        .Bytes();
}

/// Red, green and blue of four indices, 16 bits each.
using Palette = std::vector<std::vector<unsigned>>;

DicomBuilder PaletteHeader(unsigned columns, const Palette& palette, bool isSegmented = false) {
    auto file = ImageFile(
        kExplicitUid, {.rows = 2, .columns = columns, .bits = 8, .photometric = "PALETTE COLOR"});
    for (std::uint32_t colour = 0; colour < 3; ++colour)
        file.Words(tag::kRedPaletteColorLookupTableDescriptor + colour, "US", {4, 0, 16});
    for (std::uint32_t colour = 0; colour < 3; ++colour) {
        auto entries = palette[colour];
        if (isSegmented) entries.insert(entries.begin(), {0, 4});
        file.Words((isSegmented ? tag::kSegmentedRedPaletteColorLookupTableData
                                : tag::kRedPaletteColorLookupTableData) +
                       colour,
                   "OW", entries);
    }
    return file;
}

TEST(RenderCommand, BurnsInOverlays) {
    const ScratchFolder folder;
    const auto path = folder.Write("grey.dcm", ImageUnder({}, ImageFile(kExplicitUid, kGrey)));
    const Arguments render = {"render", path, "--window", "100,200"};
    const auto plain = PictureBy(render);
    const auto marked = PictureBy(render + Arguments{"--overlays"});
    ASSERT_EQ(marked.pixels.size(), 8U);
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_EQ(marked.pixels[i], IsMarked(i) ? 255 : plain.pixels[i]) << i;
    EXPECT_TRUE(Has(OutputOf({"info", path}), "overlay 6000    4 x 2 from column 1, row 1, marks"));
    EXPECT_TRUE(Has(OutputOf({"info", path, "--json"}),
                    R"("overlays":[{"group":"6000","columns":4,"rows":2)"));
}

TEST(RenderCommand, BurnsOverlaysIntoPaletteColours) {
    const Palette reddish = {{0, 0x4000, 0x8000, 0xFF00}, {0, 0, 0, 0}, {0, 0, 0, 0}};
    const ScratchFolder folder;
    const auto path = folder.Write("palette.dcm", ImageUnder({}, PaletteHeader(4, reddish)));
    const auto picture = PictureBy({"render", path, "--overlays"});
    ASSERT_EQ(picture.channels, 3);
    const int reds[] = {255, 63, 127, 254, 0, 255, 127, 254};
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_NEAR(picture.pixels[3 * i], reds[i], 1) << i;
        EXPECT_EQ(picture.pixels[3 * i + 1], IsMarked(i) ? 255 : 0) << i;
    }
}

TEST(RenderCommand, BadOverlaysStillGiveAPicture) {
    const Overlay cases[] = {{.originRow = 0x8000, .originColumn = 0x7FFF},
                             {.data = {}},
                             {65535, 65535, 0x8000, 0x8000}};
    const ScratchFolder folder;
    for (const auto& overlay : cases) {
        const auto path =
            folder.Write("bad.dcm", ImageUnder(overlay, ImageFile(kExplicitUid, kGrey)));
        EXPECT_EQ(PictureBy({"render", path, "--overlays"}).pixels.size(), 8U) << &overlay - cases;
    }
}

// Two by two indices of a palette of black, red, green and blue; or the same in segments.
TEST(PaletteImage, IsShownInItsColours) {
    constexpr int kBrightest = 254;  // 65535 * 255 / 65536, cut
    const Palette palette = {{0, 0xFFFF, 0, 0}, {0, 0, 0xFFFF, 0}, {0, 0, 0, 0xFFFF}};
    const ScratchFolder folder;
    for (const bool isSegmented : {false, true}) {
        auto file = PaletteHeader(2, palette, isSegmented);
        const auto path =
            folder.Write("palette.dcm", file.Add(tag::kPixelData, "OB", Bytes{0, 1, 2, 3}).Bytes());
        const auto shown = PictureBy({"render", path, "--view", "80x80"});
        ASSERT_EQ(shown.channels, 3) << isSegmented;
        for (int index = 0; index < 4; ++index) {
            const auto place = (5 + 70 * (index / 2)) * 80 + 5 + 70 * (index % 2);
            const auto* pixel = &shown.pixels.at(static_cast<std::size_t>(place * 3));
            for (int channel = 0; channel < 3; ++channel)
                EXPECT_EQ(pixel[channel], index == channel + 1 ? kBrightest : 0)
                    << "index " << index << ", channel " << channel << ' ' << isSegmented;
        }
        const auto info = OutputOf({"info", path});
        EXPECT_TRUE(Has(info, "palette red     4 entries of 16 bits from 0"));
        EXPECT_EQ(Has(info, "in segments"), isSegmented);
    }
}

}  // namespace
}  // namespace quorvex::test
