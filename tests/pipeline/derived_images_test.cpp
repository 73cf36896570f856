// Frames in the colours of a palette, of all their pixels or of some.
#include "tests/pipeline/overlay_objects.h"
#include "tests/pipeline/shown.h"

#include <memory>

namespace quorvex::pipeline_test {
namespace {

using Colours = Values;

TestTable Ramp(int first, int count, int start, int step = 1) {
    TestTable table{first};
    for (int i = 0; i < count; ++i)
        table.entries.push_back(static_cast<std::uint16_t>(start + i * step));
    return table;
}

/// What one of the operations makes of pixels: its code, or the colours.
struct Coloured {
    QUORVEX_MESSAGE code = QVM_SUCCESS;
    Colours colours;
    unsigned short padded = 78;
    Colours tail;  ///< of a padded image
};

enum Operation { kFrame, kSlice, kWholePalette };

template <class Pixel>
Coloured By(Operation operation, CDcmObject& object, std::vector<Pixel> pixels) {
    auto* bytes = reinterpret_cast<unsigned char*>(pixels.data());
    const auto width = static_cast<unsigned short>(pixels.size());
    const CXDIPP dipp;
    unsigned char* rgb = nullptr;
    unsigned long length = 77;
    Coloured result;
    result.code = operation == kFrame ? dipp.MakeSPCOverlay(&object, bytes, rgb, length)
                  : operation == kSlice
                      ? dipp.MakeSPCOverlayForMPR(&object, bytes, width, 1, rgb, length)
                      : dipp.MakePaletteColorImage(&object, bytes, rgb, length, result.padded);
    const std::unique_ptr<unsigned char[]> owner(rgb);
    EXPECT_EQ(rgb == nullptr, result.code != QVM_SUCCESS);
    EXPECT_TRUE(rgb != nullptr || (length == 77U && result.padded == 78)) << "nothing is touched";
    if (rgb == nullptr) return result;
    result.colours.assign(rgb, rgb + length);
    if (operation == kWholePalette) {
        const int rows = Read<int>(object, tag::kRows).value_or(0);
        result.tail.assign(rgb + length, rgb + std::ptrdiff_t{result.padded} * rows * 3);
    }
    return result;
}

/// An object with a palette; its pixels lie outside.
CDcmObject WithPalette(CSize size, unsigned short bits, const TestTable& red,
                       const TestTable& green, const TestTable& blue,
                       unsigned short representation = 0) {
    CDcmObject object = Picture(size, bits);
    object.SetValue(tag::kPixelRepresentation, representation);
    AddPalette(object, red, green, blue, bits);
    return object;
}

// 100, 50 and 1 x 255 / 256 in a frame; 228 lies behind the last entry of blue.
TEST(SupplementalColours, CoverTheRangeOfTheTablesOnly) {
    auto object =
        WithPalette({4, 1}, 8, Ramp(128, 128, 100), Ramp(128, 128, 50), Ramp(128, 100, 1));
    const Bytes pixels = {127, 128, 227, 228};
    EXPECT_EQ(By(kFrame, object, pixels).colours,
              (Colours{0, 0, 0, 99, 49, 0, 198, 148, 99, 0, 0, 0}));
    EXPECT_EQ(By(kSlice, object, pixels).colours,
              (Colours{0, 0, 0, 100, 50, 1, 199, 149, 100, 0, 0, 0}));
}

// In a slice entry x 255 / 65536; in a frame 32768, 4660 and 65535 x 255 / 256 are 32640, 4641.8
// and 65279.0, of which the low byte stays.
TEST(SupplementalColours, WordsAreSignedInAFrameAndUnsignedInASlice) {
    auto high = WithPalette({3, 1}, 16, Ramp(40000, 3, 0x8000), Ramp(40000, 3, 0x4000),
                            Ramp(40000, 3, 0xFF00));
    const Words pixels = {39999, 40000, 40003};
    EXPECT_EQ(By(kFrame, high, pixels).colours, Colours(9));
    EXPECT_EQ(By(kSlice, high, pixels).colours, (Colours{0, 0, 0, 127, 63, 254, 0, 0, 0}));
    auto low = WithPalette({1, 1}, 16, Ramp(5, 1, 0x8000), Ramp(5, 1, 0x1234), Ramp(5, 1, 0xFFFF));
    EXPECT_EQ(By(kFrame, low, Words{5}).colours, (Colours{32640 % 256, 4641 % 256, 65279 % 256}));
}

TEST(SupplementalColours, NegativeValuesNeedATableThatEndsBelow0) {
    for (const int count : {50, 150}) {
        const TestTable table = Ramp(-100, count, 256);
        auto object = WithPalette({1, 1}, 16, table, table, table, 1);
        EXPECT_EQ(By(kFrame, object, std::vector<std::int16_t>{-60}).colours,
                  count == 50 ? Colours(3, 294 % 256) : Colours(3));  // (256 + 40) x 255 / 256
    }
    const TestTable below = Ramp(-100, 50, 7, 0);
    auto bytes = WithPalette({2, 1}, 8, below, below, below, 1);
    EXPECT_EQ(By(kSlice, bytes, Bytes{5, 255}).colours, Colours(6, 7)) << "inside the table";
}

TEST(PaletteImage, ColoursEveryPixel) {
    auto object = WithPalette({510, 2}, 8, Ramp(10, 3, 100, 100), Ramp(10, 3, 0), Ramp(10, 3, 253));
    Bytes pixels(1020);
    pixels[0] = 9;     // below the tables
    pixels[510] = 11;  // first of row 1
    pixels[511] = 200;
    const auto image = By(kWholePalette, object, pixels);
    EXPECT_EQ(image.padded, 512);
    ASSERT_EQ(image.colours.size(), 510U * 2 * 3);
    const auto first = image.colours.begin();
    EXPECT_EQ(Colours(first, first + 3), (Colours{99, 0, 252}));
    EXPECT_EQ(Colours(first + 1530, first + 1536), (Colours{199, 0, 253, 298 % 256, 1, 254}));
    EXPECT_EQ(image.tail, Colours(12));
}

TEST(PaletteImage, WordsTakeTheHighByteOfWideEntries) {
    auto object =
        WithPalette({3, 1}, 16, Ramp(0, 300, 0, 200), Ramp(0, 300, 0xFFFF, 0), Ramp(0, 300, 0));
    // 299 x 200 x 255 / 65536 is 232.7
    EXPECT_EQ(By(kWholePalette, object, Words{0, 299, 65535}).colours,
              (Colours{0, 254, 0, 232, 254, 1, 232, 254, 1}));
}

TEST(PaletteImage, FailsWithoutAWholePaletteAndTouchesNothing) {
    for (const std::uint32_t missing :
         {tag::kRedPaletteColorLookupTableDescriptor, tag::kGreenPaletteColorLookupTableData,
          tag::kBluePaletteColorLookupTableData}) {
        auto object = WithPalette({2, 1}, 8, Ramp(0, 4, 0), Ramp(0, 4, 0), Ramp(0, 4, 0));
        if (missing == tag::kBluePaletteColorLookupTableData) {
            SetBytes(object, missing, {1, 2});  // four entries are more than that
        } else {
            object.RemoveValue(missing);
        }
        for (const auto operation : {kFrame, kSlice, kWholePalette})
            EXPECT_EQ(By(operation, object, Bytes(2)).code, QVM_ERROR_NO_IMAGE) << missing;
    }
}

TEST(PaletteImage, WithoutASizeIsEmpty) {
    CDcmObject object;
    AddPalette(object, Ramp(0, 4, 0), Ramp(0, 4, 0), Ramp(0, 4, 0), 8);
    EXPECT_EQ(By(kFrame, object, Bytes(1)).colours, Colours());
}

}  // namespace
}  // namespace quorvex::pipeline_test
