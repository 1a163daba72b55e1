#include "Quorvane/Completions/QVCompletionSet.h"
#include "Quorvane/Packages/QVPackageLock.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Styles/QVTheme.h"
#include "Quorvane/Styles/QVThemeController.h"
#include "Tests/Quorvane/Packages/PackageFixture.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>

#include <future>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

namespace {

using Packages = QVLoadable::Packages;

std::shared_ptr<QVStyle> styleOf(const std::shared_ptr<QVPackage> &package) {
    auto style = std::make_shared<QVStyle>();
    style->setPackage(package);
    return style;
}

/// A grammar with something to style in each place where styles can stand.
struct StyledGrammar {
    std::shared_ptr<QVGrammar> grammar = std::make_shared<QVGrammar>();
    std::shared_ptr<QVCollection> collection = std::make_shared<QVCollection>();
    std::shared_ptr<QVScope> top = scope(u"top");
    std::shared_ptr<QVScope> below = scope(u"below");
    std::shared_ptr<QVScope> inTemplate = scope(u"in-template");
    std::shared_ptr<QVScope> inCollection = scope(u"in-collection");
    std::shared_ptr<QVCapture> capture = std::make_shared<QVCapture>();
    std::shared_ptr<QVCapture> endCapture = std::make_shared<QVCapture>();
    std::shared_ptr<QVCapture> captureBelow = std::make_shared<QVCapture>();

    StyledGrammar() {
        below->setCaptures({captureBelow});
        top->setSubscopes({below});
        top->setCaptures({capture});
        top->setEndCaptures({endCapture});
        grammar->setScopes({top});
        grammar->setTemplateScopes({inTemplate});
        collection->setScopes({inCollection});
        grammar->setCollections({{u"collection", collection}});
    }

    static std::shared_ptr<QVScope> scope(const char16_t *name) {
        return QVScope::scopeWithType(QVScopeTypeStartEnd, nullptr, name, nullptr, nullptr);
    }
    std::vector<QVStyleList *> lists() const {
        return {top.get(),     below.get(),      inTemplate.get(),  inCollection.get(),
                capture.get(), endCapture.get(), captureBelow.get()};
    }
    void setStyles(const QVStyleList::Styles &styles) const {
        for (QVStyleList *const list : lists())
            list->setStyles(styles);
    }
};

} // namespace

TEST(QVLoadableUnloading, WhatGoesIsToldFirstWhileAllIsStillThere) {
    const auto package = packageNamed(u"one");
    const auto stranger = packageNamed(u"never loaded");
    const auto syntax = package->addSyntax("one-language");
    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    std::shared_ptr<QVSyntax> registeredThen;
    std::size_t loadedThen = 0;
    const NSNotificationToken token = NSNotificationCenter::defaultCenter().addObserver(
        QVLoadableWillUnloadPackagesNotification, nullptr, [&](const NSNotification &) {
            registeredThen = QVSyntax::syntaxForName(u"one-language");
            // Would never come back if the lock were held.
            loadedThen = QVLoadable::loadedPackages().size();
        });
    const PackageNotificationRecorder recorder;
    QVLoadable::unloadPackagesFromSyntaxEngine({stranger, package});
    EXPECT_EQ(registeredThen, syntax);
    EXPECT_EQ(loadedThen, 1u);
    // And nothing is told behind it.
    ASSERT_THAT(recorder.names(), ElementsAre(QVLoadableWillUnloadPackagesNotification));
    const auto &userInfo = recorder.notifications[0].userInfo;
    ASSERT_THAT(userInfo, SizeIs(1));
    EXPECT_EQ(std::any_cast<Packages>(userInfo.at(QVLoadablePackagesUserInfoKey)),
              Packages({stranger, package}));
}

TEST(QVLoadableUnloading, PackagesThatAreNotLoadedAndEmptyPlacesDoNothing) {
    const LoadedPackages loaded({packageNamed(u"one")});
    QVLoadable::unloadPackagesFromSyntaxEngine({nullptr, packageNamed(u"other")});
    QVLoadable::unloadPackagesFromSyntaxEngine({});
    EXPECT_THAT(QVLoadable::loadedPackages(), SizeIs(1));
}

