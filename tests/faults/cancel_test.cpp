// Operations that are called off: by a token ahead of them, while a file is read, and by another
// thread.
#include "quorvex/CxCancelToken.h"
#include "tests/faults/host.h"
#include "tests/maker/maker_objects.h"
#include "tests/pipeline/test_objects.h"
#include "tests/support/answers.h"

#include <chrono>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <thread>

namespace quorvex::test {
namespace {

bool IsImage(const Kind& kind) {
    return kind.name != kStates;
}

/// A grey image of 300 x 300 words with noise, larger than what a parser reads at once.
CDcmObject NoisyPlate() {
    std::mt19937 random(9);
    std::vector<std::uint16_t> words(std::size_t{300} * 300);
    for (auto& word : words) word = static_cast<std::uint16_t>(random() & 0xFFFU);
    return pipeline_test::ImageOf({.size = {300, 300}}, words,
                                  "SOPClassUID=1.2.840.10008.5.1.4.1.1.7");
}

std::vector<unsigned char> ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A frame of a parser, or what it answers.
struct Fetched {
    QUORVEX_MESSAGE code = QVM_SUCCESS;
    GivenBlock block;

    explicit Fetched(CxDcmParser& parser) { code = parser.GetAFrame(0, block.data, block.size, 0); }
};

TEST(Cancel, EndsAFetchAndTheNextOneIsWhole) {
    for (const Kind& kind : AllKinds()) {
        if (!IsImage(kind)) continue;
        CDcmApp app;
        CxDcmParser parser;
        ASSERT_EQ(parser.Initialize(&app, CString(kind.path), 0), QVM_SUCCESS) << kind.name;
        const Fetched expected(parser);
        ASSERT_EQ(expected.code, QVM_SUCCESS) << kind.name;
        CxCancelToken token;
        const CxCancelScope scope(token);
        token.Cancel();
        const Fetched cancelled(parser);
        EXPECT_EQ(cancelled.code, QVM_ERROR_CANCELLED) << kind.name;
        EXPECT_EQ(cancelled.block.data, nullptr) << kind.name;
        token.Reset();
        const Fetched again(parser);
        EXPECT_EQ(again.block.Look(), expected.block.Look()) << kind.name;
    }
}

TEST(Cancel, EndsARenderAndKeepsTheLastResult) {
    for (const Rules rules : {Rules::kEstablished, Rules::kStandard}) {
        for (const Kind& kind : AllKinds()) {
            if (!IsImage(kind)) continue;
            Host s(kind);
            s.dipp.SetRules(rules);
            Show(s, s.object);
            ASSERT_EQ(s.dipp.Render(), QVM_SUCCESS) << kind.name;
            const RenderedResult last = ResultOf(s.dipp);
            std::vector<unsigned char> memory(std::size_t{640} * 640 * 4);
            const PixelTarget target{memory.data(), {640, 640}, 640 * 4, PixelFormat::kBgra32};
            CxCancelToken token;
            const CxCancelScope scope(token);
            token.Cancel();
            s.dipp.UpdateVOILUT_ABS(30, 60);
            EXPECT_EQ(s.dipp.Render(), QVM_ERROR_CANCELLED) << kind.name;
            EXPECT_EQ(s.dipp.RenderInto(target), QVM_ERROR_CANCELLED) << kind.name;
            EXPECT_EQ(s.dipp.Initialize(&s.app, kView, 0), QVM_ERROR_CANCELLED) << kind.name;
            EXPECT_EQ(ResultOf(s.dipp).bytes, last.bytes) << kind.name;
            token.Reset();
            EXPECT_EQ(s.dipp.Render(), QVM_SUCCESS) << kind.name;
            EXPECT_EQ(s.dipp.RenderInto(target), QVM_SUCCESS) << kind.name;
        }
    }
}

TEST(Cancel, EndsAConversionAndLeavesTheObject) {
    for (const auto form : {kXferRle, kXferJpegLossless, kXferJpeg2000Lossless}) {
        CDcmObject object = KindOf("native CT").object;
        const std::string before = Look(object);
        CDcmApp app;
        CxDcmMaker maker;
        maker.SetRules(Rules::kStandard);
        _USER_SETTING_INFO settings;
        settings.compressionType = static_cast<std::int32_t>(form);
        CxCancelToken token;
        const CxCancelScope scope(token);
        token.Cancel();
        EXPECT_EQ(maker.MakeDcmObject(&app, &object, &settings), QVM_ERROR_CANCELLED);
        EXPECT_EQ(Look(object), before);
        token.Reset();
        EXPECT_EQ(maker.MakeDcmObject(&app, &object, &settings), QVM_SUCCESS);
        EXPECT_NE(Look(object), before);
    }
}

/// Calls off what reads it, once it is told to.
class CancellingSource final : public FileSource {
public:
    CancellingSource(const std::vector<unsigned char>& file, CxCancelToken& token)
        : file_(file), token_(token) {}
    [[nodiscard]] std::uint64_t Size() const override { return file_.size(); }
    [[nodiscard]] bool ReadAt(std::uint64_t offset, std::span<unsigned char> bytes) override {
        std::copy_n(file_.begin() + static_cast<std::ptrdiff_t>(offset), bytes.size(),
                    bytes.begin());
        if (cancels) token_.Cancel();
        return true;
    }
    bool cancels = false;

private:
    const std::vector<unsigned char>& file_;
    CxCancelToken& token_;
};

TEST(Cancel, IsNoticedBehindTheReadingOfACodedFrame) {
    // Larger than what a parser brings into memory at once.
    for (const auto form : {kXferRle, kXferJpegLossless, kXferJpeg2000Lossless}) {
        CDcmObject object = NoisyPlate();
        ASSERT_EQ(Recode(object, form), QVM_SUCCESS);
        ScratchFolder folder;
        const std::string path = folder.Path("plate");
        ASSERT_EQ(object.WriteFile(path), kDcmSuccess);
        const std::vector<unsigned char> file = ReadFile(path);
        CxCancelToken token;
        const auto source = std::make_shared<CancellingSource>(file, token);
        CDcmApp app;
        CxDcmParser parser;
        ASSERT_EQ(parser.Initialize(&app, source, 0), QVM_SUCCESS);
        const CxCancelScope scope(token);
        source->cancels = true;
        EXPECT_EQ(Fetched(parser).code, QVM_ERROR_CANCELLED);
    }
}

TEST(Cancel, ComesFromAnotherThreadAndConcernsItsScopeAlone) {
    CDcmObject object = NoisyPlate();
    ASSERT_EQ(Recode(object, kXferJpeg2000Lossless), QVM_SUCCESS);
    CxCancelToken token;
    QUORVEX_MESSAGE ended = QVM_SUCCESS;
    std::thread worker([&] {
        const CxCancelScope scope(token);
        CDcmApp app;
        CxDcmParser parser;
        if (parser.Initialize(&app, &object, nullptr, 0, 0) != QVM_SUCCESS) return;
        while (ended == QVM_SUCCESS) ended = Fetched(parser).code;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    token.Cancel();
    worker.join();
    EXPECT_EQ(ended, QVM_ERROR_CANCELLED);
    CDcmApp app;
    CxDcmParser parser;
    ASSERT_EQ(parser.Initialize(&app, &object, nullptr, 0, 0), QVM_SUCCESS);
    EXPECT_EQ(Fetched(parser).code, QVM_SUCCESS);
}

}  // namespace
}  // namespace quorvex::test
