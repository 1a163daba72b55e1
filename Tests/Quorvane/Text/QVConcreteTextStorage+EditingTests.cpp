#include "Platform/AppKit/NSColor.h"
#include "Platform/Foundation/NSException.h"
#include "Tests/Quorvane/Text/StorageFixtures.h"

#include <gtest/gtest.h>

namespace quorvane {
namespace {

using namespace test;
using testing::ElementsAre;
using Lines = std::vector<std::string>;

TEST(QVConcreteTextStorageEditing, AnEditTellsViewsAndObserversInTurn) {
    const auto storage = QVConcreteTextStorage::initWithString(u"abcd");
    Lines lines;
    const StorageView view(*storage, lines);
    const auto observer = std::make_shared<StorageObserver>(lines);
    storage->addChangeObserver(observer);

    storage->replaceCharactersInRange({1, 2}, u"xyz");
    EXPECT_EQ(textOf(*storage), "axyzd");
    EXPECT_THAT(lines, ElementsAre("view will replace 'xyz' in 'abcd' 1+2", "will 3 1+2 'xyz'",
                                   "view did replace 'xyz' in 'axyzd' 1+2", "did 3 1+3 +1"));
}

TEST(QVConcreteTextStorageEditing, TheStructuresHaveChangedWhenTheObserverIsTold) {
    struct Observer : QVTextStorageChangeObserver {
        void textStorageWillChange(QVTextStorage &storage, NSTextStorageEditActions, NSRange,
                                   const NSAttributedString *) override {
            before = storage.numberOfLines();
        }
        void textStorageDidProcessChanges(QVTextStorage &storage, NSTextStorageEditActions, NSRange,
                                          NSInteger) override {
            after = storage.numberOfLines();
            text = textOf(storage);
        }
        NSUInteger before = 0;
        NSUInteger after = 0;
        std::string text;
    };
    const auto storage = QVConcreteTextStorage::initWithString(u"a");
    const auto observer = std::make_shared<Observer>();
    storage->addChangeObserver(observer);
    storage->replaceCharactersInRange({1, 0}, u"\nb\n");
    EXPECT_EQ(observer->before, 1u);
    EXPECT_EQ(observer->after, 3u);
    EXPECT_EQ(observer->text, "a\nb\n");
}

TEST(QVConcreteTextStorageEditing, TypingInAnEmptyStorageGetsTheDefaultAttributes) {
    const auto storage = QVConcreteTextStorage::init();
    storage->replaceCharactersInRange({0, 0}, u"a");
    EXPECT_EQ(storage->contents().attributesAtIndex(0), storage->defaultTextAttributes());
}

/// Text whose first characters have a colour each, white, black and clear.
std::shared_ptr<QVConcreteTextStorage> colouredStorage() {
    const auto storage = QVConcreteTextStorage::initWithString(u"wbc");
    storage->addAttribute(NSForegroundColorAttributeName, NSColor::whiteColor(), {0, 1});
    storage->addAttribute(NSForegroundColorAttributeName, NSColor::blackColor(), {1, 1});
    storage->addAttribute(NSForegroundColorAttributeName, NSColor::clearColor(), {2, 1});
    storage->addAttribute(NSToolTipAttributeName, u"tip", {0, 3});
    return storage;
}

TEST(QVConcreteTextStorageEditing, TypedTextLooksLikeTheCharacterBeforeIt) {
    const auto storage = colouredStorage();
    storage->replaceCharactersInRange({2, 0}, u"x");
    EXPECT_EQ(storage->contents().attribute(NSForegroundColorAttributeName, 2),
              NSAttributeValue(NSColor::blackColor()));
    storage->replaceCharactersInRange({3, 1}, u"y");
    EXPECT_EQ(storage->contents().attribute(NSForegroundColorAttributeName, 3),
              NSAttributeValue(NSColor::blackColor()));
}

TEST(QVConcreteTextStorageEditing, TypedTextTakesNothingElseFromItsNeighbour) {
    const auto storage = colouredStorage();
    storage->replaceCharactersInRange({1, 0}, u"x");
    EXPECT_EQ(storage->contents().attribute(NSToolTipAttributeName, 1), std::nullopt);
    EXPECT_EQ(storage->contents().attribute(NSFontAttributeName, 1),
              *storage->defaultTextAttributes().valueForKey(NSFontAttributeName));
}

TEST(QVConcreteTextStorageEditing, TypingAtTheStartLooksLikeTheFirstCharacter) {
    const auto storage = colouredStorage();
    storage->replaceCharactersInRange({0, 0}, u"x");
    EXPECT_EQ(storage->contents().attribute(NSForegroundColorAttributeName, 0),
              NSAttributeValue(NSColor::whiteColor()));
    // The one at the location, not the one behind what goes.
    storage->replaceCharactersInRange({0, 2}, u"y");
    EXPECT_EQ(storage->contents().attribute(NSForegroundColorAttributeName, 0),
              NSAttributeValue(NSColor::whiteColor()));
}

TEST(QVConcreteTextStorageEditing, TypingFollowsANeighbourThatChanges) {
    const auto storage = colouredStorage();
    storage->replaceCharactersInRange({1, 0}, u"x");
    storage->addAttribute(NSForegroundColorAttributeName, NSColor::clearColor(), {0, 1});
    storage->replaceCharactersInRange({1, 0}, u"y");
    EXPECT_EQ(storage->contents().attribute(NSForegroundColorAttributeName, 1),
              NSAttributeValue(NSColor::clearColor()));
}

TEST(QVConcreteTextStorageEditing, TypedTextThatLooksLikeItsNeighbourSharesItsAttributes) {
    // Each key made them anew, for what it put in was equal to its neighbour and another object.
    const auto storage = QVConcreteTextStorage::initWithString(u"plain");
    const NSAttributes first = storage->contents().attributesAtIndex(0);
    storage->replaceCharactersInRange({5, 0}, u"x");
    storage->replaceCharactersInRange({6, 0}, u"y");
    EXPECT_TRUE(storage->contents().attributesAtIndex(6).isIdenticalTo(first));
    // Among other looks too.
    storage->addAttribute(NSForegroundColorAttributeName, NSColor::clearColor(), {0, 1});
    storage->replaceCharactersInRange({7, 0}, u"z");
    EXPECT_TRUE(storage->contents().attributesAtIndex(7).isIdenticalTo(first));
    EXPECT_EQ(textOf(*storage), "plainxyz");
}

TEST(QVConcreteTextStorageEditing, TypedTextFollowsANeighbourThatIsEqualAndAnotherObject) {
    const auto storage = colouredStorage();
    storage->replaceCharactersInRange({1, 0}, u"x");
    const NSAttributes typed = storage->contents().attributesAtIndex(1);
    // As a round does that gives the same colours again.
    storage->addAttribute(NSForegroundColorAttributeName, NSColor::blackColor(), {0, 2});
    storage->addAttribute(NSForegroundColorAttributeName, NSColor::whiteColor(), {0, 2});
    storage->replaceCharactersInRange({2, 0}, u"y");
    EXPECT_EQ(storage->contents().attributesAtIndex(2), typed);
    storage->replaceCharactersInRange({1, 0}, u"z");
    EXPECT_EQ(storage->contents().attributesAtIndex(1), typed);
}

TEST(QVConcreteTextStorageEditing, TypedTextFollowsDefaultAttributesThatChange) {
    const auto storage = QVConcreteTextStorage::initWithString(u"a");
    storage->replaceCharactersInRange({1, 0}, u"b");
    NSMutableAttributes defaults(storage->defaultTextAttributes());
    defaults.set(NSToolTipAttributeName, u"tip");
    storage->setDefaultTextAttributes(defaults.attributes());
    storage->replaceCharactersInRange({2, 0}, u"c");
    EXPECT_EQ(storage->contents().attribute(NSToolTipAttributeName, 2), NSAttributeValue(u"tip"));
}

TEST(QVConcreteTextStorageEditing, APieceOfTheTextItselfCanBeTyped) {
    // Whatever its length, those who are told behind the edit see what was put in.
    for (const NSUInteger count : {1u, 16u, 17u, 40u}) {
        SCOPED_TRACE(count);
        std::u16string text = u"<";
        for (NSUInteger index = 0; index < 60; ++index)
            text.push_back(static_cast<char16_t>(u'!' + index));
        const auto storage = QVConcreteTextStorage::initWithString(text);
        Lines lines;
        const StorageView view(*storage, lines);
        const auto piece = storage->string().contiguousView().substr(5, count);
        const std::string expected = NSString(piece).UTF8String();
        storage->replaceCharactersInRange({0, 1}, piece);
        const std::string text8 = textOf(*storage);
        EXPECT_EQ(text8.substr(0, count), expected);
        ASSERT_EQ(lines.size(), 2u);
        EXPECT_EQ(lines[1], "view did replace '" + expected + "' in '" + text8 + "' 0+1");
    }
}

TEST(QVConcreteTextStorageEditing, AttributedTextKeepsItsAttributesAndGetsWhatItLacks) {
    const auto storage = colouredStorage();
    const auto pasted = NSMutableAttributedString::initWithString(u"123", mark(7));
    pasted->addAttribute(NSForegroundColorAttributeName, NSColor::clearColor(), {1, 1});
    storage->replaceCharactersInRange({1, 1}, *pasted);
    EXPECT_EQ(textOf(*storage), "w123c");
    const NSAttributes &defaults = storage->defaultTextAttributes();
    const NSAttributes plain =
        mark(7)
            .attributesBySettingValue(*defaults.valueForKey(NSFontAttributeName), NSFontAttributeName)
            .attributesBySettingValue(*defaults.valueForKey(NSForegroundColorAttributeName),
                                      NSForegroundColorAttributeName);
    EXPECT_EQ(storage->contents().attributesAtIndex(1), plain);
    EXPECT_EQ(storage->contents().attributesAtIndex(2),
              plain.attributesBySettingValue(NSColor::clearColor(), NSForegroundColorAttributeName));
    EXPECT_EQ(storage->contents().attributesAtIndex(3), plain);
    // The given one stays as it was.
    EXPECT_FALSE(pasted->attributesAtIndex(0).containsKey(NSFontAttributeName));
}

TEST(QVConcreteTextStorageEditing, AStorageCanTakeInItself) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab");
    storage->replaceCharactersInRange({1, 0}, *storage);
    EXPECT_EQ(textOf(*storage), "aabb");
}

TEST(QVConcreteTextStorageEditing, NewTextHasNoHighlightingAndNoExtendedAttributes) {
    const auto storage = documentWithText(u"k1 k2", smallLanguage());
    storage->setExtendedAttributes(mark(4), {0, 5});
    ASSERT_EQ(drawnHighlighting(*storage), "11.11");
    const BusyQueue busy(*storage->parse());
    storage->replaceCharactersInRange({1, 1}, u"xyz");
    EXPECT_EQ(drawnHighlighting(*storage), "1....11");
    EXPECT_TRUE(storage->syntaxHighlightingAttributesAtIndex(2, nullptr).empty());
    EXPECT_EQ(storage->extendedAttributesAtIndex(0, nullptr), mark(4));
    for (const NSUInteger index : {1, 2, 3})
        EXPECT_TRUE(storage->extendedAttributesAtIndex(index, nullptr).empty()) << index;
    EXPECT_EQ(storage->extendedAttributesAtIndex(4, nullptr), mark(4));
}

TEST(QVConcreteTextStorageEditing, ABracketIsReportedOnce) {
    const auto storage = QVConcreteTextStorage::initWithString(u"0123456789");
    Lines lines;
    const auto observer = std::make_shared<StorageObserver>(lines);
    storage->beginEditing();
    storage->beginEditing();
    storage->replaceCharactersInRange({8, 2}, u"x\ny");
    storage->endEditing();
    storage->replaceCharactersInRange({1, 1}, u"");
    EXPECT_EQ(storage->numberOfLines(), 1u) << "lines follow at the end of the bracket";
    storage->addChangeObserver(observer);
    storage->endEditing();
    EXPECT_THAT(lines, ElementsAre("did 3 1+9 +0"));
    EXPECT_EQ(storage->numberOfLines(), 2u);
    EXPECT_EQ(storage->characterRangeForLineNumber(0), NSMakeRange(0, 9));
}

TEST(QVConcreteTextStorageEditing, TheBracketsOfTheStorageAndItsViewsAreNested) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab");
    Lines lines;
    const StorageView view(*storage, lines);
    const auto observer = std::make_shared<StorageObserver>(lines);
    storage->addChangeObserver(observer);
    storage->beginEditing();
    storage->deleteCharactersInRange({0, 1});
    storage->endEditing();
    EXPECT_THAT(lines, ElementsAre("view begins", "view will replace '' in 'ab' 0+1", "will 3 0+1 ''",
                                   "view did replace '' in 'b' 0+1", "did 3 0+0 -1", "view ends"));
}

