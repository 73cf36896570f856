// Files of many frames through `convert`, whose frames go to all threads.
#include "tests/tools/run_command.h"
#include "tests/tools/small_image.h"

#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

constexpr unsigned kFrames = 9;

ImageFacts LoopFacts() {
    ImageFacts facts = SmallFacts(16, 12);
    facts.frames = "9";
    return facts;
}

Bytes Loop() {
    DicomBuilder pixels;
    for (unsigned i = 0; i < kFrames * 256; ++i) pixels.Number(i * 37 % 4096, 2);
    return NativeFile(kExplicitUid, LoopFacts(), pixels.Bytes());
}

TEST(StreamedConversion, GivesTheSameBytesByAnyNumberOfThreads) {
    const ScratchFolder folder;
    const auto source = folder.Write("loop.dcm", Loop());
    for (const std::string target : {"rle", "jpeg-lossless"}) {
        std::string first;
        for (const std::string jobs : {"1", "2", "5"}) {
            const auto coded = folder.Path(target + jobs);
            const auto plain = folder.Path(target + jobs + ".plain");
            OutputOf({"convert", source, "-o", coded, "--to", target, "--jobs", jobs});
            OutputOf({"convert", coded, "-o", plain, "--to", "explicit", "--jobs", jobs});
            EXPECT_EQ(FramesOf(plain), FramesOf(source));
            if (first.empty()) first = ReadAll(coded);
            EXPECT_EQ(ReadAll(coded), first) << target << ' ' << jobs;
        }
    }
}

TEST(StreamedConversion, PlacesNothingWhereOneFrameIsBad) {
    const ScratchFolder folder;
    const auto source = folder.Write("loop.dcm", Loop());
    const auto coded = folder.Path("coded.dcm");
    OutputOf({"convert", source, "-o", coded, "--to", "jpeg-lossless"});
    std::string bytes = ReadAll(coded);
    const auto last = bytes.rfind("\xFF\xD8\xFF");
    ASSERT_NE(last, std::string::npos);
    bytes.replace(last + 2, 80, 80, '\0');
    const auto bad = folder.Write("bad.dcm", bytes);
    for (const std::string jobs : {"1", "3"}) {
        const auto output = folder.Path("bad_out.dcm");
        ExpectStatus(1, {"convert", bad, "-o", output, "--to", "rle", "--jobs", jobs});
        EXPECT_FALSE(std::filesystem::exists(output));
    }
    EXPECT_EQ(folder.Names().size(), 3U);  // and no work folder
}

TEST(StreamedConversion, KeepsWhatFollowsTheFrames) {
    const ScratchFolder folder;
    auto bytes = Loop();
    const Bytes behind = {0xFC, 0xFF, 0xFC, 0xFF, 'O', 'B', 0, 0, 4, 0, 0, 0, 1, 2, 3, 4};
    bytes.insert(bytes.end(), behind.begin(), behind.end());
    const auto source = folder.Write("loop.dcm", bytes);
    const auto output = folder.Path("out.dcm");
    OutputOf({"convert", source, "-o", output, "--to", "rle", "--jobs", "2"});
    EXPECT_TRUE(ReadAll(output).ends_with(std::string(behind.begin(), behind.end())));
    const Bytes shorter(bytes.begin(), bytes.end() - 2);  // the element behind them is cut
    const auto cut = folder.Write("cut.dcm", shorter);
    ExpectStatus(1, {"convert", cut, "-o", folder.Path("cut_out"), "--to", "rle"}, "ends before");
}

}  // namespace
}  // namespace quorvex::test
