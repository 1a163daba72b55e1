#include "Platform/Foundation/NSUndoManager.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Quorvane/Text/BareTextStorage.h"
#include "Tests/Quorvane/Text/StorageFixtures.h"
#include "Tests/Support/Exceptions.h"

#include <gtest/gtest.h>

namespace quorvane {

namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(QVTextStorage, WhatSubclassesMustOverrideThrowsWithItsName) {
    BareTextStorage storage;
    const auto expect = [](const char16_t *name, auto operation) {
        EXPECT_EQ(reasonOf(operation), NSString::stringWithFormat(u"Subclasses must override %@.", name));
    };
    expect(u"isParsingEnabled", [&] { storage.isParsingEnabled(); });
    expect(u"setParsingEnabled:", [&] { storage.setParsingEnabled(true); });
    expect(u"cancelParsing", [&] { storage.cancelParsing(); });
    expect(u"clearContents", [&] { storage.clearContents(); });
    expect(u"syntax", [&] { storage.syntax(); });
    expect(u"setSyntax:", [&] { storage.setSyntax(nullptr); });
    expect(u"syntaxAtLocation:", [&] { storage.syntaxAtLocation(0); });
    expect(u"parse", [&] { storage.parse(); });
    expect(u"parseDelegate", [&] { storage.parseDelegate(); });
    expect(u"setParseDelegate:", [&] { storage.setParseDelegate(nullptr); });
    expect(u"defaultTextAttributes", [&] { storage.defaultTextAttributes(); });
    expect(u"setDefaultTextAttributes:", [&] { storage.setDefaultTextAttributes({}); });
    expect(u"lineEndings", [&] { storage.lineEndings(); });
    expect(u"setLineEndings:", [&] { storage.setLineEndings(QVLineEndingsCR); });
    expect(u"indentationStyle", [&] { storage.indentationStyle(); });
    expect(u"setIndentationStyle:", [&] { storage.setIndentationStyle(QVIndentationStyleTabs); });
    expect(u"tabWidth", [&] { storage.tabWidth(); });
    expect(u"setTabWidth:", [&] { storage.setTabWidth(4); });
    expect(u"undoManager", [&] { storage.undoManager(); });
    expect(u"setUndoManager:", [&] { storage.setUndoManager(nullptr); });
    expect(u"numberOfLines", [&] { storage.numberOfLines(); });
    expect(u"characterRangeForLineNumber:", [&] { storage.characterRangeForLineNumber(0); });
    expect(u"characterRangeForLineNumbersInRange:", [&] {
        storage.characterRangeForLineNumbersInRange({0, 1});
    });
    expect(u"enumerateLinesInRange:usingBlock:", [&] { storage.enumerateLinesInRange({0, 1}, nullptr); });
    expect(u"lineNumberForCharacterIndex:actualCharacterRange:",
           [&] { storage.lineNumberForCharacterIndex(0); });
    expect(u"rangeOfLineNumbersForCharacterRange:actualCharacterRange:", [&] {
        storage.rangeOfLineNumbersForCharacterRange({0, 1});
    });
    expect(u"enumerateLinesForCharacterRange:usingBlock:", [&] {
        storage.enumerateLinesForCharacterRange({0, 1}, nullptr);
    });
    expect(u"syntaxHighlightingAttributesAtIndex:effectiveRange:",
           [&] { storage.syntaxHighlightingAttributesAtIndex(0, nullptr); });
    expect(u"extendedAttributesAtIndex:effectiveRange:",
           [&] { storage.extendedAttributesAtIndex(0, nullptr); });
    expect(u"setExtendedAttributes:range:", [&] { storage.setExtendedAttributes({}, {0, 0}); });
}

TEST(QVTextStorage, DocumentsHaveNoUndoManagerAndNoWayToCancelTheirParse) {
    const auto storage = QVTextStorage::init();
    EXPECT_EQ(reasonOf([&] { storage->cancelParsing(); }), u"Subclasses must override cancelParsing.");
    EXPECT_EQ(reasonOf([&] { storage->undoManager(); }), u"Subclasses must override undoManager.");
    EXPECT_EQ(reasonOf([&] { storage->setUndoManager(nullptr); }),
              u"Subclasses must override setUndoManager:.");
}

TEST(QVTextStorage, AskingForAStorageGivesADocument) {
    const auto isDocument = [](const std::shared_ptr<QVTextStorage> &storage) {
        return std::dynamic_pointer_cast<QVConcreteTextStorage>(storage) != nullptr;
    };
    EXPECT_TRUE(isDocument(QVTextStorage::init()));
    EXPECT_EQ(QVTextStorage::init()->length(), 0u);
    EXPECT_TRUE(isDocument(QVTextStorage::initWithString(u"a")));
    EXPECT_EQ(textOf(*QVTextStorage::initWithString(u"a")), "a");
    const auto marked = QVTextStorage::initWithString(u"a", mark(3));
    EXPECT_TRUE(isDocument(marked));
    EXPECT_EQ(marked->attribute(NSToolTipAttributeName, 0), NSAttributeValue(3));
    const auto copied = QVTextStorage::initWithAttributedString(*marked);
    EXPECT_TRUE(isDocument(copied));
    EXPECT_EQ(copied->attribute(NSToolTipAttributeName, 0), NSAttributeValue(3));
}

TEST(QVTextStorage, IsNotEnsuringAttributes) { EXPECT_FALSE(BareTextStorage().isEnsuringAttributes()); }

// MARK: Change observers

TEST(QVTextStorageObservers, HearOfAChangeBeforeAndAfter) {
    BareTextStorage storage(u"abc");
    std::vector<std::string> lines;
    const auto observer = std::make_shared<StorageObserver>(lines);
    storage.addChangeObserver(observer);
    storage.replaceCharactersInRange({1, 1}, u"xy");
    EXPECT_THAT(lines, ElementsAre("will 2 1+1 null", "did 2 1+2 +1"));
}

TEST(QVTextStorageObservers, AreToldInTheOrderTheyWereAddedAndOnce) {
    BareTextStorage storage(u"abc");
    std::vector<std::string> first;
    std::vector<std::string> second;
    const auto one = std::make_shared<StorageObserver>(first);
    const auto two = std::make_shared<StorageObserver>(second);
    storage.addChangeObserver(one);
    storage.addChangeObserver(two);
    storage.addChangeObserver(one);
    storage.addChangeObserver(nullptr);
    storage.deleteCharactersInRange({0, 1});
    EXPECT_EQ(first.size(), 2u);
    EXPECT_EQ(second.size(), 2u);
}

TEST(QVTextStorageObservers, AreNotToldOnceRemoved) {
    BareTextStorage storage(u"abc");
    std::vector<std::string> lines;
    const auto observer = std::make_shared<StorageObserver>(lines);
    storage.addChangeObserver(observer);
    storage.removeChangeObserver(observer);
    storage.deleteCharactersInRange({0, 1});
    EXPECT_THAT(lines, IsEmpty());
}

TEST(QVTextStorageObservers, AreNotOwned) {
    BareTextStorage storage(u"abc");
    std::vector<std::string> lines;
    auto observer = std::make_shared<StorageObserver>(lines);
    const std::weak_ptr<StorageObserver> weak = observer;
    storage.addChangeObserver(observer);
    observer.reset();
    EXPECT_TRUE(weak.expired());
    storage.deleteCharactersInRange({0, 1});
    EXPECT_THAT(lines, IsEmpty());
}

TEST(QVTextStorageObservers, ThatAreRemovedBeforeTheirTurnAreNotTold) {
    struct Remover : QVTextStorageChangeObserver {
        void textStorageWillChange(QVTextStorage &storage, NSTextStorageEditActions, NSRange,
                                   const NSAttributedString *) override {
            storage.removeChangeObserver(other);
            ++calls;
        }
        std::shared_ptr<QVTextStorageChangeObserver> other;
        int calls = 0;
    };
    BareTextStorage storage(u"abc");
    const auto first = std::make_shared<Remover>();
    const auto second = std::make_shared<Remover>();
    first->other = second;
    storage.addChangeObserver(first);
    storage.addChangeObserver(second);
    storage.deleteCharactersInRange({0, 1});
    EXPECT_EQ(first->calls, 1);
    EXPECT_EQ(second->calls, 0);
}

TEST(QVTextStorageObservers, MayComeAndGoWhileTheyAreTold) {
    struct Coming : QVTextStorageChangeObserver {
        explicit Coming(std::vector<std::string> &lines) : added(std::make_shared<StorageObserver>(lines)) {}
        void textStorageWillChange(QVTextStorage &storage, NSTextStorageEditActions, NSRange,
                                   const NSAttributedString *) override {
            storage.addChangeObserver(added);
        }
        std::shared_ptr<StorageObserver> added;
    };
    BareTextStorage storage(u"abc");
    std::vector<std::string> lines;
    const auto coming = std::make_shared<Coming>(lines);
    storage.addChangeObserver(coming);
    storage.deleteCharactersInRange({0, 1});
    EXPECT_THAT(lines, ElementsAre("did 2 0+0 -1"));
}

} // namespace
} // namespace quorvane
