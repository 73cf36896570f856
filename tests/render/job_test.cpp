#include "foundation/raster/raster.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXImageCreator.h"
#include "quorvex/CXWindowing.h"
#include "tests/raster/noise_image.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <tuple>
#include <utility>

namespace quorvex {
namespace {

using Image8 = TestImage<unsigned char>;
using Image16 = TestImage<std::uint16_t>;
using Bytes = std::vector<unsigned char>;

constexpr unsigned char kUntouched = 0xA5;

Bytes NoiseTable(std::size_t size) {
    return NoiseImage({int(size), 1}, 1, 31).samples;
}

/// A job over an image, with an output of its own that starts as kUntouched.
struct Job {
    _IMAGE_INFO info;
    Image8 output;

    template <class Sample>
    Job(TestImage<Sample>& image, CSize outputSize, int outputChannels, unsigned char* lut)
        : output(outputSize, outputChannels, kUntouched) {
        info.bytesPerPixel = image.channels * static_cast<int>(sizeof(Sample));
        info.imageWidth = image.size.cx;
        info.imageHeight = image.size.cy;
        info.pixels = reinterpret_cast<unsigned char*>(image.samples.data());
        info.outputWidth = outputSize.cx;
        info.outputHeight = outputSize.cy;
        info.roi = {0, 0, image.size.cx, image.size.cy};
        info.lut = lut;
        info.bitsStored = sizeof(Sample) == 2 ? 16 : 8;
    }
    int Run() {
        CXImageCreator creator;
        return Run(creator);
    }
    int Run(CXImageCreator& creator) {
        info.output = output.samples.data();
        return creator.GetImageWithInfo(info);
    }
    [[nodiscard]] bool IsUntouched() const {
        return output == Image8(output.size, output.channels, kUntouched);
    }
};

/// What the stages are, each over the whole image: map, resize, mirror, turn pixel for pixel.
Image8 WorkingImage(const _IMAGE_INFO& info) {
    Image8 work({info.imageWidth, info.imageHeight}, 1);
    for (int y = std::max(info.roi.top, 0); y < std::min(info.roi.bottom, info.imageHeight); ++y) {
        for (int x = std::max(info.roi.left, 0); x < std::min(info.roi.right, info.imageWidth);
             ++x) {
            const int s = (info.imageHeight - y - 1) * info.imageWidth + x;
            std::int16_t word = 0;
            if (info.bytesPerPixel == 2) std::memcpy(&word, info.pixels + 2 * s, 2);
            int value = info.bytesPerPixel == 1 ? info.pixels[s] : word;
            if (info.bytesPerPixel == 2 && info.lutOffset >= 0) value &= 0xFFFF;
            work.At(x, y) = info.lut[value - info.lutOffset];
        }
    }
    return work;
}

Image8 Resized(const Image8& work, const _IMAGE_INFO& info, CSize size) {
    const bool upright = info.rotation % 180 == 0;
    const double length = upright ? info.roi.Height() : info.roi.Width();
    const double scale = info.outputHeight / (length * info.aspectRatio);
    Image8 resized(size, work.channels);
    const auto operation = work.channels == 3 ? ippiResize_8u_C3R : ippiResize_8u_C1R;
    EXPECT_TRUE(operation(work.samples.data(), work.size, work.Step(),
                          {info.roi.left, info.roi.top, info.roi.Width(), info.roi.Height()},
                          resized.samples.data(), resized.Step(), size, scale,
                          info.aspectRatio * scale, kLinearInterpolation));
    return resized;
}

Image8 Arranged(const Image8& work, const _IMAGE_INFO& info) {
    const CSize output{info.outputWidth, info.outputHeight};
    const bool upright = info.rotation % 180 == 0;
    const Image8 resized = Resized(work, info, upright ? output : CSize{output.cy, output.cx});
    Image8 result(output, work.channels);
    for (int y = 0; y < resized.size.cy; ++y) {
        for (int x = 0; x < resized.size.cx; ++x) {
            const int mirrored = info.horizontalFlip ? resized.size.cx - 1 - x : x;
            int toX = mirrored;
            int toY = y;
            if (info.rotation == 90) std::tie(toX, toY) = std::pair(y, output.cy - 1 - mirrored);
            if (info.rotation == 180)
                std::tie(toX, toY) = std::pair(output.cx - 1 - mirrored, output.cy - 1 - y);
            if (info.rotation == 270) std::tie(toX, toY) = std::pair(output.cx - 1 - y, mirrored);
            for (int channel = 0; channel < work.channels; ++channel) {
                result.At(toX, toY, channel) = resized.At(x, y, channel);
            }
        }
    }
    return result;
}

TEST(RenderJob, IsMapResizeMirrorTurn) {
    auto words = NoiseImage<std::uint16_t>({67, 45}, 1, 32);
    auto bytes = NoiseImage({67, 45}, 1, 33);
    auto table = NoiseTable(65536);
    constexpr CSize kOutputs[] = {{24, 16}, {68, 44}, {140, 96}};
    constexpr CRect kRegions[] = {{0, 0, 67, 45}, {5, 7, 60, 31}, {-3, 9, 40, 90}};
    CXImageCreator creator;
    for (const CSize size : kOutputs) {
        for (const CRect& roi : kRegions) {
            for (const int rotation : {0, 90, 180, 270}) {
                for (int variant = 0; variant < 8; ++variant) {
                    Job job = variant & 1 ? Job(words, size, 1, table.data())
                                          : Job(bytes, size, 1, table.data());
                    job.info.horizontalFlip = variant & 2;
                    job.info.aspectRatio = variant & 4 ? 1.25 : 1.0;
                    job.info.lutOffset = variant & 1 && variant & 2 ? -32768 : 0;
                    job.info.roi = roi;
                    job.info.rotation = rotation;
                    ASSERT_EQ(job.Run(creator), 0);
                    EXPECT_EQ(job.output, Arranged(WorkingImage(job.info), job.info))
                        << size.cx << " wide, rotation " << rotation << ", variant " << variant
                        << ", roi from " << roi.left;
                }
            }
        }
    }
}

// A window in a table whose length is told, as for a caller who does not tell.
TEST(RenderJob, KnowingTheTableMakesNoDifference) {
    auto words = NoiseImage<std::uint16_t>({300, 250}, 1, 41);
    auto mask = NoiseImage({300, 250}, 1, 42);
    Bytes table(65536);
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i] = static_cast<unsigned char>(std::clamp((int(i) - 9000) * 255 / 40000, 0, 255));
    }
    for (const int lutOffset : {0, -32768}) {
        for (unsigned char* const hidden :
             {static_cast<unsigned char*>(nullptr), mask.samples.data()}) {
            Job plain(words, {200, 100}, 1, table.data());
            plain.info.lutOffset = lutOffset;
            plain.info.shutterMask = hidden;
            plain.info.shutterValue = 7;
            Job told = plain;
            told.info.lutCount = 65536;
            ASSERT_EQ(plain.Run(), 0);
            ASSERT_EQ(told.Run(), 0);
            EXPECT_EQ(told.output, plain.output) << lutOffset;
        }
    }
}

