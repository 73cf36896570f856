// Exceptions of the host's own callbacks come back to it as a code.
#include "tests/reliability/coded_frames.h"
#include "tests/support/every_route.h"

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

TEST(HostBoundary, ADiagnosticsSinkThatThrowsIsIgnored) {
    SetDebugOutput([](const char*, void*) { throw 7; }, nullptr);
    const FrameForm form{.columns = 4, .rows = 4};
    const auto answers = AskEverything(FileOf(kCodings[0], form, PictureOf(form)));
    SetDebugOutput(nullptr, nullptr);
    EXPECT_EQ(answers.front().bytes, PictureOf(form));
}

}  // namespace
}  // namespace quorvex::test
