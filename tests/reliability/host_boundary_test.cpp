// Assertions and exceptions that reach the host: its own callbacks throw, its arguments are null and
// its calls come in the wrong order; each is answered with a code.
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXGSPSObject.h"
#include "quorvex/CXImageCreator.h"
#include "quorvex/CXWindowing.h"
#include "quorvex/CxDcmMaker.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/CxPaletteLUT.h"
#include "tests/reliability/coded_frames.h"
#include "tests/reliability/everything.h"

#include <exception>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>

namespace quorvex::test {
namespace {

/// Throws in the call of this number, counted from 1; 0 for none.
struct Thrower {
    int throwAt = 1;
    int calls = 0;
    Bytes bytes{1, 2, 3, 4};

    MC_STATUS Call() {
        if (++calls == throwAt) throw std::runtime_error("the host's own trouble");
        return kMcContinue;
    }
    static Thrower& Of(void* user) { return *static_cast<Thrower*>(user); }

    static MC_STATUS Give(void* user, int* length, void** data, int* last) {
        Thrower& thrower = Of(user);
        *length = 4;
        *data = thrower.bytes.data();
        *last = thrower.calls > 5 ? 1 : 0;
        return thrower.Call();
    }
    static MC_STATUS File(const char*, void* user, int* length, void** data, int, int* last) {
        return Give(user, length, data, last);
    }
    static MC_STATUS Stream(int, void* user, int, int* length, void** data, int* last) {
        return Give(user, length, data, last);
    }
    static MC_STATUS Write(int, std::uint32_t, void* user, int, int* length, void** data,
                           int* last) {
        return Give(user, length, data, last);
    }
    static MC_STATUS Read(int, std::uint32_t, void* user, int, void*, int, int) {
        return Of(user).Call();
    }
    static MC_STATUS Piece(int, unsigned long, unsigned char*, int, int, void* user) {
        return Of(user).Call();
    }
    static MC_STATUS Item(int, std::uint32_t, void* user, int, unsigned long, unsigned char*, int,
                          int) {
        return Of(user).Call();
    }
    static MC_STATUS Visit(const DcmElementView&, void* user) { return Of(user).Call(); }
};

constexpr std::uint32_t kPixels = 0x7FE00010;

TEST(HostBoundary, CallbacksThatThrowAreAnsweredWithACode) {
    const FrameForm form{.columns = 4, .rows = 4};
    const Coding& coding = kCodings[1];
    const Bytes file = FileOf(coding, form, CodeFrame(coding, form));
    using Call = std::function<DCMRESULT(CDcmObject&, Thrower&)>;
    const Call kCalls[] = {
        [](auto& o, auto& t) { return o.ReadFile(nullptr, &t, Thrower::File); },
        [](auto& o, auto& t) {
            return o.ReadFileUptoTag(nullptr, kPixels, nullptr, &t, Thrower::File);
        },
        [](auto& o, auto& t) {
            return o.ReadStream2(0x00080000, kPixels, kImplicitLittleEndian, nullptr, nullptr, &t,
                                 Thrower::Stream);
        },
        [](auto& o, auto& t) { return o.GetValue(0x00080016, &t, Thrower::Read); },
        [](auto& o, auto& t) { return o.SetValue(0x00080016, &t, Thrower::Write); },
        [](auto& o, auto& t) { return o.WalkElements(&t, Thrower::Visit); },
        [](auto& o, auto& t) { return o.GetValueEx(kPixels, &t, Thrower::Item); },
        [](auto& o, auto& t) {
            unsigned char* scratch = nullptr;
            const auto result =
                o.GetValueEx(&scratch, t.bytes.size(), t.bytes.data(), 1, 0, 2, &t, Thrower::Piece);
            delete[] scratch;
            return result;
        },
    };
    for (std::size_t i = 0; i < std::size(kCalls); ++i) {
        MemoryFile whole{.bytes = file};
        CDcmObject object;
        ASSERT_EQ(ReadUpTo(object, whole, kToTheEnd), kDcmSuccess);
        Thrower thrower;
        EXPECT_NO_THROW(EXPECT_NE(kCalls[i](object, thrower), kDcmSuccess)) << i;
        EXPECT_EQ(thrower.calls, 1) << i;
        CString kept;
        const bool isRead = i < 3;  // what was there may be gone then
        EXPECT_TRUE(isRead || object.GetValue(0x00080016, kept) == kDcmSuccess) << i;
        EXPECT_TRUE(isRead || kept == CString("1.2.840.10008.5.1.4.1.1.7")) << i;
    }
}

TEST(HostBoundary, ADiagnosticsSinkThatThrowsIsPassedOver) {
    SetDebugOutput([](const char*, void*) { throw 7; }, nullptr);
    const FrameForm form{.columns = 4, .rows = 4};
    const auto answers = AskEverything(FileOf(kCodings[0], form, PictureOf(form)));
    SetDebugOutput(nullptr, nullptr);
    EXPECT_EQ(answers.front().bytes, PictureOf(form));
}

/// Nothing is open, and nothing is given.
TEST(HostBoundary, NullArgumentsAndEmptyObjectsAreAnswered) {
    CDcmApp app;
    unsigned char* block = nullptr;
    unsigned long size = 0;
    unsigned short word = 0;
    tagBITMAPINFOHEADER* bitmap = nullptr;
    CDcmObject* made = nullptr;
    CString text;

    CxDcmParser parser;
    EXPECT_NE(parser.Initialize(nullptr, "x", 0), QVM_SUCCESS);
    EXPECT_NE(parser.Initialize(&app, "", 1), QVM_SUCCESS);
    EXPECT_NE(parser.Initialize(&app, nullptr, nullptr, 0, 0), QVM_SUCCESS);
    EXPECT_NE(parser.GetAFrame(0, block, size, 0), QVM_SUCCESS);
    EXPECT_NE(parser.GetAFrame(0UL, 1UL, block), QVM_SUCCESS);
    EXPECT_NE(parser.GetAFrameOffsetSize(0, size, size), QVM_SUCCESS);
    EXPECT_NE(parser.GetRGBBufferFromPaletteImage(nullptr, 1, 1, word, word, text, block, 0),
              QVM_SUCCESS);
    EXPECT_NE(parser.MakeThumbNail(0, {8, 8}, kXferUncompressed, 0, block, size, bitmap, size, 1),
              QVM_SUCCESS);

    CxImageProcessor processor;
    _IMAGE_PROCESS_PARAM param;
    EXPECT_NE(processor.DecompressFrameData(nullptr, nullptr, 0, block, size, 0), QVM_SUCCESS);
    EXPECT_NE(processor.DecompressFrameData(&param, nullptr, 0, block, size, 0), QVM_SUCCESS);
    EXPECT_NE(processor.CompressFrameData(nullptr, nullptr, 0, block, size), QVM_SUCCESS);
    EXPECT_NE(processor.CompressFrameData(&param, nullptr, 9, block, size), QVM_SUCCESS);
    EXPECT_NE(processor.ConvertYBRToRGB(&param, nullptr, block), QVM_SUCCESS);
    EXPECT_NE(processor.ResizeImage(nullptr, nullptr, block, size, {4, 4}), QVM_SUCCESS);

    CXDIPP viewer;
    EXPECT_NE(viewer.Initialize(&app, nullptr, {8, 8}, 0), QVM_SUCCESS);
    EXPECT_NE(viewer.Initialize(nullptr, {8, 8}, 1, 0), QVM_SUCCESS);
    EXPECT_NE(viewer.Initialize(nullptr, {8, 8}, {8, 8}, 1, 0, 0, 0), QVM_SUCCESS);
    EXPECT_NE(viewer.Initialize(nullptr, nullptr, {8, 8}, 1, 0, 2), QVM_SUCCESS);
    EXPECT_NE(viewer.Render(), QVM_SUCCESS);
    EXPECT_NE(viewer.Draw(nullptr), QVM_SUCCESS);
    EXPECT_EQ(viewer.GetResultImage(block, 100), QVM_SUCCESS);
    EXPECT_EQ(viewer.ApllyGSPSObject(&app, nullptr), QVM_SUCCESS);
    EXPECT_NE(viewer.MakeSPCOverlay(nullptr, nullptr, block, size), QVM_SUCCESS);
    EXPECT_NE(viewer.MakePaletteColorImage(nullptr, nullptr, block, size, word), QVM_SUCCESS);

    CxDcmMaker maker;
    EXPECT_NE(maker.DcmMakerInit(nullptr, nullptr, nullptr), QVM_SUCCESS);
    EXPECT_NE(maker.AddFrame(nullptr), QVM_SUCCESS);
    EXPECT_NE(maker.MakeDcmObject(made), QVM_SUCCESS);
    EXPECT_NE(maker.MakeDcmObject(nullptr, nullptr, nullptr, nullptr, made), QVM_SUCCESS);
    EXPECT_NE(maker.MakeDcmObject(&app, nullptr, nullptr), QVM_SUCCESS);

    CXGSPSInfo info;
    EXPECT_EQ(CXGSPSObject().GSPSApplier(nullptr, &info, "", -1), 0);
    EXPECT_EQ(CXGSPSObject().MakeGSPSObject(nullptr, nullptr, 0, made), 0);
    EXPECT_EQ(CxPaletteLUT(0).LoadLUT(nullptr, 0, 0, 0), 0);
    _IMAGE_INFO job;
    EXPECT_NE(CXImageCreator().GetImageWithInfo(job), 0);
    EXPECT_NE(CXWindowing().GetValue(CXWindowing::kDisplayTable, nullptr, nullptr), 0);
    EXPECT_TRUE(block == nullptr && made == nullptr && bitmap == nullptr);
}

}  // namespace
}  // namespace quorvex::test
