#include "Quorvane/Styles/QVThemeController.h"

#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Matches/QVScopeMatch.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Styles/QVColor.h"
#include "Tests/Quorvane/Packages/PackageFixture.h"
#include "Tests/Quorvane/Styles/ThemeFixture.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>

using namespace quorvane;
using namespace quorvane::test;

namespace {

QVThemeController &controller() { return *QVThemeController::sharedController(); }

std::shared_ptr<QVStyle> styleOf(const NSString &text) { return themeOf(text)->styles()->front(); }

/// Styles are told apart by their "id".
using Ids = std::vector<std::string>;

Ids idsOf(const QVStyleList &list) {
    Ids ids;
    const auto styles = list.styles();
    for (const auto &style : *styles)
        ids.push_back(style->properties().at(u"id").UTF8String());
    return ids;
}

/// Takes the theme back when the test ends.
struct CurrentTheme {
    explicit CurrentTheme(std::shared_ptr<QVTheme> theme) { controller().setCurrentTheme(std::move(theme)); }
    ~CurrentTheme() { controller().setCurrentTheme(nullptr); }
};

/// A string with an escape in it, whose start has a capture, a keyword, and a collection with a name.
std::string languageElements() {
    return scopesText(element("scope", named("string.quoted"),
                              element("starts-with", "",
                                      expressionText("(r?)\"") + captureText(1, "keyword.prefix")) +
                                  element("ends-with", "", expressionText("\"")) +
                                  subscopesText(matchText("string.escape", R"(\\.)"))) +
                      matchText("keyword", "if|else")) +
           collectionsText(collectionText("names", matchText("name.inner", "[a-z]+")));
}

/// A language that is registered while the test runs.
struct Language {
    explicit Language(std::string_view name)
        : registered(syntaxFromXML(syntaxText(name, languageElements()))) {}
    const std::shared_ptr<QVSyntax> &syntax() const { return registered.syntax(); }
    QVScope &string() const { return *syntax()->grammar()->scopes()[0]; }
    QVCapture &prefix() const { return *string().captures()[0]; }
    QVScope &escape() const { return *string().subscopes()[0]; }
    QVScope &keyword() const { return *syntax()->grammar()->scopes()[1]; }
    QVScope &name() const { return *syntax()->grammar()->collectionWithName(u"names")->scopes()[0]; }

    RegisteredSyntax registered;
};

} // namespace

TEST(QVThemeController, StandsAloneAndStartsWithoutATheme) {
    EXPECT_EQ(QVThemeController::sharedController(), QVThemeController::sharedController());
    EXPECT_EQ(controller().currentTheme(), nullptr);
}

TEST(QVThemeController, StylesReachWhatTheirSelectorsMatch) {
    const Language language("controller-match");
    controller().applyTheme(*themeOf(u"string { id: s; } string.escape { id: e; } keyword { id: k; }"
                                     u"name { id: n; } other { id: o; }"),
                            *language.syntax()->grammar());
    EXPECT_EQ(idsOf(language.string()), Ids{"s"});
    EXPECT_EQ(idsOf(language.escape()), (Ids{"s", "e"}));
    EXPECT_EQ(idsOf(language.prefix()), Ids{"k"});
    EXPECT_EQ(idsOf(language.keyword()), Ids{"k"});
    EXPECT_EQ(idsOf(language.name()), Ids{"n"});
}

TEST(QVThemeController, StylesReachTemplateScopes) {
    QVGrammar grammar;
    const auto scope =
        QVScope::scopeWithType(QVScopeTypeMatch, nullptr, u"string.template", nullptr, nullptr);
    grammar.setTemplateScopes({scope});
    controller().applyTheme(*themeOf(u"string { id: s; }"), grammar);
    EXPECT_EQ(idsOf(*scope), Ids{"s"});
    controller().clearStylesOnGrammar(grammar);
    EXPECT_TRUE(scope->styles()->empty());
}

TEST(QVThemeController, StylesReachAndLeaveAllThatAScopeHolds) {
    const auto scope = [](const char16_t *name) {
        return QVScope::scopeWithType(QVScopeTypeStartEnd, nullptr, name, nullptr, nullptr);
    };
    const auto captureOf = [](const char16_t *name) {
        const auto capture = std::make_shared<QVCapture>();
        capture->setName(name);
        return capture;
    };
    const auto top = scope(u"string.top"), below = scope(u"string.below"), deep = scope(u"string.deep");
    const auto start = captureOf(u"string.start"), end = captureOf(u"string.end");
    deep->setEndCaptures({end});
    deep->setCaptures({start});
    below->setSubscopes({deep});
    top->setSubscopes({below});
    QVGrammar grammar;
    grammar.setScopes({top});
    const std::vector<QVStyleList *> lists{top.get(), below.get(), deep.get(), start.get(), end.get()};
    controller().applyTheme(*themeOf(u"string { id: s; }"), grammar);
    for (const QVStyleList *const list : lists)
        EXPECT_EQ(idsOf(*list), Ids{"s"});
    controller().clearStylesOnGrammar(grammar);
    for (const QVStyleList *const list : lists)
        EXPECT_TRUE(list->styles()->empty());
}