TEST(QVConcreteTextStorageEditing, AViewBracketsTheEditsOfItsStorage) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab");
    Lines lines;
    StorageView view(*storage, lines);
    storage->beginEditingWithFoldingTextStorage(&view);
    storage->endEditingWithFoldingTextStorage(&view);
    EXPECT_THAT(lines, ElementsAre("view begins", "view ends"));
}

TEST(QVConcreteTextStorageEditing, ViewsAreToldOnceAndNotWhenTheyAreRemoved) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab");
    Lines lines;
    StorageView view(*storage, lines);
    storage->addFoldingTextStorage(&view);
    storage->addFoldingTextStorage(nullptr);
    int calls = 0;
    storage->performBlockWithFoldingTextStorages([&](QVBackingStorageView &told) {
        EXPECT_EQ(&told, &view);
        ++calls;
    });
    EXPECT_EQ(calls, 1);
    storage->removeFoldingTextStorage(&view);
    storage->performBlockWithFoldingTextStorages([&](QVBackingStorageView &) { ++calls; });
    EXPECT_EQ(calls, 1);
}

TEST(QVConcreteTextStorageEditing, AViewThatIsRemovedBeforeItsTurnIsNotTold) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab");
    Lines lines;
    StorageView first(*storage, lines);
    StorageView second(*storage, lines);
    int calls = 0;
    storage->performBlockWithFoldingTextStorages([&](QVBackingStorageView &told) {
        storage->removeFoldingTextStorage(&told == &first ? &second : &first);
        ++calls;
    });
    EXPECT_EQ(calls, 1);
}

