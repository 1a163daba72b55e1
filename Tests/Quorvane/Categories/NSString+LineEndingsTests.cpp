#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

#include "Tests/Support/TextGaps.h"

#include <gtest/gtest.h>

using namespace quorvane;
using test::withEveryGap;

TEST(QVLineEndings, HaveATerminatorAndAName) {
    EXPECT_EQ(qv_stringForLineEndings(QVLineEndingsLF), u"\n");
    EXPECT_EQ(qv_stringForLineEndings(QVLineEndingsCR), u"\r");
    EXPECT_EQ(qv_stringForLineEndings(QVLineEndingsCRLF), u"\r\n");
    EXPECT_EQ(QVLineEndingsToStringRepresentation(QVLineEndingsLF), u"LF");
    EXPECT_EQ(QVLineEndingsToStringRepresentation(QVLineEndingsCR), u"CR");
    EXPECT_EQ(QVLineEndingsToStringRepresentation(QVLineEndingsCRLF), u"CRLF");
    // The values stand in settings.
    EXPECT_EQ(std::uint64_t(QVLineEndingsLF), 0u);
    EXPECT_EQ(std::uint64_t(QVLineEndingsCR), 1u);
    EXPECT_EQ(std::uint64_t(QVLineEndingsCRLF), 2u);
}

TEST(QVLineEndings, AnUnknownValueHasNoTerminatorAndIsNamedLF) {
    EXPECT_TRUE(qv_stringForLineEndings(QVLineEndings(3)).isNull());
    EXPECT_EQ(QVLineEndingsToStringRepresentation(QVLineEndings(3)), u"LF");
}

TEST(QVLineEndings, EveryOtherNameThanCRAndCRLFMeansLF) {
    EXPECT_EQ(QVLineEndingsFromStringRepresentation(u"CRLF"), QVLineEndingsCRLF);
    EXPECT_EQ(QVLineEndingsFromStringRepresentation(u"CR"), QVLineEndingsCR);
    for (const NSString &name : {NSString(u"LF"), NSString(u"crlf"), NSString(u""), NSString()})
        EXPECT_EQ(QVLineEndingsFromStringRepresentation(name), QVLineEndingsLF);
}

TEST(QVLineEndings, TheQuickGuessIsTheFirstTerminator) {
    const auto guess = [](QVTextReader text) {
        auto endings = QVLineEndings(77);
        EXPECT_TRUE(qv_getBestQuickGuessLineEndings(text, &endings));
        EXPECT_TRUE(qv_getBestQuickGuessLineEndings(text));
        return endings;
    };
    withEveryGap(u"a\nb\r\n", [&](QVTextReader text) { EXPECT_EQ(guess(text), QVLineEndingsLF); });
    withEveryGap(u"a\r\nb\n", [&](QVTextReader text) { EXPECT_EQ(guess(text), QVLineEndingsCRLF); });
    withEveryGap(u"a\rb\n", [&](QVTextReader text) { EXPECT_EQ(guess(text), QVLineEndingsCR); });
    withEveryGap(u"a\r", [&](QVTextReader text) { EXPECT_EQ(guess(text), QVLineEndingsCR); });
    withEveryGap(u"\r\r\n", [&](QVTextReader text) { EXPECT_EQ(guess(text), QVLineEndingsCR); });
}

TEST(QVLineEndings, WithoutATerminatorThereIsNoAnswer) {
    auto endings = QVLineEndings(77);
    bool homogeneous = true;
    for (const char16_t *text : {u"", u"abc", u"a\u2028b\u0085"}) {
        EXPECT_FALSE(qv_getBestQuickGuessLineEndings(text, &endings));
        EXPECT_FALSE(qv_getDominantLineEndings(text, &endings, &homogeneous));
    }
    EXPECT_EQ(endings, QVLineEndings(77));
    EXPECT_TRUE(homogeneous);
}

TEST(QVLineEndings, TheMostFrequentDominatesAndTiesGoToLFThenCRLF) {
    struct {
        const char16_t *text;
        QVLineEndings endings;
        bool homogeneous;
    } const rows[] = {
        {u"a\nb\n", QVLineEndingsLF, true},
        {u"a\r\nb\r\n", QVLineEndingsCRLF, true},
        {u"\r\r", QVLineEndingsCR, true},
        {u"\r", QVLineEndingsCR, true},
        {u"\n\n\r", QVLineEndingsLF, false},
        {u"\r\r\n\r\r\n\n\r\n", QVLineEndingsCRLF, false},
        {u"\r\r\r\n\n", QVLineEndingsCR, false},
        {u"\n\r", QVLineEndingsLF, false},
        {u"\r\n\r", QVLineEndingsCRLF, false},
        {u"\n\r\n", QVLineEndingsLF, false},
        {u"\r\n\n\rx\r", QVLineEndingsCR, false},
        {u"x\n\r\n\rx", QVLineEndingsLF, false},
        {u"\r\r\n\r\n\rx", QVLineEndingsCRLF, false},
    };
    for (const auto &row : rows) {
        withEveryGap(row.text, [&](QVTextReader text) {
            auto endings = QVLineEndings(77);
            bool homogeneous = !row.homogeneous;
            EXPECT_TRUE(qv_getDominantLineEndings(text, &endings, &homogeneous));
            EXPECT_EQ(endings, row.endings) << NSString(row.text).UTF8String();
            EXPECT_EQ(homogeneous, row.homogeneous);
            EXPECT_TRUE(qv_getDominantLineEndings(text));
        });
    }
}
