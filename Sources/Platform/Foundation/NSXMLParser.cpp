#include "Platform/Foundation/NSXMLParser.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSURL.h"
#include "Platform/Foundation/QVLimits.h"

#include <atomic>
#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>
#include <set>
#include <sys/stat.h>

namespace quorvane {

NSXMLParserDelegate::~NSXMLParserDelegate() = default;

namespace {

std::atomic<std::size_t> parsedDocuments = 0;

std::string_view viewOf(const xmlChar *text) {
    return text ? std::string_view(reinterpret_cast<const char *>(text)) : std::string_view();
}

std::string_view viewOf(const xmlChar *text, int length) {
    return {reinterpret_cast<const char *>(text), static_cast<std::size_t>(std::max(length, 0))};
}

std::shared_ptr<NSError> parserErrorWithCode(NSInteger code, NSString description) {
    return NSError::errorWithDomain(NSXMLParser::errorDomain, code,
                                    {{NSLocalizedDescriptionKey, std::move(description)}});
}

struct ContextDeleter {
    void operator()(xmlParserCtxtPtr context) const {
        // Declarations in the document make the library keep a document of its own for them.
        if (context->myDoc != nullptr)
            xmlFreeDoc(context->myDoc);
        context->myDoc = nullptr;
        xmlFreeParserCtxt(context);
    }
};

void ignoreMessage(void *, const char *, ...) {}

/// Keeps the library quiet on this thread while it lives. What it finds while it converts encodings it does
/// not tell the parser's own handlers, but prints.
class Silence {
public:
    Silence()
        : _generic(xmlGenericError), _genericContext(xmlGenericErrorContext), _structured(xmlStructuredError),
          _structuredContext(xmlStructuredErrorContext) {
        xmlSetGenericErrorFunc(nullptr, ignoreMessage);
        xmlSetStructuredErrorFunc(nullptr, nullptr);
    }
    ~Silence() {
        xmlSetGenericErrorFunc(_genericContext, _generic);
        xmlSetStructuredErrorFunc(_structuredContext, _structured);
    }
    Silence(const Silence &) = delete;
    Silence &operator=(const Silence &) = delete;

private:
    xmlGenericErrorFunc _generic;
    void *_genericContext;
    xmlStructuredErrorFunc _structured;
    void *_structuredContext;
};

} // namespace

/// One run of the parser. The library's callbacks are plain functions and no exception may pass through it:
/// each does its work under `guarded`, and an exception is kept until the library has returned.
struct NSXMLParser::Events {
    NSXMLParser &parser;
    xmlParserCtxtPtr context = nullptr;
    std::exception_ptr exception = nullptr;
    std::shared_ptr<NSError> error = nullptr;
    std::set<NSString> declaredEntities = {};
    std::size_t depth = 0;
    bool isStopped = false;

    static Events &of(void *self) { return *static_cast<Events *>(self); }

    NSXMLParserDelegate *delegate() const { return parser._delegate; }

    /// Ends the events. The library finishes on its own, silently: taking its input away in the middle of a
    /// callback is what it is least prepared for.
    void stop() {
        if (isStopped)
            return;
        isStopped = true;
        parser._lineNumber = xmlSAX2GetLineNumber(context);
        parser._columnNumber = xmlSAX2GetColumnNumber(context);
        context->disableSAX = 1;
        context->wellFormed = 0;
    }

    void failWith(std::shared_ptr<NSError> problem) {
        if (isStopped)
            return;
        error = std::move(problem);
        stop();
    }

    template <typename Work> void guarded(Work work) noexcept {
        if (isStopped)
            return;
        try {
            work();
        } catch (...) {
            exception = std::current_exception();
            stop();
        }
    }

    static void startDocument(void *self) {
        of(self).guarded([&] {
            if (auto *delegate = of(self).delegate())
                delegate->parserDidStartDocument(of(self).parser);
        });
    }

    static void endDocument(void *self) {
        Events &events = of(self);
        // The library ends the document after errors as well.
        if (events.context->wellFormed == 0)
            return;
        events.guarded([&] {
            if (auto *delegate = events.delegate())
                delegate->parserDidEndDocument(events.parser);
        });
    }

