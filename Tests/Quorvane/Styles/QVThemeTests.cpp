#include "Quorvane/Styles/QVTheme.h"

#include "Platform/AppKit/NSAppearance.h"
#include "Platform/AppKit/NSColor.h"
#include "Platform/AppKit/NSShadow.h"
#include "Quorvane/Styles/QVColor.h"
#include "Quorvane/Styles/QVGradient.h"
#include "Tests/Quorvane/Styles/ThemeFixture.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace quorvane;
using test::themeOf;

namespace {

std::shared_ptr<const QVSimpleSelector> selector(const char16_t *text) {
    return QVSimpleSelector::simpleSelectorWithString(text);
}

bool isColor(const std::shared_ptr<const NSColor> &color, const NSString &value) {
    return color && color->isEqual(QVStyle::colorWithCSSValue(value)->platformColor().get());
}

bool isSystemColor(const std::shared_ptr<const NSColor> &color, const char16_t *name) {
    return color && color->catalogName() == name;
}

/// Registers a theme while it lives.
struct RegisteredTheme {
    explicit RegisteredTheme(const char16_t *name) {
        theme->setName(name);
        QVTheme::addTheme(theme);
    }
    ~RegisteredTheme() { QVTheme::removeTheme(theme); }
    std::shared_ptr<QVTheme> theme = std::make_shared<QVTheme>();
};

} // namespace

TEST(QVThemeStyleNames, AreSelectorsOfTheirText) {
    const std::vector<std::pair<const QVThemeStyleName *, const char16_t *>> names{
        {&QVThemeStyleWindow, u"meta.window"},
        {&QVThemeStyleWindowTitlebar, u"meta.titlebar"},
        {&QVThemeStyleWindowTitlebarInactive, u"meta.titlebar.inactive"},
        {&QVThemeStyleWindowButton, u"meta.button"},
        {&QVThemeStyleWindowButtonDisabled, u"meta.button.disabled"},
        {&QVThemeStyleWindowButtonHighlighted, u"meta.button.highlighted"},
        {&QVThemeStyleWindowButtonSelected, u"meta.button.selected"},
        {&QVThemeStyleWindowButtonHighlightedSelected, u"meta.button.highlighted.selected"},
        {&QVThemeStyleWindowTextField, u"meta.textfield"},
        {&QVThemeStyleWindowTextFieldHighlighted, u"meta.textfield.highlighted"},
        {&QVThemeStyleWindowAccent, u"meta.accent"},
        {&QVThemeStyleDocument, u"meta.document"},
        {&QVThemeStyleDocumentButton, u"meta.document.button"},
        {&QVThemeStyleDocumentButtonDisabled, u"meta.document.button.disabled"},
        {&QVThemeStyleDocumentButtonHighlighted, u"meta.document.button.highlighted"},
        {&QVThemeStyleDocumentButtonSelected, u"meta.document.button.selected"},
        {&QVThemeStyleDocumentButtonHighlightedSelected, u"meta.document.button.highlighted.selected"},
        {&QVThemeStyleDocumentTextField, u"meta.document.textfield"},
        {&QVThemeStyleDocumentTextFieldHighlighted, u"meta.document.textfield.highlighted"},
        {&QVThemeStyleDocumentText, u"meta.text"},
        {&QVThemeStyleDocumentTextSelected, u"meta.text.selected"},
        {&QVThemeStyleDocumentTextInvisible, u"meta.text.invisible"},
        {&QVThemeStyleDocumentTextLink, u"meta.text.link"},
        {&QVThemeStyleDocumentTextLookup, u"meta.text.lookup"},
        {&QVThemeStyleDocumentInsertionPoint, u"meta.cursor"},
        {&QVThemeStyleDocumentIndentationGuide, u"meta.indentguide"},
        {&QVThemeStyleDocumentGutter, u"meta.gutter"},
        {&QVThemeStyleDocumentGutterSelected, u"meta.gutter.selected"},
        {&QVThemeStyleTerminalANSIBlack, u"terminal.black"},
        {&QVThemeStyleTerminalANSIRed, u"terminal.red"},
        {&QVThemeStyleTerminalANSIGreen, u"terminal.green"},
        {&QVThemeStyleTerminalANSIYellow, u"terminal.yellow"},
        {&QVThemeStyleTerminalANSIBlue, u"terminal.blue"},
        {&QVThemeStyleTerminalANSIMagenta, u"terminal.magenta"},
        {&QVThemeStyleTerminalANSICyan, u"terminal.cyan"},
        {&QVThemeStyleTerminalANSIWhite, u"terminal.white"},
        {&QVThemeStyleTerminalANSIBrightBlack, u"terminal.bright-black"},
        {&QVThemeStyleTerminalANSIBrightRed, u"terminal.bright-red"},
        {&QVThemeStyleTerminalANSIBrightGreen, u"terminal.bright-green"},
        {&QVThemeStyleTerminalANSIBrightYellow, u"terminal.bright-yellow"},
        {&QVThemeStyleTerminalANSIBrightBlue, u"terminal.bright-blue"},
        {&QVThemeStyleTerminalANSIBrightMagenta, u"terminal.bright-magenta"},
        {&QVThemeStyleTerminalANSIBrightCyan, u"terminal.bright-cyan"},
        {&QVThemeStyleTerminalANSIBrightWhite, u"terminal.bright-white"}};
    for (const auto &[name, text] : names) {
        EXPECT_EQ(name->selector()->string(), text);
        EXPECT_EQ(name->selector(), selector(text));
        EXPECT_EQ(&name->selector(), &name->selector());
    }
}

