// What a parse reports, what it measures, and how it is stopped.

#include "Quorvane/Parsers/QVParseScopeTrace.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Tests/Support/SyntaxText.h"
#include "Tests/Support/ParseFixture.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

using namespace quorvane;
using namespace quorvane::test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

constexpr const char16_t *emptyMatch = u"Encountered a zero-length single match for scope: empty; Ignoring";

std::shared_ptr<QVSyntax> syntaxThatReports() {
    return syntaxWithElements(scopesText(matchText("empty", "(?=a)")));
}

std::shared_ptr<QVParse> newParse(const std::shared_ptr<QVSyntax> &syntax) {
    return QVParse::initWithSyntax(syntax, 0, QVParsePrivateQueueConcurrencyType);
}

NSRange replace(QVParse &parse, std::u16string_view text) {
    NSRange result = NSNotFoundRange;
    parse.performWritingBlockAndWait([&] { result = parse.replaceCharactersInRange({0, 0}, text, nullptr); });
    return result;
}

/// Takes no message, as one that does not care.
class IndifferentDelegate : public QVParseDelegate {};

/// Does something at each message.
class ActingDelegate : public QVParseDelegate {
public:
    explicit ActingDelegate(std::function<void(QVParse &)> action) : _action(std::move(action)) {}
    bool parseLogDiagnosticMessage(QVParse &parse, const NSString &, NSUInteger) override {
        ++count;
        _action(parse);
        return true;
    }
    int count = 0;

private:
    std::function<void(QVParse &)> _action;
};

} // namespace

// Messages

TEST(QVParse, WithoutADelegateMessagesGoToTheLog) {
    const LogRecorder log;
    replace(*newParse(syntaxThatReports()), u"a");
    EXPECT_THAT(log.messages(), ElementsAre(emptyMatch));
}

TEST(QVParse, MessagesThatTheDelegateDoesNotTakeGoToTheLog) {
    const LogRecorder log;
    const auto parse = newParse(syntaxThatReports());
    const auto delegate = std::make_shared<IndifferentDelegate>();
    parse->setDelegate(delegate);
    replace(*parse, u"a");
    EXPECT_THAT(log.messages(), ElementsAre(emptyMatch));
}

