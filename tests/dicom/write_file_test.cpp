#include "foundation/dicom/frames/native_frames.h"
#include "foundation/dicom/frames/offset_tables.h"
#include "foundation/dicom/model/byte_order.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/value_representation.h"
#include "tests/dicom/pixel_frames.h"
#include "tests/support/corpus.h"
#include "tests/support/temporary_file.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

namespace quorvex {
namespace {

namespace fs = std::filesystem;

using test::ReadWhole;
using test::SyntaxOf;

constexpr auto kCharacterSet = tag::kSpecificCharacterSet;

struct Snapshot {
    bool isBigEndian;
    std::uint32_t bitsAllocated;
    std::vector<std::string> lines;
};

/// The value as text, little endian and without its padding.
std::string PlainValue(const DcmElementView& view, const Snapshot& snapshot) {
    std::string value(view.data, view.data + view.length);
    const auto form = dicom::Describe(view.vr);
    if (value.size() % 2 != 0) value += static_cast<char>(form.pad);
    const auto unit = view.tag == tag::kPixelData
                          ? dicom::PixelWordBytes(view.vr, snapshot.bitsAllocated)
                          : std::size_t{form.unit};
    auto* bytes = reinterpret_cast<unsigned char*>(value.data());
    if (snapshot.isBigEndian) dicom::SwapBytes(bytes, value.size(), unit);
    return value;
}

MC_STATUS AddLine(const DcmElementView& view, void* user) {
    auto& snapshot = *static_cast<Snapshot*>(user);
    const bool isLeftOut = dicom::IsMetaTag(view.tag) || dicom::IsGroupLength(view.tag);
    if (isLeftOut || view.vr == MC_VR_SQ) return kMcContinue;
    const bool isPixelData = view.tag == tag::kPixelData && view.depth == 0;
    std::string line = std::to_string(view.depth) + "[" + std::to_string(view.itemIndex) + "]" +
                       std::to_string(view.tag) + ":";
    if (!isPixelData && view.data != nullptr) line += PlainValue(view, snapshot);
    snapshot.lines.push_back(line);
    return kMcContinue;
}

std::vector<std::string> LinesOf(const CDcmObject& object) {
    Snapshot snapshot{SyntaxOf(object) == kExplicitBigEndian,
                      Read<unsigned int>(object, tag::kBitsAllocated).value_or(0),
                      {}};
    static_cast<void>(object.WalkElements(&snapshot, AddLine));
    return snapshot.lines;
}

/// The frames as the walk gives them, without the pad byte that a last one may end with.
std::vector<std::string> FramesOf(const CDcmObject& object) {
    auto frames = test::StoredFrames(object);
    for (auto& frame : frames) frame.append(frame.size() % 2, '\0');
    return frames;
}

/// The object written and read back.
CDcmObject Again(const CDcmObject& object, const std::string& what) {
    const test::TemporaryFile file;
    CDcmObject again;
    EXPECT_EQ(object.WriteFile(file.Path()), kDcmSuccess)
        << what << object.GetErrorMessage().ToUtf8();
    EXPECT_TRUE(ReadWhole(again, file.Path())) << what;
    return again;
}

TEST(WriteFile, RealFilesReadBackEqualAndNativeOnesInEveryEncoding) {
    int written = 0;
    for (const auto& file : test::RealFiles()) {
        CDcmObject object;
        if (!ReadWhole(object, file.string()) || SyntaxOf(object) == kSyntaxNone) continue;
        std::vector<TRANSFER_SYNTAX> targets = {SyntaxOf(object)};
        if (targets[0] <= kDeflatedExplicitLittleEndian)
            targets = {kImplicitLittleEndian, kExplicitLittleEndian, kExplicitBigEndian,
                       kDeflatedExplicitLittleEndian};
        for (const auto target : targets) {
            const std::string what = file.string() + " as " + std::to_string(target);
            CDcmObject converted = object;
            if (target != SyntaxOf(object)) {
                ASSERT_EQ(converted.SetTransferSyntax(target), kDcmSuccess) << what;
            }
            const CDcmObject again = Again(converted, what);
            EXPECT_EQ(SyntaxOf(again), target) << what;
            EXPECT_EQ(LinesOf(again), LinesOf(object)) << what;
            EXPECT_TRUE(FramesOf(object) == FramesOf(again)) << what;
            ++written;
        }
    }
    if (written == 0) GTEST_SKIP() << "no real files on this machine";
}

std::string TextOf(const CDcmObjectCommon& object, std::uint32_t tag) {
    return Read<CString>(object, tag).value_or(CString()).ToUtf8();
}

constexpr struct {
    const char* characterSet;
    const char* name;
    const char* characterSetAfter;
} kTexts[] = {
    {"ISO_IR 100", "Buc^Jérôme", "ISO_IR 100"},
    {"ISO_IR 100", "山田^太郎", "ISO_IR 192"},
    {"", "Jérôme", "ISO_IR 192"},
    {"", "Jerome", ""},
    {"\\ISO 2022 IR 87", "Yamada^Tarou=山田^太郎", ""},
    {"GB18030", "Wang^XiaoDong=王^小东", "GB18030"},
};

/// An object with a character set, where there is one.
CDcmObject ObjectIn(const char* characterSet) {
    CDcmObject object;
    object.SetTransferSyntax(kExplicitLittleEndian);
    if (*characterSet != '\0') object.SetValue(kCharacterSet, characterSet);
    return object;
}

TEST(WriteFile, TextGoesIntoTheObjectsCharacterSetOrTheObjectIntoUtf8) {
    for (const auto& c : kTexts) {
        CDcmObject object = ObjectIn(c.characterSet);
        object.SetValue(tag::kPatientName, CString(c.name));
        const CDcmObject again = Again(object, c.name);
        EXPECT_EQ(TextOf(again, tag::kPatientName), c.name);
        EXPECT_EQ(TextOf(again, kCharacterSet), c.characterSetAfter) << c.name;
    }
}

TEST(WriteFile, ItemsOfAnotherCharacterSetKeepTheirText) {
    constexpr auto kSequence = tag::kReferencedImageSequence;
    CDcmObject latin = ObjectIn("ISO_IR 100");
    CDcmItem step;
    step.SetValue(tag::kSeriesDescription, CString("Schädel"));
    latin.SetValue(kSequence, &step);
    auto read = Read<CDcmItem>(Again(latin, "Latin"), kSequence);
    ASSERT_TRUE(read);
    CDcmObject greek = ObjectIn("ISO_IR 126");
    greek.SetValue(tag::kPatientName, CString("Διονυσιος"));
    greek.SetValue(kSequence, &*read);
    const CDcmObject again = Again(greek, "Greek");
    const auto item = Read<CDcmItem>(again, kSequence);
    ASSERT_TRUE(item);
    EXPECT_EQ(TextOf(*item, tag::kSeriesDescription), "Schädel");
    EXPECT_EQ(TextOf(again, tag::kPatientName), "Διονυσιος");
    EXPECT_EQ(TextOf(again, kCharacterSet), "ISO_IR 192");
}

void FillImage(CDcmObject& object, int rows, int columns, int frames) {
    object.SetValue(tag::kSOPClassUID, "1.2.840.10008.5.1.4.1.1.7");
    object.SetValue(tag::kSOPInstanceUID, "1.2.999.700040.1.9");
    object.SetValue(tag::kSamplesPerPixel, static_cast<unsigned short>(1));
    object.SetValue(tag::kPhotometricInterpretation, "MONOCHROME2");
    object.SetValue(tag::kNumberOfFrames, frames);
    object.SetValue(tag::kRows, static_cast<unsigned short>(rows));
    object.SetValue(tag::kColumns, static_cast<unsigned short>(columns));
    object.SetValue(tag::kBitsAllocated, static_cast<unsigned short>(8));
}

bool SetFrames(CDcmObject& object, std::vector<std::string> frames) {
    std::vector<unsigned long> lengths;
    std::vector<unsigned char*> buffers;
    for (auto& frame : frames) {
        lengths.push_back(frame.size());
        buffers.push_back(reinterpret_cast<unsigned char*>(frame.data()));
    }
    return object.SetValueEx(tag::kPixelData, static_cast<int>(frames.size()), lengths.data(),
                             buffers.data()) == kDcmSuccess;
}

TEST(WriteFile, EncapsulatedFramesComeBackOneByOne) {
    CDcmObject object;
    object.SetTransferSyntax(kJpegBaseline);
    FillImage(object, 1, 3, 3);
    ASSERT_TRUE(SetFrames(object, {"odd", "even", "x"}));
    const std::vector<std::string> padded = {{"odd\0", 4}, "even", {"x\0", 2}};
    EXPECT_EQ(FramesOf(object), padded);
    const test::TemporaryFile file;
    ASSERT_EQ(object.WriteFile(file.Path()), kDcmSuccess);
    CDcmObject again;
    ASSERT_TRUE(ReadWhole(again, file.Path()));
    EXPECT_EQ(FramesOf(again), padded);
    EXPECT_EQ(TextOf(again, tag::kMediaStorageSOPInstanceUID), "1.2.999.700040.1.9");
    EXPECT_EQ(TextOf(again, tag::kTransferSyntaxUID), "1.2.840.10008.1.2.4.50");
    const bool hasTool = std::system("command -v dcmdump > /dev/null") == 0;
    EXPECT_EQ(hasTool ? std::system(("dcmdump -q " + file.Path() + " > /dev/null").c_str()) : 0, 0);
}

TEST(WriteFile, OffsetTablesGrowIntoTheExtendedOnesPast32Bits) {
    const std::uint64_t lengths[] = {3, 0xFFFFFFF0, 10};
    const auto small = dicom::OffsetTablesOf(std::span(lengths).first(2));
    EXPECT_EQ(small.basic, (std::vector<unsigned char>{0, 0, 0, 0, 12, 0, 0, 0}));
    EXPECT_TRUE(small.extendedOffsets.empty());
    const auto large = dicom::OffsetTablesOf(lengths);
    EXPECT_TRUE(large.basic.empty());
    EXPECT_EQ(large.extendedOffsets.size(), 24U);
    EXPECT_EQ(large.extendedOffsets[20], 1);  // 12 + 8 + 0xFFFFFFF0 is 0x100000004
    EXPECT_EQ(large.extendedOffsets[16], 4);
    EXPECT_EQ(large.extendedLengths[16], 10);
}

TEST(WriteFile, AFailureLeavesWhatWasThere) {
    const test::ScratchFolder folder;
    const auto path = folder.Path("kept.dcm");
    std::ofstream(path) << "kept";
    CDcmObject object;
    FillImage(object, 1, 3, 1);
    object.SetTransferSyntax(kExplicitLittleEndian);
    ASSERT_TRUE(SetFrames(object, {"coded data that is native by no count"}));
    EXPECT_NE(object.WriteFile(path), kDcmSuccess);  // coded pixels under a native syntax
    EXPECT_FALSE(object.GetErrorMessage().IsEmpty());
    EXPECT_NE(object.WriteFile(folder.Path("no/such/folder.dcm")), kDcmSuccess);
    object.SetTransferSyntax(kJpegBaseline);
    fs::create_directory(folder.Path("folder"));
    EXPECT_NE(object.WriteFile(folder.Path("folder")), kDcmSuccess);
    EXPECT_EQ(folder.Names().size(), 2U);
    EXPECT_EQ(fs::file_size(path), 4U);
    EXPECT_EQ(object.WriteFile(path), kDcmSuccess);
    EXPECT_EQ(folder.Names().size(), 2U);
}

struct Supply {
    std::vector<std::string> pieces;
    std::size_t next = 0;
};

MC_STATUS SupplyPiece(int, std::uint32_t, void* user, int first, int* length, void** data,
                      int* last) {
    auto& supply = *static_cast<Supply*>(user);
    EXPECT_EQ(first != 0, supply.next == 0);
    auto& piece = supply.pieces[supply.next++];
    *length = static_cast<int>(piece.size());
    *data = piece.data();
    *last = supply.next == supply.pieces.size() ? 1 : 0;
    return kMcContinue;
}

TEST(PixelWriting, ACallbackSuppliesAValueInPieces) {
    CDcmObject object;
    FillImage(object, 1, 4, 2);
    Supply supply = {{"abcd", "ef", "gh"}};
    ASSERT_EQ(object.SetValue(tag::kPixelData, &supply, SupplyPiece), kDcmSuccess);
    EXPECT_EQ(FramesOf(object), (std::vector<std::string>{"abcd", "efgh"}));
    EXPECT_EQ(object.SetValueRepresentation(tag::kPixelData, MC_VR_OW), kDcmSuccess);
    EXPECT_NE(object.SetValueRepresentation(tag::kPixelData, MC_VR_SQ), kDcmSuccess);
    EXPECT_NE(object.SetValueRepresentation(tag::kPatientName, MC_VR_LO), kDcmSuccess);
    Supply endless = {{"", "", ""}};
    EXPECT_NE(object.SetValue(tag::kPixelData, &endless, SupplyPiece), kDcmSuccess);
    EXPECT_EQ(FramesOf(object).size(), 2U);
}

}  // namespace
}  // namespace quorvex
