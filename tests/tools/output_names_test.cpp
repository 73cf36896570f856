// Names of outputs come from arguments, never from what stands in a file; and a file's preamble is
// not passed on.
#include "tests/tools/run_command.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

namespace quorvex::test {
namespace {

constexpr const char* kExplicit = "1.2.840.10008.1.2.1";

const std::string kEvil = "quorvex_evil_" + std::to_string(getpid());

std::vector<std::string> HostileNames() {
    const std::string above = "../../" + kEvil;
    return {above,
            "/tmp/" + kEvil,
            "a/../" + above,
            std::string("1.2\0/", 5) + above,
            ".",
            "..",
            "/",
            std::string(4096, '9'),
            "-o",
            "\n" + kEvil,
            "1.2.3/" + kEvil};
}

/// An image whose every identifier and text is `name`.
std::string ImageNamed(const std::string& name) {
    const std::string even = name + std::string(name.size() % 2, ' ');
    std::string elements;
    for (const std::uint32_t tag : {0x00080016U, 0x00080018U}) elements += Element(tag, "UI", even);
    for (const std::uint32_t tag :
         {0x00080050U, 0x00080060U, 0x00080080U, 0x0008103EU, 0x00100010U, 0x00100020U, 0x0020000DU,
          0x0020000EU, 0x00200010U, 0x00700080U})
        elements += Element(tag, "LO", even);
    for (const auto& [tag, value] : {std::pair{0x00280002U, 1U},
                                     {0x00280010U, 8U},
                                     {0x00280011U, 8U},
                                     {0x00280100U, 8U},
                                     {0x00280101U, 8U},
                                     {0x00280102U, 7U},
                                     {0x00280103U, 0U}})
        elements += Element(tag, "US", Number16(value));
    elements += Element(0x00280004, "CS", "MONOCHROME2 ");
    return Part10(kExplicit, elements + Element(0x7FE00010, "OB", std::string(64, 'x')));
}

std::vector<std::string> TreeOf(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        names.push_back(std::filesystem::relative(entry.path(), folder).string());
    std::ranges::sort(names);
    return names;
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
        std::filesystem::create_directories(folder.Path("in/a"));
        std::filesystem::create_directories(folder.Path("out"));
        for (const auto* file : {"in/one.dcm", "in/a/two.dcm"})
            folder.Write(file, ImageNamed(name));
        RunCommand({"thumbnail", folder.Path("in"), "-o", folder.Path("out/small")});
        RunCommand({"render", folder.Path("in/one.dcm"), "-o", folder.Path("out/one.png")});
        EXPECT_EQ(RunCommand({"convert", folder.Path("in"), "-o", folder.Path("out/j2k"), "--to",
                              "j2k-lossless", "--manifest", folder.Path("out/m.jsonl")})
                      .status,
                  0);
        RunCommand({"state", folder.Path("in/one.dcm"), "-o", folder.Path("out/state.dcm")});
        RunCommand({"capture", folder.Path("in/one.dcm"), folder.Path("out/one.png"), "-o",
                    folder.Path("out/capture.dcm")});
        EXPECT_EQ(TreeOf(folder.Path("out")),
                  (std::vector<std::string>{"capture.dcm", "j2k", "j2k/a", "j2k/a/two.dcm",
                                            "j2k/one.dcm", "m.jsonl", "one.png", "small", "small/a",
                                            "small/a/two.png", "small/one.png", "state.dcm"}));
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
    for (const auto& [signature, kind] : kKinds) {
        auto bytes = ImageNamed("1.2.3");
        bytes.replace(0, signature.size(), signature);
        const auto path = folder.Write("both.dcm", bytes);
        const auto shown = RunCommand({"info", path});
        EXPECT_NE(shown.output.find(kind), std::string::npos) << kind;
        for (const auto* target : {"explicit", "implicit", "jpeg-lossless"}) {
            ASSERT_EQ(
                RunCommand({"convert", path, "-o", folder.Path("out.dcm"), "--to", target}).status,
                0);
            EXPECT_EQ(ReadAll(folder.Path("out.dcm")).substr(0, 132),
                      std::string(128, '\0') + "DICM")
                << kind << ' ' << target;
        }
        EXPECT_EQ(RunCommand({"info", folder.Path("out.dcm")}).output.find(kind),
                  std::string::npos);
    }
}

}  // namespace
}  // namespace quorvex::test
