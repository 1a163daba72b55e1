#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"
#include "Quorvane/QuorvaneErrors.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/RegularExpressions/QVWordList.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Quorvane/Symbols/QVSymbolBehaviors.h"
#include "Quorvane/XML/QVXMLAttributes.h"

namespace quorvane {

namespace {

constexpr QVRegularExpressionOptions wordListOptions =
    QVRegularExpressionMultiline | QVRegularExpressionUseJIT;
constexpr QVRegularExpressionOptions expressionOptions = wordListOptions | QVRegularExpressionExtended;

/// A pattern as a file gives it.
struct Pattern {
    NSString text;
    QVRegularExpressionOptions options = expressionOptions;
    /// Where the pattern matches whole words of a list only.
    std::shared_ptr<const QVWordList> wordList = nullptr;
};

/// Whether pattern text consists of look-aheads alone, which take no text and so leave a word's end where it
/// was.
bool isLookAheads(std::u16string_view text) {
    while (!text.empty()) {
        if (!text.starts_with(u"(?=") && !text.starts_with(u"(?!"))
            return false;
        std::size_t depth = 0;
        std::size_t index = 0;
        do {
            // Classes and quoting have rules of their own for parentheses; what holds them is not looked
            // into.
            if (index == text.size() || text[index] == u'[' ||
                (text[index] == u'\\' && text.substr(index + 1).starts_with(u'Q')))
                return false;
            depth += text[index] == u'(';
            depth -= text[index] == u')';
            index += text[index] == u'\\' ? 2 : 1;
            if (index > text.size())
                return false;
        } while (depth != 0);
        text.remove_prefix(index);
    }
    return true;
}

/// The pattern of a "strings" element, nothing where all of its words are empty.
std::optional<Pattern> patternOfStrings(const QVXMLElement &strings) {
    const bool caseInsensitive = QVAttributeIsTrue(strings.valueForAttribute(u"case-insensitive"));
    std::vector<NSString> words;
    for (const auto &child : strings.elementsForName(u"string")) {
        NSString word = child->text();
        if (word.length() != 0)
            words.push_back(caseInsensitive ? word.lowercaseString() : std::move(word));
    }
    if (words.empty())
        return std::nullopt;

    const bool omitsBoundaries = strings.valueForAttribute(u"word-boundary").lowercaseString() == u"false";
    const std::u16string_view boundary = omitsBoundaries ? u"" : u"\\b";
    const NSString prefix = strings.valueForAttribute(u"prefix");
    const NSString suffix = strings.valueForAttribute(u"suffix");
    Pattern pattern{NSString::stringWithFormat(u"%@%@(%@)%@%@", boundary, prefix.view(),
                                               qv_regularExpressionPatternForWordList(words), suffix.view(),
                                               boundary),
                    caseInsensitive ? wordListOptions | QVRegularExpressionCaseInsensitive : wordListOptions};
    if (!omitsBoundaries && prefix.length() == 0 && isLookAheads(suffix))
        pattern.wordList = QVWordList::wordListWithWords(words, caseInsensitive);
    return pattern;
}

/// Reads one tree of scopes. A pattern that does not compile need not keep its scope from being made, so an
/// error can stand beside a result; of several the first one met is kept.
class ScopeReader {
public:
    explicit ScopeReader(const std::shared_ptr<QVSyntax> &parentSyntax) : _parentSyntax(parentSyntax) {}

    std::shared_ptr<QVScope> read(const QVXMLElement &element) {
        if (element.name() == u"scope") {
            const auto start = element.lastElementForName(u"starts-with");
            const auto end = element.lastElementForName(u"ends-with");
            return start && end ? readStartEnd(element, *start, *end) : readMatch(element, end.get());
        }
        if (element.name() == u"include")
            return readInclude(element);
        if (element.name() == u"cut-off")
            return readCutoff(element);
        fail(NSString::stringWithFormat(u"Unknown scope type: %@ {%ld, %ld}", element.name(),
                                        element.lineNumber(), element.columnNumber()));
        return nullptr;
    }

    const std::shared_ptr<NSError> &error() const { return _error; }

private:
    using Scopes = QVScope::Scopes;

    void fail(std::shared_ptr<NSError> error) {
        if (!_error)
            _error = std::move(error);
    }
    void fail(NSString description, std::shared_ptr<NSError> underlyingError = nullptr) {
        fail(QVDefinitionError(std::move(description), std::move(underlyingError)));
    }

