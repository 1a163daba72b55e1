#include "Quorvane/Syntaxes/QVSyntax.h"

#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSRegularExpression.h"
#include "Platform/Foundation/NSURL.h"
#include "Quorvane/Categories/NSCharacterSet+XML.h"
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/Detectors/QVDetector.h"
#include "Quorvane/QuorvaneErrors.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Symbols/QVSymbolBehaviors.h"
#include "Quorvane/Symbols/QVSymbolDocumentationBehavior.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntaxSurroundingPair.h"
#include "Quorvane/XML/QVXMLAttributes.h"
#include "Quorvane/XML/QVXMLDocument.h"

namespace quorvane {

namespace {

using Element = std::shared_ptr<QVXMLElement>;

/// The element that a path of names leads to, the last of a name at each level; null where there is none.
Element elementAtPath(Element element, std::initializer_list<std::u16string_view> path) {
    for (const std::u16string_view name : path)
        if (element)
            element = element->lastElementForName(name);
    return element;
}

NSString textAtPath(const Element &element, std::initializer_list<std::u16string_view> path) {
    const Element found = elementAtPath(element, path);
    return found ? found->text() : NSString();
}

/// The children of these names, none of a missing element.
std::vector<Element> childrenOf(const Element &element, std::initializer_list<std::u16string_view> names) {
    return element ? element->elementsForNames(names) : std::vector<Element>();
}

/// Fills one syntax from its file. An error can stand beside a result, since a scope need not fail for a
/// pattern that does not compile; of several the first one met is kept.
class SyntaxReader {
public:
    SyntaxReader(std::shared_ptr<QVSyntax> syntax, Element element)
        : _syntax(std::move(syntax)), _element(std::move(element)) {}

    /// False where a definition fails the file.
    bool read() {
        readMeta();
        readDetectors();
        readCharactersAndPairs();
        readSymbols();
        if (!readCompletionProviders() || !readGrammar() || !readIndentation())
            return false;
        readComments();
        return true;
    }

    const std::shared_ptr<NSError> &error() const { return _error; }

private:
    void fail(std::shared_ptr<NSError> error) {
        if (!_error)
            _error = std::move(error);
    }

    void readMeta() {
        _syntax->setSubsyntaxOnly(QVAttributeIsTrue(_element->valueForAttribute(u"subsyntax")));
        const Element meta = _element->lastElementForName(u"meta");
        _syntax->setDisplayName(textAtPath(meta, {u"name"}));
        _syntax->setSyntaxType(QVSyntaxTypeFromString(textAtPath(meta, {u"type"})));
        NSString extension = textAtPath(meta, {u"preferred-file-extension"});
        const auto others = NSCharacterSet::alphanumericCharacterSet()->invertedSet();
        if (extension && extension.rangeOfCharacterFromSet(*others).location == NSNotFound)
            _syntax->setPreferredFileExtension(std::move(extension));
        _syntax->setParentSyntaxName(textAtPath(meta, {u"parent"}));
        if (const Element scriptable = elementAtPath(meta, {u"scriptable"})) {
            _syntax->setScriptable(true);
            _syntax->setScriptingShebang(scriptable->valueForAttribute(u"shebang"));
        }
    }

    void readDetectors() {
        std::vector<std::shared_ptr<QVDetector>> detectors;
        const Element element = _element->lastElementForName(u"detectors");
        for (const Element &child :
             childrenOf(element, {u"combo", u"match-content", u"extension", u"filename"}))
            if (auto detector = QVDetector::detectorWithElement(*child))
                detectors.push_back(std::move(detector));
        _syntax->setDetectors(std::move(detectors));
    }

    void readCharactersAndPairs() {
        if (const Element characters = elementAtPath(_element, {u"identifiers", u"characters"}))
            _syntax->setIdentifierCharacterSet(qv_characterSetWithXMLElement(*characters));
        if (const Element prefixes = elementAtPath(_element, {u"identifiers", u"prefixes"}))
            _syntax->setIdentifierPrefixCharacterSet(qv_characterSetWithXMLElement(*prefixes));

        std::map<NSString, NSString> brackets;
        for (const Element &pair : childrenOf(_element->lastElementForName(u"brackets"), {u"pair"})) {
            const NSString open = QVNonEmptyAttribute(*pair, u"open");
            const NSString close = QVNonEmptyAttribute(*pair, u"close");
            if (open && close)
                brackets[open] = close;
        }
        _syntax->setBracketPairs(std::move(brackets));

        QVSyntax::SurroundingPairs surroundings;
        for (const Element &element :
             childrenOf(_element->lastElementForName(u"surrounding-pairs"), {u"pair"})) {
            auto pair = std::make_shared<QVSyntaxSurroundingPair>();
            pair->setOpen(QVNonEmptyAttribute(*element, u"open"));
            pair->setClose(QVNonEmptyAttribute(*element, u"close"));
            if (!pair->open() || !pair->close())
                continue;
            if (const NSString skip = QVNonEmptyAttribute(*element, u"skip"))
                pair->setSkipSelectors(QVSimpleSelector::simpleSelectorsJoinedByString(skip));
            surroundings[pair->open()] = std::move(pair);
        }
        _syntax->setSurroundingPairs(std::move(surroundings));
    }

