/// Images on show, and what is seen of them.
#pragma once

#include "quorvex/CLData.h"
#include "quorvex/CXDIPP.h"
#include "tests/support/answers.h"

#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace quorvex::pipeline_test {

using Bytes = std::vector<unsigned char>;
using Values = std::vector<int>;
using Words = std::vector<std::uint16_t>;

inline Bytes Repeated(int count, unsigned char value) {
    return Bytes(static_cast<std::size_t>(count), value);
}

/// A grey or colour volume; its window shows a byte as it is.
struct TestVolume {
    Bytes bytes;
    CLData data;

    TestVolume(CSize size, unsigned short bits, Bytes content, unsigned short samples = 1)
        : bytes(std::move(content)) {
        data.pixels = bytes.data();
        data.width = size.cx;
        data.height = size.cy;
        data.samplesPerPixel = samples;
        data.bitsAllocated = bits;
        data.bitsStored = bits;
        data.photometricInterpretation = samples == 1 ? "MONOCHROME2" : "RGB";
        data.windowCenter = 128;
        data.windowWidth = 256;
        data.pixelSpacingX = 0.5;
        data.pixelSpacingY = 0.5;
        data.aspectRatioHorizontal = 1;
        data.aspectRatioVertical = 1;
    }
};

/// Shows a frame of an object, which a state that is applied later reads again.
inline void ShowObject(CXDIPP& dipp, CDcmObject& object, CSize view, int frame = 0) {
    CDcmApp app;
    ASSERT_EQ(dipp.Initialize(&app, &object, view, frame), QVM_SUCCESS);
}
/// An image of one grey value a pixel, shown without a header.
inline void ShowBytes(CXDIPP& dipp, Bytes pixels, CSize size, CSize view) {
    ASSERT_EQ(dipp.Initialize(pixels.data(), view, size, 1, 255, 0, 0), QVM_SUCCESS);
}
inline void ShowBlank(CXDIPP& dipp, CSize size, CSize view) {
    ShowBytes(dipp, Repeated(size.cx * size.cy, 0), size, view);
}

/// Renders and gives the pixels, top row first.
inline Values Rendered(CXDIPP& dipp) {
    EXPECT_EQ(dipp.Render(), QVM_SUCCESS);
    const auto result = test::ResultOf(dipp);
    const auto rowBytes = static_cast<std::ptrdiff_t>(result.size.cx) * result.pixelSize;
    Values fromTop;
    for (auto row = result.bytes.end(); row != result.bytes.begin();) {
        row -= rowBytes;
        fromTop.insert(fromTop.end(), row, row + rowBytes);
    }
    return fromTop;
}
inline Values Shown(CXDIPP& dipp) {
    dipp.UpdateZoom_ABS(1.0);
    return Rendered(dipp);
}

/// Equal but for one level.
template <class Expected>
void ExpectNear(const Values& shown, const Expected& expected) {
    ASSERT_EQ(shown.size(), std::size(expected));
    for (std::size_t i = 0; i < shown.size(); ++i) EXPECT_NEAR(shown[i], expected[i], 1) << i;
}

inline CSize ResultSize(const CXDIPP& dipp) {
    return test::ResultOf(dipp).size;
}

/// Width and level.
inline CSize WindowOf(const CXDIPP& dipp) {
    CSize window;
    dipp.GetWindowingFactor(window.cx, window.cy);
    return window;
}

}  // namespace quorvex::pipeline_test
