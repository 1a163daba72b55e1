#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Matches/QVScopeMatch.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Selectors/QVSelectorCombinator.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

using Captures = std::map<NSString, NSString>;

/// A match tree over a text: regions and captures are added at the places where words stand.
class MatchTree {
public:
    explicit MatchTree(const char16_t *source) : _source(source) { _root = matchNamed(u"root", u""); }

    QVScopeMatch *root() const { return _root.get(); }
    const NSString &source() const { return _source; }

    /// Adds a region, or a place of no length for an empty word, as the last child.
    QVScopeMatch *add(QVScopeMatch *parent, const char16_t *name, const char16_t *word,
                      const char16_t *captureName = nullptr) {
        const QVScopeMatchReference match = matchNamed(name, word, captureName);
        parent->insertSubmatch(match, parent->submatches().count());
        return match.get();
    }

    /// Gives a region that was made for it the capture at a word.
    QVCaptureMatch *capture(QVScopeMatch *match, const char16_t *word) {
        auto captured = QVCaptureMatch::initWithCapture(match->scope()->captures().front().get());
        captured->setRange(_source.rangeOfString(word));
        captured->setParentMatch(match);
        auto captures = std::make_unique<QVCaptureMatchArray>();
        captures->push_back(captured);
        match->setCaptureMatches(std::move(captures));
        return captured.get();
    }

private:
    QVScopeMatchReference matchNamed(const char16_t *name, const char16_t *word,
                                     const char16_t *captureName = nullptr) {
        auto scope = QVScope::scopeWithType(QVScopeTypeStartEnd, nullptr, name, nullptr, nullptr);
        if (captureName) {
            auto capture = std::make_shared<QVCapture>();
            capture->setName(captureName);
            scope->setCaptures({capture});
        }
        _scopes.push_back(scope);
        QVScopeMatchReference match = QVScopeMatch::initWithScope(scope.get());
        match->setRange(*word ? _source.rangeOfString(word) : NSRange{0, 0});
        return match;
    }

    NSString _source;
    std::vector<std::shared_ptr<QVScope>> _scopes;
    QVScopeMatchReference _root;
};

/// Evaluates a selector on the whole tree and reads the captures of one of the matches that it found.
Captures capturesOf(const MatchTree &tree, const char16_t *selector, QVMatch *match) {
    const auto head = QVSelectorCombinator::selectorCombinatorsFromString(NSString(selector), nullptr).at(0);
    const auto found = head->evaluateWithArray({tree.root()}, true);
    EXPECT_NE(std::find(found.begin(), found.end(), match), found.end())
        << "the selector found another match";
    return head->capturesStartingAtMatch(match, tree.source());
}

} // namespace

class QVSelectorCombinatorCaptures : public testing::Test {
protected:
    // draw(from, to) { line box } end
    MatchTree tree{u"draw(from, to) { line box } end"};
    QVScopeMatch *function = tree.add(tree.root(), u"function", u"draw", u"function.name");
    QVScopeMatch *first = tree.add(function, u"argument.first", u"from");
    QVScopeMatch *second = tree.add(function, u"argument.second", u"to");
    QVScopeMatch *body = tree.add(function, u"body", u"{");
    QVScopeMatch *line = tree.add(body, u"call.line", u"line");
    QVScopeMatch *box = tree.add(body, u"call.box", u"box");
    QVScopeMatch *end = tree.add(tree.root(), u"end", u"end");
};

TEST_F(QVSelectorCombinatorCaptures, AChainOfOneStepHasNone) {
    EXPECT_EQ(capturesOf(tree, u"call.line", line), Captures());
}

TEST_F(QVSelectorCombinatorCaptures, NoMatchHasNone) {
    const auto head = QVSelectorCombinator::selectorCombinatorsFromString(u"a:capture(x)", nullptr).at(0);
    EXPECT_EQ(head->capturesStartingAtMatch(nullptr, tree.source()), Captures());
}

TEST_F(QVSelectorCombinatorCaptures, ACaptureAtTheEndNamesTheMatchItself) {
    EXPECT_EQ(capturesOf(tree, u"call.line:capture(what)", line), (Captures{{u"what", u"line"}}));
}

TEST_F(QVSelectorCombinatorCaptures, ACaptureBeforeADescendantNamesTheAncestor) {
    EXPECT_EQ(capturesOf(tree, u"function:capture(name) call", box), (Captures{{u"name", u"draw"}}));
}

TEST_F(QVSelectorCombinatorCaptures, CapturesAreTakenAllTheWayBack) {
    EXPECT_EQ(capturesOf(tree, u"function:capture(f) > body:capture(b) > call:capture(c)", box),
              (Captures{{u"f", u"draw"}, {u"b", u"{"}, {u"c", u"box"}}));
}

TEST_F(QVSelectorCombinatorCaptures, AnIndirectlyAdjacentStepGoesBackToItsSource) {
    EXPECT_EQ(capturesOf(tree, u"argument.first:capture(a) ~ body:capture(b)", body),
              (Captures{{u"a", u"from"}, {u"b", u"{"}}));
}

TEST_F(QVSelectorCombinatorCaptures, ADirectlyAdjacentStepGoesBackToItsSource) {
    EXPECT_EQ(capturesOf(tree, u"argument.second:capture(a) + body call", line), (Captures{{u"a", u"to"}}));
}

