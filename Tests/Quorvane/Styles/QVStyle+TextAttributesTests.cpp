#include "Quorvane/Styles/QVStyle+TextAttributes.h"

#include "Platform/AppKit/NSShadow.h"
#include "Quorvane/Styles/QVStyle.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace quorvane;

namespace {

const CTFontRef &baseFont() {
    static const CTFontRef font = CTFontCreateWithName(u"DejaVuSansMono", 13);
    return font;
}

NSAttributes baseAttributes() { return {{NSFontAttributeName, baseFont()}}; }

std::shared_ptr<QVStyle> styleWith(QVStyle::Properties properties) {
    return QVStyle::styleWithSelector(nullptr, std::move(properties));
}

NSMutableAttributes applied(QVStyle::Properties properties, NSMutableAttributes attributes = {},
                            const NSAttributes &base = baseAttributes()) {
    QVStyleApplyTextAttributes(*styleWith(std::move(properties)), attributes, base);
    return attributes;
}

/// The name of the font that the style gives, null where it gives none.
NSString fontWith(QVStyle::Properties properties, const NSAttributes &base = baseAttributes()) {
    const NSMutableAttributes attributes = applied(std::move(properties), {}, base);
    const auto *font = attributes.objectForKey<CTFont>(NSFontAttributeName);
    return font ? font->description() : NSString();
}

NSAttributeValue color(const NSString &value) { return QVStyle::colorWithCSSValue(value)->platformColor(); }

/// Attributes that have everything that a style can take away.
NSMutableAttributes everything() {
    NSMutableAttributes attributes;
    attributes.set(NSForegroundColorAttributeName, color(u"gray"));
    attributes.set(NSBackgroundColorAttributeName, color(u"gray"));
    attributes.set(NSShadowAttributeName, std::make_shared<const NSShadow>());
    attributes.set(NSUnderlineStyleAttributeName, 1);
    attributes.set(NSUnderlineColorAttributeName, color(u"gray"));
    attributes.set(NSStrikethroughStyleAttributeName, 1);
    attributes.set(NSStrikethroughColorAttributeName, color(u"gray"));
    return attributes;
}

/// Everything but these.
NSAttributes without(std::initializer_list<NSAttributeKey> keys) {
    return everything().attributes().attributesByRemovingKeys(keys);
}

} // namespace

TEST(QVStyleTextAttributes, AStyleThatSaysNothingChangesNothing) {
    EXPECT_EQ(applied({}, everything()).attributes(), everything().attributes());
}

TEST(QVStyleTextAttributes, ColoursAndShadowAreSet) {
    const NSAttributes attributes =
        applied({{u"color", u"red"}, {u"background", u"blue"}, {u"text-shadow", u"1px 2px"}}).attributes();
    auto shadow = std::make_shared<NSShadow>();
    shadow->setShadowOffset({1, 2});
    EXPECT_EQ(attributes, (NSAttributes{{NSForegroundColorAttributeName, color(u"red")},
                                        {NSBackgroundColorAttributeName, color(u"blue")},
                                        {NSShadowAttributeName, shadow}}));
}

TEST(QVStyleTextAttributes, NoneTakesColoursAndShadowOut) {
    EXPECT_EQ(applied({{u"color", u"none"}}, everything()).attributes(),
              without({NSForegroundColorAttributeName}));
    EXPECT_EQ(applied({{u"background", u"none"}}, everything()).attributes(),
              without({NSBackgroundColorAttributeName}));
    EXPECT_EQ(applied({{u"text-shadow", u"none"}}, everything()).attributes(),
              without({NSShadowAttributeName}));
}

TEST(QVStyleTextAttributes, BoxesBordersAndGradientsAreNotForText) {
    EXPECT_TRUE(applied({{u"background", u"linear-gradient(red, blue)"},
                         {u"border", u"red"},
                         {u"box-shadow", u"1px 2px"}})
                    .empty());
}

TEST(QVStyleTextAttributes, AWeightFromBoldOnMakesTheFontBold) {
    EXPECT_EQ(fontWith({{u"font-weight", u"bold"}}), u"<CTFont DejaVuSansMono-Bold 13.00>");
    EXPECT_EQ(fontWith({{u"font-weight", u"700"}}), u"<CTFont DejaVuSansMono-Bold 13.00>");
    EXPECT_EQ(fontWith({{u"font-weight", u"bolder"}}), u"<CTFont DejaVuSansMono-Bold 13.00>");
    EXPECT_EQ(fontWith({{u"font-weight", u"699"}}), NSString());
    EXPECT_EQ(fontWith({{u"font-weight", u"normal"}}), NSString());
    EXPECT_EQ(fontWith({{u"font-weight", u"lighter"}}), NSString());
}

