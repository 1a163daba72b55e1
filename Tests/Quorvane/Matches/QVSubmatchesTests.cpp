// Children in numbers beyond what one array holds: what is observed must not tell pieces from an array.
#include "Quorvane/Matches/QVSubmatches.h"

#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSIndexSet.h"
#include "Tests/Quorvane/Matches/MatchFixtures.h"

#include <random>

using namespace quorvane;
using namespace quorvane::test;

namespace {

class ManySubmatches : public testing::Test {
protected:
    QVScopeMatchReference make(NSUInteger location, NSUInteger length = 1) {
        auto match = QVScopeMatch::initWithScope(plain.get(), *pool);
        match->setRange({location, length});
        return match;
    }

    /// Children at 0, 10, 20...
    void fill(NSUInteger count) {
        auto list = std::make_unique<QVScopeMatchArray>();
        for (NSUInteger index = 0; index < count; ++index)
            list->push_back(make(10 * index));
        model.assign(list->begin(), list->end());
        parent->setSubmatches(std::move(list));
    }

    /// Compares each way to the children with the model: by index, by iteration and by links.
    void check() const {
        const QVSubmatches children = parent->submatches();
        ASSERT_EQ(children.count(), model.size());
        ASSERT_EQ(QVScopeMatch::directSubmatchesCount(parent.get()), model.size());
        ASSERT_TRUE(children);
        std::size_t index = 0;
        const QVMatch *previous = nullptr;
        for (QVScopeMatch *const child : children) {
            ASSERT_LT(index, model.size());
            ASSERT_EQ(child, model[index].get());
            ASSERT_EQ(children[index], child);
            ASSERT_EQ(child->parentMatch(), parent.get());
            ASSERT_EQ(child->previousSibling(), previous);
            ASSERT_TRUE(previous == nullptr || previous->nextSibling() == child);
            previous = child;
            ++index;
        }
        ASSERT_EQ(index, model.size());
        ASSERT_EQ(parent->lastChild(), previous);
        ASSERT_EQ(parent->firstChild(), model.empty() ? nullptr : model.front().get());
        ASSERT_TRUE(previous == nullptr || previous->nextSibling() == nullptr);
    }

    void insert(NSUInteger index, const QVScopeMatchArray &matches) {
        parent->insertSubmatches(matches, NSIndexSet::indexSetWithIndexesInRange({index, matches.size()}));
        model.insert(model.begin() + static_cast<std::ptrdiff_t>(index), matches.begin(), matches.end());
    }
    void remove(const NSIndexSet &indexes) {
        parent->removeSubmatchesAtIndexes(indexes);
        for (auto range = indexes.ranges().rbegin(); range != indexes.ranges().rend(); ++range) {
            const auto first = model.begin() + static_cast<std::ptrdiff_t>(range->location);
            model.erase(first, first + static_cast<std::ptrdiff_t>(range->length));
        }
    }

    const QVMatchPool::Owner pool = QVMatchPool::create();
    const std::shared_ptr<QVScope> region = scopeOfType(QVScopeTypeStartEnd);
    const std::shared_ptr<QVScope> plain = scopeOfType(QVScopeTypeMatch);
    const QVScopeMatchReference parent = QVScopeMatch::initWithScope(region.get(), *pool);
    QVScopeMatchArray model;
};

constexpr NSUInteger few = QVSubmatchChunks::fewSubmatches;

} // namespace

TEST_F(ManySubmatches, StandInOneArrayUpToABoundAndInPiecesBeyond) {
    QVSubmatchStore store;
    EXPECT_FALSE(store);
    store.assign(QVScopeMatchArray(few, make(0)));
    EXPECT_NE(store.array(), nullptr);
    EXPECT_EQ(store.chunks(), nullptr);
    const QVScopeMatchReference one = make(0);
    store.insert(few, &one, 1);
    EXPECT_EQ(store.array(), nullptr);
    ASSERT_NE(store.chunks(), nullptr);
    EXPECT_EQ(store.chunks()->problem(), nullptr);
    EXPECT_EQ(store.count(), few + 1);
    EXPECT_EQ(store[few], one.get());
    store.assign({});
    EXPECT_TRUE(store);
    EXPECT_EQ(store.count(), 0u);
    store.reset();
    EXPECT_FALSE(store);
}

TEST_F(ManySubmatches, AreReachedByIndexByIterationAndByLinksAlike) {
    for (const NSUInteger count : {few - 1, few, few + 1, 2 * few, 2 * few + 1, 7 * few + 3}) {
        fill(count);
        check();
    }
}

TEST_F(ManySubmatches, StayContainersWhenTheLastOneGoes) {
    fill(2000);
    remove(NSIndexSet::indexSetWithIndexesInRange({0, 2000}));
    check();
    EXPECT_EQ(pool->livePieces(), 1u);
    insert(0, {make(1), make(2)});
    check();
}

