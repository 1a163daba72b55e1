#pragma once

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Tests/Support/Printing.h"

#include <functional>
#include <gtest/gtest.h>

namespace quorvane::test {

/// What an object is after a trip through an archive; null where it does not come back.
template <typename T> std::shared_ptr<T> throughArchive(const std::shared_ptr<T> &object) {
    std::shared_ptr<NSError> error;
    auto result = NSKeyedUnarchiver::unarchivedObjectOfClass<T>(
        NSKeyedArchiver::archivedDataWithRootObject(object), &error);
    EXPECT_EQ(error, nullptr);
    return result;
}

/// A coder that only writes down which keys an object uses, and for values of which kind.
class KeyRecorder final : public NSCoder {
public:
    const std::map<NSString, std::string> &kinds() const { return _kinds; }

    void encodeBool(bool, const NSString &key) override { note(key, "bool"); }
    void encodeInteger(NSInteger, const NSString &key) override { note(key, "integer"); }
    void encodeFloat(float, const NSString &key) override { note(key, "float"); }
    void encodeDouble(double, const NSString &key) override { note(key, "double"); }
    void encodeString(const NSString &value, const NSString &key) override { note(key, "string", !!value); }
    void encodeData(const NSData &value, const NSString &key) override { note(key, "data", !!value); }
    void encodeObject(const std::shared_ptr<const NSSecureCoding> &value, const NSString &key) override {
        if (value)
            note(key, NSString(value->classForCoder().name).UTF8String());
    }
    void encodeNumber(const std::optional<NSInteger> &value, const NSString &key) override {
        note(key, "number", value.has_value());
    }
    void encodeStrings(const std::optional<std::vector<NSString>> &values, const NSString &key) override {
        note(key, "strings", values.has_value());
    }
    void encodeStringSet(const std::optional<std::set<NSString>> &values, const NSString &key) override {
        note(key, "string set", values.has_value());
    }
    void encodeNumberSet(const std::optional<std::set<NSUInteger>> &values, const NSString &key) override {
        note(key, "number set", values.has_value());
    }
    void encodeStringDictionary(const std::optional<std::map<NSString, NSString>> &values,
                                const NSString &key) override {
        note(key, "string dictionary", values.has_value());
    }
    void encodeDoubles(const std::optional<std::vector<double>> &values, const NSString &key) override {
        note(key, "doubles", values.has_value());
    }
    void encodeObjectArray(const std::optional<std::vector<std::shared_ptr<const NSSecureCoding>>> &values,
                           const NSString &key) override {
        note(key, "array", values.has_value());
    }
    void encodeObjectDictionary(
        const std::optional<std::map<NSString, std::shared_ptr<const NSSecureCoding>>> &values,
        const NSString &key) override {
        note(key, "dictionary", values.has_value());
    }
    void encodeValueDictionary(const std::optional<std::map<NSString, NSCodingValue>> &values,
                               const NSString &key) override {
        note(key, "value dictionary", values.has_value());
    }
    void failWithError(std::shared_ptr<NSError>) override {}
    std::shared_ptr<NSError> error() const override { return nullptr; }

private:
    void note(const NSString &key, std::string kind, bool present = true) {
        if (present) {
            EXPECT_TRUE(_kinds.emplace(key, std::move(kind)).second) << "written twice: " << key.UTF8String();
        }
    }
    std::map<NSString, std::string> _kinds;
};

/// Key and kind of all that an object writes, "key: kind" in the order of the keys.
inline std::vector<std::string> archivedKeys(const NSSecureCoding &object) {
    KeyRecorder recorder;
    object.encodeWithCoder(recorder);
    std::vector<std::string> result;
    for (const auto &[key, kind] : recorder.kinds())
        result.push_back(key.UTF8String() + ": " + kind);
    return result;
}

/// An object that writes whatever a test wants in the name of another class, as a hostile archive would.
class Forged final : public NSSecureCoding {
public:
    Forged(const NSCodingClass &codingClass, std::function<void(NSCoder &coder)> write)
        : _codingClass(codingClass), _write(std::move(write)) {}
    const NSCodingClass &classForCoder() const override { return _codingClass; }
    void encodeWithCoder(NSCoder &coder) const override { _write(coder); }
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &, std::shared_ptr<NSSecureCoding>) override {
        return nullptr;
    }

private:
    const NSCodingClass &_codingClass;
    std::function<void(NSCoder &coder)> _write;
};

/// What a class makes of forged fields; null where it refuses them.
template <typename T> std::shared_ptr<T> readForged(std::function<void(NSCoder &coder)> write) {
    return NSKeyedUnarchiver::unarchivedObjectOfClass<T>(NSKeyedArchiver::archivedDataWithRootObject(
        std::make_shared<const Forged>(T::codingClass(), std::move(write))));
}

} // namespace quorvane::test
