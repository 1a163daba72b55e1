#include "Quorvane/Parsers/QVParseText.h"

#include <gtest/gtest.h>

#include <random>

using namespace quorvane;

TEST(QVParseText, AReplacementTakesThePlaceOfItsRange) {
    QVParseText text(0);
    text.replaceCharactersInRange({0, 0}, u"abc");
    EXPECT_EQ(text.view(), u"abc");
    text.replaceCharactersInRange({1, 1}, u"xyz");
    EXPECT_EQ(text.view(), u"axyzc");
    text.replaceCharactersInRange({5, 0}, u"!");
    EXPECT_EQ(text.view(), u"axyzc!");
    text.replaceCharactersInRange({0, 6}, u"");
    EXPECT_EQ(text.view(), u"");
    EXPECT_EQ(text.length(), 0u);
}

TEST(QVParseText, HasAZeroUnitBeforeAndBehindIt) {
    QVParseText text(2);
    for (const std::u16string_view piece : {u"", u"a", u"bcdefghijklmnop"}) {
        text.replaceCharactersInRange({0, 0}, piece);
        EXPECT_EQ(text.characters()[-1], u'\0');
        EXPECT_EQ(text.characters()[text.length()], u'\0');
    }
}

TEST(QVParseText, ItsRoomIsThatOfAThousandUnitsUnlessAskedFor) {
    EXPECT_GE(QVParseText(0).capacity(), 1024u);
    EXPECT_GE(QVParseText(3000).capacity(), 3000u);
    EXPECT_LT(QVParseText(10).capacity(), 1024u);
}

TEST(QVParseText, FollowsRandomEditsAsItGrowsAndShrinks) {
    std::mt19937 random(11);
    QVParseText text(1);
    std::u16string model;
    for (int round = 0; round < 2000; ++round) {
        const NSUInteger location = random() % (model.size() + 1);
        const NSUInteger length = random() % (model.size() - location + 1) / (round % 3 == 0 ? 1 : 4);
        const std::u16string with(random() % 50, static_cast<char16_t>(u'a' + round % 26));
        text.replaceCharactersInRange({location, length}, with);
        model.replace(location, length, with);
        ASSERT_EQ(text.view(), model);
        ASSERT_EQ(text.characters(), text.view().data());
        ASSERT_EQ(text.characters()[-1], u'\0');
        ASSERT_EQ(text.characters()[text.length()], u'\0');
    }
}

TEST(QVParseText, AnEditMovesTheShorterPartOfTheText) {
    QVParseText text(20'000);
    text.replaceCharactersInRange({0, 0}, std::u16string(10'000, u'a'));
    const char16_t *const first = text.characters();
    const char16_t *const last = first + 9'999;
    text.replaceCharactersInRange({4000, 0}, u"xyz");
    EXPECT_EQ(text.characters(), first - 3);
    text.replaceCharactersInRange({4000, 2}, u"");
    EXPECT_EQ(text.characters(), first - 1);
    EXPECT_EQ(text.characters() + text.length() - 1, last);
    text.replaceCharactersInRange({6000, 0}, u"xyz");
    EXPECT_EQ(text.characters(), first - 1);
    EXPECT_EQ(text.length(), 10'004u);
}

TEST(QVParseText, TypingAtTheFrontGoesOnWhenTheRoomThereIsUsedUp) {
    QVParseText text(100);
    std::u16string model(100, u'a');
    text.replaceCharactersInRange({0, 0}, model);
    for (int count = 0; count < 500; ++count) {
        const std::u16string letter(1, static_cast<char16_t>(u'b' + count % 20));
        text.replaceCharactersInRange({1, 0}, letter);
        model.insert(1, letter);
        ASSERT_EQ(text.view(), model);
        ASSERT_EQ(text.characters()[-1], u'\0');
    }
}

TEST(QVParseText, APartOfItselfCanBePutInAnywhere) {
    for (const NSRange range : {NSRange{1, 0}, NSRange{1, 3}, NSRange{6, 1}, NSRange{8, 0}}) {
        QVParseText text(200);
        text.replaceCharactersInRange({0, 0}, u"abcdefgh");
        text.replaceCharactersInRange(range, text.view().substr(2, 5));
        std::u16string expected = u"abcdefgh";
        expected.replace(range.location, range.length, u"cdefg");
        EXPECT_EQ(text.view(), expected);
    }
}

TEST(QVParseText, ARangeOutsideOfItThrows) {
    QVParseText text(0);
    text.replaceCharactersInRange({0, 0}, u"ab");
    for (const NSRange range :
         {NSRange{3, 0}, NSRange{2, 1}, NSRange{0, UINT64_MAX}, NSRange{UINT64_MAX, 1}, NSNotFoundRange})
        EXPECT_THROW(text.replaceCharactersInRange(range, u"x"), NSException);
    EXPECT_EQ(text.view(), u"ab");
    try {
        text.replaceCharactersInRange({2, 1}, u"x");
        FAIL() << "took it";
    } catch (const NSException &exception) {
        EXPECT_EQ(exception.name(), u"NSRangeException");
        EXPECT_EQ(exception.reason(), u"Range {2, 1} is outside of a text of length 2");
    }
}
