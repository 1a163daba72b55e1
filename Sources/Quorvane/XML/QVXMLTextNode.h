#pragma once

#include "Quorvane/XML/QVXMLNode.h"

namespace quorvane {

/// A run of character data, as the parser reported it.
class QV_EXPORT QVXMLTextNode final : public QVXMLNode {
public:
    QVXMLTextNode() = default;
    explicit QVXMLTextNode(NSString text) : _text(std::move(text)) {}

    NSString stringValue() const override { return _text; }
    NSString text() const override { return _text; }
    void setText(NSString text) { _text = std::move(text); }

    std::u16string_view className() const override { return u"QVXMLTextNode"; }

private:
    NSString _text;
};

} // namespace quorvane
