#include "Tests/Support/ParseFixture.h"

#include "Host/QVMatchTreeText.h"
#include "Platform/Foundation/NSData.h"
#include "Quorvane/XML/QVXMLDocument.h"

#include <gtest/gtest.h>

namespace quorvane::test {

std::shared_ptr<QVSyntax> syntaxFromXML(std::string_view xml) {
    std::shared_ptr<NSError> error;
    const auto document = QVXMLDocument::initWithData(NSData(xml), &error);
    const auto syntax = document ? QVSyntax::initWithDocument(*document, &error) : nullptr;
    if (!syntax)
        ADD_FAILURE() << "no syntax: "
                      << (error ? error->localizedDescription().UTF8String() : "without an error");
    return syntax;
}

std::shared_ptr<QVSyntax> syntaxWithElements(std::string_view elements) {
    return syntaxFromXML("<syntax name=\"test\">" + std::string(elements) + "</syntax>");
}

RegisteredSyntax::RegisteredSyntax(std::shared_ptr<QVSyntax> syntax) : _syntax(std::move(syntax)) {
    QVSyntax::setSyntax(_syntax, _syntax->name());
}

RegisteredSyntax::~RegisteredSyntax() { QVSyntax::setSyntax(nullptr, _syntax->name()); }

std::shared_ptr<QVParse> parseOfText(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text,
                                     NSUInteger maximumLineLength) {
    auto parse = QVParse::initWithSyntax(syntax, text.size(), QVParsePrivateQueueConcurrencyType);
    parse->setMaximumLineLength(maximumLineLength);
    parse->performWritingBlockAndWait([&] { parse->replaceCharactersInRange({0, 0}, text, nullptr); });
    return parse;
}

namespace {

/// Without the root, one level less, and without the test syntax's name.
std::string shortened(const std::string &tree) {
    std::string result;
    std::size_t start = tree.find('\n') + 1;
    while (start < tree.size()) {
        const std::size_t end = tree.find('\n', start);
        std::string line = tree.substr(start + 2, end - start - 2);
        if (const std::size_t name = line.find(" test."); name != std::string::npos)
            line.erase(name + 1, 5);
        result += line + "\n";
        start = end + 1;
    }
    return result;
}

} // namespace

std::string treeOfText(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text,
                       NSUInteger maximumLineLength) {
    std::string trees[2];
    for (const bool remembers : {false, true}) {
        const auto parse = QVParse::initWithSyntax(syntax, 0, QVParsePrivateQueueConcurrencyType);
        parse->setRemembersSearches(remembers);
        parse->setMaximumLineLength(maximumLineLength);
        parse->performWritingBlockAndWait([&] {
            parse->replaceCharactersInRange({0, 0}, text, nullptr);
            trees[remembers] = QVMatchTreeText(*parse);
        });
    }
    EXPECT_EQ(trees[0], trees[1]) << "remembering searches changed the tree";
    return shortened(trees[1]);
}

std::string treeOfText(std::string_view scopes, std::u16string_view text) {
    return treeOfText(syntaxWithElements("<scopes>" + std::string(scopes) + "</scopes>"), text);
}

} // namespace quorvane::test
