#include "Quorvane/Matches/QVScopeMatch.h"

#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSIndexSet.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Symbols/QVLexicalClass.h"
#include "Tests/Quorvane/Matches/MatchFixtures.h"

#include <gmock/gmock.h>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// A container and places to put into it.
class Submatches : public testing::Test {
protected:
    QVScopeMatchReference make(NSUInteger location) {
        auto match = QVScopeMatch::initWithScope(plain.get(), *pool);
        match->setRange({location, 1});
        return match;
    }

    /// The children's locations, after a check of every link.
    std::vector<NSUInteger> children() const {
        std::vector<NSUInteger> locations;
        QVMatch *previous = nullptr;
        for (QVScopeMatch *const child : parent->submatches()) {
            locations.push_back(child->range().location);
            EXPECT_EQ(child->parentMatch(), parent.get());
            EXPECT_EQ(child->previousSibling(), previous);
            if (previous != nullptr) {
                EXPECT_EQ(previous->nextSibling(), child);
            } else {
                EXPECT_EQ(parent->firstChild(), child);
            }
            previous = child;
        }
        EXPECT_EQ(parent->lastChild(), previous);
        if (previous != nullptr) {
            EXPECT_EQ(previous->nextSibling(), nullptr);
        } else {
            EXPECT_EQ(parent->firstChild(), nullptr);
        }
        EXPECT_EQ(QVScopeMatch::directSubmatchesCount(parent.get()), locations.size());
        return locations;
    }

    void fill(std::initializer_list<NSUInteger> locations) {
        for (const NSUInteger location : locations)
            parent->insertSubmatch(make(location), parent->submatches().count());
    }

    const QVMatchPool::Owner pool = QVMatchPool::create();
    const std::shared_ptr<QVScope> region = scopeOfType(QVScopeTypeStartEnd);
    const std::shared_ptr<QVScope> plain = scopeOfType(QVScopeTypeMatch);
    const QVScopeMatchReference parent = QVScopeMatch::initWithScope(region.get(), *pool);
    const AssertionRecorder assertions;
};

QVParseSymbol *symbolAt(int &place) { return reinterpret_cast<QVParseSymbol *>(&place); }

} // namespace

// Construction

TEST(QVScopeMatch, CanNotBeMadeWithoutAScope) {
    try {
        static_cast<void>(QVScopeMatch::init());
        FAIL() << "no exception";
    } catch (const NSException &exception) {
        EXPECT_EQ(exception.reason(), u"Must be initialized using -initWithScope:");
    }
}

TEST(QVScopeMatch, APlainMatchIsOneSmallPiece) {
    for (const QVScopeType type : {QVScopeTypeUnknown, QVScopeTypeWhitespace, QVScopeTypeNewline,
                                   QVScopeTypeMatch, QVScopeTypeCutoff}) {
        const auto pool = QVMatchPool::create();
        const auto scope = scopeOfType(type);
        const auto match = QVScopeMatch::initWithScope(scope.get(), *pool);
        EXPECT_EQ(pool->livePieces(), 1u);
        EXPECT_LE(QVScopeMatch::bytesForScope(scope.get()), 80u);
        EXPECT_FALSE(match->hasCaptures() || match->hasSubmatches() || match->hasSymbol());
    }
}

TEST(QVScopeMatch, EachOfThreeRecordsHasTheSizeOfItsFields) {
    const std::size_t node = QVScopeMatch::bytesForScope(scopeOfType(QVScopeTypeMatch).get());
    const auto withCaptures = scopeOfType(QVScopeTypeMatch);
    withCaptures->setCaptures({captureOfGroup(1)});
    const auto withEndCaptures = scopeOfType(QVScopeTypeMatch);
    withEndCaptures->setEndCaptures({captureOfGroup(1)});
    const auto regionWithCaptures = scopeOfType(QVScopeTypeStartEnd);
    regionWithCaptures->setCaptures({captureOfGroup(1)});
    // A pointer; that, a range, an array and five pointers; that and one more.
    EXPECT_EQ(QVScopeMatch::bytesForScope(withCaptures.get()), node + 8);
    EXPECT_EQ(QVScopeMatch::bytesForScope(withEndCaptures.get()), node + 8);
    EXPECT_EQ(QVScopeMatch::bytesForScope(scopeOfType(QVScopeTypeStartEnd).get()), node + 88);
    EXPECT_EQ(QVScopeMatch::bytesForScope(regionWithCaptures.get()), node + 88);
    EXPECT_EQ(QVScopeMatch::bytesForScope(scopeOfType(QVScopeTypeRoot).get()), node + 88);
    EXPECT_EQ(QVScopeMatch::bytesForScope(scopeOfType(QVScopeTypeMatch, u"comment").get()), node + 96);
    EXPECT_EQ(QVScopeMatch::bytesForScope(scopeOfType(QVScopeTypeStartEnd, u"comment").get()), node + 96);
}

