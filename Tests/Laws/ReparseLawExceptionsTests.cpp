// Where the rules themselves keep an edited tree from being the one of a fresh parse. Each case is small
// enough to be followed by hand; what is expected is what the rules say, not what one would wish for.

#include "Host/QVMatchTreeText.h"
#include "Platform/Foundation/QVLimits.h"
#include "Tests/Laws/ReparseLaw.h"
#include "Tests/Quorvane/Parsers/GrammarText.h"

#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::string freshTree(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text,
                      NSUInteger maximumLineLength = 0) {
    return QVMatchTreeText(*parseOfText(syntax, text, maximumLineLength));
}

std::string editedTree(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text, NSRange range,
                       std::u16string_view replacement, NSUInteger maximumLineLength = 0) {
    const auto parse = parseOfText(syntax, text, maximumLineLength);
    parse->performWritingBlockAndWait([&] { parse->replaceCharactersInRange(range, replacement, nullptr); });
    return QVMatchTreeText(*parse);
}

/// So many that with the root around them nothing more can be opened.
const std::u16string openBrackets(limits::parseNestingDepth - 1, u'(');

/// The region of the last of them.
const QVScopeMatch *innermostRegion(const QVParse &parse) {
    const QVScopeMatch *match = parse.rootMatch();
    for (std::size_t bracket = 0; bracket < openBrackets.size(); ++bracket)
        match = match->firstChild();
    return match;
}

} // namespace

/// Parsing starts one line before the edit. "a" looks three lines ahead for the ";", so nobody asks it again
/// when that goes.
TEST(ReparseLawExceptions, APatternThatLooksOverLinesIsNotAskedAgain) {
    const auto syntax = syntaxWithScopes(single("m", "a(?=[^;]*;)"));
    EXPECT_EQ(freshTree(syntax, u"a\nb\nc\nd"), "Root test.root -\n"
                                                "  Unknown test.unknown [0,1]\n"
                                                "  Newline test.newline [1,1]\n"
                                                "  Unknown test.unknown [2,1]\n"
                                                "  Newline test.newline [3,1]\n"
                                                "  Unknown test.unknown [4,1]\n"
                                                "  Newline test.newline [5,1]\n"
                                                "  Unknown test.unknown [6,1]\n");
    EXPECT_EQ(editedTree(syntax, u"a\nb\nc\nd;", {7, 1}, u""), "Root test.root -\n"
                                                               "  Match m [0,1]\n"
                                                               "  Newline test.newline [1,1]\n"
                                                               "  Unknown test.unknown [2,1]\n"
                                                               "  Newline test.newline [3,1]\n"
                                                               "  Unknown test.unknown [4,1]\n"
                                                               "  Newline test.newline [5,1]\n"
                                                               "  Unknown test.unknown [6,1]\n");
}

/// The region ends without a length at 3, where line two begins, since line three has a ";". When that goes,
/// parsing starts at 3: what stands before is the region, and parsing goes on behind it.
TEST(ReparseLawExceptions, AnEmptyEndThatLooksOverItsLineIsNotAskedAgain) {
    const auto syntax = syntaxWithScopes(region("r", "\\(", "^(?=\\n;)"));
    EXPECT_EQ(freshTree(syntax, u"(a\n\nx"), "Root test.root -\n"
                                             "  StartEnd r [0,1] end[5,0]\n"
                                             "    Unknown test.unknown [1,1]\n"
                                             "    Newline test.newline [2,1]\n"
                                             "    Newline test.newline [3,1]\n"
                                             "    Unknown test.unknown [4,1]\n");
    EXPECT_EQ(editedTree(syntax, u"(a\n\n;", {4, 1}, u"x"), "Root test.root -\n"
                                                            "  StartEnd r [0,1] end[3,0]\n"
                                                            "    Unknown test.unknown [1,1]\n"
                                                            "    Newline test.newline [2,1]\n"
                                                            "  Newline test.newline [3,1]\n"
                                                            "  Unknown test.unknown [4,1]\n");
}

