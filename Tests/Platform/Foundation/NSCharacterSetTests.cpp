#include "Platform/Foundation/NSCharacterSet.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

using SharedSet = std::shared_ptr<const NSCharacterSet>;

struct Membership {
    SharedSet (*set)();
    std::u32string_view members;
    std::u32string_view others;
};

} // namespace

TEST(NSCharacterSet, TheClassesFollowTheGeneralCategories) {
    const Membership rows[] = {
        // Lu, Ll, Lt, Lm, Lo, Mn, Mc, Me, Nd, Nl, No; a letter and a digit beyond the first plane
        {NSCharacterSet::alphanumericCharacterSet,
         U"Az\u01C5\u02B0\u05D0\u0301\u0903\u20DD9\u2160\u00BD\U00010400\U0001D7D8",
         U"_ -\u20AC\U0001F600\n"},
        {NSCharacterSet::letterCharacterSet, U"Az\u01C5\u02B0\u05D0\u0301\u0903\u20DD\U00010400",
         U"9\u2160\u00BD_\U0001D7D8"},
        {NSCharacterSet::lowercaseLetterCharacterSet, U"z\u00E9\U00010428", U"Z\u01C5\u02B09"},
        {NSCharacterSet::uppercaseLetterCharacterSet, U"Z\u00C9\u01C5\U00010400", U"z9\u05D0"},
        {NSCharacterSet::decimalDigitCharacterSet, U"09\u0660\U0001D7D8", U"\u2160\u00BDa"},
        // Pc, Pd, Ps, Pe, Pi, Pf, Po
        {NSCharacterSet::punctuationCharacterSet, U"_-(){}\u00AB\u00BB!\U00010100", U"+<$^a "},
        // Sm, Sc, Sk, So
        {NSCharacterSet::symbolCharacterSet, U"+<$^\u00A9\U0001F600", U"_!a "},
        {NSCharacterSet::whitespaceCharacterSet, U"\t \u00A0\u2003\u3000", U"\n\r\v\f\u0085\u2028\u200Ba"},
        {NSCharacterSet::newlineCharacterSet, U"\n\v\f\r\u0085\u2028\u2029", U"\t\u000E\u00A0 "},
        {NSCharacterSet::whitespaceAndNewlineCharacterSet, U"\t \u00A0\n\v\f\r\u0085\u2028\u2029",
         U"\u200Ba"},
    };
    int row = 0;
    for (const auto &[set, members, others] : rows) {
        for (const char32_t character : members)
            EXPECT_TRUE(set()->longCharacterIsMember(character)) << row << " " << std::uint32_t(character);
        for (const char32_t character : others)
            EXPECT_FALSE(set()->longCharacterIsMember(character)) << row << " " << std::uint32_t(character);
        ++row;
    }
}

TEST(NSCharacterSet, SharedSetsAreMadeOnce) {
    EXPECT_EQ(NSCharacterSet::letterCharacterSet(), NSCharacterSet::letterCharacterSet());
    EXPECT_EQ(NSCharacterSet::whitespaceAndNewlineCharacterSet(),
              NSCharacterSet::whitespaceAndNewlineCharacterSet());
}

TEST(NSCharacterSet, HalvesOfPairsBelongToNoClassAndToASetOnlyByThemselves) {
    for (char32_t unit = 0xD800; unit <= 0xDFFF; ++unit)
        ASSERT_FALSE(
            NSCharacterSet::alphanumericCharacterSet()->characterIsMember(static_cast<char16_t>(unit)));
    const auto pair = NSCharacterSet::characterSetWithCharactersInString(u"\U0001F600");
    EXPECT_TRUE(pair->longCharacterIsMember(0x1F600));
    EXPECT_FALSE(pair->characterIsMember(0xD83D));
    const auto half = NSCharacterSet::characterSetWithCharactersInString(std::u16string{0xD83D, u'x'});
    EXPECT_TRUE(half->characterIsMember(0xD83D));
    EXPECT_FALSE(half->longCharacterIsMember(0x1F600));
}

TEST(NSCharacterSet, AUnionHoldsTheCharactersOfBothOnEveryPlane) {
    const auto a = NSCharacterSet::characterSetWithCharactersInString(u"ab\U0001F600\U0001F601");
    const auto b = NSCharacterSet::characterSetWithCharactersInString(u"bc\U0001F602");
    const auto both = a->characterSetByFormingUnion(*b);
    for (const char32_t character : std::u32string_view(U"abc\U0001F600\U0001F601\U0001F602"))
        EXPECT_TRUE(both->longCharacterIsMember(character));
    EXPECT_FALSE(both->longCharacterIsMember(0x1F603));
    EXPECT_FALSE(both->longCharacterIsMember(U'd'));
    EXPECT_TRUE(both->isEqual(
        NSCharacterSet::characterSetWithCharactersInString(u"\U0001F602c\U0001F600\U0001F601ab").get()));
}

TEST(NSCharacterSet, TheInvertedSetHoldsAllOtherCharacters) {
    const auto digits = NSCharacterSet::decimalDigitCharacterSet();
    const auto inverted = digits->invertedSet();
    for (char32_t character = 0; character <= 0x10FFFF; ++character)
        ASSERT_NE(digits->longCharacterIsMember(character), inverted->longCharacterIsMember(character));
    EXPECT_TRUE(inverted->invertedSet()->isEqual(digits.get()));
    EXPECT_TRUE(NSCharacterSet::emptyCharacterSet()->invertedSet()->longCharacterIsMember(0x10FFFF));
}

TEST(NSCharacterSet, EqualSetsHaveEqualHashesHoweverTheyWereMade) {
    const auto a = NSCharacterSet::characterSetWithCharactersInString(u"xyz");
    const auto b = NSCharacterSet::characterSetWithCharactersInString(u"zyxx");
    EXPECT_TRUE(a->isEqual(b.get()));
    EXPECT_EQ(a->hash(), b->hash());
    EXPECT_FALSE(a->isEqual(NSCharacterSet::characterSetWithCharactersInString(u"xy").get()));
    EXPECT_FALSE(a->isEqual(NSCharacterSet::characterSetWithCharactersInString(u"xyz\U0001F600").get()));
    EXPECT_FALSE(a->isEqual(nullptr));
    EXPECT_FALSE(NSCharacterSet::characterSetWithCharactersInString(u"\U0001F600")
                     ->isEqual(NSCharacterSet::characterSetWithCharactersInString(u"\U0001F601").get()));
}
