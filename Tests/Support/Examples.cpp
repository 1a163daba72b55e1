#include "Tests/Support/Examples.h"

#include "Tests/Support/Corpus.h"

#include <algorithm>
#include <sstream>

namespace quorvane::test {

namespace {

std::vector<std::string> linesOf(const std::string &text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

} // namespace

std::string textOfPage(const std::string &name) {
    return contentsOfFile(QUORVANE_SOURCE_DIR "/Documentation/" + name);
}

std::vector<PageExample> examplesOfPage(const std::string &name) {
    std::vector<PageExample> examples;
    bool isOpen = false;
    std::string lead;
    for (const std::string &line : linesOf(textOfPage(name))) {
        if (line.starts_with("```")) {
            isOpen = !isOpen;
            if (isOpen)
                examples.push_back({line.substr(3), "", lead});
        } else if (isOpen) {
            examples.back().text += line + "\n";
        } else if (!line.empty()) {
            lead = line;
        }
    }
    return examples;
}

std::vector<std::string> wordsOfTables(const std::string &name) {
    std::vector<std::string> words;
    for (const std::string &line : linesOf(textOfPage(name))) {
        if (!line.starts_with("|"))
            continue;
        const std::string cell = line.substr(1, line.find('|', 1) - 1);
        for (std::size_t at = cell.find('`'); at != std::string::npos; at = cell.find('`', at)) {
            const std::size_t end = cell.find('`', at + 1);
            words.push_back(cell.substr(at + 1, end - at - 1));
            at = end + 1;
        }
    }
    std::sort(words.begin(), words.end());
    words.erase(std::unique(words.begin(), words.end()), words.end());
    return words;
}

} // namespace quorvane::test
