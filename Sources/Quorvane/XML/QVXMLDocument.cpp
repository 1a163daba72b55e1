#include "Quorvane/XML/QVXMLDocument.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/NSURL.h"
#include "Quorvane/XML/QVXMLTextNode.h"

namespace quorvane {

QVXMLDocument::QVXMLDocument() : _rootElement(std::make_shared<QVXMLElement>()) {}

std::shared_ptr<QVXMLDocument> QVXMLDocument::initWithContentsOfURL(const NSURL &url,
                                                                    std::shared_ptr<NSError> *error) {
    QVParameterAssert(!url.isNull(), "url != nil");
    NSXMLParser parser(url);
    return initWithParser(parser, error);
}

std::shared_ptr<QVXMLDocument> QVXMLDocument::initWithData(const NSData &data,
                                                           std::shared_ptr<NSError> *error) {
    NSXMLParser parser(data);
    return initWithParser(parser, error);
}

std::shared_ptr<QVXMLDocument> QVXMLDocument::initWithRootElement(std::shared_ptr<QVXMLElement> rootElement) {
    std::shared_ptr<QVXMLDocument> document(new QVXMLDocument);
    document->_rootElement = std::move(rootElement);
    return document;
}

std::shared_ptr<QVXMLDocument> QVXMLDocument::initWithParser(NSXMLParser &parser,
                                                             std::shared_ptr<NSError> *error) {
    std::shared_ptr<QVXMLDocument> document(new QVXMLDocument);
    document->_elements.push_back(document->_rootElement);
    parser.setDelegate(document.get());
    parser.parse();
    if (const auto parserError = parser.parserError()) {
        NSErrorUserInfo userInfo = parserError->userInfo();
        userInfo.insert_or_assign(u"line", parser.lineNumber());
        userInfo.insert_or_assign(u"column", parser.columnNumber());
        QVSetError(error, NSError::errorWithDomain(QVXMLDocumentErrorDomain, parserError->code(),
                                                   std::move(userInfo)));
        return nullptr;
    }
    document->_elements = {};
    return document;
}

void QVXMLDocument::parserDidStartElement(NSXMLParser &parser, const NSString &elementName,
                                          const std::map<NSString, NSString> &attributes) {
    auto element = std::make_shared<QVXMLElement>();
    element->setName(elementName);
    element->setAttributes(attributes);
    element->setLineNumber(static_cast<NSUInteger>(parser.lineNumber()));
    element->setColumnNumber(static_cast<NSUInteger>(parser.columnNumber()));
    _elements.push_back(std::move(element));
}

void QVXMLDocument::parserDidEndElement(NSXMLParser &, const NSString &elementName) {
    // The nameless root element at the bottom equals no name, so that it is never closed.
    if (_elements.empty() || elementName.isNull() || _elements.back()->name() != elementName) {
        NSLog(u"Unexpected end of element: %@", elementName);
        return;
    }
    // Attached only now, at the end tag: a parent's children stand in the order in which they were closed.
    auto element = std::move(_elements.back());
    _elements.pop_back();
    _elements.back()->addChild(std::move(element));
}

void QVXMLDocument::parserFoundCharacters(NSXMLParser &parser, const NSString &characters) {
    auto node = std::make_shared<QVXMLTextNode>(characters);
    node->setLineNumber(static_cast<NSUInteger>(parser.lineNumber()));
    node->setColumnNumber(static_cast<NSUInteger>(parser.columnNumber()));
    if (!_elements.empty())
        _elements.back()->addChild(std::move(node));
}

void QVXMLDocument::parserFoundCDATA(NSXMLParser &parser, const NSData &block) {
    parserFoundCharacters(parser, NSString::stringWithUTF8String(block.view()));
}

} // namespace quorvane
