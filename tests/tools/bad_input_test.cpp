// What the command does with inputs that are no use.
#include "tests/support/dicom_builder.h"
#include "tests/tools/run_command.h"

#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

constexpr double kLongest = 1.0;  // seconds; sanitizers and busy machines get a multiple
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr double kAllowance = 20.0;
#else
constexpr double kAllowance = 3.0;
#endif

constexpr ImageFacts kFacts = {.rows = 8, .columns = 8};
const Bytes kPixels(128, 'x');

Bytes Native(const ImageFacts& facts, const Bytes& pixels) {
    return NativeFile(kExplicitUid, facts, pixels);
}

Bytes Rle(const Bytes& fragment) {
    return EncapsulatedFile(kRleUid, {.rows = 4, .columns = 4}, {fragment});
}

// Segments that claim to begin far behind the fragment's end, and inside its own header.
Bytes LyingSegments() {
    auto bytes = DicomBuilder().Number(2, 4).Number(0x7FFFFFF0, 4).Number(3, 4).Bytes();
    bytes.resize(64, 0xFF);
    bytes.resize(80, 5);
    return bytes;
}

void ExpectOneLine(const Arguments& arguments, const std::string& code, int status = 1) {
    const std::string beginning = "quorvex: " + arguments[1] + ": " + code;
    const auto result = ExpectStatus(status, arguments);
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
    const Case cases[] = {
        {"132 bytes", Bytes(132, 'a'), "QVM_ERROR_FAILED_TO_READ_FILE (10): ", false},
        {"junk", Bytes(100'000, 0x5A), "QVM_ERROR_FAILED_TO_PARSE_DICOM (11): ", false},
        {"no rows", Native({.rows = 0, .columns = 8}, kPixels),
         "QVM_ERROR_FAILED_TO_GET_PIXEL_DATA (9): "},
        {"no pixels", ImageFile(kExplicitUid, kFacts).Bytes(), "QVM_ERROR_"},
        {"ten bytes of a huge image", Native({.rows = 65535, .columns = 65535}, Bytes(10, 'x')),
         "QVM_ERROR_"},
        {"lying RLE offsets", Rle(LyingSegments()), "QVM_ERROR_FAILED_TO_DECOMPRESS (1): "},
        {"RLE cut in its header", Rle({2}), "QVM_ERROR_FAILED_TO_DECOMPRESS (1): "},
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

TEST(BadInput, FilesThatAreNone) {
    const ScratchFolder folder;
    const std::pair<std::string, const char*> kCases[] = {
        {folder.Path("missing.dcm"), "it cannot be opened: No such file or directory"},
        {folder.Path("."), "it cannot be read: Is a directory"},
    };
    for (const auto& [path, why] : kCases) {
        const auto sentence = std::string("QVM_ERROR_FAILED_TO_READ_FILE (10): ") + why;
        for (const auto* verb : {"frame", "render"})
            ExpectOneLine({verb, path, "-o", folder.Path("out")}, sentence, 3);
    }
    ExpectOneLine({"info", kCases[0].first}, "QVM_ERROR_FAILED_TO_READ_FILE (10): ", 3);
    EXPECT_TRUE(folder.Names().empty());
}

// What no decoder was built for is another trouble than damage, and so is a lack of memory.
TEST(BadInput, IsToldApartFromWhatThisBuildOrMachineLacks) {
    const ScratchFolder folder;
    const auto coded = [&](const char* name, const char* syntax) {
        return folder.Write(name, EncapsulatedFile(syntax, kFacts, {Bytes(64, 'x')}));
    };
    const std::pair<std::string, std::string> kCases[] = {
        {coded("video.dcm", "1.2.840.10008.1.2.4.100"),
         "QVM_ERROR_INVALID_TRANSFER_SYNTAX (24): "
         "its frames are coded as MPEG2 Main Profile / Main Level (1.2.840.10008.1.2.4.100), and "},
        {coded("unknown.dcm", "1.2.3.4.5"),
         "QVM_ERROR_INVALID_TRANSFER_SYNTAX (24): "
         "its transfer syntax 1.2.3.4.5 is none of the standard's"},
        {kState,
         "QVM_ERROR_FAILED_TO_GET_PIXEL_DATA (9): "
         "it has no image; it is Grayscale Softcopy Presentation State Storage"},
    };
    for (const auto& [path, sentence] : kCases)
        for (const auto* verb : {"frame", "render", "thumbnail"})
            ExpectOneLine({verb, path, "-o", folder.Path("out.png")}, sentence);
}

TEST(BadInput, FramesThatAreNot) {
    const ScratchFolder folder;
    const auto path = folder.Write("one.dcm", Native(kFacts, kPixels));
    const Arguments out = {"-o", folder.Path("out")};
    for (const auto* index : {"1", "-1", "2147483647"})
        for (const auto* verb : {"frame", "render"})
            ExpectOneLine(Arguments{verb, path, "--frame", index} + out,
                          "QVM_ERROR_INVALID_FRAME_INDEX (34): ");
    OutputOf(Arguments{"frame", path} + out);
    EXPECT_EQ(ReadAll(folder.Path("out")), std::string(128, 'x'));
}

TEST(BadInput, ManyElementsAreShownInTime) {
    const ScratchFolder folder;
    auto file = DicomBuilder::Part10(kExplicitUid);
    for (std::uint32_t i = 100'000; i > 0; --i)  // in descending order
        file.Add(0x00110000U + i % 0xF000 + 0x20000U * (i / 0xF000), "LO", "x ");
    const auto path = folder.Write("descending.dcm", file.Bytes());
    for (const auto& arguments : {Arguments{"info", path}, Arguments{"info", path, "--json"}})
        EXPECT_LT(ExpectStatus(0, arguments).seconds, kLongest * kAllowance);
}

TEST(BadInput, InfoGoesOnPastABadFile) {
    const ScratchFolder folder;
    const auto bad = folder.Write("bad.dcm", "no DICOM");
    const auto good = folder.Write("good.dcm", Native(kFacts, kPixels));
    EXPECT_TRUE(Has(ExpectStatus(1, {"info", bad, good}).output, "8 x 8, 1 frame"));
}

TEST(BadInput, NamesAndValuesCannotSteerATerminal) {
    const ScratchFolder folder;
    auto file = DicomBuilder::Part10(kExplicitUid);
    file.Add(tag::kPatientName, "PN", "A\x1B[31m\"\\\xFF");
    const auto path = folder.Write("evil\x1B[2J\n.dcm", file.Bytes());
    EXPECT_FALSE(Has(OutputOf({"info", path}), "\x1B"));
    EXPECT_FALSE(Has(ExpectStatus(3, {"info", path + "x"}).complaints, "\x1B"));
}

}  // namespace
}  // namespace quorvex::test
