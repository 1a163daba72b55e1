#include "Platform/Foundation/NSCharacterSet.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Tests/Quorvane/Parsers/GrammarText.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;

namespace {

/// "name [location,length]"; "root" for the root.
std::string text(const QVMatch *match) {
    if (match == nullptr)
        return "-";
    const QVScopeMatch *const scopeMatch = match->asScopeMatch();
    if (scopeMatch != nullptr && scopeMatch->scope()->type() == QVScopeTypeRoot)
        return "root";
    const std::string name =
        scopeMatch ? scopeMatch->scope()->name().UTF8String()
                   : "@" + static_cast<const QVCaptureMatch *>(match)->capture()->name().UTF8String();
    return name + " [" + std::to_string(match->range().location) + "," +
           std::to_string(match->range().length) + "]";
}

/// Words with a capture of their first letter, and regions in round brackets.
std::shared_ptr<QVSyntax> wordsAndBrackets() {
    const std::string word = "<scope name='w'><expression>(\\w)\\w*</expression>"
                             "<capture number='1' name='first'/></scope>";
    return syntaxWithScopes("<include collection='all'/>",
                            "<collections><collection name='all'>" + word +
                                "<scope name='r'><starts-with><expression>(\\()</expression>"
                                "<capture number='1' name='open'/></starts-with>"
                                "<ends-with><expression>(\\))</expression><capture number='1' name='close'/>"
                                "</ends-with>" +
                                holding("<include collection='all'/>") +
                                "</scope></collection></collections>");
}

/// What each location from 0 to the length gives.
template <typename Query>
std::vector<std::string> atEach(const std::shared_ptr<QVParse> &parse, Query query) {
    std::vector<std::string> results;
    parse->performReadingBlockAndWait([&] {
        for (NSUInteger location = 0; location <= parse->string().size(); ++location)
            results.push_back(text(query(location)));
    });
    return results;
}

std::vector<std::string> matchesAt(const std::shared_ptr<QVParse> &parse, bool includeCaptures) {
    return atEach(parse, [&](NSUInteger location) {
        return parse->matchAtLocation(location, includeCaptures, nullptr);
    });
}

std::vector<std::string> matchesPreceding(const std::shared_ptr<QVParse> &parse, bool includeCaptures) {
    return atEach(parse, [&](NSUInteger location) {
        return parse->matchPrecedingLocation(location, includeCaptures, nullptr);
    });
}

/// Trees made by hand.
class FastMatch : public testing::Test {
protected:
    QVScopeMatchReference leaf(NSRange range) const {
        auto match = QVScopeMatch::initWithScope(leafScope.get());
        match->setRange(range);
        return match;
    }
    QVScopeMatchReference region(NSRange range, NSRange endRange, QVScopeMatchArray children) const {
        auto match = QVScopeMatch::initWithScope(regionScope.get());
        match->setRange(range);
        match->setEndRange(endRange);
        match->setSubmatches(std::make_unique<QVScopeMatchArray>(std::move(children)));
        return match;
    }
    static std::string find(NSUInteger location, const QVScopeMatchArray &matches) {
        return text(QVParse::fastMatchAtLocation(location, QVSubmatches(&matches)));
    }
    static std::vector<std::string> findEach(NSUInteger count, const QVScopeMatchArray &matches) {
        std::vector<std::string> results;
        for (NSUInteger location = 0; location < count; ++location)
            results.push_back(find(location, matches));
        return results;
    }

    const std::shared_ptr<QVScope> leafScope =
        QVScope::scopeWithType(QVScopeTypeMatch, nullptr, u"leaf", nullptr, nullptr);
    const std::shared_ptr<QVScope> regionScope =
        QVScope::scopeWithType(QVScopeTypeStartEnd, nullptr, u"region", nullptr, nullptr);
};

} // namespace

// The search

TEST_F(FastMatch, NothingStandsInAnEmptyList) {
    EXPECT_EQ(QVParse::fastMatchAtLocation(0, QVSubmatches()), nullptr);
    EXPECT_EQ(find(3, {}), "-");
}

