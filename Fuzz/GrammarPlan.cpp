#include "Fuzz/GrammarPlan.h"

#include "Fuzz/FuzzTarget.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Quorvane/XML/QVXMLDocument.h"

#include <algorithm>
#include <map>

namespace quorvane::fuzz {

const std::array<const char16_t *, 3> syntaxNames = {u"first", u"second", u"missing"};

namespace {

constexpr std::array<const char16_t *, 4> collectionNames = {nullptr, u"0", u"1", u"missing"};
/// Regions of the first two names are strings and comments, which makes them atomic.
constexpr std::array<const char16_t *, 6> scopeNames = {u"string", u"comment", u"a", u"b", u"c.d", u"e"};
constexpr std::array<const char *, 3> skipNames = {"none", "greedy", "lazy"};

/// Plain ones, then those that make trouble: empty ones, ones that look around, over the end of the line, at
/// the search's start, halves of characters, captures in odd places, verbs, errors.
constexpr auto patterns = std::to_array<const char16_t *>({
    u"a",
    u"ab",
    u"b",
    u"[a-z]+",
    u"\\w+",
    u"\\d+",
    u"\\(",
    u"\\)",
    u"\\{",
    u"\\}",
    u"<(\\w+)>",
    u"</(\\w+)>",
    u"\"",
    u"'",
    u"\\\\.",
    u"//",
    u"/\\*",
    u"\\*/",
    u",",
    u";",
    u"[ \\t]+",
    u"(a)(b)?",
    u"(\\w)(?<n>\\w*)",
    u"(?=a)",
    u"(?=(.))",
    u"(?!a)",
    u"(?:)",
    u"$",
    u"^",
    u"\\b",
    u"(?<=a)b",
    u"(?<!a)b",
    u"(?<=(\\())a?",
    u".",
    u".+",
    u".*",
    u".*?",
    u"\\s+",
    u"\\R",
    u"a\\R?b",
    u"a\\r",
    u"\\n?a",
    u"(?s)a.*b",
    u"\\A.",
    u"\\z",
    u"\\Z",
    u"(?-m)^a",
    u"\\Ga",
    u"\\G",
    u"a\\Kb",
    u"\\w*\\K",
    u"(?=a\\Kb)",
    u"a(*SKIP)(*F)|\\w",
    u"(a|(*COMMIT)(*F))b",
    u"(*LIMIT_MATCH=50)(?:a+)+b",
    u"(?i)A",
    u"\\p{Lu}",
    u"[^a]",
    u"\\x{1F600}",
    u"\\X",
    u"(?|(a)|(b))",
    u"(\\()(?:[^()]|(?R))*\\)",
    u"(a)|b",
    u"(",
    u"(?:a|aa)+$",
    u"(?:\\w+\\s?)+;",
});
constexpr std::size_t slowPatterns = 2;

constexpr auto endTemplates = std::to_array<const char16_t *>({
    u"$1",
    u"\\0",
    u"</$1>",
    u"${n}$",
    u"(?=$2)",
    u"$9|$1",
    u"($1",
    u"\\\\$1",
});

constexpr QVRegularExpressionOptions expressionOptions =
    QVRegularExpressionMultiline | QVRegularExpressionUseJIT | QVRegularExpressionExtended;
constexpr QVRegularExpressionOptions cutoffOptions = QVRegularExpressionMultiline | QVRegularExpressionUseJIT;

/// Compiled once: what is looked for lies in the parse. Null where the pattern does not compile.
std::shared_ptr<QVRegularExpression> expressionFor(std::size_t pattern, QVRegularExpressionOptions options) {
    static std::map<std::pair<std::size_t, QVRegularExpressionOptions>, std::shared_ptr<QVRegularExpression>>
        known;
    const auto [found, isNew] = known.try_emplace({pattern, options});
    if (isNew)
        found->second = QVRegularExpression::regularExpressionWithPattern(patterns[pattern], options);
    return found->second;
}

class Planner {
public:
    Planner(Bytes &bytes, bool allowsSlowPatterns)
        : _bytes(bytes), _patternCount(patterns.size() - (allowsSlowPatterns ? 0 : slowPatterns)) {}

