// Any small grammar on any short text: a tree that holds together, the same with remembered searches and
// without, from scopes and from a syntax file.
#include "Fuzz/GrammarPlan.h"
#include "Fuzz/ParseChecks.h"

#include "Quorvane/Syntaxes/QVSyntax.h"

#include <cstdlib>

using namespace quorvane;

namespace {

/// Patterns that go over the text again and again get no more than this.
constexpr std::size_t longestTextForSlowPatterns = 16;

/// A byte above the ASCII range stands for one of these, where parsers go wrong.
constexpr char16_t specialUnits[] = {u'\xD83D', u'\xDE00', u'\r',   u'\n',
                                     u'\x2028', u'\x85',   u'\xE9', u'\x301'};

std::u16string textOfBytes(fuzz::Bytes &bytes, std::size_t length) {
    std::u16string text;
    for (; length != 0 && !bytes.isAtEnd(); --length) {
        const std::uint8_t byte = bytes.next();
        text.push_back(byte < 0x80 ? char16_t(byte) : specialUnits[byte % std::size(specialUnits)]);
    }
    return text;
}

void registerSyntaxes(const std::shared_ptr<QVSyntax> &first, const std::shared_ptr<QVSyntax> &second) {
    QVSyntax::setSyntax(first, fuzz::syntaxNames[0]);
    QVSyntax::setSyntax(second, fuzz::syntaxNames[1]);
}

} // namespace

/// The first byte limits the lines and asks for the file where it is odd; the second one is the text's
/// length; the text and the grammars follow.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::silenceLog();
    fuzz::Bytes bytes(data, size);
    const std::uint8_t limit = bytes.next();
    const NSUInteger maximumLineLength = limit < 32 ? limit : 10000;
    const std::u16string text = textOfBytes(bytes, bytes.next());
    const bool allowsSlowPatterns = text.size() <= longestTextForSlowPatterns;
    const fuzz::SyntaxPlan first = fuzz::planOfBytes(bytes, 0, allowsSlowPatterns);
    const fuzz::SyntaxPlan second = fuzz::planOfBytes(bytes, 1, allowsSlowPatterns);
    // For those who look into a finding.
    if (std::getenv("QUORVANE_SHOW_GRAMMARS") != nullptr)
        std::fprintf(stderr, "%s%stext, lines up to %zu: %s\n", fuzz::fileOfPlan(first).c_str(),
                     fuzz::fileOfPlan(second).c_str(), static_cast<std::size_t>(maximumLineLength),
                     NSString(text).UTF8String().c_str());

    auto syntax = fuzz::syntaxOfScopes(first);
    registerSyntaxes(syntax, fuzz::syntaxOfScopes(second));
    const std::string tree = fuzz::requireSameTreeBothWays(syntax, text, maximumLineLength);

    // Patterns of files are compiled anew each time, which takes longer than all the rest.
    if (limit & 1) {
        syntax = fuzz::syntaxOfFile(fuzz::fileOfPlan(first));
        registerSyntaxes(syntax, fuzz::syntaxOfFile(fuzz::fileOfPlan(second)));
        fuzz::requireSameTree(fuzz::checkedTree(syntax, text, maximumLineLength, true), tree);
    }
    registerSyntaxes(nullptr, nullptr);
    return 0;
}
