#include "Platform/Foundation/NSRegularExpression.h"

#include "Platform/Foundation/NSException.h"
#include "Tests/Support/Recorders.h"

#define PCRE2_CODE_UNIT_WIDTH 16
#include <gtest/gtest.h>
#include <pcre2.h>
#include <thread>

using namespace quorvane;

namespace {

std::shared_ptr<NSRegularExpression> compiled(const NSString &pattern,
                                              NSRegularExpressionOptions options = 0) {
    return NSRegularExpression::regularExpressionWithPattern(pattern, options);
}

/// The matches of a pattern in a whole text, each between bars.
NSString found(const NSString &pattern, std::u16string_view text, NSRegularExpressionOptions options = 0,
               NSMatchingOptions matching = 0) {
    std::u16string result = u"|";
    compiled(pattern, options)
        ->enumerateMatchesInString(text, matching, {0, text.size()},
                                   [&](const NSRegularExpression::Match &match, bool &) {
                                       result += text.substr(match[0].location, match[0].length);
                                       result += u"|";
                                   });
    return result;
}

} // namespace

TEST(NSRegularExpression, FindsAllMatchesInOrderEmptyOnesIncluded) {
    EXPECT_EQ(found(u"\\w+", u"one two  three"), u"|one|two|three|");
    EXPECT_EQ(found(u"a*", u"baa"), u"||aa||");
    EXPECT_EQ(found(u"x", u""), u"|");
    EXPECT_EQ(found(u"^", u""), u"||");
}

TEST(NSRegularExpression, WordCharactersAreThoseOfUnicode) {
    EXPECT_EQ(found(u"\\w+", u"\u00FCber \u65E5\u672C"), u"|\u00FCber|\u65E5\u672C|");
}

TEST(NSRegularExpression, EachCompileOptionChangesWhatMatches) {
    EXPECT_EQ(found(u"a", u"aA"), u"|a|");
    EXPECT_EQ(found(u"a", u"aA", NSRegularExpressionCaseInsensitive), u"|a|A|");
    EXPECT_EQ(found(u"a b # note", u"ab", NSRegularExpressionAllowCommentsAndWhitespace), u"|ab|");
    EXPECT_EQ(found(u"a.(", u"axa.(", NSRegularExpressionIgnoreMetacharacters), u"|a.(|");
    EXPECT_EQ(found(u"a.b", u"a\nb"), u"|");
    EXPECT_EQ(found(u"a.b", u"a\nb", NSRegularExpressionDotMatchesLineSeparators), u"|a\nb|");
    EXPECT_EQ(found(u"^b$", u"a\nb\nc"), u"|");
    EXPECT_EQ(found(u"^b$", u"a\nb\nc", NSRegularExpressionAnchorsMatchLines), u"|b|");
}

TEST(NSRegularExpression, AGroupThatTookNoPartIsNotFound) {
    const auto match = compiled(u"(a)|(b)")->firstMatchInString(u"xb", 0, {0, 2});
    ASSERT_TRUE(match);
    ASSERT_EQ(match->size(), 3u);
    EXPECT_EQ((*match)[0], (NSRange{1, 1}));
    EXPECT_EQ((*match)[1], NSNotFoundRange);
    EXPECT_EQ((*match)[2], (NSRange{1, 1}));
    EXPECT_EQ(compiled(u"(a)|(b)")->numberOfCaptureGroups(), 2u);
}

TEST(NSRegularExpression, ASearchStaysInItsRange) {
    const auto a = compiled(u"a+");
    EXPECT_EQ(a->rangeOfFirstMatchInString(u"aaaa", 0, {1, 2}), (NSRange{1, 2}));
    EXPECT_EQ(a->rangeOfFirstMatchInString(u"abba", 0, {1, 2}), NSNotFoundRange);
    EXPECT_FALSE(a->firstMatchInString(u"abba", 0, {1, 2}));
    EXPECT_EQ(a->numberOfMatchesInString(u"abbaba", 0, {1, 5}), 2u);
}

TEST(NSRegularExpression, ARangeOutsideOfTheTextThrows) {
    EXPECT_THROW(compiled(u"a")->rangeOfFirstMatchInString(u"abc", 0, {2, 2}), NSException);
    EXPECT_THROW(compiled(u"a")->numberOfMatchesInString(u"abc", 0, {1, NSNotFound}), NSException);
    EXPECT_THROW(compiled(u"a")->firstMatchInString(u"abc", 0, NSNotFoundRange), NSException);
}

