#pragma once

#include "Platform/Foundation/NSString.h"

#include <string>
#include <vector>

/// The texts under Tests/Corpus, for the tests that compare their trees with reviewed ones and for the
/// benchmarks.
namespace quorvane::test {

/// One folder of the corpus: Tests/Corpus/LANGUAGE/NAME/text.EXTENSION with the reviewed tree beside it, in a
/// file named "tree".
struct CorpusCase {
    /// The syntax's name.
    std::string language;
    std::string name;
    std::string fileName;
    /// As it stands in the file.
    std::string utf8;
    std::string treePath;

    NSString text() const { return NSString::stringWithUTF8String(utf8); }
};

/// All of them, in the order of their names.
const std::vector<CorpusCase> &corpusCases();

/// Their languages, in order, each once.
std::vector<std::string> corpusLanguages();

/// The language's samples over and over until there are so many bytes at least: a text of real size that is
/// the same in every run. The case "sample" where there is one, else all cases.
std::string repeatedSamples(const std::string &language, std::size_t bytes);

/// Registers the syntaxes of the packages that come with the engine, once. Throws `std::runtime_error` where
/// one can't be read.
void loadBundledSyntaxes();

/// The syntax file of a bundled language.
std::string bundledSyntaxPath(const std::string &language);

/// The file of a bundled theme.
std::string bundledThemePath(const std::string &name);

/// A file's bytes; throws `std::runtime_error` where it can't be read.
std::string contentsOfFile(const std::string &path);

} // namespace quorvane::test
