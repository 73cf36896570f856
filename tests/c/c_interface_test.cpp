// The C interface against the classes that stand behind it.
#include "quorvex/Attributes.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/Tags.h"
#include "quorvex/quorvex.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace quorvex::test {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;

constexpr CSize kPane{300, 260};

std::string Sample(const char* name) {
    return std::string(QUORVEX_SOURCE_DIR) + "/samples/" + name;
}

std::string Scratch(const std::string& name) {
    return (fs::path(testing::TempDir()) / ("quorvex_c_" + name)).string();
}

Bytes FileBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct Free {
    void operator()(quorvex_context* context) const { quorvex_context_free(context); }
    void operator()(quorvex_image* image) const { quorvex_image_free(image); }
    void operator()(quorvex_view* view) const { quorvex_view_free(view); }
};
using Context = std::unique_ptr<quorvex_context, Free>;
using Image = std::unique_ptr<quorvex_image, Free>;
using View = std::unique_ptr<quorvex_view, Free>;

Context NewContext() {
    quorvex_context* context = nullptr;
    EXPECT_EQ(quorvex_context_new(&context), QUORVEX_SUCCESS);
    return Context(context);
}

Image Opened(const Context& context, const std::string& path) {
    quorvex_image* image = nullptr;
    EXPECT_EQ(quorvex_open_file(context.get(), path.c_str(), &image), QUORVEX_SUCCESS) << path;
    return Image(image);
}

View NewView(const Context& context, CSize size = kPane) {
    quorvex_view* view = nullptr;
    EXPECT_EQ(quorvex_view_new(context.get(), size.cx, size.cy, &view), QUORVEX_SUCCESS);
    return View(view);
}

quorvex_facts FactsOf(const Image& image) {
    quorvex_facts facts{};
    facts.struct_size = sizeof facts;
    EXPECT_EQ(quorvex_image_facts(image.get(), &facts), QUORVEX_SUCCESS);
    return facts;
}

Bytes FrameOf(const Image& image, int frame) {
    Bytes pixels(FactsOf(image).frame_bytes);
    const quorvex_buffer buffer{sizeof buffer, pixels.data(), pixels.size(), 0};
    EXPECT_EQ(quorvex_read_frame(image.get(), frame, &buffer, nullptr), QUORVEX_SUCCESS);
    return pixels;
}

Bytes FrameOfClass(const std::string& path, int frame) {
    CDcmApp app;
    CxDcmParser parser;
    parser.SetRules(Rules::kStandard);
    EXPECT_EQ(parser.Initialize(&app, CString(path), 0), QVM_SUCCESS);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    EXPECT_EQ(parser.GetAFrameUnpacked(frame, data, size), QVM_SUCCESS);
    const std::unique_ptr<unsigned char[]> owner(data);
    return {data, data + size};
}

/// A pane as a host has it, with bytes behind each row that nobody may touch.
struct Screen {
    static constexpr unsigned char kUntouched = 0xA5;
    static constexpr int kGap = 7;

    explicit Screen(int format, CSize size = kPane)
        : pixelBytes(format == QUORVEX_PIXELS_GREY8 ? 1 : format + 2),
          stride(size.cx * pixelBytes + kGap),
          pixels(static_cast<std::size_t>(stride) * static_cast<std::size_t>(size.cy), kUntouched) {
        target.struct_size = sizeof target;
        target.pixels = pixels.data();
        target.width = size.cx;
        target.height = size.cy;
        target.stride = stride;
        target.format = format;
    }
    [[nodiscard]] const unsigned char* At(int x, int y) const {
        return pixels.data() + static_cast<std::ptrdiff_t>(y) * stride + x * pixelBytes;
    }
    [[nodiscard]] bool HasSoundGaps() const {
        for (int y = 0; y < target.height; ++y)
            for (int i = 0; i < kGap; ++i)
                if (At(target.width, y)[i] != kUntouched) return false;
        return true;
    }

    int pixelBytes;
    int stride;
    Bytes pixels;
    quorvex_target target{};
};

