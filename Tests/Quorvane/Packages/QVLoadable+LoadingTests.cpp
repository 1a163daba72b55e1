#include "Quorvane/Completions/QVCompletionSet.h"
#include "Quorvane/Packages/QVPackageLock.h"
#include "Quorvane/Styles/QVTheme.h"
#include "Tests/Quorvane/Packages/PackageFixture.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>

#include <future>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

using Packages = QVLoadable::Packages;
using PackageSet = QVLoadable::PackageSet;

PackageSet packagesOfLoad(const NSNotification &notification) {
    return std::any_cast<PackageSet>(notification.userInfo.at(QVLoadablePackagesUserInfoKey));
}

} // namespace

TEST(QVLoadableLoading, APackageAndItsSyntaxesAreRegistered) {
    const auto package = packageNamed(u"one");
    const auto syntax = package->addSyntax("one-language");
    {
        const LoadedPackages loaded({package});
        EXPECT_THAT(QVLoadable::loadedPackages(), ElementsAre(Pair(NSString(u"one"), package)));
        EXPECT_EQ(QVSyntax::syntaxForName(u"one-language"), syntax);
        EXPECT_EQ(syntax->package(), package);
    }
    EXPECT_THAT(QVLoadable::loadedPackages(), IsEmpty());
    EXPECT_EQ(QVSyntax::syntaxForName(u"one-language"), nullptr);
}

TEST(QVLoadableLoading, WhatIsLoadedIsASnapshot) {
    const LoadedPackages first({packageNamed(u"first")});
    const auto before = QVLoadable::loadedPackages();
    const LoadedPackages second({packageNamed(u"second")});
    EXPECT_EQ(before.size(), 1u);
    EXPECT_EQ(QVLoadable::loadedPackages().size(), 2u);
}

TEST(QVLoadableLoading, WhatIsLoadedMayBeAskedUnderThePackageLock) {
    const LoadedPackages loaded({packageNamed(u"one")});
    std::size_t count = 0;
    QVLoadable::performBlockWithPackageLock([&] { count = QVLoadable::loadedPackages().size(); });
    EXPECT_EQ(count, 1u);
}

TEST(QVLoadableLoading, OfTwoPackagesWithOneIdentifierInOneCallTheFirstIsTaken) {
    const LogRecorder log;
    const PackageNotificationRecorder recorder;
    const auto first = packageNamed(u"twin");
    const auto second = packageNamed(u"twin");
    const auto syntax = second->addSyntax("of-the-second");
    const LoadedPackages loaded({first, second});
    EXPECT_THAT(QVLoadable::loadedPackages(), ElementsAre(Pair(NSString(u"twin"), first)));
    EXPECT_THAT(log.messages(),
                ElementsAre(u"Another syntax package with the identifier \"twin\" is already loaded. "
                            u"Ignoring the new one."));
    ASSERT_EQ(recorder.notifications.size(), 1u);
    EXPECT_EQ(packagesOfLoad(recorder.notifications[0]), PackageSet({first}));
    // Nothing of the refused package is registered, nor told that it belongs to it.
    EXPECT_EQ(QVSyntax::syntaxForName(u"of-the-second"), nullptr);
    EXPECT_EQ(syntax->package(), nullptr);
}

TEST(QVLoadableLoading, ALoadedIdentifierIsRefusedInLaterCallsToo) {
    const auto first = packageNamed(u"twin");
    const LoadedPackages loaded({first});
    const LogRecorder log;
    const PackageNotificationRecorder recorder;
    QVLoadable::loadPackagesIntoSyntaxEngine({packageNamed(u"twin")});
    QVLoadable::loadPackagesIntoSyntaxEngine({first});
    EXPECT_EQ(log.messages().size(), 2u);
    EXPECT_EQ(QVLoadable::loadedPackages().at(u"twin"), first);
    // Told all the same, that nothing came.
    ASSERT_EQ(recorder.notifications.size(), 2u);
    EXPECT_THAT(packagesOfLoad(recorder.notifications[0]), IsEmpty());
    EXPECT_THAT(packagesOfLoad(recorder.notifications[1]), IsEmpty());
}