TEST(QVConcreteTextStorageEditing, ChangesOfAttributesTellViewsAndObservers) {
    const auto storage = QVConcreteTextStorage::initWithString(u"abcd");
    Lines lines;
    const StorageView view(*storage, lines);
    const auto observer = std::make_shared<StorageObserver>(lines);
    storage->addChangeObserver(observer);

    storage->addAttribute(NSToolTipAttributeName, 1, {0, 2});
    EXPECT_THAT(std::exchange(lines, {}),
                ElementsAre("will 1 0+2 null", "view adds NSToolTip 0+2", "did 1 0+2 +0"));
    storage->addAttributes(mark(2), {1, 2});
    EXPECT_THAT(std::exchange(lines, {}),
                ElementsAre("will 1 1+2 null", "view adds {NSToolTip = 2} 1+2", "did 1 1+2 +0"));
    storage->removeAttribute(NSToolTipAttributeName, {1, 1});
    EXPECT_THAT(std::exchange(lines, {}),
                ElementsAre("will 1 1+1 null", "view removes NSToolTip 1+1", "did 1 1+1 +0"));
    storage->setAttributes(mark(3), {3, 1});
    EXPECT_THAT(std::exchange(lines, {}),
                ElementsAre("will 1 3+1 null", "view sets {NSToolTip = 3} 3+1", "did 1 3+1 +0"));

    const NSAttributedString &contents = storage->contents();
    EXPECT_EQ(contents.attribute(NSToolTipAttributeName, 0), NSAttributeValue(1));
    EXPECT_EQ(contents.attribute(NSToolTipAttributeName, 1), std::nullopt);
    EXPECT_EQ(contents.attribute(NSToolTipAttributeName, 2), NSAttributeValue(2));
    EXPECT_EQ(contents.attributesAtIndex(3), mark(3));
}

