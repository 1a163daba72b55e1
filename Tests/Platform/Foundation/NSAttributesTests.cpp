#include "Platform/Foundation/NSAttributes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <thread>

using namespace quorvane;

namespace {

/// Equal when the letters are.
class Swatch : public NSObject {
public:
    explicit Swatch(char letter) : _letter(letter) {}
    bool isEqual(const NSObject *other) const override {
        const auto *const swatch = dynamic_cast<const Swatch *>(other);
        return swatch != nullptr && swatch->_letter == _letter;
    }
    std::size_t hash() const override { return static_cast<std::size_t>(_letter); }
    NSString description() const override {
        return NSString(std::u16string(1, static_cast<char16_t>(_letter)));
    }

private:
    char _letter;
};

class Other : public NSObject {};

std::shared_ptr<Swatch> swatch(char letter) { return std::make_shared<Swatch>(letter); }

const NSAttributeKey keyA(u"A");
const NSAttributeKey keyB(u"B");
const NSAttributeKey keyC(u"C");

} // namespace

TEST(NSAttributeKey, IsAsBigAsAPointer) {
    EXPECT_EQ(sizeof(NSAttributeKey), sizeof(void *));
    EXPECT_EQ(sizeof(NSAttributes), sizeof(void *));
}

TEST(NSAttributeKey, EqualNamesGiveTheSameKey) {
    const std::u16string built = std::u16string(u"NSF") + u"ont";
    EXPECT_EQ(NSAttributeKey(built), NSFontAttributeName.key());
    EXPECT_EQ(&NSAttributeKey(built).string(), &NSFontAttributeName.string());
    EXPECT_NE(keyA, keyB);
    EXPECT_EQ(keyA.string(), u"A");
    EXPECT_EQ(keyA.hash(), NSAttributeKey(u"A").hash());
}

TEST(NSAttributeKey, IsOrderedByName) {
    const NSAttributeKey late(u"zz made first");
    const NSAttributeKey early(u"aa made later");
    EXPECT_LT(early, late);
    EXPECT_FALSE(late < early);
    EXPECT_TRUE((late <=> late) == 0);
}

TEST(NSAttributeKey, ThreadsThatInternTheSameNamesGetTheSameKeys) {
    const auto internAll = [](std::vector<NSAttributeKey> &keys) {
        for (int i = 0; i < 200; ++i)
            keys.emplace_back(NSString::stringWithFormat(u"threads %d", i).view());
    };
    std::vector<NSAttributeKey> first;
    std::vector<NSAttributeKey> second;
    std::thread other([&] { internAll(second); });
    internAll(first);
    other.join();
    EXPECT_EQ(first, second);
}

TEST(NSAttributeKey, PlatformNamesAreTheOnesThatFilesCarry) {
    EXPECT_EQ(NSFontAttributeName.string(), u"NSFont");
    EXPECT_EQ(NSForegroundColorAttributeName.string(), u"NSColor");
    EXPECT_EQ(NSBackgroundColorAttributeName.string(), u"NSBackgroundColor");
    EXPECT_EQ(NSUnderlineStyleAttributeName.string(), u"NSUnderline");
    EXPECT_EQ(NSStrikethroughStyleAttributeName.string(), u"NSStrikethrough");
}

TEST(NSAttributeValue, ComparesNumbersStringsAndMarkersByValue) {
    EXPECT_EQ(NSAttributeValue(3), NSAttributeValue(std::uint8_t(3)));
    EXPECT_NE(NSAttributeValue(3), NSAttributeValue(4));
    EXPECT_NE(NSAttributeValue(3), NSAttributeValue(3.0));
    EXPECT_EQ(NSAttributeValue(0.5), NSAttributeValue(0.5f));
    EXPECT_EQ(NSAttributeValue(NSString(u"x")), NSAttributeValue(u"x"));
    EXPECT_NE(NSAttributeValue(u"x"), NSAttributeValue(u"y"));
    EXPECT_NE(NSAttributeValue(u""), NSAttributeValue(NSString()));
    EXPECT_EQ(NSAttributeValue(), NSAttributeValue(NSNull()));
    EXPECT_NE(NSAttributeValue(), NSAttributeValue(0));
}