TEST_F(FastMatch, ALeafHoldsItsRangeWithoutItsEnd) {
    EXPECT_THAT(
        findEach(8, {leaf({1, 2}), leaf({3, 1}), leaf({5, 2})}),
        ElementsAre("-", "leaf [1,2]", "leaf [1,2]", "leaf [3,1]", "-", "leaf [5,2]", "leaf [5,2]", "-"));
}

TEST_F(FastMatch, AnEmptyLeafStandsAtItsPlace) {
    EXPECT_EQ(find(3, {leaf({3, 0})}), "leaf [3,0]");
    EXPECT_EQ(find(2, {leaf({3, 0})}), "-");
    EXPECT_EQ(find(4, {leaf({3, 0})}), "-");
}

TEST_F(FastMatch, ARegionHoldsItsStartAndEndAndItsChildrenTheRest) {
    EXPECT_THAT(findEach(8, {region({1, 1}, {5, 2}, {leaf({2, 1}), leaf({4, 1})})}),
                ElementsAre("-", "region [1,1]", "leaf [2,1]", "-", "leaf [4,1]", "region [1,1]",
                            "region [1,1]", "-"));
}

TEST_F(FastMatch, ARegionWithoutChildrenHoldsItsStartAndEndAlone) {
    EXPECT_THAT(findEach(6, {region({1, 1}, {4, 1}, {})}),
                ElementsAre("-", "region [1,1]", "-", "-", "region [1,1]", "-"));
    // Its empty end is a place too.
    EXPECT_THAT(findEach(4, {region({1, 1}, {2, 0}, {})}),
                ElementsAre("-", "region [1,1]", "region [1,1]", "-"));
    EXPECT_THAT(findEach(4, {region({1, 1}, NSNotFoundRange, {})}),
                ElementsAre("-", "region [1,1]", "-", "-"));
}

TEST_F(FastMatch, ARegionWithAnEmptyStartIsFoundBeforeItsFirstChild) {
    EXPECT_THAT(findEach(3, {region({0, 0}, {2, 0}, {leaf({0, 2})})}),
                ElementsAre("region [0,0]", "leaf [0,2]", "-"));
}

TEST_F(FastMatch, AtAnEmptyEndTheLastChildIsFoundIfItStandsThere) {
    EXPECT_EQ(find(3, {region({0, 1}, {3, 0}, {leaf({1, 1}), leaf({3, 0})})}), "leaf [3,0]");
    EXPECT_EQ(find(3, {region({0, 1}, {3, 0}, {leaf({3, 0})}), leaf({3, 1})}), "leaf [3,0]");
}

TEST_F(FastMatch, AtAnEmptyEndWhatFollowsTheRegionIsFoundElse) {
    EXPECT_EQ(find(3, {region({0, 1}, {3, 0}, {leaf({1, 2})}), leaf({3, 1})}), "leaf [3,1]");
    EXPECT_EQ(find(3, {region({0, 1}, {3, 0}, {leaf({1, 2})})}), "-");
}

TEST_F(FastMatch, AnOpenRegionIsEnteredWhateverTheLocation) {
    const QVScopeMatchArray last{leaf({0, 1}), region({1, 1}, NSNotFoundRange, {leaf({2, 1}), leaf({4, 1})})};
    EXPECT_THAT(findEach(6, last),
                ElementsAre("leaf [0,1]", "region [1,1]", "leaf [2,1]", "-", "leaf [4,1]", "-"));
    // So it hides what stands before it, should it ever stand in the middle: only the last region of a text
    // is open.
    EXPECT_EQ(find(0, {leaf({0, 1}), region({1, 1}, NSNotFoundRange, {leaf({2, 1})}), leaf({3, 1})}), "-");
}

TEST_F(FastMatch, AMatchWithoutAPlaceIsNotFoundAndNotInTheWay) {
    const QVScopeMatchArray children{leaf({1, 1}), leaf({2, 1}), leaf(NSNotFoundRange)};
    EXPECT_THAT(findEach(4, children), ElementsAre("-", "leaf [1,1]", "leaf [2,1]", "-"));
    EXPECT_THAT(findEach(4, {region({0, 1}, {3, 1}, children)}),
                ElementsAre("region [0,1]", "leaf [1,1]", "leaf [2,1]", "region [0,1]"));
}

