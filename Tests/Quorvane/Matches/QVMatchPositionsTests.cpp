// Trees whose places are moved late, held against twins that stay absolute and are moved by a plain walk.
#include "Quorvane/Matches/QVMatchPositions.h"

#include "Platform/Foundation/NSIndexSet.h"
#include "Tests/Quorvane/Matches/MatchFixtures.h"

#include <random>
#include <thread>

using namespace quorvane;
using namespace quorvane::test;

namespace {

const std::shared_ptr<QVScope> &rootScope() {
    static const auto scope = scopeOfType(QVScopeTypeRoot, u"root");
    return scope;
}
const std::shared_ptr<QVScope> &leafScope() {
    static const auto scope = [] {
        auto made = scopeOfType(QVScopeTypeMatch, u"leaf");
        made->setCaptures({captureOfGroup(1)});
        return made;
    }();
    return scope;
}
const std::shared_ptr<QVScope> &regionScope() {
    static const auto scope = [] {
        auto made = scopeOfType(QVScopeTypeStartEnd, u"comment");
        made->setCaptures({captureOfGroup(1)});
        made->setEndCaptures({captureOfGroup(1)});
        return made;
    }();
    return scope;
}

std::unique_ptr<QVCaptureMatchArray> capturesAt(std::initializer_list<NSUInteger> locations) {
    static const auto capture = captureOfGroup(1);
    auto captures = std::make_unique<QVCaptureMatchArray>();
    for (const NSUInteger location : locations) {
        captures->push_back(QVCaptureMatch::initWithCapture(capture.get()));
        captures->back()->setRange({location, 1});
    }
    return captures;
}

QVScopeMatchReference leafAt(NSUInteger location) {
    auto match = QVScopeMatch::initWithScope(leafScope().get());
    match->setRange({location, 1});
    return match;
}

/// A region from 0 to 100 with two leaves: the tree of the small examples.
///
///     leaf 2      with a capture at 2
///     region 10   with a capture at 11, ending at 30 with an end capture at 31
///         leaf 14
///         leaf 20
///     leaf 40
class Small : public testing::Test {
protected:
    Small() {
        root->insertSubmatch(leafAt(2), 0);
        root->firstChild()->setCaptureMatches(capturesAt({2}));
        const auto region = QVScopeMatch::initWithScope(regionScope().get());
        region->setRange({10, 2});
        region->setCaptureMatches(capturesAt({11}));
        region->insertSubmatch(leafAt(14), 0);
        region->insertSubmatch(leafAt(20), 1);
        region->setEndRange({30, 2});
        region->setEndCaptureMatches(capturesAt({31}));
        root->insertSubmatch(region, 1);
        root->insertSubmatch(leafAt(40), 2);
        positions.setRoot(root.get());
    }

    QVScopeMatch *first() const { return root->submatches()[0]; }
    QVScopeMatch *region() const { return root->submatches()[1]; }
    QVScopeMatch *last() const { return root->submatches()[2]; }

    std::string text() const {
        std::string result;
        for (const QVScopeMatch *match = root->firstChild(); match != nullptr;
             match = QVScopeMatch::directNextMatch(match)) {
            result += (result.empty() ? "" : " ") + std::to_string(match->range().location);
            const auto add = [&](const QVCaptureMatchArray *captures) {
                if (captures != nullptr)
                    for (const auto &capture : *captures)
                        result += "(" + std::to_string(capture->range().location) + ")";
            };
            add(match->captureMatches());
            if (match->endRange().location != NSNotFound)
                result += "-" + std::to_string(match->endRange().location);
            add(match->endCaptureMatches());
        }
        EXPECT_EQ(positions.problem(), nullptr);
        return result;
    }

    QVMatchPositions positions{2, 2};
    QVScopeMatchReference root = QVScopeMatch::initWithScope(rootScope().get());
};

} // namespace