TEST(NSAttributeValue, ComparesObjectsByTheirOwnEquality) {
    EXPECT_EQ(NSAttributeValue(swatch('r')), NSAttributeValue(swatch('r')));
    EXPECT_NE(NSAttributeValue(swatch('r')), NSAttributeValue(swatch('g')));
    EXPECT_NE(NSAttributeValue(std::make_shared<Other>()), NSAttributeValue(std::make_shared<Other>()));
    EXPECT_NE(NSAttributeValue(swatch('r')), NSAttributeValue(1));
    EXPECT_NE(NSAttributeValue(1), NSAttributeValue(swatch('r')));
    EXPECT_EQ(NSAttributeValue(swatch('r')).hash(), NSAttributeValue(swatch('r')).hash());
}

TEST(NSAttributeValue, ReadsNumbersOfBothKindsAndNothingElse) {
    EXPECT_EQ(NSAttributeValue(2.9).integerValue(), 2);
    EXPECT_EQ(NSAttributeValue(-2.9).integerValue(), -2);
    EXPECT_EQ(NSAttributeValue(7).doubleValue(), 7.0);
    EXPECT_EQ(NSAttributeValue(u"7").integerValue(), 0);
    EXPECT_EQ(NSAttributeValue().doubleValue(), 0);
    EXPECT_EQ(NSAttributeValue(1e300).integerValue(), std::numeric_limits<NSInteger>::max());
    EXPECT_EQ(NSAttributeValue(-1e300).integerValue(), std::numeric_limits<NSInteger>::min());
    EXPECT_EQ(NSAttributeValue(std::nan("")).integerValue(), 0);
    EXPECT_EQ(NSAttributeValue(u"7").stringValue(), u"7");
    EXPECT_TRUE(NSAttributeValue(7).stringValue().isNull());
}

TEST(NSAttributeValue, AnswersItsObjectOnlyAsAClassThatItIsOf) {
    const NSAttributeValue value(swatch('r'));
    EXPECT_NE(value.object<Swatch>(), nullptr);
    EXPECT_NE(value.object(), nullptr);
    EXPECT_EQ(value.object<Other>(), nullptr);
    EXPECT_EQ(NSAttributeValue(1).object<Swatch>(), nullptr);
}

TEST(NSAttributes, EmptyDictionariesAreAllTheSameObject) {
    EXPECT_TRUE(NSAttributes().empty());
    EXPECT_TRUE(NSAttributes({}).isIdenticalTo(NSAttributes()));
    EXPECT_TRUE(NSMutableAttributes().attributes().isIdenticalTo(NSAttributes()));
    EXPECT_EQ(NSAttributes().valueForKey(keyA), nullptr);
    EXPECT_EQ(NSAttributes().hash(), 0u);
}

TEST(NSAttributes, LooksUpByKey) {
    const NSAttributes attributes{{keyB, 2}, {keyA, swatch('r')}};
    ASSERT_NE(attributes.valueForKey(keyB), nullptr);
    EXPECT_EQ(*attributes.valueForKey(keyB), NSAttributeValue(2));
    EXPECT_EQ(attributes.valueForKey(keyC), nullptr);
    EXPECT_NE(attributes.objectForKey<Swatch>(keyA), nullptr);
    EXPECT_EQ(attributes.objectForKey<Swatch>(keyB), nullptr);
    EXPECT_EQ(attributes.objectForKey<Swatch>(keyC), nullptr);
}

TEST(NSAttributes, OfSeveralValuesForAKeyTheLastCounts) {
    const NSAttributes attributes{{keyA, 1}, {keyB, 2}, {keyA, 3}};
    EXPECT_EQ(attributes.count(), 2u);
    EXPECT_EQ(*attributes.valueForKey(keyA), NSAttributeValue(3));
}

TEST(NSAttributes, ListsItsAttributesByName) {
    const NSAttributes attributes{{keyC, 3}, {keyA, 1}, {keyB, 2}};
    EXPECT_EQ(attributes.description(), u"{A = 1; B = 2; C = 3}");
}

TEST(NSAttributes, ComparesByContents) {
    const NSAttributes attributes{{keyA, swatch('r')}, {keyB, 2}};
    const NSAttributes copy = attributes;
    const NSAttributes equal{{keyB, 2}, {keyA, swatch('r')}};
    EXPECT_TRUE(copy.isIdenticalTo(attributes));
    EXPECT_FALSE(equal.isIdenticalTo(attributes));
    EXPECT_EQ(equal, attributes);
    EXPECT_EQ(equal.hash(), attributes.hash());
    EXPECT_NE(attributes, (NSAttributes{{keyA, swatch('g')}, {keyB, 2}}));
    EXPECT_NE(attributes, (NSAttributes{{keyA, swatch('r')}}));
    EXPECT_NE(attributes, NSAttributes());
    EXPECT_NE(NSAttributes(), attributes);
}

