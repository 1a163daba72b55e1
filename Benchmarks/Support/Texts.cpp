#include "Benchmarks/Support/Texts.h"

#include "Platform/Foundation/NSData.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Quorvane/XML/QVXMLDocument.h"
#include "Tests/Support/Corpus.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <stdexcept>

namespace quorvane::benchmarks {

namespace {

/// The same numbers on every machine.
class Numbers {
public:
    std::size_t below(std::size_t count) {
        _state = _state * 6364136223846793005u + 1442695040888963407u;
        return static_cast<std::size_t>(_state >> 33) % count;
    }

private:
    std::uint64_t _state = 1;
};

std::string wordOfNumber(std::size_t number) {
    std::string word;
    for (std::size_t rest = number + 26; rest != 0; rest /= 26)
        word.push_back(static_cast<char>('a' + rest % 26));
    return word + (number % 3 == 0 ? "_item" : "Value");
}

void addTopScopes(const QVCollection::Scopes &scopes, const QVSyntax &syntax,
                  std::set<const QVCollection *> &known, std::vector<std::shared_ptr<QVScope>> &result) {
    for (const auto &scope : scopes) {
        if (scope->type() != QVScopeTypeInclude) {
            if (scope->regularExpression())
                result.push_back(scope);
            continue;
        }
        const auto included = scope->includeSyntaxName() == u"self"
                                  ? scope->parentSyntax()
                                  : QVSyntax::syntaxForName(scope->includeSyntaxName());
        const auto grammar = included ? included->grammar() : nullptr;
        if (!grammar)
            continue;
        const NSString &name = scope->includeCollectionName();
        const std::shared_ptr<QVCollection> collection =
            name && name != u"*" ? grammar->collectionWithName(name) : grammar;
        if (collection && known.insert(collection.get()).second)
            addTopScopes(collection->scopes(), syntax, known, result);
    }
}

} // namespace

std::string nameOfSize(std::size_t bytes) {
    return bytes < 1'000'000 ? std::to_string(bytes / 1000) + "KB" : std::to_string(bytes / 1'000'000) + "MB";
}

std::vector<Text> corpusTexts(std::size_t bytes) {
    test::loadBundledSyntaxes();
    std::vector<Text> texts;
    for (const std::string &language : test::corpusLanguages()) {
        const std::string utf8 = test::repeatedSamples(language, bytes);
        texts.push_back({language + "/" + nameOfSize(bytes),
                         QVSyntax::syntaxForName(NSString::stringWithUTF8String(language)),
                         NSString::stringWithUTF8String(utf8), utf8.size()});
    }
    return texts;
}

std::vector<Text> filesOfEnvironment() {
    std::vector<Text> texts;
    const char *const value = std::getenv("QUORVANE_BENCHMARK_FILES");
    std::string paths = value != nullptr ? value : "";
    test::loadBundledSyntaxes();
    while (!paths.empty()) {
        const std::size_t end = std::min(paths.find(':'), paths.size());
        const std::string path = paths.substr(0, end);
        paths.erase(0, end + 1);
        if (path.empty())
            continue;
        const std::string utf8 = test::contentsOfFile(path);
        const std::string name = std::filesystem::path(path).filename();
        const NSString string = NSString::stringWithUTF8String(utf8);
        const auto syntax = QVSyntax::suggestedSyntaxForString(string, NSString::stringWithUTF8String(name));
        if (!syntax)
            throw std::runtime_error(path + ": no bundled language fits");
        texts.push_back({name, syntax, string, utf8.size()});
    }
    return texts;
}

std::u16string longLine(std::size_t units) {
    static constexpr std::u16string_view pieces[] = {
        u"function f(a,b){return a?b:f(b,\"x\\n\")}", u"var g={h:[1,2.5,0x1f],'i':/j[/]k/g};",
        u"if(!l&&m[\"n\"]>3)for(;;){o++;break}",      u"p.q=function(){return`r${s(t)}u`};",
        u"$(\".v\").on('w',e=>{e.x||y()});",
    };
    std::u16string line;
    for (std::size_t index = 0; line.size() < units; ++index)
        line += pieces[index % std::size(pieces)];
    line.resize(units);
    return line;
}

Text openScript(std::size_t lines) {
    static constexpr std::string_view pieces[] = {
        "export function area(width, height = 1.5) {",
        "    const result = width * height // in inches",
        "    if (result > limits[`max-${name}`]) {",
        "        throw new RangeError(\"too large: \" + result)",
        "    }",
        "    return result.toFixed(2).replace(/0+$/, '')",
        "}",
        "",
    };
    std::string utf8;
    for (std::size_t line = 0; line < lines; ++line) {
        utf8 += pieces[line % std::size(pieces)];
        utf8 += '\n';
    }
    test::loadBundledSyntaxes();
    return {"javascript/" + std::to_string(lines) + "-lines", QVSyntax::syntaxForName(u"javascript"),
            NSString::stringWithUTF8String(utf8), utf8.size()};
}

Text manyPatternsText(std::size_t patternCount, std::size_t bytes) {
    std::string file = "<syntax name=\"benchmark.many\"><scopes>\n";
    for (std::size_t index = 0; index < patternCount; ++index) {
        file += "<scope name=\"keyword\"><expression>";
        switch (index % 8) {
        case 0:
            file += "\\b" + wordOfNumber(index) + "\\s*(?=\\()";
            break;
        case 1:
            file += "(?&lt;=\\.)" + wordOfNumber(index) + "\\b";
            break;
        case 2:
            file += "@" + wordOfNumber(index) + "(?::\\w+)?";
            break;
        default:
            file += "\\b" + wordOfNumber(index) + "\\b";
        }
        file += "</expression></scope>\n";
    }
    file += "</scopes></syntax>\n";
    const auto document = QVXMLDocument::initWithData(NSData(file));
    Text text;
    text.name = "patterns:" + std::to_string(patternCount);
    text.syntax = document ? QVSyntax::initWithDocument(*document) : nullptr;
    if (!text.syntax)
        throw std::runtime_error("the generated grammar can't be read");

    // One word in three is one that a pattern looks for.
    static constexpr const char *separators[] = {" ", " = ", "(", ").", "@", ";\n    ", " + "};
    Numbers numbers;
    std::string utf8;
    while (utf8.size() < bytes)
        utf8 +=
            wordOfNumber(numbers.below(3 * patternCount)) + separators[numbers.below(std::size(separators))];
    text.string = NSString::stringWithUTF8String(utf8);
    text.bytes = utf8.size();
    return text;
}

std::vector<std::shared_ptr<QVScope>> topScopes(const QVSyntax &syntax) {
    std::vector<std::shared_ptr<QVScope>> result;
    std::set<const QVCollection *> known;
    if (const auto grammar = syntax.grammar())
        addTopScopes(grammar->scopes(), syntax, known, result);
    return result;
}

} // namespace quorvane::benchmarks
