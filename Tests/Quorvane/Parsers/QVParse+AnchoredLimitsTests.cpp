#include "Host/QVMatchTreeText.h"
#include "Quorvane/Parsers/QVParseScopeTrace.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Tests/Quorvane/Parsers/GrammarText.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using Diagnostic = DiagnosticRecorder::Diagnostic;

namespace quorvane::test {

void PrintTo(const DiagnosticRecorder::Diagnostic &diagnostic, std::ostream *stream) {
    *stream << diagnostic.level << ": " << diagnostic.message.UTF8String();
}

} // namespace quorvane::test

namespace {

const std::string a = single("a", "a");
const std::string b = single("b", "b");

/// What a parse has to say while it parses a text, the plain way and the remembering way.
std::vector<Diagnostic> diagnosticsOfText(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text) {
    std::vector<Diagnostic> diagnostics[2];
    for (const bool remembers : {false, true}) {
        const auto recorder = std::make_shared<DiagnosticRecorder>();
        const auto parse = QVParse::initWithSyntax(syntax, 0, QVParsePrivateQueueConcurrencyType);
        parse->setDelegate(recorder);
        parse->setRemembersSearches(remembers);
        parse->performWritingBlockAndWait([&] { parse->replaceCharactersInRange({0, 0}, text, nullptr); });
        diagnostics[remembers] = recorder->diagnostics;
    }
    EXPECT_EQ(diagnostics[0], diagnostics[1]) << "remembering searches changed what is said";
    return diagnostics[1];
}

} // namespace

// Lines that are too long

namespace {

std::string treeWithLimit(const std::string &scopes, std::u16string_view text) {
    return treeOfText(syntaxWithScopes(scopes), text, 10);
}

} // namespace

TEST(QVParseAnchored, NoPatternRunsOnALineThatIsTooLong) {
    EXPECT_EQ(treeWithLimit(sequence(a), u"(\naaaaaaaaaaa\na"), "StartEnd r [0,1] end[15,0]\n"
                                                                "  Newline newline [1,1]\n"
                                                                "  Unknown unknown [2,11]\n"
                                                                "  Newline newline [13,1]\n"
                                                                "  Match a [14,1]\n");
    // One of just the length is parsed.
    EXPECT_EQ(treeWithLimit(sequence(a), u"(\naaaaaaaaaa"), "StartEnd r [0,1] end[3,0]\n"
                                                            "  Newline newline [1,1]\n"
                                                            "  Match a [2,1]\n"
                                                            "Unknown unknown [3,9]\n");
}

TEST(QVParseAnchored, ALineThatIsTooLongAndHasNoEndLeavesALineEndingWithoutAPlace) {
    // The odd match is meant, and so is that the region then ends behind its start, so that the text is taken
    // up again.
    EXPECT_EQ(treeWithLimit(sequence(a), u"(\naaaaaaaaaaa"), "StartEnd r [0,1] end[1,0]\n"
                                                             "  Newline newline [1,1]\n"
                                                             "  Unknown unknown [2,11]\n"
                                                             "  Newline newline -\n"
                                                             "Newline newline [1,1]\n"
                                                             "Unknown unknown [2,11]\n");
}

TEST(QVParseAnchored, QueriesSurviveALineEndingWithoutAPlace) {
    const std::u16string text = u"(\naaaaaaaaaaa";
    const auto parse = parseOfText(syntaxWithScopes(sequence(a)), text, 10);
    parse->performReadingBlockAndWait([&] {
        for (NSUInteger location = 0; location <= text.size() + 1; ++location) {
            std::shared_ptr<QVSyntax> syntax;
            EXPECT_NE(parse->matchAtLocation(location, true, &syntax), nullptr);
            EXPECT_EQ(syntax, parse->syntax());
            EXPECT_NE(parse->matchPrecedingLocation(location, true, &syntax), nullptr);
        }
    });
    // It is the last child of its region: the tree's very end is found past it.
    const auto inside =
        parseOfText(syntaxWithScopes(region("o", "\\[", "", following(sequence(a)))), u"[(\naaaaaaaaaaa", 10);
    inside->performReadingBlockAndWait([&] {
        for (NSUInteger location = 0; location <= 15; ++location)
            EXPECT_NE(inside->matchPrecedingLocation(location, false, nullptr), nullptr);
    });
}

// Nothing hangs

