#include "Platform/Foundation/NSError.h"

namespace quorvane {

NSError::NSError(NSString domain, NSInteger code, NSErrorUserInfo userInfo)
    : _domain(std::move(domain)), _code(code), _userInfo(std::move(userInfo)) {}

std::shared_ptr<NSError> NSError::errorWithDomain(NSString domain, NSInteger code, NSErrorUserInfo userInfo) {
    return std::make_shared<NSError>(std::move(domain), code, std::move(userInfo));
}

NSString NSError::stringForKey(const NSString &key) const {
    const auto found = _userInfo.find(key);
    const auto *string = found == _userInfo.end() ? nullptr : std::get_if<NSString>(&found->second);
    return string ? *string : NSString();
}

std::optional<NSInteger> NSError::integerForKey(const NSString &key) const {
    const auto found = _userInfo.find(key);
    const auto *number = found == _userInfo.end() ? nullptr : std::get_if<NSInteger>(&found->second);
    return number ? std::optional(*number) : std::nullopt;
}

NSString NSError::localizedDescription() const {
    if (NSString description = stringForKey(NSLocalizedDescriptionKey))
        return description;
    return NSString::stringWithFormat(u"The operation couldn’t be completed. (%@ error %ld.)", _domain,
                                      _code);
}

NSString NSError::localizedFailureReason() const { return stringForKey(NSLocalizedFailureReasonErrorKey); }

NSString NSError::localizedRecoverySuggestion() const {
    return stringForKey(NSLocalizedRecoverySuggestionErrorKey);
}

std::shared_ptr<NSError> NSError::underlyingError() const {
    const auto found = _userInfo.find(NSUnderlyingErrorKey);
    const auto *error =
        found == _userInfo.end() ? nullptr : std::get_if<std::shared_ptr<NSError>>(&found->second);
    return error ? *error : nullptr;
}

NSString NSError::description() const {
    return NSString::stringWithFormat(u"Error Domain=%@ Code=%ld \"%@\"", _domain, _code,
                                      localizedDescription());
}

} // namespace quorvane