TEST(QVThemeController, StylesAreOrderedByTheirSpecificity) {
    const Language language("controller-order");
    controller().applyTheme(
        *themeOf(u"escape.string { id: 2; } string { id: 1; } escape { id: 1b; } string.escape { id: 2b; }"),
        *language.syntax()->grammar());
    EXPECT_EQ(idsOf(language.escape()), (Ids{"1", "1b", "2", "2b"}));
}

// A look-up by exact selector sees the first declaration; on scopes the later one wins.
TEST(QVThemeController, OfTwoDeclarationsOfASelectorTheLaterWins) {
    const Language language("controller-twice");
    const auto theme = themeOf(u"string { id: 1; color: red; } string { id: 2; color: blue; }");
    controller().applyTheme(*theme, *language.syntax()->grammar());
    EXPECT_EQ(idsOf(language.string()), (Ids{"1", "2"}));
    EXPECT_TRUE(
        language.string().resolvedStyle()->textColor()->isEqual(QVStyle::colorWithCSSValue(u"blue").get()));
    EXPECT_EQ(theme->resolvedStyleForSelectors({QVSimpleSelector::simpleSelectorWithString(u"string")})
                  ->textColor()
                  ->isEqual(QVStyle::colorWithCSSValue(u"red").get()),
              true);
}

TEST(QVThemeController, AStyleIsListedOnce) {
    const Language language("controller-once");
    const auto style = styleOf(u"string { id: s; }");
    controller().applyStyle(style, language.string());
    controller().applyStyle(style, language.string());
    EXPECT_EQ(idsOf(language.string()), Ids{"s"});
    controller().applyStyle(style, language.prefix());
    controller().applyStyle(style, language.prefix());
    EXPECT_EQ(idsOf(language.prefix()), Ids{"s"});
}

TEST(QVThemeController, AStyleGoesBeforeTheFirstThatIsMoreSpecific) {
    const Language language("controller-insert");
    controller().applyStyle(styleOf(u"a.b.c { id: 3; }"), language.string());
    controller().applyStyle(styleOf(u"a { id: 1; }"), language.string());
    controller().applyStyle(styleOf(u"a.b { id: 2; }"), language.string());
    controller().applyStyle(styleOf(u"c { id: 1b; }"), language.string());
    controller().applyStyle(styleOf(u"c.d.e { id: 3b; }"), language.string());
    EXPECT_EQ(idsOf(language.string()), (Ids{"1", "1b", "2", "3", "3b"}));
}

TEST(QVThemeController, EachNodeGetsTheStylesOfAThemeAtOnce) {
    const Language language("controller-at-once");
    const auto &scopes = language.syntax()->grammar()->scopes();
    const auto theme = themeOf(u"string { id: 1; } string.quoted { id: 2; } string { id: 1b; }"
                               u"keyword { id: 1; } prefix.keyword { id: 2; } keyword { id: 1b; }");
    const std::uint64_t before = QVStyleList::generation();
    controller().applyTheme(*theme, scopes);
    // The string, its escape, its prefix, and the keyword.
    EXPECT_EQ(QVStyleList::generation(), before + 4);
    EXPECT_EQ(idsOf(language.string()), (Ids{"1", "1b", "2"}));
    EXPECT_EQ(idsOf(language.escape()), (Ids{"1", "1b"}));
    EXPECT_EQ(idsOf(language.prefix()), (Ids{"1", "1b", "2"}));
    EXPECT_EQ(idsOf(language.keyword()), (Ids{"1", "1b"}));
    // Once more there is nothing to do.
    controller().applyTheme(*theme, scopes);
    EXPECT_EQ(QVStyleList::generation(), before + 4);
}

TEST(QVThemeController, StylesOfAThemeComeAmongThoseThatAreThere) {
    const Language language("controller-among");
    const auto &scopes = language.syntax()->grammar()->scopes();
    const auto theme = themeOf(u"string.quoted { id: t2; } string { id: t1; }");
    controller().applyStyle(styleOf(u"string.quoted { id: 2; }"), language.string());
    controller().applyStyle(styleOf(u"string { id: 1; }"), language.string());
    controller().applyStyle(theme->styles()->back(), language.string());
    controller().applyStyle(styleOf(u"quoted { id: 1b; }"), language.string());
    controller().applyTheme(*theme, scopes);
    EXPECT_EQ(idsOf(language.string()), (Ids{"1", "t1", "1b", "2", "t2"}));
}

