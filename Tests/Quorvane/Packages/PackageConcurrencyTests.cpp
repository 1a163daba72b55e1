// Packages come and go while other threads parse with what they brought.
#include "Tests/Quorvane/Packages/PackageFixture.h"

#include <atomic>
#include <barrier>
#include <functional>
#include <thread>

using namespace quorvane;
using namespace quorvane::test;

namespace {

constexpr int rounds = 60;

/// A language of its own, with a collection for others.
std::shared_ptr<TestPackage> innerPackage() {
    const auto package = packageNamed(u"inner");
    package->addSyntax("inner", collectionsText(collectionText("words", matchText("inner.word", "[a-m]+"))) +
                                    scopesText(includeText("words", "self")));
    package->addProvider({u"inner", u"outer"});
    return package;
}

/// A language that takes the other one's words in, and holds the other one whole between braces.
std::shared_ptr<TestPackage> outerPackage() {
    const auto package = packageNamed(u"outer");
    package->addSyntax(
        "outer", scopesText(includeText("words", "inner") +
                            regionText("outer.block", "\\{", "\\}", subscopesText(includeText("", "inner"))) +
                            matchText("outer.word", "[n-z]+")));
    return package;
}

/// Reads what a match points to, so that a checker sees it where it is gone.
std::size_t lengthOfNames(const QVScopeMatch &match) {
    const auto syntax = match.scope()->parentSyntax();
    std::size_t length = match.scope()->name().length() + (syntax ? syntax->name().length() : 0);
    for (const QVScopeMatch *const submatch : match.submatches())
        length += lengthOfNames(*submatch);
    return length;
}

/// Runs each on a thread of its own, over and over until the last one, which runs here, is through.
void runBeside(const std::vector<std::function<void()>> &others, const std::function<void()> &last) {
    std::atomic<bool> isOver = false;
    std::barrier start(static_cast<std::ptrdiff_t>(others.size()) + 1);
    std::vector<std::thread> threads;
    for (const auto &other : others)
        threads.emplace_back([&] {
            start.arrive_and_wait();
            do
                other();
            while (!isOver.load(std::memory_order_relaxed));
        });
    start.arrive_and_wait();
    last();
    isOver.store(true, std::memory_order_relaxed);
    for (auto &thread : threads)
        thread.join();
}

void parseAndRead(QVParse &parse, std::u16string_view text) {
    parse.performWritingBlockAndWait([&] {
        parse.replaceCharactersInRange({0, parse.string().size()}, text, nullptr);
    });
    parse.performReadingBlockAndWait([&] { EXPECT_NE(lengthOfNames(*parse.rootMatch()), 0u); });
}

/// A new parse with whatever is loaded right now.
void parseWithLoaded(const char16_t *name) {
    const auto syntax = QVSyntax::syntaxForName(name);
    if (!syntax)
        return;
    const auto parse = QVParse::initWithSyntax(syntax, 0, QVParsePrivateQueueConcurrencyType);
    parseAndRead(*parse, u"abc { def } xyz {{ abc");
}

} // namespace

TEST(PackageConcurrency, ThreadsParseWhilePackagesComeAndGo) {
    runBeside({[] { parseWithLoaded(u"outer"); }, [] { parseWithLoaded(u"inner"); },
               [] {
                   for (const auto &[name, syntax] : QVSyntax::allSyntaxes())
                       syntax->completionProviders();
                   QVLoadable::loadedPackages();
               }},
              [] {
                  for (int round = 0; round < rounds; ++round) {
                      const auto inner = innerPackage();
                      const auto outer = outerPackage();
                      QVLoadable::loadPackagesIntoSyntaxEngine({outer, inner});
                      parseWithLoaded(u"outer");
                      QVLoadable::unloadPackagesFromSyntaxEngine({inner});
                      parseWithLoaded(u"outer");
                      QVLoadable::unloadPackagesFromSyntaxEngine({outer});
                  }
              });
    EXPECT_TRUE(QVLoadable::loadedPackages().empty());
}

