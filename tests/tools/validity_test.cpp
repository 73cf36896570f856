// All that the command makes, as it is, before independent checkers.
#include "tests/support/checkers.h"
#include "tests/tools/run_command.h"

#include <gtest/gtest.h>
#include <png.h>

namespace quorvex::test {
namespace {

std::string WritePng(const std::string& path, png_uint_32 format) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = 16;
    image.height = 12;
    image.format = format;
    std::vector<unsigned char> samples(PNG_IMAGE_SIZE(image));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<unsigned char>(i * 37 % 256);
    EXPECT_NE(png_image_write_to_file(&image, path.c_str(), 0, samples.data(), 0, nullptr), 0);
    return path;
}

class Validity : public testing::Test {
protected:
    void SetUp() override {
        if (!HasTool("dciodvfy")) GTEST_SKIP() << "dicom3tools is not there";
    }
};

TEST_F(Validity, OfCapturesOfEveryKindInEveryForm) {
    const ScratchFolder folder;
    const auto grey = WritePng(folder.Path("grey.png"), PNG_FORMAT_GRAY);
    const auto deep = WritePng(folder.Path("deep.png"), PNG_FORMAT_LINEAR_Y);
    const auto colour = WritePng(folder.Path("colour.png"), PNG_FORMAT_RGB);
    const auto output = folder.Path("out.dcm");
    const Arguments bytes[] = {{grey}, {colour}, {grey, grey}, {colour, colour}, {grey, colour}};
    const auto deepColour = WritePng(folder.Path("deep_colour.png"), PNG_FORMAT_LINEAR_RGB);
    const Arguments words[] = {{deep}, {deep, deep}, {deepColour}};
    for (const auto& source : {kSlice, kRadiograph, kLoop, kState}) {
        for (const auto* target :
             {"explicit", "implicit", "rle", "jpeg", "jpeg-lossless", "j2k", "j2k-lossless"}) {
            const auto check = [&](const Arguments& pages) {
                OutputOf(Arguments{"capture", source, "-o", output, "--to", target} + pages);
                EXPECT_EQ(ErrorsIn(output), "") << source << target << pages.size() << pages[0];
            };
            for (const auto& pages : bytes) check(pages);
            if (target == std::string("jpeg")) continue;
            for (const auto& pages : words) check(pages);
        }
    }
}

TEST_F(Validity, OfStatesWithEveryModule) {
    const ScratchFolder folder;
    const auto state = folder.Path("state.dcm");
    const Arguments wishes[] = {
        {},
        {"--invert", "--window", "40.5,127.5"},
        {"--rotate", "90", "--flip", "--area", "10,20,100,120"},
        {"--shutter", "circle:100,100,90", "--text", "5,5,note", "--polyline", "1,1;9,9"},
        {"--shutter", "polygon:10,20;10,40;30,30"},
        {"--shutter", "rect:10,20,100,120", "--rotate", "180"},
    };
    for (const auto& image : {kSlice, kRadiograph}) {
        for (const auto& wish : wishes) {
            OutputOf(Arguments{"state", image, "-o", state} + wish);
            EXPECT_EQ(ErrorsIn(state), "") << image << testing::PrintToString(wish);
            EXPECT_EQ(ComplaintsAboutState(state), "") << image << testing::PrintToString(wish);
        }
    }
}

TEST_F(Validity, OfSamplesAndTheirConversions) {
    const ScratchFolder folder;
    const auto samples = folder.Path("samples");
    OutputOf({"phantom", "--small", "-o", samples});
    const auto output = folder.Path("out.dcm");
    for (const auto& file : FilesBelow(samples)) {
        const std::string path = samples + "/" + file;
        EXPECT_EQ(ErrorsIn(path), "") << file;
        if (file == "ct_state.dcm") {
            EXPECT_EQ(ComplaintsAboutState(path), "");
            continue;
        }
        for (const auto* target : {"implicit", "rle", "jpeg-lossless", "j2k", "j2k-lossless"}) {
            OutputOf({"convert", path, "-o", output, "--to", target});
            EXPECT_EQ(ErrorsIn(output), "") << file << " as " << target;
        }
    }
}

}  // namespace
}  // namespace quorvex::test
