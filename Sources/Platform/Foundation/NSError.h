#pragma once

#include "Platform/Foundation/NSObject.h"

#include <map>
#include <optional>
#include <variant>

namespace quorvane {

class NSError;

inline constexpr const char16_t *NSLocalizedDescriptionKey = u"NSLocalizedDescription";
inline constexpr const char16_t *NSLocalizedFailureReasonErrorKey = u"NSLocalizedFailureReason";
inline constexpr const char16_t *NSLocalizedRecoverySuggestionErrorKey = u"NSLocalizedRecoverySuggestion";
inline constexpr const char16_t *NSUnderlyingErrorKey = u"NSUnderlyingError";
/// Errors of reading files; the code is the system's error number.
inline constexpr const char16_t *NSPOSIXErrorDomain = u"NSPOSIXErrorDomain";
/// Errors of archives.
inline constexpr const char16_t *NSCocoaErrorDomain = u"NSCocoaErrorDomain";

using NSErrorValue = std::variant<NSString, NSInteger, std::shared_ptr<NSError>>;
using NSErrorUserInfo = std::map<NSString, NSErrorValue>;

/// A recoverable failure: a domain, a code in it and what there is to say. Immutable; never thrown.
/// Operations that can fail take `std::shared_ptr<NSError> *error = nullptr` last and set it only on failure.
class QV_EXPORT NSError final : public NSObject {
public:
    NSError(NSString domain, NSInteger code, NSErrorUserInfo userInfo);
    static std::shared_ptr<NSError> errorWithDomain(NSString domain, NSInteger code,
                                                    NSErrorUserInfo userInfo = {});

    const NSString &domain() const { return _domain; }
    NSInteger code() const { return _code; }
    const NSErrorUserInfo &userInfo() const { return _userInfo; }

    /// The description in the user info, or one made of domain and code.
    NSString localizedDescription() const;
    /// Null where there is none.
    NSString localizedFailureReason() const;
    NSString localizedRecoverySuggestion() const;
    std::shared_ptr<NSError> underlyingError() const;
    /// The string or number of a user info entry; null or an empty optional where there is none of that type.
    NSString stringForKey(const NSString &key) const;
    std::optional<NSInteger> integerForKey(const NSString &key) const;

    std::u16string_view className() const override { return u"NSError"; }
    NSString description() const override;

private:
    NSString _domain;
    NSInteger _code;
    NSErrorUserInfo _userInfo;
};

/// Sets an error out-parameter that may be null.
inline void QVSetError(std::shared_ptr<NSError> *error, std::shared_ptr<NSError> value) {
    if (error != nullptr)
        *error = std::move(value);
}

} // namespace quorvane
