// Overlays and palettes as the command shows and lists them.
#include "tests/support/dicom_builder.h"
#include "tests/tools/run_command.h"

#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

/// Marks on the first pixel of four by two, and on the second one of row 2.
DicomBuilder& AddOverlay(DicomBuilder& file, unsigned rows, unsigned columns, unsigned origin) {
    return file.Us(tag::kOverlayRows, rows)
        .Us(tag::kOverlayColumns, columns)
        .Add(tag::kOverlayDescription, "LO", "marks ")
        .Words(tag::kOverlayOrigin, "SS", {origin, origin})
        .Us(tag::kOverlayBitsAllocated, 1)
        .Us(tag::kOverlayBitPosition, 0)
        .Add(tag::kOverlayData, "OW", Bytes{0x21, 0});
}

TEST(RenderCommand, BurnsInOverlaysGoodAndBad) {
    constexpr ImageFacts kGrey = {.rows = 2, .columns = 4, .bits = 8};
    const ScratchFolder folder;
    for (const bool isGood : {true, false}) {
        auto file = ImageFile(kExplicitUid, kGrey);
        isGood ? AddOverlay(file, 2, 4, 1) : AddOverlay(file, 65535, 65535, 0x8000);
        file.Add(tag::kPixelData, "OW", Bytes{0, 1, 2, 3, 0, 1, 2, 3});
        const Arguments render = {"render", folder.Write("a.dcm", file.Bytes())};
        auto expected = PictureBy(render).pixels;
        ASSERT_EQ(expected.size(), 8U);
        if (isGood) expected[0] = expected[5] = 255;
        EXPECT_EQ(PictureBy(render + Arguments{"--overlays"}).pixels, expected) << isGood;
        if (!isGood) continue;
        EXPECT_TRUE(Has(InfoOf(render[1]), "overlay 6000    4 x 2 from column 1, row 1, marks"));
        EXPECT_TRUE(Has(OutputOf({"info", render[1], "--json"}),
                        R"("overlays":[{"group":"6000","columns":4,"rows":2)"));
    }
}

// Four indices of a palette of black, red, green and blue; or the same in segments.
TEST(PaletteImage, IsShownInItsColours) {
    const ScratchFolder folder;
    for (const bool isSegmented : {false, true}) {
        auto file = ImageFile(kExplicitUid,
                              {.rows = 1, .columns = 4, .bits = 8, .photometric = "PALETTE COLOR"});
        for (std::uint32_t i = 0; i < 3; ++i)
            file.Words(tag::kRedPaletteColorLookupTableDescriptor + i, "US", {4, 0, 16});
        for (std::uint32_t i = 0; i < 3; ++i) {
            std::vector<unsigned> entries(4);
            entries[i + 1] = 0xFFFF;
            if (isSegmented) entries.insert(entries.begin(), {0, 4});
            file.Words(i + (isSegmented ? tag::kSegmentedRedPaletteColorLookupTableData
                                        : tag::kRedPaletteColorLookupTableData),
                       "OW", entries);
        }
        const auto path =
            folder.Write("palette.dcm", file.Add(tag::kPixelData, "OB", Bytes{0, 1, 2, 3}).Bytes());
        constexpr unsigned char k = 255;
        EXPECT_EQ(PictureBy({"render", path}).pixels, (Bytes{0, 0, 0, k, 0, 0, 0, k, 0, 0, 0, k}));
        const auto info = InfoOf(path);
        EXPECT_TRUE(Has(info, "palette red     4 entries of 16 bits from 0"));
        EXPECT_EQ(Has(info, "in segments"), isSegmented);
    }
}

}  // namespace
}  // namespace quorvex::test
