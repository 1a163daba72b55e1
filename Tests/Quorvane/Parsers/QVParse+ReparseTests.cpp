// What an edit parses again, and what it leaves alone.

#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Parsers/QVParseDelegate.h"
#include "Quorvane/Parsers/QVParseSymbol.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Quorvane/Parsers/AccessFixtures.h"
#include "Tests/Quorvane/Parsers/ReparseFixture.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Cancels at the so-manieth message of the parse.
class CancelAt : public QVParseDelegate {
public:
    explicit CancelAt(int message) : _message(message) {}
    bool parseLogDiagnosticMessage(QVParse &parse, const NSString &, NSUInteger) override {
        if (++count == _message)
            parse.cancelParsing();
        return true;
    }
    int count = 0;

private:
    const int _message;
};

} // namespace

TEST_F(Reparse, DeletingAllTextEmptiesTreeSymbolsAndBracketTable) {
    start(comment + words, u"/*!a*/ (b)");
    parse->syntax()->setBracketPairs({{u"(", u")"}});
    parse->performWritingBlockAndWait([&] { parse->setShouldCalculateBracketDepths(true); });
    ASSERT_EQ(parse->symbols().size(), 1u);
    ASSERT_EQ(parse->bracketLocationsByDepth()->size(), 1u);
    EXPECT_EQ(edit({0, 10}, u""), (NSRange{0, 0}));
    EXPECT_TRUE(parse->rootMatch()->submatches().isEmpty());
    EXPECT_TRUE(parse->symbols().empty());
    ASSERT_TRUE(parse->bracketLocationsByDepth());
    EXPECT_TRUE(parse->bracketLocationsByDepth()->empty());
}

TEST_F(Reparse, TheSecondEditAnswersARangeFromTheLineBeforeIt) {
    start(words, u"aa\nbb\ncc\ndd\nee\n");
    // "cc" gets a letter: the lines of "bb", "ccc" and "dd".
    EXPECT_EQ(edit({7, 0}, u"c"), (NSRange{3, 10}));
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, TheProgressBlockIsNeverCalled) {
    start(words, u"");
    int calls = 0;
    const auto progress = [&](double) { ++calls; };
    parse->performWritingBlockAndWait([&] {
        parse->replaceCharactersInRange({0, 0}, u"aa\nbb\ncc\n", progress);
        parse->replaceCharactersInRange({4, 1}, u"x", progress);
        parse->replaceCharactersInRange({0, 9}, u"", progress);
    });
    EXPECT_EQ(calls, 0);
}

TEST_F(Reparse, ALetterInAWordParsesThreeLinesAndKeepsAllOtherNodes) {
    start(words, u"aa\nbb\ncc\ndd\nee\nff\n");
    const std::vector<QVScopeMatch *> before = children();
    EXPECT_EQ(edit({8, 0}, u"c"), (NSRange{3, 10}));
    const std::vector<QVScopeMatch *> after = children();
    ASSERT_EQ(after.size(), before.size());
    // A word and a line ending each: the first line, and what follows "dd".
    for (const std::size_t index : {0, 1, 8, 9, 10, 11})
        EXPECT_EQ(after[index], before[index]) << index;
    EXPECT_EQ(after[8]->range(), (NSRange{13, 2}));
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, OpeningACommentParsesToTheTextsEnd) {
    start(comment + words, u"aa\nbb\ncc\ndd\nee");
    EXPECT_EQ(edit({3, 0}, u"/*"), (NSRange{0, 16}));
    EXPECT_EQ(tree(), freshTree());
    ASSERT_EQ(parse->rootMatch()->submatches().count(), 3u);
    EXPECT_EQ(child(2)->endRange(), (NSRange{16, 0}));
    EXPECT_EQ(child(2)->endCaptureMatches(), nullptr);
}

