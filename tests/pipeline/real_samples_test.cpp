// Float and double pixels, and doses, on show: by hand, in units of the values.
#include "quorvex/Tags.h"
#include "tests/pipeline/shown.h"
#include "tests/support/dicom_builder.h"
#include "tests/support/temporary_file.h"

#include <bit>
#include <limits>
#include <string>

namespace quorvex::pipeline_test {
namespace {

using test::DicomBuilder;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Attribute {
    std::uint32_t tag;
    const char* vr;
    std::string value;
};
Attribute Real(std::uint32_t tag, double value, bool isDouble) {
    const DicomBuilder bytes =
        isDouble
            ? DicomBuilder().Number(std::bit_cast<std::uint64_t>(value), 8)
            : DicomBuilder().Number(std::bit_cast<std::uint32_t>(static_cast<float>(value)), 4);
    return {tag, isDouble ? "FD" : "FL", bytes.Text()};
}

enum class Kind { kFloat, kDouble, kDose };

Bytes FileOf(Kind kind, const std::vector<double>& values, const std::vector<Attribute>& more) {
    const bool isDouble = kind == Kind::kDouble;
    auto file = DicomBuilder::Part10(test::kExplicitUid).SopUids();
    const unsigned bits = isDouble ? 64 : 32;
    file.Image({.rows = 1, .columns = static_cast<unsigned>(values.size()), .bits = bits});
    for (const Attribute& attribute : more)
        file.Padded(attribute.tag, attribute.vr, attribute.value);
    DicomBuilder pixels;
    for (const double value : values) {
        if (kind == Kind::kDose) {
            pixels.Number(static_cast<std::uint64_t>(value), 4);
        } else if (isDouble) {
            pixels.Number(std::bit_cast<std::uint64_t>(value), 8);
        } else {
            pixels.Number(std::bit_cast<std::uint32_t>(static_cast<float>(value)), 4);
        }
    }
    if (kind == Kind::kDose) return file.Add(tag::kPixelData, "OW", pixels.Bytes()).Bytes();
    return file
        .Add(isDouble ? tag::kDoubleFloatPixelData : tag::kFloatPixelData, isDouble ? "OD" : "OF",
             pixels.Bytes())
        .Bytes();
}

void Open(CXDIPP& dipp, const Bytes& file) {
    CDcmApp app;
    const test::TemporaryFile onDisk(file);
    dipp.SetRules(Rules::kStandard);
    ASSERT_EQ(dipp.Initialize(&app, CString(onDisk.Path()), {1 << 20, 1 << 20}, 0), QVM_SUCCESS);
}

TEST(RealSamples, AreShownInTheirOwnUnits) {
    struct Row {
        const char* what;
        Kind kind;
        std::vector<double> values;
        std::vector<Attribute> attributes;
        Values shown;
    };
    const Attribute exact = {tag::kVOILUTFunction, "CS", "LINEAR_EXACT"};
    const Attribute centre = {tag::kWindowCenter, "DS", "0.0002"};
    const Attribute width = {tag::kWindowWidth, "DS", "0.0002"};
    const Attribute slope = {tag::kRescaleSlope, "DS", "-2"};
    const Attribute intercept = {tag::kRescaleIntercept, "DS", "0"};
    const Attribute scaling = {tag::kDoseGridScaling, "DS", "1.5e-8"};
    const auto padding = Real(tag::kFloatPixelPaddingValue, -1000, false);
    const auto limit = Real(tag::kFloatPixelPaddingRangeLimit, -900, false);
    const auto wide = Real(tag::kDoubleFloatPixelPaddingValue, 1e300, true);
    const Row rows[] = {
        {"small", Kind::kFloat, {0, 1e-4, 2.002e-4, 4e-4}, {}, {0, 64, 128, 255}},
        {"a window",
         Kind::kFloat,
         {0, 1.5e-4, 2.002e-4, 4e-4},
         {centre, width, exact},
         {0, 64, 128, 255}},
        {"no numbers",
         Kind::kFloat,
         {kNan, -kInfinity, 0, 2, 4, kInfinity},
         {},
         {0, 0, 0, 128, 255, 255}},
        {"nothing but", Kind::kDouble, {kNan, kNan}, {}, {0, 0}},
        {"padding", Kind::kFloat, {-1000, 1, 2, 3}, {padding}, {0, 0, 128, 255}},
        {"a range of it", Kind::kFloat, {-950, 1, -899, 3}, {padding, limit}, {0, 254, 0, 255}},
        {"high padding is black", Kind::kDouble, {1e300, 1, 2, 3}, {wide}, {0, 0, 128, 255}},
        {"a falling slope", Kind::kDouble, {0, 1, 2, 3}, {intercept, slope}, {255, 170, 85, 0}},
        {"far apart", Kind::kDouble, {-1e308, 0, 1e308}, {}, {0, 128, 255}},
        {"dose", Kind::kDose, {0, 1e9, 2e9, 4e9}, {scaling}, {0, 64, 128, 255}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        CXDIPP dipp;
        Open(dipp, FileOf(row.kind, row.values, row.attributes));
        EXPECT_EQ(Shown(dipp), row.shown);
        dipp.Inverse();
        if (!row.attributes.empty()) continue;
        EXPECT_EQ(Rendered(dipp).back(), 255 - row.shown.back());
    }
}

TEST(RealSamples, TakeTheUsersWindow) {
    CXDIPP dipp;
    Open(dipp, FileOf(Kind::kFloat, {0, 1e-4, 2.002e-4, 3e-4}, {}));
    dipp.UpdateVOILUT_ABS(2e-4, 2e-4);
    EXPECT_EQ(Shown(dipp), (Values{0, 0, 128, 255})) << "exact, not narrowed by 1";
    double level = 0;
    double width = 0;
    dipp.GetWindowingFactor(width, level);
    EXPECT_DOUBLE_EQ(level, 2e-4);
    EXPECT_DOUBLE_EQ(width, 2e-4);
    CXDIPP dragged;
    Open(dragged, FileOf(Kind::kFloat, {0, 1e-4, 2e-4, 4e-4}, {}));
    dragged.UpdateVOILUT_Offset(-256, 0);
    dragged.GetWindowingFactor(width, level);
    EXPECT_NEAR(level, 3e-4, 1e-9) << "a step is a 1024th of the values";
    CXDIPP dose;
    Open(dose, FileOf(Kind::kDose, {0, 1e9, 2e9, 4e9}, {{tag::kDoseGridScaling, "DS", "1.5e-8"}}));
    dose.UpdateVOILUT_ABS(30.0, 30.0);
    EXPECT_EQ(Shown(dose), (Values{0, 0, 132, 255})) << "in Gy";
}

TEST(RealSamples, AreShownSmaller) {
    std::vector<double> values(16, 1.0);
    values[15] = 3.0;
    CXDIPP dipp;
    Open(dipp, FileOf(Kind::kFloat, values, {}));
    dipp.UpdateZoom_ABS(0.5);
    const Values small = Rendered(dipp);
    ASSERT_EQ(small.size(), 8U);
    EXPECT_EQ(small.front(), 0);
    EXPECT_GT(small.back(), 0);
}

}  // namespace
}  // namespace quorvex::pipeline_test
