// Every public operation with arguments that make no sense, on objects that hold nothing yet: a
// code each time, no exception, no end of the process.
#include "quorvex/CLData.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXGSPSObject.h"
#include "quorvex/CXImageCreator.h"
#include "quorvex/CXWindowing.h"
#include "quorvex/CxDcmMaker.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/CxImageProcessor.h"
#include "quorvex/CxPaletteLUT.h"
#include "quorvex/Tags.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <gtest/gtest.h>
#include <limits>

namespace quorvex {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr CSize kWorstSizes[] = {{0, 0}, {-1, -1}, {INT_MAX, INT_MAX}, {INT_MIN, INT_MIN},
                                 {5, 1}, {8, 8}};
constexpr int kWorstInts[] = {0, -1, 1, INT_MAX, INT_MIN};
constexpr std::uint32_t kWorstTags[] = {0, tag::kRows, tag::kPixelData, tag::kItem, 0xFFFFFFFF};

constexpr const char* kNoText = nullptr;
constexpr const char16_t* kNoWideText = nullptr;

const char* running = "";

bool IsDone(QUORVEX_MESSAGE code) {
    return code == QVM_SUCCESS;
}
bool IsDone(int result) {
    return result == kDcmSuccess;
}

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
struct Bench {
    void CallValues();
    void CallObject();
    void CallParser();
    void CallProcessor();
    void CallDisplay();
    void CallOverlays();
    void CallWindowing();
    void CallMaker();

    CDcmApp app;
    CDcmObject object;
    CDcmItem item;
    CxDcmParser parser;
    CxImageProcessor processor;
    CxPaletteLUT lut{0};
    CXWindowing windowing;
    CXImageCreator creator;
    CXGSPSInfo info;
    CXGSPSObject states;
    CXDIPP dipp;
    CxDcmMaker maker;
    CLData data;
    _IMAGE_PROCESS_PARAM param;

    CDcmApp* noApp = nullptr;
    CDcmObject* noObject = nullptr;
    CDcmItem* noItem = nullptr;
    CXGSPSInfo* noInfo = nullptr;
    unsigned char* block = nullptr;
    unsigned long size = 0;
    unsigned short word = 0;
    int number = 0;
    double real = 0;
    CString text;
    CDcmObject* made = nullptr;
    tagBITMAPINFOHEADER* bitmap = nullptr;
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
        REFUSED(object.GetNextValue(tag, number));
        REFUSED(object.GetNextValue(tag, text, INT_MIN));
        REFUSED(object.GetValue(tag, item));
        REFUSED(object.GetNextValue(tag, item));
    }
    for (const int n : kWorstInts) {
        REFUSED(object.GetValueLength(tag::kRows, n, size));
        REFUSED(object.SetValueEx(tag::kPixelData, n, nullptr, nullptr));
    }
    REFUSED(object.GetValueCount(0, number));
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
        REFUSED(parser.GetAFrame(n, block, size, ULONG_MAX));
        REFUSED(parser.GetAFrameOffsetSize(n, size, size));
        HOLDS(lut.Lookup(n) == 0);
    }
    REFUSED(parser.GetAFrame(ULONG_MAX, ULONG_MAX, block));
    REFUSED(parser.GetAFrame(0UL, 1UL, block));
    HOLDS(parser.GetFrameCount() == 0);
    REFUSED(parser.GetRGBBufferFromPaletteImage(nullptr, 0, 65535, word, word, text, block, 0));
    REFUSED(parser.GetRGBBufferFromPaletteImage(nullptr, 1, 1, word, word, text, block, 0));
    for (const CSize bad : kWorstSizes) {
        REFUSED(parser.MakeThumbNail(-1, bad, static_cast<QUORVEX_XFERSYNTAX>(77), 0, block, size,
                                     bitmap, size, 65535));
        REFUSED(parser.MakeThumbNail(0, bad, kXferUncompressed, 0, block, size, bitmap, size, 1));
    }
    HOLDS(CxDcmParser::GetSliceLocation(nullptr, real) == 0);
    RETURNS(parser.Initialize(&app, &object, nullptr, 0, 0));
    for (const int n : kWorstInts) REFUSED(parser.GetAFrame(n, block, size, 0));
    HOLDS(lut.LoadLUT(nullptr, 0, 0, 1) == 0);
    HOLDS(lut.LoadLUT(&object, ULONG_MAX, ULONG_MAX, -1) == 0);
}

