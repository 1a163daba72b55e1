#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/Completions/QVSymbolCompletion.h"
#include "Quorvane/Detectors/QVDetector.h"
#include "Quorvane/Symbols/QVSymbolDocumentationBehavior.h"
#include "Quorvane/Syntaxes/QVSyntaxSurroundingPair.h"
#include "Tests/Quorvane/Syntaxes/SyntaxFixtures.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/Recorders.h"

using namespace quorvane;
using namespace quorvane::test;

namespace {

/// A syntax in which nothing has its default.
std::shared_ptr<QVSyntax> unusualSyntax() {
    return syntaxOf(
        "<meta><name>Test</name><type>script</type><parent>base</parent><scriptable shebang='#!t'/>"
        "<preferred-file-extension>t</preferred-file-extension></meta>"
        "<detectors><extension priority='0.5'>t</extension></detectors>"
        "<identifiers><characters><alpha/></characters><prefixes><string>$</string></prefixes></identifiers>"
        "<brackets><pair open='(' close=')'/></brackets>"
        "<surrounding-pairs><pair open='[' close=']' skip='string'/></surrounding-pairs>"
        "<symbols redefinition='non-distinct'><local scope='within-parent'/><documentation "
        "mode='after'/></symbols>"
        "<completions><provider name='p'><symbols type='class'/></provider></completions>" +
            std::string(wholeGrammar)
                .replace(std::string(wholeGrammar).find("<scopes>"), 8,
                         "<scopes spell-check='true' lookup='dictionary'>") +
            "<indentation><increase><expression>i</expression></increase><decrease><expression>d</expression>"
            "</decrease><next-line><expression>n</expression></next-line><ignore><expression>g</expression>"
            "</ignore></indentation>"
            "<comments><single><expression>//</expression></single><multiline><starts-with><expression>/*"
            "</expression></starts-with><ends-with><expression>*/</expression></ends-with></multiline></"
            "comments>",
        "name='test' subsyntax='true'");
}

void expectUnusual(const std::shared_ptr<QVSyntax> &syntax) {
    ASSERT_NE(syntax, nullptr);
    EXPECT_EQ(syntax->name(), u"test");
    EXPECT_EQ(syntax->displayName(), u"Test");
    EXPECT_EQ(syntax->syntaxType(), QVSyntaxTypeScript);
    EXPECT_EQ(syntax->parentSyntaxName(), u"base");
    EXPECT_TRUE(syntax->isSubsyntaxOnly());
    EXPECT_TRUE(syntax->isScriptable());
    EXPECT_EQ(syntax->scriptingShebang(), u"#!t");
    EXPECT_EQ(syntax->preferredFileExtension(), u"t");
    ASSERT_EQ(syntax->detectors().size(), 1u);
    EXPECT_EQ(syntax->confidenceForString(nullptr, u"x.t"), 0.5f);
    EXPECT_EQ(syntax->symbolLocalScopeBehavior(), QVSymbolLocalScopeBehaviorWithinConstruct);
    EXPECT_EQ(syntax->symbolRedefinitionBehavior(), QVSymbolRedefinitionBehaviorNonDistinct);
    EXPECT_EQ(syntax->symbolLookupBehavior(), 4u);
    ASSERT_TRUE(syntax->symbolDocumentationBehaviors().has_value());
    ASSERT_EQ(syntax->symbolDocumentationBehaviors()->size(), 1u);
    EXPECT_EQ(syntax->symbolDocumentationBehaviors()->at(0)->searchMode(), 2u);
    ASSERT_EQ(syntax->completionProviders().size(), 1u);
    EXPECT_EQ(syntax->completionProviders()[0]->name(), u"p");
    EXPECT_EQ(syntax->spellCheckingType(), QVSpellCheckingEnabled);
    ASSERT_NE(syntax->identifierCharacterSet(), nullptr);
    EXPECT_TRUE(syntax->identifierCharacterSet()->isEqual(NSCharacterSet::letterCharacterSet().get()));
    ASSERT_NE(syntax->identifierPrefixCharacterSet(), nullptr);
    EXPECT_TRUE(syntax->identifierPrefixCharacterSet()->characterIsMember(u'$'));
    EXPECT_EQ(syntax->bracketPairs(), (std::map<NSString, NSString>{{u"(", u")"}}));
    ASSERT_EQ(syntax->surroundingPairs().size(), 1u);
    EXPECT_EQ(syntax->surroundingPairs().at(u"[")->close(), u"]");
    ASSERT_NE(syntax->indentationIncrease(), nullptr);
    EXPECT_EQ(syntax->indentationIncrease()->pattern(), u"i");
    ASSERT_NE(syntax->indentationDecrease(), nullptr);
    EXPECT_EQ(syntax->indentationDecrease()->pattern(), u"d");
    ASSERT_NE(syntax->indentationNextLine(), nullptr);
    EXPECT_EQ(syntax->indentationNextLine()->pattern(), u"n");
    ASSERT_NE(syntax->indentationIgnore(), nullptr);
    EXPECT_EQ(syntax->indentationIgnore()->pattern(), u"g");
    EXPECT_EQ(syntax->singleLineCommentPrefix(), u"//");
    EXPECT_EQ(syntax->multilineCommentPrefix(), u"/*");
    EXPECT_EQ(syntax->multilineCommentSuffix(), u"*/");
}

/// An archived syntax whose grammar is these bytes.
class BrokenGrammar final : public NSSecureCoding {
public:
    explicit BrokenGrammar(NSData grammar) : _grammar(std::move(grammar)) {}
    const NSCodingClass &classForCoder() const override { return QVSyntax::codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override {
        coder.encodeString(u"broken", u"name");
        coder.encodeData(_grammar, u"grammarData");
    }
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &, std::shared_ptr<NSSecureCoding>) override {
        return nullptr;
    }

private:
    NSData _grammar;
};

std::shared_ptr<QVSyntax> syntaxWithGrammarData(NSData grammar) {
    return NSKeyedUnarchiver::unarchivedObjectOfClass<QVSyntax>(
        NSKeyedArchiver::archivedDataWithRootObject(std::make_shared<BrokenGrammar>(std::move(grammar))));
}

} // namespace

