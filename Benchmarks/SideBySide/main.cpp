// Times the engine and a peer on the same files, turn by turn in one run, and prints how they compare: whole
// file to attribute runs with a theme, in processor time of the calling thread, languages loaded before.
#include "Peer.h"

#include "Colouring.h"
#include "Languages.h"

#include "Platform/Foundation/NSData.h"
#include "Platform/Foundation/NSURL.h"
#include "Quorvane/Styles/QVThemeController.h"

#include <algorithm>
#include <cstdio>
#include <time.h>

using namespace quorvane;

namespace {

constexpr int turns = 9;

double threadSeconds() {
    struct timespec time {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double medianOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

std::size_t countNodes(const QVScopeMatch &match) {
    std::size_t count = 1;
    for (const QVScopeMatch *const submatch : match.submatches())
        count += countNodes(*submatch);
    return count;
}

struct Measurement {
    double seconds;
    std::size_t runs;
    std::size_t nodes;
};

/// The runs of the last turn give their memory to this one's: the peer keeps no pieces, and a host that
/// paints again needs no second set.
Measurement measure(const std::shared_ptr<QVSyntax> &syntax, const NSString &text,
                    const NSAttributes &defaults, highlight::Runs &runs) {
    Measurement result{};
    const double start = threadSeconds();
    const auto parse = QVParse::initWithSyntax(syntax, text.length(), QVParseMainQueueConcurrencyType);
    parse->performWritingBlockAndWait([&] {
        parse->replaceCharactersInRange({0, 0}, text, nullptr);
        runs = highlight::attributeRuns(*parse, {0, text.length()}, defaults, std::move(runs));
        result.runs = runs.size();
        result.seconds = threadSeconds() - start;
        result.nodes = countNodes(*parse->rootMatch());
    });
    return result;
}

void compare(Peer &peer, const std::string &path, const NSAttributes &defaults) {
    const NSData data =
        NSData::dataWithContentsOfURL(NSURL::fileURLWithPath(NSString::stringWithUTF8String(path)), nullptr);
    if (!data) {
        std::printf("| %s | can't be read |\n", path.c_str());
        return;
    }
    const NSString text = NSString::stringWithUTF8String(data.view());
    const auto syntax = highlight::syntaxForFile({}, path, text);
    const bool isKnown = peer.open(path, text);
    std::vector<double> ours;
    std::vector<double> theirs;
    std::vector<double> ratios;
    Measurement last{};
    highlight::Runs runs;
    std::size_t pieces = 0;
    // The first turn warms both up.
    for (int turn = 0; turn <= turns; ++turn) {
        last = measure(syntax, text, defaults, runs);
        const double start = threadSeconds();
        pieces = isKnown ? peer.highlight() : 0;
        const double peerSeconds = threadSeconds() - start;
        if (turn == 0)
            continue;
        ours.push_back(last.seconds);
        theirs.push_back(peerSeconds);
        ratios.push_back(peerSeconds / last.seconds);
    }
    const double size = static_cast<double>(data.view().size());
    std::printf("| %s | %.0f | %.1f | %.1f | %.2f | %.0f | %zu | %zu |\n",
                path.substr(path.rfind('/') + 1).c_str(), size / 1000, size / 1e6 / medianOf(ours),
                isKnown ? size / 1e6 / medianOf(theirs) : 0.0, medianOf(ratios),
                static_cast<double>(last.nodes) / (size / 1000), last.runs, pieces);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv) {
    try {
        highlight::loadLanguages({});
        const auto theme = highlight::themeNamed("Dusk");
        QVThemeController::sharedController()->setCurrentTheme(theme);
        const auto peer = makeKSyntaxHighlightingPeer();
        std::printf("| file | KB | Quorvane MB/s | %s MB/s | ratio | nodes/KB | runs | peer's pieces |\n"
                    "| --- | ---: | ---: | ---: | ---: | ---: | ---: | ---: |\n",
                    peer->name().c_str());
        for (int index = 1; index < argc; ++index)
            compare(*peer, argv[index], highlight::defaultAttributes(*theme));
    } catch (const highlight::Failure &failure) {
        std::fprintf(stderr, "side-by-side: %s\n", failure.message.c_str());
        return 1;
    }
    return 0;
}
