// Symbols: what a keystroke in a file with many of them costs the parse, all of its steps taken together,
// beside the pass over all symbols' relations that it stands for. Figures that are worth keeping are ratios
// of one run:
//
//   to_whole    the edit with its reparse and the symbols' relations to the whole pass alone
//   parsed      the most units that one edit parsed again
//
// "apart" has functions one behind the other, "inside" has all of them in one, "indented" in a class that
// ends where its lines do, "open" in sections that each heading closes. Letters come and go at places that
// follow each other in no order; "definitions" are edited in the lines of the symbols themselves. Of
// "indented" there are fewer: an edit among functions that the next line ends parses up to the text's end.
#include "Benchmarks/Support/Texts.h"
#include "Benchmarks/Support/Timing.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Support/Corpus.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>

using namespace quorvane;
using namespace quorvane::benchmarks;

namespace {

struct Shape {
    const char *name;
    std::size_t symbolCount;
    const char *language;
    const char *before;
    /// With a number for each %.
    const char *each;
    const char *after;
    /// In `each`, where letters are typed: in a definition and far from all.
    const char *definition;
    const char *statement;
};

constexpr Shape shapes[] = {
    {"apart", 50'000, "javascript", "", "function f%() {\n    call(1);\n\n    again(2);\n}\n\n", "", "f%",
     "again"},
    {"inside", 50'000, "javascript", "(function () {\n",
     "    function f%() {\n        call(1);\n\n        again(2);\n    }\n\n", "})();\n", "f%", "again"},
    {"indented", 500, "python", "class C:\n", "    def f%(self):\n        call(1)\n\n        again(2)\n\n",
     "", "f%", "again"},
    {"open", 50'000, "markdown", "# Title\n\n", "## Heading %\n\nSome text.\n\nAnd again more.\n\n", "",
     "Heading", "again"},
};

std::string withNumber(std::string_view text, std::size_t number) {
    std::string result;
    for (const char character : text)
        if (character == '%')
            result += std::to_string(number);
        else
            result.push_back(character);
    return result;
}

double median(std::vector<double> &seconds) {
    const auto middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
    std::nth_element(seconds.begin(), middle, seconds.end());
    return *middle;
}

void editSymbols(benchmark::State &state, const Shape &shape, bool inDefinitions) {
    test::loadBundledSyntaxes();
    std::string text = shape.before;
    std::vector<NSUInteger> places;
    for (std::size_t number = 0; number < shape.symbolCount; ++number) {
        const std::string each = withNumber(shape.each, number);
        const std::string word = withNumber(inDefinitions ? shape.definition : shape.statement, number);
        places.push_back(text.size() + each.find(word) + word.size());
        text += each;
    }
    text += shape.after;
    const auto parse =
        QVParse::initWithSyntax(QVSyntax::syntaxForName(NSString::stringWithUTF8String(shape.language)),
                                text.size() + 1000, QVParseMainQueueConcurrencyType);
    NSUInteger parsed = 0;
    const auto edit = [&](NSRange range, std::u16string_view with) {
        parse->performWritingBlockAndWait(
            [&] { parsed = std::max(parsed, parse->replaceCharactersInRange(range, with, nullptr).length); });
    };
    edit({0, 0}, NSString::stringWithUTF8String(text));
    parsed = 0;

    std::vector<double> edits;
    std::vector<double> passes;
    std::size_t index = 0;
    for (auto _ : state) {
        index = (index + 17'389) % places.size();
        edits.push_back(secondsOf([&] { edit({places[index], 0}, u"x"); }));
        edits.push_back(secondsOf([&] { edit({places[index], 1}, u""); }));
        if (edits.size() % 20 == 0)
            passes.push_back(
                secondsOf([&] { parse->performWritingBlockAndWait([&] { parse->updateSymbolRanges(); }); }));
    }
    if (passes.empty())
        return;
    const double whole = median(passes);
    state.counters["symbols"] = static_cast<double>(parse->symbols().size());
    state.counters["parsed"] = static_cast<double>(parsed);
    state.counters["edit_us"] = 1e6 * median(edits);
    state.counters["whole_us"] = 1e6 * whole;
    state.counters["to_whole"] = median(edits) / whole;
}

const bool registered = [] {
    for (const Shape &shape : shapes)
        for (const bool inDefinitions : {false, true})
            benchmark::RegisterBenchmark(
                (std::string("Symbols/") + shape.name + (inDefinitions ? "/definitions" : "/statements"))
                    .c_str(),
                [&shape, inDefinitions](benchmark::State &state) {
                    editSymbols(state, shape, inDefinitions);
                })
                ->Iterations(200)
                ->Unit(benchmark::kMicrosecond);
    return true;
}();

} // namespace