TEST_F(Small, TakingATreeInChangesNoPlace) {
    EXPECT_EQ(text(), "2(2) 10(11)-30(31) 14 20 40");
    // Six places, two to a chunk.
    EXPECT_EQ(positions.chunkCount(), 3u);
    EXPECT_EQ(QVMatchPositions::positionsOf(first()), &positions);
    EXPECT_EQ(QVMatchPositions::positionsOf(leafAt(1).get()), nullptr);
}

TEST_F(Small, WhatStandsBehindAMatchIsMovedAndTheEndsAroundItToo) {
    positions.shiftBehindMatch(region()->firstChild(), 5);
    EXPECT_EQ(text(), "2(2) 10(11)-35(36) 14 25 45");
    positions.shiftBehindMatch(first(), 100);
    EXPECT_EQ(text(), "2(2) 110(111)-135(136) 114 125 145");
    positions.shiftBehindMatch(region(), -105);
    EXPECT_EQ(text(), "2(2) 110(111)-135(136) 114 125 40");
}

TEST_F(Small, NothingIsMovedBehindTheLastMatchTheRootOrByNothing) {
    positions.shiftBehindMatch(last(), 5);
    positions.shiftBehindMatch(root.get(), 5);
    positions.shiftBehindMatch(first(), 0);
    EXPECT_EQ(text(), "2(2) 10(11)-30(31) 14 20 40");
}

TEST_F(Small, WhatHasNoPlaceIsNotMoved) {
    last()->setRange(NSNotFoundRange);
    region()->setEndRange(NSNotFoundRange);
    region()->setEndCaptureMatches(nullptr);
    positions.shiftBehindMatch(first(), 5);
    EXPECT_EQ(last()->range(), NSNotFoundRange);
    EXPECT_EQ(region()->endRange(), NSNotFoundRange);
    last()->setRange({50, 1});
    region()->setEndRange({40, 0});
    EXPECT_EQ(text(), "2(2) 15(16)-40 19 25 50");
}

TEST_F(Small, TheRootsOwnEndStaysWhereItIs) {
    root->setEndRange({60, 0});
    positions.shiftBehindMatch(first(), 5);
    EXPECT_EQ(root->endRange(), (NSRange{60, 0}));
}

TEST_F(Small, MarkedMatchesStayAndTheirDescendantsMove) {
    region()->setSkipForBumping(true);
    positions.shiftBehindMatch(first(), 5);
    EXPECT_EQ(text(), "2(2) 10(11)-30(31) 19 25 45");
    // As an ancestor, too.
    positions.shiftBehindMatch(region()->firstChild(), 1);
    EXPECT_EQ(text(), "2(2) 10(11)-30(31) 19 26 46");
    region()->setSkipForBumping(false);
    positions.shiftBehindMatch(first(), 5);
    EXPECT_EQ(text(), "2(2) 15(16)-35(36) 24 31 51");
}

TEST_F(Small, AMarkComesAndGoesWithItsMatch) {
    const auto marked = leafAt(35);
    marked->setSkipForBumping(true);
    root->insertSubmatch(marked, 2);
    positions.shiftBehindMatch(region(), 5);
    EXPECT_EQ(text(), "2(2) 10(11)-30(31) 14 20 35 45");
    root->removeSubmatchAtIndex(2);
    positions.shiftBehindMatch(region(), 5);
    EXPECT_EQ(marked->range().location, 35u);
    EXPECT_EQ(text(), "2(2) 10(11)-30(31) 14 20 50");
    root->insertSubmatch(marked, 2);
    root->setSubmatches(nullptr);
    EXPECT_EQ(positions.chunkCount(), 0u);
}

TEST_F(Small, WhatIsTakenOutKeepsItsPlaceAndIsMovedNoMore) {
    positions.shiftBehindMatch(first(), 5);
    const QVScopeMatchReference taken = region();
    root->removeSubmatchAtIndex(1);
    positions.shiftBehindMatch(first(), 100);
    EXPECT_EQ(taken->range().location, 15u);
    EXPECT_EQ(taken->endRange().location, 35u);
    EXPECT_EQ(taken->lastChild()->range().location, 25u);
    EXPECT_EQ(taken->captureMatches()->front()->range().location, 16u);
    EXPECT_EQ(taken->endCaptureMatches()->front()->range().location, 36u);
    EXPECT_EQ(QVMatchPositions::positionsOf(taken->lastChild()), nullptr);
    EXPECT_EQ(text(), "2(2) 145");
    root->insertSubmatch(taken, 1);
    EXPECT_EQ(text(), "2(2) 15(16)-35(36) 19 25 145");
}

