#include "Platform/Foundation/NSKeyValueObserving.h"

#include "Platform/Foundation/NSException.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

/// Has a width and a height, an area that depends on both, and a part that it shows some keys of.
class Box : public NSKeyValueObserving {
public:
    void setWidth(int value) {
        willChangeValueForKey(u"width");
        width = value;
        didChangeValueForKey(u"width");
    }
    void setHeight(int value) {
        willChangeValueForKey(u"height");
        height = value;
        didChangeValueForKey(u"height");
    }

    std::any valueForKey(const NSString &key) const override {
        ++reads;
        if (key == u"width")
            return width;
        if (key == u"height")
            return height;
        if (key == u"area")
            return width * height;
        if (key == u"partsArea")
            return part ? part->valueForKey(u"area") : std::any();
        return {};
    }
    NSKeyValueObserving *observableForKey(const NSString &key) const override {
        return key == u"part" ? part.get() : nullptr;
    }
    std::set<NSString> keyPathsForValuesAffectingValueForKey(const NSString &key) const override {
        if (key == u"area")
            return {u"width", u"height"};
        if (key == u"partsArea")
            return {u"part.area"};
        if (key == u"hen")
            return {u"egg"};
        if (key == u"egg")
            return {u"hen"};
        return {};
    }

    int width = 1, height = 1;
    mutable int reads = 0;
    std::shared_ptr<Box> part;
};

constexpr NSKeyValueObservingOptions oldAndNew = NSKeyValueObservingOptionOld | NSKeyValueObservingOptionNew;

/// Writes each change as "path:old>new", with "-" for a value that did not come along.
class Record {
public:
    NSKeyValueObserving::Observer observer() {
        return [this](const NSKeyValueChange &change) {
            const auto text = [](const std::any &value) {
                return value.has_value() ? std::to_string(std::any_cast<int>(value)) : "-";
            };
            lines.push_back(change.keyPath.UTF8String() + ":" + text(change.oldValue) + ">" +
                            text(change.newValue));
            context = change.context;
        };
    }
    std::vector<std::string> take() { return std::exchange(lines, {}); }

    std::vector<std::string> lines;
    const void *context = nullptr;
};

using Lines = std::vector<std::string>;

} // namespace

TEST(NSKeyValueObserving, AnObserverIsToldOfChangesOfItsKeyAlone) {
    Box box;
    Record record;
    const auto observation = box.addObserver(u"width", oldAndNew, record.observer());
    box.setWidth(5);
    box.setHeight(7);
    box.setWidth(6);
    EXPECT_EQ(record.take(), (Lines{"width:1>5", "width:5>6"}));
}

TEST(NSKeyValueObserving, ValuesComeAlongOnlyWhereTheyWereAskedFor) {
    Box box;
    Record record;
    const auto plain = box.addObserver(u"width", 0, record.observer());
    box.setWidth(2);
    EXPECT_EQ(box.reads, 0);
    const auto old = box.addObserver(u"width", NSKeyValueObservingOptionOld, record.observer());
    const auto fresh = box.addObserver(u"width", NSKeyValueObservingOptionNew, record.observer());
    box.setWidth(3);
    EXPECT_EQ(record.take(), (Lines{"width:->-", "width:->-", "width:2>-", "width:->3"}));
}

TEST(NSKeyValueObserving, TheInitialChangeIsToldBeforeAddingReturns) {
    Box box;
    Record record;
    const auto observation =
        box.addObserver(u"width", oldAndNew | NSKeyValueObservingOptionInitial, record.observer());
    EXPECT_EQ(record.take(), (Lines{"width:->1"}));
    box.setWidth(2);
    EXPECT_EQ(record.take(), (Lines{"width:1>2"}));
    const auto valueless = box.addObserver(u"width", NSKeyValueObservingOptionInitial, record.observer());
    EXPECT_EQ(record.take(), (Lines{"width:->-"}));
}

TEST(NSKeyValueObserving, TheContextComesBackAsItWasGiven) {
    Box box;
    Record record;
    static const int mark = 0;
    const auto observation = box.addObserver(u"width", 0, record.observer(), &mark);
    box.setWidth(2);
    EXPECT_EQ(record.context, &mark);
}

TEST(NSKeyValueObserving, ObserversAreToldInTheOrderTheyWereAdded) {
    Box box;
    std::string order;
    const auto a = box.addObserver(u"area", 0, [&](const auto &) { order += 'a'; });
    const auto b = box.addObserver(u"width", 0, [&](const auto &) { order += 'b'; });
    const auto c = box.addObserver(u"area", 0, [&](const auto &) { order += 'c'; });
    box.setWidth(2);
    EXPECT_EQ(order, "abc");
}

