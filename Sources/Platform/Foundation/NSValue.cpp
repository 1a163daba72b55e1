#include "Platform/Foundation/NSValue.h"

namespace quorvane {

namespace {

constexpr const char16_t *rangeType = u"{_NSRange=QQ}";

} // namespace

std::shared_ptr<const NSValue> NSValue::valueWithBytes(const void *bytes, std::size_t size,
                                                       NSString objCType) {
    const std::shared_ptr<NSValue> value(new NSValue);
    const auto *first = static_cast<const unsigned char *>(bytes);
    value->_bytes.assign(first, first + size);
    value->_objCType = std::move(objCType);
    return value;
}

std::shared_ptr<const NSValue> NSValue::valueWithRange(NSRange range) {
    return valueWithBytes(range, rangeType);
}

NSRange NSValue::rangeValue() const { return getValue<NSRange>(rangeType).value_or(NSRange{}); }

bool NSValue::isEqual(const NSObject *other) const {
    const auto *value = dynamic_cast<const NSValue *>(other);
    return value && value->_objCType == _objCType && value->_bytes == _bytes;
}

std::size_t NSValue::hash() const {
    return _objCType.hash() * 31 +
           std::hash<std::string_view>()({reinterpret_cast<const char *>(_bytes.data()), _bytes.size()});
}

NSString NSValue::description() const {
    return NSString::stringWithFormat(u"<%@ %@>", className(), _objCType);
}

} // namespace quorvane
