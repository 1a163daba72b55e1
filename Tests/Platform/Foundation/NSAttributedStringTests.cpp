#include "Platform/Foundation/NSAttributedString.h"

#include "Platform/Foundation/NSException.h"
#include "Tests/Support/Printing.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

const NSAttributeKey letter(u"letter");
const NSAttributeKey number(u"number");

NSAttributes letters(const char16_t *value) { return {{letter, value}}; }

/// A string that tells of each of its characters as a run of its own, as a storage may.
class SplitString final : public NSAttributedString {
public:
    using NSAttributedString::attributesAtIndex;
    explicit SplitString(std::shared_ptr<NSAttributedString> whole) : _whole(std::move(whole)) {}
    NSUInteger length() const override { return _whole->length(); }
    QVTextReader string() const override { return _whole->string(); }
    NSAttributes attributesAtIndex(NSUInteger index, NSRange *effectiveRange) const override {
        checkIndex(index);
        if (effectiveRange != nullptr)
            *effectiveRange = {index, 1};
        return _whole->attributesAtIndex(index);
    }

private:
    std::shared_ptr<NSAttributedString> _whole;
};

/// "aaabbc" with letters a, b and none, and a number on the second and third a and the first b.
std::shared_ptr<NSMutableAttributedString> sample() {
    auto string = NSMutableAttributedString::initWithString(u"aaabbc");
    string->addAttributes(letters(u"a"), {0, 3});
    string->addAttributes(letters(u"b"), {3, 2});
    string->addAttribute(number, 7, {1, 3});
    return string;
}

template <typename Action> NSString nameOfExceptionFrom(Action action) {
    try {
        action();
    } catch (const NSException &exception) {
        return exception.name();
    }
    return u"none";
}

/// "0+3 a, 3+2 b" for the letter's stretches, "-" where there is none.
std::u16string walkLetters(const NSAttributedString &string, NSRange range,
                           NSAttributedStringEnumerationOptions options) {
    std::u16string drawn;
    string.enumerateAttribute(
        letter, range, options, [&](const NSAttributeValue *value, NSRange stretch, bool &) {
            drawn += NSString::stringWithFormat(u"%lu+%lu %@, ", stretch.location, stretch.length,
                                                value ? value->stringValue() : NSString(u"-"))
                         .view();
        });
    return drawn;
}

} // namespace

TEST(NSAttributedString, StartsWithTheGivenAttributesAllOver) {
    const auto string = NSAttributedString::initWithString(u"abc", letters(u"x"));
    NSRange range;
    EXPECT_EQ(string->attributesAtIndex(2, &range), letters(u"x"));
    EXPECT_EQ(range, NSMakeRange(0, 3));
    EXPECT_EQ(string->string().substringWithRange({0, 3}), u"abc");
    EXPECT_EQ(NSAttributedString::initWithString(u"")->length(), 0u);
}

TEST(NSAttributedString, TellsTheStretchOfTheSameAttributes) {
    const auto string = sample();
    NSRange range;
    EXPECT_EQ(string->attributesAtIndex(0, &range), letters(u"a"));
    EXPECT_EQ(range, NSMakeRange(0, 1));
    EXPECT_EQ(string->attributesAtIndex(2, &range), (NSAttributes{{letter, u"a"}, {number, 7}}));
    EXPECT_EQ(range, NSMakeRange(1, 2));
    EXPECT_TRUE(string->attributesAtIndex(5, &range).empty());
    EXPECT_EQ(range, NSMakeRange(5, 1));
}

TEST(NSAttributedString, TheLongestStretchStaysInsideOfTheLimit) {
    const SplitString string(NSAttributedString::initWithString(u"abcdef", letters(u"x")));
    NSRange range;
    string.attributesAtIndex(3, &range);
    EXPECT_EQ(range, NSMakeRange(3, 1));
    string.attributesAtIndex(3, &range, {1, 4});
    EXPECT_EQ(range, NSMakeRange(1, 4));
    string.attributesAtIndex(3, &range, {3, 1});
    EXPECT_EQ(range, NSMakeRange(3, 1));
    string.attributesAtIndex(3, &range, {0, 6});
    EXPECT_EQ(range, NSMakeRange(0, 6));
}

TEST(NSAttributedString, OneAttributeCanReachFurtherThanAllOfThem) {
    const auto string = sample();
    NSRange range;
    EXPECT_EQ(string->attribute(letter, 1, &range), NSAttributeValue(u"a"));
    EXPECT_EQ(range, NSMakeRange(1, 2));
    EXPECT_EQ(string->attribute(letter, 1, &range, {0, 6}), NSAttributeValue(u"a"));
    EXPECT_EQ(range, NSMakeRange(0, 3));
    EXPECT_EQ(string->attribute(number, 3, &range, {0, 6}), NSAttributeValue(7));
    EXPECT_EQ(range, NSMakeRange(1, 3));
    EXPECT_EQ(string->attribute(number, 5, &range, {0, 6}), std::nullopt);
    EXPECT_EQ(range, NSMakeRange(4, 2));
    EXPECT_EQ(string->attribute(number, 4), std::nullopt);
}

