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
class QV_EXPORT NSXMLParser {
public:
    static constexpr const char16_t *errorDomain = u"NSXMLParserErrorDomain";
    /// Codes of our own, beside those of the XML library.
    enum : NSInteger {
        NestingTooDeepError = 10001,
        DocumentTooLargeError = 10002,
        EntityNotAllowedError = 10003
    };

    explicit NSXMLParser(NSData data);
    /// Reads the file when parsing starts; a file that can't be read is the parser's error.
    explicit NSXMLParser(const NSURL &url);
    ~NSXMLParser();

    void setDelegate(NSXMLParserDelegate *delegate) { _delegate = delegate; }
    /// Parses to the end or to the first error; whether there was none.
    bool parse();
    std::shared_ptr<NSError> parserError() const { return _error; }
    /// Where the parser stands: 1-based, as the library reports them with an event.
    NSInteger lineNumber() const;
    NSInteger columnNumber() const;

private:
    struct Events;
    friend struct Events;
    NSData _data;
    NSXMLParserDelegate *_delegate = nullptr;
    std::shared_ptr<NSError> _error;
    void *_context = nullptr;
};

} // namespace quorvane
