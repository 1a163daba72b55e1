#include "Printing.h"

#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Symbols/QVLexicalClass.h"

#include <algorithm>
#include <vector>

using namespace quorvane;

namespace highlight {

namespace {

enum Paint : char { None, Keyword, String, Comment, Name, Identifier };

Paint paintForLexicalClass(const NSString &lexicalClass) {
    if (!lexicalClass)
        return None;
    if (lexicalClass == QVLexicalClassKeyword.string())
        return Keyword;
    if (lexicalClass == QVLexicalClassString.string())
        return String;
    if (lexicalClass == QVLexicalClassComment.string())
        return Comment;
    return lexicalClass == QVLexicalClassName.string() ? Name : Identifier;
}

const char *colourOfPaint(Paint paint) {
    switch (paint) {
    case Keyword:
        return "\x1b[38;5;170m";
    case String:
        return "\x1b[38;5;114m";
    case Comment:
        return "\x1b[38;5;245m";
    case Name:
        return "\x1b[38;5;75m";
    case Identifier:
    case None:
        break;
    }
    return "";
}

/// Paints from the outside in, so that what stands inside a region goes over it.
class Painter {
public:
    explicit Painter(NSUInteger length) : _paints(length, None) {}

    void paint(const QVScopeMatch &match) {
        const QVScope &scope = *match.scope();
        if (const Paint paint = paintForLexicalClass(scope.lexicalClass()))
            fill(match.fullRange(), paint);
        paintCaptures(match.captureMatches());
        paintCaptures(match.endCaptureMatches());
        // Embedded text starts from plain text: the colour of what holds it does not leak in.
        if (scope.definesSubsyntax()) {
            const NSUInteger start = NSMaxRange(match.range());
            const NSRange end = match.endRange();
            const NSUInteger stop = end.location == NSNotFound ? _paints.size() : end.location;
            if (stop > start)
                fill({start, stop - start}, None);
        }
        for (const QVScopeMatch *const submatch : match.submatches())
            paint(*submatch);
    }

    const std::vector<Paint> &paints() const { return _paints; }

private:
    void fill(NSRange range, Paint paint) {
        if (range.location == NSNotFound || range.location >= _paints.size())
            return;
        const NSUInteger end = std::min<NSUInteger>(NSMaxRange(range), _paints.size());
        std::fill(_paints.begin() + static_cast<std::ptrdiff_t>(range.location),
                  _paints.begin() + static_cast<std::ptrdiff_t>(end), paint);
    }
    void paintCaptures(const QVCaptureMatchArray *captures) {
        if (captures == nullptr)
            return;
        for (const auto &capture : *captures)
            if (const Paint paint = paintForLexicalClass(capture->lexicalClass()))
                fill(capture->range(), paint);
    }

    std::vector<Paint> _paints;
};

} // namespace

std::string ansiText(const QVParse &parse) {
    const std::u16string_view text = parse.string();
    Painter painter(text.size());
    painter.paint(*parse.rootMatch());
    const std::vector<Paint> &paints = painter.paints();
    std::string output;
    for (std::size_t start = 0; start < text.size();) {
        std::size_t end = start + 1;
        while (end < text.size() && paints[end] == paints[start])
            ++end;
        const char *const colour = colourOfPaint(paints[start]);
        const bool coloured = colour[0] != '\0';
        output += colour;
        output += NSString(text.substr(start, end - start)).UTF8String();
        if (coloured)
            output += "\x1b[0m";
        start = end;
    }
    return output;
}

} // namespace highlight
