// Every attribute that the code reads, in a representation that its tag does not promise.
#include "foundation/dicom/model/dictionary.h"
#include "quorvex/CXGSPSObject.h"
#include "tests/reliability/measured_child.h"
#include "tests/support/dicom_builder.h"
#include "tests/support/every_route.h"
#include "tests/support/named_tags.h"
#include "tests/support/record.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>

namespace quorvex::test {
namespace {

bool IsOfADataSet(std::uint32_t tag) {
    const std::uint32_t group = tag >> 16;
    return group > 2 && group < 0x7FE0;
}

std::vector<std::uint32_t> TagsThatAreRead() {
    std::vector<std::uint32_t> tags;
    for (const auto& [name, tag] : NamedTags()) {
        if (IsOfADataSet(tag)) tags.push_back(tag);
    }
    return tags;
}

bool IsSequence(std::uint32_t tag) {
    return dicom::LookUp(tag).vr == MC_VR_SQ;
}

/// How an attribute is spoiled: under a representation of its own choice.
struct Spoiler {
    const char* what;
    const char* vr;
    std::string_view value;
};

using namespace std::string_view_literals;
constexpr Spoiler kSpoilers[] = {
    {"a sequence", "SQ", "\xFE\xFF\x00\xE0\x00\x00\x00\x00"sv},
    {"a sequence of junk", "SQ", "\xFE\xFF\x00\xE0\xFF\xFF\xFF\xFFjunkjunk"sv},
    {"bytes", "OB", "\x01\x02\x03"sv},
    {"nothing", "UN", ""sv},
    {"two numbers", "US", "\xFF\xFF\xFE\xFF"sv},
    {"large numbers", "FD", "\xFF\xFF\xFF\xFF\xFF\xFF\xEF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xEF\x7F"sv},
    {"no number", "FD", "\x00\x00\x00\x00\x00\x00\xF8\x7F"sv},
    {"text", "LT", "-1.5e9\\\xC3\xBC\\\\x"sv},
};

void AddGood(DicomBuilder& out, std::uint32_t tag) {
    static const std::map<std::uint32_t, const char*> kValues = {
        {0x00080005, "ISO_IR 100"},   {0x00181600, "POLYGONAL "}, {0x00280002, "1 "},
        {0x00280004, "MONOCHROME2 "}, {0x00280006, "0 "},         {0x00280008, "1 "},
        {0x00280102, "15"},           {0x00280103, "0 "},         {0x60000100, "1 "},
        {0x60000102, "0 "},           {0x00700023, "POLYLINE"},
    };
    const auto found = kValues.find(tag);
    // Numbers as text: every reader takes them, alone or in pairs.
    out.Add(tag, "LO", found != kValues.end() ? found->second : "16\\16");
}

void AddAll(DicomBuilder& out, const std::vector<std::uint32_t>& tags, std::uint32_t spoiled,
            const Spoiler& spoiler, int depth);

void AddSequence(DicomBuilder& out, std::uint32_t tag, const std::vector<std::uint32_t>& tags,
                 std::uint32_t spoiled, const Spoiler& spoiler, int depth) {
    constexpr std::uint32_t kHolders[] = {0x00081115, 0x00283110, 0x00700001, 0x52009229,
                                          0x52009230};
    const bool holdsMore = std::ranges::find(kHolders, tag) != std::end(kHolders);
    if (depth == 2 || (depth == 1 && holdsMore)) return;
    out.Sequence(tag).Item();
    AddAll(out, tags, spoiled, spoiler, holdsMore ? depth + 1 : 2);
    out.EndItem().EndSequence();
}

void AddAll(DicomBuilder& out, const std::vector<std::uint32_t>& tags, std::uint32_t spoiled,
            const Spoiler& spoiler, int depth) {
    for (const std::uint32_t tag : tags) {
        if (tag == spoiled) {
            out.Add(tag, spoiler.vr, spoiler.value);
        } else if (IsSequence(tag)) {
            AddSequence(out, tag, tags, spoiled, spoiler, depth);
        } else {
            AddGood(out, tag);
        }
    }
}

DicomBuilder SpoiltFile(const std::vector<std::uint32_t>& tags, std::uint32_t spoiled,
                        const Spoiler& spoiler) {
    auto file = DicomBuilder::Part10(kExplicitUid);
    AddAll(file, tags, spoiled, spoiler, 0);
    if (spoiled == 0x7FE00010) return std::move(file.Add(spoiled, spoiler.vr, spoiler.value));
    return std::move(file.Add(0x7FE00010, "OW", std::string(512, 'x')));
}

/// Reads presentation data with every shutter: as an image, and as a state whose references all
/// name image and frame 16.
void ThroughPresentation(const DicomBuilder& file, std::uint32_t spoiled) {
    auto memory = file.File();
    CDcmObject object;
    ASSERT_EQ(ReadUpTo(object, memory, kToTheEnd), kDcmSuccess);
    for (const char* shape : {"RECTANGULAR", "CIRCULAR", "POLYGONAL", "BITMAP"}) {
        if (spoiled != 0x00181600) object.SetValue(0x00181600, shape);
        for (const char* image : {"", "16"}) {
            Record record;
            EXPECT_EQ(CXGSPSObject().GSPSApplier(&object, &record, image, 16), 1) << shape;
        }
    }
}

TEST(WrongType, NoAttributeThatIsReadDoesHarm) {
    const auto tags = TagsThatAreRead();
    ASSERT_GT(tags.size(), 100U);
    for (const auto& spoiler : kSpoilers) {
        auto spoiled = tags;
        spoiled.push_back(0x7FE00010);
        for (const std::uint32_t tag : spoiled) {
            const auto file = SpoiltFile(tags, tag, spoiler);
            const auto work = [&] {
                ThroughEverything(file.Bytes());
                ThroughPresentation(file, tag);
            };
            EXPECT_NO_FATAL_FAILURE(work()) << std::hex << tag << " is " << spoiler.what;
        }
    }
}

/// The file that all of these are made from is itself shown.
TEST(WrongType, TheFileThatIsSpoiltIsGood) {
    const auto tags = TagsThatAreRead();
    auto memory = SpoiltFile(tags, 0, kSpoilers[0]).File();
    CDcmObject object;
    ASSERT_EQ(ReadUpTo(object, memory, kToTheEnd), kDcmSuccess);
    CDcmItem item;
    EXPECT_EQ(object.GetValue(0x00700001, item), kDcmSuccess);
    EXPECT_EQ(item.GetValue(0x00700009, item), kDcmSuccess);
    Record record;
    CXGSPSObject().GSPSApplier(&object, &record, "16", 16);
    EXPECT_EQ(record.displayedAreaLeft, 16);
    EXPECT_EQ(record.graphicObjects.GetSize(), 1);
    int rows = 0;
    EXPECT_EQ(object.GetValue(0x00280010, rows), kDcmSuccess);
    EXPECT_EQ(rows, 16);
}

}  // namespace
}  // namespace quorvex::test
