#include "Quorvane/Parsers/QVParse.h"

#include "Host/QVMatchTreeText.h"
#include "Platform/Foundation/NSException.h"
#include "Quorvane/Parsers/QVParseScopeTrace.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Tests/Quorvane/Parsers/AccessFixtures.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

std::shared_ptr<QVParse> emptyParse(const std::string &scopes) {
    return QVParse::initWithSyntax(syntaxWithScopes(scopes), 0, QVParsePrivateQueueConcurrencyType);
}

NSRange replace(QVParse &parse, NSRange range, std::u16string_view text) {
    NSRange result{};
    parse.performWritingBlockAndWait([&] { result = parse.replaceCharactersInRange(range, text, nullptr); });
    return result;
}

std::string tree(QVParse &parse) {
    std::string result;
    parse.performReadingBlockAndWait([&] { result = QVMatchTreeText(parse); });
    return result;
}

/// "name successes failures" for each trace.
std::vector<std::string> traces(QVParse &parse) {
    std::vector<std::string> made;
    parse.performReadingBlockAndWait([&] {
        for (const auto &trace : parse.scopeTraces()) {
            EXPECT_GE(trace->totalTimeInterval(), 0);
            made.push_back(trace->scope()->name().UTF8String() + " " + std::to_string(trace->successCount()) +
                           " " + std::to_string(trace->failureCount()));
        }
    });
    return made;
}

/// Sets the class-wide setting while it lives.
class GlobalCollection {
public:
    explicit GlobalCollection(bool enabled) : _before(QVParse::isGlobalPerformanceCollectionEnabled()) {
        QVParse::setGlobalPerformanceCollectionEnabled(enabled);
    }
    ~GlobalCollection() { QVParse::setGlobalPerformanceCollectionEnabled(_before); }

private:
    const bool _before;
};

} // namespace

// Construction

TEST(QVParse, IsMadeForASyntax) {
    const auto syntax = syntaxWithScopes(single("w", "\\w"));
    const auto parse = QVParse::initWithSyntax(syntax, 10, QVParseMainQueueConcurrencyType);
    EXPECT_EQ(parse->syntax(), syntax);
    EXPECT_EQ(parse->concurrencyType(), QVParseMainQueueConcurrencyType);
    EXPECT_EQ(emptyParse("")->concurrencyType(), QVParsePrivateQueueConcurrencyType);
    EXPECT_EQ(parse->string(), u"");
    EXPECT_TRUE(parse->rootMatch()->submatches().isEmpty());
    EXPECT_TRUE(parse->symbols().empty());
    // Bracket depths are off.
    EXPECT_FALSE(parse->bracketLocationsByDepth());
    EXPECT_FALSE(parse->isParsing());
    EXPECT_FALSE(parse->isCancelled());
    EXPECT_EQ(parse->delegate(), nullptr);
    EXPECT_EQ(parse->maximumLineLength(), 0u);
    EXPECT_THAT(parse->scopeTraces(), IsEmpty());
}

TEST(QVParse, NeedsASyntax) {
    const AssertionRecorder assertions;
    EXPECT_EQ(QVParse::initWithSyntax(nullptr, 0, QVParsePrivateQueueConcurrencyType), nullptr);
    EXPECT_THAT(assertions.messages(), ElementsAre(u"Invalid parameter not satisfying: syntax != nil"));
}

TEST(QVParse, IsNotMadeOfNothing) {
    try {
        QVParse::init();
        FAIL() << "made one";
    } catch (const NSException &exception) {
        EXPECT_EQ(exception.name(), u"NSInvalidArgumentException");
        EXPECT_EQ(exception.reason(), u"Must be initialized using initWithSyntax:capacity:concurrencyType:");
    }
}

TEST(QVParse, HasTheRoomThatWasAskedForOrThatOfAThousandUnits) {
    EXPECT_GE(emptyParse("")->stringCapacity(), 1024u);
    const auto syntax = syntaxWithScopes("");
    EXPECT_GE(QVParse::initWithSyntax(syntax, 5000, QVParsePrivateQueueConcurrencyType)->stringCapacity(),
              5000u);
    const NSUInteger small =
        QVParse::initWithSyntax(syntax, 100, QVParsePrivateQueueConcurrencyType)->stringCapacity();
    EXPECT_GE(small, 100u);
    EXPECT_LT(small, 1024u);
}

