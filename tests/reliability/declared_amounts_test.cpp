// Codestream against object: neither header is believed without the other, where the coded frame
// has more or fewer rows, columns, samples or bits, or another coding than the object says.
#include "quorvex/TransferSyntaxes.h"
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

/// The code; `size` is as the processor tells it.
QUORVEX_MESSAGE DecodeInto(const Coding& coding, const FrameForm& header,
                           const GuardedBytes& source, unsigned char*& block, unsigned long& size,
                           int allocMode) {
    _IMAGE_PROCESS_PARAM param = DecodingParam(coding, header);
    CxImageProcessor processor;
    processor.SetAllocMode(allocMode);
    return processor.DecompressFrameData(&param, source.Data(), source.Size(), block, size, 0);
}

TEST(DeclaredAmounts, NoByteIsReadOrWrittenOutsideABlock) {
    ForEachMisstatement([](const Coding& coding, const FrameForm& header, const Bytes& frame,
                           bool) {
        unsigned char* own = nullptr;
        unsigned char* pages = nullptr;
        unsigned long size = 0;
        unsigned long pagedSize = 0;
        const GuardedBytes early(frame, GuardPlace::kAhead);
        const auto code = DecodeInto(coding, header, early, own, size, 1);
        const std::unique_ptr<unsigned char[]> owner(own);
        EXPECT_EQ(DecodeInto(coding, header, GuardedBytes(frame), pages, pagedSize, 0), code);
        ASSERT_EQ(size, pagedSize);
        for (const auto place : {GuardPlace::kBehind, GuardPlace::kAhead}) {
            for (unsigned long given : {header.Bytes(), std::size_t{0}}) {
                const GuardedBytes block(header.Bytes(), place);
                unsigned char* result = block.Data();
                EXPECT_EQ(DecodeInto(coding, header, GuardedBytes(frame), result, given, 1), code);
                EXPECT_EQ(result, block.Data());
                const auto count = std::min({size, given, header.Bytes()});
                EXPECT_TRUE(code != QVM_SUCCESS || std::equal(result, result + count, own))
                    << "another picture";
            }
        }
        EXPECT_TRUE(own == nullptr || pages == nullptr || std::equal(own, own + size, pages))
            << "another allocator";
        ReleasePages(pages);
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

TEST(ForeignHeaders, FragmentsUnderANativeSyntaxNeverPassForPixels) {
    const FrameForm form{.columns = 8, .rows = 4};  // smaller than any coded frame
    for (const Coding& coding : kCodings) {
        const Bytes frame = CodeFrame(coding, form);
        if (frame.empty() || coding.target == kXferUncompressed) continue;
        // As fragments, and as items in a value of declared length.
        const Bytes items = DicomBuilder::In(kExplicitUid).Items({{}, frame}).Bytes();
        const Bytes swapped = DicomBuilder::In(kBigEndianUid).Items({{}, frame}).Bytes();
        for (const auto uid : {kImplicitUid, kExplicitUid, kBigEndianUid}) {
            SCOPED_TRACE(std::string(coding.name) + " under " + std::string(uid));
            for (const Bytes& file :
                 {FileOf(uid, true, form, frame), FileOf(uid, false, form, items),
                  FileOf(uid, false, form, swapped)}) {
                for (const Answered& answer : AskEverything(file))
                    EXPECT_NE(answer.code, QVM_SUCCESS);
            }
        }
    }
}

TEST(ForeignHeaders, PlainPixelsUnderACodedSyntaxAreNoFrame) {
    const FrameForm form{.samples = 1, .bits = 16};
    for (const Coding& coding : kCodings) {
        if (coding.target == kXferUncompressed) continue;
        for (const bool isEncapsulated : {false, true}) {
            SCOPED_TRACE(coding.name);
            const Bytes file = FileOf(coding.uid, isEncapsulated, form, PictureOf(form));
            for (const Answered& answer : AskEverything(file))
                EXPECT_TRUE(answer.code != QVM_SUCCESS && answer.bytes.empty()) << answer.code;
        }
    }
}

TEST(ForeignHeaders, EveryCodingUnderEverySyntaxIsAFrameOrACode) {
    const FrameForm form{.columns = 12, .rows = 10, .bits = 12};
    for (const Coding& inside : kCodings) {
        const Bytes frame = CodeFrame(inside, form);
        if (frame.empty()) continue;
        for (const Coding& said : kCodings) {
            SCOPED_TRACE(std::string(inside.name) + " said to be " + said.name);
            const auto answers = AskEverything(FileOf(said.uid, true, form, frame));
            EXPECT_EQ(answers.front(), answers[answers.size() > 1 ? 1 : 0]);
            if (answers.front().code != QVM_SUCCESS) continue;
            EXPECT_EQ(answers.front().bytes.size(), form.Bytes());
        }
    }
}

/// Component counts of stream and header, in every pair.
TEST(ForeignHeaders, OtherComponentCountsAreRefused) {
    for (const Coding& coding : kCodings) {
        if (coding.target == kXferUncompressed || coding.target == kXferRle) continue;
        if (TransferSyntaxOf(static_cast<QUORVEX_XFERSYNTAX>(coding.target)) == nullptr) continue;
        const unsigned bits = coding.leastBits;
        for (const unsigned stored : {1U, 3U}) {
            const Bytes frame = CodeFrame(coding, {.samples = stored, .bits = bits});
            ASSERT_FALSE(frame.empty()) << coding.name << stored;
            for (const unsigned said : {0U, 1U, 2U, 3U, 4U, 5U, 255U, 65535U}) {
                const auto param = DecodingParam(coding, {.samples = said, .bits = bits});
                Bytes source = frame;
                const auto code = DecodedOf(param, source).code;
                EXPECT_EQ(code == QVM_SUCCESS, said == stored)
                    << coding.name << ": " << stored << " stored, " << said << " said, " << code;
            }
        }
    }
}

/// A reader of two-sample objects must not fill three samples (12-bit colour among them).
TEST(ForeignHeaders, TwelveBitColourNeedsAColourObject) {
    const FrameForm colour{.samples = 3, .bits = 12};
    const Coding& extended = kCodings[3];
    const Bytes frame = CodeFrame(extended, colour);
    const auto asColour = AskEverything(FileOf(extended, colour, frame));
    ASSERT_EQ(asColour.front().code, QVM_SUCCESS);
    EXPECT_EQ(asColour.front().bytes.size(), colour.Bytes());
    for (const FrameForm& header :
         {FrameForm{.bits = 12}, FrameForm{.bits = 8}, FrameForm{.samples = 2, .bits = 12},
          FrameForm{.samples = 3, .bits = 8}}) {
        for (const Answered& answer : AskEverything(FileOf(extended, header, frame)))
            EXPECT_NE(answer.code, QVM_SUCCESS) << header.samples << ' ' << header.bits;
    }
}

}  // namespace
}  // namespace quorvex::test
