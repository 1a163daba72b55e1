#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Selectors/QVSelectorCombinator.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

/// A chain as text: each step its type's name, then its alternatives or capture name between brackets. Checks
/// the links back on the way.
std::string drawn(const QVSelectorCombinator &head) {
    std::string text;
    const QVSelectorCombinator *previous = nullptr;
    for (const QVSelectorCombinator *step = &head; step; step = step->next().get()) {
        EXPECT_EQ(step->previous(), previous);
        previous = step;
        text += (text.empty() ? "" : " ") + QVSelectorCombinatorTypeToString(step->type()).UTF8String() + "[";
        std::string separator;
        for (const auto &selector : step->simpleSelectors()) {
            text += separator + selector->string().UTF8String();
            separator = "|";
        }
        if (step->captureName()) {
            EXPECT_TRUE(step->simpleSelectors().empty());
            text += "=" + step->captureName().UTF8String();
        }
        text += "]";
    }
    return text;
}

std::vector<std::string> parsed(const NSString &text, std::vector<NSUInteger> *specificity = nullptr) {
    std::vector<std::string> chains;
    for (const auto &head : QVSelectorCombinator::selectorCombinatorsFromString(text, specificity))
        chains.push_back(drawn(*head));
    return chains;
}

using Chains = std::vector<std::string>;
using Parts = std::vector<std::u16string>;

/// "a a a …" with so many steps.
std::u16string chainOfSteps(std::size_t steps) {
    std::u16string text = u"a";
    for (std::size_t step = 1; step < steps; ++step)
        text += u" a";
    return text;
}

} // namespace

TEST(QVSelectorCombinatorType, HasANameForEachNumber) {
    const char16_t *names[] = {u"none", u"simple",    u"child",  u"indirect-adjacent", u"direct-adjacent",
                               u"not",  u"has-child", u"capture"};
    for (NSUInteger type = 0; type < 8; ++type)
        EXPECT_EQ(QVSelectorCombinatorTypeToString(type), names[type]);
    EXPECT_EQ(QVSelectorCombinatorTypeToString(8), u"unknown");
    EXPECT_EQ(QVSelectorCombinatorTypeToString(~NSUInteger(0)), u"unknown");
}

TEST(QVSelectorCombinatorParsing, EachCombinatorOpensAStep) {
    EXPECT_EQ(parsed(u"a b>c~d+e:not(f):has-child(g):capture(h)"),
              Chains{"none[a] simple[b] child[c] indirect-adjacent[d] direct-adjacent[e] not[f] has-child[g] "
                     "capture[=h]"});
}

TEST(QVSelectorCombinatorParsing, AChainMayBeginWithACombinator) {
    EXPECT_EQ(parsed(u":not(a)"), Chains{"not[a]"});
    EXPECT_EQ(parsed(u"> a"), Chains{"child[a]"});
    EXPECT_EQ(parsed(u":capture(all) a"), Chains{"capture[=all] simple[a]"});
}

TEST(QVSelectorCombinatorParsing, WhiteSpaceAroundCombinatorsAndCommasGoes) {
    EXPECT_EQ(parsed(u" a  >\tb \n~ c   + d :not( e) , f "),
              (Chains{"none[a] child[b] indirect-adjacent[c] direct-adjacent[d] not[e]", "none[f]"}));
    EXPECT_EQ(parsed(u"a, b"), (Chains{"none[a]", "none[b]"}));
    EXPECT_EQ(parsed(u"a ,b"), (Chains{"none[a]", "none[b]"}));
}

TEST(QVSelectorCombinatorParsing, AnyOneBlankIsADescendantStep) {
    EXPECT_EQ(parsed(u"a b"), Chains{"none[a] simple[b]"});
    EXPECT_EQ(parsed(u"a\tb\nc\u00A0d\u3000e"), Chains{"none[a] simple[b] simple[c] simple[d] simple[e]"});
}

