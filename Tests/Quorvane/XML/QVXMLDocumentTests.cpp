#include "Quorvane/XML/QVXMLDocument.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSURL.h"
#include "Quorvane/XML/QVXMLTextNode.h"
#include "Tests/Support/Recorders.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::shared_ptr<QVXMLDocument> documentOf(std::string_view xml) {
    std::shared_ptr<NSError> error;
    auto document = QVXMLDocument::initWithData(NSData(xml), &error);
    EXPECT_EQ(error, nullptr);
    return document;
}

/// "name@line:column[k=v](children)", texts in quotes.
std::string drawing(const QVXMLNode &node) {
    const std::string place =
        "@" + std::to_string(node.lineNumber()) + ":" + std::to_string(node.columnNumber());
    const auto *element = dynamic_cast<const QVXMLElement *>(&node);
    if (!element)
        return "'" + node.text().stringByReplacingOccurrencesOfString(u"\n", u"\\n").UTF8String() + "'" +
               place;
    std::string drawn = element->name().UTF8String() + place;
    for (const auto &[name, value] : element->attributes())
        drawn += "[" + name.UTF8String() + "=" + value.UTF8String() + "]";
    if (element->children().empty())
        return drawn;
    drawn += "(";
    for (const auto &child : element->children())
        drawn += (drawn.back() == '(' ? "" : " ") + drawing(*child);
    return drawn + ")";
}

class TemporaryFile {
public:
    explicit TemporaryFile(std::string_view contents)
        : _path(std::filesystem::temp_directory_path() /
                ("quorvane-xml-document-" + std::to_string(getpid()) + ".xml")) {
        std::ofstream(_path) << contents;
    }
    ~TemporaryFile() { std::filesystem::remove(_path); }
    NSURL url() const { return NSURL::fileURLWithPath(NSString::stringWithUTF8String(_path.string())); }

private:
    std::filesystem::path _path;
};

} // namespace

TEST(QVXMLDocument, TheFilesTopElementIsAChildOfTheNamelessRoot) {
    const auto document = documentOf("<syntax name='x'/>");
    ASSERT_NE(document, nullptr);
    EXPECT_TRUE(document->rootElement()->name().isNull());
    EXPECT_TRUE(document->rootElement()->attributes().empty());
    const auto found = document->rootElement()->elementsForName(u"syntax");
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0]->valueForAttribute(u"name"), u"x");
    EXPECT_EQ(found[0]->stringValue(), u"");
    EXPECT_TRUE(found[0]->elementsForName(u"scopes").empty());
}

TEST(QVXMLDocument, NodesStandInDocumentOrderWithTheirPlaces) {
    EXPECT_EQ(drawing(*documentOf("<a>\n <b k='v'>x</b>y\n <c/>\n</a>")->rootElement()),
              "@0:0(a@1:3('\\n '@2:2 b@2:10[k=v]('x'@2:12) 'y\\n '@3:2 c@3:4 '\\n'@4:1))");
}

TEST(QVXMLDocument, EveryTextEventIsANodeOfItsOwn) {
    const auto a =
        documentOf("<a>one<![CDATA[ <two> ]]>three&amp;</a>")->rootElement()->elementsForName(u"a");
    ASSERT_EQ(a.size(), 1u);
    const auto nodes = a[0]->textNodes();
    ASSERT_EQ(nodes.size(), 4u);
    EXPECT_EQ(nodes[0]->text(), u"one");
    EXPECT_EQ(nodes[1]->text(), u" <two> ");
    EXPECT_EQ(nodes[2]->text(), u"three");
    EXPECT_EQ(nodes[3]->text(), u"&");
    EXPECT_EQ(a[0]->stringValue(), u"one <two> three&");
}

TEST(QVXMLDocument, CDATAIsReadAsUTF8) {
    EXPECT_EQ(documentOf("<a><![CDATA[\xC3\xA9\xF0\x9F\x98\x80]]></a>")->rootElement()->text(),
              u"\u00E9\U0001F600");
}

TEST(QVXMLDocument, PrefixesStayPartOfElementNames) {
    EXPECT_EQ(documentOf("<p:a xmlns:p='urn:x'/>")->rootElement()->elementsForName(u"p:a").size(), 1u);
}

TEST(QVXMLDocument, AParserErrorIsHandedOnWithItsPlace) {
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVXMLDocument::initWithData(NSData(std::string_view("<a>\n <b>\n</a>")), &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), u"QVXMLDocumentErrorDomain");
    EXPECT_EQ(error->code(), 76);
    EXPECT_EQ(error->integerForKey(u"line"), 3);
    EXPECT_EQ(error->integerForKey(u"column"), 5);
    EXPECT_EQ(error->localizedDescription(), u"Opening and ending tag mismatch: b and a");
    // The out-parameter may be absent.
    EXPECT_EQ(QVXMLDocument::initWithData(NSData(std::string_view("<a>"))), nullptr);
}

TEST(QVXMLDocument, AFileIsReadByItsURL) {
    const TemporaryFile file("<a>x</a>");
    std::shared_ptr<NSError> error;
    const auto document = QVXMLDocument::initWithContentsOfURL(file.url(), &error);
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(document->rootElement()->text(), u"x");
}

TEST(QVXMLDocument, AMissingFileIsAnErrorWithTheSystemsCode) {
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVXMLDocument::initWithContentsOfURL(NSURL::fileURLWithPath(u"/nowhere/at/all.xml"), &error),
              nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), u"QVXMLDocumentErrorDomain");
    EXPECT_EQ(error->code(), ENOENT);
    EXPECT_EQ(error->integerForKey(u"line"), 0);
    EXPECT_EQ(error->integerForKey(u"column"), 0);
    EXPECT_FALSE(error->stringForKey(NSLocalizedDescriptionKey).isNull());
}

TEST(QVXMLDocument, AMissingURLIsAsserted) {
    const AssertionRecorder assertions;
    EXPECT_EQ(QVXMLDocument::initWithContentsOfURL(nullptr), nullptr);
    EXPECT_EQ(assertions.messages(), std::vector<NSString>{u"Invalid parameter not satisfying: url != nil"});
}

TEST(QVXMLDocument, AGivenRootIsUsedAsItIs) {
    const auto root = std::make_shared<QVXMLElement>();
    const auto document = QVXMLDocument::initWithRootElement(root);
    EXPECT_EQ(document->rootElement(), root);
    const auto other = std::make_shared<QVXMLElement>();
    document->setRootElement(other);
    EXPECT_EQ(document->rootElement(), other);
}

TEST(QVXMLDocument, TheEndOfAnElementThatIsNotOpenIsLoggedAndChangesNothing) {
    const LogRecorder log;
    const auto document = QVXMLDocument::initWithRootElement(std::make_shared<QVXMLElement>());
    NSXMLParser parser{NSData()};
    document->parserDidStartElement(parser, u"open", {});
    document->parserDidEndElement(parser, u"other");
    EXPECT_EQ(log.messages(), std::vector<NSString>{u"Unexpected end of element: other"});
    document->parserFoundCharacters(parser, u"still inside");
    EXPECT_TRUE(document->rootElement()->children().empty());
}
