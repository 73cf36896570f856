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

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr CSize kWorstSizes[] = {{0, 0}, {-1, -1}, {INT_MAX, INT_MAX}, {INT_MIN, INT_MIN}, {5, 1}};
constexpr int kWorstInts[] = {0, -1, 1, INT_MAX, INT_MIN};

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

struct Call {
    const char* name;
    /// Whether the answer is a refusal, or what the header promises where there is none.
    bool (*refuses)(Bench& b);
};

bool ForInts(bool (*refuses)(Bench&, int), Bench& b) {
    bool all = true;
    for (const int number : kWorstInts) all = refuses(b, number) && all;
    return all;
}
bool ForSizes(bool (*refuses)(Bench&, CSize), Bench& b) {
    bool all = true;
    for (const CSize size : kWorstSizes) all = refuses(b, size) && all;
    return all;
}

constexpr std::uint32_t kTags[] = {0, 0x00280010, 0x7FE00010, 0xFFFEE000, 0xFFFFFFFF};
bool ForTags(bool (*refuses)(Bench&, std::uint32_t), Bench& b) {
    bool all = true;
    for (const auto tag : kTags) all = refuses(b, tag) && all;
    return all;
}

constexpr Call kObjectCalls[] = {
    {"GetValue and GetNextValue",
     [](Bench& b) {
         return ForTags(
             [](Bench& c, std::uint32_t tag) {
                 return c.object.GetValue(tag, c.word) != kDcmSuccess &&
                        c.object.GetNextValue(tag, c.number) != kDcmSuccess &&
                        c.object.GetNextValue(tag, c.text, INT_MIN) != kDcmSuccess &&
                        c.object.GetValue(tag, c.item) != kDcmSuccess &&
                        c.object.GetNextValue(tag, c.item) != kDcmSuccess;
             },
             b);
     }},
    {"GetValueCount and GetValueLength",
     [](Bench& b) {
         return b.object.GetValueCount(0, b.number) != kDcmSuccess &&
                ForInts(
                    [](Bench& c, int n) {
                        return c.object.GetValueLength(0x00280010, n, c.size) != kDcmSuccess;
                    },
                    b);
     }},
    {"GetValue without a callback",
     [](Bench& b) { return b.object.GetValue(0x7FE00010, nullptr, nullptr) != kDcmSuccess; }},
    {"SetValue without a callback or an item",
     [](Bench& b) {
         return b.object.SetValue(0x7FE00010, nullptr, nullptr) != kDcmSuccess &&
                b.object.SetValue(0x00081140, static_cast<CDcmItem*>(nullptr)) != kDcmSuccess &&
                b.object.SetNextValue(0x00081140, static_cast<CDcmItem*>(nullptr)) != kDcmSuccess;
     }},
    {"SetValue of no text",
     [](Bench& b) {
         const char* none = nullptr;
         return b.object.SetValue(0x00100010, none) == kDcmSuccess &&
                b.object.SetNextValue(0x00100010, none) == kDcmSuccess &&
                b.object.RemoveValue(0x00100010) == kDcmSuccess;
     }},
    {"SetValueEx and GetValueEx",
     [](Bench& b) {
         return ForInts(
                    [](Bench& c, int n) {
                        return c.object.SetValueEx(0x7FE00010, n, nullptr, nullptr) != kDcmSuccess;
                    },
                    b) &&
                b.object.GetValueEx(nullptr, 0, nullptr, 1, 0, 0, nullptr, nullptr) !=
                    kDcmSuccess &&
                b.object.GetValueEx(0x7FE00010, nullptr, nullptr) != kDcmSuccess;
     }},
    {"SetValueRepresentation, RemoveValue, WalkElements",
     [](Bench& b) {
         return b.object.SetValueRepresentation(0x00280010, static_cast<MC_VR>(-1)) !=
                    kDcmSuccess &&
                b.object.RemoveValue(0) == kDcmSuccess &&
                b.object.WalkElements(nullptr, nullptr) != kDcmSuccess;
     }},
    {"ReadFile, ReadFileUptoTag, ReadStream2",
     [](Bench& b) {
         return b.object.ReadFile(nullptr, nullptr, nullptr) != kDcmSuccess &&
                b.object.ReadFileUptoTag(nullptr, 0, nullptr, nullptr, nullptr) != kDcmSuccess &&
                b.object.ReadStream2(0, 0, kSyntaxNone, nullptr, nullptr, nullptr, nullptr) !=
                    kDcmSuccess;
     }},
    {"SetTransferSyntax, GetTransferSyntax",
     [](Bench& b) {
         TRANSFER_SYNTAX syntax = kSyntaxNone;
         return b.object.SetTransferSyntax(static_cast<TRANSFER_SYNTAX>(12345)) != kDcmSuccess &&
                b.object.GetTransferSyntax(syntax) != kDcmSuccess;
     }},
    {"WriteFile, names",
     [](Bench& b) {
         return b.object.WriteFile("") != kDcmSuccess &&
                b.object.WriteFile("/no such folder/file") != kDcmSuccess &&
                b.object.GetFileName().IsEmpty() && b.object.Create() == kDcmSuccess &&
                b.item.Create("") == kDcmSuccess && b.object.Close() == kDcmSuccess;
     }},
};

