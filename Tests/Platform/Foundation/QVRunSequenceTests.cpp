#include "Platform/Foundation/QVRunSequence.h"

#include <gtest/gtest.h>

#include <random>

using namespace quorvane;

namespace {

using Sequence = QVRunSequence<int>;

struct NaiveItem {
    NSUInteger location;
    int entry;
    friend bool operator==(const NaiveItem &, const NaiveItem &) = default;
};

std::vector<NaiveItem> itemsOf(const Sequence &sequence) {
    std::vector<NaiveItem> items;
    for (auto at = sequence.begin(); sequence.isValid(at); at = sequence.next(at))
        items.push_back({sequence.location(at), sequence.entry(at)});
    return items;
}

/// So many entries, ten characters apart.
void fill(Sequence &sequence, int count) {
    std::vector<Sequence::Item> items;
    for (int number = 0; number < count; ++number)
        items.push_back({static_cast<NSUInteger>(number) * 10, number});
    sequence.replace(sequence.end(), 0, items, 0);
}

} // namespace

TEST(QVRunSequence, EntriesBehindAChangeAcrossChunksAreMovedByItsDistance) {
    Sequence sequence(4);
    fill(sequence, 20);
    ASSERT_EQ(sequence.chunkCount(), 5u);
    std::vector<Sequence::Item> items{{65, 100}, {66, 101}};
    sequence.replace(sequence.positionOfIndex(7), 2, items, 3);
    EXPECT_TRUE(sequence.isConsistent());
    EXPECT_EQ(sequence.location(sequence.positionOfIndex(6)), 60u);
    EXPECT_EQ(sequence.location(sequence.positionOfIndex(8)), 66u);
    EXPECT_EQ(sequence.location(sequence.positionOfIndex(9)), 93u);
    EXPECT_EQ(sequence.location(sequence.positionOfIndex(19)), 193u);
    EXPECT_EQ(sequence.entry(sequence.positionOfLocation(193)), 19);
}

TEST(QVRunSequence, TakingOutTheFirstChunksMovesTheRest) {
    Sequence sequence(4);
    fill(sequence, 20);
    // A move that is pending far behind comes first.
    sequence.shift(sequence.positionOfIndex(14), 5);
    sequence.replace(sequence.begin(), 8, {}, NSUInteger{0} - 80);
    EXPECT_TRUE(sequence.isConsistent());
    ASSERT_EQ(sequence.count(), 12u);
    EXPECT_EQ(sequence.location(sequence.begin()), 0u);
    EXPECT_EQ(sequence.location(sequence.positionOfIndex(5)), 50u);
    EXPECT_EQ(sequence.location(sequence.positionOfIndex(6)), 65u);
    EXPECT_EQ(sequence.location(sequence.last()), 115u);
}

TEST(QVRunSequence, WhatIsAppendedBehindAMoveStandsWhereItSays) {
    Sequence sequence(4);
    fill(sequence, 8);
    sequence.shift(sequence.positionOfIndex(6), 5);
    std::vector<Sequence::Item> items{{200, 100}, {210, 101}};
    sequence.replace(sequence.end(), 0, items, 0);
    EXPECT_TRUE(sequence.isConsistent());
    EXPECT_EQ(sequence.location(sequence.positionOfIndex(7)), 75u);
    EXPECT_EQ(sequence.location(sequence.positionOfIndex(8)), 200u);
    EXPECT_EQ(sequence.indexOfPosition(sequence.positionOfLocation(210)), 9u);
}

