// Overlay planes of real files, against what other readers found in them.
#include "pipeline/layers/embedded_overlay.h"
#include "pipeline/layers/overlay_planes.h"
#include "quorvex/CxDcmParser.h"
#include "tests/support/corpus.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace quorvex {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> LinesOf(const std::string& command) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string text;
    std::array<char, 4096> piece{};
    while (const auto count = std::fread(piece.data(), 1, piece.size(), pipe.get()))
        text.append(piece.data(), count);
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::string Sha256Of(const std::string& bytes) {
    const fs::path path = fs::temp_directory_path() / "quorvex_overlay_plane.bin";
    std::ofstream(path, std::ios::binary) << bytes;
    const auto lines = LinesOf("sha256sum '" + path.string() + "'");
    fs::remove(path);
    return lines.empty() ? "" : lines[0].substr(0, 64);
}

/// The bits of one plane, whether they are Overlay Data or lie in the frame.
std::vector<unsigned char> BitsOf(CxDcmParser& parser, const OverlayPlane& plane) {
    if (plane.HasOwnData()) {
        return ReadOverlayData(*parser.GetHeader(), plane).value_or(std::vector<unsigned char>());
    }
    unsigned char* data = nullptr;
    unsigned long size = 0;
    EXPECT_EQ(parser.GetAFrame(0, data, size, 0), QVM_SUCCESS);
    const std::unique_ptr<unsigned char[]> frame(data);
    CDcmObject onlyThisPlane(*parser.GetHeader());
    for (auto group = kFirstOverlayGroup; group <= kLastOverlayGroup; group += 2) {
        if (group != plane.group) onlyThisPlane.RemoveValue(group << 16 | 0x0010);
    }
    return EmbeddedOverlays(onlyThisPlane, {data, size});
}

std::string Unpacked(const std::vector<unsigned char>& bits, std::size_t count) {
    std::string unpacked(count, '\0');
    ForEachSetBit(bits, 0, count, [&](std::size_t bit) { unpacked[bit] = '\1'; });
    return unpacked;
}

TEST(CorpusOverlays, HoldTheBitsThatOtherReadersFound) {
    const fs::path corpus = test::CorpusFolder();
    if (corpus.empty()) GTEST_SKIP() << "QUORVEX_CORPUS is not set";
    const auto lines =
        LinesOf("python3 " QUORVEX_SOURCE_DIR "/tests/pipeline/overlay_expectations.py '" +
                (corpus / "MANIFEST.json").string() + "'");
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
}  // namespace quorvex