/// The same pane drawn by the class: blue, green, red, and 255.
Screen DrawnByClass(CXDIPP& shown) {
    Screen screen(QUORVEX_PIXELS_BGRA32);
    for (int y = 0; y < kPane.cy; ++y)
        for (int x = 0; x < kPane.cx; ++x)
            std::memcpy(screen.pixels.data() + y * screen.stride + 4 * x, "\0\0\0\xFF", 4);
    DrawingSurface surface{screen.pixels.data(), kPane.cx, kPane.cy, screen.stride, 4};
    CDC deviceContext(&surface);
    EXPECT_EQ(shown.Render(), QVM_SUCCESS);
    EXPECT_EQ(shown.Draw(&deviceContext), QVM_SUCCESS);
    return screen;
}

void ExpectDrawn(const View& view, CXDIPP& shown, const std::string& what) {
    const Screen expected = DrawnByClass(shown);
    Screen drawn(QUORVEX_PIXELS_BGRA32);
    ASSERT_EQ(quorvex_view_render(view.get(), &drawn.target), QUORVEX_SUCCESS) << what;
    EXPECT_TRUE(drawn.pixels == expected.pixels) << what;
}

constexpr const char* kSamples[] = {"ct.dcm", "ultrasound_loop.dcm"};

TEST(CInterface, FramesAreThoseOfTheParser) {
    const Context context = NewContext();
    for (const char* name : kSamples) {
        const std::string path = Sample(name);
        const Image image = Opened(context, path);
        const int frames = FactsOf(image).frames;
        for (const int frame : {0, frames - 1})
            EXPECT_TRUE(FrameOf(image, frame) == FrameOfClass(path, frame)) << name;
        Bytes few(FactsOf(image).frame_bytes - 1);
        const quorvex_buffer buffer{sizeof buffer, few.data(), few.size(), 0};
        EXPECT_EQ(quorvex_read_frame(image.get(), 0, &buffer, nullptr),
                  QUORVEX_ERROR_INVALID_OUTPUT_SIZE);
        EXPECT_EQ(quorvex_read_frame(image.get(), frames, &buffer, nullptr),
                  QUORVEX_ERROR_INVALID_FRAME_INDEX);
    }
}

TEST(CInterface, RowsLieAsFarApartAsTheHostSays) {
    const Context context = NewContext();
    const Image image = Opened(context, Sample("ct.dcm"));
    const quorvex_facts facts = FactsOf(image);
    const Bytes whole = FrameOf(image, 0);
    const std::size_t row = whole.size() / static_cast<std::size_t>(facts.rows);
    const std::size_t stride = row + 13;
    Bytes apart(stride * static_cast<std::size_t>(facts.rows - 1) + row, 0xA5);
    quorvex_buffer buffer{sizeof buffer, apart.data(), apart.size(),
                          static_cast<std::ptrdiff_t>(stride)};
    int32_t quality = 0;
    ASSERT_EQ(quorvex_read_frame(image.get(), 0, &buffer, &quality), QUORVEX_SUCCESS);
    EXPECT_EQ(quality, QUORVEX_QUALITY_WHOLE);
    for (std::size_t y = 0; y < static_cast<std::size_t>(facts.rows); ++y) {
        ASSERT_EQ(std::memcmp(apart.data() + y * stride, whole.data() + y * row, row), 0);
        if (y + 1 < static_cast<std::size_t>(facts.rows)) ASSERT_EQ(apart[y * stride + row], 0xA5);
    }
    --buffer.bytes;
    EXPECT_EQ(quorvex_read_frame(image.get(), 0, &buffer, nullptr),
              QUORVEX_ERROR_INVALID_OUTPUT_SIZE);
    // A region is a part of it.
    const int32_t left = 5;
    const int32_t top = 9;
    const int32_t width = 20;
    Bytes part(static_cast<std::size_t>(width * facts.sample_bytes) * 3);
    const quorvex_buffer partBuffer{sizeof partBuffer, part.data(), part.size(), 0};
    ASSERT_EQ(quorvex_read_region(image.get(), 0, left, top, left + width, top + 3, 0, &partBuffer),
              QUORVEX_SUCCESS);
    const std::size_t partRow = part.size() / 3;
    for (std::size_t y = 0; y < 3; ++y) {
        const auto* const expected = whole.data() + (static_cast<std::size_t>(top) + y) * row +
                                     static_cast<std::size_t>(left * facts.sample_bytes);
        EXPECT_EQ(std::memcmp(part.data() + y * partRow, expected, partRow), 0);
    }
    EXPECT_EQ(quorvex_read_region(image.get(), 0, 5, 9, 5, 12, 0, &partBuffer),
              QUORVEX_ERROR_INVALID_OUTPUT_SIZE);
}

