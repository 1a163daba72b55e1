#include "Quorvane/Text/QVTextFoldAttachment.h"

#include "Platform/AppKit/NSColor.h"
#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Text/QVTextAttachmentCell.h"
#include "Quorvane/Text/QVTextStorage.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/LayoutFixtures.h"
#include "Tests/Support/Picture.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

using Subfolds = QVTextFoldAttachment::Subfolds;

std::shared_ptr<QVTextFoldAttachment> fold(NSRange range, Subfolds subfolds = {}) {
    return QVTextFoldAttachment::initWithRange(range, std::move(subfolds));
}

/// What a fold of [10, 20) is behind an edit; nothing where it says that it is gone.
std::optional<NSRange> behind(NSRange edit, NSInteger change) {
    const auto changed = fold({10, 10});
    if (!changed->textChangedInRange(edit, change))
        return std::nullopt;
    return changed->range();
}

CTFontRef mono(CGFloat size) { return CTFontCreateWithName(u"DejaVuSansMono", size); }

} // namespace

TEST(QVTextFoldAttachment, KnowsItsRangeAndSubfoldsAndPointsWithAHand) {
    const auto inner = fold({12, 2});
    const auto outer = fold({10, 10}, {inner});
    EXPECT_EQ(outer->range(), (NSRange{10, 10}));
    EXPECT_EQ(outer->subfolds(), (Subfolds{inner}));
    EXPECT_EQ(outer->cursor(), NSCursor::pointingHandCursor());
    EXPECT_TRUE(std::dynamic_pointer_cast<QVTextAttachmentCell>(outer->attachmentCell()));
    EXPECT_TRUE(outer->contents().isNull());
    EXPECT_EQ(
        outer->description(),
        NSString::stringWithFormat(u"<QVTextFoldAttachment: %p : range={10, 10}, subfolds=1>",
                                   static_cast<const void *>(static_cast<const NSObject *>(outer.get()))));
}

TEST(QVTextFoldAttachment, AnInsertionMovesGrowsOrLeavesTheFold) {
    EXPECT_EQ(behind({9, 0}, 3), (NSRange{13, 10}));
    EXPECT_EQ(behind({10, 0}, 3), (NSRange{13, 10}));
    EXPECT_EQ(behind({11, 0}, 3), (NSRange{10, 13}));
    EXPECT_EQ(behind({19, 0}, 3), (NSRange{10, 13}));
    EXPECT_EQ(behind({20, 0}, 3), (NSRange{10, 10}));
    EXPECT_EQ(behind({21, 0}, 3), (NSRange{10, 10}));
}

TEST(QVTextFoldAttachment, AnEditInsideChangesTheLength) {
    EXPECT_EQ(behind({10, 1}, -1), (NSRange{10, 9}));
    EXPECT_EQ(behind({19, 1}, 4), (NSRange{10, 14}));
    EXPECT_EQ(behind({10, 10}, -9), (NSRange{10, 1}));
    EXPECT_EQ(behind({12, 2}, 0), (NSRange{10, 10}));
}

TEST(QVTextFoldAttachment, DeletingAllOfItsTextEndsIt) {
    EXPECT_EQ(behind({10, 10}, -10), std::nullopt);
    // Not so where text takes its place.
    EXPECT_EQ(behind({10, 10}, 0), (NSRange{10, 10}));
}

TEST(QVTextFoldAttachment, AnEditBeforeMovesItAndOneBehindDoesNot) {
    EXPECT_EQ(behind({2, 8}, -8), (NSRange{2, 10}));
    EXPECT_EQ(behind({2, 3}, 1), (NSRange{11, 10}));
    EXPECT_EQ(behind({20, 5}, -5), (NSRange{10, 10}));
}

TEST(QVTextFoldAttachment, AnEditAcrossItsEdgeEndsIt) {
    EXPECT_EQ(behind({9, 2}, -2), std::nullopt);
    EXPECT_EQ(behind({19, 2}, 0), std::nullopt);
    EXPECT_EQ(behind({9, 12}, -12), std::nullopt);
    EXPECT_EQ(behind({9, 11}, 5), std::nullopt);
}

