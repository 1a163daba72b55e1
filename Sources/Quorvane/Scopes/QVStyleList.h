#pragma once

#include "Platform/Foundation/QVExport.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace quorvane {

class NSIndexSet;
class QVStyle;

/// The theme styles of a scope or a capture, and what they come to. Styles are replaced when the theme
/// changes while parses and colouring read on other threads, so what is read is one immutable list and one
/// resolved style, each swapped as a whole under a lock.
class QV_EXPORT QVStyleList {
public:
    using Styles = std::vector<std::shared_ptr<QVStyle>>;

    QVStyleList();
    ~QVStyleList();
    /// A copy starts with the same styles.
    QVStyleList(const QVStyleList &other);
    QVStyleList &operator=(const QVStyleList &other);

    /// The list as it stands now; it never changes after it was handed out. Never null.
    std::shared_ptr<const Styles> styles() const;
    void setStyles(Styles styles);
    void addStyle(std::shared_ptr<QVStyle> style);
    /// An index up to the count; `NSRangeException` beyond it, here and below.
    void insertStyle(std::shared_ptr<QVStyle> style, std::size_t atIndex);
    void removeStyleAtIndex(std::size_t index);
    void removeStylesAtIndexes(const NSIndexSet &indexes);
    void removeAllStyles();

    /// Changes whenever something that is remembered of scopes and captures by their addresses may be wrong:
    /// when styles or lexical classes change, and when one of them goes. Any thread.
    static std::uint64_t generation() { return sharedGeneration().load(std::memory_order_acquire); }

    /// All styles merged, null where there are none.
    std::shared_ptr<const QVStyle> resolvedStyle() const;

protected:
    static void noteChange() { sharedGeneration().fetch_add(1, std::memory_order_acq_rel); }

private:
    static std::atomic<std::uint64_t> &sharedGeneration();
    void publish(Styles styles);

    std::shared_ptr<const Styles> _styles;
    std::shared_ptr<const QVStyle> _resolvedStyle;
};

} // namespace quorvane
