#include "Quorvane/Text/QVMutableRLEArray.h"

#include "Tests/Quorvane/Text/RunPictures.h"
#include "Tests/Support/Exceptions.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorvane {

/// Breaks an array on purpose.
struct QVRLEArrayProbe {
    static void setCount(test::TagArray &array, NSUInteger count) { array._count = count; }
    static bool isConsistent(const test::TagArray &array) { return array._runs.isConsistent(); }
    static std::size_t chunkCount(const test::TagArray &array) { return array._runs.chunkCount(); }
};

} // namespace quorvane

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::uint64_t reverse = QVRLEArrayEnumerationReverse;
constexpr std::uint64_t whole = QVRLEArrayEnumerationWholeRuns;

const NSString beyondIndex = u"Index is beyond of the bounds of the RLE array";
const NSString beyondInsert = u"Attempt to insert object beyond of the bounds of the RLE array";
const NSString beyondInserts = u"Attempt to insert objects beyond of the bounds of the RLE array";
const NSString beyondDelete = u"Attempt to delete objects beyond the bounds of the RLE array";
const NSString beyondReplace = u"Attempt to replace objects beyond the bounds of the RLE array";
const NSString beyondRange = u"Range exceeds the bounds of the RLE array";

} // namespace

// MARK: - Making and looking up

TEST(QVMutableRLEArray, ANewArrayIsEmpty) {
    const auto array = TagArray::init();
    EXPECT_EQ(array->count(), 0u);
    EXPECT_EQ(draw(*array), "");
    array->validateRunIntegrity();
}

TEST(QVMutableRLEArray, OneObjectOverALengthIsOneRun) {
    EXPECT_EQ(draw(*TagArray::initWithObject(tag('a'), 7)), "a:7");
    EXPECT_EQ(TagArray::initWithObject(tag('a'), 7)->count(), 7u);
}

TEST(QVMutableRLEArray, OneObjectOverNoLengthIsAnEmptyArray) {
    const auto array = TagArray::initWithObject(tag('a'), 0);
    EXPECT_EQ(array->count(), 0u);
    EXPECT_EQ(draw(*array), "");
}

TEST(QVMutableRLEArray, ASlotAnswersItsRunsWholeRangeAndNumber) {
    const auto array = runs("a:3 b:5 -:2 c:1");
    const char letters[] = {'a', 'a', 'a', 'b', 'b', 'b', 'b', 'b', '-', '-', 'c'};
    const NSRange ranges[] = {{0, 3}, {3, 5}, {8, 2}, {10, 1}};
    const NSUInteger numbers[] = {0, 0, 0, 1, 1, 1, 1, 1, 2, 2, 3};
    for (NSUInteger i = 0; i < 11; ++i) {
        SCOPED_TRACE(i);
        NSRange range;
        NSUInteger number = 99;
        EXPECT_EQ(letterOf(array->objectAtIndex(i, &range, &number)), letters[i]);
        EXPECT_EQ(range, ranges[numbers[i]]);
        EXPECT_EQ(number, numbers[i]);
        EXPECT_EQ(array->runIndexForIndex(i), numbers[i]);
        EXPECT_EQ(letterOf(array->objectAtIndex(i)), letters[i]);
    }
}

TEST(QVMutableRLEArray, ASlotAtOrPastTheCountThrows) {
    const auto array = runs("a:3 b:5");
    EXPECT_EQ(reasonOf([&] { array->objectAtIndex(8); }), beyondIndex);
    EXPECT_EQ(reasonOf([&] { array->objectAtIndex(NSNotFound); }), beyondIndex);
    EXPECT_EQ(reasonOf([&] { array->runIndexForIndex(8); }), beyondIndex);
    EXPECT_EQ(reasonOf([&] { TagArray().objectAtIndex(0); }), beyondIndex);
}

TEST(QVMutableRLEArray, AnArrayHoldsMoreSlotsThanThirtyTwoBitsCount) {
    auto array = TagArray::initWithObject(tag('a'), NSUInteger(1) << 40);
    array->insertObject(tag('b'), {NSUInteger(1) << 39, NSUInteger(1) << 50});
    NSRange range;
    EXPECT_EQ(letterOf(array->objectAtIndex((NSUInteger(1) << 39) + 5, &range)), 'b');
    EXPECT_EQ(range, (NSRange{NSUInteger(1) << 39, NSUInteger(1) << 50}));
}

TEST(QVMutableRLEArray, PlainValuesAreComparedByTheirOwnEquality) {
    QVMutableRLEArray<int> array;
    array.insertObject(3, {0, 4});
    array.insertObject(3, {4, 2});
    array.insertObject(5, {2, 1});
    EXPECT_EQ(array.numberOfRuns(), 3u);
    EXPECT_EQ(array.objectAtIndex(2), 5);
    EXPECT_EQ(array.objectAtIndex(3), 3);
}

// MARK: - Walking