TEST(QVLoadableLoading, ATakenSyntaxNameLeavesTheOldSyntaxInPlace) {
    const auto first = packageNamed(u"first");
    const auto old = first->addSyntax("taken");
    const auto second = packageNamed(u"second");
    const auto refused = second->addSyntax("taken");
    const auto other = second->addSyntax("free");
    const LoadedPackages loadedFirst({first});
    const LogRecorder log;
    {
        const LoadedPackages loadedSecond({second});
        EXPECT_THAT(log.messages(),
                    ElementsAre(u"Another syntax with the identifier \"taken\" is already loaded. "
                                u"Ignoring the new one."));
        EXPECT_EQ(QVSyntax::syntaxForName(u"taken"), old);
        EXPECT_EQ(QVSyntax::syntaxForName(u"free"), other);
        // The package keeps it; only the registry's entry is missing.
        EXPECT_EQ(refused->package(), second);
        EXPECT_EQ(QVLoadable::loadedPackages().size(), 2u);
    }
    EXPECT_EQ(QVSyntax::syntaxForName(u"taken"), old);
    EXPECT_EQ(QVSyntax::syntaxForName(u"free"), nullptr);
    EXPECT_THAT(QVLoadable::loadedPackages(), ElementsAre(Pair(NSString(u"first"), first)));
}

TEST(QVLoadableLoading, ANameThatAHostRegisteredByItselfIsTakenToo) {
    const RegisteredSyntax registered(syntaxFromXML(syntaxText("taken", "")));
    const auto package = packageNamed(u"one");
    package->addSyntax("taken");
    const LogRecorder log;
    const LoadedPackages loaded({package});
    EXPECT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(QVSyntax::syntaxForName(u"taken"), registered.syntax());
}

TEST(QVLoadableLoading, ASyntaxUnderAnEmptyNameIsPassedOverSilently) {
    const auto package = packageNamed(u"one");
    const auto syntax = syntaxFromXML(syntaxText("something", ""));
    package->ownSyntaxes[u""] = syntax;
    package->ownSyntaxes[NSString()] = syntax;
    const LogRecorder log;
    const LoadedPackages loaded({package});
    EXPECT_THAT(log.messages(), IsEmpty());
    EXPECT_EQ(syntax->package(), nullptr);
    EXPECT_THAT(QVSyntax::allSyntaxes(), IsEmpty());
}

TEST(QVLoadableLoading, SyntaxesAreRegisteredUnderThePackagesNamesForThem) {
    const auto package = packageNamed(u"one");
    const auto syntax = syntaxFromXML(syntaxText("inner-name", ""));
    package->ownSyntaxes[u"outer-name"] = syntax;
    const LoadedPackages loaded({package});
    EXPECT_EQ(QVSyntax::syntaxForName(u"outer-name"), syntax);
    EXPECT_EQ(QVSyntax::syntaxForName(u"inner-name"), nullptr);
}

