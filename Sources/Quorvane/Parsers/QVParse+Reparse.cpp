// The one entry to the parser: applies an edit to the text and brings the tree up to date.

#include "Quorvane/Parsers/QVParsePass.h"
#include "Quorvane/Parsers/QVParseSymbol.h"
#include "Quorvane/Parsers/QVParseText.h"

namespace quorvane {

NSRange QVParse::replaceCharactersInRange(NSRange range, std::u16string_view withString,
                                          QVBlock<void(double)>) {
    if (isCancelled())
        return NSNotFoundRange;
    // Also cleared when something throws on the way.
    struct Parsing {
        std::atomic<bool> &flag;
        explicit Parsing(std::atomic<bool> &parsing) : flag(parsing) {
            flag.store(true, std::memory_order_relaxed);
        }
        ~Parsing() { flag.store(false, std::memory_order_relaxed); }
    } const parsing(_parsing);
    _text->replaceCharactersInRange(range, withString);
    // What was remembered belonged to the text before.
    ++_pass->generation;
    _pass->emptyRegions.clear();
    // A parse that something threw out of left these as they were.
    _pass->parseStackMatches.clear();
    _pass->subsyntaxAncestors.clear();
    _pass->isInTemplateScope = false;
    const NSUInteger length = _text->length();
    if (length == 0) {
        clearAllMatches();
        return {0, 0};
    }
    // Each edit is parsed afresh as a whole.
    clearAllMatches();
    auto tree = std::make_unique<QVScopeMatchArray>();
    parseRecursivelyStartingWithinMatch(_rootMatch.get(), *tree, {0, length}, 0);
    _rootMatch->setSubmatches(std::move(tree));
    if (isCancelled())
        return NSNotFoundRange;
    symbolicateMatchesInRange({0, length}, _rootMatch.get());
    updateBracketDepths();
    return {0, length};
}

} // namespace quorvane
