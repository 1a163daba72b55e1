#pragma once

#include "Platform/Foundation/NSString.h"

#include <memory>
#include <string>
#include <vector>

namespace quorvane {
class QVScope;
class QVSyntax;
}

/// What the benchmarks run on: texts that are the same in every run, and the patterns of a grammar.
namespace quorvane::benchmarks {

struct Text {
    /// "javascript/280KB", or the path of a file.
    std::string name;
    std::shared_ptr<QVSyntax> syntax;
    NSString string;
    /// As UTF-8, which is how sizes of files are told.
    std::size_t bytes = 0;
};

constexpr std::size_t smallTextBytes = 280'000;
constexpr std::size_t largeTextBytes = 4'000'000;

/// The corpus's samples of each language over and over, up to about so many bytes.
std::vector<Text> corpusTexts(std::size_t bytes);

/// The files that the environment variable QUORVANE_BENCHMARK_FILES names, with colons between them, in the
/// languages that their names and contents tell.
std::vector<Text> filesOfEnvironment();

/// One line of script that a program has made small: calls, strings, lists and patterns without a blank.
std::u16string longLine(std::size_t units);

/// So many lines of JavaScript that no comment ends in: what is opened above them reaches to their end.
Text openScript(std::size_t lines);

/// A language of so many patterns (words, most of them) and a text for it.
Text manyPatternsText(std::size_t patternCount, std::size_t bytes);

/// All scopes with a pattern that can match at the top of a text, includes followed.
std::vector<std::shared_ptr<QVScope>> topScopes(const QVSyntax &syntax);

/// A short word for sizes in names: "280KB", "4MB".
std::string nameOfSize(std::size_t bytes);

} // namespace quorvane::benchmarks
