#include "Platform/AppKit/NSParagraphStyle.h"

#include "Tests/Support/CodingFixtures.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

using namespace quorvane;

namespace {

/// One change for each property.
const std::vector<std::function<void(NSParagraphStyle &)>> &changes() {
    static const std::vector<std::function<void(NSParagraphStyle &)>> changes = {
        [](NSParagraphStyle &style) {
            style.setTabStops({10, 20.5});
        },
        [](NSParagraphStyle &style) { style.setDefaultTabInterval(31); },
        [](NSParagraphStyle &style) { style.setLineBreakMode(NSLineBreakByTruncatingTail); },
        [](NSParagraphStyle &style) { style.setLineSpacing(2); },
        [](NSParagraphStyle &style) { style.setLineHeightMultiple(1.25); },
        [](NSParagraphStyle &style) { style.setMinimumLineHeight(12); },
        [](NSParagraphStyle &style) { style.setMaximumLineHeight(16); },
        [](NSParagraphStyle &style) { style.setFirstLineHeadIndent(3); },
        [](NSParagraphStyle &style) { style.setHeadIndent(4); },
    };
    return changes;
}

} // namespace

TEST(NSParagraphStyle, ANewStyleSetsNothing) {
    const NSParagraphStyle style;
    EXPECT_TRUE(style.tabStops().empty());
    EXPECT_EQ(style.defaultTabInterval(), 0);
    EXPECT_EQ(style.lineBreakMode(), NSLineBreakByWordWrapping);
    EXPECT_EQ(style.lineHeightMultiple(), 0);
    EXPECT_EQ(style.maximumLineHeight(), 0);
}

TEST(NSParagraphStyle, TheDefaultStyleHasTwelveTabulators28PointsApart) {
    const auto &style = NSParagraphStyle::defaultParagraphStyle();
    EXPECT_EQ(style, NSParagraphStyle::defaultParagraphStyle());
    EXPECT_EQ(style->tabStops(),
              (std::vector<CGFloat>{28, 56, 84, 112, 140, 168, 196, 224, 252, 280, 308, 336}));
    EXPECT_EQ(style->defaultTabInterval(), 0);
}

TEST(NSParagraphStyle, EqualsByEachOfItsProperties) {
    const NSParagraphStyle plain;
    for (std::size_t index = 0; index < changes().size(); ++index) {
        SCOPED_TRACE(index);
        NSParagraphStyle style, other;
        changes()[index](style);
        EXPECT_FALSE(style.isEqual(&plain));
        EXPECT_FALSE(plain.isEqual(&style));
        changes()[index](other);
        EXPECT_TRUE(style.isEqual(&other));
        EXPECT_EQ(style.hash(), other.hash());
    }
    EXPECT_TRUE(plain.isEqual(&plain));
    EXPECT_FALSE(plain.isEqual(nullptr));
}

TEST(NSParagraphStyle, ZerosOfBothSignsHaveOneHash) {
    NSParagraphStyle style;
    style.setHeadIndent(-0.0);
    EXPECT_TRUE(style.isEqual(std::make_shared<NSParagraphStyle>().get()));
    EXPECT_EQ(style.hash(), NSParagraphStyle().hash());
}

TEST(NSParagraphStyle, ACopyChangesByItself) {
    const auto &style = NSParagraphStyle::defaultParagraphStyle();
    const auto copy = style->mutableCopy();
    EXPECT_TRUE(copy->isEqual(style.get()));
    for (const auto &change : changes())
        change(*copy);
    EXPECT_FALSE(copy->isEqual(style.get()));
    EXPECT_EQ(style->tabStops().size(), 12u);
    const auto another = copy->mutableCopy();
    EXPECT_TRUE(another->isEqual(copy.get()));
}

TEST(NSParagraphStyle, ComesBackFromAnArchive) {
    for (const auto &change : changes()) {
        const auto style = std::make_shared<NSParagraphStyle>();
        change(*style);
        EXPECT_TRUE(style->isEqual(test::throughArchive(style).get()));
    }
    const auto all = NSParagraphStyle::defaultParagraphStyle()->mutableCopy();
    EXPECT_TRUE(all->isEqual(test::throughArchive(all).get()));
}

TEST(NSParagraphStyle, AForgedArchiveGivesASoundStyle) {
    const double infinity = std::numeric_limits<double>::infinity();
    const auto style = test::readForged<NSParagraphStyle>([&](NSCoder &coder) {
        coder.encodeDoubles(std::vector<double>{30, infinity, 10}, u"NSTabStops");
        coder.encodeDouble(infinity, u"NSDefaultTabInterval");
        coder.encodeDouble(std::numeric_limits<double>::quiet_NaN(), u"NSHeadIndent");
        coder.encodeInteger(6, u"NSLineBreakMode");
        coder.encodeString(u"wide", u"NSLineSpacing");
    });
    ASSERT_TRUE(style);
    EXPECT_EQ(style->tabStops(), (std::vector<CGFloat>{0, 10, 30}));
    EXPECT_EQ(style->defaultTabInterval(), 0);
    EXPECT_EQ(style->headIndent(), 0);
    EXPECT_EQ(style->lineBreakMode(), NSLineBreakByWordWrapping);
    EXPECT_EQ(style->lineSpacing(), 0);
    const auto negative = test::readForged<NSParagraphStyle>(
        [](NSCoder &coder) { coder.encodeInteger(-1, u"NSLineBreakMode"); });
    ASSERT_TRUE(negative);
    EXPECT_EQ(negative->lineBreakMode(), NSLineBreakByWordWrapping);
}
