// The codestream's header against the object's: neither is believed without the other.
#include "tests/reliability/coded_frames.h"
#include "tests/support/every_route.h"

#include <gtest/gtest.h>
#include <string>

namespace quorvex::test {
namespace {

constexpr const char* kNativeUids[] = {"1.2.840.10008.1.2", "1.2.840.10008.1.2.1",
                                       "1.2.840.10008.1.2.2"};

/// One frame as items in a value of declared length, their headers in the byte order of `itemsUid`.
Bytes FileOfItemsInAValue(const char* uid, std::string_view itemsUid, const FrameForm& form,
                          const Bytes& frame) {
    const Bytes items = DicomBuilder::In(itemsUid).Items({{}, frame}).Bytes();
    return FileOf(uid, false, form, items);
}

TEST(ForeignHeaders, FragmentsUnderANativeSyntaxNeverPassForPixels) {
    const FrameForm form{.columns = 8, .rows = 4};  // smaller than any coded frame
    for (const Coding& coding : kCodings) {
        const Bytes frame = CodeFrame(coding, form);
        if (frame.empty() || coding.target == kXferUncompressed) continue;
        for (const char* uid : kNativeUids) {
            SCOPED_TRACE(std::string(coding.name) + " under " + uid);
            for (const Bytes& file : {FileOf(uid, true, form, frame),
                                      FileOfItemsInAValue(uid, kExplicitUid, form, frame),
                                      FileOfItemsInAValue(uid, kBigEndianUid, form, frame)}) {
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
            const auto answers =
                AskEverything(FileOf(coding.uid, isEncapsulated, form, PictureOf(form)));
            for (const Answered& answer : answers)
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
        const unsigned bits = coding.leastBits;
        for (const unsigned stored : {1U, 3U}) {
            const Bytes frame = CodeFrame(coding, {.samples = stored, .bits = bits});
            ASSERT_FALSE(frame.empty()) << coding.name << stored;
            for (const unsigned said : {0U, 1U, 2U, 3U, 4U, 5U, 255U, 65535U}) {
                FrameForm header{.samples = said, .bits = bits};
                const auto param = DecodingParam(coding, header);
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
