#pragma once

#include "Platform/Foundation/NSData.h"
#include "Platform/Foundation/NSObject.h"

#include <initializer_list>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <variant>
#include <vector>

namespace quorvane {

class NSCoder;
class NSError;
class NSSecureCoding;

/// What an archive needs to know of a class: its name, the names of its archived base classes, and how to
/// make an object that is then filled. There is no global register: each decoding call names the classes that
/// it accepts, and nothing else is ever built.
struct NSCodingClass {
    const char16_t *name;
    /// The archived base class, null at the top.
    const NSCodingClass *superclass;
    /// Makes an empty object; null for abstract classes.
    std::shared_ptr<NSSecureCoding> (*allocate)();
    /// The classes below this one that stand for it in an archive; evaluated when a decoding call accepts
    /// this class.
    std::span<const NSCodingClass *const> (*subclasses)() = nullptr;
};

/// An object that can be archived. Decoding makes the object first, registers it, then fills it, so that
/// cycles work.
class QV_EXPORT NSSecureCoding {
public:
    virtual ~NSSecureCoding();

    virtual const NSCodingClass &classForCoder() const = 0;
    virtual void encodeWithCoder(NSCoder &coder) const = 0;
    /// Fills this object, which `self` holds. Answers `self`, another object that takes its place (an
    /// interned one), or null when the archive is no good, after `failWithError` where there is something to
    /// say.
    virtual std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                          std::shared_ptr<NSSecureCoding> self) = 0;
};

/// A value of a dictionary that holds several types: the null marker, a number, a text or an object.
using NSCodingValue =
    std::variant<std::nullptr_t, bool, NSInteger, double, NSString, std::shared_ptr<NSSecureCoding>>;

/// One side of a keyed archive. Objects write and read their fields by key. Null, absent and wrongly typed
/// entries all read as "nothing" (null, an empty optional, 0, false); only `failWithError` and damage to the
/// archive's structure make the whole archive fail. Numbers of all kinds read as each other, as boxed numbers
/// do; one that does not fit reads as nothing. A second value for a key takes the first one's place. Reading
/// from a writer or the other way round throws `NSInvalidArgumentException`. One thread.
class QV_EXPORT NSCoder {
public:
    virtual ~NSCoder();

    // Writing. A null string, data or object, or an empty optional, writes nothing under its key.
    virtual void encodeBool(bool value, const NSString &key);
    virtual void encodeInteger(NSInteger value, const NSString &key);
    virtual void encodeFloat(float value, const NSString &key);
    virtual void encodeDouble(double value, const NSString &key);
    virtual void encodeString(const NSString &value, const NSString &key);
    virtual void encodeData(const NSData &value, const NSString &key);
    virtual void encodeObject(const std::shared_ptr<const NSSecureCoding> &value, const NSString &key);
    /// A number that may be absent, as an object.
    virtual void encodeNumber(const std::optional<NSInteger> &value, const NSString &key);
    virtual void encodeStrings(const std::optional<std::vector<NSString>> &values, const NSString &key);
    virtual void encodeStringSet(const std::optional<std::set<NSString>> &values, const NSString &key);
    virtual void encodeNumberSet(const std::optional<std::set<NSUInteger>> &values, const NSString &key);
    virtual void encodeStringDictionary(const std::optional<std::map<NSString, NSString>> &values,
                                        const NSString &key);
    /// A list of numbers with fractions.
    virtual void encodeDoubles(const std::optional<std::vector<double>> &values, const NSString &key);
    virtual void encodeRange(const std::optional<NSRange> &value, const NSString &key);
    virtual void encodeValueDictionary(const std::optional<std::map<NSString, NSCodingValue>> &values,
                                       const NSString &key);
    /// No entry may be null, here and below; a null one is asserted and left out.
    virtual void
    encodeObjectArray(const std::optional<std::vector<std::shared_ptr<const NSSecureCoding>>> &values,
                      const NSString &key);
    virtual void encodeObjectDictionary(
        const std::optional<std::map<NSString, std::shared_ptr<const NSSecureCoding>>> &values,
        const NSString &key);

