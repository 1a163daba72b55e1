#include "Tests/Quorvane/Text/FoldingFixtures.h"

#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;

namespace {

/// "ab[cdef]ghij"
FoldedDocument folded() {
    FoldedDocument folded(u"abcdefghij");
    folded.view->foldRange({2, 4});
    folded.take();
    return folded;
}

} // namespace

// MARK: - Text

TEST(QVFoldingEdits, TypingInsideOfAFoldChangesItsLengthAndNothingVisible) {
    auto document = folded();
    const auto other = QVFoldingTextStorage::initWithBackingStorage(document.document);
    other->replaceCharactersInRange({4, 0}, u"xyz");
    EXPECT_EQ(textOf(*other), "abcdxyzefghij");
    EXPECT_EQ(drawn(*document.view), "ab~ghij");
    EXPECT_EQ(drawn(*foldAt(*document.view, 2)), "2+7");
    EXPECT_TRUE(document.heard.empty());
    EXPECT_EQ(document.view->convertPositionToBacking(3), 9u);
    other->replaceCharactersInRange({2, 3}, u"");
    EXPECT_EQ(drawn(*foldAt(*document.view, 2)), "2+4");
    EXPECT_EQ(drawn(*document.view), "ab~ghij");
}

TEST(QVFoldingEdits, AnInsertionAtAFoldsStartLandsBeforeItAndAtItsEndBehindIt) {
    auto document = folded();
    document.document->replaceCharactersInRange({2, 0}, u"x");
    EXPECT_EQ(drawn(*document.view), "abx~ghij");
    EXPECT_EQ(drawn(*foldAt(*document.view, 3)), "3+4");
    document.document->replaceCharactersInRange({7, 0}, u"yz");
    EXPECT_EQ(drawn(*document.view), "abx~yzghij");
    EXPECT_EQ(drawn(*foldAt(*document.view, 3)), "3+4");
    EXPECT_EQ(document.take(), (Strings{"did 3 2+1 +1", "did 3 4+2 +2"}));
}

TEST(QVFoldingEdits, AnInsertionBetweenTwoFoldsStandsBetweenThem) {
    FoldedDocument document(u"abcdef");
    document.view->foldRange({3, 3});
    document.view->foldRange({0, 3});
    document.document->replaceCharactersInRange({3, 0}, u"x");
    EXPECT_EQ(drawn(*document.view), "~x~");
    EXPECT_EQ(drawn(*foldAt(*document.view, 0)), "0+3");
    EXPECT_EQ(drawn(*foldAt(*document.view, 2)), "4+3");
}

TEST(QVFoldingEdits, ReplacingAFoldsTextOpensItFirst) {
    auto document = folded();
    document.document->replaceCharactersInRange({2, 4}, u"XY");
    EXPECT_EQ(drawn(*document.view), "abXYghij");
    EXPECT_EQ(document.take(), (Strings{"did 3 2+4 +3", "did 3 2+2 -2"}));
}

TEST(QVFoldingEdits, DeletingThroughTheViewDeletesTheFoldedTextToo) {
    auto document = folded();
    document.view->replaceCharactersInRange({1, 2}, u"");
    EXPECT_EQ(textOf(*document.document), "aghij");
    EXPECT_EQ(drawn(*document.view), "aghij");
    EXPECT_TRUE(document.view->foldedRanges().size() == 1);
}

TEST(QVFoldingEdits, AttributedTextBehindAFoldGoesWhereTheViewShowsIt) {
    auto document = folded();
    document.view->replaceCharactersInRange({4, 2}, *NSAttributedString::initWithString(u"XYZ", mark(7)));
    EXPECT_EQ(textOf(*document.document), "abcdefgXYZj");
    EXPECT_EQ(drawn(*document.view), "ab~gXYZj");
    EXPECT_EQ(document.view->attribute(NSToolTipAttributeName, 6)->integerValue(), 7);
}

TEST(QVFoldingEdits, CrossingAFoldsEdgeOpensItWithAllThatIsInIt) {
    for (const NSRange edit : {NSRange{1, 2}, NSRange{5, 3}, NSRange{1, 8}}) {
        SCOPED_TRACE(drawn(edit));
        FoldedDocument document(u"abcdefghij");
        document.view->foldRange({3, 2});
        document.view->foldRange({2, 3});
        EXPECT_EQ(drawn(*document.view), "ab~ghij");
        document.document->replaceCharactersInRange(edit, u"-");
        std::u16string text = u"abcdefghij";
        text.replace(edit.location, edit.length, u"-");
        EXPECT_EQ(drawn(*document.view), NSString(text).UTF8String());
    }
}

