#include "Quorvane/Styles/QVThemeController.h"
#include "Tests/Quorvane/Text/StorageFixtures.h"

#include <gtest/gtest.h>

namespace quorvane {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;

// How a result is cut around what was edited while the parse was at work. The document is one line of
// keywords and numbers; "z" stands for no style.

/// Holds the parse back while an edit of the whole line is in flight, makes another edit, and answers what
/// the highlighting is when the first result has come and the second has not.
class CutResult {
public:
    CutResult() : _storage(documentWithText(u"k1 22 k3 44", smallLanguage())) {
        EXPECT_EQ(drawnHighlighting(*_storage), "11.22.11.22");
        EXPECT_EQ(_storage->length(), 11u);
    }

    std::string afterEdit(NSRange range, std::u16string_view text) {
        {
            const BusyQueue busy(*_storage->parse());
            // The line is parsed again; it becomes "z1 22 k3 44".
            _storage->replaceCharactersInRange({0, 1}, u"z");
            _storage->replaceCharactersInRange(range, text);
        }
        finishRound(*_storage);
        return drawnHighlighting(*_storage);
    }

    QVConcreteTextStorage &storage() { return *_storage; }

private:
    std::shared_ptr<QVConcreteTextStorage> _storage;
};

TEST(QVConcreteTextStorageStyling, ATypingBeforeTheRangeMovesTheResult) {
    const auto storage = documentWithText(u"\n\n\n\nk1 22", smallLanguage());
    StorageNotifications notifications(*storage);
    {
        const BusyQueue busy(*storage->parse());
        storage->replaceCharactersInRange({9, 0}, u"k");
        storage->replaceCharactersInRange({0, 0}, u"zz");
    }
    finishRound(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "......11.221");
    EXPECT_THAT(notifications.take(), ElementsAre("styles 5+7"));
}

TEST(QVConcreteTextStorageStyling, ADeletionBeforeTheRangeMovesTheResult) {
    const auto storage = documentWithText(u"zzz\n\n\n\nk1 22", smallLanguage());
    StorageNotifications notifications(*storage);
    {
        const BusyQueue busy(*storage->parse());
        storage->replaceCharactersInRange({12, 0}, u"k");
        storage->deleteCharactersInRange({0, 3});
    }
    finishRound(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "....11.221");
    EXPECT_THAT(notifications.take(), ElementsAre("styles 3+7"));
}

TEST(QVConcreteTextStorageStyling, AnEditBehindTheRangeLeavesTheResult) {
    const auto storage = documentWithText(u"k1 22\n\n\n\nzz", smallLanguage());
    StorageNotifications notifications(*storage);
    {
        const BusyQueue busy(*storage->parse());
        storage->replaceCharactersInRange({0, 1}, u"z");
        storage->replaceCharactersInRange({9, 1}, u"333");
    }
    finishRound(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), ".2.22........");
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+7"));
}

TEST(QVConcreteTextStorageStyling, TypingInTheMiddleSplitsTheResult) {
    CutResult cut;
    StorageNotifications notifications(cut.storage());
    // "z1 22 k3 44" with "yy" behind its sixth character.
    EXPECT_EQ(cut.afterEdit({6, 0}, u"yy"), ".2.22...11.22");
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+6", "styles 8+5"));
    finishAllRounds(cut.storage());
    EXPECT_EQ(drawnHighlighting(cut.storage()), ".2.22...11.22");
    for (const std::string &line : notifications.take())
        EXPECT_THAT(line, testing::AnyOf("styles 0+13", "parse 0+13"));
}

TEST(QVConcreteTextStorageStyling, TypingAtTheStartOfTheRangeMovesIt) {
    CutResult cut;
    EXPECT_EQ(cut.afterEdit({0, 0}, u"yy"), "...2.22.11.22");
}

TEST(QVConcreteTextStorageStyling, TypingAtTheEndOfTheRangeLeavesIt) {
    CutResult cut;
    EXPECT_EQ(cut.afterEdit({11, 0}, u"yy"), ".2.22.11.22..");
}

// Meant so: the second piece is taken from where the first one ended, though the deleted text's slots come
// between; the storage colours it again once the parse has caught up.
TEST(QVConcreteTextStorageStyling, BehindADeletionColoursAreOffByItUntilTheParseHasCaughtUp) {
    CutResult cut;
    StorageNotifications notifications(cut.storage());
    // "z1 " and "k3 44" stay; the colours of the second piece are those of "22 k3".
    EXPECT_EQ(cut.afterEdit({3, 3}, u""), ".2.22.11");
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+3", "styles 3+5"));
    finishAllRounds(cut.storage());
    EXPECT_EQ(drawnHighlighting(cut.storage()), ".2.11.22");
}

