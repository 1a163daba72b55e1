#include "Platform/AppKit/NSColor.h"
#include "Platform/AppKit/NSParagraphStyle.h"
#include "Platform/CoreText/CTStringAttributes.h"
#include "Tests/Quorvane/Text/StorageFixtures.h"

#include <gtest/gtest.h>

namespace quorvane {
namespace {

using namespace test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

CTFontRef monospaced(CGFloat size) { return CTFontCreateWithName(u"DejaVuSansMono", size); }
CTFontRef proportional(CGFloat size) { return CTFontCreateWithName(u"DejaVuSans", size); }

CGFloat blankOf(const CTFontRef &font) {
    CGGlyph glyph = 0;
    EXPECT_TRUE(CTFontGetGlyphsForCharacters(font, u" ", std::span(&glyph, 1)));
    return CTFontGetAdvancesForGlyphs(font, std::span(&glyph, 1));
}

const CTFont *fontAt(const QVConcreteTextStorage &storage, NSUInteger index) {
    return storage.contents().attributesAtIndex(index).objectForKey<CTFont>(NSFontAttributeName);
}

const NSParagraphStyle *styleAt(const QVConcreteTextStorage &storage, NSUInteger index) {
    return storage.attributesAtIndex(index, nullptr)
        .objectForKey<NSParagraphStyle>(NSParagraphStyleAttributeName);
}

/// A document, and all that its observer hears.
class ObservedStorage {
public:
    explicit ObservedStorage(std::u16string_view text)
        : storage(QVConcreteTextStorage::initWithString(text)) {
        storage->addChangeObserver(_observer);
    }
    std::vector<std::string> take() { return std::exchange(_lines, {}); }

private:
    std::vector<std::string> _lines;
    std::shared_ptr<StorageObserver> _observer = std::make_shared<StorageObserver>(_lines);

public:
    std::shared_ptr<QVConcreteTextStorage> storage;
};

// MARK: Default attributes

TEST(QVConcreteTextStorageAttributes, GivenDefaultsAreCompleted) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab");
    storage->setDefaultTextAttributes(mark(1));
    const NSAttributes defaults = storage->defaultTextAttributes();
    EXPECT_EQ(defaults.count(), 3u);
    EXPECT_EQ(*defaults.valueForKey(NSToolTipAttributeName), NSAttributeValue(1));
    EXPECT_NE(defaults.objectForKey<CTFont>(NSFontAttributeName), nullptr);
    EXPECT_EQ(*defaults.valueForKey(NSForegroundColorAttributeName), NSAttributeValue(NSColor::blackColor()));
}

TEST(QVConcreteTextStorageAttributes, HighlightingStartsFromTheDefaultsAsTheyWereGiven) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab");
    storage->setDefaultTextAttributes(mark(1));
    EXPECT_TRUE(storage->syntaxHighlightingAttributesAtIndex(0, nullptr).empty())
        << "the colour that was added is none of them";
    storage->setDefaultTextAttributes({{NSFontAttributeName, monospaced(14)},
                                       {NSForegroundColorAttributeName, NSColor::whiteColor()},
                                       {NSBackgroundColorAttributeName, NSColor::clearColor()},
                                       {NSToolTipAttributeName, 1}});
    EXPECT_EQ(storage->syntaxHighlightingAttributesAtIndex(0, nullptr),
              (NSAttributes{{NSForegroundColorAttributeName, NSColor::whiteColor()},
                            {NSBackgroundColorAttributeName, NSColor::clearColor()}}));
}

TEST(QVConcreteTextStorageAttributes, TheSameCompleteDefaultsAgainDoNothing) {
    const auto font = monospaced(14);
    const NSAttributes complete{{NSFontAttributeName, font},
                                {NSForegroundColorAttributeName, NSColor::blackColor()},
                                {kCTTrackingAttributeName, 0.0},
                                {NSParagraphStyleAttributeName, NSParagraphStyle::defaultParagraphStyle()}};
    ObservedStorage observed(u"ab");
    observed.storage->setDefaultTextAttributes(complete);
    EXPECT_THAT(observed.take(), Contains(StartsWith("did")));
    StorageNotifications notifications(*observed.storage);
    observed.storage->setDefaultTextAttributes(complete);
    EXPECT_THAT(observed.take(), IsEmpty());
    EXPECT_THAT(notifications.take(), IsEmpty());
}

