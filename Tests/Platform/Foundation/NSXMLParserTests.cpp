#include "Platform/Foundation/NSXMLParser.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSURL.h"
#include "Platform/Foundation/QVLimits.h"
#include "Tests/Support/Printing.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace quorvane;

namespace {

/// Draws events, one a line: "start a k=v", "end a", "text ...", "cdata ...".
class Drawer final : public NSXMLParserDelegate {
public:
    std::string drawing;
    std::vector<std::shared_ptr<NSError>> errors;
    bool drawsPlaces = false;

    void parserDidStartDocument(NSXMLParser &) override { drawing += "document\n"; }
    void parserDidEndDocument(NSXMLParser &) override { drawing += "end of document\n"; }
    void parserDidStartElement(NSXMLParser &parser, const NSString &elementName,
                               const std::map<NSString, NSString> &attributes) override {
        std::string event = "start " + elementName.UTF8String();
        for (const auto &[name, value] : attributes)
            event += " " + name.UTF8String() + "=" + value.UTF8String();
        draw(parser, event);
    }
    void parserDidEndElement(NSXMLParser &parser, const NSString &elementName) override {
        draw(parser, "end " + elementName.UTF8String());
    }
    void parserFoundCharacters(NSXMLParser &parser, const NSString &characters) override {
        draw(parser, "text " + characters.stringByReplacingOccurrencesOfString(u"\n", u"\\n").UTF8String());
    }
    void parserFoundCDATA(NSXMLParser &parser, const NSData &block) override {
        draw(parser, "cdata " + std::string(block.view()));
    }
    void parserParseErrorOccurred(NSXMLParser &, const std::shared_ptr<NSError> &error) override {
        errors.push_back(error);
    }

private:
    void draw(NSXMLParser &parser, const std::string &event) {
        if (drawsPlaces)
            drawing +=
                std::to_string(parser.lineNumber()) + ":" + std::to_string(parser.columnNumber()) + " ";
        drawing += event + "\n";
    }
};

std::string eventsOf(std::string_view xml, bool drawsPlaces = false) {
    NSXMLParser parser{NSData(xml)};
    Drawer drawer;
    drawer.drawsPlaces = drawsPlaces;
    parser.setDelegate(&drawer);
    EXPECT_TRUE(parser.parse()) << parser.parserError()->description().UTF8String();
    EXPECT_TRUE(drawer.errors.empty());
    return drawer.drawing;
}

/// Parses what must fail and answers the error, which the delegate was told of once.
std::shared_ptr<NSError> errorOf(const NSData &xml) {
    NSXMLParser parser{xml};
    Drawer drawer;
    parser.setDelegate(&drawer);
    EXPECT_FALSE(parser.parse());
    EXPECT_EQ(drawer.errors, std::vector{parser.parserError()});
    EXPECT_EQ(drawer.drawing.find("end of document"), std::string::npos);
    return parser.parserError();
}

std::shared_ptr<NSError> errorOf(std::string_view xml) { return errorOf(NSData(xml)); }

NSInteger codeOf(std::string_view xml) { return errorOf(xml)->code(); }

std::string nested(std::size_t depth) {
    std::string xml;
    for (std::size_t level = 0; level < depth; ++level)
        xml += "<a>";
    for (std::size_t level = 0; level < depth; ++level)
        xml += "</a>";
    return xml;
}

} // namespace

TEST(NSXMLParser, ElementsAndTextComeInDocumentOrder) {
    EXPECT_EQ(eventsOf("<a>\n<b k='v' j=\"w\"/>tail</a>"), "document\n"
                                                           "start a\n"
                                                           "text \\n\n"
                                                           "start b j=w k=v\n"
                                                           "end b\n"
                                                           "text tail\n"
                                                           "end a\n"
                                                           "end of document\n");
}

TEST(NSXMLParser, PrefixesStayPartOfNames) {
    EXPECT_EQ(eventsOf("<p:a xmlns:p='urn:x' p:k='v'><q:b/></p:a>"), "document\n"
                                                                     "start p:a p:k=v xmlns:p=urn:x\n"
                                                                     "start q:b\n"
                                                                     "end q:b\n"
                                                                     "end p:a\n"
                                                                     "end of document\n");
}