    /// "unknown" where the file gives no name.
    static NSString nameOfElement(const QVXMLElement &element) {
        NSString name = QVNonEmptyAttribute(element, u"name");
        return name ? name : NSString(u"unknown");
    }

    /// Null where the pattern does not compile, with the error noted; the format takes the scope's name, line
    /// and column.
    std::shared_ptr<QVRegularExpression> compile(const Pattern &pattern, std::u16string_view failureFormat,
                                                 const NSString &name, const QVXMLElement *place) {
        std::shared_ptr<NSError> error;
        auto expression =
            QVRegularExpression::regularExpressionWithPattern(pattern.text, pattern.options, &error);
        if (!expression)
            fail(NSString::stringWithFormat(failureFormat, name, place ? place->lineNumber() : 0,
                                            place ? place->columnNumber() : 0),
                 std::move(error));
        else
            expression->setWordList(pattern.wordList);
        return expression;
    }

    bool readCaptures(const QVXMLElement &element, const std::shared_ptr<QVRegularExpression> &expression,
                      QVScope::Captures &captures) {
        std::shared_ptr<NSError> error;
        auto read = QVScope::capturesForElements(element.elementsForName(u"capture"), expression, &error);
        if (!read) {
            fail(std::move(error));
            return false;
        }
        captures = std::move(*read);
        return true;
    }

    /// The pattern of an element that holds an expression or else strings. Nothing where it holds neither or
    /// where the strings are no good, which is noted with the format.
    std::optional<Pattern> patternOfElement(const QVXMLElement &element, const NSString &name,
                                            std::u16string_view invalidStringsFormat, bool &failed) {
        if (const auto expression = element.lastElementForName(u"expression"))
            return Pattern{expression->text()};
        const auto strings = element.lastElementForName(u"strings");
        if (!strings)
            return std::nullopt;
        auto pattern = patternOfStrings(*strings);
        if (!pattern) {
            fail(NSString::stringWithFormat(invalidStringsFormat, name, element.lineNumber(),
                                            element.columnNumber()));
            failed = true;
        }
        return pattern;
    }

    std::shared_ptr<QVScope> readStartEnd(const QVXMLElement &element, const QVXMLElement &start,
                                          const QVXMLElement &end) {
        const NSString name = nameOfElement(element);
        bool failed = false;
        const auto startPattern =
            patternOfElement(start, name, u"Invalid strings for expression in scope %@, {%ld, %ld}", failed);
        if (!startPattern) {
            if (!failed)
                fail(NSString::stringWithFormat(u"Missing start expression pattern for scope %@, {%ld, %ld}",
                                                name, start.lineNumber(), start.columnNumber()));
            return nullptr;
        }
        auto expression =
            compile(*startPattern, u"Invalid regular expression for scope %@, {%ld, %ld}", name, &start);
        if (!expression)
            return nullptr;

        const auto endPattern = patternOfElement(
            end, name, u"Invalid strings for end expression in scope %@, {%ld, %ld}", failed);
        if (failed)
            return nullptr;
        std::shared_ptr<QVRegularExpression> endExpression;
        NSString endTemplate;
        // A bad end leaves a region that nothing ends but its surroundings.
        if (endPattern)
            endExpression =
                compile(*endPattern, u"Invalid end regular expression for scope %@, {%ld, %ld}", name, &end);
        else if (const auto templateElement = end.lastElementForName(u"template"))
            endTemplate = templateElement->text();

        auto scope =
            QVScope::scopeWithType(QVScopeTypeStartEnd, _parentSyntax, name, expression, endExpression);
        scope->setEndRegularExpressionTemplate(endTemplate);

        QVScope::Captures captures;
        if (!readCaptures(start, expression, captures))
            return nullptr;
        scope->setCaptures(std::move(captures));
        if (endTemplate || endExpression) {
            if (!readCaptures(end, endExpression, captures))
                return nullptr;
            scope->setEndCaptures(std::move(captures));
        }

        if (const NSString atomic = element.valueForAttribute(u"atomic");
            atomic == u"true" || atomic == u"false")
            scope->setAtomic(atomic == u"true");
        readSequenceAttributes(element, *scope);

        if (const auto subsyntax = element.lastElementForName(u"subsyntax")) {
            if (!readSubsyntax(*subsyntax, *scope))
                return nullptr;
        } else if (const auto subscopes = element.lastElementForName(u"subscopes")) {
            if (!readSubscopes(*subscopes, *scope))
                return nullptr;
        }
        readCommonPart(element, *scope);
        return scope;
    }

