// What the command does with inputs that are no use.
#include "run_command.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

constexpr const char* kExplicit = "1.2.840.10008.1.2.1";
constexpr const char* kRle = "1.2.840.10008.1.2.5";
constexpr double kLongest = 1.0;  // seconds; sanitizers and busy machines get a multiple
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr double kAllowance = 20.0;
#else
constexpr double kAllowance = 3.0;
#endif

struct Shape {
    unsigned rows;
    unsigned columns;
    unsigned bits;
};

std::string ShapeElements(const Shape& shape) {
    std::string elements =
        Element(0x00280002, "US", Number16(1)) + Element(0x00280004, "CS", "MONOCHROME2 ");
    if (shape.rows > 0) elements += Element(0x00280010, "US", Number16(shape.rows));
    return elements + Element(0x00280011, "US", Number16(shape.columns)) +
           Element(0x00280100, "US", Number16(shape.bits)) +
           Element(0x00280101, "US", Number16(shape.bits)) +
           Element(0x00280102, "US", Number16(shape.bits - 1)) +
           Element(0x00280103, "US", Number16(0));
}

std::string NativeImage(const Shape& shape, std::size_t bytes) {
    return Part10(kExplicit,
                  ShapeElements(shape) + Element(0x7FE00010, "OW", std::string(bytes, 'x')));
}

std::string RleImage(const Shape& shape, const std::string& fragment) {
    const std::string item = Number16(0xFFFE) + Number16(0xE000);
    const std::string end = Number16(0xFFFE) + Number16(0xE0DD) + Number32(0);
    return Part10(kRle, ShapeElements(shape) + Number16(0x7FE0) + Number16(0x0010) + "OB" +
                            Number16(0) + Number32(0xFFFFFFFF) + item + Number32(0) + item +
                            Number32(static_cast<std::uint32_t>(fragment.size())) + fragment + end);
}

// Segments that claim to begin far behind the fragment's end, and inside its own header.
std::string LyingSegments() {
    std::string header = Number32(2) + Number32(0x7FFFFFF0) + Number32(3);
    header.resize(64, '\xFF');
    return header + std::string(16, '\x05');
}

std::string NestedSequences(int depth) {
    std::string bytes;
    for (int i = 0; i < depth; ++i)
        bytes += Number16(0x0008) + Number16(0x1140) + "SQ" + Number16(0) + Number32(0xFFFFFFFF) +
                 Number16(0xFFFE) + Number16(0xE000) + Number32(0xFFFFFFFF);
    return Part10(kExplicit, bytes);
}

std::string DescendingElements(int count) {
    std::string bytes;
    for (int i = count; i > 0; --i)
        bytes += Element(0x00110000U + static_cast<std::uint32_t>(i % 0xF000) +
                             0x20000U * static_cast<std::uint32_t>(i / 0xF000),
                         "LO", "x ");
    return Part10(kExplicit, bytes);
}

std::string Junk(std::size_t size) {
    std::string bytes;
    for (std::uint32_t state = 1; bytes.size() < size; state = state * 1664525U + 1013904223U)
        bytes += static_cast<char>(state >> 24);
    return bytes;
}

void ExpectOneLine(const CommandResult& result, const std::string& path, const std::string& code) {
    const std::string beginning = "quorvex: " + path + ": " + code;
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.complaints.substr(0, beginning.size()), beginning);
    EXPECT_EQ(std::ranges::count(result.complaints, '\n'), 1) << result.complaints;
    EXPECT_LT(result.seconds, kLongest * kAllowance);
}

struct BadFile {
    const char* name;
    std::string bytes;
    const char* code;
    bool isReadable;  // as far as `info` is concerned
};

