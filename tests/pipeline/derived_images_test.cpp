// Frames in the colours of a palette, of all their pixels or of some.
#include "tests/pipeline/overlay_objects.h"
#include "tests/pipeline/shown.h"

#include <memory>

namespace quorvex::pipeline_test {
namespace {

using Colours = Values;

TestTable Ramp(int first, int count, int start, int step = 1) {
    TestTable table{first};
    for (int i = 0; i < count; ++i) {
        table.entries.push_back(static_cast<std::uint16_t>(start + i * step));
    }
    return table;
}

/// What one of the operations makes of pixels: its code, or the colours.
struct Coloured {
    QUORVEX_MESSAGE code = QVM_SUCCESS;
    Colours colours;
    unsigned short padded = 0;
    Colours tail;  ///< of a padded image
};

enum Operation { kFrame, kSlice, kWholePalette };

template <class Pixel>
Coloured By(Operation operation, CDcmObject& object, std::vector<Pixel> pixels) {
    auto* bytes = reinterpret_cast<unsigned char*>(pixels.data());
    const CXDIPP dipp;
    unsigned char* rgb = nullptr;
    unsigned long length = 77;
    Coloured result;
    result.padded = 78;
    if (operation == kFrame) {
        result.code = dipp.MakeSPCOverlay(&object, bytes, rgb, length);
    } else if (operation == kSlice) {
        const auto width = static_cast<unsigned short>(pixels.size());
        result.code = dipp.MakeSPCOverlayForMPR(&object, bytes, width, 1, rgb, length);
    } else {
        result.code = dipp.MakePaletteColorImage(&object, bytes, rgb, length, result.padded);
    }
    const std::unique_ptr<unsigned char[]> owner(rgb);
    EXPECT_EQ(rgb == nullptr, result.code != QVM_SUCCESS);
    EXPECT_TRUE(rgb != nullptr || (length == 77U && result.padded == 78)) << "nothing is touched";
    if (rgb == nullptr) return result;
    result.colours.assign(rgb, rgb + length);
    if (operation == kWholePalette && !result.colours.empty()) {
        unsigned short rows = 0;
        object.GetValue(tag::kRows, rows);
        result.tail.assign(rgb + length, rgb + std::size_t{result.padded} * rows * 3);
    }
    return result;
}

TEST(SupplementalColours, CoverTheRangeOfTheTablesOnly) {
    CDcmObject object;
    SetPicture(object, {4, 1}, 8);
    AddPalette(object, Ramp(128, 128, 100), Ramp(128, 128, 50), Ramp(128, 100, 1), 8);
    const Bytes pixels = {127, 128, 227, 228};
    // 100, 50 and 1 x 255 / 256; 228 lies behind the last entry of blue
    EXPECT_EQ(By(kFrame, object, pixels).colours,
              (Colours{0, 0, 0, 99, 49, 0, 198, 148, 99, 0, 0, 0}));
    EXPECT_EQ(By(kSlice, object, pixels).colours,
              (Colours{0, 0, 0, 100, 50, 1, 199, 149, 100, 0, 0, 0}));
}

TEST(SupplementalColours, WordsAreSignedInAFrameAndUnsignedInASlice) {
    CDcmObject object;
    SetPicture(object, {3, 1}, 16);
    AddPalette(object, Ramp(40000, 3, 0x8000), Ramp(40000, 3, 0x4000), Ramp(40000, 3, 0xFF00), 16);
    const Words pixels = {39999, 40000, 40003};
    EXPECT_EQ(By(kFrame, object, pixels).colours, Colours(9));
    // entry x 255 / 65536
    EXPECT_EQ(By(kSlice, object, pixels).colours, (Colours{0, 0, 0, 127, 63, 254, 0, 0, 0}));
}

TEST(SupplementalColours, KeepTheLowByteOfWideEntries) {
    CDcmObject object;
    SetPicture(object, {1, 1}, 16);
    AddPalette(object, Ramp(5, 1, 0x8000), Ramp(5, 1, 0x1234), Ramp(5, 1, 0xFFFF), 16);
    // 32768, 4660 and 65535 x 255 / 256 are 32640, 4641.8 and 65279.0
    EXPECT_EQ(By(kFrame, object, Words{5}).colours,
              (Colours{32640 % 256, 4641 % 256, 65279 % 256}));
}

TEST(SupplementalColours, NegativeValuesNeedATableThatEndsBelow0) {
    for (const int count : {50, 150}) {
        CDcmObject object;
        SetPicture(object, {1, 1}, 16);
        object.SetValue(tag::kPixelRepresentation, static_cast<unsigned short>(1));
        AddPalette(object, Ramp(-100, count, 256), Ramp(-100, count, 256), Ramp(-100, count, 256),
                   16);
        const auto colours = By(kFrame, object, std::vector<std::int16_t>{-60}).colours;
        EXPECT_EQ(colours[0] != 0, count == 50) << count;
    }
}

TEST(SupplementalColours, StraightReadingsStayInsideTheTable) {
    CDcmObject object;
    SetPicture(object, {2, 1}, 8);
    object.SetValue(tag::kPixelRepresentation, static_cast<unsigned short>(1));
    const TestTable below = Ramp(-100, 50, 7, 0);
    AddPalette(object, below, below, below, 8);
    EXPECT_EQ(By(kSlice, object, Bytes{5, 255}).colours, Colours(6, 7));
}

TEST(PaletteImage, ColoursEveryPixel) {
    CDcmObject object;
    SetPicture(object, {510, 2}, 8);
    AddPalette(object, Ramp(10, 3, 100, 100), Ramp(10, 3, 0), Ramp(10, 3, 253), 8);
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
    CDcmObject object;
    SetPicture(object, {3, 1}, 16);
    AddPalette(object, Ramp(0, 300, 0, 200), Ramp(0, 300, 0xFFFF, 0), Ramp(0, 300, 0), 16);
    // 299 x 200 x 255 / 65536 is 232.7
    EXPECT_EQ(By(kWholePalette, object, Words{0, 299, 65535}).colours,
              (Colours{0, 254, 0, 232, 254, 1, 232, 254, 1}));
}

TEST(PaletteImage, FailsWithoutAWholePaletteAndTouchesNothing) {
    for (const std::uint32_t missing :
         {tag::kRedPaletteColorLookupTableDescriptor, tag::kGreenPaletteColorLookupTableData,
          tag::kBluePaletteColorLookupTableData}) {
        CDcmObject object;
        SetPicture(object, {2, 1}, 8);
        AddPalette(object, Ramp(0, 4, 0), Ramp(0, 4, 0), Ramp(0, 4, 0), 8);
        if (missing == tag::kBluePaletteColorLookupTableData) {
            SetBytes(object, missing, {1, 2});  // four entries are more than that
        } else {
            object.RemoveValue(missing);
        }
        for (const auto operation : {kFrame, kSlice, kWholePalette}) {
            EXPECT_EQ(By(operation, object, Bytes(2)).code, QVM_ERROR_NO_IMAGE) << missing;
        }
    }
}

TEST(PaletteImage, WithoutASizeIsEmpty) {
    CDcmObject object;
    AddPalette(object, Ramp(0, 4, 0), Ramp(0, 4, 0), Ramp(0, 4, 0), 8);
    const auto image = By(kFrame, object, Bytes(1));
    EXPECT_EQ(image.code, QVM_SUCCESS);
    EXPECT_EQ(image.colours, Colours());
}

}  // namespace
}  // namespace quorvex::pipeline_test
