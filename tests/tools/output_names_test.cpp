// Names of outputs come from arguments, never from what stands in a file; and a file's preamble is
// not passed on.
#include "tests/support/dicom_builder.h"
#include "tests/tools/run_command.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <unistd.h>

namespace quorvex::test {
namespace {

const std::string kEvil = "quorvex_evil_" + std::to_string(getpid());

Arguments HostileNames() {
    const std::string above = "../../" + kEvil;
    const std::string zero("1.2\0/", 5);
    return {above,
            "/tmp/" + kEvil,
            "a/../" + above,
            zero + above,
            ".",
            "..",
            "/",
            std::string(4096, '9'),
            "-o",
            "\n" + kEvil,
            "1.2.3/" + kEvil};
}

/// An image whose every identifier and text is `name`.
Bytes ImageNamed(const std::string& name) {
    auto file = DicomBuilder::Part10(kExplicitUid);
    for (const auto tag : {tag::kSOPClassUID, tag::kSOPInstanceUID}) file.Padded(tag, "UI", name);
    for (const auto tag : {tag::kAccessionNumber, tag::kModality, tag::kInstitutionName,
                           tag::kSeriesDescription, tag::kPatientName, tag::kPatientID,
                           tag::kStudyInstanceUID, tag::kSeriesInstanceUID, tag::kStudyID})
        file.Padded(tag, "LO", name);
    return file.Image({.rows = 8, .columns = 8, .bits = 8})
        .Padded(tag::kContentLabel, "LO", name)
        .Add(tag::kPixelData, "OB", Bytes(64, 'x'))
        .Bytes();
}

void ExpectNoEvil(const ScratchFolder& folder) {
    const std::filesystem::path inside = folder.Path("in");
    for (const auto& place : {inside, inside.parent_path(), inside.parent_path().parent_path(),
                              std::filesystem::path("/tmp"), std::filesystem::current_path()})
        EXPECT_FALSE(std::filesystem::exists(place / kEvil)) << place;
}

TEST(OutputNames, AreNeverBuiltFromAFile) {
    for (const auto& name : HostileNames()) {
        SCOPED_TRACE(name.substr(0, 40));
        const ScratchFolder folder;
        const auto one = folder.Write("in/one.dcm", ImageNamed(name));
        folder.Write("in/a/two.dcm", ImageNamed(name));
        std::filesystem::create_directories(folder.Path("out"));
        const auto out = [&](const char* file) { return folder.Path("out/") + file; };
        RunCommand({"thumbnail", folder.Path("in"), "-o", out("small")});
        RunCommand({"render", one, "-o", out("one.png")});
        OutputOf({"convert", folder.Path("in"), "-o", out("j2k"), "--to", "j2k-lossless",
                  "--manifest", out("m.jsonl")});
        RunCommand({"state", one, "-o", out("state.dcm")});
        RunCommand({"capture", one, out("one.png"), "-o", out("capture.dcm")});
        EXPECT_EQ(
            FilesBelow(folder.Path("out")),
            (std::set<std::string>{"capture.dcm", "j2k/a/two.dcm", "j2k/one.dcm", "m.jsonl",
                                   "one.png", "small/a/two.png", "small/one.png", "state.dcm"}));
        ExpectNoEvil(folder);
    }
}

TEST(Preambles, OfProgramsAndPicturesAreNamedAndNotPassedOn) {
    using namespace std::string_view_literals;
    constexpr std::array kKinds = {
        std::pair{"MZ\x90\0"sv, "PE program"sv},
        std::pair{"\x7F"
                  "ELF\2\1\1"sv,
                  "ELF program"sv},
        std::pair{"\xCF\xFA\xED\xFE"sv, "Mach-O program"sv},
        std::pair{"\xCA\xFE\xBA\xBE"sv, "Mach-O program"sv},
        std::pair{"II*\0"sv, "TIFF picture"sv},
        std::pair{"MM\0*"sv, "TIFF picture"sv},
    };
    const ScratchFolder folder;
    const auto output = folder.Path("out.dcm");
    for (const auto& [signature, kind] : kKinds) {
        auto bytes = ImageNamed("1.2.3");
        std::ranges::copy(signature, bytes.begin());
        const auto path = folder.Write("both.dcm", bytes);
        EXPECT_TRUE(Has(OutputOf({"info", path}), kind)) << kind;
        for (const auto* target : {"explicit", "implicit", "jpeg-lossless"}) {
            OutputOf({"convert", path, "-o", output, "--to", target});
            EXPECT_EQ(ReadAll(output).substr(0, 132), std::string(128, '\0') + "DICM")
                << kind << ' ' << target;
        }
        EXPECT_FALSE(Has(OutputOf({"info", output}), kind)) << kind;
    }
}

TEST(FileNames, MayBeAnyBytes) {
    const ScratchFolder folder;
    const std::string slice = folder.Write("in/\xFCnder\xE9.dcm", ReadAll(kSlice));
    const std::string state = folder.Write("st\xE4te.dcm", ReadAll(kState));
    const auto out = [&](const char* name) { return folder.Path("out/\xD6 ") + name; };
    std::filesystem::create_directories(folder.Path("out"));
    EXPECT_TRUE(Has(OutputOf({"info", slice}), "512 x 512, 1 frame"));
    EXPECT_TRUE(Has(OutputOf({"info", slice, "--json"}), "\xEF\xBF\xBDnder\xEF\xBF\xBD.dcm"));
    EXPECT_EQ(FramesOf(slice), FramesOf(kSlice));
    OutputOf({"render", slice, "--state", state, "-o", out("one.png")});
    OutputOf({"thumbnail", folder.Path("in"), "-o", out("small")});
    OutputOf({"convert", slice, "-o", out("one.dcm"), "--to", "j2k-lossless"});
    EXPECT_EQ(FramesOf(out("one.dcm")), FramesOf(kSlice));
    OutputOf({"state", slice, "-o", out("state.dcm")});
    OutputOf({"capture", slice, out("one.png"), "-o", out("capture.dcm")});
    ExpectStatus(3, {"info", slice + "x"}, "\xEF\xBF\xBDnder");
}

}  // namespace
}  // namespace quorvex::test
