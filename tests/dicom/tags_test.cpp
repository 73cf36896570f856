#include "foundation/dicom/model/tags.h"

#include "foundation/dicom/model/dictionary.h"
#include "tests/support/named_tags.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

// Items have no keyword in the standard's table of data elements.
bool IsItem(std::uint32_t tag) {
    return dicom::IsItemTag(tag);
}

TEST(Tags, BearTheStandardsKeywords) {
    const auto tags = test::NamedTags();
    ASSERT_GT(tags.size(), 100U);
    for (const auto& [name, tag] : tags) {
        if (IsItem(tag)) continue;
        EXPECT_EQ(name, dicom::LookUp(tag).keyword);
    }
    EXPECT_EQ(tag::InGroup(0x601E, tag::kOverlayData), 0x601E3000U);
}

}  // namespace
}  // namespace quorvex
