// One file into another transfer syntax: what comes out, and what is refused.
#include "quorvex/TransferSyntaxes.h"
#include "tests/tools/run_command.h"
#include "tests/tools/small_image.h"

#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

const struct {
    const char* name;
    const char* syntax;
    const char* colours;  // Photometric Interpretation of coded RGB
    bool isLossless;
    std::vector<std::string> sources = {kSlice, kRadiograph, kLoop};
} kTargets[] = {
    {"implicit", "1.2.840.10008.1.2", "RGB", true},
    {"explicit", "1.2.840.10008.1.2.1", "RGB", true},
    {"jpeg", "1.2.840.10008.1.2.4.50", "RGB", false, {kLoop}},
    {"jpeg12", "1.2.840.10008.1.2.4.51", "", false, {kSlice, kRadiograph}},
    {"jpeg-lossless", "1.2.840.10008.1.2.4.70", "RGB", true},
    {"jpegxl", "1.2.840.10008.1.2.4.112", "XYB", false, {kRadiograph, kLoop}},
    {"jpegxl-lossless", "1.2.840.10008.1.2.4.110", "RGB", true, {kRadiograph, kLoop}},
    {"j2k", "1.2.840.10008.1.2.4.91", "YBR_ICT", false},
    {"htj2k", "1.2.840.10008.1.2.4.203", "YBR_ICT", false, {kSlice, kLoop}},
    {"htj2k-lossless", "1.2.840.10008.1.2.4.201", "YBR_RCT", true, {kSlice, kLoop}},
    {"htj2k-rpcl", "1.2.840.10008.1.2.4.202", "YBR_RCT", true},
    {"j2k-lossless", "1.2.840.10008.1.2.4.90", "YBR_RCT", true},
};

