#include "Quorvane/Parsers/QVParseScopeTrace.h"

#include "Quorvane/Scopes/QVScope.h"

namespace quorvane {

NSString QVParseScopeTrace::description() const {
    return NSString::stringWithFormat(u"%@ Name: %@, Time: %4.2f, Successes: %ld, Failures: %ld",
                                      NSObject::description(), _scope ? _scope->name() : NSString(),
                                      _totalTimeInterval, _successCount, _failureCount);
}

} // namespace quorvane
