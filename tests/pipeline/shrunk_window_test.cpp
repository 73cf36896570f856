// Windows over images that are seen smaller, by the standard rules.
#include "tests/pipeline/overlay_objects.h"
#include "tests/pipeline/shown.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace quorvex::pipeline_test {
namespace {

constexpr CSize kImage{150, 70};
constexpr CSize kView{52, 52};

struct Form {
    const char* what;
    ImageShape shape;
    double slope;
    double noise;  ///< on top of a slope over all values, as a part of them
};
constexpr Form kForms[] = {
    {"12 bits, quiet", {.size = kImage}, 1.0, 0.02},
    {"12 bits, noisy", {.size = kImage}, 1.0, 0.3},
    {"inverted", {.size = kImage, .photometric = "MONOCHROME1"}, 0.5, 0.02},
    {"signed", {.size = kImage, .bitsStored = 16, .pixelRepresentation = 1}, 1.0, 0.02},
    {"16 bits, falling", {.size = kImage, .bitsStored = 16}, -2.5, 0.02},
    {"bytes", {.size = kImage, .bitsAllocated = 8, .bitsStored = 8}, 1.0, 0.05},
    {"signed bytes",
     {.size = kImage, .bitsAllocated = 8, .bitsStored = 8, .pixelRepresentation = 1},
     0.25,
     0.05},
};

double Highest(const ImageShape& shape) {
    return std::exp2(shape.bitsStored - shape.pixelRepresentation) - 1.0;
}
double Lowest(const ImageShape& shape) {
    return shape.pixelRepresentation != 0 ? -Highest(shape) - 1.0 : 0.0;
}

/// Stored values that rise to the right, so that a window cuts through some pixels and not others.
std::vector<int> StoredOf(const Form& form) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> noise(0.0, form.noise);
    const double low = Lowest(form.shape);
    const double extent = Highest(form.shape) - low;
    std::vector<int> stored;
    for (int i = 0; i < kImage.cx * kImage.cy; ++i) {
        const double place = static_cast<double>(i % kImage.cx) / kImage.cx;
        stored.push_back(
            static_cast<int>(low + extent * (place * (1.0 - form.noise) + noise(random))));
    }
    return stored;
}

CDcmObject ObjectOf(const Form& form, const std::string& attributes = "") {
    const std::string all = "RescaleIntercept=-100; RescaleSlope=" + std::to_string(form.slope) +
                            (attributes.empty() ? "" : "; " + attributes);
    const auto stored = StoredOf(form);
    if (form.shape.bitsAllocated == 8) {
        return ImageOf(form.shape, Bytes(stored.begin(), stored.end()), all);
    }
    return ImageOf(form.shape, Words(stored.begin(), stored.end()), all);
}

struct Window {
    double centre = 0.0;
    double width = 1.0;
    VoiFunction function = VoiFunction::kLinear;

    [[nodiscard]] double operator()(double value) const {
        const bool isExact = function == VoiFunction::kLinearExact;
        const double middle = isExact ? centre : centre - 0.5;
        const double extent = isExact ? width : width - 1.0;
        return std::clamp((value - middle) / extent + 0.5, 0.0, 1.0);
    }
};

/// Windows all over a form's values, from a hundredth of them to all and more.
std::vector<Window> WindowsOver(const Form& form) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> place(0.0, 1.0);
    const double from = Lowest(form.shape) * form.slope - 100.0;
    const double extent = (Highest(form.shape) - Lowest(form.shape)) * form.slope;
    std::vector<Window> windows;
    for (int i = 0; i < 8; ++i) {
        const double width = 1.5 + std::abs(extent) * std::pow(10.0, 2.5 * place(random) - 2.0);
        windows.push_back({from + extent * place(random), width,
                           i % 2 == 0 ? VoiFunction::kLinear : VoiFunction::kLinearExact});
    }
    return windows;
}

Values Windowed(CXDIPP& dipp, const Window& window) {
    dipp.UpdateVOILUT_ABS(window.centre, window.width, window.function);
    return Rendered(dipp);
}

CXDIPP Shrunk(CDcmObject& object) {
    CXDIPP dipp;
    dipp.SetRules(Rules::kStandard);
    ShowObject(dipp, object, kView);
    dipp.ShowShutter(1);
    dipp.ShowOverlays(1);
    return dipp;
}