TEST(QVConcreteTextStorageStyling, WhatADeletionMadeWrongIsColouredAgainWhereTheReparseDoesNotReach) {
    // The first round is about the whole text; the deletion's own about its first lines alone.
    const auto storage = QVConcreteTextStorage::initWithString(u"zzzz\nz\nz\nk1\n22\nk3\n44\n");
    storage->setSyntax(smallLanguage());
    StorageNotifications notifications(*storage);
    storage->deleteCharactersInRange({0, 4});
    finishRound(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), ".........11.22.11");
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+17"));
    finishRound(*storage);
    EXPECT_FALSE(storage->isParseUpdating());
    finishRound(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), ".....11.22.11.22.");
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+3", "parse 0+17", "styles 0+17"));
    finishRound(*storage);
    EXPECT_THAT(notifications.take(), IsEmpty()) << "once is enough";
}

TEST(QVConcreteTextStorageStyling, WhatIsToBeColouredAgainMovesWithTheText) {
    const auto storage = QVConcreteTextStorage::initWithString(u"zz\n\n\n\nzzzz\nz\nz\nk1\n22\nk3\n44\n");
    storage->setSyntax(smallLanguage());
    storage->deleteCharactersInRange({6, 4});
    finishRound(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "...............11.22.11");
    storage->replaceCharactersInRange({0, 0}, u"kk ");
    finishAllRounds(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "11............11.22.11.22.");
}

TEST(QVConcreteTextStorageStyling, WhatIsToBeColouredAgainIsForgottenWithItsParse) {
    const auto syntax = smallLanguage();
    const auto storage = QVConcreteTextStorage::initWithString(u"zzzz\nz\nz\nk1\n22\nk3\n44\n");
    storage->setSyntax(syntax);
    storage->deleteCharactersInRange({0, 4});
    finishRound(*storage);
    storage->setSyntax(nullptr);
    storage->setSyntax(syntax);
    StorageNotifications notifications(*storage);
    finishAllRounds(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), ".....11.22.11.22.");
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+17", "parse 0+17"));
}

TEST(QVConcreteTextStorageStyling, AnEditThatReachesIntoTheRangeFromBeforeLeavesTheEnd) {
    const auto storage = documentWithText(u"zz\n\n\n\nk1 22 k3", smallLanguage());
    StorageNotifications notifications(*storage);
    {
        const BusyQueue busy(*storage->parse());
        storage->replaceCharactersInRange({6, 1}, u"z");
        storage->replaceCharactersInRange({1, 8}, u"y");
    }
    finishRound(*storage);
    // "zy22 k3", with the colours of "\nz1 2" for its end.
    EXPECT_EQ(drawnHighlighting(*storage), "....2.2");
    EXPECT_THAT(notifications.take(), ElementsAre("styles 2+5"));
    finishAllRounds(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "..22.11");
}

TEST(QVConcreteTextStorageStyling, AnEditThatSwallowsTheRangeLeavesNothing) {
    const auto storage = documentWithText(u"zz\n\n\n\nk1\n\n\n\nzz", smallLanguage());
    StorageNotifications notifications(*storage);
    {
        const BusyQueue busy(*storage->parse());
        storage->replaceCharactersInRange({6, 1}, u"z");
        storage->replaceCharactersInRange({1, 12}, u"y");
    }
    finishRound(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "...");
    EXPECT_THAT(notifications.take(), IsEmpty());
    finishAllRounds(*storage);
    EXPECT_THAT(notifications.take(), testing::Contains(testing::StartsWith("parse")));
}

TEST(QVConcreteTextStorageStyling, InvalidatingColoursWithoutParsing) {
    const auto syntax = smallLanguage();
    const auto storage = documentWithText(u"k1 22", syntax);
    setStyles(syntax, {{u"keyword", 5}, {u"number", 6}});
    StorageNotifications notifications(*storage);
    storage->invalidateStylingInRange({3, 2});
    EXPECT_FALSE(storage->isParseUpdating());
    finishRound(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "11.66");
    EXPECT_THAT(notifications.take(), ElementsAre("styles 3+2"));
}

