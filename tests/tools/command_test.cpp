// What the command makes of good inputs, and of wrong arguments.
#include "run_command.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

const std::string kSamples = QUORVEX_SOURCE_DIR "/samples/";
const std::string kSlice = kSamples + "ct.dcm";
const std::string kRadiograph = kSamples + "radiograph.dcm";
const std::string kLoop = kSamples + "ultrasound_loop.dcm";
const std::string kState = kSamples + "ct_state.dcm";

ReadPicture RenderPicture(std::vector<std::string> arguments) {
    const ScratchFolder folder;
    const auto path = folder.Path("picture.png");
    arguments.insert(arguments.begin(), "render");
    arguments.insert(arguments.end(), {"-o", path});
    const auto result = RunCommand(arguments);
    EXPECT_EQ(result.status, 0) << result.complaints;
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"picture.png"});
    return ReadPng(path);
}

// The samples' Pixel Data is native and their last element.
std::string StoredPixels(const std::string& path, std::size_t bytes) {
    const auto file = ReadAll(path);
    return file.substr(file.size() - bytes);
}

int StoredSample(const std::string& pixels, int index) {
    const auto at = [&](int i) {
        return static_cast<unsigned char>(pixels[static_cast<std::size_t>(i)]);
    };
    return at(2 * index) + 256 * at(2 * index + 1);
}

TEST(FrameCommand, GivesTheStoredPixels) {
    const ScratchFolder folder;
    const auto output = folder.Path("frame.raw");
    EXPECT_EQ(RunCommand({"frame", kSlice, "-o", output}).status, 0);
    EXPECT_TRUE(ReadAll(output) == StoredPixels(kSlice, 512 * 512 * 2));
    EXPECT_EQ(RunCommand({"frame", kLoop, "--all", "-o", output}).status, 0);
    const auto stored = StoredPixels(kLoop, 4 * 256 * 192 * 3);
    EXPECT_TRUE(ReadAll(output) == stored);
    const auto second = RunCommand({"frame", kLoop, "--frame", "1", "-o", "-"});
    EXPECT_TRUE(second.output == stored.substr(256 * 192 * 3, 256 * 192 * 3));
}

TEST(RenderCommand, ShowsTheWindow) {
    constexpr int kCentre = 40;
    constexpr int kWidth = 400;
    const auto picture = RenderPicture({kSlice});
    ASSERT_EQ(picture.width, 512);
    ASSERT_EQ(picture.height, 512);
    EXPECT_EQ(picture.channels, 1);
    EXPECT_TRUE(picture.pixels == RenderPicture({kSlice, "--window", "40,400"}).pixels);
    const auto stored = StoredPixels(kSlice, 512 * 512 * 2);
    for (int i = 0; i < 512 * 512; i += 97) {
        const double share =
            (StoredSample(stored, i) - 1024 - (kCentre - 0.5)) / (kWidth - 1) + 0.5;
        EXPECT_NEAR(picture.pixels[static_cast<std::size_t>(i)], std::clamp(share, 0.0, 1.0) * 255,
                    2.0)
            << i;
    }
}

TEST(RenderCommand, Monochrome1ShowsLowValuesWhite) {
    const auto picture = RenderPicture({kRadiograph});
    ASSERT_EQ(picture.width, 480);
    ASSERT_EQ(picture.height, 586);
    EXPECT_LT(picture.At(5, 300), 30);    // open field: much radiation, black
    EXPECT_GT(picture.At(430, 66), 200);  // the lead marker: white
}

TEST(RenderCommand, ColourStaysColour) {
    const auto picture = RenderPicture({kLoop, "--frame", "1"});
    ASSERT_EQ(picture.width, 256);
    ASSERT_EQ(picture.channels, 3);
    const auto stored = StoredPixels(kLoop, 4 * 256 * 192 * 3).substr(256 * 192 * 3, 256 * 192 * 3);
    ASSERT_EQ(picture.pixels.size(), stored.size());
    for (std::size_t i = 0; i < stored.size(); i += 7)
        ASSERT_NEAR(picture.pixels[i], static_cast<unsigned char>(stored[i]), 1) << i;
}

TEST(RenderCommand, TurnsFlipsAndInverts) {
    const auto upright = RenderPicture({kRadiograph});
    const auto turned = RenderPicture({kRadiograph, "--rotate", "90"});
    ASSERT_EQ(turned.width, 586);
    ASSERT_EQ(turned.height, 480);
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
    ASSERT_EQ(picture.width, 800);
    EXPECT_EQ(picture.At(50, 300), 0);  // beside the fitted image
    EXPECT_EQ(picture.At(400, 300), 255);
    const auto panned = RenderPicture(
        {kSlice, "--view", "800x600", "--window", "-1000,1", "--zoom", "0.5", "--pan", "-200,100"});
    EXPECT_EQ(panned.At(200, 400), 255);
    EXPECT_EQ(panned.At(400, 300), 0);
    const auto result = RenderPicture({kSlice, "--view", "800x600", "--zoom", "0.5", "--result"});
    EXPECT_EQ(result.width, 256);
    EXPECT_EQ(result.height, 256);
}

TEST(RenderCommand, AppliesAState) {
    // Displayed area (51, 101) to (350, 400): 300 pixels fill the view, and the centre of
    // the area, 56 pixels left of the image's and 6 above it, comes to the centre of the view.
    const auto picture = RenderPicture({kSlice, "--state", kState});
    const auto byHand = RenderPicture(
        {kSlice, "--window", "-500,1500", "--zoom", "1.7066666666666668", "--pan", "95,10"});
    EXPECT_TRUE(picture.pixels == byHand.pixels);
}