    std::shared_ptr<QVScope> readMatch(const QVXMLElement &element, const QVXMLElement *end) {
        const NSString name = nameOfElement(element);
        bool failed = false;
        const auto pattern = patternOfElement(
            element, name, u"Invalid strings for expression in scope %@, {%ld, %ld}", failed);
        if (!pattern) {
            if (!failed)
                fail(NSString::stringWithFormat(u"Missing expression for scope %@, {%ld, %ld}", name,
                                                element.lineNumber(), element.columnNumber()));
            return nullptr;
        }
        // The place is that of an end, which a single expression hardly ever has: tools that read these
        // messages know a single expression's by its zeros.
        auto expression =
            compile(*pattern, u"Invalid regular expression for scope %@, {%ld, %ld}", name, end);
        auto scope = QVScope::scopeWithType(QVScopeTypeMatch, _parentSyntax, name, expression, nullptr);
        if (expression) {
            QVScope::Captures captures;
            if (!readCaptures(element, expression, captures))
                return nullptr;
            scope->setCaptures(std::move(captures));
        }
        readSequenceAttributes(element, *scope);
        readCommonPart(element, *scope);
        return scope;
    }

    std::shared_ptr<QVScope> readInclude(const QVXMLElement &element) {
        NSString syntaxName = QVNonEmptyAttribute(element, u"syntax");
        if (!syntaxName)
            syntaxName = u"self";
        const NSString collectionName = QVNonEmptyAttribute(element, u"collection");
        const NSString name =
            collectionName ? NSString::stringWithFormat(u"%@:%@", syntaxName, collectionName) : syntaxName;
        auto scope = QVScope::scopeWithType(QVScopeTypeInclude, _parentSyntax, name, nullptr, nullptr);
        scope->setIncludeSyntaxName(syntaxName);
        scope->setIncludeCollectionName(collectionName);
        readSequenceAttributes(element, *scope);
        return scope;
    }

    std::shared_ptr<QVScope> readCutoff(const QVXMLElement &element) {
        const auto expressionElement = element.lastElementForName(u"expression");
        if (!expressionElement)
            return nullptr;
        std::shared_ptr<NSError> error;
        auto expression = QVRegularExpression::regularExpressionWithPattern(expressionElement->text(),
                                                                            wordListOptions, &error);
        if (!expression)
            fail(NSString::stringWithFormat(u"Invalid regular expression for cut-off scope, {%ld, %ld}",
                                            element.lineNumber(), element.columnNumber()),
                 std::move(error));
        auto scope = QVScope::scopeWithType(QVScopeTypeCutoff, _parentSyntax, nameOfElement(element),
                                            expression, nullptr);
        QVScope::Captures captures;
        if (!readCaptures(element, expression, captures))
            return nullptr;
        scope->setCaptures(std::move(captures));
        scope->setOptional(true);
        return scope;
    }

    static void readSequenceAttributes(const QVXMLElement &element, QVScope &scope) {
        scope.setOptional(QVAttributeIsTrue(element.valueForAttribute(u"optional")));
        scope.setRepeating(QVAttributeIsTrue(element.valueForAttribute(u"repeat")));
    }

    bool readSubsyntax(const QVXMLElement &element, QVScope &scope) {
        auto options = std::make_shared<QVScopeSubsyntaxOptions>();
        if (const NSString capture = QVNonEmptyAttribute(element, u"capture")) {
            options->setCaptureNumber(capture.integerValue());
        } else {
            options->setName(QVNonEmptyAttribute(element, u"name"));
            options->setCollection(QVNonEmptyAttribute(element, u"collection"));
        }
        options->setNoncontiguous(QVAttributeIsTrue(element.valueForAttribute(u"noncontiguous")));
        options->setExportsSymbols(QVAttributeIsTrue(element.valueForAttribute(u"export-symbols")));

        std::map<NSString, NSString> aliases;
        for (const auto &alias : element.elementsForName(u"alias")) {
            const NSString key = QVNonEmptyAttribute(*alias, u"key");
            const NSString value = QVNonEmptyAttribute(*alias, u"value");
            if (key && value)
                aliases[key] = value;
        }
        options->setAliases(std::move(aliases));

        Scopes cutoffs;
        if (!readAll(element.elementsForName(u"cut-off"), cutoffs))
            return false;
        options->setCutoffScopes(std::move(cutoffs));
        scope.setSubsyntaxOptions(std::move(options));
        return true;
    }