TEST(PackageConcurrency, TheSameObjectsComeBackWhileParsesHoldOnToThem) {
    const auto inner = innerPackage();
    const auto outer = outerPackage();
    const auto syntax = outer->ownSyntaxes.at(u"outer");
    const auto parse = QVParse::initWithSyntax(syntax, 0, QVParsePrivateQueueConcurrencyType);
    runBeside({[&] { parseAndRead(*parse, u"abc { def } xyz"); },
               [&] { EXPECT_NE(syntax->grammar(), nullptr); }, [] { parseWithLoaded(u"inner"); }},
              [&] {
                  for (int round = 0; round < rounds; ++round)
                      const LoadedPackages loaded({inner, outer});
              });
}

TEST(PackageConcurrency, ATreeOutlivesThePackagesItWasMadeWith) {
    std::shared_ptr<QVParse> parse;
    std::weak_ptr<QVSyntax> innerSyntax;
    {
        const auto inner = innerPackage();
        const auto outer = outerPackage();
        innerSyntax = inner->ownSyntaxes.at(u"inner");
        const LoadedPackages loaded({inner, outer});
        parse =
            QVParse::initWithSyntax(outer->ownSyntaxes.at(u"outer"), 0, QVParsePrivateQueueConcurrencyType);
        parseAndRead(*parse, u"abc { def } xyz");
    }
    parse->performReadingBlockAndWait([&] { lengthOfNames(*parse->rootMatch()); });
    // The syntax is gone, its grammar stays for the nodes that point into it.
    EXPECT_TRUE(innerSyntax.expired());
    parseAndRead(*parse, u"xyz");
}

TEST(PackageConcurrency, AParseForgetsTheIncludesOfPackagesThatGo) {
    const auto outer = outerPackage();
    const LoadedPackages loadedOuter({outer});
    const auto parse =
        QVParse::initWithSyntax(outer->ownSyntaxes.at(u"outer"), 0, QVParsePrivateQueueConcurrencyType);
    const auto firstName = [&] {
        NSString name;
        parse->performWritingBlockAndWait([&] {
            parse->replaceCharactersInRange({0, parse->string().size()}, u"abc", nullptr);
            name = (*parse->rootMatch()->submatches().begin())->scope()->name();
        });
        return name;
    };
    {
        const LoadedPackages loadedInner({innerPackage()});
        EXPECT_EQ(firstName().UTF8String(), "inner.word");
    }
    EXPECT_EQ(firstName().UTF8String(), "outer.unknown");
    const LoadedPackages loadedInner({innerPackage()});
    QVLoadable::unloadPackagesFromSyntaxEngine({});
    EXPECT_EQ(firstName().UTF8String(), "inner.word");
}

TEST(PackageConcurrency, ASyntaxIsCopiedWhileItsPackageComesAndGoes) {
    const auto package = innerPackage();
    const auto syntax = package->ownSyntaxes.at(u"inner");
    const auto provider = package->ownProviders[0];
    runBeside({[&] {
                  EXPECT_EQ(syntax->copy()->name(), u"inner");
                  // Before its first load it has none.
                  const auto owner = provider->copy()->package();
                  EXPECT_TRUE(!owner || owner == package);
              }},
              [&] {
                  for (int round = 0; round < rounds; ++round)
                      const LoadedPackages loaded({package});
              });
    EXPECT_EQ(provider->copy()->package(), package);
}

TEST(PackageConcurrency, SeveralThreadsLoadAndUnload) {
    const auto loadAndUnload = [](const char16_t *identifier, std::string_view language) {
        const auto package = packageNamed(identifier);
        const auto syntax = package->addSyntax(language, scopesText(matchText("word", "a")));
        package->addProvider({u"shared"});
        const LoadedPackages loaded({package});
        EXPECT_EQ(QVSyntax::syntaxForName(syntax->name()), syntax);
        EXPECT_NE(syntax->grammar(), nullptr);
        EXPECT_EQ(QVLoadable::loadedPackages().at(identifier), package);
    };
    const auto shared = packageNamed(u"shared");
    const auto syntax = shared->addSyntax("shared", scopesText(matchText("word", "a")));
    const LoadedPackages loaded({shared});
    syntax->grammar();
    runBeside({[&] { loadAndUnload(u"first", "first"); }, [&] { loadAndUnload(u"second", "second"); }}, [&] {
        for (int round = 0; round < rounds; ++round)
            loadAndUnload(u"third", "third");
    });
    EXPECT_TRUE(syntax->completionProviders().empty());
}
