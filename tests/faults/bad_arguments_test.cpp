// Every public operation with arguments that make no sense, on objects that hold nothing yet: a
// code each time, no exception, no end of the process.
#include "quorvex/Tags.h"
#include "tests/faults/host.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <gtest/gtest.h>
#include <limits>

namespace quorvex {
namespace {

using namespace test;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr CSize kWorstSizes[] = {{0, 0}, {-1, -1}, {INT_MAX, INT_MAX}, {INT_MIN, INT_MIN},
                                 {5, 1}, {8, 8}};
constexpr int kWorstInts[] = {0, -1, 1, INT_MAX, INT_MIN};
constexpr std::uint32_t kWorstTags[] = {0, tag::kRows, tag::kPixelData, tag::kItem, 0xFFFFFFFF};

constexpr const char* kNoText = nullptr;
constexpr const char16_t* kNoWideText = nullptr;

const char* running = "";

template <class Call>
void Expect(const char* text, bool expected, Call call) {
    running = text;
    EXPECT_NO_THROW(EXPECT_EQ(call(), expected) << text) << text;
}

// A call is known by its own text, also where the process ends in it.
#define HOLDS(...) Expect(#__VA_ARGS__, true, [&] { return __VA_ARGS__; })
#define REFUSED(...) Expect(#__VA_ARGS__, false, [&] { return IsDone(__VA_ARGS__); })
#define TAKEN(...) Expect(#__VA_ARGS__, true, [&] { return IsDone(__VA_ARGS__); })
#define RETURNS(...) \
    Expect(#__VA_ARGS__, true, [&] { return static_cast<void>(__VA_ARGS__), true; })

/// All that the calls work on: empty, and used by one after the other.
struct Bench : Host {
    static inline const Kind kNothing;
    Bench() : Host(kNothing) {}

    void CallValues();
    void CallObject();
    void CallParser();
    void CallProcessor();
    void CallDisplay();
    void CallOverlays();
    void CallWindowing();
    void CallMaker();

    CDcmApp* noApp = nullptr;
    CDcmObject* noObject = nullptr;
    CDcmItem* noItem = nullptr;
    CXGSPSInfo* noInfo = nullptr;
    unsigned short word = 0;
    CDcmObject* result = nullptr;
    tagBITMAPINFOHEADER* header = nullptr;
};

void Bench::CallValues() {
    HOLDS(CString(kNoText).IsEmpty());
    HOLDS(CString(kNoWideText).IsEmpty());
    const CString name("word");
    for (const int n : kWorstInts) {
        HOLDS(name.Left(n).GetLength() <= 4);
        HOLDS(name.Right(n).GetLength() <= 4);
        HOLDS(name.Mid(n, n).GetLength() <= 4);
        HOLDS(name.Find("r", n) <= 2);
        HOLDS(n == 0 || n == 1 || name[n] == 0);
        HOLDS(CPtrArray().GetAt(n) == nullptr);
    }
    RETURNS(ReleasePages(nullptr));
    RETURNS(SetDebugOutput(nullptr, nullptr));
    HOLDS(ResultName(static_cast<QUORVEX_MESSAGE>(-7)) != nullptr);
    HOLDS(ResultSentence(static_cast<QUORVEX_MESSAGE>(INT_MAX)) != nullptr);
}

void Bench::CallObject() {
    for (const auto tag : kWorstTags) {
        REFUSED(object.GetValue(tag, word));
        REFUSED(object.GetNextValue(tag, count));
        REFUSED(object.GetNextValue(tag, text, INT_MIN));
        REFUSED(object.GetValue(tag, item));
        REFUSED(object.GetNextValue(tag, item));
    }
    for (const int n : kWorstInts) {
        REFUSED(object.GetValueLength(tag::kRows, n, length));
        REFUSED(object.SetValueEx(tag::kPixelData, n, nullptr, nullptr));
    }
    REFUSED(object.GetValueCount(0, count));
    REFUSED(object.GetValue(tag::kPixelData, nullptr, nullptr));
    REFUSED(object.SetValue(tag::kPixelData, nullptr, nullptr));
    REFUSED(object.SetValue(tag::kReferencedImageSequence, noItem));
    REFUSED(object.SetNextValue(tag::kReferencedImageSequence, noItem));
    TAKEN(object.SetValue(tag::kPatientName, kNoText));
    TAKEN(object.SetNextValue(tag::kPatientName, kNoText));
    TAKEN(object.RemoveValue(tag::kPatientName));
    REFUSED(object.GetValueEx(nullptr, 0, nullptr, 1, 0, 0, nullptr, nullptr));
    REFUSED(object.GetValueEx(tag::kPixelData, nullptr, nullptr));
    REFUSED(object.SetValueRepresentation(tag::kRows, static_cast<MC_VR>(-1)));
    TAKEN(object.RemoveValue(0));
    REFUSED(object.WalkElements(nullptr, nullptr));
    REFUSED(object.ReadFile(nullptr, nullptr, nullptr));
    REFUSED(object.ReadFileUptoTag(nullptr, 0, nullptr, nullptr, nullptr));
    REFUSED(object.ReadStream2(0, 0, kSyntaxNone, nullptr, nullptr, nullptr, nullptr));
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    REFUSED(object.SetTransferSyntax(static_cast<TRANSFER_SYNTAX>(12345)));
    REFUSED(object.GetTransferSyntax(syntax));
    REFUSED(object.WriteFile(""));
    REFUSED(object.WriteFile("/no such folder/file"));
    HOLDS(object.GetFileName().IsEmpty());
    TAKEN(object.Create());
    TAKEN(item.Create(""));
    TAKEN(object.Close());
}

void Bench::CallParser() {
    REFUSED(parser.Initialize(nullptr, "", 0));
    REFUSED(parser.Initialize(nullptr, "x", 0));
    REFUSED(parser.Initialize(&app, "", INT_MIN));
    REFUSED(parser.Initialize(&app, "/", 1));
    REFUSED(parser.Initialize(nullptr, nullptr, nullptr, 0, 0));
    REFUSED(parser.Initialize(&app, nullptr, nullptr, 0, 0));
    REFUSED(parser.Initialize(&app, nullptr, nullptr, ULONG_MAX, ULONG_MAX));
    for (const int n : kWorstInts) {
        REFUSED(parser.GetAFrame(n, block.data, length, ULONG_MAX));
        REFUSED(parser.GetAFrameOffsetSize(n, length, length));
        HOLDS(lut.Lookup(n) == 0);
    }
    REFUSED(parser.GetAFrame(ULONG_MAX, ULONG_MAX, block.data));
    REFUSED(parser.GetAFrame(0UL, 1UL, block.data));
    HOLDS(parser.GetFrameCount() == 0);
    REFUSED(
        parser.GetRGBBufferFromPaletteImage(nullptr, 0, 65535, word, word, text, block.data, 0));
    REFUSED(parser.GetRGBBufferFromPaletteImage(nullptr, 1, 1, word, word, text, block.data, 0));
    for (const CSize bad : kWorstSizes) {
        REFUSED(parser.MakeThumbNail(-1, bad, static_cast<QUORVEX_XFERSYNTAX>(77), 0, block.data,
                                     length, header, length, 65535));
        REFUSED(parser.MakeThumbNail(0, bad, kXferUncompressed, 0, block.data, length, header,
                                     length, 1));
    }
    HOLDS(CxDcmParser::GetSliceLocation(nullptr, location) == 0);
    RETURNS(parser.Initialize(&app, &object, nullptr, 0, 0));
    for (const int n : kWorstInts) REFUSED(parser.GetAFrame(n, block.data, length, 0));
    HOLDS(lut.LoadLUT(nullptr, 0, 0, 1) == 0);
    HOLDS(lut.LoadLUT(&object, ULONG_MAX, ULONG_MAX, -1) == 0);
}

void Bench::CallProcessor() {
    REFUSED(processor.DecompressFrameData(nullptr, nullptr, 0, block.data, length, 0));
    REFUSED(processor.DecompressFrameData(&param, nullptr, ULONG_MAX, block.data, length, 0));
    REFUSED(processor.DecompressFrameData(&param, nullptr, 0, block.data, length, -1));
    for (const unsigned long given : {0UL, ULONG_MAX}) {
        REFUSED(processor.DecompressBlindJPEGData(nullptr, given, block.data, length, word, word,
                                                  word, word, word));
        REFUSED(processor.DecompressBlindJP2KData(nullptr, given, block.data, length, word, word,
                                                  word, word, word));
        REFUSED(processor.CompressFrameData(nullptr, nullptr, given, block.data, length));
        REFUSED(processor.CompressFrameData(&param, nullptr, given, block.data, length));
        RETURNS(processor.CompressRawImage2Jp2File(nullptr, nullptr, given, block.data, length));
        RETURNS(processor.CompressRawImage2Jp2File(&param, nullptr, given, block.data, length));
        HOLDS(block.data == nullptr);
    }
    REFUSED(processor.CompressFrameData(&param, nullptr, 9, block.data, length));
    RETURNS(processor.FlipColorImage(nullptr, nullptr, block.data));
    REFUSED(processor.ConvertYBRToRGB(nullptr, nullptr, block.data));
    REFUSED(processor.ConvertYBRToRGB(&param, nullptr, block.data));
    for (const CSize bad : kWorstSizes) {
        REFUSED(processor.ResizeImage(nullptr, nullptr, block.data, length, bad));
        REFUSED(processor.ResizeImage(&param, nullptr, block.data, length, bad));
    }
}

void Bench::CallDisplay() {
    for (const CSize bad : kWorstSizes) {
        REFUSED(dipp.Initialize(nullptr, "", bad, -1));
        REFUSED(dipp.Initialize(&app, &object, bad, INT_MAX));
        REFUSED(dipp.Initialize(nullptr, noObject, bad, 0));
        REFUSED(dipp.Initialize(&app, noObject, bad, 0));
        REFUSED(dipp.Initialize(&app, &object, nullptr, bad, 0, 0, 0));
        REFUSED(dipp.Initialize(nullptr, bad, bad, -1, INT_MIN, INT_MAX, 9));
        REFUSED(dipp.Initialize(nullptr, nullptr, bad, 0, 0, INT_MIN));
        REFUSED(dipp.Initialize(nullptr, nullptr, bad, 1, 0, 2));
        REFUSED(dipp.Initialize(&object, &volume, bad, 0, 0, 5));
        REFUSED(dipp.Initialize(static_cast<CLData*>(nullptr), bad, 0, 0));
        REFUSED(dipp.Initialize(&app, bad, INT_MIN));
    }
    TAKEN(dipp.ApllyGSPSObject(nullptr, ""));
    TAKEN(dipp.ApllyGSPSObject(nullptr, noObject));
    TAKEN(dipp.ApllyGSPSObject(&app, noObject));
    for (const int n : kWorstInts) {
        TAKEN(dipp.UpdateVOILUT_Offset(n, n));
        TAKEN(dipp.UpdateVOILUT_ABS(n, n));
        TAKEN(dipp.UpdatePresentationLUT_Toggle());
        TAKEN(dipp.UpdateZoom_Offset(n));
        TAKEN(dipp.UpdatePan_Offset({n, n}));
        TAKEN(dipp.UpdateRotate_Offset(n));
        TAKEN(dipp.UpdateRotate_ABS(n));
        TAKEN(dipp.UpdateHFlip_Toggle());
        TAKEN(dipp.UpdateViewSize({n, n}));
        REFUSED(dipp.Render());
    }
    TAKEN(dipp.UpdateZoom_ABS(kNaN));
    TAKEN(dipp.UpdateZoom_ABS(kInfinity));
    TAKEN(dipp.Inverse());
    CSize resultSize;
    CDC empty;
    TAKEN(dipp.GetResultImage(block.data, INT_MAX));
    REFUSED(dipp.Render());
    REFUSED(dipp.Draw(nullptr));
    REFUSED(dipp.Draw(&empty));
    REFUSED(dipp.GetResultImageInfo(resultSize, count));
}

void Bench::CallOverlays() {
    RETURNS(dipp.MakeOverlayImage(nullptr, nullptr, nullptr, length, word, 0));
    RETURNS(dipp.MakeOverlayImage2(&object, nullptr, nullptr, length, word, 0, 0, 0, 0, 0, 0));
    REFUSED(dipp.MakeSPCOverlay(nullptr, nullptr, block.data, length));
    REFUSED(dipp.MakeSPCOverlayForMPR(&object, nullptr, 65535, 65535, block.data, length));
    REFUSED(dipp.MakePaletteColorImage(&object, nullptr, block.data, length, word));
    REFUSED(dipp.MakePaletteColorImage(nullptr, nullptr, block.data, length, word));
    REFUSED(MakeEmbeddedOverlayPlane(nullptr, nullptr, ULONG_MAX, block.data, length));
}

void Bench::CallWindowing() {
    RETURNS(windowing.SetRescale(0, kNaN));
    RETURNS(windowing.SetPostIntercept(kInfinity));
    RETURNS(windowing.PrepareGSPSProcessing(nullptr));
    RETURNS(windowing.PrepareGSPSProcessing2(nullptr, INT_MAX, INT_MIN));
    RETURNS(windowing.PrepareGSPSProcessing2(records.data(), INT_MAX, INT_MIN));
    RETURNS(windowing.PrepareGSPSProcessing2(records.data(), INT_MIN, INT_MAX));
    for (const int n : kWorstInts) {
        RETURNS(windowing.ChangeWLByOffset(n));
        RETURNS(windowing.ChangeWWByOffset(n));
        const auto selector = static_cast<unsigned>(n) | 16U;
        HOLDS(windowing.GetValue(selector, &count, nullptr) == 4);
        HOLDS(windowing.GetValue(CXWindowing::kDisplayTable, nullptr, nullptr) == 4);
        HOLDS(windowing.SetValue(selector, nullptr, nullptr) == 4);
    }
    _IMAGE_INFO job;
    _OUTSIZE_INFO outSize;
    outSize.zoom = kNaN;
    _ROI_INFO roi;
    roi.zoom = -kInfinity;
    CSize output;
    CRect rect;
    RETURNS(creator.GetOutputSize(outSize, output));
    RETURNS(creator.GetRenderingROI(roi, rect));
    HOLDS(creator.GetImageWithInfo(job) != 0);
    for (const CSize bad : kWorstSizes) {
        RETURNS(creator.ApplyModalityLUT(nullptr, nullptr, bad, 2));
        HOLDS(creator.ApplyModalityLUT(&windowing, nullptr, bad, 7) != 0);
    }
}

void Bench::CallMaker() {
    for (unsigned selector = 0; selector < 9; ++selector)
        RETURNS(reader.GetGSPSModule(selector, nullptr, nullptr));
    REFUSED(reader.GSPSApplier(nullptr, nullptr, "", INT_MIN));
    REFUSED(reader.GSPSApplier(nullptr, records.data(), "", -1));
    REFUSED(reader.MakeGSPSObject(nullptr, nullptr, -1, result));
    REFUSED(reader.MakeGSPSObject(nullptr, nullptr, 0, result));
    REFUSED(reader.MakeGSPSObject(&object, &noInfo, 1, result));
    REFUSED(reader.MakeGSPSObject(&object, nullptr, INT_MAX, result));

    RETURNS(maker.MakeDcmSkeleton(nullptr, nullptr));
    RETURNS(maker.UpdateUserSettingInfo(noInfo, nullptr));
    REFUSED(maker.AddFrame(nullptr));
    REFUSED(maker.MakeDcmObject(result));
    REFUSED(maker.DcmMakerInit(nullptr, nullptr, nullptr));
    TAKEN(maker.DcmMakerInit(&object, nullptr, nullptr));
    REFUSED(maker.MakeDcmObject(result));
    TAKEN(maker.AddFrame(nullptr));
    REFUSED(maker.MakeDcmObject(result));
    REFUSED(maker.MakeDcmObject(nullptr, nullptr, nullptr, nullptr, result));
    REFUSED(maker.MakeDcmObject(noApp, noObject, nullptr));
    REFUSED(maker.MakeDcmObject(&app, noObject, nullptr));
    REFUSED(maker.MakeDcmObject(&app, &object, nullptr));
}

[[noreturn]] void NameCallAndEnd() {
    std::fprintf(stderr, "terminated in: %s\n", running);
    std::abort();
}

TEST(BadArguments, GetCodesFromEveryOperation) {
    const auto former = std::set_terminate(NameCallAndEnd);
    for (int round = 0; round < 2; ++round) {
        Bench bench;
        bench.CallValues();
        bench.CallObject();
        bench.CallParser();
        bench.CallProcessor();
        bench.CallDisplay();
        bench.CallOverlays();
        bench.CallWindowing();
        bench.CallMaker();
        EXPECT_EQ(bench.result, nullptr);
        EXPECT_EQ(bench.block.data, nullptr);
        EXPECT_EQ(bench.header, nullptr);
    }
    std::set_terminate(former);
}

}  // namespace
}  // namespace quorvex
