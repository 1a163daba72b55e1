#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSException.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;

TEST(NSString, NullHasNoLengthAndDiffersFromEmpty) {
    EXPECT_EQ(NSString().length(), 0u);
    EXPECT_NE(NSString(), NSString(u""));
    EXPECT_EQ(NSString(), NSString(nullptr));
}

TEST(NSString, MalformedUTF8BecomesOneReplacementCharacterForEachMaximalPiece) {
    // A cut-off three-byte sequence is one piece; a byte that can't start anything is a piece of its own.
    EXPECT_EQ(NSString::stringWithUTF8String("a\xE2\x82z\xFF\xC0\x80"), u"a\xFFFDz\xFFFD\xFFFD\xFFFD");
    EXPECT_EQ(NSString::stringWithUTF8String("\xED\xA0\x80"), u"\xFFFD\xFFFD\xFFFD");
}

TEST(NSString, UTF8RoundTripsCharactersBeyondTheFirstPlane) {
    EXPECT_EQ(NSString::stringWithUTF8String("\xF0\x9F\x98\x80"), u"\U0001F600");
    EXPECT_EQ(NSString(u"\u00E9\u20AC\U0001F600").UTF8String(), "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(NSString, ALoneSurrogateIsWrittenAsReplacementCharacter) {
    EXPECT_EQ(NSString(std::u16string{0xD83D, u'x', 0xDE00}).UTF8String(), "\xEF\xBF\xBDx\xEF\xBF\xBD");
}

TEST(NSString, SubstringOutsideTheStringThrowsARangeException) {
    EXPECT_EQ(NSString(u"abc").substringWithRange({1, 2}), u"bc");
    EXPECT_THROW(NSString(u"abc").substringWithRange({2, 2}), NSException);
    EXPECT_THROW(NSString(u"abc").substringWithRange({1, NSNotFound}), NSException);
}

TEST(NSString, FormatFillsObjectsNumbersAndRanges) {
    EXPECT_EQ(NSString::stringWithFormat(u"%@ %ld %lu %4.2f %%", u"x", -3, 7u, 1.0 / 3.0), u"x -3 7 0.33 %");
    EXPECT_EQ(NSString::stringWithFormat(u"%@", NSString()), u"(null)");
    EXPECT_EQ(NSString::stringWithFormat(u"%@", std::shared_ptr<NSError>()), u"(null)");
    EXPECT_EQ(NSString::stringWithFormat(u"%@", NSRange{3, 4}), u"{3, 4}");
    EXPECT_EQ(NSString::stringWithFormat(u"%@", std::vector<NSString>{u"a", u"b"}), u"(\n    a,\n    b\n)");
}

TEST(NSString, ComponentsKeepEmptyPieces) {
    const std::vector<NSString> expected{u"a", u"", u"b", u""};
    EXPECT_EQ(NSString(u"a,,b,").componentsSeparatedByString(u","), expected);
    EXPECT_EQ(NSString(u"").componentsSeparatedByString(u",").size(), 1u);
}

TEST(NSAssertionHandler, TheDefaultHandlerLogsAndThrows) {
    const test::LogRecorder log;
    try {
        QVParameterAssert(1 == 2, "pattern != nil");
        FAIL() << "no exception";
    } catch (const NSException &exception) {
        EXPECT_EQ(exception.name(), u"NSInternalInconsistencyException");
        EXPECT_EQ(exception.reason(), u"Invalid parameter not satisfying: pattern != nil");
    }
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_TRUE(log.messages()[0].hasSuffix(u": Invalid parameter not satisfying: pattern != nil"));
}
