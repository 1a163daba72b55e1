#include "Quorvane/Text/QVTextUndoOperation.h"

#include "Platform/Foundation/NSException.h"
#include "Tests/Support/Recorders.h"
#include "Tests/Support/UndoFixtures.h"

#include <gtest/gtest.h>

using namespace quorvane;
using test::Ranges;
using Document = test::TypingDocument;

namespace {

const NSAttributeKey markKey(u"mark");

/// The name and reason of what is thrown.
std::pair<NSString, NSString> thrown(QVBlock<void()> block) {
    try {
        block();
    } catch (const NSException &exception) {
        return {exception.name(), exception.reason()};
    }
    return {};
}

const std::pair<NSString, NSString> wrongInitializer{
    NSInvalidArgumentException, u"Must be initialized with "
                                u"-initWithAffectedRanges:replacementRanges:textStorage:textView:"
                                u"selectedRanges:undoManager:"};

const char16_t *const noRanges = u"Invalid parameter not satisfying: affectedRanges.count > 0";
const char16_t *const noStorage = u"Invalid parameter not satisfying: textStorage != nil";
const char16_t *const noManager = u"Invalid parameter not satisfying: undoManager != nil";
const char16_t *const otherCount =
    u"Invalid parameter not satisfying: affectedRanges.count == replacementRanges.count";

/// Replaces a range and registers the step.
std::shared_ptr<QVUndoReplaceCharacters> replaceRanges(Document &document, const Ranges &affected,
                                                       const Ranges &replacement, std::u16string_view text,
                                                       const std::optional<Ranges> &selected = std::nullopt) {
    auto step = QVUndoReplaceCharacters::initWithAffectedRanges(affected, replacement, document.storage,
                                                                document.view, selected, document.manager);
    document.manager->beginUndoGrouping();
    QVRegisterUndoOperation(step, document.storage, *document.manager);
    document.manager->endUndoGrouping();
    for (std::size_t index = 0; index < affected.size(); ++index)
        document.storage->replaceCharactersInRange({replacement[index].location, affected[index].length},
                                                   text);
    return step;
}

} // namespace

TEST(QVTextUndoOperation, KeepsWhatItIsGivenAndNobodyAlive) {
    Document document(u"abc");
    const auto step = QVTextUndoOperation::initWithAffectedRanges({{1, 2}}, document.storage, document.view,
                                                                  Ranges{{1, 0}}, document.manager);
    EXPECT_EQ(step->affectedRanges(), (Ranges{{1, 2}}));
    EXPECT_EQ(step->selectedRanges(), (Ranges{{1, 0}}));
    EXPECT_EQ(step->textStorage(), document.storage);
    EXPECT_EQ(step->textView(), document.view);
    EXPECT_EQ(step->undoManager(), document.manager);
    document = Document();
    EXPECT_EQ(step->textStorage(), nullptr);
    EXPECT_EQ(step->textView(), nullptr);
    EXPECT_EQ(step->undoManager(), nullptr);
}

TEST(QVTextUndoOperation, ItsSelectionIsThatOfTheDocument) {
    Document document(u"abc");
    document.view->shift = 100;
    EXPECT_EQ(QVTextUndoOperation::initWithAffectedRanges({{1, 2}}, document.storage, document.view,
                                                          Ranges{{1, 0}, {2, 1}}, document.manager)
                  ->selectedRanges(),
              (Ranges{{101, 0}, {102, 1}}));
    EXPECT_EQ(QVTextUndoOperation::initWithAffectedRanges({{1, 2}}, document.storage, document.view,
                                                          std::nullopt, document.manager)
                  ->selectedRanges(),
              std::nullopt);
}

TEST(QVTextUndoOperation, NeedsASubclassToDoAnything) {
    Document document(u"abc");
    const auto step = QVTextUndoOperation::initWithAffectedRanges({{1, 2}}, document.storage, nullptr,
                                                                  std::nullopt, document.manager);
    const std::pair<NSString, NSString> expected{NSInvalidArgumentException,
                                                 u"Must be overridden by subclasses"};
    EXPECT_EQ(thrown([&] { step->undoRedo(*document.storage); }), expected);
    EXPECT_EQ(thrown([&] { qv_undoRedoOperation(*document.storage, *step); }), expected);
}

TEST(QVTextUndoOperation, NeedsRangesAStorageAndAManager) {
    Document document(u"abc");
    const test::AssertionRecorder assertions;
    QVTextUndoOperation::initWithAffectedRanges({}, document.storage, nullptr, std::nullopt,
                                                document.manager);
    QVTextUndoOperation::initWithAffectedRanges({{0, 1}}, nullptr, nullptr, std::nullopt, document.manager);
    QVTextUndoOperation::initWithAffectedRanges({{0, 1}}, document.storage, nullptr, std::nullopt, nullptr);
    EXPECT_EQ(assertions.messages(), (std::vector<NSString>{noRanges, noStorage, noManager}));
}

