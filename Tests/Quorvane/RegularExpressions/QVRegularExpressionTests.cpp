#include "Quorvane/RegularExpressions/QVRegularExpression.h"

#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Quorvane/QuorvaneErrors.h"
#include "Tests/Quorvane/RegularExpressions/RegularExpressionFixtures.h"

#include <gmock/gmock.h>

#include <thread>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(QVRegularExpression, OptionValuesArePartOfArchives) {
    EXPECT_EQ(QVRegularExpressionCaseInsensitive, 1u);
    EXPECT_EQ(QVRegularExpressionExtended, 2u);
    EXPECT_EQ(QVRegularExpressionLiteral, 4u);
    EXPECT_EQ(QVRegularExpressionDotAll, 8u);
    EXPECT_EQ(QVRegularExpressionMultiline, 16u);
    EXPECT_EQ(QVRegularExpressionNewlineLF, 32u);
    EXPECT_EQ(QVRegularExpressionUseJIT, 64u);
    EXPECT_EQ(QVMatchingAnchored, 4u);
    EXPECT_EQ(QVMatchingEndAnchored, 8u);
    EXPECT_EQ(QVMatchingRangeLimit, 16u);
    EXPECT_EQ(QVMatchingNoLineBoundaries, 32u);
}

TEST(QVRegularExpression, KeepsPatternAndOptionsAndCountsItsGroups) {
    const auto expression = expressionFor(u"(a)(?:b)(?<c>c(d))", 17);
    EXPECT_EQ(expression->pattern(), u"(a)(?:b)(?<c>c(d))");
    EXPECT_EQ(expression->options(), 17u);
    EXPECT_EQ(expression->numberOfCaptureGroups(), 3u);
    EXPECT_EQ(expressionFor(u"")->numberOfCaptureGroups(), 0u);
}

TEST(QVRegularExpression, ANullPatternIsAProgrammingError) {
    {
        const LogRecorder log;
        EXPECT_THROW(QVRegularExpression::regularExpressionWithPattern(nullptr, 0), NSException);
    }
    const AssertionRecorder assertions;
    static_cast<void>(QVRegularExpression::initWithPattern(nullptr, 0));
    EXPECT_THAT(assertions.messages(), ElementsAre(u"Invalid parameter not satisfying: pattern != nil"));
}

TEST(QVRegularExpression, CanNotBeMadeWithoutAPattern) {
    try {
        static_cast<void>(QVRegularExpression::init());
        FAIL() << "no exception";
    } catch (const NSException &exception) {
        EXPECT_EQ(exception.name(), NSInvalidArgumentException);
        EXPECT_EQ(exception.reason(), u"QVRegularExpression cannot be initialized with -init");
    }
}

TEST(QVRegularExpression, APatternThatDoesNotCompileGivesNullAndAnError) {
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVRegularExpression::regularExpressionWithPattern(u"a(b", 0, &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), QVQuorvaneErrorDomain);
    EXPECT_EQ(error->code(), 1001);
    EXPECT_EQ(error->localizedDescription(), u"Error compiling regular expression");
    EXPECT_EQ(error->localizedRecoverySuggestion(), u"missing closing parenthesis");
    // The error is optional.
    EXPECT_EQ(QVRegularExpression::regularExpressionWithPattern(u"a(b", 0), nullptr);
}

TEST(QVRegularExpression, APatternThatCompilesLeavesTheErrorAlone) {
    std::shared_ptr<NSError> error;
    EXPECT_NE(QVRegularExpression::initWithPattern(u"a", 0, &error), nullptr);
    EXPECT_EQ(error, nullptr);
}

TEST(QVRegularExpression, CaseInsensitiveFoldsBeyondASCII) {
    EXPECT_THAT(matchRanges(*expressionFor(u"\u00E4k", 1), u"\u00C4\u212A"), ElementsAre(NSRange{0, 2}));
    EXPECT_THAT(matchRanges(*expressionFor(u"\u00E4k", 0), u"\u00C4\u212A"), IsEmpty());
}

TEST(QVRegularExpression, ExtendedIgnoresBlanksAndCommentsAndBlanksInClassesToo) {
    EXPECT_THAT(matchRanges(*expressionFor(u" a b # both\n [ c d ] ", 2), u"a b abd ab "),
                ElementsAre(NSRange{4, 3}));
    EXPECT_THAT(matchRanges(*expressionFor(u"[ c d ]", 0), u" x"), ElementsAre(NSRange{0, 1}));
}