    std::vector<ScopePlan> scopes(std::size_t depth) {
        std::vector<ScopePlan> result;
        for (std::size_t count = _bytes.below(depth == 0 ? 7 : 4); count != 0 && _rest != 0; --count) {
            --_rest;
            result.push_back(scope(depth));
        }
        return result;
    }

private:
    ScopePlan scope(std::size_t depth) {
        static constexpr ScopeKind kinds[] = {ScopeKind::Match,   ScopeKind::Region, ScopeKind::Region,
                                              ScopeKind::Include, ScopeKind::Match,  ScopeKind::Region,
                                              ScopeKind::Match,   ScopeKind::Cutoff};
        ScopePlan plan;
        const std::uint8_t flags = _bytes.next();
        plan.kind = kinds[flags & 7];
        plan.isOptional = flags & 8;
        plan.isRepeating = flags & 16;
        plan.isAtomic = flags & 32;
        plan.isAnchored = flags & 64;
        const bool hasCaptures = flags & 128;
        plan.name = _bytes.below(scopeNames.size());
        if (plan.kind == ScopeKind::Include) {
            plan.includedSyntax = _bytes.below(syntaxNames.size() + 2);
            plan.includedCollection = _bytes.below(collectionNames.size());
            return plan;
        }
        plan.pattern = _bytes.below(_patternCount);
        if (plan.kind == ScopeKind::Region && !expressionFor(plan.pattern, expressionOptions))
            plan.pattern = 0;
        const auto options = plan.kind == ScopeKind::Cutoff ? cutoffOptions : expressionOptions;
        if (hasCaptures)
            plan.captures = captures(expressionFor(plan.pattern, options));
        if (plan.kind == ScopeKind::Region)
            readRegion(plan, hasCaptures, depth);
        return plan;
    }

    void readRegion(ScopePlan &plan, bool hasCaptures, std::size_t depth) {
        const std::uint8_t flags = _bytes.next();
        plan.whitespaceSkipBehavior = (flags & 3) % 3;
        plan.isEndTemplate = (flags & 12) == 4;
        plan.hasEnd = (flags & 48) != 16;
        plan.hasSubsyntax = (flags & 192) == 64;
        plan.endPattern = _bytes.below(plan.isEndTemplate ? endTemplates.size() : _patternCount);
        if (hasCaptures && plan.hasEnd && !plan.isEndTemplate)
            plan.endCaptures = captures(expressionFor(plan.endPattern, expressionOptions));
        if (plan.hasSubsyntax) {
            const std::uint8_t choice = _bytes.next();
            plan.isSubsyntaxNamedByCapture = choice & 1;
            plan.subsyntax = (choice >> 1) % syntaxNames.size();
            plan.subsyntaxCollection = (choice >> 4) % collectionNames.size();
            for (std::size_t count = _bytes.below(3); count != 0; --count) {
                ScopePlan cutoff;
                cutoff.kind = ScopeKind::Cutoff;
                cutoff.name = _bytes.below(scopeNames.size());
                cutoff.pattern = _bytes.below(_patternCount);
                plan.cutoffs.push_back(std::move(cutoff));
            }
        } else if (depth < 4) {
            plan.subscopes = scopes(depth + 1);
        }
    }

    std::vector<std::size_t> captures(const std::shared_ptr<QVRegularExpression> &expression) {
        std::vector<std::size_t> numbers;
        if (expression)
            for (std::size_t number = 0; number <= expression->numberOfCaptureGroups(); ++number)
                if (number != 0 || _bytes.below(2) != 0)
                    numbers.push_back(number);
        return numbers;
    }

    Bytes &_bytes;
    const std::size_t _patternCount;
    std::size_t _rest = 40;
};

NSString collectionName(std::size_t number) {
    return collectionNames[number] != nullptr ? NSString(collectionNames[number]) : NSString();
}

NSString includedSyntaxName(const ScopePlan &plan) {
    return plan.includedSyntax < syntaxNames.size() ? syntaxNames[plan.includedSyntax] : u"self";
}

// Building scopes

class ScopeBuilder {
public:
    explicit ScopeBuilder(std::shared_ptr<QVSyntax> syntax) : _syntax(std::move(syntax)) {}

    QVScope::Scopes build(const std::vector<ScopePlan> &plans, bool allowsCutoffs) const {
        QVScope::Scopes scopes;
        for (const ScopePlan &plan : plans)
            if (allowsCutoffs || plan.kind != ScopeKind::Cutoff)
                scopes.push_back(build(plan));
        return scopes;
    }

private:
    static QVScope::Captures captures(const std::vector<std::size_t> &numbers) {
        QVScope::Captures result;
        for (const std::size_t number : numbers) {
            auto capture = std::make_shared<QVCapture>();
            capture->setNumber(number);
            capture->setName(u"capture");
            result.push_back(std::move(capture));
        }
        return result;
    }

    std::shared_ptr<QVScope> build(const ScopePlan &plan) const {
        switch (plan.kind) {
        case ScopeKind::Include:
            return buildInclude(plan);
        case ScopeKind::Region:
            return buildRegion(plan);
        case ScopeKind::Match:
        case ScopeKind::Cutoff:
            break;
        }
        const bool isCutoff = plan.kind == ScopeKind::Cutoff;
        auto scope = QVScope::scopeWithType(
            isCutoff ? QVScopeTypeCutoff : QVScopeTypeMatch, _syntax, scopeNames[plan.name],
            expressionFor(plan.pattern, isCutoff ? cutoffOptions : expressionOptions), nullptr);
        scope->setCaptures(captures(plan.captures));
        scope->setOptional(isCutoff || plan.isOptional);
        scope->setRepeating(!isCutoff && plan.isRepeating);
        return scope;
    }

