// What the command does with inputs that are no use.
#include "tests/tools/run_command.h"
#include "tests/tools/small_image.h"

#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

constexpr std::string_view kRle = "1.2.840.10008.1.2.5";
constexpr double kLongest = 1.0;  // seconds; sanitizers and busy machines get a multiple
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr double kAllowance = 20.0;
#else
constexpr double kAllowance = 3.0;
#endif

constexpr PixelForm kWords = {.allocated = 16, .stored = 16};
using Bytes = std::vector<unsigned char>;

Bytes RleImage(std::string_view fragment) {
    const PixelForm form = {.rows = 4, .columns = 4, .allocated = 16, .stored = 16};
    return HeaderOf(form, kRle)
        .Header(tag::kPixelData, "OB", 0xFFFFFFFF)
        .Item(0)
        .Item(static_cast<std::uint32_t>(fragment.size()))
        .Raw(fragment)
        .EndSequence()
        .Bytes();
}

// Segments that claim to begin far behind the fragment's end, and inside its own header.
std::string LyingSegments() {
    std::string header = Word(2) + Word(0) + Word(0xFFF0) + Word(0x7FFF) + Word(3) + Word(0);
    header.resize(64, '\xFF');
    return header + std::string(16, '\x05');
}

Bytes NestedSequences(int depth) {
    auto file = DicomBuilder::Part10(kExplicitUid);
    for (int i = 0; i < depth; ++i) file.Sequence(tag::kReferencedImageSequence).Item();
    return file.Bytes();
}

Bytes DescendingElements(std::uint32_t count) {
    auto file = DicomBuilder::Part10(kExplicitUid);
    for (std::uint32_t i = count; i > 0; --i)
        file.Add(0x00110000U + i % 0xF000 + 0x20000U * (i / 0xF000), "LO", "x ");
    return file.Bytes();
}

std::string Junk(std::size_t size) {
    std::string bytes;
    for (std::uint32_t state = 1; bytes.size() < size; state = state * 1664525U + 1013904223U)
        bytes += static_cast<char>(state >> 24);
    return bytes;
}

void ExpectOneLine(const Arguments& arguments, const std::string& code) {
    const std::string beginning = "quorvex: " + arguments[1] + ": " + code;
    const auto result = ExpectStatus(1, arguments);
    EXPECT_EQ(result.complaints.substr(0, beginning.size()), beginning);
    EXPECT_LT(result.seconds, kLongest * kAllowance);
}