TEST_F(Reparse, TakingTheOpeningAwayParsesToWhereTheContextIsTheOldOne) {
    start(comment + words, u"aa\n/*bb\ncc*/\ndd\nee\nff\ngg\n");
    QVScopeMatch *const last = parse->rootMatch()->lastChild();
    // The comment ended in the line of "cc", and one more line is parsed to be sure.
    const NSRange answer = edit({3, 2}, u"");
    EXPECT_EQ(answer.location, 0u);
    EXPECT_LE(NSMaxRange(answer), 17u);
    EXPECT_EQ(parse->rootMatch()->lastChild(), last);
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, ClosingACommentEarlierGoesOnInTheRegionAround) {
    start(region("block", "\\{", "\\}", holding(comment + words)), u"{\na /* b\nc\nd\ne */ f\ng\n}\n");
    QVScopeMatch *const block = child(0);
    QVScopeMatch *const opened = block->submatches()[3];
    ASSERT_EQ(opened->scope()->name(), u"comment");
    edit({10, 0}, u"*/");
    EXPECT_EQ(child(0), block);
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, AnEndThatMatchesBeforeTheOldOneClosesTheParent) {
    start(comment + words, u"/* a\nb\nc\nd\ne */ f\ng\n");
    QVScopeMatch *const opened = child(0);
    // The line of "c", where the parent is the comment itself.
    edit({7, 0}, u"*/");
    EXPECT_EQ(child(0), opened);
    EXPECT_EQ(opened->endRange(), (NSRange{7, 2}));
    EXPECT_FALSE(opened->skipForBumping());
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, AnEditAtTheTextsStartReplacesTheFirstMatch) {
    start(words, u"aa\nbb\ncc\ndd\n");
    QVScopeMatch *const first = child(0);
    EXPECT_EQ(edit({0, 0}, u"x"), (NSRange{0, 7}));
    EXPECT_NE(child(0), first);
    EXPECT_EQ(child(0)->range(), (NSRange{0, 3}));
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, AnOldMatchThatReachesFurtherIsParsedToTheEndOfItsLine) {
    // The old comment ended in line six. When its opening goes in line two, lines one to three are parsed at
    // first; the comment reaches further, so the next stretch goes to the line behind its end at once.
    start(comment + words, u"a\n/*\nb\nc\nd\n*/ e\nf\ng\nh\ni\n");
    const NSRange answer = edit({2, 2}, u"");
    // The old end's line is at 9 to 14 now ("*/ e" at 9), the line behind it "f" at 14.
    EXPECT_EQ(answer, (NSRange{0, 16}));
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, TextAtTheVeryEndIsAppendedToTheTree) {
    start(words, u"aa\nbb\ncc");
    QVScopeMatch *const first = child(0);
    EXPECT_EQ(edit({8, 0}, u"c\ndd"), (NSRange{3, 9}));
    EXPECT_EQ(child(0), first);
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, AnOpenRegionFollowsTheTextsEnd) {
    start(comment + words, u"aa\n/* bb\ncc\ndd");
    EXPECT_EQ(child(2)->endRange(), (NSRange{14, 0}));
    edit({14, 0}, u"d");
    EXPECT_EQ(child(2)->endRange(), (NSRange{15, 0}));
    edit({3, 2}, u"");
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, ARegionThatLosesItsEndAtTheTextsEndLosesItsEndCaptures) {
    start("<scope name='comment'><starts-with><expression>/\\*</expression></starts-with><ends-with>"
          "<expression>\\*/</expression><capture number='0' name='ending'/></ends-with></scope>",
          u"/* a\nb */");
    ASSERT_NE(child(0)->endCaptureMatches(), nullptr);
    edit({7, 2}, u"");
    EXPECT_EQ(child(0)->endCaptureMatches(), nullptr);
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, ARegionThatIsClosedTakesTheCapturesOfItsEnd) {
    start("<scope name='comment'><starts-with><expression>/\\*</expression></starts-with><ends-with>"
          "<expression>(\\*)/</expression><capture number='1' name='ending'/></ends-with></scope>",
          u"/* a\nb\nc\nd\n");
    edit({7, 0}, u"*/");
    ASSERT_NE(child(0)->endCaptureMatches(), nullptr);
    const QVCaptureMatch &ending = *child(0)->endCaptureMatches()->front();
    EXPECT_EQ(ending.range(), (NSRange{7, 1}));
    EXPECT_EQ(ending.parentMatch(), child(0));
    EXPECT_EQ(tree(), freshTree());
}

