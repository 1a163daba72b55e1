#include "Platform/Foundation/QVGapBuffer.h"

#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

#include <random>

using namespace quorvane;

namespace {

std::u16string text(const QVGapBuffer &buffer) {
    return buffer.reader().substringWithRange({0, buffer.length()});
}

} // namespace

TEST(QVGapBuffer, AnEmptyOneHasNoText) {
    const QVGapBuffer buffer;
    EXPECT_EQ(buffer.length(), 0u);
    EXPECT_EQ(text(buffer), u"");
    EXPECT_EQ(buffer.bytes(), 0u);
    EXPECT_EQ(text(QVGapBuffer(buffer)), u"");
}

TEST(QVGapBuffer, AShortTextTakesTheRoomItNeeds) {
    EXPECT_EQ(QVGapBuffer(u"abc").bytes(), 6u);
    EXPECT_TRUE(QVGapBuffer(u"abc").reader().isContiguous());
}

TEST(QVGapBuffer, TheGapStandsBehindTheLastEditWhereverThatIs) {
    const std::u16string_view whole = u"\r\n\xD83D\xDE00"
                                      u"e\u0301";
    for (NSUInteger location = 0; location <= whole.size(); ++location) {
        QVGapBuffer buffer(whole);
        buffer.replaceCharactersInRange({location, 0}, u"xy");
        buffer.replaceCharactersInRange({location, 2}, u"");
        EXPECT_EQ(text(buffer), whole);
        if (location < whole.size()) {
            EXPECT_EQ(buffer.reader().pieceAtIndex(location), whole.substr(location));
        }
        if (location > 0) {
            EXPECT_EQ(buffer.reader().pieceAtIndex(0), whole.substr(0, location));
        }
    }
}

TEST(QVGapBuffer, TypingInOnePlaceMovesNothingBehind) {
    QVGapBuffer buffer(std::u16string(100'000, u'a'));
    buffer.replaceCharactersInRange({500, 0}, u"x");
    const auto behind = buffer.reader().pieceAtIndex(501);
    for (NSUInteger index = 0; index < 1000; ++index)
        buffer.replaceCharactersInRange({501 + index, 0}, u"y");
    EXPECT_EQ(buffer.reader().pieceAtIndex(1501).data(), behind.data());
    for (NSUInteger index = 0; index < 1000; ++index)
        buffer.replaceCharactersInRange({1500 - index, 1}, u"");
    EXPECT_EQ(buffer.reader().pieceAtIndex(501).data(), behind.data());
    EXPECT_EQ(buffer.length(), 100'001u);
}

TEST(QVGapBuffer, TheNewTextMayBeSomeOfTheOldOnOneOrBothSidesOfTheGap) {
    QVGapBuffer buffer(u"abcdef");
    buffer.replaceCharactersInRange({3, 0}, u"x");
    buffer.replaceCharactersInRange({0, 2}, buffer.reader().pieceAtIndex(4));
    EXPECT_EQ(text(buffer), u"defcxdef");
    buffer.replaceCharactersInRange({8, 0}, buffer.reader().pieceAtIndex(0));
    EXPECT_EQ(text(buffer), u"defcxdefdef");
    buffer.replaceCharactersInRange({0, 11}, buffer.reader().pieceAtIndex(0).substr(0, 1));
    EXPECT_EQ(text(buffer), u"d");
}

TEST(QVGapBuffer, GivesRoomBackWhenMostOfTheTextGoes) {
    QVGapBuffer buffer(std::u16string(1'000'000, u'a'));
    buffer.replaceCharactersInRange({10, 999'000}, u"b");
    EXPECT_EQ(buffer.length(), 1001u);
    EXPECT_LT(buffer.bytes(), 10'000u);
    EXPECT_EQ(text(buffer), std::u16string(10, u'a') + u"b" + std::u16string(990, u'a'));
}

TEST(QVGapBuffer, ACopyHasTheTextInOnePiece) {
    QVGapBuffer buffer(std::u16string(10'000, u'a'));
    buffer.replaceCharactersInRange({500, 1}, u"x");
    QVGapBuffer copy(buffer);
    EXPECT_EQ(text(copy), text(buffer));
    EXPECT_TRUE(copy.reader().isContiguous());
    copy.replaceCharactersInRange({0, 10'000}, u"b");
    EXPECT_EQ(buffer.length(), 10'000u);
    const QVGapBuffer &self = copy;
    copy = self;
    EXPECT_EQ(text(copy), u"b");
}

TEST(QVGapBuffer, BehavesAsAString) {
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        QVGapBuffer buffer;
        std::u16string model;
        for (int step = 0; step < 500; ++step) {
            const NSUInteger location = random() % (model.size() + 1);
            NSUInteger length = std::min<NSUInteger>(random() % 40, model.size() - location);
            std::u16string inserted(random() % 40, static_cast<char16_t>(u'a' + random() % 26));
            if (random() % 40 == 0) {
                inserted.resize(random() % 9000, u'z');
                length = random() % (model.size() - location + 1);
            }
            buffer.replaceCharactersInRange({location, length}, inserted);
            model.replace(location, length, inserted);
            ASSERT_EQ(text(buffer), model) << "step " << step;
        }
    }
}