TEST(QVSyntaxCoding, ArchivesItsFieldsUnderTheirNames) {
    EXPECT_EQ(archivedKeys(*unusualSyntax()),
              (std::vector<std::string>{"bracketPairs: string dictionary",
                                        "completionProviders: array",
                                        "detectors: array",
                                        "displayName: string",
                                        "grammarData: data",
                                        "identifierCharacterSet: NSCharacterSet",
                                        "identifierPrefixCharacterSet: NSCharacterSet",
                                        "indentationDecrease: NSRegularExpression",
                                        "indentationIgnore: NSRegularExpression",
                                        "indentationIncrease: NSRegularExpression",
                                        "indentationNextLine: NSRegularExpression",
                                        "multilineCommentPrefix: string",
                                        "multilineCommentSuffix: string",
                                        "name: string",
                                        "parentSyntaxName: string",
                                        "preferredFileExtension: string",
                                        "scriptable: bool",
                                        "scriptingShebang: string",
                                        "singleLineCommentPrefix: string",
                                        "spellCheckingType: integer",
                                        "subsyntaxOnly: bool",
                                        "surroundingPairs: dictionary",
                                        "symbolDocumentationBehaviors: array",
                                        "symbolLocalScopeBehavior: integer",
                                        "symbolLookupBehavior: integer",
                                        "symbolRedefinitionBehavior: integer",
                                        "syntaxType: integer"}));
}

TEST(QVSyntaxCoding, WithoutAGrammarNoneIsWritten) {
    const auto syntax = std::make_shared<QVSyntax>();
    const auto keys = archivedKeys(*syntax);
    EXPECT_EQ(std::count(keys.begin(), keys.end(), "grammarData: data"), 0);
    EXPECT_EQ(throughArchive(syntax)->grammar(), nullptr);
}