TEST(ConvertCommand, WritesWhatWasAskedForAndTakesItBack) {
    const ScratchFolder folder;
    const auto output = folder.Path("out.dcm");
    const ScratchFolder second;
    const auto back = second.Path("back.dcm");
    for (const auto& target : kTargets) {
        if (!TransferSyntaxToConvertTo(target.name)->isWritten) {
            const std::string sentence = "this build cannot write " + std::string(target.name);
            ExpectStatus(2, {"convert", kSlice, "-o", output, "--to", target.name}, sentence);
            EXPECT_FALSE(Has(OutputOf({"convert", "--help"}), target.name + std::string("|")));
            continue;
        }
        for (const auto& source : target.sources) {
            SCOPED_TRACE(source + " to " + target.name);
            const Arguments convert = {"convert", source, "-o", output, "--to", target.name};
            EXPECT_TRUE(Has(OutputOf(convert), "1 converted"));
            EXPECT_EQ(folder.Names(), Arguments{"out.dcm"});
            OutputOf({"convert", output, "-o", back, "--to", "explicit"});
            const auto info = InfoOf(output);
            const std::string syntax = "TransferSyntaxUID                    [";
            EXPECT_TRUE(Has(info, syntax + target.syntax + ']'));
            EXPECT_TRUE(source != kLoop || Has(info, std::string("[") + target.colours + ']'));
            EXPECT_TRUE(source != kLoop || Has(InfoOf(back), "[RGB]"));
            if (!target.isLossless) continue;
            EXPECT_TRUE(FramesOf(output) == FramesOf(source));
            EXPECT_TRUE(FramesOf(back) == FramesOf(source)) << "and back";
        }
    }
    const auto whole = ReadAll(output);
    EXPECT_TRUE(OutputOf({"convert", kLoop, "-o", "-", "--to", "j2k-lossless"}) == whole);
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

struct BadSource {
    std::string input;
    Arguments target;
    const char* reason;
    int status = 1;
};

Bytes Segmentation() {
    auto builder = DicomBuilder::Part10(kExplicitUid);
    return builder.Padded(tag::kSOPClassUID, "UI", "1.2.840.10008.5.1.4.1.1.66.7")
        .Image(SmallFacts(8, 8))
        .Add(tag::kPixelData, "OB", Bytes(256, 3))
        .Bytes();
}

std::vector<BadSource> BadSources(const ScratchFolder& folder) {
    const auto file = [&](const char* name, const auto& bytes) {
        return folder.Write(name, bytes);
    };
    const auto image = [&](const char* name, unsigned bits, unsigned isSigned,
                           const std::vector<unsigned>& samples, unsigned stored = 16,
                           std::size_t count = 256) {
        return file(name, SmallImage(SmallFacts(bits, stored, isSigned), samples, count));
    };
    const auto slice = ReadAll(kSlice);
    return {
        {kSlice,
         {"jpeg"},
         "JPEG Baseline (Process 1) cannot hold this image: Bits Allocated is 16"},
        {image("byte.dcm", 8, 0, {1, 2}, 8), {"jpeg12"}, "more than 8 bits"},
        {image("signed.dcm", 16, 1, {0xFF00}), {"jpeg12"}, "Pixel Representation is 1"},
        {image("wide.dcm", 16, 0, {60000}), {"jpeg12"}, "values beyond its 12 bits"},
        {image("above.dcm", 16, 0, {4096, 4095, 0}, 12),
         {"j2k", "--quality", "4"},
         "values beyond its 12 bits"},
        {file("cut.dcm", slice.substr(0, 900)), {"j2k-lossless"}, "an image without its pixels"},
        {file("half.dcm", slice.substr(0, 250'000)), {"explicit"}, "ends before its data"},
        {image("more.dcm", 16, 0, {0x0201}, 12, 600), {"rle"}, "more frames"},
        {image("short.dcm", 16, 0, {0x0201}, 12, 250), {"j2k-lossless"}, "fewer pixels"},
        {file("text.dcm", std::string(5000, 't')), {"explicit"}, "QVM_ERROR_FAILED_TO_PARSE_DICOM"},
        {file("ls.dcm", EncapsulatedFile(kVideoUid, SmallFacts(8, 8), {{{0xFF, 0xD8}}})),
         {"explicit"},
         "Level 4.1 (1.2.840.10008.1.2.4.102), and this build has no decoder"},
        {file("segments.dcm", Segmentation()), {"j2k"}, "numbers of segments"},
        {folder.Path("none.dcm"), {"explicit"}, "No such file", 3},
    };
}

TEST(ConvertCommand, RefusesWhatCannotBeAndLeavesEverythingAsItWas) {
    const ScratchFolder folder;
    const auto output = folder.Write("present.dcm", "what was there");
    const auto sources = BadSources(folder);
    const auto names = folder.Names().size();
    for (const auto& bad : sources) {
        const auto before = ReadAll(bad.input);
        const Arguments convert = {"convert", bad.input, "-o", output, "--to"};
        ExpectStatus(bad.status, convert + bad.target, bad.reason);
        EXPECT_TRUE(ReadAll(bad.input) == before) << bad.input;
        EXPECT_EQ(ReadAll(output), "what was there") << bad.input;
        EXPECT_EQ(folder.Names().size(), names) << bad.input;
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
    ExpectStatus(2, out + Arguments{kSlice});
    ExpectStatus(2, out + Arguments{"--to", "explicit"});
    ExpectStatus(2, out + Arguments{kSlice, "--to", "tiff"});
    ExpectStatus(2, out + Arguments{kLoop, "--to", "jpeg", "--quality", "101"});
    ExpectStatus(2, {"convert", kSlice, kLoop, "-o", "-", "--to", "explicit"});
    for (const auto& [option, value] : {std::pair{"--quality", "3"},
                                        {"--shard", "0/4"},
                                        {"--shard", "5/4"},
                                        {"--shard", "1"},
                                        {"--jobs", "-1"},
                                        {"--manifest", "/dev/null"}})
        ExpectStatus(2, out + Arguments{kSlice, "--to", "explicit", option, value});
    EXPECT_TRUE(folder.Names().empty());
}

}  // namespace
}  // namespace quorvex::test