TEST(QVScopeMatch, AnEndOfARegionIsNoContainerButHasCaptures) {
    const auto pool = QVMatchPool::create();
    const auto region = scopeOfType(QVScopeTypeStartEnd, u"comment");
    region->setEndCaptures({captureOfGroup(1)});
    const auto end = QVScopeMatch::endWithScope(region.get(), {7, 2}, *pool);
    EXPECT_TRUE(end->isEnd());
    EXPECT_EQ(end->scope(), region.get());
    EXPECT_EQ(end->range(), (NSRange{7, 2}));
    EXPECT_TRUE(end->hasCaptures());
    EXPECT_FALSE(end->hasSubmatches());
    EXPECT_FALSE(end->hasSymbol());
    EXPECT_EQ(end->endRange(), NSNotFoundRange);
}

TEST(QVScopeMatch, APlainMatchHasItsPlaceAndNothingElse) {
    const auto pool = QVMatchPool::create();
    const auto scope = scopeOfType(QVScopeTypeMatch);
    const auto match = QVScopeMatch::plainWithScope(scope.get(), {3, 4}, *pool);
    EXPECT_EQ(match->scope(), scope.get());
    EXPECT_EQ(match->range(), (NSRange{3, 4}));
    EXPECT_FALSE(match->isStart() || match->isEnd() || match->isInserted() || match->skipForBumping());
    EXPECT_FALSE(match->hasCaptures() || match->hasSubmatches() || match->hasSymbol());
    EXPECT_EQ(match->anchoredMatchIdx(), NSUInteger(NSNotFound));
    EXPECT_EQ(match->parentMatch(), nullptr);
}

TEST(QVScopeMatch, ARecordIsInThePieceOfItsMatch) {
    const auto pool = QVMatchPool::create();
    const auto region = scopeOfType(QVScopeTypeStartEnd, u"comment");
    const auto match = QVScopeMatch::initWithScope(region.get(), *pool);
    EXPECT_EQ(pool->livePieces(), 1u);
}

TEST(QVScopeMatch, TheScopeDecidesWhatAMatchCanHold) {
    const auto flags = [](const std::shared_ptr<QVScope> &scope) {
        const auto match = QVScopeMatch::initWithScope(scope.get());
        return std::string(match->hasCaptures() ? "c" : "") + (match->hasSubmatches() ? "s" : "") +
               (match->hasSymbol() ? "y" : "");
    };
    EXPECT_EQ(flags(scopeOfType(QVScopeTypeMatch)), "");
    EXPECT_EQ(flags(scopeOfType(QVScopeTypeRoot)), "s");
    EXPECT_EQ(flags(scopeOfType(QVScopeTypeStartEnd)), "s");
    EXPECT_EQ(flags(scopeOfType(QVScopeTypeMatch, u"comment.line")), "y");
    EXPECT_EQ(flags(scopeOfType(QVScopeTypeMatch, u"string")), "");
    const auto scope = scopeOfType(QVScopeTypeStartEnd);
    scope->setEndCaptures({captureOfGroup(1)});
    auto options = std::make_shared<QVScopeSymbolOptions>();
    scope->setSymbolOptions(options);
    options->setSymbolType(0);
    EXPECT_EQ(flags(scope), "cs");
    options->setSymbolType(3);
    EXPECT_EQ(flags(scope), "csy");
}

TEST(QVScopeMatch, AnswersForItsScope) {
    const auto scope = scopeOfType(QVScopeTypeMatch, u"keyword.control");
    const auto match = QVScopeMatch::initWithScope(scope.get());
    EXPECT_EQ(match->scope(), scope.get());
    EXPECT_EQ(match->matchedOn(), scope.get());
    EXPECT_EQ(match->selector(), scope->selector());
    EXPECT_EQ(match->lexicalClass(), QVLexicalClassKeyword.string());
    EXPECT_EQ(match->asScopeMatch(), match.get());
}