    void readSymbols() {
        const Element symbols = _element->lastElementForName(u"symbols");
        if (!symbols)
            return;
        const NSString redefinition = symbols->valueForAttribute(u"redefinition").lowercaseString();
        if (redefinition == u"within-construct")
            _syntax->setSymbolRedefinitionBehavior(QVSymbolRedefinitionBehaviorWithinConstruct);
        else if (redefinition == u"distinct")
            _syntax->setSymbolRedefinitionBehavior(QVSymbolRedefinitionBehaviorDistinct);
        else if (redefinition == u"non-distinct")
            _syntax->setSymbolRedefinitionBehavior(QVSymbolRedefinitionBehaviorNonDistinct);

        if (const Element local = symbols->lastElementForName(u"local")) {
            // Two words for one behaviour, since grammars use either.
            const NSString scope = local->valueForAttribute(u"scope");
            if (scope == u"within-construct" || scope == u"within-parent")
                _syntax->setSymbolLocalScopeBehavior(QVSymbolLocalScopeBehaviorWithinConstruct);
        }

        QVSyntax::DocumentationBehaviors behaviors;
        for (const Element &documentation : symbols->elementsForName(u"documentation"))
            if (auto behavior =
                    QVSymbolDocumentationBehavior::documentationBehaviorWithXMLElement(*documentation))
                behaviors.push_back(std::move(behavior));
        _syntax->setSymbolDocumentationBehaviors(std::move(behaviors));
    }

    bool readCompletionProviders() {
        for (const Element &element :
             childrenOf(_element->lastElementForName(u"completions"), {u"provider"})) {
            std::shared_ptr<NSError> error;
            auto provider = QVCompletionProvider::providerWithXMLElement(*element, &error);
            if (!provider) {
                fail(std::move(error));
                return false;
            }
            _syntax->addCompletionProvider(std::move(provider));
        }
        return true;
    }

    bool readScopes(const std::vector<Element> &elements, QVScope::Scopes &scopes) {
        for (const Element &element : elements) {
            std::shared_ptr<NSError> error;
            auto scope = QVScope::scopeWithXMLElement(*element, _syntax, &error);
            if (error)
                fail(std::move(error));
            if (!scope)
                return false;
            scopes.push_back(std::move(scope));
        }
        return true;
    }

    bool readGrammar() {
        auto grammar = std::make_shared<QVGrammar>();
        grammar->setName(_syntax->name());
        if (!readCollections(*grammar) || !readTopLevelScopes(*grammar))
            return false;

        QVScope::Scopes templateScopes;
        const Element templates = _element->lastElementForName(u"template-scopes");
        if (!readScopes(childrenOf(templates, {u"scope", u"include"}), templateScopes))
            return false;
        for (const auto &scope : templateScopes)
            scope->setTemplateScope(true);
        grammar->setTemplateScopes(std::move(templateScopes));
        _syntax->setGrammar(std::move(grammar));
        return true;
    }

    bool readCollections(QVGrammar &grammar) {
        QVGrammar::Collections collections;
        for (const Element &element :
             childrenOf(_element->lastElementForName(u"collections"), {u"collection"})) {
            const NSString name = QVNonEmptyAttribute(*element, u"name");
            if (!name)
                continue;
            auto collection = std::make_shared<QVCollection>();
            collection->setName(name);
            collection->setOverrides(QVAttributeIsTrue(element->valueForAttribute(u"override")));
            QVScope::Scopes scopes;
            if (!readScopes(childrenOf(element, {u"scope", u"include", u"cut-off"}), scopes))
                return false;
            collection->setScopes(std::move(scopes));
            collections[name] = std::move(collection);
        }
        grammar.setCollections(std::move(collections));
        return true;
    }