TEST(QVFoldingEdits, AnEditElsewhereOpensNothing) {
    auto document = folded();
    for (const NSRange edit : {NSRange{0, 2}, NSRange{4, 3}}) {
        document.document->replaceCharactersInRange(edit, u"");
        EXPECT_TRUE(foldAt(*document.view, 0)) << drawn(edit);
    }
    EXPECT_EQ(drawn(*document.view), "~j");
    EXPECT_EQ(drawn(*foldAt(*document.view, 0)), "0+4");
}

TEST(QVFoldingEdits, OnlyFoldsThatAreTouchedOpen) {
    FoldedDocument document(u"abcdefghijklmnop");
    document.view->foldRange({12, 2});
    document.view->foldRange({7, 2});
    document.view->foldRange({2, 2});
    EXPECT_EQ(drawn(*document.view), "ab~efg~jkl~op");
    document.document->replaceCharactersInRange({3, 5}, u"");
    EXPECT_EQ(drawn(*document.view), "abcijkl~op");
    EXPECT_EQ(drawn(*foldAt(*document.view, 7)), "7+2");
}

TEST(QVFoldingEdits, ASubfoldNextToOneThatWentMissesTheEdit) {
    // Meant like that: the list is read again at the same place after one has left it.
    FoldedDocument document(u"abcdefghijklmnop");
    for (const NSUInteger location : {NSUInteger{10}, NSUInteger{6}, NSUInteger{2}})
        document.view->foldRange({location, 2});
    document.view->foldRange({1, 9});
    EXPECT_EQ(drawn(*foldAt(*document.view, 1)), "1+12(2+2 6+2 10+2)");
    document.document->replaceCharactersInRange({2, 2}, u"");
    EXPECT_EQ(drawn(*foldAt(*document.view, 1)), "1+10(4+2 10+2)");
    // The last one does not fit in any more, and opens with the one around it.
    document.view->unfoldAtPosition(1, 1);
    EXPECT_EQ(drawn(*document.view), "abef~ijklmnop");
    EXPECT_EQ(document.view->convertRangeToBacking({0, 13}), (NSRange{0, 14}));
}

TEST(QVFoldingEdits, FoldsAreKnownByTheirRangesWhileTextIsTypedBeforeThem) {
    FoldedDocument document(u"abcdefghij");
    document.view->foldRange({6, 2});
    document.view->foldRange({5, 3});
    const auto fold = foldAt(*document.view, 5);
    for (int key = 0; key < 5; ++key)
        document.document->replaceCharactersInRange({0, 0}, u"x");
    EXPECT_EQ(drawn(*fold), "10+4(11+2)");
    const auto inner = fold->subfolds()[0];
    document.document->replaceCharactersInRange({0, 3}, u"");
    EXPECT_EQ(inner->range(), (NSRange{8, 2}));
    // And when the view is gone.
    document.document->replaceCharactersInRange({0, 1}, u"");
    document.view.reset();
    EXPECT_EQ(drawn(*fold), "6+4(7+2)");
}

// MARK: - Brackets

TEST(QVFoldingEdits, TheDocumentAndItsViewsMakeOneBracket) {
    auto document = folded();
    const auto other = QVFoldingTextStorage::initWithBackingStorage(document.document);
    const auto otherObserver = std::make_shared<StorageObserver>(document.heard);
    other->addChangeObserver(otherObserver);
    document.document->addChangeObserver(document.observer);
    other->beginEditing();
    document.view->replaceCharactersInRange({3, 1}, u"G");
    document.document->replaceCharactersInRange({0, 0}, u"x");
    EXPECT_EQ(document.take(), (Strings{"will 3 6+1 'G'", "will 3 0+0 'x'"}));
    document.view->endEditing();
    // The document first, then its views.
    EXPECT_EQ(document.take(), (Strings{"did 3 0+8 +1", "did 3 0+5 +1", "did 3 0+8 +1"}));
}