TEST(QVParse, TheRootStandsAboveTheGrammarsScopes) {
    const auto parse = emptyParse(single("a", "a") + single("b", "b"));
    const std::shared_ptr<QVScope> &root = parse->rootScope();
    EXPECT_EQ(root->type(), QVScopeTypeRoot);
    EXPECT_EQ(root->name(), u"test.root");
    EXPECT_EQ(root->parentSyntax(), parse->syntax());
    EXPECT_EQ(root->subscopes(), parse->syntax()->grammar()->scopes());
    EXPECT_EQ(parse->rootMatch()->scope(), root.get());
}

TEST(QVParse, WhatNoScopeMatchesIsNamedAfterTheSyntax) {
    const auto parse = emptyParse("");
    replace(*parse, {0, 0}, u"a \n");
    EXPECT_EQ(tree(*parse), "Root test.root -\n"
                            "  Unknown test.unknown [0,1]\n"
                            "  Whitespace test.whitespace [1,1]\n"
                            "  Newline test.newline [2,1]\n");
    parse->performReadingBlockAndWait([&] {
        for (const QVScopeMatch *const match : parse->rootMatch()->submatches()) {
            EXPECT_EQ(match->scope()->parentSyntax(), parse->syntax());
            EXPECT_EQ(match->scope()->regularExpression(), nullptr);
            EXPECT_EQ(match->scope()->endRegularExpression(), nullptr);
        }
    });
}

TEST(QVParse, SettingsAreKept) {
    const auto parse = emptyParse("");
    parse->setTabWidth(3);
    EXPECT_EQ(parse->tabWidth(), 3u);
    parse->setMaximumLineLength(10000);
    EXPECT_EQ(parse->maximumLineLength(), 10000u);
    parse->setRemembersSearches(false);
    EXPECT_FALSE(parse->remembersSearches());
    parse->setPerformanceCollectionEnabled(true);
    EXPECT_TRUE(parse->isPerformanceCollectionEnabled());
    auto delegate = std::make_shared<DiagnosticRecorder>();
    parse->setDelegate(delegate);
    EXPECT_EQ(parse->delegate(), delegate);
    // It is not owned.
    delegate = nullptr;
    EXPECT_EQ(parse->delegate(), nullptr);
    parse->setDelegate(nullptr);
    EXPECT_EQ(parse->delegate(), nullptr);
}

// A whole text

TEST(QVParse, AFirstTextIsParsedAsAWhole) {
    const auto parse = emptyParse(single("a", "a+"));
    EXPECT_EQ(replace(*parse, {0, 0}, u"aa\nb"), (NSRange{0, 4}));
    EXPECT_EQ(parse->string(), u"aa\nb");
    EXPECT_FALSE(parse->isParsing());
    EXPECT_EQ(tree(*parse), "Root test.root -\n"
                            "  Match a [0,2]\n"
                            "  Newline test.newline [2,1]\n"
                            "  Unknown test.unknown [3,1]\n");
}

TEST(QVParse, AnEmptyTextRunsNoPattern) {
    const auto parse = emptyParse(single("empty", "x*"));
    const auto recorder = std::make_shared<DiagnosticRecorder>();
    parse->setDelegate(recorder);
    EXPECT_EQ(replace(*parse, {0, 0}, u""), (NSRange{0, 0}));
    EXPECT_EQ(tree(*parse), "Root test.root -\n");
    EXPECT_TRUE(recorder->diagnostics.empty());
    EXPECT_FALSE(parse->isParsing());
}