/// What an include brings is settled by its first use and kept until the tree is emptied. The one in "inner"
/// is first used from "test", which replaces the collection; without that line a fresh parse meets it from
/// "other" first, which does not.
TEST(ReparseLawExceptions, AnIncludeStaysWhatItsFirstUseMadeOfIt) {
    const RegisteredSyntax inner(syntaxFromXML(
        "<syntax name='inner'><collections><collection name='first'>" + single("plain", "x") +
        "</collection></collections><scopes><include syntax='self' collection='first'/></scopes></syntax>"));
    const RegisteredSyntax other(
        syntaxFromXML("<syntax name='other'><collections><collection name='regions'>" +
                      region("brace", "\\{", "\\}", "<subsyntax name='inner'/>") +
                      "</collection></collections><scopes>" + single("o", "o") + "</scopes></syntax>"));
    const RegisteredSyntax test(
        syntaxFromXML("<syntax name='test'><collections><collection name='first' override='true'>" +
                      single("replaced", "x") + "</collection></collections><scopes>" +
                      region("angle", "&lt;", "&gt;", "<subsyntax name='inner'/>") +
                      "<include syntax='other' collection='regions'/></scopes></syntax>"));
    EXPECT_EQ(freshTree(test.syntax(), u"{x}"), "Root test.root -\n"
                                                "  StartEnd brace [0,1] end[2,1]\n"
                                                "    Match plain [1,1]\n");
    EXPECT_EQ(editedTree(test.syntax(), u"<x>\n{x}", {0, 4}, u""), "Root test.root -\n"
                                                                   "  StartEnd brace [0,1] end[2,1]\n"
                                                                   "    Match replaced [1,1]\n");
}

/// The region "e" at 1 comes to nothing and leaves no node, yet the sequence has passed it. Going on behind
/// line one, the replay sees "b" at index 1 where "e", which is not optional, is due, and stays at the
/// sequence's start; "c" does not fit there, and the region ends.
TEST(ReparseLawExceptions, ARegionThatCameToNothingIsMissedByTheReplayOfItsSequence) {
    const auto syntax = syntaxWithScopes(sequence(region("e", "(?=b)", "", following(single("zz", "zz"))) +
                                                  single("b", "b") + single("c", "c") + single("d", "d")));
    EXPECT_EQ(freshTree(syntax, u"(b\nc\ndx"), "Root test.root -\n"
                                               "  StartEnd r [0,1] end[6,0]\n"
                                               "    Match b [1,1]\n"
                                               "    Newline test.newline [2,1]\n"
                                               "    Match c [3,1]\n"
                                               "    Newline test.newline [4,1]\n"
                                               "    Match d [5,1]\n"
                                               "  Unknown test.unknown [6,1]\n");
    EXPECT_EQ(editedTree(syntax, u"(b\nc\nd", {6, 0}, u"x"), "Root test.root -\n"
                                                             "  StartEnd r [0,1] end[3,0]\n"
                                                             "    Match b [1,1]\n"
                                                             "    Newline test.newline [2,1]\n"
                                                             "  Unknown test.unknown [3,1]\n"
                                                             "  Newline test.newline [4,1]\n"
                                                             "  Unknown test.unknown [5,2]\n");
    EXPECT_NE(excuseOfTree(*parseOfText(syntax, u"(b\nc\ndx")), "");
}

