#include "Quorvane/Styles/QVStyle.h"

namespace quorvane {

namespace {

/// An attribute's value that is no object by itself, as an object of an archive: a number, a string, or, with
/// none of these, the null marker.
class BoxedValue final : public NSSecureCoding {
public:
    BoxedValue() = default;
    explicit BoxedValue(QVStyleValue value) : _value(std::move(value)) {}

    const QVStyleValue &value() const { return _value; }

    static const NSCodingClass &codingClass() {
        static const NSCodingClass codingClass{
            u"QVStyleValue", nullptr,
            +[]() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<BoxedValue>(); }};
        return codingClass;
    }
    const NSCodingClass &classForCoder() const override { return codingClass(); }

    void encodeWithCoder(NSCoder &coder) const override {
        if (const auto *integer = std::get_if<NSInteger>(&_value))
            coder.encodeNumber(*integer, u"integer");
        else if (const auto *real = std::get_if<double>(&_value))
            coder.encodeDouble(*real, u"double");
        else if (const auto *string = std::get_if<NSString>(&_value))
            coder.encodeString(*string, u"string");
    }

    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override {
        if (const auto integer = coder.decodeNumber(u"integer"))
            _value = *integer;
        else if (coder.containsValueForKey(u"double"))
            _value = coder.decodeDouble(u"double");
        else if (NSString string = coder.decodeString(u"string"))
            _value = std::move(string);
        return self;
    }

private:
    QVStyleValue _value;
};

/// Every class of which an archived attribute may be.
const NSCodingClass &attributeClass() {
    static const NSCodingClass codingClass{
        u"QVStyleAttribute", nullptr, nullptr, +[]() -> std::span<const NSCodingClass *const> {
            static const NSCodingClass *const classes[] = {&BoxedValue::codingClass()};
            return classes;
        }};
    return codingClass;
}

} // namespace

const NSCodingClass &QVStyle::codingClass() {
    static const NSCodingClass codingClass{u"QVStyle", nullptr, +[]() -> std::shared_ptr<NSSecureCoding> {
                                               return std::make_shared<QVStyle>();
                                           }};
    return codingClass;
}

void QVStyle::encodeWithCoder(NSCoder &coder) const {
    coder.encodeObject(_selector, u"selector");
    coder.encodeStringDictionary(_properties, u"properties");
    std::map<NSString, std::shared_ptr<const NSSecureCoding>> attributes;
    for (const auto &[key, value] : _attributes) {
        const auto *object = std::get_if<std::shared_ptr<const NSObject>>(&value);
        // An object that can't be archived is left out; there is nothing to restore it from.
        if (auto coded = object ? std::dynamic_pointer_cast<const NSSecureCoding>(*object)
                                : std::make_shared<const BoxedValue>(value))
            attributes.emplace(key, std::move(coded));
    }
    coder.encodeObjectDictionary(attributes, u"attributes");
}

std::shared_ptr<NSSecureCoding> QVStyle::initWithCoder(NSCoder &coder, std::shared_ptr<NSSecureCoding> self) {
    _selector = coder.decodeObjectOfClass<QVSimpleSelector>(u"selector");
    _properties = coder.decodeStringDictionary(u"properties").value_or(Properties());
    if (auto attributes = coder.decodeObjectDictionary(u"attributes", attributeClass()))
        for (auto &[key, coded] : *attributes) {
            if (const auto boxed = std::dynamic_pointer_cast<BoxedValue>(coded))
                _attributes.insert_or_assign(key, boxed->value());
            else if (auto object = std::dynamic_pointer_cast<const NSObject>(std::move(coded)))
                _attributes.insert_or_assign(key, QVStyleValue(std::move(object)));
        }
    return self;
}

} // namespace quorvane
