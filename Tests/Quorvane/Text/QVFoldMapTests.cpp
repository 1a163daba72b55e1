#include "Quorvane/Text/QVFoldMap.h"

#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

#include <random>

using namespace quorvane;

namespace {

struct PlainFold {
    NSUInteger viewLocation;
    NSRange range;
    friend bool operator==(const PlainFold &, const PlainFold &) = default;
    friend std::ostream &operator<<(std::ostream &stream, const PlainFold &fold) {
        return stream << fold.viewLocation << ": " << fold.range.location << "+" << fold.range.length;
    }
};

std::vector<PlainFold> foldsOf(const QVFoldMap &map) {
    std::vector<PlainFold> folds;
    for (NSUInteger index = 0; index < map.numberOfFolds(); ++index)
        folds.push_back({map.viewLocation(index), map.range(index)});
    return folds;
}

} // namespace

TEST(QVFoldMap, WithoutFoldsPlacesAreTheSame) {
    const QVFoldMap map(10);
    EXPECT_EQ(map.viewLocationForPosition(4, true), 4u);
    EXPECT_EQ(map.positionForViewLocation(4), 4u);
    EXPECT_EQ(map.firstFoldAtOrBehind(0), 0u);
    EXPECT_EQ(map.foldAt(4), std::nullopt);
    EXPECT_TRUE(map.isSound());
}

TEST(QVFoldMap, FoldsLearnTheirRangesWhenTheyAreAsked) {
    QVFoldMap map(20);
    const auto inner = QVTextFoldAttachment::initWithRange({6, 2}, {});
    map.replace({6, 2}, 1, {{inner, 6, {6, 2}}});
    const auto outer = QVTextFoldAttachment::initWithRange({5, 4}, {inner});
    map.replace({5, 3}, 1, {{outer, 5, {5, 4}}});
    map.moveFoldsFrom(0, 7);
    map.moveFoldsFrom(0, -3);
    EXPECT_EQ(inner->range(), (NSRange{10, 2}));
    EXPECT_EQ(outer->range(), (NSRange{9, 4}));
    map.changeTextOfFold(0, {11, 0}, 5);
    EXPECT_EQ(map.range(0), (NSRange{9, 9}));
    EXPECT_EQ(inner->range(), (NSRange{10, 7}));
}

TEST(QVFoldMap, FoldsThatLeaveKeepTheirRanges) {
    const auto fold = QVTextFoldAttachment::initWithRange({6, 3}, {});
    {
        QVFoldMap map(20);
        map.replace({6, 3}, 1, {{fold, 6, {6, 3}}});
        map.moveFoldsFrom(0, 4);
        map.replace({6, 1}, 3, {});
        map.moveFoldsFrom(0, 4);
        EXPECT_EQ(fold->range(), (NSRange{10, 3}));
        map.replace({6, 3}, 1, {{fold, 6, {10, 3}}});
        map.moveFoldsFrom(0, 2);
    }
    EXPECT_EQ(fold->range(), (NSRange{12, 3}));
}

TEST(QVFoldMap, BehavesAsAListOfFolds) {
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&](NSUInteger bound) { return static_cast<NSUInteger>(random() % bound); };
        // A view of blanks: between folds, places go together in both texts.
        QVFoldMap map(300, 2 + below(6));
        std::vector<PlainFold> model;
        NSUInteger count = 300;
        for (int step = 0; step < 600; ++step) {
            const NSUInteger location = below(count + 1);
            const NSRange range{location, std::min(below(8), count - location)};
            const auto position = [&](NSUInteger view) {
                NSUInteger place = view;
                for (const PlainFold &fold : model)
                    if (fold.viewLocation < view)
                        place += fold.range.length - 1;
                return place;
            };
            const auto shift = [&](NSUInteger view, NSUInteger viewChange, NSUInteger change) {
                for (PlainFold &fold : model)
                    if (fold.viewLocation >= view) {
                        fold.viewLocation += viewChange;
                        fold.range.location += change;
                    }
            };
            switch (below(3)) {
            case 0: // Fold it.
                if (range.length >= 2) {
                    const NSRange hidden{position(location),
                                         position(NSMaxRange(range)) - position(location)};
                    map.replace(range, 1,
                                {{QVTextFoldAttachment::initWithRange(hidden, {}), location, hidden}});
                    std::erase_if(model, [&](const PlainFold &fold) {
                        return NSLocationInRange(fold.viewLocation, range);
                    });
                    shift(location, 1 - range.length, 0);
                    model.push_back({location, hidden});
                    std::ranges::sort(model, {}, &PlainFold::viewLocation);
                    count -= range.length - 1;
                }
                break;
            case 1: { // Insert text.
                const NSUInteger length = below(5);
                map.moveFoldsFrom(map.firstFoldAtOrBehind(location), static_cast<NSInteger>(length));
                map.replace({location, 0}, length, {});
                shift(location, length, length);
                count += length;
                break;
            }
            default: // Change the text of a fold.
                if (!model.empty()) {
                    const NSUInteger index = below(model.size());
                    const NSRange hidden = model[index].range;
                    const NSInteger change = below(2) == 0 && hidden.length > 1 ? -1 : 2;
                    map.changeTextOfFold(index, {hidden.location, 1}, change);
                    model[index].range.length += static_cast<NSUInteger>(change);
                    for (std::size_t behind = index + 1; behind < model.size(); ++behind)
                        model[behind].range.location += static_cast<NSUInteger>(change);
                }
            }
            ASSERT_EQ(map.count(), count) << "step " << step;
            ASSERT_EQ(foldsOf(map), model) << "step " << step;
            if (below(4) == 0) {
                ASSERT_TRUE(map.isSound()) << "step " << step;
            }
            for (const PlainFold &fold : model) {
                ASSERT_EQ(map.positionForViewLocation(fold.viewLocation), fold.range.location);
                ASSERT_EQ(map.viewLocationForPosition(fold.range.location, true), fold.viewLocation);
                ASSERT_EQ(map.viewLocationForPosition(NSMaxRange(fold.range), false), fold.viewLocation + 1);
            }
        }
    }
}