TEST(QVConcreteTextStorageStyling, ANewThemeColoursTheWholeTextWithoutParsing) {
    const auto syntax = smallLanguage();
    const auto storage = documentWithText(u"k1 22", syntax);
    setStyles(syntax, {{u"keyword", 5}, {u"number", 6}});
    StorageNotifications notifications(*storage);
    NSNotificationCenter::defaultCenter().postNotification(
        {QVStyleResolvedStylesDidChangeNotification, this});
    finishRound(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "55.66");
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+5"));
}

TEST(QVConcreteTextStorageStyling, WithoutAParseInvalidatingResetsAtOnce) {
    const auto storage = QVConcreteTextStorage::initWithString(u"k1 22");
    StorageNotifications notifications(*storage);
    storage->invalidateStylingInRange({1, 9});
    EXPECT_THAT(notifications.take(), ElementsAre("styles 1+4"));
    storage->invalidateStylingInRange({5, 1});
    EXPECT_THAT(notifications.take(), IsEmpty()) << "nothing of it is in the text";
}

TEST(QVConcreteTextStorageStyling, TypingBeforeAStylingComesBackMovesItsColours) {
    const auto syntax = smallLanguage();
    const auto storage = documentWithText(u"k1 22\n\n\n\nk3 44", syntax);
    setStyles(syntax, {{u"keyword", 5}, {u"number", 6}});
    {
        const BusyQueue busy(*storage->parse());
        storage->invalidateStylingInRange({0, storage->length()});
        // Its own round starts, so that nothing is pending; the styling has not seen it all the same.
        storage->replaceCharactersInRange({0, 0}, u"zz ");
    }
    finishAllRounds(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "...55.66....55.66");
}

TEST(QVConcreteTextStorageStyling, DeletingBeforeAStylingComesBackDoesNotLoseColours) {
    const auto syntax = smallLanguage();
    const auto storage = documentWithText(u"k1 22\n\n\n\nk3 44\n\n\n\nk5 66", syntax);
    setStyles(syntax, {{u"keyword", 5}, {u"number", 6}});
    {
        const BusyQueue busy(*storage->parse());
        storage->invalidateStylingInRange({0, storage->length()});
        storage->deleteCharactersInRange({0, 3});
    }
    finishAllRounds(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "66....55.66....55.66");
}

TEST(QVConcreteTextStorageStyling, AStylingWhileEditsArePendingIsAboutTheTextThatTheParseKnows) {
    const auto syntax = smallLanguage();
    const auto storage = documentWithText(u"zzz\n\n\n\nk1 22\n\n\n\nk3 44", syntax);
    {
        const BusyQueue busy(*storage->parse());
        storage->replaceCharactersInRange({0, 1}, u"y");
        storage->deleteCharactersInRange({0, 3});
        setStyles(syntax, {{u"keyword", 5}, {u"number", 6}});
        // All of the text as it is now; to the parse three characters more.
        storage->invalidateStylingInRange({0, storage->length()});
    }
    finishAllRounds(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "....55.66....55.66");
}

TEST(QVConcreteTextStorageStyling, AStylingInABracketIsAboutTheTextThatTheParseKnows) {
    const auto syntax = smallLanguage();
    const auto storage = documentWithText(u"k1 22\n\n\n\nk3 44", syntax);
    setStyles(syntax, {{u"keyword", 5}, {u"number", 6}});
    storage->beginEditing();
    storage->deleteCharactersInRange({0, 3});
    storage->invalidateStylingInRange({0, storage->length()});
    storage->endEditing();
    finishAllRounds(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "66....55.66");
}

TEST(QVConcreteTextStorageStyling, DefaultHighlightingStandsWhereNothingElseDoes) {
    const auto storage = documentWithText(u"k1 x", smallLanguage());
    storage->setDefaultTextAttributes({{NSUnderlineStyleAttributeName, 9}, {NSToolTipAttributeName, u"tip"}});
    finishAllRounds(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "1199");
    // Nothing but what highlighting may set.
    EXPECT_EQ(storage->syntaxHighlightingAttributesAtIndex(3, nullptr),
              (NSAttributes{{NSUnderlineStyleAttributeName, 9}}));
    storage->setSyntax(nullptr);
    EXPECT_EQ(drawnHighlighting(*storage), "9999");
}

TEST(QVConcreteTextStorageStyling, InnerMatchesAreLaidOverOuterOnes) {
    auto syntax = syntaxWithScopes(region("outer", "\\(", "\\)", holding(single("number", "\\d+"))));
    setStyles(syntax, {{u"outer", 3}, {u"number", 2}});
    const auto storage = documentWithText(u"(a 1 b)", syntax);
    EXPECT_EQ(drawnHighlighting(*storage), "3332333");
}