TEST(NSKeyValueObserving, NestedChangesAreToldOnceWhenTheOutermostIsOver) {
    Box box;
    Record record;
    const auto observation = box.addObserver(u"width", oldAndNew, record.observer());
    box.willChangeValueForKey(u"width");
    box.setWidth(2);
    box.setWidth(3);
    EXPECT_TRUE(record.lines.empty());
    box.didChangeValueForKey(u"width");
    EXPECT_EQ(record.take(), (Lines{"width:1>3"}));
}

TEST(NSKeyValueObserving, AnEndWithoutABeginningTellsNobody) {
    Box box;
    Record record;
    const auto observation = box.addObserver(u"width", 0, record.observer());
    box.didChangeValueForKey(u"width");
    EXPECT_TRUE(record.lines.empty());
    box.setWidth(2);
    EXPECT_EQ(record.lines.size(), 1u);
}

TEST(NSKeyValueObserving, AKeyChangesWithTheKeysItDependsOn) {
    Box box;
    Record record;
    const auto observation = box.addObserver(u"area", oldAndNew, record.observer());
    box.setWidth(3);
    box.setHeight(4);
    EXPECT_EQ(record.take(), (Lines{"area:1>3", "area:3>12"}));
    // Both at once are one change of what depends on them.
    box.willChangeValueForKey(u"width");
    box.setHeight(5);
    box.width = 10;
    box.didChangeValueForKey(u"width");
    EXPECT_EQ(record.take(), (Lines{"area:12>50"}));
}

TEST(NSKeyValueObserving, APathLeadsToAnotherObject) {
    Box box;
    box.part = std::make_shared<Box>();
    Record record;
    const auto width = box.addObserver(u"part.width", oldAndNew, record.observer());
    const auto area = box.addObserver(u"part.area", oldAndNew, record.observer());
    const auto shown = box.addObserver(u"partsArea", oldAndNew, record.observer());
    box.setWidth(9);
    EXPECT_TRUE(record.lines.empty());
    box.part->setWidth(3);
    EXPECT_EQ(record.take(), (Lines{"part.width:1>3", "part.area:1>3", "partsArea:1>3"}));
    box.part->setHeight(2);
    EXPECT_EQ(record.take(), (Lines{"part.area:3>6", "partsArea:3>6"}));
}

TEST(NSKeyValueObserving, APathThatLeadsNowhereIsObservedInVain) {
    Box box;
    Record record;
    const auto none =
        box.addObserver(u"part.width", oldAndNew | NSKeyValueObservingOptionInitial, record.observer());
    const auto shown = box.addObserver(u"partsArea", oldAndNew, record.observer());
    const auto odd = box.addObserver(u"..", oldAndNew, record.observer());
    box.setWidth(2);
    EXPECT_EQ(record.take(), (Lines{"part.width:->-"}));
}

TEST(NSKeyValueObserving, AKeyThatNobodyKnowsNeverChanges) {
    Box box;
    Record record;
    const auto observation =
        box.addObserver(u"colour", oldAndNew | NSKeyValueObservingOptionInitial, record.observer());
    EXPECT_EQ(record.take(), (Lines{"colour:->-"}));
    box.setWidth(2);
    EXPECT_TRUE(record.lines.empty());
    // Saying that it changes is allowed.
    box.willChangeValueForKey(u"colour");
    box.didChangeValueForKey(u"colour");
    EXPECT_EQ(record.take(), (Lines{"colour:->-"}));
}

TEST(NSKeyValueObserving, KeysThatDependOnEachOtherChangeTogether) {
    Box box;
    Record record;
    const auto observation = box.addObserver(u"hen", 0, record.observer());
    box.willChangeValueForKey(u"egg");
    box.didChangeValueForKey(u"egg");
    EXPECT_EQ(record.take(), (Lines{"hen:->-"}));
}

TEST(NSKeyValueObserving, AnObservationEndsWithItsToken) {
    Box box;
    Record record;
    { const auto observation = box.addObserver(u"area", 0, record.observer()); }
    auto first = box.addObserver(u"width", 0, record.observer());
    auto second = std::move(first);
    first.invalidate();
    box.setWidth(2);
    EXPECT_EQ(record.take(), (Lines{"width:->-"}));
    second.invalidate();
    second.invalidate();
    box.setWidth(3);
    EXPECT_TRUE(record.lines.empty());
}

TEST(NSKeyValueObserving, ATokenThatTakesAnotherEndsItsOwn) {
    Box box;
    Record record;
    auto token = box.addObserver(u"width", 0, record.observer());
    token = box.addObserver(u"height", 0, record.observer());
    box.setWidth(2);
    box.setHeight(2);
    EXPECT_EQ(record.take(), (Lines{"height:->-"}));
}

