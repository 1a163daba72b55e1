#pragma once

#include "Platform/Foundation/NSString.h"

#include <memory>

namespace quorvane {

/// The small polymorphic root of shared objects. Objects live in `std::shared_ptr`; what differs from class
/// to class is their name, their description and what makes two of them equal.
class QV_EXPORT NSObject : public std::enable_shared_from_this<NSObject> {
public:
    virtual ~NSObject();

    /// Identity, unless a class says otherwise. Null is equal to nothing.
    virtual bool isEqual(const NSObject *other) const;
    /// Equal objects have equal hashes.
    virtual std::size_t hash() const;

    /// The class's name, as descriptions and archives print it.
    virtual std::u16string_view className() const { return u"NSObject"; }
    /// "<%@: %p>" with the class's name and the object's address.
    virtual NSString description() const;

protected:
    NSObject() = default;
    NSObject(const NSObject &) : std::enable_shared_from_this<NSObject>() {}
    NSObject &operator=(const NSObject &) { return *this; }
};

} // namespace quorvane