TEST(NSAttributedString, WalksEqualStretchesAsOne) {
    EXPECT_EQ(walkLetters(*sample(), {0, 6}, 0), u"0+3 a, 3+2 b, 5+1 -, ");
    EXPECT_EQ(walkLetters(*sample(), {1, 3}, 0), u"1+2 a, 3+1 b, ");
    EXPECT_EQ(walkLetters(*sample(), {2, 0}, 0), u"");
}

TEST(NSAttributedString, WalksRunByRunWhereTheLongestStretchIsNotRequired) {
    EXPECT_EQ(walkLetters(*sample(), {0, 6}, NSAttributedStringEnumerationLongestEffectiveRangeNotRequired),
              u"0+1 a, 1+2 a, 3+1 b, 4+1 b, 5+1 -, ");
}

TEST(NSAttributedString, WalksBackwards) {
    EXPECT_EQ(walkLetters(*sample(), {0, 6}, NSAttributedStringEnumerationReverse), u"5+1 -, 3+2 b, 0+3 a, ");
    EXPECT_EQ(walkLetters(*sample(), {1, 3}, NSAttributedStringEnumerationReverse), u"3+1 b, 1+2 a, ");
}

TEST(NSAttributedString, AWalkEndsWhenTold) {
    int calls = 0;
    sample()->enumerateAttributesInRange({0, 6}, 0, [&](const NSAttributes &, NSRange, bool &stop) {
        ++calls;
        stop = calls == 2;
    });
    EXPECT_EQ(calls, 2);
}

TEST(NSAttributedString, WalkingWithoutABlockIsAProgrammingError) {
    const test::AssertionRecorder assertions;
    sample()->enumerateAttributesInRange({0, 6}, 0, nullptr);
    sample()->enumerateAttribute(letter, {0, 6}, 0, nullptr);
    ASSERT_EQ(assertions.messages().size(), 2u);
    EXPECT_EQ(assertions.messages()[0], u"Invalid parameter not satisfying: block != nil");
    EXPECT_EQ(assertions.messages()[1], u"Invalid parameter not satisfying: block != nil");
}

TEST(NSAttributedString, ASubstringKeepsItsAttributes) {
    const auto substring = sample()->attributedSubstringFromRange({2, 3});
    EXPECT_EQ(substring->description(), u"a{letter = a; number = 7}b{letter = b; number = 7}b{letter = b}");
    EXPECT_EQ(sample()->attributedSubstringFromRange({6, 0})->length(), 0u);
}

TEST(NSAttributedString, ACopyStaysAsItWas) {
    const auto original = sample();
    const auto copy = NSAttributedString::initWithAttributedString(*original);
    original->deleteCharactersInRange({0, 6});
    EXPECT_TRUE(copy->isEqualToAttributedString(*sample()));
}

TEST(NSAttributedString, PlacesOutsideRaiseRangeExceptions) {
    const auto string = sample();
    const NSUInteger huge = NSNotFound;
    EXPECT_EQ(nameOfExceptionFrom([&] { string->attributesAtIndex(6); }), NSRangeException);
    EXPECT_EQ(nameOfExceptionFrom([&] { string->attributesAtIndex(5); }), u"none");
    EXPECT_EQ(nameOfExceptionFrom([&] { string->attribute(letter, 6); }), NSRangeException);
    EXPECT_EQ(nameOfExceptionFrom([&] {
                  NSRange range;
                  string->attributesAtIndex(0, &range, {0, 7});
              }),
              NSRangeException);
    EXPECT_EQ(nameOfExceptionFrom([&] {
                  string->attributedSubstringFromRange({1, huge});
              }),
              NSRangeException);
    EXPECT_EQ(nameOfExceptionFrom([&] {
                  string->attributedSubstringFromRange({huge, 0});
              }),
              NSRangeException);
    EXPECT_EQ(nameOfExceptionFrom([&] {
                  string->enumerateAttributesInRange({7, 0}, 0, [](const NSAttributes &, NSRange, bool &) {});
              }),
              NSRangeException);
}

TEST(NSAttributedString, IsEqualHoweverItIsCutIntoRuns) {
    const SplitString split(sample());
    EXPECT_TRUE(split.isEqual(sample().get()));
    EXPECT_TRUE(sample()->isEqual(&split));
    EXPECT_EQ(split.hash(), sample()->hash());
    const auto other = sample();
    other->addAttribute(number, 8, {3, 1});
    EXPECT_FALSE(split.isEqual(other.get()));
    EXPECT_FALSE(sample()->isEqualToAttributedString(*NSAttributedString::initWithString(u"aaabbc")));
    EXPECT_FALSE(
        NSAttributedString::initWithString(u"a")->isEqual(NSAttributedString::initWithString(u"b").get()));
    EXPECT_FALSE(sample()->isEqual(nullptr));
}

TEST(NSAttributedString, DescribesTextAndRuns) {
    EXPECT_EQ(sample()->description(), u"a{letter = a}aa{letter = a; number = 7}b{letter = b; number = "
                                       u"7}b{letter = b}c{}");
}
