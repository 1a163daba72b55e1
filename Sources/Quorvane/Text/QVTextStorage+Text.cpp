#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/Categories/NSCharacterSet+QuorvaneAdditions.h"
#include "Quorvane/Symbols/QVLexicalClass.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Quorvane/Text/QVTextStorage.h"

namespace quorvane {

// MARK: - Identifiers

NSRange QVTextStorage::rangeOfIdentifierAtIndex(NSUInteger index, bool includePrefix) const {
    // A host can say of a character what it is; of the others the parse does.
    auto lexicalClass = extendedAttribute(QVLexicalClassAttributeName, index, nullptr);
    if (!lexicalClass)
        lexicalClass = syntaxHighlightingAttribute(QVLexicalClassAttributeName, index, nullptr);
    if (lexicalClass)
        if (const NSString name = lexicalClass->stringValue();
            name == QVLexicalClassKeyword || name == QVLexicalClassString || name == QVLexicalClassComment)
            return NSNotFoundRange;

    const std::shared_ptr<QVSyntax> syntax = syntaxAtLocation(index);
    std::shared_ptr<const NSCharacterSet> set = syntax ? syntax->identifierCharacterSet() : nullptr;
    if (!set)
        set = qv_defaultIdentifierCharacterSet();
    const QVTextReader text = string();
    NSRange range = qv_rangeOfCharactersFromSet(text, *set, NSAnchoredSearch, {index, text.length() - index});
    if (range.location == NSNotFound || range.length == 0)
        return NSNotFoundRange;
    const NSRange before =
        qv_rangeOfCharactersFromSet(text, *set, NSAnchoredSearch | NSBackwardsSearch, {0, index});
    if (before.location != NSNotFound)
        range = NSUnionRange(before, range);
    if (includePrefix && syntax && syntax->identifierPrefixCharacterSet() && range.location > 0 &&
        syntax->identifierPrefixCharacterSet()->characterIsMember(text.characterAtIndex(range.location - 1)))
        range = {range.location - 1, range.length + 1};
    return range;
}

// MARK: - Pasted text

namespace {

bool isIndentation(char16_t unit) { return unit == u' ' || unit == u'\t'; }

/// One call of `formatAttributedStringForInsertion`: walks the lines of a pasted text and brings each into
/// the form of the document that it goes to.
class PasteFormatter {
public:
    PasteFormatter(const QVTextStorage &storage, NSMutableAttributedString &string, NSUInteger location,
                   std::uint64_t options, QVTextStorage::FormattingBlock changeHandler)
        : _storage(storage), _string(string), _location(location),
          _reindents((options & QVTextFormattingReindent) != 0),
          _rewrites((options & QVTextFormattingRewriteIndentation) != 0), _changeHandler(changeHandler),
          _lineEndings(storage.lineEndings()), _style(storage.indentationStyle()),
          // As everywhere where indentation is counted, no width means the usual one.
          _tabWidth(storage.tabWidth() != 0 ? storage.tabWidth() : 4), _length(string.length()) {}

    void format() {
        _string.beginEditing();
        // Also when the handler throws.
        struct End {
            NSMutableAttributedString &string;
            ~End() noexcept(false) { string.endEditing(); }
        } const end{_string};
        while (_position < _length && !_stop)
            formatLine();
    }

private:
    /// Where the line at the position ends, without and with its terminator.
    struct LineEnd {
        NSUInteger contents;
        NSUInteger whole;
    };

    LineEnd lineEnd() const {
        const QVTextReader text = _string.string();
        const NSUInteger contents = endOfContents(text, _position);
        return {contents, behindTerminator(text, contents)};
    }

    NSRange measureIndentation(NSUInteger location, NSUInteger end, NSUInteger &spaces) const {
        spaces = 0;
        return qv_rangeOfIndentationInRange(_string.string(), {location, end - location}, _tabWidth, &spaces);
    }

    void formatLine() {
        const bool isFirst = _position == 0;
        LineEnd end = lineEnd();
        if (_reindents || _rewrites) {
            NSUInteger spaces = 0;
            const NSRange indentation = measureIndentation(_position, end.contents, spaces);
            NSUInteger newSpaces = spaces;
            if (_reindents && isFirst) {
                if (prepareReindenting(end.contents, NSMaxRange(indentation)))
                    newSpaces = 0;
            } else if (_reindents) {
                const NSInteger moved = static_cast<NSInteger>(spaces) + _shift;
                newSpaces = moved > 0 ? static_cast<NSUInteger>(moved) : 0;
            }
            rewriteIndentation(QVTextFormattingLineIndentation, indentation, newSpaces, end);
            if (_rewrites)
                rewriteInnerIndentation(end);
        }
        if (_stop)
            return;
        rewriteTerminator(end);
        _position = end.whole;
    }

