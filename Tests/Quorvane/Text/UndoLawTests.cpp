#include "Tests/Support/UndoFixtures.h"

#include <gtest/gtest.h>

#include <random>

// The law of undo: whatever is typed and deleted with whatever cursors, undoing goes back through the very
// texts, attributes and selections that there were, and redoing through the very texts and attributes.

using namespace quorvane;
using test::Ranges;

namespace {

const NSAttributeKey markKey(u"mark");

struct State {
    std::shared_ptr<NSAttributedString> text;
    Ranges selection;
};

class Editing {
public:
    explicit Editing(unsigned seed) : _random(seed), _document(u"the quick brown fox\njumps over\n") {
        for (NSUInteger index = 0; index < _document.storage->length(); ++index)
            _document.storage->addAttribute(markKey, pick(3), {index, 1});
    }

    void run(int steps) {
        for (_step = 0; _step < steps && !testing::Test::HasFatalFailure(); ++_step)
            switch (pick(10)) {
            case 0:
                moveCursors();
                break;
            case 1:
                undo();
                break;
            case 2:
                redo();
                break;
            case 3:
            case 4:
                change([this] { return _document.deleteBackward(1 + pick(4)); });
                break;
            case 5:
                // Without moving the cursor, as a selection to the left does.
                extendSelection();
                break;
            default:
                change([this] {
                    return _document.type(std::u16string(1 + pick(2), static_cast<char16_t>(u'A' + pick(26))),
                                          {{markKey, pick(3)}});
                });
            }
        while (!_undo.empty() && !testing::Test::HasFatalFailure())
            undo();
        EXPECT_FALSE(_document.manager->canUndo());
        while (!_redo.empty() && !testing::Test::HasFatalFailure())
            redo();
    }

    int grown() const { return _grown; }

private:
    NSUInteger pick(NSUInteger bound) { return _random() % bound; }
    State state() const {
        return {NSAttributedString::initWithAttributedString(*_document.storage), _document.view->selection};
    }

    template <typename Change> void change(Change make) {
        State before = state();
        if (make()) {
            ++_grown;
        } else {
            _undo.push_back(std::move(before));
            _firstUndo.push_back(true);
            _redo.clear();
        }
    }

    void moveCursors() {
        Ranges cursors;
        for (NSUInteger count = 1 + pick(4); count > 0; --count) {
            const NSUInteger location = pick(_document.storage->length() + 1);
            const NSUInteger length = pick(3) ? 0 : std::min(pick(5), _document.storage->length() - location);
            cursors.push_back({location, length});
        }
        _document.select(QVTextSelectionArray::initWithRanges(cursors)->ranges());
    }

    void extendSelection() {
        Ranges cursors;
        for (const NSRange range : _document.view->selection) {
            const NSUInteger reach = std::min(pick(3), range.location);
            cursors.push_back({range.location - reach, range.length + reach});
        }
        _document.select(QVTextSelectionArray::initWithRanges(cursors)->ranges());
    }

    void expectText(const State &expected) {
        ASSERT_TRUE(_document.storage->isEqualToAttributedString(*expected.text))
            << "step " << _step << ": " << _document.text().UTF8String();
    }

    void undo() {
        ASSERT_EQ(_document.manager->canUndo(), !_undo.empty());
        if (_undo.empty())
            return;
        State now = state();
        _document.manager->undo();
        ASSERT_NO_FATAL_FAILURE(expectText(_undo.back()));
        // Steps that come back by redoing know no selection any more.
        if (_firstUndo.back()) {
            ASSERT_EQ(_document.view->selection, _undo.back().selection) << "step " << _step;
        }
        _redo.push_back(std::move(now));
        _undo.pop_back();
        _firstUndo.pop_back();
    }

    void redo() {
        ASSERT_EQ(_document.manager->canRedo(), !_redo.empty());
        if (_redo.empty())
            return;
        State now = state();
        _document.manager->redo();
        ASSERT_NO_FATAL_FAILURE(expectText(_redo.back()));
        _undo.push_back(std::move(now));
        _firstUndo.push_back(false);
        _redo.pop_back();
        // The run of typing that made the step is over.
        ASSERT_EQ(_document.view->typing, nullptr);
    }

    std::mt19937 _random;
    test::TypingDocument _document;
    std::vector<State> _undo, _redo;
    std::vector<bool> _firstUndo;
    int _step = 0;
    int _grown = 0;
};

} // namespace

TEST(UndoLaw, UndoingAndRedoingReturnToTheExactTextAttributesAndSelection) {
    int grown = 0;
    for (unsigned seed = 1; seed <= 200 && !HasFatalFailure(); ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Editing editing(seed);
        editing.run(200);
        grown += editing.grown();
    }
    // The run of typing is what it is about.
    EXPECT_GT(grown, 5000);
}
