// Overlay planes of real files, against what other readers found in them.
#include "pipeline/layers/embedded_overlay.h"
#include "pipeline/layers/overlay_planes.h"
#include "quorvex/Tags.h"
#include "tests/pipeline/corpus_expectations.h"
#include "tests/support/answers.h"
#include "tests/support/scratch_folder.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

namespace quorvex::pipeline_test {
namespace {

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
    for (auto group = kFirstOverlayGroup; group <= kLastOverlayGroup; group += 2) {
        if (group != plane.group) onlyThisPlane.RemoveValue(tag::InGroup(group, tag::kOverlayRows));
    }
    return EmbeddedOverlays(onlyThisPlane, frame.bytes);
}

std::string Unpacked(const std::vector<unsigned char>& bits, std::size_t count) {
    std::string unpacked(count, '\0');
    ForEachSetBit(bits, 0, count, [&](std::size_t bit) { unpacked[bit] = '\1'; });
    return unpacked;
}

TEST(CorpusOverlays, HoldTheBitsThatOtherReadersFound) {
    const std::filesystem::path corpus = test::CorpusFolder();
    if (corpus.empty()) GTEST_SKIP() << "QUORVEX_CORPUS is not set";
    const auto lines = ExpectationsBy("overlay_expectations.py");
    ASSERT_FALSE(lines.empty());
    for (const auto& line : lines) {
        SCOPED_TRACE(line);
        std::istringstream parts(line);
        std::string file, group, setBits, digest;
        for (auto* part : {&file, &group, &setBits, &digest}) std::getline(parts, *part, '|');
        CDcmApp app;
        CxDcmParser parser;
        ASSERT_EQ(parser.Initialize(&app, CString((corpus / file).string()), 0), QVM_SUCCESS);
        const auto plane = ReadOverlayPlane(
            *parser.GetHeader(), static_cast<std::uint32_t>(std::stoul(group, nullptr, 16)), true);
        ASSERT_TRUE(plane.has_value());
        const std::string unpacked = Unpacked(BitsOf(parser, *plane), plane->size.BitCount());
        EXPECT_EQ(std::ranges::count(unpacked, '\1'), std::stol(setBits));
        EXPECT_EQ(Sha256Of(unpacked), digest);
    }
}

}  // namespace
}  // namespace quorvex::pipeline_test