TEST_F(Small, WhatSomebodyHoldsOutlivesTheTreeWithItsPlace) {
    positions.shiftBehindMatch(first(), 5);
    const QVScopeMatchReference leaf = region()->lastChild();
    const boost::intrusive_ptr<QVCaptureMatch> capture = region()->endCaptureMatches()->front();
    root->setSubmatches(nullptr);
    EXPECT_EQ(positions.chunkCount(), 0u);
    EXPECT_EQ(positions.groupCount(), 0u);
    EXPECT_EQ(leaf->range().location, 25u);
    EXPECT_EQ(capture->range().location, 36u);
    root = nullptr;
    EXPECT_EQ(leaf->range().location, 25u);
    EXPECT_EQ(positions.problem(), nullptr);
}

TEST_F(Small, CapturesThatAreHandedOverKeepTheirPlaces) {
    positions.shiftBehindMatch(first(), 5);
    auto captures = region()->takeCaptureMatches();
    EXPECT_EQ(captures->front()->range().location, 16u);
    last()->setCaptureMatches(std::move(captures));
    EXPECT_EQ(text(), "2(2) 15-35(36) 19 25 45(16)");
    const boost::intrusive_ptr<QVCaptureMatch> replaced = last()->captureMatches()->front();
    last()->setCaptureMatches(capturesAt({46}));
    positions.shiftBehindMatch(first(), 1);
    EXPECT_EQ(replaced->range().location, 16u);
    EXPECT_EQ(text(), "2(2) 16-36(37) 20 26 46(47)");
}

TEST(QVMatchPositions, OfAPoolLiveWithItsTree) {
    QVScopeMatchReference kept;
    {
        const auto pool = QVMatchPool::create();
        const auto root = QVScopeMatch::initWithScope(rootScope().get(), *pool);
        pool->positions().setRoot(root.get());
        for (NSUInteger index = 0; index < 200; ++index) {
            auto leaf = QVScopeMatch::initWithScope(leafScope().get(), *pool);
            leaf->setRange({index, 1});
            root->insertSubmatch(std::move(leaf), index);
        }
        pool->positions().shiftBehindMatch(root->firstChild(), 1000);
        kept = root->lastChild();
    }
    EXPECT_EQ(kept->range().location, 1199u);
}

TEST(QVMatchPositions, AreReadByManyThreadsAtOnce) {
    QVMatchPositions positions(3, 2);
    const auto root = QVScopeMatch::initWithScope(rootScope().get());
    positions.setRoot(root.get());
    for (NSUInteger index = 0; index < 100; ++index)
        root->insertSubmatch(leafAt(index), index);
    positions.shiftBehindMatch(root->submatches()[49], 1000);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            NSUInteger index = 0;
            for (const QVScopeMatch *const child : root->submatches()) {
                EXPECT_EQ(child->range().location, index < 50 ? index : index + 1000);
                EXPECT_EQ(root->indexOfSubmatch(child), index);
                ++index;
            }
        });
    for (std::thread &thread : threads)
        thread.join();
}