TEST(QVMutableRLEArray, AWalkHandsOverThePartsInsideOfTheRange) {
    const auto array = runs("a:3 b:5 -:2 c:4");
    EXPECT_EQ(walk(*array, {1, 9}), "a{1,2} b{3,5} -{8,2}");
    EXPECT_EQ(walk(*array, {4, 2}), "b{4,2}");
    EXPECT_EQ(walk(*array, {1, 9}, reverse), "-{8,2} b{3,5} a{1,2}");
    EXPECT_EQ(walk(*array, {4, 2}, reverse), "b{4,2}");
    EXPECT_EQ(walk(*array, {3, 5}), "b{3,5}");
    EXPECT_EQ(walk(*array, {3, 5}, reverse), "b{3,5}");
}

TEST(QVMutableRLEArray, WholeRunsAreNotCutToTheRange) {
    const auto array = runs("a:3 b:5 -:2 c:4");
    EXPECT_EQ(walk(*array, {1, 8}, whole), "a{0,3} b{3,5} -{8,2}");
    EXPECT_EQ(walk(*array, {1, 8}, whole | reverse), "-{8,2} b{3,5} a{0,3}");
}

TEST(QVMutableRLEArray, AnEmptyRangeCallsBackForWholeRunsAlone) {
    const auto array = runs("a:3 b:5");
    EXPECT_EQ(walk(*array, {4, 0}), "");
    EXPECT_EQ(walk(*array, {4, 0}, reverse), "");
    EXPECT_EQ(walk(*array, {4, 0}, whole), "b{3,5}");
    EXPECT_EQ(walk(*array, {4, 0}, whole | reverse), "b{3,5}");
    EXPECT_EQ(walk(*array, {0, 0}, whole), "a{0,3}");
    EXPECT_EQ(walk(*array, {0, 0}, whole | reverse), "a{0,3}");
    // At a border the forward walk starts with the run behind, the reverse one with the run before.
    EXPECT_EQ(walk(*array, {3, 0}, whole), "b{3,5}");
    EXPECT_EQ(walk(*array, {3, 0}, whole | reverse), "a{0,3}");
}

TEST(QVMutableRLEArray, AWalkAtTheCountStartsFromTheLastRun) {
    const auto array = runs("a:3 b:5");
    EXPECT_EQ(walk(*array, {8, 0}), "");
    EXPECT_EQ(walk(*array, {8, 0}, whole), "b{3,5}");
    EXPECT_EQ(walk(*array, {8, 0}, whole | reverse), "b{3,5}");
    EXPECT_EQ(walk(*array, {8, 4}), "");
    EXPECT_EQ(walk(*array, {8, 4}, whole), "");
}

TEST(QVMutableRLEArray, AForwardWalkMayReachPastTheCountAndAReverseOneThrows) {
    const auto array = runs("a:3 b:5");
    EXPECT_EQ(walk(*array, {2, 100}), "a{2,1} b{3,5}");
    EXPECT_EQ(walk(*array, {2, std::numeric_limits<NSUInteger>::max()}), "a{2,1} b{3,5}");
    EXPECT_EQ(reasonOf([&] { walk(*array, {2, 100}, reverse); }), beyondIndex);
    EXPECT_EQ(reasonOf([&] {
                  walk(*array, {2, std::numeric_limits<NSUInteger>::max()}, reverse);
              }),
              beyondIndex);
    EXPECT_EQ(walk(*array, {2, 6}, reverse), "b{3,5} a{2,1}");
}

TEST(QVMutableRLEArray, AWalkFromPastTheCountThrows) {
    const auto array = runs("a:3 b:5");
    EXPECT_EQ(reasonOf([&] { walk(*array, {9, 0}); }), beyondIndex);
    EXPECT_EQ(reasonOf([&] { walk(*array, {9, 1}, whole); }), beyondIndex);
    EXPECT_EQ(reasonOf([&] { walk(*array, {9, 1}, reverse); }), beyondIndex);
    EXPECT_EQ(reasonOf([&] { walk(*array, {NSNotFound, 0}); }), beyondIndex);
}

TEST(QVMutableRLEArray, AWalkOverAnEmptyArrayCallsNothing) {
    TagArray array;
    EXPECT_EQ(walk(array, {0, 0}, whole), "");
    EXPECT_EQ(walk(array, {7, 3}), "");
    EXPECT_EQ(walk(array, {7, 3}, reverse), "");
}

TEST(QVMutableRLEArray, TheStopFlagEndsAWalk) {
    const auto array = runs("a:3 b:5 c:1");
    for (const std::uint64_t options : {std::uint64_t(0), reverse, whole, whole | reverse}) {
        int calls = 0;
        array->enumerateObjectsInRange({0, 9}, options,
                                       [&](const std::shared_ptr<Tag> &, NSRange, bool &stop) {
                                           EXPECT_FALSE(stop);
                                           stop = ++calls == 2;
                                       });
        EXPECT_EQ(calls, 2);
    }
}

