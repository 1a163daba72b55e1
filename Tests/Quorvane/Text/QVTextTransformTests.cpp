#include "Quorvane/Text/QVTextTransform.h"

#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;

TEST(QVTextTransform, IsNowhereAndChangesNothingAtFirst) {
    const auto transform = QVTextTransform::init();
    EXPECT_EQ(transform->range().location, NSNotFound);
    EXPECT_EQ(transform->replacementRange().location, NSNotFound);
    EXPECT_EQ(transform->foldDepth(), 0u);
    EXPECT_FALSE(transform->anchoredToStartOfLine());
    EXPECT_FALSE(transform->anchoredToEndOfLine());
    EXPECT_EQ(transform->replacementAttributedString(), nullptr);
    EXPECT_TRUE(transform->replacementString().isNull());
}

TEST(QVTextTransform, KeepsWhatItIsGiven) {
    const auto transform = QVTextTransform::init();
    transform->setRange({1, 8});
    transform->setReplacementRange({2, 3});
    transform->setFoldDepth(4);
    transform->setAnchoredToStartOfLine(true);
    EXPECT_TRUE(transform->anchoredToStartOfLine());
    EXPECT_FALSE(transform->anchoredToEndOfLine());
    transform->setAnchoredToEndOfLine(true);
    EXPECT_TRUE(transform->anchoredToEndOfLine());
    const auto text = NSAttributedString::initWithString(u"x");
    transform->setReplacementAttributedString(text);
    transform->setReplacementString(u"y");
    EXPECT_EQ(transform->range(), (NSRange{1, 8}));
    EXPECT_EQ(transform->replacementRange(), (NSRange{2, 3}));
    EXPECT_EQ(transform->foldDepth(), 4u);
    EXPECT_EQ(transform->replacementAttributedString(), text);
    EXPECT_EQ(transform->replacementString(), u"y");
}