TEST_F(QVSelectorCombinatorCaptures, ASourceDeeperThanWhatFollowsItIsFoundToo) {
    // What follows the last child of a region is what follows the region.
    EXPECT_EQ(capturesOf(tree, u"call.box:capture(c) ~ end", end), (Captures{{u"c", u"box"}}));
}

TEST_F(QVSelectorCombinatorCaptures, StepsThatOnlySiftKeepThePlace) {
    EXPECT_EQ(capturesOf(tree, u"function:capture(f):not(a):has-child(body) call", line),
              (Captures{{u"f", u"draw"}}));
}

TEST_F(QVSelectorCombinatorCaptures, ACaptureBehindAHasChildStepNamesTheChild) {
    EXPECT_EQ(capturesOf(tree, u"function:has-child(argument.second):capture(a)", function),
              (Captures{{u"a", u"to"}}));
}

TEST_F(QVSelectorCombinatorCaptures, TheWayBackGoesOnFromTheContainerOfANamedChild) {
    EXPECT_EQ(capturesOf(tree, u"function:capture(f) > body:has-child(call.box):capture(c)", body),
              (Captures{{u"f", u"draw"}, {u"c", u"box"}}));
}

TEST_F(QVSelectorCombinatorCaptures, ANamedChildMayBeACaptureOfTheRegion) {
    tree.capture(function, u"draw(");
    EXPECT_EQ(capturesOf(tree, u"function:has-child(function.name):capture(n)", function),
              (Captures{{u"n", u"draw("}}));
}

TEST_F(QVSelectorCombinatorCaptures, ANamedChildIsFoundBehindTheRegionsCaptures) {
    tree.capture(function, u"draw(");
    EXPECT_EQ(capturesOf(tree, u"function:has-child(argument):capture(n)", function),
              (Captures{{u"n", u"from"}}));
}

TEST_F(QVSelectorCombinatorCaptures, ACaptureMatchGoesBackToItsRegion) {
    QVCaptureMatch *name = tree.capture(function, u"draw(");
    EXPECT_EQ(capturesOf(tree, u"function:capture(f) > function.name", name), (Captures{{u"f", u"draw"}}));
}

TEST_F(QVSelectorCombinatorCaptures, TheFirstOfTwoCapturesOfOneNameWins) {
    // The way leads back, so the one that stands first is stored last.
    EXPECT_EQ(capturesOf(tree, u"function:capture(x) call:capture(x)", line), (Captures{{u"x", u"draw"}}));
}

TEST_F(QVSelectorCombinatorCaptures, APlaceWithoutLengthIsNotCaptured) {
    QVScopeMatch *empty = tree.add(function, u"empty", u"");
    EXPECT_EQ(capturesOf(tree, u"empty:capture(e)", empty), Captures());
    EXPECT_EQ(capturesOf(tree, u"function:has-child(empty):capture(e)", function), Captures());
}

TEST_F(QVSelectorCombinatorCaptures, AMatchOutsideOfTheSourceIsNotCaptured) {
    line->setRange({30, 2});
    EXPECT_EQ(capturesOf(tree, u"call.line:capture(c)", line), Captures());
    line->setRange(NSNotFoundRange);
    EXPECT_EQ(capturesOf(tree, u"call.line:capture(c)", line), Captures());
    line->setRange({1, NSNotFound});
    EXPECT_EQ(capturesOf(tree, u"call.line:capture(c)", line), Captures());
}

TEST_F(QVSelectorCombinatorCaptures, TheSourceMayStandInTwoPieces) {
    const auto head =
        QVSelectorCombinator::selectorCombinatorsFromString(u"call.line:capture(c)", nullptr).at(0);
    head->evaluateWithArray({tree.root()}, true);
    const std::u16string_view text = tree.source();
    EXPECT_EQ(head->capturesStartingAtMatch(line, QVTextReader(text.substr(0, 19), text.substr(19))),
              (Captures{{u"c", u"line"}}));
}

TEST_F(QVSelectorCombinatorCaptures, AMatchThatTheChainDidNotFindGoesBackToTheTop) {
    tree.root()->setRange({0, 14});
    const auto head =
        QVSelectorCombinator::selectorCombinatorsFromString(u"end:capture(e) call", nullptr).at(0);
    EXPECT_TRUE(head->evaluateWithArray({tree.root()}, true).empty());
    EXPECT_EQ(head->capturesStartingAtMatch(line, tree.source()), (Captures{{u"e", u"draw(from, to)"}}));
}

TEST_F(QVSelectorCombinatorCaptures, AmongSiblingsAMatchThatTheChainDidNotFindGoesBackToTheFirst) {
    const auto head =
        QVSelectorCombinator::selectorCombinatorsFromString(u"end:capture(e) ~ call", nullptr).at(0);
    EXPECT_TRUE(head->evaluateWithArray({tree.root()}, true).empty());
    EXPECT_EQ(head->capturesStartingAtMatch(box, tree.source()), (Captures{{u"e", u"line"}}));
}

TEST_F(QVSelectorCombinatorCaptures, AHeadThatAsksForAChildKnowsNone) {
    EXPECT_EQ(capturesOf(tree, u":has-child(body):capture(b)", body), Captures());
}