TEST(QVParse, DeletingAllTextEmptiesTheTree) {
    const auto parse = emptyParse(single("a", "a"));
    replace(*parse, {0, 0}, u"aba");
    EXPECT_EQ(replace(*parse, {0, 3}, u""), (NSRange{0, 0}));
    EXPECT_EQ(tree(*parse), "Root test.root -\n");
    EXPECT_EQ(parse->string(), u"");
    ASSERT_TRUE(parse->bracketLocationsByDepth());
    EXPECT_TRUE(parse->bracketLocationsByDepth()->empty());
    EXPECT_TRUE(parse->symbols().empty());
    // And then it begins anew.
    EXPECT_EQ(replace(*parse, {0, 0}, u"a"), (NSRange{0, 1}));
    EXPECT_EQ(tree(*parse), "Root test.root -\n  Match a [0,1]\n");
}

TEST(QVParse, TheProgressBlockIsNeverCalled) {
    const auto parse = emptyParse(single("a", "a"));
    parse->performWritingBlockAndWait([&] {
        parse->replaceCharactersInRange({0, 0}, u"a\na\na", [](double) { ADD_FAILURE() << "called"; });
        parse->replaceCharactersInRange({2, 1}, u"b", [](double) { ADD_FAILURE() << "called"; });
    });
}

TEST(QVParse, AnEditOutsideOfTheTextThrowsAndChangesNothing) {
    const auto parse = emptyParse(single("a", "a"));
    replace(*parse, {0, 0}, u"aa");
    for (const NSRange range :
         {NSRange{3, 0}, NSRange{2, 1}, NSRange{0, 3}, NSRange{1, UINT64_MAX}, NSNotFoundRange}) {
        try {
            replace(*parse, range, u"b");
            ADD_FAILURE() << "took " << range.location;
        } catch (const NSException &exception) {
            EXPECT_EQ(exception.name(), u"NSRangeException");
        }
        EXPECT_FALSE(parse->isParsing());
        EXPECT_EQ(parse->string(), u"aa");
        EXPECT_EQ(tree(*parse), "Root test.root -\n  Match a [0,1]\n  Match a [1,1]\n");
    }
}

TEST(QVParse, TheTextMayGrowPastItsRoom) {
    const auto parse =
        QVParse::initWithSyntax(syntaxWithScopes(single("w", "\\w+")), 4, QVParsePrivateQueueConcurrencyType);
    std::u16string text;
    for (int line = 0; line < 3000; ++line) {
        text += u"word\n";
        if (line % 1000 == 999)
            replace(*parse, {parse->string().size(), 0}, text.substr(parse->string().size()));
    }
    EXPECT_EQ(parse->string(), text);
    parse->performReadingBlockAndWait([&] { EXPECT_EQ(parse->rootMatch()->submatches().count(), 6000u); });
}

TEST(QVParse, ThePartOfItsOwnTextMayComeIn) {
    const auto parse = emptyParse(single("w", "\\w+"));
    replace(*parse, {0, 0}, u"ab cd");
    parse->performWritingBlockAndWait([&] {
        parse->replaceCharactersInRange({0, 2}, parse->string().substr(3, 2), nullptr);
    });
    EXPECT_EQ(parse->string(), u"cd cd");
}

TEST(QVParse, SaysThatItParsesWhileItDoes) {
    class Watcher : public QVParseDelegate {
    public:
        bool parseLogDiagnosticMessage(QVParse &parse, const NSString &, NSUInteger) override {
            sawParsing = parse.isParsing();
            return true;
        }
        bool sawParsing = false;
    };
    const auto parse = emptyParse(single("empty", "x*"));
    const auto watcher = std::make_shared<Watcher>();
    parse->setDelegate(watcher);
    replace(*parse, {0, 0}, u"a");
    EXPECT_TRUE(watcher->sawParsing);
    EXPECT_FALSE(parse->isParsing());
}

// Diagnostics

namespace {

class Deaf : public QVParseDelegate {};

} // namespace

