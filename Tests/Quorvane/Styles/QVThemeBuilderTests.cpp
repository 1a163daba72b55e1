#include "Quorvane/Styles/QVThemeBuilder.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Styles/QVColor.h"
#include "Quorvane/Styles/QVGradient.h"
#include "Tests/Quorvane/Styles/ThemeFixture.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using namespace quorvane;
using test::themeOf;

namespace {

/// "selector line:column" of each style.
std::vector<std::string> outlineOf(const QVTheme &theme) {
    std::vector<std::string> lines;
    for (const auto &style : *theme.styles())
        lines.push_back(style->selector()->string().UTF8String() + " " +
                        std::to_string(style->lineNumber().value_or(0)) + ":" +
                        std::to_string(style->columnNumber().value_or(0)));
    return lines;
}

using Outline = std::vector<std::string>;

/// A file that goes when the test ends.
struct TemporaryFile {
    TemporaryFile(const std::string &name, const std::string &content) {
        std::string pattern = (std::filesystem::temp_directory_path() / "theme-XXXXXX").string();
        folder = ::mkdtemp(pattern.data());
        path = folder / name;
        std::ofstream(path, std::ios::binary) << content;
    }
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    NSURL url() const { return NSURL::fileURLWithPath(NSString::stringWithUTF8String(path.string())); }

    std::filesystem::path folder;
    std::filesystem::path path;
};

} // namespace

TEST(QVThemeBuilder, MakesAStyleOfEachSelectorInFileOrder) {
    const auto theme = themeOf(u"/* x */ a.b { color: red; }\n  c, d.e,\n\tf {}\ng");
    EXPECT_EQ(outlineOf(*theme), (Outline{"a.b 1:9", "c 2:3", "d.e 2:3", "f 2:3", "g 4:1"}));
    EXPECT_TRUE((*theme->styles())[0]->textColor());
    EXPECT_TRUE((*theme->styles())[0]->fileURL().isNull());
}

TEST(QVThemeBuilder, SelectorsOfOneDeclarationShareItsProperties) {
    const auto theme = themeOf(u"a, b { color: red; x: y; }");
    const QVStyle::Properties expected{{u"color", u"red"}, {u"x", u"y"}};
    ASSERT_EQ(theme->styles()->size(), 2u);
    for (const auto &style : *theme->styles()) {
        EXPECT_EQ(style->properties(), expected);
        EXPECT_TRUE(style->textColor());
    }
}

// Each selector had values of its own, so that a file of a megabyte could ask for any amount of memory.
TEST(QVThemeBuilder, SelectorsOfOneDeclarationShareTheValuesThatWereReadFromIt) {
    std::u16string text = u"a, b { background: linear-gradient(red";
    for (int color = 0; color < 1000; ++color)
        text += u", blue";
    const auto theme = themeOf(NSString(text + u"); }"));
    ASSERT_EQ(theme->styles()->size(), 2u);
    const auto &a = *(*theme->styles())[0], &b = *(*theme->styles())[1];
    EXPECT_EQ(a.selector()->string(), u"a");
    EXPECT_EQ(b.selector()->string(), u"b");
    ASSERT_TRUE(a.backgroundGradient());
    EXPECT_EQ(a.backgroundGradient()->numberOfColorStops(), 1001u);
    EXPECT_EQ(b.backgroundGradient(), a.backgroundGradient());
}

TEST(QVThemeBuilder, PropertiesEndWithTheirDeclaration) {
    const auto theme = themeOf(u"a { color: red; } b {}");
    EXPECT_TRUE((*theme->styles())[1]->properties().empty());
}

TEST(QVThemeBuilder, ALaterPropertyReplacesAnEarlierOne) {
    const auto theme = themeOf(u"a { color: red; color: blue; }");
    EXPECT_EQ((*theme->styles())[0]->properties(), (QVStyle::Properties{{u"color", u"blue"}}));
    EXPECT_TRUE((*theme->styles())[0]->textColor()->isEqual(QVStyle::colorWithCSSValue(u"blue").get()));
}

TEST(QVThemeBuilder, APropertyWithoutAValueRemovesAnEarlierOne) {
    const auto theme = themeOf(u"a { color: red; color: ; x:; }");
    EXPECT_TRUE((*theme->styles())[0]->properties().empty());
    EXPECT_TRUE((*theme->styles())[0]->attributes().empty());
}

TEST(QVThemeBuilder, StylesWithValuesThatCannotBeReadAreKept) {
    const auto theme = themeOf(u"a { color: reddish; font-weight: bold; }");
    EXPECT_EQ((*theme->styles())[0]->textColor(), nullptr);
    EXPECT_EQ((*theme->styles())[0]->fontWeight(), 700);
}

TEST(QVThemeBuilder, TheMetaDeclarationSaysWhatTheWholeThemeIs) {
    const auto theme = themeOf(u"meta { -theme-display-name: \"Late Night\"; -theme-interface-style: dark;"
                               u" -theme-vibrancy: vibrant; -theme-accent-color: auto; color: red; }");
    EXPECT_EQ(theme->displayName(), u"Late Night");
    EXPECT_EQ(theme->interfaceStyle(), 1u);
    EXPECT_TRUE(theme->allowsVibrancy());
    EXPECT_TRUE(theme->usesSystemAccentColor());
    // It is a style as well.
    EXPECT_EQ(outlineOf(*theme), Outline{"meta 1:1"});
    EXPECT_TRUE((*theme->styles())[0]->textColor());
}