// That "normal" asks for italic too is kept on purpose.
TEST(QVStyleTextAttributes, AnyFontStyleMakesTheFontItalic) {
    EXPECT_EQ(fontWith({{u"font-style", u"italic"}}), u"<CTFont DejaVuSansMono-Oblique 13.00>");
    EXPECT_EQ(fontWith({{u"font-style", u"normal"}}), u"<CTFont DejaVuSansMono-Oblique 13.00>");
    EXPECT_EQ(fontWith({{u"font-style", u"italic"}, {u"font-weight", u"bold"}}),
              u"<CTFont DejaVuSansMono-BoldOblique 13.00>");
    EXPECT_EQ(fontWith({{u"font-style", u"oblique"}}), NSString());
    QVStyle style;
    style.setFontStyle(3);
    NSMutableAttributes attributes;
    QVStyleApplyTextAttributes(style, attributes, baseAttributes());
    EXPECT_TRUE(attributes.empty());
}

TEST(QVStyleTextAttributes, NoWeightOrStyleBringsTheBaseFontBack) {
    EXPECT_EQ(fontWith({{u"font-weight", u"none"}}), u"<CTFont DejaVuSansMono 13.00>");
    EXPECT_EQ(fontWith({{u"font-style", u"none"}}), u"<CTFont DejaVuSansMono 13.00>");
    EXPECT_EQ(fontWith({{u"font-weight", u"none"}, {u"font-style", u"italic"}}),
              u"<CTFont DejaVuSansMono-Oblique 13.00>");
    EXPECT_EQ(fontWith({{u"font-weight", u"bold"}, {u"font-style", u"none"}}),
              u"<CTFont DejaVuSansMono-Bold 13.00>");
}

TEST(QVStyleTextAttributes, WithoutABaseFontThereIsNoFont) {
    EXPECT_EQ(fontWith({{u"font-weight", u"bold"}}, {}), NSString());
    EXPECT_EQ(fontWith({{u"font-weight", u"bold"}}, {{NSFontAttributeName, u"no font"}}), NSString());
}

TEST(QVStyleTextAttributes, AFamilyWithoutTheFaceLeavesTheFontAlone) {
    const NSAttributes base{{NSFontAttributeName, CTFontCreateWithName(u"DejaVuMathTeXGyre-Regular", 12)}};
    EXPECT_EQ(fontWith({{u"font-weight", u"bold"}}, base), NSString());
}

TEST(QVStyleTextAttributes, LinesHaveStyleAndColour) {
    EXPECT_EQ(applied({{u"text-decoration", u"underline dotted red"}}).attributes(),
              (NSAttributes{{NSUnderlineStyleAttributeName, 0x101},
                            {NSUnderlineColorAttributeName, color(u"red")}}));
    EXPECT_EQ(applied({{u"text-decoration", u"line-through solid red"}}).attributes(),
              (NSAttributes{{NSStrikethroughStyleAttributeName, 1},
                            {NSStrikethroughColorAttributeName, color(u"red")}}));
    EXPECT_EQ(
        applied({{u"text-decoration", u"underline line-through dashed"}}).attributes(),
        (NSAttributes{{NSUnderlineStyleAttributeName, 0x201}, {NSStrikethroughStyleAttributeName, 0x201}}));
}

TEST(QVStyleTextAttributes, ALineWithoutAStyleOfItsOwnIsSingle) {
    EXPECT_EQ(applied({{u"text-decoration-line", u"underline"}}).attributes(),
              (NSAttributes{{NSUnderlineStyleAttributeName, 1}}));
}

// The shorthand always sets a style, 0 where it names none; single is the default of an absent one alone.
TEST(QVStyleTextAttributes, TheShorthandWithoutAStyleGivesStyleZero) {
    EXPECT_EQ(
        applied({{u"text-decoration", u"underline red"}}).attributes(),
        (NSAttributes{{NSUnderlineStyleAttributeName, 0}, {NSUnderlineColorAttributeName, color(u"red")}}));
}

TEST(QVStyleTextAttributes, ALineWithoutAColourTakesTheOneBeforeAway) {
    NSMutableAttributes expected = everything();
    expected.remove(NSUnderlineColorAttributeName);
    EXPECT_EQ(applied({{u"text-decoration-line", u"underline"}}, everything()).attributes(),
              expected.attributes());
}

TEST(QVStyleTextAttributes, AnOverlineHasNoEffect) {
    EXPECT_TRUE(applied({{u"text-decoration", u"overline red"}}).empty());
    EXPECT_EQ(applied({{u"text-decoration", u"overline"}}, everything()).attributes(),
              everything().attributes());
}

