// The reference of the theme file: its examples are read, and say what it tells of them.
#include "Platform/Foundation/NSError.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Styles/QVColor.h"
#include "Quorvane/Styles/QVGradient.h"
#include "Quorvane/Styles/QVTheme.h"
#include "Quorvane/Styles/QVThemeBuilder.h"
#include "Quorvane/Styles/QVThemeController.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Tests/Support/Examples.h"
#include "Tests/Support/ParseFixture.h"
#include "Tests/Support/Printing.h"

#include <algorithm>

using namespace quorvane;
using namespace quorvane::test;

namespace {

constexpr const char *page = "ThemeFile.md";

std::shared_ptr<QVTheme> themeOf(const std::string &text) {
    std::shared_ptr<NSError> error;
    auto theme = QVThemeBuilder::init()->parseString(NSString::stringWithUTF8String(text), &error);
    EXPECT_TRUE(theme) << text << (error ? error->localizedFailureReason().UTF8String() : "");
    return theme;
}

/// The examples' rules.
std::vector<std::shared_ptr<QVTheme>> themes() {
    std::vector<std::shared_ptr<QVTheme>> themes;
    for (const PageExample &example : examplesOfPage(page))
        if (example.kind == "css")
            themes.push_back(themeOf(example.text));
    return themes;
}

/// The first rule of this selector.
std::shared_ptr<QVStyle> ruleOf(const QVTheme &theme, const char16_t *selector) {
    for (const auto &style : *theme.styles())
        if (style->selector()->string() == selector)
            return style;
    ADD_FAILURE() << "no such rule";
    return std::make_shared<QVStyle>();
}

/// A table's rows, their cells trimmed; the table whose head begins so.
std::vector<std::vector<std::string>> tableWithHead(const std::string &head) {
    std::vector<std::vector<std::string>> rows;
    const std::string text = textOfPage(page);
    std::size_t at = text.find("\n| " + head);
    at = text.find('\n', text.find('\n', at + 1) + 1) + 1;
    for (; text[at] == '|'; at = text.find('\n', at) + 1) {
        rows.emplace_back();
        const std::string line = text.substr(at, text.find('\n', at) - at);
        for (std::size_t start = 1; start < line.size();) {
            const std::size_t end = line.find('|', start);
            const std::string cell = line.substr(start, end - start);
            const std::size_t first = cell.find_first_not_of(' ');
            rows.back().push_back(
                first == cell.npos ? "" : cell.substr(first, cell.find_last_not_of(' ') + 1 - first));
            start = end + 1;
        }
    }
    return rows;
}

/// The words between back-ticks.
std::vector<std::string> quotedIn(const std::string &text) {
    std::vector<std::string> words;
    for (std::size_t at = text.find('`'); at != std::string::npos; at = text.find('`', at)) {
        const std::size_t end = text.find('`', at + 1);
        words.push_back(text.substr(at + 1, end - at - 1));
        at = end + 1;
    }
    return words;
}

std::shared_ptr<const QVSimpleSelector> selector(const std::string &text) {
    return QVSimpleSelector::simpleSelectorWithString(NSString::stringWithUTF8String(text));
}

} // namespace

TEST(ThemeFileReference, EachExampleIsReadAndEachPropertyOfItSaysSomething) {
    EXPECT_EQ(themes().size(), 7u);
    for (const auto &theme : themes())
        for (const auto &style : *theme->styles())
            for (const auto &[property, value] : style->properties()) {
                if (property.hasPrefix(u"-theme-"))
                    continue;
                const auto alone = QVStyle::styleWithSelector(style->selector(), {{property, value}});
                EXPECT_FALSE(alone->attributes().empty())
                    << property.UTF8String() << ": " << value.UTF8String();
            }
}

TEST(ThemeFileReference, EachPropertyStandsInAnExample) {
    std::set<std::string> written;
    for (const auto &theme : themes())
        for (const auto &style : *theme->styles())
            for (const auto &[property, value] : style->properties())
                written.insert(property.UTF8String());
    for (const char *const head : {"property | values", "property | what it says"})
        for (const auto &row : tableWithHead(head))
            EXPECT_TRUE(written.contains(quotedIn(row[0]).at(0))) << row[0];
    for (const char *const property : {"border-color", "border", "box-shadow"})
        EXPECT_TRUE(written.contains(property)) << property;
}

TEST(ThemeFileReference, TheTableOfSelectorsIsRight) {
    const auto rows = tableWithHead("selector | selects");
    ASSERT_EQ(rows.size(), 4u);
    const std::vector<std::string> scopes = {"string.escape", "string.quoted.double", "keyword"};
    for (const auto &row : rows)
        for (std::size_t index = 0; index < scopes.size(); ++index)
            EXPECT_EQ(selector(quotedIn(row[0]).at(0))->matchesSelector(selector(scopes[index]).get()),
                      row[index + 1] == "yes")
                << row[0] << " on " << scopes[index];
}

TEST(ThemeFileReference, TheExampleOfWinningRulesComesToWhatItSays) {
    const auto syntax = syntaxWithElements(R"(<scopes>
        <scope name="string.escape"><expression>e</expression></scope>
        <scope name="string.raw"><expression>r</expression></scope></scopes>)");
    QVThemeController::sharedController()->applyTheme(*themes().at(1), *syntax->grammar());
    const auto escape = syntax->grammar()->scopes().at(0)->resolvedStyle();
    const auto raw = syntax->grammar()->scopes().at(1)->resolvedStyle();
    ASSERT_TRUE(escape && raw);
    EXPECT_TRUE(escape->textColor()->isEqual(QVStyle::colorWithCSSValue(u"#8a5a00").get()));
    EXPECT_EQ(escape->fontWeight(), 700);
    EXPECT_TRUE(raw->isNullForAttribute(QVStyleAttributeFontWeight));
    EXPECT_TRUE(raw->textColor()->isEqual(QVStyle::colorWithCSSValue(u"#22662b").get()));
}

