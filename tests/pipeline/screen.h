/// A surface to draw on, and what can be seen there.
#pragma once

#include "pipeline/layers/annotation_geometry.h"
#include "tests/pipeline/shown.h"

#include <algorithm>

namespace quorvex::pipeline_test {

/// Starts black, with a rim around it that nobody may write to.
class Screen {
public:
    explicit Screen(CSize size, int pixelBytes = 4)
        : size_(size),
          pixelBytes_(pixelBytes),
          bytes_(static_cast<std::size_t>(Step() * (size.cy + 2)), kRim) {
        for (int y = 0; y < size.cy; ++y) std::fill_n(Row(y), size.cx * pixelBytes, kBlack);
        surface_ = {Row(0), size.cx, size.cy, Step(), pixelBytes};
    }
    /// Draws an image or whatever `draw` draws.
    template <class Draw>
    void DrawBy(Draw draw) {
        draw(surface_);
        EXPECT_TRUE(IsRimWhole());
    }
    void Draw(CXDIPP& dipp) {
        DrawBy([&](DrawingSurface& surface) {
            CDC context(&surface);
            EXPECT_EQ(dipp.Draw(&context), QVM_SUCCESS);
        });
    }
    /// Middle of the light, in the coordinates of a canvas.
    [[nodiscard]] CanvasPoint Middle() const {
        CanvasPoint sum;
        double all = 0.0;
        ForEachPixel([&](int x, int y, double light) {
            if (light <= 2) return;  // black images are no lighter
            sum = {sum.x + (x + 0.5) * light, sum.y + (y + 0.5) * light};
            all += light;
        });
        return {sum.x / all, sum.y / all};
    }
    /// What encloses all pixels of at least that value.
    [[nodiscard]] CRect Bright(int atLeast = 128) const {
        CRect box = Nothing();
        ForEachPixel([&](int x, int y, int light) {
            if (light < atLeast) return;
            box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x + 1),
                   std::max(box.bottom, y + 1)};
        });
        return box;
    }
    [[nodiscard]] int At(int x, int y, int channel = 0) const {
        return Row(y)[x * pixelBytes_ + channel];
    }
    [[nodiscard]] bool IsBlack() const { return Bright() == Nothing(); }
    [[nodiscard]] const Bytes& All() const { return bytes_; }

private:
    static constexpr int kMargin = 8;
    static constexpr unsigned char kRim = 0x5A;
    static constexpr unsigned char kBlack = 0;

    [[nodiscard]] int Step() const { return size_.cx * pixelBytes_ + 2 * kMargin; }
    [[nodiscard]] CRect Nothing() const { return {size_.cx, size_.cy, 0, 0}; }
    unsigned char* Row(int y) { return bytes_.data() + Step() * (y + 1) + kMargin; }
    [[nodiscard]] const unsigned char* Row(int y) const {
        return bytes_.data() + Step() * (y + 1) + kMargin;
    }
    [[nodiscard]] bool IsRimWhole() const {
        auto rim = std::ranges::count(bytes_, kRim);
        for (int y = 0; y < size_.cy; ++y)
            rim -= std::count(Row(y), Row(y) + size_.cx * pixelBytes_, kRim);
        return rim + size_.cx * size_.cy * pixelBytes_ ==
               static_cast<std::ptrdiff_t>(bytes_.size());
    }
    template <class Work>
    void ForEachPixel(Work work) const {
        for (int y = 0; y < size_.cy; ++y)
            for (int x = 0; x < size_.cx; ++x) work(x, y, Row(y)[x * pixelBytes_]);
    }

    CSize size_;
    int pixelBytes_;
    Bytes bytes_;
    DrawingSurface surface_;
};

}  // namespace quorvex::pipeline_test
