#pragma once

#include "Platform/Foundation/NSObject.h"

namespace quorvane {

/// Keeps what an archive rebuilds a tree. An archive can name one object in many places, its own inside
/// included, while everything that walks scopes or detectors relies on each having one place: a cycle would
/// never end, a diamond on a diamond would take for ever, and a chain tied together from objects that were
/// read one beside another would exhaust the stack. An object that owns others of its kind holds a guard
/// while it is filled and asks it for each of them.
class QVTreeDecoding {
public:
    explicit QVTreeDecoding(const NSObject *object);
    ~QVTreeDecoding();
    QVTreeDecoding(const QVTreeDecoding &) = delete;
    QVTreeDecoding &operator=(const QVTreeDecoding &) = delete;

    /// Whether the object may own this one: it has its place nowhere else, is not being filled itself, and
    /// doesn't stand on more levels than an archive may nest. From then on its place is here.
    bool adopt(const NSObject *child);

    /// Adopts all, or answers false.
    template <typename Range> bool adoptAll(const Range &children) {
        for (const auto &child : children)
            if (!adopt(child.get()))
                return false;
        return true;
    }

private:
    const NSObject *_object;
    /// A class and the one below it may hold a guard for one object.
    bool _wasFilling;
};

class NSCoder;
/// Makes the archive fail as one whose objects are no tree.
void QVFailTreeDecoding(NSCoder &coder);

} // namespace quorvane
