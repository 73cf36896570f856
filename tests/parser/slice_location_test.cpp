#include "quorvex/CxDcmParser.h"
#include "quorvex/Tags.h"
#include "tests/parser/parsed.h"

#include <gtest/gtest.h>
#include <optional>

namespace quorvex {
namespace {

using namespace test;

constexpr struct {
    const char* what;
    const char* position;  ///< null leaves an attribute out
    const char* orientation;
    const char* location;
    std::optional<double> expected;
} kSlices[] = {
    {"axial", "1\\2\\3", "1\\0\\0\\0\\1\\0", "9", 3},
    {"coronal", "1\\2\\3", "1\\0\\0\\0\\0\\-1", nullptr, 2},
    {"sagittal", "1\\2\\3", "0\\1\\0\\0\\0\\-1", nullptr, 1},
    {"a tie goes to y", "1\\2\\3", "0.7\\0.7\\0\\0\\0\\1", nullptr, 1},
    {"shared axis", "1\\2\\3", "1\\0\\0\\1\\0\\0", nullptr, 3},
    {"row along z", "1\\2\\3", "0\\0\\1\\0\\1\\0", nullptr, 1},
    {"no orientation", "1\\2\\-3.5", nullptr, nullptr, -3.5},
    {"four numbers of orientation", "1\\2\\3", "0\\1\\0\\0", nullptr, 3},
    {"seven numbers of orientation", "1\\2\\3", "0\\1\\0\\0\\0\\1\\0", nullptr, 3},
    {"two numbers of position", "1\\2", "1\\0\\0\\0\\1\\0", "+9.25", 9.25},
    {"no position", nullptr, nullptr, "-4e1", -40},
    {"nothing", nullptr, nullptr, nullptr, std::nullopt},
    {"no numbers", "a\\b\\c", nullptr, "x", std::nullopt},
};

TEST(SliceLocation, IsThePositionAcrossTheSlice) {
    for (const auto& c : kSlices) {
        auto file = DicomBuilder::Part10(kExplicitUid).SopUids();
        for (const auto& [tag, value] : {std::pair{tag::kImagePositionPatient, c.position},
                                         {tag::kImageOrientationPatient, c.orientation},
                                         {tag::kSliceLocation, c.location}})
            if (value != nullptr) file.Padded(tag, "DS", value);
        const Parsed parsed(file.Bytes());
        ASSERT_EQ(parsed.code, QVM_SUCCESS) << c.what;
        double location = -999;
        EXPECT_EQ(CxDcmParser::GetSliceLocation(parsed.Header(), location), c.expected ? 1 : 0)
            << c.what;
        EXPECT_DOUBLE_EQ(location, c.expected.value_or(-999)) << c.what;
    }
    double location = 5;
    EXPECT_EQ(CxDcmParser::GetSliceLocation(nullptr, location), 0);
    EXPECT_EQ(location, 5);
}

}  // namespace
}  // namespace quorvex