void Bench::CallProcessor() {
    REFUSED(processor.DecompressFrameData(nullptr, nullptr, 0, block, size, 0));
    REFUSED(processor.DecompressFrameData(&param, nullptr, ULONG_MAX, block, size, 0));
    REFUSED(processor.DecompressFrameData(&param, nullptr, 0, block, size, -1));
    for (const unsigned long length : {0UL, ULONG_MAX}) {
        REFUSED(processor.DecompressBlindJPEGData(nullptr, length, block, size, word, word, word,
                                                  word, word));
        REFUSED(processor.DecompressBlindJP2KData(nullptr, length, block, size, word, word, word,
                                                  word, word));
        REFUSED(processor.CompressFrameData(nullptr, nullptr, length, block, size));
        REFUSED(processor.CompressFrameData(&param, nullptr, length, block, size));
        RETURNS(processor.CompressRawImage2Jp2File(nullptr, nullptr, length, block, size));
        RETURNS(processor.CompressRawImage2Jp2File(&param, nullptr, length, block, size));
        HOLDS(block == nullptr);
    }
    REFUSED(processor.CompressFrameData(&param, nullptr, 9, block, size));
    RETURNS(processor.FlipColorImage(nullptr, nullptr, block));
    REFUSED(processor.ConvertYBRToRGB(nullptr, nullptr, block));
    REFUSED(processor.ConvertYBRToRGB(&param, nullptr, block));
    for (const CSize bad : kWorstSizes) {
        REFUSED(processor.ResizeImage(nullptr, nullptr, block, size, bad));
        REFUSED(processor.ResizeImage(&param, nullptr, block, size, bad));
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
        REFUSED(dipp.Initialize(&object, &data, bad, 0, 0, 5));
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
    TAKEN(dipp.GetResultImage(block, INT_MAX));
    REFUSED(dipp.Render());
    REFUSED(dipp.Draw(nullptr));
    REFUSED(dipp.Draw(&empty));
    REFUSED(dipp.GetResultImageInfo(resultSize, number));
}

void Bench::CallOverlays() {
    RETURNS(dipp.MakeOverlayImage(nullptr, nullptr, nullptr, size, word, 0));
    RETURNS(dipp.MakeOverlayImage2(&object, nullptr, nullptr, size, word, 0, 0, 0, 0, 0, 0));
    REFUSED(dipp.MakeSPCOverlay(nullptr, nullptr, block, size));
    REFUSED(dipp.MakeSPCOverlayForMPR(&object, nullptr, 65535, 65535, block, size));
    REFUSED(dipp.MakePaletteColorImage(&object, nullptr, block, size, word));
    REFUSED(dipp.MakePaletteColorImage(nullptr, nullptr, block, size, word));
    REFUSED(MakeEmbeddedOverlayPlane(nullptr, nullptr, ULONG_MAX, block, size));
}

void Bench::CallWindowing() {
    RETURNS(windowing.SetRescale(0, kNaN));
    RETURNS(windowing.SetPostIntercept(kInfinity));
    RETURNS(windowing.PrepareGSPSProcessing(nullptr));
    RETURNS(windowing.PrepareGSPSProcessing2(nullptr, INT_MAX, INT_MIN));
    RETURNS(windowing.PrepareGSPSProcessing2(&info, INT_MAX, INT_MIN));
    RETURNS(windowing.PrepareGSPSProcessing2(&info, INT_MIN, INT_MAX));
    for (const int n : kWorstInts) {
        RETURNS(windowing.ChangeWLByOffset(n));
        RETURNS(windowing.ChangeWWByOffset(n));
        const auto selector = static_cast<unsigned>(n) | 16U;
        HOLDS(windowing.GetValue(selector, &number, nullptr) == 4);
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
        RETURNS(states.GetGSPSModule(selector, nullptr, nullptr));
    REFUSED(states.GSPSApplier(nullptr, nullptr, "", INT_MIN));
    REFUSED(states.GSPSApplier(nullptr, &info, "", -1));
    REFUSED(states.MakeGSPSObject(nullptr, nullptr, -1, made));
    REFUSED(states.MakeGSPSObject(nullptr, nullptr, 0, made));
    REFUSED(states.MakeGSPSObject(&object, &noInfo, 1, made));
    REFUSED(states.MakeGSPSObject(&object, nullptr, INT_MAX, made));

    RETURNS(maker.MakeDcmSkeleton(nullptr, nullptr));
    RETURNS(maker.UpdateUserSettingInfo(noInfo, nullptr));
    REFUSED(maker.AddFrame(nullptr));
    REFUSED(maker.MakeDcmObject(made));
    REFUSED(maker.DcmMakerInit(nullptr, nullptr, nullptr));
    TAKEN(maker.DcmMakerInit(&object, nullptr, nullptr));
    REFUSED(maker.MakeDcmObject(made));
    TAKEN(maker.AddFrame(nullptr));
    REFUSED(maker.MakeDcmObject(made));
    REFUSED(maker.MakeDcmObject(nullptr, nullptr, nullptr, nullptr, made));
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
        EXPECT_EQ(bench.made, nullptr);
        EXPECT_EQ(bench.block, nullptr);
        EXPECT_EQ(bench.bitmap, nullptr);
    }
    std::set_terminate(former);
}

}  // namespace
}  // namespace quorvex