TEST(QVThemeStyleNames, TwoStandForNothing) {
    EXPECT_EQ(QVThemeStyleWindowTextFieldDisabled.selector(), nullptr);
    EXPECT_EQ(QVThemeStyleWindowTextFieldPlaceholder.selector(), nullptr);
    EXPECT_EQ(QVTheme().resolvedStyleForSelectors({QVThemeStyleWindowTextFieldDisabled}), nullptr);
}

TEST(QVTheme, IsEmptyAndLightAtFirst) {
    const QVTheme theme;
    EXPECT_TRUE(theme.styles()->empty());
    EXPECT_EQ(theme.interfaceStyle(), 0u);
    EXPECT_FALSE(theme.allowsVibrancy());
    EXPECT_FALSE(theme.usesSystemAccentColor());
    EXPECT_EQ(theme.name(), NSString());
    EXPECT_EQ(theme.displayName(), NSString());
    EXPECT_TRUE(theme.URL().isNull());
}

TEST(QVThemeRegistry, KeepsThemesInTheOrderOfTheirAddition) {
    const RegisteredTheme first(u"registry-test-b"), second(u"registry-test-a");
    auto themes = QVTheme::allThemes();
    ASSERT_GE(themes.size(), 2u);
    EXPECT_EQ(themes[themes.size() - 2], first.theme);
    EXPECT_EQ(themes.back(), second.theme);
    // A copy.
    themes.clear();
    EXPECT_GE(QVTheme::allThemes().size(), 2u);
}

TEST(QVThemeRegistry, FindsTheFirstThemeOfAName) {
    const RegisteredTheme first(u"registry-test"), second(u"registry-test");
    EXPECT_EQ(QVTheme::themeWithName(u"registry-test"), first.theme);
    QVTheme::removeTheme(first.theme);
    EXPECT_EQ(QVTheme::themeWithName(u"registry-test"), second.theme);
    EXPECT_EQ(QVTheme::themeWithName(u"no-such-theme"), nullptr);
}

TEST(QVThemeRegistry, AThemeThatWasAddedTwiceGoesAtOnce) {
    const auto before = QVTheme::allThemes();
    const RegisteredTheme theme(u"registry-test");
    QVTheme::addTheme(theme.theme);
    EXPECT_EQ(QVTheme::allThemes().size(), before.size() + 2);
    QVTheme::removeTheme(theme.theme);
    EXPECT_EQ(QVTheme::allThemes(), before);
    // One that is not there is no error.
    QVTheme::removeTheme(theme.theme);
    EXPECT_EQ(QVTheme::allThemes(), before);
}

TEST(QVThemeRegistry, ANullNameFindsNothing) {
    const auto nameless = std::make_shared<QVTheme>();
    QVTheme::addTheme(nameless);
    EXPECT_EQ(QVTheme::themeWithName(nullptr), nullptr);
    QVTheme::removeTheme(nameless);
}

TEST(QVThemeRegistry, ANullThemeIsAProgrammingError) {
    const auto before = QVTheme::allThemes();
    const test::AssertionRecorder assertions;
    QVTheme::addTheme(nullptr);
    QVTheme::removeTheme(nullptr);
    EXPECT_EQ(assertions.messages(),
              std::vector<NSString>(2, u"Invalid parameter not satisfying: theme != nil"));
    EXPECT_EQ(QVTheme::allThemes(), before);
}

