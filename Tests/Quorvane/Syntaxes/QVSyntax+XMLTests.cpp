#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSRegularExpression.h"
#include "Platform/Foundation/NSURL.h"
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/Detectors/QVDetector.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Symbols/QVSymbolDocumentationBehavior.h"
#include "Quorvane/Syntaxes/QVSyntaxSurroundingPair.h"
#include "Tests/Quorvane/Syntaxes/SyntaxFixtures.h"

#include <cstdio>
#include <fstream>

using namespace quorvane;
using namespace quorvane::test;

TEST(QVSyntaxXML, AFileWithANameAloneGivesTheDefaults) {
    const auto syntax = syntaxOf("");
    EXPECT_EQ(syntax->name(), u"test");
    EXPECT_FALSE(syntax->isSubsyntaxOnly());
    EXPECT_FALSE(syntax->isScriptable());
    EXPECT_TRUE(syntax->displayName().isNull());
    EXPECT_EQ(syntax->syntaxType(), QVSyntaxTypeUnknown);
    EXPECT_TRUE(syntax->parentSyntaxName().isNull());
    EXPECT_TRUE(syntax->detectors().empty());
    EXPECT_EQ(syntax->symbolLocalScopeBehavior(), QVSymbolLocalScopeBehaviorNone);
    EXPECT_EQ(syntax->symbolRedefinitionBehavior(), QVSymbolRedefinitionBehaviorDistinct);
    EXPECT_EQ(syntax->symbolLookupBehavior(), 2u);
    EXPECT_EQ(syntax->symbolDocumentationBehaviors(), std::nullopt);
    EXPECT_EQ(syntax->spellCheckingType(), QVSpellCheckingDisabled);
    EXPECT_EQ(syntax->identifierCharacterSet(), nullptr);
    EXPECT_EQ(syntax->identifierPrefixCharacterSet(), nullptr);
    EXPECT_TRUE(syntax->bracketPairs().empty());
    EXPECT_TRUE(syntax->surroundingPairs().empty());
    EXPECT_EQ(syntax->indentationIncrease(), nullptr);
    EXPECT_EQ(syntax->indentationDecrease(), nullptr);
    EXPECT_EQ(syntax->indentationNextLine(), nullptr);
    EXPECT_EQ(syntax->indentationIgnore(), nullptr);
    EXPECT_TRUE(syntax->singleLineCommentPrefix().isNull());
    EXPECT_TRUE(syntax->multilineCommentPrefix().isNull());
    EXPECT_TRUE(syntax->multilineCommentSuffix().isNull());
    EXPECT_TRUE(syntax->preferredFileExtension().isNull());
    EXPECT_TRUE(syntax->scriptingShebang().isNull());
    EXPECT_TRUE(syntax->completionProviders().empty());
    EXPECT_FALSE(syntax->grammarResolved());
    EXPECT_TRUE(syntax->grammarData().isNull());
    ASSERT_NE(syntax->grammar(), nullptr);
    EXPECT_EQ(syntax->grammar()->name(), u"test");
    EXPECT_TRUE(syntax->grammar()->scopes().empty());
}

TEST(QVSyntaxXML, SubsyntaxIsTrueInAnyCaseAlone) {
    EXPECT_TRUE(syntaxOf("", "name='a' subsyntax='TRUE'")->isSubsyntaxOnly());
    EXPECT_FALSE(syntaxOf("", "name='a' subsyntax='false'")->isSubsyntaxOnly());
    EXPECT_FALSE(syntaxOf("", "name='a' subsyntax='yes'")->isSubsyntaxOnly());
}

// meta

