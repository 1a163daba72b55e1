#include "Quorvane/Text/QVFoldingTextStorage.h"
#include "Quorvane/Text/QVTextFoldAttachment.h"
#include "Tests/Quorvane/Text/FoldingModel.h"
#include "Tests/Quorvane/Text/StorageFixtures.h"

#include <gtest/gtest.h>

#include <random>

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::u16string wholeText(const NSAttributedString &string) {
    return string.string().substringWithRange({0, string.length()});
}

/// Knows a storage's text from what it is told alone.
class Follower final : public QVTextStorageChangeObserver {
public:
    explicit Follower(const QVTextStorage &storage) : text(wholeText(storage)) {}

    void textStorageDidProcessChanges(QVTextStorage &storage, NSTextStorageEditActions mask, NSRange range,
                                      NSInteger changeInLength) override {
        if ((mask & NSTextStorageEditedCharacters) == 0)
            return;
        const auto oldLength = static_cast<NSUInteger>(static_cast<NSInteger>(range.length) - changeInLength);
        text.replace(range.location, oldLength, storage.string().substringWithRange(range));
    }

    std::u16string text;
};

/// A document with three views, and the model of each.
class FoldingLaw {
public:
    explicit FoldingLaw(std::uint32_t seed) : _random(seed) {
        _document = std::u16string(60 + below(60), u'.');
        for (char16_t &unit : _document)
            unit = letter();
        _storage = QVConcreteTextStorage::initWithString(_document);
        for (int index = 0; index < 3; ++index) {
            _views.push_back(QVFoldingTextStorage::initWithBackingStorage(_storage));
            _followers.push_back(std::make_shared<Follower>(*_views.back()));
            _views.back()->addChangeObserver(_followers.back());
            _models.emplace_back();
        }
    }

    void step() {
        const std::size_t number = below(_views.size());
        QVFoldingTextStorage &view = *_views[number];
        ModelView &model = _models[number];
        switch (below(8)) {
        case 0:
        case 1: {
            const NSRange range = rangeIn(view.length(), 30);
            const NSRange folded = view.foldRange(range);
            ASSERT_EQ(folded, range.length < 2 ? range : (NSRange{range.location, 1}));
            model.fold(range, _document.size());
            break;
        }
        case 2:
            if (!model.folds.empty()) {
                const NSUInteger place = model.folds[below(model.folds.size())].range.location;
                const NSUInteger depth = below(4) == 0 ? NSNotFound : below(4);
                view.unfoldAtPosition(model.fromBacking(place, false), depth);
                model.unfold(place, depth);
            }
            break;
        case 3: {
            const NSRange range = rangeIn(view.length(), 40);
            const NSUInteger depth = below(3);
            const auto places = model.places(_document.size());
            const NSRange backing{places[range.location], places[NSMaxRange(range)] - places[range.location]};
            ASSERT_EQ(view.unfoldAllInRange(range, depth), backing);
            for (const ModelFold &fold : std::vector(model.folds))
                if (fold.range.location >= backing.location && fold.range.location < NSMaxRange(backing))
                    model.unfold(fold.range.location, depth);
            break;
        }
        case 4: {
            // Through a view.
            const NSRange range = rangeIn(view.length(), 6);
            const auto places = model.places(_document.size());
            const std::u16string text = someText();
            view.replaceCharactersInRange(range, text);
            followEdit({places[range.location], places[NSMaxRange(range)] - places[range.location]}, text);
            break;
        }
        case 5: {
            const NSRange range = rangeIn(_document.size(), 40);
            _storage->addAttribute(NSToolTipAttributeName, below(4), range);
            break;
        }
        default: {
            const bool brackets = below(3) == 0;
            if (brackets)
                _views[below(3)]->beginEditing();
            for (NSUInteger edits = brackets ? 1 + below(4) : 1; edits > 0; --edits) {
                const NSRange range = editRange();
                const std::u16string text = someText();
                if (below(2) == 0)
                    _storage->replaceCharactersInRange(range, text);
                else
                    _storage->replaceCharactersInRange(range,
                                                       *NSAttributedString::initWithString(text, mark(5)));
                followEdit(range, text);
            }
            if (brackets)
                _storage->endEditing();
        }
        }
    }

