#include "Tests/Support/Corpus.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSURL.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>

namespace quorvane::test {

namespace fs = std::filesystem;

namespace {

std::vector<fs::path> entriesOf(const fs::path &folder) {
    if (!fs::is_directory(folder))
        return {};
    std::vector<fs::path> entries{fs::directory_iterator(folder), {}};
    std::sort(entries.begin(), entries.end());
    return entries;
}

std::vector<CorpusCase> readCases() {
    std::vector<CorpusCase> cases;
    for (const fs::path &language : entriesOf(QUORVANE_SOURCE_DIR "/Tests/Corpus"))
        for (const fs::path &folder : entriesOf(language))
            for (const fs::path &file : entriesOf(folder))
                if (file.stem() == "text")
                    cases.push_back({language.filename(), folder.filename(), file.filename(),
                                     contentsOfFile(file), folder / "tree"});
    return cases;
}

/// From the syntaxes' names to their files.
std::map<std::string, std::string> registerBundledSyntaxes() {
    std::map<std::string, std::string> paths;
    for (const fs::path &package : entriesOf(QUORVANE_SOURCE_DIR "/Packages")) {
        for (const fs::path &file : entriesOf(package / "Syntaxes")) {
            if (file.extension() != ".xml")
                continue;
            std::shared_ptr<NSError> error;
            const auto syntax = QVSyntax::initWithContentsOfURL(
                NSURL::fileURLWithPath(NSString::stringWithUTF8String(file.string())), &error);
            if (!syntax || error)
                throw std::runtime_error(
                    file.string() + ": " +
                    (error ? error->localizedDescription().UTF8String() : std::string("no name")));
            QVSyntax::setSyntax(syntax, syntax->name());
            paths[syntax->name().UTF8String()] = file.string();
        }
    }
    return paths;
}

const std::map<std::string, std::string> &bundledSyntaxes() {
    static const std::map<std::string, std::string> paths = registerBundledSyntaxes();
    return paths;
}

} // namespace

std::string contentsOfFile(const std::string &path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        throw std::runtime_error(path + ": can't be read");
    return {std::istreambuf_iterator<char>(stream), {}};
}

const std::vector<CorpusCase> &corpusCases() {
    static const std::vector<CorpusCase> cases = readCases();
    return cases;
}

std::vector<std::string> corpusLanguages() {
    std::vector<std::string> languages;
    for (const CorpusCase &corpusCase : corpusCases())
        if (languages.empty() || languages.back() != corpusCase.language)
            languages.push_back(corpusCase.language);
    return languages;
}

std::string repeatedSamples(const std::string &language, std::size_t bytes) {
    std::string all;
    std::string sample;
    for (const CorpusCase &corpusCase : corpusCases()) {
        if (corpusCase.language != language)
            continue;
        all += corpusCase.utf8;
        if (corpusCase.name == "sample")
            sample = corpusCase.utf8;
    }
    const std::string &piece = sample.empty() ? all : sample;
    std::string text;
    while (text.size() < bytes && !piece.empty())
        text += piece;
    return text;
}

void loadBundledSyntaxes() { bundledSyntaxes(); }

std::string bundledSyntaxPath(const std::string &language) {
    const auto found = bundledSyntaxes().find(language);
    if (found == bundledSyntaxes().end())
        throw std::runtime_error("no package has the language " + language);
    return found->second;
}

std::string bundledThemePath(const std::string &name) {
    return QUORVANE_SOURCE_DIR "/Packages/Themes/Themes/" + name + ".css";
}

} // namespace quorvane::test
