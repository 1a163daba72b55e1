#include "Platform/Foundation/NSValue.h"

#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

struct Pair {
    double first;
    double second;
};

} // namespace

TEST(NSValue, GivesBackTheRecordThatItHolds) {
    const auto value = NSValue::valueWithBytes(Pair{1.5, -2}, u"{Pair=dd}");
    EXPECT_EQ(value->objCType(), u"{Pair=dd}");
    const auto pair = value->getValue<Pair>(u"{Pair=dd}");
    ASSERT_TRUE(pair);
    EXPECT_EQ(pair->first, 1.5);
    EXPECT_EQ(pair->second, -2);
}

TEST(NSValue, ARecordOfAnotherTypeOrSizeIsNotGiven) {
    const auto value = NSValue::valueWithBytes(Pair{1, 2}, u"{Pair=dd}");
    EXPECT_EQ(value->getValue<Pair>(u"{Peer=dd}"), std::nullopt);
    EXPECT_EQ(value->getValue<double>(u"{Pair=dd}"), std::nullopt);
}

TEST(NSValue, HoldsRanges) {
    const auto value = NSValue::valueWithRange({3, 4});
    EXPECT_EQ(value->objCType(), u"{_NSRange=QQ}");
    EXPECT_EQ(value->rangeValue(), (NSRange{3, 4}));
    EXPECT_EQ(NSValue::valueWithBytes(Pair{1, 2}, u"{Pair=dd}")->rangeValue(), (NSRange{0, 0}));
}

TEST(NSValue, EqualsAValueOfTheSameTypeAndBytes) {
    const auto value = NSValue::valueWithBytes(Pair{1, 2}, u"{Pair=dd}");
    const auto same = NSValue::valueWithBytes(Pair{1, 2}, u"{Pair=dd}");
    EXPECT_TRUE(value->isEqual(same.get()));
    EXPECT_EQ(value->hash(), same->hash());
    EXPECT_FALSE(value->isEqual(NSValue::valueWithBytes(Pair{1, 3}, u"{Pair=dd}").get()));
    EXPECT_FALSE(value->isEqual(NSValue::valueWithBytes(Pair{1, 2}, u"{Peer=dd}").get()));
    EXPECT_FALSE(value->isEqual(nullptr));
}

TEST(NSValue, DescribesItsType) {
    EXPECT_EQ(NSValue::valueWithRange({1, 2})->description(), u"<NSValue {_NSRange=QQ}>");
}