TEST(RenderJob, ReadsWordsAsTheTableSays) {
    Image16 image({4, 3}, 1, 0);
    image.samples = {0xFFFF, 0x1280, 0x0003, 0x7F7F, 0, 0, 0, 0, 1, 2, 3, 4};
    auto table = NoiseTable(65536);
    const auto topRow = [&](int lutOffset, unsigned short bitsStored) {
        Job job(image, {4, 3}, 1, table.data());
        job.info.lutOffset = lutOffset;
        job.info.bitsStored = bitsStored;
        EXPECT_EQ(job.Run(), 0);
        return Bytes(job.output.samples.end() - 4, job.output.samples.end());  // bottom-up
    };
    EXPECT_EQ(topRow(0, 12), (Bytes{table[0xFFFF], table[0x1280], table[3], table[0x7F7F]}));
    EXPECT_EQ(topRow(-1024, 12),
              (Bytes{table[1023], table[0x1280 + 1024], table[1027], table[0x7F7F + 1024]}));
    EXPECT_EQ(topRow(0, 8), (Bytes{table[0xFF], table[0x80], table[3], table[0x7F]}));
    EXPECT_EQ(topRow(-128, 8), (Bytes{table[127], table[0], table[131], table[255]}));
}

TEST(RenderJob, BytesAreNeverSigned) {
    Image8 image({4, 1}, 1);
    image.samples = {0, 127, 128, 255};
    auto table = NoiseTable(300);
    Job job(image, {4, 1}, 1, table.data());
    job.info.lutOffset = -40;
    ASSERT_EQ(job.Run(), 0);
    EXPECT_EQ(job.output.samples, (Bytes{table[40], table[167], table[168], table[295]}));
}