// Meant so: they are compared as they are given, with what was completed.
TEST(QVConcreteTextStorageAttributes, IncompleteDefaultsDoTheirWorkEachTime) {
    ObservedStorage observed(u"ab");
    StorageNotifications notifications(*observed.storage);
    for (int time = 0; time < 2; ++time) {
        observed.storage->setDefaultTextAttributes(mark(1));
        EXPECT_THAT(observed.take(), Contains("did 1 0+2 +0"));
        EXPECT_THAT(notifications.take(), ElementsAre("styles 0+2"));
    }
}

TEST(QVConcreteTextStorageAttributes, AnotherFontGoesOverTheWholeText) {
    ObservedStorage observed(u"ab");
    const auto &storage = observed.storage;
    const auto font = proportional(12);
    storage->setDefaultTextAttributes({{NSFontAttributeName, font}, {kCTTrackingAttributeName, 0.0}});
    for (const NSUInteger index : {0, 1})
        EXPECT_TRUE(font->isEqual(fontAt(*storage, index)));
    EXPECT_THAT(observed.take(), Contains("did 1 0+2 +0"));
}

TEST(QVConcreteTextStorageAttributes, AnotherSizeKeepsTheFaceOfEachRun) {
    const auto storage = documentWithText(u"a b a b", smallLanguage());
    const auto defaultFont = fontAt(*storage, 0);
    ASSERT_EQ(drawnFonts(*storage), "..b...b");
    std::vector<std::string> lines;
    const auto observer = std::make_shared<StorageObserver>(lines);
    storage->addChangeObserver(observer);
    const auto bigger = CTFontCreateCopyWithAttributes(
        std::static_pointer_cast<const CTFont>(defaultFont->shared_from_this()), 20);
    {
        // Before the colours come back.
        const BusyQueue busy(*storage->parse());
        storage->setDefaultTextAttributes({{NSFontAttributeName, bigger}});
        EXPECT_EQ(drawnFonts(*storage), "..b...b");
        for (NSUInteger index = 0; index < 7; ++index)
            EXPECT_EQ(fontAt(*storage, index)->size(), 20);
        EXPECT_EQ(fontAt(*storage, 2), fontAt(*storage, 6)) << "one new font for each old one";
        // Each run is marked.
        EXPECT_THAT(lines, Contains("will 1 0+2 null"));
        EXPECT_THAT(lines, Contains("will 1 2+1 null"));
        EXPECT_THAT(lines, Contains("will 1 3+3 null"));
    }
    finishAllRounds(*storage);
    EXPECT_EQ(drawnFonts(*storage), "..b...b");
    EXPECT_EQ(fontAt(*storage, 6)->size(), 20);
}

TEST(QVConcreteTextStorageAttributes, NewDefaultsColourTheTextAgain) {
    const auto storage = documentWithText(u"k1 x", smallLanguage());
    StorageNotifications notifications(*storage);
    storage->setDefaultTextAttributes({{NSUnderlineStyleAttributeName, 9}});
    EXPECT_FALSE(storage->isParseUpdating());
    finishRound(*storage);
    EXPECT_EQ(drawnHighlighting(*storage), "1199");
    EXPECT_THAT(notifications.take(), ElementsAre("styles 0+4"));
}

TEST(QVConcreteTextStorageAttributes, ViewsFollowNewDefaults) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab");
    std::vector<std::string> lines;
    const StorageView view(*storage, lines);
    storage->setDefaultTextAttributes(
        {{NSFontAttributeName, proportional(12)}, {kCTTrackingAttributeName, 1.5}});
    EXPECT_THAT(lines, ElementsAre("view begins", "view adds NSFont 0+2", "view adds CTTracking 0+2",
                                   "view adds NSParagraphStyle 0+2", "view ends",
                                   // The colours.
                                   "view begins", "view begins", "view ends", "view ends"));
    // Without tracking on either side it is taken away each time.
    storage->setDefaultTextAttributes({{NSFontAttributeName, proportional(12)}});
    EXPECT_THAT(lines, Contains("view removes CTTracking 0+2"));
}