// The asymmetry with the single blank is meant.
TEST(QVSelectorCombinatorParsing, TwoBlanksVanishAndJoinTheNames) {
    EXPECT_EQ(parsed(u"a  b"), Chains{"none[ab]"});
    EXPECT_EQ(parsed(u"a \t\n b c"), Chains{"none[ab] simple[c]"});
}

TEST(QVSelectorCombinatorParsing, TwoBlanksInsideACombinatorsWordLeaveTheWord) {
    EXPECT_EQ(parsed(u"a:no  t(b)"), Chains{"none[a] not[b]"});
}

TEST(QVSelectorCombinatorParsing, CommasInsideParenthesesSeparateAlternatives) {
    EXPECT_EQ(parsed(u":not(a,b)"), Chains{"not[a|b]"});
    EXPECT_EQ(parsed(u"x:not(a,b),c"), (Chains{"none[x] not[a|b]", "none[c]"}));
    EXPECT_EQ(parsed(u"x:has-child(a, b.c , d) > e"), Chains{"none[x] has-child[a|b.c|d] child[e]"});
}

TEST(QVSelectorCombinatorParsing, ParenthesesDoNotGroup) {
    EXPECT_EQ(parsed(u":not(a b)"), Chains{"not[a] simple[b]"});
    EXPECT_EQ(parsed(u"a:not(:has-child(b))"), Chains{"none[a] not[] has-child[b]"});
}

// A parenthesis is no combinator, so the blank before it is one like any other.
TEST(QVSelectorCombinatorParsing, ABlankBeforeAClosingParenthesisIsAStepOnNoName) {
    EXPECT_EQ(parsed(u":not( a )"), Chains{"not[a] simple[]"});
    EXPECT_EQ(parsed(u":not( a  )"), Chains{"not[a]"});
}

TEST(QVSelectorCombinatorParsing, UnknownWordsBehindAColonJoinTheName) {
    EXPECT_EQ(parsed(u"a:is(b)"), Chains{"none[aisb]"});
    EXPECT_EQ(parsed(u"a:Not(b)"), Chains{"none[aNotb]"});
}

TEST(QVSelectorCombinatorParsing, ACaptureKeepsItsCleanedName) {
    EXPECT_EQ(parsed(u"a:capture(name) b"), Chains{"none[a] capture[=name] simple[b]"});
    EXPECT_EQ(parsed(u"a:capture( my/na,me.2)"), Chains{"none[a] capture[=myname.2]"});
    EXPECT_EQ(parsed(u"a:capture()"), Chains{"none[a] capture[=]"});
}

TEST(QVSelectorCombinatorParsing, AnEmptyAlternativeIsSkippedAndLogged) {
    const test::LogRecorder log;
    EXPECT_EQ(parsed(u"a,,b"), (Chains{"none[a]", "none[b]"}));
    EXPECT_EQ(log.messages(), std::vector<NSString>{u"Could not compile selector: "});
}

TEST(QVSelectorCombinatorParsing, AnEmptyListIsOneEmptyAlternative) {
    const test::LogRecorder log;
    EXPECT_EQ(parsed(u" \n "), Chains{});
    EXPECT_EQ(parsed(nullptr), Chains{});
    EXPECT_EQ(log.messages(), (std::vector<NSString>(2, u"Could not compile selector: ")));
}

TEST(QVSelectorCombinatorParsing, AnAlternativeWithABracketIsRefused) {
    const test::LogRecorder log;
    EXPECT_EQ(parsed(u"a > b[c], d"), Chains{"none[d]"});
    EXPECT_EQ(parsed(u"[a"), Chains{});
    EXPECT_EQ(log.messages(), (std::vector<NSString>{u"Could not compile selector: a>b[c]",
                                                     u"Could not compile selector: [a"}));
}

