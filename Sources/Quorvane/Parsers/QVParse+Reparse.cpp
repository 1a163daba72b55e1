// The one entry to the parser: applies an edit to the text and brings the tree up to date.

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"
#include "Quorvane/Parsers/QVParsePass.h"
#include "Quorvane/Parsers/QVParseSymbol.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/Parsers/QVReparse.h"

namespace quorvane {

namespace {

/// Says that the parse is at work, also when something throws on the way; then the tree may be half old, half
/// new, and goes.
class Parsing {
public:
    Parsing(QVParse &parse, std::atomic<bool> &flag)
        : _parse(parse), _flag(flag), _exceptions(std::uncaught_exceptions()) {
        _flag.store(true, std::memory_order_relaxed);
    }
    ~Parsing() {
        if (_textIsEdited && std::uncaught_exceptions() > _exceptions)
            _parse.clearAllMatches();
        _flag.store(false, std::memory_order_relaxed);
    }
    Parsing(const Parsing &) = delete;
    Parsing &operator=(const Parsing &) = delete;

    void noteEdit() { _textIsEdited = true; }

private:
    QVParse &_parse;
    std::atomic<bool> &_flag;
    const int _exceptions;
    bool _textIsEdited = false;
};

} // namespace

NSRange QVParse::replaceCharactersInRange(NSRange range, std::u16string_view withString,
                                          QVBlock<void(double)>) {
    if (isCancelled())
        return NSNotFoundRange;
    Parsing parsing(*this, _parsing);
    const NSUInteger editLength = withString.size();
    if (!_rootMatch->submatches().isEmpty() && !_pass->hasMatchWithoutPlace)
        finishDeferredWork();
    _text->replaceCharactersInRange(range, withString);
    parsing.noteEdit();
    // What was remembered belonged to the text before.
    ++_pass->generation;
    // A parse that something threw out of left these as they were.
    _pass->emptyRegions.clear();
    _pass->parseStackMatches.clear();
    _pass->subsyntaxAncestors.clear();
    _pass->isInTemplateScope = false;
    if (_text->length() == 0) {
        clearAllMatches();
        return {0, 0};
    }
    if (_rootMatch->submatches().isEmpty() || _pass->hasMatchWithoutPlace)
        return parseWholeText();
    QVReparse reparse(*this, range, editLength);
    const QVReparse::Outcome outcome = reparse.run();
    if (outcome == QVReparse::Outcome::Cancelled)
        return NSNotFoundRange;
    if (outcome == QVReparse::Outcome::Finished && !_pass->hasMatchWithoutPlace)
        return reparse.result();
    return parseWholeText();
}

NSRange QVParse::parseWholeText() {
    clearAllMatches();
    _pass->emptyRegions.clear();
    _pass->hasMatchWithoutPlace = false;
    const NSUInteger length = _text->length();
    auto tree = std::make_unique<QVScopeMatchArray>();
    parseRecursivelyStartingWithinMatch(_rootMatch.get(), *tree, {0, length}, 0);
    _rootMatch->setSubmatches(std::move(tree));
    if (isCancelled())
        return NSNotFoundRange;
    deferWork();
    updateBracketDepths();
    return {0, length};
}

NSUInteger QVParse::positionForPositionInOriginalRange(NSUInteger position, NSRange editedRange,
                                                       NSInteger changeInLength) {
    const bool moved = position > NSMaxRange(editedRange) || position > editedRange.location;
    return moved ? position - static_cast<NSUInteger>(changeInLength) : position;
}

// Where to start

QVReparse::QVReparse(QVParse &parse, NSRange editRange, NSUInteger editLength)
    : _parse(parse), _editRange(editRange), _editLength(editLength),
      _delta(static_cast<NSInteger>(editLength) - static_cast<NSInteger>(editRange.length)),
      _string(parse.string()) {}

QVReparse::Outcome QVReparse::run() {
    if (!chooseStart())
        return Outcome::Broken;
    Step step = Step::Continue;
    while (step == Step::Continue)
        step = runPass();
    if (step == Step::Cancel)
        return Outcome::Cancelled;
    if (step == Step::Break)
        return Outcome::Broken;
    finish();
    return Outcome::Finished;
}

/// From the line before the edited ones to the line behind them: a pattern may look as far as its line's end,
/// and a line ending that came or went changes the line beside it.
bool QVReparse::chooseStart() {
    const NSRange lines = qv_lineRangeForRange(_string, {_editRange.location, _editLength});
    _firstLocation =
        lines.location == 0 ? 0 : qv_lineRangeForRange(_string, {lines.location - 1, 1}).location;
    const NSUInteger plannedEnd = lineEndAt(NSMaxRange(lines));
    QVAssert(plannedEnd <= _string.size(), u"Reparse range is outside of the bounds of the new string");
    if (plannedEnd > _string.size())
        return false;
    _firstMatch = _parse.matchPrecedingLocation(_firstLocation, false, nullptr)->asScopeMatch();
    QVScopeMatch *const root = _parse.rootMatch();
    if (_firstMatch == root) {
        _parent = root;
        _insertionIndex = 0;
    } else {
        _parent = _firstMatch->parentMatch();
        const NSUInteger index = _parent->indexOfSubmatch(_firstMatch);
        QVAssert(index != NSNotFound, u"Invalid insertion index");
        if (index == NSNotFound)
            return false;
        _replacesFirstMatch = _firstMatch->range().location == 0 && _firstLocation == 0;
        _insertionIndex = _replacesFirstMatch ? index : index + 1;
    }
    _levels.push_back({_parent, _insertionIndex, _insertionIndex});
    noteTouchedSymbols();
    _start = _firstLocation;
    _plannedLength = plannedEnd - _firstLocation;
    return true;
}

} // namespace quorvane