TEST(NSXMLParser, CDATAIsAnEventOfItsOwn) {
    EXPECT_EQ(eventsOf("<a>x<![CDATA[<&>]]>y</a>"), "document\n"
                                                    "start a\n"
                                                    "text x\n"
                                                    "cdata <&>\n"
                                                    "text y\n"
                                                    "end a\n"
                                                    "end of document\n");
}

TEST(NSXMLParser, BlanksBetweenElementsAreTextEvenWithADocumentType) {
    EXPECT_EQ(eventsOf("<!DOCTYPE a [<!ELEMENT a (b)>]><a> <b/> </a>"), "document\n"
                                                                        "start a\n"
                                                                        "text  \n"
                                                                        "start b\n"
                                                                        "end b\n"
                                                                        "text  \n"
                                                                        "end a\n"
                                                                        "end of document\n");
}

TEST(NSXMLParser, StandardEntitiesAndCharacterReferencesAreExpanded) {
    EXPECT_EQ(eventsOf("<a k='&lt;&#x41;&quot;&#10;'/>"),
              "document\nstart a k=<A\"\n\nend a\nend of document\n");
    EXPECT_EQ(eventsOf("<a k='[&amp;!]&#38;lt;'/>"),
              "document\nstart a k=[&!]&lt;\nend a\nend of document\n");
    // Each is an event of its own, as the library reports it.
    EXPECT_EQ(eventsOf("<a>1&amp;2&gt;&#x1F600;&apos;</a>"), "document\n"
                                                             "start a\n"
                                                             "text 1\n"
                                                             "text &\n"
                                                             "text 2\n"
                                                             "text >\n"
                                                             "text \xF0\x9F\x98\x80\n"
                                                             "text '\n"
                                                             "end a\n"
                                                             "end of document\n");
}

TEST(NSXMLParser, CommentsAndInstructionsAreNoEventsButPartText) {
    EXPECT_EQ(eventsOf("<?xml version='1.0'?><!-- c --><a>x<!-- y -->z<?p q?></a><!-- d -->"),
              "document\nstart a\ntext x\ntext z\nend a\nend of document\n");
}

TEST(NSXMLParser, LinesAndColumnsAreWhereTheLibraryStandsWithTheEvent) {
    // A start tag is reported before its closing bracket is read, an end tag and a text when they are read.
    EXPECT_EQ(eventsOf("<a>\n  <b k='v'>x</b>\n</a>", true), "document\n"
                                                             "1:3 start a\n"
                                                             "2:3 text \\n  \n"
                                                             "2:11 start b k=v\n"
                                                             "2:13 text x\n"
                                                             "2:17 end b\n"
                                                             "3:1 text \\n\n"
                                                             "3:5 end a\n"
                                                             "end of document\n");
}

TEST(NSXMLParser, ALongTextIsWholeWhateverItsPieces) {
    // The library reports text that is not ASCII in pieces; no character may be cut.
    std::string text;
    for (int count = 0; count < 5000; ++count)
        text += "\xF0\x9F\x98\x80 \xE4\xB8\xAD";
    NSXMLParser parser{NSData("<a>" + text + "</a>")};
    struct Collector : NSXMLParserDelegate {
        std::u16string text;
        void parserFoundCharacters(NSXMLParser &, const NSString &characters) override {
            text += characters.view();
        }
    } collector;
    parser.setDelegate(&collector);
    EXPECT_TRUE(parser.parse());
    EXPECT_EQ(NSString(collector.text), NSString::stringWithUTF8String(text));
}

TEST(NSXMLParser, OtherEncodingsAreConverted) {
    EXPECT_EQ(eventsOf("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>"),
              "document\nstart a\ntext \xC3\xA9\nend a\nend of document\n");
    EXPECT_EQ(eventsOf(std::string_view("\xFF\xFE<\0a\0>\0x\0<\0/\0a\0>\0", 18)),
              "document\nstart a\ntext x\nend a\nend of document\n");
}