TEST(QVMutableRLEArray, ACallbackMayReplaceTheRangeItWasHandedAndTheWalkGoesOnBehindIt) {
    auto array = runs("a:3 b:5 c:2 d:4");
    std::string picture;
    array->enumerateObjectsInRange({1, 10}, [&](const std::shared_ptr<Tag> &value, NSRange range, bool &) {
        picture += draw(value, range) + " ";
        array->replaceObjectsInRange(range, tag('x'), range.length);
        // The value that was handed over is still there, though its run is gone.
        EXPECT_NE(letterOf(value), 'x');
    });
    EXPECT_EQ(picture, "a{1,2} b{3,5} c{8,2} d{10,1} ");
    EXPECT_EQ(draw(*array), "a:1 x:10 d:3");
}

TEST(QVMutableRLEArray, AReverseWalksCallbackMayReplaceTheRangeItWasHanded) {
    auto array = runs("a:3 b:5 c:2 d:4");
    std::string picture;
    array->enumerateObjectsInRange({1, 10}, reverse,
                                   [&](const std::shared_ptr<Tag> &value, NSRange range, bool &) {
                                       picture += draw(value, range) + " ";
                                       array->replaceObjectsInRange(range, tag('x'), range.length);
                                   });
    EXPECT_EQ(picture, "d{10,1} c{8,2} b{3,5} a{1,2} ");
    EXPECT_EQ(draw(*array), "a:1 x:10 d:3");
}

TEST(QVMutableRLEArray, ACallbackMayEmptyTheArray) {
    for (const std::uint64_t options : {std::uint64_t(0), reverse, whole, whole | reverse}) {
        auto array = runs("a:3 b:5 c:2 d:4 e:1 f:1");
        int calls = 0;
        array->enumerateObjectsInRange({0, 16}, options, [&](const std::shared_ptr<Tag> &, NSRange, bool &) {
            ++calls;
            array->deleteObjectsInRange({0, array->count()});
        });
        EXPECT_EQ(calls, 1);
    }
}

TEST(QVMutableRLEArray, WalksInsideOfWalksKeepWhatTheyHandedOver) {
    auto array = runs("a:1 b:1 c:1 d:1 e:1 f:1 g:1");
    int calls = 0;
    array->enumerateObjectsInRange({0, 7}, [&](const std::shared_ptr<Tag> &outer, NSRange, bool &) {
        const char letter = letterOf(outer);
        array->enumerateObjectsInRange({0, 7}, [&](const std::shared_ptr<Tag> &inner, NSRange range, bool &) {
            const char innerLetter = letterOf(inner);
            array->replaceObjectsInRange(range, std::make_shared<Tag>(static_cast<char16_t>('h' + calls % 9)),
                                         1);
            ++calls;
            EXPECT_EQ(letterOf(outer), letter);
            EXPECT_EQ(letterOf(inner), innerLetter);
        });
    });
    EXPECT_EQ(calls, 49);
}

TEST(QVMutableRLEArray, AWalkThatACallbackLeavesByAnExceptionIsOver) {
    auto array = runs("a:3 b:5");
    EXPECT_THROW(array->enumerateObjectsInRange(
                     {0, 8}, [](const std::shared_ptr<Tag> &, NSRange, bool &) { throw 1; }),
                 int);
    array->replaceObjectsInRange({1, 1}, tag('x'), 1);
    EXPECT_EQ(draw(*array), "a:1 x:1 a:1 b:5");
}

// MARK: - Bisection

TEST(QVMutableRLEArray, ABisectionFindsTheRunItsCallbackLooksFor) {
    const auto array = runs("a:3 c:5 e:2 g:4 i:1");
    for (const char wanted : {'a', 'c', 'e', 'g', 'i'}) {
        NSRange range;
        const auto found =
            array->bisectWithEffectiveRange(&range, [&](const TagArray::BisectContext &context, bool &) {
                return static_cast<NSInteger>((letterOf(context.value) < wanted) -
                                              (letterOf(context.value) > wanted));
            });
        EXPECT_EQ(letterOf(found), wanted);
        NSRange expected;
        array->objectAtIndex(range.location, &expected);
        EXPECT_EQ(range, expected);
    }
    EXPECT_EQ(array->bisectUsingBlock([](const TagArray::BisectContext &context, bool &) {
        return letterOf(context.value) == 'e' ? NSInteger(0)
                                              : NSInteger(letterOf(context.value) < 'e' ? 1 : -1);
    }),
              tag('e'));
}

