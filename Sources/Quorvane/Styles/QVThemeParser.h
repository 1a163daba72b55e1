#pragma once

#include "Platform/Foundation/NSObject.h"

#include <memory>
#include <vector>

namespace quorvane {

class NSError;
class NSScanner;
class QVThemeParser;

/// The domain of a theme parser's errors, and their one code. The failure reason says what is wrong and
/// where.
inline constexpr const char16_t *QVThemeParserErrorDomain = u"QVThemeParserErrorDomain";
inline constexpr NSInteger QVThemeParserParseError = 1001;

/// Gets the events of a `QVThemeParser`, on the thread that parses. Every operation may be left out.
class QV_EXPORT QVThemeParserDelegate {
public:
    virtual ~QVThemeParserDelegate();
    virtual void themeParserDidStartDocument(QVThemeParser &) {}
    /// The text between the marks, as it stands; an empty comment is not told.
    virtual void themeParserFoundComment(QVThemeParser &, const NSString & /*comment*/) {}
    /// The whole selector text, trimmed, with any commas in it. The parser's position is its start.
    virtual void themeParserDidStartDeclaration(QVThemeParser &, const NSString & /*selector*/) {}
    /// The value is null where nothing but white space stands before the semicolon.
    virtual void themeParserFoundProperty(QVThemeParser &, const NSString & /*name*/,
                                          const NSString & /*value*/) {}
    /// Behind the closing brace, or straight behind a selector text without a block. Also told before an
    /// error of one of the declaration's properties is.
    virtual void themeParserDidEndDeclaration(QVThemeParser &, const NSString & /*selector*/) {}
    /// Once, as the last event.
    virtual void themeParserParseErrorOccurred(QVThemeParser &, const std::shared_ptr<NSError> & /*error*/) {}
    /// Not told after an error.
    virtual void themeParserDidEndDocument(QVThemeParser &) {}
};

/// Reads the text of a theme, declarations of the kind `selector { name: value; }` with comments between, as
/// a stream of events. It knows nothing of styles: `QVThemeBuilder` makes them of the events, and the grammar
/// of values is `QVStyle`'s. The first error ends the events; nothing is skipped to recover, so that a theme
/// is either whole or not there. One parser is for one text and on one thread.
class QV_EXPORT QVThemeParser {
public:
    /// A null text is asserted; where the handler returns it counts as empty.
    static std::shared_ptr<QVThemeParser> initWithString(NSString string);
    ~QVThemeParser();
    QVThemeParser(const QVThemeParser &) = delete;
    QVThemeParser &operator=(const QVThemeParser &) = delete;

    const NSString &string() const { return _string; }
    /// Not kept alive.
    std::shared_ptr<QVThemeParserDelegate> delegate() const { return _delegate.lock(); }
    void setDelegate(const std::shared_ptr<QVThemeParserDelegate> &delegate) { _delegate = delegate; }

    /// Reads the text to its end, to the first error or until it is aborted. Throws
    /// `NSInternalInconsistencyException` when it is called by a delegate of the running parse. A parser that
    /// failed stays failed: the error is kept, and parsing again tells no more than the document's start.
    void parse();
    /// Ends the running parse before its next comment or declaration; the end of the document is told all the
    /// same.
    void abortParsing() { _cancelled = true; }
    bool isCancelled() const { return _cancelled; }
    /// The first error, null where there was none.
    const std::shared_ptr<NSError> &parserError() const { return _parserError; }

    /// The place of the last item that was begun, or of what is wrong; counted from 1, columns in UTF-16 code
    /// units. 0 before the first parse.
    NSInteger lineNumber() const { return _lineNumber; }
    NSInteger columnNumber() const { return _columnNumber; }
    /// Moves line and column to where the parser stands; they stay where it does not run.
    void updateLineAndColumnNumbers();

private:
    explicit QVThemeParser(NSString string);
    void skipWhitespace();
    bool parseComment();
    bool parseDeclaration();
    bool parseProperty();
    void fail(std::u16string_view format);
    template <typename Call> void tell(Call call);

    NSString _string;
    std::weak_ptr<QVThemeParserDelegate> _delegate;
    std::shared_ptr<NSError> _parserError;
    /// There while parsing.
    std::unique_ptr<NSScanner> _scanner;
    /// Where each line begins.
    std::vector<NSUInteger> _lineStarts;
    NSInteger _lineNumber = 0;
    NSInteger _columnNumber = 0;
    bool _cancelled = false;
};

} // namespace quorvane