TEST(QVSyntaxCoding, SurvivesATripThroughAnArchive) { expectUnusual(throughArchive(unusualSyntax())); }

TEST(QVSyntaxCoding, AbsentValuesComeBackAbsent) {
    const auto syntax = throughArchive(syntaxOf(""));
    ASSERT_NE(syntax, nullptr);
    EXPECT_TRUE(syntax->displayName().isNull());
    EXPECT_EQ(syntax->symbolDocumentationBehaviors(), std::nullopt);
    EXPECT_EQ(syntax->identifierCharacterSet(), nullptr);
    EXPECT_EQ(syntax->indentationIncrease(), nullptr);
    EXPECT_EQ(syntax->symbolLookupBehavior(), 2u);
    EXPECT_EQ(syntax->spellCheckingType(), QVSpellCheckingDisabled);
    EXPECT_TRUE(syntax->singleLineCommentPrefix().isNull());
}

TEST(QVSyntaxCoding, WritingConnectsTheGrammarFirst) {
    const auto syntax = unusualSyntax();
    EXPECT_FALSE(syntax->grammarResolved());
    archivedKeys(*syntax);
    EXPECT_TRUE(syntax->grammarResolved());
}

TEST(QVSyntaxCoding, ReadingLeavesTheGrammarPacked) {
    const auto syntax = throughArchive(unusualSyntax());
    EXPECT_FALSE(syntax->grammarData().isNull());
    EXPECT_FALSE(syntax->grammarResolved());
    // Asking without resolving shows nothing and unpacks nothing.
    EXPECT_EQ(syntax->grammarResolvingIfNecessary(false), nullptr);
    EXPECT_FALSE(syntax->grammarData().isNull());
}

TEST(QVSyntaxCoding, TheFirstUseUnpacksAndConnectsTheGrammar) {
    const auto syntax = throughArchive(unusualSyntax());
    const auto grammar = syntax->grammar();
    ASSERT_NE(grammar, nullptr);
    EXPECT_TRUE(syntax->grammarData().isNull());
    EXPECT_TRUE(syntax->grammarResolved());
    EXPECT_EQ(syntax->grammarResolvingIfNecessary(false), grammar);
    EXPECT_EQ(grammar->name(), u"test");
    EXPECT_EQ(names(grammar->scopes()), (Texts{u"top"}));
    EXPECT_EQ(grammar->scopes()[0]->parentSyntax(), syntax);
    EXPECT_EQ(grammar->scopes()[0]->subscopes().at(0)->parentSyntax(), syntax);
    EXPECT_EQ(grammar->templateScopes().at(0)->parentSyntax(), syntax);
    EXPECT_EQ(grammar->collectionWithName(u"c")->scopes().at(0)->parentSyntax(), syntax);
}

TEST(QVSyntaxCoding, ASyntaxOutOfAnArchiveIsArchivedAgain) {
    const auto twice = throughArchive(throughArchive(unusualSyntax()));
    expectUnusual(twice);
    ASSERT_NE(twice->grammar(), nullptr);
    EXPECT_EQ(names(twice->grammar()->scopes()), (Texts{u"top"}));
}

TEST(QVSyntaxCoding, ABadGrammarIsLoggedOnceAndTheSyntaxStaysUsable) {
    const auto syntax = syntaxWithGrammarData(NSData(std::string_view("no archive")));
    ASSERT_NE(syntax, nullptr);
    const LogRecorder log;
    EXPECT_EQ(syntax->grammar(), nullptr);
    EXPECT_EQ(syntax->grammar(), nullptr);
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_TRUE(log.messages()[0].hasPrefix(
        NSString::stringWithFormat(u"Error unarchiving grammar for syntax: <QVSyntax: %p : name=broken>, ",
                                   static_cast<const void *>(syntax.get()))));
    EXPECT_TRUE(log.messages()[0].containsString(u"4864"));
    EXPECT_TRUE(syntax->grammarData().isNull());
    EXPECT_FALSE(syntax->grammarResolved());
    EXPECT_EQ(syntax->name(), u"broken");
}

