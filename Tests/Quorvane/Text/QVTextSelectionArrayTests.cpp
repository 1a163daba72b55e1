#include "Quorvane/Text/QVTextSelectionArray.h"

#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

#include <random>

using namespace quorvane;

namespace {

using Ranges = std::vector<NSRange>;
using Affinities = std::vector<NSSelectionAffinity>;
using Advancements = std::vector<QVTextSelectionAdvancement>;

constexpr QVTextSelectionAdvancement none = QVTextSelectionAdvancementNone;

std::shared_ptr<QVTextSelectionArray> selection(const Ranges &ranges, NSUInteger primary) {
    return QVTextSelectionArray::initWithRanges(ranges, {}, {}, primary);
}

Ranges merged(const Ranges &ranges) { return selection(ranges, 0)->ranges(); }

const char16_t *const itemsMissing = u"Invalid parameter not satisfying: items != nil";
const char16_t *const rangesMissing = u"Invalid parameter not satisfying: ranges != nil";
const char16_t *const blockMissing = u"Invalid parameter not satisfying: block != nil";
const char16_t *const badPrimary =
    u"Invalid parameter not satisfying: (items.count == 0 && indexOfPrimaryRange "
    u"== NSNotFound) || indexOfPrimaryRange < items.count";
const char16_t *const badAffinities = u"Invalid parameter not satisfying: affinities.count == 0 || "
                                      u"affinities.count == 1 || affinities.count == ranges.count";
const char16_t *const badAdvancements = u"Invalid parameter not satisfying: advancements.count == 0 || "
                                        u"advancements.count == 1 || advancements.count == ranges.count";

} // namespace

TEST(QVTextSelectionAdvancement, NoneIsMinusOneOnBothEdges) {
    EXPECT_EQ(QVTextSelectionAdvancementNoValue, -1.0);
    EXPECT_EQ(none.leading, -1.0);
    EXPECT_EQ(none.trailing, -1.0);
    EXPECT_EQ(QVTextSelectionAdvancementMake(2, 3).leading, 2);
    EXPECT_EQ(QVTextSelectionAdvancementMake(2, 3).trailing, 3);
}

TEST(QVTextSelectionAdvancement, GoesIntoAnObjectAndBack) {
    const auto value = valueWithQVTextSelectionAdvancement({2.5, 7});
    EXPECT_EQ(value->objCType(), u"{QVTextSelectionAdvancement=dd}");
    EXPECT_EQ(QVTextSelectionAdvancementValue(value.get()), QVTextSelectionAdvancementMake(2.5, 7));
}

TEST(QVTextSelectionAdvancement, AnObjectOfAnotherTypeHoldsNone) {
    EXPECT_EQ(QVTextSelectionAdvancementValue(NSValue::valueWithRange({1, 2}).get()), none);
    EXPECT_EQ(QVTextSelectionAdvancementValue(nullptr), none);
}

TEST(QVTextSelectionArray, IsOneCursorAtTheStartAtFirst) {
    const auto array = QVTextSelectionArray::init();
    EXPECT_EQ(array->items(), (std::vector<QVTextSelectionItem>{{{0, 0}, 1, none, false}}));
    EXPECT_EQ(array->count(), 1u);
    EXPECT_EQ(array->indexOfPrimaryRange(), 0u);
}

TEST(QVTextSelectionArray, HoldsOneRangeWithItsAffinityAndAdvancement) {
    const auto array = QVTextSelectionArray::initWithRange({3, 4}, NSSelectionAffinityUpstream, {5, 6});
    EXPECT_EQ(array->primaryRange(), (NSRange{3, 4}));
    EXPECT_EQ(array->primaryAffinity(), NSSelectionAffinityUpstream);
    EXPECT_EQ(array->primaryAdvancement(), QVTextSelectionAdvancementMake(5, 6));
    const auto plain = QVTextSelectionArray::initWithRange({3, 4});
    EXPECT_EQ(plain->items(), (std::vector<QVTextSelectionItem>{{{3, 4}, 1, none, false}}));
}

TEST(QVTextSelectionArray, NoRangesAreOneCursorAtTheStart) {
    EXPECT_EQ(QVTextSelectionArray::initWithRanges(Ranges())->ranges(), (Ranges{{0, 0}}));
    EXPECT_EQ(selection({}, NSNotFound)->ranges(), (Ranges{{0, 0}}));
    EXPECT_EQ(QVTextSelectionArray::initWithItems(std::vector<QVTextSelectionItem>(), NSNotFound)->ranges(),
              (Ranges{{0, 0}}));
}