TEST(QVThemeController, AListThatAHostPutTogetherIsReadFromItsStart) {
    const Language language("controller-host");
    language.string().setStyles({styleOf(u"string { id: 1; }"), styleOf(u"string.quoted { id: 2; }"),
                                 styleOf(u"quoted { id: 1b; }")});
    controller().applyTheme(*themeOf(u"string { id: t1; } string.quoted { id: t2; }"),
                            language.syntax()->grammar()->scopes());
    EXPECT_EQ(idsOf(language.string()), (Ids{"1", "t1", "2", "1b", "t2"}));
}

// Each rule had been merged with all before it, half a minute for two scopes.
TEST(QVThemeController, AThemeOfAsManyRulesForOneScopeAsAllowedIsApplied) {
    const Language language("controller-many");
    std::u16string text;
    const std::size_t count = limits::themeStylesAndProperties / 2;
    for (std::size_t index = 0; index < count; ++index)
        text += u"string{id:x;}";
    controller().applyTheme(*themeOf(NSString(std::move(text))), language.syntax()->grammar()->scopes());
    EXPECT_EQ(language.string().styles()->size(), count);
}

TEST(QVThemeController, StylesWithoutASelectorAreNotApplied) {
    const Language language("controller-none");
    controller().applyStyle(std::make_shared<QVStyle>(), language.syntax()->grammar()->scopes());
    controller().applyStyle(nullptr, language.syntax()->grammar()->scopes());
    EXPECT_TRUE(language.string().styles()->empty());
}

TEST(QVThemeController, SettingAThemeStylesTheGrammarsInUse) {
    const Language language("controller-set");
    ASSERT_TRUE(language.syntax()->grammar());
    const auto theme = themeOf(u"string { id: s; } keyword { id: k; } name { id: n; }");
    const CurrentTheme current(theme);
    EXPECT_EQ(controller().currentTheme(), theme);
    EXPECT_EQ(idsOf(language.string()), Ids{"s"});
    EXPECT_EQ(idsOf(language.prefix()), Ids{"k"});
    EXPECT_EQ(idsOf(language.name()), Ids{"n"});
}

TEST(QVThemeController, AnotherThemeTakesTheOnesPlace) {
    const Language language("controller-replace");
    ASSERT_TRUE(language.syntax()->grammar());
    const CurrentTheme first(themeOf(u"string { id: 1; } escape { id: 1; } keyword { id: 1; }"));
    const CurrentTheme second(themeOf(u"string { id: 2; }"));
    EXPECT_EQ(idsOf(language.string()), Ids{"2"});
    EXPECT_EQ(idsOf(language.escape()), Ids{"2"});
    EXPECT_TRUE(language.keyword().styles()->empty());
    EXPECT_TRUE(language.prefix().styles()->empty());
}

TEST(QVThemeController, WithoutAThemeNoStylesAreLeft) {
    const Language language("controller-null");
    ASSERT_TRUE(language.syntax()->grammar());
    controller().setCurrentTheme(themeOf(u"string, keyword, name { id: 1; }"));
    EXPECT_EQ(idsOf(language.prefix()), Ids{"1"});
    controller().setCurrentTheme(nullptr);
    for (const QVStyleList *list :
         {static_cast<QVStyleList *>(&language.string()), static_cast<QVStyleList *>(&language.escape()),
          static_cast<QVStyleList *>(&language.prefix()), static_cast<QVStyleList *>(&language.keyword()),
          static_cast<QVStyleList *>(&language.name())})
        EXPECT_TRUE(list->styles()->empty());
    EXPECT_EQ(controller().currentTheme(), nullptr);
}

TEST(QVThemeController, AGrammarIsStyledWhenItIsConnected) {
    const CurrentTheme current(themeOf(u"string { id: s; } keyword { id: k; } name { id: n; }"));
    const Language language("controller-resolve");
    EXPECT_EQ(language.syntax()->grammarResolvingIfNecessary(false), nullptr);
    EXPECT_EQ(idsOf(language.string()), Ids{"s"});
    EXPECT_EQ(idsOf(language.prefix()), Ids{"k"});
    EXPECT_EQ(idsOf(language.name()), Ids{"n"});
}

TEST(QVThemeController, SettingAThemeLeavesUnusedGrammarsAlone) {
    const Language language("controller-unused");
    const CurrentTheme current(themeOf(u"string { id: s; }"));
    EXPECT_EQ(language.syntax()->grammarResolvingIfNecessary(false), nullptr);
}

