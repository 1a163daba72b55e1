#include "Platform/Foundation/NSException.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Symbols/QVLexicalClass.h"
#include "Tests/Quorvane/Text/StorageFixtures.h"

#include <gtest/gtest.h>

namespace quorvane {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;

// MARK: Identifiers

TEST(QVTextStorageIdentifiers, TheWordAroundAnIndex) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab cd_1 é.");
    EXPECT_EQ(storage->rangeOfIdentifierAtIndex(0, false), NSMakeRange(0, 2));
    EXPECT_EQ(storage->rangeOfIdentifierAtIndex(1, false), NSMakeRange(0, 2));
    EXPECT_EQ(storage->rangeOfIdentifierAtIndex(5, false), NSMakeRange(3, 4));
    EXPECT_EQ(storage->rangeOfIdentifierAtIndex(8, false), NSMakeRange(8, 1));
}

TEST(QVTextStorageIdentifiers, TheIndexMustStandOnACharacterOfTheWord) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab cd");
    EXPECT_EQ(storage->rangeOfIdentifierAtIndex(2, false), NSNotFoundRange) << "directly behind one";
    EXPECT_EQ(storage->rangeOfIdentifierAtIndex(5, false), NSNotFoundRange) << "at the end";
    EXPECT_EQ(QVConcreteTextStorage::init()->rangeOfIdentifierAtIndex(0, false), NSNotFoundRange);
    EXPECT_THROW(storage->rangeOfIdentifierAtIndex(6, false), NSException);
}

TEST(QVTextStorageIdentifiers, ThereAreNoneInKeywordsStringsAndComments) {
    const auto storage = QVConcreteTextStorage::initWithString(u"ab");
    for (const NSString &name :
         {QVLexicalClassKeyword.string(), QVLexicalClassString.string(), QVLexicalClassComment.string()}) {
        storage->setExtendedAttributes({{QVLexicalClassAttributeName, name}}, {0, 2});
        EXPECT_EQ(storage->rangeOfIdentifierAtIndex(0, false), NSNotFoundRange) << name.UTF8String();
    }
    for (const NSString &name : {QVLexicalClassName.string(), QVLexicalClassIdentifier.string()}) {
        storage->setExtendedAttributes({{QVLexicalClassAttributeName, name}}, {0, 2});
        EXPECT_EQ(storage->rangeOfIdentifierAtIndex(0, false), NSMakeRange(0, 2)) << name.UTF8String();
    }
}

TEST(QVTextStorageIdentifiers, TheParseSaysWhatAHostDoesNot) {
    const auto storage = documentWithText(
        u"ab (* cd *)", syntaxWithScopes("<scope name='comment' class='comment'><starts-with><expression>"
                                         "\\(\\*</expression></starts-with><ends-with><expression>\\*\\)"
                                         "</expression></ends-with></scope>"));
    const auto lexicalClass = storage->syntaxHighlightingAttribute(QVLexicalClassAttributeName, 6, nullptr);
    ASSERT_TRUE(lexicalClass.has_value());
    EXPECT_EQ(storage->rangeOfIdentifierAtIndex(0, false), NSMakeRange(0, 2));
    EXPECT_EQ(storage->rangeOfIdentifierAtIndex(6, false), NSNotFoundRange);
    storage->setExtendedAttributes({{QVLexicalClassAttributeName, QVLexicalClassName.string()}}, {0, 11});
    EXPECT_EQ(storage->rangeOfIdentifierAtIndex(6, false), NSMakeRange(6, 2)) << "the host's word counts";
}

TEST(QVTextStorageIdentifiers, TheSyntaxSaysWhatBelongsToThem) {
    const auto syntax = smallLanguage();
    syntax->setIdentifierCharacterSet(NSCharacterSet::characterSetWithCharactersInString(u"ab-"));
    syntax->setIdentifierPrefixCharacterSet(NSCharacterSet::characterSetWithCharactersInString(u"$"));
    const auto storage = documentWithText(u"$a-bc $$b", syntax);
    EXPECT_EQ(storage->rangeOfIdentifierAtIndex(2, false), NSMakeRange(1, 3));
    EXPECT_EQ(storage->rangeOfIdentifierAtIndex(2, true), NSMakeRange(0, 4));
    EXPECT_EQ(storage->rangeOfIdentifierAtIndex(8, true), NSMakeRange(7, 2)) << "one character alone";
    EXPECT_EQ(storage->rangeOfIdentifierAtIndex(0, true), NSNotFoundRange) << "the prefix is no identifier";
}

