#include "Platform/Foundation/NSScanner.h"

#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSException.h"
#include "Tests/Support/TextGaps.h"

#include <gtest/gtest.h>

using namespace quorvane;
using test::withEveryGap;

TEST(NSScanner, ScansATextOnlyWhereItStands) {
    withEveryGap(u"foobar", [](QVTextReader text) {
        NSScanner scanner(text);
        EXPECT_FALSE(scanner.scanString(u"bar"));
        EXPECT_FALSE(scanner.scanString(u""));
        EXPECT_FALSE(scanner.scanString(u"foobarbaz"));
        EXPECT_EQ(scanner.scanLocation(), 0u);
        EXPECT_TRUE(scanner.scanString(u"foo"));
        EXPECT_EQ(scanner.scanLocation(), 3u);
        EXPECT_TRUE(scanner.scanString(u"bar"));
        EXPECT_TRUE(scanner.isAtEnd());
        EXPECT_FALSE(scanner.scanString(u"x"));
    });
}

TEST(NSScanner, ScansUpToATextOrToTheEnd) {
    withEveryGap(u"aab-->aaab", [](QVTextReader text) {
        NSScanner scanner(text);
        std::u16string scanned = u"kept";
        EXPECT_FALSE(scanner.scanUpToString(u"aa", &scanned));
        EXPECT_EQ(scanned, u"kept");
        EXPECT_TRUE(scanner.scanUpToString(u"-->", &scanned));
        EXPECT_EQ(scanned, u"aab");
        EXPECT_EQ(scanner.scanLocation(), 3u);
        scanner.setScanLocation(6);
        EXPECT_TRUE(scanner.scanUpToString(u"aab", &scanned));
        EXPECT_EQ(scanned, u"a");
        EXPECT_TRUE(scanner.scanUpToString(u"-->", &scanned));
        EXPECT_EQ(scanned, u"aab");
        EXPECT_TRUE(scanner.isAtEnd());
        EXPECT_FALSE(scanner.scanUpToString(u"-->", &scanned));
        EXPECT_EQ(scanned, u"aab");
    });
}

TEST(NSScanner, ScansCharactersOfASetAndKeepsPairsTogether) {
    withEveryGap(u"a\U0001F600\U0001F601b", [](QVTextReader text) {
        NSScanner scanner(text);
        const auto faces = NSCharacterSet::characterSetWithCharactersInString(u"\U0001F600\U0001F601");
        std::u16string scanned;
        EXPECT_FALSE(scanner.scanCharactersFromSet(*faces, &scanned));
        EXPECT_TRUE(scanner.scanUpToCharactersFromSet(*faces, &scanned));
        EXPECT_EQ(scanned, u"a");
        EXPECT_FALSE(scanner.scanUpToCharactersFromSet(*faces, &scanned));
        EXPECT_TRUE(scanner.scanCharactersFromSet(*faces, &scanned));
        EXPECT_EQ(scanned, u"\U0001F600\U0001F601");
        EXPECT_TRUE(scanner.scanUpToCharactersFromSet(*faces));
        EXPECT_TRUE(scanner.isAtEnd());
    });
}

TEST(NSScanner, SkipsNothingOfItself) {
    NSScanner scanner(u" \tx");
    EXPECT_FALSE(scanner.scanString(u"x"));
    EXPECT_TRUE(scanner.scanCharactersFromSet(*NSCharacterSet::whitespaceCharacterSet()));
    EXPECT_TRUE(scanner.scanString(u"x"));
}

TEST(NSScanner, ALocationBeyondTheTextThrows) {
    NSScanner scanner(u"abc");
    scanner.setScanLocation(3);
    EXPECT_TRUE(scanner.isAtEnd());
    EXPECT_THROW(scanner.setScanLocation(4), NSException);
    EXPECT_EQ(scanner.scanLocation(), 3u);
}

TEST(NSScanner, AnEmptyTextIsAtItsEnd) {
    NSScanner scanner(u"");
    EXPECT_TRUE(scanner.isAtEnd());
    EXPECT_FALSE(scanner.scanUpToString(u"x"));
    EXPECT_FALSE(scanner.scanUpToCharactersFromSet(*NSCharacterSet::newlineCharacterSet()));
}
