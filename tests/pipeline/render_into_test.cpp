// Pictures rendered into a host's memory: pixel by pixel those that are rendered and copied.
#include "tests/pipeline/overlay_objects.h"
#include "tests/pipeline/screen.h"

#include <functional>
#include <random>
#include <string>

namespace quorvex::pipeline_test {
namespace {

constexpr CSize kImage{61, 43};
constexpr CSize kView{50, 38};
constexpr std::size_t kPixels = 61 * 43;

Words NoisyWords(int bits) {
    std::mt19937 random(3);
    Words words(kPixels);
    for (std::size_t i = 0; i < words.size(); ++i) {
        words[i] = static_cast<std::uint16_t>((i % 61 * 60 + random() % 300) & ((1U << bits) - 1));
    }
    return words;
}

CDcmObject Grey(const std::string& attributes = "", const char* photometric = "MONOCHROME2") {
    return ImageOf(
        {.size = kImage, .photometric = photometric}, NoisyWords(12),
        "WindowCenter=1800; WindowWidth=2900" + (attributes.empty() ? "" : "; " + attributes));
}
CDcmObject SignedBytes() {
    return ImageOf({.size = kImage, .bitsAllocated = 8, .bitsStored = 8, .pixelRepresentation = 1},
                   RandomBytes(kPixels, 4));
}
CDcmObject WideElements() {
    std::vector<std::uint32_t> elements(kPixels);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        elements[i] = static_cast<std::uint32_t>(i * 700'001);
    }
    return ImageOf({.size = kImage, .bitsAllocated = 32, .bitsStored = 32}, elements);
}
CDcmObject Colour() {
    return ImageOf(
        {.size = kImage, .samples = 3, .bitsAllocated = 8, .bitsStored = 8, .photometric = "RGB"},
        RandomBytes(3 * kPixels, 5));
}
CDcmObject Palette() {
    CDcmObject object = ImageOf(
        {.size = kImage, .bitsAllocated = 8, .bitsStored = 8, .photometric = "PALETTE COLOR"},
        RandomBytes(kPixels, 6));
    TestTable tables[3];
    for (int entry = 0; entry < 256; ++entry) {
        tables[0].entries.push_back(static_cast<std::uint16_t>(entry * 257));
        tables[1].entries.push_back(static_cast<std::uint16_t>((255 - entry) * 257));
        tables[2].entries.push_back(static_cast<std::uint16_t>(entry * 3 % 256 * 257));
    }
    AddPalette(object, tables[0], tables[1], tables[2], 16);
    return object;
}
CDcmObject WithOverlay() {
    CDcmObject object = Grey("PixelAspectRatio=3\\2");
    AddOverlay(object, 0x6000,
               {.rows = 30,
                .columns = 40,
                .originRow = 5,
                .originColumn = 9,
                .data = RandomBytes(150, 7)});
    return object;
}
CDcmObject WithShutter(const std::string& colour) {
    return Grey(
        "ShutterShape=RECTANGULAR; ShutterLeftVerticalEdge=8; ShutterRightVerticalEdge=50; "
        "ShutterUpperHorizontalEdge=6; ShutterLowerHorizontalEdge=33" +
        colour);
}

struct ImageCase {
    const char* what;
    CDcmObject (*object)();
    const char* state = nullptr;  ///< attributes of one that is laid over
};
const ImageCase kImages[] = {
    {"grey", [] { return Grey(); }},
    {"inverted", [] { return Grey("", "MONOCHROME1"); }},
    {"signed bytes", SignedBytes},
    {"elements of 32 bits", WideElements},
    {"colour", Colour},
    {"palette", Palette},
    {"overlay, long pixels", WithOverlay},
    {"shutter", [] { return WithShutter("; ShutterPresentationValue=30000"); }},
    {"coloured shutter",
     [] { return WithShutter("; ShutterPresentationColorCIELabValue=30000\\60000\\20000"); }},
    {"state", [] { return Grey(); },
     "ImageRotation=90; ImageHorizontalFlip=Y; WindowCenter=900; WindowWidth=400"},
};

struct ViewCase {
    const char* what;
    std::function<void(CXDIPP&)> change;
};
const ViewCase kViews[] = {
    {"fitted", [](CXDIPP&) {}},
    {"as large as it is", [](CXDIPP& dipp) { dipp.UpdateZoom_ABS(1.0); }},
    {"eight times, aside",
     [](CXDIPP& dipp) {
         dipp.UpdateZoom_ABS(8.0), dipp.UpdatePan_ABS({-31, 17});
     }},
    {"enlarged by cubes",
     [](CXDIPP& dipp) {
         dipp.UpdateZoom_ABS(1.9);
         dipp.SetInterpolation(Interpolation::kCubic);
     }},
    {"smaller", [](CXDIPP& dipp) { dipp.UpdateZoom_ABS(0.4); }},
    {"half outside",
     [](CXDIPP& dipp) {
         dipp.UpdatePan_ABS({23, -16});
     }},
    {"turned", [](CXDIPP& dipp) { dipp.UpdateRotate_ABS(90); }},
    {"turned about, inverted",
     [](CXDIPP& dipp) { dipp.UpdateRotate_ABS(180), dipp.UpdatePresentationLUT_Toggle(); }},
    {"turned and flipped",
     [](CXDIPP& dipp) { dipp.UpdateHFlip_Toggle(), dipp.UpdateRotate_ABS(270); }},
    {"another window", [](CXDIPP& dipp) { dipp.UpdateVOILUT_ABS(700.0, 350.0); }},
};

CXDIPP ShownBy(Rules rules, const ImageCase& image, CDcmObject& object) {
    CXDIPP dipp;
    dipp.SetRules(rules);
    ShowObject(dipp, object, kView);
    if (image.state != nullptr) {
        CDcmApp app;
        CDcmObject state = test::With<CDcmObject>(image.state);
        EXPECT_EQ(dipp.ApllyGSPSObject(&app, &state), QVM_SUCCESS);
    }
    dipp.ShowShutter(1);
    dipp.ShowOverlays(1);
    return dipp;
}

constexpr int BytesOf(PixelFormat format) {
    return format == PixelFormat::kGrey8 ? 1 : format == PixelFormat::kBgr24 ? 3 : 4;
}

constexpr unsigned char kRim = 0x5A;

/// A host's memory with more than a picture needs on every side.
struct HostMemory {
    PixelTarget target;
    Bytes bytes;