TEST(QVParse, DiagnosticsGoToTheDelegateAlone) {
    const auto parse = emptyParse(single("empty", "x+?$|(?=b)"));
    const auto recorder = std::make_shared<DiagnosticRecorder>();
    parse->setDelegate(recorder);
    const LogRecorder log;
    replace(*parse, {0, 0}, u"ab");
    ASSERT_EQ(recorder->diagnostics.size(), 1u);
    EXPECT_EQ(recorder->diagnostics[0].message,
              u"Encountered a zero-length single match for scope: empty; Ignoring");
    EXPECT_EQ(recorder->diagnostics[0].level, 5u);
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(QVParse, DiagnosticsThatNobodyTakesGoToTheLog) {
    const auto parse = emptyParse(single("100%@", "(?=b)"));
    const NSString message = u"Encountered a zero-length single match for scope: 100%@; Ignoring";
    {
        const LogRecorder log;
        replace(*parse, {0, 0}, u"b");
        EXPECT_THAT(log.messages(), ElementsAre(message));
    }
    const auto deaf = std::make_shared<Deaf>();
    parse->setDelegate(deaf);
    const LogRecorder log;
    replace(*parse, {0, 1}, u"b");
    EXPECT_THAT(log.messages(), ElementsAre(message));
}

// Traces

TEST(QVParse, TracesAreCollectedOnlyWhereAskedFor) {
    const auto parse = emptyParse(single("a", "a") + single("b", "b"));
    replace(*parse, {0, 0}, u"a");
    EXPECT_THAT(traces(*parse), IsEmpty());
    parse->setPerformanceCollectionEnabled(true);
    replace(*parse, {0, 1}, u"a");
    // One attempt each on the one line, however many matches it makes.
    EXPECT_THAT(traces(*parse), UnorderedElementsAre("a 1 0", "b 0 1"));
    replace(*parse, {0, 1}, u"ab");
    EXPECT_THAT(traces(*parse), UnorderedElementsAre("a 2 0", "b 1 1"));
    // What was collected stays.
    parse->setPerformanceCollectionEnabled(false);
    replace(*parse, {0, 2}, u"b");
    EXPECT_THAT(traces(*parse), UnorderedElementsAre("a 2 0", "b 1 1"));
}

TEST(QVParse, TheClassWideSettingIsWhatNewParsesStartWith) {
    EXPECT_FALSE(QVParse::isGlobalPerformanceCollectionEnabled());
    const auto before = emptyParse("");
    const GlobalCollection collection(true);
    EXPECT_TRUE(QVParse::isGlobalPerformanceCollectionEnabled());
    EXPECT_FALSE(before->isPerformanceCollectionEnabled());
    const auto parse = emptyParse(single("a", "a"));
    EXPECT_TRUE(parse->isPerformanceCollectionEnabled());
    replace(*parse, {0, 0}, u"a");
    EXPECT_THAT(traces(*parse), ElementsAre("a 1 0"));
    parse->setPerformanceCollectionEnabled(false);
    EXPECT_TRUE(QVParse::isGlobalPerformanceCollectionEnabled());
}

TEST(QVParse, ScopesOfOneNameHaveTracesOfTheirOwn) {
    const auto parse = emptyParse(single("same", "a") + single("same", "b"));
    parse->setPerformanceCollectionEnabled(true);
    replace(*parse, {0, 0}, u"a");
    EXPECT_THAT(traces(*parse), UnorderedElementsAre("same 1 0", "same 0 1"));
}

TEST(QVParseScopeTrace, DescribesItself) {
    QVParseScopeTrace trace;
    const auto of = [&trace](std::u16string_view rest) {
        return NSString::stringWithFormat(u"%@ %@", trace.NSObject::description(), NSString(rest));
    };
    EXPECT_EQ(trace.description(), of(u"Name: (null), Time: 0.00, Successes: 0, Failures: 0"));
    trace.setScope(QVScope::scopeWithType(QVScopeTypeMatch, nullptr, u"a.b", nullptr, nullptr));
    trace.setTotalTimeInterval(1.256);
    trace.setSuccessCount(12);
    trace.setFailureCount(3);
    EXPECT_EQ(trace.description(), of(u"Name: a.b, Time: 1.26, Successes: 12, Failures: 3"));
    EXPECT_EQ(trace.scope()->name(), u"a.b");
    EXPECT_DOUBLE_EQ(trace.totalTimeInterval(), 1.256);
    EXPECT_EQ(trace.successCount(), 12u);
    EXPECT_EQ(trace.failureCount(), 3u);
}