TEST(QVParseAnchored, ARegionThatComesToNothingIsRemoved) {
    const std::string nothing = region("e", "(?=z)", "", following(a));
    const auto syntax = syntaxWithScopes(sequence(nothing + single("z", "z")));
    EXPECT_EQ(treeOfText(syntax, u"(z"), "StartEnd r [0,1] end[2,0]\n"
                                         "  Match z [1,1]\n");
    EXPECT_THAT(diagnosticsOfText(syntax, u"(z"), ElementsAre());
    // Also one that ends at once.
    EXPECT_EQ(treeOfText(sequence(region("e", "(?=z)", "(?=z)") + single("z", "z")), u"(z"),
              "StartEnd r [0,1] end[2,0]\n"
              "  Match z [1,1]\n");
}

TEST(QVParseAnchored, ARegionThatCameToNothingIsAMissAtTheSamePlace) {
    const std::string nothing = region("e", "(?=z)", "", following(a), repeating);
    const auto syntax = syntaxWithScopes(sequence(nothing + single("z", "z")));
    EXPECT_EQ(treeOfText(syntax, u"(z"), "StartEnd r [0,1] end[2,0]\n"
                                         "  Match z [1,1]\n");
    const Diagnostic ignored{u"Encountered an infinitely-recursive parse for scope: e; Ignoring", 5};
    EXPECT_THAT(diagnosticsOfText(syntax, u"(z"), ElementsAre(ignored));
    // At another place it gets its chance again.
    EXPECT_THAT(diagnosticsOfText(syntax, u"(z(z"), ElementsAre(ignored, ignored));
}

TEST(QVParseAnchored, WhatCameToNothingGetsItsChanceAgainAfterAnEdit) {
    const auto parse = parseOfText(
        syntaxWithScopes(
            sequence(region("e", "(?=z)", "", following(single("zz", "zz")), repeating) + single("z", "z"))),
        u"(z");
    parse->performWritingBlockAndWait([&] {
        parse->replaceCharactersInRange({2, 0}, u"z", nullptr);
        EXPECT_EQ(QVMatchTreeText(*parse), "Root test.root -\n"
                                           "  StartEnd r [0,1] end[3,0]\n"
                                           "    StartEnd e [1,0] end[3,0]\n"
                                           "      Match zz [1,2]\n");
    });
}

TEST(QVParseAnchored, RegionsThatRunFarAheadAndComeToNothingTakeTurnsOnlyOnce) {
    // Both look at the first z, run over a region that comes to nothing, and lose everything to the last
    // line, which is too long.
    const auto lost = [](const std::string &name) {
        return region(name, "(?=z)", "",
                      following(single("z", "z") +
                                region("x", "(?=y)", "", following(single("a", "a")), optional) +
                                single("y", "y") + single("w", "w")),
                      optional + repeating);
    };
    const auto syntax =
        syntaxWithScopes(sequence(lost("one")), "<template-scopes>" + lost("two") + "</template-scopes>");
    EXPECT_EQ(treeOfText(syntax, u"(z\ny\n....................", 10), "StartEnd r [0,1] end[1,0]\n"
                                                                      "Unknown unknown [1,1]\n"
                                                                      "Newline newline [2,1]\n"
                                                                      "Unknown unknown [3,1]\n"
                                                                      "Newline newline [4,1]\n"
                                                                      "Unknown unknown [5,20]\n");
}

TEST(QVParseAnchored, AScopeInsideItselfAtTheSamePlaceIsDropped) {
    const auto syntax = syntaxWithScopes(
        "<include collection='c'/>", "<collections><collection name='c'>" +
                                         region("r", "(?=x)", "", following("<include collection='c'/>")) +
                                         "</collection></collections>");
    EXPECT_EQ(treeOfText(syntax, u"x"), "Unknown unknown [0,1]\n");
    EXPECT_THAT(
        diagnosticsOfText(syntax, u"x"),
        ElementsAre(Diagnostic{
            u"Encountered an infinitely-recursive depth-wise parse for scope: r; Ignoring subscopes", 5}));
}

TEST(QVParseAnchored, ASingleMatchOfNoLengthIsAMiss) {
    const auto syntax = syntaxWithScopes(sequence(single("m", "y*") + a));
    EXPECT_EQ(treeOfText(syntax, u"(a"), "StartEnd r [0,1] end[1,0]\n"
                                         "Unknown unknown [1,1]\n");
    EXPECT_THAT(diagnosticsOfText(syntax, u"(a"),
                ElementsAre(Diagnostic{u"Encountered a zero-length single match for scope: m; Ignoring", 5}));
}