/// Where the new text is longer than the old, new nodes stand at the numbers that old ones had. Taken for
/// old, they told the wrong context, and a block that had lost its end kept it.
TEST_F(Reparse, NewNodesAreNotTakenForOldOnesAtTheSameNumber) {
    start(region("block", "\\{", "\\}", holding("<include syntax='self'/>")) + words,
          u"{\na\nb\nc\n}\nd\ne\nf\ng\nh\n");
    edit({2, 1}, u"long long long long long {");
    EXPECT_EQ(tree(), freshTree());
    edit({2, 26}, u"x");
    EXPECT_EQ(tree(), freshTree());
}

/// A region with an empty start at the first place behind the reparsed lines had no children and was taken
/// for an empty match there.
TEST_F(Reparse, ARegionWithAnEmptyStartBehindTheStretchStays) {
    start(region("r", "(?=x)", "x") + words, u"a\nb\nc\nx\n");
    edit({2, 1}, u"bb");
    EXPECT_EQ(tree(), freshTree());
}

/// At the text's end the region around had been taken for the context in which the text ended, though it
/// ended right there.
TEST_F(Reparse, ARegionWhoseEndWentToAnotherOneAtTheTextsEndEndsWithTheText) {
    const std::string inner = region("inner", "\\(", "\\}");
    start(region("outer", "\\{", "\\}", holding(inner)), u"{a\nb\nc}");
    edit({1, 0}, u"long(");
    EXPECT_EQ(child(0)->endRange(), (NSRange{12, 0}));
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, TemplateScopesAreNotTriedInsideOfATemplateScopeThatIsGoneOnIn) {
    const auto syntax =
        syntaxWithScopes(words, "<template-scopes>" + region("t", "\\(", "\\)", holding(single("d", "\\d"))) +
                                    "</template-scopes>");
    parse = QVParse::initWithSyntax(syntax, 0, QVParseMainQueueConcurrencyType);
    edit({0, 0}, u"(\n1\n2\n3\n)");
    edit({4, 1}, u"(");
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, CutoffsOfTheLanguageAroundEndARegionThatIsGoneOnIn) {
    const RegisteredSyntax inner(syntaxFromXML("<syntax name='inner'><scopes>" +
                                               region("block", "\\[", "\\]", holding(words)) +
                                               "</scopes></syntax>"));
    start(region("code", "&lt;", "&gt;", "<subsyntax name='inner'>" + cutoff("cut", ";") + "</subsyntax>"),
          u"<\n[\na\nb\n]\n>\nc\n");
    const QVScopeMatch *const block = child(0)->submatches()[1];
    ASSERT_EQ(block->endRange(), (NSRange{8, 1}));
    edit({6, 1}, u";");
    EXPECT_EQ(block->endRange(), (NSRange{6, 1}));
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, RegionsAroundCountForTheDepthOfNesting) {
    std::u16string text;
    for (std::size_t depth = 0; depth + 4 < limits::parseNestingDepth; ++depth)
        text += u"(\n";
    start(region("p", "\\(", "\\)", holding("<include syntax='self'/>")), text + u"a\nb\n");
    edit({text.size(), 1}, u"((((((((");
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, BetweenCRAndLFTheLineEndingFallsApartAndGrowsTogether) {
    start(words, u"aa\r\nbb\r\ncc\r\ndd\r\n");
    edit({7, 0}, u"x");
    EXPECT_EQ(tree(), freshTree());
    edit({7, 1}, u"");
    EXPECT_EQ(tree(), freshTree());
    edit({3, 1}, u"");
    EXPECT_EQ(tree(), freshTree());
}

// Anchored regions

TEST_F(Reparse, ASequenceGoesOnWhereItWas) {
    start(sequence(single("a", "a") + single("b", "b") + single("c", "c") + single("d", "d")) + words,
          u"(a\nb\nc\nd\n");
    QVScopeMatch *const region = child(0);
    // "c" comes again in the same place of the sequence.
    edit({5, 1}, u"c");
    EXPECT_EQ(child(0), region);
    EXPECT_EQ(tree(), freshTree());
    ASSERT_EQ(region->submatches().count(), 7u);
    EXPECT_EQ(region->submatches()[4]->anchoredMatchIdx(), 2u);
}