TEST(RenderJob, TheShutterHidesWithoutTheTable) {
    Image16 image({4, 2}, 1, 60000);
    image.At(1, 0) = 2;
    Bytes table = {10, 20, 30};
    Bytes mask = {1, 0, 7, 255, 1, 1, 1, 1};
    Job job(image, {4, 2}, 1, table.data());
    job.info.shutterMask = mask.data();
    job.info.shutterValue = 0x1FE;
    ASSERT_EQ(job.Run(), 0);
    EXPECT_EQ(job.output.samples, (Bytes{0xFE, 0xFE, 0xFE, 0xFE, 0xFE, 30, 0xFE, 0xFE}));
}

TEST(RenderJob, ColourTurnsToBlueFirst) {
    auto image = NoiseImage({8, 6}, 3, 34);
    auto table = NoiseTable(256);
    Job job(image, {8, 6}, 3, table.data());
    job.info.lutOffset = -77;
    ASSERT_EQ(job.Run(), 0);
    for (int y = 0; y < 6; ++y) {
        for (int x = 0; x < 8; ++x) {
            for (int channel = 0; channel < 3; ++channel) {
                EXPECT_EQ(job.output.At(x, y, channel), table[image.At(x, 5 - y, 2 - channel)]);
            }
        }
    }
    job.info.lut = nullptr;
    EXPECT_EQ(job.Run(), 0);
    EXPECT_EQ(job.output, Image8({8, 6}, 3));
}

TEST(RenderJob, SupplementalPaletteComesOutInColour) {
    auto image = NoiseImage({16, 12}, 1, 35);
    auto table = NoiseTable(256);
    auto palette = NoiseImage({16, 12}, 3, 36);
    for (std::size_t i = 0; i < palette.samples.size() / 2; ++i) palette.samples[i] = 0;
    Job job(image, {24, 16}, 3, table.data());
    job.info.renderMode = kRenderSupplementalPalette;
    job.info.paletteImage = palette.samples.data();
    job.info.roi = {2, 1, 14, 11};
    const Image8 grey = WorkingImage(job.info);
    Image8 composite({16, 12}, 3);
    for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 16; ++x) {
            for (int channel = 0; channel < 3; ++channel) {
                composite.At(x, y, channel) =
                    y < 6 ? palette.At(x, 11 - y, 2 - channel) : grey.At(x, y);
            }
        }
    }
    for (const int rotation : {0, 90, 180}) {
        job.info.rotation = rotation;
        ASSERT_EQ(job.Run(), 0);
        EXPECT_EQ(job.output, Arranged(composite, job.info)) << rotation;
    }
    job.info.paletteImage = nullptr;
    job.info.rotation = 0;
    ASSERT_EQ(job.Run(), 0);
    for (int i = 0; i < 24; ++i) EXPECT_EQ(job.output.At(i, 3, 0), job.output.At(i, 3, 2));
}

