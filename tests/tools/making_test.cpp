// New objects from pictures, and presentation states.
#include "run_command.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <png.h>

namespace quorvex::test {
namespace {

const std::string kSamples = QUORVEX_SOURCE_DIR "/samples/";
const std::string kSlice = kSamples + "ct.dcm";
const std::string kRadiograph = kSamples + "radiograph.dcm";
const std::string kLoop = kSamples + "ultrasound_loop.dcm";
const std::string kState = kSamples + "ct_state.dcm";

// A picture whose samples are told by their places; `format` and depth as libpng has them.
std::string WritePicture(const std::string& path, png_uint_32 format, png_uint_32 width = 6) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = 4;
    image.format = format;
    std::vector<unsigned char> samples(PNG_IMAGE_SIZE(image));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<unsigned char>(
            (format & PNG_FORMAT_FLAG_COLORMAP) != 0 ? i % 3 : i * 37 % 256);
    const unsigned char palette[] = {255, 0, 0, 0, 255, 0, 1, 2, 3};
    image.colormap_entries = 3;
    EXPECT_NE(png_image_write_to_file(&image, path.c_str(), 0, samples.data(), 0, palette), 0);
    return path;
}

std::string Samples(std::size_t count) {
    std::string samples;
    for (std::size_t i = 0; i < count; ++i) samples += static_cast<char>(i * 37 % 256);
    return samples;
}

std::string FramesOf(const std::string& path) {
    return RunCommand({"frame", path, "--all", "-o", "-"}).output;
}

std::string InfoOf(const std::string& path) {
    return RunCommand({"info", path}).output;
}

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(CaptureCommand, PutsPicturesUnderThePatient) {
    const ScratchFolder folder;
    const auto grey = WritePicture(folder.Path("grey.png"), PNG_FORMAT_GRAY);
    const auto colour = WritePicture(folder.Path("colour.png"), PNG_FORMAT_RGB);
    const auto output = folder.Path("out.dcm");
    for (const auto* target : {"explicit", "implicit", "jpeg-lossless", "j2k-lossless"}) {
        ASSERT_EQ(RunCommand({"capture", kSlice, colour, "-o", output, "--to", target}).status, 0);
        EXPECT_EQ(FramesOf(output), Samples(6 * 4 * 3)) << target;
    }
    const auto info = InfoOf(output);
    for (const auto* part : {"[Phantom^Quorvex]", "[QX0001]",
                             "SOPClassUID                          [1.2.840.10008.5.1.4.1.1.7]",
                             "MediaStorageSOPClassUID              [1.2.840.10008.5.1.4.1.1.7]"})
        EXPECT_TRUE(Has(info, part)) << part;
    for (const auto* part : {"RescaleSlope", "ImagePositionPatient", "PixelPaddingValue"})
        EXPECT_FALSE(Has(info, part)) << part;

    ASSERT_EQ(RunCommand({"capture", kSlice, grey, grey, "-o", output}).status, 0);
    EXPECT_EQ(FramesOf(output), Samples(6 * 4) + Samples(6 * 4));
    EXPECT_TRUE(Has(InfoOf(output), "6 x 4, 2 frames"));
    ASSERT_EQ(RunCommand({"capture", kSlice, grey, colour, "-o", output}).status, 0);
    EXPECT_EQ(FramesOf(output).substr(3, 3), std::string(3, 37)) << "grey among colours";
    EXPECT_EQ(FramesOf(output).substr(6 * 4 * 3), Samples(6 * 4 * 3));
}

TEST(CaptureCommand, ExpandsPalettesAndReducesDeepSamples) {
    const ScratchFolder folder;
    const auto output = folder.Path("out.dcm");
    const auto palette = WritePicture(folder.Path("palette.png"), PNG_FORMAT_RGB_COLORMAP);
    ASSERT_EQ(RunCommand({"capture", kSlice, palette, "-o", output}).status, 0);
    EXPECT_EQ(FramesOf(output).substr(0, 9), std::string("\xFF\0\0\0\xFF\0\1\2\3", 9));
    const auto deep = WritePicture(folder.Path("deep.png"), PNG_FORMAT_LINEAR_Y);
    ASSERT_EQ(RunCommand({"capture", kSlice, deep, "-o", output}).status, 0);
    EXPECT_TRUE(Has(InfoOf(output), "8 bits in 8, unsigned"));
}

TEST(CaptureCommand, RefusesWhatDoesNotFit) {
    const ScratchFolder folder;
    const auto picture = WritePicture(folder.Path("a.png"), PNG_FORMAT_GRAY);
    const auto wider = WritePicture(folder.Path("b.png"), PNG_FORMAT_GRAY, 7);
    const auto torn = folder.Write("torn.png", ReadAll(picture).substr(0, 40));
    const auto anonymous =
        folder.Write("none.dcm", Part10("1.2.840.10008.1.2.1", Element(0x00100010, "PN", "A ")));
    const auto output = folder.Path("out.dcm");
    const std::vector<std::vector<std::string>> bad = {
        {kSlice, picture, wider}, {kSlice, torn},     {kSlice, kSlice},
        {anonymous, picture},     {picture, picture}, {kSlice, picture, "--to", "jpeg12"}};
    for (auto arguments : bad) {
        arguments.insert(arguments.begin(), "capture");
        arguments.insert(arguments.end(), {"-o", output});
        const auto result = RunCommand(arguments);
        EXPECT_EQ(result.status, 1) << testing::PrintToString(arguments);
        EXPECT_EQ(std::ranges::count(result.complaints, '\n'), 1) << result.complaints;
        EXPECT_FALSE(std::filesystem::exists(output));
    }
    EXPECT_EQ(folder.Names().size(), 4U);
    EXPECT_EQ(RunCommand({"capture", kSlice, picture, "-o", "/dev/full"}).status, 3);
    EXPECT_EQ(RunCommand({"capture", kSlice, picture, "-o", folder.Path(".")}).status, 2);
}

TEST(StateCommand, IsShownAsItsOptionsSay) {
    struct Case {
        std::vector<std::string> wishes;
        std::vector<std::string> view;  // the same by hand
    };
    const Case cases[] = {
        {{"--window", "-500,1500"}, {"--window", "-500,1500"}},
        {{"--invert"}, {"--invert"}},
        {{"--rotate", "90"}, {"--rotate", "90"}},
        {{"--flip"}, {"--flip"}},
        {{"--area", "51,101,350,400", "--window", "-500,1500"},
         {"--window", "-500,1500", "--zoom", "1.7066666666666668", "--pan", "95,10"}},
    };
    const ScratchFolder folder;
    const auto state = folder.Path("state.dcm");
    const auto shown = folder.Path("shown.png");
    const auto wanted = folder.Path("wanted.png");
    for (const auto& c : cases) {
        std::vector<std::string> make{"state", kSlice, "-o", state};
        make.insert(make.end(), c.wishes.begin(), c.wishes.end());
        const auto made = RunCommand(make);
        ASSERT_EQ(made.status, 0) << made.complaints;
        ASSERT_EQ(RunCommand({"render", kSlice, "--state", state, "-o", shown}).status, 0);
        std::vector<std::string> view{"render", kSlice, "-o", wanted};
        view.insert(view.end(), c.view.begin(), c.view.end());
        ASSERT_EQ(RunCommand(view).status, 0);
        EXPECT_TRUE(ReadPng(shown).pixels == ReadPng(wanted).pixels) << c.wishes.front();
    }
}

TEST(StateCommand, HoldsWhatWasAskedFor) {
    const ScratchFolder folder;
    const auto state = folder.Path("state.dcm");
    ASSERT_EQ(RunCommand({"state", kRadiograph, "-o", state, "--label", "LEFT HAND", "--text",
                          "10,20.5,Here, or there", "--text", "1,1,again", "--polyline",
                          "1,2;3,4;5,6", "--shutter", "polygon:10,20;10,40;30,30"})
                  .status,
              0);
    const auto info = InfoOf(state);
    for (const auto* part :
         {"1.2.840.10008.5.1.4.1.1.11.1", "[LEFT HAND]", "[Here, or there]", "10\\20.5", "[again]",
          "1\\2\\3\\4\\5\\6", "[POLYGONAL]", "[10\\20\\10\\40\\30\\30\\10\\20]", "[INVERSE]",
          "[SCALE TO FIT]", "480\\586", "[Phantom^Quorvex]"})
        EXPECT_TRUE(Has(info, part)) << part;
}

TEST(StateCommand, PassesTheIndependentCheck) {
    if (std::system("command -v dcmpschk dcmodify > /dev/null") != 0)
        GTEST_SKIP() << "dcmtk is not there";
    const ScratchFolder folder;
    const auto state = folder.Path("state.dcm");
    for (const auto& image : {kSlice, kRadiograph}) {
        ASSERT_EQ(RunCommand({"state", image, "-o", state, "--shutter", "circle:100,100,90",
                              "--text", "5,5,note", "--polyline", "1,1;9,9"})
                      .status,
                  0);
        // Our UIDs may have leading zeros, which the check does not take.
        const auto check = "dcmodify -nb -gin -m 0020,000e=1.2.3 " + state + " && dcmpschk " +
                           state + " 2>&1 | grep -q 'Test passed'";
        EXPECT_EQ(std::system(check.c_str()), 0) << image;
    }
}

TEST(StateCommand, RefusesWhatAStateCannotBeFor) {
    const ScratchFolder folder;
    const auto state = folder.Path("state.dcm");
    for (const std::vector<std::string>& images : std::vector<std::vector<std::string>>{
             {kLoop}, {kState}, {kSlice, kRadiograph}, {folder.Path("none")}}) {
        std::vector<std::string> arguments{"state", "-o", state};
        arguments.insert(arguments.end(), images.begin(), images.end());
        const auto result = RunCommand(arguments);
        EXPECT_EQ(result.status, 1) << images.back();
        EXPECT_EQ(std::ranges::count(result.complaints, '\n'), 1) << result.complaints;
    }
    const char* const wrong[][2] = {{"--label", "small"},        {"--area", "5,5,1,9"},
                                    {"--shutter", "square:1,2"}, {"--shutter", "circle:1,2"},
                                    {"--polyline", "1,1"},       {"--text", "1,1"},
                                    {"--text", "1,nan,text"},    {"--shutter", "polygon:1,2;3,4"}};
    for (const auto& [option, text] : wrong)
        EXPECT_EQ(RunCommand({"state", kSlice, "-o", state, option, text}).status, 2)
            << option << ' ' << text;
    EXPECT_TRUE(folder.Names().empty());
}

}  // namespace
}  // namespace quorvex::test
