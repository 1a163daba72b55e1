#include "Quorvane/Matches/QVMatchPositions.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Quorvane/Text/StorageFixtures.h"

#include <gtest/gtest.h>

namespace quorvane {

/// Reaches what only tasks of the parse call.
struct QVConcreteTextStorageProbe {
    static void didFinishReparsing(QVConcreteTextStorage &storage, NSRange range) {
        storage.didFinishReparsing(range);
    }
};

namespace {

using namespace test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

std::string parsedText(QVConcreteTextStorage &storage) {
    std::string text;
    storage.parse()->performReadingBlockAndWait(
        [&] { text = NSString(std::u16string(storage.parse()->string())).UTF8String(); });
    return text;
}

TEST(QVConcreteTextStorageParsing, ASyntaxBringsAParseOfTheWholeText) {
    const auto storage = QVConcreteTextStorage::initWithString(u"k1 2");
    storage->setTabWidth(3);
    StorageNotifications notifications(*storage);
    EXPECT_EQ(storage->parse(), nullptr);
    EXPECT_FALSE(storage->isParseUpdating());

    const auto syntax = smallLanguage();
    storage->setSyntax(syntax);
    const auto parse = storage->parse();
    ASSERT_NE(parse, nullptr);
    EXPECT_EQ(parse->syntax(), syntax);
    EXPECT_EQ(parse->concurrencyType(), QVParsePrivateQueueConcurrencyType);
    EXPECT_EQ(parse->tabWidth(), 3u);
    EXPECT_EQ(parse->maximumLineLength(), 10000u);
    EXPECT_TRUE(storage->isParseUpdating());
    // What was there before was reset.
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+4"));

    finishRound(*storage);
    EXPECT_FALSE(storage->isParseUpdating());
    EXPECT_EQ(parsedText(*storage), "k1 2");
    EXPECT_EQ(drawnHighlighting(*storage), "11.2");
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+4", "parse 0+4"));
}

TEST(QVConcreteTextStorageParsing, WhatTheColoursDontNeedIsDoneBehindThem) {
    const auto storage = documentWithText(u"k1 2", smallLanguage());
    storage->parse()->performReadingBlockAndWait([&] {
        const QVScopeMatch *const match = storage->parse()->rootMatch()->firstChild();
        ASSERT_NE(match, nullptr);
        EXPECT_NE(QVMatchPositions::positionsOf(match), nullptr);
    });
}

TEST(QVConcreteTextStorageParsing, AnEmptyDocumentIsParsedToo) {
    const auto storage = QVConcreteTextStorage::init();
    StorageNotifications notifications(*storage);
    storage->setSyntax(smallLanguage());
    finishRound(*storage);
    EXPECT_FALSE(storage->isParseUpdating());
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+0", "parse 0+0"));
}

TEST(QVConcreteTextStorageParsing, AnEditMakesOneRound) {
    const auto storage = documentWithText(u"k1\nx\n\n\n\nx\n", smallLanguage());
    StorageNotifications notifications(*storage);
    storage->replaceCharactersInRange({9, 0}, u"k");
    EXPECT_TRUE(storage->isParseUpdating());
    finishRound(*storage);
    EXPECT_FALSE(storage->isParseUpdating());
    EXPECT_EQ(drawnHighlighting(*storage), "11.......1.");
    // From the line before the edit to the line behind it.
    EXPECT_THAT(notifications.take(), ElementsAre("styles 7+4", "parse 7+4"));
    finishRound(*storage);
    EXPECT_THAT(notifications.take(), IsEmpty());
}

TEST(QVConcreteTextStorageParsing, EditsDuringAParseBecomeOneReparse) {
    const auto storage = documentWithText(u"a\n\n\n\nb\n\n\n\nc\n", smallLanguage());
    StorageNotifications notifications(*storage);
    {
        const BusyQueue busy(*storage->parse());
        storage->replaceCharactersInRange({10, 1}, u"k");
        storage->replaceCharactersInRange({5, 1}, u"kk");
        storage->replaceCharactersInRange({0, 1}, u"k");
    }
    finishRound(*storage);
    EXPECT_TRUE(storage->isParseUpdating()) << "the second and the third are on their way";
    EXPECT_EQ(parsedText(*storage), textOf(*storage));
    finishRound(*storage);
    EXPECT_FALSE(storage->isParseUpdating());
    EXPECT_EQ(drawnHighlighting(*storage), "1....11....1.");
}

TEST(QVConcreteTextStorageParsing, TheReportWaitsUntilTheParseHasCaughtUpAndListsAllRanges) {
    const auto storage = documentWithText(u"a\n\n\n\nb\n\n\n\nc\n", smallLanguage());
    StorageNotifications notifications(*storage);
    {
        const BusyQueue busy(*storage->parse());
        storage->replaceCharactersInRange({10, 1}, u"k");
        storage->replaceCharactersInRange({0, 1}, u"kk");
    }
    finishRound(*storage);
    EXPECT_EQ(storage->isParseUpdating(), true);
    for (const std::string &line : notifications.take())
        EXPECT_THAT(line, testing::StartsWith("styles"));
    finishRound(*storage);
    // The first round was about the line of "c" and the one before, which the second edit moved by one.
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+4", "parse 0+4 10+3"));
    // Told once, they are over.
    storage->replaceCharactersInRange({0, 1}, u"z");
    finishAllRounds(*storage);
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+4", "parse 0+4"));
}

TEST(QVConcreteTextStorageParsing, WhatWasToBeReportedOfAParseGoesWithIt) {
    const auto syntax = smallLanguage();
    const auto storage = documentWithText(u"a\n\n\n\nb\n\n\n\nc\n", syntax);
    {
        const BusyQueue busy(*storage->parse());
        storage->replaceCharactersInRange({10, 1}, u"k");
        storage->replaceCharactersInRange({0, 1}, u"kk");
    }
    finishRound(*storage);
    ASSERT_TRUE(storage->isParseUpdating());
    storage->setSyntax(nullptr);
    storage->deleteCharactersInRange({2, storage->length() - 2});
    storage->setSyntax(syntax);
    StorageNotifications notifications(*storage);
    finishAllRounds(*storage);
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+2", "parse 0+2"));
}

TEST(QVConcreteTextStorageParsing, AReportedRangeMovesBehindWhatIsTypedBeforeIt) {
    const auto storage = documentWithText(u"a\n\n\n\nb\n\n\n\nc\n", smallLanguage());
    StorageNotifications notifications(*storage);
    {
        const BusyQueue busy(*storage->parse());
        storage->replaceCharactersInRange({10, 1}, u"k");
        storage->replaceCharactersInRange({0, 0}, u"zzzzzzzzzzzz");
    }
    finishAllRounds(*storage);
    EXPECT_THAT(notifications.take(), Contains("parse 0+15 21+3"));
}

TEST(QVConcreteTextStorageParsing, AReportedRangeLosesWhatWasDeletedMeanwhile) {
    const auto storage = documentWithText(u"a\n\n\n\nb\n\n\n\nc\n", smallLanguage());
    StorageNotifications notifications(*storage);
    {
        const BusyQueue busy(*storage->parse());
        storage->replaceCharactersInRange({10, 1}, u"k");
        storage->deleteCharactersInRange({0, 12});
    }
    finishAllRounds(*storage);
    EXPECT_EQ(storage->length(), 0u);
    EXPECT_THAT(notifications.take(), ElementsAre("parse 0+0"));
}

TEST(QVConcreteTextStorageParsing, ARangeBeyondTheTextIsABug) {
    const auto storage = documentWithText(u"k1", smallLanguage());
    const AssertionRecorder assertions;
    QVConcreteTextStorageProbe::didFinishReparsing(*storage, {0, 3});
    EXPECT_THAT(assertions.messages(),
                ElementsAre(u"Parsed range exceeds the bounds of the text storage after all edits have been "
                            u"handled"));
}

TEST(QVConcreteTextStorageParsing, AParseThatIsTakenAwayIsCancelled) {
    using Way = void (*)(QVConcreteTextStorage &);
    for (const Way takeAway : {Way([](auto &storage) { storage.setSyntax(nullptr); }),
                               Way([](auto &storage) { storage.setSyntax(smallLanguage()); }),
                               Way([](auto &storage) { storage.setParsingEnabled(false); }),
                               Way([](auto &storage) { storage.clearContents(); })}) {
        const auto storage = documentWithText(u"k1", smallLanguage());
        const auto parse = storage->parse();
        const BusyQueue busy(*parse);
        storage->replaceCharactersInRange({2, 0}, u" k2");
        EXPECT_FALSE(parse->isCancelled());
        takeAway(*storage);
        EXPECT_TRUE(parse->isCancelled());
    }
}

TEST(QVConcreteTextStorageParsing, ResultsOfAParseThatWasReplacedAreDropped) {
    const auto storage = documentWithText(u"k1", smallLanguage());
    const auto old = storage->parse();
    StorageNotifications notifications(*storage);
    {
        const BusyQueue busy(*old);
        storage->replaceCharactersInRange({2, 0}, u" k2");
        storage->setSyntax(nullptr);
    }
    waitForQueue(*old);
    MainQueue::drain();
    EXPECT_EQ(storage->parse(), nullptr);
    EXPECT_FALSE(storage->isParseUpdating());
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+5"));
}

TEST(QVConcreteTextStorageParsing, ResultsThatWaitForTheMainQueueAreDroppedToo) {
    const auto storage = documentWithText(u"k1", smallLanguage());
    const auto old = storage->parse();
    storage->replaceCharactersInRange({2, 0}, u" k2");
    waitForQueue(*old);
    storage->setParsingEnabled(false);
    StorageNotifications notifications(*storage);
    MainQueue::drain();
    EXPECT_THAT(notifications.take(), IsEmpty());
    EXPECT_EQ(drawnHighlighting(*storage), ".....");
}

TEST(QVConcreteTextStorageParsing, AStorageThatWentWhileItsParseWasAtWorkIsNotMissed) {
    auto storage = documentWithText(u"k1", smallLanguage());
    const auto parse = storage->parse();
    const std::weak_ptr<QVConcreteTextStorage> weak = storage;
    {
        const BusyQueue busy(*parse);
        storage->replaceCharactersInRange({2, 0}, u" k2");
        storage.reset();
        EXPECT_TRUE(weak.expired());
        EXPECT_TRUE(parse->isCancelled());
    }
    waitForQueue(*parse);
    MainQueue::drain();
}

TEST(QVConcreteTextStorageParsing, AStorageThatWentBeforeTheMainQueueDrainsIsNotMissed) {
    auto storage = documentWithText(u"k1", smallLanguage());
    const auto parse = storage->parse();
    storage->replaceCharactersInRange({2, 0}, u" k2");
    waitForQueue(*parse);
    storage.reset();
    MainQueue::drain();
}

TEST(QVConcreteTextStorageParsing, AnObserverMayLetGoOfTheStorage) {
    auto storage = QVConcreteTextStorage::initWithString(u"k1");
    storage->setSyntax(smallLanguage());
    waitForQueue(*storage->parse());
    const NSNotificationToken token = NSNotificationCenter::defaultCenter().addObserver(
        QVTextStorageDidUpdateSyntaxHighlightingNotification, storage.get(),
        [&](const NSNotification &) { storage.reset(); });
    MainQueue::drain();
    EXPECT_EQ(storage, nullptr);
}

TEST(QVConcreteTextStorageParsing, AnObserverMayReplaceTheSyntax) {
    const auto storage = QVConcreteTextStorage::initWithString(u"k1");
    storage->setSyntax(smallLanguage());
    waitForQueue(*storage->parse());
    bool isDone = false;
    const NSNotificationToken token = NSNotificationCenter::defaultCenter().addObserver(
        QVTextStorageDidUpdateSyntaxHighlightingNotification, storage.get(), [&](const NSNotification &) {
            if (!std::exchange(isDone, true))
                storage->setSyntax(nullptr);
        });
    StorageNotifications notifications(*storage);
    MainQueue::drain();
    EXPECT_THAT(notifications.take(), testing::Not(testing::Contains(testing::StartsWith("parse"))));
    EXPECT_FALSE(storage->isParseUpdating());
}

// Meant so: nobody but the storage cancels its parse.
TEST(QVConcreteTextStorageParsing, AnEarlyStopOnTheCurrentParseLeavesItUpdatingForGood) {
    const auto storage = documentWithText(u"k1", smallLanguage());
    const auto parse = storage->parse();
    StorageNotifications notifications(*storage);
    {
        const BusyQueue busy(*parse);
        storage->replaceCharactersInRange({2, 0}, u" k2");
        parse->cancelParsing();
    }
    finishRound(*storage);
    EXPECT_TRUE(storage->isParseUpdating());
    EXPECT_FALSE(parse->isCancelled());
    storage->replaceCharactersInRange({5, 0}, u" k3");
    storage->replaceCharactersInRange({8, 0}, u" k4");
    finishRound(*storage);
    EXPECT_TRUE(storage->isParseUpdating()) << "later edits gather, with no round to take them up";
    EXPECT_EQ(storage->parse(), parse);
    EXPECT_THAT(notifications.take(), IsEmpty());

    // The way out.
    const auto syntax = storage->syntax();
    storage->setSyntax(nullptr);
    storage->setSyntax(syntax);
    finishAllRounds(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "11.11.11.11");
}

TEST(QVConcreteTextStorageParsing, SwitchingParsingOffResetsAndOnParsesAnew) {
    const auto storage = documentWithText(u"k1 b", smallLanguage());
    ASSERT_EQ(drawnFonts(*storage), "...b");
    StorageNotifications notifications(*storage);
    EXPECT_TRUE(storage->isParsingEnabled());
    storage->setParsingEnabled(false);
    EXPECT_FALSE(storage->isParsingEnabled());
    EXPECT_EQ(storage->parse(), nullptr);
    EXPECT_EQ(drawnHighlighting(*storage), "....");
    EXPECT_EQ(drawnFonts(*storage), "....");
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+4"));
    storage->replaceCharactersInRange({0, 0}, u"k ");
    EXPECT_FALSE(storage->isParseUpdating());

    storage->setParsingEnabled(true);
    finishAllRounds(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "1.11..");
    EXPECT_EQ(drawnFonts(*storage), ".....b");
}

TEST(QVConcreteTextStorageParsing, SettingTheSameAgainDoesNothing) {
    const auto storage = documentWithText(u"k1", smallLanguage());
    const auto parse = storage->parse();
    StorageNotifications notifications(*storage);
    storage->setSyntax(storage->syntax());
    storage->setParsingEnabled(true);
    EXPECT_EQ(storage->parse(), parse);
    EXPECT_FALSE(storage->isParseUpdating());
    EXPECT_THAT(notifications.take(), IsEmpty());

    storage->setSyntax(nullptr);
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+2"));
    storage->setSyntax(nullptr);
    EXPECT_THAT(notifications.take(), IsEmpty());
}

TEST(QVConcreteTextStorageParsing, ANullSyntaxResetsHighlighting) {
    const auto storage = documentWithText(u"k1 b", smallLanguage());
    storage->setSyntax(nullptr);
    EXPECT_EQ(storage->parse(), nullptr);
    EXPECT_EQ(drawnHighlighting(*storage), "....");
    EXPECT_EQ(drawnFonts(*storage), "....");
    EXPECT_EQ(storage->syntaxAtLocation(0), nullptr);
    storage->replaceCharactersInRange({0, 0}, u"x");
    EXPECT_FALSE(storage->isParseUpdating()) << "there is nothing to reparse";
}

TEST(QVConcreteTextStorageParsing, ADisabledStorageTakesASyntaxWithoutParsing) {
    const auto storage = QVConcreteTextStorage::initWithString(u"k1");
    storage->setParsingEnabled(false);
    const auto syntax = smallLanguage();
    storage->setSyntax(syntax);
    EXPECT_EQ(storage->parse(), nullptr);
    EXPECT_EQ(storage->syntaxAtLocation(1), syntax);
    storage->setParsingEnabled(true);
    EXPECT_NE(storage->parse(), nullptr);
}

TEST(QVConcreteTextStorageParsing, ASyntaxSetInABracketGetsTheTextOnce) {
    const auto storage = QVConcreteTextStorage::initWithString(u"x");
    storage->beginEditing();
    storage->replaceCharactersInRange({0, 0}, u"k1 ");
    storage->setSyntax(smallLanguage());
    EXPECT_FALSE(storage->isParseUpdating());
    storage->replaceCharactersInRange({0, 0}, u"2 ");
    storage->endEditing();
    EXPECT_TRUE(storage->isParseUpdating());
    finishAllRounds(*storage);
    EXPECT_EQ(parsedText(*storage), "2 k1 x");
    EXPECT_EQ(drawnHighlighting(*storage), "2.11..");
}

TEST(QVConcreteTextStorageParsing, ResultsThatComeInsideOfABracketLandWhereTheTextIsThen) {
    const auto storage = documentWithText(u"k1\nx", smallLanguage());
    storage->replaceCharactersInRange({3, 1}, u"k");
    waitForQueue(*storage->parse());
    storage->beginEditing();
    storage->replaceCharactersInRange({0, 0}, u"yyy");
    MainQueue::drain();
    EXPECT_EQ(drawnHighlighting(*storage), "...11.1");
    storage->endEditing();
    finishAllRounds(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "...11.1");
    EXPECT_EQ(parsedText(*storage), "yyyk1\nk");
}

TEST(QVConcreteTextStorageParsing, ASyntaxSetInABracketInWhichARoundCameToItsEndStartsAnew) {
    const auto syntax = smallLanguage();
    const auto storage = documentWithText(u"k1\nx", syntax);
    {
        const BusyQueue busy(*storage->parse());
        storage->replaceCharactersInRange({3, 1}, u"k");
        storage->replaceCharactersInRange({4, 0}, u"2");
    }
    waitForQueue(*storage->parse());
    storage->beginEditing();
    storage->replaceCharactersInRange({0, 0}, u"3 ");
    MainQueue::drain();
    EXPECT_TRUE(storage->isParseUpdating()) << "the next round is to start behind the bracket";
    storage->setSyntax(nullptr);
    storage->setSyntax(syntax);
    storage->endEditing();
    finishAllRounds(*storage);
    EXPECT_EQ(parsedText(*storage), "3 k1\nk2");
    EXPECT_EQ(drawnHighlighting(*storage), "2.11.11");
}

TEST(QVConcreteTextStorageParsing, TheDelegateGoesToEachParse) {
    const auto storage = QVConcreteTextStorage::initWithString(u"k1");
    const auto first = std::make_shared<DiagnosticRecorder>();
    const auto second = std::make_shared<DiagnosticRecorder>();
    storage->setParseDelegate(first);
    EXPECT_EQ(storage->parseDelegate(), first);
    storage->setSyntax(smallLanguage());
    EXPECT_EQ(storage->parse()->delegate(), first);
    storage->setParseDelegate(second);
    EXPECT_EQ(storage->parse()->delegate(), second);
    storage->setParseDelegate(nullptr);
    EXPECT_EQ(storage->parse()->delegate(), nullptr);
}

TEST(QVConcreteTextStorageParsing, TheSyntaxOfACharacterIsTheInnermost) {
    const RegisteredSyntax inner(
        syntaxFromXML("<syntax name='inner'><scopes>" + single("word", "\\w+") + "</scopes></syntax>"));
    const auto outer = syntaxWithScopes(region("embedded", "&lt;", "&gt;", "<subsyntax name='inner'/>") +
                                        single("keyword", "k\\w*"));
    const auto storage = documentWithText(u"k <a>", outer);
    EXPECT_EQ(storage->syntaxAtLocation(0), outer);
    EXPECT_EQ(storage->syntaxAtLocation(3), inner.syntax());
    EXPECT_EQ(storage->syntaxAtLocation(4), outer);
    EXPECT_EQ(storage->syntaxAtLocation(NSNotFound), outer);
    // The place behind the text reads the last character.
    EXPECT_EQ(storage->syntaxAtLocation(5), outer);
    storage->deleteCharactersInRange({4, 1});
    EXPECT_EQ(storage->syntaxAtLocation(4), inner.syntax());
    // New text has the syntax of what stands at its place; at the end the document's.
    const BusyQueue busy(*storage->parse());
    storage->replaceCharactersInRange({3, 0}, u"xy");
    EXPECT_EQ(storage->syntaxAtLocation(4), inner.syntax());
    storage->replaceCharactersInRange({6, 0}, u"z");
    EXPECT_EQ(storage->syntaxAtLocation(6), outer);
}

TEST(QVConcreteTextStorageParsing, TheSyntaxesOfAnEditComeInWithItsColours) {
    const RegisteredSyntax inner(
        syntaxFromXML("<syntax name='inner'><scopes>" + single("word", "\\w+") + "</scopes></syntax>"));
    const auto outer = syntaxWithScopes(region("embedded", "&lt;", "&gt;", "<subsyntax name='inner'/>"));
    const auto storage = documentWithText(u"k\n\n\n\n(a)\n\n\n\nk", outer);
    EXPECT_EQ(storage->syntaxAtLocation(6), outer);
    storage->replaceCharactersInRange({5, 3}, u"<a>");
    finishAllRounds(*storage);
    EXPECT_EQ(storage->syntaxAtLocation(6), inner.syntax());
    EXPECT_EQ(storage->syntaxAtLocation(8), outer);
    storage->replaceCharactersInRange({5, 3}, u"(a)");
    finishAllRounds(*storage);
    EXPECT_EQ(storage->syntaxAtLocation(6), outer);
}

TEST(QVConcreteTextStorageParsing, WhereAnEmbeddedLanguageIsMissingTheSyntaxIsTheDocuments) {
    const auto outer = syntaxWithScopes(region("embedded", "&lt;", "&gt;", "<subsyntax name='missing'/>"));
    const auto storage = documentWithText(u"k <a>", outer);
    for (NSUInteger location = 0; location <= 5; ++location)
        EXPECT_EQ(storage->syntaxAtLocation(location), outer) << location;
}

} // namespace
} // namespace quorvane