TEST(QVRegularExpression, LiteralTakesEveryUnitAsItself) {
    EXPECT_THAT(matchRanges(*expressionFor(u"a.(", 4), u"abc a.("), ElementsAre(NSRange{4, 3}));
    EXPECT_THAT(matchRanges(*expressionFor(u"a.(", 5), u"A.("), ElementsAre(NSRange{0, 3}));
}

TEST(QVRegularExpression, LiteralTogetherWithALayoutOptionDoesNotCompile) {
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVRegularExpression::regularExpressionWithPattern(u"a", 4 | 2, &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->code(), 1001);
}

TEST(QVRegularExpression, DotAllLetsADotMatchALineEnding) {
    EXPECT_THAT(matchRanges(*expressionFor(u"a.b", 8), u"a\nb"), ElementsAre(NSRange{0, 3}));
    EXPECT_THAT(matchRanges(*expressionFor(u"a.b", 0), u"a\nb"), IsEmpty());
}

TEST(QVRegularExpression, MultilineLetsCaretAndDollarActAtLines) {
    EXPECT_THAT(matchRanges(*expressionFor(u"^b$", 16), u"a\nb\nc"), ElementsAre(NSRange{2, 1}));
    EXPECT_THAT(matchRanges(*expressionFor(u"^b$", 0), u"a\nb\nc"), IsEmpty());
}

TEST(QVRegularExpression, EveryUnicodeLineEndEndsALineUnlessOnlyLFDoes) {
    const NSString text = u"a\rb\u2028c\u0085d\r\ne\nf";
    EXPECT_THAT(matchRanges(*expressionFor(u"^.", 16), text),
                ElementsAre(NSRange{0, 1}, NSRange{2, 1}, NSRange{4, 1}, NSRange{6, 1}, NSRange{9, 1},
                            NSRange{11, 1}));
    EXPECT_THAT(matchRanges(*expressionFor(u"^.", 16 | 32), text),
                ElementsAre(NSRange{0, 1}, NSRange{9, 1}, NSRange{11, 1}));
}

TEST(QVRegularExpression, OnlyTheJITOptionCompilesToMachineCode) {
    EXPECT_TRUE(expressionFor(u"a", 64)->isJITEnabled());
    EXPECT_FALSE(expressionFor(u"a", 0)->isJITEnabled());
}

TEST(QVRegularExpression, APatternThatTheJITRefusesRunsInterpreted) {
    // \C is one of the few things that can't be compiled to machine code together with UTF.
    const auto expression = expressionFor(u"a\\Cb", 64);
    EXPECT_FALSE(expression->isJITEnabled());
    EXPECT_THAT(matchRanges(*expression, u"xaxb"), ElementsAre(NSRange{1, 3}));
}

TEST(QVRegularExpression, NamesGiveGroupNumbers) {
    const auto expression = expressionFor(u"(x)(?<first>a)(?'second'b)(?P<third_3>c)");
    EXPECT_EQ(expression->captureNumberForName(u"first"), 2u);
    EXPECT_EQ(expression->captureNumberForName(u"second"), 3u);
    EXPECT_EQ(expression->captureNumberForName(u"third_3"), 4u);
    EXPECT_EQ(expression->captureNumberForName(u"firs"), NSNotFound);
    EXPECT_EQ(expression->captureNumberForName(u""), NSNotFound);
    EXPECT_EQ(expression->captureNumberForName(nullptr), NSNotFound);
    EXPECT_EQ(expressionFor(u"(x)")->captureNumberForName(u"x"), NSNotFound);
}

TEST(QVRegularExpression, OfARepeatedNameTheFirstGroupCounts) {
    const auto expression = expressionFor(u"(?J)(?<z>q)|(?<n>a)|(?<n>b)|(?<n>c)");
    EXPECT_EQ(expression->captureNumberForName(u"n"), 2u);
    EXPECT_EQ(expression->captureNumberForName(u"z"), 1u);
}

TEST(QVRegularExpression, TheLongestNameFillsItsTableEntryAndIsFound) {
    const std::u16string longest(32, u'n');
    const auto expression = expressionFor(u"(?<" + longest + u">a)(?<short>b)");
    EXPECT_EQ(expression->captureNumberForName(longest), 1u);
    EXPECT_EQ(expression->captureNumberForName(u"short"), 2u);
    EXPECT_EQ(QVRegularExpression::regularExpressionWithPattern(u"(?<" + longest + u"n>a)", 0), nullptr);
}

