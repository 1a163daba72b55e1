#include "Quorvane/Parsers/QVRememberedSearch.h"

#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

QVMatchingOutcome hitFrom(QVRememberedSearch &search, std::u16string_view text, NSUInteger from) {
    QVRegularExpressionMatchContext context;
    QVParseLine line;
    line.contentsEnd = text.size();
    line.units = {~0ull, ~0ull, ~0ull, ~0ull};
    QVLineWords words;
    return search.firstHitFrom(from, line, {text, 1, context, words}, false);
}

} // namespace

TEST(QVRememberedSearch, NothingIsRememberedBehindHalfACharacter) {
    // The compiled form steps from half a character over the unit behind it, so a search from the start
    // misses the letter at 1, and one that begins there finds it. A remembered hit must not hide that.
    const std::u16string text{0xD801, u's', u' ', u'b'};
    const auto expression = QVRegularExpression::regularExpressionWithPattern(
        u"\\p{Ll}", QVRegularExpressionMultiline | QVRegularExpressionUseJIT);
    QVRememberedSearch search(expression);
    EXPECT_EQ(hitFrom(search, text, 0).range, (NSRange{3, 1}));
    EXPECT_EQ(hitFrom(search, text, 1).range, (NSRange{1, 1}));
    EXPECT_EQ(hitFrom(search, text, 2).range, (NSRange{3, 1}));
}

TEST(QVRememberedSearch, NothingIsRememberedWithinAPair) {
    // Alone, the second half is a character too, and not the one that the pattern excludes.
    const std::u16string text = u"\U0001F600b";
    QVRememberedSearch search(
        QVRegularExpression::regularExpressionWithPattern(u"[^\U0001F600]", QVRegularExpressionUseJIT));
    EXPECT_EQ(hitFrom(search, text, 0).range, (NSRange{2, 1}));
    EXPECT_EQ(hitFrom(search, text, 1).range, (NSRange{1, 1}));
    EXPECT_EQ(hitFrom(search, text, 2).range, (NSRange{2, 1}));
}

TEST(QVRememberedSearch, ALookAheadReachesBehindTheLine) {
    // What a match must be followed by is not part of it, so it does not have to fit in.
    const std::u16string text = u"ab\n";
    QVRememberedSearch search(
        QVRegularExpression::regularExpressionWithPattern(u"(?=\\n)", QVRegularExpressionUseJIT));
    QVRegularExpressionMatchContext context;
    QVParseLine line;
    line.contentsEnd = 2;
    line.newline = {2, 1};
    line.units = {~0ull, ~0ull, ~0ull, ~0ull};
    QVLineWords words;
    EXPECT_EQ(search.firstHitFrom(0, line, {text, 1, context, words}, false).range, (NSRange{2, 0}));
    EXPECT_TRUE(search.canStartAtOrBehind(2, line));
}