TEST(QVThemeBuilder, SettingsMayBeWrittenWithAndWithoutQuotes) {
    const auto theme = themeOf(u"meta { -theme-display-name: Night; -theme-interface-style: 'dark'; }");
    EXPECT_EQ(theme->displayName(), u"Night");
    EXPECT_EQ(theme->interfaceStyle(), 1u);
}

TEST(QVThemeBuilder, OtherValuesOfSettingsAreTheDefaults) {
    const auto theme = themeOf(u"meta { -theme-interface-style: Dark; -theme-vibrancy: yes;"
                               u" -theme-accent-color: red; }");
    EXPECT_EQ(theme->displayName(), NSString());
    EXPECT_EQ(theme->interfaceStyle(), 0u);
    EXPECT_FALSE(theme->allowsVibrancy());
    EXPECT_FALSE(theme->usesSystemAccentColor());
}

TEST(QVThemeBuilder, OnlyTheFirstDeclarationOfMetaAloneCounts) {
    EXPECT_EQ(themeOf(u"meta, a { -theme-display-name: x; }")->displayName(), NSString());
    EXPECT_EQ(themeOf(u"meta.x { -theme-display-name: x; }")->displayName(), NSString());
    EXPECT_EQ(themeOf(u"meta { -theme-display-name: x; } meta { -theme-display-name: y; }")->displayName(),
              u"x");
    EXPECT_EQ(themeOf(u"meta, a { -theme-display-name: x; } meta { -theme-display-name: y; }")->displayName(),
              u"y");
}

TEST(QVThemeBuilder, AMistakeGivesNoTheme) {
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVThemeBuilder::init()->parseString(u"a {}\n?", &error), nullptr);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), QVThemeParserErrorDomain);
    EXPECT_EQ(error->localizedFailureReason(), u"Unexpected character at line 2, column 1");
    EXPECT_EQ(QVThemeBuilder::init()->parseString(u"?"), nullptr);
}

TEST(QVThemeBuilder, ABuilderMayBeUsedAgain) {
    const auto builder = QVThemeBuilder::init();
    std::shared_ptr<NSError> error;
    EXPECT_EQ(builder->parseString(u"meta { -theme-display-name: x; } ?", &error), nullptr);
    const auto theme = builder->parseString(u"a {}", &error);
    ASSERT_TRUE(theme);
    EXPECT_EQ(outlineOf(*theme), Outline{"a 1:1"});
    EXPECT_EQ(theme->displayName(), NSString());
}

TEST(QVThemeBuilder, ReadsAFile) {
    const TemporaryFile file("Late.Night.css", "\n a { color: red; }");
    const auto theme = QVThemeBuilder::init()->parseFileURL(file.url());
    ASSERT_TRUE(theme);
    EXPECT_EQ(theme->URL(), file.url());
    EXPECT_EQ(theme->name(), u"Late.Night");
    EXPECT_EQ(theme->displayName(), NSString());
    EXPECT_EQ((*theme->styles())[0]->fileURL(), file.url());
    EXPECT_EQ(outlineOf(*theme), Outline{"a 2:2"});
}

TEST(QVThemeBuilder, AThemeOfAFileIsShownByItsNameUnlessItHasOneToShow) {
    const TemporaryFile plain("plain.css", "a {}");
    const TemporaryFile named("named.css", "meta { -theme-display-name: 'A Name'; }");
    const auto before = QVTheme::allThemes();
    EXPECT_EQ(QVTheme::themeWithContentsOfURL(plain.url())->displayName(), u"plain");
    EXPECT_EQ(QVTheme::themeWithContentsOfURL(named.url())->displayName(), u"A Name");
    EXPECT_EQ(QVTheme::themeWithContentsOfURL(named.url())->name(), u"named");
    EXPECT_EQ(QVTheme::allThemes(), before);
}

TEST(QVThemeBuilder, AFileThatCannotBeReadGivesAnError) {
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVTheme::themeWithContentsOfURL(NSURL::fileURLWithPath(u"/no/such/theme.css"), &error),
              nullptr);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), NSPOSIXErrorDomain);
    const TemporaryFile broken("broken.css", "a { color }");
    EXPECT_EQ(QVTheme::themeWithContentsOfURL(broken.url(), &error), nullptr);
    EXPECT_EQ(error->localizedFailureReason(), u"Missing property separator at line 1, column 11");
}

TEST(QVThemeBuilder, TakesAsManyStylesAndPropertiesAsAllowed) {
    // Each selector counts once for itself and once for each of its properties.
    constexpr std::size_t selectors = limits::themeStylesAndProperties / 4;
    std::u16string text;
    for (std::size_t index = 1; index < selectors; ++index)
        text += u"a,";
    text += u"a { x: 1; y: 2; z: 3; }";
    const auto theme = QVThemeBuilder::init()->parseString(text);
    ASSERT_TRUE(theme);
    EXPECT_EQ(theme->styles()->size(), selectors);

    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVThemeBuilder::init()->parseString(text + u"\nb", &error), nullptr);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), QVThemeParserErrorDomain);
    EXPECT_EQ(error->code(), QVThemeParserParseError);
    EXPECT_EQ(error->localizedFailureReason(), u"Too many styles and properties at line 2, column 1");
}

TEST(QVThemeBuilder, AFileThatIsTooLargeGivesAnError) {
    std::string content(limits::themeBytes, ' ');
    const TemporaryFile largest("largest.css", content);
    EXPECT_TRUE(QVTheme::themeWithContentsOfURL(largest.url()));
    const TemporaryFile larger("larger.css", content + ' ');
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVTheme::themeWithContentsOfURL(larger.url(), &error), nullptr);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), 263);
}
