#pragma once

#include "Quorvane/Symbols/QVSymbolDescriptor.h"

#include <atomic>

namespace quorvane {

/// A question to a source of symbols, such as a host's index of a project. Set up by one thread before it is
/// handed out; `cancel` may come from any thread at any time, and the source polls it.
class QV_EXPORT QVSymbolFetchRequest final : public NSObject {
public:
    using UserInfo = std::map<NSString, std::shared_ptr<NSObject>>;

    QVSymbolFetchRequest() = default;

    /// What the names are matched against.
    const NSString &pattern() const { return _pattern; }
    void setPattern(NSString pattern) { _pattern = std::move(pattern); }
    /// The option mask of pattern matching.
    NSUInteger matchingOptions() const { return _matchingOptions; }
    void setMatchingOptions(NSUInteger matchingOptions) { _matchingOptions = matchingOptions; }
    /// What kinds of symbols are wanted; any one of them suffices.
    const std::vector<std::shared_ptr<QVSymbolDescriptor>> &symbolDescriptors() const {
        return _symbolDescriptors;
    }
    void setSymbolDescriptors(std::vector<std::shared_ptr<QVSymbolDescriptor>> symbolDescriptors) {
        _symbolDescriptors = std::move(symbolDescriptors);
    }
    /// What the host gave along for its sources.
    const UserInfo &userInfo() const { return _userInfo; }
    void setUserInfo(UserInfo userInfo) { _userInfo = std::move(userInfo); }

    bool isCancelled() const { return _cancelled.load(std::memory_order_relaxed); }
    void cancel() { _cancelled.store(true, std::memory_order_relaxed); }

    /// A request of its own: descriptors are copied too, and it is not cancelled.
    std::shared_ptr<QVSymbolFetchRequest> copy() const;

    std::u16string_view className() const override { return u"QVSymbolFetchRequest"; }

private:
    NSString _pattern;
    NSUInteger _matchingOptions = 0;
    std::vector<std::shared_ptr<QVSymbolDescriptor>> _symbolDescriptors;
    UserInfo _userInfo;
    std::atomic<bool> _cancelled = false;
};

} // namespace quorvane
