#include "Quorvane/Categories/NSCharacterSet+QuorvaneAdditions.h"

#include <gtest/gtest.h>

using namespace quorvane;

TEST(QVCharacterSets, NewlinesAreExactlyCRAndLF) {
    for (char32_t unit = 0; unit < 0x10000; ++unit)
        ASSERT_EQ(qv_newlineCharacterSet()->characterIsMember(static_cast<char16_t>(unit)),
                  unit == U'\r' || unit == U'\n');
}

TEST(QVCharacterSets, IndentationIsExactlySpaceAndTab) {
    for (char32_t unit = 0; unit < 0x10000; ++unit)
        ASSERT_EQ(qv_indentationCharacterSet()->characterIsMember(static_cast<char16_t>(unit)),
                  unit == U' ' || unit == U'\t');
}

TEST(QVCharacterSets, IdentifiersAreAlphanumericCharactersAndTheUnderscore) {
    const auto alphanumeric = NSCharacterSet::alphanumericCharacterSet();
    ASSERT_FALSE(alphanumeric->characterIsMember(u'_'));
    for (char32_t character = 0; character <= 0x10FFFF; ++character)
        ASSERT_EQ(qv_defaultIdentifierCharacterSet()->longCharacterIsMember(character),
                  character == U'_' || alphanumeric->longCharacterIsMember(character));
}

TEST(QVCharacterSets, EachIsMadeOnce) {
    EXPECT_EQ(qv_newlineCharacterSet(), qv_newlineCharacterSet());
    EXPECT_EQ(qv_indentationCharacterSet(), qv_indentationCharacterSet());
    EXPECT_EQ(qv_defaultIdentifierCharacterSet(), qv_defaultIdentifierCharacterSet());
}