TEST(QVParseAnchored, AnEmptyCutOffEndsTheRegion) {
    EXPECT_EQ(treeOfText(sequence(a + cutoff("cut", "(?=b)") + b), u"(ab"), "StartEnd r [0,1] end[2,0]\n"
                                                                            "  Match a [1,1]\n"
                                                                            "Unknown unknown [2,1]\n");
}

TEST(QVParseAnchored, NestingEndsAtItsLimitAndBeginsAnew) {
    const auto syntax = syntaxWithScopes("<include collection='c'/>",
                                         "<collections><collection name='c'>" +
                                             region("r", "\\(", "", following("<include collection='c'/>")) +
                                             "</collection></collections>");
    const auto parse = parseOfText(syntax, std::u16string(1000, u'('));
    parse->performReadingBlockAndWait([&] {
        // The root counts, so the hundredth region is closed at once and all around it run out.
        ASSERT_EQ(parse->rootMatch()->submatches().count(), 10u);
        NSUInteger start = 0;
        for (const QVScopeMatch *const top : parse->rootMatch()->submatches()) {
            EXPECT_EQ(top->range(), (NSRange{start, 1}));
            NSUInteger depth = 1;
            const QVScopeMatch *match = top;
            for (; match->firstChild() != nullptr; match = match->firstChild(), ++depth)
                EXPECT_EQ(match->endRange(), (NSRange{start + 100, 0}));
            EXPECT_EQ(depth, 100u);
            EXPECT_EQ(match->endRange(), (NSRange{start + 100, 0}));
            start += 100;
        }
    });
}

TEST(QVParseAnchored, BothWaysOfSearchingGiveTheSameTreeForRandomTexts) {
    // Sequences of all kinds inside each other, with regions that come to nothing and lines that are too
    // long.
    const std::string nothing =
        region("nothing", "(?=[bz])", "", following(single("c", "c")), optional + repeating);
    const std::string inner =
        region("inner", "\\[", "\\]",
               following(nothing + "<include collection='all' repeat='true'/>", "lazy"), optional);
    const auto syntax = syntaxWithScopes(
        "<include collection='all'/>",
        "<collections><collection name='all'>" + single("a", "a+", optional) + cutoff("cut", ";") +
            region("r", "\\(", "",
                   following(single("b", "b", repeating) + inner + single("any", "[a-z]?", optional) +
                                 "<include collection='all' optional='true' repeat='true'/>",
                             "greedy")) +
            region("u", "(?=\\{)", "\\}", holding("<include collection='all'/>")) + single("z", "z\\b") +
            "</collection></collections><template-scopes>" +
            region("t", "%", "%|$", following(single("x", "x", optional + repeating) + nothing)) +
            "</template-scopes>");
    const LogRecorder quiet;
    const std::u16string_view alphabet = u"aabbczx(([[)]{};% \t\n\r";
    std::mt19937 random(3);
    for (int round = 0; round < 500; ++round) {
        std::u16string text;
        for (std::size_t length = random() % 60; length > 0; --length)
            text += alphabet[random() % alphabet.size()];
        treeOfText(syntax, text, 12);
        ASSERT_FALSE(testing::Test::HasFailure()) << "round " << round;
    }
}

TEST(QVParseAnchored, TracesCountEachAttempt) {
    const auto parse = QVParse::initWithSyntax(syntaxWithScopes(sequence(single("a", "a", optional) + b)), 0,
                                               QVParsePrivateQueueConcurrencyType);
    parse->setPerformanceCollectionEnabled(true);
    parse->performWritingBlockAndWait([&] { parse->replaceCharactersInRange({0, 0}, u"(b", nullptr); });
    std::vector<std::string> counts;
    parse->performReadingBlockAndWait([&] {
        for (const auto &trace : parse->scopeTraces())
            counts.push_back(trace->scope()->name().UTF8String() + " " +
                             std::to_string(trace->successCount()) + " " +
                             std::to_string(trace->failureCount()));
    });
    EXPECT_THAT(counts, testing::UnorderedElementsAre("r 1 0", "a 0 1", "b 1 0"));
}
