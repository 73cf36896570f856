#include "quorvex/ResultCodes.h"
#include "quorvex/Types.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

TEST(CString, KeepsEveryCharacterOfUtf8) {
    const std::string text = "M\xC3\xBCller \xE5\xB1\xB1\xE7\x94\xB0 \xF0\x9D\x84\x9E";
    const CString string(text);
    EXPECT_EQ(string.GetLength(), 12);  // the last character takes two of 16 bits
    EXPECT_EQ(string.ToUtf8(), text);
}

TEST(CString, KeepsBytesThatAreNoText) {
    const struct {
        const char* what;
        const char* bytes;
        const char* valid;
    } kBytes[] = {
        {"a lone continuation", "\x80", "\xEF\xBF\xBD"},
        {"an overlong slash", "\xC0\xAF", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"a surrogate", "\xED\xB2\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"a sequence that breaks off", "/a\xE5\xB1", "/a\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"text on both sides", "\xC3\xBC\xFC\xC3\xBC", "\xC3\xBC\xEF\xBF\xBD\xC3\xBC"},
    };
    for (const auto& c : kBytes) {
        const CString string(c.bytes);
        EXPECT_EQ(string.ToUtf8(), c.bytes) << c.what;
        EXPECT_EQ(string.ToValidUtf8(), c.valid) << c.what;
        EXPECT_EQ((CString("a") + string).Mid(1), string) << c.what;
    }
    // A surrogate that stands for no byte.
    EXPECT_EQ(CString(u"\xD800x").ToUtf8(), "\xEF\xBF\xBDx");
    EXPECT_EQ(CString(u"\xDC7Fx").ToUtf8(), "\xEF\xBF\xBDx");
}

TEST(CString, CutsAndFindsInsideItsText) {
    const CString string("MONOCHROME2");
    EXPECT_EQ(string.Find("CHROME"), 4);
    EXPECT_EQ(string.Find("M", 1), 8);
    EXPECT_EQ(string.Find("x"), -1);
    EXPECT_EQ(string.Find("M", 99), -1);
    EXPECT_EQ(string.Left(4), CString("MONO"));
    EXPECT_EQ(string.Right(1), CString("2"));
    EXPECT_EQ(string.Right(99), string);
    EXPECT_EQ(string.Mid(4, 6), CString("CHROME"));
    EXPECT_EQ(string.Mid(-3, 2), CString("MO"));
    EXPECT_TRUE(string.Mid(50).IsEmpty());
    EXPECT_EQ(string.CompareNoCase("monochrome2"), 0);
    EXPECT_LT(CString("A").Compare("B"), 0);
    EXPECT_LT(CString("a").CompareNoCase("B"), 0);
}

TEST(ResultCodes, HaveNamesAndSentences) {
    EXPECT_STREQ(ResultName(QVM_ERROR_FAILED_TO_PARSE_DICOM), "QVM_ERROR_FAILED_TO_PARSE_DICOM");
    EXPECT_STREQ(ResultName(static_cast<QUORVEX_MESSAGE>(30)), "QVM_UNKNOWN");
    EXPECT_STREQ(ResultSentence(QVM_ERROR_NO_IMAGE), "there is no image yet");
}

}  // namespace
}  // namespace quorvex