TEST(QVTextStorageIdentifiers, APrefixIsOnlyTakenFromAMember) {
    const auto syntax = smallLanguage();
    syntax->setIdentifierPrefixCharacterSet(NSCharacterSet::characterSetWithCharactersInString(u"$"));
    const auto storage = documentWithText(u"ab #cd", syntax);
    EXPECT_EQ(storage->rangeOfIdentifierAtIndex(0, true), NSMakeRange(0, 2));
    EXPECT_EQ(storage->rangeOfIdentifierAtIndex(4, true), NSMakeRange(4, 2));
}

// MARK: Pasted text

constexpr auto reindent = QVTextFormattingReindent;
constexpr auto rewrite = QVTextFormattingRewriteIndentation;

/// A language in which braces indent, as the bundled ones say it.
std::shared_ptr<QVSyntax> bracesLanguage() {
    return syntaxWithElements("<scopes>" + single("w", "\\w+") +
                              "</scopes><indentation><increase><expression>\\{ \\s* $</expression></increase>"
                              "<decrease><expression>^ \\s* \\}</expression></decrease></indentation>");
}

/// A document, and what a text looks like that was pasted behind its "|".
class Paste {
public:
    explicit Paste(std::u16string document, QVIndentationStyle style = QVIndentationStyleSpaces,
                   QVLineEndings lineEndings = QVLineEndingsLF, std::shared_ptr<QVSyntax> syntax = nullptr) {
        _location = document.find(u'|');
        document.erase(_location, 1);
        _storage = QVConcreteTextStorage::initWithString(document);
        _storage->setIndentationStyle(style);
        _storage->setLineEndings(lineEndings);
        if (syntax)
            _storage->setSyntax(syntax);
    }

    QVConcreteTextStorage &storage() { return *_storage; }

    std::string operator()(std::u16string_view text, std::uint64_t options,
                           QVTextStorage::FormattingBlock handler = nullptr) {
        const auto pasted = NSMutableAttributedString::initWithString(text);
        _storage->formatAttributedStringForInsertion(*pasted, {_location, 0}, options, handler);
        return textOf(*pasted);
    }

    NSUInteger location() const { return _location; }

private:
    NSUInteger _location = 0;
    std::shared_ptr<QVConcreteTextStorage> _storage;
};

TEST(QVTextStoragePasting, WithoutOptionsOnlyLineEndingsChange) {
    Paste paste(u"    |");
    EXPECT_EQ(paste(u"\ta\r\n  b\r\tc\n", 0), "\ta\n  b\n\tc\n");
}

TEST(QVTextStoragePasting, LineEndingsBecomeTheDocuments) {
    EXPECT_EQ(Paste(u"|", QVIndentationStyleSpaces, QVLineEndingsCRLF)(u"a\nb\rc\r\nd", 0),
              "a\r\nb\r\nc\r\nd");
    EXPECT_EQ(Paste(u"|", QVIndentationStyleSpaces, QVLineEndingsCR)(u"a\nb\rc\r\n\n", 0), "a\rb\rc\r\r");
    EXPECT_EQ(Paste(u"|")(u"", reindent | rewrite), "");
}

TEST(QVTextStoragePasting, ABlockIndentedByEightGoesToFour) {
    Paste paste(u"x\n    |");
    EXPECT_EQ(paste(u"        a\n        b\n            c", reindent), "a\n    b\n        c");
}

TEST(QVTextStoragePasting, ABlockCanMoveInwards) {
    Paste paste(u"        |");
    EXPECT_EQ(paste(u"a\nb\n  c", reindent), "a\n        b\n          c");
}

TEST(QVTextStoragePasting, TheShiftKeepsTheRestOfAnOddIndentation) {
    // Six spaces count as four; the lines move by four and keep what they have beyond.
    Paste paste(u"        |");
    EXPECT_EQ(paste(u"a\n      b\n    c", reindent), "a\n          b\n        c");
}

TEST(QVTextStoragePasting, NoLineMovesBeyondTheMargin) {
    Paste paste(u"|");
    EXPECT_EQ(paste(u"a\n        b\n    c\nd", reindent), "a\nb\nc\nd");
}

TEST(QVTextStoragePasting, LinesOfIndentationAloneDoNotSayHowFarTheBlockMoves) {
    Paste paste(u"    |");
    EXPECT_EQ(paste(u"a\n \n\n        b", reindent), "a\n\n\n    b");
}

TEST(QVTextStoragePasting, TheFirstLineKeepsItsIndentationInsideOfALine) {
    // The document's indentation does not end where the text goes.
    Paste paste(u"    x|");
    EXPECT_EQ(paste(u"  a\n        b", reindent), "  a\n    b");
    EXPECT_EQ(Paste(u"    |")(u"    ", reindent), "    ") << "nor where the line is blank";
}

