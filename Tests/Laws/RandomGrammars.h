#pragma once

#include "Tests/Support/ParseFixture.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// Random grammars and texts for laws of the parser: small, full of what rarely comes together in real ones,
/// and the same for a seed on every machine.
namespace quorvane::test {

class RandomGrammars {
public:
    explicit RandomGrammars(std::uint32_t seed);

    /// The files of the syntaxes "test", "inner" and "other". They embed and include each other.
    const std::vector<std::string> &files() const { return _files; }
    /// The first of them; all are registered while this lives.
    const std::shared_ptr<QVSyntax> &syntax() const { return _syntaxes.front()->syntax(); }

    /// Another text each time, of what the grammars' patterns look for, with all line endings, pairs and
    /// halves of characters.
    std::u16string nextText();

private:
    std::uint32_t below(std::uint32_t bound);
    bool oneIn(std::uint32_t count) { return below(count) == 0; }
    template <std::size_t Count> std::string oneOf(const char *const (&choices)[Count]) {
        return choices[below(Count)];
    }

    std::string character();
    std::string piece(int depth);
    std::string quantified(int depth);
    std::string pattern(int depth);
    std::string validPattern(int depth);
    static int groupsOf(const std::string &pattern);
    std::string captures(const std::string &pattern);
    std::string expressionOrWords(std::string *written = nullptr);

    std::string name();
    std::string sequenceAttributes();
    std::string singleMatch();
    std::string cutoff();
    std::string include();
    std::string region(int depth);
    std::string subsyntax();
    std::string scope(int depth, bool inRegion);
    std::string scopes(int depth, bool inRegion, std::uint32_t most);
    std::string file(const std::string &name);

    std::uint32_t belowForSymbols(std::uint32_t bound);
    bool oneInForSymbols(std::uint32_t count) { return belowForSymbols(count) == 0; }
    template <std::size_t Count> std::string oneForSymbols(const char *const (&choices)[Count]) {
        return choices[belowForSymbols(Count)];
    }
    /// What makes a scope's matches symbols; mostly nothing.
    std::string symbol(bool isRegion);
    std::string context();
    std::string symbolRules();

    std::uint32_t _state;
    /// Symbols have choices of their own, so that a seed's grammar is the same with and without them.
    std::uint32_t _symbolState;
    int _nameCount = 0;
    std::vector<std::string> _files;
    std::vector<std::unique_ptr<RegisteredSyntax>> _syntaxes;
};

} // namespace quorvane::test