TEST(QVConcreteTextStorageEditing, AttributesDoNotTouchLinesAndParse) {
    const auto storage = documentWithText(u"k1\nk2", smallLanguage());
    StorageNotifications notifications(*storage);
    storage->addAttribute(NSToolTipAttributeName, 1, {0, 5});
    EXPECT_FALSE(storage->isParseUpdating());
    EXPECT_THAT(notifications.take(), ElementsAre());
    EXPECT_EQ(storage->numberOfLines(), 2u);
}

TEST(QVConcreteTextStorageEditing, RangesBeyondTheTextThrowAndChangeNothing) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab");
    Lines lines;
    const StorageView view(*storage, lines);
    EXPECT_THROW(storage->replaceCharactersInRange({1, 2}, u"x"), NSException);
    EXPECT_THROW(storage->replaceCharactersInRange({3, 0}, *NSAttributedString::initWithString(u"x")),
                 NSException);
    EXPECT_THROW(storage->addAttribute(NSToolTipAttributeName, 1, {0, 3}), NSException);
    EXPECT_THROW(storage->setExtendedAttributes(mark(1), {1, 2}), NSException);
    EXPECT_TRUE(lines.empty());
    EXPECT_EQ(textOf(*storage), "ab");
}

TEST(QVConcreteTextStorageEditing, ClearingTakesTextAndParse) {
    const auto storage = documentWithText(u"k1\nk2", smallLanguage());
    Lines lines;
    const StorageView view(*storage, lines);
    const auto observer = std::make_shared<StorageObserver>(lines);
    storage->addChangeObserver(observer);
    storage->clearContents();
    EXPECT_THAT(lines, ElementsAre("view begins", "view clears", "did 3 0+0 -5", "view ends"));
    EXPECT_EQ(storage->length(), 0u);
    EXPECT_EQ(storage->numberOfLines(), 1u);
    EXPECT_EQ(storage->parse(), nullptr);
    EXPECT_NE(storage->syntax(), nullptr);
    EXPECT_FALSE(storage->isParseUpdating());
    EXPECT_TRUE(storage->syntaxHighlightingAttributesAtIndex(0, nullptr).empty());
    EXPECT_EQ(storage->syntaxAtLocation(0), storage->syntax());

    // It is a document to type into, without a parse until the syntax is set anew.
    storage->replaceCharactersInRange({0, 0}, u"k1");
    EXPECT_FALSE(storage->isParseUpdating());
    const auto syntax = storage->syntax();
    storage->setSyntax(nullptr);
    storage->setSyntax(syntax);
    finishAllRounds(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "11");
}

