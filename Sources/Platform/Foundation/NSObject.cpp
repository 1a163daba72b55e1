#include "Platform/Foundation/NSObject.h"

namespace quorvane {

NSObject::~NSObject() = default;

bool NSObject::isEqual(const NSObject *other) const { return this == other; }

std::size_t NSObject::hash() const { return std::hash<const void *>()(this); }

NSString NSObject::description() const {
    return NSString::stringWithFormat(u"<%@: %p>", className(), static_cast<const void *>(this));
}

} // namespace quorvane