TEST(QVMatchPositions, ChunksAreFilledOneAfterAnotherAndJoinedAsTheyEmpty) {
    QVMatchPositions positions(64, 4);
    const auto root = QVScopeMatch::initWithScope(rootScope().get());
    positions.setRoot(root.get());
    auto leaves = std::make_unique<QVScopeMatchArray>();
    for (NSUInteger index = 0; index < 6400; ++index)
        leaves->push_back(leafAt(index));
    root->setSubmatches(std::move(leaves));
    EXPECT_EQ(positions.chunkCount(), 100u);
    // Groups are cut when they have more than eight, and keep four.
    EXPECT_LE(positions.groupCount(), 25u);
    EXPECT_GE(positions.groupCount(), 12u);
    // Each second one goes: what is left of neighbours comes together.
    NSIndexSet odd;
    for (NSUInteger index = 1; index < 6400; index += 2)
        odd.addIndex(index);
    root->removeSubmatchesAtIndexes(odd);
    EXPECT_EQ(positions.problem(), nullptr);
    EXPECT_LE(positions.chunkCount(), 100u);
    // Nearly all of them go, one by one.
    while (root->submatches().count() > 10)
        root->removeSubmatchAtIndex(root->submatches().count() / 2);
    EXPECT_EQ(positions.problem(), nullptr);
    EXPECT_LE(positions.chunkCount(), 2u);
    EXPECT_EQ(positions.groupCount(), 1u);
}

namespace {

/// Two trees under the same edits: one with positions, one without, which is moved by a walk.
class Twins {
public:
    Twins(unsigned seed, std::uint32_t chunkSize, std::uint32_t groupSize)
        : _random(seed), _positions(chunkSize, groupSize) {
        _positions.setRoot(_late.get());
    }
    ~Twins() {
        // Held matches must not need the tree.
        _late->setSubmatches(nullptr);
        EXPECT_EQ(_positions.chunkCount(), 0u);
    }

    void step() {
        switch (below(12)) {
        case 0:
        case 1:
        case 2:
            insert(1 + below(below(8) == 0 ? 40 : 4));
            break;
        case 3:
        case 4:
            removeRun();
            break;
        case 5:
            replaceSubmatches();
            break;
        case 6:
            setPlaces();
            break;
        case 7:
            setCaptures();
            break;
        case 8:
            mark();
            break;
        default:
            shift();
        }
    }

    void check() {
        ASSERT_EQ(_positions.problem(), nullptr);
        compareTrees(_late.get(), _plain.get());
        for (const auto &[late, plain] : _held)
            compareTrees(late.get(), plain.get());
    }

private:
    using Pair = std::pair<QVScopeMatch *, QVScopeMatch *>;

