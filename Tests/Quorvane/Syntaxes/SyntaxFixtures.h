#pragma once

#include "Platform/Foundation/NSError.h"
#include "Quorvane/Packages/QVPackage.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Support/Printing.h"
#include "Tests/Support/XMLFixtures.h"

namespace quorvane::test {

/// A syntax with these elements, named "test", which must be read without complaint.
inline std::shared_ptr<QVSyntax> syntaxOf(std::string_view children,
                                          std::string_view attributes = "name='test'") {
    std::shared_ptr<NSError> error;
    auto syntax = QVSyntax::initWithDocument(
        *documentOf("<syntax " + std::string(attributes) + ">" + std::string(children) + "</syntax>"),
        &error);
    EXPECT_EQ(error, nullptr) << error->localizedDescription().UTF8String();
    EXPECT_NE(syntax, nullptr);
    return syntax ? syntax : std::make_shared<QVSyntax>();
}

inline std::vector<NSString> names(const std::vector<std::shared_ptr<QVScope>> &scopes) {
    std::vector<NSString> result;
    for (const auto &scope : scopes)
        result.push_back(scope->name());
    return result;
}

using Texts = std::vector<NSString>;

/// A grammar with scopes in all of its places.
inline constexpr std::string_view wholeGrammar =
    "<collections><collection name='c' override='true'><scope name='in-c'><expression>c</expression></scope>"
    "</collection></collections>"
    "<scopes><scope name='top'><starts-with><expression>\\(</expression></starts-with>"
    "<ends-with><expression>\\)</expression></ends-with><subscopes><scope name='inner'>"
    "<expression>i</expression></scope></subscopes></scope></scopes>"
    "<template-scopes><scope name='template'><expression>t</expression></scope></template-scopes>";

class TestPackage final : public QVPackage {
public:
    explicit TestPackage(NSString identifier) : _identifier(std::move(identifier)) {}
    NSString identifier() const override { return _identifier; }

private:
    NSString _identifier;
};

/// Takes names out of the registry when a test ends.
class RegistryGuard {
public:
    explicit RegistryGuard(std::vector<std::shared_ptr<QVSyntax>> syntaxes) : _syntaxes(std::move(syntaxes)) {
        for (const auto &syntax : _syntaxes)
            QVSyntax::setSyntax(syntax, syntax->name());
    }
    ~RegistryGuard() {
        for (const auto &syntax : _syntaxes)
            QVSyntax::setSyntax(nullptr, syntax->name());
    }
    RegistryGuard(const RegistryGuard &) = delete;
    RegistryGuard &operator=(const RegistryGuard &) = delete;

private:
    std::vector<std::shared_ptr<QVSyntax>> _syntaxes;
};

} // namespace quorvane::test
