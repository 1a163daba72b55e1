// What is resolved once instead of once for each match is what resolving anew would give.

#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Tests/Quorvane/Parsers/HighlightingFixtures.h"
#include "Tests/Support/Corpus.h"
#include "Tests/Support/SyntaxText.h"

#include <gtest/gtest.h>

#include <random>

using namespace quorvane;
using namespace quorvane::test;

namespace {

const std::string wordText = matchText("word", "[a-z]+");

/// The walk as its rules say it, resolving each match anew.
class PlainWalk {
public:
    PlainWalk(const QVParse &parse, NSRange range, const NSAttributes &defaultAttributes)
        : _parse(parse), _range(range), _defaultAttributes(defaultAttributes) {}

    std::string reports;

    void run() {
        const QVScopeMatch *match =
            QVParse::fastMatchAtLocation(_range.location, _parse.rootMatch()->submatches());
        if (match == nullptr)
            return;
        std::vector<const QVScopeMatch *> ancestors;
        for (const QVScopeMatch *parent = match->parentMatch(); parent; parent = parent->parentMatch())
            ancestors.insert(ancestors.begin(), parent);
        for (const QVScopeMatch *const ancestor : ancestors)
            reportMatch(ancestor, false, _parse.syntaxForMatch(ancestor, NSNotFound));
        for (;;) {
            reportTree(match, _parse.syntaxForMatch(match, NSNotFound));
            const QVMatch *const next = match->nextSibling();
            if (next && NSLocationInRange(next->range().location, _range)) {
                match = next->asScopeMatch();
                continue;
            }
            if (next)
                return;
            match = match->parentMatch();
            if (match == nullptr)
                return;
            const NSUInteger end = match->endRange().location;
            if (!NSLocationInRange(end, _range) && end != _range.location)
                return;
        }
    }

private:
    void report(const NSAttributes &attributes, NSRange extent, const std::shared_ptr<QVSyntax> &syntax,
                std::uint64_t flags) {
        const NSRange piece = NSIntersectionRange(extent, _range);
        if (piece.length > 0)
            reports += drawnReport(_parse, attributes, piece, syntax, flags);
    }
    NSAttributes resolved(const QVMatch *match) {
        NSMutableAttributes attributes;
        if (match->lexicalClass())
            attributes.set(QVLexicalClassAttributeName, match->lexicalClass());
        QVParseResolveStyleAttributesForMatch(match, attributes, _defaultAttributes);
        return attributes.attributes();
    }
    void reportMatch(const QVScopeMatch *match, bool captures, const std::shared_ptr<QVSyntax> &syntax) {
        const QVScope *const scope = match->scope();
        const NSAttributes attributes = resolved(match);
        if (scope->shouldResetStyleAttributes() || !attributes.empty())
            report(attributes, match->fullRange(), syntax, scope->shouldResetStyleAttributes() ? 2 : 0);
        if (captures)
            for (const auto *list : {match->captureMatches(), match->endCaptureMatches()})
                if (list)
                    for (const auto &capture : *list)
                        if (!capture->capture()->styles()->empty() && !resolved(capture.get()).empty())
                            report(resolved(capture.get()), capture->fullRange(), syntax, 0);
        if (scope->definesSubsyntax() && !_defaultAttributes.empty()) {
            const NSUInteger start = NSMaxRange(match->range());
            const NSUInteger end = match->endRange().location == NSNotFound ? _parse.string().size()
                                                                            : match->endRange().location;
            report(_defaultAttributes, {start, end - start}, match->subsyntax(), 1);
        }
    }
    void reportTree(const QVScopeMatch *match, const std::shared_ptr<QVSyntax> &syntax) {
        const QVScopeType type = match->scope()->type();
        if (type == QVScopeTypeUnknown || type == QVScopeTypeWhitespace || type == QVScopeTypeNewline)
            return;
        reportMatch(match, true, syntax);
        auto inner = match->scope()->definesSubsyntax() ? match->subsyntax() : nullptr;
        if (!inner)
            inner = syntax;
        for (const QVScopeMatch *const submatch : match->submatches())
            reportTree(submatch, inner);
    }

