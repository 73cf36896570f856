/// What the pipeline's tests share: a look at the members, and small images to show.
#pragma once

#include "pipeline/displayed_image.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/DicomObject.h"

#include <cstring>
#include <gtest/gtest.h>
#include <initializer_list>
#include <vector>

namespace quorvex {

template <auto Member>
struct Reach {
    friend DisplayedImage& Inside(CXDIPP& dipp) { return *(dipp.*Member); }
};
template struct Reach<&CXDIPP::image_>;
DisplayedImage& Inside(CXDIPP& dipp);

struct CXDIPPInspector {
    explicit CXDIPPInspector(CXDIPP& of) : dipp(Inside(of)) {}
    DisplayedImage& dipp;

    [[nodiscard]] CRect& Roi() const { return dipp.roi; }
    [[nodiscard]] double& AspectRatio() const { return dipp.aspectRatio; }
    [[nodiscard]] int& Rotation() const { return dipp.rotation; }
    [[nodiscard]] int& HorizontalFlip() const { return dipp.horizontalFlip; }
    [[nodiscard]] double& Zoom() const { return dipp.zoom; }
    [[nodiscard]] CSize ImageSize() const { return dipp.imageSize; }
    [[nodiscard]] int MinValue() const { return dipp.minValue; }
    [[nodiscard]] int MaxValue() const { return dipp.maxValue; }
    [[nodiscard]] const ValueRange& Range() const { return dipp.valueRange; }
    [[nodiscard]] CXGSPSInfo& Record() const { return const_cast<CXGSPSInfo&>(*dipp.presentation); }
    [[nodiscard]] PixelBlock& OverlayImage() const { return dipp.overlayImage; }
    [[nodiscard]] PixelBlock& PaletteImage() const { return dipp.paletteImage; }
    [[nodiscard]] int& RenderMode() const { return dipp.renderMode; }

    void LayOut() const { dipp.PrepareDisplayAreaTransform(); }
    [[nodiscard]] CPoint ImagePanOffset() const { return dipp.CalcImagePanOffset(); }
    [[nodiscard]] std::vector<int> Words() const {
        std::vector<int> words(dipp.pixels.size / 2);
        for (std::size_t i = 0; i < words.size(); ++i) {
            std::int16_t word = 0;
            std::memcpy(&word, dipp.pixels.data.get() + 2 * i, 2);
            words[i] = word;
        }
        return words;
    }
};

namespace pipeline_test {

/// An image of one grey value a pixel, shown without a header.
inline void ShowBytes(CXDIPP& dipp, std::vector<unsigned char> pixels, CSize size, CSize view) {
    ASSERT_EQ(dipp.Initialize(pixels.data(), view, size, 1, 255, 0, 0), QVM_SUCCESS);
}

inline void ShowBlank(CXDIPP& dipp, CSize size, CSize view) {
    ShowBytes(dipp, std::vector<unsigned char>(static_cast<std::size_t>(size.cx * size.cy)), size,
              view);
}

/// The rendered result, top row first.
inline std::vector<unsigned char> ResultFromTop(const CXDIPP& dipp, CSize& size, int& pixelSize) {
    size = {};
    if (dipp.GetResultImageInfo(size, pixelSize) != QVM_SUCCESS) return {};
    const auto rowBytes = static_cast<std::size_t>(size.cx * pixelSize);
    std::vector<unsigned char> bottomUp(rowBytes * static_cast<std::size_t>(size.cy));
    unsigned char* destination = bottomUp.data();
    dipp.GetResultImage(destination, static_cast<int>(bottomUp.size()));
    std::vector<unsigned char> topDown;
    for (auto row = static_cast<std::size_t>(size.cy); row-- > 0;) {
        const auto begin = bottomUp.begin() + static_cast<std::ptrdiff_t>(row * rowBytes);
        topDown.insert(topDown.end(), begin, begin + static_cast<std::ptrdiff_t>(rowBytes));
    }
    return topDown;
}

/// Renders and gives the pixels, top row first.
inline std::vector<int> Rendered(CXDIPP& dipp) {
    EXPECT_EQ(dipp.Render(), QVM_SUCCESS);
    CSize size;
    int pixelSize = 0;
    const auto bytes = ResultFromTop(dipp, size, pixelSize);
    return {bytes.begin(), bytes.end()};
}

}  // namespace pipeline_test

}  // namespace quorvex
