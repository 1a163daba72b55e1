#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Tests/Quorvane/Syntaxes/SyntaxFixtures.h"
#include "Tests/Support/CodingFixtures.h"

#include <atomic>
#include <thread>

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::shared_ptr<QVCompletionProvider> provider(NSString name) {
    auto result = std::make_shared<QVCompletionProvider>();
    result->setName(std::move(name));
    return result;
}

Texts names(const std::vector<std::shared_ptr<QVCompletionProvider>> &providers) {
    Texts result;
    for (const auto &item : providers)
        result.push_back(item->name());
    return result;
}

} // namespace

TEST(QVSyntax, IsDescribedByItsName) {
    const auto syntax = syntaxOf("");
    EXPECT_EQ(syntax->description(), NSString::stringWithFormat(u"<QVSyntax: %p : name=test>",
                                                                static_cast<const void *>(syntax.get())));
}

TEST(QVSyntax, ProvidersAreAddedBehindTheOnesThatAreThere) {
    const auto syntax = syntaxOf("<completions><provider name='own'/></completions>");
    syntax->addCompletionProvider(provider(u"added"));
    EXPECT_EQ(names(syntax->completionProviders()), (Texts{u"own", u"added"}));
    syntax->setCompletionProviders({provider(u"new")});
    EXPECT_EQ(names(syntax->completionProviders()), (Texts{u"new"}));
    syntax->setCompletionProviders({});
    EXPECT_TRUE(syntax->completionProviders().empty());
}

TEST(QVSyntax, WithoutAGrammarThereIsNone) {
    const auto syntax = std::make_shared<QVSyntax>();
    EXPECT_EQ(syntax->grammar(), nullptr);
    EXPECT_EQ(syntax->grammarResolvingIfNecessary(false), nullptr);
    EXPECT_FALSE(syntax->grammarResolved());
}

TEST(QVSyntax, AnUnconnectedGrammarIsNotShown) {
    const auto syntax = syntaxOf(wholeGrammar);
    EXPECT_EQ(syntax->grammarResolvingIfNecessary(false), nullptr);
    const auto grammar = syntax->grammar();
    ASSERT_NE(grammar, nullptr);
    EXPECT_EQ(syntax->grammarResolvingIfNecessary(false), grammar);
    EXPECT_EQ(syntax->grammar(), grammar);
}

TEST(QVSyntax, ConnectingHandsThePackageToTheGrammarAndItsCollections) {
    const auto package = std::make_shared<TestPackage>(u"p");
    const auto syntax = syntaxOf(wholeGrammar);
    syntax->setPackage(package);
    const auto grammar = syntax->grammar();
    EXPECT_EQ(grammar->package(), package);
    EXPECT_EQ(grammar->collectionWithName(u"c")->package(), package);
    EXPECT_EQ(grammar->scopes()[0]->package(), nullptr);
}

TEST(QVSyntax, AfterAnUnloadTheGrammarIsConnectedAgain) {
    const auto first = std::make_shared<TestPackage>(u"first");
    const auto second = std::make_shared<TestPackage>(u"second");
    const auto syntax = syntaxOf(wholeGrammar);
    syntax->setPackage(first);
    const auto grammar = syntax->grammar();
    syntax->didUnloadFromPackage();
    EXPECT_FALSE(syntax->grammarResolved());
    EXPECT_EQ(syntax->grammarResolvingIfNecessary(false), nullptr);
    EXPECT_EQ(syntax->package(), first);
    syntax->setPackage(second);
    EXPECT_EQ(syntax->grammar(), grammar);
    EXPECT_EQ(grammar->package(), second);
    EXPECT_TRUE(syntax->grammarResolved());
}

TEST(QVSyntax, ABlockUnderThePackageLockMayAskForGrammars) {
    const auto syntax = syntaxOf(wholeGrammar);
    QVLoadable::performBlockWithPackageLock([&] { EXPECT_NE(syntax->grammar(), nullptr); });
}

TEST(QVSyntax, WhicheverThreadComesFirstUnpacksTheGrammarOnce) {
    for (int round = 0; round < 20; ++round) {
        const auto syntax = throughArchive(syntaxOf(wholeGrammar));
        std::atomic<int> waiting = 4;
        std::array<std::shared_ptr<QVGrammar>, 4> grammars;
        std::vector<std::thread> threads;
        for (auto &grammar : grammars)
            threads.emplace_back([&] {
                for (--waiting; waiting > 0;)
                    std::this_thread::yield();
                grammar = syntax->grammar();
                // Nobody sees a grammar that is not connected.
                EXPECT_EQ(grammar->scopes().at(0)->parentSyntax(), syntax);
                EXPECT_EQ(grammar->collectionWithName(u"c")->scopes().at(0)->parentSyntax(), syntax);
            });
        for (auto &thread : threads)
            thread.join();
        for (const auto &grammar : grammars)
            EXPECT_EQ(grammar, grammars[0]);
    }
}

TEST(QVSyntax, WhoHoldsThePackageLockCanAskWhileAnotherThreadWaitsForIt) {
    // The other thread has unpacked the grammar and waits for the package lock, as a parse does that first
    // uses a grammar while packages are unloaded.
    const auto syntax = throughArchive(syntaxOf(wholeGrammar));
    std::atomic<bool> started = false;
    std::thread thread;
    QVLoadable::performBlockWithPackageLock([&] {
        thread = std::thread([&] {
            started = true;
            EXPECT_NE(syntax->grammar(), nullptr);
        });
        // Its data goes when it is unpacked; all that is left to do then needs the lock.
        while (!started || !syntax->grammarData().isNull())
            std::this_thread::yield();
        for (int round = 0; round < 100; ++round) {
            EXPECT_EQ(syntax->grammarResolvingIfNecessary(false), nullptr);
            syntax->didUnloadFromPackage();
        }
    });
    thread.join();
    EXPECT_NE(syntax->grammarResolvingIfNecessary(false), nullptr);
}

// The two waited for each other: one for the syntax, which the other held, and that one for the package lock.
TEST(QVSyntax, WhoHoldsThePackageLockMayConnectAGrammarThatAnotherThreadIsAboutToConnect) {
    const auto syntax = throughArchive(syntaxOf(wholeGrammar));
    std::shared_ptr<QVGrammar> own, others;
    std::thread thread;
    QVLoadable::performBlockWithPackageLock([&] {
        thread = std::thread([&] { others = syntax->grammar(); });
        while (!syntax->grammarData().isNull())
            std::this_thread::yield();
        own = syntax->grammar();
        ASSERT_NE(own, nullptr);
        EXPECT_EQ(own->scopes().at(0)->parentSyntax(), syntax);
    });
    thread.join();
    EXPECT_EQ(own, others);
}

TEST(QVSyntax, GoesWithItsGrammar) {
    // Scopes refer to their syntax, which must not keep it.
    std::weak_ptr<QVSyntax> syntax;
    std::weak_ptr<QVScope> scope;
    {
        const auto owned = syntaxOf(wholeGrammar);
        syntax = owned;
        scope = owned->grammar()->scopes().at(0);
    }
    EXPECT_TRUE(syntax.expired());
    EXPECT_TRUE(scope.expired());
}