    const QVParse &_parse;
    const NSRange _range;
    const NSAttributes _defaultAttributes;
};

std::string plainReportsOf(const QVParse &parse, NSRange range, const NSAttributes &defaultAttributes) {
    PlainWalk walk(parse, range, defaultAttributes);
    walk.run();
    return walk.reports;
}

} // namespace

TEST(QVAttributeCache, AllMatchesOfAScopeShareOneDictionary) {
    const auto syntax = syntaxWithElements(scopesText(wordText));
    setStyles(syntax, {{u"word", 1}});
    const auto parse = parseOfText(syntax, u"a b c");
    std::vector<NSAttributes> reported;
    const auto collect = [&](const NSAttributes &attributes, NSRange, const std::shared_ptr<QVSyntax> &,
                             std::uint64_t, bool &) { reported.push_back(attributes); };
    parse->performReadingBlockAndWait([&] {
        parse->enumerateAttributesInRange({0, 5}, {}, collect);
        parse->enumerateAttributesInRange({0, 5}, {}, collect);
    });
    ASSERT_EQ(reported.size(), 6u);
    for (const NSAttributes &attributes : reported)
        EXPECT_TRUE(attributes.isIdenticalTo(reported.front()));
}

TEST(QVAttributeCache, StylesThatChangeBetweenTwoWalksAreTaken) {
    const auto syntax = syntaxWithElements(scopesText(wordText));
    const auto parse = parseOfText(syntax, u"ab");
    parse->performReadingBlockAndWait([&] {
        EXPECT_EQ(reportsOf(*parse, {0, 2}), "");
        setStyles(syntax, {{u"word", 1}});
        EXPECT_EQ(reportsOf(*parse, {0, 2}), "0+2 1\n");
        setStyles(syntax, {{u"word", 2}});
        EXPECT_EQ(reportsOf(*parse, {0, 2}), "0+2 2\n");
        syntax->grammar()->scopes().front()->setLexicalClass(QVLexicalClassComment);
        EXPECT_EQ(reportsOf(*parse, {0, 2}), "0+2 2 comment\n");
        setStyles(syntax, {});
        EXPECT_EQ(reportsOf(*parse, {0, 2}), "0+2 comment\n");
    });
}

TEST(QVAttributeCache, IsNoLongerCurrentOnceAScopeIsGone) {
    auto scope = std::make_shared<QVScope>();
    const QVAttributeCache cache{NSAttributes()};
    EXPECT_TRUE(cache.isCurrent());
    scope.reset();
    EXPECT_FALSE(cache.isCurrent());
}

TEST(QVAttributeCache, IsNoLongerCurrentOnceACaptureIsRenamed) {
    const auto capture = std::make_shared<QVCapture>();
    const QVAttributeCache cache{NSAttributes()};
    EXPECT_TRUE(cache.isCurrent());
    capture->setName(u"test.keyword");
    EXPECT_FALSE(cache.isCurrent());
}

TEST(QVAttributeCache, WalksWithOtherDefaultsResolveAnew) {
    const RegisteredSyntax inner(syntaxFromXML(syntaxText("inner", scopesText(wordText))));
    const auto syntax = syntaxWithElements(
        scopesText(regionText("code", "<", ">", element("subsyntax", named("inner"), ""))));
    const auto parse = parseOfText(syntax, u"<a>");
    parse->performReadingBlockAndWait([&] {
        EXPECT_EQ(reportsOf(*parse, {0, 3}, defaults(1)), "default 1+1 d1@inner\n");
        EXPECT_EQ(reportsOf(*parse, {0, 3}, defaults(2)), "default 1+1 d2@inner\n");
        EXPECT_EQ(reportsOf(*parse, {0, 3}), "");
    });
}

TEST(QVAttributeCache, AWalkInsideOfAWalkHasACacheOfItsOwn) {
    const auto syntax = syntaxWithElements(scopesText(wordText));
    setStyles(syntax, {{u"word", 1}});
    const auto parse = parseOfText(syntax, u"a b");
    std::string inside;
    parse->performReadingBlockAndWait([&] {
        parse->enumerateAttributesInRange(
            {0, 3}, {},
            [&](const NSAttributes &, NSRange, const std::shared_ptr<QVSyntax> &, std::uint64_t, bool &) {
                inside += reportsOf(*parse, {0, 3}, defaults(1));
            });
    });
    EXPECT_EQ(inside, "0+1 1\n2+1 1\n0+1 1\n2+1 1\n");
}

