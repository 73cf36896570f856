/// How data sets are read: encodings, labels that lie, stops, and damage.
#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"
#include "tests/support/dicom_builder.h"

#include <gtest/gtest.h>
#include <string>
#include <zlib.h>

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
    to.EndItem().EndSequence().Add(kName, "PN", "A^B ").Us(tag::kRows, 512).Us(0x00280100, 16);
}

void ExpectDataSet(const CDcmObject& object, const std::string& what) {
    EXPECT_EQ(Read<CString>(object, kName), CString("A^B")) << what;
    EXPECT_EQ(Read<int>(object, tag::kRows), 512) << what;
    const auto item = Read<CDcmItem>(object, kSequence);
    ASSERT_TRUE(item) << what;
    EXPECT_EQ(Read<CString>(*item, kUid), CString("1.23")) << what;
}

struct EncodingCase {
    const char* what;
    std::string_view label;
    bool isExplicit;
    bool isBigEndian;
    TRANSFER_SYNTAX syntax;
    unsigned long pixelHeader;
};
constexpr EncodingCase kEncodings[] = {
    {"implicit", test::kImplicitUid, false, false, kImplicitLittleEndian, 8},
    {"explicit", test::kExplicitUid, true, false, kExplicitLittleEndian, 12},
    {"big endian", test::kBigEndianUid, true, true, kExplicitBigEndian, 12},
    {"implicit labelled explicit", test::kExplicitUid, false, false, kImplicitLittleEndian, 8},
    {"explicit labelled implicit", test::kImplicitUid, true, false, kExplicitLittleEndian, 12},
    {"big endian labelled little", test::kExplicitUid, true, true, kExplicitBigEndian, 12},
    {"little endian labelled big", test::kBigEndianUid, true, false, kExplicitLittleEndian, 12},
    {"implicit labelled RLE", "1.2.840.10008.1.2.5", false, false, kRle, 8},
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
    }
}

TEST(DicomReading, TakesBareDataSetsOfAnyEncoding) {
    for (const auto& c : kEncodings) {
        DicomBuilder builder(c.isExplicit, c.isBigEndian);
        AddDataSet(builder);
        auto file = builder.File();
        CDcmObject object;
        unsigned long offset = 0;
        ASSERT_EQ(test::ReadBare(object, file, test::kUpToPixelData, &offset), kDcmSuccess)
            << c.what;
        ExpectDataSet(object, c.what);
        EXPECT_EQ(offset, builder.Size()) << c.what;
    }
}