TEST(QVRegularExpression, TheNameTableIsBuiltOnceForManyThreads) {
    const auto expression = expressionFor(u"(?<one>a)(?<two>b)");
    std::vector<std::thread> threads;
    for (int index = 0; index < 8; ++index)
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round)
                EXPECT_EQ(expression->captureNumberForName(u"two"), 2u);
        });
    for (std::thread &thread : threads)
        thread.join();
}

TEST(QVRegularExpression, ErrorCodesHaveMessages) {
    // A compile error, a match error and two numbers that mean nothing.
    EXPECT_EQ(QVRegularExpression::stringForPCRE2ErrorCode(114), u"missing closing parenthesis");
    EXPECT_EQ(QVRegularExpression::stringForPCRE2ErrorCode(-1), u"no match");
    EXPECT_EQ(QVRegularExpression::stringForPCRE2ErrorCode(99999), u"An unknown error occurred.");
    EXPECT_EQ(QVRegularExpression::stringForPCRE2ErrorCode(-99999), u"An unknown error occurred.");
}

TEST(QVRegularExpression, DescriptionNamesPatternAndOptions) {
    const auto expression = expressionFor(u"a+", 80);
    const NSString object =
        NSString::stringWithFormat(u"<QVRegularExpression: %p>", static_cast<const void *>(expression.get()));
    EXPECT_EQ(expression->description(), object.stringByAppendingString(u" { pattern=a+, options=80 }"));
}

TEST(QVRegularExpression, ACopyIsTheSameObject) {
    const auto expression = expressionFor(u"a");
    EXPECT_EQ(expression->copy(), expression);
}

// Archives

TEST(QVRegularExpression, AnArchiveKeepsPatternAndOptionsAndCompilesAgain) {
    const auto expression = expressionFor(u"(?<w>\\w+)\u00E9", 81);
    const NSData data = NSKeyedArchiver::archivedDataWithRootObject(expression);
    std::shared_ptr<NSError> error;
    const auto decoded = NSKeyedUnarchiver::unarchivedObjectOfClass<QVRegularExpression>(data, &error);
    ASSERT_NE(decoded, nullptr);
    EXPECT_EQ(error, nullptr);
    EXPECT_NE(decoded, expression);
    EXPECT_EQ(decoded->pattern(), u"(?<w>\\w+)\u00E9");
    EXPECT_EQ(decoded->options(), 81u);
    EXPECT_TRUE(decoded->isJITEnabled());
    EXPECT_EQ(decoded->captureNumberForName(u"w"), 1u);
    EXPECT_THAT(matchRanges(*decoded, u"- AB\u00C9"), ElementsAre(NSRange{2, 3}));
}

namespace {

/// Writes what an expression's archive would hold, whatever the pattern, under an expression's name.
class ForgedExpression final : public NSObject, public NSSecureCoding {
public:
    explicit ForgedExpression(NSString pattern) : _pattern(std::move(pattern)) {}
    const NSCodingClass &classForCoder() const override { return QVRegularExpression::codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override {
        coder.encodeString(_pattern, u"pattern");
        coder.encodeInteger(16, u"options");
    }
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &, std::shared_ptr<NSSecureCoding>) override {
        return nullptr;
    }

private:
    NSString _pattern;
};

} // namespace

TEST(QVRegularExpression, AnArchivedPatternThatDoesNotCompileFailsTheArchive) {
    const NSData data =
        NSKeyedArchiver::archivedDataWithRootObject(std::make_shared<ForgedExpression>(u"a)b"));
    std::shared_ptr<NSError> error;
    EXPECT_EQ(NSKeyedUnarchiver::unarchivedObjectOfClass<QVRegularExpression>(data, &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), QVQuorvaneErrorDomain);
    EXPECT_EQ(error->code(), 1001);
    EXPECT_EQ(error->localizedRecoverySuggestion(), u"unmatched closing parenthesis");
}

TEST(QVRegularExpression, AnArchiveWithoutAPatternGivesNoExpression) {
    const NSData data =
        NSKeyedArchiver::archivedDataWithRootObject(std::make_shared<ForgedExpression>(nullptr));
    EXPECT_EQ(NSKeyedUnarchiver::unarchivedObjectOfClass<QVRegularExpression>(data), nullptr);
}