    std::shared_ptr<QVScope> buildInclude(const ScopePlan &plan) const {
        auto scope = QVScope::scopeWithType(QVScopeTypeInclude, _syntax, u"include", nullptr, nullptr);
        scope->setIncludeSyntaxName(includedSyntaxName(plan));
        scope->setIncludeCollectionName(collectionName(plan.includedCollection));
        scope->setOptional(plan.isOptional);
        scope->setRepeating(plan.isRepeating);
        return scope;
    }

    std::shared_ptr<QVScope> buildRegion(const ScopePlan &plan) const {
        const bool hasPattern = plan.hasEnd && !plan.isEndTemplate;
        auto scope =
            QVScope::scopeWithType(QVScopeTypeStartEnd, _syntax, scopeNames[plan.name],
                                   expressionFor(plan.pattern, expressionOptions),
                                   hasPattern ? expressionFor(plan.endPattern, expressionOptions) : nullptr);
        if (plan.hasEnd && plan.isEndTemplate)
            scope->setEndRegularExpressionTemplate(endTemplates[plan.endPattern]);
        scope->setCaptures(captures(plan.captures));
        scope->setEndCaptures(captures(plan.endCaptures));
        scope->setAtomic(plan.isAtomic);
        scope->setOptional(plan.isOptional);
        scope->setRepeating(plan.isRepeating);
        if (plan.hasSubsyntax) {
            auto options = std::make_shared<QVScopeSubsyntaxOptions>();
            if (plan.isSubsyntaxNamedByCapture) {
                options->setCaptureNumber(static_cast<NSInteger>(plan.subsyntax));
                options->setAliases({{u"a", syntaxNames[0]}, {u"b", syntaxNames[1]}});
            } else {
                options->setName(syntaxNames[plan.subsyntax]);
                options->setCollection(collectionName(plan.subsyntaxCollection));
            }
            options->setCutoffScopes(build(plan.cutoffs, true));
            scope->setSubsyntaxOptions(std::move(options));
        } else {
            if (plan.isAnchored) {
                scope->setUsesAnchoredSubscopeMatching(true);
                scope->setWhitespaceSkipBehavior(
                    static_cast<QVWhitespaceSkipBehavior>(plan.whitespaceSkipBehavior));
            }
            scope->setSubscopes(build(plan.subscopes, true));
        }
        return scope;
    }

    std::shared_ptr<QVSyntax> _syntax;
};

// Writing files

class FileWriter {
public:
    std::string takeText() { return std::move(_text); }

    void writeSyntax(const SyntaxPlan &plan) {
        add("<syntax name=\"" + utf8(syntaxNames[plan.name]) + "\">\n<collections>\n");
        for (std::size_t index = 0; index < plan.collections.size(); ++index) {
            add("<collection name=\"" + std::to_string(index) + "\"" +
                attribute("override", plan.collections[index].overrides) + ">\n");
            writeScopes(plan.collections[index].scopes);
            add("</collection>\n");
        }
        // Elements of other names are passed over, so that cut-offs at the top are none.
        add("</collections>\n<scopes>\n");
        writeScopes(plan.scopes);
        add("</scopes>\n<template-scopes>\n");
        writeScopes(plan.templateScopes);
        add("</template-scopes>\n</syntax>\n");
    }

private:
    static std::string utf8(const char16_t *text) { return NSString(text).UTF8String(); }
    static std::string escaped(const char16_t *text) {
        std::string result;
        for (const char character : utf8(text)) {
            if (character == '<')
                result += "&lt;";
            else if (character == '"')
                result += "&quot;";
            else if (character == '&')
                result += "&amp;";
            else
                result += character;
        }
        return result;
    }
    static std::string attribute(const char *name, bool value) {
        return value ? std::string(" ") + name + "=\"true\"" : std::string();
    }
    static std::string attribute(const char *name, const char16_t *value) {
        return value != nullptr ? std::string(" ") + name + "=\"" + utf8(value) + "\"" : std::string();
    }
    void add(const std::string &text) { _text += text; }
    void addElement(const char *name, const char16_t *text) {
        add(std::string("<") + name + ">" + escaped(text) + "</" + name + ">\n");
    }

    void writeCaptures(const std::vector<std::size_t> &numbers) {
        for (const std::size_t number : numbers)
            add("<capture number=\"" + std::to_string(number) + "\" name=\"capture\"/>\n");
    }

    void writeScopes(const std::vector<ScopePlan> &plans) {
        for (const ScopePlan &plan : plans)
            writeScope(plan);
    }