/// The second line is too long for patterns. Its unknown text is none of the sequence's steps: going on at
/// line three, the replay passes over "b" and then "c" in search of the step that it was, and nothing is left
/// of the sequence. A fresh parse is still at "b" there.
TEST(ReparseLawExceptions, ALineThatIsTooLongIsTakenForAStepByTheReplayOfItsSequence) {
    const auto syntax = syntaxWithScopes(sequence(single("b", "b", optional) + single("c", "c", optional)));
    EXPECT_EQ(freshTree(syntax, u"(\nxxxxxx\n\nb", 5), "Root test.root -\n"
                                                       "  StartEnd r [0,1] end[11,0]\n"
                                                       "    Newline test.newline [1,1]\n"
                                                       "    Unknown test.unknown [2,6]\n"
                                                       "    Newline test.newline [8,1]\n"
                                                       "    Newline test.newline [9,1]\n"
                                                       "    Match b [10,1]\n");
    EXPECT_EQ(editedTree(syntax, u"(\nxxxxxx\n\nc", {10, 1}, u"b", 5), "Root test.root -\n"
                                                                       "  StartEnd r [0,1] end[9,0]\n"
                                                                       "    Newline test.newline [1,1]\n"
                                                                       "    Unknown test.unknown [2,6]\n"
                                                                       "    Newline test.newline [8,1]\n"
                                                                       "  Newline test.newline [9,1]\n"
                                                                       "  Unknown test.unknown [10,1]\n");
    EXPECT_NE(excuseOfTree(*parseOfText(syntax, u"(\nxxxxxx\n\nb", 5)), "");
}

/// Root and 99 brackets are the 100 regions that can be open, so "s" at 99 is refused: it ends where its
/// start does. It stays an ancestor until the bracket around it is left, and so its cut-off ends that bracket
/// two lines further down. Going on from line two, the open regions are root and brackets alone.
TEST(ReparseLawExceptions, CutoffsOfARefusedRegionAreForgottenByWhoGoesOnInTheRegionAround) {
    const auto syntax = syntaxWithScopes(
        region("p", "\\(", "\\)", holding("<include syntax='self'/>")) +
        region("s", "&lt;", "&gt;", "<subsyntax name='missing'>" + cutoff("c", ";") + "</subsyntax>"));
    const auto fresh = parseOfText(syntax, openBrackets + u"<\n\n;");
    EXPECT_EQ(innermostRegion(*fresh)->endRange(), (NSRange{102, 1}));
    EXPECT_EQ(innermostRegion(*fresh)->firstChild()->scope()->name(), u"s");
    EXPECT_EQ(innermostRegion(*fresh)->firstChild()->endRange(), (NSRange{100, 0}));
    EXPECT_NE(excuseOfTree(*fresh), "");

    const auto edited = parseOfText(syntax, openBrackets + u"<\n\nx");
    edited->performWritingBlockAndWait([&] { edited->replaceCharactersInRange({102, 1}, u";", nullptr); });
    EXPECT_EQ(edited->string(), fresh->string());
    EXPECT_EQ(innermostRegion(*edited)->endRange(), (NSRange{103, 0}));

    // One region less around, and nothing is refused.
    EXPECT_EQ(excuseOfTree(*parseOfText(syntax, openBrackets.substr(1) + u"<\n\n;")), "");
}

/// The same with a start that is empty: the refused region leaves no node, and counts all the same.
TEST(ReparseLawExceptions, CutoffsOfARefusedRegionThatCameToNothingAreForgottenToo) {
    const RegisteredSyntax registered(syntaxWithScopes(
        region("p", "\\(", "\\)", holding("<include syntax='self'/>")) +
        region("s", "(?=a)", "&gt;", "<subsyntax name='missing'>" + cutoff("c", ";") + "</subsyntax>")));
    const auto &syntax = registered.syntax();
    const auto fresh = parseOfText(syntax, openBrackets + u"a\n\n;");
    EXPECT_EQ(innermostRegion(*fresh)->endRange(), (NSRange{102, 1}));
    EXPECT_EQ(innermostRegion(*fresh)->firstChild()->scope()->type(), QVScopeTypeUnknown);
    EXPECT_NE(excuseOfTree(*fresh), "");

    const auto edited = parseOfText(syntax, openBrackets + u"a\n\nx");
    edited->performWritingBlockAndWait([&] { edited->replaceCharactersInRange({102, 1}, u";", nullptr); });
    EXPECT_EQ(edited->string(), fresh->string());
    EXPECT_EQ(innermostRegion(*edited)->endRange(), (NSRange{103, 0}));
}