TEST(QVConcreteTextStorageAttributes, OnlyWhatDiffersBetweenOldAndNewDefaultsGoesOverTheText) {
    const auto defaultsWith = [](CTFontRef font, double tracking, CGFloat indent, auto colour) {
        const auto style = NSParagraphStyle::defaultParagraphStyle()->mutableCopy();
        style->setHeadIndent(indent);
        return NSAttributes{{NSFontAttributeName, std::move(font)},
                            {kCTTrackingAttributeName, tracking},
                            {NSParagraphStyleAttributeName, style},
                            {NSForegroundColorAttributeName, colour}};
    };
    const auto storage = QVConcreteTextStorage::initWithString(u"ab");
    const auto black = NSColor::blackColor();
    const auto font = proportional(12);
    storage->setDefaultTextAttributes(defaultsWith(font, 1, 5, black));
    std::vector<std::string> lines;
    const auto observer = std::make_shared<StorageObserver>(lines);
    storage->addChangeObserver(observer);
    const StorageView view(*storage, lines);
    const auto changesOf = [&](const NSAttributes &defaults) {
        lines.clear();
        storage->setDefaultTextAttributes(defaults);
        // What resetting the colours does comes behind the first bracket.
        lines.erase(std::ranges::find(lines, "view ends"), lines.end());
        return std::exchange(lines, {});
    };
    // A font of the same name is one of another size, for each run.
    EXPECT_THAT(changesOf(defaultsWith(font, 1, 5, NSColor::whiteColor())),
                ElementsAre("view begins", "will 1 0+2 null", "view adds NSFont 0+2", "did 1 0+2 +0"));
    // Tabulators are as wide as the tracking lets them be.
    EXPECT_THAT(changesOf(defaultsWith(font, 2, 5, NSColor::whiteColor())),
                ElementsAre("view begins", "will 1 0+2 null", "view adds NSFont 0+2", "will 1 0+2 null",
                            "view adds CTTracking 0+2", "will 1 0+2 null", "view adds NSParagraphStyle 0+2",
                            "did 1 0+2 +0"));
    EXPECT_THAT(changesOf(defaultsWith(font, 2, 6, NSColor::whiteColor())),
                ElementsAre("view begins", "will 1 0+2 null", "view adds NSFont 0+2", "will 1 0+2 null",
                            "view adds NSParagraphStyle 0+2", "did 1 0+2 +0"));
    EXPECT_THAT(changesOf(defaultsWith(monospaced(12), 2, 6, NSColor::whiteColor())),
                ElementsAre("view begins", "will 1 0+2 null", "view adds NSFont 0+2", "did 1 0+2 +0"));
}

TEST(QVConcreteTextStorageAttributes, NewDefaultsOfAnEmptyTextDoNoHarm) {
    const auto storage = QVConcreteTextStorage::init();
    storage->setDefaultTextAttributes({{NSFontAttributeName, proportional(12)}});
    storage->replaceCharactersInRange({0, 0}, u"a");
    EXPECT_EQ(storage->contents().attributesAtIndex(0), storage->defaultTextAttributes());
}

// MARK: Fixing

TEST(QVConcreteTextStorageAttributes, ReadingGivesTabulatorsAsWideAsTheTabWidthSays) {
    const auto storage = QVConcreteTextStorage::initWithString(u"a\nb");
    const auto font = proportional(16);
    storage->setDefaultTextAttributes({{NSFontAttributeName, font}, {kCTTrackingAttributeName, 0.5}});
    storage->setTabWidth(3);
    const NSParagraphStyle *const style = styleAt(*storage, 2);
    ASSERT_NE(style, nullptr);
    EXPECT_DOUBLE_EQ(style->defaultTabInterval(), (0.5 + blankOf(font)) * 3);
    EXPECT_THAT(style->tabStops(), IsEmpty());
    EXPECT_EQ(storage->attribute(kCTTrackingAttributeName, 0), NSAttributeValue(0.5));
    EXPECT_EQ(storage->attribute(NSKernAttributeName, 0), NSAttributeValue(0));
}

TEST(QVConcreteTextStorageAttributes, TheDefaultParagraphStyleIsKeptButForItsTabulators) {
    const auto storage = QVConcreteTextStorage::initWithString(u"a");
    const auto given = NSParagraphStyle::defaultParagraphStyle()->mutableCopy();
    given->setLineHeightMultiple(1.5);
    given->setTabStops({3, 4});
    storage->setDefaultTextAttributes({{NSParagraphStyleAttributeName, given}});
    const NSParagraphStyle *const style = styleAt(*storage, 0);
    ASSERT_NE(style, nullptr);
    EXPECT_EQ(style->lineHeightMultiple(), 1.5);
    EXPECT_THAT(style->tabStops(), IsEmpty());
    EXPECT_THAT(given->tabStops(), ElementsAre(3, 4));
}