TEST(QVTextSelectionArray, RangesAreSorted) {
    EXPECT_EQ(merged({{9, 1}, {0, 2}, {4, 0}}), (Ranges{{0, 2}, {4, 0}, {9, 1}}));
}

TEST(QVTextSelectionArray, TwoCursorsAtOnePlaceBecomeOne) {
    EXPECT_EQ(merged({{4, 0}, {4, 0}}), (Ranges{{4, 0}}));
    EXPECT_EQ(merged({{4, 0}, {5, 0}}), (Ranges{{4, 0}, {5, 0}}));
}

TEST(QVTextSelectionArray, ACursorAtTheEndsOfASelectionOrInsideGoesIntoIt) {
    EXPECT_EQ(merged({{2, 3}, {5, 0}}), (Ranges{{2, 3}}));
    EXPECT_EQ(merged({{2, 3}, {3, 0}}), (Ranges{{2, 3}}));
    EXPECT_EQ(merged({{2, 3}, {2, 0}}), (Ranges{{2, 3}}));
    EXPECT_EQ(merged({{2, 0}, {2, 3}}), (Ranges{{2, 3}}));
}

TEST(QVTextSelectionArray, ACursorOnePlaceBeforeOrBehindASelectionStaysApart) {
    EXPECT_EQ(merged({{2, 3}, {6, 0}}), (Ranges{{2, 3}, {6, 0}}));
    EXPECT_EQ(merged({{1, 0}, {2, 3}}), (Ranges{{1, 0}, {2, 3}}));
}

TEST(QVTextSelectionArray, SelectionsThatTouchOrOverlapBecomeOne) {
    EXPECT_EQ(merged({{2, 3}, {5, 2}}), (Ranges{{2, 5}}));
    EXPECT_EQ(merged({{2, 3}, {4, 5}}), (Ranges{{2, 7}}));
    EXPECT_EQ(merged({{2, 9}, {4, 1}}), (Ranges{{2, 9}}));
    EXPECT_EQ(merged({{2, 3}, {6, 2}}), (Ranges{{2, 3}, {6, 2}}));
    // One after the other, each with what the ones before it have become.
    EXPECT_EQ(merged({{0, 2}, {2, 2}, {4, 2}, {6, 0}, {7, 0}}), (Ranges{{0, 6}, {7, 0}}));
}

TEST(QVTextSelectionArray, MergesAsListsOfRangesDo) {
    std::mt19937 random(85);
    for (int round = 0; round < 2000; ++round) {
        Ranges ranges(1 + random() % 8);
        for (NSRange &range : ranges)
            range = {random() % 20, random() % 4};
        const NSUInteger primary = random() % ranges.size();
        const auto array = selection(ranges, primary);
        ASSERT_EQ(array->ranges(), qv_sortedRangesForRanges(ranges)) << round;
        // The primary range is the one that the item marked as such went into.
        const NSRange held = array->primaryRange();
        ASSERT_EQ(NSUnionRange(held, ranges[primary]), held) << round;
        ASSERT_TRUE(array->containsRange(ranges[primary])) << round;
    }
}

TEST(QVTextSelectionArray, AMergedItemIsAsTheFirstOfThem) {
    const QVTextSelectionItem first{{2, 3}, 0, {1, 2}, true}, second{{4, 5}, 1, {3, 4}, false};
    const auto array = QVTextSelectionArray::initWithItems(std::vector{second, first}, 0);
    EXPECT_EQ(array->items(), (std::vector<QVTextSelectionItem>{{{2, 7}, 0, {1, 2}, true}}));
}

TEST(QVTextSelectionArray, ThePrimaryRangeIsFoundAgainBehindSorting) {
    EXPECT_EQ(selection({{9, 1}, {0, 2}, {4, 0}}, 0)->indexOfPrimaryRange(), 2u);
    EXPECT_EQ(selection({{9, 1}, {0, 2}, {4, 0}}, 1)->indexOfPrimaryRange(), 0u);
    EXPECT_EQ(selection({{9, 1}, {0, 2}, {4, 0}}, 2)->indexOfPrimaryRange(), 1u);
}