    static void startElement(void *self, const xmlChar *name, const xmlChar **attributes) {
        Events &events = of(self);
        events.guarded([&] {
            if (++events.depth > limits::xmlNestingDepth) {
                events.failWith(parserErrorWithCode(
                    NestingTooDeepError, NSString::stringWithFormat(u"Elements nest deeper than %lu levels.",
                                                                    limits::xmlNestingDepth)));
                return;
            }
            if (!events.delegate())
                return;
            std::map<NSString, NSString> values;
            for (; attributes != nullptr && attributes[0] != nullptr; attributes += 2)
                values.insert_or_assign(NSString::stringWithUTF8String(viewOf(attributes[0])),
                                        NSString::stringWithUTF8String(viewOf(attributes[1])));
            events.delegate()->parserDidStartElement(events.parser,
                                                     NSString::stringWithUTF8String(viewOf(name)), values);
        });
    }

    static void endElement(void *self, const xmlChar *name) {
        Events &events = of(self);
        events.guarded([&] {
            --events.depth;
            if (auto *delegate = events.delegate())
                delegate->parserDidEndElement(events.parser, NSString::stringWithUTF8String(viewOf(name)));
        });
    }

    static void characters(void *self, const xmlChar *text, int length) {
        Events &events = of(self);
        events.guarded([&] {
            if (auto *delegate = events.delegate())
                delegate->parserFoundCharacters(events.parser,
                                                NSString::stringWithUTF8String(viewOf(text, length)));
        });
    }

    static void cdataBlock(void *self, const xmlChar *text, int length) {
        Events &events = of(self);
        events.guarded([&] {
            if (auto *delegate = events.delegate())
                delegate->parserFoundCDATA(events.parser, NSData(viewOf(text, length)));
        });
    }

    void refuseEntity(const xmlChar *name) {
        failWith(parserErrorWithCode(
            EntityNotAllowedError,
            NSString::stringWithFormat(u"The entity “%@” is not expanded; only the five standard ones are.",
                                       NSString::stringWithUTF8String(viewOf(name)))));
    }

    static void entityDecl(void *self, const xmlChar *name, int, const xmlChar *, const xmlChar *,
                           xmlChar *) {
        Events &events = of(self);
        events.guarded([&] { events.declaredEntities.insert(NSString::stringWithUTF8String(viewOf(name))); });
    }

    static void unparsedEntityDecl(void *self, const xmlChar *name, const xmlChar *, const xmlChar *,
                                   const xmlChar *) {
        entityDecl(self, name, 0, nullptr, nullptr, nullptr);
    }

    static xmlEntityPtr getEntity(void *self, const xmlChar *name) {
        if (xmlEntityPtr standard = xmlGetPredefinedEntity(name))
            return standard;
        Events &events = of(self);
        events.guarded([&] {
            // The library asks for an entity while it reads the declaration, too.
            if (events.context->instate != XML_PARSER_CONTENT &&
                events.context->instate != XML_PARSER_ATTRIBUTE_VALUE)
                return;
            // One that an outside file may declare is not undefined: it is only out of reach.
            if (events.context->hasExternalSubset != 0 || events.context->hasPErefs != 0 ||
                events.declaredEntities.contains(NSString::stringWithUTF8String(viewOf(name))))
                events.refuseEntity(name);
        });
        return nullptr;
    }

    static void reference(void *self, const xmlChar *name) {
        Events &events = of(self);
        events.guarded([&] { events.refuseEntity(name); });
    }

    static void internalSubset(void *self, const xmlChar *, const xmlChar *externalID,
                               const xmlChar *systemID) {
        if (externalID != nullptr || systemID != nullptr)
            of(self).context->hasExternalSubset = 1;
    }

    /// Stands in for the library's own, which would print the message.
    static void errorOccurred(void *self, const char *, ...) {
        Events &events = of(self);
        events.guarded([&] {
            const xmlError &problem = events.context->lastError;
            // The library says of everything less that the document can be read all the same.
            if (problem.level != XML_ERR_FATAL)
                return;
            std::string_view message = problem.message ? problem.message : "";
            while (message.ends_with('\n'))
                message.remove_suffix(1);
            // It doesn't keep the lines of open elements for events of this kind, yet prints them.
            events.failWith(parserErrorWithCode(
                problem.code, NSString::stringWithUTF8String(message).stringByReplacingOccurrencesOfString(
                                  u" line 0 ", u" ")));
        });
    }

