#include "Platform/Foundation/NSURL.h"
#include "Quorvane/QuorvaneErrors.h"
#include "Tests/Quorvane/Syntaxes/SyntaxFixtures.h"

#include <cstdio>
#include <fstream>

using namespace quorvane;
using namespace quorvane::test;

// Columns are where an element's start tag ends: that is where the XML library stands when it reports it.

namespace {

/// Why a file with these elements, from its second line on, gives no syntax; null where nothing is told.
std::shared_ptr<NSError> failure(std::string_view children) {
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVSyntax::initWithDocument(
                  *documentOf("<syntax name='test'>\n" + std::string(children) + "</syntax>"), &error),
              nullptr);
    if (error) {
        EXPECT_EQ(error->domain(), NSString(QVQuorvaneErrorDomain));
        EXPECT_EQ(error->code(), 1);
    }
    return error;
}

NSString message(std::string_view children) {
    const auto error = failure(children);
    return error ? error->localizedDescription() : NSString();
}

} // namespace

TEST(QVSyntaxXMLErrors, AFileThatIsNoXMLHandsOnTheReadersError) {
    const std::string path = testing::TempDir() + "quorvane-syntax-no-xml.xml";
    std::ofstream(path) << "<syntax name='a'>\n<meta></syntax>";
    std::shared_ptr<NSError> error;
    EXPECT_EQ(
        QVSyntax::initWithContentsOfURL(NSURL::fileURLWithPath(NSString::stringWithUTF8String(path)), &error),
        nullptr);
    std::remove(path.c_str());
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), NSString(QVXMLDocumentErrorDomain));
    EXPECT_EQ(error->integerForKey(u"line"), 2);
}

TEST(QVSyntaxXMLErrors, AFileThatIsNotThereIsAnError) {
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVSyntax::initWithContentsOfURL(NSURL::fileURLWithPath(u"/no/such/file.xml"), &error), nullptr);
    EXPECT_NE(error, nullptr);
}

TEST(QVSyntaxXMLErrors, AFileWithoutANamedSyntaxGivesNeitherResultNorError) {
    for (const std::string_view text :
         {"<syntax/>", "<syntax name=''/>", "<language name='x'/>", "<syntax><name>x</name></syntax>"}) {
        // What was in the out-parameter stays there.
        const auto before = NSError::errorWithDomain(u"Before", 7);
        auto error = before;
        EXPECT_EQ(QVSyntax::initWithDocument(*documentOf(text), &error), nullptr) << text;
        EXPECT_EQ(error, before) << text;
    }
}

TEST(QVSyntaxXMLErrors, ADocumentWithoutATreeGivesNothing) {
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVSyntax::initWithDocument(*QVXMLDocument::initWithRootElement(nullptr), &error), nullptr);
    EXPECT_EQ(error, nullptr);
}

TEST(QVSyntaxXMLErrors, AFailingProviderFailsTheFile) {
    EXPECT_EQ(
        message("<completions><provider name='ok'/>\n<provider name='p'><expression>(</expression></provider>"
                "</completions>"),
        u"Invalid regular expression for completion provider p, {3, 19}");
}

TEST(QVSyntaxXMLErrors, AFailingScopeFailsTheFileWhereverItStands) {
    EXPECT_EQ(message("<collections><collection name='c'>\n<scope name='a'/></collection></collections>"),
              u"Missing expression for scope a, {3, 16}");
    EXPECT_EQ(message("<scopes>\n<scope name='a'/></scopes>"), u"Missing expression for scope a, {3, 16}");
    EXPECT_EQ(message("<template-scopes>\n<scope name='a'/></template-scopes>"),
              u"Missing expression for scope a, {3, 16}");
}

TEST(QVSyntaxXMLErrors, ACutoffWithoutAnExpressionFailsTheFileSilently) {
    EXPECT_EQ(failure("<collections><collection name='c'><cut-off/></collection></collections>"), nullptr);
}

TEST(QVSyntaxXMLErrors, ABadIndentationExpressionFailsTheFileWithTheRulesPlace) {
    EXPECT_EQ(message("<indentation>\n<increase><expression>(</expression></increase></indentation>"),
              u"Invalid indentation increase regular expression: ( {3, 10}");
    EXPECT_EQ(message("<indentation>\n<decrease><expression>a(</expression></decrease></indentation>"),
              u"Invalid indentation decrease regular expression: a( {3, 10}");
    // Meant so: the message keeps the rule's older name.
    EXPECT_EQ(message("<indentation>\n<next-line><expression>(</expression></next-line></indentation>"),
              u"Invalid indentation increase-next regular expression: ( {3, 11}");
    const auto error = failure("<indentation>\n<ignore><expression>(</expression></ignore></indentation>");
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->localizedDescription(), u"Invalid indentation ignore regular expression: ( {3, 8}");
    EXPECT_NE(error->underlyingError(), nullptr);
}

TEST(QVSyntaxXMLErrors, ABadPatternOfASingleMatchIsReportedBesideTheSyntax) {
    std::shared_ptr<NSError> error;
    const auto syntax = QVSyntax::initWithDocument(
        *documentOf("<syntax name='test'><scopes><scope name='a'><expression>(</expression></scope></scopes>"
                    "</syntax>"),
        &error);
    ASSERT_NE(syntax, nullptr);
    EXPECT_EQ(names(syntax->grammar()->scopes()), (Texts{u"a"}));
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->localizedDescription(), u"Invalid regular expression for scope a, {0, 0}");
}

TEST(QVSyntaxXMLErrors, OfSeveralErrorsTheFirstOneMetIsTold) {
    // Collections come before scopes, whatever their order in the file, and both before indentation.
    EXPECT_EQ(
        message("<indentation><increase><expression>(</expression></increase></indentation>"
                "<scopes><scope name='in-scopes'/></scopes>"
                "<collections><collection name='c'><scope name='in-c'><expression>(</expression></scope>"
                "</collection></collections>"),
        u"Invalid regular expression for scope in-c, {0, 0}");
}

TEST(QVSyntaxXMLErrors, NobodyNeedsToAskForTheError) {
    EXPECT_EQ(QVSyntax::initWithDocument(*documentOf("<syntax name='a'><scopes><scope/></scopes></syntax>")),
              nullptr);
}
