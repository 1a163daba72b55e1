#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"

#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/RegularExpressions/PCRE2.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"

#include <new>

namespace quorvane {

QVRegularExpressionMatchContext::QVRegularExpressionMatchContext()
    : _matchContext(pcre2_match_context_create_16(nullptr)) {
    if (_matchContext == nullptr)
        throw std::bad_alloc();
    // The library's own heap limit is twenty gigabytes: a bad pattern could exhaust memory before it gives
    // up.
    pcre2_set_heap_limit_16(_matchContext, limits::patternHeapKibibytes);
}

QVRegularExpressionMatchContext::~QVRegularExpressionMatchContext() {
    pcre2_match_data_free_16(_matchData);
    pcre2_match_context_free_16(_matchContext);
}

void QVRegularExpressionMatchContext::prepareForRegularExpression(
    const QVRegularExpression &regularExpression) {
    prepareForGroups(regularExpression.numberOfCaptureGroups());
}

void QVRegularExpressionMatchContext::makeMatchData(NSUInteger size) {
    pcre2_match_data_free_16(_matchData);
    _matchDataSize = 0;
    _matchData = pcre2_match_data_create_16(static_cast<std::uint32_t>(size), nullptr);
    if (_matchData == nullptr)
        throw std::bad_alloc();
    _matchDataSize = size;
}

} // namespace quorvane
