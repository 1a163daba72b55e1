#pragma once

#include "Quorvane/Text/QVMutableRLEArray.h"

#include <memory>
#include <vector>

/// The obvious twin of the run array: linked runs in a list, all of them walked after each edit. It says
/// step by step what the array answers in its own way, down to which of two equal values survives where runs
/// become one. Bounds are the caller's business.
namespace quorvane::test {

/// A value that is equal to others of its letter and still itself.
class Tag : public NSObject {
public:
    explicit Tag(char16_t itsLetter) : letter(itsLetter) {}
    bool isEqual(const NSObject *other) const override {
        const auto *tag = dynamic_cast<const Tag *>(other);
        return tag != nullptr && tag->letter == letter;
    }
    std::size_t hash() const override { return letter; }
    NSString description() const override { return NSString(std::u16string(1, letter)); }

    const char16_t letter;
};

using TagArray = QVMutableRLEArray<std::shared_ptr<Tag>>;

class RLEArrayModel {
public:
    using Value = std::shared_ptr<Tag>;
    struct Run {
        NSUInteger location;
        NSUInteger length;
        Value value;
        Run *next = nullptr;

        NSUInteger end() const { return location + length; }
        bool holds(NSUInteger index) const { return index >= location && index < end(); }
        bool equals(const Value &other) const { return value ? value->isEqual(other.get()) : !other; }
    };

    NSUInteger count = 0;
    std::vector<std::unique_ptr<Run>> runs;

    NSUInteger find(NSUInteger index) const {
        NSUInteger i = 0;
        while (!runs[i]->holds(index))
            ++i;
        return i;
    }

    void insert(const Value &object, NSUInteger location, NSUInteger length) {
        if (length == 0)
            return;
        if (location == count) {
            insertAtTail(object, location, length);
            count += length;
            return;
        }
        const NSUInteger i = find(location);
        Run &run = *runs[i];
        const bool start = run.location == location;
        if (start && i > 0 && runs[i - 1]->equals(object)) {
            runs[i - 1]->length += length;
            pass(i, length);
        } else if (run.equals(object)) {
            run.length += length;
            pass(i + 1, length);
        } else if (start) {
            put(i, {location, length, object});
            link(i);
            pass(i + 1, length);
        } else {
            split(i, location - run.location, location, length, object);
            pass(i + 3, length);
        }
        count += length;
    }

    void remove(NSRange range) {
        if (range.length == 0)
            return;
        NSUInteger i = find(range.location);
        removeCore(range, i);
        pass(i, 0 - range.length);
        count -= range.length;
    }

    void replace(NSRange range, const Value &object, NSUInteger length) {
        const NSUInteger location = range.location;
        if (range.length == 0 && length == 0)
            return;
        if (location == count && range.length == 0) {
            insertAtTail(object, location, length);
            count = location + length;
            return;
        }
        NSUInteger i = find(location);
        if (range.length != 0)
            removeCore(range, i);
        const NSUInteger rest = count - range.length;
        if (length != 0 && range.length != 0 && i == 0) {
            put(0, {location, length, object});
            if (runs.size() > 1 && runs[0]->equals(runs[1]->value)) {
                runs[0]->length += runs[1]->length;
                runs[0]->next = runs[1]->next;
                runs.erase(runs.begin() + 1);
            } else {
                link(0);
            }
            i = 1;
        } else if (length != 0) {
            NSUInteger shift = 0;
            NSUInteger anchor = i;
            chooseAnchor(range, anchor, shift);
            if (rest == location) {
                insertAtTail(object, location, length);
                i = anchor + 1;
            } else {
                Run &run = *runs[anchor];
                const NSUInteger actual = run.location + shift;
                if (actual == location && anchor > 0 && runs[anchor - 1]->equals(object)) {
                    runs[anchor - 1]->length += length;
                    i = anchor;
                } else if (run.equals(object)) {
                    run.location += shift;
                    run.length += length;
                    i = anchor + 1;
                } else if (actual == location) {
                    put(anchor, {location, length, object});
                    link(anchor);
                    i = anchor + 1;
                } else {
                    split(anchor, location - actual, location, length, object);
                    i = anchor + 3;
                }
            }
        }
        if (length != range.length)
            pass(i, length - range.length);
        count = rest + length;
    }