TEST(QVSyntaxXML, MetaHoldsNamesTypeAndParent) {
    const auto syntax = syntaxOf("<meta><name>C++</name><type>compiled</type><parent>c</parent>"
                                 "<preferred-file-extension>cc</preferred-file-extension></meta>");
    EXPECT_EQ(syntax->displayName(), u"C++");
    EXPECT_EQ(syntax->syntaxType(), QVSyntaxTypeCompiled);
    EXPECT_EQ(syntax->parentSyntaxName(), u"c");
    EXPECT_EQ(syntax->preferredFileExtension(), u"cc");
    EXPECT_FALSE(syntax->isScriptable());
}

TEST(QVSyntaxXML, TheTypeIsComparedExactly) {
    EXPECT_EQ(syntaxOf("<meta><type>Compiled</type></meta>")->syntaxType(), QVSyntaxTypeUnknown);
    EXPECT_EQ(syntaxOf("<meta><type>script</type></meta>")->syntaxType(), QVSyntaxTypeScript);
}

TEST(QVSyntaxXML, AnExtensionHoldsLettersAndDigitsAlone) {
    const auto extension = [](std::string_view text) {
        return syntaxOf("<meta><preferred-file-extension>" + std::string(text) +
                        "</preferred-file-extension></meta>")
            ->preferredFileExtension();
    };
    EXPECT_EQ(extension("mp3"), u"mp3");
    EXPECT_EQ(extension("\xC3\xA9"), u"\u00E9");
    EXPECT_TRUE(extension("tar.gz").isNull());
    EXPECT_TRUE(extension(".c").isNull());
    EXPECT_TRUE(extension(" c").isNull());
    EXPECT_TRUE(extension("c_").isNull());
}

TEST(QVSyntaxXML, ScriptableIsSetByItsPresence) {
    const auto plain = syntaxOf("<meta><scriptable/></meta>");
    EXPECT_TRUE(plain->isScriptable());
    EXPECT_TRUE(plain->scriptingShebang().isNull());
    EXPECT_EQ(syntaxOf("<meta><scriptable shebang='#!/bin/sh'/></meta>")->scriptingShebang(), u"#!/bin/sh");
}

TEST(QVSyntaxXML, OfRepeatedElementsTheLastCountsAtEachLevel) {
    const auto syntax = syntaxOf("<meta><name>a</name><type>script</type></meta>"
                                 "<meta><name>b</name><name>c</name></meta>");
    EXPECT_EQ(syntax->displayName(), u"c");
    EXPECT_EQ(syntax->syntaxType(), QVSyntaxTypeUnknown);
    const auto document = documentOf("<syntaxes><syntax name='x'/></syntaxes>");
    EXPECT_EQ(QVSyntax::initWithDocument(*document), nullptr);
}

TEST(QVSyntaxXML, UnknownElementsArePassedOver) {
    EXPECT_EQ(syntaxOf("text<future><meta/></future><meta><x/><name>a</name></meta>")->displayName(), u"a");
}

// detectors, characters, pairs

TEST(QVSyntaxXML, DetectorsStandInDocumentOrder) {
    const auto syntax = syntaxOf("<detectors><filename>a</filename><magic/><combo/><extension>b</extension>"
                                 "<match-content>c</match-content></detectors>");
    ASSERT_EQ(syntax->detectors().size(), 4u);
    EXPECT_EQ(syntax->detectors()[0]->className(), u"QVFilenameDetector");
    EXPECT_EQ(syntax->detectors()[1]->className(), u"QVCompoundDetector");
    EXPECT_EQ(syntax->detectors()[2]->className(), u"QVExtensionDetector");
    EXPECT_EQ(syntax->detectors()[3]->className(), u"QVRegularExpressionDetector");
}

