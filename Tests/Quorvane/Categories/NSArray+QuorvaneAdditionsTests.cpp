#include "Quorvane/Categories/NSArray+QuorvaneAdditions.h"

#include "Platform/Foundation/NSCharacterSet.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace quorvane;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(QVSortedRanges, MergesWhatOverlapsOrTouchesAndKeepsTheRest) {
    using R = NSRange;
    EXPECT_THAT(qv_sortedRangesForRanges({}), IsEmpty());
    EXPECT_THAT(qv_sortedRangesForRanges({{4, 0}}), ElementsAre(R{4, 0}));
    EXPECT_THAT(qv_sortedRangesForRanges({{9, 1}, {1, 2}}), ElementsAre(R{1, 2}, R{9, 1}));
    // Overlapping, touching, one inside of the other.
    EXPECT_THAT(qv_sortedRangesForRanges({{3, 4}, {1, 3}}), ElementsAre(R{1, 6}));
    EXPECT_THAT(qv_sortedRangesForRanges({{5, 3}, {8, 2}}), ElementsAre(R{5, 5}));
    EXPECT_THAT(qv_sortedRangesForRanges({{1, 9}, {3, 2}, {9, 3}}), ElementsAre(R{1, 11}));
    // Empty ranges: at the location of another, at its end, inside, twice the same, and apart.
    EXPECT_THAT(qv_sortedRangesForRanges({{5, 0}, {5, 3}}), ElementsAre(R{5, 3}));
    EXPECT_THAT(qv_sortedRangesForRanges({{5, 3}, {5, 0}}), ElementsAre(R{5, 3}));
    EXPECT_THAT(qv_sortedRangesForRanges({{5, 3}, {8, 0}}), ElementsAre(R{5, 3}));
    EXPECT_THAT(qv_sortedRangesForRanges({{5, 3}, {6, 0}}), ElementsAre(R{5, 3}));
    EXPECT_THAT(qv_sortedRangesForRanges({{5, 0}, {5, 0}}), ElementsAre(R{5, 0}));
    EXPECT_THAT(qv_sortedRangesForRanges({{5, 0}, {6, 0}}), ElementsAre(R{5, 0}, R{6, 0}));
    EXPECT_THAT(qv_sortedRangesForRanges({{5, 3}, {9, 0}}), ElementsAre(R{5, 3}, R{9, 0}));
    // A merged range goes on merging.
    EXPECT_THAT(qv_sortedRangesForRanges({{0, 1}, {1, 1}, {2, 0}, {2, 2}, {5, 1}}),
                ElementsAre(R{0, 4}, R{5, 1}));
}

TEST(QVZippedArrays, RowsHoldTheElementsOfEachArrayAndUnzippingBringsTheArraysBack) {
    const std::vector<int> a{1, 2, 3};
    const std::vector<int> b{4, 5, 6};
    const auto rows = qv_arrayByZippingArrays(a, b);
    EXPECT_THAT(rows, ElementsAre(ElementsAre(1, 4), ElementsAre(2, 5), ElementsAre(3, 6)));
    EXPECT_THAT(qv_arraysByUnzippingArray(rows), ElementsAre(a, b));
    EXPECT_THAT(qv_arrayByZippingArrays(a), ElementsAre(ElementsAre(1), ElementsAre(2), ElementsAre(3)));
    EXPECT_THAT(qv_arrayByZippingArrays(std::vector<int>{}, std::vector<int>{}), IsEmpty());
    EXPECT_THAT(qv_arraysByUnzippingArray(std::vector<std::vector<int>>{}), IsEmpty());
}

TEST(QVZippedArrays, ArraysOfDifferentLengthsAreAsserted) {
    const test::AssertionRecorder assertions;
    const auto rows = qv_arrayByZippingArrays(std::vector<int>{1}, std::vector<int>{2, 3});
    EXPECT_THAT(assertions.messages(),
                ElementsAre(NSString(u"Zippable arrays must all have the same number of objects")));
    EXPECT_THAT(rows, ElementsAre(ElementsAre(1, 2)));
    // A shorter one has no element to give.
    EXPECT_THROW(qv_arrayByZippingArrays(std::vector<int>{1, 2}, std::vector<int>{3}), NSException);
    EXPECT_EQ(assertions.messages().size(), 2u);
}

TEST(QVZippedArrays, ARowThatIsTooShortToUnzipThrows) {
    EXPECT_THROW(qv_arraysByUnzippingArray(std::vector<std::vector<int>>{{1, 2}, {3}}), NSException);
}

TEST(QVIndexOfObject, IsTheFirstEqualObjectInEnumerationOrder) {
    const std::vector<NSString> list{u"a", u"b", u"a", u"b", u"c"};
    EXPECT_EQ(qv_indexOfObject(list, u"b", {0, 5}), 1u);
    EXPECT_EQ(qv_indexOfObject(list, u"b", {0, 5}, NSEnumerationReverse), 3u);
    EXPECT_EQ(qv_indexOfObject(list, u"b", {2, 3}), 3u);
    EXPECT_EQ(qv_indexOfObject(list, u"b", {0, 3}, NSEnumerationReverse), 1u);
    EXPECT_EQ(qv_indexOfObject(list, u"c", {0, 4}), NSNotFound);
    EXPECT_EQ(qv_indexOfObject(list, u"a", {0, 0}), NSNotFound);
    EXPECT_THROW(qv_indexOfObject(list, u"a", {4, 2}), NSException);
}

TEST(QVIndexOfObject, SharedObjectsAreAskedWhetherTheyAreEqual) {
    using Set = std::shared_ptr<const NSCharacterSet>;
    const std::vector<Set> list{nullptr, NSCharacterSet::newlineCharacterSet(),
                                NSCharacterSet::characterSetWithCharactersInString(u"ab")};
    EXPECT_EQ(qv_indexOfObject(list, NSCharacterSet::characterSetWithCharactersInString(u"ba"), {0, 3}), 2u);
    EXPECT_EQ(qv_indexOfObject(list, NSCharacterSet::letterCharacterSet(), {0, 3}), NSNotFound);
}

TEST(QVRemoveObjects, FromAnIndexRemovesAllThatFollows) {
    std::vector<int> list{1, 2, 3, 4};
    qv_removeObjectsFromIndex(list, 4);
    EXPECT_THAT(list, ElementsAre(1, 2, 3, 4));
    qv_removeObjectsFromIndex(list, 1);
    EXPECT_THAT(list, ElementsAre(1));
    EXPECT_THROW(qv_removeObjectsFromIndex(list, 2), NSException);
}

TEST(QVRemoveObjects, ToAnIndexRemovesOneFewerThanItsNameSuggests) {
    // Meant: callers rely on it.
    std::vector<int> list{1, 2, 3, 4};
    qv_removeObjectsToIndex(list, 1);
    EXPECT_THAT(list, ElementsAre(1, 2, 3, 4));
    qv_removeObjectsToIndex(list, 3);
    EXPECT_THAT(list, ElementsAre(3, 4));
    EXPECT_THROW(qv_removeObjectsToIndex(list, 4), NSException);
    qv_removeObjectsToIndex(list, 3);
    EXPECT_THAT(list, IsEmpty());
}

TEST(QVRemoveObjects, ToIndexZeroAsksForALengthThatWrapsAroundAndIsRejected) {
    std::vector<int> list{1, 2};
    try {
        qv_removeObjectsToIndex(list, 0);
        FAIL() << "no exception";
    } catch (const NSException &exception) {
        EXPECT_EQ(exception.name(), u"NSRangeException");
    }
    EXPECT_THAT(list, ElementsAre(1, 2));
}
