#pragma once

#include "Platform/Foundation/NSString.h"

#include <exception>
#include <string>

namespace quorvane {

inline constexpr const char16_t *NSInvalidArgumentException = u"NSInvalidArgumentException";
inline constexpr const char16_t *NSRangeException = u"NSRangeException";
inline constexpr const char16_t *NSInternalInconsistencyException = u"NSInternalInconsistencyException";

/// A programming error that a caller made: never thrown for bad files or bad patterns, which are `NSError`s.
class QV_EXPORT NSException : public std::exception {
public:
    NSException(NSString name, NSString reason);
    ~NSException() override;

    const NSString &name() const { return _name; }
    const NSString &reason() const { return _reason; }
    const char *what() const noexcept override { return _what.c_str(); }

private:
    NSString _name;
    NSString _reason;
    std::string _what;
};

} // namespace quorvane