TEST(QVSyntaxXML, IdentifiersHaveCharactersAndPrefixes) {
    const auto syntax = syntaxOf("<identifiers><characters><alpha/><string>_</string></characters>"
                                 "<prefixes><string>$@</string></prefixes></identifiers>");
    ASSERT_NE(syntax->identifierCharacterSet(), nullptr);
    EXPECT_TRUE(syntax->identifierCharacterSet()->characterIsMember(u'a'));
    EXPECT_TRUE(syntax->identifierCharacterSet()->characterIsMember(u'_'));
    EXPECT_FALSE(syntax->identifierCharacterSet()->characterIsMember(u'$'));
    ASSERT_NE(syntax->identifierPrefixCharacterSet(), nullptr);
    EXPECT_TRUE(syntax->identifierPrefixCharacterSet()->characterIsMember(u'$'));
    EXPECT_FALSE(syntax->identifierPrefixCharacterSet()->characterIsMember(u'a'));
}

TEST(QVSyntaxXML, BracketsNeedBothEndsAndLaterOnesReplaceEarlierOnes) {
    const auto syntax =
        syntaxOf("<brackets><pair open='(' close=']'/><pair open='{' close='}'/><pair open='('/>"
                 "<pair open='x' close=''/><pair open='' close='y'/><pair open='(' close=')'/>"
                 "</brackets>");
    EXPECT_EQ(syntax->bracketPairs(), (std::map<NSString, NSString>{{u"(", u")"}, {u"{", u"}"}}));
    EXPECT_TRUE(syntaxOf("<brackets/>")->bracketPairs().empty());
}

TEST(QVSyntaxXML, SurroundingPairsNeedBothEnds) {
    const auto syntax =
        syntaxOf("<surrounding-pairs><pair open='(' close=')' skip='string, comment'/>"
                 "<pair open='['/><pair close=']'/><pair open='&quot;' close='&quot;' skip=''/>"
                 "</surrounding-pairs>");
    ASSERT_EQ(syntax->surroundingPairs().size(), 2u);
    const auto &round = syntax->surroundingPairs().at(u"(");
    EXPECT_EQ(round->open(), u"(");
    EXPECT_EQ(round->close(), u")");
    ASSERT_TRUE(round->skipSelectors().has_value());
    ASSERT_EQ(round->skipSelectors()->size(), 2u);
    EXPECT_EQ(round->skipSelectors()->at(0)->string(), u"string");
    EXPECT_EQ(round->skipSelectors()->at(1)->string(), u"comment");
    EXPECT_EQ(syntax->surroundingPairs().at(u"\"")->skipSelectors(), std::nullopt);
}

// symbols

TEST(QVSyntaxXML, RedefinitionIsAWordInAnyCase) {
    const auto redefinition = [](std::string_view word) {
        return syntaxOf("<symbols redefinition='" + std::string(word) + "'/>")->symbolRedefinitionBehavior();
    };
    EXPECT_EQ(redefinition("Within-Construct"), QVSymbolRedefinitionBehaviorWithinConstruct);
    EXPECT_EQ(redefinition("NON-DISTINCT"), QVSymbolRedefinitionBehaviorNonDistinct);
    EXPECT_EQ(redefinition("distinct"), QVSymbolRedefinitionBehaviorDistinct);
    EXPECT_EQ(redefinition("never"), QVSymbolRedefinitionBehaviorDistinct);
}

TEST(QVSyntaxXML, TwoWordsLimitLocalSymbolsAndAreComparedExactly) {
    const auto local = [](std::string_view word) {
        return syntaxOf("<symbols><local scope='" + std::string(word) + "'/></symbols>")
            ->symbolLocalScopeBehavior();
    };
    // Meant so: both words stand for one behaviour.
    EXPECT_EQ(local("within-construct"), QVSymbolLocalScopeBehaviorWithinConstruct);
    EXPECT_EQ(local("within-parent"), QVSymbolLocalScopeBehaviorWithinConstruct);
    EXPECT_EQ(local("Within-Parent"), QVSymbolLocalScopeBehaviorNone);
    EXPECT_EQ(local("none"), QVSymbolLocalScopeBehaviorNone);
}