TEST(NSKeyValueObserving, ATokenMayOutliveWhatItObserves) {
    Record record;
    NSKeyValueObservation token;
    const auto part = std::make_shared<Box>();
    {
        Box box;
        box.part = part;
        token = box.addObserver(u"part.width", oldAndNew, record.observer());
        part->setWidth(2);
    }
    EXPECT_EQ(record.take(), (Lines{"part.width:1>2"}));
    // The end of the path is still there, who observed through it is not.
    part->setWidth(3);
    EXPECT_TRUE(record.lines.empty());
    token.invalidate();
}

TEST(NSKeyValueObserving, AnObserverRemovedWhileOthersAreToldHearsNothing) {
    Box box;
    Record record;
    NSKeyValueObservation second;
    const auto first = box.addObserver(u"width", 0, [&](const auto &) { second.invalidate(); });
    second = box.addObserver(u"width", 0, record.observer());
    box.setWidth(2);
    EXPECT_TRUE(record.lines.empty());
}

TEST(NSKeyValueObserving, AnObserverMayRemoveItself) {
    Box box;
    NSKeyValueObservation token;
    int told = 0;
    token = box.addObserver(u"width", 0, [&](const auto &) {
        token.invalidate();
        ++told;
    });
    box.setWidth(2);
    box.setWidth(3);
    EXPECT_EQ(told, 1);
}

TEST(NSKeyValueObserving, AnObserverAddedWhileOthersAreToldHearsOfTheNextChange) {
    Box box;
    Record record;
    std::vector<NSKeyValueObservation> added;
    const auto first = box.addObserver(u"width", 0, [&](const auto &) {
        if (added.empty())
            added.push_back(box.addObserver(u"width", oldAndNew, record.observer()));
    });
    box.setWidth(2);
    EXPECT_TRUE(record.lines.empty());
    box.setWidth(3);
    EXPECT_EQ(record.take(), (Lines{"width:2>3"}));
}

TEST(NSKeyValueObserving, AnObserverAddedInTheMiddleOfAChangeDoesNotHearOfIt) {
    Box box;
    Record record;
    box.willChangeValueForKey(u"width");
    const auto observation = box.addObserver(u"width", oldAndNew, record.observer());
    box.didChangeValueForKey(u"width");
    EXPECT_TRUE(record.lines.empty());
}

TEST(NSKeyValueObserving, AnObserverMayChangeTheValueAgain) {
    Box box;
    Record record;
    const auto limiting = box.addObserver(u"width", 0, [&](const auto &) {
        if (box.width > 10)
            box.setWidth(10);
    });
    const auto observation = box.addObserver(u"width", oldAndNew, record.observer());
    box.setWidth(50);
    // Those behind hear of both changes as one.
    EXPECT_EQ(record.take(), (Lines{"width:1>10"}));
    box.setWidth(3);
    EXPECT_EQ(record.take(), (Lines{"width:10>3"}));
}

TEST(NSKeyValueObserving, AnObserverMayLetGoOfTheObject) {
    auto box = std::make_unique<Box>();
    Record record;
    const auto first = box->addObserver(u"width", 0, [&](const auto &) { box.reset(); });
    const auto second = box->addObserver(u"width", oldAndNew, record.observer());
    box->setWidth(2);
    EXPECT_EQ(box, nullptr);
    EXPECT_TRUE(record.lines.empty());
}

TEST(NSKeyValueObserving, AnExceptionOfAnObserverLeavesTheOthersReady) {
    Box box;
    Record record;
    bool throws = true;
    const auto first = box.addObserver(u"width", 0, [&](const auto &) {
        if (throws)
            throw NSException(NSInvalidArgumentException, u"no");
    });
    const auto second = box.addObserver(u"width", oldAndNew, record.observer());
    EXPECT_THROW(box.setWidth(2), NSException);
    EXPECT_TRUE(record.lines.empty());
    throws = false;
    box.setWidth(3);
    EXPECT_EQ(record.take(), (Lines{"width:2>3"}));
}

TEST(NSKeyValueObserving, AMissingObserverIsAsserted) {
    const test::AssertionRecorder assertions;
    Box box;
    auto token = box.addObserver(u"width", 0, nullptr);
    EXPECT_EQ(assertions.messages(),
              (std::vector<NSString>{u"Invalid parameter not satisfying: observer != nil"}));
    box.setWidth(2);
    token.invalidate();
}

TEST(NSKeyValueObserving, WithoutObserversNothingIsRead) {
    Box box;
    box.setWidth(2);
    {
        const auto gone = box.addObserver(u"width", oldAndNew, [](const auto &) {});
    }
    box.setWidth(3);
    EXPECT_EQ(box.reads, 0);
}
