#include "Quorvane/Styles/QVGraphics.h"

#include "Quorvane/Styles/QVColor.h"
#include "Tests/Support/Picture.h"

#include <gtest/gtest.h>

using namespace quorvane;
using test::Picture;

TEST(QVGraphics, TheCurrentContextIsTheThreadsOwn) {
    EXPECT_EQ(QVGraphicsGetCurrentContext(), nullptr);
    {
        const Picture picture(1, 1);
        EXPECT_EQ(QVGraphicsGetCurrentContext(), picture.context());
    }
    EXPECT_EQ(QVGraphicsGetCurrentContext(), nullptr);
}

TEST(QVRectIntegral, EachEdgeIsRoundedByItself) {
    EXPECT_EQ(QVRectIntegral(CGRectMake(0.4, 0.6, 1, 1)), CGRectMake(0, 1, 1, 1));
    EXPECT_EQ(QVRectIntegral(CGRectMake(0.4, 0.6, 1.2, 0.8)), CGRectMake(0, 1, 2, 0));
    EXPECT_EQ(QVRectIntegral(CGRectMake(-0.5, 0.5, 1, 1)), CGRectMake(-1, 1, 2, 1));
    EXPECT_EQ(QVRectIntegral(CGRectMake(2.6, 3.6, -2, -2)), CGRectMake(1, 2, 2, 2));
}

TEST(QVRectIntegral, RectanglesSideBySideStaySo) {
    int compared = 0;
    for (double width = 0.1; width < 3; width += 0.1)
        for (int index = 0; index < 20; ++index) {
            const CGRect left = QVRectIntegral(CGRectMake(index * width, 0, width, 1));
            const CGRect right = QVRectIntegral(CGRectMake((index + 1) * width, 0, width, 1));
            // The sum of the left one may round differently where it falls on a half.
            if (std::round(index * width + width) != std::round((index + 1) * width))
                continue;
            EXPECT_EQ(CGRectGetMaxX(left), CGRectGetMinX(right));
            ++compared;
        }
    EXPECT_GT(compared, 500);
}

TEST(QVColorDrawing, FillAndStrokeAreSetApartOrTogether) {
    const Picture picture(1, 1);
    const auto fill = [&] { return CGContextGetFillColor(picture.context()); };
    const auto stroke = [&] { return CGContextGetStrokeColor(picture.context()); };
    QVColor::redColor()->setFill();
    QVColor::blueColor()->setStroke();
    EXPECT_TRUE(CFEqual(fill(), QVColor::redColor()->CGColor()));
    EXPECT_TRUE(CFEqual(stroke(), QVColor::blueColor()->CGColor()));
    QVColor::greenColor()->set();
    EXPECT_TRUE(CFEqual(fill(), QVColor::greenColor()->CGColor()));
    EXPECT_TRUE(CFEqual(stroke(), QVColor::greenColor()->CGColor()));
}

TEST(QVColorDrawing, WithoutAContextNothingHappens) {
    ASSERT_EQ(QVGraphicsGetCurrentContext(), nullptr);
    QVColor::redColor()->set();
}
