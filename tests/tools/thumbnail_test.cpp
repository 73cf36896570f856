// Small pictures, and what the command does with many inputs.
#include "run_command.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

const std::string kSamples = QUORVEX_SOURCE_DIR "/samples/";
const std::string kSlice = kSamples + "ct.dcm";
const std::string kRadiograph = kSamples + "radiograph.dcm";
const std::string kLoop = kSamples + "ultrasound_loop.dcm";
const std::string kState = kSamples + "ct_state.dcm";
const std::string kExplicit = "1.2.840.10008.1.2.1";

// Two by two indices of a palette of four colours: black, red, green, blue; or the same in segments.
std::string PaletteImage(bool isSegmented) {
    constexpr std::uint32_t kSegmented = 0x00000120;
    std::string pixelGroup =
        Element(0x00280002, "US", Number16(1)) + Element(0x00280004, "CS", "PALETTE COLOR ") +
        Element(0x00280010, "US", Number16(2)) + Element(0x00280011, "US", Number16(2)) +
        Element(0x00280100, "US", Number16(8)) + Element(0x00280101, "US", Number16(8)) +
        Element(0x00280102, "US", Number16(7)) + Element(0x00280103, "US", Number16(0));
    const auto descriptor = Number16(4) + Number16(0) + Number16(16);
    for (std::uint32_t tag = 0x00281101; tag <= 0x00281103; ++tag)
        pixelGroup += Element(tag, "US", descriptor);
    for (std::uint32_t colour = 0; colour < 3; ++colour) {
        std::string entries;
        for (std::uint32_t i = 0; i < 4; ++i) entries += Number16(i == colour + 1 ? 0xFFFF : 0);
        if (isSegmented) entries = Number16(0) + Number16(4) + entries;
        pixelGroup +=
            Element(0x00281201 + colour + (isSegmented ? kSegmented - 0x100 : 0), "OW", entries);
    }
    return Part10(kExplicit, pixelGroup + Element(0x7FE00010, "OB", {"\0\1\2\3", 4}));
}

ReadPicture Thumbnail(std::vector<std::string> arguments) {
    const ScratchFolder folder;
    const auto path = folder.Path("small.png");
    arguments.insert(arguments.begin(), "thumbnail");
    arguments.insert(arguments.end(), {"-o", path});
    const auto result = RunCommand(arguments);
    EXPECT_EQ(result.status, 0) << result.complaints;
    return ReadPng(path);
}

TEST(ThumbnailCommand, KeepsTheShapeOfTheImage) {
    struct Case {
        std::string file;
        const char* size;
        int width;
        int height;
        int channels;
    };
    const Case cases[] = {
        {kSlice, "128x128", 128, 128, 1},      {kSlice, "300x50", 52, 50, 1},
        {kRadiograph, "128x128", 104, 128, 1}, {kLoop, "100x100", 100, 75, 3},
        {kLoop, "101x200", 100, 76, 3},        {kRadiograph, "4x4", 4, 4, 1},
    };
    for (const auto& c : cases) {
        const auto picture = Thumbnail({c.file, "--size", c.size});
        EXPECT_EQ(picture.width, c.width) << c.file << ' ' << c.size;
        EXPECT_EQ(picture.height, c.height) << c.file << ' ' << c.size;
        EXPECT_EQ(picture.channels, c.channels) << c.file << ' ' << c.size;
    }
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
    EXPECT_NE(result.complaints.find("another input has the output"), std::string::npos);
    for (const auto* name : {"/ct.jpg", "/ultrasound_loop.jpg"})
        EXPECT_TRUE(ReadAll(output + name).starts_with("\xFF\xD8\xFF")) << name;
    EXPECT_EQ(std::ranges::distance(std::filesystem::directory_iterator(output)), 2);
}

TEST(ThumbnailCommand, RefusesWhatMakesNoSense) {
    const ScratchFolder folder;
    const auto input = folder.Write("a.dcm", ReadAll(kSlice));
    const auto output = folder.Path("out.png");
    EXPECT_EQ(RunCommand({"thumbnail", kSlice, "-o", output, "--format", "gif"}).status, 2);
    EXPECT_EQ(RunCommand({"thumbnail", kSlice, "-o", output, "--size", "3x9"}).status, 2);
    EXPECT_EQ(RunCommand({"thumbnail", kSlice, kLoop, "-o", input}).status, 2);
    EXPECT_EQ(RunCommand({"thumbnail", input, "-o", input}).status, 1);
    EXPECT_EQ(RunCommand({"thumbnail", kSlice, "-o", output, "--frame", "1"}).status, 1);
    EXPECT_EQ(ReadAll(input), ReadAll(kSlice));
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"a.dcm"});
}

TEST(PaletteImage, IsShownInItsColours) {
    constexpr int kBrightest = 254;  // 65535 * 255 / 65536, cut
    const ScratchFolder folder;
    for (const bool isSegmented : {false, true}) {
        const auto path = folder.Write("palette.dcm", PaletteImage(isSegmented));
        const auto picture = folder.Path("picture.png");
        ASSERT_EQ(RunCommand({"render", path, "-o", picture, "--view", "80x80"}).status, 0);
        const auto shown = ReadPng(picture);
        ASSERT_EQ(shown.channels, 3) << isSegmented;
        const auto colourAt = [&](int x, int y) {
            const auto* pixel = &shown.pixels.at(static_cast<std::size_t>((y * 80 + x) * 3));
            return std::vector<int>(pixel, pixel + 3);
        };
        EXPECT_EQ(colourAt(5, 5), (std::vector{0, 0, 0}));
        EXPECT_EQ(colourAt(75, 5), (std::vector{kBrightest, 0, 0}));
        EXPECT_EQ(colourAt(5, 75), (std::vector{0, kBrightest, 0}));
        EXPECT_EQ(colourAt(75, 75), (std::vector{0, 0, kBrightest}));
        const auto info = RunCommand({"info", path}).output;
        EXPECT_NE(info.find("palette red     4 entries of 16 bits from 0"), std::string::npos);
        EXPECT_EQ(info.find("in segments") != std::string::npos, isSegmented);
    }
}

}  // namespace
}  // namespace quorvex::test
