#pragma once

#include "Quorvane/Matches/QVCaptureMatchArray.h"
#include "Quorvane/Scopes/QVScope.h"

struct pcre2_real_match_data_16;

namespace quorvane {

class QVCapture;
class QVRegularExpression;
struct QVGroupsOfHit;

/// The place of one named group of a match. Never a container. The capture must outlive it.
class QV_EXPORT QVCaptureMatch final : public QVMatch {
public:
    static boost::intrusive_ptr<QVCaptureMatch>
    initWithCapture(const QVCapture *capture, QVMatchPool &pool = QVMatchPool::sharedPool());
    /// A match for each capture whose group exists and took part, in the order of the captures, linked to
    /// each other and to the parent; null where there is none. `source` and `range` are not read.
    static std::unique_ptr<QVCaptureMatchArray> captureMatchesWithCaptures(
        const QVScope::Captures &captures, const QVRegularExpression &regularExpression,
        ::pcre2_real_match_data_16 *matchData, NSUInteger offset, std::u16string_view source, NSRange range,
        QVScopeMatch *parentMatch, QVMatchPool &pool = QVMatchPool::sharedPool());
    /// The same from the groups of a hit, in the text's own places.
    static std::unique_ptr<QVCaptureMatchArray>
    captureMatchesWithGroups(const QVScope::Captures &captures, const QVRegularExpression &regularExpression,
                             const QVGroupsOfHit &groups, QVScopeMatch *parentMatch, QVMatchPool &pool);

    const QVCapture *capture() const { return _capture; }

private:
    friend class QVMatch;
    explicit QVCaptureMatch(const QVCapture *capture) : QVMatch(false), _capture(capture) {}
    ~QVCaptureMatch() = default;

    const QVCapture *_capture;
};

} // namespace quorvane