TEST(QVTextFoldAttachment, SubfoldsFollowTheEditsInsideAndBefore) {
    const auto first = fold({11, 2}), second = fold({15, 2});
    const auto outer = fold({10, 10}, {first, second});
    EXPECT_TRUE(outer->textChangedInRange({13, 1}, 4));
    EXPECT_EQ(outer->range(), (NSRange{10, 14}));
    EXPECT_EQ(first->range(), (NSRange{11, 2}));
    EXPECT_EQ(second->range(), (NSRange{19, 2}));
    EXPECT_TRUE(outer->textChangedInRange({0, 5}, -5));
    EXPECT_EQ(outer->range(), (NSRange{5, 14}));
    EXPECT_EQ(first->range(), (NSRange{6, 2}));
    EXPECT_EQ(second->range(), (NSRange{14, 2}));
    // One behind them all tells nobody.
    EXPECT_TRUE(outer->textChangedInRange({19, 0}, 1));
    EXPECT_EQ(second->range(), (NSRange{14, 2}));
}

TEST(QVTextFoldAttachment, FoldsDeepInsideFollowToo) {
    const auto deepest = fold({14, 2});
    const auto outer = fold({10, 10}, {fold({12, 6}, {deepest})});
    EXPECT_TRUE(outer->textChangedInRange({15, 0}, 3));
    EXPECT_EQ(deepest->range(), (NSRange{14, 5}));
    EXPECT_EQ(outer->subfolds()[0]->range(), (NSRange{12, 9}));
}

TEST(QVTextFoldAttachment, ASubfoldWhoseTextIsGoneLeavesTheList) {
    const auto first = fold({11, 2}), second = fold({15, 2});
    const auto outer = fold({10, 10}, {first, second});
    EXPECT_TRUE(outer->textChangedInRange({15, 2}, -2));
    EXPECT_EQ(outer->range(), (NSRange{10, 8}));
    EXPECT_EQ(outer->subfolds(), (Subfolds{first}));
}

TEST(QVTextFoldAttachment, ASubfoldThatAnEditCutsLeavesTheList) {
    const auto first = fold({11, 2}), second = fold({15, 2});
    const auto outer = fold({10, 10}, {first, second});
    EXPECT_TRUE(outer->textChangedInRange({16, 2}, -2));
    EXPECT_EQ(outer->subfolds(), (Subfolds{first}));
}

// The list is read again at the index of a fold that left it. This is meant: it is what every holder of folds
// was written against.
TEST(QVTextFoldAttachment, TheFoldBehindOneThatIsGoneIsNotToldOfTheEdit) {
    const auto first = fold({11, 2}), second = fold({15, 2});
    const auto outer = fold({10, 10}, {first, second});
    EXPECT_TRUE(outer->textChangedInRange({11, 2}, -2));
    EXPECT_EQ(outer->subfolds(), (Subfolds{second}));
    EXPECT_EQ(second->range(), (NSRange{15, 2}));
}

// Meant likewise: a fold that an edit cuts says so each time it is told.
TEST(QVTextFoldAttachment, AFoldThatIsCutTakesTheOnesBehindItAlong) {
    const auto first = fold({11, 2}), second = fold({15, 2}), third = fold({18, 1});
    const auto outer = fold({10, 10}, {first, second, third});
    EXPECT_TRUE(outer->textChangedInRange({14, 2}, -2));
    EXPECT_EQ(outer->subfolds(), (Subfolds{first}));
}