TEST(QVUndoReplaceCharacters, NeedsToKnowWhereTheNewTextWillStand) {
    Document document(u"abc");
    EXPECT_EQ(thrown([&] {
                  QVUndoReplaceCharacters::initWithAffectedRanges(Ranges{{0, 1}}, document.storage, nullptr,
                                                                  std::nullopt, document.manager);
              }),
              wrongInitializer);
    EXPECT_EQ(thrown([&] {
                  QVUndoTyping::initWithAffectedRanges(Ranges{{0, 1}}, document.storage, nullptr,
                                                       std::nullopt, document.manager);
              }),
              wrongInitializer);
}

TEST(QVUndoReplaceCharacters, NeedsAsManyReplacementsAndRangesAndAStorageAndAManager) {
    Document document(u"abc");
    const test::AssertionRecorder assertions;
    QVUndoReplaceCharacters::initWithAffectedRanges({{0, 1}}, {}, document.storage, nullptr, std::nullopt,
                                                    document.manager);
    QVUndoTyping::initWithAffectedRanges({{0, 1}}, {{0, 1}, {2, 1}}, document.storage, nullptr, std::nullopt,
                                         document.manager);
    QVUndoReplaceCharacters::initWithAffectedRanges({}, {}, document.storage, nullptr, std::nullopt,
                                                    document.manager);
    QVUndoTyping::initWithAffectedRanges({{0, 1}}, {{0, 1}}, nullptr, nullptr, std::nullopt, nullptr);
    EXPECT_EQ(assertions.messages(),
              (std::vector<NSString>{otherCount, otherCount, noRanges, noStorage, noManager}));
}

TEST(QVUndoReplaceCharacters, TakesTheOldTextWithItsAttributes) {
    Document document(u"abcdef", {{markKey, 1}});
    document.storage->addAttribute(markKey, 2, {3, 3});
    const auto step = QVUndoReplaceCharacters::initWithAffectedRanges(
        {{1, 1}, {2, 3}}, {{1, 0}, {1, 2}}, document.storage, nullptr, std::nullopt, document.manager);
    ASSERT_EQ(step->attributedStrings().size(), 2u);
    EXPECT_TRUE(
        step->attributedStrings()[0]->isEqual(document.storage->attributedSubstringFromRange({1, 1}).get()));
    EXPECT_TRUE(
        step->attributedStrings()[1]->isEqual(document.storage->attributedSubstringFromRange({2, 3}).get()));
    EXPECT_EQ(step->replacementRanges(), (Ranges{{1, 0}, {1, 2}}));
}

TEST(QVUndoReplaceCharacters, UndoingPutsAllRangesBackAndRedoingReplacesThemAgain) {
    Document document(u"one two three", {{markKey, 1}});
    const auto before = NSAttributedString::initWithAttributedString(*document.storage);
    replaceRanges(document, {{0, 3}, {8, 5}}, {{0, 2}, {7, 2}}, u"##");
    const auto after = NSAttributedString::initWithAttributedString(*document.storage);
    EXPECT_EQ(document.text(), u"## two ##");
    for (int round = 0; round < 2; ++round) {
        document.manager->undo();
        EXPECT_TRUE(document.storage->isEqualToAttributedString(*before));
        EXPECT_FALSE(document.manager->canUndo());
        document.manager->redo();
        EXPECT_TRUE(document.storage->isEqualToAttributedString(*after));
        EXPECT_FALSE(document.manager->canRedo());
    }
}

TEST(QVUndoReplaceCharacters, TheViewIsAskedToldAndShownTheSelection) {
    Document document(u"one two");
    replaceRanges(document, {{0, 3}}, {{0, 1}}, u"#", Ranges{{1, 1}, {5, 0}});
    document.manager->undo();
    EXPECT_EQ(document.view->calls, (std::vector<std::string>{"ask", "changed", "select", "scroll"}));
    EXPECT_EQ(document.view->askedRanges, (Ranges{{0, 1}}));
    EXPECT_EQ(document.view->askedStrings, (std::vector<NSString>{u"one"}));
    EXPECT_EQ(document.view->selection, (Ranges{{1, 1}, {5, 0}}));
    EXPECT_EQ(document.view->shown, (NSRange{1, 1}));
    // The way back has no selection of its own, and selects what it brought back.
    document.manager->redo();
    EXPECT_EQ(document.view->selection, (Ranges{{0, 1}}));
    EXPECT_EQ(document.view->askedStrings, (std::vector<NSString>{u"#"}));
}

TEST(QVUndoReplaceCharacters, WithoutASelectionTheAffectedRangesAreSelected) {
    Document document(u"one two");
    replaceRanges(document, {{0, 3}, {4, 3}}, {{0, 1}, {2, 1}}, u"#");
    document.manager->undo();
    EXPECT_EQ(document.view->selection, (Ranges{{0, 3}, {4, 3}}));
}

