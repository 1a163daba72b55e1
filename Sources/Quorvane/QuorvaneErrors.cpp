#include "Quorvane/QuorvaneErrors.h"

namespace quorvane {

const char16_t *const QVQuorvaneErrorDomain = u"QVQuorvaneErrorDomain";

std::shared_ptr<NSError> QVDefinitionError(NSString description, std::shared_ptr<NSError> underlyingError) {
    NSErrorUserInfo userInfo{{NSLocalizedDescriptionKey, std::move(description)}};
    if (underlyingError)
        userInfo.emplace(NSUnderlyingErrorKey, std::move(underlyingError));
    return NSError::errorWithDomain(QVQuorvaneErrorDomain, QVQuorvaneErrorInvalidDefinition,
                                    std::move(userInfo));
}

} // namespace quorvane