TEST(QVThemeController, WithoutAThemeAConnectedGrammarHasNoStyles) {
    const auto package = packageNamed(u"styling");
    package->ownStyles = {styleOf(u"string { id: p; }")};
    const LoadedPackages loaded({package});
    const Language language("controller-themeless");
    EXPECT_TRUE(language.string().styles()->empty());
}

TEST(QVThemeController, StylesOfPackagesStandBeforeEquallySpecificOnesOfTheTheme) {
    const auto package = packageNamed(u"styling");
    package->ownStyles = {styleOf(u"string { id: p1; }"), styleOf(u"string.escape { id: p2; }")};
    const LoadedPackages loaded({package});
    const Language language("controller-packages");
    const CurrentTheme current(themeOf(u"string { id: t1; } string.escape { id: t2; }"));
    EXPECT_EQ(idsOf(language.string()), (Ids{"p1", "t1"}));
    EXPECT_EQ(idsOf(language.escape()), (Ids{"p1", "t1", "p2", "t2"}));
}

TEST(QVThemeController, SettingAThemeIsTold) {
    std::vector<NSString> names;
    bool wasStyled = false;
    const Language language("controller-told");
    ASSERT_TRUE(language.syntax()->grammar());
    const auto token = NSNotificationCenter::defaultCenter().addObserver(
        nullptr, QVThemeController::sharedController().get(), [&](const NSNotification &notification) {
            names.push_back(notification.name);
            wasStyled = !language.string().styles()->empty();
            // Others may take the package lock by now.
            EXPECT_TRUE(std::async(std::launch::async, [] {
                            QVLoadable::performBlockWithPackageLock([] {});
                            return true;
                        }).get());
        });
    controller().setCurrentTheme(themeOf(u"string { id: s; }"));
    EXPECT_EQ(names, std::vector<NSString>{u"QVStyleResolvedStylesDidChangeNotification"});
    EXPECT_TRUE(wasStyled);
    controller().setCurrentTheme(nullptr);
    EXPECT_EQ(names.size(), 2u);
    EXPECT_FALSE(wasStyled);
}

TEST(QVThemeController, AThemeOfAPackageIsFoundWhileItIsLoaded) {
    const auto package = packageNamed(u"themes");
    const auto theme = themeOf(u"a {}");
    theme->setName(u"theme-of-a-package");
    package->ownThemes = {theme};
    {
        const LoadedPackages loaded({package});
        EXPECT_EQ(QVTheme::themeWithName(u"theme-of-a-package"), theme);
        EXPECT_EQ(theme->package(), package);
    }
    EXPECT_EQ(QVTheme::themeWithName(u"theme-of-a-package"), nullptr);
}

TEST(QVThemeControllerConcurrency, ThemesChangeWhileParsesReadStyles) {
    const Language language("controller-parse");
    const auto red = themeOf(u"string { id: r; color: red; font-weight: 100; } keyword { id: r; }");
    const auto blue = themeOf(u"string { id: b; color: blue; font-weight: 200; } keyword { id: b; }");
    const CurrentTheme current(red);
    std::atomic<bool> done = false;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 2; ++reader)
        readers.emplace_back([&] {
            while (!done) {
                const auto parse = parseOfText(language.syntax(), u"if \"a\\n\" else");
                wrong += parse == nullptr;
                const auto style = language.string().resolvedStyle();
                // In between a scope may have no styles.
                if (style && style->textColor())
                    wrong += style->textColor()->isEqual(QVStyle::colorWithCSSValue(u"red").get()) !=
                             (style->fontWeight() == 100);
                const auto styles = language.escape().styles();
                for (const auto &each : *styles)
                    wrong += each->properties().at(u"id").length() != 1;
            }
        });
    for (int round = 0; round < 100; ++round)
        controller().setCurrentTheme(round % 2 ? red : blue);
    done = true;
    for (std::thread &reader : readers)
        reader.join();
    EXPECT_EQ(wrong, 0);
}

// Two threads that change styles at once must not lose each other's: a grammar that is connected while the
// theme changes ends up with one theme whole, the one that was set last.
TEST(QVThemeControllerConcurrency, AGrammarThatIsConnectedMeanwhileGetsTheLastTheme) {
    const auto first = themeOf(u"string { id: 1; } string.quoted { id: 1; } escape { id: 1; }");
    const auto last = themeOf(u"string { id: 2; } string.quoted { id: 2; } escape { id: 2; }");
    for (int round = 0; round < 50; ++round) {
        const CurrentTheme current(first);
        const Language language("controller-meanwhile");
        std::thread connecting([&] { EXPECT_TRUE(language.syntax()->grammar()); });
        controller().setCurrentTheme(last);
        connecting.join();
        EXPECT_EQ(idsOf(language.string()), (Ids{"2", "2"}));
        EXPECT_EQ(idsOf(language.escape()), (Ids{"2", "2"}));
    }
}