TEST(RenderJob, OverlaysGoInBeforeScaling) {
    auto table = NoiseTable(256);
    auto grey = NoiseImage({20, 10}, 1, 37);
    Image8 lines({20, 10}, 1);
    for (int x = 0; x < 20; ++x) lines.At(x, 2) = 255;
    Job job(grey, {40, 20}, 1, table.data());
    job.info.renderMode = kRenderOverlay;
    job.info.overlayImage = lines.samples.data();
    job.info.rotation = 180;
    Image8 work = WorkingImage(job.info);
    for (int x = 0; x < 20; ++x) work.At(x, 2) = 255;
    ASSERT_EQ(job.Run(), 0);
    EXPECT_EQ(job.output, Arranged(work, job.info));

    auto colour = NoiseImage({4, 2}, 3, 38);
    auto over = NoiseImage({4, 2}, 3, 39);
    Job plain(colour, {4, 2}, 3, table.data());
    plain.info.renderMode = kRenderOverlay;  // without a layer it is a plain job
    ASSERT_EQ(plain.Run(), 0);
    Job burnt(colour, {4, 2}, 3, table.data());
    burnt.info.renderMode = kRenderOverlay;
    burnt.info.overlayImage = over.samples.data();
    ASSERT_EQ(burnt.Run(), 0);
    for (std::size_t i = 0; i < 24; ++i) {
        EXPECT_EQ(burnt.output.samples[i], plain.output.samples[i] | over.samples[i]);
    }
}

TEST(RenderJob, NothingToShowIsBlack) {
    auto image = NoiseImage({16, 16}, 1, 40);
    auto table = NoiseTable(256);
    constexpr CRect kEmpty[] = {{8, 0, 8, 16},   {9, 0, 3, 16},  {0, 12, 16, 4},
                                {16, 0, 40, 16}, {-9, -9, 0, 0}, {INT_MAX, 0, INT_MIN, 9}};
    for (const CRect& roi : kEmpty) {
        for (const int rotation : {0, 90}) {
            Job job(image, {16, 16}, 1, table.data());
            job.info.roi = roi;
            job.info.rotation = rotation;
            EXPECT_EQ(job.Run(), 0);
            EXPECT_EQ(job.output, Image8({16, 16}, 1));
        }
    }
}

TEST(RenderJob, RefusesAndWritesNothing) {
    auto image = NoiseImage({16, 16}, 1, 41);
    auto table = NoiseTable(256);
    const auto result = [&](CSize size, auto change) {
        Job job(image, size, 1, table.data());
        change(job.info);
        const int answer = job.Run();
        EXPECT_TRUE(job.IsUntouched());
        return answer;
    };
    const auto nothing = [](_IMAGE_INFO&) {};
    EXPECT_EQ(result({514, 4}, nothing), 1);
    EXPECT_EQ(result({4, 514}, [](_IMAGE_INFO& info) { info.rotation = 90; }), 1);
    EXPECT_EQ(result({4, 4}, [](_IMAGE_INFO& info) { info.outputWidth = 0; }), 1);
    EXPECT_EQ(result({4, 4}, [](_IMAGE_INFO& info) { info.outputHeight = -4; }), 1);
    EXPECT_EQ(result({4, 4}, [](_IMAGE_INFO& info) { info.imageWidth = -16; }), 1);
    EXPECT_EQ(result({4, 4}, [](_IMAGE_INFO& info) { info.pixels = nullptr; }), 1);
    EXPECT_EQ(result({4, 4}, [](_IMAGE_INFO& info) { info.rotation = -90; }), 1);
    EXPECT_EQ(result({4, 4}, [](_IMAGE_INFO& info) { info.bytesPerPixel = 0; }), 1);
    EXPECT_EQ(result({4, 4}, [](_IMAGE_INFO& info) { info.bytesPerPixel = INT_MIN; }), 1);
    EXPECT_EQ(result({4, 4}, [](_IMAGE_INFO& info) { info.lut = nullptr; }), 3);

    Job tall(image, {4, 514}, 1, table.data());
    EXPECT_EQ(tall.Run(), 0);
    tall.info.aspectRatio = HUGE_VAL;
    EXPECT_EQ(tall.Run(), 0);
}

