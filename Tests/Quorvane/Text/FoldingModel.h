#pragma once

#include "Platform/Foundation/NSRange.h"

#include <memory>
#include <string>
#include <vector>

/// What folding means, written down as plainly as can be: a document is a string, a view on it a list of
/// trees of ranges. Tests hold the storages against it.
namespace quorvane::test {

struct ModelFold {
    NSRange range;
    std::vector<ModelFold> subfolds = {};

    /// False where the text is gone, or an end of it was crossed. A subfold that is gone is told again in the
    /// place of the one behind it.
    bool textChanged(NSRange edit, NSInteger change) {
        const NSUInteger start = range.location;
        const NSUInteger end = NSMaxRange(range);
        const bool isInside = edit.length > 0 ? edit.location >= start && NSMaxRange(edit) <= end
                                              : edit.location > start && edit.location < end;
        if (isInside) {
            range.length = static_cast<NSUInteger>(static_cast<NSInteger>(range.length) + change);
            if (range.length == 0)
                return false;
            std::vector<ModelFold *> read;
            for (ModelFold &subfold : subfolds)
                read.push_back(&subfold);
            std::vector<std::size_t> left(subfolds.size());
            for (std::size_t index = 0; index < left.size(); ++index)
                left[index] = index;
            for (std::size_t index = 0; index < left.size();) {
                if (read[index]->textChanged(edit, change))
                    ++index;
                else
                    left.erase(left.begin() + static_cast<std::ptrdiff_t>(index));
            }
            std::vector<ModelFold> kept;
            for (const std::size_t index : left)
                kept.push_back(subfolds[index]);
            subfolds = std::move(kept);
            return true;
        }
        if (end <= edit.location)
            return true;
        if (NSMaxRange(edit) <= start) {
            range.location = static_cast<NSUInteger>(static_cast<NSInteger>(start) + change);
            for (ModelFold &subfold : subfolds)
                subfold.textChanged(edit, change);
            return true;
        }
        return false;
    }
};

/// The outermost folds of one view, in the order of the text.
class ModelView {
public:
    std::vector<ModelFold> folds;

    std::u16string text(const std::u16string &document) const {
        std::u16string text;
        NSUInteger location = 0;
        for (const ModelFold &fold : folds) {
            text += document.substr(location, fold.range.location - location) + u'\uFFFC';
            location = NSMaxRange(fold.range);
        }
        return text + document.substr(location);
    }

    /// The document's place of each character of the view, and its end.
    std::vector<NSUInteger> places(NSUInteger length) const {
        std::vector<NSUInteger> places;
        NSUInteger location = 0;
        for (const ModelFold &fold : folds) {
            for (; location < fold.range.location; ++location)
                places.push_back(location);
            places.push_back(location);
            location = NSMaxRange(fold.range);
        }
        for (; location <= length; ++location)
            places.push_back(location);
        return places;
    }

    NSUInteger fromBacking(NSUInteger position, bool behind) const {
        NSUInteger hidden = 0;
        for (const ModelFold &fold : folds) {
            const NSUInteger start = fold.range.location;
            if (position > start && position < NSMaxRange(fold.range))
                return start - hidden + (behind ? 1 : 0);
            if (position >= NSMaxRange(fold.range))
                hidden += fold.range.length - 1;
        }
        return position - hidden;
    }

    /// The range is the view's.
    void fold(NSRange range, NSUInteger length) {
        if (range.length < 2)
            return;
        const auto at = places(length);
        ModelFold made{{at[range.location], at[NSMaxRange(range)] - at[range.location]}};
        std::vector<ModelFold> outside;
        for (const ModelFold &fold : folds) {
            const bool isIn =
                fold.range.location >= made.range.location && fold.range.location < NSMaxRange(made.range);
            (isIn ? made.subfolds : outside).push_back(fold);
        }
        folds = std::move(outside);
        insert(std::move(made));
    }

    /// The fold that begins there, with as many levels opened; 0 is all.
    void unfold(NSUInteger place, NSUInteger depth) {
        for (std::size_t index = 0; index < folds.size(); ++index) {
            if (folds[index].range.location != place)
                continue;
            const ModelFold opened = folds[index];
            folds.erase(folds.begin() + static_cast<std::ptrdiff_t>(index));
            keep(opened, depth, opened.range);
            return;
        }
    }

    void willReplace(NSRange edit) {
        std::vector<ModelFold> left;
        for (const ModelFold &fold : folds) {
            const NSUInteger start = fold.range.location;
            const NSUInteger end = NSMaxRange(fold.range);
            const bool isInside = edit.location >= start && NSMaxRange(edit) <= end;
            const bool overlaps = edit.location < end && NSMaxRange(edit) > start;
            const bool opens = edit == fold.range || (edit.length > 0 && !isInside && overlaps);
            if (!opens)
                left.push_back(fold);
        }
        folds = std::move(left);
    }
    void didReplace(NSRange edit, NSInteger change) {
        for (ModelFold &fold : folds)
            fold.textChanged(edit, change);
    }

private:
    void insert(ModelFold fold) {
        std::size_t index = 0;
        while (index < folds.size() && folds[index].range.location < fold.range.location)
            ++index;
        folds.insert(folds.begin() + static_cast<std::ptrdiff_t>(index), std::move(fold));
    }
    void keep(const ModelFold &opened, NSUInteger depth, NSRange whole) {
        NSUInteger end = whole.location;
        keep(opened, depth, whole, end);
    }
    /// Those that fit in; one that missed an edit may not.
    void keep(const ModelFold &opened, NSUInteger depth, NSRange whole, NSUInteger &end) {
        for (const ModelFold &fold : opened.subfolds) {
            if (depth == 1) {
                if (fold.range.length > 0 && fold.range.location >= end &&
                    NSMaxRange(fold.range) <= NSMaxRange(whole)) {
                    insert(fold);
                    end = NSMaxRange(fold.range);
                }
            } else if (depth != 0) {
                keep(fold, depth - 1, whole, end);
            }
        }
    }
};

} // namespace quorvane::test
