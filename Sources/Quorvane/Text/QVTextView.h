#pragma once

#include "Platform/Foundation/NSString.h"

#include <optional>

namespace quorvane {

/// What a host's text view offers to undo steps: it is asked before they change the text, told behind it, and
/// shows the selection that they bring back. Ranges are those of the document ("backing"), or, in a view that
/// folds text away, of what it shows ("display"). Main thread.
class QV_EXPORT QVTextView {
public:
    virtual ~QVTextView() = default;

    /// Whether the text of the ranges may become these strings, one for each.
    virtual bool shouldChangeTextInBackingRanges(const std::vector<NSRange> &backingRanges,
                                                 const std::vector<NSString> &replacementStrings) = 0;
    virtual void didChangeText() = 0;
    /// In what the view shows.
    virtual void setSelectedRanges(const std::vector<NSRange> &selectedRanges) = 0;

    /// Nothing, as here, where both are the same.
    virtual std::optional<std::vector<NSRange>>
    convertDisplayRangesToBackingRanges(const std::vector<NSRange> & /*displayRanges*/) const {
        return std::nullopt;
    }
    virtual std::optional<std::vector<NSRange>>
    convertBackingRangesToDisplayRanges(const std::vector<NSRange> & /*backingRanges*/) const {
        return std::nullopt;
    }
    virtual void scrollRangeToVisible(NSRange /*range*/) {}
    /// What is typed next belongs to a new step.
    virtual void breakUndoCoalescing() {}
};

} // namespace quorvane
