#include "Quorvane/Styles/QVStyle.h"

#include "Platform/Foundation/NSAssertionHandler.h"

#include <cmath>

namespace quorvane {

std::shared_ptr<QVStyle>
QVStyle::styleByResolvingStyles(const std::vector<std::shared_ptr<QVStyle>> &styles) {
    auto resolved = std::make_shared<QVStyle>();
    for (const auto &style : styles) {
        if (!style)
            continue;
        for (const auto &[key, value] : style->_attributes)
            resolved->_attributes.insert_or_assign(key, value);
    }
    return resolved;
}

NSComparisonResult QVStyle::compare(const QVStyle &other) const {
    if (_selector)
        return _selector->compare(other._selector.get());
    return other._selector && other._selector->specificity() > 0 ? NSOrderedAscending : NSOrderedSame;
}

const QVStyleValue *QVStyle::valueForAttribute(const NSString &key) const {
    QVParameterAssert(key, "key != nil");
    if (!key)
        return nullptr;
    const auto found = _attributes.find(key);
    return found == _attributes.end() ? nullptr : &found->second;
}

void QVStyle::setValue(std::optional<QVStyleValue> value, const NSString &forAttribute) {
    QVParameterAssert(forAttribute, "key != nil");
    if (!forAttribute)
        return;
    if (value)
        _attributes.insert_or_assign(forAttribute, *std::move(value));
    else
        _attributes.erase(forAttribute);
}

const QVStyleValue *QVStyle::numberForAttribute(const NSString &key) const { return valueForAttribute(key); }

void QVStyle::setNumber(std::optional<NSInteger> number, const NSString &forAttribute) {
    setValue(number ? std::optional<QVStyleValue>(*number) : std::nullopt, forAttribute);
}

bool QVStyle::isNullForAttribute(const NSString &key) const {
    const QVStyleValue *value = valueForAttribute(key);
    return value != nullptr && std::holds_alternative<QVStyleNull>(*value);
}

void QVStyle::setNull(bool null, const NSString &forAttribute) {
    setValue(null ? std::optional<QVStyleValue>(QVStyleNull()) : std::nullopt, forAttribute);
}

std::optional<NSInteger> QVStyle::integerForAttribute(const NSString &key) const {
    const QVStyleValue *value = valueForAttribute(key);
    if (value == nullptr)
        return std::nullopt;
    if (const auto *number = std::get_if<NSInteger>(value))
        return *number;
    // Only an archive brings these.
    if (const auto *real = std::get_if<double>(value); real && std::abs(*real) < 1e15)
        return static_cast<NSInteger>(*real);
    return std::nullopt;
}

std::shared_ptr<QVStyle> QVStyle::copy() const {
    auto style = std::make_shared<QVStyle>();
    style->_selector = _selector;
    style->_properties = _properties;
    style->_attributes = _attributes;
    return style;
}

NSString QVStyle::description() const {
    return NSString::stringWithFormat(u"<%@: %p : selector=%@>", className(), static_cast<const void *>(this),
                                      _selector);
}

} // namespace quorvane