TEST(QVParse, MessagesThatTheDelegateTakesStayOutOfTheLog) {
    const LogRecorder log;
    const auto parse = newParse(syntaxThatReports());
    const auto recorder = std::make_shared<DiagnosticRecorder>();
    parse->setDelegate(recorder);
    replace(*parse, u"a");
    EXPECT_EQ(recorder->diagnostics, (std::vector{DiagnosticRecorder::Diagnostic{emptyMatch, 5}}));
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(QVParse, AMessageIsLoggedAsItIsWhateverItHolds) {
    const LogRecorder log;
    replace(*newParse(syntaxWithElements(scopesText(matchText("%@%d", "(?=a)")))), u"a");
    EXPECT_THAT(log.messages(),
                ElementsAre(u"Encountered a zero-length single match for scope: %@%d; Ignoring"));
}

TEST(QVParse, AMatchersErrorIsReportedOnceForEachScope) {
    // Thousands of millions of ways to divide the letters: the matcher gives up. What it found before stays,
    // and other scopes go on.
    const std::string slow = "(a+)+c";
    const auto syntax = syntaxWithElements(
        scopesText(matchText("one", slow) + matchText("two", slow) + matchText("end", "b")));
    const std::u16string line = u"ac" + std::u16string(40, u'a') + u"bc";
    const auto parse = newParse(syntax);
    const auto recorder = std::make_shared<DiagnosticRecorder>();
    parse->setDelegate(recorder);
    replace(*parse, line + u"\n" + line);
    EXPECT_EQ(recorder->diagnostics, (std::vector<DiagnosticRecorder::Diagnostic>{
                                         {u"Error matching scope: one, match limit exceeded", 9},
                                         {u"Error matching scope: two, match limit exceeded", 9},
                                     }));
    const LogRecorder log;
    EXPECT_EQ(treeOfText(syntax, line), "Match one [0,2]\n"
                                        "Unknown unknown [2,40]\n"
                                        "Match end [42,1]\n"
                                        "Unknown unknown [43,1]\n");
}

// Cancelling

TEST(QVParse, ACancelledParseStopsAtItsNextLine) {
    const auto parse = newParse(syntaxThatReports());
    const auto delegate = std::make_shared<ActingDelegate>([](QVParse &running) {
        std::thread([&] { running.cancelParsing(); }).join();
        EXPECT_TRUE(running.isCancelled());
    });
    parse->setDelegate(delegate);
    EXPECT_EQ(replace(*parse, u"a\na\na"), NSNotFoundRange);
    EXPECT_EQ(delegate->count, 1);
    // The writer that the cancelling queued throws the tree away and ends the cancelling.
    parse->performWritingBlockAndWait([&] {
        EXPECT_FALSE(parse->isCancelled());
        EXPECT_FALSE(parse->isParsing());
        EXPECT_TRUE(parse->rootMatch()->submatches().isEmpty());
        EXPECT_EQ(parse->string(), u"a\na\na");
    });
}

TEST(QVParse, ACancelledParseStopsInTheMiddleOfNestedRegions) {
    const auto syntax =
        syntaxWithElements(collectionsText(collectionText(
                               "all", regionText("block", "\\{", "\\}", subscopesText(includeText("all"))) +
                                          matchText("empty", "(?=a)"))) +
                           scopesText(includeText("all")));
    for (const bool remembers : {false, true}) {
        const auto parse = newParse(syntax);
        parse->setRemembersSearches(remembers);
        const auto delegate = std::make_shared<ActingDelegate>(
            [](QVParse &running) { std::thread([&] { running.cancelParsing(); }).join(); });
        parse->setDelegate(delegate);
        EXPECT_EQ(replace(*parse, u"{{\na\n}a\n}a"), NSNotFoundRange);
        EXPECT_EQ(delegate->count, 1);
    }
}

TEST(QVParse, AfterCancellingTheNextEditParsesTheWholeText) {
    const auto parse = newParse(syntaxThatReports());
    const auto delegate = std::make_shared<ActingDelegate>(
        [](QVParse &running) { std::thread([&] { running.cancelParsing(); }).join(); });
    parse->setDelegate(delegate);
    replace(*parse, u"a\nb");
    parse->setDelegate(std::make_shared<DiagnosticRecorder>());
    EXPECT_EQ(replace(*parse, u"c"), (NSRange{0, 4}));
    parse->performReadingBlockAndWait([&] { EXPECT_EQ(parse->rootMatch()->submatches().count(), 3u); });
}

TEST(QVParse, AParseThatWasCancelledBeforeItsStartTouchesNothing) {
    const auto parse = newParse(syntaxThatReports());
    const auto recorder = std::make_shared<DiagnosticRecorder>();
    parse->setDelegate(recorder);
    parse->performWritingBlockAndWait([&] {
        std::thread([&] { parse->cancelParsing(); }).join();
        EXPECT_EQ(parse->replaceCharactersInRange({0, 0}, u"a", nullptr), NSNotFoundRange);
        EXPECT_EQ(parse->string(), u"");
    });
    EXPECT_THAT(recorder->diagnostics, IsEmpty());
}

TEST(QVParse, ADelegateMayCancelTheParseThatCallsIt) {
    // The tree under construction is thrown away behind the parse, not under its feet.
    for (const bool remembers : {false, true}) {
        const auto parse = newParse(syntaxThatReports());
        parse->setRemembersSearches(remembers);
        const auto delegate =
            std::make_shared<ActingDelegate>([](QVParse &running) { running.cancelParsing(); });
        parse->setDelegate(delegate);
        EXPECT_EQ(replace(*parse, u"a\na"), NSNotFoundRange);
        EXPECT_EQ(delegate->count, 1);
        parse->performWritingBlockAndWait([&] {
            EXPECT_FALSE(parse->isCancelled());
            EXPECT_TRUE(parse->rootMatch()->submatches().isEmpty());
        });
    }
}

// Traces

namespace {

struct Counts {
    NSUInteger successes;
    NSUInteger failures;
    bool operator==(const Counts &) const = default;
};

std::map<std::string, Counts> tracesOfText(std::string_view scopes, std::u16string_view text,
                                           bool remembers) {
    const auto parse = newParse(syntaxWithElements(scopesText(scopes)));
    parse->setRemembersSearches(remembers);
    parse->setPerformanceCollectionEnabled(true);
    replace(*parse, text);
    std::map<std::string, Counts> counts;
    for (const auto &trace : parse->scopeTraces()) {
        EXPECT_GE(trace->totalTimeInterval(), 0);
        counts[trace->scope()->name().UTF8String()] = {trace->successCount(), trace->failureCount()};
    }
    return counts;
}

void expectTraces(std::string_view scopes, std::u16string_view text,
                  const std::map<std::string, Counts> &expected) {
    for (const bool remembers : {false, true})
        EXPECT_TRUE(tracesOfText(scopes, text, remembers) == expected) << "remembering: " << remembers;
}

} // namespace

TEST(QVParse, EachScopeIsTracedOnceForEachLine) {
    expectTraces(matchText("a", "a") + matchText("b", "b"), u"aa\nb\nab", {{"a", {2, 1}}, {"b", {2, 1}}});
}

TEST(QVParse, AScopeAllOfWhoseHitsWereRefusedDidNotSucceed) {
    // Nor one that only had empty hits; one that was covered by another did.
    expectTraces(matchText("first", "a") + matchText("second", "a") + matchText("empty", "(?=b)"), u"ab",
                 {{"first", {1, 0}}, {"second", {0, 1}}, {"empty", {0, 1}}});
    expectTraces(matchText("long", "ab") + matchText("covered", "b"), u"ab",
                 {{"long", {1, 0}}, {"covered", {1, 0}}});
}

TEST(QVParse, WhatFollowsARegionIsTracedAgain) {
    // On the line, and on the rest of it behind the region; the region's end is no attempt.
    expectTraces(regionText("region", "\\{", "\\}", subscopesText(matchText("inside", "x"))), u"{x}y",
                 {{"region", {1, 1}}, {"inside", {1, 0}}});
}

TEST(QVParse, WithoutCollectionNothingIsTraced) {
    const auto parse = parseOfText(syntaxThatReports(), u"b");
    EXPECT_THAT(parse->scopeTraces(), IsEmpty());
}

TEST(QVParse, TracesAddUpOverEdits) {
    const auto parse = newParse(syntaxWithElements(scopesText(matchText("a", "a"))));
    parse->setPerformanceCollectionEnabled(true);
    replace(*parse, u"a");
    replace(*parse, u"b");
    ASSERT_EQ(parse->scopeTraces().size(), 1u);
    EXPECT_EQ(parse->scopeTraces().front()->successCount(), 2u);
}