    bool readSubscopes(const QVXMLElement &element, QVScope &scope) {
        if (QVAttributeIsTrue(element.valueForAttribute(u"anchored"))) {
            scope.setUsesAnchoredSubscopeMatching(true);
            const NSString skip = element.valueForAttribute(u"skip-whitespace").lowercaseString();
            if (skip == u"lazy")
                scope.setWhitespaceSkipBehavior(QVWhitespaceSkipLazy);
            else if (skip == u"false" || skip == u"none")
                scope.setWhitespaceSkipBehavior(QVWhitespaceSkipNone);
            else
                scope.setWhitespaceSkipBehavior(QVWhitespaceSkipGreedy);
        }
        Scopes subscopes;
        if (!readAll(element.elementsForNames({u"scope", u"include", u"cut-off"}), subscopes))
            return false;
        scope.setSubscopes(std::move(subscopes));
        return true;
    }

    bool readAll(const std::vector<std::shared_ptr<QVXMLElement>> &elements, Scopes &scopes) {
        for (const auto &element : elements) {
            auto scope = read(*element);
            if (!scope)
                return false;
            scopes.push_back(std::move(scope));
        }
        return true;
    }

    static void readCommonPart(const QVXMLElement &element, QVScope &scope) {
        if (const auto symbol = element.lastElementForName(u"symbol"))
            scope.setSymbolOptions(QVScopeSymbolOptions::symbolOptionsWithXMLElement(*symbol));
        const NSString spellCheck = element.valueForAttribute(u"spell-check").lowercaseString();
        if (spellCheck == u"true")
            scope.setSpellCheckingType(QVSpellCheckingEnabled);
        else if (spellCheck == u"false")
            scope.setSpellCheckingType(QVSpellCheckingDisabled);
        else if (spellCheck == u"inherit")
            scope.setSpellCheckingType(QVSpellCheckingInherit);
        if (const NSString lookup = element.valueForAttribute(u"lookup"))
            scope.setSymbolLookupBehavior(QVSymbolLookupBehaviorFromString(lookup.lowercaseString()));
        scope.setShouldResetStyleAttributes(QVAttributeIsTrue(element.valueForAttribute(u"reset-styles")));
    }

    std::shared_ptr<QVSyntax> _parentSyntax;
    std::shared_ptr<NSError> _error;
};

} // namespace

std::shared_ptr<QVScope> QVScope::scopeWithXMLElement(const QVXMLElement &element,
                                                      const std::shared_ptr<QVSyntax> &parentSyntax,
                                                      std::shared_ptr<NSError> *error) {
    ScopeReader reader(parentSyntax);
    auto scope = reader.read(element);
    if (reader.error())
        QVSetError(error, reader.error());
    return scope;
}

std::optional<QVScope::Captures>
QVScope::capturesForElements(const std::vector<std::shared_ptr<QVXMLElement>> &elements,
                             const std::shared_ptr<QVRegularExpression> &withRegularExpression,
                             std::shared_ptr<NSError> *error) {
    const auto fail = [&](std::u16string_view format, const QVCapture &capture, const QVXMLElement &element) {
        QVSetError(error, QVDefinitionError(NSString::stringWithFormat(
                              format, static_cast<NSInteger>(capture.number()), capture.name(),
                              withRegularExpression, element.lineNumber(), element.columnNumber())));
        return std::nullopt;
    };
    Captures captures;
    std::set<NSUInteger> numbers;
    for (const auto &element : elements) {
        auto capture = QVCapture::captureWithXMLElement(*element, error);
        if (!capture)
            return std::nullopt;
        if (withRegularExpression && capture->number() > withRegularExpression->numberOfCaptureGroups())
            return fail(u"Capture number is greater than the number of captures in the regex: %ld, %@, %@, "
                        u"{%ld, %ld}",
                        *capture, *element);
        if (!numbers.insert(capture->number()).second)
            return fail(u"Capture number is the same as another capture number: %ld, %@, %@, {%ld, %ld}",
                        *capture, *element);
        captures.push_back(std::move(capture));
    }
    return captures;
}

} // namespace quorvane