TEST(NSAttributes, AddingReplacesValuesOfTheSameKeysAndLeavesTheOriginal) {
    const NSAttributes base{{keyA, 1}, {keyB, 2}};
    const NSAttributes sum = base.attributesByAddingAttributes({{keyB, 5}, {keyC, 6}});
    EXPECT_EQ(sum, (NSAttributes{{keyA, 1}, {keyB, 5}, {keyC, 6}}));
    EXPECT_EQ(base, (NSAttributes{{keyA, 1}, {keyB, 2}}));
}

TEST(NSAttributes, DerivingWhatDoesNotDifferGivesTheSameObject) {
    const NSAttributes base{{keyA, 1}};
    EXPECT_TRUE(base.attributesByAddingAttributes({}).isIdenticalTo(base));
    EXPECT_TRUE(base.attributesByAddingAttributes(base).isIdenticalTo(base));
    EXPECT_TRUE(NSAttributes().attributesByAddingAttributes(base).isIdenticalTo(base));
    EXPECT_TRUE(base.attributesBySettingValue(1, keyA).isIdenticalTo(base));
    EXPECT_TRUE(base.attributesByRemovingKeys({keyB}).isIdenticalTo(base));
}

TEST(NSAttributes, RemovingAllKeysGivesTheEmptyDictionary) {
    const NSAttributes base{{keyA, 1}, {keyB, 2}};
    EXPECT_EQ(base.attributesByRemovingKeys({keyA, keyC}), (NSAttributes{{keyB, 2}}));
    EXPECT_TRUE(base.attributesByRemovingKeys({keyB, keyA}).empty());
}

TEST(NSAttributes, SettingOneValueKeepsTheOthers) {
    const NSAttributes base{{keyA, 1}, {keyB, 2}};
    EXPECT_EQ(base.attributesBySettingValue(NSNull(), keyA), (NSAttributes{{keyA, NSNull()}, {keyB, 2}}));
    EXPECT_EQ(base.attributesBySettingValue(9, keyC), (NSAttributes{{keyA, 1}, {keyB, 2}, {keyC, 9}}));
}

TEST(NSAttributes, KeepsItsObjectsAsLongAsAnyCopyLives) {
    auto object = swatch('r');
    const std::weak_ptr<Swatch> watched = object;
    {
        NSAttributes copy;
        {
            const NSAttributes attributes{{keyA, std::move(object)}};
            copy = attributes;
        }
        EXPECT_FALSE(watched.expired());
    }
    EXPECT_TRUE(watched.expired());
}

TEST(NSMutableAttributes, SetsRemovesAndClears) {
    NSMutableAttributes building;
    building.set(keyB, 2);
    building.set(keyA, 1);
    building.set(keyB, 3);
    building.remove(keyC);
    EXPECT_EQ(building.count(), 2u);
    EXPECT_EQ(*building.valueForKey(keyB), NSAttributeValue(3));
    EXPECT_EQ(building.attributes(), (NSAttributes{{keyA, 1}, {keyB, 3}}));
    building.remove(keyA);
    EXPECT_FALSE(building.containsKey(keyA));
    building.clear();
    EXPECT_TRUE(building.empty());
    EXPECT_TRUE(building.attributes().empty());
}

TEST(NSMutableAttributes, WhatWasMadeStaysAsItWas) {
    NSMutableAttributes building(NSAttributes{{keyA, 1}});
    const NSAttributes made = building.attributes();
    building.set(keyA, 2);
    EXPECT_EQ(made, (NSAttributes{{keyA, 1}}));
}

TEST(NSMutableAttributes, HoldsMoreThanFitsInside) {
    NSMutableAttributes building;
    std::vector<NSAttributeKey> keys;
    for (int i = 40; i-- > 0;)
        keys.emplace_back(NSString::stringWithFormat(u"many %d", i).view());
    for (std::size_t i = 0; i < keys.size(); ++i)
        building.set(keys[i], i);
    const NSAttributes made = building.attributes();
    EXPECT_EQ(made.count(), 40u);
    for (std::size_t i = 0; i < keys.size(); ++i)
        EXPECT_EQ(made.valueForKey(keys[i])->integerValue(), static_cast<NSInteger>(i));
}
