#include "Quorvane/Text/QVUndoTyping.h"

#include "Tests/Support/Recorders.h"
#include "Tests/Support/UndoFixtures.h"

#include <gtest/gtest.h>

using namespace quorvane;
using test::Ranges;
using Document = test::TypingDocument;

namespace {

NSString oldText(const QVUndoTyping &step, std::size_t index = 0) {
    const auto &string = *step.attributedStrings()[index];
    return string.string().substringWithRange({0, string.length()});
}

} // namespace

TEST(QVUndoTyping, TypingOnIsOneStep) {
    Document document(u"xy");
    document.select({{1, 0}});
    EXPECT_FALSE(document.type(u"a"));
    EXPECT_TRUE(document.type(u"b"));
    EXPECT_TRUE(document.type(u"cd"));
    EXPECT_EQ(document.text(), u"xabcdy");
    EXPECT_EQ(document.view->typing->replacementRanges(), (Ranges{{1, 4}}));
    EXPECT_EQ(document.view->typing->affectedRanges(), (Ranges{{1, 0}}));
    document.manager->undo();
    EXPECT_EQ(document.text(), u"xy");
    EXPECT_EQ(document.view->selection, (Ranges{{1, 0}}));
    EXPECT_FALSE(document.manager->canUndo());
    document.manager->redo();
    EXPECT_EQ(document.text(), u"xabcdy");
}

TEST(QVUndoTyping, UndoingEndsTheRunOfTyping) {
    Document document(u"xy");
    document.select({{1, 0}});
    document.type(u"a");
    document.manager->undo();
    EXPECT_EQ(document.view->calls.front(), "break");
    EXPECT_EQ(document.view->typing, nullptr);
    EXPECT_FALSE(document.type(u"b"));
    document.manager->undo();
    EXPECT_EQ(document.text(), u"xy");
}

TEST(QVUndoTyping, DeletingWhatWasTypedGoesOnInTheStep) {
    Document document(u"xy");
    document.select({{1, 0}});
    document.type(u"abc");
    EXPECT_TRUE(document.deleteBackward());
    EXPECT_EQ(document.view->typing->replacementRanges(), (Ranges{{1, 2}}));
    EXPECT_TRUE(document.deleteBackward(2));
    EXPECT_EQ(document.view->typing->replacementRanges(), (Ranges{{1, 0}}));
    EXPECT_EQ(document.text(), u"xy");
    EXPECT_TRUE(document.type(u"z"));
    EXPECT_EQ(document.view->typing->replacementRanges(), (Ranges{{1, 1}}));
    document.manager->undo();
    EXPECT_EQ(document.text(), u"xy");
    document.manager->redo();
    EXPECT_EQ(document.text(), u"xzy");
}

TEST(QVUndoTyping, DeletingFurtherThanWasTypedTakesTheOldTextIn) {
    Document document(u"one two");
    document.select({{7, 0}});
    document.type(u"ab");
    EXPECT_TRUE(document.deleteBackward());
    EXPECT_TRUE(document.deleteBackward());
    // Nothing typed remains from here on.
    EXPECT_TRUE(document.deleteBackward());
    EXPECT_EQ(document.view->typing->affectedRanges(), (Ranges{{6, 1}}));
    EXPECT_EQ(document.view->typing->replacementRanges(), (Ranges{{6, 0}}));
    EXPECT_TRUE(document.deleteBackward(2));
    EXPECT_EQ(oldText(*document.view->typing), u"two");
    EXPECT_EQ(document.view->typing->affectedRanges(), (Ranges{{4, 3}}));
    EXPECT_EQ(document.view->typing->replacementRanges(), (Ranges{{4, 0}}));
    EXPECT_EQ(document.text(), u"one ");
    document.manager->undo();
    EXPECT_EQ(document.text(), u"one two");
    EXPECT_EQ(document.view->selection, (Ranges{{7, 0}}));
    document.manager->redo();
    EXPECT_EQ(document.text(), u"one ");
}

TEST(QVUndoTyping, ADeletionAcrossTheFrontOfWhatWasTypedTakesInTheOldTextAlone) {
    Document document(u"one two");
    document.select({{7, 0}});
    document.type(u"ab");
    EXPECT_TRUE(document.deleteBackward(4));
    EXPECT_EQ(document.text(), u"one t");
    EXPECT_EQ(oldText(*document.view->typing), u"wo");
    // By the two characters that were there before, not by the four that went: redoing would take the
    // others along, which nobody touched.
    EXPECT_EQ(document.view->typing->affectedRanges(), (Ranges{{5, 2}}));
    EXPECT_EQ(document.view->typing->replacementRanges(), (Ranges{{5, 0}}));
    document.manager->undo();
    EXPECT_EQ(document.text(), u"one two");
    document.manager->redo();
    EXPECT_EQ(document.text(), u"one t");
    document.manager->undo();
    EXPECT_EQ(document.text(), u"one two");
}

