#pragma once

#include "Platform/Foundation/NSObject.h"

namespace quorvane {

class QVScope;

/// What one scope of a grammar cost a parse: attempts that made a match, attempts that made none, and their
/// time.
class QV_EXPORT QVParseScopeTrace final : public NSObject {
public:
    const std::shared_ptr<const QVScope> &scope() const { return _scope; }
    void setScope(std::shared_ptr<const QVScope> scope) { _scope = std::move(scope); }
    NSUInteger successCount() const { return _successCount; }
    void setSuccessCount(NSUInteger count) { _successCount = count; }
    NSUInteger failureCount() const { return _failureCount; }
    void setFailureCount(NSUInteger count) { _failureCount = count; }
    /// In seconds.
    double totalTimeInterval() const { return _totalTimeInterval; }
    void setTotalTimeInterval(double interval) { _totalTimeInterval = interval; }

    std::u16string_view className() const override { return u"QVParseScopeTrace"; }
    /// "%@ Name: %@, Time: %4.2f, Successes: %ld, Failures: %ld".
    NSString description() const override;

private:
    std::shared_ptr<const QVScope> _scope;
    NSUInteger _successCount = 0;
    NSUInteger _failureCount = 0;
    double _totalTimeInterval = 0;
};

} // namespace quorvane