TEST(BadInput, AnswersWithOneLineAndStatusOne) {
    struct Case {
        const char* name;
        Bytes bytes;
        const char* code;
        bool isReadable = true;  // as far as `info` is concerned
    };
    const std::string junk = Junk(100'000);
    const Case cases[] = {
        {"132 bytes", Bytes(132, 'a'), "QVM_ERROR_FAILED_TO_READ_FILE (10): ", false},
        {"junk", Bytes(junk.begin(), junk.end()), "QVM_ERROR_FAILED_TO_PARSE_DICOM (11): ", false},
        {"no rows", ImageOf({.rows = 0, .allocated = 16, .stored = 16}, std::string(128, 'x')),
         "QVM_ERROR_FAILED_TO_GET_PIXEL_DATA (9): "},
        {"no pixels", HeaderOf(kWords).Bytes(), "QVM_ERROR_"},
        {"ten bytes of a huge image",
         ImageOf({.rows = 65535, .columns = 65535, .allocated = 16, .stored = 16}, "xxxxxxxxxx"),
         "QVM_ERROR_"},
        {"lying RLE offsets", RleImage(LyingSegments()), "QVM_ERROR_FAILED_TO_DECOMPRESS (1): "},
        {"RLE cut in its header", RleImage("\x02"), "QVM_ERROR_FAILED_TO_DECOMPRESS (1): "},
    };
    const ScratchFolder folder;
    for (const auto& bad : cases) {
        SCOPED_TRACE(bad.name);
        const auto path = folder.Write("bad.dcm", bad.bytes);
        const Arguments out = {"-o", folder.Path("out")};
        for (const auto* verb : {"frame", "render"})
            ExpectOneLine(Arguments{verb, path} + out, bad.code);
        ExpectOneLine(Arguments{"frame", path, "--all"} + out, bad.code);
        ExpectStatus(bad.isReadable ? 0 : 1, {"info", path});
        EXPECT_EQ(folder.Names(), Arguments{"bad.dcm"});
    }
}

TEST(BadInput, ShortPixelDataIsNeverACrash) {
    const ScratchFolder folder;
    for (const std::size_t bytes : {0U, 2U, 126U}) {
        const auto path = folder.Write("short.dcm", ImageOf(kWords, std::string(bytes, 'x')));
        for (const auto* verb : {"frame", "render"})
            EXPECT_LE(RunCommand({verb, path, "-o", folder.Path("out")}).status, 1)
                << verb << ' ' << bytes;
    }
}

TEST(BadInput, FilesThatAreNone) {
    const ScratchFolder folder;
    for (const auto& path : {folder.Path("missing.dcm"), folder.Path(".")}) {
        constexpr const char* kCode = "QVM_ERROR_FAILED_TO_READ_FILE (10): ";
        ExpectOneLine({"info", path}, kCode);
        ExpectOneLine({"render", path, "-o", folder.Path("out")}, kCode);
    }
    EXPECT_TRUE(folder.Names().empty());
}

TEST(BadInput, FramesThatAreNot) {
    const ScratchFolder folder;
    const auto path = folder.Write("one.dcm", ImageOf(kWords, std::string(128, 'x')));
    const Arguments out = {"-o", folder.Path("out")};
    for (const auto* index : {"1", "-1", "2147483647"})
        for (const auto* verb : {"frame", "render"})
            ExpectOneLine(Arguments{verb, path, "--frame", index} + out,
                          "QVM_ERROR_INVALID_FRAME_INDEX (34): ");
    OutputOf(Arguments{"frame", path} + out);
    EXPECT_EQ(ReadAll(folder.Path("out")), std::string(128, 'x'));
}

TEST(BadInput, HostileStructureIsShownOrRefusedInTime) {
    const ScratchFolder folder;
    const auto nested = folder.Write("nested.dcm", NestedSequences(20'000));
    const auto descending = folder.Write("descending.dcm", DescendingElements(100'000));
    for (const auto& path : {nested, descending}) {
        for (const auto& arguments : {Arguments{"info", path}, Arguments{"info", path, "--json"},
                                      Arguments{"render", path, "-o", folder.Path("out")}}) {
            const auto result = RunCommand(arguments);
            EXPECT_LE(result.status, 1) << path;
            EXPECT_LT(result.seconds, kLongest * kAllowance) << testing::PrintToString(arguments);
        }
    }
    OutputOf({"info", descending});
}

TEST(BadInput, InfoGoesOnPastABadFile) {
    const ScratchFolder folder;
    const auto bad = folder.Write("bad.dcm", "no DICOM");
    const auto good = folder.Write("good.dcm", ImageOf(kWords, std::string(128, 'x')));
    EXPECT_TRUE(Has(ExpectStatus(1, {"info", bad, good}).output, "8 x 8, 1 frame"));
}

TEST(BadInput, NamesAndValuesCannotSteerATerminal) {
    const ScratchFolder folder;
    auto file = DicomBuilder::Part10(kExplicitUid);
    file.Add(tag::kPatientName, "PN", "A\x1B[31m\"\\\xFF");
    const auto path = folder.Write("evil\x1B[2J\n.dcm", file.Bytes());
    EXPECT_FALSE(Has(OutputOf({"info", path}), "\x1B"));
    EXPECT_FALSE(Has(ExpectStatus(1, {"info", path + "x"}).complaints, "\x1B"));
}

}  // namespace
}  // namespace quorvex::test
