// Small pictures, and what the command does with many inputs.
#include "tests/tools/run_command.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <tuple>

namespace quorvex::test {
namespace {

TEST(ThumbnailCommand, KeepsTheShapeOfTheImage) {
    const std::tuple<std::string, const char*, std::array<int, 3>> cases[] = {
        {kSlice, "128x128", {128, 128, 1}},      {kSlice, "300x50", {52, 50, 1}},
        {kRadiograph, "128x128", {104, 128, 1}}, {kLoop, "100x100", {100, 75, 3}},
        {kLoop, "101x200", {100, 76, 3}},        {kRadiograph, "4x4", {4, 4, 1}},
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
    for (const auto* name : {"/ct.jpg", "/ultrasound_loop.jpg"})
        EXPECT_TRUE(ReadAll(output + name).starts_with("\xFF\xD8\xFF")) << name;
    EXPECT_EQ(std::ranges::distance(std::filesystem::directory_iterator(output)), 2);
}

TEST(ThumbnailCommand, RefusesWhatMakesNoSense) {
    const ScratchFolder folder;
    const auto input = folder.Write("a.dcm", ReadAll(kSlice));
    const auto output = folder.Path("out.png");
    ExpectStatus(2, {"thumbnail", kSlice, "-o", output, "--format", "gif"});
    ExpectStatus(2, {"thumbnail", kSlice, "-o", output, "--size", "3x9"});
    ExpectStatus(2, {"thumbnail", kSlice, kLoop, "-o", input});
    ExpectStatus(1, {"thumbnail", input, "-o", input});
    ExpectStatus(1, {"thumbnail", kSlice, "-o", output, "--frame", "1"});
    EXPECT_EQ(ReadAll(input), ReadAll(kSlice));
    EXPECT_EQ(folder.Names(), Arguments{"a.dcm"});
}

}  // namespace
}  // namespace quorvex::test