TEST(QVMutableRLEArray, ABisectionTellsTheRunAndItsNeighbours) {
    const auto array = runs("a:3 b:5 c:2");
    std::string seen;
    NSRange range{1, 1};
    // Down from the middle to the front, where nothing is left.
    EXPECT_EQ(array->bisectWithEffectiveRange(
                  &range,
                  [&](const TagArray::BisectContext &context, bool &) {
                      seen += draw(context.value, context.effectiveRange) + "<" +
                              draw(context.previousValue, context.previousEffectiveRange) + ">" +
                              draw(context.nextValue, context.nextEffectiveRange) + " ";
                      return NSInteger(-1);
                  }),
              nullptr);
    const std::string none = "-{9223372036854775807,0}";
    EXPECT_EQ(seen, "b{3,5}<a{0,3}>c{8,2} a{0,3}<" + none + ">b{3,5} ");
    EXPECT_EQ(range, NSNotFoundRange);
    seen.clear();
    // Any answer that is neither 0 nor -1 goes up.
    array->bisectUsingBlock([&](const TagArray::BisectContext &context, bool &stop) {
        EXPECT_FALSE(stop);
        seen += draw(context.value, context.effectiveRange) + ">" +
                draw(context.nextValue, context.nextEffectiveRange) + " ";
        return NSInteger(-7);
    });
    EXPECT_EQ(seen, "b{3,5}>c{8,2} c{8,2}>" + none + " ");
}

TEST(QVMutableRLEArray, TheStopFlagEndsABisectionUnlessItFound) {
    const auto array = runs("a:3 b:5 c:2");
    int calls = 0;
    NSRange range;
    EXPECT_EQ(array->bisectWithEffectiveRange(&range,
                                              [&](const TagArray::BisectContext &, bool &stop) {
                                                  ++calls;
                                                  stop = true;
                                                  return NSInteger(1);
                                              }),
              nullptr);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(range, NSNotFoundRange);
    EXPECT_EQ(array->bisectWithEffectiveRange(&range,
                                              [&](const TagArray::BisectContext &, bool &stop) {
                                                  stop = true;
                                                  return NSInteger(0);
                                              }),
              tag('b'));
    EXPECT_EQ(range, (NSRange{3, 5}));
}

TEST(QVMutableRLEArray, ABisectionOfNothingFindsNothing) {
    NSRange range{1, 1};
    EXPECT_EQ(TagArray().bisectWithEffectiveRange(
                  &range, [](const TagArray::BisectContext &, bool &) { return NSInteger(0); }),
              nullptr);
    EXPECT_EQ(range, NSNotFoundRange);
}

TEST(QVMutableRLEArray, ANewBisectionContextHasNoRanges) {
    const TagArray::BisectContext context;
    EXPECT_EQ(context.effectiveRange, NSNotFoundRange);
    EXPECT_EQ(context.previousEffectiveRange, NSNotFoundRange);
    EXPECT_EQ(context.nextEffectiveRange, NSNotFoundRange);
}

// MARK: - Editing

namespace {

struct EditRow {
    const char *before;
    NSRange range;
    char letter;
    NSUInteger length;
    const char *after;
};

} // namespace

TEST(QVMutableRLEArray, InsertionsGrowSplitOrAddRuns) {
    const EditRow rows[] = {
        {"", {0, 0}, 'a', 3, "a:3"},
        {"a:3", {3, 0}, 'a', 2, "a:5"},                 // the last run grows
        {"a:3", {3, 0}, 'b', 2, "a:3 b:2"},             // behind the last run
        {"a:3 b:2", {3, 0}, 'a', 1, "a:4 b:2"},         // the run before grows
        {"a:3 b:2", {3, 0}, 'b', 1, "a:3 b:3"},         // the run behind grows
        {"a:3 b:2", {3, 0}, 'x', 1, "a:3 x:1 b:2"},     // between two
        {"a:3 b:2", {1, 0}, 'a', 4, "a:7 b:2"},         // inside of an equal run
        {"a:3 b:2", {1, 0}, 'x', 4, "a:1 x:4 a:2 b:2"}, // inside of another
        {"a:3 b:2", {0, 0}, 'x', 1, "x:1 a:3 b:2"},     // at the front
        {"a:3 b:2", {0, 0}, 'a', 1, "a:4 b:2"},         //
        {"a:3 b:2", {2, 0}, 'x', 0, "a:3 b:2"},         // nothing
        {"-:3 b:2", {1, 0}, '-', 1, "-:4 b:2"},         // null is equal to null
        {"-:3 b:2", {1, 0}, 'b', 1, "-:1 b:1 -:2 b:2"}, // and to nothing else
        {"a:3 b:2", {3, 0}, '-', 1, "a:3 -:1 b:2"},
    };
    for (const EditRow &row : rows) {
        SCOPED_TRACE(testing::Message()
                     << row.before << " + " << row.letter << row.length << " at " << row.range.location);
        auto inserted = runs(row.before);
        inserted->insertObject(tag(row.letter), {row.range.location, row.length});
        EXPECT_EQ(draw(*inserted), row.after);
        auto replaced = runs(row.before);
        replaced->replaceObjectsInRange(row.range, tag(row.letter), row.length);
        EXPECT_EQ(draw(*replaced), row.after);
    }
}

