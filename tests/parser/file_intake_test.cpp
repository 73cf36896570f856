#include "quorvex/CxDcmParser.h"
#include "tests/support/dicom_builder.h"
#include "tests/support/temporary_file.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace quorvex {
namespace {

using test::Bytes;
using test::DicomBuilder;
using test::ImageFacts;
using test::TemporaryFile;

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

QUORVEX_MESSAGE ReadBytes(CxDcmParser& parser, const Bytes& bytes) {
    CDcmApp app;
    const TemporaryFile file(bytes);
    return parser.Initialize(&app, CString(file.Path()), 0);
}

Bytes Frame(CxDcmParser& parser, int index = 0) {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    EXPECT_EQ(parser.GetAFrame(index, data, size, 0), QVM_SUCCESS);
    const Bytes frame(data, data + (data == nullptr ? 0 : size));
    delete[] data;
    return frame;
}

const Bytes kPixels{1, 2, 3, 4, 5, 6, 7, 8};

TEST(FileIntake, SaysWhyAFileIsNotRead) {
    CDcmApp app;
    CxDcmParser parser;
    {
        const DebugLines lines;
        EXPECT_EQ(parser.Initialize(nullptr, "x", 0), QVM_ERROR_INVALID_DCMAPP);
        EXPECT_EQ(lines.text, "QVM_ERROR_INVALID_DCMAPP error\n");
    }
    for (const auto& [path, number] :
         {std::pair{"/no/such/file", "2"}, {"/tmp", "21"}, {"/dev/null", "22"}, {"", "2"}}) {
        const DebugLines lines;
        EXPECT_EQ(parser.Initialize(&app, path, 0), QVM_ERROR_FAILED_TO_READ_FILE);
        EXPECT_EQ(lines.text, std::string("ReadDicomFileToBuffer file open error :") + number);
        EXPECT_EQ(parser.GetHeader(), nullptr);
    }
    for (const std::size_t size : {std::size_t{0}, std::size_t{132}}) {
        const DebugLines lines;
        EXPECT_EQ(ReadBytes(parser, Bytes(size)), QVM_ERROR_FAILED_TO_READ_FILE);
        EXPECT_EQ(lines.text, "ReadDicomFileToBuffer file size error\n");
    }
    const DebugLines lines;
    EXPECT_EQ(ReadBytes(parser, Bytes(133)), QVM_ERROR_FAILED_TO_PARSE_DICOM);
    EXPECT_EQ(lines.text,
              "ParseDicomHeaderOfNonPart10File pixel offset error\n"
              "QVM_ERROR_FAILED_TO_PARSE_DICOM error\n");
    EXPECT_EQ(parser.GetFrameCount(), parser.GetHeader() == nullptr ? 0 : 1);
}

Bytes BareImage() {
    return DicomBuilder::In(test::kImplicitUid)
        .SopUids()
        .Image({})
        .Add(tag::kPixelData, "OW", kPixels)
        .Bytes();
}

TEST(FileIntake, ReadsPart10AndBareDataSetsAlike) {
    for (const auto uid : {test::kExplicitUid, test::kImplicitUid}) {
        const Bytes whole = test::NativeFile(uid, ImageFacts{}, kPixels);
        CxDcmParser parser;
        const DebugLines lines;
        ASSERT_EQ(ReadBytes(parser, whole), QVM_SUCCESS) << uid;
        EXPECT_EQ(lines.text.find("ParseDicomHeaderOfPart10File success("), 0U);
        EXPECT_EQ(Frame(parser), kPixels) << uid;
    }
    const Bytes bare = BareImage();
    CxDcmParser parser;
    {
        const DebugLines lines;
        ASSERT_EQ(ReadBytes(parser, bare), QVM_SUCCESS);
        EXPECT_EQ(lines.text, "ParseDicomHeaderOfNonPart10File success\n");
        EXPECT_EQ(Frame(parser), kPixels);
    }
    for (const std::size_t junk : {std::size_t{1}, std::size_t{77}, std::size_t{20001}}) {
        Bytes bytes(junk, 0x5A);
        test::Append(bytes, bare);
        const DebugLines lines;
        ASSERT_EQ(ReadBytes(parser, bytes), QVM_SUCCESS) << junk;
        EXPECT_EQ(lines.text, "ParseDicomHeaderOfNonPart10File success2\n") << junk;
        EXPECT_EQ(Frame(parser), kPixels) << junk;
        unsigned long offset = 0;
        unsigned long size = 0;
        EXPECT_EQ(parser.GetAFrameOffsetSize(0, offset, size), QVM_SUCCESS);
        EXPECT_EQ(offset, bytes.size() - 8);  // the junk counts
    }
}

TEST(FileIntake, MarkedFilesThatAreNoneAreReadAsStreams) {
    // A deflated file with nothing that inflates.
    const Bytes bytes =
        DicomBuilder::Part10(test::kDeflatedUid).Raw("\t\t\t\t\t").Raw(BareImage()).Bytes();
    CxDcmParser parser;
    ASSERT_EQ(ReadBytes(parser, bytes), QVM_SUCCESS);
    EXPECT_EQ(Frame(parser), kPixels);
}

TEST(FileIntake, SamplesPerPixelFollowsThePhotometricInterpretation) {
    struct {
        const char* photometric;
        unsigned stored;
        int expected;
    } const cases[] = {{"MONOCHROME2", 3, 1}, {"MONOCHROME1", 3, 1}, {"PALETTE COLOR", 3, 1},
                       {"YBR_FULL", 1, 3},    {"RGB", 1, 3},         {"MONOCHROME", 1, 3},
                       {nullptr, 4, 4}};
    for (const auto& c : cases) {
        ImageFacts facts;
        facts.photometric = c.photometric;
        facts.samples = c.stored;
        CxDcmParser parser;
        ASSERT_EQ(ReadBytes(parser, test::NativeFile(test::kExplicitUid, facts, kPixels)),
                  QVM_SUCCESS);
        int samples = 0;
        EXPECT_EQ(parser.GetHeader()->GetValue(0x00280002, samples), kDcmSuccess);
        EXPECT_EQ(samples, c.expected) << (c.photometric == nullptr ? "none" : c.photometric);
    }
}

TEST(FileIntake, TakesACallersObjectAndItsMemory) {
    CDcmApp app;
    const Bytes bytes = test::NativeFile(test::kExplicitUid, ImageFacts{}, kPixels);
    CxDcmParser reader;
    ASSERT_EQ(ReadBytes(reader, bytes), QVM_SUCCESS);
    unsigned long offset = 0;
    unsigned long size = 0;
    ASSERT_EQ(reader.GetAFrameOffsetSize(0, offset, size), QVM_SUCCESS);
    CDcmObject object(*reader.GetHeader());
    object.SetValue(0x00280002, static_cast<unsigned short>(3));

    CxDcmParser parser;
    {
        Bytes image = bytes;
        EXPECT_EQ(parser.Initialize(nullptr, &object, image.data(), image.size(), offset - 12),
                  QVM_ERROR_INVALID_DCMAPP);
        EXPECT_EQ(parser.GetHeader(), nullptr);
        ASSERT_EQ(parser.Initialize(&app, &object, image.data(), image.size(), offset - 12),
                  QVM_SUCCESS);
        std::ranges::fill(image, static_cast<unsigned char>(0));
    }
    EXPECT_EQ(parser.GetHeader(), &object);
    EXPECT_EQ(Frame(parser), kPixels);
    int samples = 0;
    object.GetValue(0x00280002, samples);
    EXPECT_EQ(samples, 1);

    for (Bytes strange : {Bytes(200, 0x41), Bytes(1), Bytes()}) {
        strange.reserve(1);
        EXPECT_EQ(parser.Initialize(&app, &object, strange.data(), strange.size(), 0),
                  QVM_ERROR_INVALID_DCMAPP);
    }
    // Back to an object alone: without Pixel Data in it there is no frame.
    ASSERT_EQ(parser.Initialize(&app, &object, nullptr, 0, 0), QVM_SUCCESS);
    unsigned char* data = nullptr;
    EXPECT_EQ(parser.GetAFrame(0, data, size, 0), QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
    EXPECT_EQ(parser.GetAFrameOffsetSize(0, offset, size), QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
}

TEST(FileIntake, CopiesStandAlone) {
    CxDcmParser copy;
    {
        CxDcmParser parser;
        ASSERT_EQ(ReadBytes(parser, test::NativeFile(test::kExplicitUid, ImageFacts{}, kPixels)),
                  QVM_SUCCESS);
        copy = parser;
        const CxDcmParser third(parser);
        EXPECT_NE(copy.GetHeader(), parser.GetHeader());
        EXPECT_EQ(third.GetFrameCount(), 1);
        parser.GetHeader()->SetValue(0x00280010, static_cast<unsigned short>(1));
    }
    EXPECT_EQ(Frame(copy), kPixels);
}

TEST(FileIntake, NoCutOfAFileDoesHarm) {
    const Bytes whole = test::NativeFile(test::kExplicitUid, ImageFacts{}, kPixels);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        CxDcmParser parser;
        const auto code =
            ReadBytes(parser, {whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
        EXPECT_EQ(code == QVM_ERROR_FAILED_TO_READ_FILE, size <= 132);
        unsigned char* data = nullptr;
        unsigned long length = 0;
        if (parser.GetAFrame(0, data, length, 0) == QVM_SUCCESS) {
            EXPECT_GT(size + 8, whole.size());
            EXPECT_EQ(length, 8U);
        }
        delete[] data;
    }
}

}  // namespace
}  // namespace quorvex
