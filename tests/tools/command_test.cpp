// What the command makes of good inputs, and of wrong arguments.
#include "tests/support/dicom_builder.h"
#include "tests/support/temporary_file.h"
#include "tests/tools/run_command.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <tuple>

namespace quorvex::test {
namespace {

ReadPicture RenderPicture(const Arguments& arguments) {
    return PictureBy(Arguments{"render"} + arguments);
}

constexpr std::size_t kLoopFrame = std::size_t{256} * 192 * 3;  // bytes

// The samples' Pixel Data is native and their last element.
std::string StoredPixels(const std::string& path, std::size_t bytes) {
    const auto file = ReadAll(path);
    return file.substr(file.size() - bytes);
}

TEST(FrameCommand, GivesTheStoredPixels) {
    const ScratchFolder folder;
    const auto output = folder.Path("frame.raw");
    OutputOf({"frame", kSlice, "-o", output});
    EXPECT_TRUE(ReadAll(output) == StoredPixels(kSlice, 512 * 512 * 2));
    OutputOf({"frame", kLoop, "--all", "-o", output});
    const auto stored = StoredPixels(kLoop, 4 * kLoopFrame);
    EXPECT_TRUE(ReadAll(output) == stored);
    EXPECT_TRUE(OutputOf({"frame", kLoop, "--frame", "1", "-o", "-"}) ==
                stored.substr(kLoopFrame, kLoopFrame));
}

// The expected header is written by hand, by the description of the format.
TEST(FrameCommand, WritesWhatTheExtensionSays) {
    const ScratchFolder folder;
    const auto raw = OutputOf({"frame", kLoop, "--all", "-o", "-"});
    EXPECT_TRUE(Has(OutputOf({"frame", kLoop, "--all", "-o", folder.Path("loop.npy")}),
                    "loop.npy: 4 frames of 192 rows x 256 columns x 3 samples, uint8\n"));
    std::string dictionary =
        "{'descr': '|u1', 'fortran_order': False, 'shape': (4, 192, 256, 3), }";
    dictionary.resize(117, ' ');
    EXPECT_TRUE(ReadAll(folder.Path("loop.npy")) ==
                std::string("\x93NUMPY\x01\x00\x76\x00", 10) + dictionary + '\n' + raw);
    OutputOf({"frame", kLoop, "--all", "-o", folder.Path("loop.png")});
    for (int i = 0; i < 4; ++i) {
        const auto picture = ReadPng(folder.Path("loop-000" + std::to_string(i + 1) + ".png"));
        const auto frame = raw.substr(static_cast<std::size_t>(i) * kLoopFrame, kLoopFrame);
        EXPECT_TRUE(std::equal(frame.begin(), frame.end(), picture.pixels.begin(),
                               [](char a, unsigned char b) { return a == static_cast<char>(b); }));
    }
    OutputOf({"frame", kSlice, "-o", folder.Path("slice.png")});
    const auto header = ReadAll(folder.Path("slice.png")).substr(16, 10);
    EXPECT_EQ(header, std::string("\0\0\2\0\0\0\2\0\x10\0", 10)) << "16 bits, grey";
    EXPECT_EQ(OutputOf({"frame", kSlice, "--describe"}),
              "1 frame of 512 rows x 512 columns x 1 sample, uint16\n");
    ExpectStatus(2, {"frame", kSlice, "--describe", "-o", folder.Path("x")});
    const ImageFacts negative{.rows = 1, .columns = 2, .representation = 1};
    const auto path =
        folder.Write("signed.dcm", NativeFile(kExplicitUid, negative, {1, 0, 0xFF, 0xFF}));
    ExpectStatus(1, {"frame", path, "-o", folder.Path("signed.png")}, "PNG has no room");
    OutputOf({"frame", path, "-o", folder.Path("signed.npy")});
    EXPECT_TRUE(Has(ReadAll(folder.Path("signed.npy")), "'descr': '<i2'"));
}

TEST(FrameCommand, GivesASampleInEachByteAndWarnsOfWhatIsMissing) {
    const ImageFacts bits{.rows = 2, .columns = 5, .bits = 1, .frames = "2"};
    const TemporaryFile packed(NativeFile(kExplicitUid, bits, {0xFF, 0x03, 0x00, 0x00}));
    EXPECT_EQ(OutputOf({"frame", packed.Path(), "--all", "-o", "-"}),
              std::string(10, 1) + std::string(10, 0));
    const ImageFacts bytes{.rows = 1, .columns = 4, .bits = 8, .frames = "2"};
    const TemporaryFile cut(NativeFile(kExplicitUid, bytes, {1, 2, 3, 4, 5, 6}));
    const auto made = RunCommand({"frame", cut.Path(), "--all", "-o", "-"});
    EXPECT_EQ(made.status, 0);
    EXPECT_EQ(made.output, std::string("\1\2\3\4\5\6\0\0", 8));
    EXPECT_TRUE(Has(made.complaints, "warning: frame 1 is only partly there")) << made.complaints;
}

TEST(FrameCommand, WritesTheCodedStreamOfWhatItCannotDecode) {
    const ImageFacts facts{.rows = 1, .columns = 4, .bits = 8, .samples = 3, .frames = "2"};
    const TemporaryFile video(EncapsulatedFile(kVideoUid, facts, {{0, 0, 1, 9}, {}, {7, 8}}));
    ExpectStatus(1, {"frame", video.Path(), "-o", "-"}, "frame --stream writes them");
    EXPECT_EQ(OutputOf({"frame", video.Path(), "--stream", "-o", "-"}),
              std::string("\0\0\1\11\7\10", 6));
    const ScratchFolder folder;
    EXPECT_TRUE(Has(OutputOf({"frame", video.Path(), "--stream", "-o", folder.Path("v.mp4")}),
                    "6 bytes of MPEG-4 AVC/H.264 High Profile"));
    EXPECT_EQ(ReadAll(folder.Path("v.mp4")).size(), 6U);
    ExpectStatus(3, {"frame", video.Path(), "--stream", "-o", folder.Path("none/v.mp4")}, "none");
    ExpectStatus(1, {"frame", kSlice, "--stream", "-o", folder.Path("s")}, "are not coded");
    EXPECT_FALSE(std::filesystem::exists(folder.Path("s")));
    const TemporaryFile empty(EncapsulatedFile(kVideoUid, facts, {}));
    ExpectStatus(1, {"frame", empty.Path(), "--stream", "-o", folder.Path("e")}, "no coded frames");
    ExpectStatus(2, {"frame", video.Path(), "--stream", "--all", "-o", "-"});
}

TEST(RenderCommand, ShowsTheWindowOfTheFile) {
    const auto picture = RenderPicture({kSlice});
    ASSERT_EQ(picture.Shape(), (std::array{512, 512, 1}));
    EXPECT_TRUE(picture.pixels == RenderPicture({kSlice, "--window", "40,400"}).pixels);
    const auto stored = StoredPixels(kSlice, 512 * 512 * 2);
    for (std::size_t i = 0; i < picture.pixels.size(); i += 97) {
        const auto at = [&](std::size_t k) { return static_cast<unsigned char>(stored[k]); };
        const double share = (at(2 * i) + 256 * at(2 * i + 1) - 1024 - 39.5) / 399 + 0.5;
        EXPECT_NEAR(picture.pixels[i], std::clamp(share, 0.0, 1.0) * 255, 2.0) << i;
    }
}

TEST(RenderCommand, Monochrome1ShowsLowValuesWhiteAndColourStaysColour) {
    const auto picture = RenderPicture({kRadiograph});
    ASSERT_EQ(picture.Shape(), (std::array{480, 586, 1}));
    EXPECT_LT(picture.At(5, 300), 30);    // open field: much radiation, black
    EXPECT_GT(picture.At(430, 66), 200);  // the lead marker: white
    const auto colour = RenderPicture({kLoop, "--frame", "1"});
    ASSERT_EQ(colour.Shape(), (std::array{256, 192, 3}));
    const auto stored = StoredPixels(kLoop, 4 * kLoopFrame).substr(kLoopFrame, kLoopFrame);
    for (std::size_t i = 0; i < stored.size(); i += 7)
        ASSERT_NEAR(colour.pixels[i], static_cast<unsigned char>(stored[i]), 1) << i;
}

TEST(RenderCommand, ShowsRegions) {
    const auto whole = RenderPicture({kSlice});
    const auto part = RenderPicture({kSlice, "--region", "200,120,50,40", "--focal-plane", "0"});
    ASSERT_EQ(part.Shape(), (std::array{50, 40, 1}));
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 50; ++x) ASSERT_EQ(part.At(x, y), whole.At(200 + x, 120 + y));
    const auto loop = RenderPicture({kLoop, "--region", "10,20,30,40", "--focal-plane", "3"});
    EXPECT_EQ(loop.Shape(), (std::array{30, 40, 3}));
    const ScratchFolder folder;
    const Arguments output = {"-o", folder.Path("part.png")};
    const Arguments region = {"--region", "0,0,9,9"};
    ExpectStatus(2, Arguments{"render", kSlice} + region + output + Arguments{"--level", "1"},
                 "--level is below 1");
    ExpectStatus(2, Arguments{"render", kSlice, kLoop} + output, "one file");
    ExpectStatus(2, Arguments{"render", kSlice, "--region", "1,2,3"} + output, "X,Y,WIDTH,HEIGHT");
    ExpectStatus(1, Arguments{"render", kSlice, kLoop} + region + output, "no part of the picture");
}

TEST(RenderCommand, TurnsFlipsAndInverts) {
    const auto upright = RenderPicture({kRadiograph});
    const auto turned = RenderPicture({kRadiograph, "--rotate", "90"});
    ASSERT_EQ(turned.Shape(), (std::array{586, 480, 1}));
    const auto flipped = RenderPicture({kRadiograph, "--flip"});
    const auto inverted = RenderPicture({kRadiograph, "--invert"});
    for (int y = 8; y < 570; y += 37) {
        for (int x = 0; x < 480; x += 31) {
            EXPECT_EQ(flipped.At(479 - x, y), upright.At(x, y));
            EXPECT_EQ(inverted.At(x, y), 255 - upright.At(x, y));
        }
    }
    EXPECT_TRUE(turned.pixels == RenderPicture({kRadiograph, "--rotate", "-270"}).pixels);
    // Clockwise: the marker at the top right of the upright image goes to the bottom right.
    EXPECT_GT(turned.At(585 - 66, 430), 200);
}

TEST(RenderCommand, LaysTheImageIntoTheView) {
    const auto picture = RenderPicture({kSlice, "--view", "800x600", "--window", "-1000,1"});
    ASSERT_EQ(picture.Shape(), (std::array{800, 600, 1}));
    EXPECT_EQ(picture.At(50, 300), 0);  // beside the fitted image
    EXPECT_EQ(picture.At(400, 300), 255);
    const auto panned = RenderPicture(
        {kSlice, "--view", "800x600", "--window", "-1000,1", "--zoom", "0.5", "--pan", "-200,100"});
    EXPECT_EQ(panned.At(200, 400), 255);
    EXPECT_EQ(panned.At(400, 300), 0);
    const auto result = RenderPicture({kSlice, "--view", "800x600", "--zoom", "0.5", "--result"});
    EXPECT_EQ(result.Shape(), (std::array{256, 256, 1}));
}

// The displayed area (51, 101) to (350, 400) fills the view, and the centre of the area, 56 pixels
// left of the image's and 6 above it, comes to the centre of the view; so the circle of radius 14
// around (123, 289) is seen as 24 pixels around (124, 322).
TEST(RenderCommand, AppliesAStateAndDrawsItsAnnotations) {
    const auto plain = RenderPicture({kSlice, "--state", kState});
    EXPECT_TRUE(plain.pixels == RenderPicture({kSlice, "--window", "-500,1500", "--zoom",
                                               "1.7066666666666668", "--pan", "96,10"})
                                    .pixels);
    const auto drawn = RenderPicture({kSlice, "--state", kState, "--annotations"});
    EXPECT_EQ(drawn.channels, plain.channels);
    if (drawn.pixels == plain.pixels) GTEST_SKIP() << "built without the drawing library";
    constexpr std::pair<int, int> kOnCircle[] = {{124, 298}, {124, 346}, {100, 322}, {148, 322}};
    for (const auto& [x, y] : kOnCircle) {
        int brightest = 0;
        for (int i = 0; i < 25; ++i) {
            brightest = std::max(brightest, drawn.At(x - 2 + i % 5, y - 2 + i / 5));
        }
        EXPECT_GT(brightest, 200) << x << "," << y;
    }
    EXPECT_EQ(drawn.At(124, 200), plain.At(124, 200));
}

TEST(RenderCommand, WritesWhatTheExtensionSays) {
    const ScratchFolder folder;
    for (const auto* name : {"a.jpg", "a.JPEG"}) {
        OutputOf({"render", kLoop, "-o", folder.Path(name)});
        EXPECT_TRUE(ReadAll(folder.Path(name)).starts_with("\xFF\xD8\xFF")) << name;
    }
    OutputOf({"thumbnail", kLoop, "-o", folder.Path("b.jpg")});
    EXPECT_TRUE(ReadAll(folder.Path("b.jpg")).starts_with("\xFF\xD8\xFF"));
    ExpectStatus(2, {"render", kLoop, "-o", folder.Path("c.gif")}, "name ends in .png");
    ExpectStatus(2, {"thumbnail", kLoop, "-o", folder.Path("c.gif")}, "not the name of a png");
    ExpectStatus(2, {"thumbnail", kLoop, "--format", "png", "-o", folder.Path("c.jpg")});
    EXPECT_EQ(folder.Names().size(), 3U);
}

TEST(RenderCommand, AllFramesAreThoseThatItRendersOneByOne) {
    const ScratchFolder folder;
    OutputOf({"render", kLoop, "--all-frames", "--view", "100x90", "-o", folder.Path("l.png")});
    EXPECT_EQ(folder.Names().size(), 4U);
    for (int i = 0; i < 4; ++i) {
        const auto number = std::to_string(i);
        const auto one = RenderPicture({kLoop, "--frame", number, "--view", "100x90"});
        const auto path = folder.Path("l-000" + std::to_string(i + 1) + ".png");
        EXPECT_TRUE(ReadPng(path).pixels == one.pixels) << path;
    }
    ExpectStatus(2, {"render", kLoop, "--all-frames", "-o", "-"});
}

TEST(RenderCommand, RefusesAStateForAnotherImage) {
    const ScratchFolder folder;
    ExpectStatus(1, {"render", kRadiograph, "--state", kState, "-o", folder.Path("out.png")});
    EXPECT_TRUE(folder.Names().empty());
}

TEST(ThumbnailCommand, KeepsTheShapeOfTheImage) {
    const std::tuple<std::string, const char*, std::array<int, 3>> cases[] = {
        {kSlice, "128x128", {128, 128, 1}},      {kSlice, "300x50", {50, 50, 1}},
        {kRadiograph, "128x128", {105, 128, 1}}, {kLoop, "100x100", {100, 75, 3}},
        {kLoop, "101x200", {101, 76, 3}},        {kRadiograph, "4x4", {3, 4, 1}},
    };
    for (const auto& [file, size, shape] : cases)
        EXPECT_EQ(PictureBy({"thumbnail", file, "--size", size}).Shape(), shape) << file << size;
}

TEST(ThumbnailCommand, GoesOnPastBadFilesAndFillsAFolder) {
    const ScratchFolder folder;
    const auto bad = folder.Write("bad.dcm", "no DICOM");
    const auto again = folder.Write("ct.dcm", ReadAll(kSlice));
    const auto output = folder.Path("small");
    const auto result = RunCommand({"thumbnail", kSlice, bad, kState, again, kLoop, "-o", output,
                                    "--format", "jpeg", "--data-range"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(std::ranges::count(result.complaints, '\n'), 3) << result.complaints;
    EXPECT_TRUE(Has(result.complaints, "another input has the output"));
    for (const auto* part : {"2 made, 3 bad in ", "\n  1 x QVM_ERROR_FAILED_TO_READ_FILE (10): ",
                             "\n  1 x its output is that of another input"})
        EXPECT_TRUE(Has(result.output, part)) << result.output;
    for (const auto* name : {"/ct.jpg", "/ultrasound_loop.jpg"})
        EXPECT_TRUE(ReadAll(output + name).starts_with("\xFF\xD8\xFF")) << name;
    EXPECT_EQ(std::ranges::distance(std::filesystem::directory_iterator(output)), 2);
}

TEST(ThumbnailCommand, RefusesWhatMakesNoSense) {
    const ScratchFolder folder;
    const auto input = folder.Write("a.dcm", ReadAll(kSlice));
    const auto output = folder.Path("out.png");
    ExpectStatus(2, {"thumbnail", kSlice, "-o", output, "--format", "gif"});
    ExpectStatus(2, {"thumbnail", kSlice, kLoop, "-o", input});
    ExpectStatus(1, {"thumbnail", input, "-o", input});
    ExpectStatus(1, {"thumbnail", kSlice, "-o", output, "--frame", "1"});
    EXPECT_EQ(ReadAll(input), ReadAll(kSlice));
    EXPECT_EQ(folder.Names(), Arguments{"a.dcm"});
}

TEST(Usage, WrongArgumentsAnswerTwoAndImpossibleOutputsThree) {
    const ScratchFolder folder;
    const Arguments out = {"-o", folder.Path("out")};
    const Arguments wrong[] = {
        {},
        {"paint"},
        {"render", "--vew", "1x1", kSlice, "-o", folder.Path("out")},
        {"info"},
        {"frame", kSlice},
        {"render", kSlice},
        {"frame", kSlice, "-o", folder.Path(".")},
        Arguments{"frame", kSlice, "--frame", "one"} + out,
        Arguments{"frame", kSlice, "--frame", "0", "--all"} + out,
        Arguments{"render", kSlice, "--view", "0x100"} + out,
        Arguments{"render", kSlice, "--view", "99999x99999"} + out,
        Arguments{"render", kSlice, "--rotate", "45"} + out,
        Arguments{"render", kSlice, "--zoom", "nan"} + out,
        Arguments{"render", kSlice, "--window", "40"} + out,
    };
    for (const auto& arguments : wrong) ExpectStatus(2, arguments);
    EXPECT_TRUE(folder.Names().empty());
    ExpectStatus(3, {"render", kSlice, "-o", "/nowhere/at/all.png"});
    OutputOf({"--help"});
    OutputOf({"render", "--help"});
}

TEST(Phantom, MakesTheSamplesAgain) {
    constexpr std::size_t kHeader = 1000;  // bytes ahead of any pixels, which may differ by machine
    const ScratchFolder folder;
    OutputOf({"phantom", "--small", "-o", folder.Path("samples")});
    for (const auto* name : {"ct.dcm", "ct_state.dcm", "radiograph.dcm", "ultrasound_loop.dcm"}) {
        const auto made = ReadAll(folder.Path("samples/") + name);
        const auto kept = ReadAll(kSamples + name);
        EXPECT_EQ(made.size(), kept.size()) << name;
        EXPECT_TRUE(made.substr(0, kHeader) == kept.substr(0, kHeader)) << name;
    }
}

}  // namespace
}  // namespace quorvex::test
