#include "Quorvane/Categories/NSRange+QuorvaneAdditions.h"

#include "Platform/Foundation/NSException.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>
#include <random>

using namespace quorvane;

namespace {

constexpr NSUInteger beyond = ~NSUInteger(0);

struct Pending {
    NSRange range;
    NSInteger change = 0;
    friend bool operator==(const Pending &, const Pending &) = default;
    friend void PrintTo(const Pending &pending, std::ostream *stream) {
        PrintTo(pending.range, stream);
        *stream << (pending.change < 0 ? " " : " +") << pending.change;
    }
};

Pending coalesced(Pending pending, NSRange edited, NSInteger change) {
    QVRangeCoalesceWithEdit(&pending.range, &pending.change, edited, change);
    return pending;
}

/// Keeps where assertions come from and what they say.
class SourceRecorder {
public:
    SourceRecorder() {
        _previous = NSAssertionHandler::setHandler([this](const NSString &source, const NSString &message) {
            failures.push_back(NSString::stringWithFormat(u"%@: %@", source, message));
        });
    }
    ~SourceRecorder() { NSAssertionHandler::setHandler(std::move(_previous)); }
    std::vector<NSString> failures;

private:
    NSAssertionHandler::Handler _previous;
};

} // namespace

TEST(QVRangeCoalesceWithEdit, WithNothingPendingTheEditIsTakenAsItStands) {
    EXPECT_EQ(coalesced({NSNotFoundRange, 0}, {3, 4}, 2), (Pending{{3, 4}, 2}));
    // Whatever change was left over is overwritten.
    EXPECT_EQ(coalesced({NSNotFoundRange, 99}, {3, 4}, 2), (Pending{{3, 4}, 2}));
}

TEST(QVRangeCoalesceWithEdit, AnEditInsideGrowsOrShrinksThePendingRange) {
    EXPECT_EQ(coalesced({{10, 5}, 1}, {12, 3}, 2), (Pending{{10, 7}, 3}));
    // Deleting inside: no new text, the location stays.
    EXPECT_EQ(coalesced({{10, 5}, 5}, {12, 0}, -2), (Pending{{10, 3}, 3}));
    // Deleting all of it.
    EXPECT_EQ(coalesced({{10, 5}, 0}, {10, 0}, -5), (Pending{{10, 0}, -5}));
}

TEST(QVRangeCoalesceWithEdit, AnInsertionAtEitherEndOfThePendingRangeIsInside) {
    EXPECT_EQ(coalesced({{10, 5}, 0}, {10, 2}, 2), (Pending{{10, 7}, 2}));
    EXPECT_EQ(coalesced({{10, 5}, 0}, {15, 2}, 2), (Pending{{10, 7}, 2}));
}

TEST(QVRangeCoalesceWithEdit, AnEditOfExactlyThePendingRangeIsInsideAndNotSwallowing) {
    EXPECT_EQ(coalesced({{10, 5}, 3}, {10, 2}, -3), (Pending{{10, 2}, 0}));
    EXPECT_EQ(coalesced({{10, 5}, 3}, {10, 5}, 0), (Pending{{10, 5}, 3}));
    const SourceRecorder recorder;
    // Both give the same range; which one it was shows in the name of an assertion.
    coalesced({{beyond, 0}, 0}, {beyond, 5}, 5);
    ASSERT_EQ(recorder.failures.size(), 1u);
    EXPECT_EQ(recorder.failures[0], u"NSRange+QuorvaneAdditions: SR1: Range after coalescence exceeds the "
                                    u"bounds of representable text ranges.");
}

TEST(QVRangeCoalesceWithEdit, AnEditThatSwallowsThePendingRangeReplacesIt) {
    // Old extent {8, 10}.
    EXPECT_EQ(coalesced({{10, 5}, 1}, {8, 4}, -6), (Pending{{8, 4}, -5}));
    // The same start, further than the end.
    EXPECT_EQ(coalesced({{10, 5}, 1}, {10, 1}, -7), (Pending{{10, 1}, -6}));
    // The same end, before the start.
    EXPECT_EQ(coalesced({{10, 5}, 0}, {9, 0}, -6), (Pending{{9, 0}, -6}));
}

TEST(QVRangeCoalesceWithEdit, APendingRangeBehindTheEditIsShiftedAndUnited) {
    // {2, 3} became {2, 4}: the pending range moves to {11, 5}.
    EXPECT_EQ(coalesced({{10, 5}, 7}, {2, 4}, 1), (Pending{{2, 14}, 8}));
    // The old extent ends exactly where the pending range begins.
    EXPECT_EQ(coalesced({{10, 5}, 0}, {8, 0}, -2), (Pending{{8, 5}, -2}));
}

TEST(QVRangeCoalesceWithEdit, APendingRangeBeforeTheEditIsUnitedWithIt) {
    EXPECT_EQ(coalesced({{10, 5}, 1}, {20, 3}, -1), (Pending{{10, 13}, 0}));
    // Replacing what begins exactly where the pending range ends.
    EXPECT_EQ(coalesced({{10, 5}, 0}, {15, 1}, -1), (Pending{{10, 6}, -1}));
}

