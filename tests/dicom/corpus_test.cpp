/// Every real file, read whole, against what pydicom makes of it.
#include "tests/support/corpus.h"

#include "quorvex/DicomObject.h"
#include "tests/support/memory_file.h"
#include "tests/support/scratch_folder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <vector>
#include <zlib.h>

namespace quorvex {
namespace {

struct Dump {
    std::vector<std::string> lines;  ///< as tests/support/dump_elements.py writes them
    std::string pixelOffset;
    bool isUnread = false;
};

/// Files where the checker is wrong, or reads a damaged file in another way than we mean to.
const std::map<std::string, const char*> kCheckerFaults = {
    {"emri_small_jpeg_2k_lossless_too_short.dcm", "drops Pixel Data that breaks off; we keep it"},
    {"SC_rgb_jpeg.dcm", "counts 12 bytes for an implicit VR header under an explicit VR label"},
    {"no_preamble_dicm_in_data.dcm", "takes letters of a value for the marker of a file"},
    {"no_meta.dcm", "reads on behind a stray byte; we leave that to the search for a data set"},
};

std::map<std::string, Dump> CheckersDumps(const std::vector<std::filesystem::path>& files) {
    const test::ScratchFolder folder;
    std::string names;
    for (const auto& file : files) names += file.string() + '\n';
    const std::string command =
        "/usr/bin/python3 " QUORVEX_SOURCE_DIR "/tests/support/dump_elements.py < " +
        folder.Write("files", names) + " 2>/dev/null > " + folder.Path("dumps");
    std::map<std::string, Dump> dumps;
    if (std::system(command.c_str()) != 0) return dumps;
    std::istringstream lines(test::ReadAll(folder.Path("dumps")));
    Dump* dump = nullptr;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("file ")) {
            dump = &dumps[line.substr(5)];
        } else if (line.starts_with("pixels ")) {
            dump->pixelOffset = line.substr(7);
        } else if (line.starts_with("unread ")) {
            dump->isUnread = true;
        } else {
            dump->lines.push_back(line);
        }
    }
    return dumps;
}

MC_STATUS AddLine(const DcmElementView& element, void* user) {
    char line[96];
    if (element.vr == MC_VR_SQ) {
        std::snprintf(line, sizeof line, "%d %08X items %lu", element.depth, element.tag,
                      element.valueCount);
    } else {
        const uLong crc = crc32_z(0, element.data, element.length);
        std::snprintf(line, sizeof line, "%d %08X %lu %lu", element.depth, element.tag,
                      element.length, element.length == 0 ? 0 : crc);
    }
    static_cast<Dump*>(user)->lines.emplace_back(line);
    return kMcContinue;
}

DCMRESULT ReadAnyway(CDcmObject& object, test::MemoryFile& file, std::uint32_t stopTag,
                     unsigned long* offset) {
    if (test::ReadUpTo(object, file, stopTag, offset) == kDcmSuccess) return kDcmSuccess;
    return test::ReadBare(object, file, stopTag, offset);
}

/// Tag and depth have to be equal; the rest as well, unless the checker has converted the value.
std::string FirstDifference(const Dump& ours, const Dump& theirs) {
    for (std::size_t i = 0; i < std::max(ours.lines.size(), theirs.lines.size()); ++i) {
        const std::string a = i < ours.lines.size() ? ours.lines[i] : "(end)";
        const std::string b = i < theirs.lines.size() ? theirs.lines[i] : "(end)";
        const auto converted = b.find(" converted");
        if (converted != std::string::npos && a.substr(0, converted) == b.substr(0, converted))
            continue;
        if (a != b) return "ours " + a + ", theirs " + b;
    }
    return "";
}

TEST(RealDicomFiles, HaveTheElementsThatPydicomFinds) {
    const auto files = test::RealFiles();
    auto checkers = CheckersDumps(files);
    if (checkers.empty()) GTEST_SKIP() << "no pydicom here";
    int compared = 0;
    for (const auto& path : files) {
        const Dump& theirs = checkers[path.string()];
        if (theirs.isUnread || kCheckerFaults.contains(path.filename().string())) continue;
        test::MemoryFile file{.bytes = test::BytesOfFile(path)};
        CDcmObject object;
        if (ReadAnyway(object, file, test::kToTheEnd, nullptr) != kDcmSuccess) {
            ADD_FAILURE() << path << ": " << object.GetErrorMessage().ToUtf8();
            continue;
        }
        Dump ours;
        EXPECT_EQ(object.WalkElements(&ours, AddLine), kDcmSuccess);
        EXPECT_EQ(FirstDifference(ours, theirs), "") << path;
        ++compared;
        if (theirs.pixelOffset.empty()) continue;
        unsigned long offset = 0;
        EXPECT_EQ(ReadAnyway(object, file, test::kUpToPixelData, &offset), kDcmSuccess) << path;
        EXPECT_EQ(std::to_string(offset), theirs.pixelOffset) << path;
    }
    EXPECT_GT(compared, 60);
}

}  // namespace
}  // namespace quorvex