std::vector<BadFile> BadFiles() {
    return {
        {"132 bytes", std::string(132, 'a'), "QVM_ERROR_FAILED_TO_READ_FILE (10): ", false},
        {"junk", Junk(100'000), "QVM_ERROR_FAILED_TO_PARSE_DICOM (11): ", false},
        {"no rows", NativeImage({0, 8, 16}, 128), "QVM_ERROR_FAILED_TO_GET_PIXEL_DATA (9): ", true},
        {"no pixels", Part10(kExplicit, ShapeElements({8, 8, 16})), "QVM_ERROR_", true},
        {"ten bytes of a huge image", NativeImage({65535, 65535, 16}, 10), "QVM_ERROR_", true},
        {"lying RLE offsets", RleImage({4, 4, 16}, LyingSegments()),
         "QVM_ERROR_FAILED_TO_DECOMPRESS (1): ", true},
        {"RLE cut in its header", RleImage({4, 4, 16}, "\x02"),
         "QVM_ERROR_FAILED_TO_DECOMPRESS (1): ", true},
    };
}

TEST(BadInput, AnswersWithOneLineAndStatusOne) {
    const ScratchFolder folder;
    for (const auto& bad : BadFiles()) {
        SCOPED_TRACE(bad.name);
        const auto path = folder.Write("bad.dcm", bad.bytes);
        for (const auto* verb : {"frame", "render"})
            ExpectOneLine(RunCommand({verb, path, "-o", folder.Path("out")}), path, bad.code);
        ExpectOneLine(RunCommand({"frame", path, "--all", "-o", folder.Path("out")}), path,
                      bad.code);
        const auto shown = RunCommand({"info", path});
        EXPECT_EQ(shown.status, bad.isReadable ? 0 : 1) << shown.complaints;
        EXPECT_EQ(folder.Names(), std::vector<std::string>{"bad.dcm"});
    }
}

TEST(BadInput, ShortPixelDataIsNeverACrash) {
    const ScratchFolder folder;
    for (const std::size_t bytes : {0U, 2U, 126U}) {
        const auto path = folder.Write("short.dcm", NativeImage({8, 8, 16}, bytes));
        for (const auto* verb : {"frame", "render"}) {
            const auto result = RunCommand({verb, path, "-o", folder.Path("out")});
            EXPECT_LE(result.status, 1) << verb << ' ' << bytes;
        }
    }
}

TEST(BadInput, FilesThatAreNone) {
    const ScratchFolder folder;
    for (const auto& path : {folder.Path("missing.dcm"), folder.Path(".")}) {
        constexpr const char* kCode = "QVM_ERROR_FAILED_TO_READ_FILE (10): ";
        ExpectOneLine(RunCommand({"info", path}), path, kCode);
        ExpectOneLine(RunCommand({"render", path, "-o", folder.Path("out")}), path, kCode);
    }
    EXPECT_TRUE(folder.Names().empty());
}

TEST(BadInput, FramesThatAreNot) {
    const ScratchFolder folder;
    const auto path = folder.Write("one.dcm", NativeImage({8, 8, 16}, 128));
    for (const auto* index : {"1", "-1", "2147483647"}) {
        for (const auto* verb : {"frame", "render"})
            ExpectOneLine(RunCommand({verb, path, "--frame", index, "-o", folder.Path("out")}),
                          path, "QVM_ERROR_INVALID_FRAME_INDEX (34): ");
    }
    EXPECT_EQ(RunCommand({"frame", path, "-o", folder.Path("out")}).status, 0);
    EXPECT_EQ(ReadAll(folder.Path("out")), std::string(128, 'x'));
}

TEST(BadInput, HostileStructureIsShownOrRefusedInTime) {
    const ScratchFolder folder;
    const auto nested = folder.Write("nested.dcm", NestedSequences(20'000));
    const auto descending = folder.Write("descending.dcm", DescendingElements(100'000));
    for (const auto& path : {nested, descending}) {
        for (const auto& verb : {std::vector<std::string>{"info", path},
                                 {"info", path, "--json"},
                                 {"render", path, "-o", folder.Path("out")}}) {
            const auto result = RunCommand(verb);
            EXPECT_LE(result.status, 1) << path;
            EXPECT_LT(result.seconds, kLongest * kAllowance) << path << ' ' << verb.front();
        }
    }
    EXPECT_EQ(RunCommand({"info", descending}).status, 0);
}

TEST(BadInput, InfoGoesOnPastABadFile) {
    const ScratchFolder folder;
    const auto bad = folder.Write("bad.dcm", "no DICOM");
    const auto good = folder.Write("good.dcm", NativeImage({8, 8, 16}, 128));
    const auto result = RunCommand({"info", bad, good});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("8 x 8, 1 frame"), std::string::npos);
    EXPECT_EQ(std::ranges::count(result.complaints, '\n'), 1);
}

TEST(BadInput, NamesAndValuesCannotSteerATerminal) {
    const ScratchFolder folder;
    const auto path = folder.Write(
        "evil\x1B[2J\n.dcm", Part10(kExplicit, Element(0x00100010, "PN", "A\x1B[31m\"\\\xFF")));
    const auto shown = RunCommand({"info", path});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.output.find('\x1B'), std::string::npos);
    const auto missing = RunCommand({"info", path + "x"});
    EXPECT_EQ(missing.complaints.find('\x1B'), std::string::npos);
    EXPECT_EQ(std::ranges::count(missing.complaints, '\n'), 1);
}

}  // namespace
}  // namespace quorvex::test
