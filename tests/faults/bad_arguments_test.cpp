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

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace quorvex {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr CSize kWorstSizes[] = {{0, 0}, {-1, -1}, {INT_MAX, INT_MAX}, {INT_MIN, INT_MIN},
                                 {5, 1}, {8, 8}};
constexpr int kWorstInts[] = {0, -1, 1, INT_MAX, INT_MIN};
constexpr std::uint32_t kWorstTags[] = {0, 0x00280010, 0x7FE00010, 0xFFFEE000, 0xFFFFFFFF};

const char* running = "";

/// All that the calls work on: empty, and used by one after the other.
struct Bench {
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

    unsigned char* block = nullptr;
    unsigned long size = 0;
    unsigned short word = 0;
    int number = 0;
    double real = 0;
    CString text;
    CDcmObject* made = nullptr;
    tagBITMAPINFOHEADER* bitmap = nullptr;
};

/// All of them, even after one that is not as it should be.
template <class Values, class Refuses>
bool ForAll(const Values& values, Refuses refuses) {
    bool all = true;
    for (const auto& value : values) all = refuses(value) && all;
    return all;
}
template <class Refuses>
bool ForInts(Refuses refuses) {
    return ForAll(kWorstInts, refuses);
}
template <class Refuses>
bool ForSizes(Refuses refuses) {
    return ForAll(kWorstSizes, refuses);
}
template <class Refuses>
bool ForTags(Refuses refuses) {
    return ForAll(kWorstTags, refuses);
}

/// `refuses` answers whether the operation does, or does what its header promises instead.
template <class Refuses>
void Try(const char* name, Refuses refuses) {
    running = name;
    EXPECT_NO_THROW(EXPECT_TRUE(refuses()) << name) << name;
}

void CallObject(Bench& b) {
    Try("GetValue and GetNextValue", [&] {
        return ForTags([&](std::uint32_t tag) {
            return b.object.GetValue(tag, b.word) != kDcmSuccess &&
                   b.object.GetNextValue(tag, b.number) != kDcmSuccess &&
                   b.object.GetNextValue(tag, b.text, INT_MIN) != kDcmSuccess &&
                   b.object.GetValue(tag, b.item) != kDcmSuccess &&
                   b.object.GetNextValue(tag, b.item) != kDcmSuccess;
        });
    });
    Try("GetValueCount and GetValueLength", [&] {
        return b.object.GetValueCount(0, b.number) != kDcmSuccess && ForInts([&](int n) {
                   return b.object.GetValueLength(0x00280010, n, b.size) != kDcmSuccess;
               });
    });
    Try("GetValue without a callback",
        [&] { return b.object.GetValue(0x7FE00010, nullptr, nullptr) != kDcmSuccess; });
    Try("SetValue without a callback or an item", [&] {
        return b.object.SetValue(0x7FE00010, nullptr, nullptr) != kDcmSuccess &&
               b.object.SetValue(0x00081140, static_cast<CDcmItem*>(nullptr)) != kDcmSuccess &&
               b.object.SetNextValue(0x00081140, static_cast<CDcmItem*>(nullptr)) != kDcmSuccess;
    });
    Try("SetValue of no text", [&] {
        const char* none = nullptr;
        return b.object.SetValue(0x00100010, none) == kDcmSuccess &&
               b.object.SetNextValue(0x00100010, none) == kDcmSuccess &&
               b.object.RemoveValue(0x00100010) == kDcmSuccess;
    });
    Try("SetValueEx and GetValueEx", [&] {
        return ForInts([&](int n) {
                   return b.object.SetValueEx(0x7FE00010, n, nullptr, nullptr) != kDcmSuccess;
               }) &&
               b.object.GetValueEx(nullptr, 0, nullptr, 1, 0, 0, nullptr, nullptr) != kDcmSuccess &&
               b.object.GetValueEx(0x7FE00010, nullptr, nullptr) != kDcmSuccess;
    });
    Try("SetValueRepresentation, RemoveValue, WalkElements", [&] {
        return b.object.SetValueRepresentation(0x00280010, static_cast<MC_VR>(-1)) != kDcmSuccess &&
               b.object.RemoveValue(0) == kDcmSuccess &&
               b.object.WalkElements(nullptr, nullptr) != kDcmSuccess;
    });
    Try("ReadFile, ReadFileUptoTag, ReadStream2", [&] {
        return b.object.ReadFile(nullptr, nullptr, nullptr) != kDcmSuccess &&
               b.object.ReadFileUptoTag(nullptr, 0, nullptr, nullptr, nullptr) != kDcmSuccess &&
               b.object.ReadStream2(0, 0, kSyntaxNone, nullptr, nullptr, nullptr, nullptr) !=
                   kDcmSuccess;
    });
    Try("SetTransferSyntax, GetTransferSyntax", [&] {
        TRANSFER_SYNTAX syntax = kSyntaxNone;
        return b.object.SetTransferSyntax(static_cast<TRANSFER_SYNTAX>(12345)) != kDcmSuccess &&
               b.object.GetTransferSyntax(syntax) != kDcmSuccess;
    });
    Try("WriteFile, names", [&] {
        return b.object.WriteFile("") != kDcmSuccess &&
               b.object.WriteFile("/no such folder/file") != kDcmSuccess &&
               b.object.GetFileName().IsEmpty() && b.object.Create() == kDcmSuccess &&
               b.item.Create("") == kDcmSuccess && b.object.Close() == kDcmSuccess;
    });
}

void CallParser(Bench& b) {
    Try("Initialize", [&] {
        return b.parser.Initialize(nullptr, "", 0) != QVM_SUCCESS &&
               b.parser.Initialize(&b.app, "", INT_MIN) != QVM_SUCCESS &&
               b.parser.Initialize(&b.app, "/", 1) != QVM_SUCCESS &&
               b.parser.Initialize(nullptr, "x", 0) != QVM_SUCCESS &&
               b.parser.Initialize(&b.app, nullptr, nullptr, 0, 0) != QVM_SUCCESS &&
               b.parser.Initialize(nullptr, nullptr, nullptr, 0, 0) != QVM_SUCCESS &&
               b.parser.Initialize(&b.app, nullptr, nullptr, ULONG_MAX, ULONG_MAX) != QVM_SUCCESS;
    });
    Try("GetAFrame and GetAFrameOffsetSize", [&] {
        return ForInts([&](int n) {
                   return b.parser.GetAFrame(n, b.block, b.size, ULONG_MAX) != QVM_SUCCESS &&
                          b.parser.GetAFrameOffsetSize(n, b.size, b.size) != QVM_SUCCESS;
               }) &&
               b.parser.GetAFrame(ULONG_MAX, ULONG_MAX, b.block) != QVM_SUCCESS &&
               b.parser.GetAFrame(0UL, 1UL, b.block) != QVM_SUCCESS &&
               b.parser.GetFrameCount() == 0;
    });
    Try("GetRGBBufferFromPaletteImage", [&] {
        return b.parser.GetRGBBufferFromPaletteImage(nullptr, 0, 65535, b.word, b.word, b.text,
                                                     b.block, 0) != QVM_SUCCESS &&
               b.parser.GetRGBBufferFromPaletteImage(nullptr, 1, 1, b.word, b.word, b.text, b.block,
                                                     0) != QVM_SUCCESS;
    });
    Try("MakeThumbNail", [&] {
        return ForSizes([&](CSize size) {
            return b.parser.MakeThumbNail(-1, size, static_cast<QUORVEX_XFERSYNTAX>(77), 0, b.block,
                                          b.size, b.bitmap, b.size, 65535) != QVM_SUCCESS &&
                   b.parser.MakeThumbNail(0, size, kXferUncompressed, 0, b.block, b.size, b.bitmap,
                                          b.size, 1) != QVM_SUCCESS;
        });
    });
    Try("GetSliceLocation", [&] { return CxDcmParser::GetSliceLocation(nullptr, b.real) == 0; });
    Try("a caller's empty object", [&] {
        static_cast<void>(b.parser.Initialize(&b.app, &b.object, nullptr, 0, 0));
        return ForInts(
            [&](int n) { return b.parser.GetAFrame(n, b.block, b.size, 0) != QVM_SUCCESS; });
    });
    Try("LoadLUT, Lookup", [&] {
        return b.lut.LoadLUT(nullptr, 0, 0, 1) == 0 &&
               b.lut.LoadLUT(&b.object, ULONG_MAX, ULONG_MAX, -1) == 0 &&
               ForInts([&](int n) { return b.lut.Lookup(n) == 0; });
    });
}

void CallProcessor(Bench& b) {
    Try("DecompressFrameData", [&] {
        return b.processor.DecompressFrameData(nullptr, nullptr, 0, b.block, b.size, 0) !=
                   QVM_SUCCESS &&
               b.processor.DecompressFrameData(&b.param, nullptr, ULONG_MAX, b.block, b.size, 0) !=
                   QVM_SUCCESS &&
               b.processor.DecompressFrameData(&b.param, nullptr, 0, b.block, b.size, -1) !=
                   QVM_SUCCESS;
    });
    Try("DecompressBlind...", [&] {
        return b.processor.DecompressBlindJPEGData(nullptr, ULONG_MAX, b.block, b.size, b.word,
                                                   b.word, b.word, b.word, b.word) != QVM_SUCCESS &&
               b.processor.DecompressBlindJP2KData(nullptr, ULONG_MAX, b.block, b.size, b.word,
                                                   b.word, b.word, b.word, b.word) != QVM_SUCCESS;
    });
    Try("CompressFrameData, CompressRawImage2Jp2File", [&] {
        static_cast<void>(
            b.processor.CompressRawImage2Jp2File(nullptr, nullptr, 0, b.block, b.size));
        static_cast<void>(
            b.processor.CompressRawImage2Jp2File(&b.param, nullptr, ULONG_MAX, b.block, b.size));
        return b.block == nullptr &&
               b.processor.CompressFrameData(nullptr, nullptr, 0, b.block, b.size) != QVM_SUCCESS &&
               b.processor.CompressFrameData(&b.param, nullptr, 9, b.block, b.size) !=
                   QVM_SUCCESS &&
               b.processor.CompressFrameData(&b.param, nullptr, ULONG_MAX, b.block, b.size) !=
                   QVM_SUCCESS;
    });
    Try("ConvertYBRToRGB, ResizeImage, FlipColorImage", [&] {
        static_cast<void>(b.processor.FlipColorImage(nullptr, nullptr, b.block));
        return b.processor.ConvertYBRToRGB(nullptr, nullptr, b.block) != QVM_SUCCESS &&
               b.processor.ConvertYBRToRGB(&b.param, nullptr, b.block) != QVM_SUCCESS &&
               ForSizes([&](CSize size) {
                   return b.processor.ResizeImage(nullptr, nullptr, b.block, b.size, size) !=
                              QVM_SUCCESS &&
                          b.processor.ResizeImage(&b.param, nullptr, b.block, b.size, size) !=
                              QVM_SUCCESS;
               });
    });
}

void CallDisplay(Bench& b) {
    Try("Initialize", [&] {
        return ForSizes([&](CSize size) {
            return b.dipp.Initialize(nullptr, "", size, -1) != QVM_SUCCESS &&
                   b.dipp.Initialize(&b.app, &b.object, size, INT_MAX) != QVM_SUCCESS &&
                   b.dipp.Initialize(nullptr, static_cast<CDcmObject*>(nullptr), size, 0) !=
                       QVM_SUCCESS &&
                   b.dipp.Initialize(&b.app, &b.object, nullptr, size, 0, 0, 0) != QVM_SUCCESS &&
                   b.dipp.Initialize(nullptr, size, size, -1, INT_MIN, INT_MAX, 9) != QVM_SUCCESS &&
                   b.dipp.Initialize(nullptr, nullptr, size, 0, 0, INT_MIN) != QVM_SUCCESS &&
                   b.dipp.Initialize(&b.object, &b.data, size, 0, 0, 5) != QVM_SUCCESS &&
                   b.dipp.Initialize(static_cast<CLData*>(nullptr), size, 0, 0) != QVM_SUCCESS &&
                   b.dipp.Initialize(&b.app, size, INT_MIN) != QVM_SUCCESS;
        });
    });
    Try("ApllyGSPSObject", [&] {
        return b.dipp.ApllyGSPSObject(nullptr, "") == QVM_SUCCESS &&
               b.dipp.ApllyGSPSObject(&b.app, static_cast<CDcmObject*>(nullptr)) == QVM_SUCCESS &&
               b.dipp.ApllyGSPSObject(nullptr, static_cast<CDcmObject*>(nullptr)) == QVM_SUCCESS;
    });
    Try("Update...", [&] {
        return ForInts([&](int n) {
                   return b.dipp.UpdateVOILUT_Offset(n, n) == QVM_SUCCESS &&
                          b.dipp.UpdateVOILUT_ABS(n, n) == QVM_SUCCESS &&
                          b.dipp.UpdatePresentationLUT_Toggle() == QVM_SUCCESS &&
                          b.dipp.UpdateZoom_Offset(n) == QVM_SUCCESS &&
                          b.dipp.UpdatePan_Offset({n, n}) == QVM_SUCCESS &&
                          b.dipp.UpdateRotate_Offset(n) == QVM_SUCCESS &&
                          b.dipp.UpdateRotate_ABS(n) == QVM_SUCCESS &&
                          b.dipp.UpdateHFlip_Toggle() == QVM_SUCCESS &&
                          b.dipp.UpdateViewSize({n, n}) == QVM_SUCCESS &&
                          b.dipp.Render() != QVM_SUCCESS;
               }) &&
               b.dipp.UpdateZoom_ABS(kNaN) == QVM_SUCCESS &&
               b.dipp.UpdateZoom_ABS(kInfinity) == QVM_SUCCESS && b.dipp.Inverse() == QVM_SUCCESS;
    });
    Try("Render, Draw, GetResultImage", [&] {
        CSize size;
        CDC empty;
        return b.dipp.GetResultImage(b.block, INT_MAX) == QVM_SUCCESS &&
               b.dipp.Render() != QVM_SUCCESS && b.dipp.Draw(nullptr) != QVM_SUCCESS &&
               b.dipp.Draw(&empty) != QVM_SUCCESS &&
               b.dipp.GetResultImageInfo(size, b.number) != QVM_SUCCESS;
    });
    Try("Make...", [&] {
        static_cast<void>(b.dipp.MakeOverlayImage(nullptr, nullptr, nullptr, b.size, b.word, 0));
        static_cast<void>(b.dipp.MakeOverlayImage2(&b.object, nullptr, nullptr, b.size, b.word, 0,
                                                   0, 0, 0, 0, 0));
        return b.dipp.MakeSPCOverlay(nullptr, nullptr, b.block, b.size) != QVM_SUCCESS &&
               b.dipp.MakeSPCOverlayForMPR(&b.object, nullptr, 65535, 65535, b.block, b.size) !=
                   QVM_SUCCESS &&
               b.dipp.MakePaletteColorImage(&b.object, nullptr, b.block, b.size, b.word) !=
                   QVM_SUCCESS &&
               MakeEmbeddedOverlayPlane(nullptr, nullptr, ULONG_MAX, b.block, b.size) !=
                   QVM_SUCCESS;
    });
    Try("CXWindowing", [&] {
        b.windowing.SetRescale(0, kNaN);
        b.windowing.SetPostIntercept(kInfinity);
        static_cast<void>(b.windowing.PrepareGSPSProcessing(nullptr));
        static_cast<void>(b.windowing.PrepareGSPSProcessing2(nullptr, INT_MAX, INT_MIN));
        static_cast<void>(b.windowing.PrepareGSPSProcessing2(&b.info, INT_MAX, INT_MIN));
        static_cast<void>(b.windowing.PrepareGSPSProcessing2(&b.info, INT_MIN, INT_MAX));
        return ForInts([&](int n) {
            static_cast<void>(b.windowing.ChangeWLByOffset(n));
            static_cast<void>(b.windowing.ChangeWWByOffset(n));
            const auto selector = static_cast<unsigned>(n) | 16U;
            return b.windowing.GetValue(selector, &b.number, nullptr) == 4 &&
                   b.windowing.GetValue(CXWindowing::kDisplayTable, nullptr, nullptr) == 4 &&
                   b.windowing.SetValue(selector, nullptr, nullptr) == 4;
        });
    });
    Try("CXImageCreator", [&] {
        _IMAGE_INFO job;
        _OUTSIZE_INFO outSize;
        outSize.zoom = kNaN;
        _ROI_INFO roi;
        roi.zoom = -kInfinity;
        CSize size;
        CRect rect;
        static_cast<void>(b.creator.GetOutputSize(outSize, size));
        static_cast<void>(b.creator.GetRenderingROI(roi, rect));
        return b.creator.GetImageWithInfo(job) != 0 && ForSizes([&](CSize bad) {
                   static_cast<void>(b.creator.ApplyModalityLUT(nullptr, nullptr, bad, 2));
                   return b.creator.ApplyModalityLUT(&b.windowing, nullptr, bad, 7) != 0;
               });
    });
    Try("CXGSPSObject", [&] {
        CXGSPSInfo* none[] = {nullptr};
        for (unsigned selector = 0; selector < 9; ++selector)
            static_cast<void>(b.states.GetGSPSModule(selector, nullptr, nullptr));
        return b.states.GSPSApplier(nullptr, nullptr, "", INT_MIN) == 0 &&
               b.states.GSPSApplier(nullptr, &b.info, "", -1) == 0 &&
               b.states.MakeGSPSObject(nullptr, nullptr, -1, b.made) == 0 &&
               b.states.MakeGSPSObject(nullptr, nullptr, 0, b.made) == 0 &&
               b.states.MakeGSPSObject(&b.object, none, 1, b.made) == 0 &&
               b.states.MakeGSPSObject(&b.object, nullptr, INT_MAX, b.made) == 0;
    });
}

void CallMaker(Bench& b) {
    Try("MakeDcmSkeleton, UpdateUserSettingInfo", [&] {
        static_cast<void>(b.maker.MakeDcmSkeleton(nullptr, nullptr));
        static_cast<void>(
            b.maker.UpdateUserSettingInfo(static_cast<CXGSPSInfo*>(nullptr), nullptr));
        return true;
    });
    Try("the cycle out of order", [&] {
        return b.maker.AddFrame(nullptr) != QVM_SUCCESS &&
               b.maker.MakeDcmObject(b.made) != QVM_SUCCESS &&
               b.maker.DcmMakerInit(nullptr, nullptr, nullptr) != QVM_SUCCESS &&
               b.maker.DcmMakerInit(&b.object, nullptr, nullptr) == QVM_SUCCESS &&
               b.maker.MakeDcmObject(b.made) != QVM_SUCCESS &&
               b.maker.AddFrame(nullptr) == QVM_SUCCESS &&
               b.maker.MakeDcmObject(b.made) != QVM_SUCCESS &&
               b.maker.MakeDcmObject(nullptr, nullptr, nullptr, nullptr, b.made) != QVM_SUCCESS;
    });
    Try("conversion", [&] {
        return b.maker.MakeDcmObject(nullptr, static_cast<CDcmObject*>(nullptr), nullptr) !=
                   QVM_SUCCESS &&
               b.maker.MakeDcmObject(&b.app, static_cast<CDcmObject*>(nullptr), nullptr) !=
                   QVM_SUCCESS &&
               b.maker.MakeDcmObject(&b.app, &b.object, nullptr) != QVM_SUCCESS;
    });
}

void CallValues() {
    Try("CString", [&] {
        const char* none = nullptr;
        const char16_t* noneWide = nullptr;
        const CString text(none);
        return text.IsEmpty() && CString(noneWide).IsEmpty() && ForInts([&](int n) {
                   const CString word("word");
                   return word.Left(n).GetLength() <= 4 && word.Right(n).GetLength() <= 4 &&
                          word.Mid(n, n).GetLength() <= 4 && word.Find("r", n) <= 2 &&
                          (n == 0 || n == 1 || word[n] == 0);
               });
    });
    Try("CPtrArray",
        [&] { return ForInts([&](int n) { return CPtrArray().GetAt(n) == nullptr; }); });
    Try("names of unknown results, null blocks", [&] {
        ReleasePages(nullptr);
        SetDebugOutput(nullptr, nullptr);
        return ResultName(static_cast<QUORVEX_MESSAGE>(-7)) != nullptr &&
               ResultSentence(static_cast<QUORVEX_MESSAGE>(INT_MAX)) != nullptr;
    });
}

[[noreturn]] void NameCallAndEnd() {
    std::fprintf(stderr, "terminated in: %s\n", running);
    std::abort();
}

TEST(BadArguments, GetCodesFromEveryOperation) {
    const auto former = std::set_terminate(NameCallAndEnd);
    for (int round = 0; round < 2; ++round) {
        Bench bench;
        CallValues();
        CallObject(bench);
        CallParser(bench);
        CallProcessor(bench);
        CallDisplay(bench);
        CallMaker(bench);
        EXPECT_EQ(bench.made, nullptr);
        EXPECT_EQ(bench.block, nullptr);
        EXPECT_EQ(bench.bitmap, nullptr);
    }
    std::set_terminate(former);
}

}  // namespace
}  // namespace quorvex