    HostMemory(CSize size, PixelFormat format, bool isBottomUp) {
        target.size = {size.cx + 3, size.cy + 2};
        target.format = format;
        const std::ptrdiff_t step = target.size.cx * BytesOf(format) + 5;
        bytes.assign(static_cast<std::size_t>(step * (target.size.cy + 2)), kRim);
        target.pixels = bytes.data() + step * (isBottomUp ? target.size.cy : 1);
        target.stride = isBottomUp ? -step : step;
    }
    unsigned char* At(int x, int y) {
        return static_cast<unsigned char*>(target.pixels) + y * target.stride +
               x * BytesOf(target.format);
    }
    /// Takes a picture's pixels out, in the form of `Rendered`: the rim is left.
    Values TakeOut(CSize size, int pixelSize) {
        Values values;
        for (int y = 0; y < size.cy; ++y) {
            for (int x = 0; x < size.cx; ++x) {
                unsigned char* const pixel = At(x, y);
                values.insert(values.end(), pixel, pixel + pixelSize);
                if (BytesOf(target.format) == 4) {
                    EXPECT_EQ(pixel[3], 255);
                }
                if (BytesOf(target.format) > pixelSize) {
                    EXPECT_TRUE(pixel[1] == pixel[pixelSize / 2] &&
                                pixel[2] == pixel[pixelSize - 1]);
                }
                std::fill_n(pixel, BytesOf(target.format), kRim);
            }
        }
        return values;
    }
    [[nodiscard]] bool IsAllRim() const {
        return std::ranges::all_of(bytes, [](unsigned char byte) { return byte == kRim; });
    }
};

void ExpectSamePixels(CXDIPP& dipp, const std::string& what) {
    const Values expected = Rendered(dipp);
    const auto last = test::ResultOf(dipp);
    PictureInfo picture;
    ASSERT_EQ(dipp.GetPictureInfo(picture), QVM_SUCCESS) << what;
    ASSERT_EQ(picture.size, last.size) << what;
    ASSERT_EQ(picture.pixelSize, last.pixelSize) << what;
    for (const auto format : {PixelFormat::kGrey8, PixelFormat::kBgr24, PixelFormat::kBgra32}) {
        for (const bool isBottomUp : {false, true}) {
            HostMemory memory(picture.size, format, isBottomUp);
            const auto result = dipp.RenderInto(memory.target);
            if (BytesOf(format) < picture.pixelSize) {
                EXPECT_EQ(result, QVM_ERROR_INVALID_IMAGE_FORMAT) << what;
            } else {
                ASSERT_EQ(result, QVM_SUCCESS) << what;
                EXPECT_EQ(memory.TakeOut(picture.size, picture.pixelSize), expected)
                    << what << ", format " << static_cast<int>(format) << (isBottomUp ? " up" : "");
            }
            EXPECT_TRUE(memory.IsAllRim()) << what;
        }
    }
    EXPECT_EQ(test::ResultOf(dipp).bytes, last.bytes) << what;
}

TEST(RenderInto, GivesThePixelsOfRender) {
    for (const Rules rules : {Rules::kEstablished, Rules::kStandard}) {
        for (const ImageCase& image : kImages) {
            CDcmObject object = image.object();
            for (const ViewCase& view : kViews) {
                CXDIPP dipp = ShownBy(rules, image, object);
                view.change(dipp);
                ExpectSamePixels(dipp, std::string(image.what) + ", " + view.what);
            }
        }
    }
}

TEST(RenderInto, LiesWhereDrawPutsIt) {
    for (const ViewCase& view : kViews) {
        CDcmObject object = Colour();
        CXDIPP dipp = ShownBy(Rules::kStandard, kImages[4], object);
        view.change(dipp);
        Screen screen(kView);
        ASSERT_EQ(dipp.Render(), QVM_SUCCESS);
        screen.Draw(dipp);
        PictureInfo picture;
        ASSERT_EQ(dipp.GetPictureInfo(picture), QVM_SUCCESS);
        HostMemory memory(kView, PixelFormat::kBgr24, false);
        PixelTarget target = memory.target;
        target.pixels = memory.At(picture.corner.x, picture.corner.y);
        target.size = picture.size;
        ASSERT_EQ(dipp.RenderInto(target), QVM_SUCCESS);
        for (int y = 0; y < picture.size.cy; ++y) {
            for (int x = 0; x < picture.size.cx; ++x) {
                const CPoint at{picture.corner.x + x, picture.corner.y + y};
                for (int channel = 0; channel < 3; ++channel) {
                    ASSERT_EQ(screen.At(at.x, at.y, channel), memory.At(at.x, at.y)[channel])
                        << view.what << " " << at.x << " " << at.y;
                }
            }
        }
    }
}

TEST(RenderInto, RefusesATargetThatCannotHoldThePicture) {
    using Spoil = void (*)(PixelTarget&);
    struct {
        const char* what;
        QUORVEX_MESSAGE answer;
        Spoil spoil;
    } const cases[] = {
        {"no pixels", QVM_ERROR_INVALID_OUTPUT_SIZE, [](PixelTarget& t) { t.pixels = nullptr; }},
        {"narrow", QVM_ERROR_INVALID_OUTPUT_SIZE, [](PixelTarget& t) { t.size.cx -= 4; }},
        {"low", QVM_ERROR_INVALID_OUTPUT_SIZE, [](PixelTarget& t) { t.size.cy -= 3; }},
        {"negative", QVM_ERROR_INVALID_OUTPUT_SIZE,
         [](PixelTarget& t) {
             t.size = {-1, -1};
         }},
        {"short rows", QVM_ERROR_INVALID_OUTPUT_SIZE, [](PixelTarget& t) { t.stride = -10; }},
        {"no rows", QVM_ERROR_INVALID_OUTPUT_SIZE, [](PixelTarget& t) { t.stride = 0; }},
        {"endless rows", QVM_ERROR_INVALID_OUTPUT_SIZE,
         [](PixelTarget& t) { t.size.cx = INT32_MAX; }},
        {"grey", QVM_ERROR_INVALID_IMAGE_FORMAT,
         [](PixelTarget& t) { t.format = PixelFormat::kGrey8; }},
        {"no format", QVM_ERROR_INVALID_IMAGE_FORMAT,
         [](PixelTarget& t) { t.format = static_cast<PixelFormat>(7); }},
    };
    for (const Rules rules : {Rules::kEstablished, Rules::kStandard}) {
        CDcmObject object = Colour();
        CXDIPP dipp = ShownBy(rules, kImages[4], object);
        PictureInfo picture;
        ASSERT_EQ(dipp.GetPictureInfo(picture), QVM_SUCCESS);
        for (const auto& c : cases) {
            HostMemory memory(picture.size, PixelFormat::kBgr24, false);
            PixelTarget target = memory.target;
            c.spoil(target);
            EXPECT_EQ(dipp.RenderInto(target), c.answer) << c.what;
            EXPECT_TRUE(memory.IsAllRim()) << c.what;
        }
        HostMemory memory(picture.size, PixelFormat::kBgr24, false);
        dipp.UpdateZoom_ABS(-1.0);
        EXPECT_EQ(dipp.RenderInto(memory.target), QVM_ERROR_INVALID_OUTPUT_SIZE);
        EXPECT_EQ(dipp.GetPictureInfo(picture), QVM_ERROR_INVALID_OUTPUT_SIZE);
        EXPECT_EQ(CXDIPP().RenderInto(memory.target), QVM_ERROR_NO_IMAGE);
        EXPECT_TRUE(memory.IsAllRim());
    }
}

}  // namespace
}  // namespace quorvex::pipeline_test