TEST(QVConcreteTextStorageAttributes, WithoutTrackingThereIsNone) {
    const auto storage = QVConcreteTextStorage::initWithString(
        u"a", {{kCTTrackingAttributeName, 2.0}, {NSKernAttributeName, 1.0}});
    EXPECT_EQ(storage->attribute(kCTTrackingAttributeName, 0), std::nullopt);
    EXPECT_EQ(storage->attribute(NSKernAttributeName, 0), NSAttributeValue(0));
}

TEST(QVConcreteTextStorageAttributes, FixingIsNoEditAndViewsHearOfItAsSuch) {
    ObservedStorage observed(u"ab");
    std::vector<std::string> lines;
    const StorageView view(*observed.storage, lines);
    observed.storage->attributesAtIndex(0, nullptr);
    EXPECT_THAT(observed.take(), IsEmpty());
    EXPECT_THAT(lines, ElementsAre("view adds NSParagraphStyle 0+2 ensuring",
                                   "view removes CTTracking 0+2 ensuring", "view adds NSKern 0+2 ensuring"));
    EXPECT_FALSE(observed.storage->isEnsuringAttributes());
    lines.clear();
    observed.storage->attributesAtIndex(1, nullptr);
    EXPECT_THAT(lines, IsEmpty()) << "once is enough";
}

TEST(QVConcreteTextStorageAttributes, WalksFixTheWholeRangeFirst) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab\ncd");
    std::string runs;
    storage->enumerateAttributesInRange({0, 5}, 0,
                                        [&](const NSAttributes &attributes, NSRange range, bool &) {
                                            EXPECT_TRUE(attributes.containsKey(NSKernAttributeName));
                                            runs += drawn(range) + " ";
                                        });
    EXPECT_EQ(runs, "0+5 ");
    NSRange range;
    storage->replaceCharactersInRange({2, 0}, u"x");
    storage->attributesAtIndex(0, &range, {0, 6});
    EXPECT_EQ(range, NSMakeRange(0, 6));
}

TEST(QVConcreteTextStorageAttributes, StrayAttachmentsAreTakenOffWithoutAnEdit) {
    ObservedStorage observed(u"a\uFFFC");
    const auto attachment = NSParagraphStyle::defaultParagraphStyle();
    observed.storage->addAttribute(NSAttachmentAttributeName, attachment, {0, 2});
    observed.take();
    EXPECT_EQ(observed.storage->attribute(NSAttachmentAttributeName, 0), std::nullopt);
    EXPECT_EQ(observed.storage->attribute(NSAttachmentAttributeName, 1), NSAttributeValue(attachment));
    EXPECT_THAT(observed.take(), IsEmpty());
}

TEST(QVConcreteTextStorageAttributes, AnEditIsFixedAgain) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab");
    storage->attributesAtIndex(0, nullptr);
    storage->replaceCharactersInRange({1, 0}, u"x");
    EXPECT_FALSE(storage->contents().attributesAtIndex(1).containsKey(NSKernAttributeName));
    EXPECT_EQ(storage->attribute(NSKernAttributeName, 1), NSAttributeValue(0));
}

// MARK: Tab width

TEST(QVConcreteTextStorageAttributes, ANewTabWidthInvalidatesTheText) {
    ObservedStorage observed(u"a\tb");
    const auto &storage = observed.storage;
    const CGFloat before = styleAt(*storage, 0)->defaultTabInterval();
    std::vector<std::string> lines;
    const StorageView view(*storage, lines);
    storage->setTabWidth(8);
    EXPECT_THAT(observed.take(), ElementsAre("will 1 0+3 null", "did 1 0+3 +0"));
    EXPECT_THAT(lines, ElementsAre("view invalidates 0+3"));
    EXPECT_DOUBLE_EQ(styleAt(*storage, 0)->defaultTabInterval(), 2 * before);
}

TEST(QVConcreteTextStorageAttributes, TheParseLearnsTheTabWidth) {
    const auto storage = documentWithText(u"k1", smallLanguage());
    storage->setTabWidth(8);
    EXPECT_EQ(storage->parse()->tabWidth(), 8u);
}

} // namespace
} // namespace quorvane
