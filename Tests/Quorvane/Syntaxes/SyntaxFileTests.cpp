// The reference of the syntax file: its examples are read, and make the trees that it shows.
#include "Host/QVMatchTreeText.h"
#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/Detectors/QVDetector.h"
#include "Quorvane/Formatters/QVFormatter.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Symbols/QVSymbolBehaviors.h"
#include "Quorvane/Symbols/QVSymbolDocumentationBehavior.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntaxSurroundingPair.h"
#include "Quorvane/XML/QVXMLDocument.h"
#include "Tests/Support/Examples.h"
#include "Tests/Support/ParseFixture.h"
#include "Tests/Support/Printing.h"

#include <algorithm>

using namespace quorvane;
using namespace quorvane::test;

namespace {

constexpr const char *page = "SyntaxFile.md";

/// The tree of a text without the root.
std::string treeOfExample(const std::shared_ptr<QVSyntax> &syntax, const std::string &text) {
    const auto parse = parseOfText(syntax, NSString::stringWithUTF8String(text));
    std::string tree;
    parse->performReadingBlockAndWait([&] { tree = QVMatchTreeText(*parse); });
    std::string result;
    for (std::size_t start = tree.find('\n') + 1; start < tree.size();) {
        const std::size_t end = tree.find('\n', start);
        result += tree.substr(start + 2, end - start - 2) + "\n";
        start = end + 1;
    }
    return result;
}

/// The first example in the section with this heading, or one of those behind it.
std::shared_ptr<QVSyntax> exampleOfSection(const std::string &heading, std::size_t index = 0) {
    const std::string text = textOfPage(page);
    std::size_t at = text.find("\n## " + heading + "\n");
    for (std::size_t turn = 0; at != std::string::npos && turn <= index; ++turn)
        at = text.find("```xml\n", at + 1);
    if (at == std::string::npos) {
        ADD_FAILURE() << "no such example in " << heading;
        return std::make_shared<QVSyntax>();
    }
    at += 7;
    return syntaxFromXML(text.substr(at, text.find("```", at) - at));
}

std::shared_ptr<QVScopeSymbolOptions> symbolOfExample(std::size_t scope) {
    return exampleOfSection("Symbols")->grammar()->scopes().at(scope)->symbolOptions();
}

bool finds(const std::shared_ptr<NSRegularExpression> &expression, std::u16string_view text) {
    return expression && expression->firstMatchInString(text, 0, {0, text.size()}).has_value();
}

} // namespace

TEST(SyntaxFileReference, EachExampleIsReadWithoutAnError) {
    std::size_t count = 0;
    for (const PageExample &example : examplesOfPage(page)) {
        if (example.kind != "xml")
            continue;
        SCOPED_TRACE(example.text);
        std::shared_ptr<NSError> error;
        const auto document = QVXMLDocument::initWithData(NSData(example.text), &error);
        ASSERT_TRUE(document);
        EXPECT_TRUE(QVSyntax::initWithDocument(*document, &error));
        EXPECT_FALSE(error) << error->localizedDescription().UTF8String();
        ++count;
    }
    EXPECT_GT(count, 15u);
}

TEST(SyntaxFileReference, EachTextOfAnExampleHasTheTreeBehindIt) {
    const auto examples = examplesOfPage(page);
    std::size_t count = 0;
    for (std::size_t index = 0; index + 2 < examples.size(); ++index) {
        if (examples[index].kind != "xml" || examples[index + 1].kind != "text")
            continue;
        ASSERT_EQ(examples[index + 2].kind, "tree");
        SCOPED_TRACE(examples[index + 1].text);
        const RegisteredSyntax syntax(syntaxFromXML(examples[index].text));
        EXPECT_EQ(treeOfExample(syntax.syntax(), examples[index + 1].text), examples[index + 2].text);
        ++count;
    }
    EXPECT_EQ(count, static_cast<std::size_t>(std::ranges::count(examples, "tree", &PageExample::kind)));
    EXPECT_GT(count, 8u);
}

TEST(SyntaxFileReference, EachElementAndAttributeStandsInAnExample) {
    std::string all;
    for (const PageExample &example : examplesOfPage(page))
        if (example.kind == "xml")
            all += example.text;
    for (const std::string &word : wordsOfTables(page)) {
        const bool isAttribute = all.find(" " + word + "=\"") != std::string::npos;
        const bool isElement = all.find("<" + word + ">") != std::string::npos ||
                               all.find("<" + word + " ") != std::string::npos ||
                               all.find("<" + word + "/>") != std::string::npos;
        EXPECT_TRUE(isAttribute || isElement) << word;
    }
}