TEST(QVConcreteTextStorageStyling, AMatchThatResetsStartsFromTheDefaults) {
    const std::string plain = "<scope name='plain' reset-styles='true'><expression>p</expression></scope>";
    auto syntax = syntaxWithScopes(region("outer", "\\(", "\\)", holding(plain)));
    setStyles(syntax, {{u"outer", 3}});
    const auto storage = documentWithText(u"(p)", syntax);
    EXPECT_EQ(drawnHighlighting(*storage), "3.3");
}

TEST(QVConcreteTextStorageStyling, AnEmbeddedLanguageStartsFromPlainText) {
    const auto innerSyntax =
        syntaxFromXML("<syntax name='inner'><scopes>" + single("number", "\\d+") + "</scopes></syntax>");
    setStyles(innerSyntax, {{u"number", 2}});
    const RegisteredSyntax inner(innerSyntax);
    const auto outer = syntaxWithScopes(region("embedded", "&lt;", "&gt;", "<subsyntax name='inner'/>"));
    setStyles(outer, {{u"embedded", 4}});
    const auto storage = documentWithText(u"<a1>", outer);
    EXPECT_EQ(drawnHighlighting(*storage), "4.24");
}

TEST(QVConcreteTextStorageStyling, AWalkGoesOnWhileTheColoursOfTheWholeTextComeIn) {
    const auto syntax = smallLanguage();
    const auto storage = documentWithText(u"k1 22 k3", syntax);
    setStyles(syntax, {{u"keyword", 5}, {u"number", 6}});
    storage->invalidateStylingInRange({0, 8});
    waitForQueue(*storage->parse());
    std::string numbers;
    storage->enumerateSyntaxHighlightingAttributesInRange(
        {0, 8}, 0, [&](const NSAttributes &attributes, NSRange, bool &) {
            MainQueue::drain();
            const NSAttributeValue *const value = attributes.valueForKey(NSUnderlineStyleAttributeName);
            numbers += value ? std::to_string(value->integerValue()) : ".";
        });
    EXPECT_EQ(numbers, "1.2.1") << "those that it began with";
    EXPECT_EQ(drawnHighlighting(*storage), "55.66.55");
}

// MARK: Fonts

TEST(QVConcreteTextStorageStyling, FontsReachTheTextAndColoursDoNot) {
    const auto storage = documentWithText(u"k1 b x", smallLanguage());
    EXPECT_EQ(drawnFonts(*storage), "...b..");
    for (NSUInteger index = 0; index < 6; ++index)
        EXPECT_FALSE(storage->contents().attributesAtIndex(index).containsKey(NSUnderlineStyleAttributeName));
}

TEST(QVConcreteTextStorageStyling, OnlyAFontThatIsSetOrResetIsAnEdit) {
    const auto storage = documentWithText(u"k1\n\n\n\nb x\n", smallLanguage());
    std::vector<std::string> lines;
    const auto observer = std::make_shared<StorageObserver>(lines);
    storage->addChangeObserver(observer);
    storage->invalidateStylingInRange({0, 3});
    finishRound(*storage);
    EXPECT_THAT(lines, IsEmpty());

    const StorageView view(*storage, lines);
    storage->invalidateStylingInRange({6, 4});
    finishRound(*storage);
    EXPECT_THAT(lines, ElementsAre("view begins", "view begins", "view adds NSFont 6+1", "view ends",
                                   "view adds NSFont 6+1", "did 1 6+4 +0", "view ends"));
    EXPECT_EQ(drawnFonts(*storage), "......b...");
}

TEST(QVConcreteTextStorageStyling, TextWithAnotherFontGetsTheDefaultOneWhenItIsParsed) {
    const auto font = CTFontCreateCopyWithAttributes(CTFontCreateWithName(u"Menlo-Regular", 12), 20);
    const auto storage = QVConcreteTextStorage::initWithString(u"ab", {{NSFontAttributeName, font}});
    EXPECT_EQ(storage->contents().attribute(NSFontAttributeName, 0), NSAttributeValue(font));
    storage->setSyntax(smallLanguage());
    finishAllRounds(*storage);
    EXPECT_EQ(storage->contents().attribute(NSFontAttributeName, 0),
              *storage->defaultTextAttributes().valueForKey(NSFontAttributeName));
}

} // namespace
} // namespace quorvane
