#pragma once

#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

/// Writes an object and all that it reaches into a binary property list: a flat list of objects that name
/// each other by index, so that shared objects stay shared and cycles end.
class QV_EXPORT NSKeyedArchiver {
public:
    /// The archive of an object, or of a list of objects, as the root.
    static NSData archivedDataWithRootObject(const std::shared_ptr<const NSSecureCoding> &object);
    static NSData
    archivedDataWithRootArray(const std::vector<std::shared_ptr<const NSSecureCoding>> &objects);
};

/// Reads such archives from anywhere, trusting nothing: classes, types, indexes, sizes and nesting are
/// checked before anything is built, and only classes that the reader names are made.
class QV_EXPORT NSKeyedUnarchiver {
public:
    /// Null with an error in `NSCocoaErrorDomain`, code 4864, when the data is no archive, its root is of
    /// another class, or decoding failed; an error that an object failed with is handed on as it is.
    static std::shared_ptr<NSSecureCoding> unarchivedObject(const NSCodingClass &accepted, const NSData &data,
                                                            std::shared_ptr<NSError> *error = nullptr);
    static std::optional<std::vector<std::shared_ptr<NSSecureCoding>>>
    unarchivedArray(const NSCodingClass &accepted, const NSData &data,
                    std::shared_ptr<NSError> *error = nullptr);

    template <typename T>
    static std::shared_ptr<T> unarchivedObjectOfClass(const NSData &data,
                                                      std::shared_ptr<NSError> *error = nullptr) {
        return std::dynamic_pointer_cast<T>(unarchivedObject(T::codingClass(), data, error));
    }
};

} // namespace quorvane