TEST(QVUndoTyping, TypingGoesOnBehindADeletionThatReachedBack) {
    Document document(u"one two");
    document.select({{7, 0}});
    document.type(u"ab");
    document.deleteBackward(4);
    EXPECT_TRUE(document.type(u"en"));
    EXPECT_EQ(document.text(), u"one ten");
    document.manager->undo();
    EXPECT_EQ(document.text(), u"one two");
    document.manager->redo();
    EXPECT_EQ(document.text(), u"one ten");
}

TEST(QVUndoTyping, TypingOverASelectionKeepsItsTextAndGoesOn) {
    Document document(u"one two");
    document.select({{4, 3}});
    EXPECT_FALSE(document.type(u"t"));
    EXPECT_TRUE(document.type(u"en"));
    EXPECT_EQ(oldText(*document.view->typing), u"two");
    EXPECT_EQ(document.view->typing->affectedRanges(), (Ranges{{4, 3}}));
    EXPECT_EQ(document.view->typing->replacementRanges(), (Ranges{{4, 3}}));
    document.manager->undo();
    EXPECT_EQ(document.text(), u"one two");
    EXPECT_EQ(document.view->selection, (Ranges{{4, 3}}));
}

TEST(QVUndoTyping, ReplacingTheEndOfWhatWasTypedGoesOnInTheStep) {
    Document document(u"xy");
    document.select({{1, 0}});
    document.type(u"abc");
    document.select({{2, 2}});
    EXPECT_TRUE(document.type(u"#"));
    EXPECT_EQ(document.text(), u"xa#y");
    EXPECT_EQ(document.view->typing->replacementRanges(), (Ranges{{1, 2}}));
    document.manager->undo();
    EXPECT_EQ(document.text(), u"xy");
}

TEST(QVUndoTyping, ReplacingTextInFrontOfWhatWasTypedIsAStepOfItsOwn) {
    Document document(u"one two");
    document.select({{7, 0}});
    document.type(u"ab");
    document.select({{4, 5}});
    // The step could not tell the old text apart from what was typed, and would lose it.
    EXPECT_FALSE(document.type(u"ten"));
    EXPECT_EQ(document.text(), u"one ten");
    document.manager->undo();
    EXPECT_EQ(document.text(), u"one twoab");
    document.manager->undo();
    EXPECT_EQ(document.text(), u"one two");
}

TEST(QVUndoTyping, SeveralCursorsGrowTogether) {
    Document document(u"a b c");
    document.select({{1, 0}, {3, 0}, {5, 0}});
    EXPECT_FALSE(document.type(u"x"));
    EXPECT_TRUE(document.type(u"yz"));
    EXPECT_EQ(document.text(), u"axyz bxyz cxyz");
    EXPECT_EQ(document.view->typing->replacementRanges(), (Ranges{{1, 3}, {6, 3}, {11, 3}}));
    EXPECT_TRUE(document.deleteBackward(2));
    EXPECT_EQ(document.text(), u"ax bx cx");
    EXPECT_EQ(document.view->typing->replacementRanges(), (Ranges{{1, 1}, {4, 1}, {7, 1}}));
    document.manager->undo();
    EXPECT_EQ(document.text(), u"a b c");
    EXPECT_EQ(document.view->selection, (Ranges{{1, 0}, {3, 0}, {5, 0}}));
    document.manager->redo();
    EXPECT_EQ(document.text(), u"ax bx cx");
}

TEST(QVUndoTyping, SeveralCursorsDeleteBackPastWhatTheyTyped) {
    Document document(u"abc def");
    document.select({{3, 0}, {7, 0}});
    document.type(u"#");
    EXPECT_TRUE(document.deleteBackward(2));
    EXPECT_EQ(document.text(), u"ab de");
    EXPECT_EQ(document.view->typing->affectedRanges(), (Ranges{{2, 1}, {6, 1}}));
    EXPECT_EQ(document.view->typing->replacementRanges(), (Ranges{{2, 0}, {5, 0}}));
    document.manager->undo();
    EXPECT_EQ(document.text(), u"abc def");
    document.manager->redo();
    EXPECT_EQ(document.text(), u"ab de");
}

