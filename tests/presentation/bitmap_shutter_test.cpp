// A shutter that is drawn in an overlay.
#include "tests/presentation/presentation_objects.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;

TEST(BitmapShutter, SetBitsAreShuttered) {
    CDcmObject image;
    image.SetValue(0x00181600, "BITMAP");
    image.SetValue(0x00181623, static_cast<unsigned short>(0x6002));
    image.SetValue(0x00280011, static_cast<unsigned short>(5));
    image.SetValue(0x00280010, static_cast<unsigned short>(3));
    static unsigned char bits[] = {0x21, 0x40, 0xFF, 0xFF};  // longer than the picture
    image.SetValue(0x60023000, nullptr,
                   [](int, std::uint32_t, void*, int, int* length, void** data, int* last) {
                       *length = sizeof(bits);
                       *data = bits;
                       *last = 1;
                       return kMcContinue;
                   });
    Record info;
    ReadImage(image, info);
    const std::vector<std::uint8_t> expected = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    ASSERT_NE(info.shutterMask, nullptr);
    EXPECT_EQ(std::vector<std::uint8_t>(info.shutterMask, info.shutterMask + 15), expected);
}

}  // namespace
}  // namespace quorvex