TEST(QVLoadableUnloading, ARefusedPackageDoesNotTakeOutItsNamesake) {
    const auto accepted = packageNamed(u"twin");
    const auto refused = packageNamed(u"twin");
    const LoadedPackages loaded({accepted});
    const LogRecorder log;
    QVLoadable::loadPackagesIntoSyntaxEngine({refused});
    QVLoadable::unloadPackagesFromSyntaxEngine({refused});
    EXPECT_THAT(QVLoadable::loadedPackages(), ElementsAre(Pair(NSString(u"twin"), accepted)));
}

TEST(QVLoadableUnloading, SyntaxesLeaveTheRegistryUnderTheNameTheyHaveThere) {
    const auto package = packageNamed(u"one");
    const auto syntax = syntaxFromXML(syntaxText("inner-name", ""));
    package->ownSyntaxes[u"outer-name"] = syntax;
    const RegisteredSyntax bystander(syntaxFromXML(syntaxText("inner-name", "")));
    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    QVLoadable::unloadPackagesFromSyntaxEngine({package});
    EXPECT_EQ(QVSyntax::syntaxForName(u"outer-name"), nullptr);
    EXPECT_EQ(QVSyntax::syntaxForName(u"inner-name"), bystander.syntax());
}

TEST(QVLoadableUnloading, AHeldSyntaxOfAGonePackageConnectsItsGrammarAgain) {
    const auto package = packageNamed(u"one");
    const auto syntax = package->addSyntax("one-language", scopesText(matchText("word", "a")));
    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    const auto grammar = syntax->grammar();
    QVLoadable::unloadPackagesFromSyntaxEngine({package});
    EXPECT_FALSE(syntax->grammarResolved());
    EXPECT_EQ(syntax->grammarResolvingIfNecessary(false), nullptr);
    EXPECT_EQ(syntax->grammar(), grammar);
    EXPECT_TRUE(syntax->grammarResolved());
    EXPECT_EQ(grammar->scopes()[0]->parentSyntax(), syntax);
}

TEST(QVLoadableUnloading, AnUnresolvedGrammarIsNeitherResolvedNorTouched) {
    const auto package = packageNamed(u"one");
    const auto syntax = package->addSyntax("one-language");
    const StyledGrammar styled;
    styled.setStyles({styleOf(package)});
    styled.grammar->setPackage(package);
    syntax->setGrammar(styled.grammar);
    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    QVLoadable::unloadPackagesFromSyntaxEngine({package});
    EXPECT_FALSE(syntax->grammarResolved());
    EXPECT_THAT(*styled.top->styles(), SizeIs(1));
}

TEST(QVLoadableUnloading, AGoingGrammarLosesAllStyles) {
    const auto package = packageNamed(u"one");
    const auto other = packageNamed(u"other");
    const auto syntax = package->addSyntax("one-language");
    const StyledGrammar styled;
    syntax->setGrammar(styled.grammar);
    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    syntax->grammar();
    styled.setStyles({styleOf(package), styleOf(other), styleOf(nullptr)});
    QVLoadable::unloadPackagesFromSyntaxEngine({package});
    for (const QVStyleList *const list : styled.lists()) {
        EXPECT_THAT(*list->styles(), IsEmpty());
        EXPECT_EQ(list->resolvedStyle(), nullptr);
    }
}

TEST(QVLoadableUnloading, AGoingGrammarsCollectionsAreToldBehindTheirScopes) {
    class Noting : public QVCollection {
    public:
        void didUnloadFromPackage() override {
            ++count;
            stylesThen = scopes()[0]->styles()->size();
        }
        std::size_t count = 0;
        std::size_t stylesThen = 99;
    };
    const auto package = packageNamed(u"one");
    const auto syntax = package->addSyntax("one-language");
    const auto grammar = std::make_shared<QVGrammar>();
    const auto collection = std::make_shared<Noting>();
    collection->setScopes({StyledGrammar::scope(u"styled")});
    grammar->setCollections({{u"noting", collection}});
    syntax->setGrammar(grammar);
    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    syntax->grammar();
    collection->scopes()[0]->addStyle(styleOf(nullptr));
    QVLoadable::unloadPackagesFromSyntaxEngine({package});
    EXPECT_EQ(collection->count, 1u);
    EXPECT_EQ(collection->stylesThen, 0u);
}

