// Attributes that are not what their tags promise.
#include "tests/presentation/presentation_objects.h"

#include <gtest/gtest.h>
#include <iterator>

namespace quorvex {
namespace {

using namespace test;

constexpr std::uint32_t kValueTags[] = {
    0x00081155, 0x00081160, 0x00181600, 0x00181602, 0x00181604, 0x00181606, 0x00181608,
    0x00181610, 0x00181612, 0x00181620, 0x00181622, 0x00181623, 0x00280004, 0x00280010,
    0x00280011, 0x00280030, 0x00280034, 0x00280100, 0x00280101, 0x00280103, 0x00281050,
    0x00281051, 0x00281052, 0x00281053, 0x00283002, 0x00283006, 0x00700003, 0x00700004,
    0x00700005, 0x00700006, 0x00700010, 0x00700011, 0x00700012, 0x00700014, 0x00700015,
    0x00700021, 0x00700022, 0x00700023, 0x00700024, 0x00700041, 0x00700042, 0x00700052,
    0x00700053, 0x00700100, 0x00700101, 0x00700102, 0x00700103, 0x20500020, 0x60003000,
};
constexpr std::uint32_t kSequenceTags[] = {0x00081140, 0x00283000, 0x00283010,
                                           0x00283110, 0x0070005A, 0x00700001,
                                           0x00700008, 0x00700009, 0x20500010};

using Spoiler = void (*)(CDcmObjectCommon& object, std::uint32_t tag);

constexpr Spoiler kSpoilers[] = {
    [](CDcmObjectCommon& object, std::uint32_t tag) {
        CDcmItem item;
        object.SetValueRepresentation(tag, MC_VR_SQ);
        object.SetValue(tag, &item);
    },
    [](CDcmObjectCommon& object, std::uint32_t tag) {
        object.SetValueRepresentation(tag, MC_VR_LT);
        object.SetValue(tag, "-1.5e9 \xC3\xBC");
    },
    [](CDcmObjectCommon& object, std::uint32_t tag) {
        object.SetValueRepresentation(tag, MC_VR_LO);
        object.SetValue(tag, "");
    },
    [](CDcmObjectCommon& object, std::uint32_t tag) {
        object.SetValueRepresentation(tag, MC_VR_FD);
        Put(object, tag, {-1e300, 1e300, 0.5});
    },
    [](CDcmObjectCommon& object, std::uint32_t tag) {
        object.SetValueRepresentation(tag, MC_VR_US);
        Put(object, tag, {static_cast<unsigned short>(65535), static_cast<unsigned short>(65535)});
    },
    [](CDcmObjectCommon& object, std::uint32_t tag) { object.RemoveValue(tag); },
};

/// Every attribute that is read, in one object and in each item of it, three levels deep.
void Fill(CDcmObjectCommon& object, std::uint32_t spoiled, Spoiler spoil, int depth) {
    for (const std::uint32_t tag : kValueTags) object.SetValue(tag, "20");
    object.SetValue(0x00181600, "POLYGONAL");
    for (const std::uint32_t tag : kSequenceTags) {
        if (depth == 0 || tag == 0x00081140) continue;
        CDcmItem item;
        Fill(item, spoiled, spoil, depth - 1);
        object.SetValue(tag, &item);
    }
    spoil(object, spoiled);
}

TEST(WrongTypes, NeverDoHarm) {
    for (const Spoiler spoil : kSpoilers) {
        for (const auto& tags : {std::vector(std::begin(kValueTags), std::end(kValueTags)),
                                 std::vector(std::begin(kSequenceTags), std::end(kSequenceTags))}) {
            for (const std::uint32_t tag : tags) {
                CDcmObject object;
                Fill(object, tag, spoil, 2);
                for (const char* shape : {"RECTANGULAR", "CIRCULAR", "BITMAP"}) {
                    if (tag != 0x00181600) object.SetValue(0x00181600, shape);
                    Record image;
                    EXPECT_EQ(ReadImage(object, image), 1) << std::hex << tag;
                    Record state;
                    EXPECT_EQ(ReadState(object, state), 1) << std::hex << tag;
                }
            }
        }
    }
}

}  // namespace
}  // namespace quorvex
