// What comes out of a conversion whole: objects without pixels, files that stay as they are, and
// what the manifest says of changes.
#include "tests/tools/run_command.h"
#include "tests/tools/small_image.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace quorvex::test {
namespace {

constexpr std::string_view kJpegUid = "1.2.840.10008.1.2.4.50";

Bytes Report(std::string_view syntax, const char* sopClass = "1.2.840.10008.5.1.4.1.1.88.11") {
    auto builder = DicomBuilder::Part10(syntax);
    return builder.Padded(tag::kSOPClassUID, "UI", sopClass)
        .Padded(tag::kSOPInstanceUID, "UI", "2.25.7")
        .Padded(tag::kPatientName, "PN", "A^B")
        .Bytes();
}

Bytes Directory() {
    auto builder = DicomBuilder::Part10(kExplicitUid);
    return builder.Padded(tag::kMediaStorageSOPClassUID, "UI", "1.2.840.10008.1.3.10")
        .Add(0x00041200, "UL", std::string(4, '\0'))
        .Bytes();
}

Bytes Fractions() {
    auto file = ImageFile(kExplicitUid, SmallFacts(32, 32));
    return file.Add(tag::kFloatPixelData, "OF", Bytes(1024, 9)).Bytes();
}

Bytes SaysLossy() {
    auto file = ImageFile(kExplicitUid, SmallFacts(8, 8));
    return file.Add(tag::kLossyImageCompression, "CS", "01")
        .Add(tag::kPixelData, "OB", Bytes(256, 3))
        .Bytes();
}

struct Way {
    const char* what;
    Bytes source;
    Arguments options;  // the target first
    const char* counts;
    std::string_view syntax;  // of the output; empty for the source's own bytes
};

std::vector<Way> Ways() {
    const Arguments keep = {"--keep-unsupported"};
    const auto coded = EncapsulatedFile(kVideoUid, SmallFacts(8, 8), {{{0xFF, 0xD8}}});
    const auto bits = SmallFacts(1, 1);
    const auto bitmap = NativeFile(kExplicitUid, bits, Bytes(32, 0x55));
    return {
        {"a report to its own encoding", Report(kExplicitUid), {"explicit"}, "1 carried", ""},
        {"a report to another", Report(kExplicitUid), {"implicit"}, "1 carried", kImplicitUid},
        {"a deflated target", Report(kImplicitUid), {"deflated"}, "1 carried", kDeflatedUid},
        {"a big-endian report", Report(kBigEndianUid), {"rle"}, "1 carried", kExplicitUid},
        {"a coded target", Report(kImplicitUid), {"j2k"}, "1 carried", kExplicitUid},
        {"a directory counts its bytes", Directory(), {"implicit"}, "1 carried", ""},
        {"fractions to native", Fractions(), {"implicit"}, "1 converted", kImplicitUid},
        {"fractions to coded", Fractions(), {"rle", "--keep-unsupported"}, "1 kept", ""},
        {"bits to native", bitmap, {"implicit"}, "1 converted", kImplicitUid},
        {"bits to coded", bitmap, {"j2k-lossless", "--keep-unsupported"}, "1 kept", ""},
        {"no decoder", coded, {"explicit", "--keep-unsupported"}, "1 kept", ""},
        {"lossy by its syntax",
         EncapsulatedFile(kJpegUid, SmallFacts(8, 8), {{{0xFF, 0xD8}}}),
         {"explicit", "--leave-lossy"},
         "1 kept",
         ""},
        {"lossy by its own word", SaysLossy(), {"rle", "--leave-lossy"}, "1 kept", ""},
        {"not lossy", bitmap, {"implicit", "--leave-lossy"}, "1 converted", kImplicitUid},
    };
}

TEST(ConvertCommand, CarriesAndKeepsWhatHasNoOtherForm) {
    const ScratchFolder folder;
    const auto output = folder.Path("out.dcm");
    for (const auto& way : Ways()) {
        const auto source = folder.Write("source.dcm", way.source);
        const Arguments convert = {"convert", source, "-o", output, "--to"};
        EXPECT_TRUE(Has(OutputOf(convert + way.options), way.counts)) << way.what;
        if (way.syntax.empty())
            EXPECT_TRUE(ReadAll(output) == ReadAll(source)) << way.what;
        else
            EXPECT_TRUE(Has(InfoOf(output), '[' + std::string(way.syntax) + ']')) << way.what;
    }
}

TEST(ConvertCommand, DryRunTellsAndWritesNothing) {
    const ScratchFolder folder;
    const auto report = folder.Write("in/report.dcm", Report(kImplicitUid));
    const auto bitmap =
        folder.Write("in/bits.dcm", NativeFile(kExplicitUid, SmallFacts(1, 1), Bytes(32, 0x55)));
    folder.Write("in/ct.dcm", ReadAll(kSlice));
    const auto before = FilesBelow(folder.Path("."));
    const auto told = OutputOf({"convert", folder.Path("in"), "-o", folder.Path("out"), "--to",
                                "jpegls-lossless", "--dry-run", "--keep-unsupported"});
    EXPECT_EQ(FilesBelow(folder.Path(".")), before);
    for (const auto* part : {"report.dcm: would be carried from Implicit VR Little Endian to "
                             "Explicit VR Little Endian, ",
                             "bits.dcm: would be kept as it is (JPEG-LS Lossless cannot hold",
                             "ct.dcm: would be converted from Explicit VR Little Endian to JPEG-LS "
                             "Lossless, 525516 to ",
                             "dry run: 1 converted, 1 carried, 1 kept; 0.5 MB would become 0.2 MB"})
        EXPECT_TRUE(Has(told, part)) << part << " in " << told;
    ExpectStatus(2, {"convert", report, "-o", bitmap, "--to", "rle", "--dry-run", "--manifest",
                     folder.Path("m")});
}

TEST(ConvertCommand, LossyFramesAreDerivedInTheirGroupsToo) {
    auto file = DicomBuilder::Part10(kExplicitUid);
    file.SopUids().Image({.rows = 16, .columns = 16, .bits = 8, .frames = "1 "});
    const auto addGroups = [&](std::uint32_t groups) {
        file.Sequence(groups).Item().Sequence(0x00189226).Item();
        file.Padded(tag::kFrameType, "CS", "ORIGINAL\\PRIMARY\\M").EndItem().EndSequence();
        file.Add(0x00091001, "LO", "kept").EndItem().EndSequence();
    };
    addGroups(tag::kSharedFunctionalGroupsSequence);
    addGroups(tag::kPerFrameFunctionalGroupsSequence);
    file.Add(tag::kPixelData, "OB", Bytes(256, 3));
    const ScratchFolder folder;
    const auto output = folder.Path("out.dcm");
    const auto manifest = folder.Path("manifest");
    OutputOf({"convert", folder.Write("a.dcm", file.Bytes()), "-o", output, "--to", "jpeg",
              "--manifest", manifest});
    EXPECT_FALSE(Has(InfoOf(output), "ORIGINAL"));
    EXPECT_TRUE(Has(InfoOf(output), "DERIVED\\PRIMARY\\M"));
    EXPECT_TRUE(Has(ReadAll(manifest),
                    R"("changed":["TransferSyntaxUID","ImageType","SOPInstanceUID",)"
                    R"("DerivationDescription","SourceImageSequence","DerivationCodeSequence",)"
                    R"("LossyImageCompression","LossyImageCompressionRatio",)"
                    R"("LossyImageCompressionMethod","FrameType"])"))
        << ReadAll(manifest);
}

TEST(ConvertCommand, IconsAreReadableUnderTheNewSyntax) {
    constexpr std::uint32_t kIconImageSequence = 0x00880200;
    Bytes coded(64);
    coded[0] = 1;   // one segment
    coded[4] = 64;  // which begins here
    Append(coded, {3, 0x11, 0x22, 0x33, 0x44, 0});
    const ImageFacts facts = {.rows = 2, .columns = 2, .bits = 8};
    auto file = ImageFile(kRleUid, facts);
    file.Sequence(kIconImageSequence).Item().Image(facts).Fragments({coded});
    file.EndItem().EndSequence().Fragments({coded});
    const ScratchFolder folder;
    const auto source = folder.Write("icon.dcm", file.Bytes());
    const auto output = folder.Path("out.dcm");
    for (const auto* target : {"explicit", "implicit", "j2k-lossless"}) {
        OutputOf({"convert", source, "-o", output, "--to", target});
        EXPECT_TRUE(Has(InfoOf(output), "    (7fe0,0010) O")) << target;
        EXPECT_TRUE(Has(ReadAll(output), std::string("\4\0\0\0\x11\x22\x33\x44", 8))) << target;
    }
    OutputOf({"convert", source, "-o", output, "--to", "rle"});
    EXPECT_TRUE(FramesOf(output) == FramesOf(source));
}

// The status with which the command ends when it gets a signal after a while, and how long that
// takes.
std::pair<int, double> Interrupted(const Arguments& arguments, int signalNumber) {
    using Clock = std::chrono::steady_clock;
    const pid_t child = fork();
    if (child == 0) {
        std::vector<char*> texts{const_cast<char*>(kCommand.c_str())};
        for (const auto& argument : arguments) texts.push_back(const_cast<char*>(argument.c_str()));
        texts.push_back(nullptr);
        static_cast<void>(std::freopen("/dev/null", "w", stdout));
        static_cast<void>(std::freopen("/dev/null", "w", stderr));
        execv(texts[0], texts.data());
        _exit(127);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    const auto asked = Clock::now();
    kill(child, signalNumber);
    int status = 0;
    waitpid(child, &status, 0);
    const std::chrono::duration<double> taken = Clock::now() - asked;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status), taken.count()};
}

