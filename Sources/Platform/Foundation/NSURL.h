#pragma once

#include "Platform/Foundation/NSString.h"

namespace quorvane {

/// The place of a file. Only file URLs exist here; a null URL stands for none.
class QV_EXPORT NSURL {
public:
    NSURL() = default;
    NSURL(std::nullptr_t) {}
    static NSURL fileURLWithPath(NSString path);

    bool isNull() const { return _path.isNull(); }
    explicit operator bool() const { return !isNull(); }
    /// The file's path, as given.
    const NSString &path() const { return _path; }
    NSString lastPathComponent() const { return _path.lastPathComponent(); }
    NSURL URLByAppendingPathComponent(const NSString &component) const;
    /// "file://" and the path.
    NSString description() const;

    friend bool operator==(const NSURL &, const NSURL &) = default;

private:
    NSString _path;
};

} // namespace quorvane
