#pragma once

#include "Platform/Foundation/NSError.h"

namespace quorvane {

/// The domain of errors in definition files and patterns.
QV_EXPORT extern const char16_t *const QVQuorvaneErrorDomain;

/// A definition file says something that can't be used; the description ends with line and column.
inline constexpr NSInteger QVQuorvaneErrorInvalidDefinition = 1;
/// A pattern does not compile.
inline constexpr NSInteger QVQuorvaneErrorInvalidRegularExpression = 1001;

/// A definition error with this description and, where given, the error below it.
QV_EXPORT std::shared_ptr<NSError> QVDefinitionError(NSString description,
                                                     std::shared_ptr<NSError> underlyingError = nullptr);

} // namespace quorvane