TEST(QVAttributeCache, HoldsMoreScopesThanItStartsWithRoomFor) {
    std::vector<std::shared_ptr<QVScope>> scopes;
    for (int i = 0; i < 2000; ++i) {
        scopes.push_back(std::make_shared<QVScope>());
        if (i % 3 == 0)
            scopes.back()->addStyle(styleWithNumber(i + 1));
    }
    QVAttributeCache cache{NSAttributes()};
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = 0; i < scopes.size(); ++i) {
            const NSAttributes *const attributes = cache.attributesForScope(scopes[i].get());
            if (i % 3 != 0) {
                ASSERT_EQ(attributes, nullptr);
                continue;
            }
            ASSERT_NE(attributes, nullptr);
            ASSERT_EQ(drawnAttributes(*attributes), std::to_string(i + 1));
        }
    }
}

TEST(QVAttributeCache, AnyRangeIsReportedAsByWalkingAllOfTheRegionsAroundIt) {
    // Captures that stand in front of their matches, behind them, and in the line below.
    const std::string label = matchText("label", "[a-c]+(?=\\s*(:))", captureText(1, "colon"));
    const std::string value = matchText("value", "(?<=(=)..)\\d", captureText(1, "sign"));
    const std::string block =
        element("scope", named("block"),
                element("starts-with", "", expressionText("\\((?=\\w*(.))") + captureText(1, "first")) +
                    element("ends-with", "", expressionText("(?<=(.))\\)") + captureText(1, "last")) +
                    subscopesText(label + value + element("include", "syntax=\"self\"", "")));
    const auto syntax = syntaxWithElements(scopesText(block + label + value));
    setStyles(syntax, {{u"label", 1},
                       {u"colon", 2},
                       {u"value", 3},
                       {u"sign", 4},
                       {u"block", 5},
                       {u"first", 6},
                       {u"last", 7}});
    std::mt19937 random(11);
    for (int round = 0; round < 60; ++round) {
        std::u16string text;
        for (int i = 0; i < 60; ++i)
            text += u"(()abc : == 12 )\n"[random() % 17];
        const auto parse = parseOfText(syntax, text);
        parse->performReadingBlockAndWait([&] {
            for (NSUInteger start = 0; start <= text.size(); ++start)
                for (NSUInteger length : {1, 2, 5, 20}) {
                    const NSRange range{start, length};
                    ASSERT_EQ(reportsOf(*parse, range), plainReportsOf(*parse, range, {}))
                        << NSString(text).UTF8String() << "\n"
                        << start << "+" << length;
                }
        });
    }
}

TEST(QVAttributeCache, EveryFileIsReportedAsByResolvingEachMatchAnew) {
    std::mt19937 random(5);
    loadBundledSyntaxes();
    for (const CorpusCase &file : corpusCases()) {
        SCOPED_TRACE(file.language + "/" + file.name);
        const auto syntax = QVSyntax::syntaxForName(NSString::stringWithUTF8String(file.language));
        ASSERT_NE(syntax, nullptr);
        const NSString text = file.text();
        int number = 0;
        const auto apply = [&](auto &node) {
            node.removeAllStyles();
            if (random() % 3 != 0)
                node.addStyle(styleWithNumber(++number));
        };
        forEachNode(syntax->grammar()->scopes(), apply, apply);
        const auto parse = parseOfText(syntax, text);
        parse->performReadingBlockAndWait([&] {
            const NSUInteger length = text.length();
            for (int round = 0; round < 40; ++round) {
                NSRange range{0, length};
                if (round > 0) {
                    range.location = random() % (length + 1);
                    range.length = std::min<NSUInteger>(random() % 200, length - range.location);
                }
                const NSAttributes defaultAttributes = round % 2 ? defaults(1) : NSAttributes();
                ASSERT_EQ(reportsOf(*parse, range, defaultAttributes),
                          plainReportsOf(*parse, range, defaultAttributes))
                    << range.location << "+" << range.length;
            }
        });
        forEachNode(
            syntax->grammar()->scopes(), [](QVScope &scope) { scope.removeAllStyles(); },
            [](QVCapture &capture) { capture.removeAllStyles(); });
    }
}