    // Reading.
    virtual bool containsValueForKey(const NSString &key) const;
    virtual bool decodeBool(const NSString &key);
    virtual NSInteger decodeInteger(const NSString &key);
    virtual float decodeFloat(const NSString &key);
    virtual double decodeDouble(const NSString &key);
    virtual NSString decodeString(const NSString &key);
    virtual NSData decodeData(const NSString &key);
    virtual std::optional<NSInteger> decodeNumber(const NSString &key);
    virtual std::optional<std::vector<NSString>> decodeStrings(const NSString &key);
    virtual std::optional<std::set<NSString>> decodeStringSet(const NSString &key);
    virtual std::optional<std::set<NSUInteger>> decodeNumberSet(const NSString &key);
    virtual std::optional<std::map<NSString, NSString>> decodeStringDictionary(const NSString &key);
    virtual std::optional<std::vector<double>> decodeDoubles(const NSString &key);
    virtual std::optional<NSRange> decodeRange(const NSString &key);
    /// Objects must be of one of the accepted classes.
    virtual std::optional<std::map<NSString, NSCodingValue>>
    decodeValueDictionary(const NSString &key, std::span<const NSCodingClass *const> accepted);
    virtual std::shared_ptr<NSSecureCoding> decodeObject(const NSString &key, const NSCodingClass &accepted);
    /// A list or dictionary with an entry that can't be decoded reads as nothing as a whole; so do all of the
    /// lists, sets and dictionaries here.
    virtual std::optional<std::vector<std::shared_ptr<NSSecureCoding>>>
    decodeObjectArray(const NSString &key, const NSCodingClass &accepted);
    virtual std::optional<std::map<NSString, std::shared_ptr<NSSecureCoding>>>
    decodeObjectDictionary(const NSString &key, const NSCodingClass &accepted);

    /// Makes the whole archive fail with this error; the first one counts.
    virtual void failWithError(std::shared_ptr<NSError> error) = 0;
    /// The error that the archive failed with, null as long as it is good.
    virtual std::shared_ptr<NSError> error() const = 0;

    // The same for a class of its own, which offers `static const NSCodingClass &codingClass()`.
    template <typename T> std::shared_ptr<T> decodeObjectOfClass(const NSString &key) {
        return std::dynamic_pointer_cast<T>(decodeObject(key, T::codingClass()));
    }
    template <typename T>
    std::optional<std::vector<std::shared_ptr<T>>> decodeArrayOfClass(const NSString &key) {
        auto objects = decodeObjectArray(key, T::codingClass());
        if (!objects)
            return std::nullopt;
        std::vector<std::shared_ptr<T>> result;
        result.reserve(objects->size());
        for (auto &object : *objects)
            if (auto typed = std::dynamic_pointer_cast<T>(std::move(object)))
                result.push_back(std::move(typed));
        return result;
    }
    template <typename T>
    std::optional<std::map<NSString, std::shared_ptr<T>>> decodeDictionaryOfClass(const NSString &key) {
        auto objects = decodeObjectDictionary(key, T::codingClass());
        if (!objects)
            return std::nullopt;
        std::map<NSString, std::shared_ptr<T>> result;
        for (auto &[name, object] : *objects)
            if (auto typed = std::dynamic_pointer_cast<T>(std::move(object)))
                result.emplace(name, std::move(typed));
        return result;
    }
    template <typename T>
    void encodeArray(const std::vector<std::shared_ptr<T>> &values, const NSString &key) {
        encodeObjectArray(std::vector<std::shared_ptr<const NSSecureCoding>>(values.begin(), values.end()),
                          key);
    }
    template <typename T>
    void encodeArray(const std::optional<std::vector<std::shared_ptr<T>>> &values, const NSString &key) {
        if (values)
            encodeArray(*values, key);
    }
    template <typename T>
    void encodeDictionary(const std::map<NSString, std::shared_ptr<T>> &values, const NSString &key) {
        encodeObjectDictionary(
            std::map<NSString, std::shared_ptr<const NSSecureCoding>>(values.begin(), values.end()), key);
    }
};

} // namespace quorvane