TEST(QVMutableRLEArray, DeletionsJoinWhatBecomesNeighbours) {
    const EditRow rows[] = {
        {"a:3 b:2 a:4", {3, 2}, 0, 0, "a:7"},                 // a whole run between two equal ones
        {"a:3 b:2 a:4", {2, 4}, 0, 0, "a:5"},                 // and a part of both
        {"a:3 b:2 c:4", {3, 2}, 0, 0, "a:3 c:4"},             // up to a run's end
        {"a:3 b:2 c:4", {1, 2}, 0, 0, "a:1 b:2 c:4"},         //
        {"a:3 b:2 c:4", {1, 1}, 0, 0, "a:2 b:2 c:4"},         // inside of a run
        {"a:3 b:2 c:4", {0, 1}, 0, 0, "a:2 b:2 c:4"},         // a run's head
        {"a:3 b:2 c:4", {0, 4}, 0, 0, "b:1 c:4"},             //
        {"a:3 b:2 c:4", {4, 5}, 0, 0, "a:3 b:1"},             // to the end
        {"a:3 b:2 c:4", {0, 9}, 0, 0, ""},                    // all of it
        {"a:3 b:2 c:4", {4, 0}, 0, 0, "a:3 b:2 c:4"},         // nothing
        {"a:1 b:1 c:1 d:1 e:1 f:1 a:1", {1, 5}, 0, 0, "a:2"}, // across chunks
    };
    for (const EditRow &row : rows) {
        SCOPED_TRACE(testing::Message()
                     << row.before << " - " << row.range.length << " at " << row.range.location);
        auto array = runs(row.before);
        array->deleteObjectsInRange(row.range);
        EXPECT_EQ(draw(*array), row.after);
        auto replaced = runs(row.before);
        replaced->replaceObjectsInRange(row.range, tag('x'), 0);
        EXPECT_EQ(draw(*replaced), row.after);
    }
}

TEST(QVMutableRLEArray, WhatIsDeletedAltogetherTakesInsertionsAtItsTail) {
    auto array = runs("a:3 b:2");
    array->deleteObjectsInRange({0, 5});
    EXPECT_EQ(array->count(), 0u);
    EXPECT_EQ(array->numberOfRuns(), 0u);
    array->insertObject(tag('c'), {0, 2});
    EXPECT_EQ(draw(*array), "c:2");
}

TEST(QVMutableRLEArray, ReplacementsJoinOnBothSides) {
    const EditRow rows[] = {
        {"a:5", {1, 2}, 'a', 2, "a:5"},                 // the same value in the middle
        {"a:5", {1, 2}, 'x', 2, "a:1 x:2 a:2"},         //
        {"a:5", {1, 2}, 'x', 7, "a:1 x:7 a:2"},         // longer
        {"a:5", {1, 4}, 'x', 1, "a:1 x:1"},             // the tail
        {"a:5", {0, 4}, 'x', 1, "x:1 a:1"},             // the head
        {"a:5", {0, 5}, 'x', 1, "x:1"},                 // all
        {"a:3 b:2 c:4", {3, 2}, 'a', 2, "a:5 c:4"},     // equal to the run before
        {"a:3 b:2 c:4", {3, 2}, 'c', 2, "a:3 c:6"},     // equal to the run behind
        {"a:3 b:2 a:4", {3, 2}, 'a', 2, "a:9"},         // equal to both
        {"a:3 b:2 a:4", {3, 2}, 'x', 1, "a:3 x:1 a:4"}, // the joined run is split again
        {"a:3 b:2 c:4", {2, 4}, 'x', 1, "a:2 x:1 c:3"}, //
        {"a:3 b:2 c:4", {0, 4}, 'b', 1, "b:2 c:4"},     // at the front, equal to the run behind
        {"a:3 b:2 c:4", {0, 3}, 'b', 9, "b:11 c:4"},    //
        {"a:3 b:2", {1, 4}, 'a', 2, "a:3"},             // to the end, equal to the run before
        {"a:3 b:2", {5, 0}, 'b', 2, "a:3 b:4"},         // at the end
        {"a:3 b:2", {2, 0}, 'x', 0, "a:3 b:2"},         // nothing
    };
    for (const EditRow &row : rows) {
        SCOPED_TRACE(testing::Message() << row.before << " " << row.range.location << "," << row.range.length
                                        << " " << row.letter << row.length);
        auto array = runs(row.before);
        array->replaceObjectsInRange(row.range, tag(row.letter), row.length);
        EXPECT_EQ(draw(*array), row.after);
    }
}

