/// How data sets are read: encodings, labels that lie, stops, and damage.
#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"
#include "tests/support/dicom_builder.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

namespace quorvex {
namespace {

using test::DicomBuilder;
using test::kUndefinedLength;

constexpr auto kModality = tag::kModality;
constexpr auto kSequence = tag::kReferencedImageSequence;
constexpr auto kUid = tag::kReferencedSOPInstanceUID;
constexpr auto kName = tag::kPatientName;

/// A small data set, the same in every encoding; ends with Pixel Data.
void AddDataSet(DicomBuilder& to) {
    to.Add(kModality, "CS", "CT").Sequence(kSequence).Item().Add(kUid, "UI", "1.23");
    to.EndItem()
        .EndSequence()
        .Add(kName, "PN", "A^B ")
        .Us(tag::kRows, 512)
        .Us(tag::kBitsAllocated, 16);
}

void ExpectDataSet(const CDcmObject& object, const std::string& what) {
    EXPECT_EQ(Read<CString>(object, kName), CString("A^B")) << what;
    EXPECT_EQ(Read<int>(object, tag::kRows), 512) << what;
    const auto item = Read<CDcmItem>(object, kSequence);
    ASSERT_TRUE(item) << what;
    EXPECT_EQ(Read<CString>(*item, kUid), CString("1.23")) << what;
}

constexpr struct {
    const char* what;
    std::string_view label;
    bool isExplicit;
    bool isBigEndian;
    TRANSFER_SYNTAX syntax;
    unsigned long pixelHeader;
} kEncodings[] = {
    {"implicit", test::kImplicitUid, false, false, kImplicitLittleEndian, 8},
    {"explicit", test::kExplicitUid, true, false, kExplicitLittleEndian, 12},
    {"big endian", test::kBigEndianUid, true, true, kExplicitBigEndian, 12},
    {"implicit labelled explicit", test::kExplicitUid, false, false, kImplicitLittleEndian, 8},
    {"explicit labelled implicit", test::kImplicitUid, true, false, kExplicitLittleEndian, 12},
    {"big endian labelled little", test::kExplicitUid, true, true, kExplicitBigEndian, 12},
    {"little endian labelled big", test::kBigEndianUid, true, false, kExplicitLittleEndian, 12},
    {"implicit labelled RLE", test::kRleUid, false, false, kRle, 8},
    {"plain labelled deflated", test::kDeflatedUid, true, false, kDeflatedExplicitLittleEndian, 12},
};

TEST(DicomReading, FollowsTheBytesInEveryEncoding) {
    for (const auto& c : kEncodings) {
        auto builder = DicomBuilder::Part10(c.label, c.isExplicit, c.isBigEndian);
        AddDataSet(builder);
        const std::size_t pixels = builder.Size();
        auto file = builder.Add(tag::kPixelData, "OW", "1234").File();
        CDcmObject object;
        unsigned long offset = 0;
        ASSERT_EQ(test::ReadUpTo(object, file, test::kUpToPixelData, &offset), kDcmSuccess)
            << c.what;
        ExpectDataSet(object, c.what);
        TRANSFER_SYNTAX syntax = kSyntaxNone;
        EXPECT_EQ(object.GetTransferSyntax(syntax), kDcmSuccess) << c.what;
        EXPECT_EQ(syntax, c.syntax) << c.what;
        EXPECT_EQ(offset, pixels) << c.what;
        EXPECT_EQ(object.PixelDataHeaderLength(), c.pixelHeader) << c.what;

        DicomBuilder bare(c.isExplicit, c.isBigEndian);
        AddDataSet(bare);
        auto bareFile = bare.File();
        CDcmObject other;
        ASSERT_EQ(test::ReadBare(other, bareFile, test::kUpToPixelData, &offset), kDcmSuccess)
            << c.what;
        ExpectDataSet(other, c.what);
        EXPECT_EQ(offset, bare.Size()) << c.what;
    }
}

TEST(DicomReading, InflatesAndKeepsPixelDataInTheObject) {
    DicomBuilder plain;
    AddDataSet(plain);
    const std::size_t pixels = plain.Size();
    plain.Add(tag::kPixelData, "OW", std::string(50'000, '\7'));
    auto builder = DicomBuilder::Part10(test::kDeflatedUid);
    const std::size_t meta = builder.Size();
    // One stored block, the last one: its length, and the same inverted.
    builder.Number(1, 1).Number(plain.Size(), 2).Number(~plain.Size() & 0xFFFFU, 2).Append(plain);
    auto file = builder.File();
    CDcmObject object;
    unsigned long offset = 0;
    ASSERT_EQ(test::ReadUpTo(object, file, test::kUpToPixelData, &offset), kDcmSuccess);
    ExpectDataSet(object, "deflated");
    EXPECT_EQ(offset, meta + pixels);
    unsigned long length = 0;
    EXPECT_EQ(object.GetValueLength(tag::kPixelData, 1, length), kDcmSuccess);
    EXPECT_EQ(length, 50'000U);
}

TEST(DicomReading, AsksForNoMoreThanTheStop) {
    auto builder = DicomBuilder::Part10(test::kExplicitUid);
    AddDataSet(builder);
    builder.Add(tag::kPixelData, "OW", std::string(1'000'000, 'x'));
    auto file = builder.File();
    file.refusedPiece = 2;  // the first holds all of the header
    CDcmObject object;
    EXPECT_EQ(test::ReadUpTo(object, file, test::kUpToPixelData), kDcmSuccess);
    EXPECT_EQ(file.pieces, 1);
    file.pieces = 0;
    EXPECT_NE(test::ReadUpTo(object, file, test::kToTheEnd), kDcmSuccess);
}

TEST(DicomReading, StopsInTheMainDataSetOnly) {
    auto builder = DicomBuilder::Part10(test::kExplicitUid);
    builder.Add(kModality, "CS", "CT").Sequence(0x00880200).Item().Us(tag::kRows, 8);
    builder.Fragments({{'i', 'c', 'o', 'n'}}).EndItem().EndSequence();
    const std::size_t end = builder.Size();
    auto file = builder.Add(0x7FE10010, "LO", "late").File();
    CDcmObject object;
    unsigned long offset = 0;
    ASSERT_EQ(test::ReadUpTo(object, file, test::kUpToPixelData, &offset), kDcmSuccess);
    EXPECT_EQ(offset, end);
    CDcmItem icon(1);
    unsigned long length = 0;
    ASSERT_EQ(object.GetValue(0x00880200, icon), kDcmSuccess);
    EXPECT_EQ(icon.GetValueLength(tag::kPixelData, 1, length), kDcmSuccess);
}

constexpr std::uint32_t kIcon = tag::kPixelData;

using B = DicomBuilder&;
constexpr struct {
    const char* what;
    DCMRESULT result;
    int elements;  ///< of the main data set, meta information included
    int cut;       ///< how many of them say that they are cut
    void (*build)(B);
} kDamages[] = {
    {"no data set", kDcmFailure, 1, 0, [](B) {}},
    {"a value that the file cuts", kDcmSuccess, 3, 1,
     [](B b) { b.Us(tag::kRows, 1).Header(tag::kWindowCenter, "DS", 100).Raw("12"); }},
    {"a length of 4 GiB", kDcmSuccess, 3, 1,
     [](B b) { b.Us(tag::kRows, 1).Header(tag::kLUTData, "OW", 0xFFFFFFF0).Raw("1234"); }},
    {"half a header", kDcmSuccess, 2, 0, [](B b) { b.Us(tag::kRows, 1).Raw("\x28"); }},
    {"a sequence longer than the file", kDcmSuccess, 2, 1,
     [](B b) { b.Sequence(kSequence, 500).Item(4).Raw("1234"); }},
    {"a sequence shorter than its item", kDcmSuccess, 3, 0,
     [](B b) { b.Sequence(kSequence, 18).Item(90).Add(kUid, "UI", "1.").Us(tag::kRows, 1); }},
    {"a sequence without its delimiter", kDcmSuccess, 2, 1,
     [](B b) { b.Sequence(kSequence).Item().Add(kUid, "UI", "1."); }},
    {"delimiters that close nothing", kDcmSuccess, 3, 0,
     [](B b) { b.EndItem().Us(tag::kRows, 1).EndSequence().Us(tag::kColumns, 1); }},
    {"zeros behind the end", kDcmSuccess, 2, 0,
     [](B b) { b.Us(tag::kRows, 1).Raw(std::string(64, '\0')); }},
    {"an item outside of any sequence", kDcmSuccess, 3, 0,
     [](B b) { b.Us(tag::kRows, 1).Item(10).Us(tag::kRows, 2).Us(tag::kColumns, 1); }},
    {"one without length", kDcmSuccess, 3, 0,
     [](B b) { b.Us(tag::kRows, 1).Item().Us(tag::kRows, 2).EndItem().Us(tag::kColumns, 1); }},
    {"one that is never closed", kDcmSuccess, 4, 0,
     [](B b) { b.Us(tag::kRows, 1).Item().Us(tag::kColumns, 1).Add(kIcon, "OB", "12"); }},
    {"one that is longer than the file", kDcmSuccess, 3, 0,
     [](B b) { b.Us(tag::kRows, 1).Item(1000).Us(tag::kColumns, 1); }},
    {"one whose length is wrong", kDcmSuccess, 3, 0,
     [](B b) { b.Us(tag::kRows, 1).Item(3).Us(tag::kColumns, 1); }},
    {"meta information that breaks off", kDcmFailure, 2, 1,
     [](B b) { b.Header(0x00020012, "UI", 100).Raw("1.2"); }},
    {"a single unknown element that is longer than the file", kDcmFailure, 2, 1,
     [](B b) { b.Header(0x12345678, "UT", 100).Raw("1.2"); }},
    {"text where an element should begin", kDcmFailure, 2, 0,
     [](B b) { b.Us(tag::kRows, 1).Raw("this is no element at all, far from it"); }},
    {"tags that go down, and twice the same", kDcmSuccess, 3, 0,
     [](B b) { b.Us(tag::kRows, 1).Us(tag::kSamplesPerPixel, 3).Us(tag::kRows, 2); }},
    {"fragments that break off", kDcmSuccess, 2, 1,
     [](B b) { b.Header(tag::kPixelData, "OB", kUndefinedLength).Item(0).Item(50).Raw("12"); }},
    {"native Pixel Data of undefined length", kDcmSuccess, 2, 0,
     [](B b) { b.Header(tag::kPixelData, "OW", kUndefinedLength).Raw("12345678").EndSequence(); }},
    {"undefined UN, implicit inside", kDcmSuccess, 3, 0,
     [](B b) {
         DicomBuilder implicit(false);
         implicit.Item().Add(kUid, "", "1.").EndItem().EndSequence();
         b.Header(0x00091010, "UN", kUndefinedLength).Append(implicit).Us(tag::kRows, 1);
     }},
};

TEST(DicomReading, ReadsWhatIsThereOfDamagedFiles) {
    for (const auto& c : kDamages) {
        auto builder = DicomBuilder::Part10(test::kExplicitUid);
        c.build(builder);
        auto file = builder.File();
        CDcmObject object;
        EXPECT_EQ(test::ReadUpTo(object, file, test::kToTheEnd), c.result) << c.what;
        std::array<int, 2> counts{};  // of elements, and of those that are cut
        const ElementVisitor count = [](const DcmElementView& element, void* user) {
            auto& [elements, cut] = *static_cast<std::array<int, 2>*>(user);
            elements += element.depth == 0 ? 1 : 0;
            cut += element.depth == 0 && element.isCut ? 1 : 0;
            return MC_STATUS{kMcContinue};
        };
        EXPECT_EQ(object.WalkElements(&counts, count), kDcmSuccess) << c.what;
        EXPECT_EQ(counts, (std::array{c.elements, c.cut})) << c.what;
        // Of two equal tags the first counts.
        EXPECT_EQ(Read<int>(object, tag::kRows).value_or(1), 1) << c.what;
    }
}

/// An element of 16-bit length whose VR is these two characters.
void AddOdd(B builder, std::uint32_t tag, const std::string& letters, std::string_view value) {
    builder.Number(tag >> 16U, 2).Number(tag & 0xFFFFU, 2).Raw(letters);
    builder.Number(value.size(), 2).Raw(value);
}

TEST(DicomReading, AnUnknownVrDoesNotEndTheFile) {
    for (const char* const vr : {"  ", "??", "\0\0", "us", "--", "QQ"}) {
        const std::string letters(vr, 2);
        for (const bool isBigEndian : {false, true}) {
            auto builder = DicomBuilder::Part10(
                isBigEndian ? test::kBigEndianUid : test::kExplicitUid, true, isBigEndian);
            AddOdd(builder, tag::kImageType, letters, "ORIGINAL");  // the first of the data set
            builder.Add(kModality, "CS", "CT").Sequence(kSequence).Item();
            AddOdd(builder, kUid, letters, "1.23");  // the last of its item
            builder.EndItem().EndSequence().Add(kName, "PN", "A^B ");
            AddOdd(builder, 0x00091001, letters, "");
            AddOdd(builder, 0x00091002, letters, "in a row");
            // What a later VR holds is kept as bytes, which count as little endian.
            const bool isSwapped = isBigEndian && letters != "QQ";
            AddOdd(builder, tag::kSamplesPerPixel, letters, {isSwapped ? "\0\3" : "\3\0", 2});
            builder.Us(tag::kRows, 512);
            builder.Number(0x0029, 2).Number(0x1010, 2).Raw(letters);
            builder.Number(0, 2).Number(70'000, 4).Raw(std::string(70'000, 'l'));  // a long one
            AddOdd(builder, 0x00291011, letters, "behind");
            const std::size_t pixels = builder.Size();
            auto file = builder.Add(tag::kPixelData, "OW", "1234").File();
            CDcmObject object;
            unsigned long offset = 0;
            ASSERT_EQ(test::ReadUpTo(object, file, test::kUpToPixelData, &offset), kDcmSuccess)
                << letters;
            EXPECT_EQ(offset, pixels) << letters;
            ExpectDataSet(object, letters);
            EXPECT_EQ(Read<CString>(object, tag::kImageType), CString("ORIGINAL")) << letters;
            EXPECT_EQ(Read<CString>(object, 0x00291011), CString("behind")) << letters;
            EXPECT_EQ(Read<int>(object, tag::kSamplesPerPixel), 3) << letters;
        }
    }
}

TEST(DicomReading, KnowsNoSyntaxOfAnUnknownUid) {
    auto builder = DicomBuilder::Part10("1.2.3.4");
    AddDataSet(builder);
    auto file = builder.File();
    CDcmObject object;
    ASSERT_EQ(test::ReadUpTo(object, file, test::kToTheEnd), kDcmSuccess);
    ExpectDataSet(object, "unknown syntax");
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    EXPECT_NE(object.GetTransferSyntax(syntax), kDcmSuccess);
    EXPECT_EQ(object.SetTransferSyntax(kJpegBaseline), kDcmSuccess);
    EXPECT_EQ(object.GetTransferSyntax(syntax), kDcmSuccess);
    EXPECT_EQ(syntax, kJpegBaseline);
}

}  // namespace
}  // namespace quorvex
