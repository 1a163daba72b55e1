#include "Quorvane/RegularExpressions/QVPatternOutline.h"

#include <gtest/gtest.h>

#include <string>

using namespace quorvane;

namespace {

QVPatternOutline outline(std::u16string_view pattern, bool extended = false) {
    return QVPatternOutline::outlineOfPattern(pattern, extended);
}

bool onlyLooks(std::u16string_view pattern) { return outline(pattern).matchesEmptyTextAlone; }
bool startsLines(std::u16string_view pattern) { return outline(pattern).startsAtLineStartsAlone; }

/// The tails with "/" between each two; "?" where there are none to tell.
std::string tails(std::u16string_view pattern) {
    const auto found = outline(pattern).tails;
    if (!found)
        return "?";
    std::string result;
    for (const std::u16string_view tail : *found)
        result += (result.empty() ? "" : "/") + std::string(tail.begin(), tail.end());
    return result;
}

} // namespace

TEST(QVPatternOutline, AssertionsAloneMatchNoText) {
    EXPECT_TRUE(onlyLooks(u""));
    EXPECT_TRUE(onlyLooks(u"(?=a)"));
    EXPECT_TRUE(onlyLooks(u"(?<!\\w)(?=a(b|c)*)"));
    EXPECT_TRUE(onlyLooks(u"^|$|\\b\\B|\\A|\\z|\\Z"));
    EXPECT_TRUE(onlyLooks(u"(?![)\\])]|[^]x])"));
    EXPECT_TRUE(onlyLooks(u"(?=[[:alpha:])])"));
}

TEST(QVPatternOutline, WhatMayMatchTextIsMoreThanAssertions) {
    for (const std::u16string_view pattern : {u"a", u"(?=a)b", u"(?=a)|b", u"\\w", u"[a]", u".", u"(a)",
                                              u"(?:(?=a))", u"a?", u"(?=a)\\x{41}", u" "})
        EXPECT_FALSE(onlyLooks(pattern)) << std::string(pattern.begin(), pattern.end());
}

TEST(QVPatternOutline, BlanksAndCommentsOfExtendedPatternsAreNothing) {
    EXPECT_TRUE(outline(u" (?=a) # look (\n\t(?!b)", true).matchesEmptyTextAlone);
    EXPECT_TRUE(outline(u"(?= a # )\n )", true).matchesEmptyTextAlone);
    EXPECT_FALSE(outline(u"# only this\n a", true).matchesEmptyTextAlone);
    EXPECT_TRUE(outline(u"# no end", true).matchesEmptyTextAlone);
    // A comment may end at any line ending or at "\n" alone, which the options tell.
    EXPECT_FALSE(outline(u"(?=a) # x\r(?=b)", true).matchesEmptyTextAlone);
    EXPECT_FALSE(onlyLooks(u"(?=a)#"));
}

TEST(QVPatternOutline, APatternThatAsksForALineStartFirstStartsThereAlone) {
    EXPECT_TRUE(startsLines(u"^a"));
    EXPECT_TRUE(startsLines(u"^ *\\Ka|^(?=b)"));
    EXPECT_TRUE(outline(u" # start\n ^ a", true).startsAtLineStartsAlone);
    EXPECT_TRUE(startsLines(u"^a*"));
}

TEST(QVPatternOutline, APatternThatMayDoWithoutALineStartStartsAnywhere) {
    for (const std::u16string_view pattern : {u"", u"a", u"^a|b", u"^a|", u"^?a", u"^*a", u"^+a", u"^{0}a",
                                              u"(^)a", u"(?=x)^a", u"[^a]", u"\\^a"})
        EXPECT_FALSE(startsLines(pattern)) << std::string(pattern.begin(), pattern.end());
    // The star is the line start's, not the blank's.
    EXPECT_FALSE(outline(u"^ *a", true).startsAtLineStartsAlone);
    EXPECT_TRUE(startsLines(u"^ *a"));
}

TEST(QVPatternOutline, ALookAheadBehindTextIsNotTheFirst) {
    for (const std::u16string_view pattern :
         {u"", u"a", u"a(?=b)", u"[ab](?=c)", u"\\w(?=a)", u"^a(?=b)", u"\\ba|b(?=c)", u"(?<=x)a(?=b)",
          u"(?<!x)(?!y)a(?=b)", u"(?!(?=a))a", u"(?:a|b)c(?=d)", u"ab?(?=c)"})
        EXPECT_FALSE(outline(pattern).mayLookAheadFirst) << std::string(pattern.begin(), pattern.end());
    EXPECT_FALSE(outline(u" # (?=x)\n a (?=b)", true).mayLookAheadFirst);
}

TEST(QVPatternOutline, ALookAheadMayBeTheFirstWhereTheTextBeforeMayBeNone) {
    for (const std::u16string_view pattern :
         {u"(?=a)a", u"a?(?=b)b", u"a*(?=b)", u"a{0,2}(?=b)b", u"[ab]*(?=c)", u"^(?=a)", u"(?:a?(?=b))b",
          u"(?:a){0,1}(?=b)", u"a|(?=b)b", u"\\K(?=a)", u"a(?#b", u"(?:x?)(?=a)a", u"(?<!x)(?=a)a",
          u"(?x)#\n(?=a)a", u"(?^x)#\n(?=a)", u"(?-i)a(?=b)", u"(*pla:a)a"})
        EXPECT_TRUE(outline(pattern).mayLookAheadFirst) << std::string(pattern.begin(), pattern.end());
}

TEST(QVPatternOutline, TailsAreWhatStandsBehindTheMovedStartOfEachAlternative) {
    EXPECT_EQ(tails(u"^ *\\Kab"), "ab");
    EXPECT_EQ(tails(u"a\\Kb\\Kc|d(?:e|f)"), "c/d(?:e|f)");
    EXPECT_EQ(tails(u"ab"), "ab");
    EXPECT_FALSE(outline(u"a\\K *b", true).tails);
}

TEST(QVPatternOutline, AlternativesThatFailHaveNoTail) {
    EXPECT_EQ(tails(u"a(*SKIP)(*FAIL)|b"), "b");
    EXPECT_EQ(tails(u"a|b(*F)"), "a");
    EXPECT_EQ(tails(u"(*FAIL)"), "");
}

TEST(QVPatternOutline, TailsThatNeedTheRestOfThePatternAreNotTold) {
    for (const std::u16string_view pattern :
         {u"(a)\\K\\1", u"(a)\\Kb(c\\g1)", u"(?<n>a)\\Kb", u"(?i)\\Kb", u"(?i:a)\\Kb", u"a\\K*b",
          u"a(*COMMIT)\\Kb", u"(?:a\\Kb)", u"\\Qa\\E\\Kb", u"\\Ga\\Kb", u"(a)(?1)\\Kb", u"(?#c)a\\Kb",
          u"a\\Kb\\"})
        EXPECT_EQ(tails(pattern), "?") << std::string(pattern.begin(), pattern.end());
}

TEST(QVPatternOutline, OfPatternsThatEndTooSoonNothingIsClaimed) {
    for (const std::u16string_view pattern : {u"(?=a", u"(?=[a)", u"(?=a\\", u"[", u"(?=(?!a)"}) {
        EXPECT_FALSE(onlyLooks(pattern)) << std::string(pattern.begin(), pattern.end());
        EXPECT_EQ(tails(pattern), "?") << std::string(pattern.begin(), pattern.end());
    }
}
