// What one edit costs a tree, by the tree's size and the edit's place. Each number stands beside the plain
// way in the same run:
//
//   shift/NODES/PLACE    moving all that stands behind a match; `walk_to` is the walk over all of it, as a
//                        multiple
//   child/COUNT/PLACE    a child that comes and goes; `array_to` is the same in one array, as a multiple
//   read/NODES           asking each match of a tree for its places; `to_absolute` beside a tree that keeps
//                        them absolute
//   take-in/NODES        bringing a new tree's places in order, `to_links` beside linking it
#include "Benchmarks/Support/Timing.h"
#include "Quorvane/Matches/QVMatchPositions.h"
#include "Quorvane/Matches/QVScopeMatch.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Scopes/QVScope.h"

#include <map>

using namespace quorvane;
using namespace quorvane::benchmarks;

namespace {

enum Place { Front, Middle, End };

const QVScope *scopeOfType(QVScopeType type) {
    static std::map<QVScopeType, std::shared_ptr<QVScope>> scopes;
    auto &scope = scopes[type];
    if (!scope)
        scope = QVScope::scopeWithType(type, nullptr, u"benchmark", nullptr, nullptr);
    return scope.get();
}

/// Lines of regions with leaves, some of the regions in regions, as in a program.
class Tree {
public:
    Tree(NSUInteger nodes, bool hasPositions) {
        auto list = std::make_unique<QVScopeMatchArray>();
        while (_nodes < nodes)
            list->push_back(makeRegion(0));
        _root->setSubmatches(std::move(list));
        if (hasPositions)
            _pool->positions().setRoot(_root.get());
    }

    QVScopeMatch *root() const { return _root.get(); }
    QVMatchPool &pool() const { return *_pool; }

    /// A leaf there.
    QVScopeMatch *matchAt(Place place) const {
        const QVSubmatches lines = _root->submatches();
        const NSUInteger last = lines.count() - 1;
        return lines[place == Front    ? 0
                     : place == Middle ? last / 2
                                       : last - 1]
            ->deepestFirstChild()
            ->asScopeMatch();
    }

private:
    QVScopeMatchReference makeLeaf() {
        auto leaf = QVScopeMatch::initWithScope(scopeOfType(QVScopeTypeMatch), *_pool);
        leaf->setRange({_location, 4});
        _location += 4;
        ++_nodes;
        return leaf;
    }
    QVScopeMatchReference makeRegion(int depth) {
        auto region = QVScopeMatch::initWithScope(scopeOfType(QVScopeTypeStartEnd), *_pool);
        region->setRange({_location, 1});
        ++_location;
        ++_nodes;
        auto list = std::make_unique<QVScopeMatchArray>();
        for (int child = 0; child < 12; ++child)
            list->push_back(child % 5 == 4 && depth < 2 ? makeRegion(depth + 1) : makeLeaf());
        region->setSubmatches(std::move(list));
        region->setEndRange({_location, 1});
        ++_location;
        return region;
    }

