#pragma once

#include "Platform/Foundation/NSObject.h"

#include <cstring>
#include <optional>
#include <type_traits>
#include <vector>

namespace quorvane {

/// A plain record in the shape of an object, so that it can stand among other objects: its bytes, and a text
/// that says which type they are of. Immutable, for any thread.
class QV_EXPORT NSValue final : public NSObject {
public:
    /// The type's text is the record's name with the types of its fields, as "{Name=dd}" for two doubles.
    template <typename T>
    requires std::is_trivially_copyable_v<T>
    static std::shared_ptr<const NSValue> valueWithBytes(const T &record, NSString objCType) {
        return valueWithBytes(&record, sizeof record, std::move(objCType));
    }
    static std::shared_ptr<const NSValue> valueWithRange(NSRange range);

    const NSString &objCType() const { return _objCType; }
    /// The record, if it is of this type, else nothing.
    template <typename T>
    requires std::is_trivially_copyable_v<T> std::optional<T> getValue(std::u16string_view objCType)
    const {
        if (_objCType.view() != objCType || _bytes.size() != sizeof(T))
            return std::nullopt;
        T record;
        std::memcpy(&record, _bytes.data(), sizeof record);
        return record;
    }
    /// `{0, 0}` where the value holds another type.
    NSRange rangeValue() const;

    /// The same type and the same bytes.
    bool isEqual(const NSObject *other) const override;
    std::size_t hash() const override;
    std::u16string_view className() const override { return u"NSValue"; }
    /// "<NSValue {Name=dd}>".
    NSString description() const override;

private:
    NSValue() = default;
    static std::shared_ptr<const NSValue> valueWithBytes(const void *bytes, std::size_t size,
                                                         NSString objCType);

    NSString _objCType;
    std::vector<unsigned char> _bytes;
};

} // namespace quorvane
