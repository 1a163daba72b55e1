#pragma once

#include "Platform/Foundation/NSXMLParser.h"
#include "Quorvane/XML/QVXMLElement.h"

namespace quorvane {

inline constexpr const char16_t *QVXMLDocumentErrorDomain = u"QVXMLDocumentErrorDomain";

/// Builds the tree of a package file from the parser's events, and holds it. Reads synchronously on the
/// caller's thread; no partial tree is ever answered.
class QV_EXPORT QVXMLDocument final : public NSObject, public NSXMLParserDelegate {
public:
    /// Null, with an error in `QVXMLDocumentErrorDomain` (the parser's code and user info with "line" and
    /// "column"), when the file is no XML. A null URL is a programming error.
    static std::shared_ptr<QVXMLDocument> initWithContentsOfURL(const NSURL &url,
                                                                std::shared_ptr<NSError> *error = nullptr);
    /// The same for bytes at hand.
    static std::shared_ptr<QVXMLDocument> initWithData(const NSData &data,
                                                       std::shared_ptr<NSError> *error = nullptr);
    /// Wraps a tree that is already there.
    static std::shared_ptr<QVXMLDocument> initWithRootElement(std::shared_ptr<QVXMLElement> rootElement);

    /// A nameless element whose children are the file's top-level element and what stands around it.
    const std::shared_ptr<QVXMLElement> &rootElement() const { return _rootElement; }
    void setRootElement(std::shared_ptr<QVXMLElement> rootElement) { _rootElement = std::move(rootElement); }

    // The parser's events, for the parser alone to call.
    void parserDidStartElement(NSXMLParser &parser, const NSString &elementName,
                               const std::map<NSString, NSString> &attributes) override;
    /// Logs "Unexpected end of element: %@" and changes nothing when another element is open.
    void parserDidEndElement(NSXMLParser &parser, const NSString &elementName) override;
    void parserFoundCharacters(NSXMLParser &parser, const NSString &characters) override;
    void parserFoundCDATA(NSXMLParser &parser, const NSData &block) override;
    void parserDidStartDocument(NSXMLParser &) override {}
    void parserDidEndDocument(NSXMLParser &) override {}
    void parserParseErrorOccurred(NSXMLParser &, const std::shared_ptr<NSError> &) override {}

    std::u16string_view className() const override { return u"QVXMLDocument"; }

private:
    QVXMLDocument();
    static std::shared_ptr<QVXMLDocument> initWithParser(NSXMLParser &parser,
                                                         std::shared_ptr<NSError> *error);

    std::shared_ptr<QVXMLElement> _rootElement;
    /// The open elements, the root element at the bottom; only while parsing.
    std::vector<std::shared_ptr<QVXMLElement>> _elements;
};

} // namespace quorvane
