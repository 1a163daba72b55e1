#include "Quorvane/Text/QVConcreteTextStorage.h"

#include "Platform/AppKit/NSColor.h"
#include "Platform/Foundation/NSException.h"
#include "Tests/Quorvane/Packages/PackageFixture.h"
#include "Tests/Quorvane/Text/StorageFixtures.h"
#include "Tests/Support/CodingFixtures.h"

#include <gtest/gtest.h>

namespace quorvane {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;

// MARK: Making

TEST(QVConcreteTextStorage, ANewOneIsEmptyAndHasTheUsualSettings) {
    const auto storage = QVConcreteTextStorage::init();
    EXPECT_EQ(storage->length(), 0u);
    EXPECT_EQ(storage->numberOfLines(), 1u);
    EXPECT_EQ(storage->syntax(), nullptr);
    EXPECT_EQ(storage->parse(), nullptr);
    EXPECT_EQ(storage->parseDelegate(), nullptr);
    EXPECT_TRUE(storage->isParsingEnabled());
    EXPECT_FALSE(storage->isParseUpdating());
    EXPECT_EQ(storage->lineEndings(), QVLineEndingsLF);
    EXPECT_EQ(storage->indentationStyle(), QVIndentationStyleTabs);
    EXPECT_EQ(storage->tabWidth(), 4u);
    EXPECT_FALSE(storage->isEnsuringAttributes());
    EXPECT_TRUE(storage->fixesAttributesLazily());
    EXPECT_EQ(storage->className(), u"QVConcreteTextStorage");
}

TEST(QVConcreteTextStorage, DefaultsHaveAFontAndAColour) {
    const NSAttributes defaults = QVConcreteTextStorage::init()->defaultTextAttributes();
    EXPECT_EQ(defaults.count(), 2u);
    const auto *const font = defaults.objectForKey<CTFont>(NSFontAttributeName);
    ASSERT_NE(font, nullptr);
    EXPECT_EQ(font->size(), 12);
    EXPECT_EQ(*defaults.valueForKey(NSForegroundColorAttributeName), NSAttributeValue(NSColor::blackColor()));
}

TEST(QVConcreteTextStorage, MadeWithATextItHasItsLinesAndNothingElse) {
    const auto storage = QVConcreteTextStorage::initWithString(u"a\nb");
    EXPECT_EQ(textOf(*storage), "a\nb");
    EXPECT_EQ(storage->numberOfLines(), 2u);
    for (NSUInteger index = 0; index < 3; ++index) {
        EXPECT_TRUE(storage->syntaxHighlightingAttributesAtIndex(index, nullptr).empty());
        EXPECT_TRUE(storage->extendedAttributesAtIndex(index, nullptr).empty());
        EXPECT_EQ(storage->syntaxAtLocation(index), nullptr);
    }
}

TEST(QVConcreteTextStorage, AnOwnedStringIsNotCopied) {
    const auto contents = NSMutableAttributedString::initWithString(u"ab", mark(1));
    const auto storage = QVConcreteTextStorage::initWithOwnedMutableAttributedString(contents);
    EXPECT_EQ(&storage->contents(), contents.get());
    EXPECT_EQ(storage->contents().attribute(NSToolTipAttributeName, 0), NSAttributeValue(1));
    // What every text has is added.
    EXPECT_TRUE(contents->attributesAtIndex(0).containsKey(NSFontAttributeName));
    EXPECT_TRUE(contents->attributesAtIndex(0).containsKey(NSForegroundColorAttributeName));
    EXPECT_EQ(QVConcreteTextStorage::initWithOwnedMutableAttributedString(nullptr)->length(), 0u);
}

TEST(QVConcreteTextStorage, ACopyHasTheTextTheSyntaxAndTheSettings) {
    const auto storage = documentWithText(u"k1 b", smallLanguage());
    storage->setDefaultTextAttributes({{NSUnderlineStyleAttributeName, 9}});
    storage->setLineEndings(QVLineEndingsCRLF);
    storage->setIndentationStyle(QVIndentationStyleSpaces);
    storage->setTabWidth(7);
    storage->addAttribute(NSToolTipAttributeName, 5, {1, 1});
    finishAllRounds(*storage);
    const auto copy = storage->copy();
    EXPECT_EQ(textOf(*copy), "k1 b");
    EXPECT_EQ(copy->syntax(), storage->syntax());
    EXPECT_NE(copy->parse(), storage->parse());
    EXPECT_EQ(copy->defaultTextAttributes(), storage->defaultTextAttributes());
    EXPECT_EQ(copy->lineEndings(), QVLineEndingsCRLF);
    EXPECT_EQ(copy->indentationStyle(), QVIndentationStyleSpaces);
    EXPECT_EQ(copy->tabWidth(), 7u);
    EXPECT_EQ(copy->contents().attribute(NSToolTipAttributeName, 1), NSAttributeValue(5));
    finishAllRounds(*copy);
    EXPECT_EQ(drawnHighlighting(*copy), "1199");
    copy->replaceCharactersInRange({0, 4}, u"");
    EXPECT_EQ(textOf(*storage), "k1 b");
}

// MARK: Reading

TEST(QVConcreteTextStorage, PastTheEndTheDefaultsAreRead) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab", mark(1));
    NSRange range;
    EXPECT_EQ(storage->attributesAtIndex(2, &range), storage->defaultTextAttributes());
    EXPECT_EQ(range, NSMakeRange(2, 0));
    EXPECT_EQ(storage->attributesAtIndex(7, nullptr), storage->defaultTextAttributes());
    EXPECT_EQ(storage->attribute(NSToolTipAttributeName, 2), std::nullopt);
    EXPECT_EQ(storage->attribute(NSFontAttributeName, 2),
              *storage->defaultTextAttributes().valueForKey(NSFontAttributeName));
    EXPECT_EQ(QVConcreteTextStorage::init()->attributesAtIndex(0, nullptr), storage->defaultTextAttributes());
}

