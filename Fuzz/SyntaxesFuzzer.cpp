// Syntax files: what is XML gives a syntax, an error, both where a pattern is bad, or neither where there is no
// name. A syntax can be asked, copied and archived, and comes back from the archive with its grammar.
#include "Fuzz/FuzzTarget.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Quorvane/XML/QVXMLDocument.h"

using namespace quorvane;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::silenceLog();
    const auto document = QVXMLDocument::initWithData(NSData(std::vector<std::uint8_t>(data, data + size)));
    if (!document)
        return 0;
    std::shared_ptr<NSError> error;
    const auto syntax = QVSyntax::initWithDocument(*document, &error);
    if (!syntax)
        return 0;

    fuzz::require(syntax->name().length() != 0);
    const float confidence = syntax->confidenceForString(u"#!/bin/sh\nint main;\r\n<a>", u"main.tpl.c");
    fuzz::require(confidence >= 0 && confidence <= 1);
    syntax->isDescendantOfSyntaxName(u"other");

    const auto grammar = syntax->copy()->grammar();
    fuzz::require(grammar != nullptr);
    const auto copy = NSKeyedUnarchiver::unarchivedObjectOfClass<QVSyntax>(
        NSKeyedArchiver::archivedDataWithRootObject(syntax), &error);
    fuzz::require(copy != nullptr && copy->name() == syntax->name());
    const auto copiedGrammar = copy->grammar();
    fuzz::require(copiedGrammar != nullptr && copiedGrammar->scopes().size() == grammar->scopes().size() &&
                  copiedGrammar->collections().size() == grammar->collections().size());
    return 0;
}
