#include "Quorvane/XML/QVXMLElement.h"

#include "Platform/Foundation/NSException.h"
#include "Quorvane/XML/QVXMLTextNode.h"

namespace quorvane {

namespace {

/// The children of one type that pass a test, in order.
template <typename Node>
std::vector<std::shared_ptr<Node>> nodesWhere(const std::vector<std::shared_ptr<QVXMLNode>> &children,
                                              auto passes) {
    std::vector<std::shared_ptr<Node>> nodes;
    for (const auto &child : children)
        if (auto node = std::dynamic_pointer_cast<Node>(child); node && passes(*node))
            nodes.push_back(std::move(node));
    return nodes;
}

/// A nameless element has no name to look for, not an empty one.
bool isNamed(const QVXMLElement &element, std::u16string_view name) {
    return element.name() && element.name().view() == name;
}

} // namespace

NSString QVXMLElement::valueForAttribute(const NSString &attribute) const {
    const auto found = _attributes.find(attribute);
    return found != _attributes.end() ? found->second : NSString();
}

void QVXMLElement::setValue(NSString value, const NSString &forAttribute) {
    if (value)
        _attributes.insert_or_assign(forAttribute, std::move(value));
    else
        _attributes.erase(forAttribute);
}

void QVXMLElement::removeValueForAttribute(const NSString &attribute) { _attributes.erase(attribute); }

void QVXMLElement::requireIndexBelow(NSUInteger index, NSUInteger bound) const {
    if (index < bound)
        return;
    throw NSException(
        NSRangeException,
        bound == 0 ? NSString::stringWithFormat(u"index %lu beyond bounds for empty array", index)
                   : NSString::stringWithFormat(u"index %lu beyond bounds [0 .. %lu]", index, bound - 1));
}

std::shared_ptr<QVXMLNode> QVXMLElement::childAtIndex(NSUInteger index) const {
    requireIndexBelow(index, _children.size());
    return _children[index];
}

void QVXMLElement::addChild(std::shared_ptr<QVXMLNode> child) { _children.push_back(std::move(child)); }

void QVXMLElement::insertChild(std::shared_ptr<QVXMLNode> child, NSUInteger atIndex) {
    requireIndexBelow(atIndex, _children.size() + 1);
    _children.insert(_children.begin() + static_cast<std::ptrdiff_t>(atIndex), std::move(child));
}

void QVXMLElement::removeChildAtIndex(NSUInteger index) {
    requireIndexBelow(index, _children.size());
    _children.erase(_children.begin() + static_cast<std::ptrdiff_t>(index));
}

std::vector<std::shared_ptr<QVXMLElement>> QVXMLElement::elementsForName(std::u16string_view name) const {
    return nodesWhere<QVXMLElement>(_children,
                                    [&](const QVXMLElement &element) { return isNamed(element, name); });
}

std::vector<std::shared_ptr<QVXMLElement>>
QVXMLElement::elementsForNames(std::span<const std::u16string_view> names) const {
    return nodesWhere<QVXMLElement>(_children, [&](const QVXMLElement &element) {
        return std::any_of(names.begin(), names.end(),
                           [&](std::u16string_view name) { return isNamed(element, name); });
    });
}

std::shared_ptr<QVXMLElement> QVXMLElement::lastElementForName(std::u16string_view name) const {
    for (auto child = _children.rbegin(); child != _children.rend(); ++child)
        if (auto element = std::dynamic_pointer_cast<QVXMLElement>(*child);
            element && isNamed(*element, name))
            return element;
    return nullptr;
}

std::vector<std::shared_ptr<QVXMLTextNode>> QVXMLElement::textNodes() const {
    return nodesWhere<QVXMLTextNode>(_children, [](const QVXMLTextNode &) { return true; });
}

NSString QVXMLElement::description() const {
    return NSString::stringWithFormat(u"<%@: %p, %@>", className(), static_cast<const void *>(this), _name);
}

} // namespace quorvane