namespace {

/// Trees at random, without empty matches, each node painted over the places that it holds: an independent
/// way to tell which match stands where.
class PaintedTree {
public:
    PaintedTree(std::mt19937 &random, std::shared_ptr<QVScope> leafScope,
                std::shared_ptr<QVScope> regionScope)
        : _random(random), _leafScope(std::move(leafScope)), _regionScope(std::move(regionScope)) {
        matches = list(0, true);
        owners.resize(_location + 3);
        for (const auto &match : matches)
            paint(*match);
    }

    QVScopeMatchArray matches;
    std::vector<const QVScopeMatch *> owners;

private:
    NSUInteger pick(NSUInteger from, NSUInteger to) {
        return std::uniform_int_distribution<NSUInteger>(from, to)(_random);
    }
    NSRange take(NSUInteger length) {
        const NSRange range{_location, length};
        _location += length;
        return range;
    }
    /// Only what is last in the text can be open.
    QVScopeMatchArray list(int depth, bool last) {
        QVScopeMatchArray made;
        const NSUInteger count = pick(0, 6);
        for (NSUInteger index = 0; index < count; ++index) {
            if (pick(0, 3) == 0)
                take(pick(1, 2));
            if (depth < 4 && pick(0, 2) == 0)
                made.push_back(region(depth, last && index + 1 == count));
            else
                made.push_back(node(_leafScope, take(pick(1, 3))));
        }
        return made;
    }
    QVScopeMatchReference region(int depth, bool last) {
        auto made = node(_regionScope, take(pick(1, 2)));
        const bool open = last && pick(0, 1) == 0;
        made->setSubmatches(std::make_unique<QVScopeMatchArray>(list(depth + 1, open)));
        if (!open)
            made->setEndRange(take(pick(1, 2)));
        return made;
    }
    static QVScopeMatchReference node(const std::shared_ptr<QVScope> &scope, NSRange range) {
        auto made = QVScopeMatch::initWithScope(scope.get());
        made->setRange(range);
        return made;
    }
    void paint(const QVScopeMatch &match) {
        for (const NSRange range : {match.range(), match.endRange()})
            for (NSUInteger index = 0; index < range.length; ++index)
                owners[range.location + index] = &match;
        for (const QVScopeMatch *const child : match.submatches())
            paint(*child);
    }

    std::mt19937 &_random;
    std::shared_ptr<QVScope> _leafScope;
    std::shared_ptr<QVScope> _regionScope;
    NSUInteger _location = 0;
};

} // namespace

TEST_F(FastMatch, InRandomTreesEachPlaceGivesTheMatchThatHoldsIt) {
    for (unsigned seed = 1; seed <= 400; ++seed) {
        std::mt19937 random(seed);
        const PaintedTree tree(random, leafScope, regionScope);
        for (NSUInteger location = 0; location < tree.owners.size(); ++location)
            ASSERT_EQ(QVParse::fastMatchAtLocation(location, QVSubmatches(&tree.matches)),
                      tree.owners[location])
                << "seed " << seed << ", location " << location;
    }
}

// The match at a location

TEST(QVParseLocationQueries, AnEmptyTreeGivesTheRoot) {
    const auto parse = QVParse::initWithSyntax(wordsAndBrackets(), 0, QVParsePrivateQueueConcurrencyType);
    std::shared_ptr<QVSyntax> syntax;
    EXPECT_EQ(parse->matchAtLocation(0, true, &syntax), parse->rootMatch());
    EXPECT_EQ(syntax, parse->syntax());
    syntax = nullptr;
    EXPECT_EQ(parse->matchPrecedingLocation(0, true, &syntax), parse->rootMatch());
    EXPECT_EQ(syntax, parse->syntax());
    EXPECT_EQ(parse->matchAtLocation(7, false, nullptr), parse->rootMatch());
    EXPECT_EQ(parse->matchPrecedingLocation(7, false, nullptr), parse->rootMatch());
}