TEST(QVMutableRLEArray, OfTwoEqualValuesTheOneThatStandsTakesTheOther) {
    const auto first = std::make_shared<Tag>(u'a');
    const auto second = std::make_shared<Tag>(u'a');
    TagArray array;
    array.insertObject(first, {0, 2});
    array.insertObject(tag('b'), {2, 2});
    array.insertObject(second, {2, 1});
    EXPECT_EQ(array.objectAtIndex(2), first);
    array.insertObject(second, {4, 1});
    EXPECT_EQ(draw(array), "a:3 b:1 a:1 b:1");
    array.deleteObjectsInRange({3, 1});
    EXPECT_EQ(draw(array), "a:4 b:1");
    EXPECT_EQ(array.objectAtIndex(3), first);
}

TEST(QVMutableRLEArray, AtTheFrontANewValueTakesTheRunBehind) {
    const auto old = std::make_shared<Tag>(u'a');
    const auto fresh = std::make_shared<Tag>(u'a');
    auto array = TagArray::initWithObject(old, 4);
    array->replaceObjectsInRange({0, 2}, fresh, 1);
    EXPECT_EQ(draw(*array), "a:3");
    EXPECT_EQ(array->objectAtIndex(2), fresh);
    // Behind the front, and without a deletion, it is the standing value that stays.
    array->insertObject(old, {0, 1});
    EXPECT_EQ(array->objectAtIndex(0), fresh);
}

TEST(QVMutableRLEArray, ReplacingWithAnArrayTakesTheSourcesRuns) {
    const struct {
        const char *before;
        NSRange range;
        const char *source;
        NSRange from;
        const char *after;
    } rows[] = {
        {"", {0, 0}, "x:2 y:3", {1, 3}, "x:1 y:2"},
        {"a:3", {3, 0}, "x:2 y:3", {1, 3}, "a:3 x:1 y:2"},     // behind the end
        {"x:3", {3, 0}, "x:2 y:3", {1, 3}, "x:4 y:2"},         // the first joins the last run
        {"a:5", {2, 0}, "x:2 y:3", {0, 5}, "a:2 x:2 y:3 a:3"}, // inside of a run
        {"a:5", {2, 0}, "a:2 y:3", {0, 5}, "a:4 y:3 a:3"},     // the first like the run
        {"a:5", {2, 0}, "x:2 a:3", {0, 5}, "a:2 x:2 a:6"},     // the last like the run
        {"a:5", {2, 0}, "a:2", {0, 1}, "a:6"},                 // all like the run
        {"a:5 b:5", {5, 0}, "a:2 b:3", {0, 5}, "a:7 b:8"},     // between two, like both
        {"a:5 b:5", {5, 0}, "a:2 y:3", {0, 5}, "a:7 y:3 b:5"}, //
        {"a:5 b:5", {3, 4}, "x:2 y:3", {1, 3}, "a:3 x:1 y:2 b:3"},
        {"a:5 b:2 a:5", {5, 2}, "x:2", {0, 2}, "a:5 x:2 a:5"}, // the joined run is split again
        {"a:5 b:5", {3, 7}, "x:2 y:3", {0, 3}, "a:3 x:2 y:1"}, // to the end
        {"a:5 b:5", {3, 7}, "a:2 y:3", {0, 3}, "a:5 y:1"},     //
        {"a:5 b:5", {4, 3}, "x:1", {0, 0}, "a:4 b:3"},         // nothing in
        {"a:5 b:5", {0, 0}, "x:2 a:1", {0, 3}, "x:2 a:6 b:5"}, // at the front, nothing out
        {"a:5 b:5", {0, 0}, "x:2 y:3", {2, 2}, "y:2 a:5 b:5"}, // which reads the source from its range
        {"a:5 b:5", {2, 0}, "x:1", {1, 0}, "a:5 b:5"},         // nothing
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::Message()
                     << row.before << " " << row.range.location << "," << row.range.length << " from "
                     << row.source << " " << row.from.location << "," << row.from.length);
        auto array = runs(row.before);
        array->replaceObjectsInRange(row.range, *runs(row.source), row.from);
        EXPECT_EQ(draw(*array), row.after);
    }
}

// Meant: callers that replace the front hand over a source that starts with it.
TEST(QVMutableRLEArray, ReplacingTheFrontReadsTheSourceFromItsFirstSlot) {
    auto array = runs("a:5 b:5");
    array->replaceObjectsInRange({0, 2}, *runs("x:2 y:3"), {2, 3});
    EXPECT_EQ(draw(*array), "x:2 y:1 a:3 b:5");
    // All of it is the front too.
    array->replaceObjectsInRange({0, 11}, *runs("x:2 y:3"), {3, 2});
    EXPECT_EQ(draw(*array), "x:2");
}

TEST(QVMutableRLEArray, AnArrayCanReplaceAPartOfItself) {
    auto array = runs("a:2 b:2 c:2");
    array->replaceObjectsInRange({3, 1}, *array, {1, 4});
    EXPECT_EQ(draw(*array), "a:2 b:1 a:1 b:2 c:3");
}