TEST(QVFoldingEdits, AViewMadeInsideOfABracketHearsOfTheNextOne) {
    const auto document = QVConcreteTextStorage::initWithString(u"abc");
    document->beginEditing();
    const auto view = QVFoldingTextStorage::initWithBackingStorage(document);
    document->replaceCharactersInRange({0, 1}, u"xy");
    document->endEditing();
    EXPECT_EQ(drawn(*view), "xybc");
    EXPECT_EQ(view->editedMask(), 0u);
}

// MARK: - Attributes

TEST(QVFoldingAttributes, ReachHiddenTextAndLeaveTheFoldsCharacterAlone) {
    auto document = folded();
    document.view->addAttribute(NSToolTipAttributeName, 1, {1, 3});
    EXPECT_EQ(document.take(), (Strings{"did 1 1+1 +0", "did 1 3+1 +0"}));
    for (NSUInteger index = 0; index < 10; ++index)
        EXPECT_EQ(document.document->attribute(NSToolTipAttributeName, index).has_value(),
                  index >= 1 && index < 7)
            << index;
    EXPECT_EQ(document.view->attributesAtIndex(2).count(), 1u);
    EXPECT_TRUE(document.view->attribute(NSToolTipAttributeName, 3));

    document.view->addAttributes({{NSToolTipAttributeName, 2}, {NSLinkAttributeName, u"x"}}, {0, 4});
    EXPECT_EQ(document.view->attribute(NSToolTipAttributeName, 3)->integerValue(), 2);
    EXPECT_EQ(document.document->attribute(NSLinkAttributeName, 5)->stringValue(), u"x");
    document.view->removeAttribute(NSLinkAttributeName, {2, 2});
    EXPECT_FALSE(document.document->attribute(NSLinkAttributeName, 4));
    EXPECT_FALSE(document.view->attribute(NSLinkAttributeName, 3));
    EXPECT_TRUE(document.view->attribute(NSLinkAttributeName, 1));
    document.view->setAttributes(mark(9), {2, 5});
    EXPECT_EQ(document.view->attribute(NSToolTipAttributeName, 6)->integerValue(), 9);
    EXPECT_EQ(document.document->attribute(NSToolTipAttributeName, 2)->integerValue(), 9);
    EXPECT_TRUE(foldAt(*document.view, 2));
    // What is shown again looks as it should.
    document.view->unfoldAtPosition(2, 0);
    EXPECT_EQ(document.view->attribute(NSToolTipAttributeName, 4)->integerValue(), 9);
}

TEST(QVFoldingAttributes, ChangesOfHiddenTextAreNotToldToTheView) {
    auto document = folded();
    document.document->addAttribute(NSToolTipAttributeName, 1, {3, 2});
    EXPECT_TRUE(document.heard.empty());
    document.document->addAttribute(NSToolTipAttributeName, 1, {3, 4});
    EXPECT_EQ(document.take(), (Strings{"did 1 3+1 +0"}));
}

TEST(QVFoldingAttributes, WithoutFoldsChangesAreToldAsTheyAre) {
    FoldedDocument document(u"abcdef");
    document.document->addAttribute(NSToolTipAttributeName, 1, {1, 3});
    EXPECT_EQ(document.take(), (Strings{"did 1 1+3 +0"}));
    EXPECT_EQ(document.view->attribute(NSToolTipAttributeName, 2)->integerValue(), 1);
}

TEST(QVFoldingAttributes, FixingIsToldToNobodyAndReachesTheView) {
    auto document = folded();
    const auto style = document.view->attribute(NSParagraphStyleAttributeName, 0);
    EXPECT_TRUE(style);
    EXPECT_EQ(style, document.document->attribute(NSParagraphStyleAttributeName, 0));
    EXPECT_TRUE(document.view->attribute(NSParagraphStyleAttributeName, 6));
    EXPECT_TRUE(document.heard.empty());
}

