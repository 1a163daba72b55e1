#pragma once

#include "Platform/Foundation/NSString.h"

#include <functional>

namespace quorvane {

/// Where assertions go. The default handler logs "*** Assertion failure in SOURCE: MESSAGE" and throws an
/// `NSException` named `NSInternalInconsistencyException` with the message as its reason. A handler that
/// returns lets the work go on after the assertion.
class QV_EXPORT NSAssertionHandler {
public:
    /// Gets the name of the operation or file that asserts, and the message.
    using Handler = std::function<void(const NSString &source, const NSString &message)>;

    /// Replaces the process's handler and answers the one before; an empty one brings the default back. Any
    /// thread.
    static Handler setHandler(Handler handler);
    static void handleFailure(const NSString &source, const NSString &message);
};

} // namespace quorvane

/// Asserts with a message and format arguments.
#define QVAssert(condition, ...)                                                                             \
    do {                                                                                                     \
        if (!(condition)) [[unlikely]]                                                                       \
            ::quorvane::NSAssertionHandler::handleFailure(                                                   \
                ::quorvane::NSString::stringWithUTF8String(__func__),                                        \
                ::quorvane::NSString::stringWithFormat(__VA_ARGS__));                                        \
    } while (false)

/// Asserts what a caller must pass; the expression is printed as the documentation writes it.
#define QVParameterAssert(condition, expression)                                                             \
    QVAssert(condition, u"Invalid parameter not satisfying: %@", u##expression)
