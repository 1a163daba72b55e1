#include "Quorvane/Styles/QVStyle.h"

#include "Platform/AppKit/NSShadow.h"
#include "Quorvane/Styles/QVGradient.h"

// The attributes that are objects: colours, gradients and shadows.

namespace quorvane {

template <typename T> std::shared_ptr<const T> QVStyle::objectForAttribute(const NSString &key) const {
    const QVStyleValue *value = valueForAttribute(key);
    const auto *object = value ? std::get_if<std::shared_ptr<const NSObject>>(value) : nullptr;
    return object ? std::dynamic_pointer_cast<const T>(*object) : nullptr;
}

std::shared_ptr<const QVColor> QVStyle::colorForAttribute(const NSString &key) const {
    return objectForAttribute<QVColor>(key);
}

void QVStyle::setColor(std::shared_ptr<const QVColor> color, const NSString &forAttribute) {
    setValue(color ? std::optional<QVStyleValue>(std::shared_ptr<const NSObject>(std::move(color)))
                   : std::nullopt,
             forAttribute);
}

std::shared_ptr<const NSShadow> QVStyle::shadowForAttribute(const NSString &key) const {
    return objectForAttribute<NSShadow>(key);
}

void QVStyle::setShadow(std::shared_ptr<const NSShadow> shadow, const NSString &forAttribute) {
    setValue(shadow ? std::optional<QVStyleValue>(std::shared_ptr<const NSObject>(std::move(shadow)))
                    : std::nullopt,
             forAttribute);
}

std::shared_ptr<const QVGradient> QVStyle::gradientForAttribute(const NSString &key) const {
    return objectForAttribute<QVGradient>(key);
}

void QVStyle::setGradient(std::shared_ptr<const QVGradient> gradient, const NSString &forAttribute) {
    setValue(gradient ? std::optional<QVStyleValue>(std::shared_ptr<const NSObject>(std::move(gradient)))
                      : std::nullopt,
             forAttribute);
}

std::shared_ptr<const QVColor> QVStyle::backgroundColor() const {
    return colorForAttribute(QVStyleAttributeBackgroundColor);
}

void QVStyle::setBackgroundColor(std::shared_ptr<const QVColor> backgroundColor) {
    setColor(std::move(backgroundColor), QVStyleAttributeBackgroundColor);
}

std::shared_ptr<const QVGradient> QVStyle::backgroundGradient() const {
    return gradientForAttribute(QVStyleAttributeBackgroundGradient);
}

void QVStyle::setBackgroundGradient(std::shared_ptr<const QVGradient> backgroundGradient) {
    setGradient(std::move(backgroundGradient), QVStyleAttributeBackgroundGradient);
}

std::shared_ptr<const QVColor> QVStyle::textColor() const {
    return colorForAttribute(QVStyleAttributeTextColor);
}

void QVStyle::setTextColor(std::shared_ptr<const QVColor> textColor) {
    setColor(std::move(textColor), QVStyleAttributeTextColor);
}

std::shared_ptr<const NSShadow> QVStyle::textShadow() const {
    return shadowForAttribute(QVStyleAttributeTextShadow);
}

void QVStyle::setTextShadow(std::shared_ptr<const NSShadow> textShadow) {
    setShadow(std::move(textShadow), QVStyleAttributeTextShadow);
}

std::shared_ptr<const QVColor> QVStyle::textDecorationColor() const {
    return colorForAttribute(QVStyleAttributeTextDecorationColor);
}

void QVStyle::setTextDecorationColor(std::shared_ptr<const QVColor> textDecorationColor) {
    setColor(std::move(textDecorationColor), QVStyleAttributeTextDecorationColor);
}

std::shared_ptr<const QVColor> QVStyle::borderColor() const {
    return colorForAttribute(QVStyleAttributeBorderColor);
}

void QVStyle::setBorderColor(std::shared_ptr<const QVColor> borderColor) {
    setColor(std::move(borderColor), QVStyleAttributeBorderColor);
}

std::shared_ptr<const QVGradient> QVStyle::borderGradient() const {
    return gradientForAttribute(QVStyleAttributeBorderGradient);
}

void QVStyle::setBorderGradient(std::shared_ptr<const QVGradient> borderGradient) {
    setGradient(std::move(borderGradient), QVStyleAttributeBorderGradient);
}

std::shared_ptr<const NSShadow> QVStyle::boxShadow() const {
    return shadowForAttribute(QVStyleAttributeBoxShadow);
}

void QVStyle::setBoxShadow(std::shared_ptr<const NSShadow> boxShadow) {
    setShadow(std::move(boxShadow), QVStyleAttributeBoxShadow);
}

std::shared_ptr<const NSShadow> QVStyle::insetShadow() const {
    return shadowForAttribute(QVStyleAttributeInsetShadow);
}

void QVStyle::setInsetShadow(std::shared_ptr<const NSShadow> insetShadow) {
    setShadow(std::move(insetShadow), QVStyleAttributeInsetShadow);
}

} // namespace quorvane
