// Exceptions of the host's own callbacks come back to it as a code.
#include "quorvex/Tags.h"
#include "tests/reliability/coded_frames.h"
#include "tests/support/attribute_values.h"
#include "tests/support/every_route.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace quorvex::test {
namespace {

int calls = 0;

/// Any callback.
template <class... Arguments>
MC_STATUS Throw(Arguments...) {
    ++calls;
    throw std::runtime_error("the host's own trouble");
}

DCMRESULT WalkBuffer(CDcmObject& object) {
    unsigned char* scratch = nullptr;
    unsigned char bytes[] = {1, 2, 3, 4};
    const auto result = object.GetValueEx(&scratch, sizeof bytes, bytes, 1, 0, 2, nullptr, &Throw);
    delete[] scratch;
    return result;
}

TEST(HostBoundary, CallbacksThatThrowAreAnsweredWithACode) {
    constexpr DCMRESULT (*kCalls[])(CDcmObject&) = {
        // what was there may be gone after these three
        [](CDcmObject& o) { return o.ReadFile(nullptr, nullptr, &Throw); },
        [](CDcmObject& o) {
            return o.ReadFileUptoTag(nullptr, kToTheEnd, nullptr, nullptr, &Throw);
        },
        [](CDcmObject& o) {
            return o.ReadStream2(kFromTheStart, kToTheEnd, kImplicitLittleEndian, nullptr, nullptr,
                                 nullptr, &Throw);
        },
        [](CDcmObject& o) {
            return o.GetValue(tag::kSOPClassUID, nullptr, static_cast<ValueReadCallback>(&Throw));
        },
        [](CDcmObject& o) { return o.SetValue(tag::kSOPClassUID, nullptr, &Throw); },
        [](CDcmObject& o) { return o.WalkElements(nullptr, &Throw); },
        [](CDcmObject& o) { return o.GetValueEx(tag::kPixelData, nullptr, &Throw); },
        WalkBuffer};
    const FrameForm form{.columns = 4, .rows = 4};
    for (std::size_t i = 0; i < std::size(kCalls); ++i) {
        MemoryFile file{.bytes = FileOf(kCodings[1], form, CodeFrame(kCodings[1], form))};
        CDcmObject object;
        ASSERT_EQ(ReadUpTo(object, file, kToTheEnd), kDcmSuccess);
        calls = 0;
        EXPECT_NO_THROW(EXPECT_NE(kCalls[i](object), kDcmSuccess)) << i;
        EXPECT_EQ(calls, 1) << i;
        if (i >= 3) ExpectAttributes(object, "00080016=1.2.840.10008.5.1.4.1.1.7");
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
