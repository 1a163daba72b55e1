#include "Quorvane/Styles/QVThemeParser.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSException.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

#include <functional>

using namespace quorvane;

namespace {

/// Writes the events down, one a line.
struct Events final : QVThemeParserDelegate {
    std::vector<std::string> lines;
    std::vector<std::string> positions;
    std::function<void(QVThemeParser &)> atStartOfDocument;
    std::function<void(QVThemeParser &)> atStartOfDeclaration;
    std::shared_ptr<NSError> error;

    void add(QVThemeParser &parser, const std::string &line) {
        lines.push_back(line);
        positions.push_back(std::to_string(parser.lineNumber()) + ":" +
                            std::to_string(parser.columnNumber()));
    }
    void themeParserDidStartDocument(QVThemeParser &parser) override {
        add(parser, "start");
        if (atStartOfDocument)
            atStartOfDocument(parser);
    }
    void themeParserFoundComment(QVThemeParser &parser, const NSString &comment) override {
        add(parser, "comment [" + comment.UTF8String() + "]");
    }
    void themeParserDidStartDeclaration(QVThemeParser &parser, const NSString &selector) override {
        add(parser, "[" + selector.UTF8String() + "] {");
        if (atStartOfDeclaration)
            atStartOfDeclaration(parser);
    }
    void themeParserFoundProperty(QVThemeParser &parser, const NSString &name,
                                  const NSString &value) override {
        add(parser, name.UTF8String() + ": " + (value ? "[" + value.UTF8String() + "]" : "null"));
    }
    void themeParserDidEndDeclaration(QVThemeParser &parser, const NSString &selector) override {
        add(parser, "} [" + selector.UTF8String() + "]");
    }
    void themeParserParseErrorOccurred(QVThemeParser &parser,
                                       const std::shared_ptr<NSError> &parseError) override {
        EXPECT_EQ(parseError, parser.parserError());
        error = parseError;
        add(parser, "error: " + parseError->localizedFailureReason().UTF8String());
    }
    void themeParserDidEndDocument(QVThemeParser &parser) override { add(parser, "end"); }
};

std::shared_ptr<Events> eventsOf(const NSString &text) {
    const auto parser = QVThemeParser::initWithString(text);
    auto events = std::make_shared<Events>();
    parser->setDelegate(events);
    parser->parse();
    return events;
}

using Lines = std::vector<std::string>;

Lines linesOf(const NSString &text) { return eventsOf(text)->lines; }

} // namespace

TEST(QVThemeParser, ReportsADeclarationAndItsProperties) {
    EXPECT_EQ(linesOf(u"string.quoted { color: red; font-weight:bold; }"),
              (Lines{"start", "[string.quoted] {", "color: [red]", "font-weight: [bold]", "} [string.quoted]",
                     "end"}));
}

TEST(QVThemeParser, AnEmptyFileHasAStartAndAnEnd) {
    EXPECT_EQ(linesOf(u""), (Lines{"start", "end"}));
    EXPECT_EQ(linesOf(u" \n\t\n"), (Lines{"start", "end"}));
}

TEST(QVThemeParser, AnEmptyBlockIsADeclarationWithoutProperties) {
    EXPECT_EQ(linesOf(u"a{}"), (Lines{"start", "[a] {", "} [a]", "end"}));
    EXPECT_EQ(linesOf(u"a { \n }"), (Lines{"start", "[a] {", "} [a]", "end"}));
}

TEST(QVThemeParser, CommentsStandBeforeBetweenAndWithinDeclarations) {
    EXPECT_EQ(
        linesOf(u"/* 1 */ a { /*2*/ /*3*/ b: c; /*4*/ d: e; /*5*/ } /*6*/ f {} /*7*/"),
        (Lines{"start", "comment [ 1 ]", "[a] {", "comment [2]", "comment [3]", "b: [c]", "comment [4]",
               "d: [e]", "comment [5]", "} [a]", "comment [6]", "[f] {", "} [f]", "comment [7]", "end"}));
}

TEST(QVThemeParser, AnEmptyCommentIsNotReported) {
    EXPECT_EQ(linesOf(u"/**/a {/**/}"), (Lines{"start", "[a] {", "} [a]", "end"}));
}

