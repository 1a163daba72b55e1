#include "Quorvane/Formatters/QVFormatter.h"

#include "Platform/Foundation/NSLog.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/XML/QVXMLAttributes.h"

namespace quorvane {

namespace {

std::shared_ptr<QVFormatterComponent> componentWithXMLElement(const QVXMLElement &element) {
    auto component = std::make_shared<QVFormatterComponent>();
    if (NSString value = element.valueForAttribute(u"value")) {
        component->setValue(std::move(value));
    } else if (NSString variable = element.valueForAttribute(u"variable")) {
        component->setType(QVFormatterComponentTypeVariable);
        component->setVariable(std::move(variable));
    } else if (const NSString selector = element.valueForAttribute(u"selector")) {
        component->setType(QVFormatterComponentTypeSelector);
        component->setSelector(QVSimpleSelector::simpleSelectorWithString(selector));
    }

    component->setPrependExpression(element.valueForAttribute(u"prepend"));
    component->setAppendExpression(element.valueForAttribute(u"append"));
    component->setReplaceWithExpression(element.valueForAttribute(u"replace-with"));
    if (const NSString pattern = QVNonEmptyAttribute(element, u"replace")) {
        component->setReplaceExpression(QVRegularExpression::regularExpressionWithPattern(
            pattern, QVRegularExpressionMultiline | QVRegularExpressionUseJIT));
        if (!component->replaceExpression())
            NSLog(u"Invalid regular expression for formatter component: %@", pattern);
    }
    return component;
}

} // namespace

std::shared_ptr<QVFormatterComponent> QVFormatterComponent::copy() const {
    return std::make_shared<QVFormatterComponent>(*this);
}

const NSCodingClass &QVFormatterComponent::codingClass() {
    static const NSCodingClass coding{
        u"QVFormatterComponent", nullptr,
        []() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<QVFormatterComponent>(); }};
    return coding;
}

void QVFormatterComponent::encodeWithCoder(NSCoder &coder) const {
    coder.encodeInteger(static_cast<NSInteger>(_type), u"type");
    coder.encodeString(_value, u"value");
    coder.encodeString(_variable, u"variable");
    coder.encodeObject(_selector, u"selector");
    coder.encodeString(_prependExpression, u"prependExpression");
    coder.encodeString(_appendExpression, u"appendExpression");
    coder.encodeObject(_replaceExpression, u"replaceExpression");
    coder.encodeString(_replaceWithExpression, u"replaceWithExpression");
}

std::shared_ptr<NSSecureCoding> QVFormatterComponent::initWithCoder(NSCoder &coder,
                                                                    std::shared_ptr<NSSecureCoding> self) {
    _type = static_cast<NSUInteger>(coder.decodeInteger(u"type"));
    _value = coder.decodeString(u"value");
    _variable = coder.decodeString(u"variable");
    _selector = coder.decodeObjectOfClass<QVSimpleSelector>(u"selector");
    _prependExpression = coder.decodeString(u"prependExpression");
    _appendExpression = coder.decodeString(u"appendExpression");
    _replaceExpression = coder.decodeObjectOfClass<QVRegularExpression>(u"replaceExpression");
    _replaceWithExpression = coder.decodeString(u"replaceWithExpression");
    return self;
}

std::shared_ptr<QVFormatter> QVFormatter::formatterWithXMLElement(const QVXMLElement &element) {
    auto formatter = std::make_shared<QVFormatter>();
    for (const auto &child : element.elementsForName(u"component"))
        formatter->_components.push_back(componentWithXMLElement(*child));
    return formatter;
}

std::shared_ptr<QVFormatter> QVFormatter::copy() const {
    auto copy = std::make_shared<QVFormatter>(*this);
    for (auto &component : copy->_components)
        component = component->copy();
    return copy;
}

const NSCodingClass &QVFormatter::codingClass() {
    static const NSCodingClass coding{u"QVFormatter", nullptr, []() -> std::shared_ptr<NSSecureCoding> {
                                          return std::make_shared<QVFormatter>();
                                      }};
    return coding;
}

void QVFormatter::encodeWithCoder(NSCoder &coder) const { coder.encodeArray(_components, u"components"); }

std::shared_ptr<NSSecureCoding> QVFormatter::initWithCoder(NSCoder &coder,
                                                           std::shared_ptr<NSSecureCoding> self) {
    if (auto components = coder.decodeArrayOfClass<QVFormatterComponent>(u"components"))
        _components = std::move(*components);
    return self;
}

} // namespace quorvane
