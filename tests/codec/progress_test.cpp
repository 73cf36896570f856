// Frames told as they are decoded and coded, and called off by who is told.
#include "codec/stored_coding.h"
#include "foundation/types/cancellation.h"
#include "quorvex/CxCancelToken.h"
#include "quorvex/CxProgress.h"
#include "tests/codec/coded_frames.h"

#include <chrono>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

namespace quorvex::test {
namespace {

/// Keeps what it is told, and cancels with the call of that number.
class Listener final : public CxProgress {
public:
    explicit Listener(CxCancelToken* token = nullptr, std::size_t last = 0)
        : token_(token), last_(last) {}
    void Advance(double fraction) override {
        told.push_back(fraction);
        if (token_ != nullptr && told.size() == last_) token_->Cancel();
        throw std::runtime_error("goes no further");
    }
    std::vector<double> told;

private:
    CxCancelToken* token_;
    std::size_t last_;
};

void ExpectSeries(const std::vector<double>& told, std::size_t least) {
    ASSERT_GE(told.size(), least);
    EXPECT_LE(told.size(), 128U);
    EXPECT_GT(told.front(), 0);
    for (std::size_t i = 1; i < told.size(); ++i) EXPECT_GT(told[i], told[i - 1]);
    EXPECT_EQ(told.back(), 1);
}

/// Codes without steps of their own tell nothing but the end.
std::size_t LeastCalls(const Coding& coding, bool isDecoding) {
    const bool isHighThroughput =
        coding.target == kXferHtj2k || coding.target == kXferHtj2kRpclLossless;
    const bool isJpeg2000 =
        coding.target == kXferJpeg2000 || coding.target == kXferJpeg2000Lossless;
    if (coding.target == kXferDeflatedFrames || coding.target == kXferJpegLsLossless) return 1;
    if (coding.target == kXferJpegXlLossless || isJpeg2000) return isDecoding ? 8 : 1;
    return isHighThroughput && isDecoding ? 8 : 10;
}

/// By turns with the calls at which they are called off: the first, one in the middle, the last.
template <class Work>
void ExpectToldAndCalledOff(std::size_t least, const Work& work) {
    Listener listener;
    {
        const CxProgressScope scope(listener);
        ASSERT_EQ(work(), QVM_SUCCESS);
    }
    ExpectSeries(listener.told, least);
    for (const std::size_t call :
         {std::size_t{1}, (listener.told.size() + 1) / 2, listener.told.size()}) {
        CxCancelToken token;
        const CxCancelScope scope(token);
        Listener cancelling(&token, call);
        const CxProgressScope told(cancelling);
        EXPECT_EQ(work(), QVM_ERROR_CANCELLED) << call;
        EXPECT_GE(cancelling.told.size(), call);
        EXPECT_LE(cancelling.told.size(), call + 3);  // a few rows further
        token.Reset();
        EXPECT_EQ(work(), QVM_SUCCESS);
    }
}

TEST(Progress, OfADecodedFrameRisesToOneAndMayCallItOff) {
    for (const Coding& coding : kCodings) {
        if (coding.target == kXferUncompressed) continue;
        SCOPED_TRACE(coding.name);
        const FrameForm form{620, 600, 1, std::clamp(12U, coding.leastBits, coding.mostBits)};
        Bytes stream = CodeFrame(coding, form);
        if (stream.empty()) continue;  // a build without the library
        const auto param = DecodingParam(coding, form);
        const Bytes expected = Decompress(param, stream).frame;
        ExpectToldAndCalledOff(LeastCalls(coding, true), [&] {
            const auto decoded = Decompress(param, stream);
            if (decoded.code == QVM_SUCCESS) {
                EXPECT_TRUE(decoded.frame == expected);
            }
            return decoded.code;
        });
    }
}

TEST(Progress, OfACodedFrameRisesToOneAndMayCallItOff) {
    for (const Coding& coding : kCodings) {
        if (coding.target == kXferUncompressed || coding.target == kXferJpegExtended) continue;
        SCOPED_TRACE(coding.name);
        const FrameForm form{620, 600, 1, 8};
        if (CodeFrame(coding, {8, 8}).empty()) continue;
        Bytes pixels = PictureOf(form);
        StoredForms forms;
        forms.form = static_cast<QUORVEX_XFERSYNTAX>(coding.target);
        forms.rows = static_cast<std::uint16_t>(form.rows);
        forms.columns = static_cast<std::uint16_t>(form.columns);
        forms.samplesPerPixel = 1;
        forms.bitsAllocated = forms.bitsStored = 8;
        forms.quality = coding.target == kXferJpegBaseline ? 90 : 5;
        Bytes expected;
        ASSERT_EQ(CodeStored(forms, pixels, expected), QVM_SUCCESS);
        ExpectToldAndCalledOff(LeastCalls(coding, false), [&] {
            Bytes coded;
            try {
                const auto code = CodeStored(forms, pixels, coded);
                EXPECT_EQ(code == QVM_SUCCESS, coded == expected);
                const bool isAsked = Cancellation::OfThisThread().IsAsked();
                return code != QVM_SUCCESS && isAsked ? QVM_ERROR_CANCELLED : code;
            } catch (const Cancelled&) {
                return QVM_ERROR_CANCELLED;
            }
        });
    }
}

/// Inside the library, wherever it is then: no crash, no loss, and the next one is whole.
TEST(Progress, CodingIsCalledOffFromAnotherThreadAtAnyTime) {
    const FrameForm form{620, 600, 3, 8};
    const Bytes pixels = PictureOf(form);
    if (CodeJpegXlFrame({8, 8}, Bytes(64)).empty()) GTEST_SKIP() << "built without libjxl";
    const Bytes expected = CodeJpegXlFrame(form, pixels);
    for (int i = 0; i < 12; ++i) {
        CxCancelToken token;
        const CxCancelScope scope(token);
        std::thread other([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(2 * i));
            token.Cancel();
        });
        try {
            EXPECT_EQ(CodeJpegXlFrame(form, pixels), expected);
        } catch (const Cancelled&) {
        }
        other.join();
        token.Reset();
    }
    EXPECT_EQ(CodeJpegXlFrame(form, pixels), expected);
}

}  // namespace
}  // namespace quorvex::test