TEST(QVParseLocationQueries, EachPlaceOfATextHasItsMatch) {
    const auto parse = parseOfText(wordsAndBrackets(), u"ab (cd  e)\n");
    EXPECT_THAT(matchesAt(parse, false),
                ElementsAre("w [0,2]", "w [0,2]", "test.whitespace [2,1]", "r [3,1]", "w [4,2]", "w [4,2]",
                            "test.whitespace [6,2]", "test.whitespace [6,2]", "w [8,1]", "r [3,1]",
                            "test.newline [10,1]", "root"));
}

TEST(QVParseLocationQueries, CapturesHoldTheirPlaces) {
    const auto parse = parseOfText(wordsAndBrackets(), u"ab (cd  e)\n");
    EXPECT_THAT(matchesAt(parse, true),
                ElementsAre("@first [0,1]", "w [0,2]", "test.whitespace [2,1]", "@open [3,1]", "@first [4,1]",
                            "w [4,2]", "test.whitespace [6,2]", "test.whitespace [6,2]", "@first [8,1]",
                            "@close [9,1]", "test.newline [10,1]", "root"));
}

TEST(QVParseLocationQueries, AnEmptyCaptureStandsAtItsPlaceAndTheFirstOneCounts) {
    const auto parse = parseOfText(
        syntaxWithScopes("<scope name='m'><expression>(x?)(a)(y?)</expression><capture number='1' name='x'/>"
                         "<capture number='2' name='a'/><capture number='3' name='y'/></scope>"),
        u"aab");
    EXPECT_THAT(matchesAt(parse, true), ElementsAre("@x [0,0]", "@x [1,0]", "test.unknown [2,1]", "root"));
}

TEST(QVParseLocationQueries, EachPlaceOfRandomTextsBelongsToTheMatchThatHoldsIt) {
    const auto syntax = wordsAndBrackets();
    std::mt19937 random(5);
    const std::u16string_view alphabet = u"ab  (()).\n";
    for (int round = 0; round < 60; ++round) {
        std::u16string content;
        for (int length = 0; length < 40; ++length)
            content += alphabet[random() % alphabet.size()];
        const auto parse = parseOfText(syntax, content);
        parse->performReadingBlockAndWait([&] {
            std::vector<const QVMatch *> owners(content.size());
            parse->rootMatch()->enumerateSubtreeUsingBlock([&](QVMatch *match, bool &, bool &) {
                for (const NSRange range : {match->range(), match->endRange()})
                    for (NSUInteger index = 0; index < range.length; ++index)
                        owners[range.location + index] = match;
            });
            for (NSUInteger location = 0; location < content.size(); ++location) {
                ASSERT_NE(owners[location], nullptr) << "round " << round << ", location " << location;
                ASSERT_EQ(parse->matchAtLocation(location, false, nullptr), owners[location])
                    << "round " << round << ", location " << location;
            }
            for (NSUInteger location = 0; location <= content.size(); ++location) {
                const QVScopeMatch *const before =
                    parse->matchPrecedingLocation(location, false, nullptr)->asScopeMatch();
                ASSERT_NE(before, nullptr);
                if (before == parse->rootMatch())
                    continue;
                EXPECT_LT(before->range().location, location) << "round " << round;
                EXPECT_NE(before->scope()->type(), QVScopeTypeWhitespace) << "round " << round;
                EXPECT_NE(before->scope()->type(), QVScopeTypeUnknown) << "round " << round;
            }
        });
    }
}

// The match before a location

TEST(QVParseLocationQueries, ThePrecedingMatchBeganBeforeThePlaceAndIsNoBlank) {
    const auto parse = parseOfText(wordsAndBrackets(), u"ab (cd  ef) gh\n");
    EXPECT_THAT(matchesPreceding(parse, false),
                ElementsAre("root",                 // nothing is before the text
                            "w [0,2]", "w [0,2]",   // in and behind the first word
                            "root",                 // behind a blank
                            "r [3,1]",              // behind the bracket
                            "w [4,2]", "w [4,2]",   //
                            "r [3,1]", "r [3,1]",   // in and behind the blanks
                            "w [8,2]", "w [8,2]",   // also right before the closing bracket
                            "r [3,1]",              // behind it, the region as a whole
                            "root",                 // behind a blank
                            "w [12,2]", "w [12,2]", //
                            "test.newline [14,1]"   // line endings are not passed over
                            ));
}