TEST(QVThemeLookup, IsByTheWholeSelectorAndNotByPartOfIt) {
    const auto theme = themeOf(u"string {} string.escape {} a.b {}");
    const auto &styles = *theme->styles();
    EXPECT_EQ(theme->stylesMatchingSelectors({selector(u"string")}), (QVTheme::Styles{styles[0]}));
    EXPECT_EQ(theme->stylesMatchingSelectors({selector(u"string.escape")}), (QVTheme::Styles{styles[1]}));
    EXPECT_TRUE(theme->stylesMatchingSelectors({selector(u"string.quoted")}).empty());
    EXPECT_TRUE(theme->stylesMatchingSelectors({selector(u"a")}).empty());
    EXPECT_TRUE(theme->stylesMatchingSelectors({}).empty());
}

TEST(QVThemeLookup, AnswersInTheOrderOfTheSelectors) {
    const auto theme = themeOf(u"a {} b {} c {}");
    const auto &styles = *theme->styles();
    EXPECT_EQ(theme->stylesMatchingSelectors({selector(u"c"), selector(u"x"), nullptr, selector(u"a")}),
              (QVTheme::Styles{styles[2], styles[0]}));
}

TEST(QVThemeLookup, OfTwoDeclarationsOfASelectorOnlyTheFirstCounts) {
    const auto theme = themeOf(u"string { color: red; } string { color: blue; font-weight: bold; }");
    EXPECT_EQ(theme->stylesMatchingSelectors({selector(u"string")}),
              (QVTheme::Styles{(*theme->styles())[0]}));
    EXPECT_EQ(theme->resolvedNumberForAttribute(QVStyleAttributeFontWeight, {selector(u"string")}),
              std::nullopt);
}

TEST(QVThemeResolution, WhatComesFirstWins) {
    const auto theme = themeOf(u"a { color: red; } b { color: blue; font-weight: bold; }");
    const auto resolved = theme->resolvedStyleForSelectors({selector(u"a"), selector(u"b")});
    ASSERT_TRUE(resolved);
    EXPECT_TRUE(isColor(resolved->textColor()->platformColor(), u"red"));
    EXPECT_EQ(resolved->fontWeight(), 700);
    EXPECT_TRUE(
        isColor(theme->resolvedColorForAttribute(QVStyleAttributeTextColor, {selector(u"b"), selector(u"a")}),
                u"blue"));
}

TEST(QVThemeResolution, WithoutAStyleThereIsNone) {
    const auto theme = themeOf(u"a {}");
    EXPECT_EQ(theme->resolvedStyleForSelectors({selector(u"b")}), nullptr);
    EXPECT_EQ(theme->resolvedStyleForSelectors({}), nullptr);
}

TEST(QVThemeResolution, IsRememberedUntilTheStylesChange) {
    const auto theme = themeOf(u"a { color: red; }");
    const auto resolved = theme->resolvedStyleForSelectors({selector(u"a")});
    EXPECT_EQ(theme->resolvedStyleForSelectors({selector(u"a")}), resolved);
    theme->setStyles(*themeOf(u"a { color: blue; }")->styles());
    EXPECT_TRUE(
        isColor(theme->resolvedColorForAttribute(QVStyleAttributeTextColor, {selector(u"a")}), u"blue"));
    theme->setStyles(std::nullopt);
    EXPECT_TRUE(theme->styles()->empty());
    EXPECT_EQ(theme->resolvedStyleForSelectors({selector(u"a")}), nullptr);
}

TEST(QVThemeResolution, StylesThatWereHandedOutStay) {
    const auto theme = themeOf(u"a {}");
    const auto styles = theme->styles();
    theme->setStyles(std::nullopt);
    EXPECT_EQ(styles->size(), 1u);
}