    void replace(NSRange range, const RLEArrayModel &source, NSRange from) {
        const NSUInteger location = range.location;
        const NSUInteger length = from.length;
        if (range.length == 0 && length == 0)
            return;
        if (location == count && range.length == 0) {
            insertAtTail(source, from);
            count = location + length;
            return;
        }
        NSUInteger i = find(location);
        if (range.length != 0)
            removeCore(range, i);
        const NSUInteger rest = count - range.length;
        if (length != 0 && range.length != 0 && i == 0) {
            Run *last = nullptr;
            for (const auto &part : source.clipped({0, length})) {
                put(i, {location + part.location, part.length, part.value});
                if (last != nullptr)
                    last->next = runs[i].get();
                last = runs[i].get();
                ++i;
            }
            joinFollower(last, i);
        } else if (length != 0) {
            NSUInteger shift = 0;
            NSUInteger anchor = i;
            chooseAnchor(range, anchor, shift);
            if (rest == location) {
                i = anchor + insertAtTail(source, from);
            } else {
                i = anchor;
                putInMiddle(location, shift, source, from, i);
            }
        }
        if (length != range.length)
            pass(i, length - range.length);
        count = rest + length;
    }

    /// The runs of a range, cut to it, with locations of this array.
    std::vector<Run> clipped(NSRange range) const {
        std::vector<Run> parts;
        for (const auto &run : runs) {
            const NSRange part = NSIntersectionRange({run->location, run->length}, range);
            if (part.length != 0)
                parts.push_back({part.location, part.length, run->value});
        }
        return parts;
    }

    /// The walk as it re-reads: the callback may edit this model.
    template <typename Callback> void enumerate(NSRange range, std::uint64_t options, Callback callback) {
        if (runs.empty())
            return;
        if (options & QVRLEArrayEnumerationReverse)
            enumerateBackward(range, (options & QVRLEArrayEnumerationWholeRuns) != 0, callback);
        else
            enumerateForward(range, (options & QVRLEArrayEnumerationWholeRuns) != 0, callback);
    }

private:
    template <typename Callback> void enumerateForward(NSRange range, bool whole, Callback callback) {
        NSUInteger p = range.location;
        NSUInteger n = range.length;
        NSUInteger i = find(p == count ? p - 1 : p);
        while (i < runs.size()) {
            const Run run = *runs[i];
            if (n != 0 && run.end() <= p) {
                ++i;
                continue;
            }
            if (n != 0 && run.location >= p + n)
                return;
            const NSRange full{run.location, run.length};
            const NSRange handed = whole ? full : NSIntersectionRange(full, {p, n});
            if (handed.length == 0)
                return;
            bool stop = false;
            callback(run.value, handed, stop);
            if (stop || p + n <= NSMaxRange(handed))
                return;
            n = p + n - NSMaxRange(handed);
            p = NSMaxRange(handed);
            i = i > 0 ? i - 1 : 0;
        }
    }

    template <typename Callback> void enumerateBackward(NSRange range, bool whole, Callback callback) {
        const NSUInteger p = range.location;
        NSUInteger n = range.length;
        NSUInteger i = p + n == 0 ? 0 : find(p + n - 1);
        for (;;) {
            if (runs.empty())
                return;
            // A run that is gone by number: the last one there is.
            i = std::min<NSUInteger>(i, runs.size() - 1);
            const Run run = *runs[i];
            if (n != 0 && run.location >= p + n) {
                if (i == 0)
                    return;
                --i;
                continue;
            }
            if (n != 0 && run.end() <= p)
                return;
            const NSRange full{run.location, run.length};
            const NSRange handed = whole ? full : NSIntersectionRange(full, {p, n});
            if (handed.length == 0)
                return;
            bool stop = false;
            callback(run.value, handed, stop);
            if (stop || handed.location <= p)
                return;
            n = handed.location - p;
        }
    }

    void put(NSUInteger i, Run run) {
        runs.insert(runs.begin() + static_cast<std::ptrdiff_t>(i), std::make_unique<Run>(std::move(run)));
    }
    /// Links a new run between its neighbours.
    void link(NSUInteger i) {
        if (i > 0)
            runs[i - 1]->next = runs[i].get();
        runs[i]->next = i + 1 < runs.size() ? runs[i + 1].get() : nullptr;
    }

    void pass(NSUInteger i, NSUInteger change) {
        if (i >= runs.size())
            return;
        for (Run *run = runs[i].get(); run != nullptr; run = run->next)
            run->location += change;
    }

    void insertAtTail(const Value &object, NSUInteger location, NSUInteger length) {
        if (!runs.empty() && runs.back()->equals(object)) {
            runs.back()->length += length;
            return;
        }
        put(runs.size(), {location, length, object});
        link(runs.size() - 1);
    }