TEST(QVParseLocationQueries, AtTheTextsEndTheDeepestLastMatchPrecedes) {
    EXPECT_EQ(matchesPreceding(parseOfText(wordsAndBrackets(), u"ab"), false).back(), "w [0,2]");
    EXPECT_EQ(matchesPreceding(parseOfText(wordsAndBrackets(), u"((cd"), false).back(), "w [2,2]");
    // Out of its blanks.
    EXPECT_EQ(matchesPreceding(parseOfText(wordsAndBrackets(), u"(( "), false).back(), "r [1,1]");
    EXPECT_EQ(matchesPreceding(parseOfText(wordsAndBrackets(), u"a ."), false).back(), "root");
    // A region without anything in it.
    EXPECT_EQ(matchesPreceding(parseOfText(wordsAndBrackets(), u"a("), false).back(), "r [1,1]");
}

TEST(QVParseLocationQueries, BeforeALineEndingTheLastMatchOfTheLinePrecedes) {
    EXPECT_THAT(matchesPreceding(parseOfText(wordsAndBrackets(), u"a\n\nb"), false),
                ElementsAre("root", "w [0,1]", "test.newline [1,1]", "test.newline [2,1]", "w [3,1]"));
}

TEST(QVParseLocationQueries, BetweenARegionsBracketsTheRegionPrecedes) {
    EXPECT_THAT(matchesPreceding(parseOfText(wordsAndBrackets(), u"()"), false),
                ElementsAre("root", "r [0,1]", "r [0,1]"));
}

TEST(QVParseLocationQueries, APrecedingCaptureHoldsThePlaceOrEndsThere) {
    EXPECT_THAT(matchesPreceding(parseOfText(wordsAndBrackets(), u"ab c"), true),
                ElementsAre("root", "@first [0,1]", // ends at the second letter
                            "w [0,2]",              // its capture is further back
                            "root", "@first [3,1]"));
}

TEST(QVParseLocationQueries, BeforeAnEndsCaptureTheRegionsLastChildPrecedes) {
    EXPECT_THAT(matchesPreceding(parseOfText(wordsAndBrackets(), u"(cd)"), true),
                ElementsAre("root", "@open [0,1]", "@first [1,1]", "w [1,2]", "w [1,2]"));
    // Without children the region itself, whose start's capture ends there.
    EXPECT_EQ(matchesPreceding(parseOfText(wordsAndBrackets(), u"()"), true)[1], "@open [0,1]");
    const auto closing =
        parseOfText(syntaxWithScopes(
                        "<scope name='r'><starts-with><expression>\\(</expression></starts-with><ends-with>"
                        "<expression>\\)</expression><capture number='0' name='close'/></ends-with></scope>"),
                    u"()");
    EXPECT_EQ(matchesPreceding(closing, true)[1], "@close [1,1]");
}

// Syntaxes