TEST(QVThemeParser, AnOpenCommentReachesToTheEnd) {
    EXPECT_EQ(linesOf(u"a {} /* b { }"), (Lines{"start", "[a] {", "} [a]", "comment [ b { }]", "end"}));
    EXPECT_EQ(linesOf(u"/*"), (Lines{"start", "end"}));
    EXPECT_EQ(linesOf(u"/*/"), (Lines{"start", "comment [/]", "end"}));
}

TEST(QVThemeParser, ACommentWithinASelectorEndsIt) {
    EXPECT_EQ(linesOf(u"a /* b */ c {}"),
              (Lines{"start", "[a] {", "} [a]", "comment [ b ]", "[c] {", "} [c]", "end"}));
}

TEST(QVThemeParser, ACommentWithinAValueBelongsToIt) {
    EXPECT_EQ(linesOf(u"a { b: c /* d */; }"), (Lines{"start", "[a] {", "b: [c /* d */]", "} [a]", "end"}));
}

TEST(QVThemeParser, ACommentBehindAPropertyNameIsAMissingSeparator) {
    EXPECT_EQ(linesOf(u"a { b /**/: c; }"),
              (Lines{"start", "[a] {", "} [a]", "error: Missing property separator at line 1, column 7"}));
}

TEST(QVThemeParser, SelectorsMaySpanLinesAndHoldTheirPunctuation) {
    EXPECT_EQ(linesOf(u"\n a.b:c,\n d<e>f-g+h=i[j](k) \n{}"),
              (Lines{"start", "[a.b:c,\n d<e>f-g+h=i[j](k)] {", "} [a.b:c,\n d<e>f-g+h=i[j](k)]", "end"}));
}

TEST(QVThemeParser, SeveralSelectorsAreOneDeclaration) {
    EXPECT_EQ(linesOf(u"a, b {c:d;}"), (Lines{"start", "[a, b] {", "c: [d]", "} [a, b]", "end"}));
}

TEST(QVThemeParser, LettersOfAllScriptsMakeSelectorsAndNames) {
    EXPECT_EQ(linesOf(u"größe.𝒳٣ { длина: 1; }"),
              (Lines{"start", "[größe.𝒳٣] {", "длина: [1]", "} [größe.𝒳٣]", "end"}));
}

TEST(QVThemeParser, AStraySelectorTextIsADeclarationWithoutBlock) {
    EXPECT_EQ(linesOf(u"a {} b"), (Lines{"start", "[a] {", "} [a]", "[b] {", "} [b]", "end"}));
    EXPECT_EQ(linesOf(u"b\n"), (Lines{"start", "[b] {", "} [b]", "end"}));
}

TEST(QVThemeParser, WhiteSpaceMayStandAroundNamesAndValues) {
    EXPECT_EQ(linesOf(u"a {\n\tb \n :\n  c  d \t;\n}"),
              (Lines{"start", "[a] {", "b: [c  d]", "} [a]", "end"}));
}

// Values may span lines, so only blanks and tabs are cut off at their end.
TEST(QVThemeParser, AValueKeepsTheLineEndsWithinAndBehind) {
    EXPECT_EQ(linesOf(u"a { b: c,\n  d\n ; }"), (Lines{"start", "[a] {", "b: [c,\n  d\n]", "} [a]", "end"}));
}

TEST(QVThemeParser, NoQuoteProtectsASemicolon) {
    EXPECT_EQ(linesOf(u"a { b: \"c;d\"; }"),
              (Lines{"start", "[a] {", "b: [\"c]", "} [a]",
                     "error: Missing property separator at line 1, column 12"}));
}

TEST(QVThemeParser, APropertyWithoutAValueHasANullValue) {
    EXPECT_EQ(linesOf(u"a { b: ; }"), (Lines{"start", "[a] {", "b: null", "} [a]", "end"}));
    EXPECT_EQ(linesOf(u"a { b:; }"), (Lines{"start", "[a] {", "b: null", "} [a]", "end"}));
    EXPECT_EQ(linesOf(u"a { b:\n\t ;}"), (Lines{"start", "[a] {", "b: null", "} [a]", "end"}));
}

TEST(QVThemeParser, AValueWithoutItsSemicolonRunsAcrossTheBrace) {
    EXPECT_EQ(linesOf(u"a { b: red } c { d: e; }"),
              (Lines{"start", "[a] {", "b: [red } c { d: e]", "} [a]", "end"}));
}