    NSUInteger insertAtTail(const RLEArrayModel &source, NSRange from) {
        NSUInteger added = 0;
        NSUInteger location = runs.empty() ? 0 : runs.back()->end();
        for (const Run &part : source.clipped(from)) {
            if (part.location == from.location && !runs.empty() && runs.back()->equals(part.value)) {
                runs.back()->length += part.length;
            } else {
                put(runs.size(), {location, part.length, part.value});
                link(runs.size() - 1);
                ++added;
            }
            location += part.length;
        }
        return added;
    }

    void split(NSUInteger i, NSUInteger head, NSUInteger location, NSUInteger length, const Value &object) {
        Run &run = *runs[i];
        const NSUInteger rest = run.length - head;
        const Value value = run.value;
        run.length = head;
        put(i + 1, {location, length, object});
        put(i + 2, {location + length, rest, value});
        link(i + 1);
        link(i + 2);
    }

    void removeCore(NSRange range, NSUInteger &i) {
        const NSUInteger location = range.location;
        const NSUInteger end = location + range.length;
        if (runs[i]->location < location) {
            Run &run = *runs[i];
            run.length = end > run.end() ? location - run.location : run.length - range.length;
            ++i;
        }
        const NSUInteger first = i;
        NSUInteger gone = 0;
        const auto eraseGone = [&] {
            runs.erase(runs.begin() + static_cast<std::ptrdiff_t>(first),
                       runs.begin() + static_cast<std::ptrdiff_t>(first + gone));
            i = first;
        };
        for (;; ++i) {
            if (i >= runs.size() || runs[i]->location > end) {
                eraseGone();
                return;
            }
            Run &run = *runs[i];
            if (run.end() > end) {
                const NSUInteger tail = run.end() - end;
                if (first > 0 && runs[first - 1]->equals(run.value)) {
                    runs[first - 1]->length += tail;
                    runs[first - 1]->next = run.next;
                    ++gone;
                } else if (run.location < end) {
                    run.location = end;
                    run.length = tail;
                }
                eraseGone();
                return;
            }
            ++gone;
            if (first > 0)
                runs[first - 1]->next = run.next;
        }
    }

    void chooseAnchor(NSRange range, NSUInteger &anchor, NSUInteger &shift) const {
        if (range.length == 0)
            return;
        if (runs[anchor - 1]->holds(range.location))
            --anchor;
        else
            shift = 0 - range.length;
    }

    /// The run behind goes into the last new one, or is linked to it.
    void joinFollower(Run *last, NSUInteger i) {
        if (i < runs.size() && last->equals(runs[i]->value)) {
            last->length += runs[i]->length;
            last->next = runs[i]->next;
            runs.erase(runs.begin() + static_cast<std::ptrdiff_t>(i));
        } else {
            last->next = i < runs.size() ? runs[i].get() : nullptr;
        }
    }

    void putInMiddle(NSUInteger location, NSUInteger shift, const RLEArrayModel &source, NSRange from,
                     NSUInteger &i) {
        Run *const anchor = runs[i].get();
        const Value anchorValue = anchor->value;
        const NSUInteger actual = anchor->location + shift;
        const NSUInteger rest = actual + anchor->length - location;
        const bool isInside = location != actual;
        NSUInteger position = location;
        Run *last = nullptr;
        for (const Run &part : source.clipped(from)) {
            if (last == nullptr && isInside) {
                anchor->length = location - actual;
                ++i;
                if (anchor->equals(part.value)) {
                    anchor->length += part.length;
                    last = anchor;
                }
            } else if (last == nullptr && i > 0 && runs[i - 1]->equals(part.value)) {
                last = runs[i - 1].get();
                last->length += part.length;
            }
            if (last == nullptr || part.location != from.location) {
                put(i, {position, part.length, part.value});
                if (i > 0)
                    runs[i - 1]->next = runs[i].get();
                last = runs[i].get();
                ++i;
            }
            position += part.length;
        }
        if (!isInside) {
            joinFollower(last, i);
            return;
        }
        if (last->equals(anchorValue)) {
            last->length += rest;
        } else {
            put(i, {position, rest, anchorValue});
            last->next = runs[i].get();
            last = runs[i].get();
            ++i;
        }
        last->next = i < runs.size() ? runs[i].get() : nullptr;
    }
};

} // namespace quorvane::test