TEST(QVSyntaxXML, DocumentationIsReadInOrderAndAbsentWithoutSymbols) {
    const auto syntax =
        syntaxOf("<symbols><documentation mode='after'/><documentation match='x'/></symbols>");
    ASSERT_TRUE(syntax->symbolDocumentationBehaviors().has_value());
    ASSERT_EQ(syntax->symbolDocumentationBehaviors()->size(), 2u);
    EXPECT_EQ(syntax->symbolDocumentationBehaviors()->at(0)->searchMode(), 2u);
    EXPECT_EQ(syntax->symbolDocumentationBehaviors()->at(1)->searchMode(), 1u);
    EXPECT_TRUE(syntaxOf("<symbols/>")->symbolDocumentationBehaviors()->empty());
}

// completions

TEST(QVSyntaxXML, ProvidersAreReadInOrder) {
    const auto syntax = syntaxOf("<completions><provider name='a'/><set/><provider name='b'/></completions>");
    ASSERT_EQ(syntax->completionProviders().size(), 2u);
    EXPECT_EQ(syntax->completionProviders()[0]->name(), u"a");
    EXPECT_EQ(syntax->completionProviders()[1]->name(), u"b");
}

// the grammar

TEST(QVSyntaxXML, ScopesAndIncludesAreTheTopOfTheGrammar) {
    // A cut-off has nothing to cut off there; this one would fail the file.
    const auto syntax = syntaxOf("<scopes><include collection='x'/><cut-off/><scope name='a'><expression>a"
                                 "</expression></scope></scopes>");
    EXPECT_EQ(names(syntax->grammar()->scopes()), (Texts{u"self:x", u"a"}));
    EXPECT_EQ(syntax->grammar()->scopes()[0]->parent(), nullptr);
}

TEST(QVSyntaxXML, SpellCheckingOfTheGrammarIsAWordInAnyCase) {
    EXPECT_EQ(syntaxOf("<scopes spell-check='TRUE'/>")->spellCheckingType(), QVSpellCheckingEnabled);
    EXPECT_EQ(syntaxOf("<scopes spell-check='false'/>")->spellCheckingType(), QVSpellCheckingDisabled);
    EXPECT_EQ(syntaxOf("<scopes spell-check='Inherit'/>")->spellCheckingType(), QVSpellCheckingInherit);
    EXPECT_EQ(syntaxOf("<scopes spell-check='some'/>")->spellCheckingType(), QVSpellCheckingDisabled);
}

TEST(QVSyntaxXML, AnUnknownWordForLookupIsNoneAndAMissingOneIsTheIndex) {
    EXPECT_EQ(syntaxOf("<scopes lookup='Dictionary'/>")->symbolLookupBehavior(), 4u);
    EXPECT_EQ(syntaxOf("<scopes lookup='everywhere'/>")->symbolLookupBehavior(), 0u);
    EXPECT_EQ(syntaxOf("<scopes lookup=''/>")->symbolLookupBehavior(), 0u);
    EXPECT_EQ(syntaxOf("<scopes/>")->symbolLookupBehavior(), 2u);
}

TEST(QVSyntaxXML, CollectionsAreKeptByName) {
    const auto grammar =
        syntaxOf(
            "<collections><collection name='a' override='TRUE'><scope name='s'><expression>x</expression>"
            "</scope><include/><cut-off name='c'><expression>y</expression></cut-off></collection>"
            "<collection name=''><scope/></collection><collection><scope/></collection>"
            "<collection name='b'><scope name='old'><expression>x</expression></scope></collection>"
            "<collection name='b' override='yes'/></collections>")
            ->grammar();
    ASSERT_EQ(grammar->collections().size(), 2u);
    EXPECT_EQ(grammar->collectionWithName(u"a")->name(), u"a");
    EXPECT_TRUE(grammar->collectionWithName(u"a")->overrides());
    EXPECT_EQ(names(grammar->collectionWithName(u"a")->scopes()), (Texts{u"s", u"self", u"c"}));
    EXPECT_FALSE(grammar->collectionWithName(u"b")->overrides());
    EXPECT_TRUE(grammar->collectionWithName(u"b")->scopes().empty());
}

