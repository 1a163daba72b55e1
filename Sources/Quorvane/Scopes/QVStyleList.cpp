#include "Quorvane/Scopes/QVStyleList.h"

#include "Platform/Dispatch/ReadWriteLock.h"
#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSIndexSet.h"
#include "Quorvane/Styles/QVStyle.h"

namespace quorvane {

namespace {

/// One lock for all lists: it is held for the copy of a pointer, and a lock in each of a grammar's thousand
/// scopes would cost more than it saves.
ReadWriteLock &lock() {
    static ReadWriteLock shared;
    return shared;
}

const std::shared_ptr<const QVStyleList::Styles> &emptyStyles() {
    // Never destroyed: a grammar may be unpacked while the process ends.
    static const auto &empty = *new auto(std::make_shared<const QVStyleList::Styles>());
    return empty;
}

void checkIndex(std::size_t index, std::size_t bound) {
    if (index >= bound)
        throw NSException(NSRangeException,
                          NSString::stringWithFormat(u"Style index %lu is beyond the bounds", index));
}

} // namespace

QVStyleList::QVStyleList() : _styles(emptyStyles()) {}
QVStyleList::~QVStyleList() { noteChange(); }

std::atomic<std::uint64_t> &QVStyleList::sharedGeneration() {
    static std::atomic<std::uint64_t> generation = 0;
    return generation;
}

QVStyleList::QVStyleList(const QVStyleList &other)
    : _styles(other.styles()), _resolvedStyle(other.resolvedStyle()) {}

QVStyleList &QVStyleList::operator=(const QVStyleList &other) {
    publish(*other.styles());
    return *this;
}

std::shared_ptr<const QVStyleList::Styles> QVStyleList::styles() const {
    const ReadGuard guard(lock());
    return _styles;
}

std::shared_ptr<const QVStyle> QVStyleList::resolvedStyle() const {
    const ReadGuard guard(lock());
    return _resolvedStyle;
}

void QVStyleList::publish(Styles styles) {
    std::shared_ptr<const QVStyle> resolved =
        styles.empty() ? nullptr : QVStyle::styleByResolvingStyles(styles);
    auto list = styles.empty() ? emptyStyles() : std::make_shared<const Styles>(std::move(styles));
    {
        const WriteGuard guard(lock());
        // Swapped, so that what was there before is freed outside of the lock.
        _styles.swap(list);
        _resolvedStyle.swap(resolved);
    }
    noteChange();
}

void QVStyleList::setStyles(Styles newStyles) { publish(std::move(newStyles)); }

void QVStyleList::addStyle(std::shared_ptr<QVStyle> style) {
    Styles changed = *styles();
    changed.push_back(std::move(style));
    publish(std::move(changed));
}

void QVStyleList::insertStyle(std::shared_ptr<QVStyle> style, std::size_t atIndex) {
    Styles changed = *styles();
    checkIndex(atIndex, changed.size() + 1);
    changed.insert(changed.begin() + static_cast<std::ptrdiff_t>(atIndex), std::move(style));
    publish(std::move(changed));
}

void QVStyleList::removeStyleAtIndex(std::size_t index) { removeStylesAtIndexes({index}); }

void QVStyleList::removeStylesAtIndexes(const NSIndexSet &indexes) {
    const auto current = styles();
    if (!indexes.isEmpty())
        checkIndex(indexes.lastIndex(), current->size());
    Styles changed;
    for (std::size_t index = 0; index < current->size(); ++index)
        if (!indexes.containsIndex(index))
            changed.push_back((*current)[index]);
    publish(std::move(changed));
}

void QVStyleList::removeAllStyles() { publish({}); }

} // namespace quorvane
