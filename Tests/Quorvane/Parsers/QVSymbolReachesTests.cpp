#include "Quorvane/Parsers/QVSymbolReaches.h"

#include <gtest/gtest.h>

#include <random>

using namespace quorvane;

namespace {

/// The reach of each symbol, none of them in a stretch; symbol and reach both stand at places of the text.
struct Twin {
    std::vector<NSUInteger> reaches;
    QVSymbolReaches stretches;

    void replace(std::size_t index, std::size_t removed, std::size_t added) {
        const auto first = reaches.begin() + static_cast<std::ptrdiff_t>(index);
        reaches.erase(first, first + static_cast<std::ptrdiff_t>(removed));
        reaches.insert(reaches.begin() + static_cast<std::ptrdiff_t>(index), added, 0);
        stretches.replace(index, removed, added);
    }
    void raise(std::size_t index, NSUInteger reach) {
        reaches[index] = std::max(reaches[index], reach);
        stretches.raise(index, reach);
    }
    /// Which symbols in front of an index reach a location, by the stretches; moves all that do.
    std::vector<std::size_t> update(NSUInteger location, NSUInteger distance, std::size_t endIndex) {
        std::vector<std::size_t> found;
        stretches.update(location, distance, endIndex, [&](std::size_t begin, std::size_t end) {
            NSUInteger furthest = 0;
            for (std::size_t index = begin; index < end; ++index) {
                if (index < endIndex && reaches[index] >= location)
                    found.push_back(index);
                const bool moves = reaches[index] != 0 && reaches[index] >= location;
                furthest = std::max(furthest, reaches[index] + (moves ? distance : 0));
            }
            return furthest;
        });
        return found;
    }
    std::vector<std::size_t> updatePlainly(NSUInteger location, NSUInteger distance, std::size_t endIndex) {
        std::vector<std::size_t> found;
        for (std::size_t index = 0; index < reaches.size(); ++index) {
            if (reaches[index] == 0 || reaches[index] < location)
                continue;
            if (index < endIndex)
                found.push_back(index);
            reaches[index] += distance;
        }
        return found;
    }
};

} // namespace

TEST(QVSymbolReaches, FindsWhatReachesAPlaceAndNothingElse) {
    Twin twin;
    twin.replace(0, 0, 10);
    twin.raise(2, 50);
    twin.raise(7, 30);
    EXPECT_EQ(twin.update(31, 0, 10), (std::vector<std::size_t>{2}));
    EXPECT_EQ(twin.update(30, 0, 10), (std::vector<std::size_t>{2, 7}));
    EXPECT_EQ(twin.update(30, 0, 7), (std::vector<std::size_t>{2}));
    EXPECT_EQ(twin.update(51, 0, 10), (std::vector<std::size_t>{}));
}

TEST(QVSymbolReaches, SymbolsWithoutAContextAreNeverLookedAt) {
    QVSymbolReaches reaches;
    reaches.replace(0, 0, 100);
    reaches.update(0, 0, 100, [](std::size_t, std::size_t) -> NSUInteger {
        ADD_FAILURE() << "nothing reaches anywhere";
        return 0;
    });
    EXPECT_EQ(reaches.count(), 100u);
}

TEST(QVSymbolReaches, FindsBehindLongRandomEditsWhatAPlainListFinds) {
    constexpr std::uint32_t seed = 20;
    std::mt19937 random(seed);
    const auto below = [&](std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random);
    };
    Twin twin;
    std::size_t foundCount = 0;
    for (int step = 0; step < 20000; ++step) {
        const std::size_t count = twin.reaches.size();
        switch (below(4)) {
        case 0: {
            const std::size_t index = below(count + 1);
            const std::size_t removed = below(std::min<std::size_t>(count - index, 9) + 1);
            twin.replace(index, removed, below(count > 200 ? 6 : 12));
            break;
        }
        case 1:
            if (count != 0)
                twin.raise(below(count), below(1000));
            break;
        default: {
            const std::size_t endIndex = below(count + 1);
            const NSUInteger location = 1 + below(1000);
            const NSUInteger distance = below(20);
            const auto found = twin.update(location, distance, endIndex);
            ASSERT_EQ(found, twin.updatePlainly(location, distance, endIndex))
                << "seed " << seed << ", step " << step;
            foundCount += found.size();
        }
        }
        ASSERT_EQ(twin.stretches.count(), twin.reaches.size()) << "seed " << seed << ", step " << step;
    }
    EXPECT_GE(foundCount, 10000u);
}
