#include "Quorvane/Text/QVTokenTextAttachment.h"

#include "Platform/AppKit/NSStringDrawing.h"
#include "Quorvane/Styles/QVColor.h"
#include "Quorvane/Text/QVTextAttachmentCell.h"
#include "Quorvane/Text/QVTextStorage.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/LayoutFixtures.h"
#include "Tests/Support/Picture.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

constexpr CGRect room{{3, 0}, {1000, 400}};

CTFontRef mono(CGFloat size) { return CTFontCreateWithName(u"DejaVuSansMono", size); }

std::shared_ptr<const NSColor> hsb(double hue, double saturation, double brightness) {
    return QVColor::colorWithHueSaturationBrightness(hue, saturation, brightness, 1)->platformColor();
}

testing::AssertionResult isColor(const std::shared_ptr<const NSColor> &color,
                                 const std::shared_ptr<const NSColor> &expected) {
    if (color && color->isEqual(expected.get()))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << (color ? color->description() : NSString(u"null")).UTF8String();
}

/// A token in a document whose text is in the given font.
struct Token {
    std::shared_ptr<QVTokenTextAttachment> attachment;
    std::shared_ptr<QVTextStorage> storage = QVTextStorage::initWithString(u"ab\uFFFC");
    test::StorageLayoutManager layoutManager{storage};

    explicit Token(NSString text, CGFloat size = 2048)
        : attachment(QVTokenTextAttachment::initWithText(std::move(text))) {
        storage->setDefaultTextAttributes(
            {{NSFontAttributeName, mono(size)}, {NSForegroundColorAttributeName, NSColor::blackColor()}});
    }
    CGRect bounds(const CGRect &proposed = {{0, 0}, {99999, 99999}}) {
        return attachment->attachmentBoundsForLayoutManager(&layoutManager, proposed, {0, 0}, 2);
    }
};

bool isInked(const test::Picture &picture, std::size_t x, std::uint32_t background) {
    for (std::size_t y = 0; y < 30; ++y)
        if (picture.pixel(x, y) != background)
            return true;
    return false;
}

} // namespace

TEST(QVTokenTextAttachment, IsWhiteOnBlueAtFirst) {
    const auto token = QVTokenTextAttachment::initWithText(u"name");
    EXPECT_EQ(token->text(), u"name");
    EXPECT_TRUE(token->groupingIdentifier().isNull());
    EXPECT_EQ(token->index(), std::nullopt);
    EXPECT_EQ(token->font(), nullptr);
    EXPECT_TRUE(isColor(token->textColor(), NSColor::whiteColor()));
    EXPECT_TRUE(isColor(token->selectedTextColor(), NSColor::whiteColor()));
    EXPECT_TRUE(isColor(token->backgroundColor(), hsb(0.5833333333333334, 0.75, 0.9)));
    EXPECT_TRUE(isColor(token->selectedBackgroundColor(), hsb(0.5833333333333334, 0.75, 1)));
    EXPECT_EQ(token->textInset(), (NSEdgeInsets{0, 4, 0, 4}));
    const auto cell = std::dynamic_pointer_cast<QVTextAttachmentCell>(token->attachmentCell());
    ASSERT_TRUE(cell);
    EXPECT_EQ(cell->attachment(), token);
}

TEST(QVTokenTextAttachment, OffersColoursForHosts) {
    EXPECT_TRUE(
        isColor(QVTokenTextAttachment::defaultTokenBackgroundColor(), hsb(0.5833333333333334, 0.75, 0.75)));
    EXPECT_TRUE(isColor(QVTokenTextAttachment::defaultSelectedTokenBackgroundColor(),
                        hsb(0.5833333333333334, 0.75, 1)));
    EXPECT_TRUE(isColor(QVTokenTextAttachment::defaultSmartTokenBackgroundColor(),
                        hsb(0.7777777777777778, 0.75, 0.75)));
    EXPECT_TRUE(isColor(QVTokenTextAttachment::defaultSelectedSmartTokenBackgroundColor(),
                        hsb(0.7777777777777778, 0.75, 1)));
}

