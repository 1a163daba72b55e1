#include "Quorvane/Categories/QVTreeDecoding.h"

#include "Platform/Foundation/NSCoder.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/QVLimits.h"

namespace quorvane {

namespace {

struct Place {
    bool filling = false;
    bool taken = false;
    std::size_t levels = 1;
};

// One archive is read at a time on a thread, and it keeps its objects until it is done, so that addresses are
// good keys while any guard lives.
struct Session {
    std::size_t guards = 0;
    std::unordered_map<const NSObject *, Place> places;
};

Session &currentSession() {
    thread_local Session session;
    return session;
}

} // namespace

QVTreeDecoding::QVTreeDecoding(const NSObject *object) : _object(object) {
    Session &session = currentSession();
    ++session.guards;
    _wasFilling = std::exchange(session.places[object].filling, true);
}

QVTreeDecoding::~QVTreeDecoding() {
    Session &session = currentSession();
    session.places[_object].filling = _wasFilling;
    if (--session.guards == 0)
        session.places.clear();
}

bool QVTreeDecoding::adopt(const NSObject *child) {
    Session &session = currentSession();
    Place &place = session.places[child];
    if (place.filling || place.taken)
        return false;
    place.taken = true;
    const std::size_t levels = place.levels + 1;
    Place &own = session.places[_object];
    own.levels = std::max(own.levels, levels);
    return own.levels <= limits::archiveNestingDepth;
}

void QVFailTreeDecoding(NSCoder &coder) {
    coder.failWithError(NSError::errorWithDomain(
        NSCocoaErrorDomain, 4864,
        {{NSLocalizedDescriptionKey, NSString(u"The archive's objects do not form a tree.")}}));
}

} // namespace quorvane
