#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/RegularExpressions/PCRE2.h"
#include "Tests/Quorvane/RegularExpressions/RegularExpressionFixtures.h"

#include <gmock/gmock.h>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Each turn of its group leaves something on the compiled form's stack.
constexpr const char16_t *stackingPattern = u"(?:(a)|b)*c";

/// `turns` letters and the one that ends the match, twice.
std::u16string stackingText(std::size_t turns) {
    const std::u16string once = std::u16string(turns, u'a') + u"c";
    return once + once;
}

// More than the 32 KiB that the compiled form finds on the machine's stack, and more than the stack it then
// gets.
constexpr std::size_t turnsForLargeStack = 5'000;
constexpr std::size_t turnsForInterpreter = 100'000;

/// What the compiled pattern answers by itself, with a stack of `stackBytes`; 0 for the one it has.
int plainJITResult(std::size_t turns, std::size_t stackBytes) {
    int errorCode = 0;
    PCRE2_SIZE errorOffset = 0;
    const std::u16string_view pattern = stackingPattern;
    pcre2_code_16 *const code =
        pcre2_compile_16(pcre2Characters(pattern.data()), pattern.size(), PCRE2_UTF | PCRE2_NO_UTF_CHECK,
                         &errorCode, &errorOffset, nullptr);
    pcre2_jit_compile_16(code, PCRE2_JIT_COMPLETE);
    pcre2_match_data_16 *const data = pcre2_match_data_create_from_pattern_16(code, nullptr);
    pcre2_match_context_16 *const context = pcre2_match_context_create_16(nullptr);
    pcre2_jit_stack_16 *stack = nullptr;
    if (stackBytes != 0) {
        stack = pcre2_jit_stack_create_16(limits::patternStackBytesAtStart, stackBytes, nullptr);
        pcre2_jit_stack_assign_16(context, nullptr, stack);
    }
    const std::u16string text = stackingText(turns);
    const int result = pcre2_jit_match_16(code, pcre2Characters(text.data()), text.size(), 0,
                                          PCRE2_NO_UTF_CHECK, data, context);
    pcre2_match_context_free_16(context);
    pcre2_jit_stack_free_16(stack);
    pcre2_match_data_free_16(data);
    pcre2_code_free_16(code);
    return result;
}

/// Whether the context brings a stack of its own to the compiled form.
bool hasJITStack(const QVRegularExpressionMatchContext &context) {
    const std::u16string_view pattern = stackingPattern;
    int errorCode = 0;
    PCRE2_SIZE errorOffset = 0;
    pcre2_code_16 *const code =
        pcre2_compile_16(pcre2Characters(pattern.data()), pattern.size(), PCRE2_UTF | PCRE2_NO_UTF_CHECK,
                         &errorCode, &errorOffset, nullptr);
    pcre2_jit_compile_16(code, PCRE2_JIT_COMPLETE);
    pcre2_match_data_16 *const data = pcre2_match_data_create_from_pattern_16(code, nullptr);
    pcre2_set_offset_limit_16(context.matchContext(), PCRE2_UNSET);
    const std::u16string text = stackingText(turnsForLargeStack);
    const int result = pcre2_jit_match_16(code, pcre2Characters(text.data()), text.size(), 0,
                                          PCRE2_NO_UTF_CHECK, data, context.matchContext());
    pcre2_match_data_free_16(data);
    pcre2_code_free_16(code);
    return result != PCRE2_ERROR_JIT_STACKLIMIT;
}

class FallingBack : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(plainJITResult(turnsForLargeStack, 0), PCRE2_ERROR_JIT_STACKLIMIT);
        ASSERT_GT(plainJITResult(turnsForLargeStack, limits::patternStackBytesAtMost), 0);
        ASSERT_EQ(plainJITResult(turnsForInterpreter, limits::patternStackBytesAtMost),
                  PCRE2_ERROR_JIT_STACKLIMIT);
        ASSERT_TRUE(compiled->isJITEnabled());
    }

    static Ranges bothHits(NSUInteger turns) { return {{0, turns + 1}, {turns + 1, turns + 1}}; }

    const std::shared_ptr<QVRegularExpression> compiled = expressionFor(stackingPattern, grammarOptions);
    const std::shared_ptr<QVRegularExpression> interpreted =
        expressionFor(stackingPattern, QVRegularExpressionMultiline);
    QVRegularExpressionMatchContext context;
    QVMatchingOutcome outcome;
    LogRecorder log;
};

constexpr const char16_t *logText = u"JIT stack exceeded for regex, using regular match: (?:(a)|b)*c";

} // namespace