TEST(QVTokenTextAttachment, IsAsLargeAsItsLabelAndItsInset) {
    Token token(u"abc");
    EXPECT_EQ(token.bounds(), CGRectMake(0, -483, 3 * 1233 + 8, 1901 + 483));
    token.attachment->setTextInset({10, 20, 30, 40});
    EXPECT_EQ(token.bounds(), CGRectMake(0, -483 - 30, 3 * 1233 + 60, 1901 + 483 + 40));
}

TEST(QVTokenTextAttachment, ALabelIsNoLargerThanTheFragment) {
    EXPECT_EQ(Token(u"abc").bounds({{0, 0}, {3000, 2000}}), CGRectMake(0, -483, 3000 + 8, 2000));
}

TEST(QVTokenTextAttachment, AnEmptyTokenIsSixteenWideAndAsHighAsItsFont) {
    for (const NSString &empty : {NSString(), NSString(u"")}) {
        EXPECT_EQ(Token(empty).bounds(), CGRectMake(0, -483, 16 + 8, 1901 + 483));
        EXPECT_EQ(Token(empty).bounds({{0, 0}, {10, 1000}}), CGRectMake(0, -483, 16 + 8, 1000));
    }
}

TEST(QVTokenTextAttachment, ItsOwnFontComesFirst) {
    Token token(u"abc", 12);
    token.attachment->setFont(mono(2048));
    EXPECT_EQ(token.bounds(), CGRectMake(0, -483, 3 * 1233 + 8, 1901 + 483));
}

TEST(QVTokenTextAttachment, WithoutAnyFontItIsInMenlo) {
    const test::LogRecorder log;
    const auto token = QVTokenTextAttachment::initWithText(u"abc");
    const CTFontRef menlo = CTFontCreateWithName(u"Menlo-Regular", 11);
    const CGRect bounds = token->attachmentBoundsForLayoutManager(nullptr, room, {0, 0}, 0);
    const CGRect label = boundingRectWithSize(u"abc", CGSizeZero, {{NSFontAttributeName, menlo}});
    EXPECT_EQ(bounds, CGRectMake(0, label.origin.y, label.size.width + 8, label.size.height));
    EXPECT_EQ(token->attachmentBoundsForTextContainer(nullptr, room, {0, 0}, 0), bounds);
}

TEST(QVTokenTextAttachment, InOtherStoragesItIsMeasuredInTheFontOfItsCharacter) {
    const auto storage = std::make_shared<test::PlainTextStorage>(u"ab\uFFFC");
    storage->addAttribute(NSFontAttributeName, mono(2048), {2, 1});
    test::StorageLayoutManager layoutManager(storage);
    EXPECT_EQ(QVTokenTextAttachment::initWithText(u"abc")
                  ->attachmentBoundsForLayoutManager(&layoutManager, {{0, 0}, {99999, 99999}}, {0, 0}, 2)
                  .size.width,
              3 * 1233 + 8);
}

TEST(QVTokenTextAttachment, IsDrawnAsARoundedLabel) {
    const test::Picture picture(80, 30, 0xffffffff);
    Token token(u"name", 16);
    const CGRect bounds = token.bounds();
    // A hue of 210 degrees, a saturation of 0.75 and a brightness of 0.9 are 0.225, 0.5625 and 0.9.
    constexpr std::uint32_t blue = 0x398fe6ff;
    token.attachment->drawWithFrame(CGRectMake(10, 5, bounds.size.width, 20), 2, &token.layoutManager);
    EXPECT_TRUE(picture.looks(40, 6, blue, 1));
    EXPECT_TRUE(picture.looks(12, 15, blue, 1));
    EXPECT_TRUE(picture.looks(8, 15, 0xffffffff));
    EXPECT_TRUE(picture.looks(40, 3, 0xffffffff));
    // The corners are round to half of the height.
    EXPECT_TRUE(picture.looks(10, 5, 0xffffffff));
    EXPECT_TRUE(picture.looks(10, 24, 0xffffffff));
}