    void writeScope(const ScopePlan &plan) {
        const std::string sequence =
            attribute("optional", plan.isOptional) + attribute("repeat", plan.isRepeating);
        if (plan.kind == ScopeKind::Include) {
            const char16_t *const syntax =
                plan.includedSyntax < syntaxNames.size() ? syntaxNames[plan.includedSyntax] : nullptr;
            add("<include" + attribute("syntax", syntax) +
                attribute("collection", collectionNames[plan.includedCollection]) + sequence + "/>\n");
            return;
        }
        const std::string name = attribute("name", scopeNames[plan.name]);
        if (plan.kind == ScopeKind::Cutoff) {
            add("<cut-off" + name + ">\n");
            addElement("expression", patterns[plan.pattern]);
            writeCaptures(plan.captures);
            add("</cut-off>\n");
            return;
        }
        add("<scope" + name + sequence);
        if (plan.kind == ScopeKind::Region) {
            add(std::string(" atomic=\"") + (plan.isAtomic ? "true" : "false") + "\">\n");
            writeRegion(plan);
        } else {
            add(">\n");
            addElement("expression", patterns[plan.pattern]);
            writeCaptures(plan.captures);
        }
        add("</scope>\n");
    }

    void writeRegion(const ScopePlan &plan) {
        add("<starts-with>");
        addElement("expression", patterns[plan.pattern]);
        writeCaptures(plan.captures);
        add("</starts-with>\n<ends-with>");
        if (plan.hasEnd)
            addElement(plan.isEndTemplate ? "template" : "expression",
                       plan.isEndTemplate ? endTemplates[plan.endPattern] : patterns[plan.endPattern]);
        writeCaptures(plan.endCaptures);
        add("</ends-with>\n");
        if (plan.hasSubsyntax) {
            add("<subsyntax");
            if (plan.isSubsyntaxNamedByCapture)
                add(" capture=\"" + std::to_string(plan.subsyntax) + "\"");
            else
                add(attribute("name", syntaxNames[plan.subsyntax]) +
                    attribute("collection", collectionNames[plan.subsyntaxCollection]));
            add("><alias key=\"a\" value=\"first\"/><alias key=\"b\" value=\"second\"/>\n");
            writeScopes(plan.cutoffs);
            add("</subsyntax>\n");
        } else {
            add("<subscopes");
            if (plan.isAnchored)
                add(std::string(" anchored=\"true\" skip-whitespace=\"") +
                    skipNames[plan.whitespaceSkipBehavior] + "\"");
            add(">\n");
            writeScopes(plan.subscopes);
            add("</subscopes>\n");
        }
    }

    std::string _text;
};

} // namespace

SyntaxPlan planOfBytes(Bytes &bytes, std::size_t name, bool allowsSlowPatterns) {
    SyntaxPlan plan;
    plan.name = name;
    Planner planner(bytes, allowsSlowPatterns);
    plan.scopes = planner.scopes(0);
    for (CollectionPlan &collection : plan.collections) {
        collection.overrides = bytes.below(2) != 0;
        collection.scopes = planner.scopes(1);
    }
    if (bytes.below(4) == 1)
        plan.templateScopes = planner.scopes(1);
    return plan;
}

std::shared_ptr<QVSyntax> syntaxOfScopes(const SyntaxPlan &plan) {
    auto syntax = std::make_shared<QVSyntax>();
    syntax->setName(syntaxNames[plan.name]);
    const ScopeBuilder builder(syntax);
    auto grammar = std::make_shared<QVGrammar>();
    grammar->setName(syntax->name());
    grammar->setScopes(builder.build(plan.scopes, false));
    QVScope::Scopes templateScopes = builder.build(plan.templateScopes, false);
    for (const auto &scope : templateScopes)
        scope->setTemplateScope(true);
    grammar->setTemplateScopes(std::move(templateScopes));
    QVGrammar::Collections collections;
    for (std::size_t index = 0; index < plan.collections.size(); ++index) {
        auto collection = std::make_shared<QVCollection>();
        collection->setName(collectionName(index + 1));
        collection->setOverrides(plan.collections[index].overrides);
        collection->setScopes(builder.build(plan.collections[index].scopes, true));
        collections[collection->name()] = std::move(collection);
    }
    grammar->setCollections(std::move(collections));
    syntax->setGrammar(std::move(grammar));
    return syntax;
}

std::string fileOfPlan(const SyntaxPlan &plan) {
    FileWriter writer;
    writer.writeSyntax(plan);
    return writer.takeText();
}

std::shared_ptr<QVSyntax> syntaxOfFile(const std::string &file) {
    const auto document = QVXMLDocument::initWithData(NSData(file));
    require(document != nullptr);
    const auto syntax = QVSyntax::initWithDocument(*document);
    require(syntax != nullptr);
    return syntax;
}

} // namespace quorvane::fuzz
