/// Attributes: what every read makes of every stored form, and what setting one leaves behind.
#include "foundation/dicom/model/dictionary.h"
#include "foundation/dicom/model/tags.h"
#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"
#include "tests/support/dicom_builder.h"
#include "tests/support/named_tags.h"

#include <gtest/gtest.h>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace quorvex {
namespace {

using test::DicomBuilder;

constexpr std::uint32_t kPrivate = 0x00291010;
constexpr std::uint32_t kSmallest = 0x00280106;  // US or SS
constexpr std::uint32_t kRedTable = tag::kRedPaletteColorLookupTableData;
constexpr auto kCenter = tag::kWindowCenter;
constexpr auto kDescriptor = tag::kLUTDescriptor;
constexpr auto kCharacterSet = tag::kSpecificCharacterSet;
constexpr auto kName = tag::kPatientName;
constexpr auto kSequence = tag::kReferencedImageSequence;
constexpr auto kUid = tag::kReferencedSOPInstanceUID;

CDcmObject ObjectOf(const DicomBuilder& builder) {
    auto file = builder.File();
    CDcmObject object;
    EXPECT_EQ(test::ReadUpTo(object, file, test::kToTheEnd), kDcmSuccess);
    return object;
}

CDcmObject ReadOne(std::string_view vr, std::string_view value, std::uint32_t tag = kPrivate) {
    return ObjectOf(DicomBuilder::Part10(test::kExplicitUid).Add(tag, vr, value));
}

std::string Text(const CDcmObjectCommon& object, std::uint32_t tag) {
    const auto text = Read<CString>(object, tag);
    return text ? text->ToUtf8() : "(none)";
}

std::vector<std::string> Texts(const CDcmObjectCommon& object, std::uint32_t tag) {
    std::vector<std::string> texts;
    ForEachValue<CString>(object, tag,
                          [&](const CString& text) { texts.push_back(text.ToUtf8()); });
    return texts;
}

const struct {
    const char* vr;
    std::string value;
    std::optional<int> whole;
    std::optional<double> real;
    const char* text;
} kNumbers[] = {
    {"US", std::string("\xFE\xFF", 2), 65534, 65534.0, "65534"},
    {"SS", std::string("\xFE\xFF", 2), -2, -2.0, "-2"},
    {"UL", std::string("\1\0\1\0", 4), 65537, 65537.0, "65537"},
    {"SL", "\xFF\xFF\xFF\xFF", -1, -1.0, "-1"},
    {"FL", std::string("\0\0\x60\xC0", 4), -3, -3.5, "-3.5"},
    {"FL", "\xCD\xCC\xCC\x3D", 0, 0.10000000149011612, "0.1"},
    {"FD", std::string("\0\0\0\0\0\0\x0C\xC0", 8), -3, -3.5, "-3.5"},
    {"FD", "\xFF\xFF\xFF\xFF\xFF\xFF\xEF\x7F", std::nullopt, 1.7976931348623157e308,
     "1.7976931348623157e+308"},
    {"UV", "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", std::nullopt, 18446744073709551616.0,
     "18446744073709551615"},
    {"OW", std::string("\1\2", 2), 0x0201, 513.0, "513"},
    {"AT", std::string("\x18\0\x10\0", 4), 0x00180010, 1572880.0, "(0018,0010)"},
    {"DS", " -1.75e1 ", -17, -17.5, "-1.75e1"},
    {"DS", "+2.5", 2, 2.5, "+2.5"},
    {"IS", "12\\13 ", 12, 12.0, "12"},
    {"LO", "3mm ", 3, 3.0, "3mm"},
    {"LO", "mm 3", std::nullopt, std::nullopt, "mm 3"},
    {"DS", "nan ", std::nullopt, std::nullopt, "nan"},
    {"DS", "", std::nullopt, std::nullopt, ""},
    {"US", "", std::nullopt, std::nullopt, "(none)"},
    {"US", "\1", std::nullopt, std::nullopt, "(none)"},
    {"UN", "2.5\\3 ", 2, 2.5, "2.5"},
    {"UN", std::string("\7\0", 2), 7, 7.0, "\a"},
    {"LT", "back\\slash ", std::nullopt, std::nullopt, "back\\slash"},
    {"UI", std::string("1.2\0", 4), 1, 1.2, "1.2"},
};

TEST(DicomValues, EveryFormReadsAsEveryType) {
    for (const auto& c : kNumbers) {
        const std::string what = std::string(c.vr) + " " + c.text;
        const CDcmObject object = ReadOne(c.vr, c.value);
        EXPECT_EQ(Read<int>(object, kPrivate), c.whole) << what;
        EXPECT_EQ(Read<double>(object, kPrivate), c.real) << what;
        EXPECT_EQ(Text(object, kPrivate), c.text) << what;
    }
    const CDcmObject none = ReadOne("DS", "1 ");
    EXPECT_EQ(Read<int>(none, kCenter), std::nullopt);
    EXPECT_FALSE(none.GetErrorMessage().IsEmpty());
}

template <class Type>
void ExpectFits(const char* value, std::optional<Type> expected) {
    EXPECT_EQ(Read<Type>(ReadOne("UT", value), kPrivate), expected) << value;
}

TEST(DicomValues, AreRefusedByTypesThatCannotHoldThem) {
    ExpectFits<unsigned short>("65535.9", 65535);
    ExpectFits<short>("-32768", -32768);
    ExpectFits<unsigned int>("4294967295", 4294967295U);
    ExpectFits<long>("-9223372036854775808", std::numeric_limits<long>::min());
    for (const char* value : {"70000", "65536", "-1", "1e300"})
        ExpectFits<unsigned short>(value, std::nullopt);
    for (const char* value : {"32768", "-32769"}) ExpectFits<short>(value, std::nullopt);
    for (const char* value : {"2147483648", "-3e9"}) ExpectFits<int>(value, std::nullopt);
    for (const char* value : {"4294967296", "-1"}) ExpectFits<unsigned int>(value, std::nullopt);
    ExpectFits<long>("9223372036854775808", std::nullopt);
    ExpectFits<float>("1e39", std::nullopt);
    // The word of an attribute that may be US or SS is one of either sign.
    EXPECT_EQ(Read<short>(ReadOne("US", "\xFE\xFF", kSmallest), kSmallest), -2);
    EXPECT_EQ(Read<unsigned short>(ReadOne("SS", "\xFE\xFF", kSmallest), kSmallest), 65534);
    EXPECT_EQ(Read<short>(ReadOne("US", "\xFE\xFF", tag::kRows), tag::kRows), std::nullopt);
}

TEST(DicomValues, AreRefusedByAttributesThatCannotHoldThem) {
    constexpr std::uint32_t kSigned = tag::kTIDOffset;         // SS
    constexpr std::uint32_t kLong = 0x00080001;                // UL
    constexpr std::uint32_t kFloat = tag::kMaskSubPixelShift;  // FL
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        std::uint32_t tag;
        double value;
        const char* kept;  ///< null where it is refused
    } kCases[] = {
        {tag::kRows, 65535, "65535"},
        {tag::kRows, 70000, nullptr},
        {tag::kRows, -1, nullptr},
        {tag::kRows, kNan, nullptr},
        {kSigned, -32768, "-32768"},
        {kSigned, 32768, nullptr},
        {kSmallest, 65535, "65535"},
        {kSmallest, -32768, "-32768"},
        {kSmallest, 65536, nullptr},
        {kSmallest, -32769, nullptr},
        {kLong, 4294967295, "4294967295"},
        {kLong, 4294967296, nullptr},
        {kFloat, 1e39, nullptr},
        {tag::kInstanceNumber, -2147483648, "-2147483648"},
        {tag::kInstanceNumber, 3e9, nullptr},
        {kCenter, kNan, nullptr},
    };
    for (const auto& c : kCases) {
        CDcmObject object;
        EXPECT_EQ(object.SetValue(c.tag, "7"), kDcmSuccess);
        const auto kept = c.kept == nullptr ? "7" : c.kept;
        const auto result = c.kept == nullptr ? kDcmFailure : kDcmSuccess;
        EXPECT_EQ(object.SetValue(c.tag, c.value), result) << c.tag << ' ' << c.value;
        EXPECT_EQ(Text(object, c.tag), kept) << c.tag << ' ' << c.value;
    }
    CDcmObject object;
    EXPECT_EQ(object.SetValue(tag::kRows, "1\\70000"), kDcmFailure);
    EXPECT_EQ(object.SetValue(tag::kRows, 512), kDcmSuccess);
    EXPECT_EQ(object.SetNextValue(tag::kRows, 70000L), kDcmFailure);
    EXPECT_EQ(Texts(object, tag::kRows), std::vector<std::string>{"512"});
    EXPECT_EQ(object.SetValue(kPrivate, 5'000'000'000), kDcmSuccess);  // of unknown VR
    EXPECT_EQ(Read<long>(object, kPrivate), 5'000'000'000);
}

TEST(DicomValues, HoldTextWhateverBytesAreSet) {
    CDcmObject object;
    EXPECT_EQ(object.SetValue(tag::kPatientName, "M\xFCller"), kDcmSuccess);
    EXPECT_EQ(Text(object, tag::kPatientName), "M\xEF\xBF\xBDller");
}

TEST(DicomValues, UsOrSsFollowsPixelRepresentationButDescriptorsDoNot) {
    for (const bool isSigned : {false, true}) {
        auto builder = DicomBuilder::Part10(test::kImplicitUid);
        builder.Add(tag::kModality, "", "CT")
            .Us(tag::kPixelRepresentation, isSigned ? 1 : 0)
            .Us(kSmallest, 0xFFFF);
        builder.Sequence(tag::kModalityLUTSequence)
            .Item()
            .Us(kDescriptor, 0xFFFF)
            .Us(kSmallest, 0xFFFF);
        builder.EndItem().EndSequence();
        const CDcmObject object = ObjectOf(builder);
        CDcmItem item(1);
        ASSERT_EQ(object.GetValue(tag::kModalityLUTSequence, item), kDcmSuccess);
        const int expected = isSigned ? -1 : 65535;
        EXPECT_EQ(Read<int>(object, kSmallest), expected);
        EXPECT_EQ(Read<int>(item, kSmallest), expected);
        EXPECT_EQ(Read<int>(item, kDescriptor), 65535);
    }
}

constexpr struct {
    const char* vr;
    std::uint32_t tag;
    const char* value;
    int count;
    unsigned long length;
} kCounts[] = {
    {"OW", tag::kOverlayData, "12345678", 1, 8},
    {"OB", tag::kOverlayData, "12345678", 1, 8},
    {"UN", kRedTable, "12345678", 1, 8},
    {"OW", tag::kLUTData, "12345678", 4, 2},
    {"US", tag::kLUTData, "12345678", 4, 2},
    {"UN", tag::kLUTData, "12345678", 4, 2},
    {"DS", kCenter, "1\\22\\3 ", 3, 1},
    {"FD", kPrivate, "12345678", 1, 8},
    {"LT", kPrivate, "a\\b ", 1, 4},
    {"UN", kPrivate, "a\\b ", 1, 4},
};

TEST(DicomValues, CountsAndLengthsAreWhatCallersRelyOn) {
    for (const auto& c : kCounts) {
        const CDcmObject object = ReadOne(c.vr, c.value, c.tag);
        int count = -1;
        unsigned long length = 0;
        EXPECT_EQ(object.GetValueCount(c.tag, count), kDcmSuccess);
        EXPECT_EQ(count, c.count) << c.vr << ' ' << c.value;
        EXPECT_EQ(object.GetValueLength(c.tag, 1, length), kDcmSuccess);
        EXPECT_EQ(length, c.length) << c.vr << ' ' << c.value;
        EXPECT_NE(object.GetValueLength(c.tag, count + 1, length), kDcmSuccess);
        EXPECT_NE(object.GetValueLength(c.tag, 0, length), kDcmSuccess);
    }
}

TEST(DicomValues, AttributesAreReadSideBySide) {
    auto builder = DicomBuilder::Part10(test::kExplicitUid);
    builder.Add(kCenter, "DS", "1\\2\\\\4").Add(tag::kWindowWidth, "DS", "10\\20 ");
    const CDcmObject object = ObjectOf(builder);
    EXPECT_EQ(Texts(object, kCenter), (std::vector<std::string>{"1", "2", "", "4"}));
    double center = 0;
    double width = 0;
    EXPECT_EQ(object.GetValue(kCenter, center), kDcmSuccess);
    EXPECT_EQ(object.GetValue(tag::kWindowWidth, width), kDcmSuccess);
    EXPECT_EQ(object.GetNextValue(kCenter, center), kDcmSuccess);
    EXPECT_EQ(object.GetNextValue(tag::kWindowWidth, width), kDcmSuccess);
    EXPECT_EQ(center, 2);
    EXPECT_EQ(width, 20);
    EXPECT_NE(object.GetNextValue(kCenter, center), kDcmSuccess);  // an empty value
    EXPECT_EQ(object.GetNextValue(kCenter, center), kDcmSuccess);
    EXPECT_NE(object.GetNextValue(kCenter, center), kDcmSuccess);
    EXPECT_NE(object.GetNextValue(tag::kWindowWidth, width), kDcmSuccess);
}

TEST(DicomValues, ItemsReadTheirTextByTheSetOfTheirParent) {
    auto builder = DicomBuilder::Part10(test::kExplicitUid);
    builder.Add(kCharacterSet, "CS", "ISO_IR 100");
    builder.Sequence(kSequence).Item().Add(kName, "PN", "M\xFCller").EndItem();
    builder.Item()
        .Add(kCharacterSet, "CS", "ISO_IR 192")
        .Add(kName, "PN", "M\xC3\xBCller ")
        .EndItem();
    const CDcmObject object = ObjectOf(builder.EndSequence());
    CDcmItem item(1);
    ASSERT_EQ(object.GetValue(kSequence, item), kDcmSuccess);
    EXPECT_EQ(Text(item, kName), "M\xC3\xBCller");
    ASSERT_EQ(object.GetNextValue(kSequence, item), kDcmSuccess);
    EXPECT_EQ(Text(item, kName), "M\xC3\xBCller");
    EXPECT_NE(object.GetNextValue(kSequence, item), kDcmSuccess);
}

TEST(DicomValues, TextSurvivesAChangeOfCharacterSet) {
    auto builder = DicomBuilder::Part10(test::kExplicitUid);
    CDcmObject object =
        ObjectOf(builder.Add(kCharacterSet, "CS", "ISO_IR 100").Add(kName, "PN", "M\xFCller"));
    EXPECT_EQ(object.SetValue(kCharacterSet, "ISO_IR 192"), kDcmSuccess);
    EXPECT_EQ(Text(object, kName), "M\xC3\xBCller");
    EXPECT_EQ(object.SetValue(kCharacterSet, ""), kDcmSuccess);
    EXPECT_EQ(object.SetNextValue(kCharacterSet, "ISO 2022 IR 87"), kDcmSuccess);
    EXPECT_EQ(Texts(object, kCharacterSet), (std::vector<std::string>{"", "ISO 2022 IR 87"}));
}

TEST(DicomValues, BigEndianValuesArriveInTheOrderOfThisMachine) {
    auto builder = DicomBuilder::Part10(test::kBigEndianUid);
    CDcmObject object = ObjectOf(builder.Us(tag::kRows, 513).Words(kRedTable, "OW", {1, 2}));
    EXPECT_EQ(object.SetNextValue(tag::kRows, 7), kDcmSuccess);
    EXPECT_EQ(Texts(object, tag::kRows), (std::vector<std::string>{"513", "7"}));
    std::string value;
    const ValueReadCallback collect = [](int, std::uint32_t, void* user, int length, void* data,
                                         int, int) {
        static_cast<std::string*>(user)->append(static_cast<const char*>(data),
                                                static_cast<std::size_t>(length));
        return MC_STATUS{kMcContinue};
    };
    EXPECT_EQ(object.GetValue(kRedTable, &value, collect), kDcmSuccess);
    EXPECT_EQ(value, std::string("\1\0\2\0", 4));
}

TEST(DicomValues, SettingConvertsToTheRepresentationOfTheAttribute) {
    CDcmObject object;
    EXPECT_EQ(object.SetValue(kCenter, 1.0 / 3), kDcmSuccess);  // DS: 16 characters
    EXPECT_LE(Text(object, kCenter).size(), 16U);
    EXPECT_NEAR(Read<double>(object, kCenter).value_or(0), 1.0 / 3, 1e-13);
    EXPECT_EQ(object.SetNextValue(kCenter, 40L), kDcmSuccess);
    EXPECT_EQ(Texts(object, kCenter).at(1), "40");
    EXPECT_EQ(object.SetValue(tag::kRows, "512\\256"), kDcmSuccess);
    EXPECT_EQ(Texts(object, tag::kRows), (std::vector<std::string>{"512", "256"}));
    EXPECT_EQ(object.SetValue(tag::kInstanceNumber, 7.9), kDcmSuccess);  // IS
    EXPECT_EQ(Text(object, tag::kInstanceNumber), "7");
    EXPECT_EQ(object.SetValue(tag::kFrameIncrementPointer, "(0018,1063)"), kDcmSuccess);  // AT
    EXPECT_EQ(Text(object, tag::kFrameIncrementPointer), "(0018,1063)");
    EXPECT_EQ(object.SetValue(kSmallest, -5), kDcmSuccess);
    EXPECT_EQ(Read<int>(object, kSmallest), -5);
    EXPECT_EQ(object.SetValue(tag::kRows, "wide"), kDcmFailure);
    EXPECT_EQ(object.SetValue(kSequence, "text"), kDcmFailure);
    for (int time = 0; time < 2; ++time) EXPECT_EQ(object.RemoveValue(kCenter), kDcmSuccess);
    EXPECT_EQ(Text(object, kCenter), "(none)");
}

TEST(DicomValues, AnItemPutIntoItselfIsACopy) {
    CDcmItem item(1);
    item.SetValue(kUid, "1.1");
    EXPECT_EQ(item.SetValue(kSequence, &item), kDcmSuccess);
    const auto inside = Read<CDcmItem>(item, kSequence);
    ASSERT_TRUE(inside);
    item.SetValue(kUid, "2.2");
    EXPECT_EQ(Text(*inside, kUid), "1.1");
    EXPECT_FALSE(Read<CDcmItem>(*inside, kSequence));
    EXPECT_EQ(item.SetValue(kSequence, static_cast<CDcmItem*>(nullptr)), kDcmFailure);
}

TEST(Tags, BearTheStandardsKeywords) {
    const auto tags = test::NamedTags();
    ASSERT_GT(tags.size(), 100U);
    for (const auto& [name, tag] : tags) {
        if (dicom::IsItemTag(tag)) continue;  // items have no keyword in the standard's table
        EXPECT_EQ(name, dicom::LookUp(tag).keyword);
    }
    EXPECT_EQ(tag::InGroup(0x601E, tag::kOverlayData), 0x601E3000U);
}

}  // namespace
}  // namespace quorvex
