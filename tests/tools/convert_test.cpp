// One file into another transfer syntax: what comes out, and what is refused.
#include "tests/tools/run_command.h"
#include "tests/tools/small_image.h"

#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

std::string Frames(const std::string& path) {
    return OutputOf({"frame", path, "--all", "-o", "-"});
}

std::string InfoOf(const std::string& path) {
    return OutputOf({"info", path});
}

std::string Convert(const std::string& source, const std::string& output,
                    const std::string& target) {
    return OutputOf({"convert", source, "-o", output, "--to", target});
}

TEST(ConvertCommand, LosslessTargetsKeepEveryFrame) {
    const ScratchFolder folder;
    const auto first = folder.Path("first.dcm");
    const auto second = folder.Path("second.dcm");
    for (const auto& source : {kSlice, kRadiograph, kLoop}) {
        const auto frames = Frames(source);
        for (const auto* target : {"implicit", "explicit", "jpeg-lossless", "j2k-lossless"}) {
            Convert(source, first, target);
            EXPECT_TRUE(Frames(first) == frames) << source << ' ' << target;
            Convert(first, second, "explicit");
            EXPECT_TRUE(Frames(second) == frames) << source << ' ' << target << " and back";
        }
    }
}

TEST(ConvertCommand, WritesTheSyntaxThatWasAskedFor) {
    struct Case {
        std::string source;
        const char* target;
        const char* syntax;
    };
    const Case cases[] = {{kSlice, "implicit", "1.2.840.10008.1.2]"},
                          {kSlice, "explicit", "1.2.840.10008.1.2.1]"},
                          {kLoop, "jpeg", "1.2.840.10008.1.2.4.50]"},
                          {kSlice, "jpeg12", "1.2.840.10008.1.2.4.51]"},
                          {kSlice, "jpeg-lossless", "1.2.840.10008.1.2.4.70]"},
                          {kSlice, "j2k", "1.2.840.10008.1.2.4.91]"},
                          {kSlice, "j2k-lossless", "1.2.840.10008.1.2.4.90]"}};
    const ScratchFolder folder;
    const auto output = folder.Path("out.dcm");
    for (const auto& c : cases) {
        EXPECT_TRUE(Has(Convert(c.source, output, c.target), "1 converted")) << c.target;
        EXPECT_TRUE(
            Has(InfoOf(output), std::string("TransferSyntaxUID                    [") + c.syntax))
            << c.target;
        EXPECT_EQ(folder.Names(), Arguments{"out.dcm"});
    }
    EXPECT_TRUE(Convert(kSlice, "-", "j2k-lossless") == ReadAll(output)) << "through a pipe";
}

TEST(ConvertCommand, SaysHowColourIsCoded) {
    const char* const kinds[][2] = {{"jpeg", "[RGB]"},
                                    {"jpeg-lossless", "[RGB]"},
                                    {"j2k", "[YBR_ICT]"},
                                    {"j2k-lossless", "[YBR_RCT]"}};
    const ScratchFolder folder;
    const auto output = folder.Path("out.dcm");
    const auto back = folder.Path("back.dcm");
    for (const auto& [target, photometric] : kinds) {
        Convert(kLoop, output, target);
        EXPECT_TRUE(Has(InfoOf(output), photometric)) << target;
        Convert(output, back, "explicit");
        EXPECT_TRUE(Has(InfoOf(back), "[RGB]")) << target;
    }
}

TEST(ConvertCommand, QualityTradesSizeForError) {
    const ScratchFolder folder;
    const auto fine = folder.Path("fine.dcm");
    const auto coarse = folder.Path("coarse.dcm");
    const char* const qualities[][3] = {
        {"jpeg", "98", "30"}, {"jpeg12", "1", "9"}, {"j2k", "3", "30"}};
    for (const auto& [target, good, bad] : qualities) {
        const auto& source = std::string(target) == "jpeg" ? kLoop : kSlice;
        for (const auto& [output, quality] : {std::pair(fine, good), std::pair(coarse, bad)})
            EXPECT_TRUE(Has(
                OutputOf({"convert", source, "-o", output, "--to", target, "--quality", quality}),
                "lowest PSNR"))
                << target;
        EXPECT_LT(std::filesystem::file_size(coarse), std::filesystem::file_size(fine)) << target;
    }
}