TEST(QVConcreteTextStorage, HighlightingAtTheEndIsThatOfTheLastCharacter) {
    const auto storage = documentWithText(u"k1", smallLanguage());
    NSRange range;
    EXPECT_EQ(storage->syntaxHighlightingAttributesAtIndex(2, &range),
              storage->syntaxHighlightingAttributesAtIndex(1, nullptr));
    EXPECT_EQ(range, NSMakeRange(0, 2));
    EXPECT_THROW(storage->syntaxHighlightingAttributesAtIndex(3, nullptr), NSException);
    EXPECT_TRUE(QVConcreteTextStorage::init()->syntaxHighlightingAttributesAtIndex(0, &range).empty());
    EXPECT_EQ(range, NSMakeRange(0, 0));
}

TEST(QVConcreteTextStorage, HighlightingIsWalkedRunByRun) {
    const auto storage = documentWithText(u"k1 22", smallLanguage());
    std::string runs;
    storage->enumerateSyntaxHighlightingAttributesInRange(
        {1, 4}, 0, [&](const NSAttributes &, NSRange range, bool &) { runs += drawn(range) + " "; });
    EXPECT_EQ(runs, "1+1 2+1 3+2 ");
}

TEST(QVConcreteTextStorage, ExtendedAttributesAreNoEdits) {
    const auto storage = QVConcreteTextStorage::initWithString(u"abcdef");
    std::vector<std::string> lines;
    const StorageView view(*storage, lines);
    const auto observer = std::make_shared<StorageObserver>(lines);
    storage->addChangeObserver(observer);
    storage->setExtendedAttributes(mark(1), {0, 3});
    storage->addExtendedAttribute(NSLinkAttributeName, 2, {2, 2});
    storage->addExtendedAttributes({{NSCursorAttributeName, 3}}, {5, 1});
    storage->removeExtendedAttribute(NSToolTipAttributeName, {0, 1});
    EXPECT_THAT(lines, IsEmpty());

    std::vector<std::string> runs;
    storage->enumerateExtendedAttributesInRange(
        {0, 6}, 0, [&](const NSAttributes &attributes, NSRange range, bool &) {
            runs.push_back(drawn(range) + attributes.description().UTF8String());
        });
    EXPECT_THAT(runs, ElementsAre("0+1{}", "1+1{NSToolTip = 1}", "2+1{NSLink = 2; NSToolTip = 1}",
                                  "3+1{NSLink = 2}", "4+1{}", "5+1{NSCursor = 3}"));
    std::vector<std::string> links;
    storage->enumerateExtendedAttribute(
        NSLinkAttributeName, {0, 6}, 0, [&](const NSAttributeValue *value, NSRange range, bool &) {
            links.push_back(drawn(range) + (value ? "=" + std::to_string(value->integerValue()) : ""));
        });
    EXPECT_THAT(links, ElementsAre("0+2", "2+2=2", "4+2"));
    EXPECT_THROW(storage->extendedAttributesAtIndex(7, nullptr), NSException);
    EXPECT_EQ(storage->extendedAttributesAtIndex(6, nullptr), storage->extendedAttributesAtIndex(5, nullptr));
}