constexpr Call kParserCalls[] = {
    {"Initialize",
     [](Bench& b) {
         return b.parser.Initialize(nullptr, "", 0) != QVM_SUCCESS &&
                b.parser.Initialize(&b.app, "", INT_MIN) != QVM_SUCCESS &&
                b.parser.Initialize(&b.app, "/", 1) != QVM_SUCCESS &&
                b.parser.Initialize(nullptr, nullptr, nullptr, 0, 0) != QVM_SUCCESS &&
                b.parser.Initialize(&b.app, nullptr, nullptr, ULONG_MAX, ULONG_MAX) != QVM_SUCCESS;
     }},
    {"GetAFrame and GetAFrameOffsetSize",
     [](Bench& b) {
         return ForInts(
                    [](Bench& c, int n) {
                        return c.parser.GetAFrame(n, c.block, c.size, ULONG_MAX) != QVM_SUCCESS &&
                               c.parser.GetAFrameOffsetSize(n, c.size, c.size) != QVM_SUCCESS;
                    },
                    b) &&
                b.parser.GetAFrame(ULONG_MAX, ULONG_MAX, b.block) != QVM_SUCCESS &&
                b.parser.GetFrameCount() == 0;
     }},
    {"GetRGBBufferFromPaletteImage",
     [](Bench& b) {
         return b.parser.GetRGBBufferFromPaletteImage(nullptr, 0, 65535, b.word, b.word, b.text,
                                                      b.block, 0) != QVM_SUCCESS;
     }},
    {"MakeThumbNail",
     [](Bench& b) {
         return ForSizes(
             [](Bench& c, CSize size) {
                 return c.parser.MakeThumbNail(-1, size, static_cast<QUORVEX_XFERSYNTAX>(77), 0,
                                               c.block, c.size, c.bitmap, c.size,
                                               65535) != QVM_SUCCESS;
             },
             b);
     }},
    {"GetSliceLocation",
     [](Bench& b) { return CxDcmParser::GetSliceLocation(nullptr, b.real) == 0; }},
    {"a caller's empty object",
     [](Bench& b) {
         static_cast<void>(b.parser.Initialize(&b.app, &b.object, nullptr, 0, 0));
         return ForInts(
             [](Bench& c, int n) {
                 return c.parser.GetAFrame(n, c.block, c.size, 0) != QVM_SUCCESS;
             },
             b);
     }},
    {"LoadLUT, Lookup",
     [](Bench& b) {
         return b.lut.LoadLUT(nullptr, 0, 0, 1) == 0 &&
                b.lut.LoadLUT(&b.object, ULONG_MAX, ULONG_MAX, -1) == 0 &&
                ForInts([](Bench& c, int n) { return c.lut.Lookup(n) == 0; }, b);
     }},
};

