#pragma once

#include "Platform/Foundation/NSObject.h"

#include <vector>

namespace quorvane {

/// A node of the small tree that all package files are read into: an element or a run of text, with the place
/// in the file where the parser stood when it was made, so that every later message can point there.
class QV_EXPORT QVXMLNode : public NSObject {
public:
    /// 1-based; 0 for nodes that no file made.
    NSUInteger lineNumber() const { return _lineNumber; }
    void setLineNumber(NSUInteger lineNumber) { _lineNumber = lineNumber; }
    NSUInteger columnNumber() const { return _columnNumber; }
    void setColumnNumber(NSUInteger columnNumber) { _columnNumber = columnNumber; }

    /// Empty on all nodes but elements.
    virtual const std::vector<std::shared_ptr<QVXMLNode>> &children() const;
    /// Throws `NSRangeException` where there is no such child; always on nodes other than elements.
    virtual std::shared_ptr<QVXMLNode> childAtIndex(NSUInteger index) const;
    /// All character data at and below the node, in order, as it stands.
    virtual NSString stringValue() const;
    /// The same characters as `stringValue()`; a text node answers what it holds.
    virtual NSString text() const;

    std::u16string_view className() const override { return u"QVXMLNode"; }

private:
    NSUInteger _lineNumber = 0;
    NSUInteger _columnNumber = 0;
};

} // namespace quorvane