TEST(QVThemeParser, TheLastPropertyNeedsItsSemicolonToo) {
    EXPECT_EQ(linesOf(u"a { color: red }"),
              (Lines{"start", "[a] {", "} [a]", "error: Missing property termination at line 1, column 17"}));
    EXPECT_EQ(linesOf(u"a {\n color:"),
              (Lines{"start", "[a] {", "} [a]", "error: Missing property termination at line 2, column 8"}));
}

TEST(QVThemeParser, APropertyWithoutAColonIsAnError) {
    EXPECT_EQ(linesOf(u"a { color }"),
              (Lines{"start", "[a] {", "} [a]", "error: Missing property separator at line 1, column 11"}));
    EXPECT_EQ(linesOf(u"a { color"),
              (Lines{"start", "[a] {", "} [a]", "error: Missing property separator at line 1, column 10"}));
}

TEST(QVThemeParser, ABlockThatIsNotClosedIsAnErrorWithoutAnEndOfItsDeclaration) {
    EXPECT_EQ(linesOf(u"a { b: c;\n"), (Lines{"start", "[a] {", "b: [c]",
                                              "error: Missing declaration termination at line 2, column 1"}));
    EXPECT_EQ(linesOf(u"a { ? }"),
              (Lines{"start", "[a] {", "error: Missing declaration termination at line 1, column 5"}));
    EXPECT_EQ(linesOf(u"a {"),
              (Lines{"start", "[a] {", "error: Missing declaration termination at line 1, column 4"}));
}

TEST(QVThemeParser, WhatBeginsNoDeclarationIsAnUnexpectedCharacter) {
    EXPECT_EQ(linesOf(u"#a {}"), (Lines{"start", "error: Unexpected character at line 1, column 1"}));
    EXPECT_EQ(linesOf(u"\n  * {}"), (Lines{"start", "error: Unexpected character at line 2, column 3"}));
    EXPECT_EQ(linesOf(u"{ b: c; }"), (Lines{"start", "error: Unexpected character at line 1, column 1"}));
    EXPECT_EQ(linesOf(u"a {} }"),
              (Lines{"start", "[a] {", "} [a]", "error: Unexpected character at line 1, column 6"}));
}

TEST(QVThemeParser, ASlashEndsASelectorAndIsUnexpected) {
    EXPECT_EQ(linesOf(u"/ a {}"), (Lines{"start", "error: Unexpected character at line 1, column 1"}));
    EXPECT_EQ(linesOf(u"a / b {}"),
              (Lines{"start", "[a] {", "} [a]", "error: Unexpected character at line 1, column 3"}));
}

TEST(QVThemeParser, ErrorsNameDomainCodeAndReason) {
    const auto parser = QVThemeParser::initWithString(u"?");
    const auto events = std::make_shared<Events>();
    parser->setDelegate(events);
    parser->parse();
    ASSERT_TRUE(parser->parserError());
    EXPECT_EQ(parser->parserError()->domain(), u"QVThemeParserErrorDomain");
    EXPECT_EQ(parser->parserError()->code(), 1001);
    EXPECT_EQ(parser->parserError()->localizedDescription(), u"Parse error");
    EXPECT_EQ(parser->parserError()->localizedFailureReason(), u"Unexpected character at line 1, column 1");
    EXPECT_EQ(events->error, parser->parserError());
}

TEST(QVThemeParser, PositionsAreWhereItemsBegin) {
    const auto events = eventsOf(u"\na {\r\n  b: c;\r  d : e; }\n\n\n f");
    EXPECT_EQ(events->lines, (Lines{"start", "[a] {", "b: [c]", "d: [e]", "} [a]", "[f] {", "} [f]", "end"}));
    // A property's position is that of its separator, a block's end that behind the brace.
    EXPECT_EQ(events->positions, (Lines{"0:0", "2:1", "3:4", "4:5", "4:11", "7:2", "7:2", "7:3"}));
}

TEST(QVThemeParser, CarriageReturnAndLineFeedEndOneLine) {
    EXPECT_EQ(linesOf(u"a {}\r\n\r\r\n?").back(), "error: Unexpected character at line 4, column 1");
    // Nothing else ends a line.
    EXPECT_EQ(linesOf(u"a {}\u2028\u0085?").back(), "error: Unexpected character at line 1, column 7");
}

TEST(QVThemeParser, ThePlaceBehindALastLineEndIsTheEmptyLine) {
    EXPECT_EQ(eventsOf(u"a {}\n")->positions.back(), "2:1");
    EXPECT_EQ(eventsOf(u"")->positions.back(), "1:1");
}