TEST(QVThemeResolution, GivesValuesOfAllTypes) {
    const auto theme = themeOf(u"a { color: red; font-weight: bold; text-shadow: 1px 2px;"
                               u"background: linear-gradient(red, blue); }");
    const QVTheme::Selectors selectors{selector(u"a")};
    EXPECT_TRUE(isColor(theme->resolvedColorForAttribute(QVStyleAttributeTextColor, selectors), u"red"));
    EXPECT_EQ(theme->resolvedNumberForAttribute(QVStyleAttributeFontWeight, selectors), 700);
    ASSERT_TRUE(theme->resolvedShadowForAttribute(QVStyleAttributeTextShadow, selectors));
    EXPECT_EQ(theme->resolvedShadowForAttribute(QVStyleAttributeTextShadow, selectors)->shadowOffset(),
              (CGSize{1, 2}));
    EXPECT_TRUE(theme->resolvedGradientForAttribute(QVStyleAttributeBackgroundGradient, selectors));
}

TEST(QVThemeResolution, GivesTheDefaultForNoneNothingAndNoStyle) {
    const auto theme = themeOf(u"a { color: none; font-weight: none; text-shadow: none; background: none; }"
                               u"b { margin: 1px; }");
    const auto color = NSColor::blackColor();
    const auto shadow = std::make_shared<const NSShadow>();
    const auto gradient = QVGradient::init();
    for (const char16_t *const text : {u"a", u"b", u"c"}) {
        const QVTheme::Selectors selectors{selector(text)};
        EXPECT_EQ(theme->resolvedColorForAttribute(QVStyleAttributeTextColor, selectors, color), color);
        EXPECT_EQ(theme->resolvedColorForAttribute(QVStyleAttributeTextColor, selectors), nullptr);
        EXPECT_EQ(theme->resolvedNumberForAttribute(QVStyleAttributeFontWeight, selectors, 3), 3);
        EXPECT_EQ(theme->resolvedNumberForAttribute(QVStyleAttributeFontWeight, selectors), std::nullopt);
        EXPECT_EQ(theme->resolvedShadowForAttribute(QVStyleAttributeTextShadow, selectors, shadow), shadow);
        EXPECT_EQ(theme->resolvedShadowForAttribute(QVStyleAttributeTextShadow, selectors), nullptr);
        EXPECT_EQ(
            theme->resolvedGradientForAttribute(QVStyleAttributeBackgroundGradient, selectors, gradient),
            gradient);
        EXPECT_EQ(theme->resolvedGradientForAttribute(QVStyleAttributeBackgroundGradient, selectors),
                  nullptr);
    }
}

TEST(QVThemeSurroundings, AreTheSystemsWhereTheThemeSaysNothing) {
    const QVTheme theme;
    EXPECT_TRUE(isSystemColor(theme.backgroundColor(), u"windowBackgroundColor"));
    EXPECT_TRUE(isSystemColor(theme.separatorColor(), u"separatorColor"));
    EXPECT_TRUE(isSystemColor(theme.contentBackgroundColor(), u"windowBackgroundColor"));
    EXPECT_TRUE(isSystemColor(theme.contentSeparatorColor(), u"separatorColor"));
    EXPECT_TRUE(isSystemColor(theme.accentColor(), u"controlAccentColor"));
    EXPECT_TRUE(isSystemColor(theme.textColor(), u"labelColor"));
    EXPECT_TRUE(isSystemColor(theme.selectedTextBackgroundColor(), u"selectedTextBackgroundColor"));
    EXPECT_TRUE(isSystemColor(theme.windowBackgroundColor(), u"windowBackgroundColor"));
}

TEST(QVThemeSurroundings, WindowColoursStandInForThoseOfTheDocument) {
    const auto theme =
        themeOf(u"meta.window { background: red; border: lime; color: blue; } meta.accent { color: teal; }");
    EXPECT_TRUE(isColor(theme->backgroundColor(), u"red"));
    EXPECT_TRUE(isColor(theme->separatorColor(), u"lime"));
    EXPECT_TRUE(isColor(theme->contentBackgroundColor(), u"red"));
    EXPECT_TRUE(isColor(theme->contentSeparatorColor(), u"lime"));
    EXPECT_TRUE(isColor(theme->textColor(), u"blue"));
    EXPECT_TRUE(isColor(theme->accentColor(), u"teal"));
    EXPECT_TRUE(isColor(theme->windowBackgroundColor(), u"red"));
}