TEST(RenderJob, FetchesTheTableThatIsMissing) {
    auto image = NoiseImage<std::uint16_t>({12, 9}, 1, 42);
    CXWindowing windowing;
    int widthAndLevel[2] = {700, 300};
    ASSERT_EQ(windowing.SetValue(CXWindowing::kWindow, widthAndLevel, nullptr), 0);
    Bytes table(65536);
    windowing.GetValue(CXWindowing::kDisplayTable, table.data(), nullptr);
    for (std::size_t i = 4096; i < table.size(); ++i) table[i] = table[4095];

    CXImageCreator creator;
    Job refused(image, {13, 9}, 1, table.data());
    EXPECT_EQ(refused.Run(creator), 1);
    Job given(image, {12, 9}, 1, table.data());
    ASSERT_EQ(given.Run(creator), 0);
    Job fetched(image, {12, 9}, 1, nullptr);
    fetched.info.windowing = &windowing;
    fetched.info.lutOffset = 5;
    ASSERT_EQ(fetched.Run(creator), 0);
    EXPECT_EQ(fetched.info.lutOffset, 0);
    EXPECT_NE(fetched.info.lut, nullptr);
    EXPECT_EQ(fetched.output, given.output);
}

TEST(RenderJob, MemoryThatCannotBeIsAFailure) {
    auto image = NoiseImage({16, 16}, 1, 43);
    auto table = NoiseTable(256);
    Job job(image, {4, 4}, 1, table.data());
    job.info.outputWidth = job.info.outputHeight = 1 << 20;
    job.info.rotation = 90;
    EXPECT_EQ(job.Run(), 3);
    EXPECT_TRUE(job.IsUntouched());
}

TEST(ModalityValues, GoThroughTheTable) {
    CXGSPSInfo record;
    record.pixelBitDepth = 8;
    record.rescaleSlope = 2.0;
    record.rescaleIntercept = -10.0;
    CXWindowing windowing;
    ASSERT_EQ(windowing.PrepareGSPSProcessing(&record), 0);
    CXImageCreator creator;

    Bytes bytes = {0, 5, 200, 255, 77};
    EXPECT_EQ(creator.ApplyModalityLUT(&windowing, bytes.data(), {2, 2}, 1), 0);
    EXPECT_EQ(bytes, (Bytes{246, 0, 134, 244, 77}));  // -10, 0, 390 and 500, low bytes
    Image16 words({3, 1}, 1);
    words.samples = {6, 0xFFFF, 300};  // the last two lie outside the table
    auto* const data = reinterpret_cast<unsigned char*>(words.samples.data());
    EXPECT_EQ(creator.ApplyModalityLUT(&windowing, data, {3, 1}, 2), 0);
    EXPECT_EQ(words.samples, (std::vector<std::uint16_t>{2, 0xFFF6, 500}));
    EXPECT_EQ(creator.ApplyModalityLUT(&windowing, data, {3, 1}, 4), 2);
    EXPECT_EQ(creator.ApplyModalityLUT(&windowing, nullptr, {3, 1}, 2), 2);
    EXPECT_EQ(words.samples, (std::vector<std::uint16_t>{2, 0xFFF6, 500}));
}

TEST(ModalityValues, StayWithoutATable) {
    Bytes pixels = {1, 2, 3, 4};
    EXPECT_EQ(CXImageCreator().ApplyModalityLUT(nullptr, pixels.data(), {4, 1}, 1), 0);
    EXPECT_EQ(pixels, (Bytes{1, 2, 3, 4}));
}

}  // namespace
}  // namespace quorvex