TEST_F(ManySubmatches, ComeOneAfterAnotherInFrontBetweenAndBehind) {
    fill(few);
    for (NSUInteger round = 0; round < 2500; ++round) {
        const NSUInteger index = round % 3 == 0 ? 0 : round % 3 == 1 ? model.size() / 2 : model.size();
        const QVScopeMatchReference match = make(0);
        parent->insertSubmatch(match, index);
        model.insert(model.begin() + static_cast<std::ptrdiff_t>(index), match);
    }
    check();
    while (!model.empty()) {
        const NSUInteger index = model.size() % 3 == 0   ? 0
                                 : model.size() % 3 == 1 ? model.size() / 2
                                                         : model.size() - 1;
        remove({index});
    }
    check();
}

TEST_F(ManySubmatches, ComeAndGoInRunsOverTheBoundsOfPieces) {
    fill(5000);
    QVScopeMatchArray run;
    for (NSUInteger index = 0; index < 3000; ++index)
        run.push_back(make(0));
    insert(511, run);
    check();
    remove(NSIndexSet::indexSetWithIndexesInRange({100, 6000}));
    check();
    insert(0, run);
    insert(model.size(), {make(0)});
    check();
    NSIndexSet scattered;
    for (NSUInteger index = 5; index < model.size(); index += 7)
        scattered.addIndex(index);
    scattered.addIndex(model.size() - 1);
    remove(scattered);
    check();
}

TEST_F(ManySubmatches, OfAScatteredIndexSetEndUpAtTheirIndexes) {
    fill(1000);
    QVScopeMatchArray news;
    NSIndexSet places;
    for (NSUInteger index = 3; index < 1400; index += 4) {
        places.addIndex(index);
        news.push_back(make(1));
    }
    parent->insertSubmatches(news, places);
    std::size_t next = 0;
    places.enumerateIndexesUsingBlock([&](NSUInteger index, bool &) {
        const auto place = std::min<std::size_t>(index, model.size());
        model.insert(model.begin() + static_cast<std::ptrdiff_t>(place), news[next++]);
    });
    check();
}

TEST_F(ManySubmatches, BehaveAsAnArrayUnderRandomEdits) {
    for (const unsigned seed : {1u, 2u, 3u}) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&](std::size_t bound) { return random() % bound; };
        fill(below(3000));
        for (int round = 0; round < 400; ++round) {
            const std::size_t count = below(10) == 0 ? below(1500) : below(6);
            if (below(2) == 0) {
                QVScopeMatchArray run;
                for (std::size_t index = 0; index < count; ++index)
                    run.push_back(make(0));
                insert(below(model.size() + 1), run);
            } else if (!model.empty()) {
                const std::size_t location = below(model.size());
                remove(NSIndexSet::indexSetWithIndexesInRange(
                    {location, std::min(count, model.size() - location)}));
            }
            if (round % 10 == 0)
                check();
        }
        check();
        model.clear();
        parent->setSubmatches(nullptr);
        // Nobody else holds them, so all pieces of memory but the parent's came back.
        EXPECT_EQ(pool->livePieces(), 1u);
    }
}

TEST_F(ManySubmatches, AreFoundByTheirLocation) {
    fill(5000);
    // Empty ones at one place, over a bound of pieces too.
    QVScopeMatchArray empty;
    for (NSUInteger index = 0; index < 1200; ++index)
        empty.push_back(make(20000, 0));
    insert(2000, empty);
    for (NSUInteger index = 0; index < model.size(); ++index)
        ASSERT_EQ(parent->indexOfSubmatch(model[index].get()), index);
    const QVScopeMatchReference stranger = make(20000);
    EXPECT_EQ(parent->indexOfSubmatch(stranger.get()), NSNotFound);
}

TEST_F(ManySubmatches, AreFoundWhileOldAndNewOnesStandSideBySide) {
    // A thousand units went: the new ones stand in new coordinates before the old ones in old coordinates.
    fill(3000);
    QVScopeMatchArray news;
    for (NSUInteger index = 0; index < 60; ++index)
        news.push_back(make(12000 + 10 * index));
    insert(1100, news);
    for (NSUInteger index = 0; index < model.size(); ++index)
        ASSERT_EQ(parent->indexOfSubmatch(model[index].get()), index);
}

TEST_F(ManySubmatches, OfAnIndexThatIsTooHighThrowAndStay) {
    fill(2000);
    EXPECT_THROW(parent->removeSubmatchAtIndex(2000), NSException);
    EXPECT_THROW(parent->removeSubmatchesAtIndexes({0, 1000, 2000}), NSException);
    check();
}

TEST_F(ManySubmatches, ThatSomebodyHoldsOutliveTheirParent) {
    QVScopeMatchReference kept;
    {
        const auto other = QVScopeMatch::initWithScope(region.get(), *pool);
        auto list = std::make_unique<QVScopeMatchArray>();
        for (NSUInteger index = 0; index < 2000; ++index)
            list->push_back(make(index));
        kept = (*list)[1500];
        other->setSubmatches(std::move(list));
    }
    EXPECT_EQ(kept->range(), (NSRange{1500, 1}));
    // The fixture's parent, and the one that was kept.
    EXPECT_EQ(pool->livePieces(), 2u);
}