TEST(QVTextSelectionArray, MergingBeforeThePrimaryRangeMovesItsIndexDown) {
    EXPECT_EQ(selection({{0, 2}, {2, 2}, {8, 0}}, 2)->indexOfPrimaryRange(), 1u);
    EXPECT_EQ(selection({{0, 2}, {2, 2}, {3, 1}, {8, 0}}, 3)->indexOfPrimaryRange(), 1u);
    // Merging behind it does not.
    EXPECT_EQ(selection({{0, 2}, {4, 2}, {6, 2}}, 0)->indexOfPrimaryRange(), 0u);
}

TEST(QVTextSelectionArray, APrimaryRangeThatIsMergedIsTheMergedOne) {
    EXPECT_EQ(selection({{0, 1}, {4, 2}, {6, 2}}, 1)->indexOfPrimaryRange(), 1u);
    EXPECT_EQ(selection({{0, 1}, {4, 2}, {6, 2}}, 2)->indexOfPrimaryRange(), 1u);
    EXPECT_EQ(selection({{0, 2}, {2, 2}, {4, 2}}, 2)->indexOfPrimaryRange(), 0u);
}

TEST(QVTextSelectionArray, WithoutAnIndexTheFirstRangeGivenIsThePrimaryOne) {
    const auto array = QVTextSelectionArray::initWithRanges(Ranges{{9, 1}, {0, 2}, {4, 0}});
    EXPECT_EQ(array->indexOfPrimaryRange(), 2u);
    EXPECT_EQ(array->primaryRange(), (NSRange{9, 1}));
}

TEST(QVTextSelectionArray, OneAffinityAndAdvancementServeAllRanges) {
    const auto array =
        QVTextSelectionArray::initWithRanges(Ranges{{0, 1}, {4, 0}}, Affinities{0}, Advancements{{1, 2}}, 1);
    EXPECT_EQ(array->affinities(), (Affinities{0, 0}));
    EXPECT_EQ(array->advancements(), (Advancements{{1, 2}, {1, 2}}));
}

TEST(QVTextSelectionArray, AffinitiesAndAdvancementsBelongToTheRangesAsGiven) {
    const auto array = QVTextSelectionArray::initWithRanges(Ranges{{4, 0}, {0, 1}}, Affinities{0, 1},
                                                            Advancements{{1, 2}, {3, 4}}, 0);
    EXPECT_EQ(array->ranges(), (Ranges{{0, 1}, {4, 0}}));
    EXPECT_EQ(array->affinities(), (Affinities{1, 0}));
    EXPECT_EQ(array->advancements(), (Advancements{{3, 4}, {1, 2}}));
    EXPECT_EQ(array->primaryAffinity(), 0u);
    EXPECT_EQ(array->primaryAdvancement(), QVTextSelectionAdvancementMake(1, 2));
}

TEST(QVTextSelectionArray, WithoutAffinitiesAndAdvancementsTheDefaultsHold) {
    const auto array = selection({{0, 1}, {4, 0}}, 0);
    EXPECT_EQ(array->affinities(), (Affinities{1, 1}));
    EXPECT_EQ(array->advancements(), (Advancements{none, none}));
}

TEST(QVTextSelectionArray, NullRangesAndItemsAreAsserted) {
    const test::AssertionRecorder assertions;
    EXPECT_EQ(QVTextSelectionArray::initWithRanges(std::nullopt)->ranges(), (Ranges{{0, 0}}));
    EXPECT_EQ(QVTextSelectionArray::initWithItems(std::nullopt, NSNotFound)->ranges(), (Ranges{{0, 0}}));
    EXPECT_EQ(assertions.messages(), (std::vector<NSString>{rangesMissing, itemsMissing}));
}

TEST(QVTextSelectionArray, OtherNumbersOfAffinitiesAndAdvancementsAreAsserted) {
    const test::AssertionRecorder assertions;
    const Ranges three{{0, 1}, {4, 0}, {6, 0}};
    const auto array =
        QVTextSelectionArray::initWithRanges(three, Affinities{0, 0}, Advancements{{1, 2}, {3, 4}}, 0);
    EXPECT_EQ(array->affinities(), (Affinities{0, 0, 1}));
    EXPECT_EQ(array->advancements(), (Advancements{{1, 2}, {3, 4}, none}));
    EXPECT_EQ(assertions.messages(), (std::vector<NSString>{badAffinities, badAdvancements}));
}

