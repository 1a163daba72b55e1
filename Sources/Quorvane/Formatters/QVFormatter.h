#pragma once

#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

class QVRegularExpression;
class QVSimpleSelector;
class QVXMLElement;

enum QVFormatterComponentType : std::uint64_t {
    QVFormatterComponentTypeLiteral = 0,
    QVFormatterComponentTypeVariable = 1,
    QVFormatterComponentTypeSelector = 2,
};

/// One piece of a formatter: a fixed text, a variable, or text picked out of a symbol's matches, which can be
/// rewritten and wrapped in fixed text. Immutable once read; any thread.
class QV_EXPORT QVFormatterComponent final : public NSObject, public NSSecureCoding {
public:
    NSUInteger type() const { return _type; }
    void setType(NSUInteger type) { _type = type; }
    /// The text of a literal; null leaves the piece out.
    const NSString &value() const { return _value; }
    void setValue(NSString value) { _value = std::move(value); }
    /// Only "name" is known.
    const NSString &variable() const { return _variable; }
    void setVariable(NSString variable) { _variable = std::move(variable); }
    const std::shared_ptr<const QVSimpleSelector> &selector() const { return _selector; }
    void setSelector(std::shared_ptr<const QVSimpleSelector> selector) { _selector = std::move(selector); }

    /// Plain text put before and behind the piece; no pattern, in spite of the name.
    const NSString &prependExpression() const { return _prependExpression; }
    void setPrependExpression(NSString expression) { _prependExpression = std::move(expression); }
    const NSString &appendExpression() const { return _appendExpression; }
    void setAppendExpression(NSString expression) { _appendExpression = std::move(expression); }

    /// What is rewritten in the piece, and the template it is rewritten with. One without the other does
    /// nothing.
    const std::shared_ptr<QVRegularExpression> &replaceExpression() const { return _replaceExpression; }
    void setReplaceExpression(std::shared_ptr<QVRegularExpression> expression) {
        _replaceExpression = std::move(expression);
    }
    const NSString &replaceWithExpression() const { return _replaceWithExpression; }
    void setReplaceWithExpression(NSString expression) { _replaceWithExpression = std::move(expression); }

    /// A component with equal values.
    std::shared_ptr<QVFormatterComponent> copy() const;

    std::u16string_view className() const override { return u"QVFormatterComponent"; }
    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    NSUInteger _type = QVFormatterComponentTypeLiteral;
    NSString _value;
    NSString _variable;
    std::shared_ptr<const QVSimpleSelector> _selector;
    NSString _prependExpression;
    NSString _appendExpression;
    std::shared_ptr<QVRegularExpression> _replaceExpression;
    NSString _replaceWithExpression;
};

/// Turns a symbol into a name for display: a small template that a syntax file declares. This is what the
/// template says; symbols are put into it where they are made.
class QV_EXPORT QVFormatter final : public NSObject, public NSSecureCoding {
public:
    /// Reads the "component" children. Never fails: a component that can't be used as told is logged and does
    /// what is left of it.
    static std::shared_ptr<QVFormatter> formatterWithXMLElement(const QVXMLElement &element);

    const std::vector<std::shared_ptr<QVFormatterComponent>> &components() const { return _components; }
    void setComponents(std::vector<std::shared_ptr<QVFormatterComponent>> components) {
        _components = std::move(components);
    }

    /// The components are copied too.
    std::shared_ptr<QVFormatter> copy() const;

    std::u16string_view className() const override { return u"QVFormatter"; }
    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    std::vector<std::shared_ptr<QVFormatterComponent>> _components;
};

} // namespace quorvane