TEST(QVTextStoragePasting, AnIncreaseBeforeTheTextIndentsTheBlock) {
    Paste paste(u"if {|\n}", QVIndentationStyleSpaces, QVLineEndingsLF, bracesLanguage());
    EXPECT_EQ(paste(u"\na\n", reindent), "\n    a\n");
    // The first pasted line is joined with what stands before it.
    Paste open(u"if |", QVIndentationStyleSpaces, QVLineEndingsLF, bracesLanguage());
    EXPECT_EQ(open(u"{\na", reindent), "{\n    a");
    EXPECT_EQ(open(u"x\na", reindent), "x\na");
}

TEST(QVTextStoragePasting, ADecreaseRightAfterItMakesTheIncreaseVoid) {
    Paste paste(u"    if {|", QVIndentationStyleSpaces, QVLineEndingsLF, bracesLanguage());
    EXPECT_EQ(paste(u"\n}\nx", reindent), "\n    }\n    x");
    EXPECT_EQ(paste(u"\n    }\nx", reindent), "\n    }\nx");
    EXPECT_EQ(paste(u"\nx }\n", reindent), "\n        x }\n") << "it must begin the line";
}

TEST(QVTextStoragePasting, ADecreaseWithoutAnIncreaseBeforeItMovesNothing) {
    Paste paste(u"    |", QVIndentationStyleSpaces, QVLineEndingsLF, bracesLanguage());
    EXPECT_EQ(paste(u"a\n    }\nx", reindent), "a\n    }\nx");
}

TEST(QVTextStoragePasting, ADecreaseFurtherInTheLineMovesNothing) {
    const auto syntax =
        syntaxWithElements("<scopes>" + single("w", "\\w+") +
                           "</scopes><indentation><increase><expression>\\{$</expression></increase>"
                           "<decrease><expression>\\}</expression></decrease></indentation>");
    Paste paste(u"if {|", QVIndentationStyleSpaces, QVLineEndingsLF, syntax);
    EXPECT_EQ(paste(u"\nx }\n", reindent), "\n    x }\n");
    EXPECT_EQ(paste(u"\n}\n", reindent), "\n}\n");
}

TEST(QVTextStoragePasting, IndentationTakesTheDocumentsForm) {
    EXPECT_EQ(Paste(u"|", QVIndentationStyleTabs)(u"        a\n      b", rewrite), "\t\ta\n\t  b");
    EXPECT_EQ(Paste(u"|")(u"\t\ta\n\t b", rewrite), "        a\n     b");
    EXPECT_EQ(Paste(u"|", QVIndentationStyleTabs)(u"    a", 0), "    a");
}

TEST(QVTextStoragePasting, ReindentingChangesTheFormAtLineStartsOnly) {
    EXPECT_EQ(Paste(u"x|", QVIndentationStyleTabs)(u"    a    b\n    c    d", reindent), "\ta    b\nc    d");
}

TEST(QVTextStoragePasting, RewritingChangesIndentationFurtherInToo) {
    EXPECT_EQ(Paste(u"|", QVIndentationStyleTabs)(u"a    b        c  d\ne    f", rewrite),
              "a\tb\t\tc  d\ne\tf");
    EXPECT_EQ(Paste(u"|")(u"a\tb \t c", rewrite), "a    b      c");
}

TEST(QVTextStoragePasting, OneCharacterWithoutALineEndChangesItsFormAlone) {
    EXPECT_EQ(Paste(u"x|")(u"\t", rewrite), "    ");
    EXPECT_EQ(Paste(u"x|")(u"a", reindent | rewrite), "a");
}

TEST(QVTextStoragePasting, TheLastLineEndIsNotFollowedByALine) {
    Paste paste(u"        |");
    EXPECT_EQ(paste(u"a\nb\n", reindent), "a\n        b\n");
}

TEST(QVTextStoragePasting, ATabWidthOfNothingMeansTheUsualOne) {
    Paste paste(u"    |", QVIndentationStyleTabs);
    paste.storage().setTabWidth(0);
    EXPECT_EQ(paste(u"a\n        b", reindent | rewrite), "a\n\tb");
}

TEST(QVTextStoragePasting, TheHandlerIsAskedForEachChange) {
    std::vector<std::string> asked;
    Paste paste(u"|", QVIndentationStyleSpaces, QVLineEndingsCRLF);
    const auto note = [&](QVTextFormattingKind kind, NSRange range, NSInteger change, bool &stop) {
        EXPECT_FALSE(stop);
        asked.push_back(std::to_string(kind) + " " + drawn(range) + " " + std::to_string(change));
        return true;
    };
    EXPECT_EQ(paste(u"\ta\tb\n  c", rewrite, note), "    a    b\r\n  c");
    EXPECT_THAT(asked, ElementsAre("1 0+1 3", "2 5+1 3", "3 10+1 1"));
}