TEST(QVTokenTextAttachment, ItsLabelStandsBehindTheLeftInset) {
    const test::Picture picture(80, 30);
    Token token(u"\u2588", 16);
    token.attachment->setBackgroundColor(nullptr);
    token.attachment->setTextColor(NSColor::colorWithSRGBRed(1, 0, 0, 1));
    token.attachment->drawWithFrame(CGRectMake(10, 5, 18, 19), 2, &token.layoutManager);
    EXPECT_EQ(picture.pixel(18, 15), 0xff0000ffu);
    EXPECT_FALSE(isInked(picture, 12, 0));
    EXPECT_FALSE(isInked(picture, 25, 0));
}

TEST(QVTokenTextAttachment, ItsLabelStandsLowerByTheTopInset) {
    const auto firstInkedRow = [](CGFloat top) {
        const test::Picture picture(40, 60);
        Token token(u"\u2588", 16);
        token.attachment->setBackgroundColor(nullptr);
        token.attachment->setTextInset({top, 4, 0, 4});
        token.attachment->drawWithFrame(CGRectMake(10, 5, 18, 19), 2, &token.layoutManager);
        std::size_t row = 0;
        while (row < 60 && picture.pixel(18, row) == 0)
            ++row;
        return row;
    };
    EXPECT_LT(firstInkedRow(0), 20u);
    EXPECT_EQ(firstInkedRow(6), firstInkedRow(0) + 6);
}

TEST(QVTokenTextAttachment, ANarrowTokenIsRoundToHalfOfItsWidth) {
    const test::Picture picture(40, 40, 0xffffffff);
    Token token(u"", 16);
    token.attachment->setTextColor(nullptr);
    token.attachment->drawWithFrame(CGRectMake(10, 5, 10, 30), 2, &token.layoutManager);
    constexpr std::uint32_t blue = 0x398fe6ff;
    EXPECT_TRUE(picture.looks(10, 5, 0xffffffff));
    // Five points from the corner its sides are straight.
    EXPECT_TRUE(picture.looks(10, 11, blue, 1));
    EXPECT_TRUE(picture.looks(19, 28, blue, 1));
    EXPECT_TRUE(picture.looks(10, 34, 0xffffffff));
}

TEST(QVTokenTextAttachment, ALabelThatIsTooWideEndsInDots) {
    const auto draw = [](NSString label, CGFloat width) {
        const auto picture = std::make_unique<test::Picture>(90, 30);
        Token token(std::move(label), 16);
        token.attachment->setBackgroundColor(nullptr);
        token.attachment->drawWithFrame(CGRectMake(0, 5, width, 20), 2, &token.layoutManager);
        std::string pixels;
        for (std::size_t y = 0; y < 30; ++y)
            for (std::size_t x = 0; x < 90; ++x)
                pixels += std::to_string(picture->pixel(x, y)) + " ";
        return pixels;
    };
    // Of six glyphs of 9.6 points, two and the dots fit into 30.
    EXPECT_EQ(draw(u"HHHHHH", 30), draw(u"HH\u2026", 80));
}

TEST(QVTokenTextAttachment, WithoutALabelItShowsThreeDots) {
    const test::Picture picture(40, 30);
    Token token(u"", 16);
    token.attachment->setBackgroundColor(nullptr);
    token.attachment->setTextColor(NSColor::colorWithSRGBRed(1, 0, 0, 1));
    // The middle is at 20, 15: dots of four points start at 12, 18 and 24, and at 13.
    token.attachment->drawWithFrame(CGRectMake(8, 5, 24, 20), 2, &token.layoutManager);
    for (const std::size_t x : {13u, 14u, 19u, 20u, 25u, 26u})
        for (const std::size_t y : {14u, 15u})
            EXPECT_EQ(picture.pixel(x, y), 0xff0000ffu) << x;
    for (const std::size_t x : {11u, 16u, 17u, 22u, 23u, 28u})
        EXPECT_FALSE(isInked(picture, x, 0)) << x;
    EXPECT_EQ(picture.pixel(13, 12), 0u);
    EXPECT_EQ(picture.pixel(13, 17), 0u);
}

