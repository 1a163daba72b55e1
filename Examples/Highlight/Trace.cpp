#include "Inspection.h"
#include "Languages.h"

#include "Quorvane/Parsers/QVParseScopeTrace.h"

#include <algorithm>
#include <cstdio>

using namespace quorvane;

namespace highlight {

std::string traceText(const QVParse &parse, ScopePlaces &places) {
    struct Row {
        double seconds;
        NSUInteger hits;
        NSUInteger misses;
        std::string name;
        std::string place;
    };
    std::vector<Row> rows;
    for (const auto &trace : parse.scopeTraces())
        rows.push_back({trace->totalTimeInterval(), trace->successCount(), trace->failureCount(),
                        utf8(trace->scope()->name()), places.placeOfScope(*trace->scope())});
    // Names and places besides, for a clock may not tell apart what was tried once.
    std::sort(rows.begin(), rows.end(), [](const Row &a, const Row &b) {
        return std::tie(b.seconds, a.name, a.place) < std::tie(a.seconds, b.name, b.place);
    });
    std::string text = "        ms       hits     misses  scope\n";
    for (const Row &row : rows) {
        char figures[64];
        std::snprintf(figures, sizeof figures, "%10.3f %10llu %10llu  ", row.seconds * 1000,
                      static_cast<unsigned long long>(row.hits), static_cast<unsigned long long>(row.misses));
        text += figures + row.name + (row.place.empty() ? "" : "  " + row.place) + "\n";
    }
    return text;
}

} // namespace highlight