TEST(QVSyntaxXML, TemplateScopesAreMarked) {
    const auto grammar = syntaxOf("<template-scopes><include syntax='a'/><cut-off/><scope name='b'>"
                                  "<expression>x</expression></scope></template-scopes>")
                             ->grammar();
    EXPECT_EQ(names(grammar->templateScopes()), (Texts{u"a", u"b"}));
    for (const auto &scope : grammar->templateScopes())
        EXPECT_TRUE(scope->isTemplateScope());
    EXPECT_FALSE(syntaxOf(wholeGrammar)->grammar()->scopes()[0]->isTemplateScope());
}

TEST(QVSyntaxXML, TheGrammarIsConnectedAtItsFirstUse) {
    const auto syntax = syntaxOf(wholeGrammar);
    EXPECT_EQ(syntax->grammarResolvingIfNecessary(false), nullptr);
    EXPECT_EQ(syntax->grammar()->collectionWithName(u"c")->scopes()[0]->parentSyntax(), syntax);
    EXPECT_TRUE(syntax->grammarResolved());
}

// indentation and comments

TEST(QVSyntaxXML, IndentationExpressionsAreCompiledWithLayout) {
    const auto syntax = syntaxOf(
        "<indentation><increase><expression> \\{ $ # comment</expression></increase>"
        "<decrease><expression>a</expression><expression>b</expression></decrease>"
        "<next-line><expression>c</expression></next-line><ignore><expression>d</expression></ignore>"
        "</indentation>");
    ASSERT_NE(syntax->indentationIncrease(), nullptr);
    EXPECT_EQ(syntax->indentationIncrease()->options(), NSRegularExpressionAllowCommentsAndWhitespace);
    EXPECT_EQ(syntax->indentationIncrease()->rangeOfFirstMatchInString(u"if {", 0, {0, 4}), (NSRange{3, 1}));
    EXPECT_EQ(syntax->indentationDecrease()->pattern(), u"b");
    EXPECT_EQ(syntax->indentationNextLine()->pattern(), u"c");
    EXPECT_EQ(syntax->indentationIgnore()->pattern(), u"d");
}

TEST(QVSyntaxXML, AnEmptyIndentationExpressionIsPassedOver) {
    const auto syntax = syntaxOf("<indentation><increase><expression/></increase><decrease/></indentation>");
    EXPECT_EQ(syntax->indentationIncrease(), nullptr);
    EXPECT_EQ(syntax->indentationDecrease(), nullptr);
}

TEST(QVSyntaxXML, CommentsArePlainTextsTrimmedOfBlanksAndTabs) {
    const auto syntax =
        syntaxOf("<comments><single><expression> \t// </expression></single><multiline>"
                 "<starts-with><expression>/*(</expression></starts-with>"
                 "<ends-with><expression>\n*/ </expression></ends-with></multiline></comments>");
    EXPECT_EQ(syntax->singleLineCommentPrefix(), u"//");
    EXPECT_EQ(syntax->multilineCommentPrefix(), u"/*(");
    EXPECT_EQ(syntax->multilineCommentSuffix(), u"\n*/");
}

// files

TEST(QVSyntaxXML, IsReadFromAFile) {
    const std::string path = testing::TempDir() + "quorvane-syntax-from-a-file.xml";
    std::ofstream(path) << "<?xml version='1.0'?>\n<syntax name='from-a-file'/>";
    std::shared_ptr<NSError> error;
    const auto syntax =
        QVSyntax::initWithContentsOfURL(NSURL::fileURLWithPath(NSString::stringWithUTF8String(path)), &error);
    std::remove(path.c_str());
    EXPECT_EQ(error, nullptr);
    ASSERT_NE(syntax, nullptr);
    EXPECT_EQ(syntax->name(), u"from-a-file");
}