TEST(QVLoadableUnloading, AStayingGrammarLosesTheGoingPackagesStylesAlone) {
    const auto staying = packageNamed(u"staying");
    const auto going = packageNamed(u"going");
    const auto syntax = staying->addSyntax("language");
    const StyledGrammar styled;
    syntax->setGrammar(styled.grammar);
    const LoadedPackages loaded({staying});
    QVLoadable::loadPackagesIntoSyntaxEngine({going});
    syntax->grammar();
    const auto own = styleOf(staying), ownerless = styleOf(nullptr);
    styled.setStyles({styleOf(going), own, styleOf(going), ownerless, styleOf(going)});
    QVLoadable::unloadPackagesFromSyntaxEngine({going});
    for (const QVStyleList *const list : styled.lists())
        EXPECT_THAT(*list->styles(), ElementsAre(own, ownerless));
    EXPECT_TRUE(syntax->grammarResolved());
    EXPECT_EQ(QVSyntax::syntaxForName(u"language"), syntax);
}

TEST(QVLoadableUnloading, AGrammarThatNoPackageOwnsStays) {
    const RegisteredSyntax registered(syntaxFromXML(syntaxText("language", "")));
    const StyledGrammar styled;
    registered.syntax()->setGrammar(styled.grammar);
    registered.syntax()->grammar();
    const auto going = packageNamed(u"going");
    QVLoadable::loadPackagesIntoSyntaxEngine({going});
    const auto ownerless = styleOf(nullptr);
    styled.setStyles({ownerless, styleOf(going)});
    // The empty place must not stand for "no package".
    QVLoadable::unloadPackagesFromSyntaxEngine({nullptr, going});
    EXPECT_TRUE(registered.syntax()->grammarResolved());
    EXPECT_THAT(*styled.top->styles(), ElementsAre(ownerless));
}

TEST(QVLoadableUnloading, GoingProvidersLeaveTheSyntaxesTheyWereAddedTo) {
    const auto staying = packageNamed(u"staying");
    const auto syntax =
        staying->addSyntax("language", element("completions", "", "<provider name=\"own\"/>"));
    const auto stayingProvider = staying->addProvider({u"language"});
    const auto going = packageNamed(u"going");
    const auto goingProvider = going->addProvider({u"language"});
    const LoadedPackages loaded({staying});
    QVLoadable::loadPackagesIntoSyntaxEngine({going});
    ASSERT_EQ(syntax->completionProviders().size(), 3u);
    const auto own = syntax->completionProviders()[0];
    EXPECT_EQ(own->name(), u"own");
    QVLoadable::unloadPackagesFromSyntaxEngine({going});
    EXPECT_THAT(syntax->completionProviders(), ElementsAre(own, stayingProvider));
}

TEST(QVLoadableUnloading, RunsUnderThePackageLock) {
    class Asking : public QVCollection {
    public:
        void didUnloadFromPackage() override {
            mayRead = std::async(std::launch::async, [] {
                          const ReadGuard guard(QVPackageLock(), std::try_to_lock);
                          return guard.owns_lock();
                      }).get();
        }
        bool mayRead = true;
    };
    const auto package = packageNamed(u"one");
    const auto syntax = package->addSyntax("one-language");
    const auto grammar = std::make_shared<QVGrammar>();
    const auto collection = std::make_shared<Asking>();
    grammar->setCollections({{u"asking", collection}});
    syntax->setGrammar(grammar);
    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    syntax->grammar();
    QVLoadable::unloadPackagesFromSyntaxEngine({package});
    EXPECT_FALSE(collection->mayRead);
    // And lets it go.
    EXPECT_THAT(QVLoadable::loadedPackages(), IsEmpty());
}

TEST(QVLoadableUnloading, AGoingSyntaxKeepsTheProvidersOfStayingPackages) {
    const auto staying = packageNamed(u"staying");
    const auto provider = staying->addProvider({u"language"});
    const auto going = packageNamed(u"going");
    const auto syntax = going->addSyntax("language");
    const auto ownProvider = going->addProvider({u"language"});
    const LoadedPackages loaded({staying, going});
    ASSERT_THAT(syntax->completionProviders(), ElementsAre(provider, ownProvider));
    QVLoadable::unloadPackagesFromSyntaxEngine({going});
    EXPECT_THAT(syntax->completionProviders(), ElementsAre(provider));
}