namespace {

/// "[" enters the syntax "inner" up to "]", and there "{" enters "core" up to "}"; "&lt;" enters a syntax
/// that nobody knows.
class EffectiveSyntaxes : public testing::Test {
protected:
    static std::string entering(const std::string &name, const std::string &start, const std::string &end,
                                const std::string &syntax) {
        return quorvane::test::region(name, start, end, "<subsyntax name='" + syntax + "'/>");
    }
    void parse(std::u16string_view content) {
        parsed = parseOfText(
            syntaxWithScopes(entering("outer", "\\[", "\\]", "inner") + entering("lost", "!", ";", "nosuch")),
            content);
    }
    /// "syntax match" for each report, in order.
    std::vector<std::string> reports(const QVMatch *match, NSUInteger location, std::size_t stopAfter = 99) {
        std::vector<std::string> made;
        parsed->enumerateEffectiveSyntaxesForMatch(
            match, location,
            [&](const std::shared_ptr<QVSyntax> &syntax, const QVMatch *reported, bool &stop) {
                made.push_back((syntax ? syntax->name().UTF8String() : "null") + " " + text(reported));
                stop = made.size() >= stopAfter;
            });
        return made;
    }
    std::string syntaxAt(NSUInteger location) {
        std::shared_ptr<QVSyntax> syntax;
        parsed->matchAtLocation(location, false, &syntax);
        return syntax->name().UTF8String();
    }
    std::string syntaxBefore(NSUInteger location) {
        std::shared_ptr<QVSyntax> syntax;
        parsed->matchPrecedingLocation(location, false, &syntax);
        return syntax->name().UTF8String();
    }
    std::string syntaxFor(const QVMatch *match, NSUInteger location) {
        return parsed->syntaxForMatch(match, location)->name().UTF8String();
    }

    const RegisteredSyntax core{
        syntaxFromXML("<syntax name='core'><scopes>" + single("c", "\\w") + "</scopes></syntax>")};
    const RegisteredSyntax inner{syntaxFromXML("<syntax name='inner'><scopes>" + single("w", "\\w") +
                                               entering("deep", "\\{", "\\}", "core") +
                                               "</scopes></syntax>")};
    std::shared_ptr<QVParse> parsed;
};

} // namespace

TEST_F(EffectiveSyntaxes, ARegionOfItselfBelongsToTheSyntaxAroundIt) {
    parse(u"x[y]z");
    const QVMatch *const outer = parsed->matchAtLocation(1, false, nullptr);
    EXPECT_EQ(text(outer), "outer [1,1]");
    EXPECT_EQ(syntaxFor(outer, NSNotFound), "test");
    EXPECT_EQ(syntaxFor(parsed->matchAtLocation(2, false, nullptr), NSNotFound), "inner");
}

TEST_F(EffectiveSyntaxes, ALocationInARegionsContentsBelongsToItsSyntax) {
    parse(u"x[yy]z");
    const QVMatch *const outer = parsed->matchAtLocation(1, false, nullptr);
    EXPECT_EQ(syntaxFor(outer, 1), "test");
    // From right behind the start to right before the end.
    EXPECT_EQ(syntaxFor(outer, 2), "inner");
    EXPECT_EQ(syntaxFor(outer, 3), "inner");
    EXPECT_EQ(syntaxFor(outer, 4), "inner");
    EXPECT_EQ(syntaxFor(outer, 5), "test");
    // A match inside belongs to it wherever one asks.
    EXPECT_EQ(syntaxFor(parsed->matchAtLocation(2, false, nullptr), 0), "inner");
}

TEST_F(EffectiveSyntaxes, AnOpenRegionsContentsHaveNoEnd) {
    parse(u"x[y");
    auto *const outer = parsed->matchAtLocation(1, false, nullptr)->asScopeMatch();
    outer->setEndRange(NSNotFoundRange);
    EXPECT_EQ(syntaxFor(outer, 2), "inner");
    EXPECT_EQ(syntaxFor(outer, 100), "inner");
}

TEST_F(EffectiveSyntaxes, QueriesTellTheSyntaxInForce) {
    parse(u"x[y]z");
    EXPECT_EQ(syntaxAt(0), "test");
    EXPECT_EQ(syntaxAt(1), "test");
    EXPECT_EQ(syntaxAt(2), "inner");
    EXPECT_EQ(syntaxAt(4), "test");
    EXPECT_EQ(syntaxBefore(1), "test");
    EXPECT_EQ(syntaxBefore(2), "inner");
    EXPECT_EQ(syntaxBefore(3), "inner");
    EXPECT_EQ(syntaxBefore(4), "test");
    // What is typed at the end of an open region is the region's.
    parse(u"x[");
    EXPECT_EQ(syntaxBefore(2), "inner");
    parse(u"x[ ");
    EXPECT_EQ(syntaxBefore(3), "inner");
}

