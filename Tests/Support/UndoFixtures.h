#pragma once

#include "Quorvane/Text/QVTextSelectionArray.h"
#include "Quorvane/Text/QVUndoReplaceCharacters.h"
#include "Quorvane/Text/QVUndoTyping.h"
#include "Tests/Support/LayoutFixtures.h"
#include "Tests/Support/Printing.h"

/// A text view that does what undo steps ask of one, and types into its storage as an editor does.
namespace quorvane::test {

using Ranges = std::vector<NSRange>;

class TypingView final : public QVTextView {
public:
    /// What it was asked and told, one word for each call.
    std::vector<std::string> calls;
    Ranges selection{{0, 0}};
    bool refuses = false;
    /// By how much the view's places are behind those of the document, where it converts at all.
    std::optional<NSUInteger> shift;
    Ranges askedRanges;
    std::vector<NSString> askedStrings;
    NSRange shown;

    bool shouldChangeTextInBackingRanges(const Ranges &backingRanges,
                                         const std::vector<NSString> &replacementStrings) override {
        calls.push_back("ask");
        askedRanges = backingRanges;
        askedStrings = replacementStrings;
        return !refuses;
    }
    void didChangeText() override { calls.push_back("changed"); }
    void setSelectedRanges(const Ranges &selectedRanges) override {
        calls.push_back("select");
        selection = selectedRanges;
    }
    std::optional<Ranges> convertDisplayRangesToBackingRanges(const Ranges &ranges) const override {
        return moved(ranges, shift);
    }
    std::optional<Ranges> convertBackingRangesToDisplayRanges(const Ranges &ranges) const override {
        return moved(ranges, shift ? std::optional(NSUInteger(0) - *shift) : std::nullopt);
    }
    void scrollRangeToVisible(NSRange range) override {
        calls.push_back("scroll");
        shown = range;
    }
    void breakUndoCoalescing() override {
        calls.push_back("break");
        typing = nullptr;
    }

    /// The step that is growing.
    std::shared_ptr<QVUndoTyping> typing;

private:
    static std::optional<Ranges> moved(Ranges ranges, std::optional<NSUInteger> distance) {
        if (!distance)
            return std::nullopt;
        for (NSRange &range : ranges)
            range.location += *distance;
        return ranges;
    }
};

/// A document with a view and an undo manager.
struct TypingDocument {
    std::shared_ptr<PlainTextStorage> storage;
    std::shared_ptr<TypingView> view = std::make_shared<TypingView>();
    std::shared_ptr<NSUndoManager> manager = NSUndoManager::init();

    explicit TypingDocument(std::u16string_view text = u"", const NSAttributes &attributes = {})
        : storage(std::make_shared<PlainTextStorage>(text, attributes)) {
        manager->setGroupsByEvent(false);
    }

    NSString text() const { return storage->string().substringWithRange({0, storage->length()}); }
    void select(Ranges ranges) { view->selection = std::move(ranges); }

    /// Replaces what is affected at each cursor by a text, in the step that grows where it takes the change,
    /// else in a new one; answers whether it grew.
    bool replace(const Ranges &affected, const NSAttributedString &text) {
        Ranges replacement, cursors;
        NSUInteger offset = 0;
        for (const NSRange range : affected) {
            replacement.push_back({range.location + offset, text.length()});
            cursors.push_back({NSMaxRange(replacement.back()), 0});
            offset += text.length() - range.length;
        }
        const bool grew =
            view->typing && view->typing->coalesceAffectedRanges(affected, replacement, view->selection);
        if (!grew) {
            view->typing = QVUndoTyping::initWithAffectedRanges(affected, replacement, storage, view,
                                                                view->selection, manager);
            manager->beginUndoGrouping();
            QVRegisterUndoOperation(view->typing, storage, *manager);
            manager->endUndoGrouping();
        }
        for (std::size_t index = 0; index < affected.size(); ++index)
            static_cast<NSMutableAttributedString &>(*storage).replaceCharactersInRange(
                {replacement[index].location, affected[index].length}, text);
        view->selection = QVTextSelectionArray::initWithRanges(cursors)->ranges();
        return grew;
    }
    bool type(std::u16string_view text, const NSAttributes &attributes = {}) {
        return replace(view->selection, *NSAttributedString::initWithString(text, attributes));
    }
    /// Deletes what is selected at each cursor, or that many characters before it, as far as there are some.
    bool deleteBackward(NSUInteger count = 1) {
        Ranges affected;
        NSUInteger before = 0;
        for (const NSRange range : view->selection) {
            const NSUInteger reach = range.length ? 0 : std::min(count, range.location - before);
            affected.push_back({range.location - reach, range.length + reach});
            before = NSMaxRange(range);
        }
        return replace(affected, *NSAttributedString::initWithString(u""));
    }
};

} // namespace quorvane::test
