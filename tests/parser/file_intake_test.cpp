#include "quorvex/Attributes.h"
#include "tests/parser/parsed.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <tuple>

namespace quorvex {
namespace {

using namespace test;

/// Everything that is written to the debug output while this lives.
class DebugLines {
public:
    DebugLines() {
        SetDebugOutput(
            [](const char* line, void* user) { *static_cast<std::string*>(user) += line; }, &text);
    }
    ~DebugLines() { SetDebugOutput(nullptr, nullptr); }
    std::string text;
};

const Bytes kPixels{1, 2, 3, 4, 5, 6, 7, 8};

Bytes Image(std::string_view uid = kExplicitUid) {
    return NativeFile(uid, {}, kPixels);
}

Bytes BareImage() {
    auto bare = DicomBuilder::In(kImplicitUid);
    return bare.SopUids().Image({}).Add(tag::kPixelData, "OW", kPixels).Bytes();
}

TEST(FileIntake, SaysWhyAFileIsNotOpened) {
    Parsed parsed;
    {
        const DebugLines lines;
        EXPECT_EQ(parsed.parser.Initialize(nullptr, "x", 0), QVM_ERROR_INVALID_DCMAPP);
        EXPECT_EQ(lines.text, "QVM_ERROR_INVALID_DCMAPP error\n");
    }
    for (const auto& [path, number] :
         {std::pair{"/no/such/file", "2"}, {"/tmp", "21"}, {"/dev/null", "22"}, {"", "2"}}) {
        const DebugLines lines;
        EXPECT_EQ(parsed.parser.Initialize(&parsed.app, path, 0), QVM_ERROR_FAILED_TO_READ_FILE);
        EXPECT_EQ(lines.text, std::string("ReadDicomFileToBuffer file open error :") + number);
        EXPECT_EQ(parsed.Header(), nullptr);
    }
}

Bytes BehindJunk(std::size_t count) {
    Bytes bytes(count, 0x5A);
    Append(bytes, BareImage());
    return bytes;
}

TEST(FileIntake, ReadsPart10AndBareDataSetsAlike) {
    const std::string part10 = "ParseDicomHeaderOfPart10File ";
    const std::string bare = "ParseDicomHeaderOfNonPart10File ";
    const std::string tooShort = "ReadDicomFileToBuffer file size error\n";
    const Bytes deflated =
        DicomBuilder::Part10(kDeflatedUid).Raw("\t\t\t\t\t").Raw(BareImage()).Bytes();
    const struct {
        const char* what;
        Bytes content;
        QUORVEX_MESSAGE code;
        std::string lines;  ///< what the debug output begins with
    } kContents[] = {
        {"nothing", {}, QVM_ERROR_FAILED_TO_READ_FILE, tooShort},
        {"132 bytes", Bytes(132), QVM_ERROR_FAILED_TO_READ_FILE, tooShort},
        {"133 bytes", Bytes(133), QVM_ERROR_FAILED_TO_PARSE_DICOM,
         bare + "pixel offset error\nQVM_ERROR_FAILED_TO_PARSE_DICOM error\n"},
        {"explicit", Image(), QVM_SUCCESS, part10 + "success("},
        {"implicit", Image(kImplicitUid), QVM_SUCCESS, part10 + "success("},
        {"bare", BareImage(), QVM_SUCCESS, bare + "success\n"},
        {"junk, 1", BehindJunk(1), QVM_SUCCESS, bare + "success2\n"},
        {"junk, 77", BehindJunk(77), QVM_SUCCESS, bare + "success2\n"},
        {"junk, 20001", BehindJunk(20001), QVM_SUCCESS, bare + "success2\n"},
        {"deflated, and nothing that inflates", deflated, QVM_SUCCESS, part10 + "error\n"},
    };
    for (const auto& c : kContents) {
        const DebugLines lines;
        Parsed parsed(c.content);
        EXPECT_EQ(parsed.code, c.code) << c.what;
        EXPECT_TRUE(lines.text.starts_with(c.lines)) << c.what << ": " << lines.text;
        if (c.code != QVM_SUCCESS) {
            EXPECT_EQ(parsed.parser.GetFrameCount(), parsed.Header() == nullptr ? 0 : 1) << c.what;
            continue;
        }
        EXPECT_EQ(FrameOf(parsed.parser), Done(kPixels)) << c.what;
        const Place place = PlaceOf(parsed.parser);
        EXPECT_EQ(place.code, QVM_SUCCESS) << c.what;
        EXPECT_EQ(place.offset, c.content.size() - kPixels.size()) << c.what;  // the junk counts
    }
}

/// A file with meta information of three elements, coded by RLE.
Bytes RleFile() {
    auto file = DicomBuilder::Part10(kRleUid);
    file.Add(0x00020012, "UI", "1.2.3.45").SopUids().Image({.bits = 8});
    Bytes segment(64);
    segment[0] = 1;
    segment[4] = 64;
    Append(segment, {3, 1, 2, 3, 4, 0x80});
    return file.Fragments({segment}).Bytes();
}

TEST(FileIntake, ReadsOnPastDamagedMetaInformation) {
    const Bytes good = RleFile();
    constexpr std::size_t kMeta = 132;
    const struct {
        const char* what;
        std::size_t place;
        Bytes bytes;
        bool keepsSyntax;
    } kDamages[] = {
        {"none", 0, {}, true},
        {"the marker", 128, {'D', 'I', 'C', 'X'}, true},
        {"the preamble and the marker", 0, Bytes(132, 0xFF), true},
        {"a length", kMeta + 6, {0xFE, 0xFF}, false},
        {"a length in front of the data set", kMeta + 8 + 20 + 6, {0xFF, 0x7F}, false},
        {"the first element", kMeta, Bytes(8, 0xEE), false},
        {"the first element, by zeros", kMeta, Bytes(8), false},
    };
    for (const auto& damage : kDamages) {
        Bytes file = good;
        std::ranges::copy(damage.bytes, file.begin() + static_cast<std::ptrdiff_t>(damage.place));
        Parsed parsed(file);
        ASSERT_EQ(parsed.code, QVM_SUCCESS) << damage.what;
        EXPECT_EQ(Read<CString>(*parsed.Header(), tag::kSOPInstanceUID), CString("2.25.1"))
            << damage.what;
        EXPECT_EQ(FrameOf(parsed.parser).code == QVM_SUCCESS, damage.keepsSyntax) << damage.what;
        if (damage.keepsSyntax) {
            EXPECT_EQ(FrameOf(parsed.parser), Done({1, 2, 3, 4})) << damage.what;
        }
    }
}

TEST(FileIntake, RandomBytesBehindTheMarkerAreNoFile) {
    std::mt19937 random(7);
    for (int i = 0; i < 200; ++i) {
        Bytes file = Beginning(Image(), 132);
        file.resize(132 + 100 * (1 + static_cast<std::size_t>(i)));
        std::generate(file.begin() + 132, file.end(),
                      [&] { return static_cast<unsigned char>(random()); });
        if (i % 2 != 0) std::ranges::copy(Bytes{2, 0, 16, 0, 'U', 'I'}, file.begin() + 132);
        EXPECT_EQ(Parsed(file).code, QVM_ERROR_FAILED_TO_PARSE_DICOM) << i;
    }
}

TEST(FileIntake, SamplesPerPixelFollowsThePhotometricInterpretation) {
    const std::tuple<const char*, unsigned, int> cases[] = {
        {"MONOCHROME2", 3, 1}, {"MONOCHROME1", 3, 1}, {"PALETTE COLOR", 3, 1}, {"YBR_FULL", 1, 3},
        {"RGB", 1, 3},         {"MONOCHROME", 1, 3},  {nullptr, 4, 4}};
    for (const auto& [photometric, stored, expected] : cases) {
        const ImageFacts facts{.photometric = photometric, .samples = stored};
        const Parsed parsed(NativeFile(kExplicitUid, facts, kPixels));
        ASSERT_EQ(parsed.code, QVM_SUCCESS);
        EXPECT_EQ(Read<int>(*parsed.Header(), tag::kSamplesPerPixel), expected)
            << (photometric == nullptr ? "none" : photometric);
    }
}

TEST(FileIntake, TakesACallersObjectAndItsMemory) {
    Parsed reader(Image());
    const unsigned long offset = PlaceOf(reader.parser).offset - 12;
    CDcmObject object(*reader.Header());
    object.SetValue(tag::kSamplesPerPixel, static_cast<unsigned short>(3));

    CDcmApp app;
    CxDcmParser parser;
    Bytes image = Image();
    EXPECT_EQ(parser.Initialize(nullptr, &object, image.data(), image.size(), offset),
              QVM_ERROR_INVALID_DCMAPP);
    EXPECT_EQ(parser.GetHeader(), nullptr);
    ASSERT_EQ(parser.Initialize(&app, &object, image.data(), image.size(), offset), QVM_SUCCESS);
    std::ranges::fill(image, static_cast<unsigned char>(0));
    EXPECT_EQ(parser.GetHeader(), &object);
    EXPECT_EQ(FrameOf(parser), Done(kPixels));
    EXPECT_EQ(Read<int>(object, tag::kSamplesPerPixel), 1);

    for (Bytes strange : {Bytes(200, 0x41), Bytes(1), Bytes()}) {
        strange.reserve(1);
        EXPECT_EQ(parser.Initialize(&app, &object, strange.data(), strange.size(), 0),
                  QVM_ERROR_INVALID_DCMAPP);
    }
    // Back to an object alone: without Pixel Data in it there is no frame.
    ASSERT_EQ(parser.Initialize(&app, &object, nullptr, 0, 0), QVM_SUCCESS);
    EXPECT_EQ(FrameOf(parser), Refused(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA));
    EXPECT_EQ(PlaceOf(parser).code, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
    // The header of this very parser may come back in, and stays its own.
    ASSERT_EQ(reader.parser.Initialize(&app, reader.Header(), nullptr, 0, 0), QVM_SUCCESS);
    EXPECT_EQ(reader.parser.GetFrameCount(), 1);
}

TEST(FileIntake, CopiesStandAlone) {
    CxDcmParser copy;
    {
        const Parsed parsed(Image());
        copy = parsed.parser;
        const CxDcmParser third(parsed.parser);
        EXPECT_NE(copy.GetHeader(), parsed.Header());
        EXPECT_EQ(third.GetFrameCount(), 1);
        parsed.Header()->SetValue(tag::kRows, static_cast<unsigned short>(1));
    }
    EXPECT_EQ(FrameOf(copy), Done(kPixels));
}

TEST(FileIntake, NoCutOfAFileDoesHarm) {
    auto nested = DicomBuilder::Part10(kRleUid);
    nested.Sequence(tag::kReferencedImageSequence).Item().Image({}).EndItem().EndSequence();
    nested.SopUids().Image({}).Fragments({Bytes(64), kPixels});
    for (const Bytes& whole : {Image(), nested.Bytes()}) {
        for (std::size_t size = 0; size < whole.size(); ++size) {
            const auto end = whole.begin() + static_cast<std::ptrdiff_t>(size);
            for (const int readWholeFile : {0, 1}) {
                Parsed parsed(Bytes(whole.begin(), end), readWholeFile);
                EXPECT_EQ(parsed.code == QVM_ERROR_FAILED_TO_READ_FILE, size <= 132) << size;
                const Answered frame = FrameOf(parsed.parser);
                if (frame.code != QVM_SUCCESS) continue;
                EXPECT_GT(size + 64 + 2 * kPixels.size(), whole.size());
                EXPECT_EQ(frame.bytes.size(), kPixels.size());
            }
        }
    }
}

}  // namespace
}  // namespace quorvex
