#include "Platform/AppKit/NSBezierPath.h"

#include "Platform/AppKit/NSColor.h"
#include "Tests/Support/Picture.h"

#include <gtest/gtest.h>
#include <numbers>
#include <thread>

using namespace quorvane;
using test::Picture;

namespace {

const std::map<std::uint32_t, char> letters{{0xff0000ff, 'r'}, {0x0000ffff, 'b'}, {0x000000ff, 'k'}};

std::shared_ptr<const NSColor> red() { return NSColor::colorWithSRGBRed(1, 0, 0, 1); }
std::shared_ptr<const NSColor> blue() { return NSColor::colorWithSRGBRed(0, 0, 1, 1); }

} // namespace

TEST(NSGraphicsContext, EachThreadHasItsOwn) {
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
    const Picture picture(1, 1);
    ASSERT_TRUE(NSGraphicsContext::currentContext());
    EXPECT_EQ(NSGraphicsContext::currentContext()->CGContext(), picture.context());
    EXPECT_TRUE(NSGraphicsContext::currentContext()->isFlipped());
    bool elsewhere = true;
    std::thread([&elsewhere] { elsewhere = NSGraphicsContext::currentContext() != nullptr; }).join();
    EXPECT_FALSE(elsewhere);
    EXPECT_EQ(NSGraphicsContext::graphicsContextWithCGContext(nullptr, true), nullptr);
}

TEST(NSGraphicsContext, RestoringBringsStateAndContextBack) {
    const Picture picture(3, 1);
    const auto current = NSGraphicsContext::currentContext();
    red()->set();
    NSGraphicsContext::saveGraphicsState();
    blue()->set();
    CGContextTranslateCTM(picture.context(), 1, 0);
    NSGraphicsContext::setCurrentContext(nullptr);
    NSGraphicsContext::saveGraphicsState();
    NSGraphicsContext::restoreGraphicsState();
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
    NSGraphicsContext::restoreGraphicsState();
    EXPECT_EQ(NSGraphicsContext::currentContext(), current);
    NSGraphicsContext::restoreGraphicsState();
    EXPECT_EQ(NSGraphicsContext::currentContext(), current);
    CGContextFillRect(picture.context(), CGRectMake(0, 0, 2, 1));
    EXPECT_EQ(picture.drawing(letters), "rr.\n");
}

TEST(NSColorDrawing, FillAndStrokeAreSetApartOrTogether) {
    const Picture picture(1, 1);
    const auto fill = [&] { return CGContextGetFillColor(picture.context()); };
    const auto stroke = [&] { return CGContextGetStrokeColor(picture.context()); };
    red()->setFill();
    blue()->setStroke();
    EXPECT_TRUE(CFEqual(fill(), red()->CGColor()));
    EXPECT_TRUE(CFEqual(stroke(), blue()->CGColor()));
    NSColor::labelColor()->set();
    EXPECT_TRUE(CFEqual(fill(), NSColor::labelColor()->CGColor()));
    EXPECT_TRUE(CFEqual(stroke(), NSColor::labelColor()->CGColor()));
}

TEST(NSBezierPath, FillsAndStrokesInTheCurrentColours) {
    const Picture picture(5, 3);
    red()->setFill();
    blue()->setStroke();
    const auto path = NSBezierPath::bezierPathWithRect(CGRectMake(0.5, 0.5, 4, 2));
    path->fill();
    EXPECT_TRUE(picture.looks(2, 1, 0xff0000ff));
    path->stroke();
    EXPECT_EQ(picture.drawing(letters), "bbbbb\nbrrrb\nbbbbb\n");
    path->setLineWidth(7);
    path->stroke();
    EXPECT_EQ(picture.drawing(letters), "bbbbb\nbbbbb\nbbbbb\n");
}

TEST(NSBezierPath, ClipsWhatIsDrawnLater) {
    const Picture picture(4, 2);
    const auto path = NSBezierPath::bezierPath();
    path->moveToPoint({1, 0});
    path->lineToPoint({3, 0});
    path->lineToPoint({3, 1});
    path->lineToPoint({1, 1});
    path->closePath();
    path->addClip();
    CGContextFillRect(picture.context(), CGRectMake(0, 0, 4, 2));
    EXPECT_EQ(picture.drawing(letters), ".kk.\n....\n");
}

TEST(NSBezierPath, BoundsAreAroundWhatItCovers) {
    EXPECT_EQ(NSBezierPath::bezierPath()->bounds(), CGRectZero);
    EXPECT_TRUE(NSBezierPath::bezierPath()->isEmpty());
    const auto path = NSBezierPath::bezierPath();
    path->moveToPoint({0, 0});
    path->curveToPoint({10, 0}, {0, 10}, {10, 10});
    EXPECT_EQ(path->bounds(), CGRectMake(0, 0, 10, 7.5));
    path->appendBezierPathWithRect(CGRectMake(20, 1, 2, 3));
    EXPECT_EQ(path->bounds(), CGRectMake(0, 0, 22, 7.5));
    EXPECT_TRUE(CGRectEqualToRect(NSBezierPath::bezierPathWithOvalInRect(CGRectMake(1, 2, 3, 4))->bounds(),
                                  CGRectMake(1, 2, 3, 4)));
    EXPECT_TRUE(
        CGRectEqualToRect(NSBezierPath::bezierPathWithRoundedRect(CGRectMake(1, 2, 30, 40), 3, 4)->bounds(),
                          CGRectMake(1, 2, 30, 40)));
    const auto arc = NSBezierPath::bezierPath();
    arc->appendArcWithCenter({5, 5}, 5, 0, std::numbers::pi, false);
    EXPECT_NEAR(arc->bounds().origin.y, 5, 1e-9);
    EXPECT_NEAR(CGRectGetMaxY(arc->bounds()), 10, 1e-9);
}

TEST(NSBezierPath, ItsCGPathIsACopy) {
    const auto path = NSBezierPath::bezierPathWithRect(CGRectMake(0, 0, 1, 1));
    const auto copy = path->CGPath();
    path->lineToPoint({5, 5});
    EXPECT_TRUE(copy->isEqual(CGPathCreateWithRect(CGRectMake(0, 0, 1, 1), nullptr).get()));
}

TEST(NSBezierPath, WithoutAContextNothingIsDrawn) {
    ASSERT_EQ(NSGraphicsContext::currentContext(), nullptr);
    const auto path = NSBezierPath::bezierPathWithRect(CGRectMake(0, 0, 1, 1));
    path->fill();
    path->stroke();
    path->addClip();
    red()->set();
    EXPECT_FALSE(path->isEmpty());
}
