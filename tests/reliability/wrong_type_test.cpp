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

std::vector<std::uint32_t> TagsThatAreRead() {
    std::vector<std::uint32_t> tags;
    for (const auto& [name, tag] : NamedTags())
        if (tag > 0x0002FFFF && tag < tag::kExtendedOffsetTable) tags.push_back(tag);
    return tags;
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
        {tag::kSpecificCharacterSet, "ISO_IR 100"},
        {tag::kShutterShape, "POLYGONAL "},
        {tag::kSamplesPerPixel, "1 "},
        {tag::kPhotometricInterpretation, "MONOCHROME2 "},
        {tag::kPlanarConfiguration, "0 "},
        {tag::kNumberOfFrames, "1 "},
        {tag::kHighBit, "15"},
        {tag::kPixelRepresentation, "0 "},
        {tag::kOverlayBitsAllocated, "1 "},
        {tag::kOverlayBitPosition, "0 "},
        {tag::kGraphicType, "POLYLINE"},
    };
    const auto found = kValues.find(tag);
    // Numbers as text: every reader takes them, alone or in pairs.
    out.Add(tag, "LO", found != kValues.end() ? found->second : "16\\16");
}

/// A data set of all tags, one of them spoiled; sequences within some sequences, too.
struct Spoiling {
    const std::vector<std::uint32_t>& tags;
    std::uint32_t spoiled;
    const Spoiler& spoiler;

    void AddAll(DicomBuilder& out, int depth) const {
        for (const std::uint32_t tag : tags) {
            if (tag == spoiled) {
                out.Add(tag, spoiler.vr, spoiler.value);
            } else if (dicom::LookUp(tag).vr == MC_VR_SQ) {
                AddSequence(out, tag, depth);
            } else {
                AddGood(out, tag);
            }
        }
    }
    void AddSequence(DicomBuilder& out, std::uint32_t tag, int depth) const {
        constexpr std::uint32_t kHolders[] = {
            tag::kReferencedSeriesSequence, tag::kSoftcopyVOILUTSequence,
            tag::kGraphicAnnotationSequence, tag::kSharedFunctionalGroupsSequence,
            tag::kPerFrameFunctionalGroupsSequence};
        const bool holdsMore = std::ranges::find(kHolders, tag) != std::end(kHolders);
        if (depth == 2 || (depth == 1 && holdsMore)) return;
        out.Sequence(tag).Item();
        AddAll(out, holdsMore ? depth + 1 : 2);
        out.EndItem().EndSequence();
    }
};

DicomBuilder SpoiltFile(const std::vector<std::uint32_t>& tags, std::uint32_t spoiled,
                        const Spoiler& spoiler) {
    auto file = DicomBuilder::Part10(kExplicitUid);
    Spoiling{tags, spoiled, spoiler}.AddAll(file, 0);
    if (spoiled == tag::kPixelData) return std::move(file.Add(spoiled, spoiler.vr, spoiler.value));
    return std::move(file.Add(tag::kPixelData, "OW", std::string(512, 'x')));
}

/// Reads presentation data with every shutter: as an image, and as a state whose references all
/// name image and frame 16.
void ThroughPresentation(const DicomBuilder& file, std::uint32_t spoiled) {
    auto memory = file.File();
    CDcmObject object;
    ASSERT_EQ(ReadUpTo(object, memory, kToTheEnd), kDcmSuccess);
    for (const char* shape : {"RECTANGULAR", "CIRCULAR", "POLYGONAL", "BITMAP"}) {
        if (spoiled != tag::kShutterShape) object.SetValue(tag::kShutterShape, shape);
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
        spoiled.push_back(tag::kPixelData);
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
    EXPECT_EQ(object.GetValue(tag::kGraphicAnnotationSequence, item), kDcmSuccess);
    EXPECT_EQ(item.GetValue(tag::kGraphicObjectSequence, item), kDcmSuccess);
    Record record;
    CXGSPSObject().GSPSApplier(&object, &record, "16", 16);
    EXPECT_EQ(record.displayedAreaLeft, 16);
    EXPECT_EQ(record.graphicObjects.GetSize(), 1);
    int rows = 0;
    EXPECT_EQ(object.GetValue(tag::kRows, rows), kDcmSuccess);
    EXPECT_EQ(rows, 16);
}

}  // namespace
}  // namespace quorvex::test
