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

TEST(CString, BadBytesBecomeReplacementCharacters) {
    // A lone continuation, an overlong slash, a surrogate, a sequence that breaks off.
    for (const char* bad : {"\x80", "\xC0\xAF", "\xED\xA0\x80", "\xE5\xB1"}) {
        const CString string(bad);
        ASSERT_FALSE(string.IsEmpty());
        for (int i = 0; i < string.GetLength(); ++i) EXPECT_EQ(string[i], 0xFFFD) << i;
    }
    EXPECT_EQ(CString(u"\xD800x").ToUtf8(), "\xEF\xBF\xBDx");
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