TEST(QVTokenTextAttachment, InOtherStoragesItIsDrawnInTheFontBeforeIt) {
    const auto draw = [](NSUInteger large, NSUInteger index, std::u16string_view text) {
        const test::Picture picture(80, 60);
        const auto storage =
            std::make_shared<test::PlainTextStorage>(text, NSAttributes{{NSFontAttributeName, mono(8)}});
        storage->addAttribute(NSFontAttributeName, mono(40), {large, 1});
        test::StorageLayoutManager layoutManager(storage);
        const auto token = QVTokenTextAttachment::initWithText(u"\u2588");
        token->setBackgroundColor(nullptr);
        token->drawWithFrame(CGRectMake(0, 5, 70, 50), index, &layoutManager);
        // Beyond what the small block covers.
        return picture.pixel(20, 40) != 0;
    };
    EXPECT_TRUE(draw(1, 2, u"abc"));
    EXPECT_FALSE(draw(2, 2, u"abc"));
    // At the very start that of the character behind, if there is one.
    EXPECT_TRUE(draw(1, 0, u"abc"));
    EXPECT_FALSE(draw(0, 0, u"abc"));
    EXPECT_TRUE(draw(0, 0, u"a"));
}

TEST(QVTokenTextAttachment, WithoutColoursOrAContextNothingIsDrawn) {
    Token token(u"name", 16);
    token.attachment->drawWithFrame(CGRectMake(0, 5, 70, 20), 2, &token.layoutManager);
    const test::Picture picture(10, 10);
    token.attachment->setBackgroundColor(nullptr);
    token.attachment->setTextColor(nullptr);
    token.attachment->drawWithFrame(CGRectMake(0, 0, 70, 20), 2, &token.layoutManager);
    for (std::size_t x = 0; x < 10; ++x)
        EXPECT_FALSE(isInked(picture, x, 0));
}

TEST(QVTokenTextAttachment, IsArchivedWithoutItsFontAndItsInset) {
    const auto token = QVTokenTextAttachment::initWithText(u"name");
    token->setGroupingIdentifier(u"group");
    token->setIndex(3);
    token->setFont(mono(30));
    token->setTextInset({1, 2, 3, 4});
    token->setTextColor(NSColor::blackColor());
    token->setCursor(NSCursor::arrowCursor());
    EXPECT_EQ(test::archivedKeys(*token),
              (std::vector<std::string>{"backgroundColor: NSColor", "cursor: NSCursor",
                                        "groupingIdentifier: string", "index: number",
                                        "selectedBackgroundColor: NSColor", "selectedTextColor: NSColor",
                                        "text: string", "textColor: NSColor"}));
    const auto back = test::throughArchive(token);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->text(), u"name");
    EXPECT_EQ(back->groupingIdentifier(), u"group");
    EXPECT_EQ(back->index(), 3);
    EXPECT_EQ(back->cursor(), NSCursor::arrowCursor());
    EXPECT_TRUE(isColor(back->textColor(), NSColor::blackColor()));
    EXPECT_TRUE(isColor(back->selectedTextColor(), NSColor::whiteColor()));
    EXPECT_EQ(back->font(), nullptr);
    EXPECT_EQ(back->textInset(), (NSEdgeInsets{0, 4, 0, 4}));
    ASSERT_TRUE(back->attachmentCell());
}

TEST(QVTokenTextAttachment, ColoursThatAreMissingFromAnArchiveAreThoseOfANewToken) {
    const auto back = test::readForged<QVTokenTextAttachment>(
        [](NSCoder &coder) { coder.encodeString(u"white", u"textColor"); });
    ASSERT_TRUE(back);
    EXPECT_TRUE(back->text().isNull());
    EXPECT_EQ(back->index(), std::nullopt);
    EXPECT_TRUE(isColor(back->textColor(), NSColor::whiteColor()));
    EXPECT_TRUE(isColor(back->selectedTextColor(), NSColor::whiteColor()));
    EXPECT_TRUE(isColor(back->backgroundColor(), hsb(0.5833333333333334, 0.75, 0.9)));
    EXPECT_TRUE(isColor(back->selectedBackgroundColor(), hsb(0.5833333333333334, 0.75, 1)));
}