// The circle of radius 14 around (123, 289), seen as above: 24 pixels around (124, 322).
TEST(RenderCommand, DrawsTheAnnotationsOfAState) {
    const auto plain = RenderPicture({kSlice, "--state", kState});
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

TEST(RenderCommand, RefusesAStateForAnotherImage) {
    const ScratchFolder folder;
    const auto result =
        RunCommand({"render", kRadiograph, "--state", kState, "-o", folder.Path("out.png")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(std::ranges::count(result.complaints, '\n'), 1);
    EXPECT_TRUE(folder.Names().empty());
}

TEST(InfoCommand, ShowsElementsAndSummary) {
    const auto result = RunCommand({"info", kSlice, kState});
    EXPECT_EQ(result.status, 0);
    for (const auto* part :
         {"512 x 512, 1 frame", "12 bits in 16, unsigned", "MONOCHROME2", "centre 40, width 400",
          "value x 1 + -1024", "Explicit VR Little Endian", "(0010,0010) PN PatientName",
          "[Phantom^Quorvex]", "[Nodule, 12 mm]", "    item 1\n",
          "Nodule, 12 mm, anchorUnits PIXEL",
          "CIRCLE, units PIXEL, points 2, filled N, data 123 289 123 303"})
        EXPECT_NE(result.output.find(part), std::string::npos) << part;
    EXPECT_TRUE(result.complaints.empty());
}

TEST(InfoCommand, NamesADoublePreamble) {
    const ScratchFolder folder;
    auto bytes = ReadAll(kState);
    bytes.replace(0, 2, "MZ");
    const auto result = RunCommand({"info", folder.Write("program.dcm", bytes)});
    EXPECT_NE(result.output.find("PE program"), std::string::npos);
}

// A strict reader of JSON, so that nothing of ours judges itself.
TEST(InfoCommand, GivesValidJsonWhateverTheBytes) {
    const ScratchFolder folder;
    std::string evil;
    for (int c = 0; c < 256; ++c) evil += static_cast<char>(c);
    const auto item = Number16(0xFFFE) + Number16(0xE000);
    const auto emptyItem = item + Number32(0);
    const auto named = Element(0x00100010, "PN", evil);
    const auto fullItem = item + Number32(static_cast<std::uint32_t>(named.size())) + named;
    const auto path = folder.Write(
        "evil.dcm", Part10("1.2.840.10008.1.2.1",
                           Element(0x00080005, "CS", "ISO_IR 100") +
                               Element(0x00081140, "SQ",
                                       emptyItem + fullItem + emptyItem + fullItem + emptyItem) +
                               Element(0x00090010, "LO", evil) + Element(0x00091001, "FD", evil) +
                               Element(0x00091002, "UN", evil) + Element(0x00091003, "AT", evil)));
    const auto shown = RunCommand({"info", path, kState, folder.Path("missing"), "--json"});
    EXPECT_EQ(shown.status, 1);
    EXPECT_EQ(std::ranges::count(shown.output, '\n'), 3);
    const auto json = folder.Write("shown.json", shown.output);
    const auto check =
        "python3 -c 'import json, sys\n"
        "read = [json.loads(l) for l in open(sys.argv[1], encoding=\"utf-8\")]\n"
        "items = [e for e in read[0][\"elements\"] if e[\"tag\"] == \"00081140\"]\n"
        "assert [len(i) for i in items[0][\"items\"]] == [0, 1, 0, 1, 0]\n"
        "assert read[2][\"error\"][\"code\"] == 10' " +
        json;
    EXPECT_EQ(std::system(check.c_str()), 0);
}

TEST(Usage, WrongArgumentsAnswerTwo) {
    const ScratchFolder folder;
    const std::vector<std::vector<std::string>> wrong = {
        {},
        {"paint"},
        {"info"},
        {"frame", kSlice},
        {"render", kSlice},
        {"frame", kSlice, "--frame", "one", "-o", folder.Path("out")},
        {"frame", kSlice, "--frame", "0", "--all", "-o", folder.Path("out")},
        {"frame", kSlice, "-o", folder.Path(".")},
        {"render", kSlice, "--view", "0x100", "-o", folder.Path("out")},
        {"render", kSlice, "--view", "99999x99999", "-o", folder.Path("out")},
        {"render", kSlice, "--rotate", "45", "-o", folder.Path("out")},
        {"render", kSlice, "--zoom", "nan", "-o", folder.Path("out")},
        {"render", kSlice, "--window", "40", "-o", folder.Path("out")},
    };
    for (const auto& arguments : wrong) {
        const auto result = RunCommand(arguments);
        EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(std::ranges::count(result.complaints, '\n'), 1) << result.complaints;
    }
    EXPECT_TRUE(folder.Names().empty());
    EXPECT_EQ(RunCommand({"--help"}).status, 0);
    EXPECT_EQ(RunCommand({"render", "--help"}).status, 0);
}

TEST(Usage, OutputsThatCannotBeWrittenAnswerThree) {
    EXPECT_EQ(RunCommand({"render", kSlice, "-o", "/nowhere/at/all.png"}).status, 3);
    EXPECT_EQ(RunCommand({"frame", kSlice, "-o", "/dev/full"}).status, 3);
}

TEST(Phantom, MakesTheSamplesAgain) {
    const ScratchFolder folder;
    ASSERT_EQ(RunCommand({"phantom", "--small", "-o", folder.Path("samples")}).status, 0);
    for (const auto* name : {"ct.dcm", "ct_state.dcm", "radiograph.dcm", "ultrasound_loop.dcm"})
        EXPECT_TRUE(std::filesystem::exists(folder.Path(std::string("samples/") + name))) << name;
}

}  // namespace
}  // namespace quorvex::test