    void check() {
        ASSERT_EQ(wholeText(*_storage), _document);
        for (std::size_t number = 0; number < _views.size(); ++number) {
            SCOPED_TRACE(testing::Message() << "view " << number);
            ASSERT_NO_FATAL_FAILURE(checkView(*_views[number], _models[number]));
            ASSERT_EQ(_followers[number]->text, wholeText(*_views[number]));
        }
    }

private:
    NSUInteger below(NSUInteger bound) { return _random() % bound; }
    char16_t letter() { return u"abcdefg \n"[below(9)]; }
    std::u16string someText() {
        std::u16string text;
        for (NSUInteger count = below(3) == 0 ? below(12) : below(3); count > 0; --count)
            text += letter();
        return text;
    }
    NSRange rangeIn(NSUInteger length, NSUInteger most) {
        const NSUInteger location = below(length + 1);
        return {location, std::min(below(most + 1), length - location)};
    }
    /// Inside of folds, at their edges, across them, all around them, or anywhere.
    NSRange editRange() {
        std::vector<NSUInteger> edges{0, _document.size()};
        const auto gather = [&](const auto &self, const std::vector<ModelFold> &folds) -> void {
            for (const ModelFold &fold : folds) {
                edges.push_back(fold.range.location);
                edges.push_back(NSMaxRange(fold.range));
                self(self, fold.subfolds);
            }
        };
        for (const ModelView &model : _models)
            gather(gather, model.folds);
        const auto place = [&] {
            if (below(4) == 0)
                return below(_document.size() + 1);
            const NSUInteger near = edges[below(edges.size())] + below(3);
            return std::min<NSUInteger>(near > 0 ? near - 1 : 0, _document.size());
        };
        const NSUInteger first = place();
        const NSUInteger second = below(2) == 0 ? first : place();
        // Not the whole document at once too often.
        const NSUInteger length = std::max(first, second) - std::min(first, second);
        return {std::min(first, second), length > 40 ? below(5) % (length + 1) : length};
    }
    void followEdit(NSRange range, const std::u16string &text) {
        const auto change = static_cast<NSInteger>(text.size()) - static_cast<NSInteger>(range.length);
        for (ModelView &model : _models)
            model.willReplace(range);
        _document.replace(range.location, range.length, text);
        for (ModelView &model : _models)
            model.didReplace(range, change);
    }

    void checkView(const QVFoldingTextStorage &view, const ModelView &model) {
        ASSERT_EQ(wholeText(view), model.text(_document));
        const auto places = model.places(_document.size());
        for (NSUInteger position = 0; position < places.size(); ++position)
            ASSERT_EQ(view.convertPositionToBacking(position), places[position]) << position;
        for (NSUInteger position = 0; position <= _document.size(); ++position) {
            ASSERT_EQ(view.convertPositionFromBacking(position), model.fromBacking(position, false))
                << position;
            ASSERT_EQ(view.convertPositionFromBacking(position, 1), model.fromBacking(position, true))
                << position;
        }
        for (int probe = 0; probe < 10; ++probe) {
            const NSRange backing = rangeIn(_document.size(), 30);
            const NSUInteger start = model.fromBacking(backing.location, false);
            ASSERT_EQ(view.convertRangeFromBacking(backing),
                      (NSRange{start, model.fromBacking(NSMaxRange(backing), false) - start}));
            const bool isFolded = std::ranges::any_of(model.folds, [&](const ModelFold &fold) {
                return NSUnionRange(fold.range, backing) == fold.range;
            });
            ASSERT_EQ(view.isRangeFolded(backing), isFolded) << drawn(backing);
        }
        std::size_t stretches = 0;
        NSUInteger end = 0;
        for (const ModelFold &fold : model.folds) {
            stretches += fold.range.location > end ? 1 : 0;
            end = NSMaxRange(fold.range);
        }
        stretches += end < _document.size() ? 1 : 0;
        ASSERT_EQ(view.foldedRanges(), std::vector<NSRange>(stretches, NSRange{0, 0}));
        ASSERT_NO_FATAL_FAILURE(checkAttributes(view, model, places));
    }

    void checkAttributes(const QVFoldingTextStorage &view, const ModelView &model,
                         const std::vector<NSUInteger> &places) {
        std::size_t next = 0;
        for (NSUInteger position = 0; position < view.length(); ++position) {
            const NSAttributes attributes = view.attributesAtIndex(position);
            if (next < model.folds.size() && model.folds[next].range.location == places[position]) {
                const auto *const fold =
                    attributes.objectForKey<QVTextFoldAttachment>(NSAttachmentAttributeName);
                ASSERT_NE(fold, nullptr) << position;
                ASSERT_EQ(attributes.count(), 1u);
                ASSERT_NO_FATAL_FAILURE(checkFold(*fold, model.folds[next]));
                ++next;
            } else {
                ASSERT_EQ(attributes, _storage->attributesAtIndex(places[position])) << position;
            }
        }
    }

    void checkFold(const QVTextFoldAttachment &fold, const ModelFold &model) {
        ASSERT_EQ(fold.range(), model.range);
        ASSERT_EQ(fold.subfolds().size(), model.subfolds.size());
        for (std::size_t index = 0; index < model.subfolds.size(); ++index)
            ASSERT_NO_FATAL_FAILURE(checkFold(*fold.subfolds()[index], model.subfolds[index]));
    }

    std::mt19937 _random;
    std::u16string _document;
    std::shared_ptr<QVConcreteTextStorage> _storage;
    std::vector<std::shared_ptr<QVFoldingTextStorage>> _views;
    std::vector<std::shared_ptr<Follower>> _followers;
    std::vector<ModelView> _models;
};

} // namespace

TEST(FoldingLaw, ViewsShowTheDocumentWithItsFoldsCollapsedWhateverHappens) {
    for (std::uint32_t seed = 1; seed <= 100; ++seed) {
        SCOPED_TRACE(seed);
        FoldingLaw law(seed);
        ASSERT_NO_FATAL_FAILURE(law.check());
        for (int step = 0; step < 150; ++step) {
            SCOPED_TRACE(testing::Message() << "step " << step);
            ASSERT_NO_FATAL_FAILURE(law.step());
            ASSERT_NO_FATAL_FAILURE(law.check());
        }
    }
}
