#include "Quorvane/Styles/QVThemeParser.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSScanner.h"
#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

#include <algorithm>

namespace quorvane {

namespace {

using CharacterSet = std::shared_ptr<const NSCharacterSet>;

CharacterSet lettersAndDigitsAnd(std::u16string_view others) {
    return NSCharacterSet::letterCharacterSet()
        ->characterSetByFormingUnion(*NSCharacterSet::decimalDigitCharacterSet())
        ->characterSetByFormingUnion(*NSCharacterSet::characterSetWithCharactersInString(others));
}

// Neither is ever destroyed: a theme may be read while the process ends.

/// White space belongs to it, so that a selector may go on in the next line.
const NSCharacterSet &selectorCharacterSet() {
    static const auto *const set = new CharacterSet(
        lettersAndDigitsAnd(u":.,<>-+=[]()")
            ->characterSetByFormingUnion(*NSCharacterSet::whitespaceAndNewlineCharacterSet()));
    return **set;
}

const NSCharacterSet &propertyNameCharacterSet() {
    static const auto *const set = new CharacterSet(lettersAndDigitsAnd(u"-"));
    return **set;
}

} // namespace

QVThemeParserDelegate::~QVThemeParserDelegate() = default;

QVThemeParser::QVThemeParser(NSString string) : _string(std::move(string)) {}
QVThemeParser::~QVThemeParser() = default;

std::shared_ptr<QVThemeParser> QVThemeParser::initWithString(NSString string) {
    QVParameterAssert(string, "string != nil");
    return std::shared_ptr<QVThemeParser>(new QVThemeParser(std::move(string)));
}

template <typename Call> void QVThemeParser::tell(Call call) {
    if (const auto delegate = _delegate.lock())
        call(*delegate);
}

void QVThemeParser::updateLineAndColumnNumbers() {
    if (!_scanner)
        return;
    const auto next = std::upper_bound(_lineStarts.begin(), _lineStarts.end(), _scanner->scanLocation());
    _lineNumber = next - _lineStarts.begin();
    _columnNumber = static_cast<NSInteger>(_scanner->scanLocation() - *std::prev(next)) + 1;
}

void QVThemeParser::fail(std::u16string_view format) {
    _parserError = NSError::errorWithDomain(
        QVThemeParserErrorDomain, QVThemeParserParseError,
        {{NSLocalizedDescriptionKey, NSString(u"Parse error")},
         {NSLocalizedFailureReasonErrorKey, NSString::stringWithFormat(format, _lineNumber, _columnNumber)}});
}

void QVThemeParser::skipWhitespace() {
    _scanner->scanCharactersFromSet(*NSCharacterSet::whitespaceAndNewlineCharacterSet());
}

void QVThemeParser::parse() {
    if (_scanner)
        throw NSException(NSInternalInconsistencyException, u"Parsing is already in progress");
    _cancelled = false;
    _lineStarts = {0};
    for (NSUInteger lineEnd = 0; lineEnd < _string.length();) {
        NSUInteger contentsEnd = 0;
        qv_getLineStart(_string, nullptr, &lineEnd, &contentsEnd, {lineEnd, 0});
        if (contentsEnd != lineEnd)
            _lineStarts.push_back(lineEnd);
    }
    // Gone at the end, for an exception of the delegate too: the parser may be used again.
    struct Scanning {
        std::unique_ptr<NSScanner> &scanner;
        ~Scanning() { scanner = nullptr; }
    } const scanning{_scanner};
    _scanner = std::make_unique<NSScanner>(_string);
    tell([&](auto &delegate) { delegate.themeParserDidStartDocument(*this); });

    while (!_cancelled && !_parserError && !_scanner->isAtEnd()) {
        skipWhitespace();
        if (parseComment() || (parseDeclaration() && !_parserError))
            continue;
        if (!_parserError && !_scanner->isAtEnd())
            fail(u"Unexpected character at line %ld, column %ld");
        if (_parserError)
            tell([&](auto &delegate) { delegate.themeParserParseErrorOccurred(*this, _parserError); });
    }
    if (_parserError)
        return;
    updateLineAndColumnNumbers();
    tell([&](auto &delegate) { delegate.themeParserDidEndDocument(*this); });
}

bool QVThemeParser::parseComment() {
    if (!_scanner->scanString(u"/*"))
        return false;
    std::u16string comment;
    const bool hasText = _scanner->scanUpToString(u"*/", &comment);
    // One that is left open reaches to the end of the file and is no error.
    _scanner->scanString(u"*/");
    if (hasText)
        tell([&](auto &delegate) { delegate.themeParserFoundComment(*this, std::move(comment)); });
    return true;
}

bool QVThemeParser::parseDeclaration() {
    skipWhitespace();
    updateLineAndColumnNumbers();
    std::u16string scanned;
    if (!_scanner->scanCharactersFromSet(selectorCharacterSet(), &scanned))
        return false;
    const NSString selector =
        NSString(std::move(scanned))
            .stringByTrimmingCharactersInSet(*NSCharacterSet::whitespaceAndNewlineCharacterSet());
    tell([&](auto &delegate) { delegate.themeParserDidStartDeclaration(*this, selector); });

    if (_scanner->scanString(u"{")) {
        do
            skipWhitespace();
        while (parseComment() || (parseProperty() && !_parserError));
        if (!_parserError) {
            skipWhitespace();
            if (!_scanner->scanString(u"}")) {
                fail(u"Missing declaration termination at line %ld, column %ld");
                return false;
            }
        }
        updateLineAndColumnNumbers();
    }
    tell([&](auto &delegate) { delegate.themeParserDidEndDeclaration(*this, selector); });
    return true;
}

bool QVThemeParser::parseProperty() {
    skipWhitespace();
    updateLineAndColumnNumbers();
    std::u16string name;
    if (!_scanner->scanCharactersFromSet(propertyNameCharacterSet(), &name))
        return false;

    skipWhitespace();
    updateLineAndColumnNumbers();
    if (!_scanner->scanString(u":")) {
        fail(u"Missing property separator at line %ld, column %ld");
        return true;
    }

    skipWhitespace();
    NSString value;
    if (std::u16string scanned; _scanner->scanUpToString(u";", &scanned)) {
        value = NSString(std::move(scanned))
                    .stringByTrimmingCharactersInSet(*NSCharacterSet::whitespaceCharacterSet());
        // The white space before the value is gone already, so this is for the day when the sets differ.
        if (value.length() == 0) {
            updateLineAndColumnNumbers();
            fail(u"Missing property value at line %ld, column %ld");
            return true;
        }
    }

    skipWhitespace();
    if (!_scanner->scanString(u";")) {
        updateLineAndColumnNumbers();
        fail(u"Missing property termination at line %ld, column %ld");
        return true;
    }
    tell([&](auto &delegate) { delegate.themeParserFoundProperty(*this, std::move(name), value); });
    return true;
}

} // namespace quorvane