    bool readTopLevelScopes(QVGrammar &grammar) {
        const Element element = _element->lastElementForName(u"scopes");
        if (!element)
            return true;
        const NSString spellCheck = element->valueForAttribute(u"spell-check").lowercaseString();
        if (spellCheck == u"true")
            _syntax->setSpellCheckingType(QVSpellCheckingEnabled);
        else if (spellCheck == u"false")
            _syntax->setSpellCheckingType(QVSpellCheckingDisabled);
        else if (spellCheck == u"inherit")
            _syntax->setSpellCheckingType(QVSpellCheckingInherit);
        if (const NSString lookup = element->valueForAttribute(u"lookup"))
            _syntax->setSymbolLookupBehavior(QVSymbolLookupBehaviorFromString(lookup.lowercaseString()));
        QVScope::Scopes scopes;
        if (!readScopes(childrenOf(element, {u"scope", u"include"}), scopes))
            return false;
        grammar.setScopes(std::move(scopes));
        return true;
    }

    bool readIndentation() {
        const Element indentation = _element->lastElementForName(u"indentation");
        return readIndentation(indentation, u"increase",
                               u"Invalid indentation increase regular expression: %@ {%ld, %ld}",
                               &QVSyntax::setIndentationIncrease) &&
               readIndentation(indentation, u"decrease",
                               u"Invalid indentation decrease regular expression: %@ {%ld, %ld}",
                               &QVSyntax::setIndentationDecrease) &&
               readIndentation(indentation, u"next-line",
                               u"Invalid indentation increase-next regular expression: %@ {%ld, %ld}",
                               &QVSyntax::setIndentationNextLine) &&
               readIndentation(indentation, u"ignore",
                               u"Invalid indentation ignore regular expression: %@ {%ld, %ld}",
                               &QVSyntax::setIndentationIgnore);
    }

    bool readIndentation(const Element &indentation, std::u16string_view name,
                         std::u16string_view failureFormat,
                         void (QVSyntax::*set)(std::shared_ptr<NSRegularExpression>)) {
        const Element element = elementAtPath(indentation, {name});
        const NSString pattern = textAtPath(element, {u"expression"});
        if (pattern.length() == 0)
            return true;
        std::shared_ptr<NSError> error;
        auto expression = NSRegularExpression::regularExpressionWithPattern(
            pattern, NSRegularExpressionAllowCommentsAndWhitespace, &error);
        if (!expression) {
            fail(QVDefinitionError(NSString::stringWithFormat(failureFormat, pattern, element->lineNumber(),
                                                              element->columnNumber()),
                                   std::move(error)));
            return false;
        }
        (_syntax.get()->*set)(std::move(expression));
        return true;
    }

    void readComments() {
        const Element comments = _element->lastElementForName(u"comments");
        const auto textOf = [&comments](std::initializer_list<std::u16string_view> path) {
            const NSString text = textAtPath(comments, path);
            return text ? text.stringByTrimmingCharactersInSet(*NSCharacterSet::whitespaceCharacterSet())
                        : NSString();
        };
        _syntax->setSingleLineCommentPrefix(textOf({u"single", u"expression"}));
        _syntax->setMultilineCommentPrefix(textOf({u"multiline", u"starts-with", u"expression"}));
        _syntax->setMultilineCommentSuffix(textOf({u"multiline", u"ends-with", u"expression"}));
    }

    std::shared_ptr<QVSyntax> _syntax;
    Element _element;
    std::shared_ptr<NSError> _error;
};

} // namespace

std::shared_ptr<QVSyntax> QVSyntax::initWithContentsOfURL(const NSURL &url, std::shared_ptr<NSError> *error) {
    const auto document = QVXMLDocument::initWithContentsOfURL(url, error);
    return document ? initWithDocument(*document, error) : nullptr;
}

std::shared_ptr<QVSyntax> QVSyntax::initWithDocument(const QVXMLDocument &document,
                                                     std::shared_ptr<NSError> *error) {
    const Element element = elementAtPath(document.rootElement(), {u"syntax"});
    const NSString name = element ? QVNonEmptyAttribute(*element, u"name") : NSString();
    if (!name)
        return nullptr;
    auto syntax = std::make_shared<QVSyntax>();
    syntax->setName(name);
    SyntaxReader reader(syntax, element);
    const bool isRead = reader.read();
    if (reader.error())
        QVSetError(error, reader.error());
    return isRead ? syntax : nullptr;
}

} // namespace quorvane