TEST(NSRegularExpression, AnAnchoredSearchOnlyMatchesAtTheStartOfItsRange) {
    const auto word = compiled(u"\\w");
    EXPECT_EQ(word->numberOfMatchesInString(u"abc", NSMatchingAnchored, {0, 3}), 1u);
    EXPECT_EQ(word->rangeOfFirstMatchInString(u" abc", NSMatchingAnchored, {0, 4}), NSNotFoundRange);
    EXPECT_EQ(word->rangeOfFirstMatchInString(u" abc", NSMatchingAnchored, {1, 3}), (NSRange{1, 1}));
}

TEST(NSRegularExpression, BoundsAreOpaqueAndAnchorUnlessOptionsSayOtherwise) {
    // Whether a look-ahead sees what is behind the range. (A look-behind sees what is before it in any case.)
    const auto ahead = compiled(u"a(?=b)");
    EXPECT_EQ(ahead->rangeOfFirstMatchInString(u"ab", 0, {0, 1}), NSNotFoundRange);
    EXPECT_EQ(ahead->rangeOfFirstMatchInString(u"ab", NSMatchingWithTransparentBounds, {0, 1}),
              (NSRange{0, 1}));
    // Whether the range's start counts as the start of the text.
    const auto start = compiled(u"^b");
    EXPECT_EQ(start->rangeOfFirstMatchInString(u"ab", 0, {1, 1}), (NSRange{1, 1}));
    EXPECT_EQ(start->rangeOfFirstMatchInString(u"ab", NSMatchingWithoutAnchoringBounds, {1, 1}),
              NSNotFoundRange);
}

TEST(NSRegularExpression, StopEndsTheEnumeration) {
    int calls = 0;
    compiled(u"a")->enumerateMatchesInString(
        u"aaa", 0, {0, 3}, [&](const NSRegularExpression::Match &, bool &stop) { stop = ++calls == 2; });
    EXPECT_EQ(calls, 2);
}

TEST(NSRegularExpression, AnExceptionFromTheCallbackGoesThrough) {
    EXPECT_THROW(compiled(u"a")->enumerateMatchesInString(
                     u"aaa", 0, {0, 3},
                     [](const NSRegularExpression::Match &, bool &) { throw std::runtime_error("out"); }),
                 std::runtime_error);
}

TEST(NSRegularExpression, ABadPatternIsAnError) {
    for (const NSString &pattern : {NSString(u"(a"), NSString(u""), NSString()}) {
        std::shared_ptr<NSError> error;
        EXPECT_EQ(NSRegularExpression::regularExpressionWithPattern(pattern, 0, &error), nullptr);
        ASSERT_NE(error, nullptr);
        EXPECT_EQ(error->domain(), u"NSCocoaErrorDomain");
        EXPECT_EQ(error->code(), 2048);
    }
    std::shared_ptr<NSError> error;
    NSRegularExpression::regularExpressionWithPattern(u"(a", 0, &error);
    EXPECT_EQ(error->localizedDescription(), u"The value “(a” is invalid.");
    EXPECT_EQ(error->stringForKey(u"NSInvalidValue"), u"(a");
    EXPECT_EQ(NSRegularExpression::regularExpressionWithPattern(u"(a", 0), nullptr);
}

TEST(NSRegularExpression, ASearchThatRunsTooLongIsNotFoundAndLoggedWithItsPattern) {
    const test::LogRecorder log;
    const std::u16string text(64, u'a');
    EXPECT_EQ(compiled(u"(a+)+b")->rangeOfFirstMatchInString(text, 0, {0, text.size()}), NSNotFoundRange);
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0], u"The search for the pattern \"(a+)+b\" was given up: it took too long.");
    EXPECT_EQ(compiled(u"(a+)+b")->numberOfMatchesInString(text, 0, {0, text.size()}), 0u);
    EXPECT_EQ(log.messages().size(), 2u);
}