TEST(QVMutableRLEArray, EditsBeyondTheBoundsThrowAndChangeNothing) {
    auto array = runs("a:3 b:2");
    const auto source = runs("x:3");
    const NSUInteger huge = std::numeric_limits<NSUInteger>::max();
    EXPECT_EQ(reasonOf([&] { array->insertObject(tag('x'), {6, 1}); }), beyondInsert);
    EXPECT_EQ(reasonOf([&] { array->insertObject(tag('x'), {6, 0}); }), beyondInsert);
    EXPECT_EQ(reasonOf([&] { array->insertObject(tag('x'), {1, huge}); }), beyondInsert);
    EXPECT_EQ(reasonOf([&] { array->deleteObjectsInRange({3, 3}); }), beyondDelete);
    EXPECT_EQ(reasonOf([&] { array->deleteObjectsInRange({6, 0}); }), beyondDelete);
    EXPECT_EQ(reasonOf([&] { array->deleteObjectsInRange({3, huge}); }), beyondDelete);
    EXPECT_EQ(reasonOf([&] { array->replaceObjectsInRange({6, 0}, tag('x'), 1); }), beyondInsert);
    EXPECT_EQ(reasonOf([&] { array->replaceObjectsInRange({3, 3}, tag('x'), 1); }), beyondReplace);
    EXPECT_EQ(reasonOf([&] { array->replaceObjectsInRange({3, huge}, tag('x'), 1); }), beyondReplace);
    EXPECT_EQ(reasonOf([&] { array->replaceObjectsInRange({3, 1}, tag('x'), huge); }), beyondInsert);
    EXPECT_EQ(reasonOf([&] { array->replaceObjectsInRange({6, 0}, *source, {0, 1}); }), beyondInserts);
    EXPECT_EQ(reasonOf([&] { array->replaceObjectsInRange({3, 3}, *source, {0, 1}); }), beyondReplace);
    EXPECT_EQ(reasonOf([&] { array->replaceObjectsInRange({3, 1}, *source, {2, 2}); }), beyondInserts);
    EXPECT_EQ(reasonOf([&] { array->replaceObjectsInRange({3, 1}, *source, {4, 0}); }), beyondInserts);
    EXPECT_EQ(reasonOf([&] { array->subarrayWithRange({3, 3}); }), beyondRange);
    EXPECT_EQ(reasonOf([&] { array->subarrayWithRange({6, 0}); }), beyondRange);
    EXPECT_EQ(draw(*array), "a:3 b:2");
    EXPECT_EQ(array->count(), 5u);
}

// MARK: - Copies

TEST(QVMutableRLEArray, ASubarrayStartsAtZeroAndSharesTheValues) {
    const auto array = runs("a:3 b:5 -:2 c:4");
    const auto part = array->subarrayWithRange({2, 7});
    EXPECT_EQ(draw(*part), "a:1 b:5 -:1");
    EXPECT_EQ(part->count(), 7u);
    EXPECT_EQ(part->objectAtIndex(0), array->objectAtIndex(2));
    EXPECT_EQ(draw(*array->subarrayWithRange({3, 0})), "");
    EXPECT_EQ(draw(*array->subarrayWithRange({0, 14})), draw(*array));
    EXPECT_EQ(draw(*array->subarrayWithRange({14, 0})), "");
}

TEST(QVMutableRLEArray, ACopyHasRunsOfItsOwn) {
    auto array = runs("a:3 b:5 -:2 c:4 d:1 e:1");
    // Leaves a shift pending, which the copy has to know.
    array->insertObject(tag('x'), {1, 1});
    const auto copy = array->copy();
    array->deleteObjectsInRange({0, 10});
    EXPECT_EQ(draw(*copy), "a:1 x:1 a:2 b:5 -:2 c:4 d:1 e:1");
    EXPECT_EQ(copy->count(), 17u);
    copy->validateRunIntegrity();
    EXPECT_EQ(letterOf(copy->objectAtIndex(16)), 'e');
}

// MARK: - Checking and describing

TEST(QVMutableRLEArray, DescribesItselfAndItsRuns) {
    const auto array = runs("a:3 -:2");
    const std::string text = array->description().UTF8String();
    EXPECT_THAT(text, testing::StartsWith("<QVMutableRLEArray: 0x"));
    EXPECT_THAT(text, testing::HasSubstr("> runs=("));
    EXPECT_THAT(text, testing::HasSubstr(" range={0, 3}, value=a>"));
    EXPECT_THAT(text, testing::HasSubstr(" range={3, 2}, value=(null)>"));
    EXPECT_THAT(text, testing::HasSubstr("<QVRLEArrayRun: 0x"));
}

TEST(QVMutableRLEArray, ARunCanBeReadAndChanged) {
    TagArray::Run run;
    run.setLocation(3);
    run.setLength(4);
    run.setValue(tag('a'));
    const TagArray::Run next(7, 1, nullptr);
    run.setNextRun(&next);
    EXPECT_EQ(run.location(), 3u);
    EXPECT_EQ(run.length(), 4u);
    EXPECT_EQ(run.value(), tag('a'));
    EXPECT_EQ(run.nextRun(), &next);
    EXPECT_TRUE(run.isValueEqualToValue(std::make_shared<Tag>(u'a')));
    EXPECT_FALSE(run.isValueEqualToValue(nullptr));
    EXPECT_TRUE(next.isValueEqualToValue(nullptr));
    EXPECT_FALSE(next.isValueEqualToValue(tag('a')));
}