TEST(QVSyntaxCoding, ALogSinkMayAskForTheGrammarThatItIsToldOf) {
    // The data was there until the message was out, so such a sink was called from itself without end.
    const auto syntax = syntaxWithGrammarData(NSData(std::string_view("no archive")));
    int messages = 0;
    const NSLogSink previous = NSLogSetSink([&](const NSString &) {
        if (++messages < 10) {
            EXPECT_EQ(syntax->grammar(), nullptr);
        }
    });
    EXPECT_EQ(syntax->grammar(), nullptr);
    NSLogSetSink(previous);
    EXPECT_EQ(messages, 1);
}

TEST(QVSyntaxCoding, AGrammarOfAnotherClassIsRefused) {
    const auto syntax =
        syntaxWithGrammarData(NSKeyedArchiver::archivedDataWithRootObject(std::make_shared<QVCollection>()));
    const LogRecorder log;
    EXPECT_EQ(syntax->grammar(), nullptr);
    EXPECT_EQ(log.messages().size(), 1u);
}

TEST(QVSyntaxCoding, AGrammarThatContainsItselfIsRefused) {
    const auto scope = QVScope::scopeWithType(QVScopeTypeMatch, nullptr, u"a", nullptr, nullptr);
    scope->addSubscope(scope);
    const auto grammar = std::make_shared<QVGrammar>();
    grammar->setScopes({scope});
    const NSData data = NSKeyedArchiver::archivedDataWithRootObject(grammar);
    scope->setSubscopes({});
    const auto syntax = syntaxWithGrammarData(data);
    const LogRecorder log;
    EXPECT_EQ(syntax->grammar(), nullptr);
    EXPECT_EQ(log.messages().size(), 1u);
}

// Copies

TEST(QVSyntaxCopy, HasAllValuesAndItemsOfItsOwn) {
    const auto original = unusualSyntax();
    const auto copy = original->copy();
    EXPECT_NE(copy, original);
    expectUnusual(copy);
    EXPECT_NE(copy->detectors()[0], original->detectors()[0]);
    EXPECT_NE(copy->symbolDocumentationBehaviors()->at(0), original->symbolDocumentationBehaviors()->at(0));
    EXPECT_NE(copy->completionProviders()[0], original->completionProviders()[0]);
    EXPECT_NE(copy->completionProviders()[0]->symbolCompletions().at(0),
              original->completionProviders()[0]->symbolCompletions().at(0));
    EXPECT_NE(copy->surroundingPairs().at(u"["), original->surroundingPairs().at(u"["));
    EXPECT_EQ(copy->identifierCharacterSet(), original->identifierCharacterSet());
    EXPECT_EQ(copy->indentationIncrease(), original->indentationIncrease());
}

TEST(QVSyntaxCopy, HasAGrammarOfItsOwnThatIsNotConnected) {
    const auto original = unusualSyntax();
    const auto grammar = original->grammar();
    const auto copy = original->copy();
    EXPECT_FALSE(copy->grammarResolved());
    ASSERT_NE(copy->grammar(), nullptr);
    EXPECT_NE(copy->grammar(), grammar);
    EXPECT_EQ(copy->grammar()->scopes()[0]->parentSyntax(), copy);
    EXPECT_EQ(grammar->scopes()[0]->parentSyntax(), original);
}

TEST(QVSyntaxCopy, AGrammarThatIsStillPackedIsNotCopied) {
    const auto original = throughArchive(unusualSyntax());
    const auto copy = original->copy();
    EXPECT_TRUE(copy->grammarData().isNull());
    EXPECT_EQ(copy->grammar(), nullptr);
    EXPECT_FALSE(original->grammarData().isNull());
}
