#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSString.h"

#include <charconv>

namespace quorvane {

namespace {

std::u16string_view withoutLeadingSpace(std::u16string_view text) {
    const auto space = NSCharacterSet::whitespaceAndNewlineCharacterSet();
    std::size_t start = 0;
    while (start < text.size() && space->characterIsMember(text[start]))
        ++start;
    return text.substr(start);
}

bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

/// The longest prefix that is a decimal number, as bytes without a plus sign, and its order of magnitude: how
/// many digits stand before the point (negative for zeros behind it).
struct DecimalNumber {
    explicit DecimalNumber(std::u16string_view text) {
        text = withoutLeadingSpace(text);
        std::size_t index = 0;
        const auto take = [&] { bytes.push_back(static_cast<char>(text[index++])); };
        if (index < text.size() && text[index] == u'-')
            take();
        else if (index < text.size() && text[index] == u'+')
            ++index;
        bool anyDigit = false;
        bool significant = false;
        for (; index < text.size() && isDigit(text[index]); anyDigit = true) {
            significant |= text[index] != u'0';
            magnitude += significant;
            take();
        }
        if (index < text.size() && text[index] == u'.') {
            take();
            for (; index < text.size() && isDigit(text[index]); anyDigit = true) {
                significant |= text[index] != u'0';
                magnitude -= !significant;
                take();
            }
        }
        if (!anyDigit) {
            bytes = "0";
            return;
        }
        std::size_t exponent = index + 1;
        if (index >= text.size() || (text[index] != u'e' && text[index] != u'E'))
            return;
        const bool negative = exponent < text.size() && text[exponent] == u'-';
        if (exponent < text.size() && (text[exponent] == u'-' || text[exponent] == u'+'))
            ++exponent;
        if (exponent >= text.size() || !isDigit(text[exponent]))
            return;
        NSInteger value = 0;
        bytes += negative ? "e-" : "e";
        for (; exponent < text.size() && isDigit(text[exponent]); ++exponent) {
            bytes.push_back(static_cast<char>(text[exponent]));
            value = std::min<NSInteger>(value * 10 + (text[exponent] - u'0'), 1 << 30);
        }
        magnitude += negative ? -value : value;
    }

    template <typename Number> Number value() const {
        Number number = 0;
        const auto result = std::from_chars(bytes.data(), bytes.data() + bytes.size(), number);
        if (result.ec != std::errc::result_out_of_range)
            return number;
        if (magnitude <= 0)
            return 0;
        return bytes[0] == '-' ? std::numeric_limits<Number>::lowest() : std::numeric_limits<Number>::max();
    }

    std::string bytes;
    NSInteger magnitude = 0;
};

} // namespace

NSInteger NSString::integerValue() const {
    const std::u16string_view text = withoutLeadingSpace(view());
    std::size_t index = 0;
    const bool negative = !text.empty() && text[0] == u'-';
    if (negative || (!text.empty() && text[0] == u'+'))
        ++index;
    NSInteger value = 0;
    for (; index < text.size() && isDigit(text[index]); ++index) {
        const NSInteger digit = negative ? -(text[index] - u'0') : text[index] - u'0';
        if (__builtin_mul_overflow(value, 10, &value) || __builtin_add_overflow(value, digit, &value))
            return negative ? std::numeric_limits<NSInteger>::min() : std::numeric_limits<NSInteger>::max();
    }
    return value;
}

float NSString::floatValue() const { return DecimalNumber(view()).value<float>(); }

double NSString::doubleValue() const { return DecimalNumber(view()).value<double>(); }

} // namespace quorvane