// MARK: Lines

TEST(QVConcreteTextStorage, LinesAreFoundByTheirNumber) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab\r\nc\n");
    EXPECT_EQ(storage->numberOfLines(), 3u);
    EXPECT_EQ(storage->characterRangeForLineNumber(0), NSMakeRange(0, 4));
    EXPECT_EQ(storage->characterRangeForLineNumber(1), NSMakeRange(4, 2));
    EXPECT_EQ(storage->characterRangeForLineNumber(2), NSMakeRange(6, 0));
    EXPECT_EQ(storage->characterRangeForLineNumber(3), NSNotFoundRange);
    EXPECT_EQ(storage->characterRangeForLineNumbersInRange({0, 2}), NSMakeRange(0, 6));
    EXPECT_EQ(storage->characterRangeForLineNumbersInRange({1, 9}), NSMakeRange(4, 2));
    EXPECT_EQ(storage->characterRangeForLineNumbersInRange({1, 0}), NSMakeRange(4, 0));
    EXPECT_EQ(storage->characterRangeForLineNumbersInRange({3, 1}), NSNotFoundRange);
}

TEST(QVConcreteTextStorage, LinesAreFoundByTheirCharacters) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab\r\nc\n");
    NSRange range;
    EXPECT_EQ(storage->lineNumberForCharacterIndex(3, &range), 0u);
    EXPECT_EQ(range, NSMakeRange(0, 4));
    EXPECT_EQ(storage->lineNumberForCharacterIndex(4), 1u);
    EXPECT_EQ(storage->lineNumberForCharacterIndex(6, &range), 2u);
    EXPECT_EQ(range, NSMakeRange(6, 0));
    EXPECT_THROW(storage->lineNumberForCharacterIndex(7), NSException);

    EXPECT_EQ(storage->rangeOfLineNumbersForCharacterRange({1, 4}, &range), NSMakeRange(0, 2));
    EXPECT_EQ(range, NSMakeRange(0, 6));
    EXPECT_EQ(storage->rangeOfLineNumbersForCharacterRange({1, 3}, &range), NSMakeRange(0, 1));
    EXPECT_EQ(range, NSMakeRange(0, 4));
    EXPECT_EQ(storage->rangeOfLineNumbersForCharacterRange({4, 0}), NSMakeRange(1, 1));
    EXPECT_EQ(storage->rangeOfLineNumbersForCharacterRange({0, 99}), NSMakeRange(0, 2));
}

TEST(QVConcreteTextStorage, LinesAreWalked) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab\r\nc\nd");
    std::string lines;
    const auto note = [&](NSRange range, NSUInteger number, bool &stop) {
        lines += std::to_string(number) + ":" + drawn(range) + " ";
        stop = number == 1;
    };
    storage->enumerateLinesInRange({0, 3}, note);
    EXPECT_EQ(std::exchange(lines, ""), "0:0+4 1:4+2 ");
    storage->enumerateLinesInRange({2, 1}, note);
    EXPECT_EQ(std::exchange(lines, ""), "2:6+1 ");
    storage->enumerateLinesForCharacterRange({5, 2}, note);
    EXPECT_EQ(std::exchange(lines, ""), "1:4+2 ");
    EXPECT_THROW(storage->enumerateLinesInRange({3, 1}, note), NSException);
}

// MARK: Observing