TEST(NSRegularExpression, APatternIsSharedBetweenThreads) {
    const auto pattern = compiled(u"(\\w)\\w*");
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index)
        threads.emplace_back([&, index] {
            std::u16string text;
            for (int word = 0; word <= index * 10; ++word)
                text += u"word ";
            for (int round = 0; round < 50; ++round)
                if (pattern->numberOfMatchesInString(text, 0, {0, text.size()}) != NSUInteger(index * 10 + 1))
                    ++wrong;
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(NSRegularExpression, ReplacingFillsGroupsIntoTheTemplate) {
    const auto replaced = [](const NSString &pattern, std::u16string_view text, std::u16string_view by) {
        return compiled(pattern)->stringByReplacingMatchesInString(text, 0, {0, text.size()}, by);
    };
    EXPECT_EQ(replaced(u"(\\w)(\\d)", u"a1 b2", u"$2$1"), u"1a 2b");
    EXPECT_EQ(replaced(u"a", u"xax", u"[$0]"), u"x[a]x");
    EXPECT_EQ(replaced(u"(a)", u"a", u"$10"), u"a0");
    EXPECT_EQ(replaced(u"(a)|b", u"b", u"<$1>"), u"<>");
    EXPECT_EQ(replaced(u"a", u"a", u"$7"), u"");
    EXPECT_EQ(replaced(u"a", u"a", u"\\$0\\\\"), u"$0\\");
    EXPECT_EQ(replaced(u"a", u"a", u"$x$"), u"$x$");
    EXPECT_EQ(compiled(u"a")->stringByReplacingMatchesInString(u"aaa", 0, {1, 1}, u"b"), u"aba");
}

TEST(NSRegularExpression, PatternAndOptionsMakeEquality) {
    EXPECT_TRUE(compiled(u"a")->isEqual(compiled(u"a").get()));
    EXPECT_EQ(compiled(u"a")->hash(), compiled(u"a")->hash());
    EXPECT_FALSE(compiled(u"a")->isEqual(compiled(u"b").get()));
    EXPECT_FALSE(compiled(u"a")->isEqual(compiled(u"a", NSRegularExpressionCaseInsensitive).get()));
    EXPECT_FALSE(compiled(u"a")->isEqual(nullptr));
}

TEST(NSRegularExpression, EscapingPutsABackslashBeforeEachMetacharacter) {
    EXPECT_EQ(NSRegularExpression::escapedPatternForString(u"a.b*c"), u"a\\.b\\*c");
    EXPECT_EQ(NSRegularExpression::escapedPatternForString(u"\\?+[](){}^$|"),
              u"\\\\\\?\\+\\[\\]\\(\\)\\{\\}\\^\\$\\|");
    EXPECT_EQ(NSRegularExpression::escapedPatternForString(u"word_1-2 #&<>/"), u"word_1-2 #&<>/");
}

TEST(NSRegularExpression, EscapedTextStandsForItselfInBothExpressionLibraries) {
    // Every unit that is a character, between letters and before digits, and what has a meaning only
    // together.
    std::vector<std::u16string> texts{u"\\Q.\\E",    u"(?x) a",           u"[[:alpha:]]", u"a{2}",
                                      u"\\d\\u0041", u"(*COMMIT)",        u"[a&&b]",      u"\r\n\u2028",
                                      u"$&^^.",      u"\U0001F600+\u0301"};
    for (char32_t unit = 0; unit < 0x10000; ++unit)
        if (unit < 0xD800 || unit > 0xDFFF)
            texts.push_back({u'Q', static_cast<char16_t>(unit), u'1'});
    for (const std::u16string &text : texts) {
        const NSString escaped = NSRegularExpression::escapedPatternForString(text);
        const std::u16string subject = u"Q" + text + u"x";
        const auto expression = compiled(escaped);
        ASSERT_NE(expression, nullptr) << escaped.UTF8String();
        ASSERT_EQ(expression->rangeOfFirstMatchInString(subject, 0, {1, text.size()}),
                  (NSRange{1, text.size()}))
            << escaped.UTF8String();
        int code = 0;
        PCRE2_SIZE offset = 0;
        pcre2_code *other = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(escaped.view().data()),
                                          escaped.length(), PCRE2_UTF | PCRE2_UCP, &code, &offset, nullptr);
        ASSERT_NE(other, nullptr) << escaped.UTF8String();
        pcre2_match_data *data = pcre2_match_data_create(1, nullptr);
        const int matched = pcre2_match(other, reinterpret_cast<PCRE2_SPTR>(subject.data()), subject.size(),
                                        1, PCRE2_ANCHORED, data, nullptr);
        const PCRE2_SIZE end = pcre2_get_ovector_pointer(data)[1];
        pcre2_match_data_free(data);
        pcre2_code_free(other);
        ASSERT_EQ(matched, 1) << escaped.UTF8String();
        ASSERT_EQ(end, 1 + text.size()) << escaped.UTF8String();
    }
}
