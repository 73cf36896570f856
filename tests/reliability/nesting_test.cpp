// Sequences nested without end: nothing recurses deeper than the limit.
#include "foundation/types/limits.h"
#include "tests/reliability/hostile_image.h"
#include "tests/reliability/measured_child.h"
#include "tests/support/every_route.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace quorvex::test {
namespace {

constexpr int kManyLevels = 1'000'000;

struct Nesting {
    const char* what;
    std::string_view uid;
    bool isUndefined;
    bool isClosed;
    bool isBare = false;
};

constexpr Nesting kNestings[] = {
    {"undefined lengths, open", kExplicitUid, true, false},
    {"undefined lengths, closed", kExplicitUid, true, true},
    {"defined lengths", kExplicitUid, false, true},
    {"implicit, undefined", kImplicitUid, true, false},
    {"implicit, defined", kImplicitUid, false, true},
    {"big endian", kBigEndianUid, true, true},
    {"without meta information", kImplicitUid, true, false, true},
    {"without meta information, defined", kImplicitUid, false, true, true},
};

/// Levels with a text in each and, where there is room for it, an image around them.
DicomBuilder NestedFile(const Nesting& nesting, int levels) {
    const bool isExplicit = nesting.uid != kImplicitUid;
    auto file = nesting.isBare ? DicomBuilder(false) : DicomBuilder::Part10(nesting.uid);
    file.Add(tag::kSpecificCharacterSet, "CS", "ISO_IR 100")
        .Add(tag::kSOPInstanceUID, "UI", "1.2.3.4 ");
    const std::uint32_t levelBytes = isExplicit ? 20 : 16;
    for (int level = 0; level < levels; ++level) {
        const auto inside = levelBytes * static_cast<std::uint32_t>(levels - 1 - level);
        file.Sequence(tag::kReferencedImageSequence, nesting.isUndefined ? 0xFFFFFFFF : inside + 8);
        file.Item(nesting.isUndefined ? 0xFFFFFFFF : inside);
    }
    for (int level = 0; nesting.isUndefined && nesting.isClosed && level < levels; ++level)
        file.EndItem().EndSequence();
    return std::move(file.Add(tag::kPatientName, "PN", "A^B "));
}

TEST(Nesting, AMillionLevelsOverflowNoStack) {
    for (const auto& nesting : kNestings) {
        const auto file = NestedFile(nesting, kManyLevels);
        const auto work = [&] {
            ThroughEverything(file.Bytes());
            auto memory = file.File();
            CDcmObject object;
            (void)ReadUpTo(object, memory, kToTheEnd);
            (void)ReadBare(object, memory, kToTheEnd);
        };
        ExpectCost(nesting.what, 4.0, work, 20 * file.Size());
    }
}

TEST(Nesting, TheDeepestLevelIsReadCopiedWrittenAndTheNextRefused) {
    for (const auto& nesting : kNestings) {
        if (nesting.isBare || !nesting.isClosed) continue;
        for (const int levels : {kDeepestNesting, kDeepestNesting + 1}) {
            SCOPED_TRACE(std::string(nesting.what) + " " + std::to_string(levels));
            auto memory = NestedFile(nesting, levels).File();
            CDcmObject object;
            ForgetLimit();
            const bool isTaken = levels == kDeepestNesting;
            EXPECT_EQ(ReadUpTo(object, memory, kToTheEnd) == kDcmSuccess, isTaken);
            EXPECT_EQ(LatestLimit(), isTaken ? Limit::kNone : Limit::kDeepestNesting);
            if (!isTaken) continue;
            CDcmObject again = object;
            again.SetValue(tag::kPatientID, "copy");
            const ScratchFolder folder;
            const CString path = folder.Path("nested");
            ASSERT_EQ(again.WriteFile(path), kDcmSuccess);
            CDcmObject read;
            read.Open(path);
            EXPECT_EQ(read.ReadFile(nullptr, nullptr, nullptr), kDcmSuccess);
        }
    }
}

/// An object made through the operations cannot get deeper than one that was read.
TEST(Nesting, ItemsPutIntoItemsEndAtTheSameLevel) {
    CDcmItem item;
    item.SetValue(tag::kPatientName, "A^B");
    int levels = 0;
    for (int i = 0; i < kManyLevels / 10; ++i) {
        CDcmItem outer;
        if (outer.SetValue(tag::kReferencedImageSequence, &item) != kDcmSuccess) break;
        item = outer;
        ++levels;
    }
    EXPECT_EQ(levels, kDeepestNesting);
    EXPECT_EQ(LatestLimit(), Limit::kDeepestNesting);
}

}  // namespace
}  // namespace quorvex::test
