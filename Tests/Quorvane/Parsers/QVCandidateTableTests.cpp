#include "Quorvane/Parsers/QVCandidateTable.h"

#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"
#include "Quorvane/RegularExpressions/QVWordList.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

constexpr QVRegularExpressionOptions options = QVRegularExpressionMultiline | QVRegularExpressionUseJIT;

/// One line of text, and a table of patterns in order.
struct Fixture {
    explicit Fixture(std::u16string_view lineText) {
        text.replaceCharactersInRange({0, 0}, lineText);
        line.contentsEnd = lineText.size();
    }
    Fixture &pattern(std::u16string_view pattern) {
        searches.push_back(std::make_unique<QVRememberedSearch>(
            QVRegularExpression::regularExpressionWithPattern(NSString(pattern), options)));
        return *this;
    }
    /// One that ends the region around it.
    Fixture &end(std::u16string_view endPattern) {
        pattern(endPattern);
        ends = searches.size();
        return *this;
    }
    /// A list of words as syntax files make one.
    Fixture &words(std::vector<NSString> list, std::u16string_view suffix = u"",
                   bool caseInsensitive = false) {
        std::u16string alternatives;
        for (const NSString &word : list)
            alternatives += (alternatives.empty() ? u"" : u"|") + std::u16string(word.view());
        const auto expression = QVRegularExpression::regularExpressionWithPattern(
            u"\\b(" + alternatives + u")" + std::u16string(suffix) + u"\\b",
            caseInsensitive ? options | QVRegularExpressionCaseInsensitive : options);
        expression->setWordList(QVWordList::wordListWithWords(list, caseInsensitive));
        searches.push_back(std::make_unique<QVRememberedSearch>(expression));
        return *this;
    }
    QVCandidateTable &table() {
        if (!made) {
            std::vector<QVCandidateTable::Pattern> patterns;
            for (std::uint32_t index = 0; index < searches.size(); ++index)
                patterns.push_back({nullptr, searches[index].get(), index, true, false, index < ends});
            made = std::make_unique<QVCandidateTable>(std::move(patterns));
        }
        return *made;
    }
    QVSearchContext context() { return {text.view(), 1, matchContext, lineWords}; }

    /// Everything that a walk takes, as "order:start-end"; "?" where it can't settle the matter.
    std::string walk() {
        const QVSearchContext searchContext = context();
        std::vector<NSRange> covered;
        QVLineWalk walk(table(), line, searchContext, covered);
        std::string result;
        for (NSUInteger open = 0;;) {
            const QVLineWalk::Result found = walk.find(open, NSNotFound);
            if (found == QVLineWalk::Nothing)
                return result;
            result += result.empty() ? "" : " ";
            if (found == QVLineWalk::Unknown)
                return result + "?";
            const NSUInteger end = NSMaxRange(walk.hit());
            result += std::to_string(walk.pattern().order) + ":" + std::to_string(walk.hit().location) + "-" +
                      std::to_string(end);
            open = std::max(walk.hit().location + 1, end);
            walk.take();
        }
    }

    QVParseText text{0};
    QVParseLine line;
    QVRegularExpressionMatchContext matchContext;
    QVLineWords lineWords;
    std::vector<std::unique_ptr<QVRememberedSearch>> searches;
    std::unique_ptr<QVCandidateTable> made;
    /// How many of the first patterns end the region.
    std::size_t ends = 0;
};

} // namespace

TEST(QVCandidateTable, UnitsThatNothingBeginsWithArePassed) {
    Fixture fixture(u"");
    fixture.pattern(u"[ab]c").words({u"if"});
    EXPECT_FALSE(fixture.table().canPass(u'a'));
    EXPECT_FALSE(fixture.table().canPass(u'i'));
    EXPECT_TRUE(fixture.table().canPass(u'c'));
    EXPECT_TRUE(fixture.table().canPass(u'\x4E00'));
}

TEST(QVLineWalk, TakesTheFirstPatternInOrderAtEachPlace) {
    EXPECT_EQ(Fixture(u"ab abc").pattern(u"abc").pattern(u"a\\w").pattern(u"b").walk(), "1:0-2 0:3-6");
}

TEST(QVLineWalk, FindsTheSameHoweverOftenItIsAsked) {
    Fixture fixture(u"ab abc");
    fixture.pattern(u"abc").pattern(u"a\\w").pattern(u"b");
    for (int turn = 0; turn < 40; ++turn)
        EXPECT_EQ(fixture.walk(), "1:0-2 0:3-6") << turn;
}

TEST(QVLineWalk, WordsOfListsAreWholeRunsThatTheSurroundingsAllow) {
    EXPECT_EQ(Fixture(u"if iff if$ xif if").words({u"if", u"else"}, u"(?!\\$)").walk(), "0:0-2 0:15-17");
}

TEST(QVLineWalk, AnEarlierPatternWinsOverAWordAndALaterOneDoesNot) {
    EXPECT_EQ(Fixture(u"if").pattern(u"i\\w").words({u"if"}).walk(), "0:0-2");
    EXPECT_EQ(Fixture(u"if").words({u"if"}).pattern(u"i\\w").walk(), "0:0-2");
    EXPECT_EQ(Fixture(u"if").words({u"if"}, u"(?=x)").pattern(u"i\\w").walk(), "1:0-2");
}