TEST(QVScopeMatch, MarksAreKeptEachByItself) {
    const auto scope = scopeOfType(QVScopeTypeMatch);
    const auto match = QVScopeMatch::initWithScope(scope.get());
    EXPECT_FALSE(match->isStart() || match->isEnd() || match->skipForBumping() || match->isInserted());
    match->setStart(true);
    EXPECT_TRUE(match->isStart());
    EXPECT_FALSE(match->isEnd() || match->skipForBumping() || match->isInserted());
    match->setStart(false);
    match->setEnd(true);
    EXPECT_TRUE(match->isEnd());
    EXPECT_FALSE(match->isStart() || match->skipForBumping() || match->isInserted());
    match->setEnd(false);
    match->setSkipForBumping(true);
    EXPECT_TRUE(match->skipForBumping());
    EXPECT_FALSE(match->isStart() || match->isEnd() || match->isInserted());
    match->setSkipForBumping(false);
    match->setInserted(true);
    EXPECT_TRUE(match->isInserted());
    EXPECT_FALSE(match->isStart() || match->isEnd() || match->skipForBumping());
}

TEST(QVScopeMatch, TheAnchoredIndexIsNotFoundUntilSet) {
    const auto scope = scopeOfType(QVScopeTypeMatch);
    const auto match = QVScopeMatch::initWithScope(scope.get());
    EXPECT_EQ(match->anchoredMatchIdx(), NSNotFound);
    match->setAnchoredMatchIdx(0);
    EXPECT_EQ(match->anchoredMatchIdx(), 0u);
    match->setAnchoredMatchIdx(70'000);
    EXPECT_EQ(match->anchoredMatchIdx(), 70'000u);
    match->setAnchoredMatchIdx(NSNotFound);
    EXPECT_EQ(match->anchoredMatchIdx(), NSNotFound);
}

// End range

TEST(QVScopeMatch, AnEndRangeNeedsAContainer) {
    // A comment of one expression has a record large enough, and is no container all the same.
    for (const char16_t *name : {u"plain", u"comment"}) {
        const auto scope = scopeOfType(QVScopeTypeMatch, name);
        const auto match = QVScopeMatch::initWithScope(scope.get());
        const AssertionRecorder assertions;
        match->setEndRange({5, 1});
        EXPECT_THAT(assertions.messages(),
                    ElementsAre(u"Attempt to set an end range on a match that does not support submatches"));
        EXPECT_EQ(match->endRange(), NSNotFoundRange);
        EXPECT_EQ(QVScopeMatch::directEndRange(match.get()), NSNotFoundRange);
    }
}

TEST(QVScopeMatch, AnEndRangeStandsBehindTheRange) {
    const auto scope = scopeOfType(QVScopeTypeStartEnd);
    const auto match = QVScopeMatch::initWithScope(scope.get());
    match->setRange({3, 2});
    const AssertionRecorder assertions;
    match->setEndRange({5, 0});
    match->setEndRange({9, 2});
    EXPECT_EQ(match->endRange(), (NSRange{9, 2}));
    match->setEndRange(NSNotFoundRange);
    EXPECT_EQ(match->endRange(), NSNotFoundRange);
    EXPECT_THAT(assertions.messages(), IsEmpty());
    match->setEndRange({4, 0});
    QVScopeMatch::setDirectEndRange(match.get(), {0, 1});
    EXPECT_THAT(assertions.messages(), ElementsAre(u"End range is within or before bounds of start range",
                                                   u"End range is within or before bounds of start range"));
}

TEST(QVScopeMatch, DirectOperationsTolerateNull) {
    const AssertionRecorder assertions;
    EXPECT_EQ(QVScopeMatch::directEndRange(nullptr), NSNotFoundRange);
    QVScopeMatch::setDirectEndRange(nullptr, {1, 1});
    EXPECT_EQ(QVScopeMatch::directFirstChild(nullptr), nullptr);
    EXPECT_EQ(QVScopeMatch::directLastChild(nullptr), nullptr);
    EXPECT_EQ(QVScopeMatch::directNextMatch(nullptr), nullptr);
    EXPECT_EQ(QVScopeMatch::directSubmatchesCount(nullptr), 0u);
    EXPECT_THAT(assertions.messages(), IsEmpty());
}

// Captures and symbols

TEST(QVScopeMatch, CapturesNeedAScopeWithCaptures) {
    const auto capture = captureOfGroup(1);
    const auto captures = [&] {
        auto list = std::make_unique<QVCaptureMatchArray>();
        list->push_back(QVCaptureMatch::initWithCapture(capture.get()));
        return list;
    };
    // One without a record, one whose record has room for captures, but not for this purpose.
    for (const QVScopeType type : {QVScopeTypeMatch, QVScopeTypeStartEnd}) {
        const auto scope = scopeOfType(type);
        const auto match = QVScopeMatch::initWithScope(scope.get());
        const AssertionRecorder assertions;
        match->setCaptureMatches(nullptr);
        EXPECT_THAT(assertions.messages(), IsEmpty());
        match->setCaptureMatches(captures());
        EXPECT_THAT(assertions.messages(),
                    ElementsAre(u"Attempt to modify capture matches on a match that does not support them."));
        EXPECT_EQ(match->captureMatches(), nullptr);
    }
    const auto scope = scopeOfType(QVScopeTypeMatch);
    scope->setCaptures({capture});
    const auto match = QVScopeMatch::initWithScope(scope.get());
    match->setCaptureMatches(captures());
    ASSERT_NE(match->captureMatches(), nullptr);
    EXPECT_EQ(match->captureMatches()->size(), 1u);
    match->setCaptureMatches(nullptr);
    EXPECT_EQ(match->captureMatches(), nullptr);
}

TEST(QVScopeMatch, EndCapturesNeedAContainer) {
    const auto capture = captureOfGroup(1);
    const auto captures = [&] {
        auto list = std::make_unique<QVCaptureMatchArray>();
        list->push_back(QVCaptureMatch::initWithCapture(capture.get()));
        return list;
    };
    const auto comment = scopeOfType(QVScopeTypeMatch, u"comment");
    const auto match = QVScopeMatch::initWithScope(comment.get());
    const AssertionRecorder assertions;
    match->setEndCaptureMatches(nullptr);
    EXPECT_THAT(assertions.messages(), IsEmpty());
    match->setEndCaptureMatches(captures());
    EXPECT_THAT(assertions.messages(),
                ElementsAre(u"Attempt to modify end capture matches on a match that does not support them."));
    EXPECT_EQ(match->endCaptureMatches(), nullptr);
    const auto region = scopeOfType(QVScopeTypeStartEnd);
    const auto container = QVScopeMatch::initWithScope(region.get());
    container->setEndCaptureMatches(captures());
    ASSERT_NE(container->endCaptureMatches(), nullptr);
    EXPECT_EQ(container->endCaptureMatches()->size(), 1u);
    EXPECT_EQ(assertions.messages().size(), 1u);
}

TEST(QVScopeMatch, TakingCapturesLeavesNoneBehind) {
    const auto scope = scopeOfType(QVScopeTypeMatch);
    const auto capture = captureOfGroup(1);
    scope->setCaptures({capture});
    const auto match = QVScopeMatch::initWithScope(scope.get());
    auto list = std::make_unique<QVCaptureMatchArray>();
    list->push_back(QVCaptureMatch::initWithCapture(capture.get()));
    const auto *const address = list.get();
    match->setCaptureMatches(std::move(list));
    EXPECT_EQ(match->takeCaptureMatches().get(), address);
    EXPECT_EQ(match->captureMatches(), nullptr);
    EXPECT_EQ(match->takeCaptureMatches(), nullptr);
    const auto plain = scopeOfType(QVScopeTypeMatch);
    EXPECT_EQ(QVScopeMatch::initWithScope(plain.get())->takeCaptureMatches(), nullptr);
}

TEST(QVScopeMatch, CapturesThatOutliveTheirMatchLoseTheirParent) {
    const auto scope = scopeOfType(QVScopeTypeStartEnd);
    const auto capture = captureOfGroup(1);
    scope->setCaptures({capture});
    const auto start = QVCaptureMatch::initWithCapture(capture.get());
    const auto end = QVCaptureMatch::initWithCapture(capture.get());
    {
        const auto match = QVScopeMatch::initWithScope(scope.get());
        start->setParentMatch(match.get());
        end->setParentMatch(match.get());
        match->setCaptureMatches(std::make_unique<QVCaptureMatchArray>(QVCaptureMatchArray{start}));
        match->setEndCaptureMatches(std::make_unique<QVCaptureMatchArray>(QVCaptureMatchArray{end}));
    }
    EXPECT_EQ(start->parentMatch(), nullptr);
    EXPECT_EQ(end->parentMatch(), nullptr);
}

TEST(QVScopeMatch, ASymbolNeedsAScopeThatMakesSymbols) {
    int place = 0;
    // A region's record has no room for it, a comment's has.
    for (const QVScopeType type : {QVScopeTypeMatch, QVScopeTypeStartEnd}) {
        const auto scope = scopeOfType(type);
        const auto match = QVScopeMatch::initWithScope(scope.get());
        const AssertionRecorder assertions;
        match->setSymbol(nullptr);
        EXPECT_THAT(assertions.messages(), IsEmpty());
        match->setSymbol(symbolAt(place));
        EXPECT_THAT(assertions.messages(),
                    ElementsAre(u"Attempt to modify symbol on a match that does not support them."));
        EXPECT_EQ(match->symbol(), nullptr);
    }
    const auto comment = scopeOfType(QVScopeTypeMatch, u"comment");
    const auto match = QVScopeMatch::initWithScope(comment.get());
    EXPECT_EQ(match->symbol(), nullptr);
    match->setSymbol(symbolAt(place));
    EXPECT_EQ(match->symbol(), symbolAt(place));
    EXPECT_EQ(match->endRange(), NSNotFoundRange);
    EXPECT_EQ(match->firstChild(), nullptr);
    EXPECT_EQ(match->lastChild(), nullptr);
    EXPECT_FALSE(match->submatches());
    EXPECT_EQ(match->endCaptureMatches(), nullptr);
    match->setSymbol(nullptr);
    EXPECT_EQ(match->symbol(), nullptr);
}

// Navigation of its own

TEST(QVScopeMatch, TheDirectNextMatchIsTheNextMatch) {
    const Tree tree;
    for (QVMatch *match = tree.root.get(); match != nullptr; match = match->nextMatch())
        EXPECT_EQ(QVScopeMatch::directNextMatch(match->asScopeMatch()), match->nextMatch());
}

TEST(QVScopeMatch, TheNextMatchIncludingCapturesPrefersCaptures) {
    Tree tree;
    QVScopeMatch *const a = tree[u"a"];
    EXPECT_EQ(Tree::name(a->nextMatchIncludingCaptures()), "a1");
    a->takeCaptureMatches();
    EXPECT_EQ(Tree::name(a->nextMatchIncludingCaptures()), "a9");
    a->setEndCaptureMatches(std::make_unique<QVCaptureMatchArray>());
    EXPECT_EQ(Tree::name(a->nextMatchIncludingCaptures()), "b");
    EXPECT_EQ(Tree::name(tree[u"g"]->nextMatchIncludingCaptures()), "-");
}

// Children

TEST_F(Submatches, AreNullUntilTheFirstOneComes) {
    EXPECT_FALSE(parent->submatches());
    EXPECT_THAT(children(), IsEmpty());
    fill({1});
    EXPECT_TRUE(parent->submatches());
    EXPECT_THAT(children(), ElementsAre(1));
}

TEST_F(Submatches, AreInsertedInFrontBetweenAndBehind) {
    fill({5});
    parent->insertSubmatch(make(1), 0);
    EXPECT_THAT(children(), ElementsAre(1, 5));
    parent->insertSubmatch(make(3), 1);
    EXPECT_THAT(children(), ElementsAre(1, 3, 5));
    parent->insertSubmatch(make(7), 3);
    EXPECT_THAT(children(), ElementsAre(1, 3, 5, 7));
    EXPECT_EQ(parent->submatches()[2]->range().location, 5u);
    EXPECT_THAT(assertions.messages(), IsEmpty());
}

TEST_F(Submatches, BehindTheLastIndexIsBehindTheLastOne) {
    fill({1});
    parent->insertSubmatch(make(2), 99);
    EXPECT_THAT(children(), ElementsAre(1, 2));
}

TEST_F(Submatches, StandNotBeforeTheirParent) {
    parent->setRange({5, 1});
    fill({5});
    EXPECT_THAT(assertions.messages(), IsEmpty());
    parent->insertSubmatch(make(4), 0);
    EXPECT_THAT(assertions.messages(), ElementsAre(u"Attempt to insert a submatch that precedes the parent"));
    // A list of them is not checked.
    parent->insertSubmatches({make(3)}, {0});
    EXPECT_EQ(assertions.messages().size(), 1u);
    EXPECT_THAT(children(), ElementsAre(3, 4, 5));
}

TEST_F(Submatches, OfARootMayStandAnywhere) {
    const auto rootScope = scopeOfType(QVScopeTypeRoot);
    const auto root = QVScopeMatch::initWithScope(rootScope.get(), *pool);
    root->insertSubmatch(make(0), 0);
    root->insertSubmatch(make(0), 0);
    EXPECT_EQ(root->submatches().count(), 2u);
    EXPECT_THAT(assertions.messages(), IsEmpty());
}

TEST_F(Submatches, OfAListEndUpAtTheirIndexes) {
    fill({10, 20});
    parent->insertSubmatches({make(5), make(15), make(25)}, {0, 2, 4});
    EXPECT_THAT(children(), ElementsAre(5, 10, 15, 20, 25));
    parent->insertSubmatches({make(26), make(27)}, {5, 6});
    EXPECT_THAT(children(), ElementsAre(5, 10, 15, 20, 25, 26, 27));
    parent->insertSubmatches({}, {});
    EXPECT_EQ(parent->submatches().count(), 7u);
}

TEST_F(Submatches, AreReplacedAsAWhole) {
    fill({1, 2});
    parent->setSubmatches(std::make_unique<QVScopeMatchArray>(QVScopeMatchArray{make(7), make(8), make(9)}));
    EXPECT_THAT(children(), ElementsAre(7, 8, 9));
    // The parent and three children.
    EXPECT_EQ(pool->livePieces(), 4u);
    parent->setSubmatches(std::make_unique<QVScopeMatchArray>());
    EXPECT_THAT(children(), IsEmpty());
    EXPECT_TRUE(parent->submatches());
    parent->setSubmatches(nullptr);
    EXPECT_FALSE(parent->submatches());
    EXPECT_THAT(children(), IsEmpty());
    EXPECT_THAT(assertions.messages(), IsEmpty());
}

TEST_F(Submatches, ReplacingDoesNotTouchTheOuterLinksOfTheEnds) {
    // Freshly built matches have none; whoever hands over others keeps what they had.
    const auto stranger = make(0);
    const auto first = make(1);
    const auto last = make(2);
    last->setNextSibling(stranger.get());
    parent->setSubmatches(std::make_unique<QVScopeMatchArray>(QVScopeMatchArray{first, last}));
    EXPECT_EQ(first->previousSibling(), nullptr);
    EXPECT_EQ(first->nextSibling(), last.get());
    EXPECT_EQ(last->previousSibling(), first.get());
    EXPECT_EQ(last->nextSibling(), stranger.get());
}

TEST_F(Submatches, AreRemovedAndUnlinked) {
    fill({1, 2, 3});
    const QVScopeMatchReference second = parent->submatches()[1];
    parent->removeSubmatchAtIndex(1);
    EXPECT_THAT(children(), ElementsAre(1, 3));
    EXPECT_EQ(second->parentMatch(), nullptr);
    EXPECT_EQ(second->nextSibling(), nullptr);
    EXPECT_EQ(second->previousSibling(), nullptr);
    parent->removeSubmatchAtIndex(0);
    EXPECT_THAT(children(), ElementsAre(3));
    parent->removeSubmatchAtIndex(0);
    EXPECT_THAT(children(), IsEmpty());
    EXPECT_EQ(parent->firstChild(), nullptr);
    EXPECT_EQ(parent->lastChild(), nullptr);
}

TEST_F(Submatches, OfAnIndexSetAreRemovedTogether) {
    fill({1, 2, 3, 4, 5, 6});
    parent->removeSubmatchesAtIndexes({1, 2, 4});
    EXPECT_THAT(children(), ElementsAre(1, 4, 6));
    parent->removeSubmatchesAtIndexes({0, 2});
    EXPECT_THAT(children(), ElementsAre(4));
    parent->removeSubmatchesAtIndexes({});
    EXPECT_THAT(children(), ElementsAre(4));
    parent->removeSubmatchesAtIndexes({0});
    EXPECT_THAT(children(), IsEmpty());
    EXPECT_EQ(pool->livePieces(), 1u);
}

TEST_F(Submatches, OfAnIndexThatIsTooHighThrow) {
    EXPECT_THROW(parent->removeSubmatchAtIndex(0), NSException);
    fill({1, 2});
    EXPECT_THROW(parent->removeSubmatchAtIndex(2), NSException);
    EXPECT_THROW(parent->removeSubmatchesAtIndexes({0, 2}), NSException);
    EXPECT_THAT(children(), ElementsAre(1, 2));
}

TEST_F(Submatches, NeedAContainer) {
    const NSString message = u"Attempt to modify submatches on a match that does not support them.";
    const auto leaf = make(1);
    leaf->setSubmatches(nullptr);
    EXPECT_THAT(assertions.messages(), IsEmpty());
    leaf->setSubmatches(std::make_unique<QVScopeMatchArray>());
    EXPECT_THAT(assertions.messages(), ElementsAre(message));
    leaf->insertSubmatch(make(2), 0);
    leaf->insertSubmatches({make(2)}, {0});
    leaf->removeSubmatchAtIndex(0);
    leaf->removeSubmatchesAtIndexes({0});
    EXPECT_THAT(assertions.messages(), ElementsAre(message, message, message, message, message));
    EXPECT_FALSE(leaf->submatches());
    EXPECT_EQ(leaf->firstChild(), nullptr);
}

TEST_F(Submatches, AreFoundByTheirLocation) {
    fill({1, 2, 2, 2, 5});
    parent->insertSubmatch(make(NSNotFound), 3);
    for (NSUInteger index = 0; index < 6; ++index)
        EXPECT_EQ(parent->indexOfSubmatch(parent->submatches()[index]), index);
    const auto stranger = make(2);
    EXPECT_EQ(parent->indexOfSubmatch(stranger.get()), NSNotFound);
    EXPECT_EQ(stranger->indexOfSubmatch(parent.get()), NSNotFound);
}

TEST_F(Submatches, ThatSomebodyHoldsOutliveTheirParent) {
    QVScopeMatchReference kept = make(4);
    {
        const auto other = QVScopeMatch::initWithScope(region.get(), *pool);
        other->insertSubmatch(make(3), 0);
        other->insertSubmatch(kept, 1);
    }
    EXPECT_EQ(kept->range(), (NSRange{4, 1}));
    // The fixture's parent, and the one that was kept.
    EXPECT_EQ(pool->livePieces(), 2u);
}

// Values beside

TEST(QVScopeMatch, ValuesBesideAreAbsentUntilSet) {
    const auto pool = QVMatchPool::create();
    const auto scope = scopeOfType(QVScopeTypeMatch);
    const auto match = QVScopeMatch::initWithScope(scope.get(), *pool);
    EXPECT_EQ(match->textCheckingResult(), nullptr);
    EXPECT_EQ(match->subsyntax(), nullptr);
    match->setTextCheckingResult(nullptr);
    match->setSubsyntax(nullptr);
    EXPECT_EQ(pool->existingAssociationForMatch(match.get()), nullptr);
    const auto result = std::make_shared<QVRegularExpressionResult>();
    match->setTextCheckingResult(result);
    EXPECT_EQ(match->textCheckingResult(), result);
    EXPECT_EQ(match->subsyntax(), nullptr);
    // Only the sharing of the syntax matters here.
    const auto place = std::make_shared<int>(0);
    const std::shared_ptr<QVSyntax> syntax(place, reinterpret_cast<QVSyntax *>(place.get()));
    match->setSubsyntax(syntax);
    EXPECT_EQ(match->subsyntax(), syntax);
    EXPECT_EQ(match->textCheckingResult(), result);
    match->setTextCheckingResult(nullptr);
    EXPECT_EQ(match->textCheckingResult(), nullptr);
    EXPECT_EQ(match->subsyntax(), syntax);
    EXPECT_EQ(pool->livePieces(), 1u);
}