TEST(QVTextStoragePasting, WhatTheHandlerRefusesStays) {
    Paste paste(u"|", QVIndentationStyleSpaces, QVLineEndingsCRLF);
    const auto onlyLineEnds = [](QVTextFormattingKind kind, NSRange, NSInteger, bool &) {
        return kind == QVTextFormattingLineEnding;
    };
    EXPECT_EQ(paste(u"\ta\tb\n\tc", rewrite, onlyLineEnds), "\ta\tb\r\n\tc");
    const auto noLineEnds = [](QVTextFormattingKind kind, NSRange, NSInteger, bool &) {
        return kind != QVTextFormattingLineEnding;
    };
    EXPECT_EQ(paste(u"\ta\tb\n\tc", rewrite, noLineEnds), "    a    b\n    c");
}

TEST(QVTextStoragePasting, TheHandlerCanStop) {
    Paste paste(u"|", QVIndentationStyleSpaces, QVLineEndingsCRLF);
    for (const int last : {1, 2, 3}) {
        int calls = 0;
        const auto stopping = [&](QVTextFormattingKind, NSRange, NSInteger, bool &stop) {
            stop = ++calls == last;
            return true;
        };
        const std::string result = paste(u"\ta\tb\n\tc", rewrite, stopping);
        EXPECT_EQ(calls, last);
        EXPECT_EQ(result, last == 1 ? "    a\tb\n\tc" : last == 2 ? "    a    b\n\tc" : "    a    b\r\n\tc");
    }
}

TEST(QVTextStoragePasting, AttributesOfThePastedTextStay) {
    const auto storage = QVConcreteTextStorage::init();
    storage->setIndentationStyle(QVIndentationStyleSpaces);
    const auto pasted = NSMutableAttributedString::initWithString(u"\ta", mark(1));
    pasted->setAttributes(mark(2), {1, 1});
    storage->formatAttributedStringForInsertion(*pasted, {0, 0}, rewrite, nullptr);
    EXPECT_EQ(textOf(*pasted), "    a");
    EXPECT_EQ(pasted->attributesAtIndex(3), mark(1));
    EXPECT_EQ(pasted->attributesAtIndex(4), mark(2));
}

TEST(QVTextStoragePasting, AHandlerThatChangesTheTextIsABug) {
    const auto storage = QVConcreteTextStorage::init();
    for (const bool answer : {true, false}) {
        const AssertionRecorder assertions;
        const auto pasted = NSMutableAttributedString::initWithString(u"    a\n    b\n");
        storage->formatAttributedStringForInsertion(
            *pasted, {0, 0}, rewrite, [&](QVTextFormattingKind, NSRange, NSInteger, bool &) {
                if (pasted->length() > 7)
                    pasted->deleteCharactersInRange({6, pasted->length() - 6});
                return answer;
            });
        EXPECT_THAT(assertions.messages(), testing::Contains(u"String length doesn't match"));
    }
}

TEST(QVTextStoragePasting, AHandlerThatTakesALineEndAwayIsLogged) {
    const auto storage = QVConcreteTextStorage::init();
    const LogRecorder log;
    const auto pasted = NSMutableAttributedString::initWithString(u"    a\nb");
    storage->formatAttributedStringForInsertion(*pasted, {0, 0}, rewrite,
                                                [&](QVTextFormattingKind, NSRange, NSInteger, bool &) {
                                                    pasted->replaceCharactersInRange({5, 1}, u"x");
                                                    return false;
                                                });
    EXPECT_EQ(textOf(*pasted), "    axb");
    EXPECT_THAT(log.messages(),
                ElementsAre(u"Unexpected line endings encountered while formatting string:     axb"));
}

TEST(QVTextStoragePasting, APlaceBeyondTheTextThrows) {
    const auto storage = QVConcreteTextStorage::initWithString(u"a");
    const auto pasted = NSMutableAttributedString::initWithString(u"b");
    EXPECT_THROW(storage->formatAttributedStringForInsertion(*pasted, {2, 0}, reindent, nullptr),
                 NSException);
}

TEST(QVTextStoragePasting, TheWholeIsOneEditOfThePastedStorage) {
    const auto storage = QVConcreteTextStorage::init();
    const auto pasted = QVConcreteTextStorage::initWithString(u"    a\r\n    b");
    std::vector<std::string> lines;
    const auto observer = std::make_shared<StorageObserver>(lines);
    pasted->addChangeObserver(observer);
    storage->formatAttributedStringForInsertion(*pasted, {0, 0}, rewrite, nullptr);
    EXPECT_EQ(textOf(*pasted), "\ta\n\tb");
    EXPECT_EQ(std::ranges::count_if(lines, [](const std::string &line) { return line.starts_with("did"); }),
              1);
}

} // namespace
} // namespace quorvane
