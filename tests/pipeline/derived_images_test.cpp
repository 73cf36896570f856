// Frames in the colours of a palette, of all their pixels or of some.
#include "quorvex/CXDIPP.h"
#include "tests/pipeline/overlay_objects.h"

#include <gtest/gtest.h>
#include <memory>

namespace quorvex {
namespace {

using namespace pipeline_test;

using Colours = std::vector<int>;

TestTable Ramp(int first, int count, int start, int step = 1) {
    TestTable table{first};
    for (int i = 0; i < count; ++i) {
        table.entries.push_back(static_cast<std::uint16_t>(start + i * step));
    }
    return table;
}

template <class Pixel>
unsigned char* BytesOf(std::vector<Pixel>& pixels) {
    return reinterpret_cast<unsigned char*>(pixels.data());
}

Colours Taken(unsigned char* rgb, unsigned long length) {
    const std::unique_ptr<unsigned char[]> owner(rgb);
    return {rgb, rgb + length};
}

template <class Pixel>
Colours Supplemental(CDcmObject& object, std::vector<Pixel> pixels) {
    unsigned char* rgb = nullptr;
    unsigned long length = 0;
    EXPECT_EQ(CXDIPP().MakeSPCOverlay(&object, BytesOf(pixels), rgb, length), QVM_SUCCESS);
    return Taken(rgb, length);
}

template <class Pixel>
Colours OfSlice(CDcmObject& object, std::vector<Pixel> pixels) {
    unsigned char* rgb = nullptr;
    unsigned long length = 0;
    EXPECT_EQ(
        CXDIPP().MakeSPCOverlayForMPR(&object, BytesOf(pixels),
                                      static_cast<unsigned short>(pixels.size()), 1, rgb, length),
        QVM_SUCCESS);
    return Taken(rgb, length);
}

TEST(SupplementalColours, CoverTheRangeOfTheTablesOnly) {
    CDcmObject object;
    SetPicture(object, {4, 1}, 8);
    AddPalette(object, Ramp(128, 128, 100), Ramp(128, 128, 50), Ramp(128, 100, 1), 8);
    const std::vector<unsigned char> pixels = {127, 128, 227, 228};
    // 100, 50 and 1 x 255 / 256; 228 lies behind the last entry of blue
    EXPECT_EQ(Supplemental(object, pixels), (Colours{0, 0, 0, 99, 49, 0, 198, 148, 99, 0, 0, 0}));
    EXPECT_EQ(OfSlice(object, pixels), (Colours{0, 0, 0, 100, 50, 1, 199, 149, 100, 0, 0, 0}));
}

TEST(SupplementalColours, WordsAreSignedInAFrameAndUnsignedInASlice) {
    CDcmObject object;
    SetPicture(object, {3, 1}, 16);
    AddPalette(object, Ramp(40000, 3, 0x8000), Ramp(40000, 3, 0x4000), Ramp(40000, 3, 0xFF00), 16);
    const std::vector<std::uint16_t> pixels = {39999, 40000, 40003};
    EXPECT_EQ(Supplemental(object, pixels), Colours(9));
    // entry x 255 / 65536
    EXPECT_EQ(OfSlice(object, pixels), (Colours{0, 0, 0, 127, 63, 254, 0, 0, 0}));
}

TEST(SupplementalColours, KeepTheLowByteOfWideEntries) {
    CDcmObject object;
    SetPicture(object, {1, 1}, 16);
    AddPalette(object, Ramp(5, 1, 0x8000), Ramp(5, 1, 0x1234), Ramp(5, 1, 0xFFFF), 16);
    // 32768, 4660 and 65535 x 255 / 256 are 32640, 4641.8 and 65279.0
    EXPECT_EQ(Supplemental(object, std::vector<std::uint16_t>{5}),
              (Colours{32640 % 256, 4641 % 256, 65279 % 256}));
}

TEST(SupplementalColours, NegativeValuesNeedATableThatEndsBelow0) {
    for (const int count : {50, 150}) {
        CDcmObject object;
        SetPicture(object, {1, 1}, 16);
        object.SetValue(0x00280103, static_cast<unsigned short>(1));
        AddPalette(object, Ramp(-100, count, 256), Ramp(-100, count, 256), Ramp(-100, count, 256),
                   16);
        const auto colours = Supplemental(object, std::vector<std::int16_t>{-60});
        EXPECT_EQ(colours[0] != 0, count == 50) << count;
    }
}

TEST(SupplementalColours, StraightReadingsStayInsideTheTable) {
    CDcmObject object;
    SetPicture(object, {2, 1}, 8);
    object.SetValue(0x00280103, static_cast<unsigned short>(1));
    const TestTable below = Ramp(-100, 50, 7, 0);
    AddPalette(object, below, below, below, 8);
    EXPECT_EQ(OfSlice(object, std::vector<unsigned char>{5, 255}), Colours(6, 7));
}

TEST(PaletteImage, ColoursEveryPixel) {
    CDcmObject object;
    SetPicture(object, {510, 2}, 8);
    AddPalette(object, Ramp(10, 3, 100, 100), Ramp(10, 3, 0), Ramp(10, 3, 253), 8);
    std::vector<unsigned char> pixels(1020);
    pixels[0] = 9;     // below the tables
    pixels[510] = 11;  // first of row 1
    pixels[511] = 200;
    unsigned char* rgb = nullptr;
    unsigned long length = 0;
    unsigned short padded = 0;
    ASSERT_EQ(CXDIPP().MakePaletteColorImage(&object, pixels.data(), rgb, length, padded),
              QVM_SUCCESS);
    EXPECT_EQ(padded, 512);
    ASSERT_EQ(length, 510U * 2 * 3);
    const std::unique_ptr<unsigned char[]> owner(rgb);
    EXPECT_EQ(Colours(rgb, rgb + 3), (Colours{99, 0, 252}));
    EXPECT_EQ(Colours(rgb + 1530, rgb + 1536), (Colours{199, 0, 253, 298 % 256, 1, 254}));
    EXPECT_EQ(Colours(rgb + length, rgb + 512 * 2 * 3), Colours(12));
}

TEST(PaletteImage, WordsTakeTheHighByteOfWideEntries) {
    CDcmObject object;
    SetPicture(object, {3, 1}, 16);
    AddPalette(object, Ramp(0, 300, 0, 200), Ramp(0, 300, 0xFFFF, 0), Ramp(0, 300, 0), 16);
    std::vector<std::uint16_t> pixels = {0, 299, 65535};
    unsigned char* rgb = nullptr;
    unsigned long length = 0;
    unsigned short padded = 0;
    ASSERT_EQ(CXDIPP().MakePaletteColorImage(&object, BytesOf(pixels), rgb, length, padded),
              QVM_SUCCESS);
    // 299 x 200 x 255 / 65536 is 232.7
    EXPECT_EQ(Taken(rgb, length), (Colours{0, 254, 0, 232, 254, 1, 232, 254, 1}));
}

TEST(PaletteImage, FailsWithoutAWholePaletteAndTouchesNothing) {
    for (const std::uint32_t missing : {0x00281101U, 0x00281202U, 0x00281203U}) {
        CDcmObject object;
        SetPicture(object, {2, 1}, 8);
        AddPalette(object, Ramp(0, 4, 0), Ramp(0, 4, 0), Ramp(0, 4, 0), 8);
        if (missing == 0x00281203U) {
            SetBytes(object, missing, {1, 2});  // four entries are more than that
        } else {
            object.RemoveValue(missing);
        }
        unsigned char pixels[2] = {};
        unsigned char* rgb = nullptr;
        unsigned long length = 77;
        unsigned short padded = 78;
        CXDIPP dipp;
        EXPECT_EQ(dipp.MakePaletteColorImage(&object, pixels, rgb, length, padded),
                  QVM_ERROR_NO_IMAGE);
        EXPECT_EQ(dipp.MakeSPCOverlay(&object, pixels, rgb, length), QVM_ERROR_NO_IMAGE);
        EXPECT_EQ(dipp.MakeSPCOverlayForMPR(&object, pixels, 2, 1, rgb, length),
                  QVM_ERROR_NO_IMAGE);
        EXPECT_EQ(rgb, nullptr);
        EXPECT_EQ(length, 77U);
        EXPECT_EQ(padded, 78);
    }
}

TEST(PaletteImage, WithoutASizeIsEmpty) {
    CDcmObject object;
    AddPalette(object, Ramp(0, 4, 0), Ramp(0, 4, 0), Ramp(0, 4, 0), 8);
    unsigned char pixel = 0;
    unsigned char* rgb = nullptr;
    unsigned long length = 77;
    EXPECT_EQ(CXDIPP().MakeSPCOverlay(&object, &pixel, rgb, length), QVM_SUCCESS);
    EXPECT_EQ(Taken(rgb, length), Colours());
}

}  // namespace
}  // namespace quorvex
