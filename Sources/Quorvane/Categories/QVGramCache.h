#pragma once

#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Categories/QVGrams.h"

#include <mutex>

namespace quorvane {

/// Remembers the grams of names: a table in which each name has one place, which it takes from whoever had
/// it. That costs little even for names that are asked for only once, as when a whole index is read. Any
/// thread.
class QVGramCache {
public:
    QVGramCache();

    /// Null for an unknown name.
    QVGrams gramsForKey(const NSString &key);
    /// Long texts are not kept: they are no names, and a few of them would take more than all else.
    void setGrams(QVGrams grams, NSString forKey);
    /// How many names are remembered.
    std::size_t count() const;

private:
    struct Entry {
        NSString key;
        QVGrams grams;
    };
    Entry &entryForKey(const NSString &key) { return _entries[key.hash() % _entries.size()]; }

    mutable std::mutex _mutex;
    std::vector<Entry> _entries;
};

} // namespace quorvane