    const QVMatchPool::Owner _pool = QVMatchPool::create();
    NSUInteger _location = 1000;
    NSUInteger _nodes = 0;
    QVScopeMatchReference _root = QVScopeMatch::initWithScope(scopeOfType(QVScopeTypeRoot), *_pool);
};

/// Trees are kept, as the larger ones take long to make.
const Tree &treeOf(NSUInteger nodes, bool hasPositions) {
    static std::map<std::pair<NSUInteger, bool>, std::unique_ptr<Tree>> trees;
    auto &tree = trees[{nodes, hasPositions}];
    if (!tree)
        tree = std::make_unique<Tree>(nodes, hasPositions);
    return *tree;
}

void shift(benchmark::State &state) {
    static constexpr int rounds = 1000;
    const auto nodes = static_cast<NSUInteger>(state.range(0));
    const auto place = static_cast<Place>(state.range(1));
    QVScopeMatch *const late = treeOf(nodes, true).matchAt(place);
    QVScopeMatch *const plain = treeOf(nodes, false).matchAt(place);
    double lateSeconds = 0;
    double walkSeconds = 0;
    for (auto _ : state) {
        const double seconds = secondsOf([&] {
                                   for (int round = 0; round < rounds; ++round)
                                       QVParse::bumpRangesBy(round % 2 ? -1 : 1, late);
                               }) /
                               rounds;
        state.SetIterationTime(seconds);
        lateSeconds += seconds;
        walkSeconds += secondsOf([&] {
                           QVParse::bumpRangesBy(1, plain);
                           QVParse::bumpRangesBy(-1, plain);
                       }) /
                       2;
    }
    state.counters["walk_to"] = walkSeconds / lateSeconds;
}

void child(benchmark::State &state) {
    static constexpr int rounds = 20;
    const auto count = static_cast<NSUInteger>(state.range(0));
    const auto place = static_cast<Place>(state.range(1));
    const auto pool = QVMatchPool::create();
    const auto root = QVScopeMatch::initWithScope(scopeOfType(QVScopeTypeRoot), *pool);
    auto list = std::make_unique<QVScopeMatchArray>();
    for (NSUInteger index = 0; index < count; ++index) {
        list->push_back(QVScopeMatch::initWithScope(scopeOfType(QVScopeTypeMatch), *pool));
        list->back()->setRange({index, 1});
    }
    QVScopeMatchArray array = *list;
    root->setSubmatches(std::move(list));
    pool->positions().setRoot(root.get());
    const NSUInteger index = place == Front ? 0 : place == Middle ? count / 2 : count;
    const auto one = QVScopeMatch::initWithScope(scopeOfType(QVScopeTypeMatch), *pool);
    one->setRange({index, 0});
    double treeSeconds = 0;
    double arraySeconds = 0;
    for (auto _ : state) {
        const double seconds = secondsOf([&] {
                                   for (int round = 0; round < rounds; ++round) {
                                       root->insertSubmatch(one, index);
                                       root->removeSubmatchAtIndex(root->indexOfSubmatch(one.get()));
                                   }
                               }) /
                               rounds;
        state.SetIterationTime(seconds);
        treeSeconds += seconds;
        arraySeconds += secondsOf([&] {
            const auto at = array.begin() + static_cast<std::ptrdiff_t>(index);
            array.erase(array.insert(at, one));
        });
    }
    state.counters["array_to"] = arraySeconds / treeSeconds;
}

NSUInteger sumOfPlaces(const QVScopeMatch *match) {
    NSUInteger sum = 0;
    for (; match != nullptr; match = QVScopeMatch::directNextMatch(match))
        sum += QVMatch::directRange(match).location + QVScopeMatch::directEndRange(match).length;
    return sum;
}

void read(benchmark::State &state) {
    const auto nodes = static_cast<NSUInteger>(state.range(0));
    double late = 0;
    double absolute = 0;
    for (auto _ : state) {
        const double seconds =
            secondsOf([&] { benchmark::DoNotOptimize(sumOfPlaces(treeOf(nodes, true).root())); });
        state.SetIterationTime(seconds);
        late += seconds;
        absolute += secondsOf([&] { benchmark::DoNotOptimize(sumOfPlaces(treeOf(nodes, false).root())); });
    }
    state.counters["to_absolute"] = late / absolute;
}

void takeIn(benchmark::State &state) {
    const auto nodes = static_cast<NSUInteger>(state.range(0));
    double links = 0;
    double positions = 0;
    for (auto _ : state) {
        std::unique_ptr<Tree> tree;
        links += secondsOf([&] { tree = std::make_unique<Tree>(nodes, false); });
        const double seconds = secondsOf([&] { tree->pool().positions().setRoot(tree->root()); });
        state.SetIterationTime(seconds);
        positions += seconds;
    }
    state.counters["to_links"] = positions / links;
}

const std::vector<std::int64_t> sizes{10'000, 100'000, 1'000'000, 2'000'000};

BENCHMARK(shift)
    ->ArgsProduct({sizes, {Front, Middle, End}})
    ->ArgNames({"nodes", "place"})
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond)
    ->Iterations(20);
BENCHMARK(child)
    ->ArgsProduct({sizes, {Front, Middle, End}})
    ->ArgNames({"count", "place"})
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond)
    ->Iterations(100);
BENCHMARK(read)->ArgsProduct({sizes})->ArgNames({"nodes"})->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(takeIn)
    ->ArgsProduct({sizes})
    ->ArgNames({"nodes"})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

} // namespace
