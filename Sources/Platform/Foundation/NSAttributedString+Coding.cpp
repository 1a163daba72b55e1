#include "Platform/Foundation/NSAttributedString+Coding.h"

#include <unordered_map>

namespace quorvane {

namespace {

using Accepted = std::span<const NSCodingClass *const>;

/// What the attributes that this thread reads may hold: objects in an archive are made by their class alone.
thread_local Accepted acceptedValues;

class Accepting {
public:
    explicit Accepting(Accepted accepted) : _outer(std::exchange(acceptedValues, accepted)) {}
    ~Accepting() { acceptedValues = _outer; }
    Accepting(const Accepting &) = delete;
    Accepting &operator=(const Accepting &) = delete;

private:
    Accepted _outer;
};

/// One attribute dictionary while it is written or read.
class CodedAttributes final : public NSSecureCoding {
public:
    NSAttributes attributes;

    static const NSCodingClass &codingClass() {
        static const NSCodingClass codingClass{
            u"NSAttributes", nullptr,
            +[]() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<CodedAttributes>(); }};
        return codingClass;
    }
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override {
        qv_encodeAttributes(coder, attributes, u"NSValues");
    }
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override {
        attributes = qv_decodeAttributes(coder, u"NSValues", acceptedValues).value_or(NSAttributes());
        return self;
    }
};

/// A string while it is written or read. Its runs are pairs of numbers, a run's length and which dictionary
/// it has, in sevens of bits with the lowest first and the eighth bit for "more follow".
class CodedString final : public NSSecureCoding {
public:
    /// A copy: an archive asks its objects for what they are at its end.
    std::shared_ptr<const NSAttributedString> written;
    std::shared_ptr<NSMutableAttributedString> read;

    static const NSCodingClass &codingClass() {
        static const NSCodingClass codingClass{
            u"NSAttributedString", nullptr,
            +[]() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<CodedString>(); }};
        return codingClass;
    }
    const NSCodingClass &classForCoder() const override { return codingClass(); }

    void encodeWithCoder(NSCoder &coder) const override {
        const NSUInteger length = written->length();
        coder.encodeString(NSString(written->string().substringWithRange({0, length})), u"NSString");
        std::unordered_map<NSAttributes, NSUInteger> indexes;
        std::vector<std::shared_ptr<CodedAttributes>> dictionaries;
        std::vector<std::uint8_t> runs;
        written->enumerateAttributesInRange(
            {0, length}, 0, [&](const NSAttributes &attributes, NSRange range, bool &) {
                const auto [at, isNew] = indexes.emplace(attributes, dictionaries.size());
                if (isNew) {
                    dictionaries.push_back(std::make_shared<CodedAttributes>());
                    dictionaries.back()->attributes = attributes;
                }
                append(runs, range.length);
                append(runs, at->second);
            });
        coder.encodeArray(dictionaries, u"NSAttributes");
        coder.encodeData(runs, u"NSAttributeInfo");
    }

    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override {
        const NSString text = coder.decodeString(u"NSString");
        const auto dictionaries = coder.decodeArrayOfClass<CodedAttributes>(u"NSAttributes")
                                      .value_or(std::vector<std::shared_ptr<CodedAttributes>>());
        const NSData runs = coder.decodeData(u"NSAttributeInfo");
        read = NSMutableAttributedString::initWithString(text);
        const auto bytes = runs.bytes();
        std::size_t at = 0;
        for (NSUInteger location = 0; at < bytes.size() && location < text.length();) {
            const NSUInteger length = std::min(next(bytes, at), text.length() - location);
            const NSUInteger index = next(bytes, at);
            if (index < dictionaries.size())
                read->setAttributes(dictionaries[index]->attributes, {location, length});
            location += length;
        }
        return self;
    }

private:
    static void append(std::vector<std::uint8_t> &bytes, NSUInteger number) {
        for (; number >= 0x80; number >>= 7)
            bytes.push_back(static_cast<std::uint8_t>(number | 0x80));
        bytes.push_back(static_cast<std::uint8_t>(number));
    }
    /// Bits beyond the 64th are lost, bytes beyond the end count as zero.
    static NSUInteger next(std::span<const std::uint8_t> bytes, std::size_t &at) {
        NSUInteger number = 0;
        for (unsigned shift = 0; at < bytes.size(); shift += 7) {
            const std::uint8_t byte = bytes[at++];
            if (shift < 64)
                number |= static_cast<NSUInteger>(byte & 0x7F) << shift;
            if ((byte & 0x80) == 0)
                break;
        }
        return number;
    }
};

} // namespace

std::optional<NSCodingValue> qv_codingValue(const NSAttributeValue &value) {
    if (value.isNull())
        return NSCodingValue(nullptr);
    if (const auto *const integer = std::get_if<NSInteger>(&value))
        return *integer;
    if (const auto *const number = std::get_if<double>(&value))
        return *number;
    if (const auto *const string = std::get_if<NSString>(&value))
        return *string;
    const auto object = std::const_pointer_cast<NSObject>(std::get<NSAttributeValue::Object>(value));
    auto coded = std::dynamic_pointer_cast<NSSecureCoding>(object);
    return coded ? std::optional<NSCodingValue>(std::move(coded)) : std::nullopt;
}

std::optional<NSAttributeValue> qv_attributeValue(const NSCodingValue &value) {
    if (std::holds_alternative<std::nullptr_t>(value))
        return NSNull();
    if (const auto *const boolean = std::get_if<bool>(&value))
        return *boolean;
    if (const auto *const integer = std::get_if<NSInteger>(&value))
        return *integer;
    if (const auto *const number = std::get_if<double>(&value))
        return *number;
    if (const auto *const string = std::get_if<NSString>(&value))
        return *string;
    auto object = std::dynamic_pointer_cast<const NSObject>(std::get<std::shared_ptr<NSSecureCoding>>(value));
    return object ? std::optional<NSAttributeValue>(std::move(object)) : std::nullopt;
}

void qv_encodeAttributes(NSCoder &coder, const NSAttributes &attributes, const NSString &key) {
    std::map<NSString, NSCodingValue> values;
    for (const NSAttribute &attribute : attributes)
        if (auto value = qv_codingValue(attribute.value))
            values.emplace(attribute.key.string(), *std::move(value));
    coder.encodeValueDictionary(values, key);
}

std::optional<NSAttributes> qv_decodeAttributes(NSCoder &coder, const NSString &key,
                                                std::span<const NSCodingClass *const> accepted) {
    const auto values = coder.decodeValueDictionary(key, accepted);
    if (!values)
        return std::nullopt;
    NSMutableAttributes attributes;
    for (const auto &[name, coded] : *values)
        if (auto value = qv_attributeValue(coded))
            attributes.set(NSAttributeKey(name), *std::move(value));
    return attributes.attributes();
}

void qv_encodeAttributedString(NSCoder &coder, const NSAttributedString &attributedString,
                               const NSString &key) {
    const auto coded = std::make_shared<CodedString>();
    coded->written = NSAttributedString::initWithAttributedString(attributedString);
    coder.encodeObject(coded, key);
}

std::shared_ptr<NSMutableAttributedString>
qv_decodeAttributedString(NSCoder &coder, const NSString &key,
                          std::span<const NSCodingClass *const> accepted) {
    const Accepting accepting(accepted);
    const auto coded = coder.decodeObjectOfClass<CodedString>(key);
    return coded ? coded->read : nullptr;
}

} // namespace quorvane