constexpr Call kProcessorCalls[] = {
    {"DecompressFrameData",
     [](Bench& b) {
         return b.processor.DecompressFrameData(nullptr, nullptr, 0, b.block, b.size, 0) !=
                    QVM_SUCCESS &&
                b.processor.DecompressFrameData(&b.param, nullptr, ULONG_MAX, b.block, b.size, 0) !=
                    QVM_SUCCESS &&
                b.processor.DecompressFrameData(&b.param, nullptr, 0, b.block, b.size, -1) !=
                    QVM_SUCCESS;
     }},
    {"DecompressBlind...",
     [](Bench& b) {
         return b.processor.DecompressBlindJPEGData(nullptr, ULONG_MAX, b.block, b.size, b.word,
                                                    b.word, b.word, b.word,
                                                    b.word) != QVM_SUCCESS &&
                b.processor.DecompressBlindJP2KData(nullptr, ULONG_MAX, b.block, b.size, b.word,
                                                    b.word, b.word, b.word, b.word) != QVM_SUCCESS;
     }},
    {"CompressFrameData, CompressRawImage2Jp2File",
     [](Bench& b) {
         static_cast<void>(
             b.processor.CompressRawImage2Jp2File(nullptr, nullptr, 0, b.block, b.size));
         static_cast<void>(
             b.processor.CompressRawImage2Jp2File(&b.param, nullptr, ULONG_MAX, b.block, b.size));
         return b.block == nullptr &&
                b.processor.CompressFrameData(nullptr, nullptr, 0, b.block, b.size) !=
                    QVM_SUCCESS &&
                b.processor.CompressFrameData(&b.param, nullptr, ULONG_MAX, b.block, b.size) !=
                    QVM_SUCCESS;
     }},
    {"ConvertYBRToRGB, ResizeImage, FlipColorImage",
     [](Bench& b) {
         static_cast<void>(b.processor.FlipColorImage(nullptr, nullptr, b.block));
         return b.processor.ConvertYBRToRGB(nullptr, nullptr, b.block) != QVM_SUCCESS &&
                b.processor.ConvertYBRToRGB(&b.param, nullptr, b.block) != QVM_SUCCESS &&
                ForSizes(
                    [](Bench& c, CSize size) {
                        return c.processor.ResizeImage(nullptr, nullptr, c.block, c.size, size) !=
                                   QVM_SUCCESS &&
                               c.processor.ResizeImage(&c.param, nullptr, c.block, c.size, size) !=
                                   QVM_SUCCESS;
                    },
                    b);
     }},
};

