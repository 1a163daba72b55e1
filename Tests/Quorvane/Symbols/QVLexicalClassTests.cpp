#include "Quorvane/Symbols/QVLexicalClass.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;

TEST(QVLexicalClass, ConstantsHoldTheirWords) {
    EXPECT_EQ(QVLexicalClassKeyword.string(), u"keyword");
    EXPECT_EQ(QVLexicalClassString.string(), u"string");
    EXPECT_EQ(QVLexicalClassComment.string(), u"comment");
    EXPECT_EQ(QVLexicalClassName.string(), u"name");
    EXPECT_EQ(QVLexicalClassIdentifier.string(), u"identifier");
    EXPECT_EQ(QVLexicalClassAttributeName.string(), u"QVLexicalClass");
}

TEST(QVLexicalClass, EachWordGivesTheConstantItself) {
    for (const auto &constant : {QVLexicalClassKeyword, QVLexicalClassString, QVLexicalClassComment,
                                 QVLexicalClassName, QVLexicalClassIdentifier}) {
        const NSString answer =
            QVLexicalClassForClasses({u"first", NSString(constant.string().view()), u"zero"});
        // The very same characters in memory, not equal ones.
        EXPECT_EQ(answer.view().data(), constant.string().view().data());
        EXPECT_TRUE(answer == constant);
    }
}

TEST(QVLexicalClass, OfSeveralWordsTheOneThatComesFirstInTheFixedOrderDecides) {
    EXPECT_EQ(QVLexicalClassForClasses({u"string", u"comment"}), u"string");
    EXPECT_EQ(QVLexicalClassForClasses({u"identifier", u"name"}), u"name");
    EXPECT_EQ(QVLexicalClassForClasses({u"name", u"comment"}), u"comment");
    EXPECT_EQ(QVLexicalClassForClasses({u"comment", u"identifier", u"keyword", u"string"}), u"keyword");
}

TEST(QVLexicalClass, OtherWordsGiveNothing) {
    EXPECT_TRUE(QVLexicalClassForClasses({}).isNull());
    EXPECT_TRUE(QVLexicalClassForClasses({u"quoted", u"Keyword", u"QVLexicalClass"}).isNull());
}
