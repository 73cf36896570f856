#include "foundation/dicom/reading/resynchronise.h"

#include "tests/support/dicom_builder.h"

#include <chrono>
#include <gtest/gtest.h>
#include <random>

namespace quorvex::dicom {
namespace {

using test::DicomBuilder;

DicomBuilder SmallDataSet(bool isExplicit, bool isBigEndian) {
    DicomBuilder builder(isExplicit, isBigEndian);
    builder.Add(0x00080060, "CS", "CT").Sequence(0x00081140).Item().Add(0x00081155, "UI", "1.23");
    builder.EndItem().EndSequence().Add(0x00100010, "PN", "A^B ");
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

TEST(DataSetFinder, FindsTheDataSetBehindJunk) {
    for (const auto& [isExplicit, isBigEndian] :
         {std::pair{true, false}, {false, false}, {true, true}}) {
        EXPECT_EQ(FirstPlace(Behind(1000, SmallDataSet(isExplicit, isBigEndian))), 1000);
    }
    auto withPixels = SmallDataSet(true, false);
    withPixels.Header(0x7FE00010, "OW", 0xFFFFFFF0).Raw("cut");
    EXPECT_EQ(FirstPlace(Behind(77, withPixels)), 77);
}

TEST(DataSetFinder, WantsAWholeChainOfElements) {
    DicomBuilder one;
    one.Add(0x00080060, "CS", "CT");
    EXPECT_EQ(FirstPlace(Behind(100, one)), -1);
    auto broken = SmallDataSet(true, false);
    broken.Raw("xyz");
    EXPECT_EQ(FirstPlace(Behind(100, broken)), -1);
    auto descending = SmallDataSet(true, false);
    descending.Add(0x00080005, "CS", "ISO_IR 100");
    EXPECT_EQ(FirstPlace(Behind(100, descending)), -1);
}

TEST(DataSetFinder, IsLessStrictAtTheBeginning) {
    auto odd = SmallDataSet(true, false);
    odd.Add(0x00100020, "LO", "odd")
        .Add(0x00080005, "CS", "late")
        .Header(0x00100030, "DA", 8)
        .Raw("2020");
    EXPECT_EQ(FirstPlace(Behind(0, odd)), 0);
    EXPECT_EQ(FirstPlace(Behind(10, odd)), -1);
    DicomBuilder meta;
    meta.Add(0x00020010, "UI", "1.2.840.10008.1.2");
    EXPECT_EQ(FirstPlace(Behind(0, meta)), 0);
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
    for (const auto& bytes : {Behind(kSize, DicomBuilder()), pattern, chain.Bytes(),
                              ItemsThatMeet(kSize / 32, kSize / 16), ByteBuffer(kSize)}) {
        DataSetFinder finder(bytes);
        const auto begin = std::chrono::steady_clock::now();
        int places = 0;
        for (std::size_t i = 1; i < bytes.size(); ++i) places += finder.CanBeginAt(i) ? 1 : 0;
        EXPECT_LE(places, 16);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    }
}

}  // namespace
}  // namespace quorvex::dicom