    static xmlSAXHandler handler() {
        xmlSAXHandler handler{};
        // Without the mark of version 2 names come whole, with their prefixes. Then errors come as texts, and
        // the library's last error has their codes.
        handler.initialized = 1;
        handler.startDocument = startDocument;
        handler.endDocument = endDocument;
        handler.startElement = startElement;
        handler.endElement = endElement;
        // The same function for both, so that blanks between elements are not told apart.
        handler.characters = characters;
        handler.ignorableWhitespace = characters;
        handler.cdataBlock = cdataBlock;
        handler.internalSubset = internalSubset;
        handler.entityDecl = entityDecl;
        handler.unparsedEntityDecl = unparsedEntityDecl;
        handler.getEntity = getEntity;
        handler.reference = reference;
        handler.warning = ignoreMessage;
        handler.error = errorOccurred;
        handler.fatalError = errorOccurred;
        return handler;
    }

    std::shared_ptr<NSError> run(const NSData &data) {
        static const bool isReady = (xmlInitParser(), true);
        static_cast<void>(isReady);
        const Silence silence;
        if (data.length() > limits::xmlDocumentBytes)
            return parserErrorWithCode(DocumentTooLargeError,
                                       NSString::stringWithFormat(u"The document is larger than %lu bytes.",
                                                                  limits::xmlDocumentBytes));
        if (data.length() == 0) {
            parser._lineNumber = parser._columnNumber = 1;
            return parserErrorWithCode(XML_ERR_DOCUMENT_EMPTY, u"Document is empty");
        }
        const std::unique_ptr<xmlParserCtxt, ContextDeleter> owner(
            xmlCreateMemoryParserCtxt(data.view().data(), static_cast<int>(data.length())));
        if (!owner)
            return parserErrorWithCode(XML_ERR_NO_MEMORY, u"The parser could not be made.");
        context = owner.get();
        *context->sax = handler();
        context->userData = this;
        // Entities are handled by name above, so that the options that load or replace anything stay off.
        xmlCtxtUseOptions(context, XML_PARSE_NONET);
        // Only the standard ones get here. Without this an ampersand in an attribute would stay a reference.
        context->replaceEntities = 1;
        parser._context = context;
        xmlParseDocument(context);
        if (!isStopped) {
            parser._lineNumber = xmlSAX2GetLineNumber(context);
            parser._columnNumber = xmlSAX2GetColumnNumber(context);
            if (context->wellFormed == 0)
                error = parserErrorWithCode(context->errNo, u"The document is not well-formed.");
        }
        parser._context = nullptr;
        return error;
    }
};

NSXMLParser::NSXMLParser(NSData data) : _data(std::move(data)) {}

NSXMLParser::NSXMLParser(const NSURL &url) : _path(url.path()) {}

NSXMLParser::~NSXMLParser() = default;

std::size_t NSXMLParser::parsedDocumentCount() { return parsedDocuments.load(std::memory_order_relaxed); }

bool NSXMLParser::parse() {
    parsedDocuments.fetch_add(1, std::memory_order_relaxed);
    _error = nullptr;
    _lineNumber = _columnNumber = 0;
    NSData data = _data;
    if (_path) {
        // Asked first, so that a huge file is not read only to be refused.
        struct stat status {};
        if (stat(_path.UTF8String().c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
            static_cast<std::uint64_t>(status.st_size) > limits::xmlDocumentBytes)
            _error = parserErrorWithCode(DocumentTooLargeError,
                                         NSString::stringWithFormat(u"The document is larger than %lu bytes.",
                                                                    limits::xmlDocumentBytes));
        else
            data = NSData::dataWithContentsOfURL(NSURL::fileURLWithPath(_path), &_error);
    }
    Events events{*this};
    if (!_error)
        _error = events.run(data);
    if (events.exception)
        std::rethrow_exception(events.exception);
    if (_error && _delegate)
        _delegate->parserParseErrorOccurred(*this, _error);
    return _error == nullptr;
}

NSInteger NSXMLParser::lineNumber() const {
    return _context && _lineNumber == 0 ? xmlSAX2GetLineNumber(_context) : _lineNumber;
}

NSInteger NSXMLParser::columnNumber() const {
    return _context && _lineNumber == 0 ? xmlSAX2GetColumnNumber(_context) : _columnNumber;
}

} // namespace quorvane