TEST(QVStyleTextAttributes, NoDecorationTakesAllLinesOut) {
    const auto lines = {NSUnderlineStyleAttributeName.key(), NSUnderlineColorAttributeName.key(),
                        NSStrikethroughStyleAttributeName.key(), NSStrikethroughColorAttributeName.key()};
    EXPECT_EQ(applied({{u"text-decoration", u"none"}}, everything()).attributes(), without(lines));
    // Nothing behind it counts any more.
    EXPECT_EQ(applied({{u"text-decoration-line", u"none"}, {u"text-decoration-color", u"red"}}, everything())
                  .attributes(),
              without(lines));
}

TEST(QVStyleTextAttributes, NoDecorationColourOrStyleTakesThatOfBothLinesOut) {
    EXPECT_EQ(applied({{u"text-decoration-color", u"none"}}, everything()).attributes(),
              without({NSUnderlineColorAttributeName, NSStrikethroughColorAttributeName}));
    EXPECT_EQ(applied({{u"text-decoration-style", u"none"}}, everything()).attributes(),
              without({NSUnderlineStyleAttributeName, NSStrikethroughStyleAttributeName}));
    // A line of the style itself comes behind that.
    EXPECT_EQ(
        applied({{u"text-decoration-line", u"underline"}, {u"text-decoration-style", u"none"}}).attributes(),
        (NSAttributes{{NSUnderlineStyleAttributeName, 1}}));
}

TEST(QVStyleFontCache, AnswersTheSameFontForTheSameTraits) {
    const CTFontAttributes bold{13, kCTFontTraitBold};
    const CTFontRef font = QVStyleGetCachedFontForAttributes(bold, baseFont());
    ASSERT_TRUE(font);
    EXPECT_EQ(QVStyleGetCachedFontForAttributes(bold, baseFont()), font);
    EXPECT_NE(QVStyleGetCachedFontForAttributes({13, kCTFontTraitBold | kCTFontTraitItalic}, baseFont()),
              font);
}

TEST(QVStyleFontCache, TraitsThatTheFontHasGiveTheFontItself) {
    const CTFontRef bold = CTFontCreateWithName(u"DejaVuSansMono-Bold", 21);
    EXPECT_EQ(QVStyleGetCachedFontForAttributes({21, kCTFontTraitBold}, bold), bold);
    EXPECT_EQ(QVStyleGetCachedFontForAttributes({21, 0}, bold), bold);
    // Only missing traits are added, none is taken away.
    EXPECT_EQ(QVStyleGetCachedFontForAttributes({21, kCTFontTraitItalic}, bold)->description(),
              u"<CTFont DejaVuSansMono-BoldOblique 21.00>");
    EXPECT_EQ(QVStyleGetCachedFontForAttributes({21, kCTFontTraitMonoSpace}, bold), bold);
}

TEST(QVStyleFontCache, KeepsSizesApart) {
    const CTFontRef large = CTFontCreateWithName(u"DejaVuSansMono", 31);
    EXPECT_EQ(QVStyleGetCachedFontForAttributes({31, kCTFontTraitBold}, large)->size(), 31);
    EXPECT_EQ(QVStyleGetCachedFontForAttributes({13, kCTFontTraitBold}, baseFont())->size(), 13);
}

TEST(QVStyleFontCache, AFaceThatIsMissingGivesNull) {
    const CTFontRef font = CTFontCreateWithName(u"DejaVuMathTeXGyre-Regular", 12);
    EXPECT_EQ(QVStyleGetCachedFontForAttributes({12, kCTFontTraitBold}, font), nullptr);
    EXPECT_EQ(QVStyleGetCachedFontForAttributes({12, kCTFontTraitBold}, font), nullptr);
}

TEST(QVStyleFontCache, ANullFontIsAProgrammingError) {
    const test::AssertionRecorder assertions;
    EXPECT_EQ(QVStyleGetCachedFontForAttributes({}, nullptr), nullptr);
    EXPECT_EQ(assertions.messages(),
              (std::vector<NSString>{u"Invalid parameter not satisfying: baseFont != NULL"}));
}

TEST(QVStyleConcurrency, ThreadsApplyOneStyle) {
    const auto style = styleWith({{u"color", u"red"}, {u"font-weight", u"bold"}, {u"font-style", u"italic"}});
    const NSAttributes base = baseAttributes();
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                NSMutableAttributes attributes;
                QVStyleApplyTextAttributes(*style, attributes, base);
                wrong += attributes.count() != 2;
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}