constexpr Call kDisplayCalls[] = {
    {"Initialize",
     [](Bench& b) {
         return ForSizes(
             [](Bench& c, CSize size) {
                 return c.dipp.Initialize(nullptr, "", size, -1) != QVM_SUCCESS &&
                        c.dipp.Initialize(&c.app, &c.object, size, INT_MAX) != QVM_SUCCESS &&
                        c.dipp.Initialize(nullptr, static_cast<CDcmObject*>(nullptr), size, 0) !=
                            QVM_SUCCESS &&
                        c.dipp.Initialize(&c.app, &c.object, nullptr, size, 0, 0, 0) !=
                            QVM_SUCCESS &&
                        c.dipp.Initialize(nullptr, size, size, -1, INT_MIN, INT_MAX, 9) !=
                            QVM_SUCCESS &&
                        c.dipp.Initialize(nullptr, nullptr, size, 0, 0, INT_MIN) != QVM_SUCCESS &&
                        c.dipp.Initialize(&c.object, &c.data, size, 0, 0, 5) != QVM_SUCCESS &&
                        c.dipp.Initialize(static_cast<CLData*>(nullptr), size, 0, 0) !=
                            QVM_SUCCESS &&
                        c.dipp.Initialize(&c.app, size, INT_MIN) != QVM_SUCCESS;
             },
             b);
     }},
    {"ApllyGSPSObject",
     [](Bench& b) {
         return b.dipp.ApllyGSPSObject(nullptr, "") == QVM_SUCCESS &&
                b.dipp.ApllyGSPSObject(nullptr, static_cast<CDcmObject*>(nullptr)) == QVM_SUCCESS;
     }},
    {"Update...",
     [](Bench& b) {
         return ForInts(
                    [](Bench& c, int n) {
                        return c.dipp.UpdateVOILUT_Offset(n, n) == QVM_SUCCESS &&
                               c.dipp.UpdateVOILUT_ABS(n, n) == QVM_SUCCESS &&
                               c.dipp.UpdatePresentationLUT_Toggle() == QVM_SUCCESS &&
                               c.dipp.UpdateZoom_Offset(n) == QVM_SUCCESS &&
                               c.dipp.UpdatePan_Offset({n, n}) == QVM_SUCCESS &&
                               c.dipp.UpdateRotate_Offset(n) == QVM_SUCCESS &&
                               c.dipp.UpdateRotate_ABS(n) == QVM_SUCCESS &&
                               c.dipp.UpdateHFlip_Toggle() == QVM_SUCCESS &&
                               c.dipp.UpdateViewSize({n, n}) == QVM_SUCCESS &&
                               c.dipp.Render() != QVM_SUCCESS;
                    },
                    b) &&
                b.dipp.UpdateZoom_ABS(kNoNumber) == QVM_SUCCESS &&
                b.dipp.UpdateZoom_ABS(kInfinite) == QVM_SUCCESS && b.dipp.Inverse() == QVM_SUCCESS;
     }},
    {"Render, Draw, GetResultImage",
     [](Bench& b) {
         CSize size;
         CDC empty;
         static_cast<void>(b.dipp.GetResultImage(b.block, INT_MAX));
         return b.dipp.Render() != QVM_SUCCESS && b.dipp.Draw(nullptr) != QVM_SUCCESS &&
                b.dipp.Draw(&empty) != QVM_SUCCESS &&
                b.dipp.GetResultImageInfo(size, b.number) != QVM_SUCCESS;
     }},
    {"Make...",
     [](Bench& b) {
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
     }},
    {"CXWindowing",
     [](Bench& b) {
         b.windowing.SetRescale(0, kNoNumber);
         b.windowing.SetPostIntercept(kInfinite);
         static_cast<void>(b.windowing.PrepareGSPSProcessing(nullptr));
         static_cast<void>(b.windowing.PrepareGSPSProcessing2(nullptr, INT_MAX, INT_MIN));
         static_cast<void>(b.windowing.PrepareGSPSProcessing2(&b.info, INT_MAX, INT_MIN));
         static_cast<void>(b.windowing.PrepareGSPSProcessing2(&b.info, INT_MIN, INT_MAX));
         return ForInts(
             [](Bench& c, int n) {
                 static_cast<void>(c.windowing.ChangeWLByOffset(n));
                 static_cast<void>(c.windowing.ChangeWWByOffset(n));
                 const auto selector = static_cast<unsigned>(n) | 16U;
                 return c.windowing.GetValue(selector, &c.number, nullptr) == 4 &&
                        c.windowing.GetValue(CXWindowing::kDisplayTable, nullptr, nullptr) == 4 &&
                        c.windowing.SetValue(selector, nullptr, nullptr) == 4;
             },
             b);
     }},
    {"CXImageCreator",
     [](Bench& b) {
         _IMAGE_INFO job;
         _OUTSIZE_INFO outSize;
         outSize.zoom = kNoNumber;
         _ROI_INFO roi;
         roi.zoom = -kInfinite;
         CSize size;
         CRect rect;
         static_cast<void>(b.creator.GetOutputSize(outSize, size));
         static_cast<void>(b.creator.GetRenderingROI(roi, rect));
         return b.creator.GetImageWithInfo(job) != 0 &&
                ForSizes(
                    [](Bench& c, CSize bad) {
                        static_cast<void>(c.creator.ApplyModalityLUT(nullptr, nullptr, bad, 2));
                        return c.creator.ApplyModalityLUT(&c.windowing, nullptr, bad, 7) != 0;
                    },
                    b);
     }},
    {"CXGSPSObject",
     [](Bench& b) {
         CXGSPSInfo* none[] = {nullptr};
         for (unsigned selector = 0; selector < 9; ++selector)
             static_cast<void>(b.states.GetGSPSModule(selector, nullptr, nullptr));
         return b.states.GSPSApplier(nullptr, nullptr, "", INT_MIN) == 0 &&
                b.states.MakeGSPSObject(nullptr, nullptr, -1, b.made) == 0 &&
                b.states.MakeGSPSObject(&b.object, none, 1, b.made) == 0 &&
                b.states.MakeGSPSObject(&b.object, nullptr, INT_MAX, b.made) == 0;
     }},
};

