#pragma once

#include "Quorvane/XML/QVXMLElement.h"

namespace quorvane {

class NSData;
class NSError;
class NSURL;

inline constexpr const char16_t *QVXMLDocumentErrorDomain = u"QVXMLDocumentErrorDomain";

/// Builds the tree of a package file from the parser's events, and holds it. Reads synchronously on the
/// caller's thread; no partial tree is ever answered.
class QV_EXPORT QVXMLDocument final : public NSObject {
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

    std::u16string_view className() const override { return u"QVXMLDocument"; }

private:
    std::shared_ptr<QVXMLElement> _rootElement;
};

} // namespace quorvane