/// How much of source pixel `s` lies in pixel `d`, as a share of that.
double Share(int s, int d, int source, int shrunk) {
    const double factor = static_cast<double>(source) / shrunk;
    return std::max(std::min<double>(s + 1, (d + 1) * factor) - std::max<double>(s, d * factor),
                    0.0) /
           factor;
}

/// The average of the display values of all pixels that lie in each new one.
std::vector<double> AverageShown(const Form& form, const Window& window, CSize size) {
    const auto stored = StoredOf(form);
    const bool isInverted = std::string(form.shape.photometric) == "MONOCHROME1";
    std::vector<double> shown(static_cast<std::size_t>(size.cx * size.cy));
    for (std::size_t i = 0; i < stored.size(); ++i) {
        const double output = window(stored[i] * form.slope - 100.0);
        const double display = 255.0 * (isInverted ? 1.0 - output : output);
        const int x = static_cast<int>(i) % kImage.cx;
        const int y = static_cast<int>(i) / kImage.cx;
        const int right = std::min((x + 1) * size.cx / kImage.cx, size.cx - 1);
        const int bottom = std::min((y + 1) * size.cy / kImage.cy, size.cy - 1);
        for (int row = y * size.cy / kImage.cy; row <= bottom; ++row) {
            for (int column = x * size.cx / kImage.cx; column <= right; ++column) {
                shown[static_cast<std::size_t>(row * size.cx + column)] +=
                    display * Share(x, column, kImage.cx, size.cx) *
                    Share(y, row, kImage.cy, size.cy);
            }
        }
    }
    return shown;
}

TEST(ShrunkWindow, ShowsTheAverageOfDisplayValues) {
    for (const Form& form : kForms) {
        CDcmObject object = ObjectOf(form);
        CXDIPP dipp = Shrunk(object);
        for (const Window& window : WindowsOver(form)) {
            const Values shown = Windowed(dipp, window);
            const auto expected = AverageShown(form, window, ResultSize(dipp));
            ASSERT_EQ(shown.size(), expected.size()) << form.what;
            for (std::size_t i = 0; i < shown.size(); ++i) {
                ASSERT_NEAR(shown[i], expected[i], 0.55)
                    << form.what << ", " << window.width << " around " << window.centre << " at "
                    << i;
            }
        }
    }
}

TEST(ShrunkWindow, LooksTheSameWhateverWasShownBefore) {
    constexpr const char* kShutter =
        "ShutterShape=CIRCULAR; CenterOfCircularShutter=35\\70; RadiusOfCircularShutter=33";
    for (const Form& form : kForms) {
        CDcmObject object = ObjectOf(form, kShutter);
        AddOverlay(object, 0x6000,
                   {.rows = 40, .columns = 100, .originRow = 9, .data = RandomBytes(500, 3)});
        CXDIPP dipp = Shrunk(object);
        for (const Window& window : WindowsOver(form)) {
            CXDIPP fresh = Shrunk(object);
            EXPECT_EQ(Windowed(dipp, window), Windowed(fresh, window))
                << form.what << ", " << window.width << " around " << window.centre;
        }
    }
}

TEST(ShrunkWindow, APartLooksAsItDoesInTheWhole) {
    const Form& form = kForms[0];
    CDcmObject object = ObjectOf(form);
    CXDIPP all;
    all.SetRules(Rules::kStandard);
    ShowObject(all, object, kImage);
    CXDIPP part = Shrunk(object);
    for (const Window& window : WindowsOver(form)) {
        all.UpdateZoom_ABS(0.6);
        part.UpdateZoom_ABS(0.6);
        const Values whole = Windowed(all, window);
        const Values shown = Windowed(part, window);
        const CSize wholeSize = ResultSize(all);
        const CSize size = ResultSize(part);
        ASSERT_LT(size.cx, wholeSize.cx);
        ASSERT_EQ(size.cy, wholeSize.cy);
        const int left = (wholeSize.cx - size.cx) / 2;
        for (int y = 0; y < size.cy; ++y) {
            const auto row = whole.begin() + y * wholeSize.cx + left;
            ASSERT_TRUE(std::equal(row, row + size.cx, shown.begin() + y * size.cx)) << y;
        }
    }
}

}  // namespace
}  // namespace quorvex::pipeline_test