TEST(QVThemeSurroundings, DocumentAndTextHaveTheirOwnColours) {
    const auto theme = themeOf(u"meta.window { background: red; border: lime; color: blue; }"
                               u"meta.document { background: navy; border: teal; color: gray; }"
                               u"meta.text.selected { background: silver; }");
    EXPECT_TRUE(isColor(theme->backgroundColor(), u"red"));
    EXPECT_TRUE(isColor(theme->contentBackgroundColor(), u"navy"));
    EXPECT_TRUE(isColor(theme->contentSeparatorColor(), u"teal"));
    EXPECT_TRUE(isColor(theme->textColor(), u"gray"));
    EXPECT_TRUE(isColor(theme->selectedTextBackgroundColor(), u"silver"));
    const auto withText = themeOf(u"meta.document { color: gray; } meta.text { color: maroon; }");
    EXPECT_TRUE(isColor(withText->textColor(), u"maroon"));
}

TEST(QVThemeSurroundings, ADocumentThatSaysNoneFallsBackToTheWindow) {
    const auto theme = themeOf(u"meta.window { background: red; } meta.document { background: none; }");
    EXPECT_TRUE(isColor(theme->contentBackgroundColor(), u"red"));
}

TEST(QVThemeSurroundings, WithVibrancyTheWindowHasNoBackground) {
    const auto theme = themeOf(u"meta { -theme-vibrancy: vibrant; } meta.window { background: red; }");
    EXPECT_EQ(theme->windowBackgroundColor(), nullptr);
    EXPECT_TRUE(isColor(theme->backgroundColor(), u"red"));
}

TEST(QVThemeSurroundings, ControlsAreTheSystemsWhateverTheThemeSays) {
    const auto theme = themeOf(u"meta.window, meta.document, meta.text { color: red; background: red; }");
    EXPECT_TRUE(isSystemColor(theme->headerTextColor(), u"headerTextColor"));
    EXPECT_TRUE(isSystemColor(theme->labelColor(), u"labelColor"));
    EXPECT_TRUE(isSystemColor(theme->secondaryLabelColor(), u"secondaryLabelColor"));
    EXPECT_TRUE(isSystemColor(theme->tertiaryLabelColor(), u"tertiaryLabelColor"));
    EXPECT_TRUE(isSystemColor(theme->placeholderTextColor(), u"placeholderTextColor"));
    EXPECT_TRUE(isSystemColor(theme->selectedContentBackgroundColor(), u"selectedContentBackgroundColor"));
    EXPECT_TRUE(isSystemColor(theme->unemphasizedSelectedContentBackgroundColor(),
                              u"unemphasizedSelectedContentBackgroundColor"));
}

TEST(QVThemeSurroundings, StylesAreThoseOfTheirSelectors) {
    using Getter = std::shared_ptr<const QVStyle> (QVTheme::*)() const;
    const std::vector<std::pair<Getter, const char *>> styles{
        {&QVTheme::textStyle, "meta.text"},
        {&QVTheme::selectedTextStyle, "meta.text.selected"},
        {&QVTheme::invisibleTextStyle, "meta.text.invisible"},
        {&QVTheme::linkTextStyle, "meta.text.link"},
        {&QVTheme::lookupTextStyle, "meta.text.lookup"},
        {&QVTheme::insertionPointStyle, "meta.cursor"},
        {&QVTheme::indentationGuideStyle, "meta.indentguide"},
        {&QVTheme::gutterStyle, "meta.gutter"},
        {&QVTheme::gutterSelectedStyle, "meta.gutter.selected"},
        {&QVTheme::titlebarStyle, "meta.titlebar"},
        {&QVTheme::titlebarInactiveStyle, "meta.titlebar.inactive"}};
    std::string text;
    for (std::size_t index = 0; index < styles.size(); ++index)
        text += std::string(styles[index].second) + " { font-weight: " + std::to_string(index + 1) + "; }";
    const auto theme = themeOf(NSString::stringWithUTF8String(text));
    const QVTheme empty;
    for (std::size_t index = 0; index < styles.size(); ++index) {
        const auto style = ((*theme).*styles[index].first)();
        ASSERT_TRUE(style) << styles[index].second;
        EXPECT_EQ(style->fontWeight(), NSInteger(index + 1)) << styles[index].second;
        EXPECT_EQ((empty.*styles[index].first)(), nullptr) << styles[index].second;
    }
}

