// What the parse of a whole text leaves for later, and who gets it done.

#include "Quorvane/Matches/QVMatchPositions.h"
#include "Tests/Quorvane/Parsers/SymbolFixtures.h"

#include <latch>
#include <thread>

using namespace quorvane;
using namespace quorvane::test;

namespace {

using DeferredWork = SymbolTest;

const std::string classes = matchText("c", "class\\ (\\w+)", captureText(1, "name") + symbolText("class"));

bool isOrdered(const QVParse &parse) {
    return QVMatchPositions::positionsOf(parse.rootMatch()->firstChild()) != nullptr;
}

} // namespace

TEST_F(DeferredWork, AWholeTextIsParsedWithoutSymbolsAndWithoutTheOrderOfPlaces) {
    start(classes, u"class A");
    EXPECT_EQ(parse->rootMatch()->firstChild()->linkedSymbol(), nullptr);
    EXPECT_FALSE(isOrdered(*parse));
}

TEST_F(DeferredWork, TheListOfSymbolsIsMadeWhenAskedFor) {
    start(classes, u"class A class B");
    ASSERT_EQ(parse->symbols().size(), 2u);
    EXPECT_EQ(parse->rootMatch()->firstChild()->linkedSymbol(), parse->symbols().front().get());
    EXPECT_FALSE(isOrdered(*parse));
}

TEST_F(DeferredWork, AMatchAskedForItsSymbolHasAllMade) {
    start(classes, u"class A class B");
    const QVScopeMatch *const first = parse->rootMatch()->firstChild();
    const QVParseSymbol *const symbol = first->symbol();
    ASSERT_NE(symbol, nullptr);
    EXPECT_EQ(symbol->name(), u"A");
    EXPECT_NE(parse->rootMatch()->lastChild()->linkedSymbol(), nullptr);
}

TEST_F(DeferredWork, AMatchThatCanHaveNoSymbolHasNoneMade) {
    start(classes + matchText("n", "\\d"), u"1 class A");
    EXPECT_EQ(parse->rootMatch()->firstChild()->symbol(), nullptr);
    EXPECT_EQ(parse->rootMatch()->lastChild()->linkedSymbol(), nullptr);
}

TEST_F(DeferredWork, WhoHasTimeFinishesAllOfIt) {
    start(classes, u"class A");
    parse->performWritingBlockAndWait([&] { parse->finishDeferredWork(); });
    EXPECT_NE(parse->rootMatch()->firstChild()->linkedSymbol(), nullptr);
    EXPECT_TRUE(isOrdered(*parse));
    // Once is enough.
    const auto symbols = parse->symbols();
    parse->performWritingBlockAndWait([&] { parse->finishDeferredWork(); });
    EXPECT_EQ(parse->symbols(), symbols);
}

TEST_F(DeferredWork, AnEditFindsTheSymbolsOfTheTextBeforeIt) {
    start(classes, u"class A\n\n\nclass B");
    edit({9, 0}, u"class C");
    EXPECT_EQ(drawn(), "class A 0+7\nclass C 9+7\nclass B 17+7\n");
    EXPECT_TRUE(isOrdered(*parse));
}

TEST_F(DeferredWork, TheStepsOfMakingSymbolsBeginWithWhatWasLeft) {
    start(classes, u"class A class B");
    parse->performWritingBlockAndWait([&] { parse->updateSymbolRanges(); });
    EXPECT_EQ(drawn(), "class A 0+7\nclass B 8+7\n");
    start(classes, u"class A class B");
    parse->performWritingBlockAndWait([&] {
        parse->symbolicateMatchesInRange({0, 7}, parse->rootMatch()->firstChild());
    });
    EXPECT_EQ(drawn(), "class A 0+7\nclass B 8+7\n");
}

TEST_F(DeferredWork, ATextThatGoesTakesItAlong) {
    start(classes, u"class A");
    parse->performWritingBlockAndWait([&] { parse->clearAllMatches(); });
    EXPECT_EQ(drawn(), "");
    edit({0, 7}, u"class BC");
    EXPECT_EQ(drawn(), "class BC 0+8\n");
    edit({0, 8}, u"");
    EXPECT_EQ(drawn(), "");
    edit({0, 0}, u"class D");
    EXPECT_FALSE(isOrdered(*parse));
    EXPECT_EQ(drawn(), "class D 0+7\n");
}

TEST_F(DeferredWork, AMatchThatIsHeldBeyondItsParseHasNoSymbolMade) {
    start(classes, u"class A");
    const auto syntax = parse->syntax();
    const QVScopeMatchReference held(parse->rootMatch()->firstChild());
    parse.reset();
    EXPECT_EQ(held->symbol(), nullptr);
}

TEST(DeferredWorkThreads, ReadersSideBySideGetTheSameSymbols) {
    const auto syntax = syntaxWithElements(scopesText(classes));
    for (int round = 0; round < 20; ++round) {
        const auto parse = parseOfText(syntax, u"class A class B class C");
        constexpr int readerCount = 3;
        std::latch start(readerCount);
        std::vector<std::shared_ptr<QVParseSymbol>> seen[readerCount];
        std::vector<std::thread> readers;
        for (int reader = 0; reader < readerCount; ++reader)
            readers.emplace_back([&, reader] {
                start.arrive_and_wait();
                parse->performReadingBlockAndWait([&] {
                    const auto *const last = parse->rootMatch()->lastChild();
                    EXPECT_EQ(reader == 0 ? last->symbol() : parse->symbols().back().get(), last->symbol());
                    seen[reader] = parse->symbols();
                });
            });
        for (std::thread &reader : readers)
            reader.join();
        EXPECT_EQ(seen[0].size(), 3u);
        EXPECT_EQ(seen[0], seen[1]);
        EXPECT_EQ(seen[0], seen[2]);
    }
}