TEST(QVTextSelectionArray, OneAffinityForNoRangesIsFine) {
    const test::AssertionRecorder assertions;
    QVTextSelectionArray::initWithRanges(Ranges(), Affinities{0}, Advancements{none}, NSNotFound);
    EXPECT_EQ(assertions.messages(), (std::vector<NSString>{}));
}

TEST(QVTextSelectionArray, APrimaryIndexOutsideOfTheListIsAsserted) {
    const test::AssertionRecorder assertions;
    EXPECT_EQ(selection({{9, 1}, {0, 2}}, 2)->primaryRange(), (NSRange{9, 1}));
    EXPECT_EQ(selection({}, 0)->primaryRange(), (NSRange{0, 0}));
    // A list that is not empty has to say which.
    EXPECT_EQ(selection({{9, 1}, {0, 2}}, NSNotFound)->primaryRange(), (NSRange{9, 1}));
    EXPECT_EQ(assertions.messages(), (std::vector<NSString>{badPrimary, badPrimary, badPrimary}));
}

TEST(QVTextSelectionArray, HoldsARangeThatLiesInOneOfItsOwn) {
    const auto array = selection({{2, 3}, {6, 2}}, 0);
    EXPECT_TRUE(array->containsRange({2, 3}));
    EXPECT_TRUE(array->containsRange({3, 1}));
    EXPECT_FALSE(array->containsRange({1, 2}));
    EXPECT_FALSE(array->containsRange({4, 2}));
    EXPECT_FALSE(array->containsRange({3, 4}));
    EXPECT_FALSE(array->containsRange({5, 1}));
}

TEST(QVTextSelectionArray, HoldsAPlaceInsideARangeAndAtItsEnds) {
    const auto array = selection({{2, 3}, {8, 0}}, 0);
    EXPECT_FALSE(array->containsRange({1, 0}));
    EXPECT_TRUE(array->containsRange({2, 0}));
    EXPECT_TRUE(array->containsRange({4, 0}));
    EXPECT_TRUE(array->containsRange({5, 0}));
    EXPECT_FALSE(array->containsRange({6, 0}));
    EXPECT_TRUE(array->containsRange({8, 0}));
    EXPECT_FALSE(array->containsRange({9, 0}));
    EXPECT_FALSE(array->containsRange({8, 1}));
}

TEST(QVTextSelectionArray, TellsEachRangeWithWhatBelongsToIt) {
    const auto array = QVTextSelectionArray::initWithRanges(Ranges{{4, 0}, {0, 1}}, Affinities{0, 1},
                                                            Advancements{{1, 2}, {3, 4}}, 0);
    std::vector<QVTextSelectionItem> seen;
    std::vector<NSUInteger> indexes;
    array->enumerateRangesUsingBlock([&](NSRange range, NSSelectionAffinity affinity,
                                         QVTextSelectionAdvancement advancement, NSUInteger index, bool &) {
        seen.push_back({range, affinity, advancement});
        indexes.push_back(index);
    });
    EXPECT_EQ(seen, array->items());
    EXPECT_EQ(indexes, (std::vector<NSUInteger>{0, 1}));
}

TEST(QVTextSelectionArray, TellsRangesBackwardsAndStops) {
    const auto array = selection({{0, 1}, {4, 0}, {6, 1}}, 0);
    std::vector<NSUInteger> indexes;
    const auto note = [&](NSRange, NSSelectionAffinity, QVTextSelectionAdvancement, NSUInteger index,
                          bool &stop) {
        indexes.push_back(index);
        stop = index == 1;
    };
    array->enumerateRangesWithOptions(NSEnumerationReverse, note);
    EXPECT_EQ(indexes, (std::vector<NSUInteger>{2, 1}));
    indexes.clear();
    array->enumerateRangesWithOptions(0, note);
    EXPECT_EQ(indexes, (std::vector<NSUInteger>{0, 1}));
}