TEST_F(Reparse, ASequenceThatFindsNothingMoreEndsThere) {
    start(sequence(single("a", "a") + single("b", "b") + single("c", "c") + single("d", "d")) + words,
          u"(a\nb\nc\nd\n");
    edit({5, 1}, u"x");
    EXPECT_EQ(child(0)->endRange(), (NSRange{5, 0}));
    EXPECT_FALSE(child(0)->skipForBumping());
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, ASequenceThatFindsNothingMoreLosesTheCapturesOfItsEnd) {
    start("<scope name='r'><starts-with><expression>\\(</expression></starts-with><ends-with>"
          "<expression>\\)</expression><capture number='0' name='ending'/></ends-with>" +
              following(single("a", "a") + single("b", "b") + single("c", "c")) + "</scope>" + words,
          u"(a\nb\nc)\nd\n");
    ASSERT_NE(child(0)->endCaptureMatches(), nullptr);
    edit({3, 1}, u"x");
    EXPECT_EQ(child(0)->endRange(), (NSRange{3, 0}));
    EXPECT_EQ(child(0)->endCaptureMatches(), nullptr);
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, AnchoredRegionsAroundAStaleEndEndWhereTheTextWasParsedTo) {
    const std::string inner = region("i", "\\[", "\\]", following(single("x", "x", repeating)));
    start(sequence(single("a", "a") + inner + single("b", "b") + single("c", "c")) + words,
          u"(a\n[x\nx\nx]\nb\nc\nd\ne\n");
    edit({9, 1}, u"");
    EXPECT_EQ(tree(), freshTree());
    edit({9, 0}, u"]");
    EXPECT_EQ(tree(), freshTree());
}

/// Behind the long line stands a line ending without a place, and what follows overlaps the region: edits
/// lost their way in such a tree.
TEST_F(Reparse, WhileALineThatIsTooLongEndsTheTextInASequenceAllIsParsed) {
    start(sequence(single("a", "a", repeating)) + words, u"(a\na\na\na");
    parse->setMaximumLineLength(4);
    EXPECT_EQ(edit({3, 0}, u"a"), (NSRange{0, 9}));
    NSRange answer = edit({7, 2}, u"\na\na\nlonger than that");
    EXPECT_EQ(answer, (NSRange{0, parse->string().size()}));
    const auto tellTree = [&] { return QVMatchTreeText(*parseOfText(parse->syntax(), parse->string(), 4)); };
    EXPECT_EQ(tree(), tellTree());
    EXPECT_EQ(edit({6, 1}, u"a").location, 0u);
    answer = edit({8, 0}, u"x");
    EXPECT_EQ(answer, (NSRange{0, parse->string().size()}));
    EXPECT_EQ(tree(), tellTree());
    // With the line's end the region is like any other again.
    edit({parse->string().size(), 0}, u"\n");
    EXPECT_GT(edit({parse->string().size(), 0}, u"b").location, 0u);
    EXPECT_EQ(tree(), tellTree());
}

// Cancelling and failing

TEST_F(Reparse, ACancelledEditAnswersNothingAndTheNextOneParsesTheWholeText) {
    // Each line is polled; the messages say where the parse is.
    const std::string scopes = comment + single("empty", "y*") + words;
    for (int stop = 1; stop <= 12; ++stop) {
        start(scopes, u"a\nb\nc\nd\ne\nf\n");
        const auto interruption = std::make_shared<CancelAt>(stop);
        parse->setDelegate(interruption);
        const NSRange answer = edit({4, 0}, u"/*");
        parse->setDelegate(nullptr);
        if (interruption->count < stop) {
            EXPECT_GT(stop, 3);
            EXPECT_NE(answer, NSNotFoundRange);
            break;
        }
        EXPECT_EQ(answer, NSNotFoundRange);
        EXPECT_FALSE(parse->isParsing());
        MainQueue::drain();
        EXPECT_TRUE(parse->rootMatch()->submatches().isEmpty());
        EXPECT_EQ(edit({0, 0}, u"z"), (NSRange{0, 15}));
        EXPECT_EQ(tree(), freshTree());
    }
}

// Symbols