TEST(QVThemeSurroundings, TerminalColoursAreThoseOfTheTheme) {
    using Getter = std::shared_ptr<const NSColor> (QVTheme::*)() const;
    const std::vector<std::pair<Getter, const char *>> colors{
        {&QVTheme::ANSIBlackColor, "black"},
        {&QVTheme::ANSIRedColor, "red"},
        {&QVTheme::ANSIGreenColor, "green"},
        {&QVTheme::ANSIYellowColor, "yellow"},
        {&QVTheme::ANSIBlueColor, "blue"},
        {&QVTheme::ANSIMagentaColor, "magenta"},
        {&QVTheme::ANSICyanColor, "cyan"},
        {&QVTheme::ANSIWhiteColor, "white"},
        {&QVTheme::ANSIBrightBlackColor, "bright-black"},
        {&QVTheme::ANSIBrightRedColor, "bright-red"},
        {&QVTheme::ANSIBrightGreenColor, "bright-green"},
        {&QVTheme::ANSIBrightYellowColor, "bright-yellow"},
        {&QVTheme::ANSIBrightBlueColor, "bright-blue"},
        {&QVTheme::ANSIBrightMagentaColor, "bright-magenta"},
        {&QVTheme::ANSIBrightCyanColor, "bright-cyan"},
        {&QVTheme::ANSIBrightWhiteColor, "bright-white"}};
    const auto number = [](std::size_t index) { return "rgb(" + std::to_string(index + 1) + ",0,0)"; };
    std::string text;
    for (std::size_t index = 0; index < colors.size(); ++index)
        text += "terminal." + std::string(colors[index].second) + " { color: " + number(index) + "; }";
    const auto theme = themeOf(NSString::stringWithUTF8String(text));
    const QVTheme empty;
    for (std::size_t index = 0; index < colors.size(); ++index) {
        EXPECT_TRUE(isColor(((*theme).*colors[index].first)(), NSString::stringWithUTF8String(number(index))))
            << colors[index].second;
        EXPECT_EQ((empty.*colors[index].first)(), nullptr) << colors[index].second;
    }
}

TEST(QVThemeSurroundings, AppearanceFollowsTheInterfaceStyle) {
    QVTheme theme;
    EXPECT_EQ(NSString(theme.appearance()->name()), NSAppearanceNameAqua);
    theme.setInterfaceStyle(QVThemeInterfaceStyleDark);
    EXPECT_EQ(NSString(theme.appearance()->name()), NSAppearanceNameDarkAqua);
    theme.setInterfaceStyle(2);
    NSAppearance::setCurrentAppearance(NSAppearance::appearanceNamed(NSAppearanceNameDarkAqua));
    EXPECT_EQ(NSString(theme.appearance()->name()), NSAppearanceNameDarkAqua);
    NSAppearance::setCurrentAppearance(NSAppearance::appearanceNamed(NSAppearanceNameAqua));
    EXPECT_EQ(NSString(theme.appearance()->name()), NSAppearanceNameAqua);
    NSAppearance::setCurrentAppearance(nullptr);
}

// A look-up that began with the old styles must not leave what it found to those who come behind the change.
TEST(QVThemeConcurrency, LookUpsWhileStylesChangeSeeOneListOrTheOther) {
    const auto theme = themeOf(u"a { color: red; font-weight: 100; }");
    const auto red = *theme->styles();
    const auto blue = *themeOf(u"a { color: blue; font-weight: 200; }")->styles();
    std::atomic<bool> done = false;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 3; ++reader)
        readers.emplace_back([&] {
            while (!done) {
                const auto style = theme->resolvedStyleForSelectors({selector(u"a")});
                const bool isRed = isColor(style->textColor()->platformColor(), u"red");
                wrong += style->fontWeight() != (isRed ? 100 : 200);
            }
        });
    for (int round = 0; round < 300; ++round) {
        const bool isRed = round % 2 == 0;
        theme->setStyles(isRed ? red : blue);
        wrong += theme->resolvedStyleForSelectors({selector(u"a")})->fontWeight() != (isRed ? 100 : 200);
    }
    done = true;
    for (std::thread &reader : readers)
        reader.join();
    EXPECT_EQ(wrong, 0);
}

TEST(QVThemeConcurrency, TheRegistryTakesThemesFromManyThreads) {
    const std::size_t before = QVTheme::allThemes().size();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([] {
            for (int round = 0; round < 100; ++round) {
                const RegisteredTheme theme(u"concurrent-theme");
                EXPECT_TRUE(QVTheme::themeWithName(u"concurrent-theme"));
                EXPECT_FALSE(QVTheme::allThemes().empty());
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(QVTheme::allThemes().size(), before);
}
