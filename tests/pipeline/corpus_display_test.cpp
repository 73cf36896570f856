#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"
#include "tests/pipeline/corpus_expectations.h"
#include "tests/pipeline/shown.h"

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

namespace quorvex::pipeline_test {
namespace {

namespace fs = std::filesystem;

constexpr int kBlocks = 8;

struct Expectation {
    std::string file, transferSyntax, method;
    double center = 0, width = 0, tolerance = 0, mean = 0;
    std::vector<double> grid;
};

Expectation ParseLine(const std::string& line) {
    std::istringstream stream(line);
    std::string part;
    const auto next = [&] {
        std::getline(stream, part, '|');
        return part;
    };
    Expectation e;
    e.file = next();
    e.transferSyntax = next();
    e.method = next();
    for (double* value : {&e.center, &e.width, &e.tolerance, &e.mean}) *value = std::stod(next());
    std::istringstream grid(next());
    for (double value = 0; grid >> value;) e.grid.push_back(value);
    return e;
}

bool HasDecoder(const std::string& transferSyntax) {
    const char* const kWithout[] = {"1.2.840.10008.1.2.4.53", "1.2.840.10008.1.2.4.80",
                                    "1.2.840.10008.1.2.4.81"};
    return std::ranges::find(kWithout, transferSyntax) == std::end(kWithout);
}

// An image with a rescale and a modality LUT: here the rescale wins.
bool ShowsAnotherStage(const Expectation& e) {
    return e.method == "min-max window after modality LUT";
}

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

void ExpectShownAs(const fs::path& corpus, const Expectation& e) {
    SCOPED_TRACE(e.file + " " + e.method);
    CXDIPP dipp;
    CDcmApp app;
    ASSERT_EQ(dipp.Initialize(&app, CString((corpus / e.file).string()), {512, 512}, 0),
              QVM_SUCCESS);
    CxDcmParser parser;
    ASSERT_EQ(parser.Initialize(&app, CString((corpus / e.file).string()), 0), QVM_SUCCESS);
    const CDcmObject& header = *parser.GetHeader();
    CDcmItem lut;
    const bool hasLut = header.GetValue(tag::kVOILUTSequence, lut) == kDcmSuccess;
    if (hasLut && e.method.starts_with("window")) return;
    const CSize image{Read<int>(header, tag::kColumns).value_or(0),
                      Read<int>(header, tag::kRows).value_or(0)};
    const Values values = Shown(dipp);
    const auto result = test::ResultOf(dipp);
    ASSERT_EQ(result.pixelSize, 1);
    const double sum = std::accumulate(values.begin(), values.end(), 0.0);
    // Whole-number windows and the resampled last columns allow one more level.
    const double tolerance = e.tolerance + 1.0;
    EXPECT_NEAR(sum / static_cast<double>(values.size()), e.mean, tolerance);
    ASSERT_EQ(e.grid.size(), static_cast<std::size_t>(kBlocks * kBlocks));
    for (int block = 0; block < kBlocks * kBlocks; ++block) {
        EXPECT_NEAR(BlockMean(values, result.size.cx, image, block / kBlocks, block % kBlocks),
                    e.grid[static_cast<std::size_t>(block)], tolerance)
            << "block " << block;
    }
}

TEST(CorpusDisplay, LooksAsIndependentToolsSay) {
    const fs::path corpus = test::CorpusFolder();
    if (corpus.empty()) GTEST_SKIP() << "QUORVEX_CORPUS is not set";
    const auto lines = ExpectationsBy("display_expectations.py");
    ASSERT_FALSE(lines.empty());
    for (const auto& line : lines) {
        const Expectation expectation = ParseLine(line);
        if (!HasDecoder(expectation.transferSyntax) || ShowsAnotherStage(expectation)) continue;
        ExpectShownAs(corpus, expectation);
    }
}

}  // namespace
}  // namespace quorvex::pipeline_test
