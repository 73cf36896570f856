// Real files, against what independent programs show and find in them.
#include "tests/support/corpus.h"

#include "pipeline/layers/embedded_overlay.h"
#include "pipeline/layers/overlay_planes.h"
#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"
#include "tests/pipeline/shown.h"
#include "tests/support/scratch_folder.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <numeric>
#include <sstream>
#include <string>
#include <tuple>

namespace quorvex::pipeline_test {
namespace {

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
    return parts;
}

/// The lines that a command prints.
std::vector<std::string> LinesOf(const std::string& command) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string text;
    for (int c = 0; (c = std::fgetc(pipe.get())) != EOF;) text += static_cast<char>(c);
    return Split(text, '\n');
}

/// What a script of this folder prints of the corpus.
std::vector<std::string> ExpectationsBy(const std::string& script) {
    return LinesOf("python3 " QUORVEX_SOURCE_DIR "/tests/pipeline/" + script + " '" +
                   (test::CorpusFolder() / "MANIFEST.json").string() + "'");
}

// --- Display -------------------------------------------------------------------------------------

constexpr int kBlocks = 8;
const std::string kWithoutDecoder[] = {"1.2.840.10008.1.2.4.53", "1.2.840.10008.1.2.4.80",
                                       "1.2.840.10008.1.2.4.81"};

// Blocks divide the whole image, of which the result may lack the last columns.
double BlockMean(const Values& rows, int resultWidth, CSize image, int row, int column) {
    double sum = 0;
    int count = 0;
    const int right = std::min(image.cx * (column + 1) / kBlocks, resultWidth);
    for (int y = image.cy * row / kBlocks; y < image.cy * (row + 1) / kBlocks; ++y) {
        for (int x = image.cx * column / kBlocks; x < right; ++x) {
            sum += rows[static_cast<std::size_t>(y * resultWidth + x)];
            ++count;
        }
    }
    return sum / count;
}

/// A row of display_expectations.py.
void ExpectShownAs(const std::string& row) {
    SCOPED_TRACE(row.substr(0, 150));
    const auto parts = Split(row, '|');
    ASSERT_EQ(parts.size(), 8U);
    const auto& [transferSyntax, method] = std::tie(parts[1], parts[2]);
    // An image with a rescale and a modality LUT: here the rescale wins.
    const bool isOtherStage = method == "min-max window after modality LUT";
    if (isOtherStage || std::ranges::count(kWithoutDecoder, transferSyntax) != 0) return;
    const CString path((test::CorpusFolder() / parts[0]).string());
    CXDIPP dipp;
    CDcmApp app;
    ASSERT_EQ(dipp.Initialize(&app, path, {512, 512}, 0), QVM_SUCCESS);
    CxDcmParser parser;
    ASSERT_EQ(parser.Initialize(&app, path, 0), QVM_SUCCESS);
    const CDcmObject& header = *parser.GetHeader();
    CDcmItem lut;
    const bool hasLut = header.GetValue(tag::kVOILUTSequence, lut) == kDcmSuccess;
    if (hasLut && method.starts_with("window")) return;
    const CSize image{Read<int>(header, tag::kColumns).value_or(0),
                      Read<int>(header, tag::kRows).value_or(0)};
    const Values values = Shown(dipp);
    const auto result = test::ResultOf(dipp);
    ASSERT_EQ(result.pixelSize, 1);
    const double sum = std::accumulate(values.begin(), values.end(), 0.0);
    // Whole-number windows and the resampled last columns allow one more level.
    const double tolerance = std::stod(parts[5]) + 1.0;
    EXPECT_NEAR(sum / static_cast<double>(values.size()), std::stod(parts[6]), tolerance);
    const auto grid = Split(parts[7], ' ');
    ASSERT_EQ(grid.size(), static_cast<std::size_t>(kBlocks * kBlocks));
    for (int block = 0; block < kBlocks * kBlocks; ++block) {
        EXPECT_NEAR(BlockMean(values, result.size.cx, image, block / kBlocks, block % kBlocks),
                    std::stod(grid[static_cast<std::size_t>(block)]), tolerance)
            << "block " << block;
    }
}

TEST(CorpusDisplay, LooksAsIndependentToolsSay) {
    if (test::CorpusFolder().empty()) GTEST_SKIP() << "QUORVEX_CORPUS is not set";
    const auto rows = ExpectationsBy("display_expectations.py");
    ASSERT_FALSE(rows.empty());
    for (const auto& row : rows) ExpectShownAs(row);
}

// --- Overlays ------------------------------------------------------------------------------------

std::string Sha256Of(const std::string& bytes) {
    const test::ScratchFolder folder;
    const auto lines = LinesOf("sha256sum '" + folder.Write("plane", bytes) + "'");
    return lines.empty() ? "" : lines[0].substr(0, 64);
}

/// The bits of one plane, whether they are Overlay Data or lie in the frame.
std::vector<unsigned char> BitsOf(CxDcmParser& parser, const OverlayPlane& plane) {
    if (plane.HasOwnData()) {
        return ReadOverlayData(*parser.GetHeader(), plane).value_or(std::vector<unsigned char>());
    }
    const auto frame = test::FrameOf(parser);
    EXPECT_TRUE(frame.IsDone());
    CDcmObject onlyThisPlane(*parser.GetHeader());
    for (auto group = tag::kFirstOverlayGroup; group <= tag::kLastOverlayGroup; group += 2)
        if (group != plane.group) onlyThisPlane.RemoveValue(tag::InGroup(group, tag::kOverlayRows));
    return EmbeddedOverlays(onlyThisPlane, frame.bytes);
}

std::string Unpacked(const std::vector<unsigned char>& bits, std::size_t count) {
    std::string unpacked(count, '\0');
    ForEachSetBit(bits, 0, count, [&](std::size_t bit) { unpacked[bit] = '\1'; });
    return unpacked;
}

TEST(CorpusOverlays, HoldTheBitsThatOtherReadersFound) {
    const auto corpus = test::CorpusFolder();
    if (corpus.empty()) GTEST_SKIP() << "QUORVEX_CORPUS is not set";
    const auto lines = ExpectationsBy("overlay_expectations.py");
    ASSERT_FALSE(lines.empty());
    for (const auto& line : lines) {
        SCOPED_TRACE(line);
        const auto parts = Split(line, '|');
        ASSERT_EQ(parts.size(), 4U);
        CDcmApp app;
        CxDcmParser parser;
        ASSERT_EQ(parser.Initialize(&app, CString((corpus / parts[0]).string()), 0), QVM_SUCCESS);
        const auto plane =
            ReadOverlayPlane(*parser.GetHeader(),
                             static_cast<std::uint32_t>(std::stoul(parts[1], nullptr, 16)), true);
        ASSERT_TRUE(plane.has_value());
        const std::string unpacked = Unpacked(BitsOf(parser, *plane), plane->size.BitCount());
        EXPECT_EQ(std::ranges::count(unpacked, '\1'), std::stol(parts[2]));
        EXPECT_EQ(Sha256Of(unpacked), parts[3]);
    }
}

}  // namespace
}  // namespace quorvex::pipeline_test