TEST(QVTextFoldAttachment, ItsMarkHangsFromTheDescentOfTheDefaultFont) {
    const auto storage = QVTextStorage::initWithString(u"abc");
    storage->setDefaultTextAttributes(
        {{NSFontAttributeName, mono(20)}, {NSForegroundColorAttributeName, NSColor::blackColor()}});
    test::StorageLayoutManager layoutManager(storage);
    const auto mark = fold({1, 1});
    // 483 of 2048 units.
    EXPECT_EQ(mark->attachmentBoundsForLayoutManager(&layoutManager, CGRectMake(3, 0, 200, 40), {3, 0}, 0),
              CGRectMake(0, -CTFontGetDescent(mono(20)), 26, 14));
    EXPECT_NEAR(CTFontGetDescent(mono(20)), 20 * 483 / 2048.0, 1e-9);
    EXPECT_EQ(mark->attachmentBoundsForLayoutManager(&layoutManager, CGRectMake(3, 0, 200, 9), {3, 0}, 0)
                  .size.height,
              9);
}

TEST(QVTextFoldAttachment, InOtherStoragesTheFontIsThatOfTheCharacter) {
    const auto storage = std::make_shared<test::PlainTextStorage>(u"abc");
    storage->addAttribute(NSFontAttributeName, mono(30), {1, 1});
    test::StorageLayoutManager layoutManager(storage);
    const auto originAt = [&](NSUInteger index) {
        return fold({1, 1})
            ->attachmentBoundsForLayoutManager(&layoutManager, CGRectMake(0, 0, 200, 40), {0, 0}, index)
            .origin.y;
    };
    EXPECT_EQ(originAt(1), -CTFontGetDescent(mono(30)));
    EXPECT_EQ(originAt(0), 0);
}

TEST(QVTextFoldAttachment, WithoutAFontItStandsOnTheBaseLine) {
    EXPECT_EQ(fold({1, 1})->attachmentBoundsForLayoutManager(nullptr, CGRectMake(0, 0, 200, 40), {0, 0}, 0),
              CGRectMake(0, 0, 26, 14));
}

TEST(QVTextFoldAttachment, DrawsThreeDotsInARoundedFrame) {
    const test::Picture picture(30, 18);
    // A hue of 208 degrees, a saturation of 0.08 and a brightness of 0.7 are 0.644, 0.674 and 0.7.
    constexpr std::uint32_t frame = 0xa4acb380, dot = 0xa4acb3cc;
    fold({1, 1})->drawWithFrame(CGRectMake(2, 2, 26, 14), 0, nullptr);
    // The frame's rounded rectangle covers 3 to 27 and 3 to 15.
    for (const std::size_t x : {9u, 15u, 20u}) {
        EXPECT_TRUE(picture.looks(x, 3, frame, 3));
        EXPECT_TRUE(picture.looks(x, 14, frame, 3));
        EXPECT_EQ(picture.pixel(x, 2), 0u);
        EXPECT_EQ(picture.pixel(x, 15), 0u);
        EXPECT_EQ(picture.pixel(x, 5), 0u);
    }
    for (const std::size_t y : {8u, 9u}) {
        // The middle of a half circle, which hardly leaves its column here.
        EXPECT_TRUE(picture.looks(3, y, frame, 10));
        EXPECT_TRUE(picture.looks(26, y, frame, 10));
        for (const std::size_t x : {8u, 9u, 14u, 15u, 20u, 21u})
            EXPECT_TRUE(picture.looks(x, y, dot, 3));
        for (const std::size_t x : {6u, 11u, 12u, 17u, 18u, 23u})
            EXPECT_EQ(picture.pixel(x, y), 0u);
    }
    // Its corners are round.
    EXPECT_EQ(picture.pixel(3, 3), 0u);
    EXPECT_EQ(picture.pixel(26, 14), 0u);
}

TEST(QVTextFoldAttachment, LeavesColoursAndPathsOfTheContextAlone) {
    const test::Picture picture(30, 18);
    picture.setFill(0xff0000ff);
    fold({1, 1})->drawWithFrame(CGRectMake(2, 2, 26, 14), 0, nullptr);
    CGContextFillRect(picture.context(), CGRectMake(0, 0, 2, 2));
    EXPECT_EQ(picture.pixel(0, 0), 0xff0000ffu);
}

