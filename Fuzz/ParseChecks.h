#pragma once

#include "Fuzz/FuzzTarget.h"
#include "Host/QVMatchTreeText.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Tests/Support/MatchTreeChecks.h"

#include <cstdio>

/// What every parse of any text must hold to, for the targets that parse.
namespace quorvane::fuzz {

/// Says what is wrong before it ends the run: a tree can't be looked at afterwards.
inline void requireNoProblem(const std::string &problem) {
    if (problem.empty())
        return;
    std::fprintf(stderr, "%s\n", problem.c_str());
    std::abort();
}

/// The match at a location is the root or one that reaches to the location; asking hurts nowhere.
inline void askForLocations(const QVParse &parse) {
    const NSUInteger length = parse.string().size();
    const NSUInteger step = 1 + length / 64;
    for (NSUInteger location = 0; location <= length; location += step) {
        for (const bool captures : {false, true}) {
            std::shared_ptr<QVSyntax> syntax;
            const QVMatch *const match = parse.matchAtLocation(location, captures, &syntax);
            require(match != nullptr && syntax != nullptr);
            if (match != parse.rootMatch()) {
                const NSRange range = match->fullRange();
                require(range.location <= location && location <= NSMaxRange(range));
            }
            require(parse.matchPrecedingLocation(location, captures, nullptr) != nullptr);
        }
    }
}

/// The tree of a text, which holds together.
inline std::string checkedTree(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text,
                               NSUInteger maximumLineLength, bool remembers) {
    const auto parse = QVParse::initWithSyntax(syntax, text.size(), QVParseMainQueueConcurrencyType);
    parse->setMaximumLineLength(maximumLineLength);
    parse->setRemembersSearches(remembers);
    std::string tree;
    parse->performWritingBlockAndWait([&] {
        require(parse->replaceCharactersInRange({0, 0}, text, nullptr) == NSRange{0, text.size()});
        requireNoProblem(test::problemInMatchTree(*parse));
        tree = QVMatchTreeText(*parse);
        if (remembers)
            askForLocations(*parse);
    });
    return tree;
}

/// Prints both trees' first lines that differ.
inline void requireSameTree(const std::string &a, const std::string &b) {
    if (a == b)
        return;
    std::size_t index = 0;
    while (index < a.size() && index < b.size() && a[index] == b[index])
        ++index;
    const std::size_t start = index == 0 ? 0 : a.rfind('\n', index - 1) + 1;
    std::fprintf(stderr, "the trees differ:\n%s\n%s\n", a.substr(start, 200).c_str(),
                 b.substr(start, 200).c_str());
    std::abort();
}

/// Parses with remembered searches and without, which gives the same tree.
inline std::string requireSameTreeBothWays(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text,
                                           NSUInteger maximumLineLength) {
    std::string remembering = checkedTree(syntax, text, maximumLineLength, true);
    requireSameTree(checkedTree(syntax, text, maximumLineLength, false), remembering);
    return remembering;
}

} // namespace quorvane::fuzz