    /// From the first line, which is joined with what stands before the location: finds out how far the other
    /// lines are moved. Answers whether the document's own indentation takes the place of the line's.
    bool prepareReindenting(NSUInteger contentsEnd, NSUInteger indentationEnd) {
        NSRange line;
        _storage.lineNumberForCharacterIndex(_location, &line);
        const QVTextReader document = _storage.string();
        NSUInteger base = 0;
        const NSRange indentation = qv_rangeOfIndentationInRange(
            document, {line.location, _location - line.location}, _tabWidth, &base);
        const std::shared_ptr<QVSyntax> syntax = _storage.syntaxAtLocation(_location);
        const QVTextReader pasted = _string.string();

        const std::u16string joined =
            document.substringWithRange({line.location, _location - line.location}) +
            pasted.substringWithRange({0, contentsEnd});
        const bool increases =
            syntax && syntax->indentationIncrease() &&
            syntax->indentationIncrease()->firstMatchInString(joined, 0, {0, joined.size()});
        if (increases)
            base += _tabWidth;

        for (NSUInteger start = behindTerminator(pasted, contentsEnd); start < pasted.length();) {
            const NSUInteger end = endOfContents(pasted, start);
            NSUInteger spaces = 0;
            const NSRange own = measureIndentation(start, end, spaces);
            if (NSMaxRange(own) < end) {
                const std::u16string text = pasted.substringWithRange({start, end - start});
                if (increases && syntax->indentationDecrease()) {
                    // From the end of the indentation on, where patterns that begin with a line's start and
                    // its blanks find one.
                    const NSRange rest{own.length, text.size() - own.length};
                    const auto match = syntax->indentationDecrease()->firstMatchInString(text, 0, rest);
                    if (match && match->front().location == own.length)
                        base -= _tabWidth;
                }
                _shift = static_cast<NSInteger>(base) - static_cast<NSInteger>(spaces - spaces % _tabWidth);
                break;
            }
            start = behindTerminator(pasted, end);
        }
        return indentationEnd < contentsEnd && NSMaxRange(indentation) == _location;
    }

    /// The first terminator from a location on, or the text's end.
    static NSUInteger endOfContents(QVTextReader text, NSUInteger location) {
        while (location < text.length() && text.characterAtIndex(location) != u'\n' &&
               text.characterAtIndex(location) != u'\r')
            ++location;
        return location;
    }

    static NSUInteger behindTerminator(QVTextReader text, NSUInteger contentsEnd) {
        if (contentsEnd == text.length())
            return contentsEnd;
        return NSMaxRange(qv_rangeOfNewlineAtLocation(text, contentsEnd));
    }

    /// Leaves the position behind the indentation, whatever became of it.
    void rewriteIndentation(QVTextFormattingKind kind, NSRange range, NSUInteger spaces, LineEnd &end) {
        const NSString text = qv_stringWithIndentationStyle(_style, spaces, _tabWidth);
        change(kind, range, text, end);
    }

    void rewriteInnerIndentation(LineEnd &end) {
        while (!_stop && _position < end.contents) {
            if (!isIndentation(_string.string().characterAtIndex(_position))) {
                ++_position;
                continue;
            }
            NSUInteger spaces = 0;
            const NSRange indentation = measureIndentation(_position, end.contents, spaces);
            rewriteIndentation(QVTextFormattingInnerIndentation, indentation, spaces, end);
        }
    }

    void rewriteTerminator(LineEnd &end) {
        if (end.contents == end.whole)
            return;
        const std::u16string terminator =
            _string.string().substringWithRange({end.contents, end.whole - end.contents});
        QVLineEndings lineEndings = QVLineEndingsLF;
        if (terminator == u"\r\n") {
            lineEndings = QVLineEndingsCRLF;
        } else if (terminator == u"\r") {
            lineEndings = QVLineEndingsCR;
        } else if (terminator != u"\n") {
            // The handler put something else there.
            NSLog(u"Unexpected line endings encountered while formatting string: %@",
                  NSString(_string.string().substringWithRange({0, _string.length()})));
            return;
        }
        if (lineEndings == _lineEndings)
            return;
        change(QVTextFormattingLineEnding, {end.contents, end.whole - end.contents},
               qv_stringForLineEndings(_lineEndings), end);
    }

    /// Makes one change if there is anything to change and nobody objects, and goes on behind it.
    void change(QVTextFormattingKind kind, NSRange range, const NSString &text, LineEnd &end) {
        _position = NSMaxRange(range);
        if (_string.string().substringWithRange(range) == text.view())
            return;
        const NSInteger changeInLength =
            static_cast<NSInteger>(text.length()) - static_cast<NSInteger>(range.length);
        if (_changeHandler && !_changeHandler(kind, range, changeInLength, _stop)) {
            checkLength(end);
            return;
        }
        _string.replaceCharactersInRange(range, text.view());
        const auto moved = static_cast<NSUInteger>(changeInLength);
        _length += moved;
        _position += moved;
        end.whole += moved;
        if (kind != QVTextFormattingLineEnding)
            end.contents += moved;
        checkLength(end);
    }

    /// The handler must not change the text. Where an assertion lets the work go on, it stays inside of what
    /// is left.
    void checkLength(LineEnd &end) {
        QVAssert(_length == _string.length(), u"String length doesn't match");
        _length = _string.length();
        _position = std::min(_position, _length);
        end.contents = std::clamp(end.contents, _position, _length);
        end.whole = std::clamp(end.whole, end.contents, _length);
    }

    const QVTextStorage &_storage;
    NSMutableAttributedString &_string;
    const NSUInteger _location;
    const bool _reindents;
    const bool _rewrites;
    const QVTextStorage::FormattingBlock _changeHandler;
    const QVLineEndings _lineEndings;
    const QVIndentationStyle _style;
    const NSUInteger _tabWidth;
    /// Of the pasted text, as it ought to be.
    NSUInteger _length;
    NSUInteger _position = 0;
    /// How far the lines behind the first one are moved.
    NSInteger _shift = 0;
    bool _stop = false;
};

} // namespace

void QVTextStorage::formatAttributedStringForInsertion(NSMutableAttributedString &attributedString,
                                                       NSRange inRange, std::uint64_t options,
                                                       FormattingBlock changeHandler) const {
    checkRange(inRange);
    PasteFormatter(*this, attributedString, inRange.location, options, changeHandler).format();
}

} // namespace quorvane
