// The themes that come along: readable, without slips of the pen, and with a look for what the languages
// name.
#include "Quorvane/Styles/QVThemeController.h"

#include "Platform/AppKit/NSColor.h"
#include "Platform/Foundation/NSError.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Styles/QVColor.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Support/Corpus.h"
#include "Tests/Support/ParseFixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

using namespace quorvane;

namespace {

namespace fs = std::filesystem;

const std::vector<std::string> names{"Daylight", "Dusk"};

std::shared_ptr<QVTheme> theme(const std::string &name) {
    const std::string path = QUORVANE_SOURCE_DIR "/Packages/Themes/Themes/" + name + ".css";
    std::shared_ptr<NSError> error;
    auto read =
        QVTheme::themeWithContentsOfURL(NSURL::fileURLWithPath(NSString::stringWithUTF8String(path)), &error);
    EXPECT_TRUE(read) << name << (error ? error->localizedFailureReason().UTF8String() : "");
    return read;
}

QVTheme::Styles stylesOf(const std::string &name) { return *theme(name)->styles(); }

/// The relative luminance of WCAG 2, from 0 to 1.
double luminance(const NSColor &color) {
    const auto components = CGColorGetComponents(color.CGColor());
    EXPECT_EQ(components.size(), 4u);
    EXPECT_EQ(components[3], 1) << "a colour that shines through has no contrast of its own";
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(components[0]) + 0.7152 * linear(components[1]) + 0.0722 * linear(components[2]);
}

/// The contrast ratio of WCAG 2, from 1 to 21.
double contrast(const NSColor &one, const NSColor &other) {
    const double a = luminance(one), b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

/// Marks and lines that stand among the text, and must not stand out.
bool isQuiet(const NSString &selector) {
    return selector == u"meta.text.invisible" || selector == u"meta.indentguide";
}

} // namespace

TEST(BundledThemes, TheContrastIsThatOfTheGuidelines) {
    const auto black = NSColor::colorWithSRGBRed(0, 0, 0, 1), white = NSColor::colorWithSRGBRed(1, 1, 1, 1);
    EXPECT_NEAR(contrast(*black, *white), 21, 1e-9);
    EXPECT_NEAR(contrast(*white, *white), 1, 1e-9);
    // The lightest gray that is readable on white, as every introduction tells.
    const auto gray = NSColor::colorWithSRGBRed(0x76 / 255.0, 0x76 / 255.0, 0x76 / 255.0, 1);
    EXPECT_NEAR(contrast(*gray, *white), 4.54, 0.005);
}

TEST(BundledThemes, OneIsLightAndOneIsDark) {
    EXPECT_EQ(theme("Daylight")->interfaceStyle(), QVThemeInterfaceStyleLight);
    EXPECT_EQ(theme("Dusk")->interfaceStyle(), QVThemeInterfaceStyleDark);
    for (const std::string &name : names) {
        const auto read = theme(name);
        EXPECT_EQ(read->displayName().UTF8String(), name);
        const bool isDark = read->interfaceStyle() == QVThemeInterfaceStyleDark;
        EXPECT_EQ(luminance(*read->contentBackgroundColor()) < 0.2, isDark) << name;
        EXPECT_EQ(luminance(*read->backgroundColor()) < 0.2, isDark) << name;
    }
}

TEST(BundledThemes, AllTextIsReadable) {
    for (const std::string &name : names) {
        const auto read = theme(name);
        std::size_t count = 0;
        for (const auto &style : *read->styles()) {
            const auto color = style->textColor();
            if (!color || isQuiet(style->selector()->string()))
                continue;
            const auto own = style->backgroundColor();
            const double ratio = contrast(*color->platformColor(),
                                          own ? *own->platformColor() : *read->contentBackgroundColor());
            EXPECT_GE(ratio, 4.5) << name << " " << style->selector()->string().UTF8String();
            ++count;
        }
        EXPECT_GE(count, 40u) << name;
    }
}

TEST(BundledThemes, PlainTextIsReadableWhereItIsMarked) {
    for (const std::string &name : names) {
        const auto read = theme(name);
        EXPECT_GE(contrast(*read->textColor(), *read->selectedTextBackgroundColor()), 4.5) << name;
        EXPECT_GE(contrast(*read->textColor(), *read->lookupTextStyle()->backgroundColor()->platformColor()),
                  4.5)
            << name;
        EXPECT_GE(contrast(*read->gutterSelectedStyle()->textColor()->platformColor(),
                           *read->gutterStyle()->backgroundColor()->platformColor()),
                  4.5)
            << name;
    }
}

TEST(BundledThemes, QuietMarksAreSeenAndNotRead) {
    for (const std::string &name : names) {
        const auto read = theme(name);
        for (const auto &style : {read->invisibleTextStyle(), read->indentationGuideStyle()}) {
            const double ratio =
                contrast(*style->textColor()->platformColor(), *read->contentBackgroundColor());
            EXPECT_GE(ratio, 1.25) << name;
            EXPECT_LE(ratio, 3) << name;
        }
    }
}

TEST(BundledThemes, EveryPropertyIsKnownAndRead) {
    for (const std::string &name : names)
        for (const auto &style : stylesOf(name))
            for (const auto &[property, value] : style->properties()) {
                if (property.hasPrefix(u"-theme-"))
                    continue;
                EXPECT_FALSE(QVStyle::styleWithSelector(nullptr, {{property, value}})->attributes().empty())
                    << name << " " << property.UTF8String() << ": " << value.UTF8String();
            }
}

TEST(BundledThemes, NoSelectorIsStyledTwice) {
    for (const std::string &name : names) {
        std::set<NSString> seen;
        for (const auto &style : stylesOf(name))
            EXPECT_TRUE(seen.insert(style->selector()->string()).second)
                << name << " " << style->selector()->string().UTF8String();
    }
}

TEST(BundledThemes, BothStyleTheSame) {
    std::vector<std::vector<NSString>> selectors;
    for (const std::string &name : names) {
        selectors.emplace_back();
        for (const auto &style : stylesOf(name))
            selectors.back().push_back(style->selector()->string());
    }
    EXPECT_EQ(selectors[0], selectors[1]);
}

TEST(BundledThemes, WhatLanguagesCallByACommonWordHasAColour) {
    std::vector<std::shared_ptr<QVSyntax>> syntaxes;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(QUORVANE_SOURCE_DIR "/Packages"))
        if (entry.path().parent_path().filename() == "Syntaxes" && entry.path().extension() == ".xml")
            syntaxes.push_back(test::syntaxFromXML(test::contentsOfFile(entry.path())));
    EXPECT_GE(syntaxes.size(), 5u);
    const auto words = QVSimpleSelector::simpleSelectorsJoinedByString(
        u"keyword, string, comment, number, constant, operator, punctuation, invalid, name.function, "
        u"name.class,"
        u"name.type, name.property, name.tag, name.attribute, name.selector, identifier.function");
    for (const std::string &name : names) {
        const auto read = theme(name);
        std::size_t count = 0;
        for (const auto &syntax : syntaxes) {
            const auto grammar = syntax->grammar();
            ASSERT_TRUE(grammar);
            QVThemeController::sharedController()->applyTheme(*read, *grammar);
            const auto check = [&](const QVScope::Scopes &scopes) {
                for (const auto &scope : scopes)
                    QVSimpleSelector::walkTreeStartingAtSelectable(
                        scope.get(), words, [&](QVSelectable *node, bool &) {
                            const auto *list = dynamic_cast<const QVStyleList *>(node);
                            const auto style = list->resolvedStyle();
                            EXPECT_TRUE(style && style->textColor())
                                << name << " " << node->selector()->string().UTF8String();
                            ++count;
                        });
            };
            check(grammar->scopes());
            for (const auto &[collectionName, collection] : grammar->collections())
                check(collection->scopes());
            QVThemeController::sharedController()->clearStylesOnGrammar(*grammar);
        }
        EXPECT_GE(count, 300u);
    }
}

TEST(BundledThemes, ComingBehindACommentItsTasksStandOut) {
    for (const std::string &name : names) {
        const auto read = theme(name);
        const auto color = [&](const char16_t *text) {
            return read->resolvedColorForAttribute(QVStyleAttributeTextColor,
                                                   {QVSimpleSelector::simpleSelectorWithString(text)});
        };
        EXPECT_FALSE(color(u"keyword.task")->isEqual(color(u"comment").get())) << name;
        EXPECT_FALSE(color(u"string.escape")->isEqual(color(u"string").get())) << name;
        EXPECT_FALSE(color(u"keyword")->isEqual(color(u"string").get())) << name;
    }
}
