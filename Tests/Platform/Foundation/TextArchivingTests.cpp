#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Platform/Foundation/NSRegularExpression.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

/// Writes what no real object would, under the name of a class.
class Forgery final : public NSSecureCoding {
public:
    Forgery(const NSCodingClass &forged, std::function<void(NSCoder &)> write)
        : _class{forged.name, nullptr, nullptr}, _write(std::move(write)) {}
    const NSCodingClass &classForCoder() const override { return _class; }
    void encodeWithCoder(NSCoder &coder) const override { _write(coder); }
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &, std::shared_ptr<NSSecureCoding>) override {
        return nullptr;
    }

private:
    NSCodingClass _class;
    std::function<void(NSCoder &)> _write;
};

template <typename T>
std::shared_ptr<T> decodedForgery(std::function<void(NSCoder &)> write, std::shared_ptr<NSError> *error) {
    return NSKeyedUnarchiver::unarchivedObjectOfClass<T>(
        NSKeyedArchiver::archivedDataWithRootObject(
            std::make_shared<Forgery>(T::codingClass(), std::move(write))),
        error);
}

std::vector<std::uint8_t> rangeBytes(std::initializer_list<std::uint32_t> values) {
    std::vector<std::uint8_t> bytes;
    for (const std::uint32_t value : values)
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    return bytes;
}

} // namespace

TEST(NSCharacterSetArchiving, ASetComesBackEqual) {
    const std::shared_ptr<const NSCharacterSet> sets[] = {
        NSCharacterSet::emptyCharacterSet(),
        NSCharacterSet::alphanumericCharacterSet(),
        NSCharacterSet::newlineCharacterSet()->invertedSet(),
        NSCharacterSet::characterSetWithCharactersInString(u"a\uFFFF\U00010000\U0010FFFF"),
    };
    for (const auto &set : sets) {
        std::shared_ptr<NSError> error;
        const auto decoded = NSKeyedUnarchiver::unarchivedObjectOfClass<NSCharacterSet>(
            NSKeyedArchiver::archivedDataWithRootObject(set), &error);
        EXPECT_EQ(error, nullptr);
        ASSERT_NE(decoded, nullptr);
        EXPECT_TRUE(decoded->isEqual(set.get()));
    }
}

TEST(NSCharacterSetArchiving, DamagedRangesFailTheArchive) {
    const std::vector<std::uint8_t> damaged[] = {
        {1, 2, 3},
        rangeBytes({5}),
        rangeBytes({9, 5}),         // backwards
        rangeBytes({5, 9, 9, 12}),  // overlapping
        rangeBytes({20, 30, 5, 9}), // not in order
        rangeBytes({0, 0x110000}),  // beyond the last character
        rangeBytes({0xFFFFFFFF, 0xFFFFFFFF}),
    };
    for (const auto &bytes : damaged) {
        std::shared_ptr<NSError> error;
        EXPECT_EQ(decodedForgery<NSCharacterSet>(
                      [&](NSCoder &coder) { coder.encodeData(bytes, u"characterRanges"); }, &error),
                  nullptr);
        ASSERT_NE(error, nullptr);
        EXPECT_EQ(error->localizedDescription(), u"The archive holds a damaged character set.");
    }
    std::shared_ptr<NSError> error;
    EXPECT_EQ(decodedForgery<NSCharacterSet>([](NSCoder &) {}, &error), nullptr);
    EXPECT_NE(error, nullptr);
    // The same bytes without damage are read.
    const auto good = decodedForgery<NSCharacterSet>(
        [](NSCoder &coder) {
            coder.encodeData(rangeBytes({5, 9, 0xFFFF, 0x10001}), u"characterRanges");
        },
        &error);
    ASSERT_NE(good, nullptr);
    EXPECT_TRUE(good->isEqual(NSCharacterSet::characterSetWithCharactersInString(
                                  u"\u0005\u0006\u0007\u0008\t\uFFFF\U00010000\U00010001")
                                  .get()));
}

TEST(NSRegularExpressionArchiving, AnExpressionComesBackEqualAndSearches) {
    const auto expression = NSRegularExpression::regularExpressionWithPattern(
        u"A(b)", NSRegularExpressionCaseInsensitive | NSRegularExpressionAnchorsMatchLines);
    std::shared_ptr<NSError> error;
    const auto decoded = NSKeyedUnarchiver::unarchivedObjectOfClass<NSRegularExpression>(
        NSKeyedArchiver::archivedDataWithRootObject(expression), &error);
    EXPECT_EQ(error, nullptr);
    ASSERT_NE(decoded, nullptr);
    EXPECT_TRUE(decoded->isEqual(expression.get()));
    EXPECT_EQ(decoded->options(), 17u);
    EXPECT_EQ(decoded->rangeOfFirstMatchInString(u"xab", 0, {0, 3}), (NSRange{1, 2}));
}

TEST(NSRegularExpressionArchiving, ItsKeysArePatternAndOptions) {
    const auto decoded = decodedForgery<NSRegularExpression>(
        [](NSCoder &coder) {
            coder.encodeString(u"a.b", u"pattern");
            coder.encodeInteger(8, u"options");
        },
        nullptr);
    ASSERT_NE(decoded, nullptr);
    EXPECT_EQ(decoded->pattern(), u"a.b");
    EXPECT_EQ(decoded->options(), NSRegularExpressionDotMatchesLineSeparators);
}

TEST(NSRegularExpressionArchiving, ABadPatternFailsTheArchiveWithThePatternsError) {
    std::shared_ptr<NSError> error;
    EXPECT_EQ(decodedForgery<NSRegularExpression>(
                  [](NSCoder &coder) { coder.encodeString(u"(a", u"pattern"); }, &error),
              nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->code(), 2048);
    EXPECT_EQ(error->stringForKey(u"NSInvalidValue"), u"(a");
    error = nullptr;
    EXPECT_EQ(decodedForgery<NSRegularExpression>([](NSCoder &) {}, &error), nullptr);
    EXPECT_NE(error, nullptr);
}
