#pragma once

#include "Tests/Support/LineRunModel.h"

#include <sstream>

/// The law of the line array: after any edits it answers what its obvious twin answers, wrong links and
/// leftovers included; and as long as no edit came between or before the units of a terminator, its lines are
/// those of a fresh look at the text.
namespace quorvane::test {

/// Makes edits out of choices (random numbers or a fuzzer's bytes): `choose(n)` answers a number below n.
template <typename Choose> class LineRunLaw {
public:
    LineRunLaw(std::uint64_t options, std::size_t runsPerChunk, Choose choice)
        : _array(options, runsPerChunk), _choose(std::move(choice)) {}

    /// Edits are kept away from the places where the rules leave lines that a fresh look would not find.
    void avoidTerminators() { _avoidsTerminators = true; }

    /// One edit. Answers what is wrong after it; empty if nothing is.
    std::string step() {
        _did.str({});
        const NSRange range = chooseRange();
        const std::u16string string = chooseString();
        // Whatever comes behind a CR or before an LF is avoided as a whole.
        if (_avoidsTerminators && !isPlain(range, string))
            return {};
        _did << "replace " << range.location << "," << range.length << " by " << shown(string) << ":";
        const std::size_t gap = _choose(string.size() + 1);
        const std::u16string_view view = string;
        if (!_model.replace(range, string)) {
            // The runs leave a gap where the edit was to start, which is asserted and changes nothing.
            ++_refused;
            return {};
        }
        _array.replaceCharactersInRange(range, QVTextReader(view.substr(0, gap), view.substr(gap)));
        _text.replace(range.location, range.length, string);
        std::string difference = compare();
        if (difference.empty() && _avoidsTerminators)
            difference = compareWithAFreshLook();
        if (difference.empty())
            difference = compareLookups();
        return difference.empty() ? difference : _did.str() + difference;
    }

    /// Edits that were left out, and lines that named another than the one before them.
    int refused() const { return _refused; }
    int wrongLinks() const { return _wrongLinks; }

private:
    static std::string shown(std::u16string_view string) {
        std::string result = "\"";
        for (const char16_t unit : string)
            result += unit == u'\n' ? "\\n" : unit == u'\r' ? "\\r" : std::string(1, static_cast<char>(unit));
        return result + "\"";
    }

    NSRange chooseRange() {
        const auto place = [&]() -> NSUInteger {
            if (_choose(2) == 0)
                return _choose(_text.size() + 1);
            const auto *run = _model.runs[_choose(_model.runs.size())];
            const NSUInteger at = (_choose(2) ? run->location : run->end()) + _choose(3) - 1;
            return at <= _text.size() ? at : _text.size();
        };
        const NSUInteger a = place();
        const NSUInteger b = _choose(2) == 0 ? a : place();
        NSUInteger length = std::max(a, b) - std::min(a, b);
        if (_choose(4) != 0)
            length = std::min<NSUInteger>(length, 8);
        return {std::min(a, b), length};
    }
    std::u16string chooseString() {
        std::u16string string;
        for (NSUInteger i = _choose(6); i > 0; --i) {
            static constexpr std::u16string_view pieces[] = {u"a",  u"b",    u"cd", u"\n",
                                                             u"\r", u"\r\n", u"\n", u"\xd83d\xde00"};
            string += pieces[_choose(8)];
        }
        return string;
    }
    bool isPlain(NSRange range, std::u16string_view string) const {
        const auto at = [&](NSUInteger i) { return i < _text.size() ? _text[i] : u'x'; };
        const NSUInteger end = range.location + range.length;
        const bool startsBehindCR = range.location > 0 && at(range.location - 1) == u'\r';
        const bool endsBeforeLF = at(end) == u'\n';
        const bool startsWithLF = !string.empty() && string.front() == u'\n';
        return !startsBehindCR && !endsBeforeLF && !startsWithLF;
    }

    std::string compare() const {
        if (_array.length() != _model.length || _array.length() != _text.size())
            return " length";
        if (_array.numberOfLines() != _model.runs.size())
            return " number of lines";
        std::string difference;
        const bool storesStrings = (_array.options() & QVLineRunArrayStoresStrings) != 0;
        _array.enumerateLinesForLineNumberRange(
            {0, _array.numberOfLines()}, [&](const QVLineRun &run, NSUInteger number, bool &stop) {
                const auto &twin = *_model.runs[number];
                const std::string line = " of line " + std::to_string(number);
                if (run.range() != NSRange{twin.location, twin.length})
                    difference = " range" + line;
                else if (run.flags() != twin.flags)
                    difference = " flags" + line;
                else if (storesStrings ? run.string() != std::u16string_view(twin.string)
                                       : run.string().has_value())
                    difference = " string" + line;
                else if (storesStrings && !twin.string.empty() &&
                         std::u16string_view(run.characters(), twin.string.size()) != twin.string)
                    difference = " characters" + line;
                else if (_array.lineForLineNumber(number).range() != run.range())
                    difference = " look-up" + line;
                else if (!isLinkedLike(run, number))
                    difference = " links" + line;
                stop = !difference.empty();
            });
        return difference;
    }

    bool isLinkedLike(const QVLineRun &run, NSUInteger number) const {
        const auto *previous = _model.previousOf(number);
        const QVLineRun named = run.previousRun();
        _wrongLinks += named && named.lineNumber() + 1 != number;
        if ((previous == nullptr) != !named || (named && _model.runs[named.lineNumber()] != previous))
            return false;
        const auto *next = _model.runs[number]->next;
        const QVLineRun behind = run.nextRun();
        return (next == nullptr) == !behind && (!behind || _model.runs[behind.lineNumber()] == next);
    }

    /// Positions, by the search of the twin where it finds anything.
    std::string compareLookups() {
        for (int i = 0; i < 6; ++i) {
            const NSUInteger index = i == 0 ? _text.size() : _choose(_text.size() + 1);
            const NSUInteger expected = _model.find(index);
            if (expected == _model.runs.size())
                continue;
            NSUInteger number = 0;
            const QVLineRun run = _array.lineForCharacterIndex(index, &number);
            if (!run || number != expected || run.lineNumber() != expected)
                return " line of " + std::to_string(index);
        }
        return {};
    }

    std::string compareWithAFreshLook() const {
        NSUInteger start = 0;
        NSUInteger number = 0;
        for (NSUInteger i = 0; i <= _text.size(); ++i) {
            const bool ends = i == _text.size() || _text[i] == u'\n' ||
                              (_text[i] == u'\r' && (i + 1 == _text.size() || _text[i + 1] != u'\n'));
            if (!ends)
                continue;
            const NSUInteger end = std::min<NSUInteger>(i + 1, _text.size());
            if (number >= _array.numberOfLines() ||
                _array.lineForLineNumber(number).range() != NSRange{start, end - start})
                return " fresh line " + std::to_string(number);
            start = end;
            ++number;
        }
        return number == _array.numberOfLines() ? "" : " number of fresh lines";
    }

    QVLineRunArray _array;
    LineRunModel _model;
    std::u16string _text;
    Choose _choose;
    bool _avoidsTerminators = false;
    int _refused = 0;
    mutable int _wrongLinks = 0;
    std::ostringstream _did;
};

} // namespace quorvane::test
