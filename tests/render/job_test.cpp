#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXImageCreator.h"
#include "tests/raster/raster_calls.h"
#include "tests/support/windowing_values.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

namespace quorvex {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned char kUntouched = 0xA5;

Bytes NoiseTable(std::size_t size) {
    return NoiseImage({static_cast<int>(size), 1}, 1, 31).samples;
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

// What the stages are, each over the whole image: map, then resize, mirror, turn.

template <class SampleAt>
Image8 MadeOf(CSize size, int channels, SampleAt sampleAt) {
    Image8 image(size, channels);
    for (int y = 0; y < size.cy; ++y) {
        for (int x = 0; x < size.cx; ++x) {
            for (int channel = 0; channel < channels; ++channel)
                image.At(x, y, channel) = sampleAt(x, y, channel);
        }
    }
    return image;
}

Image8 WorkingImage(const _IMAGE_INFO& info) {
    const auto& roi = info.roi;
    return MadeOf({info.imageWidth, info.imageHeight}, 1, [&](int x, int y, int) -> unsigned char {
        if (x < roi.left || x >= roi.right || y < roi.top || y >= roi.bottom) return 0;
        const int s = (info.imageHeight - y - 1) * info.imageWidth + x;
        if (info.bytesPerPixel == 1) return info.lut[info.pixels[s] - info.lutOffset];
        std::int16_t word = 0;
        std::memcpy(&word, info.pixels + 2 * s, 2);
        return info.lut[info.lutOffset < 0 ? word - info.lutOffset : word & 0xFFFF];
    });
}

Image8 Arranged(const Image8& work, const _IMAGE_INFO& info) {
    const bool isUpright = info.rotation % 180 == 0;
    const RasterRect region{info.roi.left, info.roi.top, info.roi.Width(), info.roi.Height()};
    const double length = isUpright ? region.height : region.width;
    const double scale = info.outputHeight / (length * info.aspectRatio);
    Image8 image(isUpright ? CSize{info.outputWidth, info.outputHeight}
                           : CSize{info.outputHeight, info.outputWidth},
                 work.channels);
    EXPECT_TRUE(Resize(work, region, image, scale, info.aspectRatio * scale));
    if (info.horizontalFlip != 0) image = Mirrored(image, kVerticalAxis);
    return info.rotation == 0 ? image : Turned(image, info.rotation);
}

TEST(RenderJob, IsMapResizeMirrorTurn) {
    auto words = NoiseImage<std::uint16_t>({67, 45}, 1, 32);
    auto bytes = NoiseImage({67, 45}, 1, 33);
    auto table = NoiseTable(65536);
    constexpr CSize kOutputs[] = {{24, 16}, {68, 44}, {140, 96}};
    constexpr CRect kRegions[] = {{0, 0, 67, 45}, {5, 7, 60, 31}, {-3, 9, 40, 90}};
    CXImageCreator creator;
    for (int i = 0; i < 3 * 3 * 4 * 8; ++i) {
        const int variant = i % 8;
        const CSize size = kOutputs[i / 8 % 3];
        Job job =
            variant & 1 ? Job(words, size, 1, table.data()) : Job(bytes, size, 1, table.data());
        job.info.horizontalFlip = variant & 2;
        job.info.aspectRatio = variant & 4 ? 1.25 : 1.0;
        job.info.lutOffset = variant & 1 && variant & 2 ? -32768 : 0;
        job.info.roi = kRegions[i / 24 % 3];
        job.info.rotation = i / 72 * 90;
        ASSERT_EQ(job.Run(creator), 0);
        EXPECT_EQ(job.output, Arranged(WorkingImage(job.info), job.info))
            << size.cx << " wide, rotation " << job.info.rotation << ", variant " << variant
            << ", roi from " << job.info.roi.left;
    }
}

// A window in a table of known length, and the same table without its length.
TEST(RenderJob, KnowingTheTableMakesNoDifference) {
    auto words = NoiseImage<std::uint16_t>({300, 250}, 1, 41);
    auto mask = NoiseImage({300, 250}, 1, 42);
    Bytes table(65536);
    for (int i = 0; i < 65536; ++i) {
        table[static_cast<std::size_t>(i)] =
            static_cast<unsigned char>(std::clamp((i - 9000) * 255 / 40000, 0, 255));
    }
    for (const int lutOffset : {0, -32768}) {
        for (const bool isMasked : {false, true}) {
            Job plain(words, {200, 100}, 1, table.data());
            plain.info.lutOffset = lutOffset;
            plain.info.shutterMask = isMasked ? mask.samples.data() : nullptr;
            plain.info.shutterValue = 7;
            Job known = plain;
            known.info.lutCount = 65536;
            ASSERT_EQ(plain.Run(), 0);
            ASSERT_EQ(known.Run(), 0);
            EXPECT_EQ(known.output, plain.output) << lutOffset << ", masked " << isMasked;
        }
    }
}

TEST(RenderJob, ReadsPixelsAsTheTableSays) {
    Image16 words({4, 3}, 1, 0);
    words.samples = {0xFFFF, 0x1280, 0x0003, 0x7F7F, 0, 0, 0, 0, 1, 2, 3, 4};
    Image8 bytes({4, 1}, 1);
    bytes.samples = {0, 127, 128, 255};
    Bytes table = NoiseTable(65536);
    const struct {
        const char* what;
        Job job;
        int lutOffset;
        unsigned short bitsStored;
        std::vector<std::size_t> entries;  ///< of the source's first row, the output's last one
    } cases[] = {
        {"words", {words, {4, 3}, 1, table.data()}, 0, 12, {0xFFFF, 0x1280, 3, 0x7F7F}},
        {"signed", {words, {4, 3}, 1, table.data()}, -1024, 12, {1023, 5760, 1027, 33663}},
        {"low bytes", {words, {4, 3}, 1, table.data()}, 0, 8, {0xFF, 0x80, 3, 0x7F}},
        {"signed low bytes", {words, {4, 3}, 1, table.data()}, -128, 8, {127, 0, 131, 255}},
        {"bytes are never signed", {bytes, {4, 1}, 1, table.data()}, -40, 8, {40, 167, 168, 295}},
    };
    for (const auto& c : cases) {
        Job job = c.job;
        job.info.lutOffset = c.lutOffset;
        job.info.bitsStored = c.bitsStored;
        ASSERT_EQ(job.Run(), 0);
        const Bytes row(job.output.samples.end() - 4, job.output.samples.end());
        for (std::size_t x = 0; x < 4; ++x) EXPECT_EQ(row[x], table[c.entries[x]]) << c.what;
    }
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

TEST(RenderJob, ColourHasBlueFirstWithEveryInstructionSet) {
    auto image = NoiseImage({212, 6}, 3, 34);
    auto table = NoiseTable(256);
    Job job(image, {212, 6}, 3, table.data());
    job.info.lutOffset = -77;
    ForEachInstructionSet([&] {
        ASSERT_EQ(job.Run(), 0);
        EXPECT_EQ(job.output, MadeOf({212, 6}, 3, [&](int x, int y, int channel) {
                      return table[image.At(x, 5 - y, 2 - channel)];
                  }));
    });
    job.info.lut = nullptr;
    EXPECT_EQ(job.Run(), 0);
    EXPECT_EQ(job.output, Image8({212, 6}, 3));
}

TEST(RenderJob, SupplementalPaletteComesOutInColour) {
    auto image = NoiseImage({16, 12}, 1, 35);
    auto table = NoiseTable(256);
    auto palette = NoiseImage({16, 12}, 3, 36);
    std::fill_n(palette.samples.begin(), palette.samples.size() / 2, std::uint8_t{0});
    Job job(image, {24, 16}, 3, table.data());
    job.info.renderMode = kRenderSupplementalPalette;
    job.info.paletteImage = palette.samples.data();
    job.info.roi = {2, 1, 14, 11};
    const Image8 grey = WorkingImage(job.info);
    for (const bool isColoured : {true, false}) {
        if (!isColoured) job.info.paletteImage = nullptr;
        const Image8 composite = MadeOf({16, 12}, 3, [&](int x, int y, int channel) {
            return isColoured && y < 6 ? palette.At(x, 11 - y, 2 - channel) : grey.At(x, y);
        });
        for (const int rotation : {0, 90, 180}) {
            job.info.rotation = rotation;
            ASSERT_EQ(job.Run(), 0);
            EXPECT_EQ(job.output, Arranged(composite, job.info)) << rotation << isColoured;
        }
    }
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
    Job burnt = plain;
    burnt.info.overlayImage = over.samples.data();
    ASSERT_EQ(plain.Run(), 0);
    ASSERT_EQ(burnt.Run(), 0);
    EXPECT_EQ(burnt.output, MadeOf({4, 2}, 3, [&](int x, int y, int channel) {
                  return static_cast<unsigned char>(plain.output.At(x, y, channel) |
                                                    over.At(x, y, channel));
              }));

    // Without a table the picture is black: nothing of a row may come back two rows further up.
    Image8 blank({4, 4}, 3);
    Image8 firstRow({4, 4}, 3);
    std::fill_n(firstRow.samples.begin(), 12, std::uint8_t{255});
    Job alone(blank, {4, 4}, 3, nullptr);
    alone.info.renderMode = kRenderOverlay;
    alone.info.overlayImage = firstRow.samples.data();
    ASSERT_EQ(alone.Run(), 0);
    EXPECT_EQ(alone.output, firstRow);
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
            EXPECT_EQ(job.output, Image8({16, 16}, 1)) << roi.left << ", rotation " << rotation;
        }
    }
}

TEST(RenderJob, RefusesAndWritesNothing) {
    auto image = NoiseImage({16, 16}, 1, 41);
    auto table = NoiseTable(256);
    constexpr struct {
        const char* what;
        int _IMAGE_INFO::*field;
        int value;
        int rotation;
        int result;
    } kCases[] = {
        {"width of 3", &_IMAGE_INFO::outputWidth, 3, 0, 1},
        {"turned, height of 2", &_IMAGE_INFO::outputHeight, 2, 90, 1},
        {"no width", &_IMAGE_INFO::outputWidth, 0, 0, 1},
        {"negative height", &_IMAGE_INFO::outputHeight, -4, 0, 1},
        {"negative image", &_IMAGE_INFO::imageWidth, -16, 0, 1},
        {"another rotation", &_IMAGE_INFO::outputWidth, 4, -90, 1},
        {"no bytes", &_IMAGE_INFO::bytesPerPixel, 0, 0, 1},
        {"negative bytes", &_IMAGE_INFO::bytesPerPixel, INT_MIN, 0, 1},
        {"a block too large", &_IMAGE_INFO::outputHeight, INT_MAX - 3, 90, 3},
    };
    for (const auto& c : kCases) {
        Job job(image, {4, 4}, 1, table.data());
        job.info.*c.field = c.value;
        job.info.rotation = c.rotation;
        EXPECT_EQ(job.Run(), c.result) << c.what;
        EXPECT_TRUE(job.IsUntouched()) << c.what;
    }
    Job withoutTable(image, {4, 4}, 1, nullptr);
    EXPECT_EQ(withoutTable.Run(), 3);
    Job withoutPixels(image, {4, 4}, 1, table.data());
    withoutPixels.info.pixels = nullptr;
    EXPECT_EQ(withoutPixels.Run(), 1);
    EXPECT_TRUE(withoutTable.IsUntouched() && withoutPixels.IsUntouched());
    Job tall(image, {4, 514}, 1, table.data());  // any height passes without a quarter turn
    EXPECT_EQ(tall.Run(), 0);
    tall.info.aspectRatio = HUGE_VAL;
    EXPECT_EQ(tall.Run(), 0);
}

TEST(RenderJob, FetchesTheTableThatIsMissing) {
    auto image = NoiseImage<std::uint16_t>({12, 9}, 1, 42);
    CXWindowing windowing;
    SetWindow(windowing, 700, 300);
    Bytes table = DisplayTableOf(windowing);
    table.resize(65536, table.back());

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
    EXPECT_EQ(creator.ApplyModalityLUT(nullptr, bytes.data(), {4, 1}, 1), 0);
    EXPECT_EQ(bytes, (Bytes{246, 0, 134, 244, 77}));  // no table, no change
    Image16 words({3, 1}, 1);
    words.samples = {6, 0xFFFF, 300};  // the last two lie outside the table
    auto* const data = reinterpret_cast<unsigned char*>(words.samples.data());
    EXPECT_EQ(creator.ApplyModalityLUT(&windowing, data, {3, 1}, 2), 0);
    EXPECT_EQ(creator.ApplyModalityLUT(&windowing, data, {3, 1}, 4), 2);
    EXPECT_EQ(creator.ApplyModalityLUT(&windowing, nullptr, {3, 1}, 2), 2);
    EXPECT_EQ(words.samples, (std::vector<std::uint16_t>{2, 0xFFF6, 500}));
}

}  // namespace
}  // namespace quorvex