TEST(QVSelectorCombinatorParsing, AChainMayHaveAsManyStepsAsTheLimitAndNoMore) {
    const test::LogRecorder log;
    const auto heads = QVSelectorCombinator::selectorCombinatorsFromString(
        chainOfSteps(limits::selectorChainLength), nullptr);
    ASSERT_EQ(heads.size(), 1u);
    std::size_t steps = 0;
    for (const QVSelectorCombinator *step = heads[0].get(); step; step = step->next().get())
        ++steps;
    EXPECT_EQ(steps, limits::selectorChainLength);
    EXPECT_TRUE(log.messages().empty());

    const std::u16string tooLong = chainOfSteps(limits::selectorChainLength + 1);
    EXPECT_EQ(parsed(tooLong), Chains{});
    EXPECT_EQ(log.messages(), std::vector<NSString>{NSString(u"Could not compile selector: " + tooLong)});
}

TEST(QVSelectorCombinatorParsing, TheThirdNumberOfTheSpecificityCountsAllClasses) {
    std::vector<NSUInteger> specificity{9, 9};
    parsed(u"a.b > c:not(d,e.f):capture(g.h), *, i", &specificity);
    // a, b, c, d, e, f and i; captures and the universal selector have no classes.
    EXPECT_EQ(specificity, (std::vector<NSUInteger>{0, 0, 7, 0}));
}

TEST(QVSelectorCombinatorParsing, ASkippedAlternativeCountsNothing) {
    const test::LogRecorder log;
    std::vector<NSUInteger> specificity;
    parsed(u"a.b[c], d", &specificity);
    EXPECT_EQ(specificity, (std::vector<NSUInteger>{0, 0, 1, 0}));
}

TEST(QVSelectorCombinatorParsing, OneChainConsumesItsText) {
    std::u16string text = u"a,b c";
    const auto head = QVSelectorCombinator::selectorCombinatorsFromString(text);
    ASSERT_TRUE(head);
    EXPECT_EQ(drawn(*head), "none[a|b] simple[c]");
    EXPECT_EQ(text, u"");
}

TEST(QVSelectorCombinatorParsing, OneChainTakesBlanksAsTheyStand) {
    std::u16string text = u"a > b";
    // The blanks before and behind ">" are steps of their own: one on no name, one on "b".
    EXPECT_EQ(drawn(*QVSelectorCombinator::selectorCombinatorsFromString(text)),
              "none[a] simple[] child[] simple[b]");
    text = u"a\n";
    EXPECT_EQ(drawn(*QVSelectorCombinator::selectorCombinatorsFromString(text)), "none[a] simple[]");
}

TEST(QVSelectorCombinatorParsing, ARefusedChainLeavesItsText) {
    std::u16string text;
    EXPECT_EQ(QVSelectorCombinator::selectorCombinatorsFromString(text), nullptr);
    text = u"a[b]";
    EXPECT_EQ(QVSelectorCombinator::selectorCombinatorsFromString(text), nullptr);
    EXPECT_EQ(text, u"a[b]");
}

TEST(QVSelectorCombinatorParsing, SplitsAtCommasOutsideOfParentheses) {
    EXPECT_EQ(QVSelectorCombinator::splitOnCommas(u"a,b(c,d(e,f),g),h"),
              (Parts{u"a", u"b(c,d(e,f),g)", u"h"}));
    EXPECT_EQ(QVSelectorCombinator::splitOnCommas(u""), Parts{u""});
    EXPECT_EQ(QVSelectorCombinator::splitOnCommas(u",a,"), (Parts{u"", u"a", u""}));
}

TEST(QVSelectorCombinatorParsing, UnbalancedParenthesesHideTheCommasBehindThem) {
    EXPECT_EQ(QVSelectorCombinator::splitOnCommas(u"a(b,c"), Parts{u"a(b,c"});
    EXPECT_EQ(QVSelectorCombinator::splitOnCommas(u"a),b"), Parts{u"a),b"});
    EXPECT_EQ(QVSelectorCombinator::splitOnCommas(u"a),b(,c"), (Parts{u"a),b(", u"c"}));
}