TEST(QVFoldingAttributes, HiddenTextIsNotFixedForTheViewsSake) {
    FoldedDocument document(u"ab" + std::u16string(10'000, u'x') + u"cd");
    document.view->foldRange({2, 10'000});
    document.view->ensureAttributesAreFixedInRange({0, 5});
    EXPECT_TRUE(document.view->attribute(NSParagraphStyleAttributeName, 4));
    EXPECT_FALSE(
        document.document->contents().attributesAtIndex(6000).containsKey(NSParagraphStyleAttributeName));
}

TEST(QVFoldingAttributes, AttachmentsThatStrayAreTakenOffInTheViewToo) {
    auto document = folded();
    document.document->addAttribute(NSAttachmentAttributeName, 5, {6, 2});
    document.take();
    EXPECT_FALSE(document.view->attribute(NSAttachmentAttributeName, 3));
    EXPECT_FALSE(document.document->attribute(NSAttachmentAttributeName, 6));
    EXPECT_TRUE(document.heard.empty()) << "reading is no edit";
}

TEST(QVFoldingAttributes, PastTheEndStandTheDefaultOnes) {
    auto document = folded();
    NSRange range;
    EXPECT_EQ(document.view->attributesAtIndex(7, &range), document.document->defaultTextAttributes());
    EXPECT_EQ(range, (NSRange{7, 0}));
    EXPECT_EQ(document.view->attributesAtIndex(500, nullptr), document.view->defaultTextAttributes());
}

TEST(QVFoldingAttributes, ANewTabWidthIsToldWithTheDocumentsOwnRange) {
    // Meant like that, though the view's text is shorter.
    auto document = folded();
    (void)document.view->attributesAtIndex(0);
    document.document->setTabWidth(9);
    EXPECT_EQ(document.take(), (Strings{"did 1 0+10 +0"}));
    EXPECT_EQ(document.view->attribute(NSParagraphStyleAttributeName, 5),
              document.document->attribute(NSParagraphStyleAttributeName, 9));
}

TEST(QVFoldingAttributes, VisibleStretchesAreTheOnesBetweenFolds) {
    auto document = folded();
    std::string told;
    const auto note = [&](NSRange range, bool &) { told += drawn(range) + " "; };
    document.view->enumerateBackingStorageRangeWithoutFolds({0, 10}, note);
    EXPECT_EQ(told, "0+2 3+4 ");
    told.clear();
    document.view->enumerateBackingStorageRangeWithoutFolds({3, 2}, note);
    EXPECT_EQ(told, "");
    document.view->enumerateBackingStorageRangeWithoutFolds({0, 10}, [&](NSRange range, bool &stop) {
        told += drawn(range);
        stop = true;
    });
    EXPECT_EQ(told, "0+2");
}

TEST(QVFoldingAttributes, ExtendedOnesAreTheDocuments) {
    auto document = folded();
    document.view->addExtendedAttribute(NSToolTipAttributeName, 1, {1, 2});
    EXPECT_EQ(document.document->extendedAttributesAtIndex(5, nullptr), mark(1));
    EXPECT_TRUE(document.document->extendedAttributesAtIndex(6, nullptr).empty());
    NSRange range;
    EXPECT_EQ(document.view->extendedAttributesAtIndex(1, &range), mark(1));
    EXPECT_EQ(range, (NSRange{1, 2}));
    // A run that ends in the fold ends before its character.
    document.view->backingStorage()->removeExtendedAttribute(NSToolTipAttributeName, {4, 2});
    EXPECT_EQ(document.view->extendedAttributesAtIndex(2, &range), mark(1));
    EXPECT_EQ(range, (NSRange{1, 1}));

    std::string told;
    const auto note = [&](const NSAttributes &attributes, NSRange run, bool &) {
        told += drawn(run) + (attributes.empty() ? "- " : "! ");
    };
    document.view->enumerateExtendedAttributesInRange({0, 7}, 0, note);
    EXPECT_EQ(told, "0+1- 1+1! 2+5- ");
    EXPECT_EQ(document.view->extendedAttributesAtIndex(2, &range, {0, 7}), mark(1));
    EXPECT_EQ(document.view->extendedAttribute(NSToolTipAttributeName, 1, &range, {0, 7})->integerValue(), 1);
    EXPECT_EQ(range, (NSRange{1, 1}));
    told.clear();
    document.view->enumerateExtendedAttribute(NSToolTipAttributeName, {0, 7}, 0,
                                              [&](const NSAttributeValue *value, NSRange run, bool &) {
                                                  told += drawn(run) + (value == nullptr ? "- " : "! ");
                                              });
    EXPECT_EQ(told, "0+1- 1+1! 2+5- ");

    document.view->addExtendedAttributes(mark(2), {6, 1});
    EXPECT_EQ(document.document->extendedAttributesAtIndex(9, nullptr), mark(2));
    document.view->setExtendedAttributes(mark(3), {2, 1});
    EXPECT_EQ(document.document->extendedAttributesAtIndex(4, nullptr), mark(3));
    document.view->removeExtendedAttribute(NSToolTipAttributeName, {2, 1});
    EXPECT_TRUE(document.document->extendedAttributesAtIndex(4, nullptr).empty());
    EXPECT_TRUE(document.heard.empty());
}

TEST(QVFoldingAttributes, HighlightingAndSyntaxAreTheDocuments) {
    const auto syntax = smallLanguage();
    const auto document = documentWithText(u"k1 k2 12 k3", syntax);
    const auto view = QVFoldingTextStorage::initWithBackingStorage(document);
    view->foldRange({3, 5});
    EXPECT_EQ(drawn(*view), "k1 ~ k3");
    EXPECT_EQ(drawnHighlighting(*view), drawnHighlighting(*document).erase(4, 4));
    EXPECT_EQ(view->syntaxAtLocation(4), syntax);
    EXPECT_EQ(view->syntaxAtLocation(NSNotFound), syntax);
    EXPECT_EQ(view->parse(), document->parse());
    std::vector<NSRange> runs;
    view->enumerateSyntaxHighlightingAttributesInRange(
        {0, 7}, 0, [&](const NSAttributes &, NSRange run, bool &) { runs.push_back(run); });
    // k1, blank, k2 (in the fold), blank (in it), 12 (its end), blank, k3
    EXPECT_EQ(drawn(runs), "0+2 2+1 3+0 3+0 3+1 4+1 5+2");
    NSRange range;
    (void)view->syntaxHighlightingAttributesAtIndex(3, &range, {0, 7});
    EXPECT_EQ(range, (NSRange{3, 0}));
    EXPECT_EQ(view->syntaxHighlightingAttribute(NSUnderlineStyleAttributeName, 5, &range, {0, 7}),
              NSAttributeValue(1));
    EXPECT_EQ(range, (NSRange{5, 2}));
}

// MARK: - Settings

TEST(QVFoldingSettings, AreTheDocuments) {
    const auto document = QVConcreteTextStorage::initWithString(u"abc");
    const auto view = QVFoldingTextStorage::initWithBackingStorage(document);
    view->setLineEndings(QVLineEndingsCRLF);
    EXPECT_EQ(document->lineEndings(), QVLineEndingsCRLF);
    view->setIndentationStyle(QVIndentationStyleSpaces);
    EXPECT_EQ(document->indentationStyle(), QVIndentationStyleSpaces);
    view->setTabWidth(3);
    EXPECT_EQ(document->tabWidth(), 3u);
    view->setParsingEnabled(false);
    EXPECT_FALSE(document->isParsingEnabled());
    view->setSyntax(smallLanguage());
    EXPECT_EQ(document->syntax(), view->syntax());
    view->setDefaultTextAttributes(mark(1));
    EXPECT_EQ(document->defaultTextAttributes(), view->defaultTextAttributes());
    EXPECT_TRUE(view->defaultTextAttributes().containsKey(NSToolTipAttributeName));
    view->setParseDelegate(nullptr);
    EXPECT_EQ(view->parseDelegate(), nullptr);
    view->clearContents();
    EXPECT_EQ(document->length(), 0u);
    EXPECT_THROW(view->cancelParsing(), NSException);
    EXPECT_THROW((void)view->undoManager(), NSException);
}

TEST(QVFoldingSettings, AreObservedThroughTheView) {
    const auto document = QVConcreteTextStorage::initWithString(u"abc");
    auto view = QVFoldingTextStorage::initWithBackingStorage(document);
    std::vector<NSUInteger> widths;
    const auto width =
        view->addObserver(u"tabWidth", NSKeyValueObservingOptionOld | NSKeyValueObservingOptionNew,
                          [&](const NSKeyValueChange &change) {
                              widths.push_back(std::any_cast<NSUInteger>(change.oldValue));
                              widths.push_back(std::any_cast<NSUInteger>(change.newValue));
                          });
    int syntaxes = 0;
    const auto syntax = view->addObserver(u"syntax", 0, [&](const NSKeyValueChange &) { ++syntaxes; });
    const auto parse = view->addObserver(u"parse", 0, [&](const NSKeyValueChange &) { ++syntaxes; });
    document->setTabWidth(8);
    EXPECT_EQ(widths, (std::vector<NSUInteger>{4, 8}));
    document->setSyntax(smallLanguage());
    EXPECT_GE(syntaxes, 2);
    view.reset();
    document->setTabWidth(2);
    EXPECT_EQ(widths.size(), 2u);
    finishAllRounds(*document);
}
