#pragma once

#include "Platform/Foundation/NSObject.h"

struct pcre2_real_match_context_16;
struct pcre2_real_match_data_16;

namespace quorvane {

class QVRegularExpression;

/// The memory that matching works in, reused from match to match so that millions of attempts allocate
/// nothing. Not thread-safe: each parse has one, used only by who holds its write access.
class QV_EXPORT QVRegularExpressionMatchContext final : public NSObject {
public:
    QVRegularExpressionMatchContext();
    ~QVRegularExpressionMatchContext() override;
    QVRegularExpressionMatchContext(const QVRegularExpressionMatchContext &) = delete;
    QVRegularExpressionMatchContext &operator=(const QVRegularExpressionMatchContext &) = delete;

    /// Before each match: makes the match data large enough for the expression's groups. What they held is
    /// gone.
    void prepareForRegularExpression(const QVRegularExpression &regularExpression);
    /// The same for so many groups, the whole match not counted.
    void prepareForGroups(NSUInteger count) {
        ++_matchNumber;
        if (_matchDataSize <= count) [[unlikely]]
            makeMatchData(count + 1);
    }
    /// Numbers the matches, from 1. Who kept the number that was in force when a match was made still finds
    /// its groups while that is the same.
    std::uint64_t matchNumber() const { return _matchNumber; }

    ::pcre2_real_match_data_16 *matchData() const { return _matchData; }
    ::pcre2_real_match_context_16 *matchContext() const { return _matchContext; }
    /// The number of groups, the whole match included, that the match data has room for.
    NSUInteger matchDataSize() const { return _matchDataSize; }

    std::u16string_view className() const override { return u"QVRegularExpressionMatchContext"; }

private:
    void makeMatchData(NSUInteger size);

    ::pcre2_real_match_context_16 *_matchContext;
    ::pcre2_real_match_data_16 *_matchData = nullptr;
    NSUInteger _matchDataSize = 0;
    std::uint64_t _matchNumber = 0;
};

} // namespace quorvane