TEST_F(EffectiveSyntaxes, AreReportedFromTheInnermostToTheDocuments) {
    parse(u"[{c}]");
    const QVMatch *const c = parsed->matchAtLocation(2, false, nullptr);
    EXPECT_EQ(text(c), "c [2,1]");
    EXPECT_THAT(reports(c, NSNotFound), ElementsAre("core deep [1,1]", "inner outer [0,1]", "test root"));
    const QVMatch *const deep = c->parentMatch();
    EXPECT_THAT(reports(deep, NSNotFound), ElementsAre("inner outer [0,1]", "test root"));
    EXPECT_THAT(reports(deep, 2), ElementsAre("core deep [1,1]", "inner outer [0,1]", "test root"));
    EXPECT_THAT(reports(parsed->rootMatch(), 2), ElementsAre("test root"));
    EXPECT_THAT(reports(nullptr, 2), ElementsAre("test root"));
}

TEST_F(EffectiveSyntaxes, TheReportsStopWhenAsked) {
    parse(u"[{c}]");
    const QVMatch *const deep = parsed->matchAtLocation(2, false, nullptr)->parentMatch();
    EXPECT_THAT(reports(deep, 2, 1), ElementsAre("core deep [1,1]"));
    EXPECT_THAT(reports(deep, 2, 2), ElementsAre("core deep [1,1]", "inner outer [0,1]"));
}

TEST_F(EffectiveSyntaxes, ARegionWhoseSyntaxIsUnknownReportsNullAndCountsAsTheDocuments) {
    parse(u"!x;");
    const QVMatch *const x = parsed->matchAtLocation(1, false, nullptr);
    EXPECT_THAT(reports(x, NSNotFound), ElementsAre("null lost [0,1]", "test root"));
    EXPECT_EQ(syntaxFor(x, NSNotFound), "test");
    EXPECT_EQ(syntaxAt(1), "test");
}

TEST_F(EffectiveSyntaxes, ABlockIsNeeded) {
    parse(u"x");
    const AssertionRecorder assertions;
    parsed->enumerateEffectiveSyntaxesForMatch(parsed->rootMatch(), 0, nullptr);
    EXPECT_THAT(assertions.messages(), ElementsAre(u"Invalid parameter not satisfying: block != nil"));
}

// Units of a set

TEST(QVParseLocationQueries, TheFirstUnitOfASetIsFoundInARange) {
    const auto parse = parseOfText(wordsAndBrackets(), u"ab(c)(");
    const auto brackets = NSCharacterSet::characterSetWithCharactersInString(u"()");
    EXPECT_EQ(parse->rangeOfUTF16CharacterFromSet(*brackets, {0, 6}), (NSRange{2, 1}));
    EXPECT_EQ(parse->rangeOfUTF16CharacterFromSet(*brackets, {2, 1}), (NSRange{2, 1}));
    EXPECT_EQ(parse->rangeOfUTF16CharacterFromSet(*brackets, {3, 3}), (NSRange{4, 1}));
    EXPECT_EQ(parse->rangeOfUTF16CharacterFromSet(*brackets, {3, 1}), NSNotFoundRange);
    EXPECT_EQ(parse->rangeOfUTF16CharacterFromSet(*brackets, {2, 0}), NSNotFoundRange);
}

TEST(QVParseLocationQueries, ARangeThatLeavesTheTextIsReadAsFarAsTheTextGoes) {
    const auto parse = parseOfText(wordsAndBrackets(), u"ab(");
    const auto bracket = NSCharacterSet::characterSetWithCharactersInString(u"(");
    EXPECT_EQ(parse->rangeOfUTF16CharacterFromSet(*bracket, {0, 100}), (NSRange{2, 1}));
    EXPECT_EQ(parse->rangeOfUTF16CharacterFromSet(*bracket, {1, UINT64_MAX}), (NSRange{2, 1}));
    EXPECT_EQ(parse->rangeOfUTF16CharacterFromSet(*bracket, {3, 5}), NSNotFoundRange);
    EXPECT_EQ(parse->rangeOfUTF16CharacterFromSet(*bracket, NSNotFoundRange), NSNotFoundRange);
}