TEST(QVTextFoldAttachment, AFrameThatIsTooSmallDrawsNothingBad) {
    const test::Picture picture(4, 4);
    for (const CGFloat side : {0.0, 1.0, 2.0, -5.0, std::nan("")})
        fold({1, 1})->drawWithFrame(CGRectMake(0, 0, side, side), 0, nullptr);
}

// The subfolds are written over the range. This is meant: archives in use are so, and are read without harm.
TEST(QVTextFoldAttachment, AnArchiveHoldsTheSubfoldsInThePlaceOfTheRange) {
    const auto back = test::throughArchive(fold({10, 10}, {fold({12, 2})}));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->range(), (NSRange{0, 0}));
    EXPECT_EQ(back->subfolds(), (Subfolds{}));
    EXPECT_EQ(back->cursor(), NSCursor::pointingHandCursor());
}

TEST(QVTextFoldAttachment, AnArchiveWithBothKeysIsReadAsItStands) {
    const auto back = test::readForged<QVTextFoldAttachment>([](NSCoder &coder) {
        coder.encodeRange(NSRange{10, 10}, u"range");
        const std::vector<std::shared_ptr<const NSSecureCoding>> subfolds{
            std::make_shared<test::Forged>(QVTextFoldAttachment::codingClass(), [](NSCoder &inner) {
                inner.encodeRange(NSRange{12, 2}, u"range");
            })};
        coder.encodeObjectArray(subfolds, u"subfolds");
    });
    ASSERT_TRUE(back);
    EXPECT_EQ(back->range(), (NSRange{10, 10}));
    ASSERT_EQ(back->subfolds().size(), 1u);
    EXPECT_EQ(back->subfolds()[0]->range(), (NSRange{12, 2}));
    EXPECT_EQ(back->subfolds()[0]->subfolds(), (Subfolds{}));
}

TEST(QVTextFoldAttachment, AnArchiveOfAFoldInsideItselfIsRefused) {
    class Circle final : public NSSecureCoding {
    public:
        const NSCodingClass &classForCoder() const override { return QVTextFoldAttachment::codingClass(); }
        void encodeWithCoder(NSCoder &coder) const override {
            coder.encodeRange(NSRange{1, 1}, u"range");
            coder.encodeObjectArray(std::vector<std::shared_ptr<const NSSecureCoding>>{self.lock()},
                                    u"subfolds");
        }
        std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &, std::shared_ptr<NSSecureCoding>) override {
            return nullptr;
        }
        std::weak_ptr<const NSSecureCoding> self;
    };
    const auto circle = std::make_shared<Circle>();
    circle->self = circle;
    std::shared_ptr<NSError> error;
    EXPECT_EQ(NSKeyedUnarchiver::unarchivedObjectOfClass<QVTextFoldAttachment>(
                  NSKeyedArchiver::archivedDataWithRootObject(circle), &error),
              nullptr);
    EXPECT_TRUE(error);
}

TEST(QVTextFoldAttachment, AnArchiveNestsFoldsToItsLimitAndNotBeyond) {
    const auto nested = [](std::size_t levels) {
        auto fold =
            std::make_shared<const test::Forged>(QVTextFoldAttachment::codingClass(), [](NSCoder &) {});
        while (--levels > 0)
            fold = std::make_shared<const test::Forged>(
                QVTextFoldAttachment::codingClass(), [fold](NSCoder &coder) {
                    coder.encodeObjectArray(std::vector<std::shared_ptr<const NSSecureCoding>>{fold},
                                            u"subfolds");
                });
        return NSKeyedUnarchiver::unarchivedObjectOfClass<QVTextFoldAttachment>(
            NSKeyedArchiver::archivedDataWithRootObject(fold));
    };
    std::size_t levels = 0;
    for (auto fold = nested(limits::archiveNestingDepth); fold;
         fold = fold->subfolds().empty() ? nullptr : fold->subfolds()[0])
        ++levels;
    EXPECT_EQ(levels, limits::archiveNestingDepth);
    EXPECT_EQ(nested(limits::archiveNestingDepth + 1), nullptr);
}
