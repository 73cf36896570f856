// Declared and real amounts differ: the coded frame has more or fewer rows, columns, samples or
// bits than the object's header says.
#include "tests/reliability/coded_frames.h"
#include "tests/reliability/guarded_bytes.h"
#include "tests/support/every_route.h"

#include <gtest/gtest.h>
#include <string>

namespace quorvex::test {
namespace {

struct Misstatement {
    const char* what;
    FrameForm (*of)(FrameForm);
};

constexpr const char* kAsDeclared = "as declared";
constexpr Misstatement kMisstatements[] = {
    {kAsDeclared, [](FrameForm form) { return form; }},
    {"twice the rows", [](FrameForm form) { return form.rows *= 2, form; }},
    {"half the rows", [](FrameForm form) { return form.rows /= 2, form; }},
    {"twice the columns", [](FrameForm form) { return form.columns *= 2, form; }},
    {"half the columns", [](FrameForm form) { return form.columns /= 2, form; }},
    {"columns for rows", [](FrameForm form) { return std::swap(form.rows, form.columns), form; }},
    {"another sample count", [](FrameForm form) { return form.samples = 4 - form.samples, form; }},
    {"other bits", [](FrameForm form) { return form.bits = form.bits == 8 ? 16 : 8, form; }},
    {"twelve bits", [](FrameForm form) { return form.bits = 12, form; }},
    {"one pixel", [](FrameForm form) { return form.rows = form.columns = 1, form; }},
};

constexpr FrameForm kHeaders[] = {{}, {.samples = 3}, {.bits = 16}, {.samples = 3, .bits = 16}};

/// Every coded frame that differs from every header in each way.
template <class Check>
void ForEachMisstatement(Check check) {
    for (const Coding& coding : kCodings) {
        for (const FrameForm& header : kHeaders) {
            for (const Misstatement& wrong : kMisstatements) {
                const Bytes frame = CodeFrame(coding, wrong.of(header));
                if (frame.empty()) continue;
                SCOPED_TRACE(std::string(coding.name) + ", " + wrong.what + ", " +
                             std::to_string(header.samples) + " samples of " +
                             std::to_string(header.bits) + " bits");
                check(coding, header, frame, std::string(wrong.what) == kAsDeclared);
            }
        }
    }
}

TEST(DeclaredAmounts, EveryRouteGivesTheFrameOfTheHeaderOrACode) {
    int asked = 0;
    ForEachMisstatement(
        [&](const Coding& coding, const FrameForm& header, const Bytes& frame, bool isAsDeclared) {
            const auto answers = AskEverything(FileOf(coding, header, frame));
            ASSERT_GT(answers.size(), 2U);
            EXPECT_EQ(answers[0], answers[1]) << "file and object disagree";
            const bool isShown = answers[0].code == QVM_SUCCESS;
            EXPECT_TRUE(isShown || answers[0].code == QVM_ERROR_FAILED_TO_DECOMPRESS);
            EXPECT_TRUE(!isShown || answers[0].bytes.size() == header.Bytes());
            for (const Answered& answer : answers) {
                const bool wasAlreadySo = answer.code == QVM_FRAME_COPIED;
                EXPECT_TRUE(wasAlreadySo || (answer.code == QVM_SUCCESS) == isShown) << answer.code;
                EXPECT_TRUE(isShown || !isAsDeclared);
            }
            ++asked;
        });
    EXPECT_GT(asked, 150);
}

struct Decoded {
    QUORVEX_MESSAGE code;
    unsigned long size;
};

Decoded DecodeInto(const Coding& coding, const FrameForm& header, const GuardedBytes& source,
                   unsigned char*& block, unsigned long size, int allocMode) {
    _IMAGE_PROCESS_PARAM param = DecodingParam(coding, header);
    CxImageProcessor processor;
    processor.SetAllocMode(allocMode);
    const auto code =
        processor.DecompressFrameData(&param, source.Data(), source.Size(), block, size, 0);
    return {code, size};
}

TEST(DeclaredAmounts, NoByteIsReadOrWrittenOutsideABlock) {
    ForEachMisstatement([](const Coding& coding, const FrameForm& header, const Bytes& frame,
                           bool) {
        unsigned char* own = nullptr;
        unsigned char* pages = nullptr;
        const GuardedBytes early(frame, GuardPlace::kAhead);
        const auto general = DecodeInto(coding, header, early, own, 0, 1);
        const auto paged = DecodeInto(coding, header, GuardedBytes(frame), pages, 0, 0);
        const std::unique_ptr<unsigned char[]> owner(own);
        EXPECT_EQ(general.code, paged.code);
        ASSERT_EQ(general.size, paged.size);
        for (const auto place : {GuardPlace::kBehind, GuardPlace::kAhead}) {
            for (const unsigned long said : {header.Bytes(), std::size_t{0}}) {
                const GuardedBytes block(header.Bytes(), place);
                unsigned char* result = block.Data();
                const auto given = DecodeInto(coding, header, GuardedBytes(frame), result, said, 1);
                EXPECT_EQ(given.code, general.code);
                EXPECT_EQ(result, block.Data());
                const auto count = std::min({general.size, given.size, header.Bytes()});
                EXPECT_TRUE(given.code != QVM_SUCCESS || std::equal(result, result + count, own))
                    << "another picture";
            }
        }
        EXPECT_TRUE(own == nullptr || pages == nullptr ||
                    std::equal(own, own + general.size, pages))
            << "another allocator";
        ReleasePages(pages);
    });
}

TEST(DeclaredAmounts, TheBlindRoutesStayInsideTheStream) {
    ForEachMisstatement([](const Coding&, const FrameForm&, const Bytes& frame, bool) {
        for (const auto place : {GuardPlace::kBehind, GuardPlace::kAhead}) {
            const GuardedBytes source(frame, place);
            for (const auto decoder : kBlindDecoders) {
                const BlindAnswer blind = BlindlyDecoded(decoder, source.Bytes());
                EXPECT_TRUE(blind.code != QVM_SUCCESS ||
                            blind.bytes.size() ==
                                std::size_t{blind.width} * blind.height * blind.pixelBytes);
            }
        }
    });
}

}  // namespace
}  // namespace quorvex::test
