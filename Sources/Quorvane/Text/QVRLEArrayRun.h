#pragma once

#include "Platform/Foundation/NSObject.h"
#include "Platform/Foundation/NSRange.h"

#include <cstdint>

namespace quorvane {

/// Options of a run array's enumerations; a bit mask.
enum QVRLEArrayEnumerationOptions : std::uint64_t {
    /// From the end of the range towards its start.
    QVRLEArrayEnumerationReverse = 1,
    /// Hands over each run's full range instead of the part that lies in the asked range.
    QVRLEArrayEnumerationWholeRuns = 2,
};

/// What a run array can't do, by the exception's reason.
enum class QVRLEArrayBounds { Index, Insertion, Insertions, Deletion, Replacement, Subarray };

/// Throws an `NSInvalidArgumentException` with the reason for it.
[[noreturn]] QV_EXPORT void QVThrowRLEArrayBounds(QVRLEArrayBounds bounds);
/// Reports broken invariants in the name of `QVMutableRLEArray`.
QV_EXPORT void QVFailRLEArrayAssertion(const char16_t *message);

/// Equality of a run array's values, which decides whether neighbouring runs are one. Of shared objects the
/// stored one is asked by `isEqual`, even about itself; null is equal to null alone. Other values are
/// compared by `==`.
template <typename Value> bool QVRLEArrayValuesAreEqual(const Value &stored, const Value &other) {
    if constexpr (requires { stored->isEqual(other.get()); })
        return stored ? static_cast<bool>(other) && stored->isEqual(other.get()) : !other;
    else
        return stored == other;
}

/// One run of a run array as it stands between two edits: the array makes these records when it is described
/// or checked, and stores less. The links of the records of one array point to each other.
template <typename Value> class QVRLEArrayRun {
public:
    QVRLEArrayRun() = default;
    QVRLEArrayRun(NSUInteger location, NSUInteger length, Value value)
        : _location(location), _length(length), _value(std::move(value)) {}

    /// The first slot.
    NSUInteger location() const { return _location; }
    void setLocation(NSUInteger location) { _location = location; }
    /// The number of slots.
    NSUInteger length() const { return _length; }
    void setLength(NSUInteger length) { _length = length; }
    /// Can be null.
    const Value &value() const { return _value; }
    void setValue(Value value) { _value = std::move(value); }
    /// The run behind, null behind the last one. Not owned.
    const QVRLEArrayRun *nextRun() const { return _nextRun; }
    void setNextRun(const QVRLEArrayRun *nextRun) { _nextRun = nextRun; }

    bool isValueEqualToValue(const Value &value) const { return QVRLEArrayValuesAreEqual(_value, value); }

    NSString description() const {
        return NSString::stringWithFormat(u"<%@: %p range=%@, value=%@>", u"QVRLEArrayRun",
                                          static_cast<const void *>(this), NSRange{_location, _length},
                                          _value);
    }

private:
    NSUInteger _location = 0;
    NSUInteger _length = 0;
    Value _value{};
    const QVRLEArrayRun *_nextRun = nullptr;
};

/// What a bisection's callback is told about the probed run and its neighbours. Valid during the call. A
/// neighbour that does not exist has a null value and the range `{NSNotFound, 0}`.
template <typename Value> struct QVRLEArrayBisectContext {
    Value value{};
    NSRange effectiveRange = NSNotFoundRange;
    Value previousValue{};
    NSRange previousEffectiveRange = NSNotFoundRange;
    Value nextValue{};
    NSRange nextEffectiveRange = NSNotFoundRange;
};

} // namespace quorvane
