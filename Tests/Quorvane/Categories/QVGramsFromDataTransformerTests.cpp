#include "Quorvane/Categories/QVGramsFromDataTransformer.h"

#include "Tests/Support/Exceptions.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;
using test::reasonOf;

namespace {

using Texts = std::vector<NSString>;
using Value = NSValueTransformer::Value;

const QVGramsFromDataTransformer transformer;

} // namespace

TEST(QVGramsFromDataTransformer, AnswersDataAndCanReverse) {
    EXPECT_EQ(transformer.transformedValueClass(), u"NSData");
    EXPECT_TRUE(transformer.allowsReverseTransformation());
}

TEST(QVGramsFromDataTransformer, GivesTheUTF8OfTheStringRepresentation) {
    const Value data = transformer.transformedValue(Texts{u"é", u",", u"Bar"});
    ASSERT_TRUE(std::holds_alternative<NSData>(data));
    EXPECT_EQ(std::get<NSData>(data).view(), "\xC3\xA9,\\,,Bar");
    EXPECT_EQ(std::get<NSData>(transformer.transformedValue(Texts())), NSData(std::string_view()));
}

TEST(QVGramsFromDataTransformer, GivesTheListOfDataBack) {
    const Value grams = transformer.reverseTransformedValue(NSData(std::string_view("\xC3\xA9,\\,,Bar")));
    ASSERT_TRUE(std::holds_alternative<Texts>(grams));
    EXPECT_EQ(std::get<Texts>(grams), (Texts{u"é", u",", u"Bar"}));
    EXPECT_EQ(std::get<Texts>(transformer.reverseTransformedValue(NSData(std::string_view()))), Texts{u""});
}

TEST(QVGramsFromDataTransformer, NothingGivesNothing) {
    for (const Value &nothing :
         {Value(nullptr), Value(NSString()), Value(NSData()), Value(std::shared_ptr<NSObject>())}) {
        EXPECT_TRUE(std::holds_alternative<std::nullptr_t>(transformer.transformedValue(nothing)));
        EXPECT_TRUE(std::holds_alternative<std::nullptr_t>(transformer.reverseTransformedValue(nothing)));
    }
}

TEST(QVGramsFromDataTransformer, OtherTypesAreRejected) {
    for (const Value &value : {Value(NSString(u"a")), Value(NSData(std::string_view("a")))})
        EXPECT_EQ(reasonOf([&] { transformer.transformedValue(value); }),
                  u"Argument to grams to string representation transformer must be a gram array.");
    for (const Value &value : {Value(NSString(u"a")), Value(Texts{u"a"})})
        EXPECT_EQ(reasonOf([&] { transformer.reverseTransformedValue(value); }),
                  u"Argument to grams from string representation transformer must be a string.");
}

TEST(QVGramsFromDataTransformer, WhatIsNoUTF8GivesNothing) {
    EXPECT_TRUE(std::holds_alternative<std::nullptr_t>(
        transformer.reverseTransformedValue(NSData(std::string_view("a\xFF")))));
    // The two halves of an emoji are words apart, and can't be written.
    EXPECT_TRUE(std::holds_alternative<std::nullptr_t>(
        transformer.transformedValue(Texts{std::u16string(1, 0xD83D), std::u16string(1, 0xDE00)})));
}