TEST_F(FallingBack, ALargerStackComesBeforeTheInterpreter) {
    const GuardedText text(stackingText(turnsForLargeStack));
    EXPECT_EQ(matchRanges(*compiled, text, QVMatchingRangeLimit, text.range(), &context, &outcome),
              bothHits(turnsForLargeStack));
    EXPECT_FALSE(outcome.fellBack);
    EXPECT_THAT(log.messages(), IsEmpty());
    EXPECT_FALSE(hasJITStack(context));
}

TEST_F(FallingBack, TheInterpreterTakesOverForTheRestOfTheEnumeration) {
    const GuardedText text(stackingText(turnsForInterpreter));
    const Ranges hits = matchRanges(*compiled, text, QVMatchingRangeLimit, text.range(), &context, &outcome);
    EXPECT_EQ(hits, bothHits(turnsForInterpreter));
    EXPECT_TRUE(outcome.fellBack);
    EXPECT_EQ(outcome.kind, QVMatchingOutcome::Finished);
    // Once for both hits.
    EXPECT_THAT(log.messages(), ElementsAre(logText));
    EXPECT_FALSE(hasJITStack(context));
    EXPECT_EQ(matchRanges(*interpreted, text, QVMatchingRangeLimit, text.range(), &context), hits);
}

TEST_F(FallingBack, EachEnumerationBeginsWithTheCompiledFormAgain) {
    const GuardedText text(stackingText(turnsForInterpreter));
    matchRanges(*compiled, text, 0, text.range(), &context);
    matchRanges(*compiled, text, 0, {0, 100}, &context, &outcome);
    EXPECT_FALSE(outcome.fellBack);
    matchRanges(*compiled, text, 0, text.range(), &context);
    EXPECT_THAT(log.messages(), ElementsAre(logText, logText));
}

TEST_F(FallingBack, WithoutAContextItIsTheSame) {
    const GuardedText text(stackingText(turnsForInterpreter));
    EXPECT_EQ(matchRanges(*compiled, text, 0, text.range(), nullptr), bothHits(turnsForInterpreter));
    EXPECT_THAT(log.messages(), ElementsAre(logText));
}

TEST_F(FallingBack, ACallbackThatThrowsLeavesNoStackInTheContext) {
    const GuardedText text(stackingText(turnsForLargeStack));
    EXPECT_THROW(compiled->enumerateMatchesInCharacters(
                     text.characters(), text.length(), 0, text.range(), &context,
                     [](QVPCRE2MatchData *, NSUInteger, bool &) { throw std::runtime_error("stop"); }),
                 std::runtime_error);
    EXPECT_FALSE(hasJITStack(context));
}

TEST_F(FallingBack, ASearchFallsBackToo) {
    const GuardedText large(stackingText(turnsForLargeStack));
    outcome =
        compiled->directSearchInCharacters(large.characters(), large.length(), large.range(), context, false);
    EXPECT_EQ(outcome.kind, QVMatchingOutcome::Hit);
    EXPECT_FALSE(outcome.fellBack);
    const GuardedText text(stackingText(turnsForInterpreter));
    outcome =
        compiled->directSearchInCharacters(text.characters(), text.length(), text.range(), context, false);
    EXPECT_EQ(outcome.kind, QVMatchingOutcome::Hit);
    EXPECT_TRUE(outcome.fellBack);
    EXPECT_EQ(outcome.range, (NSRange{0, turnsForInterpreter + 1}));
    EXPECT_THAT(log.messages(), ElementsAre(logText));
    EXPECT_FALSE(hasJITStack(context));
}

TEST_F(FallingBack, AnInterpretedSearchNeverUsesTheCompiledForm) {
    const GuardedText text(stackingText(turnsForInterpreter));
    outcome =
        compiled->directSearchInCharacters(text.characters(), text.length(), text.range(), context, true);
    EXPECT_EQ(outcome.kind, QVMatchingOutcome::Hit);
    EXPECT_FALSE(outcome.fellBack);
    EXPECT_EQ(outcome.range, (NSRange{0, turnsForInterpreter + 1}));
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(FallingBack, AnAnchoredAttemptIsInterpretedQuietly) {
    // The plain anchored attempt is interpreted from the start, so running out of stack is nobody's business.
    const GuardedText text(stackingText(turnsForInterpreter));
    outcome = compiled->directMatchInCharacters(text.characters(), text.length(), text.range(), context);
    EXPECT_EQ(outcome.kind, QVMatchingOutcome::Hit);
    EXPECT_EQ(outcome.range, (NSRange{0, turnsForInterpreter + 1}));
    EXPECT_EQ(matchRanges(*compiled, text, QVMatchingRangeLimit | QVMatchingAnchored, text.range(), &context),
              Ranges({outcome.range}));
    EXPECT_THAT(log.messages(), IsEmpty());
}
