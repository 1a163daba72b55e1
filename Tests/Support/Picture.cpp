#include "Tests/Support/Picture.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace quorvane::test {

namespace {

CGColorRef colorOf(std::uint32_t rgba) {
    return CGColorCreate(CGColorSpaceCreateDeviceRGB(), {(rgba >> 24) / 255.0, (rgba >> 16 & 0xff) / 255.0,
                                                         (rgba >> 8 & 0xff) / 255.0, (rgba & 0xff) / 255.0});
}

std::string hexadecimal(std::uint32_t rgba) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "#%08x", rgba);
    return digits;
}

} // namespace

Picture::Picture(std::size_t width, std::size_t height, std::uint32_t background)
    : _context(CGBitmapContextCreate(width, height)), _previous(NSGraphicsContext::currentContext()) {
    NSGraphicsContext::setCurrentContext(NSGraphicsContext::graphicsContextWithCGContext(_context, true));
    if (background != 0) {
        CGContextSaveGState(_context);
        setFill(background);
        CGContextFillRect(_context, CGContextGetClipBoundingBox(_context));
        CGContextRestoreGState(_context);
    }
}

Picture::~Picture() {
    NSGraphicsContext::setCurrentContext(_previous);
    const auto *test = testing::UnitTest::GetInstance()->current_test_info();
    if (!test || (!testing::Test::HasFailure() && !std::getenv("QUORVANE_WRITE_PICTURES")))
        return;
    std::error_code error;
    const std::filesystem::path folder = QUORVANE_PICTURES_DIR;
    std::filesystem::create_directories(folder, error);
    const NSData png = QVBitmapContextCreatePNG(_context);
    // Several pictures of one test stand beside one another.
    for (int number = 1;; ++number) {
        static std::map<std::string, int> written;
        const std::string name = std::string(test->test_suite_name()) + "." + test->name() +
                                 (number == 1 ? "" : "-" + std::to_string(number)) + ".png";
        if (written[name]++ != 0)
            continue;
        std::ofstream(folder / name, std::ios::binary) << png.view();
        std::cerr << "picture: " << (folder / name).string() << "\n";
        return;
    }
}

void Picture::setFill(std::uint32_t rgba) const { CGContextSetFillColorWithColor(_context, colorOf(rgba)); }

std::uint32_t Picture::pixel(std::size_t x, std::size_t y) const {
    const std::uint32_t argb = QVBitmapContextGetPixel(_context, x, y), alpha = argb >> 24;
    if (alpha == 0)
        return 0;
    const auto plain = [argb, alpha](int shift) {
        return std::min(((argb >> shift & 0xff) * 255 + alpha / 2) / alpha, 255u);
    };
    return plain(16) << 24 | plain(8) << 16 | plain(0) << 8 | alpha;
}

testing::AssertionResult Picture::looks(std::size_t x, std::size_t y, std::uint32_t rgba,
                                        int tolerance) const {
    const std::uint32_t seen = pixel(x, y);
    for (const int shift : {0, 8, 16, 24})
        if (std::abs(static_cast<int>(seen >> shift & 0xff) - static_cast<int>(rgba >> shift & 0xff)) >
            tolerance)
            return testing::AssertionFailure() << "pixel " << x << ", " << y << " is " << hexadecimal(seen)
                                               << " and not " << hexadecimal(rgba);
    return testing::AssertionSuccess();
}

std::string Picture::drawing(const std::map<std::uint32_t, char> &letters) const {
    std::string text;
    for (std::size_t y = 0; y < CGBitmapContextGetHeight(_context); ++y) {
        for (std::size_t x = 0; x < CGBitmapContextGetWidth(_context); ++x) {
            const std::uint32_t rgba = pixel(x, y);
            const auto letter = letters.find(rgba);
            text += letter != letters.end() ? letter->second : rgba == 0 ? '.' : '?';
        }
        text += '\n';
    }
    return text;
}

} // namespace quorvane::test