TEST(QVLineWalk, ListsInAnyCaseKnowTheirWordsInAnyCase) {
    Fixture fixture(u"IF If if");
    fixture.words({u"if"}).words({u"if"}, u"", true);
    EXPECT_EQ(fixture.walk(), "1:0-2 1:3-5 0:6-8");
    EXPECT_TRUE(fixture.table().foldsCase());
}

TEST(QVLineWalk, AHitFromCoveredTextThatReachesBeyondItHidesWhatLiesInIt) {
    // "bcd" begins in what "ab" has covered and is dropped, but the pattern's next hit comes behind it: the
    // "d" at its end is none.
    EXPECT_EQ(Fixture(u"abcd").pattern(u"ab").pattern(u"bcd|d").walk(), "0:0-2 ?");
    EXPECT_EQ(Fixture(u"ab d").pattern(u"ab").pattern(u"bcd|d").walk(), "0:0-2 1:3-4");
}

TEST(QVLineWalk, AHitFromCoveredTextThatEndsBeforeTheCandidateHidesNothing) {
    EXPECT_EQ(Fixture(u"abcd").pattern(u"ab").pattern(u"bc|d").walk(), "0:0-2 1:3-4");
    EXPECT_EQ(Fixture(u"abbd").pattern(u"abb").pattern(u"b|d").walk(), "0:0-3 1:3-4");
}

TEST(QVLineWalk, AWordThatCoveredTextHasCutIsNotSettled) {
    // The list's "bc" begins at the word's start, which is covered, and reaches beyond.
    EXPECT_EQ(Fixture(u"+bc bc").pattern(u"\\+b").words({u"bc"}).walk(), "0:0-2 ?");
    EXPECT_EQ(Fixture(u"+bx bc").pattern(u"\\+b").words({u"bc"}).walk(), "0:0-2 1:4-6");
}

TEST(QVLineWalk, AHitBeyondTheLineIsNotSettled) {
    Fixture fixture(u"ab\ncd");
    fixture.line.contentsEnd = 2;
    EXPECT_EQ(fixture.pattern(u"b\\s").walk(), "?");
}

TEST(QVLineWalk, LooksNoFurtherThanAsked) {
    Fixture fixture(u"..a");
    fixture.pattern(u"a");
    const QVSearchContext context = fixture.context();
    std::vector<NSRange> covered;
    QVLineWalk walk(fixture.table(), fixture.line, context, covered);
    EXPECT_EQ(walk.find(0, 1), QVLineWalk::Nothing);
    EXPECT_EQ(walk.find(0, 2), QVLineWalk::Found);
    EXPECT_EQ(walk.hit(), (NSRange{2, 1}));
    EXPECT_EQ(walk.find(3, NSNotFound), QVLineWalk::Nothing);
}

TEST(QVLineWalk, EndsWhenAnotherWalkBeginsOnItsTable) {
    Fixture fixture(u"aa");
    fixture.pattern(u"a");
    const QVSearchContext context = fixture.context();
    std::vector<NSRange> covered;
    std::vector<NSRange> others;
    QVLineWalk walk(fixture.table(), fixture.line, context, covered);
    const QVLineWalk other(fixture.table(), fixture.line, context, others);
    EXPECT_EQ(walk.find(0, NSNotFound), QVLineWalk::Unknown);
}

TEST(QVLineWalk, APatternThatOnlyLooksHitsWhereverItMatches) {
    EXPECT_EQ(Fixture(u"ab aab").pattern(u"(?=ab)").walk(), "0:0-0 0:4-4");
    // Also in what others took before, and behind it.
    EXPECT_EQ(Fixture(u"xaya").pattern(u"xa").pattern(u"(?=a)").walk(), "0:0-2 1:3-3");
    EXPECT_EQ(Fixture(u"aab").pattern(u"(?=a)").pattern(u"ab").walk(), "0:0-0 0:1-1");
    EXPECT_EQ(Fixture(u"aab").pattern(u"ab").pattern(u"(?=a)").walk(), "1:0-0 0:1-3");
}

TEST(QVLineWalk, APatternThatOnlyLooksMayHitAtTheTextsEnd) {
    EXPECT_EQ(Fixture(u"a").pattern(u"$").walk(), "0:1-1");
    EXPECT_EQ(Fixture(u"a").pattern(u"(?!\\w)").walk(), "0:1-1");
    EXPECT_EQ(Fixture(u"").pattern(u"(?=a)|$").walk(), "0:0-0");
    EXPECT_EQ(Fixture(u"a").pattern(u"(?=b)").walk(), "");
}

TEST(QVLineWalk, AtALineEndingOnlyTheRegionsEndHits) {
    Fixture fixture(u"a\nb");
    fixture.line.contentsEnd = 1;
    fixture.line.newline = {1, 1};
    EXPECT_EQ(fixture.pattern(u"(?=\\s)").walk(), "");
    Fixture closing(u"a\nb");
    closing.line.contentsEnd = 1;
    closing.line.newline = {1, 1};
    EXPECT_EQ(closing.end(u"(?=\\s)").pattern(u"a").walk(), "1:0-1 0:1-1");
}