constexpr Call kMakerCalls[] = {
    {"MakeDcmSkeleton, UpdateUserSettingInfo",
     [](Bench& b) {
         static_cast<void>(b.maker.MakeDcmSkeleton(nullptr, nullptr));
         static_cast<void>(
             b.maker.UpdateUserSettingInfo(static_cast<CXGSPSInfo*>(nullptr), nullptr));
         return true;
     }},
    {"the cycle out of order",
     [](Bench& b) {
         return b.maker.AddFrame(nullptr) != QVM_SUCCESS &&
                b.maker.MakeDcmObject(b.made) != QVM_SUCCESS &&
                b.maker.DcmMakerInit(nullptr, nullptr, nullptr) != QVM_SUCCESS &&
                b.maker.DcmMakerInit(&b.object, nullptr, nullptr) == QVM_SUCCESS &&
                b.maker.MakeDcmObject(b.made) != QVM_SUCCESS &&
                b.maker.AddFrame(nullptr) == QVM_SUCCESS &&
                b.maker.MakeDcmObject(b.made) != QVM_SUCCESS &&
                b.maker.MakeDcmObject(nullptr, nullptr, nullptr, nullptr, b.made) != QVM_SUCCESS;
     }},
    {"conversion",
     [](Bench& b) {
         return b.maker.MakeDcmObject(nullptr, static_cast<CDcmObject*>(nullptr), nullptr) !=
                    QVM_SUCCESS &&
                b.maker.MakeDcmObject(&b.app, &b.object, nullptr) != QVM_SUCCESS;
     }},
};

constexpr Call kValueCalls[] = {
    {"CString",
     [](Bench& b) {
         const char* none = nullptr;
         const char16_t* noneWide = nullptr;
         const CString text(none);
         return text.IsEmpty() && CString(noneWide).IsEmpty() &&
                ForInts(
                    [](Bench&, int n) {
                        const CString word("word");
                        return word.Left(n).GetLength() <= 4 && word.Right(n).GetLength() <= 4 &&
                               word.Mid(n, n).GetLength() <= 4 && word.Find("r", n) <= 2 &&
                               (n == 0 || n == 1 || word[n] == 0);
                    },
                    b);
     }},
    {"CPtrArray",
     [](Bench& b) {
         return ForInts([](Bench&, int n) { return CPtrArray().GetAt(n) == nullptr; }, b);
     }},
    {"names of results, blocks of nobody",
     [](Bench&) {
         ReleasePages(nullptr);
         SetDebugOutput(nullptr, nullptr);
         return ResultName(static_cast<QUORVEX_MESSAGE>(-7)) != nullptr &&
                ResultSentence(static_cast<QUORVEX_MESSAGE>(INT_MAX)) != nullptr;
     }},
};

[[noreturn]] void TellAndEnd() {
    std::fprintf(stderr, "terminated in: %s\n", running);
    std::abort();
}

template <std::size_t Count>
void MakeAll(const char* what, const Call (&calls)[Count], Bench& bench) {
    for (const Call& call : calls) {
        running = call.name;
        EXPECT_NO_THROW(EXPECT_TRUE(call.refuses(bench)) << what << ": " << call.name)
            << what << ": " << call.name;
    }
}

TEST(BadArguments, GetCodesFromEveryOperation) {
    const auto former = std::set_terminate(TellAndEnd);
    for (int round = 0; round < 2; ++round) {
        Bench bench;
        MakeAll("values", kValueCalls, bench);
        MakeAll("object", kObjectCalls, bench);
        MakeAll("parser", kParserCalls, bench);
        MakeAll("processor", kProcessorCalls, bench);
        MakeAll("display", kDisplayCalls, bench);
        MakeAll("maker", kMakerCalls, bench);
        delete bench.made;
        EXPECT_EQ(bench.block, nullptr);
    }
    std::set_terminate(former);
}

}  // namespace
}  // namespace quorvex
