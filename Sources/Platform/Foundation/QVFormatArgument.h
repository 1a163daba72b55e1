#pragma once

#include "Platform/Foundation/NSString.h"

#include <concepts>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <variant>
#include <vector>

namespace quorvane {

/// The text of a range as messages print it: "{location, length}".
QV_EXPORT NSString NSStringFromRange(NSRange range);

/// The text of a list as messages print it: its items between brackets, one a line, indented by four blanks.
QV_EXPORT NSString QVDescriptionOfStrings(const std::vector<NSString> &items);

template <typename T>
concept QVDescribable = requires(const T &value) {
    { value.description() } -> std::convertible_to<NSString>;
};

/// One value for a format string: a number, a pointer or a text. Objects are described at once.
class QVFormatArgument {
public:
    QVFormatArgument(const NSString &string) : _value(string) {}
    QVFormatArgument(const char16_t *string) : _value(NSString(string)) {}
    QVFormatArgument(std::u16string_view string) : _value(NSString(string)) {}
    QVFormatArgument(const std::u16string &string) : _value(NSString(string)) {}
    QVFormatArgument(NSRange range) : _value(NSStringFromRange(range)) {}
    QVFormatArgument(const std::vector<NSString> &items) : _value(QVDescriptionOfStrings(items)) {}
    QVFormatArgument(std::nullptr_t) : _value(NSString()) {}

    template <std::floating_point T> QVFormatArgument(T value) : _value(static_cast<double>(value)) {}
    template <std::signed_integral T> QVFormatArgument(T value) : _value(static_cast<std::int64_t>(value)) {}
    template <std::unsigned_integral T>
    QVFormatArgument(T value) : _value(static_cast<std::uint64_t>(value)) {}
    template <typename T>
    requires std::is_enum_v<T> QVFormatArgument(T value) : _value(static_cast<std::uint64_t>(value)) {}

    template <QVDescribable T> QVFormatArgument(const T &object) : _value(object.description()) {}
    template <QVDescribable T>
    QVFormatArgument(const std::shared_ptr<T> &object)
        : _value(object ? object->description() : NSString()) {}
    /// A pointer to an object fills "%@" with its description and "%p" with its address.
    template <QVDescribable T>
    QVFormatArgument(const T *object) : _value(Object{object, object ? object->description() : NSString()}) {}
    QVFormatArgument(const void *pointer) : _value(pointer) {}

    struct Object {
        const void *address;
        NSString description;
    };
    using Value = std::variant<NSString, std::int64_t, std::uint64_t, double, const void *, Object>;
    const Value &value() const { return _value; }

private:
    Value _value;
};

template <typename... Values>
NSString NSString::stringWithFormat(std::u16string_view format, const Values &...values) {
    if constexpr (sizeof...(Values) == 0) {
        return QVStringWithFormatArguments(format, nullptr, 0);
    } else {
        const QVFormatArgument arguments[] = {QVFormatArgument(values)...};
        return QVStringWithFormatArguments(format, arguments, sizeof...(Values));
    }
}

} // namespace quorvane