TEST(QVThemeParser, ColumnsCountCodeUnits) {
    EXPECT_EQ(linesOf(u"𝒳𝒳 ?").back(), "error: Unexpected character at line 1, column 6");
}

TEST(QVThemeParser, AnAbortedParseEndsBeforeTheNextDeclaration) {
    const auto parser = QVThemeParser::initWithString(u"a { b: c; } d {}");
    const auto events = std::make_shared<Events>();
    events->atStartOfDeclaration = [](QVThemeParser &running) { running.abortParsing(); };
    parser->setDelegate(events);
    EXPECT_FALSE(parser->isCancelled());
    parser->parse();
    EXPECT_TRUE(parser->isCancelled());
    EXPECT_EQ(events->lines, (Lines{"start", "[a] {", "b: [c]", "} [a]", "end"}));
    EXPECT_EQ(parser->parserError(), nullptr);
    EXPECT_EQ(events->positions.back(), "1:12");
}

TEST(QVThemeParser, AbortingAtTheStartReadsNothing) {
    const auto parser = QVThemeParser::initWithString(u"a {}");
    const auto events = std::make_shared<Events>();
    events->atStartOfDocument = [](QVThemeParser &running) { running.abortParsing(); };
    parser->setDelegate(events);
    parser->parse();
    EXPECT_EQ(events->lines, (Lines{"start", "end"}));
}

TEST(QVThemeParser, ParsingAgainForgetsTheAbort) {
    const auto parser = QVThemeParser::initWithString(u"a {}");
    parser->abortParsing();
    const auto events = std::make_shared<Events>();
    parser->setDelegate(events);
    parser->parse();
    EXPECT_FALSE(parser->isCancelled());
    EXPECT_EQ(events->lines, (Lines{"start", "[a] {", "} [a]", "end"}));
}

TEST(QVThemeParser, AFailedParserStaysFailed) {
    const auto parser = QVThemeParser::initWithString(u"a {} ?");
    parser->parse();
    const auto error = parser->parserError();
    ASSERT_TRUE(error);
    const auto events = std::make_shared<Events>();
    parser->setDelegate(events);
    parser->parse();
    EXPECT_EQ(parser->parserError(), error);
    EXPECT_EQ(events->lines, (Lines{"start"}));
}

TEST(QVThemeParser, ParsingWhileItParsesIsRefused) {
    const auto parser = QVThemeParser::initWithString(u"a {}");
    const auto events = std::make_shared<Events>();
    events->atStartOfDeclaration = [](QVThemeParser &running) { running.parse(); };
    parser->setDelegate(events);
    try {
        parser->parse();
        FAIL() << "no exception";
    } catch (const NSException &exception) {
        EXPECT_EQ(exception.name(), u"NSInternalInconsistencyException");
        EXPECT_EQ(exception.reason(), u"Parsing is already in progress");
    }
    // The exception left the running parse, which is over now.
    events->atStartOfDeclaration = nullptr;
    events->lines.clear();
    parser->parse();
    EXPECT_EQ(events->lines, (Lines{"start", "[a] {", "} [a]", "end"}));
}

TEST(QVThemeParser, OutsideOfAParsePositionsStay) {
    const auto parser = QVThemeParser::initWithString(u"a {}");
    parser->updateLineAndColumnNumbers();
    EXPECT_EQ(parser->lineNumber(), 0);
    parser->parse();
    parser->updateLineAndColumnNumbers();
    EXPECT_EQ(parser->lineNumber(), 1);
    EXPECT_EQ(parser->columnNumber(), 5);
}

TEST(QVThemeParser, NeedsNoDelegateAndKeepsNone) {
    const auto parser = QVThemeParser::initWithString(u"a { b: c; } ?");
    parser->setDelegate(std::make_shared<Events>());
    EXPECT_EQ(parser->delegate(), nullptr);
    parser->parse();
    EXPECT_TRUE(parser->parserError());
}

TEST(QVThemeParser, ANullTextIsAsserted) {
    const test::AssertionRecorder assertions;
    const auto parser = QVThemeParser::initWithString(nullptr);
    EXPECT_EQ(assertions.messages(),
              (std::vector<NSString>{u"Invalid parameter not satisfying: string != nil"}));
    const auto events = std::make_shared<Events>();
    parser->setDelegate(events);
    parser->parse();
    EXPECT_EQ(events->lines, (Lines{"start", "end"}));
}