TEST_F(Reparse, SymbolsOfMatchesThatGoGoToo) {
    start(comment + words, u"/*!a*/\n/*!b*/\n/*!c*/\n/*!d*/\n/*!e*/\n/*!f*/\n");
    const auto before = parse->symbols();
    ASSERT_EQ(before.size(), 6u);
    // "b", "c" and "d" are no bookmarks any more; with the lines beside them all but the last are new.
    EXPECT_EQ(edit({7, 17}, u"/*b*/\n/*c*/\n/*"), (NSRange{0, 32}));
    ASSERT_EQ(parse->symbols().size(), 3u);
    EXPECT_NE(parse->symbols()[0], before[0]);
    EXPECT_NE(parse->symbols()[1], before[4]);
    EXPECT_EQ(parse->symbols()[2], before[5]);
    for (std::size_t index = 0; index < 5; ++index)
        EXPECT_EQ(before[index]->match(), nullptr) << index;
    EXPECT_NE(before[5]->match(), nullptr);
}

TEST_F(Reparse, SymbolsAreFoundWhateverTheirOrder) {
    for (const bool backwards : {false, true}) {
        start(comment + words, u"/*!a*/\n/*!b*/\n/*!c*/\n/*!d*/\n/*!e*/\n");
        auto &symbols = const_cast<std::vector<std::shared_ptr<QVParseSymbol>> &>(parse->symbols());
        const std::vector<std::shared_ptr<QVParseSymbol>> before = symbols;
        if (backwards)
            std::reverse(symbols.begin(), symbols.end());
        edit({10, 1}, u"x");
        // "a", "b" and "c" went, and came anew in front of the others.
        ASSERT_EQ(symbols.size(), 5u);
        EXPECT_EQ(symbols[3], before[backwards ? 4 : 3]);
        EXPECT_EQ(symbols[4], before[backwards ? 3 : 4]);
        for (const std::size_t index : {0, 1, 2})
            EXPECT_EQ(before[index]->match(), nullptr) << index;
    }
}

// The pieces

TEST_F(Reparse, PositionsBehindTheEditMoveBack) {
    // Three units became five at 10: up to there nothing moves, behind it all does.
    for (const auto &[position, old] : {std::pair{9u, 9u}, {10u, 10u}, {11u, 9u}, {15u, 13u}, {16u, 14u}})
        EXPECT_EQ(QVParse::positionForPositionInOriginalRange(position, {10, 5}, 2), old);
    for (const auto &[position, old] : {std::pair{10u, 10u}, {11u, 14u}})
        EXPECT_EQ(QVParse::positionForPositionInOriginalRange(position, {10, 1}, -3), old);
}

TEST_F(Reparse, ADirtyTreeIsAskedForItsOldMatches) {
    start(comment + words, u"/*a*/ b c");
    QVScopeMatch *const first = child(0);
    EXPECT_EQ(QVParse::matchAtLocation(0, first), first);
    EXPECT_EQ(QVParse::matchAtLocation(2, first), first->firstChild());
    EXPECT_EQ(QVParse::matchAtLocation(4, first), first);
    // The region again, on leaving its last child.
    EXPECT_EQ(QVParse::matchAtLocation(4, first->firstChild()), first);
    EXPECT_EQ(QVParse::matchAtLocation(6, first), child(2));
    EXPECT_EQ(QVParse::matchAtLocation(9, first), nullptr);
    EXPECT_EQ(QVParse::matchAtLocation(0, nullptr), nullptr);
    // What is new stands at places of another text, and so do ends that are marked.
    first->setSkipForBumping(true);
    EXPECT_EQ(QVParse::matchAtLocation(4, first), nullptr);
    first->setSkipForBumping(false);
    child(2)->setInserted(true);
    EXPECT_EQ(QVParse::matchAtLocation(6, first), nullptr);
    child(2)->setInserted(false);
}

TEST_F(Reparse, OnLeavingTheLastChildOfSeveralRegionsAllOfThemAreAsked) {
    start(region("outer", "\\[", "\\]+", holding(region("inner", "\\(", "\\)", holding(words)))), u"[(a)]]");
    QVScopeMatch *const outer = child(0);
    QVScopeMatch *const word = outer->firstChild()->firstChild();
    EXPECT_EQ(QVParse::matchAtLocation(3, word), outer->firstChild());
    EXPECT_EQ(QVParse::matchAtLocation(5, word), outer);
    // Not on leaving a child that has a sibling.
    start(region("outer", "\\[", "\\]", holding(words)), u"[a b] c");
    EXPECT_EQ(QVParse::matchAtLocation(6, child(0)->firstChild()), child(2));
    EXPECT_EQ(QVParse::matchAtLocation(4, child(0)->firstChild()), child(0));
}