TEST(ConvertCommand, EndsSoonInsideALargeFile) {
    constexpr unsigned kSide = 7000;
    Bytes noise(std::size_t{kSide} * kSide);
    std::uint32_t state = 1;
    for (auto& byte : noise) byte = static_cast<unsigned char>((state = state * 1664525 + 1) >> 24);
    const ScratchFolder folder;
    const auto large = folder.Write(
        "large.dcm", NativeFile(kExplicitUid, {.rows = kSide, .columns = kSide, .bits = 8}, noise));
    for (const int number : {SIGINT, SIGTERM}) {
        const auto [status, seconds] =
            Interrupted({"convert", large, "-o", folder.Path("out/a.dcm"), "--to", "j2k-lossless",
                         "--no-verify"},
                        number);
        EXPECT_EQ(status, 3);
        EXPECT_LT(seconds, 2.5);
        for (const auto& name : FilesBelow(folder.Path("."))) EXPECT_FALSE(Has(name, "quorvex"));
    }
}

TEST(ConvertCommand, MissingMemoryIsNoFaultOfTheFile) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "a sanitizer's own memory does not fit under a limit";
#endif
    const ScratchFolder folder;
    const auto large = folder.Write(
        "large.dcm",
        NativeFile(kExplicitUid, {.rows = 7000, .columns = 7000, .bits = 8}, Bytes(49'000'000)));
    for (const auto& [target, kilobytes] :
         {std::pair("implicit", "110000"), {"rle", "110000"}, {"j2k-lossless", "300000"}}) {
        const auto limited = std::string("ulimit -v ") + kilobytes + "; " + kCommand + " convert " +
                             large + " -o " + folder.Path("out/") + " --to " + target +
                             " >/dev/null 2>" + folder.Path("complaints");
        const int status = std::system(("bash -c \"" + limited + '"').c_str());
        EXPECT_EQ(WEXITSTATUS(status), 3) << target;
        EXPECT_TRUE(Has(ReadAll(folder.Path("complaints")), "not enough memory")) << target;
        EXPECT_TRUE(FilesBelow(folder.Path("out")).empty());
    }
}

}  // namespace
}  // namespace quorvex::test
