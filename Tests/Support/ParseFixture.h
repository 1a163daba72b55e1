#pragma once

#include "Platform/Foundation/NSError.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Parsers/QVParseDelegate.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

#include <string>
#include <string_view>
#include <vector>

namespace quorvane::test {

/// A syntax from the text of a syntax file; fails the test where it can't be read.
std::shared_ptr<QVSyntax> syntaxFromXML(std::string_view xml);

/// A syntax named "test" whose file holds these elements, such as "<scopes>…</scopes>".
std::shared_ptr<QVSyntax> syntaxWithElements(std::string_view elements);

/// Registers a syntax under its name while it lives.
class RegisteredSyntax {
public:
    explicit RegisteredSyntax(std::shared_ptr<QVSyntax> syntax);
    ~RegisteredSyntax();
    RegisteredSyntax(const RegisteredSyntax &) = delete;
    RegisteredSyntax &operator=(const RegisteredSyntax &) = delete;
    const std::shared_ptr<QVSyntax> &syntax() const { return _syntax; }

private:
    std::shared_ptr<QVSyntax> _syntax;
};

/// Keeps a parse's diagnostics.
class DiagnosticRecorder : public QVParseDelegate {
public:
    struct Diagnostic {
        NSString message;
        NSUInteger level;
        bool operator==(const Diagnostic &) const = default;
    };
    bool parseLogDiagnosticMessage(QVParse &, const NSString &message, NSUInteger level) override {
        diagnostics.push_back({message, level});
        return true;
    }
    std::vector<Diagnostic> diagnostics;
};

/// A parse of a text, on a queue of its own.
std::shared_ptr<QVParse> parseOfText(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text,
                                     NSUInteger maximumLineLength = 0);

/// The match tree of a text as `QVMatchTreeText` prints it, without the root's line and without "test."
/// before names. Parsed both ways, with remembered searches and without; the test fails where they differ.
std::string treeOfText(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text,
                       NSUInteger maximumLineLength = 0);

/// The same for a syntax that holds just these top-level scopes.
std::string treeOfText(std::string_view scopes, std::u16string_view text);

} // namespace quorvane::test