TEST(QVLoadableUnloading, CompletionSetsLeaveTheRegistry) {
    const auto going = packageNamed(u"going");
    going->ownSets[u"of-the-going"] = std::make_shared<QVCompletionSet>();
    const auto staying = packageNamed(u"staying");
    staying->ownSets[u"of-the-staying"] = std::make_shared<QVCompletionSet>();
    const auto ownerless = std::make_shared<QVCompletionSet>();
    QVCompletionSet::setCompletionSet(ownerless, u"of-nobody");
    const LoadedPackages loaded({staying});
    QVLoadable::loadPackagesIntoSyntaxEngine({going});
    QVLoadable::unloadPackagesFromSyntaxEngine({nullptr, going});
    EXPECT_EQ(QVCompletionSet::completionSetForName(u"of-the-going"), nullptr);
    EXPECT_EQ(QVCompletionSet::completionSetForName(u"of-the-staying"), staying->ownSets[u"of-the-staying"]);
    EXPECT_EQ(QVCompletionSet::completionSetForName(u"of-nobody"), ownerless);
    QVCompletionSet::setCompletionSet(nullptr, u"of-nobody");
}

TEST(QVLoadableUnloading, ThemesOfStayingPackagesStay) {
    const auto going = packageNamed(u"going");
    going->ownThemes = {std::make_shared<QVTheme>()};
    const auto staying = packageNamed(u"staying");
    staying->ownThemes = {std::make_shared<QVTheme>()};
    const LoadedPackages loaded({staying});
    QVLoadable::loadPackagesIntoSyntaxEngine({going});
    QVLoadable::unloadPackagesFromSyntaxEngine({going});
    EXPECT_THAT(QVTheme::allThemes(), ElementsAre(staying->ownThemes[0]));
}

TEST(QVLoadableUnloading, AGrammarLosesTheStylesOfAThemeWhosePackageGoes) {
    const auto staying = packageNamed(u"staying");
    const auto syntax = staying->addSyntax("language", scopesText(matchText("keyword", "a")));
    const auto going = packageNamed(u"going");
    const auto style = std::make_shared<QVStyle>();
    style->setSelector(QVSimpleSelector::simpleSelectorWithString(u"keyword"));
    const auto theme = std::make_shared<QVTheme>();
    theme->setStyles(QVTheme::Styles{style});
    going->ownThemes = {theme};
    const LoadedPackages loaded({staying});
    QVLoadable::loadPackagesIntoSyntaxEngine({going});
    const auto &controller = QVThemeController::sharedController();
    controller->setCurrentTheme(theme);
    const auto scope = syntax->grammar()->scopes()[0];
    EXPECT_THAT(*scope->styles(), ElementsAre(style));
    QVLoadable::unloadPackagesFromSyntaxEngine({going});
    EXPECT_THAT(*scope->styles(), IsEmpty());
    EXPECT_EQ(treeOfText(syntax, u"a"), "Match keyword [0,1]\n");
    controller->setCurrentTheme(nullptr);
}

TEST(QVLoadableUnloading, WhatNobodyHoldsIsFreed) {
    std::weak_ptr<QVSyntax> syntax;
    std::weak_ptr<QVGrammar> grammar;
    {
        const auto package = packageNamed(u"one");
        syntax = package->addSyntax("one-language");
        QVLoadable::loadPackagesIntoSyntaxEngine({package});
        grammar = syntax.lock()->grammar();
        QVLoadable::unloadPackagesFromSyntaxEngine({package});
    }
    EXPECT_TRUE(syntax.expired());
    EXPECT_TRUE(grammar.expired());
}

TEST(QVLoadableUnloading, APackageCanComeBack) {
    const auto package = packageNamed(u"one");
    const auto syntax = package->addSyntax("one-language", scopesText(matchText("word", "a")));
    const LogRecorder log;
    for (int round = 0; round < 3; ++round) {
        const LoadedPackages loaded({package});
        EXPECT_EQ(QVSyntax::syntaxForName(u"one-language"), syntax);
        EXPECT_NE(syntax->grammar(), nullptr);
        EXPECT_EQ(syntax->grammar()->package(), package);
    }
    EXPECT_THAT(log.messages(), IsEmpty());
}