TEST(ThemeFileReference, TheExamplesOfPropertiesSayAllOfIt) {
    const auto text = themes().at(2);
    const auto invalid = ruleOf(*text, u"invalid");
    EXPECT_EQ(invalid->fontWeight(), 700);
    EXPECT_EQ(invalid->fontStyle(), QVStyleFontStyleItalic);
    EXPECT_EQ(invalid->textDecoration(), 5);
    EXPECT_EQ(invalid->textDecorationStyle(), 257);
    EXPECT_TRUE(invalid->textDecorationColor());
    EXPECT_TRUE(invalid->textShadow());
    const auto link = ruleOf(*text, u"name.link");
    EXPECT_TRUE(link->isNullForAttribute(QVStyleAttributeBackgroundColor));
    EXPECT_EQ(link->textDecoration(), 1);
    EXPECT_EQ(link->textDecorationStyle(), 513);
    EXPECT_TRUE(link->textDecorationColor());
    const auto around = themes().at(3);
    EXPECT_TRUE(ruleOf(*around, u"meta.button")->boxShadow());
    EXPECT_TRUE(ruleOf(*around, u"meta.button.highlighted")->insetShadow());
    EXPECT_TRUE(ruleOf(*around, u"meta.button.highlighted")->borderGradient());
    EXPECT_TRUE(ruleOf(*around, u"meta.window")->backgroundGradient());
    EXPECT_TRUE(ruleOf(*around, u"meta.window")->backgroundColor());
}

TEST(ThemeFileReference, EachFormOfAColourIsOneAndTheSameOnesAreTheSame) {
    std::size_t forms = 0;
    for (const auto &row : tableWithHead("form |"))
        for (const std::string &form : quotedIn(row[0])) {
            EXPECT_TRUE(QVStyle::colorWithCSSValue(NSString::stringWithUTF8String(form))) << form;
            ++forms;
        }
    EXPECT_EQ(forms, 11u);
    const auto colors = themes().at(4);
    ASSERT_EQ(colors->styles()->size(), 6u);
    const auto components = [](const QVStyle &style) {
        const auto values = CGColorGetComponents(style.textColor()->CGColor());
        return std::vector<int>{int(std::lround(values[0] * 255)), int(std::lround(values[1] * 255)),
                                int(std::lround(values[2] * 255)), int(std::lround(values[3] * 255))};
    };
    for (const auto &style : *colors->styles())
        EXPECT_EQ(components(*style), (std::vector<int>{255, 170, 0, 255}));
}

TEST(ThemeFileReference, TheExampleOfMetaSaysAllOfIt) {
    const auto theme = themes().at(5);
    EXPECT_EQ(theme->displayName(), u"Deep Night");
    EXPECT_EQ(theme->interfaceStyle(), QVThemeInterfaceStyleDark);
    EXPECT_TRUE(theme->allowsVibrancy());
    EXPECT_TRUE(theme->usesSystemAccentColor());
    EXPECT_EQ(themes().at(0)->interfaceStyle(), QVThemeInterfaceStyleLight);
}

TEST(ThemeFileReference, EachSelectorOfTheSurroundingsIsOneThatHostsAskFor) {
    std::set<NSString> known;
    for (const QVThemeStyleName *const name : {&QVThemeStyleWindow,
                                               &QVThemeStyleWindowTitlebar,
                                               &QVThemeStyleWindowTitlebarInactive,
                                               &QVThemeStyleWindowButton,
                                               &QVThemeStyleWindowTextField,
                                               &QVThemeStyleWindowAccent,
                                               &QVThemeStyleDocument,
                                               &QVThemeStyleDocumentButton,
                                               &QVThemeStyleDocumentTextField,
                                               &QVThemeStyleDocumentText,
                                               &QVThemeStyleDocumentTextSelected,
                                               &QVThemeStyleDocumentTextInvisible,
                                               &QVThemeStyleDocumentTextLink,
                                               &QVThemeStyleDocumentTextLookup,
                                               &QVThemeStyleDocumentInsertionPoint,
                                               &QVThemeStyleDocumentIndentationGuide,
                                               &QVThemeStyleDocumentGutter,
                                               &QVThemeStyleDocumentGutterSelected,
                                               &QVThemeStyleTerminalANSIRed,
                                               &QVThemeStyleTerminalANSIBrightRed})
        known.insert(name->selector()->string());
    std::set<NSString> told;
    for (const auto &row : tableWithHead("selector | what it is"))
        for (const std::string &word : quotedIn(row[0]))
            told.insert(NSString::stringWithUTF8String(word));
    EXPECT_EQ(told, known);
    const auto theme = themes().at(6);
    EXPECT_TRUE(theme->ANSIRedColor());
    EXPECT_TRUE(theme->gutterStyle());
    EXPECT_TRUE(theme->insertionPointStyle());
}

TEST(ThemeFileReference, TheMessageOfAMistakeReadsAsItIsShown) {
    std::shared_ptr<NSError> error;
    EXPECT_FALSE(QVThemeBuilder::init()->parseString(u"\n\nstring {  x }\n", &error));
    ASSERT_TRUE(error);
    EXPECT_TRUE(error->localizedFailureReason().hasPrefix(u"Missing property separator at line 3, column "));
}