TEST(QVRangeCoalesceWithEdit, AnEditOverThePendingStartKeepsWhatWasPendingBehindIt) {
    // Old extent {8, 4} reaches two units into {10, 5}; three of it remain behind the new text.
    EXPECT_EQ(coalesced({{10, 5}, 1}, {8, 1}, -3), (Pending{{8, 4}, -2}));
}

TEST(QVRangeCoalesceWithEdit, AnEditOverThePendingEndKeepsWhatWasPendingBeforeIt) {
    // Old extent {13, 6} begins three units into {10, 5}.
    EXPECT_EQ(coalesced({{10, 5}, 1}, {13, 2}, -4), (Pending{{10, 5}, -3}));
}

TEST(QVRangeCoalesceWithEdit, ThePendingChangeMayBeNull) {
    NSRange range{10, 5};
    QVRangeCoalesceWithEdit(&range, nullptr, {12, 3}, 2);
    EXPECT_EQ(range, (NSRange{10, 7}));
}

TEST(QVRangeCoalesceWithEdit, ARangeThatWrapsAroundIsAssertedByItsCaseAndStored) {
    struct {
        const char16_t *tag;
        Pending pending;
        NSRange edited;
        NSInteger change;
        Pending expected;
    } const rows[] = {
        {u"SR0", {NSNotFoundRange, 0}, {10, beyond}, 1, {{10, beyond}, 1}},
        // An insertion at the very end of the positions.
        {u"SR1", {{beyond - 2, 2}, 0}, {beyond - 1, 3}, 3, {{beyond - 2, 5}, 3}},
        // The old extent {beyond - 9, 9} swallows, the new text is longer than the positions reach.
        {u"SR2", {{beyond - 5, 2}, 0}, {beyond - 9, 12}, 3, {{beyond - 9, 12}, 3}},
        // A union can only wrap where both ranges do: the pending one by its shift, the edit's by itself.
        {u"SR3", {{beyond - 10, 5}, 0}, {100, beyond - 49}, 8, {{100, beyond - 49}, 8}},
        {u"SR4", {{200, beyond - 149}, 0}, {300, beyond - 239}, -200, {{200, beyond - 139}, -200}},
        {u"SR5", {{beyond - 5, 5}, 0}, {beyond - 9, 10}, 3, {{beyond - 9, 12}, 3}},
        {u"SR6", {{beyond - 9, 5}, 0}, {beyond - 6, 8}, 3, {{beyond - 9, 11}, 3}},
    };
    for (const auto &row : rows) {
        const SourceRecorder recorder;
        EXPECT_EQ(coalesced(row.pending, row.edited, row.change), row.expected);
        ASSERT_EQ(recorder.failures.size(), 1u) << NSString(row.tag).UTF8String();
        EXPECT_EQ(recorder.failures[0], NSString::stringWithFormat(
                                            u"NSRange+QuorvaneAdditions: %@: Range after coalescence exceeds "
                                            u"the bounds of representable text ranges.",
                                            row.tag));
    }
}

TEST(QVRangeCoalesceWithEdit, TheDefaultHandlerThrowsBeforeAnythingIsStored) {
    const test::LogRecorder log;
    NSRange range = NSNotFoundRange;
    NSInteger change = 7;
    EXPECT_THROW(QVRangeCoalesceWithEdit(&range, &change, {10, beyond}, 1), NSException);
    EXPECT_EQ(range, NSNotFoundRange);
    EXPECT_EQ(change, 7);
}

TEST(QVRangeCoalesceWithEdit, RandomEditsAreCoveredAndLeaveTheRestAsItWas) {
    // The law that the cases serve: outside of the pending range the text is the old one, shifted by the
    // pending change behind it.
    for (unsigned seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::u16string original(40, u' ');
        for (std::size_t index = 0; index < original.size(); ++index)
            original[index] = static_cast<char16_t>(0x100 + index);
        std::u16string text = original;
        Pending pending{NSNotFoundRange, 0};
        for (int step = 0; step < 6; ++step) {
            const std::size_t location = random() % (text.size() + 1);
            const std::size_t removed = random() % std::min<std::size_t>(8, text.size() - location + 1);
            const std::size_t inserted = random() % 6;
            text.replace(location, removed, std::u16string(inserted, u'x'));
            pending = coalesced(pending, {location, inserted},
                                static_cast<NSInteger>(inserted) - static_cast<NSInteger>(removed));
            ASSERT_LE(NSMaxRange(pending.range), text.size());
            ASSERT_EQ(static_cast<NSInteger>(text.size()),
                      static_cast<NSInteger>(original.size()) + pending.change);
            ASSERT_EQ(text.substr(0, pending.range.location), original.substr(0, pending.range.location));
            const std::size_t tail = text.size() - NSMaxRange(pending.range);
            ASSERT_LE(pending.range.location + tail, original.size());
            ASSERT_EQ(text.substr(text.size() - tail), original.substr(original.size() - tail));
        }
    }
}
