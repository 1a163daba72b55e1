#include "Quorvane/XML/QVXMLNode.h"

#include "Platform/Foundation/NSException.h"

namespace quorvane {

const std::vector<std::shared_ptr<QVXMLNode>> &QVXMLNode::children() const {
    // Never destroyed: packages may be read while the process ends.
    static const auto *const none = new std::vector<std::shared_ptr<QVXMLNode>>;
    return *none;
}

std::shared_ptr<QVXMLNode> QVXMLNode::childAtIndex(NSUInteger) const {
    throw NSException(NSRangeException, u"Node does not contain any children");
}

NSString QVXMLNode::stringValue() const {
    std::u16string value;
    for (const auto &child : children())
        value += child->stringValue();
    return value;
}

NSString QVXMLNode::text() const {
    std::u16string value;
    for (const auto &child : children())
        value += child->text();
    return value;
}

} // namespace quorvane