    std::size_t below(std::size_t bound) { return _random() % bound; }
    /// Starts stand far before ends, so that no order of steps puts one behind the other.
    NSUInteger somePlace() { return 1'000'000 + below(1000); }
    NSUInteger someEnd() { return 2'000'000'000 + below(1000); }

    /// A leaf or a region with descendants, twice.
    std::pair<QVScopeMatchReference, QVScopeMatchReference> makeTwins(int depth) {
        const bool isRegion = depth < 6 && below(3) == 0;
        const QVScope *const scope = isRegion ? regionScope().get() : leafScope().get();
        auto late = QVScopeMatch::initWithScope(scope);
        auto plain = QVScopeMatch::initWithScope(scope);
        setPlaces(late.get(), plain.get());
        setCaptures(late.get(), plain.get());
        if (isRegion) {
            auto lateList = std::make_unique<QVScopeMatchArray>();
            auto plainList = std::make_unique<QVScopeMatchArray>();
            for (std::size_t count = below(6); count > 0; --count) {
                auto [lateChild, plainChild] = makeTwins(depth + 1);
                lateList->push_back(std::move(lateChild));
                plainList->push_back(std::move(plainChild));
            }
            late->setSubmatches(std::move(lateList));
            plain->setSubmatches(std::move(plainList));
        }
        return {std::move(late), std::move(plain)};
    }

    std::vector<Pair> all(bool containers) {
        std::vector<Pair> pairs;
        QVScopeMatch *plain = _plain.get();
        for (QVScopeMatch *late = _late.get(); late != nullptr;
             late = QVScopeMatch::directNextMatch(late), plain = QVScopeMatch::directNextMatch(plain))
            if (!containers || late->hasSubmatches())
                pairs.emplace_back(late, plain);
        return pairs;
    }
    Pair some(bool container) {
        const std::vector<Pair> pairs = all(container);
        return pairs[below(pairs.size())];
    }

    void insert(std::size_t count) {
        const auto [late, plain] = some(true);
        QVScopeMatchArray lateRun;
        QVScopeMatchArray plainRun;
        for (; count > 0; --count) {
            auto [lateMatch, plainMatch] = makeTwins(1);
            lateRun.push_back(std::move(lateMatch));
            plainRun.push_back(std::move(plainMatch));
        }
        const NSUInteger index = below(late->submatches().count() + 1);
        const auto indexes = NSIndexSet::indexSetWithIndexesInRange({index, lateRun.size()});
        late->insertSubmatches(lateRun, indexes);
        plain->insertSubmatches(plainRun, indexes);
    }

    /// Some descendant of what is about to die.
    void holdOneOf(QVScopeMatch *late, QVScopeMatch *plain) {
        for (std::size_t steps = below(4); steps > 0 && late->firstChild() != nullptr; --steps) {
            late = late->lastChild();
            plain = plain->lastChild();
        }
        _held.emplace_back(late, plain);
        if (_held.size() > 20)
            _held.erase(_held.begin());
    }

    void removeRun() {
        const auto [late, plain] = some(true);
        const NSUInteger count = late->submatches().count();
        if (count == 0)
            return;
        const NSUInteger first = below(count);
        const NSUInteger length = 1 + below(std::min<NSUInteger>(count - first, 1 + below(12)));
        if (below(3) == 0)
            holdOneOf(late->submatches()[first], plain->submatches()[first]);
        const auto indexes = NSIndexSet::indexSetWithIndexesInRange({first, length});
        late->removeSubmatchesAtIndexes(indexes);
        plain->removeSubmatchesAtIndexes(indexes);
    }

    void replaceSubmatches() {
        const auto [late, plain] = some(true);
        if (late == _late.get() && below(4) != 0)
            return;
        if (late->firstChild() != nullptr)
            holdOneOf(late->firstChild(), plain->firstChild());
        auto lateList = std::make_unique<QVScopeMatchArray>();
        auto plainList = std::make_unique<QVScopeMatchArray>();
        for (std::size_t count = below(8); count > 0; --count) {
            auto [lateMatch, plainMatch] = makeTwins(2);
            lateList->push_back(std::move(lateMatch));
            plainList->push_back(std::move(plainMatch));
        }
        late->setSubmatches(std::move(lateList));
        plain->setSubmatches(std::move(plainList));
    }

    void setPlaces(QVScopeMatch *late, QVScopeMatch *plain) {
        const NSRange range = below(10) == 0 ? NSNotFoundRange : NSRange{somePlace(), below(5)};
        late->setRange(range);
        plain->setRange(range);
        if (!late->hasSubmatches())
            return;
        const NSRange end = below(4) == 0 ? NSNotFoundRange : NSRange{someEnd(), below(3)};
        late->setEndRange(end);
        plain->setEndRange(end);
    }
    void setPlaces() {
        const auto [late, plain] = some(false);
        if (late != _late.get())
            setPlaces(late, plain);
    }

    void setCaptures(QVScopeMatch *late, QVScopeMatch *plain) {
        if (below(3) != 0)
            return;
        const NSUInteger place = somePlace();
        late->setCaptureMatches(capturesAt({place, place + 2}));
        plain->setCaptureMatches(capturesAt({place, place + 2}));
        if (late->hasSubmatches() && below(2) == 0) {
            // As a region takes over what its end marker had.
            late->setEndCaptureMatches(late->takeCaptureMatches());
            plain->setEndCaptureMatches(plain->takeCaptureMatches());
        }
    }
    void setCaptures() {
        const auto [late, plain] = some(false);
        if (late != _late.get())
            setCaptures(late, plain);
    }

    void mark() {
        const auto [late, plain] = some(false);
        const bool skip = below(2) == 0;
        late->setSkipForBumping(skip);
        plain->setSkipForBumping(skip);
    }

    void shift() {
        const auto [late, plain] = some(false);
        // Never below what the places started with.
        const NSInteger delta = static_cast<NSInteger>(below(200)) - (_moved > -400'000 ? 100 : 0);
        _moved += std::min<NSInteger>(delta, 0);
        _positions.shiftBehindMatch(late, delta);
        shiftByWalk(plain, delta);
    }

    static NSRange moved(NSRange range, NSInteger delta) {
        if (range.location != NSNotFound)
            range.location += static_cast<NSUInteger>(delta);
        return range;
    }
    static void moveCaptures(const QVCaptureMatchArray *captures, NSInteger delta) {
        for (std::size_t index = 0; captures != nullptr && index < captures->size(); ++index)
            (*captures)[index]->setRange(moved((*captures)[index]->range(), delta));
    }
    static void moveEnd(QVScopeMatch *match, NSInteger delta) {
        if (match->hasSubmatches())
            match->setEndRange(moved(match->endRange(), delta));
        moveCaptures(match->endCaptureMatches(), delta);
    }
    void shiftByWalk(QVScopeMatch *after, NSInteger delta) {
        for (QVScopeMatch *ancestor = after->parentMatch(); ancestor != nullptr && ancestor != _plain.get();
             ancestor = ancestor->parentMatch())
            if (!ancestor->skipForBumping())
                moveEnd(ancestor, delta);
        const QVMatch *const next = after->nextShallowMatch();
        for (const QVScopeMatch *each = next ? next->asScopeMatch() : nullptr; each != nullptr;
             each = QVScopeMatch::directNextMatch(each)) {
            auto *const match = const_cast<QVScopeMatch *>(each);
            if (match->skipForBumping())
                continue;
            match->setRange(moved(match->range(), delta));
            moveCaptures(match->captureMatches(), delta);
            moveEnd(match, delta);
        }
    }

    static std::vector<NSUInteger> places(const QVCaptureMatchArray *captures) {
        std::vector<NSUInteger> result;
        for (std::size_t index = 0; captures != nullptr && index < captures->size(); ++index)
            result.push_back((*captures)[index]->range().location);
        return result;
    }
    static void compareTrees(const QVScopeMatch *late, const QVScopeMatch *plain) {
        ASSERT_EQ(QVMatch::directRange(late), QVMatch::directRange(plain));
        ASSERT_EQ(late->endRange(), plain->endRange());
        ASSERT_EQ(late->fullRange(), plain->fullRange());
        ASSERT_EQ(places(late->captureMatches()), places(plain->captureMatches()));
        ASSERT_EQ(places(late->endCaptureMatches()), places(plain->endCaptureMatches()));
        ASSERT_EQ(late->submatches().count(), plain->submatches().count());
        for (NSUInteger index = 0; index < late->submatches().count(); ++index)
            compareTrees(late->submatches()[index], plain->submatches()[index]);
    }

    std::mt19937 _random;
    NSInteger _moved = 0;
    QVMatchPositions _positions;
    const QVScopeMatchReference _late = QVScopeMatch::initWithScope(rootScope().get());
    const QVScopeMatchReference _plain = QVScopeMatch::initWithScope(rootScope().get());
    std::vector<std::pair<QVScopeMatchReference, QVScopeMatchReference>> _held;
};

} // namespace

TEST(QVMatchPositions, AnswerWhatAWalkOverATwinWouldHaveStored) {
    const AssertionRecorder assertions;
    for (const auto &[chunkSize, groupSize] : {std::pair(1u, 1u), std::pair(2u, 2u), std::pair(5u, 3u)})
        for (unsigned seed = 1; seed <= 6; ++seed) {
            SCOPED_TRACE("chunks of " + std::to_string(chunkSize) + ", seed " + std::to_string(seed));
            Twins twins(seed, chunkSize, groupSize);
            for (int round = 0; round < 700; ++round) {
                SCOPED_TRACE(round);
                twins.step();
                twins.check();
                if (testing::Test::HasFatalFailure())
                    return;
            }
        }
    EXPECT_TRUE(assertions.messages().empty());
}
