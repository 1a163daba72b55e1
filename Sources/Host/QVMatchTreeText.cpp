#include "Host/QVMatchTreeText.h"

#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Scopes/QVCapture.h"

namespace quorvane {

namespace {

class TreePrinter {
public:
    void print(const QVScopeMatch &match, std::size_t depth) {
        line(depth, QVScopeTypeToString(match.scope()->type()).UTF8String(), match.scope()->name(),
             match.range());
        if (const NSRange end = match.endRange(); end.location != NSNotFound)
            _text += " end" + place(end);
        _text += '\n';
        printCaptures(match.captureMatches(), "@", depth + 1);
        for (const QVScopeMatch *const submatch : match.submatches())
            print(*submatch, depth + 1);
        printCaptures(match.endCaptureMatches(), "@end ", depth + 1);
    }

    std::string takeText() { return std::move(_text); }

private:
    static std::string place(NSRange range) {
        if (range.location == NSNotFound)
            return "-";
        return "[" + std::to_string(range.location) + "," + std::to_string(range.length) + "]";
    }
    void line(std::size_t depth, const std::string &kind, const NSString &name, NSRange range) {
        _text.append(2 * depth, ' ');
        _text += kind + " " + name.UTF8String() + " " + place(range);
    }
    void printCaptures(const QVCaptureMatchArray *captures, const char *mark, std::size_t depth) {
        if (captures == nullptr)
            return;
        for (const auto &capture : *captures) {
            line(depth, mark + std::to_string(capture->capture()->number()), capture->capture()->name(),
                 capture->range());
            _text += '\n';
        }
    }

    std::string _text;
};

} // namespace

std::string QVMatchTreeText(const QVParse &parse) {
    TreePrinter printer;
    printer.print(*parse.rootMatch(), 0);
    return printer.takeText();
}

} // namespace quorvane
