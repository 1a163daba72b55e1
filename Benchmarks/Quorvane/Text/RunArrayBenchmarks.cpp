// What an edit of a run array or a line array costs by their size and the place of the edit, beside the plain
// way of keeping places: an array of runs, each of which knows where it starts, with all behind the edit
// added to. The plain way does nothing but that, so it is a lower bound of what it would cost.
#include "Quorvane/Text/QVLineRunArray.h"
#include "Quorvane/Text/QVMutableRLEArray.h"

#include <benchmark/benchmark.h>

#include <random>

using namespace quorvane;

namespace {

class Value : public NSObject {};
using Array = QVMutableRLEArray<std::shared_ptr<Value>>;

const std::shared_ptr<Value> values[] = {std::make_shared<Value>(), std::make_shared<Value>(), nullptr};

enum Place : std::int64_t { Front, Middle, End, Random };

/// An array of runs of four slots.
std::shared_ptr<Array> makeArray(NSUInteger count) {
    auto array = Array::init();
    for (NSUInteger i = 0; i < count; ++i)
        array->insertObject(values[i & 1], {array->count(), 4});
    return array;
}

std::u16string makeText(NSUInteger lines) {
    std::u16string text;
    for (NSUInteger i = 0; i < lines; ++i)
        text += u"a line of code;\n";
    return text;
}

/// Answers where the next edit goes among that many slots, always inside of a run of the size.
class Places {
public:
    Places(std::int64_t place, NSUInteger size, NSUInteger runs) : _place(place), _size(size), _runs(runs) {}
    NSUInteger next() {
        switch (_place) {
        case Front:
            return 1;
        case Middle:
            return _runs / 2 * _size + 1;
        case End:
            return (_runs - 1) * _size + 1;
        default:
            return _random() % _runs * _size + 1;
        }
    }

private:
    std::int64_t _place;
    NSUInteger _size;
    NSUInteger _runs;
    std::mt19937_64 _random{7};
};

void sizesAndPlaces(benchmark::internal::Benchmark *benchmark) {
    benchmark->ArgNames({"runs", "place"});
    for (const std::int64_t runs : {1000, 10'000, 100'000, 1'000'000, 2'000'000})
        for (const std::int64_t place : {Front, Middle, End, Random})
            benchmark->Args({runs, place});
}

/// The plain way: two additions to each run behind the edit, one up and one down.
void plainAddToAll(benchmark::State &state) {
    struct Run {
        NSUInteger location;
        NSUInteger length;
        std::shared_ptr<Value> value;
    };
    const auto count = static_cast<NSUInteger>(state.range(0));
    std::vector<Run> runs(count);
    for (NSUInteger i = 0; i < count; ++i)
        runs[i] = {i * 4, 4, values[i & 1]};
    Places places(state.range(1), 4, count);
    for (auto _ : state) {
        const NSUInteger index = places.next() / 4;
        for (const NSUInteger change : {NSUInteger(1), NSUInteger(0) - 1}) {
            runs[index].length += change;
            for (NSUInteger i = index + 1; i < count; ++i)
                runs[i].location += change;
            benchmark::DoNotOptimize(runs.data());
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(plainAddToAll)->Apply(sizesAndPlaces);

/// Typing and deleting one character: a run gets longer and shorter.
void typeIntoARun(benchmark::State &state) {
    const auto array = makeArray(static_cast<NSUInteger>(state.range(0)));
    Places places(state.range(1), 4, static_cast<NSUInteger>(state.range(0)));
    for (auto _ : state) {
        const NSUInteger at = places.next();
        array->insertObject(array->objectAtIndex(at), {at, 1});
        array->deleteObjectsInRange({at, 1});
    }
    state.SetItemsProcessed(state.iterations() * 2);
    state.counters["bytes/run"] = static_cast<double>(array->bytes()) / static_cast<double>(state.range(0));
}
BENCHMARK(typeIntoARun)->Apply(sizesAndPlaces);

/// A run is split by a new one, which goes again.
void splitARun(benchmark::State &state) {
    const auto array = makeArray(static_cast<NSUInteger>(state.range(0)));
    Places places(state.range(1), 4, static_cast<NSUInteger>(state.range(0)));
    for (auto _ : state) {
        const NSUInteger at = places.next();
        array->insertObject(nullptr, {at, 1});
        array->deleteObjectsInRange({at, 1});
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(splitARun)->Apply(sizesAndPlaces);

/// What new colours do: a stretch keeps its length and gets another value.
void recolour(benchmark::State &state) {
    const auto array = makeArray(static_cast<NSUInteger>(state.range(0)));
    Places places(state.range(1), 4, static_cast<NSUInteger>(state.range(0)));
    for (auto _ : state) {
        const NSUInteger at = places.next();
        const auto value = array->objectAtIndex(at);
        array->replaceObjectsInRange({at, 2}, nullptr, 2);
        array->replaceObjectsInRange({at, 2}, value, 2);
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(recolour)->Apply(sizesAndPlaces);

/// The peer of a look-up: a binary search in an array of places.
void plainLookUp(benchmark::State &state) {
    const auto count = static_cast<NSUInteger>(state.range(0));
    std::vector<NSUInteger> locations(count);
    for (NSUInteger i = 0; i < count; ++i)
        locations[i] = i * 4;
    Places places(Random, 4, count);
    for (auto _ : state)
        benchmark::DoNotOptimize(std::upper_bound(locations.begin(), locations.end(), places.next()));
}
BENCHMARK(plainLookUp)->ArgName("runs")->Arg(1000)->Arg(100'000)->Arg(2'000'000);

void lookUp(benchmark::State &state) {
    const auto array = makeArray(static_cast<NSUInteger>(state.range(0)));
    // Leaves a shift pending in the middle.
    array->insertObject(nullptr, {static_cast<NSUInteger>(state.range(0)) * 2 + 1, 1});
    Places places(Random, 4, static_cast<NSUInteger>(state.range(0)));
    for (auto _ : state) {
        NSRange range;
        benchmark::DoNotOptimize(array->objectAtIndex(places.next(), &range).get());
        benchmark::DoNotOptimize(range);
    }
}
BENCHMARK(lookUp)->ArgName("runs")->Arg(1000)->Arg(100'000)->Arg(2'000'000);

/// The peer of an enumeration: a walk over an array of runs, with the same kind of callback.
void plainWalk(benchmark::State &state) {
    struct Run {
        NSRange range;
        std::shared_ptr<Value> value;
    };
    const auto count = static_cast<NSUInteger>(state.range(0));
    std::vector<Run> runs(count);
    for (NSUInteger i = 0; i < count; ++i)
        runs[i] = {{i * 4, 4}, values[i & 1]};
    NSUInteger sum = 0;
    const auto callback = [&](const std::shared_ptr<Value> &value, NSRange range, bool &) {
        sum += value ? range.length : 0;
    };
    const Array::EnumerationBlock block = callback;
    for (auto _ : state) {
        bool stop = false;
        for (const Run &run : runs) {
            block(run.value, run.range, stop);
            if (stop)
                break;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(plainWalk)->ArgName("runs")->Arg(1000)->Arg(2'000'000);

void enumerate(benchmark::State &state) {
    const auto array = makeArray(static_cast<NSUInteger>(state.range(0)));
    NSUInteger sum = 0;
    for (auto _ : state) {
        array->enumerateObjectsInRange({0, array->count()},
                                       [&](const std::shared_ptr<Value> &value, NSRange range, bool &) {
                                           sum += value ? range.length : 0;
                                       });
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(enumerate)->ArgName("runs")->Arg(1000)->Arg(2'000'000);

// MARK: - Lines

void linesAndPlaces(benchmark::internal::Benchmark *benchmark) {
    benchmark->ArgNames({"lines", "place"});
    for (const std::int64_t lines : {1000, 10'000, 100'000, 1'000'000})
        for (const std::int64_t place : {Front, Middle, End, Random})
            benchmark->Args({lines, place});
}

std::shared_ptr<QVLineRunArray> makeLines(std::int64_t count) {
    auto lines = QVLineRunArray::init();
    lines->replaceCharactersInRange({0, 0}, makeText(static_cast<NSUInteger>(count)));
    return lines;
}

/// One character typed inside of a line and deleted again.
void typeIntoALine(benchmark::State &state) {
    const auto lines = makeLines(state.range(0));
    Places places(state.range(1), 16, static_cast<NSUInteger>(state.range(0)));
    for (auto _ : state) {
        const NSUInteger at = places.next();
        lines->replaceCharactersInRange({at, 0}, u"x");
        lines->replaceCharactersInRange({at, 1}, u"");
    }
    state.SetItemsProcessed(state.iterations() * 2);
    state.counters["bytes/line"] = static_cast<double>(lines->bytes()) / static_cast<double>(state.range(0));
}
BENCHMARK(typeIntoALine)->Apply(linesAndPlaces);

/// A line broken in two and joined again.
void breakALine(benchmark::State &state) {
    const auto lines = makeLines(state.range(0));
    Places places(state.range(1), 16, static_cast<NSUInteger>(state.range(0)));
    for (auto _ : state) {
        const NSUInteger at = places.next();
        lines->replaceCharactersInRange({at, 0}, u"\n");
        lines->replaceCharactersInRange({at, 1}, u"");
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(breakALine)->Apply(linesAndPlaces);

void findALine(benchmark::State &state) {
    const auto lines = makeLines(state.range(0));
    Places places(Random, 16, static_cast<NSUInteger>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(lines->lineForCharacterIndex(places.next()).range());
}
BENCHMARK(findALine)->ArgName("lines")->Arg(1000)->Arg(1'000'000);

/// The lower bound of making lines: looking at each unit for the two that end one.
void countTerminators(benchmark::State &state) {
    const std::u16string text = makeText(static_cast<NSUInteger>(state.range(0)));
    for (auto _ : state) {
        NSUInteger count = 0;
        for (const char16_t unit : text)
            count += unit == u'\n' || unit == u'\r';
        benchmark::DoNotOptimize(count);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(countTerminators)->ArgName("lines")->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void makeLinesOfAText(benchmark::State &state) {
    const std::u16string text = makeText(static_cast<NSUInteger>(state.range(0)));
    for (auto _ : state) {
        QVLineRunArray lines;
        lines.replaceCharactersInRange({0, 0}, text);
        benchmark::DoNotOptimize(lines.numberOfLines());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(makeLinesOfAText)->ArgName("lines")->Arg(1'000'000)->Unit(benchmark::kMillisecond);

} // namespace