TEST(QVUndoReplaceCharacters, AViewThatFoldsSelectsInItsOwnPlaces) {
    Document document(u"one two");
    document.view->shift = 4;
    replaceRanges(document, {{4, 3}}, {{4, 1}}, u"#", Ranges{{0, 2}});
    document.manager->undo();
    EXPECT_EQ(document.view->askedRanges, (Ranges{{4, 1}}));
    EXPECT_EQ(document.view->selection, (Ranges{{0, 2}}));
    EXPECT_EQ(document.view->shown, (NSRange{0, 2}));
}

TEST(QVUndoReplaceCharacters, WorksWithoutAView) {
    Document document(u"one two");
    replaceRanges(document, {{0, 3}}, {{0, 1}}, u"#");
    document.view.reset();
    document.manager->undo();
    EXPECT_EQ(document.text(), u"one two");
    document.manager->redo();
    EXPECT_EQ(document.text(), u"# two");
}

TEST(QVUndoReplaceCharacters, AViewThatRefusesLeavesTheTextAndAnEntryToRedo) {
    Document document(u"one two");
    replaceRanges(document, {{0, 3}}, {{0, 1}}, u"#");
    document.view->refuses = true;
    document.view->selection = {{2, 0}};
    document.manager->undo();
    EXPECT_EQ(document.text(), u"# two");
    EXPECT_EQ(document.view->calls, (std::vector<std::string>{"ask"}));
    EXPECT_EQ(document.view->selection, (Ranges{{2, 0}}));
    EXPECT_FALSE(document.manager->canUndo());
    ASSERT_TRUE(document.manager->canRedo());
    // Both ways nothing happens any more, whatever the view would say now.
    document.view->refuses = false;
    const test::AssertionRecorder assertions;
    document.manager->redo();
    document.manager->undo();
    EXPECT_EQ(document.text(), u"# two");
    EXPECT_EQ(document.view->calls, (std::vector<std::string>{"ask"}));
    EXPECT_TRUE(document.manager->canRedo());
    EXPECT_EQ(assertions.messages(), (std::vector<NSString>{}));
}

TEST(QVUndoReplaceCharacters, EachUndoIsOneBracketOfEdits) {
    struct Counting final : NSTextStorage {
        using NSTextStorage::replaceCharactersInRange;
        NSUInteger length() const override { return contents->length(); }
        QVTextReader string() const override { return contents->string(); }
        NSAttributes attributesAtIndex(NSUInteger index, NSRange *effectiveRange) const override {
            return contents->attributesAtIndex(index, effectiveRange);
        }
        void replaceCharactersInRange(NSRange range, std::u16string_view withString) override {
            contents->replaceCharactersInRange(range, withString);
            edited(NSTextStorageEditedCharacters, range,
                   static_cast<NSInteger>(withString.size()) - static_cast<NSInteger>(range.length));
        }
        void setAttributes(const NSAttributes &attributes, NSRange range) override {
            contents->setAttributes(attributes, range);
            edited(NSTextStorageEditedAttributes, range, 0);
        }
        void processEditing() override {
            NSTextStorage::processEditing();
            ++rounds;
        }
        std::shared_ptr<NSMutableAttributedString> contents =
            NSMutableAttributedString::initWithString(u"one two three");
        int rounds = 0;
    };
    const auto storage = std::make_shared<Counting>();
    const auto manager = NSUndoManager::init();
    manager->setGroupsByEvent(false);
    const auto step = QVUndoReplaceCharacters::initWithAffectedRanges(
        {{0, 3}, {4, 3}}, {{0, 3}, {4, 3}}, storage, nullptr, std::nullopt, manager);
    storage->rounds = 0;
    step->undoRedo(*storage);
    EXPECT_EQ(storage->rounds, 1);
}

TEST(QVUndoReplaceCharacters, ItsGroupIsClosedWhenARangeIsNotThere) {
    Document document(u"one two");
    const auto step = QVUndoReplaceCharacters::initWithAffectedRanges(
        {{0, 3}}, {{20, 3}}, document.storage, nullptr, std::nullopt, document.manager);
    EXPECT_THROW(step->undoRedo(*document.storage), NSException);
    EXPECT_EQ(document.manager->groupingLevel(), 0u);
    EXPECT_EQ(document.text(), u"one two");
}

TEST(QVUndoReplaceCharacters, PutsTheTextBackWhenItsManagerIsGone) {
    Document document(u"one two");
    const auto step = replaceRanges(document, {{0, 3}}, {{0, 1}}, u"#");
    document.manager.reset();
    step->undoRedo(*document.storage);
    EXPECT_EQ(document.text(), u"one two");
}