TEST(QVConcreteTextStorageEditing, ClearingWhileTheParseIsAtWorkEndsItsRounds) {
    const auto storage = documentWithText(u"k1", smallLanguage());
    const auto parse = storage->parse();
    StorageNotifications notifications(*storage);
    {
        const BusyQueue busy(*parse);
        storage->replaceCharactersInRange({2, 0}, u" k2");
        storage->replaceCharactersInRange({5, 0}, u" k3");
        ASSERT_TRUE(storage->isParseUpdating());
        storage->clearContents();
        EXPECT_FALSE(storage->isParseUpdating());
    }
    waitForQueue(*parse);
    finishRound(*storage);
    EXPECT_THAT(notifications.take(), testing::IsEmpty());
    EXPECT_EQ(storage->length(), 0u);
}

TEST(QVConcreteTextStorageEditing, ClearingAnEmptyStorageDoesNoHarm) {
    const auto storage = QVConcreteTextStorage::init();
    storage->clearContents();
    EXPECT_EQ(storage->length(), 0u);
    EXPECT_EQ(storage->numberOfLines(), 1u);
}

TEST(QVConcreteTextStorageEditing, AnEditInsideOfACRLFMakesTwoLineEnds) {
    const auto storage = QVConcreteTextStorage::initWithString(u"a\r\nb");
    storage->replaceCharactersInRange({2, 0}, u"x");
    EXPECT_EQ(storage->numberOfLines(), 3u);
    EXPECT_EQ(storage->characterRangeForLineNumber(1), NSMakeRange(2, 2));
}

} // namespace
} // namespace quorvane
