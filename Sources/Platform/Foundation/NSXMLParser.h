#pragma once

#include "Platform/Foundation/NSData.h"
#include "Platform/Foundation/NSString.h"

#include <map>

namespace quorvane {

class NSURL;
class NSXMLParser;

/// Gets the events of an `NSXMLParser`, on the thread that parses. Every operation may be left out.
class QV_EXPORT NSXMLParserDelegate {
public:
    virtual ~NSXMLParserDelegate();
    virtual void parserDidStartDocument(NSXMLParser &) {}
    virtual void parserDidEndDocument(NSXMLParser &) {}
    virtual void parserDidStartElement(NSXMLParser &, const NSString & /*elementName*/,
                                       const std::map<NSString, NSString> & /*attributes*/) {}
    virtual void parserDidEndElement(NSXMLParser &, const NSString & /*elementName*/) {}
    virtual void parserFoundCharacters(NSXMLParser &, const NSString & /*characters*/) {}
    virtual void parserFoundCDATA(NSXMLParser &, const NSData & /*block*/) {}
    virtual void parserParseErrorOccurred(NSXMLParser &, const std::shared_ptr<NSError> & /*error*/) {}
};

/// Reads XML as a stream of events. Names keep their prefixes. Nothing is fetched and no entity but the five
/// standard ones is expanded; nesting and size are limited (see `QVLimits.h`), so that no file can exhaust
/// stack or memory.
/// The first error ends the events; an exception that a delegate throws does so too and leaves `parse()`.
class QV_EXPORT NSXMLParser {
public:
    static constexpr const char16_t *errorDomain = u"NSXMLParserErrorDomain";
    /// Codes of our own, beside those of the XML library. The entity error is for references to entities
    /// that the document declares or leaves to an outside file; others are the library's "not defined".
    enum : NSInteger {
        NestingTooDeepError = 10001,
        DocumentTooLargeError = 10002,
        EntityNotAllowedError = 10003
    };

    explicit NSXMLParser(NSData data);
    /// Reads the file when parsing starts; a file that can't be read is the parser's error.
    explicit NSXMLParser(const NSURL &url);
    ~NSXMLParser();
    NSXMLParser(const NSXMLParser &) = delete;
    NSXMLParser &operator=(const NSXMLParser &) = delete;

    /// Not owned; must outlive `parse()`.
    void setDelegate(NSXMLParserDelegate *delegate) { _delegate = delegate; }
    /// Parses to the end or to the first error; whether there was none.
    bool parse();
    /// How often any parser began a document since the process started. Who keeps what was read can be held
    /// to it with this.
    static std::size_t parsedDocumentCount();
    std::shared_ptr<NSError> parserError() const { return _error; }
    /// Where the parser stands: 1-based, as the library reports them with an event. After the end or an error
    /// the place of that; 0 where nothing was parsed.
    NSInteger lineNumber() const;
    NSInteger columnNumber() const;

private:
    struct Events;
    friend struct Events;
    NSData _data;
    NSString _path;
    NSXMLParserDelegate *_delegate = nullptr;
    std::shared_ptr<NSError> _error;
    /// The library's state while it parses, and where it stood when the events ended.
    void *_context = nullptr;
    NSInteger _lineNumber = 0;
    NSInteger _columnNumber = 0;
};

} // namespace quorvane