TEST(QVConcreteTextStorage, ItsPropertiesCanBeObserved) {
    const auto storage = QVConcreteTextStorage::initWithString(u"k1");
    std::vector<std::string> changes;
    std::vector<NSKeyValueObservation> observations;
    for (const char16_t *const key :
         {u"parsingEnabled", u"syntax", u"parse", u"parseDelegate", u"defaultTextAttributes", u"lineEndings",
          u"indentationStyle", u"tabWidth"})
        observations.push_back(
            storage->addObserver(key, NSKeyValueObservingOptionOld | NSKeyValueObservingOptionNew,
                                 [&](const NSKeyValueChange &change) {
                                     EXPECT_TRUE(change.oldValue.has_value());
                                     EXPECT_TRUE(change.newValue.has_value());
                                     changes.push_back(change.keyPath.UTF8String());
                                 }));
    storage->setTabWidth(3);
    storage->setLineEndings(QVLineEndingsCR);
    storage->setIndentationStyle(QVIndentationStyleSpaces);
    storage->setParseDelegate(std::make_shared<DiagnosticRecorder>());
    storage->setDefaultTextAttributes(mark(1));
    EXPECT_THAT(std::exchange(changes, {}), ElementsAre("tabWidth", "lineEndings", "indentationStyle",
                                                        "parseDelegate", "defaultTextAttributes"));
    storage->setSyntax(smallLanguage());
    // The storage heard of it first, and made the parse.
    EXPECT_THAT(std::exchange(changes, {}), ElementsAre("parse", "parse", "syntax"));
    storage->setParsingEnabled(false);
    EXPECT_THAT(std::exchange(changes, {}), ElementsAre("parse", "parsingEnabled"));
    EXPECT_FALSE(storage->valueForKey(u"nothing").has_value());
    EXPECT_EQ(std::any_cast<NSUInteger>(storage->valueForKey(u"tabWidth")), 3u);
}

// MARK: Packages

std::shared_ptr<TestPackage> packageWithSyntax(NSString identifier) {
    auto package = packageNamed(std::move(identifier));
    package->addSyntax("loaded", "<scopes>" + single("keyword", "k\\w*") + "</scopes>");
    return package;
}

TEST(QVConcreteTextStorage, UnloadingAndLoadingAPackageBringsTheSyntaxBackByItsName) {
    const auto package = packageWithSyntax(u"storage.package");
    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    const auto syntax = QVSyntax::syntaxForName(u"loaded");
    const auto storage = documentWithText(u"k1", syntax);
    QVLoadable::unloadPackagesFromSyntaxEngine({package});
    EXPECT_EQ(storage->syntax(), nullptr);
    EXPECT_EQ(storage->parse(), nullptr);

    // The name counts, whoever brings it.
    const auto other = packageWithSyntax(u"storage.other");
    {
        const LoadedPackages loaded({packageNamed(u"storage.unrelated"), other});
        EXPECT_EQ(storage->syntax(), other->ownSyntaxes.at(u"loaded"));
        EXPECT_NE(storage->parse(), nullptr);
        finishAllRounds(*storage);
    }
    EXPECT_EQ(storage->syntax(), nullptr);
    const LoadedPackages loaded({package});
    EXPECT_EQ(storage->syntax(), syntax);
    finishAllRounds(*storage);
}

TEST(QVConcreteTextStorage, UnloadingAnotherPackageTouchesNothing) {
    const auto package = packageWithSyntax(u"storage.package");
    const auto unrelated = packageNamed(u"storage.unrelated");
    const LoadedPackages loaded({package});
    QVLoadable::loadPackagesIntoSyntaxEngine({unrelated});
    const auto storage = documentWithText(u"k1", QVSyntax::syntaxForName(u"loaded"));
    const auto parse = storage->parse();
    QVLoadable::unloadPackagesFromSyntaxEngine({unrelated});
    EXPECT_EQ(storage->parse(), parse);
}

TEST(QVConcreteTextStorage, AnotherPackageWithASyntaxOfTheSameNameLeavesTheOneThatCameBack) {
    const auto package = packageWithSyntax(u"storage.package");
    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    const auto storage = documentWithText(u"k1", QVSyntax::syntaxForName(u"loaded"));
    QVLoadable::unloadPackagesFromSyntaxEngine({package});
    const LoadedPackages back({package});
    const auto syntax = storage->syntax();
    ASSERT_NE(syntax, nullptr);
    const LoadedPackages loaded({packageWithSyntax(u"storage.other")});
    EXPECT_EQ(storage->syntax(), syntax);
    finishAllRounds(*storage);
}

TEST(QVConcreteTextStorage, SettingASyntaxForgetsTheNameOfTheUnloadedOne) {
    const auto package = packageWithSyntax(u"storage.package");
    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    const auto storage = documentWithText(u"k1", QVSyntax::syntaxForName(u"loaded"));
    QVLoadable::unloadPackagesFromSyntaxEngine({package});
    storage->setSyntax(nullptr);
    const LoadedPackages loaded({package});
    EXPECT_EQ(storage->syntax(), nullptr);
}

