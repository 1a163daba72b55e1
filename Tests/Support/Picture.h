#pragma once

#include "Platform/AppKit/NSGraphicsContext.h"

#include <gtest/gtest.h>
#include <map>
#include <string>

namespace quorvane::test {

/// A bitmap to draw into and to look at, which is the thread's current context while it lives. When the test
/// fails, or with QUORVANE_WRITE_PICTURES in the environment, it is written to the folder `pictures` of the
/// build, under the test's name.
class Picture {
public:
    /// Clear, or of one color, 0xRRGGBBAA.
    Picture(std::size_t width, std::size_t height, std::uint32_t background = 0);
    ~Picture();
    Picture(const Picture &) = delete;
    Picture &operator=(const Picture &) = delete;

    const CGContextRef &context() const { return _context; }
    /// Makes this the fill color, 0xRRGGBBAA.
    void setFill(std::uint32_t rgba) const;

    /// 0xRRGGBBAA, not multiplied by alpha.
    std::uint32_t pixel(std::size_t x, std::size_t y) const;
    /// Whether each component is that of 0xRRGGBBAA, or not further away than the tolerance.
    testing::AssertionResult looks(std::size_t x, std::size_t y, std::uint32_t rgba, int tolerance = 0) const;
    /// A letter for each pixel, a line for each row: "." for a clear one, "?" for a color that has no letter.
    std::string drawing(const std::map<std::uint32_t, char> &letters) const;

private:
    CGContextRef _context;
    std::shared_ptr<const NSGraphicsContext> _previous;
};

} // namespace quorvane::test