TEST(SyntaxFileReference, TheExampleOfMetadataSaysAllOfIt) {
    const auto syntax = exampleOfSection("`meta`");
    EXPECT_EQ(syntax->displayName(), u"Tiny Script");
    EXPECT_EQ(syntax->syntaxType(), QVSyntaxTypeFromString(u"script"));
    EXPECT_NE(syntax->syntaxType(), 0u);
    EXPECT_EQ(syntax->preferredFileExtension(), u"tiny");
    EXPECT_EQ(syntax->parentSyntaxName(), u"small");
    EXPECT_TRUE(syntax->isScriptable());
    EXPECT_EQ(syntax->scriptingShebang(), u"#!/usr/bin/env tiny");
    EXPECT_TRUE(exampleOfSection("`syntax`")->isSubsyntaxOnly());
}

TEST(SyntaxFileReference, TheExampleOfDetectorsBidsWhatItSays) {
    const auto syntax = exampleOfSection("`detectors`");
    const auto bid = [&](std::u16string_view text, std::u16string_view name) {
        return syntax->confidenceForString(NSString(std::u16string(text)), NSString(std::u16string(name)));
    };
    EXPECT_FLOAT_EQ(bid(u"", u"a.tiny"), 1.0f);
    EXPECT_FLOAT_EQ(bid(u"", u"a.TN"), 1.0f);
    EXPECT_FLOAT_EQ(bid(u"", u"a.test.tiny"), 0.5f);
    EXPECT_FLOAT_EQ(bid(u"", u"TinyFile"), 0.9f);
    EXPECT_FLOAT_EQ(bid(u"#!/bin/tiny\n", u"a"), 0.8f);
    EXPECT_FLOAT_EQ(bid(u"\n#!/bin/tiny\n", u"a"), 0.0f);
    EXPECT_FLOAT_EQ(bid(u"\n\nbegin tiny\n", u"a.txt"), 0.6f);
    EXPECT_FLOAT_EQ(bid(u"\n\nbegin\n", u"a.txt"), 0.0f);
}

TEST(SyntaxFileReference, TheExamplesOfCharactersPairsAndCommentsSayAllOfIt) {
    const auto syntax = exampleOfSection("Characters, pairs and comments");
    EXPECT_TRUE(syntax->identifierCharacterSet()->characterIsMember(u'?'));
    EXPECT_TRUE(syntax->identifierCharacterSet()->characterIsMember(u'7'));
    EXPECT_TRUE(syntax->identifierPrefixCharacterSet()->characterIsMember(u'@'));
    EXPECT_EQ(syntax->bracketPairs().at(u"begin"), u"end");
    EXPECT_EQ(syntax->surroundingPairs().size(), 2u);
    EXPECT_EQ(syntax->surroundingPairs().at(u"\"")->skipSelectors()->size(), 2u);
    EXPECT_EQ(syntax->singleLineCommentPrefix(), u"#");
    EXPECT_EQ(syntax->multilineCommentPrefix(), u"(*");
    EXPECT_EQ(syntax->multilineCommentSuffix(), u"*)");
    const auto other = exampleOfSection("Characters, pairs and comments", 1);
    EXPECT_FALSE(other->identifierCharacterSet()->characterIsMember(u'_'));
    for (const char16_t unit : u"aA!+ ")
        EXPECT_TRUE(unit == 0 || other->identifierPrefixCharacterSet()->characterIsMember(unit)) << int(unit);
}

TEST(SyntaxFileReference, TheExampleOfIndentationMatchesTheLinesItSpeaksOf) {
    const auto syntax = exampleOfSection("`indentation`");
    EXPECT_TRUE(finds(syntax->indentationIncrease(), u"x begin "));
    EXPECT_FALSE(finds(syntax->indentationIncrease(), u"begin x"));
    EXPECT_TRUE(finds(syntax->indentationDecrease(), u"  end"));
    EXPECT_TRUE(finds(syntax->indentationNextLine(), u"if x then"));
    EXPECT_TRUE(finds(syntax->indentationIgnore(), u" # note"));
}

TEST(SyntaxFileReference, TheExamplesOfScopesHaveTheAttributesTheyShow) {
    const auto whole = exampleOfSection("How text is matched");
    EXPECT_EQ(whole->spellCheckingType(), QVSpellCheckingDisabled);
    EXPECT_EQ(whole->symbolLookupBehavior(), QVSymbolLookupBehaviorDocumentation);
    const auto scope = exampleOfSection("`scope`")->grammar()->scopes().at(0);
    EXPECT_EQ(scope->spellCheckingType(), QVSpellCheckingEnabled);
    EXPECT_EQ(scope->symbolLookupBehavior(), QVSymbolLookupBehaviorNone);
    EXPECT_TRUE(scope->shouldResetStyleAttributes());
    EXPECT_TRUE(exampleOfSection("`include` and `collection`")
                    ->grammar()
                    ->collectionWithName(u"values")
                    ->overrides());
}