TEST(QVConcreteTextStorage, AStorageWithoutASyntaxDoesNotCareForPackages) {
    const auto storage = QVConcreteTextStorage::initWithString(u"k1");
    const LoadedPackages loaded({packageWithSyntax(u"storage.package")});
    EXPECT_EQ(storage->syntax(), nullptr);
}

// MARK: Archiving

TEST(QVConcreteTextStorage, AnArchiveHasTheTextAndTheSettings) {
    const auto storage = documentWithText(u"k1\r\nb", smallLanguage());
    storage->setDefaultTextAttributes({{NSUnderlineStyleAttributeName, 9},
                                       {NSForegroundColorAttributeName, NSColor::whiteColor()},
                                       {NSToolTipAttributeName, u"tip"}});
    storage->setLineEndings(QVLineEndingsCRLF);
    storage->setIndentationStyle(QVIndentationStyleSpaces);
    storage->setTabWidth(7);
    storage->setExtendedAttributes(mark(1), {0, 2});
    const auto restored = throughArchive(storage);
    ASSERT_NE(restored, nullptr);
    EXPECT_EQ(textOf(*restored), "k1\r\nb");
    EXPECT_EQ(restored->numberOfLines(), 2u);
    EXPECT_EQ(restored->defaultTextAttributes(), storage->defaultTextAttributes());
    EXPECT_EQ(restored->lineEndings(), QVLineEndingsCRLF);
    EXPECT_EQ(restored->indentationStyle(), QVIndentationStyleSpaces);
    EXPECT_EQ(restored->tabWidth(), 7u);
    EXPECT_EQ(restored->syntax(), nullptr);
    EXPECT_TRUE(restored->extendedAttributesAtIndex(0, nullptr).empty());
    // It is a document like others.
    restored->setSyntax(storage->syntax());
    finishAllRounds(*restored);
    EXPECT_EQ(drawnHighlighting(*restored), "11999");
}

TEST(QVConcreteTextStorage, ItsArchiveHasTheseKeys) {
    EXPECT_THAT(archivedKeys(*QVConcreteTextStorage::initWithString(u"a")),
                ElementsAre("defaultTextAttributes: value dictionary", "indentationStyle: integer",
                            "lineEndings: integer", "string: string", "tabWidth: integer"));
}

TEST(QVConcreteTextStorage, WhatAnArchiveLacksStaysAsItIs) {
    const auto restored = readForged<QVConcreteTextStorage>([](NSCoder &) {});
    ASSERT_NE(restored, nullptr);
    EXPECT_EQ(restored->length(), 0u);
    EXPECT_EQ(restored->lineEndings(), QVLineEndingsLF);
    EXPECT_EQ(restored->indentationStyle(), QVIndentationStyleTabs);
    EXPECT_EQ(restored->tabWidth(), 4u);
    EXPECT_EQ(restored->defaultTextAttributes(), QVConcreteTextStorage::init()->defaultTextAttributes());
}

TEST(QVConcreteTextStorage, WhatMeansNothingInAnArchiveIsPassedOver) {
    const auto restored = readForged<QVConcreteTextStorage>([](NSCoder &coder) {
        coder.encodeInteger(1, u"string");
        coder.encodeInteger(3, u"lineEndings");
        coder.encodeInteger(-1, u"indentationStyle");
        coder.encodeInteger(-4, u"tabWidth");
        // A colour is no font.
        coder.encodeValueDictionary(
            std::map<NSString, NSCodingValue>{
                {u"NSFont", std::const_pointer_cast<NSColor>(NSColor::whiteColor())},
                {u"NSColor", NSInteger(3)}},
            u"defaultTextAttributes");
    });
    ASSERT_NE(restored, nullptr);
    EXPECT_EQ(restored->length(), 0u);
    EXPECT_EQ(restored->lineEndings(), QVLineEndingsLF);
    EXPECT_EQ(restored->indentationStyle(), QVIndentationStyleTabs);
    EXPECT_EQ(restored->tabWidth(), 4u);
    EXPECT_NE(restored->defaultTextAttributes().objectForKey<CTFont>(NSFontAttributeName), nullptr);
}

} // namespace
} // namespace quorvane