TEST(ConvertCommand, RefusesWhatCannotBeAndLeavesEverythingAsItWas) {
    const ScratchFolder folder;
    constexpr PixelForm kTwelve = {.rows = 16, .columns = 16, .allocated = 16, .stored = 12};
    constexpr PixelForm kSixteen = {.rows = 16, .columns = 16, .allocated = 16, .stored = 16};
    constexpr PixelForm kSigned = {16, 16, 16, 16, 1};
    const auto image = [&](const char* name, const PixelForm& form, const std::string& pattern,
                           std::size_t bytes = 512) {
        return folder.Write(name, ImageOf(form, Repeated(pattern, bytes)));
    };
    const auto beginning = [&](const char* name, std::size_t bytes) {
        return folder.Write(name, ReadAll(kSlice).substr(0, bytes));
    };
    struct Case {
        std::string input;
        Arguments wish;
        const char* reason;
    };
    const Case cases[] = {
        {kState, {"explicit"}, "no usable pixel data"},
        {kSlice, {"jpeg"}, "holds 8 bits"},
        {image("byte.dcm", {.rows = 16, .columns = 16}, "\1\2", 256),
         {"jpeg12"},
         "more than 8 bits"},
        {image("signed.dcm", kSigned, Word(0xFF00)), {"jpeg12"}, "signed"},
        {image("wide.dcm", kSixteen, Word(60000)), {"jpeg12"}, "above 4095"},
        {image("white.dcm", kTwelve, Word(4095) + Word(4095) + Word(0)),
         {"j2k", "--quality", "4"},
         "bits stored"},
        {beginning("cut.dcm", 900), {"j2k-lossless"}, "QVM_ERROR_"},
        {beginning("half.dcm", 250'000), {"explicit"}, "ends before its data"},
        {image("short.dcm", kTwelve, "\1\2", 500), {"j2k-lossless"}, "fewer pixels"},
        {folder.Write("text.dcm", Repeated("no DICOM. ", 5000)),
         {"explicit"},
         "QVM_ERROR_FAILED_TO_PARSE_DICOM"},
        {folder.Path("none.dcm"), {"explicit"}, "QVM_ERROR_FAILED_TO_READ_FILE"},
    };
    const auto output = folder.Write("present.dcm", "what was there");
    const auto names = folder.Names().size();
    for (const auto& c : cases) {
        const auto before = ReadAll(c.input);
        ExpectStatus(1, Arguments{"convert", c.input, "-o", output, "--to"} + c.wish, c.reason);
        EXPECT_TRUE(ReadAll(c.input) == before) << c.input;
        EXPECT_EQ(ReadAll(output), "what was there") << c.input;
        EXPECT_EQ(folder.Names().size(), names) << c.input;
    }
}

TEST(ConvertCommand, NeverReplacesAnInput) {
    const ScratchFolder folder;
    const auto slice = folder.Write("a.dcm", ReadAll(kSlice));
    const auto other = folder.Write("out/a.dcm", ReadAll(kRadiograph));
    const auto out = folder.Path("out");
    ExpectStatus(1, {"convert", slice, "-o", slice, "--to", "implicit"});
    const auto both = RunCommand({"convert", slice, other, "-o", out, "--to", "implicit"});
    EXPECT_EQ(both.status, 1);
    for (const auto& name : {slice, other})
        EXPECT_TRUE(Has(both.complaints, "quorvex: " + name + ": ")) << both.complaints;
    ExpectStatus(2, {"convert", out, "-o", out, "--to", "implicit"});
    EXPECT_TRUE(ReadAll(slice) == ReadAll(kSlice));
    EXPECT_TRUE(ReadAll(other) == ReadAll(kRadiograph));
}

TEST(ConvertCommand, WrongArgumentsAnswerTwo) {
    const ScratchFolder folder;
    const Arguments out = {"convert", "-o", folder.Path("out")};
    const Arguments toExplicit = out + Arguments{kSlice, "--to", "explicit"};
    const Arguments wrong[] = {
        out + Arguments{kSlice},
        out + Arguments{"--to", "explicit"},
        out + Arguments{kSlice, "--to", "rle"},
        out + Arguments{kLoop, "--to", "jpeg", "--quality", "101"},
        toExplicit + Arguments{"--quality", "3"},
        toExplicit + Arguments{"--shard", "0/4"},
        toExplicit + Arguments{"--shard", "5/4"},
        toExplicit + Arguments{"--shard", "1"},
        toExplicit + Arguments{"--jobs", "-1"},
        toExplicit + Arguments{"--manifest", "/dev/null"},
        {"convert", kSlice, kLoop, "-o", "-", "--to", "explicit"},
    };
    for (const auto& arguments : wrong) {
        ExpectStatus(2, arguments);
        EXPECT_TRUE(folder.Names().empty()) << testing::PrintToString(arguments);
    }
}

}  // namespace
}  // namespace quorvex::test
