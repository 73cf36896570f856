// The C interface against the classes that stand behind it: images, frames and views.
#include "tests/c/c_host.h"

namespace quorvex::test {
namespace {

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
        if (y + 1 < static_cast<std::size_t>(facts.rows)) {
            ASSERT_EQ(apart[y * stride + row], 0xA5);
        }
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
