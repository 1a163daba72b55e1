#include "Quorvane/Scopes/QVCapture.h"

#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Styles/QVStyle.h"
#include "Quorvane/Symbols/QVLexicalClass.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>

using namespace quorvane;
using testing::ElementsAre;

TEST(QVCapture, IsUnknownAtFirst) {
    const auto capture = std::make_shared<QVCapture>();
    EXPECT_EQ(capture->name(), u"unknown");
    EXPECT_EQ(capture->number(), 0u);
    EXPECT_EQ(capture->selector(), QVSimpleSelector::simpleSelectorWithString(u"unknown").get());
    EXPECT_EQ(capture->lexicalClass(), NSString());
    EXPECT_EQ(capture->parent(), nullptr);
    EXPECT_EQ(capture->resolvedStyle(), nullptr);
}

TEST(QVCapture, ANameGivesSelectorAndLexicalClass) {
    const auto capture = std::make_shared<QVCapture>();
    capture->setName(u"identifier.function");
    EXPECT_EQ(capture->selector(), QVSimpleSelector::simpleSelectorWithString(u"identifier.function").get());
    EXPECT_EQ(capture->lexicalClass(), QVLexicalClassIdentifier.string());
}

TEST(QVCapture, AnswersItselfAsTheNextSelectable) {
    // As with scopes there is no step forward, and that is to stay; captures come before end captures.
    const auto scope = std::make_shared<QVScope>();
    const auto first = std::make_shared<QVCapture>();
    const auto second = std::make_shared<QVCapture>();
    const auto last = std::make_shared<QVCapture>();
    scope->setCaptures({first, second});
    scope->setEndCaptures({last});
    EXPECT_EQ(first->nextSelectable(), first.get());
    EXPECT_EQ(second->nextSelectable(), second.get());
    EXPECT_EQ(last->nextSelectable(), last.get());
    EXPECT_EQ(first->parentSelectable(), scope.get());
    const auto loose = std::make_shared<QVCapture>();
    EXPECT_EQ(loose->nextSelectable(), nullptr);
    EXPECT_EQ(loose->parentSelectable(), nullptr);
    loose->setParent(scope);
    EXPECT_EQ(loose->nextSelectable(), nullptr);
}

TEST(QVCapture, HasNoSelectableChildren) {
    const auto capture = std::make_shared<QVCapture>();
    EXPECT_TRUE(capture->offersSelectableChildren());
    capture->enumerateSelectableChildrenUsingBlock([](QVSelectable *, bool &) { FAIL(); });
}

TEST(QVCapture, DoesNotKeepItsScopeAlive) {
    const auto capture = std::make_shared<QVCapture>();
    auto scope = std::make_shared<QVScope>();
    scope->setCaptures({capture});
    scope = nullptr;
    EXPECT_EQ(capture->parent(), nullptr);
}

TEST(QVCapture, ACopyHasAllValuesAndNoParent) {
    const auto scope = std::make_shared<QVScope>();
    const auto capture = std::make_shared<QVCapture>();
    capture->setName(u"string");
    capture->setNumber(3);
    const auto style = std::make_shared<QVStyle>();
    capture->addStyle(style);
    scope->setCaptures({capture});
    const auto copy = capture->copy();
    EXPECT_NE(copy, capture);
    EXPECT_EQ(copy->name(), u"string");
    EXPECT_EQ(copy->number(), 3u);
    EXPECT_EQ(copy->selector(), capture->selector());
    EXPECT_EQ(copy->lexicalClass(), QVLexicalClassString.string());
    EXPECT_THAT(*copy->styles(), ElementsAre(style));
    EXPECT_NE(copy->resolvedStyle(), nullptr);
    EXPECT_EQ(copy->parent(), nullptr);
}