TEST(SyntaxFileReference, TheExampleOfAnAtomicRegionKeepsItOpen) {
    std::string text = textOfPage(page);
    const std::size_t at = text.find("<syntax", text.find("\n## `subsyntax`"));
    std::string xml = text.substr(at, text.find("```", at) - at);
    xml.replace(xml.find("atomic=\"false\""), 14, "atomic=\"true\"");
    const RegisteredSyntax syntax(syntaxFromXML(xml));
    EXPECT_NE(
        treeOfExample(syntax.syntax(), "~~~me\n(a\n~~~\n)").find("StartEnd parenthesis [6,1] end[13,1]"),
        std::string::npos);
}

TEST(SyntaxFileReference, TheExampleOfASymbolHasAllThatOneCanHave) {
    const auto symbol = symbolOfExample(0);
    EXPECT_EQ(symbol->symbolType(), QVSymbolTypeFunction);
    EXPECT_EQ(symbol->symbolScope(), QVSymbolScopeLocal);
    EXPECT_EQ(symbol->nameSelector(), QVSimpleSelector::simpleSelectorWithString(u"title"));
    ASSERT_TRUE(symbol->leadingMatchRegularExpression());
    EXPECT_EQ(symbol->leadingMatchRegularExpression()->pattern(), u"def\\s+[^_]");
    EXPECT_TRUE(symbol->trailingMatchRegularExpression());
    ASSERT_TRUE(symbol->displayNameFormatter());
    const auto &components = symbol->displayNameFormatter()->components();
    ASSERT_EQ(components.size(), 3u);
    EXPECT_EQ(components[0]->value(), u"function ");
    EXPECT_EQ(components[1]->variable(), u"name");
    EXPECT_EQ(components[1]->appendExpression(), u"()");
    EXPECT_EQ(components[2]->selector(), QVSimpleSelector::simpleSelectorWithString(u"title"));
    EXPECT_EQ(components[2]->prependExpression(), u" of ");
    EXPECT_TRUE(components[2]->replaceExpression());
    EXPECT_EQ(components[2]->replaceWithExpression(), u"$1");
    EXPECT_EQ(symbol->contextBehavior(), QVSymbolContextBehaviorSubtree);
    EXPECT_EQ(symbol->contextLocalSymbolExportType(), QVSymbolTypeProperty);
    EXPECT_TRUE(symbol->isContextFoldable());
    EXPECT_EQ(symbol->contextFoldingSymbolType(), QVSymbolTypeBlock);
    EXPECT_TRUE(symbol->contextShouldCaptureArguments());
    EXPECT_EQ(symbol->contextAutocloseExpression(), u"end");
    EXPECT_EQ(symbol->contextAutocloseCompletionExpression(), u"end def");
    EXPECT_EQ(symbol->contextAutocloseIndentationBehavior(), QVSymbolContextIndentationBehaviorAuto);

    const auto tag = symbolOfExample(1);
    EXPECT_EQ(tag->symbolType(), QVSymbolTypeTag);
    EXPECT_FALSE(tag->isAnonymous());
    EXPECT_EQ(tag->contextBehavior(), QVSymbolContextBehaviorStart);
    EXPECT_TRUE(tag->usesNameAsContextGroupIdentifier());
    EXPECT_EQ(tag->contextUnclosedBehavior(), QVSymbolContextUnclosedBehaviorTruncate);
    EXPECT_EQ(tag->contextCapturePriority(), 2u);
    EXPECT_EQ(symbolOfExample(2)->contextGroupIdentifier(), u"headings");
    EXPECT_EQ(symbolOfExample(2)->contextBehavior(), QVSymbolContextBehaviorNext);
}

TEST(SyntaxFileReference, TheExamplesOfSymbolsAsAWholeAndOfCompletionsSayAllOfIt) {
    const auto syntax = exampleOfSection("Symbols", 1);
    EXPECT_EQ(syntax->symbolRedefinitionBehavior(), QVSymbolRedefinitionBehaviorWithinConstruct);
    EXPECT_EQ(syntax->symbolLocalScopeBehavior(), QVSymbolLocalScopeBehaviorWithinConstruct);
    ASSERT_TRUE(syntax->symbolDocumentationBehaviors());
    const auto &behaviors = *syntax->symbolDocumentationBehaviors();
    ASSERT_EQ(behaviors.size(), 2u);
    EXPECT_EQ(behaviors[0]->searchMode(), 2u);
    EXPECT_EQ(behaviors[0]->matchSelectors().size(), 1u);
    EXPECT_EQ(behaviors[0]->skipSelectors().size(), 1u);
    EXPECT_EQ(behaviors[1]->searchMode(), 1u);
    EXPECT_EQ(behaviors[1]->matchMultipleSelectors().size(), 1u);
    EXPECT_EQ(exampleOfSection("Symbols", 2)->completionProviders().size(), 1u);
}
