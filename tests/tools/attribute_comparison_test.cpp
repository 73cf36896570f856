// Which differences a conversion's check of the attributes sees, and which it allows.
#include "quorvex/Tags.h"
#include "tests/support/dicom_builder.h"
#include "tests/support/scratch_folder.h"
#include "tools/convert/checks/allowed_changes.h"

#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

using tools::ConvertTargetOf;

CDcmObject ObjectOf(const ScratchFolder& folder, const DicomBuilder& builder) {
    CDcmApp app;
    CDcmObject object;
    object.Open(folder.Write("object.dcm", builder.Bytes()));
    EXPECT_EQ(object.ReadFile(&app, nullptr, nullptr), kDcmSuccess);
    return object;
}

constexpr std::uint32_t kPrivate = 0x00091001;

// What may stand in any of the objects below, in tag order, in the order of its transfer syntax.
struct Content {
    std::string_view syntax = kExplicitUid;
    std::string_view type = "ORIGINAL";
    std::string_view privateVr = "LO";
    std::string_view privateValue = "kept";
    std::string_view name = "A^B ";
    unsigned rows = 0x0102;
    std::string_view codes = "x ";  // one item for each letter; no sequence without
    std::string_view nested = "ab";
};

DicomBuilder FileOf(const Content& content) {
    auto file = DicomBuilder::Part10(content.syntax);
    file.Padded(tag::kImageType, "CS", content.type);
    file.Add(kPrivate, content.privateVr, content.privateValue);
    file.Add(tag::kPatientName, "PN", content.name);
    file.Us(tag::kRows, content.rows);
    if (content.codes.empty()) return file;
    file.Sequence(tag::kSharedFunctionalGroupsSequence);
    for ([[maybe_unused]] const char code : content.codes)
        file.Item().Add(tag::kFrameType, "CS", content.nested).EndItem();
    file.EndSequence();
    return file;
}

const struct {
    const char* what;
    Content source;
    Content output;
    std::vector<std::string> changed;
} kDifferences[] = {
    {"nothing", {}, {}, {}},
    {"another encoding and byte order",
     {.syntax = kBigEndianUid},
     {.syntax = kImplicitUid},
     {"TransferSyntaxUID"}},
    {"a VR that only one side knows",
     {.privateVr = "UN"},
     {.syntax = kImplicitUid},
     {"TransferSyntaxUID"}},
    {"a VR that both sides name", {}, {.privateVr = "SH"}, {"(0009,1001)"}},
    {"padding", {.name = "A^B"}, {}, {}},
    {"one character", {}, {.name = "A^C "}, {"PatientName"}},
    {"a number", {}, {.rows = 0x0201}, {"Rows"}},
    {"two values at once",
     {},
     {.type = "DERIVED", .privateValue = "lost"},
     {"ImageType", "(0009,1001)"}},
    {"a value in an item", {}, {.nested = "ac"}, {"FrameType"}},
    {"an item more", {}, {.codes = "xyz"}, {"SharedFunctionalGroupsSequence"}},
    {"a sequence lost", {}, {.codes = ""}, {"SharedFunctionalGroupsSequence"}},
    {"a sequence come up", {.codes = ""}, {}, {"SharedFunctionalGroupsSequence"}},
};

TEST(AttributeComparison, SeesEveryValueThatDiffers) {
    const ScratchFolder folder;
    for (const auto& c : kDifferences) {
        const auto source = ObjectOf(folder, FileOf(c.source));
        const auto output = ObjectOf(folder, FileOf(c.output));
        std::vector<std::string> names;
        for (const auto& changed : tools::CompareAttributes(source, output))
            names.push_back(changed.name);
        EXPECT_EQ(names, c.changed) << c.what;
    }
}

TEST(AttributeComparison, AllowsWhatTheTargetDemands) {
    const struct {
        std::uint32_t tag;
        const char* target;
        bool hasNewFrames;
        bool isLossySource;
        bool isDemanded;
    } kCases[] = {
        {tag::kTransferSyntaxUID, "explicit", false, false, true},
        {tag::kPhotometricInterpretation, "explicit", false, false, false},
        {tag::kPhotometricInterpretation, "j2k-lossless", true, false, true},
        {tag::kSOPInstanceUID, "j2k-lossless", true, true, false},
        {tag::kSOPInstanceUID, "j2k", true, false, true},
        {tag::kFrameType, "j2k", true, false, true},
        {tag::kLossyImageCompression, "rle", true, false, false},
        {tag::kLossyImageCompression, "rle", true, true, true},
        {tag::kBitsStored, "j2k", true, true, false},
        {tag::kBitsStored, "jpeg12", true, false, true},
        {tag::kRows, "jpeg", true, true, false},
    };
    for (const auto& c : kCases) {
        const auto target = ConvertTargetOf(c.target);
        EXPECT_EQ(tools::IsDemanded({c.tag, ""}, {.target = &target,
                                                  .hasNewFrames = c.hasNewFrames,
                                                  .isLossySource = c.isLossySource}),
                  c.isDemanded)
            << std::hex << c.tag << " to " << c.target;
    }
}

}  // namespace
}  // namespace quorvex::test
