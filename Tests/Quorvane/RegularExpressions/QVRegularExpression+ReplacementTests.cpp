#include "Platform/Foundation/NSException.h"
#include "Tests/Quorvane/RegularExpressions/RegularExpressionFixtures.h"

#include <gmock/gmock.h>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;

namespace {

/// A match of a key, a value and a remark that is missing, in a string with something before it.
class Replacement : public testing::Test {
protected:
    NSString fill(const NSString &templateString) const {
        return expression->replacementStringForResult(*result, string, 0, templateString);
    }

    const NSString string = u"..key=value;";
    const std::shared_ptr<QVRegularExpression> expression =
        expressionFor(u"(?<key>\\w+)=(?<value>\\w+)(?<remark>#.*)?");
    const std::shared_ptr<QVRegularExpressionResult> result =
        expression->firstMatchInString(string, 0, {0, string.length()});
};

} // namespace

TEST_F(Replacement, NumbersStandForGroups) {
    EXPECT_EQ(fill(u"$2-$1"), u"value-key");
    EXPECT_EQ(fill(u"\\2-\\1"), u"value-key");
    EXPECT_EQ(fill(u"[$0]"), u"[key=value]");
    EXPECT_EQ(fill(u"$01"), u"key");
}

TEST_F(Replacement, NamesInBracesStandForGroups) {
    EXPECT_EQ(fill(u"${value}:\\{key}"), u"value:key");
    EXPECT_EQ(fill(u"a${key}b${key}c"), u"akeybkeyc");
}

TEST_F(Replacement, TextWithoutReferencesStaysAsItIs) {
    EXPECT_EQ(fill(u"plain $ \\ text {key} $x \\n"), u"plain $ \\ text {key} $x \\n");
    EXPECT_EQ(fill(u""), u"");
}

TEST_F(Replacement, UnknownGroupsStayAsWritten) {
    EXPECT_EQ(fill(u"$9 $4 ${nosuch} $1"), u"$9 $4 ${nosuch} key");
    EXPECT_EQ(fill(u"$99999999999999999999"), u"$99999999999999999999");
    EXPECT_EQ(fill(u"$18446744073709551617"), u"$18446744073709551617");
    // All digits belong to the number.
    EXPECT_EQ(fill(u"$10"), u"$10");
}

TEST_F(Replacement, GroupsThatTookNoPartStayAsWritten) {
    EXPECT_EQ(fill(u"$3 ${remark} \\3 $2"), u"$3 ${remark} \\3 value");
}

TEST_F(Replacement, ABackslashBeforeADollarOrABackslashIsAnEscape) {
    EXPECT_EQ(fill(u"\\$1"), u"$1");
    EXPECT_EQ(fill(u"\\\\1"), u"\\1");
    EXPECT_EQ(fill(u"\\\\$1"), u"\\key");
    EXPECT_EQ(fill(u"\\\\\\$1"), u"\\$1");
    EXPECT_EQ(fill(u"\\${key}"), u"${key}");
}

TEST_F(Replacement, NamesOfOtherCharactersAreNoReferences) {
    EXPECT_EQ(fill(u"${} ${ke-y} ${key"), u"${} ${ke-y} ${key");
}

TEST_F(Replacement, ValuesLongerAndShorterThanTheirReferencesKeepTheRestInPlace) {
    // "$0" of two units becomes nine, "${value}" of eight becomes five.
    EXPECT_EQ(fill(u"$0|${value}|$1|\\\\|$2"), u"key=value|value|key|\\|value");
}

TEST_F(Replacement, ValuesAreNotReadForReferencesAgain) {
    const NSString text = u"$2$2";
    const auto twice = expressionFor(u"(..)(..)")->firstMatchInString(text, 0, {0, 4});
    EXPECT_EQ(twice->regularExpression()->replacementStringForResult(*twice, text, 0, u"$1"), u"$2");
}

TEST_F(Replacement, TheOffsetIsAddedBeforeTheStringIsRead) {
    EXPECT_EQ(expression->replacementStringForResult(*result, u"......key=value;", 4, u"$1,$2"),
              u"key,value");
    EXPECT_EQ(expression->replacementStringForResult(*result, u"key=value;", -2, u"${key}"), u"key");
}

TEST_F(Replacement, ARangeThatLeavesTheStringThrows) {
    EXPECT_THROW(expression->replacementStringForResult(*result, u"key", 0, u"$2"), NSException);
    EXPECT_THROW(expression->replacementStringForResult(*result, string, -3, u"$1"), NSException);
}

TEST_F(Replacement, TheHandlerReplacesValuesAndGetsTheirRanges) {
    std::vector<NSString> texts;
    Ranges ranges;
    const NSString filled = expression->replacementStringForResult(
        *result, u" ..key=value;", 1, u"a$1b\\$c${value}d$9",
        [&](const NSString &text, NSRange sourceRange, bool &) -> NSString {
            texts.push_back(text);
            ranges.push_back(sourceRange);
            return text.uppercaseString().stringByAppendingString(u"!");
        });
    EXPECT_EQ(filled, u"aKEY!b$!cVALUE!d$9");
    EXPECT_THAT(texts, ElementsAre(u"key", u"$", u"value"));
    // In the string as it stands now; an escape comes from nowhere.
    EXPECT_THAT(ranges, ElementsAre(NSRange{3, 3}, NSNotFoundRange, NSRange{7, 5}));
}

TEST_F(Replacement, AHandlerThatStopsLeavesTheRestOfTheTemplate) {
    int calls = 0;
    const NSString filled = expression->replacementStringForResult(
        *result, string, 0, u"$0 $1 $2", [&](const NSString &, NSRange, bool &stop) -> NSString {
            stop = ++calls == 2;
            return u"x";
        });
    EXPECT_EQ(filled, u"x x $2");
    EXPECT_EQ(calls, 2);
}

TEST_F(Replacement, AHandlerMayEraseAReference) {
    EXPECT_EQ(expression->replacementStringForResult(
                  *result, string, 0, u"<$1>",
                  [](const NSString &, NSRange, bool &) -> NSString { return nullptr; }),
              u"<>");
}
