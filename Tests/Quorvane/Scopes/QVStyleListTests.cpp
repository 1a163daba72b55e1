#include "Quorvane/Scopes/QVStyleList.h"

#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSIndexSet.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Styles/QVStyle.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

using namespace quorvane;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::shared_ptr<QVStyle> styleOfWeight(NSInteger weight) {
    auto style = std::make_shared<QVStyle>();
    style->setFontWeight(weight);
    return style;
}

/// Scopes and captures have the same family of operations.
template <typename T> class Styled : public testing::Test {
protected:
    std::vector<std::shared_ptr<QVStyle>> styles() const { return *owner->styles(); }
    std::optional<NSInteger> weight() const {
        const auto style = owner->resolvedStyle();
        return style ? style->fontWeight() : std::nullopt;
    }

    const std::shared_ptr<T> owner = std::make_shared<T>();
    const std::shared_ptr<QVStyle> a = styleOfWeight(1);
    const std::shared_ptr<QVStyle> b = styleOfWeight(2);
    const std::shared_ptr<QVStyle> c = styleOfWeight(3);
};
using Owners = testing::Types<QVScope, QVCapture>;
TYPED_TEST_SUITE(Styled, Owners);

} // namespace

TYPED_TEST(Styled, HasNoStylesAtFirst) {
    EXPECT_THAT(this->styles(), IsEmpty());
    EXPECT_EQ(this->owner->resolvedStyle(), nullptr);
}

TYPED_TEST(Styled, EveryChangeResolvesAgainAndTheLastStyleWins) {
    this->owner->addStyle(this->a);
    EXPECT_EQ(this->weight(), 1);
    this->owner->addStyle(this->b);
    EXPECT_EQ(this->weight(), 2);
    this->owner->insertStyle(this->c, 1);
    EXPECT_THAT(this->styles(), ElementsAre(this->a, this->c, this->b));
    EXPECT_EQ(this->weight(), 2);
    this->owner->removeStyleAtIndex(2);
    EXPECT_EQ(this->weight(), 3);
    this->owner->insertStyle(this->b, 0);
    EXPECT_THAT(this->styles(), ElementsAre(this->b, this->a, this->c));
    this->owner->removeStylesAtIndexes({0, 2});
    EXPECT_THAT(this->styles(), ElementsAre(this->a));
    EXPECT_EQ(this->weight(), 1);
    this->owner->setStyles({this->c, this->b});
    EXPECT_EQ(this->weight(), 2);
}

TYPED_TEST(Styled, WithoutStylesThereIsNoResolvedOne) {
    this->owner->setStyles({this->a, this->b});
    this->owner->removeAllStyles();
    EXPECT_EQ(this->owner->resolvedStyle(), nullptr);
    this->owner->addStyle(this->a);
    this->owner->removeStyleAtIndex(0);
    EXPECT_EQ(this->owner->resolvedStyle(), nullptr);
    this->owner->addStyle(this->a);
    this->owner->setStyles({});
    EXPECT_EQ(this->owner->resolvedStyle(), nullptr);
    EXPECT_THAT(this->styles(), IsEmpty());
}

TYPED_TEST(Styled, AListThatWasHandedOutNeverChanges) {
    this->owner->addStyle(this->a);
    const auto list = this->owner->styles();
    const auto resolved = this->owner->resolvedStyle();
    this->owner->addStyle(this->b);
    EXPECT_THAT(*list, ElementsAre(this->a));
    EXPECT_EQ(resolved->fontWeight(), 1);
}

TYPED_TEST(Styled, IndexesOutsideOfTheBoundsThrow) {
    this->owner->addStyle(this->a);
    EXPECT_THROW(this->owner->insertStyle(this->b, 2), NSException);
    EXPECT_THROW(this->owner->removeStyleAtIndex(1), NSException);
    EXPECT_THROW(this->owner->removeStylesAtIndexes({0, 1}), NSException);
    EXPECT_THAT(this->styles(), ElementsAre(this->a));
}

TEST(QVStyleList, IsReadWhileStylesChange) {
    const auto scope = std::make_shared<QVScope>();
    const auto light = styleOfWeight(1);
    const auto bold = styleOfWeight(2);
    scope->addStyle(light);
    std::atomic<bool> done{false};
    std::vector<std::thread> readers;
    for (int index = 0; index < 2; ++index)
        readers.emplace_back([&] {
            while (!done.load(std::memory_order_relaxed)) {
                const auto style = scope->resolvedStyle();
                ASSERT_NE(style, nullptr);
                const auto weight = style->fontWeight();
                EXPECT_TRUE(weight == 1 || weight == 2);
                EXPECT_EQ(scope->styles()->size(), 1u);
            }
        });
    for (int round = 0; round < 500; ++round)
        scope->setStyles({round % 2 ? light : bold});
    done = true;
    for (std::thread &reader : readers)
        reader.join();
}
