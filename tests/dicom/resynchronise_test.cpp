#include "foundation/dicom/reading/resynchronise.h"

#include "tests/support/dicom_builder.h"

#include <ctime>
#include <gtest/gtest.h>
#include <random>

namespace quorvex::dicom {
namespace {

using test::DicomBuilder;

DicomBuilder SmallDataSet(bool isExplicit, bool isBigEndian) {
    DicomBuilder builder(isExplicit, isBigEndian);
    builder.Add(tag::kModality, "CS", "CT")
        .Sequence(tag::kReferencedImageSequence)
        .Item()
        .Add(tag::kReferencedSOPInstanceUID, "UI", "1.23");
    builder.EndItem().EndSequence().Add(tag::kPatientName, "PN", "A^B ");
    return builder;
}

ByteBuffer Behind(std::size_t junk, const DicomBuilder& dataSet) {
    std::mt19937 random(7);
    ByteBuffer bytes(junk);
    for (auto& byte : bytes) byte = static_cast<unsigned char>(random());
    bytes.insert(bytes.end(), dataSet.Bytes().begin(), dataSet.Bytes().end());
    return bytes;
}

int FirstPlace(const ByteBuffer& bytes) {
    DataSetFinder finder(bytes);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (finder.CanBeginAt(i)) return static_cast<int>(i);
    }
    return -1;
}

TEST(DataSetFinder, FindsAWholeChainOfElementsBehindJunk) {
    for (const auto& [isExplicit, isBigEndian] :
         {std::pair{true, false}, {false, false}, {true, true}})
        EXPECT_EQ(FirstPlace(Behind(1000, SmallDataSet(isExplicit, isBigEndian))), 1000);
    const auto small = SmallDataSet(true, false);
    auto odd = small;
    odd.Add(tag::kPatientID, "LO", "odd").Add(tag::kSpecificCharacterSet, "CS", "late");
    odd.Header(tag::kPatientBirthDate, "DA", 8).Raw("2020");
    const auto then = [&] { return small; };
    constexpr auto kSet = tag::kSpecificCharacterSet;
    const auto behindMeta = [](std::string_view uid, const DicomBuilder& dataSet) {
        return DicomBuilder()
            .Add(tag::kMediaStorageSOPClassUID, "UI", "1.23")
            .Padded(tag::kTransferSyntaxUID, "UI", uid)
            .Append(dataSet);
    };
    const struct {
        const char* what;
        DicomBuilder dataSet;
        std::size_t junk;
        int place;
    } kCases[] = {
        {"cut pixels", then().Header(tag::kPixelData, "OW", 0xFFFFFFF0).Raw("cut"), 77, 77},
        {"one element", DicomBuilder().Add(tag::kModality, "CS", "CT"), 100, -1},
        {"a broken one", then().Raw("xyz"), 100, -1},
        {"a descending one", then().Add(kSet, "CS", "ISO_IR 100"), 100, -1},
        {"odd, but at the beginning", odd, 0, 0},
        {"odd", odd, 10, -1},
        {"a stray item", then().Item(6).Raw("inside").Add(tag::kPatientID, "LO", "1 "), 10, 10},
        {"one without length", then().Item().Append(small).EndItem(), 10, 10},
        {"delimiters", then().EndItem().EndSequence().Add(tag::kPatientID, "LO", "1 "), 10, 10},
        {"an unknown VR", then().Add(tag::kPatientID, "??", "1 ").Us(tag::kRows, 1), 10, 10},
        {"meta information ahead", behindMeta(test::kExplicitUid, small), 10, 10},
        {"and another encoding behind", behindMeta(test::kImplicitUid, SmallDataSet(false, false)),
         10, 10},
        {"big endian", behindMeta(test::kBigEndianUid, SmallDataSet(true, true)), 10, 10},
        {"deflated", behindMeta(test::kDeflatedUid, DicomBuilder().Raw("any bytes at all")), 10,
         10},
        {"a short one of another group",
         behindMeta(test::kExplicitUid, DicomBuilder().Us(tag::kRows, 1)), 10, 10},
        {"meta information alone", behindMeta(test::kExplicitUid, DicomBuilder()), 10, -1},
        {"of no syntax, and junk", behindMeta("1.2.3", DicomBuilder().Raw("any bytes")), 10, -1},
        {"meta information", DicomBuilder().Add(0x00020010, "UI", "1.2.840.10008.1.2"), 0, 0},
    };
    for (const auto& c : kCases)
        EXPECT_EQ(FirstPlace(Behind(c.junk, c.dataSet)), c.place) << c.what;
}

/// Many elements of undefined length whose items all run into the same long list, which never ends.
ByteBuffer ItemsThatMeet(std::size_t starts, std::size_t items) {
    DicomBuilder builder(false);
    for (std::size_t i = 0; i < starts; ++i) {
        const auto behind = static_cast<std::uint32_t>((starts - 1 - i) * 16);
        builder.Header(0x00080000 + static_cast<std::uint32_t>(i % 0x10000), "", 0xFFFFFFFF)
            .Item(behind);
    }
    for (std::size_t i = 0; i < items; ++i) builder.Item(0);
    return builder.Bytes();
}

TEST(DataSetFinder, StaysLinearOnHostileBytes) {
    constexpr std::size_t kSize = 2'000'000;
    ByteBuffer pattern(kSize);
    for (std::size_t i = 0; i < kSize; i += 2) pattern[i] = 8;
    DicomBuilder chain(false);  // every element leads into the same long ascending chain
    for (std::uint32_t i = 0; i < kSize / 10; ++i) chain.Add(0x00080000 + i, "", "12");
    DicomBuilder metas;  // one that ends nowhere, so that each of its elements is tried
    for (std::uint32_t i = 0; i < 0x10000; ++i) metas.Add(0x00020000 + i, "UI", "12");
    for (const auto& bytes : {Behind(kSize, DicomBuilder()), pattern, chain.Bytes(), metas.Bytes(),
                              ItemsThatMeet(kSize / 32, kSize / 16), ByteBuffer(kSize)}) {
        DataSetFinder finder(bytes);
        const auto begin = std::clock();
        int places = 0;
        for (std::size_t i = 1; i < bytes.size(); ++i) places += finder.CanBeginAt(i) ? 1 : 0;
        EXPECT_LE(places, 16);
        EXPECT_LT(std::clock() - begin, 60 * CLOCKS_PER_SEC);  // hours, were it quadratic
    }
}

}  // namespace
}  // namespace quorvex::dicom
