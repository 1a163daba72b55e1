#pragma once

#include "Quorvane/XML/QVXMLNode.h"

#include <map>
#include <span>

namespace quorvane {

class QVXMLTextNode;

/// An XML element: a name, attributes and children in document order. Prefixes stay part of names.
class QV_EXPORT QVXMLElement final : public QVXMLNode {
public:
    /// Without a name.
    QVXMLElement() = default;

    const NSString &name() const { return _name; }
    void setName(NSString name) { _name = std::move(name); }

    const std::map<NSString, NSString> &attributes() const { return _attributes; }
    void setAttributes(std::map<NSString, NSString> attributes) { _attributes = std::move(attributes); }
    /// The attribute's text, null where it is missing.
    NSString valueForAttribute(const NSString &attribute) const;
    /// A null value removes the attribute.
    void setValue(NSString value, const NSString &forAttribute);
    void removeValueForAttribute(const NSString &attribute);

    const std::vector<std::shared_ptr<QVXMLNode>> &children() const override { return _children; }
    std::shared_ptr<QVXMLNode> childAtIndex(NSUInteger index) const override;
    void setChildren(std::vector<std::shared_ptr<QVXMLNode>> children) { _children = std::move(children); }
    void addChild(std::shared_ptr<QVXMLNode> child);
    /// An index up to the count; `NSRangeException` beyond it.
    void insertChild(std::shared_ptr<QVXMLNode> child, NSUInteger atIndex);
    void removeChildAtIndex(NSUInteger index);

    /// The direct children that are elements of exactly this name, in document order.
    std::vector<std::shared_ptr<QVXMLElement>> elementsForName(std::u16string_view name) const;
    /// The same for any of several names; the order stays the document's.
    std::vector<std::shared_ptr<QVXMLElement>>
    elementsForNames(std::span<const std::u16string_view> names) const;
    std::vector<std::shared_ptr<QVXMLElement>>
    elementsForNames(std::initializer_list<std::u16string_view> names) const {
        return elementsForNames(std::span(names.begin(), names.size()));
    }
    /// The last direct child of this name, which is the one that counts where a file may give one; null
    /// without any.
    std::shared_ptr<QVXMLElement> lastElementForName(std::u16string_view name) const;
    /// The direct children that are text, in order.
    std::vector<std::shared_ptr<QVXMLTextNode>> textNodes() const;

    std::u16string_view className() const override { return u"QVXMLElement"; }
    /// "<%@: %p, %@>" with class, address and name.
    NSString description() const override;

private:
    void requireIndexBelow(NSUInteger index, NSUInteger bound) const;

    NSString _name;
    std::map<NSString, NSString> _attributes;
    std::vector<std::shared_ptr<QVXMLNode>> _children;
};

} // namespace quorvane