TEST(QVTextSelectionArray, TellsTheRangesOfAnIndexSet) {
    const auto array = selection({{0, 1}, {4, 0}, {6, 1}, {9, 0}}, 0);
    Ranges seen;
    const auto note = [&](NSRange range, NSSelectionAffinity, QVTextSelectionAdvancement, NSUInteger,
                          bool &) { seen.push_back(range); };
    array->enumerateRangesAtIndexes({0, 2, 3}, 0, note);
    EXPECT_EQ(seen, (Ranges{{0, 1}, {6, 1}, {9, 0}}));
    seen.clear();
    array->enumerateRangesAtIndexes({0, 2, 3}, NSEnumerationReverse, note);
    EXPECT_EQ(seen, (Ranges{{9, 0}, {6, 1}, {0, 1}}));
    seen.clear();
    array->enumerateRangesAtIndexes({}, 0, note);
    EXPECT_EQ(seen, (Ranges{}));
    EXPECT_THROW(array->enumerateRangesAtIndexes({1, 4}, 0, note), NSException);
    EXPECT_EQ(seen, (Ranges{}));
}

TEST(QVTextSelectionArray, NullBlocksAreAsserted) {
    const test::AssertionRecorder assertions;
    const auto array = selection({{0, 1}, {4, 0}}, 0);
    array->enumerateRangesUsingBlock(nullptr);
    array->enumerateRangesWithOptions(NSEnumerationReverse, nullptr);
    array->enumerateRangesAtIndexes({0}, 0, nullptr);
    EXPECT_EQ(array->arrayByTransformingWithBlock(nullptr)->items(), array->items());
    EXPECT_EQ(assertions.messages(),
              (std::vector<NSString>{blockMissing, blockMissing, blockMissing, blockMissing}));
}

TEST(QVTextSelectionArray, ATransformMayChangeAllButTheShadow) {
    const auto array = QVTextSelectionArray::initWithItems(
        std::vector<QVTextSelectionItem>{{{0, 1}, 1, none, true}, {{4, 0}, 1, none, false}}, 1);
    const auto changed = array->arrayByTransformingWithBlock([](NSRange &range, NSSelectionAffinity &affinity,
                                                                QVTextSelectionAdvancement &advancement,
                                                                bool &, NSUInteger index) {
        range.location += 10 * (index + 1);
        affinity = 0;
        advancement.leading = static_cast<double>(index);
    });
    EXPECT_EQ(changed->items(),
              (std::vector<QVTextSelectionItem>{{{10, 1}, 0, {0, -1}, true}, {{24, 0}, 0, {1, -1}, false}}));
    EXPECT_EQ(changed->indexOfPrimaryRange(), 1u);
    EXPECT_EQ(array->ranges(), (Ranges{{0, 1}, {4, 0}}));
}

TEST(QVTextSelectionArray, ATransformIsSortedAndMergedAnew) {
    const auto array = selection({{0, 1}, {4, 0}, {8, 0}}, 1);
    const auto turned = array->arrayByTransformingWithBlock(
        [](NSRange &range, NSSelectionAffinity &, QVTextSelectionAdvancement &, bool &, NSUInteger) {
            range.location = 20 - range.location;
        });
    EXPECT_EQ(turned->ranges(), (Ranges{{12, 0}, {16, 0}, {20, 1}}));
    EXPECT_EQ(turned->primaryRange(), (NSRange{16, 0}));
    const auto gathered = array->arrayByTransformingWithBlock(
        [](NSRange &range, NSSelectionAffinity &, QVTextSelectionAdvancement &, bool &, NSUInteger) {
            range = {3, 0};
        });
    EXPECT_EQ(gathered->ranges(), (Ranges{{3, 0}}));
    EXPECT_EQ(gathered->indexOfPrimaryRange(), 0u);
}

TEST(QVTextSelectionArray, ATransformThatStopsLeavesOutTheRangesBehind) {
    const auto stopAt = [](NSUInteger last) {
        return [last](NSRange &, NSSelectionAffinity &, QVTextSelectionAdvancement &, bool &stop,
                      NSUInteger index) { stop = index == last; };
    };
    EXPECT_EQ(selection({{0, 1}, {4, 0}, {8, 0}}, 1)->arrayByTransformingWithBlock(stopAt(1))->ranges(),
              (Ranges{{0, 1}, {4, 0}}));
    // The primary range has to stay.
    const test::AssertionRecorder assertions;
    EXPECT_EQ(selection({{0, 1}, {4, 0}, {8, 0}}, 2)->arrayByTransformingWithBlock(stopAt(1))->primaryRange(),
              (NSRange{0, 1}));
    EXPECT_EQ(assertions.messages(), (std::vector<NSString>{badPrimary}));
}