TEST(QVRunSequence, ReplacingWhereTwoChunksMeetLeavesBothAndMovesTheRest) {
    Sequence sequence(8);
    fill(sequence, 32);
    ASSERT_EQ(sequence.chunkCount(), 4u);
    const Sequence::Chunk *const first = &sequence.chunk(1);
    const Sequence::Chunk *const second = &sequence.chunk(2);
    std::vector<Sequence::Item> items{{141, 100}};
    sequence.replace(sequence.positionOfIndex(14), 4, items, 7);
    EXPECT_TRUE(sequence.isConsistent());
    EXPECT_EQ(&sequence.chunk(1), first);
    EXPECT_EQ(&sequence.chunk(2), second);
    ASSERT_EQ(sequence.count(), 29u);
    EXPECT_EQ(sequence.location(sequence.positionOfIndex(14)), 141u);
    EXPECT_EQ(sequence.location(sequence.positionOfIndex(15)), 187u);
    EXPECT_EQ(sequence.location(sequence.last()), 317u);
}

// Two chunks became one and two again with each letter: twenty microseconds for each on 9 MB.
TEST(QVRunSequence, TakingOutAndPuttingInWhereChunksMeetMakesNoChunkAnewEachTime) {
    Sequence sequence(16);
    fill(sequence, 64);
    const auto typeLetter = [&] {
        std::vector<Sequence::Item> items;
        for (int number = 14; number < 18; ++number)
            items.push_back({static_cast<NSUInteger>(number) * 10, number});
        sequence.replace(sequence.positionOfIndex(14), 4, {}, 0);
        sequence.replace(sequence.positionOfIndex(14), 0, items, 0);
    };
    typeLetter();
    std::vector<const Sequence::Chunk *> chunks;
    for (std::size_t index = 0; index < sequence.chunkCount(); ++index)
        chunks.push_back(&sequence.chunk(index));
    for (int turn = 0; turn < 10; ++turn) {
        typeLetter();
        ASSERT_TRUE(sequence.isConsistent());
        ASSERT_EQ(sequence.chunkCount(), chunks.size());
        for (std::size_t index = 0; index < chunks.size(); ++index)
            EXPECT_EQ(&sequence.chunk(index), chunks[index]);
    }
}

TEST(QVRunSequence, AnswersAsAPlainVectorDoesBehindLongRandomChanges) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&](NSUInteger bound) { return bound == 0 ? 0 : random() % bound; };
        Sequence sequence(2 + seed % 7);
        std::vector<NaiveItem> naive;
        int entry = 0;
        for (int turn = 0; turn < 400; ++turn) {
            const NSUInteger index = below(naive.size() + 1);
            // Mostly a few; at times most of what there is, so that chunks go by the dozen.
            const NSUInteger removed =
                below(std::min<NSUInteger>(naive.size() - index, turn % 29 == 0 ? 200 : 4) + 1);
            const NSUInteger inserted = below(turn % 11 == 0 ? 30 : 4);
            const NSUInteger start = index < naive.size() ? naive[index].location
                                     : naive.empty()      ? 0
                                                          : naive.back().location + 1;
            const NSUInteger end = index + removed < naive.size() ? naive[index + removed].location : start;
            std::vector<Sequence::Item> items;
            std::vector<NaiveItem> naiveItems;
            for (NSUInteger number = 0; number < inserted; ++number) {
                items.push_back({start + number, ++entry});
                naiveItems.push_back({start + number, entry});
            }
            const NSUInteger distance = start + inserted + below(3) - end;
            const auto first = naive.begin() + static_cast<std::ptrdiff_t>(index);
            for (auto behind = first + static_cast<std::ptrdiff_t>(removed); behind != naive.end(); ++behind)
                behind->location += distance;
            naive.insert(naive.erase(first, first + static_cast<std::ptrdiff_t>(removed)), naiveItems.begin(),
                         naiveItems.end());
            sequence.replace(sequence.positionOfIndex(index), removed, items, distance);

            ASSERT_TRUE(sequence.isConsistent());
            ASSERT_EQ(itemsOf(sequence), naive);
            if (!naive.empty()) {
                const NSUInteger asked = below(naive.size());
                const auto at = sequence.positionOfLocation(naive[asked].location);
                ASSERT_EQ(sequence.location(at), naive[asked].location);
                ASSERT_EQ(sequence.entry(sequence.positionOfIndex(asked)), naive[asked].entry);
            }
        }
    }
}