TEST_F(Reparse, CapturesMoveWithWhatIsBumped) {
    const std::string tag =
        "<scope name='tag'><starts-with><expression>(\\w)&lt;</expression><capture number='1' name='open'/>"
        "</starts-with><ends-with><expression>&gt;(\\w)</expression><capture number='1' name='close'/>"
        "</ends-with></scope>";
    const auto range = [](const QVCaptureMatchArray *captures) { return captures->front()->range(); };
    start(tag, u"a<>b c<>d");
    QVScopeMatch *const first = child(0);
    QVScopeMatch *const second = child(2);
    QVParse::bumpRangesBy(10, first);
    EXPECT_EQ(range(first->captureMatches()), (NSRange{0, 1}));
    EXPECT_EQ(range(first->endCaptureMatches()), (NSRange{3, 1}));
    EXPECT_EQ(range(second->captureMatches()), (NSRange{15, 1}));
    EXPECT_EQ(range(second->endCaptureMatches()), (NSRange{18, 1}));
    // Match by match, since one of them can't go so far; the region around ends further on too.
    start(tag + region("block", "\\(", "(\\))", holding(tag)), u"(a<>b c<>d)");
    const AssertionRecorder assertions;
    QVScopeMatch *const block = child(0);
    QVParse::bumpRangesBy(-6, block->submatches()[0]);
    EXPECT_EQ(assertions.messages().size(), 1u);
    EXPECT_EQ(block->submatches()[1]->range(), (NSRange{5, 1}));
    EXPECT_EQ(range(block->submatches()[2]->captureMatches()), (NSRange{0, 1}));
    EXPECT_EQ(range(block->submatches()[2]->endCaptureMatches()), (NSRange{3, 1}));
    EXPECT_EQ(block->endRange(), (NSRange{4, 1}));
}

TEST_F(Reparse, BumpingMovesWhatLiesBehindAndTheEndsAround) {
    start(comment + words, u"/*a b*/ c /*d*/");
    QVScopeMatch *const around = child(0);
    QVParse::bumpRangesBy(10, around->firstChild());
    EXPECT_EQ(around->range(), (NSRange{0, 2}));
    EXPECT_EQ(around->firstChild()->range(), (NSRange{2, 1}));
    EXPECT_EQ(around->lastChild()->range(), (NSRange{14, 1}));
    EXPECT_EQ(around->endRange(), (NSRange{15, 2}));
    EXPECT_EQ(child(2)->range(), (NSRange{18, 1}));
    EXPECT_EQ(child(4)->range(), (NSRange{20, 2}));
    EXPECT_EQ(child(4)->endRange(), (NSRange{23, 2}));
    // A marked match stays, what is in it does not.
    child(4)->setSkipForBumping(true);
    QVParse::bumpRangesBy(-10, around->firstChild());
    EXPECT_EQ(child(4)->range(), (NSRange{20, 2}));
    EXPECT_EQ(child(4)->firstChild()->range(), (NSRange{12, 1}));
    child(4)->setSkipForBumping(false);
    QVParse::bumpRangesBy(0, around);
    QVParse::bumpRangesBy(5, nullptr);
    EXPECT_EQ(child(2)->range(), (NSRange{8, 1}));
}

TEST_F(Reparse, NothingIsBumpedBeforeTheTextsStart) {
    start(words, u"a b c");
    const AssertionRecorder assertions;
    QVParse::bumpRangesBy(-3, child(1));
    EXPECT_THAT(assertions.messages(), ElementsAre(u"Attempt to bump a range to an invalid state"));
    EXPECT_EQ(child(2)->range(), (NSRange{2, 1}));
    EXPECT_EQ(child(3)->range(), (NSRange{0, 1}));
}

TEST_F(Reparse, BumpingFromTheLastMatchMovesNothing) {
    start(words, u"a b");
    QVParse::bumpRangesBy(7, child(2));
    EXPECT_EQ(tree(), freshTree());
}