TEST(QVMutableRLEArray, AValueIsAskedAboutItselfToo) {
    struct Stranger : NSObject {
        bool isEqual(const NSObject *) const override { return false; }
    };
    const auto stranger = std::make_shared<Stranger>();
    EXPECT_FALSE(QVRLEArrayValuesAreEqual(stranger, stranger));
}

namespace {

/// What validation says about runs that a test has broken.
template <typename Break> std::vector<NSString> complaints(Break breakThem, NSUInteger count = 10) {
    std::vector<TagArray::Run> runs{{0, 3, tag('a')}, {3, 5, tag('b')}, {8, 2, nullptr}};
    runs[0].setNextRun(&runs[1]);
    runs[1].setNextRun(&runs[2]);
    breakThem(runs);
    const AssertionRecorder assertions;
    TagArray::validateRuns(runs, count);
    return assertions.messages();
}

using Runs = std::vector<TagArray::Run>;

} // namespace

TEST(QVMutableRLEArray, ValidationIsSilentAboutSoundRuns) {
    EXPECT_THAT(complaints([](Runs &) {}), IsEmpty());
    EXPECT_THAT(complaints([](Runs &runs) { runs.clear(); }, 0), IsEmpty());
}

TEST(QVMutableRLEArray, ValidationNamesEachBrokenInvariant) {
    EXPECT_THAT(complaints([](Runs &runs) { runs[1].setNextRun(&runs[0]); }),
                ElementsAre(u"Next run is incorrect"));
    EXPECT_THAT(complaints([](Runs &runs) { runs[2].setNextRun(&runs[0]); }),
                ElementsAre(u"Next run is incorrect"));
    EXPECT_THAT(
        complaints([](Runs &runs) { runs[0].setLength(0), runs[1].setLocation(0), runs[1].setLength(8); }),
        ElementsAre(u"Range length is empty"));
    EXPECT_THAT(
        complaints([](Runs &runs) { runs[1].setLength(0), runs[2].setLocation(3), runs[2].setLength(7); }),
        ElementsAre(u"Range length is empty"));
    EXPECT_THAT(complaints([](Runs &runs) { runs[2].setLocation(11); }),
                ElementsAre(u"Range location is invalid", u"Range location is not contiguous",
                            u"Ranges do not match array count"));
    EXPECT_THAT(complaints([](Runs &runs) { runs[2].setLength(11); }),
                ElementsAre(u"Range length is invalid", u"Ranges do not match array count"));
    EXPECT_THAT(complaints([](Runs &runs) { runs[1].setLocation(2), runs[1].setLength(6); }),
                ElementsAre(u"Range location is not contiguous"));
    EXPECT_THAT(complaints([](Runs &runs) { runs[1].setValue(std::make_shared<Tag>(u'a')); }),
                ElementsAre(u"Range values of equality are contiguous"));
    EXPECT_THAT(complaints([](Runs &) {}, 11), ElementsAre(u"Ranges do not match array count"));
    EXPECT_THAT(complaints([](Runs &runs) { runs.clear(); }, 1),
                ElementsAre(u"Ranges do not match array count"));
}

TEST(QVMutableRLEArray, BrokenInvariantsAreAssertedInItsName) {
    std::vector<NSString> sources;
    auto before = NSAssertionHandler::setHandler(
        [&](const NSString &source, const NSString &) { sources.push_back(source); });
    TagArray::validateRuns({}, 1);
    NSAssertionHandler::setHandler(std::move(before));
    EXPECT_THAT(sources, ElementsAre(u"QVMutableRLEArray"));
}

TEST(QVMutableRLEArray, ASlotThatNoRunHoldsIsAsserted) {
    TagArray array;
    QVRLEArrayProbe::setCount(array, 5);
    const AssertionRecorder assertions;
    EXPECT_EQ(array.runIndexForIndex(2), NSNotFound);
    EXPECT_EQ(array.objectAtIndex(2), nullptr);
    const NSString message = u"We should never get here, because a value should've been found by now.";
    EXPECT_THAT(assertions.messages(), ElementsAre(message, message));
}

TEST(QVMutableRLEArray, ADeletionWhoseRunIsNotThereIsAsserted) {
    TagArray array;
    QVRLEArrayProbe::setCount(array, 5);
    const AssertionRecorder assertions;
    array.deleteObjectsInRange({0, 1});
    EXPECT_THAT(assertions.messages(), ElementsAre(u"Run range does not contain the expected index"));
    EXPECT_EQ(array.count(), 5u);
}
