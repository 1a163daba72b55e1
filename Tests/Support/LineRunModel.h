#pragma once

#include "Quorvane/Text/QVLineRunArray.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

/// The obvious twin of the line array: runs that are linked to each other, stand at a stored place, and are
/// all walked after an edit. It says step by step what the array answers in its own way. Bounds are the
/// caller's business.
namespace quorvane::test {

class LineRunModel {
public:
    struct Run {
        NSUInteger location = 0;
        NSUInteger length = 0;
        int flags = 0;
        std::u16string string;
        Run *previous = nullptr;
        Run *next = nullptr;
        bool isGone = false;

        NSUInteger end() const { return location + length; }
    };

    static constexpr int CR = 1;
    static constexpr int LF = 2;
    static constexpr int CRLF = 3;

    NSUInteger length = 0;
    std::vector<Run *> runs;

    LineRunModel() { runs.push_back(make({})); }

    /// By probing, as the search looks at the runs; the number of runs where none holds the position.
    NSUInteger find(NSUInteger index) const {
        if (index == length)
            return runs.size() - 1;
        NSInteger low = 0;
        NSInteger high = static_cast<NSInteger>(runs.size()) - 1;
        while (low <= high) {
            const NSInteger middle = (low + high) >> 1;
            const Run &run = *runs[static_cast<std::size_t>(middle)];
            if (index >= run.location && index < run.end())
                return static_cast<NSUInteger>(middle);
            if (index < run.location)
                high = middle - 1;
            else
                low = middle + 1;
        }
        return runs.size();
    }

    /// False where no run holds the edit's start; nothing has changed then.
    bool replace(NSRange range, std::u16string_view string) {
        const NSUInteger first = find(range.location);
        if (first == runs.size())
            return false;
        if (first + 1 != runs.size() || range.location != length)
            remove(range.location, range.location + range.length, first);
        const NSUInteger last = insert(range.location, string, first);
        finish(last, string.size() - range.length);
        return true;
    }

    /// The line named as the one before. One that has left the array counts for nothing.
    const Run *previousOf(NSUInteger number) const {
        const Run *previous = runs[number]->previous;
        if (number > 0 && previous != nullptr && previous->isGone)
            return runs[number - 1];
        return number == 0 ? nullptr : previous;
    }

private:
    Run *make(Run run) {
        _all.push_back(std::make_unique<Run>(std::move(run)));
        return _all.back().get();
    }
    void put(NSUInteger number, Run *run) {
        runs.insert(runs.begin() + static_cast<std::ptrdiff_t>(number), run);
    }
    void erase(NSUInteger number) {
        runs[number]->isGone = true;
        runs.erase(runs.begin() + static_cast<std::ptrdiff_t>(number));
    }
    static void link(Run *a, Run *b) {
        if (a != nullptr)
            a->next = b;
        if (b != nullptr)
            b->previous = a;
    }
    static void cut(std::u16string &string, NSUInteger from) {
        string.resize(std::min<NSUInteger>(from, string.size()));
    }

    void remove(NSUInteger L, NSUInteger E, NSUInteger first) {
        Run *P = first > 0 ? runs[first - 1] : nullptr;
        NSUInteger i = first;
        while (i < runs.size()) {
            Run *R = runs[i];
            const NSUInteger s = R->location;
            const NSUInteger e = R->end();
            if (E <= s)
                return;
            if (L < s && e <= E) {
                link(P, R->next);
                erase(i);
            } else if (L > s && e > E) {
                Run *T = make(
                    {E, e - E, R->flags, R->string.substr(std::min<NSUInteger>(L - s, R->string.size()))});
                cut(R->string, L - s);
                R->length = L - s;
                T->previous = R;
                T->next = R->next;
                if (R->next != nullptr)
                    R->next->previous = R; // meant: not the rest of the line
                R->next = T;
                put(i + 1, T);
                const bool wasPair = R->flags == CRLF;
                R->flags = wasPair && L == e - 1 ? CR : 0;
                if (wasPair && E == e - 1)
                    T->flags &= ~CR;
                return;
            } else if (L <= s && e > E) {
                if (E == e - 1 && R->flags == CRLF)
                    R->flags = 0;
                R->string.erase(0, R->length - (e - E));
                R->location = E;
                R->length = e - E;
                if (i == first) {
                    Run *empty = make({s, 0, 0, {}});
                    link(P, empty);
                    link(empty, R);
                    put(i, empty);
                }
                return;
            } else {
                R->flags = R->flags == CRLF && L == e - 1 ? CR : 0;
                R->length = L - s;
                cut(R->string, L - s);
                P = R;
                ++i;
            }
        }
    }

    struct Terminator {
        NSUInteger end;
        int flags;
    };
    static Terminator terminator(std::u16string_view S, NSUInteger from) {
        for (NSUInteger t = from; t < S.size(); ++t) {
            if (S[t] == u'\n')
                return {t + 1, LF};
            if (S[t] == u'\r')
                return t + 1 < S.size() && S[t + 1] == u'\n' ? Terminator{t + 2, CRLF}
                                                             : Terminator{t + 1, CR};
        }
        return {S.size(), 0};
    }

    NSUInteger insert(NSUInteger L, std::u16string_view S, NSUInteger first) {
        if (S.empty())
            return first;
        Run *C = runs[first];
        const NSUInteger cs = C->location;
        const NSUInteger cl = C->length;
        NSUInteger offset = 0;
        bool before = false;
        if (C->flags == CR && S[0] == u'\n') {
            C->string += u'\n';
            C->length += 1;
            C->flags = CRLF;
            offset = 1;
        }
        if (C->flags != 0) {
            before = cs == L;
        } else if (L == cs && cl != 0) {
            before = true;
        } else {
            const Terminator end = terminator(S, 0);
            C->string += S.substr(0, end.end);
            C->length += end.end;
            C->flags = end.flags;
            offset = end.end;
        }
        NSUInteger number = first;
        while (offset < S.size()) {
            const Terminator end = terminator(S, offset);
            Run *run = make({L + offset, end.end - offset, end.flags,
                             std::u16string(S.substr(offset, end.end - offset))});
            if (before) {
                link(number > 0 ? runs[number - 1] : nullptr, run);
                link(run, C);
                put(number, run);
            } else {
                run->next = C->next;
                link(C, run);
                put(++number, run);
            }
            before = false;
            C = run;
            offset = end.end;
        }
        return number;
    }

    void finish(NSUInteger number, NSUInteger delta) {
        Run *C = runs[number];
        if (number + 1 == runs.size()) {
            C->next = nullptr;
        } else {
            Run *N = runs[number + 1];
            if (C->flags == 0 || (C->flags == CR && N->flags == LF && N->length == 1)) {
                C->string += N->string;
                C->length += N->length;
                C->flags |= N->flags;
                erase(number + 1);
                N = number + 1 < runs.size() ? runs[number + 1] : nullptr;
            }
            link(C, N);
        }
        if (delta != 0)
            for (Run *run = C->next; run != nullptr; run = run->next)
                run->location += delta;
        Run *last = runs.back();
        if (last->flags != 0 && last->length > 0) {
            Run *empty = make({last->end(), 0, 0, {}});
            link(last, empty);
            put(runs.size(), empty);
        }
        length += delta;
    }

    /// Gone ones too: links to them can be left.
    std::vector<std::unique_ptr<Run>> _all;
};

} // namespace quorvane::test
