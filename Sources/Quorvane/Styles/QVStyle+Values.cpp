#include "Quorvane/Styles/QVStyle.h"

#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSScanner.h"
#include "Quorvane/Styles/QVGradient.h"

// How the values of properties fall apart: into components, functions with their arguments, and strings.

namespace quorvane {

namespace {

const NSCharacterSet &tokenCharacterSet() {
    // Never destroyed: a theme may be read while the process ends.
    static const auto &set = *new auto(
        NSCharacterSet::letterCharacterSet()
            ->characterSetByFormingUnion(*NSCharacterSet::decimalDigitCharacterSet())
            ->characterSetByFormingUnion(*NSCharacterSet::characterSetWithCharactersInString(u"-.#%")));
    return *set;
}

const NSCharacterSet &parenthesisCharacterSet() {
    static const auto &set = *new auto(NSCharacterSet::characterSetWithCharactersInString(u"()"));
    return *set;
}

/// A value on its way into pieces.
class ValueScanner {
public:
    explicit ValueScanner(std::u16string_view value) : _value(value), _scanner(value) {}

    bool isAtEnd() const { return _scanner.isAtEnd(); }
    bool skipWhitespace() {
        return _scanner.scanCharactersFromSet(*NSCharacterSet::whitespaceAndNewlineCharacterSet());
    }
    bool skipComma() { return _scanner.scanString(u","); }
    bool skipToComma() { return _scanner.scanUpToString(u","); }

    /// The quote at this place, 0 where there is none.
    char16_t quote() const {
        const char16_t unit = isAtEnd() ? u'\0' : _value[_scanner.scanLocation()];
        return unit == u'"' || unit == u'\'' ? unit : u'\0';
    }

    /// Adds a word.
    bool token(std::u16string &piece) {
        std::u16string scanned;
        if (!_scanner.scanCharactersFromSet(tokenCharacterSet(), &scanned))
            return false;
        piece += scanned;
        return true;
    }

    /// Adds what stands in parentheses, those within included; what is left open reaches to the end.
    bool parentheses(std::u16string &piece) {
        const NSUInteger start = _scanner.scanLocation();
        if (!_scanner.scanString(u"("))
            return false;
        for (std::size_t depth = 1; depth > 0 && !isAtEnd();) {
            _scanner.scanUpToCharactersFromSet(parenthesisCharacterSet());
            if (_scanner.scanString(u"("))
                ++depth;
            else if (_scanner.scanString(u")"))
                --depth;
        }
        piece += _value.substr(start, _scanner.scanLocation() - start);
        return true;
    }

    enum class StringEnd { Closed, Open, Backslash };

    /// Adds a string with its quotes. A backslash does not take the meaning of a quote away: what stands
    /// behind it is copied and then seen once more. Themes are written with that in mind.
    StringEnd string(std::u16string &piece) {
        const char16_t mark = quote();
        NSUInteger location = _scanner.scanLocation();
        piece += _value[location++];
        for (; location < _value.size(); ++location) {
            const char16_t unit = _value[location];
            piece += unit;
            if (unit == mark) {
                _scanner.setScanLocation(location + 1);
                return StringEnd::Closed;
            }
            if (unit == u'\\') {
                if (location + 1 == _value.size())
                    return StringEnd::Backslash;
                piece += _value[location + 1];
            }
        }
        return StringEnd::Open;
    }

private:
    std::u16string_view _value;
    NSScanner _scanner;
};

NSString trimmed(std::u16string piece) {
    return NSString(std::move(piece))
        .stringByTrimmingCharactersInSet(*NSCharacterSet::whitespaceAndNewlineCharacterSet());
}

} // namespace

std::optional<std::vector<NSString>> QVStyle::componentsForCSSValue(const NSString &value) {
    std::vector<NSString> components;
    ValueScanner scanner(value);
    do {
        scanner.skipWhitespace();
        std::u16string component;
        if (scanner.quote()) {
            switch (scanner.string(component)) {
            case ValueScanner::StringEnd::Closed:
                components.emplace_back(std::move(component));
                continue;
            case ValueScanner::StringEnd::Open:
                return components;
            case ValueScanner::StringEnd::Backslash:
                return std::nullopt;
            }
        }
        if (!scanner.token(component))
            return std::nullopt;
        if (scanner.skipWhitespace()) {
            components.emplace_back(std::move(component));
            continue;
        }
        if (scanner.parentheses(component))
            scanner.skipWhitespace();
        if (!scanner.isAtEnd() && !scanner.skipComma())
            return std::nullopt;
        components.push_back(trimmed(std::move(component)));
    } while (!scanner.isAtEnd());
    return components;
}

std::vector<NSString> QVStyle::argumentsForCSSFunction(const NSString &string) {
    std::vector<NSString> arguments;
    ValueScanner scanner(string);
    while (!scanner.isAtEnd()) {
        scanner.skipWhitespace();
        std::u16string argument;
        if (scanner.token(argument)) {
            if (scanner.skipWhitespace())
                argument += u' ';
            // A function, or a second word at most: a colour and its place.
            if (scanner.parentheses(argument) || scanner.token(argument))
                scanner.skipWhitespace();
            const bool atEnd = scanner.isAtEnd();
            if (atEnd || scanner.skipComma()) {
                arguments.push_back(trimmed(std::move(argument)));
                continue;
            }
        }
        // What is no argument is dropped as a whole.
        if (!scanner.skipToComma())
            break;
        scanner.skipComma();
    }
    return arguments;
}

NSString QVStyle::stringWithCSSValue(const NSString &value) {
    if (value.length() < 2)
        return value;
    const char16_t quote = value.characterAtIndex(0);
    if ((quote != u'"' && quote != u'\'') || value.characterAtIndex(value.length() - 1) != quote)
        return value;
    return value.substringWithRange({1, value.length() - 2});
}

std::shared_ptr<const QVGradient> QVStyle::gradientWithCSSValue(const NSString &value) {
    static constexpr std::u16string_view prefix = u"linear-gradient(";
    if (!value.hasPrefix(prefix) || !value.hasSuffix(u")"))
        return nullptr;
    std::vector<std::shared_ptr<const QVColor>> colors;
    for (const NSString &argument : argumentsForCSSFunction(
             value.substringWithRange({prefix.size(), value.length() - prefix.size() - 1})))
        if (auto color = colorWithCSSValue(argument))
            colors.push_back(std::move(color));
    return QVGradient::gradientWithColors(colors);
}

} // namespace quorvane