TEST(NSXMLParser, MalformedInputIsAnErrorWithTheLibrarysCodeAndMessage) {
    EXPECT_EQ(codeOf("<a><b></a>"), 76);       // tag name mismatch
    EXPECT_EQ(codeOf("<a>"), 77);              // tag not finished
    EXPECT_EQ(codeOf("<a k='1' k='2'/>"), 42); // attribute redefined
    EXPECT_EQ(codeOf("<a>&nope;</a>"), 26);    // undeclared entity
    EXPECT_EQ(codeOf("<a k='&nope;'/>"), 26);  // the same in an attribute
    EXPECT_EQ(codeOf("<a>\x01</a>"), 9);       // invalid character
    EXPECT_EQ(codeOf("<a>\xFF</a>"), 9);       // bytes that are no UTF-8: no valid character either
    EXPECT_EQ(codeOf("<a/>x"), 5);             // content at the end
    EXPECT_EQ(codeOf("text"), 4);              // no start tag: empty document
    EXPECT_EQ(codeOf(""), 4);
    EXPECT_EQ(errorOf(NSData())->code(), 4);
    const auto error = errorOf("<a><b></a>");
    EXPECT_EQ(error->domain(), u"NSXMLParserErrorDomain");
    EXPECT_EQ(error->localizedDescription(), u"Opening and ending tag mismatch: b and a");
}