TEST(DicomReading, InflatesAndKeepsPixelDataInTheObject) {
    DicomBuilder plain;
    AddDataSet(plain);
    const std::size_t pixels = plain.Size();
    plain.Add(tag::kPixelData, "OW", std::string(50'000, '\7'));
    std::vector<unsigned char> deflated(plain.Size());
    z_stream stream{};
    ASSERT_EQ(deflateInit2(&stream, 9, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::vector<unsigned char> input = plain.Bytes();
    stream.next_in = input.data();
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = deflated.data();
    stream.avail_out = static_cast<uInt>(deflated.size());
    ASSERT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    deflated.resize(stream.total_out);
    deflateEnd(&stream);

    auto builder = DicomBuilder::Part10(test::kDeflatedUid);
    const std::size_t meta = builder.Size();
    auto file = builder.Raw(deflated).File();
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
    builder.Header(tag::kPixelData, "OB", kUndefinedLength)
        .Item(0)
        .Item(4)
        .Raw("icon")
        .EndSequence();
    builder.EndItem().EndSequence();
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

struct DamageCase {
    const char* what;
    void (*build)(DicomBuilder&);
    DCMRESULT result;
    int elements;  ///< of the main data set, meta information included
    int cut;       ///< how many of them say that they are cut
};
constexpr DamageCase kDamages[] = {
    {"no data set", [](DicomBuilder&) {}, kDcmFailure, 1, 0},
    {"a value that the file cuts",
     [](DicomBuilder& b) { b.Us(tag::kRows, 1).Header(0x00281050, "DS", 100).Raw("12"); },
     kDcmSuccess, 3, 1},
    {"a length of 4 GiB",
     [](DicomBuilder& b) { b.Us(tag::kRows, 1).Header(0x00281201, "OW", 0xFFFFFFF0).Raw("1234"); },
     kDcmSuccess, 3, 1},
    {"half a header", [](DicomBuilder& b) { b.Us(tag::kRows, 1).Raw("\x28"); }, kDcmSuccess, 2, 0},
    {"a sequence longer than the file",
     [](DicomBuilder& b) { b.Sequence(kSequence, 500).Item(4).Raw("1234"); }, kDcmSuccess, 2, 1},
    {"a sequence shorter than its item",
     [](DicomBuilder& b) {
         b.Sequence(kSequence, 18).Item(90).Add(kUid, "UI", "1.").Us(tag::kRows, 1);
     },
     kDcmSuccess, 3, 0},
    {"a sequence without its delimiter",
     [](DicomBuilder& b) { b.Sequence(kSequence).Item().Add(kUid, "UI", "1."); }, kDcmSuccess, 2,
     1},
    {"delimiters that close nothing",
     [](DicomBuilder& b) { b.EndItem().Us(tag::kRows, 1).EndSequence().Us(0x00280011, 1); },
     kDcmSuccess, 3, 0},
    {"zeros behind the end",
     [](DicomBuilder& b) { b.Us(tag::kRows, 1).Raw(std::string(64, '\0')); }, kDcmSuccess, 2, 0},
    {"text where an element should begin",
     [](DicomBuilder& b) { b.Us(tag::kRows, 1).Raw("this is no element at all, far from it"); },
     kDcmFailure, 2, 0},
    {"tags that go down, and twice the same",
     [](DicomBuilder& b) { b.Us(tag::kRows, 1).Us(0x00280002, 3).Us(tag::kRows, 2); }, kDcmSuccess,
     3, 0},
    {"fragments that break off",
     [](DicomBuilder& b) {
         b.Header(tag::kPixelData, "OB", kUndefinedLength).Item(0).Item(50).Raw("12");
     },
     kDcmSuccess, 2, 1},
    {"native Pixel Data of undefined length",
     [](DicomBuilder& b) {
         b.Header(tag::kPixelData, "OW", kUndefinedLength).Raw("12345678").EndSequence();
     },
     kDcmSuccess, 2, 0},
    {"undefined UN, implicit inside",
     [](DicomBuilder& b) {
         DicomBuilder implicit(false);
         implicit.Item().Add(kUid, "", "1.").EndItem().EndSequence();
         b.Header(0x00091010, "UN", kUndefinedLength);
         b.Append(implicit).Us(tag::kRows, 1);
     },
     kDcmSuccess, 3, 0},
};

struct Counts {
    int elements = 0;
    int cut = 0;
};

MC_STATUS Count(const DcmElementView& element, void* user) {
    auto* counts = static_cast<Counts*>(user);
    if (element.depth > 0) return kMcContinue;
    ++counts->elements;
    counts->cut += element.isCut ? 1 : 0;
    return kMcContinue;
}

TEST(DicomReading, ReadsWhatIsThereOfDamagedFiles) {
    for (const auto& c : kDamages) {
        auto builder = DicomBuilder::Part10(test::kExplicitUid);
        c.build(builder);
        auto file = builder.File();
        CDcmObject object;
        EXPECT_EQ(test::ReadUpTo(object, file, test::kToTheEnd), c.result) << c.what;
        Counts counts;
        EXPECT_EQ(object.WalkElements(&counts, Count), kDcmSuccess) << c.what;
        EXPECT_EQ(counts.elements, c.elements) << c.what;
        EXPECT_EQ(counts.cut, c.cut) << c.what;
    }
}

TEST(DicomReading, TheFirstOfTwoEqualTagsWins) {
    auto file = DicomBuilder::Part10(test::kExplicitUid)
                    .Us(tag::kRows, 1)
                    .Us(0x00280002, 3)
                    .Us(tag::kRows, 2)
                    .File();
    CDcmObject object;
    ASSERT_EQ(test::ReadUpTo(object, file, test::kToTheEnd), kDcmSuccess);
    EXPECT_EQ(Read<int>(object, tag::kRows), 1);
}

TEST(DicomReading, AnswersEveryCutOfAFile) {
    auto builder = DicomBuilder::Part10(test::kExplicitUid);
    AddDataSet(builder);
    builder.Header(tag::kPixelData, "OB", kUndefinedLength)
        .Item(0)
        .Item(4)
        .Raw("1234")
        .EndSequence();
    for (std::size_t length = 0; length < builder.Size(); ++length) {
        auto file = builder.File();
        file.bytes.resize(length);
        CDcmObject object;
        static_cast<void>(test::ReadUpTo(object, file, test::kToTheEnd));
        Counts counts;
        EXPECT_EQ(object.WalkElements(&counts, Count), kDcmSuccess) << length;
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
