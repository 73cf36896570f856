// The C interface against the classes that stand behind it: objects that it writes.
#include "tests/c/c_host.h"

namespace quorvex::test {
namespace {

quorvex_conversion To(const char* target) {
    quorvex_conversion conversion{};
    conversion.struct_size = sizeof conversion;
    conversion.target = target;
    return conversion;
}

TEST(CObjects, ConversionsKeepThePixels) {
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

TEST(CObjects, NewObjectsHoldTheHostsFrames) {
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

TEST(CObjects, AStateShowsWhatWasSeen) {
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

}  // namespace
}  // namespace quorvex::test