TEST(NSXMLParser, NothingIsPrinted) {
    testing::internal::CaptureStderr();
    codeOf("<a><b></a>&x;");
    codeOf("<?xml version='1.0' encoding='nonsense'?><a/>");
    codeOf("<!DOCTYPE a [<!ENTITY % p SYSTEM 'file:///nowhere'> %p; <!ENTITY e 'v'>]><a>&e;</a>");
    // Bytes that the encoding does not have, which the library reports beside the parser.
    codeOf("<?xml version='1.0' encoding='EUC-JP'?><a>x\xFF\xFF</a>");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(NSXMLParser, TheErrorsPlaceStaysAfterParsing) {
    NSXMLParser parser{NSData(std::string_view("<a>\n<b>\n  </c>\n\n\n</a>"))};
    EXPECT_EQ(parser.lineNumber(), 0);
    EXPECT_EQ(parser.columnNumber(), 0);
    EXPECT_FALSE(parser.parse());
    EXPECT_EQ(parser.lineNumber(), 3);
    EXPECT_EQ(parser.columnNumber(), 7);
}

TEST(NSXMLParser, NoEventFollowsAnError) {
    NSXMLParser parser{NSData(std::string_view("<a><b></c><d/></a>"))};
    Drawer drawer;
    parser.setDelegate(&drawer);
    EXPECT_FALSE(parser.parse());
    EXPECT_EQ(drawer.drawing, "document\nstart a\nstart b\n");
}

TEST(NSXMLParser, ADeclaredEntityIsNotAllowed) {
    EXPECT_EQ(codeOf("<!DOCTYPE a [<!ENTITY e 'v'>]><a>&e;</a>"), NSXMLParser::EntityNotAllowedError);
    EXPECT_EQ(codeOf("<!DOCTYPE a [<!ENTITY e 'v'>]><a k='&e;'/>"), NSXMLParser::EntityNotAllowedError);
    EXPECT_EQ(codeOf("<!DOCTYPE a [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><a>&e;</a>"),
              NSXMLParser::EntityNotAllowedError);
    EXPECT_EQ(errorOf("<!DOCTYPE a [<!ENTITY e 'v'>]><a>&e;</a>")->localizedDescription(),
              u"The entity “e” is not expanded; only the five standard ones are.");
}

TEST(NSXMLParser, AnEntityThatAnOutsideFileMayDeclareIsNotAllowed) {
    EXPECT_EQ(codeOf("<!DOCTYPE a SYSTEM 'a.dtd'><a>&e;</a>"), NSXMLParser::EntityNotAllowedError);
    EXPECT_EQ(codeOf("<!DOCTYPE a SYSTEM 'a.dtd'><a k='&e;'/>"), NSXMLParser::EntityNotAllowedError);
}

TEST(NSXMLParser, ADocumentTypeAndUnusedEntitiesAreLetBe) {
    EXPECT_EQ(eventsOf("<!DOCTYPE a SYSTEM 'http://localhost/a.dtd' [<!ENTITY e 'v'>"
                       "<!ENTITY lt '&#38;#60;'><!ATTLIST a k CDATA 'default'>]><a>&lt;</a>"),
              "document\nstart a\ntext <\nend a\nend of document\n");
}

TEST(NSXMLParser, EntitiesInsideEntitiesGrowNothing) {
    std::string xml = "<!DOCTYPE a [<!ENTITY e0 'ha'>";
    for (int level = 1; level < 30; ++level)
        xml += "<!ENTITY e" + std::to_string(level) + " '&e" + std::to_string(level - 1) + ";&e" +
               std::to_string(level - 1) + ";'>";
    EXPECT_EQ(codeOf(xml + "]><a>&e29;</a>"), NSXMLParser::EntityNotAllowedError);
}

TEST(NSXMLParser, ElementsNestAsDeepAsTheLimitAndNoDeeper) {
    NSXMLParser parser{NSData(nested(limits::xmlNestingDepth))};
    EXPECT_TRUE(parser.parse());
    const auto error = errorOf(nested(limits::xmlNestingDepth + 1));
    EXPECT_EQ(error->code(), NSXMLParser::NestingTooDeepError);
    EXPECT_EQ(error->localizedDescription(), u"Elements nest deeper than 256 levels.");
    // Siblings don't add up.
    std::string flat = "<a>";
    for (std::size_t count = 0; count < 2 * limits::xmlNestingDepth; ++count)
        flat += "<b></b>";
    NSXMLParser flatParser{NSData(flat + "</a>")};
    EXPECT_TRUE(flatParser.parse());
}

TEST(NSXMLParser, ADocumentIsAsLargeAsTheLimitAndNoLarger) {
    std::string xml = "<a>";
    const std::string filler(8u << 20, 'x');
    while (xml.size() + filler.size() + 16 < limits::xmlDocumentBytes)
        xml += filler + "<b/>";
    xml.append(limits::xmlDocumentBytes - xml.size() - 4, ' ');
    xml += "</a>";
    ASSERT_EQ(xml.size(), limits::xmlDocumentBytes);
    NSXMLParser parser{NSData(xml)};
    EXPECT_TRUE(parser.parse());
    const auto error = errorOf(xml + "\n");
    EXPECT_EQ(error->code(), NSXMLParser::DocumentTooLargeError);
    EXPECT_EQ(error->localizedDescription(), u"The document is larger than 67108864 bytes.");
}

TEST(NSXMLParser, AFileIsReadWhenParsingStarts) {
    const auto path =
        std::filesystem::temp_directory_path() / ("quorvane-xml-parser-" + std::to_string(getpid()) + ".xml");
    NSXMLParser parser{NSURL::fileURLWithPath(NSString::stringWithUTF8String(path.string()))};
    EXPECT_FALSE(parser.parse());
    EXPECT_EQ(parser.parserError()->domain(), NSPOSIXErrorDomain);
    EXPECT_EQ(parser.parserError()->code(), ENOENT);
    std::ofstream(path) << "<a/>";
    EXPECT_TRUE(parser.parse());
    EXPECT_EQ(parser.parserError(), nullptr);
    std::filesystem::resize_file(path, limits::xmlDocumentBytes + 1);
    EXPECT_FALSE(parser.parse());
    EXPECT_EQ(parser.parserError()->code(), NSXMLParser::DocumentTooLargeError);
    std::filesystem::remove(path);
}

TEST(NSXMLParser, AnExceptionOfTheDelegateEndsTheEventsAndReachesTheCaller) {
    struct Thrower : NSXMLParserDelegate {
        int events = 0;
        void parserDidStartElement(NSXMLParser &, const NSString &,
                                   const std::map<NSString, NSString> &) override {
            ++events;
            throw NSException(u"Mine", u"why");
        }
        void parserDidEndElement(NSXMLParser &, const NSString &) override { ++events; }
    } thrower;
    NSXMLParser parser{NSData(std::string_view("<a><b/></a>"))};
    parser.setDelegate(&thrower);
    try {
        parser.parse();
        FAIL() << "did not throw";
    } catch (const NSException &exception) {
        EXPECT_EQ(exception.reason(), u"why");
    }
    EXPECT_EQ(thrower.events, 1);
}

TEST(NSXMLParser, AParserWithoutADelegateOnlyChecks) {
    NSXMLParser good{NSData(std::string_view("<a>x<![CDATA[y]]></a>"))};
    EXPECT_TRUE(good.parse());
    NSXMLParser bad{NSData(std::string_view("<a>"))};
    EXPECT_FALSE(bad.parse());
    EXPECT_NE(bad.parserError(), nullptr);
}