struct Archive {
    Bytes bytes;
    int reads = 0;
    int releases = 0;
    bool isBroken = false;

    [[nodiscard]] quorvex_source Source() {
        return {sizeof(quorvex_source), this,
                [](void* user) { return std::uint64_t{static_cast<Archive*>(user)->bytes.size()}; },
                [](void* user, std::uint64_t offset, void* to, std::size_t length) -> std::int32_t {
                    auto& archive = *static_cast<Archive*>(user);
                    ++archive.reads;
                    if (archive.isBroken) return 0;
                    std::memcpy(to, archive.bytes.data() + offset, length);
                    return 1;
                },
                [](void* user) { ++static_cast<Archive*>(user)->releases; }};
    }
};

TEST(CInterface, BytesOfAHostAreReadAndGivenBackOnce) {
    const std::string path = Sample("ultrasound_loop.dcm");
    const Bytes expected = FrameOfClass(path, 1);
    Archive archive{.bytes = FileBytes(path)};
    const quorvex_source source = archive.Source();
    {
        const Context context = NewContext();
        quorvex_image* opened = nullptr;
        ASSERT_EQ(quorvex_open_source(context.get(), &source, &opened), QUORVEX_SUCCESS);
        Image image(opened);
        EXPECT_TRUE(FrameOf(image, 1) == expected);
        quorvex_image* copied = nullptr;
        ASSERT_EQ(quorvex_image_copy(image.get(), &copied), QUORVEX_SUCCESS);
        const Image copy(copied);
        const View view = NewView(context);
        ASSERT_EQ(quorvex_view_show(view.get(), image.get(), 0), QUORVEX_SUCCESS);
        image.reset();
        EXPECT_EQ(archive.releases, 0);
        EXPECT_TRUE(FrameOf(copy, 1) == expected);
    }
    EXPECT_EQ(archive.releases, 1);
    archive.isBroken = true;
    const Context context = NewContext();
    quorvex_image* none = nullptr;
    EXPECT_EQ(quorvex_open_source(context.get(), &source, &none),
              QUORVEX_ERROR_FAILED_TO_READ_FILE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(archive.releases, 2);
    quorvex_image* inMemory = nullptr;
    ASSERT_EQ(
        quorvex_open_memory(context.get(), archive.bytes.data(), archive.bytes.size(), &inMemory),
        QUORVEX_SUCCESS);
    EXPECT_TRUE(FrameOf(Image(inMemory), 1) == expected);
}

TEST(CInterface, ValuesAreInModalityUnits) {
    const Context context = NewContext();
    const Image image = Opened(context, Sample("ct.dcm"));
    const quorvex_facts facts = FactsOf(image);
    double slope = 0.0;
    double intercept = 0.0;
    ASSERT_EQ(quorvex_attribute_number(image.get(), tag::kRescaleSlope, 0, &slope),
              QUORVEX_SUCCESS);
    ASSERT_EQ(quorvex_attribute_number(image.get(), tag::kRescaleIntercept, 0, &intercept),
              QUORVEX_SUCCESS);
    quorvex_modality modality{};
    modality.struct_size = sizeof modality;
    ASSERT_EQ(quorvex_frame_modality(image.get(), 0, &modality), QUORVEX_SUCCESS);
    EXPECT_EQ(modality.slope, slope);
    EXPECT_EQ(modality.intercept, intercept);
    const Bytes stored = FrameOf(image, 0);
    std::vector<float> values(stored.size() / 2);
    ASSERT_EQ(quorvex_read_values(image.get(), 0, values.data(), values.size()), QUORVEX_SUCCESS);
    for (std::size_t i = 0; i < values.size(); ++i) {
        unsigned word = stored[2 * i] + 256U * stored[2 * i + 1];
        word &= (1U << facts.bits_stored) - 1;
        const bool isNegative = facts.is_signed != 0 && (word >> (facts.bits_stored - 1)) != 0;
        const double number = isNegative ? word - double(1U << facts.bits_stored) : word;
        ASSERT_EQ(values[i], static_cast<float>(number * slope + intercept)) << i;
    }
    EXPECT_EQ(quorvex_read_values(image.get(), 0, values.data(), values.size() - 1),
              QUORVEX_ERROR_INVALID_OUTPUT_SIZE);
}

TEST(CInterface, PanesAreThoseOfTheClass) {
    const Context context = NewContext();
    const std::string path = Sample("ct.dcm");
    const Image image = Opened(context, path);
    const View view = NewView(context);
    EXPECT_EQ(quorvex_view_set_window(view.get(), 40, 400, QUORVEX_VOI_AS_IT_IS),
              QUORVEX_ERROR_NO_IMAGE);
    ASSERT_EQ(quorvex_view_show(view.get(), image.get(), 0), QUORVEX_SUCCESS);
    CDcmApp app;
    CXDIPP shown;
    shown.SetRules(Rules::kStandard);
    ASSERT_EQ(shown.Initialize(&app, CString(path), kPane, 0), QVM_SUCCESS);
    ExpectDrawn(view, shown, "as it comes");
    quorvex_view_set_window(view.get(), 40.5, 350, QUORVEX_VOI_SIGMOID);
    shown.UpdateVOILUT_ABS(40.5, 350, VoiFunction::kSigmoid);
    ExpectDrawn(view, shown, "window");
    quorvex_view_set_zoom(view.get(), 1.7);
    shown.UpdateZoom_ABS(1.7);
    ExpectDrawn(view, shown, "zoom");
    quorvex_view_set_pan(view.get(), 31, -12);
    shown.UpdatePan_Offset({31, -12});
    ExpectDrawn(view, shown, "pan");
    quorvex_view_set_inverted(view.get(), 1);
    quorvex_view_set_inverted(view.get(), 2);
    shown.UpdatePresentationLUT_Toggle();
    ExpectDrawn(view, shown, "inverted");
    quorvex_view_set_inverted(view.get(), 0);
    shown.UpdatePresentationLUT_Toggle();
    quorvex_view_set_pan(view.get(), 0, 0);
    quorvex_view_set_zoom(view.get(), 0);
    quorvex_view_set_orientation(view.get(), 90, 1);
    shown.UpdateRotate_Offset(90);
    shown.UpdateHFlip_Toggle();
    shown.UpdateViewSize({1000, 1000});
    shown.UpdateViewSize(kPane);
    ExpectDrawn(view, shown, "turned and flipped");
    quorvex_view_set_orientation(view.get(), 0, 0);
    quorvex_view_set_layers(view.get(), QUORVEX_LAYER_ANNOTATIONS);
    shown.UpdateRotate_Offset(-90);
    shown.UpdateHFlip_Toggle();
    shown.UpdateViewSize({1000, 1000});
    shown.UpdateViewSize(kPane);
    ExpectDrawn(view, shown, "upright again, with annotations");
}

TEST(CInterface, FormatsHoldTheSamePicture) {
    const Context context = NewContext();
    const Image image = Opened(context, Sample("ct.dcm"));
    const View view = NewView(context);
    ASSERT_EQ(quorvex_view_show(view.get(), image.get(), 0), QUORVEX_SUCCESS);
    Screen four(QUORVEX_PIXELS_BGRA32);
    Screen three(QUORVEX_PIXELS_BGR24);
    Screen grey(QUORVEX_PIXELS_GREY8);
    for (Screen* screen : {&four, &three, &grey}) {
        ASSERT_EQ(quorvex_view_render(view.get(), &screen->target), QUORVEX_SUCCESS);
        EXPECT_TRUE(screen->HasSoundGaps());
    }
    for (int y = 0; y < kPane.cy; ++y) {
        for (int x = 0; x < kPane.cx; ++x) {
            ASSERT_EQ(std::memcmp(four.At(x, y), three.At(x, y), 3), 0);
            ASSERT_EQ(*four.At(x, y), *grey.At(x, y));
            ASSERT_EQ(four.At(x, y)[3], 255);
        }
    }
    Screen small(QUORVEX_PIXELS_BGRA32);
    small.target.width -= 1;
    EXPECT_EQ(quorvex_view_render(view.get(), &small.target), QUORVEX_ERROR_INVALID_OUTPUT_SIZE);
    small.target.width += 1;
    small.target.format = 9;
    EXPECT_EQ(quorvex_view_render(view.get(), &small.target), QUORVEX_ERROR_INVALID_IMAGE_FORMAT);
    EXPECT_TRUE(small.HasSoundGaps());
}

TEST(CInterface, AnotherFrameKeepsWhatWasSetAndAnotherImageDoesNot) {
    const Context context = NewContext();
    const Image loop = Opened(context, Sample("ultrasound_loop.dcm"));
    const Image slice = Opened(context, Sample("ct.dcm"));
    const View moved = NewView(context);
    ASSERT_EQ(quorvex_view_show(moved.get(), loop.get(), 0), QUORVEX_SUCCESS);
    const View fresh = NewView(context);
    ASSERT_EQ(quorvex_view_show(fresh.get(), loop.get(), 2), QUORVEX_SUCCESS);
    for (const View* view : {&moved, &fresh}) {
        quorvex_view_set_orientation(view->get(), 270, 1);
        quorvex_view_set_zoom(view->get(), 1.5);
        quorvex_view_set_pan(view->get(), 9, 4);
        quorvex_view_set_inverted(view->get(), 1);
    }
    ASSERT_EQ(quorvex_view_show(moved.get(), loop.get(), 2), QUORVEX_SUCCESS);
    Screen one(QUORVEX_PIXELS_BGRA32);
    Screen other(QUORVEX_PIXELS_BGRA32);
    ASSERT_EQ(quorvex_view_render(moved.get(), &one.target), QUORVEX_SUCCESS);
    ASSERT_EQ(quorvex_view_render(fresh.get(), &other.target), QUORVEX_SUCCESS);
    EXPECT_TRUE(one.pixels == other.pixels);
    EXPECT_EQ(quorvex_view_show(moved.get(), loop.get(), 9999), QUORVEX_ERROR_INVALID_FRAME_INDEX);
    ASSERT_EQ(quorvex_view_render(moved.get(), &one.target), QUORVEX_SUCCESS);
    EXPECT_TRUE(one.pixels == other.pixels) << "a frame that is not there changes nothing";
    const View clean = NewView(context);
    ASSERT_EQ(quorvex_view_show(clean.get(), slice.get(), 0), QUORVEX_SUCCESS);
    ASSERT_EQ(quorvex_view_show(moved.get(), slice.get(), 0), QUORVEX_SUCCESS);
    ASSERT_EQ(quorvex_view_render(moved.get(), &one.target), QUORVEX_SUCCESS);
    ASSERT_EQ(quorvex_view_render(clean.get(), &other.target), QUORVEX_SUCCESS);
    EXPECT_TRUE(one.pixels == other.pixels);
}

TEST(CInterface, StructuresOfOtherReleases) {
    const Context context = NewContext();
    const Image image = Opened(context, Sample("ct.dcm"));
    quorvex_facts old{};
    std::memset(&old, 0xA5, sizeof old);
    old.struct_size = offsetof(quorvex_facts, samples);
    ASSERT_EQ(quorvex_image_facts(image.get(), &old), QUORVEX_SUCCESS);
    EXPECT_EQ(old.rows, FactsOf(image).rows);
    EXPECT_EQ(static_cast<std::uint32_t>(old.samples), 0xA5A5A5A5U) << "not the old host's";
    struct {
        quorvex_facts facts;
        std::uint64_t later;
    } wide{};
    wide.facts.struct_size = sizeof wide;
    wide.later = 77;
    ASSERT_EQ(quorvex_image_facts(image.get(), &wide.facts), QUORVEX_SUCCESS);
    EXPECT_EQ(wide.later, 77U);
    old.struct_size = 0;
    EXPECT_EQ(quorvex_image_facts(image.get(), &old), QUORVEX_ERROR_NULL_SOURCE);
}

TEST(CInterface, AttributesAsTextAndNumbers) {
    const Context context = NewContext();
    const Image image = Opened(context, Sample("ct.dcm"));
    char text[64] = "";
    std::size_t length = 0;
    ASSERT_EQ(quorvex_attribute_text(image.get(), tag::kModality, 0, text, sizeof text, &length),
              QUORVEX_SUCCESS);
    EXPECT_STREQ(text, "CT");
    EXPECT_EQ(length, 2U);
    char two[2] = {'x', 'y'};
    EXPECT_EQ(quorvex_attribute_text(image.get(), tag::kModality, 0, two, sizeof two, &length),
              QUORVEX_ERROR_INVALID_OUTPUT_SIZE);
    EXPECT_EQ(two[0], 'x');
    EXPECT_EQ(quorvex_attribute_text(image.get(), tag::kRows, 0, text, sizeof text, nullptr),
              QUORVEX_SUCCESS);
    EXPECT_EQ(std::stoi(text), FactsOf(image).rows);
    int32_t count = -1;
    EXPECT_EQ(quorvex_attribute_count(image.get(), tag::kPixelSpacing, &count), QUORVEX_SUCCESS);
    EXPECT_EQ(count, 2);
    double spacing = 0.0;
    EXPECT_EQ(quorvex_attribute_number(image.get(), tag::kPixelSpacing, 1, &spacing),
              QUORVEX_SUCCESS);
    EXPECT_EQ(spacing, FactsOf(image).column_spacing);
    EXPECT_EQ(quorvex_attribute_number(image.get(), tag::kPixelSpacing, 2, &spacing),
              QUORVEX_ERROR_NO_SOURCE_OBJECT);
    EXPECT_EQ(quorvex_attribute_count(image.get(), 0x00091001, &count), QUORVEX_SUCCESS);
    EXPECT_EQ(count, 0);
}

TEST(CInterface, CalledOffUntilItIsResumed) {
    const Context context = NewContext();
    const Image image = Opened(context, Sample("ct.dcm"));
    Bytes pixels(FactsOf(image).frame_bytes);
    const quorvex_buffer buffer{sizeof buffer, pixels.data(), pixels.size(), 0};
    quorvex_context_cancel(context.get());
    EXPECT_EQ(quorvex_read_frame(image.get(), 0, &buffer, nullptr), QUORVEX_ERROR_CANCELLED);
    const Context other = NewContext();
    EXPECT_NE(Opened(other, Sample("ct.dcm")), nullptr) << "another context goes on";
    quorvex_context_resume(context.get());
    EXPECT_EQ(quorvex_read_frame(image.get(), 0, &buffer, nullptr), QUORVEX_SUCCESS);
}

quorvex_conversion To(const char* target) {
    quorvex_conversion conversion{};
    conversion.struct_size = sizeof conversion;
    conversion.target = target;
    return conversion;
}

TEST(CInterface, ConversionsKeepThePixels) {
    const Context context = NewContext();
    const Image image = Opened(context, Sample("ultrasound_loop.dcm"));
    const std::string path = Scratch("converted.dcm");
    for (const char* target : {"rle", "j2k-lossless", "explicit"}) {
        fs::remove(path);
        const quorvex_conversion conversion = To(target);
        ASSERT_EQ(quorvex_convert(image.get(), &conversion, path.c_str()) % QUORVEX_FRAME_COPIED,
                  QUORVEX_SUCCESS)
            << target;
        EXPECT_TRUE(FrameOf(Opened(context, path), 3) == FrameOf(image, 3)) << target;
    }
    fs::remove(path);
    for (const char* target : {"", "no-such-target"}) {
        const quorvex_conversion conversion = To(target);
        EXPECT_EQ(quorvex_writes_target(target), 0);
        EXPECT_EQ(quorvex_convert(image.get(), &conversion, path.c_str()),
                  QUORVEX_ERROR_INVALID_TARGET_SYNTAX);
    }
    quorvex_conversion stopped = To("rle");
    stopped.progress = [](std::int32_t, std::int32_t, void*) -> std::int32_t { return 0; };
    EXPECT_EQ(quorvex_convert(image.get(), &stopped, path.c_str()),
              QUORVEX_ERROR_FAILED_TO_SET_PIXEL_DATA);
    EXPECT_FALSE(fs::exists(path));
    const quorvex_conversion conversion = To("rle");
    EXPECT_EQ(quorvex_convert(image.get(), &conversion, Scratch("none/at/all.dcm").c_str()),
              QUORVEX_ERROR_FAILED_TO_SET_PIXEL_DATA);
}

TEST(CInterface, NewObjectsHoldTheHostsFrames) {
    const Context context = NewContext();
    const Image source = Opened(context, Sample("ct.dcm"));
    const std::string path = Scratch("made.dcm");
    Bytes frame(std::size_t{40} * 30);
    for (std::size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<unsigned char>(i * 7);
    const void* const frames[] = {frame.data(), frame.data()};
    quorvex_new_object wanted{};
    wanted.struct_size = sizeof wanted;
    wanted.kind = QUORVEX_MAKE_SECONDARY_CAPTURE;
    wanted.rows = 30;
    wanted.columns = 40;
    wanted.samples = 1;
    wanted.bits_allocated = 8;
    for (const char* target : {static_cast<const char*>(nullptr), "rle"}) {
        wanted.target = target;
        ASSERT_EQ(quorvex_make(source.get(), &wanted, frames, 2, path.c_str()), QUORVEX_SUCCESS);
        const Image made = Opened(context, path);
        EXPECT_EQ(FactsOf(made).frames, 2);
        EXPECT_TRUE(FrameOf(made, 1) == frame);
    }
    // Like the source: as many frames of its form.
    quorvex_new_object derived{};
    derived.struct_size = sizeof derived;
    const Bytes like = FrameOf(source, 0);
    const void* const same[] = {like.data()};
    ASSERT_EQ(quorvex_make(source.get(), &derived, same, 1, path.c_str()), QUORVEX_SUCCESS);
    EXPECT_TRUE(FrameOf(Opened(context, path), 0) == like);
    const void* const none[] = {nullptr};
    EXPECT_EQ(quorvex_make(source.get(), &derived, none, 1, path.c_str()),
              QUORVEX_ERROR_NULL_SOURCE);
    EXPECT_EQ(quorvex_make(source.get(), &derived, same, 0, path.c_str()),
              QUORVEX_ERROR_INVALID_IMAGE_FORMAT);
}

TEST(CInterface, AStateShowsWhatWasSeen) {
    const Context context = NewContext();
    const Image image = Opened(context, Sample("ct.dcm"));
    const View view = NewView(context);
    const std::string path = Scratch("state.dcm");
    EXPECT_EQ(quorvex_write_state(view.get(), nullptr, nullptr, 0, path.c_str()),
              QUORVEX_ERROR_NO_IMAGE);
    ASSERT_EQ(quorvex_view_show(view.get(), image.get(), 0), QUORVEX_SUCCESS);
    quorvex_view_set_window(view.get(), 55.5, 300.25, QUORVEX_VOI_AS_IT_IS);
    quorvex_view_set_orientation(view.get(), 90, 1);
    quorvex_view_set_inverted(view.get(), 1);
    const double line[] = {10, 10, 100, 60};
    quorvex_mark marks[2] = {};
    marks[0] = {sizeof(quorvex_mark), QUORVEX_MARK_TEXT, 0, "here", line, 1};
    marks[1] = {sizeof(quorvex_mark), QUORVEX_MARK_POLYLINE, 0, nullptr, line, 2};
    ASSERT_EQ(quorvex_write_state(view.get(), "SEEN", marks, 2, path.c_str()), QUORVEX_SUCCESS);
    const Image state = Opened(context, path);
    const View again = NewView(context);
    ASSERT_EQ(quorvex_view_show(again.get(), image.get(), 0), QUORVEX_SUCCESS);
    ASSERT_EQ(quorvex_view_apply_state(again.get(), state.get()), QUORVEX_SUCCESS);
    Screen seen(QUORVEX_PIXELS_BGRA32);
    Screen stated(QUORVEX_PIXELS_BGRA32);
    ASSERT_EQ(quorvex_view_render(view.get(), &seen.target), QUORVEX_SUCCESS);
    ASSERT_EQ(quorvex_view_render(again.get(), &stated.target), QUORVEX_SUCCESS);
    EXPECT_TRUE(seen.pixels == stated.pixels);
    quorvex_view_set_layers(again.get(), QUORVEX_LAYER_ANNOTATIONS);
    ASSERT_EQ(quorvex_view_render(again.get(), &stated.target), QUORVEX_SUCCESS);
    EXPECT_FALSE(seen.pixels == stated.pixels) << "the marks are seen";
    ASSERT_EQ(quorvex_view_apply_state(again.get(), nullptr), QUORVEX_SUCCESS);
    const View plain = NewView(context);
    ASSERT_EQ(quorvex_view_show(plain.get(), image.get(), 0), QUORVEX_SUCCESS);
    ASSERT_EQ(quorvex_view_render(plain.get(), &seen.target), QUORVEX_SUCCESS);
    quorvex_view_set_layers(again.get(), 0);
    ASSERT_EQ(quorvex_view_render(again.get(), &stated.target), QUORVEX_SUCCESS);
    EXPECT_TRUE(seen.pixels == stated.pixels) << "the state is taken away";
    marks[1].point_count = 1;
    EXPECT_EQ(quorvex_write_state(view.get(), "SEEN", marks, 2, path.c_str()),
              QUORVEX_ERROR_INVALID_IMAGE_FORMAT);
}

TEST(CInterface, ThumbnailsAreFitted) {
    const Context context = NewContext();
    const Image image = Opened(context, Sample("ct.dcm"));
    Screen screen(QUORVEX_PIXELS_GREY8, {64, 48});
    quorvex_picture picture{};
    picture.struct_size = sizeof picture;
    ASSERT_EQ(quorvex_thumbnail(image.get(), 0, &screen.target, &picture), QUORVEX_SUCCESS);
    EXPECT_EQ(picture.height, 48);
    EXPECT_TRUE(screen.HasSoundGaps());
    EXPECT_EQ(*screen.At(picture.width, 0), Screen::kUntouched);
}

TEST(CInterface, NothingIsDoneWithNothing) {
    const Context context = NewContext();
    const Image image = Opened(context, Sample("ct.dcm"));
    quorvex_image* opened = nullptr;
    quorvex_view* view = nullptr;
    double number = 0.0;
    for (const quorvex_result result :
         {quorvex_context_new(nullptr), quorvex_context_set_rules(nullptr, 0),
          quorvex_open_file(nullptr, "x", &opened),
          quorvex_open_file(context.get(), nullptr, &opened),
          quorvex_open_memory(context.get(), nullptr, 8, &opened),
          quorvex_open_source(context.get(), nullptr, &opened),
          quorvex_image_copy(nullptr, &opened), quorvex_image_facts(image.get(), nullptr),
          quorvex_read_frame(image.get(), 0, nullptr, nullptr),
          quorvex_read_values(nullptr, 0, nullptr, 0), quorvex_view_new(nullptr, 1, 1, &view),
          quorvex_view_show(nullptr, image.get(), 0), quorvex_view_render(nullptr, nullptr),
          quorvex_view_get_zoom(nullptr, &number), quorvex_convert(image.get(), nullptr, "x"),
          quorvex_make(image.get(), nullptr, nullptr, 0, "x"),
          quorvex_write_state(nullptr, nullptr, nullptr, 0, "x")})
        EXPECT_EQ(result, QUORVEX_ERROR_NULL_SOURCE);
    quorvex_image_free(nullptr);
    quorvex_view_free(nullptr);
    quorvex_context_free(nullptr);
    EXPECT_STREQ(quorvex_result_name(QUORVEX_ERROR_CANCELLED), "QVM_ERROR_CANCELLED");
    EXPECT_EQ(quorvex_open_file(context.get(), "/no/such/file", &opened),
              QUORVEX_ERROR_FAILED_TO_READ_FILE);
}

}  // namespace
}  // namespace quorvex::test