TEST(QVLoadableLoading, EmptyPlacesInWhatAHostGivesArePassedOver) {
    const auto package = packageNamed(u"one");
    package->ownSyntaxes[u"nothing"] = nullptr;
    package->ownProviders.push_back(nullptr);
    package->ownStyles.push_back(nullptr);
    const LogRecorder log;
    const LoadedPackages loaded({nullptr, package});
    EXPECT_THAT(QVLoadable::loadedPackages(), ElementsAre(Pair(NSString(u"one"), package)));
    EXPECT_EQ(QVSyntax::syntaxForName(u"nothing"), nullptr);
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(QVLoadableLoading, CompletionSetsAreRegisteredByName) {
    const auto package = packageNamed(u"one");
    const auto set = std::make_shared<QVCompletionSet>();
    package->ownSets[u"words"] = set;
    const LoadedPackages loaded({package});
    EXPECT_EQ(QVCompletionSet::completionSetForName(u"words"), set);
    EXPECT_EQ(set->package(), package);
}

TEST(QVLoadableLoading, ATakenCompletionSetNameLeavesTheOldSetInPlace) {
    const auto first = packageNamed(u"first");
    const auto old = first->ownSets[u"taken"] = std::make_shared<QVCompletionSet>();
    const LoadedPackages loadedFirst({first});
    const auto second = packageNamed(u"second");
    const auto refused = second->ownSets[u"taken"] = std::make_shared<QVCompletionSet>();
    const LogRecorder log;
    {
        const LoadedPackages loadedSecond({second});
        EXPECT_THAT(log.messages(),
                    ElementsAre(u"Another completion set with the identifier \"taken\" is already loaded. "
                                u"Ignoring the new one."));
        EXPECT_EQ(QVCompletionSet::completionSetForName(u"taken"), old);
        EXPECT_EQ(refused->package(), second);
    }
    EXPECT_EQ(QVCompletionSet::completionSetForName(u"taken"), old);
}

TEST(QVLoadableLoading, ACompletionSetUnderAnEmptyNameIsPassedOverSilently) {
    const auto package = packageNamed(u"one");
    const auto set = std::make_shared<QVCompletionSet>();
    package->ownSets[u""] = set;
    package->ownSets[u"nothing"] = nullptr;
    const LogRecorder log;
    const LoadedPackages loaded({package});
    EXPECT_THAT(log.messages(), IsEmpty());
    EXPECT_EQ(set->package(), nullptr);
    EXPECT_THAT(QVCompletionSet::allCompletionSets(), IsEmpty());
}

TEST(QVLoadableLoading, AProviderReachesSyntaxesOfLaterPackagesOfTheSameCall) {
    const auto aiming = packageNamed(u"a-aiming");
    const auto provider = aiming->addProvider({u"first-target", u"unknown", NSString(), u"second-target"});
    const auto targets = packageNamed(u"b-targets");
    const auto first = targets->addSyntax("first-target");
    const auto second = targets->addSyntax("second-target");
    const auto bystander = targets->addSyntax("bystander");
    const LogRecorder log;
    const LoadedPackages loaded({aiming, targets});
    EXPECT_THAT(first->completionProviders(), ElementsAre(provider));
    EXPECT_THAT(second->completionProviders(), ElementsAre(provider));
    EXPECT_THAT(bystander->completionProviders(), IsEmpty());
    EXPECT_EQ(provider->package(), aiming);
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(QVLoadableLoading, AProviderDoesNotReachSyntaxesOfLaterCalls) {
    const auto aiming = packageNamed(u"aiming");
    aiming->addProvider({u"target"});
    const auto targets = packageNamed(u"targets");
    const auto target = targets->addSyntax("target");
    const LoadedPackages first({aiming});
    const LoadedPackages second({targets});
    EXPECT_THAT(target->completionProviders(), IsEmpty());
}

TEST(QVLoadableLoading, AProviderGoesToTheRegisteredSyntaxNotToARefusedOne) {
    const auto first = packageNamed(u"first");
    const auto registered = first->addSyntax("taken");
    const LoadedPackages loadedFirst({first});
    const auto second = packageNamed(u"second");
    const auto refused = second->addSyntax("taken");
    const auto provider = second->addProvider({u"taken"});
    const LogRecorder log;
    const LoadedPackages loadedSecond({second});
    EXPECT_THAT(registered->completionProviders(), ElementsAre(provider));
    EXPECT_THAT(refused->completionProviders(), IsEmpty());
}

TEST(QVLoadableLoading, StylesLearnTheirPackage) {
    const auto package = packageNamed(u"one");
    package->ownStyles.push_back(std::make_shared<QVStyle>());
    const LoadedPackages loaded({package});
    EXPECT_EQ(package->ownStyles[0]->package(), package);
}

TEST(QVLoadableLoading, ThemesAreRegisteredAndTheirStylesLearnThePackageToo) {
    const auto package = packageNamed(u"one");
    const auto theme = std::make_shared<QVTheme>();
    const auto style = std::make_shared<QVStyle>();
    theme->setStyles(QVTheme::Styles{style});
    package->ownThemes = {nullptr, theme};
    {
        const LoadedPackages loaded({package});
        EXPECT_THAT(QVTheme::allThemes(), ElementsAre(theme));
        EXPECT_EQ(theme->package(), package);
        EXPECT_EQ(style->package(), package);
    }
    EXPECT_THAT(QVTheme::allThemes(), IsEmpty());
}

TEST(QVLoadableLoading, TheNotificationNamesWhatWasTakenAndComesWithoutTheLock) {
    const auto first = packageNamed(u"first");
    const auto second = packageNamed(u"second");
    std::size_t loadedThen = 0;
    const NSNotificationToken token = NSNotificationCenter::defaultCenter().addObserver(
        QVLoadableDidLoadPackagesNotification, nullptr,
        [&](const NSNotification &) { loadedThen = QVLoadable::loadedPackages().size(); });
    const PackageNotificationRecorder recorder;
    const LoadedPackages loaded({second, first});
    EXPECT_EQ(loadedThen, 2u);
    ASSERT_THAT(recorder.names(), ElementsAre(QVLoadableDidLoadPackagesNotification));
    EXPECT_EQ(packagesOfLoad(recorder.notifications[0]), PackageSet({first, second}));
    EXPECT_EQ(recorder.notifications[0].userInfo.size(), 1u);
}

TEST(QVLoadableLoading, NotificationsAndTheirKeyHaveTheNamesOfTheirConstants) {
    EXPECT_EQ(NSString(QVLoadableDidLoadPackagesNotification), u"QVLoadableDidLoadPackagesNotification");
    EXPECT_EQ(NSString(QVLoadableWillUnloadPackagesNotification),
              u"QVLoadableWillUnloadPackagesNotification");
    EXPECT_EQ(NSString(QVLoadablePackagesUserInfoKey), u"QVLoadablePackages");
}

TEST(QVLoadableLoading, ALoadOfNothingIsTold) {
    const PackageNotificationRecorder recorder;
    QVLoadable::loadPackagesIntoSyntaxEngine({});
    ASSERT_THAT(recorder.names(), ElementsAre(QVLoadableDidLoadPackagesNotification));
    EXPECT_THAT(packagesOfLoad(recorder.notifications[0]), IsEmpty());
}

TEST(QVLoadableLoading, RunsUnderThePackageLock) {
    class Asking : public TestPackage {
    public:
        using TestPackage::TestPackage;
        std::map<NSString, std::shared_ptr<QVSyntax>> syntaxes() const override {
            mayRead = anotherThreadMayRead();
            return {};
        }
        mutable bool mayRead = true;
    };
    const auto package = std::make_shared<Asking>(u"asking");
    const LoadedPackages loaded({package});
    EXPECT_FALSE(package->mayRead);
    EXPECT_TRUE(anotherThreadMayRead());
}

TEST(QVLoadableLoading, LoadingResolvesNoGrammar) {
    const auto package = packageNamed(u"one");
    const auto syntax = package->addSyntax("one-language", scopesText(matchText("word", "a")));
    const LoadedPackages loaded({package});
    EXPECT_FALSE(syntax->grammarResolved());
}

TEST(QVLoadableLoading, AGrammarLearnsItsPackageAtItsFirstUse) {
    /// Notes whether it knew its package when it was told of it.
    class Noting : public QVCollection {
    public:
        void willLoadIntoPackage(const std::shared_ptr<QVPackage> &package) override {
            told = package;
            knewBefore = this->package() != nullptr;
        }
        std::weak_ptr<QVPackage> told;
        bool knewBefore = true;
    };
    const auto package = packageNamed(u"one");
    const auto syntax = package->addSyntax("one-language");
    const auto grammar = std::make_shared<QVGrammar>();
    const auto collection = std::make_shared<Noting>();
    grammar->setCollections({{u"noting", collection}});
    syntax->setGrammar(grammar);
    const LoadedPackages loaded({package});
    EXPECT_EQ(grammar->package(), nullptr);
    EXPECT_EQ(syntax->grammar(), grammar);
    EXPECT_EQ(grammar->package(), package);
    EXPECT_EQ(collection->package(), package);
    EXPECT_EQ(collection->told.lock(), package);
    EXPECT_FALSE(collection->knewBefore);
}

TEST(QVLoadableLoading, ScopesOfAllKindsLearnTheirSyntaxAtTheFirstUse) {
    const auto scope = [](const char16_t *name) {
        return QVScope::scopeWithType(QVScopeTypeMatch, nullptr, name, nullptr, nullptr);
    };
    const auto top = scope(u"top"), below = scope(u"below"), belowThat = scope(u"below-that");
    const auto inTemplate = scope(u"in-template"), inCollection = scope(u"in-collection");
    below->setSubscopes({belowThat});
    top->setSubscopes({below});
    const auto grammar = std::make_shared<QVGrammar>();
    grammar->setScopes({top});
    grammar->setTemplateScopes({inTemplate});
    const auto collection = std::make_shared<QVCollection>();
    collection->setScopes({inCollection});
    grammar->setCollections({{u"collection", collection}});
    const auto syntax = syntaxFromXML(syntaxText("language", ""));
    syntax->setGrammar(grammar);
    syntax->grammar();
    for (const auto &each : {top, below, belowThat, inTemplate, inCollection})
        EXPECT_EQ(each->parentSyntax(), syntax) << each->name().UTF8String();
}