TEST(QVUndoTyping, AnotherNumberOfCursorsEndsTheStep) {
    Document document(u"a b c");
    document.select({{1, 0}, {3, 0}});
    document.type(u"x");
    document.select({{2, 0}});
    EXPECT_FALSE(document.type(u"y"));
    document.select({{3, 0}, {5, 0}});
    EXPECT_FALSE(document.type(u"z"));
}

TEST(QVUndoTyping, ACursorThatWasMovedEndsTheStep) {
    Document document(u"one two");
    document.select({{3, 0}});
    document.type(u"ab");
    const auto step = document.view->typing;
    for (const NSUInteger location : {0u, 4u, 6u}) {
        EXPECT_FALSE(step->coalesceAffectedRanges({{location, 0}}, {{location, 1}}, {{location, 0}}));
        EXPECT_EQ(step->replacementRanges(), (Ranges{{3, 2}}));
    }
    EXPECT_TRUE(step->coalesceAffectedRanges({{5, 0}}, {{5, 1}}, {{5, 0}}));
}

TEST(QVUndoTyping, ASelectionThatLeavesTheAffectedRangeEndsTheStep) {
    Document document(u"one two");
    document.select({{3, 0}});
    document.type(u"ab");
    const auto step = document.view->typing;
    EXPECT_FALSE(step->coalesceAffectedRanges({{5, 0}}, {{5, 1}}, {{4, 0}}));
    EXPECT_FALSE(step->coalesceAffectedRanges({{5, 0}}, {{5, 1}}, {{5, 1}}));
    EXPECT_FALSE(step->coalesceAffectedRanges({{4, 1}}, {{4, 1}}, {{4, 2}}));
    EXPECT_TRUE(step->coalesceAffectedRanges({{4, 1}}, {{4, 1}}, {{4, 1}}));
}

TEST(QVUndoTyping, ANewTextInAnotherPlaceEndsTheStep) {
    Document document(u"one two");
    document.select({{3, 0}});
    document.type(u"ab");
    EXPECT_FALSE(document.view->typing->coalesceAffectedRanges({{5, 0}}, {{6, 1}}, {{5, 0}}));
}

TEST(QVUndoTyping, OneCursorThatDoesNotFitLeavesTheWholeStepAsItWas) {
    Document document(u"a b c");
    document.select({{1, 0}, {3, 0}});
    document.type(u"x");
    const auto step = document.view->typing;
    EXPECT_FALSE(step->coalesceAffectedRanges({{2, 0}, {4, 0}}, {{2, 1}, {5, 1}}, {{2, 0}, {4, 0}}));
    EXPECT_EQ(step->replacementRanges(), (Ranges{{1, 1}, {4, 1}}));
    EXPECT_EQ(step->affectedRanges(), (Ranges{{1, 0}, {3, 0}}));
    EXPECT_TRUE(step->coalesceAffectedRanges({{2, 0}, {5, 0}}, {{2, 1}, {6, 1}}, {{2, 0}, {5, 0}}));
}

TEST(QVUndoTyping, OtherNumbersOfRangesAreAssertedOrRefused) {
    Document document(u"a b c");
    document.select({{1, 0}});
    document.type(u"x");
    const auto step = document.view->typing;
    const test::AssertionRecorder assertions;
    EXPECT_FALSE(step->coalesceAffectedRanges({{2, 0}}, {{2, 1}, {3, 1}}, {{2, 0}}));
    EXPECT_FALSE(step->coalesceAffectedRanges({{2, 0}}, {{2, 1}}, {{2, 0}, {4, 0}}));
    EXPECT_EQ(assertions.messages(),
              (std::vector<NSString>{
                  u"Invalid parameter not satisfying: affectedRanges.count == replacementRanges.count"}));
}

TEST(QVUndoTyping, TheSelectionIsComparedInTheDocument) {
    Document document(u"one two");
    document.view->shift = 4;
    const auto step = QVUndoTyping::initWithAffectedRanges({{4, 0}}, {{4, 1}}, document.storage,
                                                           document.view, Ranges{{0, 0}}, document.manager);
    document.storage->replaceCharactersInRange({4, 0}, u"x");
    EXPECT_FALSE(step->coalesceAffectedRanges({{5, 0}}, {{5, 1}}, {{5, 0}}));
    EXPECT_TRUE(step->coalesceAffectedRanges({{5, 0}}, {{5, 1}}, {{1, 0}}));
}

TEST(QVUndoTyping, AStepWhoseStorageIsGoneTakesNothingIn) {
    Document document(u"one two");
    document.select({{3, 0}});
    document.type(u"ab");
    const auto step = document.view->typing;
    document.storage.reset();
    EXPECT_FALSE(step->coalesceAffectedRanges({{5, 0}}, {{5, 1}}, {{5, 0}}));
}
