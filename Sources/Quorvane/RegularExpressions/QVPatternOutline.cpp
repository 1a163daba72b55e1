#include "Quorvane/RegularExpressions/QVPatternOutline.h"

#include <algorithm>

namespace quorvane {

namespace {

/// One alternative, as far as it was read.
struct Alternative {
    std::size_t tailStart;
    /// Those read so far, and those behind the start of its tail.
    std::size_t elements = 0;
    std::size_t tailElements = 0;
    /// The number of the first that takes text whatever the text is, as far as that is known; 0 for none.
    std::size_t firstText = 0;
    bool beginsAtLineStart = false;
    bool mayLookAheadFirst = false;
    bool isEmpty = true;
    bool fails = false;
};

/// Goes over the elements of a pattern without looking into groups.
class OutlineReader {
public:
    OutlineReader(std::u16string_view pattern, bool extended) : _pattern(pattern), _extended(extended) {}

    QVPatternOutline read();

private:
    bool at(std::u16string_view spelling) const {
        return _pattern.substr(_index, spelling.size()) == spelling;
    }
    bool isAssertion() const;
    bool setsOptions() const;
    void noteKindOfGroup();
    void readElement();
    void readEscape();
    void readGroup();
    void readVerb();
    bool skipGroup();
    bool skipClass();
    bool skipComment();
    void noteReference();
    void addAssertion() {
        ++alternative().elements;
        ++alternative().tailElements;
    }
    void addText() {
        addAssertion();
        alternative().isEmpty = false;
        if (alternative().firstText == 0)
            alternative().firstText = alternative().elements;
    }
    void readCount();
    Alternative &alternative() { return _alternatives.back(); }

    const std::u16string_view _pattern;
    const bool _extended;
    std::size_t _index = 0;
    std::vector<Alternative> _alternatives;
    std::vector<std::u16string_view> _tails;
    bool _isKnown = true;
    /// Whether what stands behind "\K" is a pattern by itself.
    bool _canCut = true;
};

/// Behind the class, or false where it does not end.
bool OutlineReader::skipClass() {
    ++_index;
    if (_index < _pattern.size() && _pattern[_index] == u'^')
        ++_index;
    // A bracket that comes first is a member.
    for (bool isFirst = true; _index < _pattern.size(); isFirst = false) {
        const char16_t unit = _pattern[_index];
        if (unit == u'\\') {
            if (_index + 1 < _pattern.size() &&
                (_pattern[_index + 1] == u'Q' || _pattern[_index + 1] == u'E'))
                return false;
            _index += 2;
        } else if (unit == u'[' && _index + 1 < _pattern.size() &&
                   (_pattern[_index + 1] == u':' || _pattern[_index + 1] == u'.' ||
                    _pattern[_index + 1] == u'=')) {
            // Also where it is no named set, in which case the class is read as longer or as endless; so only
            // a well-formed one is gone over.
            const char16_t closing[] = {_pattern[_index + 1], u']'};
            const std::size_t end = _pattern.find(std::u16string_view(closing, 2), _index + 2);
            const bool isSet =
                end != _pattern.npos &&
                std::all_of(_pattern.begin() + static_cast<std::ptrdiff_t>(_index) + 2,
                            _pattern.begin() + static_cast<std::ptrdiff_t>(end), [](char16_t letter) {
                                return letter == u'^' || (letter >= u'a' && letter <= u'z');
                            });
            _index = isSet ? end + 2 : _index + 1;
        } else if (unit == u']' && !isFirst) {
            ++_index;
            return true;
        } else {
            ++_index;
        }
    }
    return false;
}

/// Behind the comment that an extended pattern has here, or false where another line ending than "\n" might
/// end it.
bool OutlineReader::skipComment() {
    while (++_index < _pattern.size() && _pattern[_index] != u'\n')
        if (std::u16string_view(u"\r\v\f\x85\x2028\x2029").find(_pattern[_index]) !=
            std::u16string_view::npos)
            return false;
    return true;
}

/// References, whose groups may stand in another part than they do.
void OutlineReader::noteReference() {
    const char16_t letter = _index + 1 < _pattern.size() ? _pattern[_index + 1] : u'\0';
    _canCut &= letter != u'g' && letter != u'k' && !(letter >= u'1' && letter <= u'9');
}

/// Behind the group that begins here, or false where that can't be told.
bool OutlineReader::skipGroup() {
    std::size_t depth = 0;
    while (_index < _pattern.size()) {
        switch (_pattern[_index]) {
        case u'\\':
            if (at(u"\\Q") || at(u"\\E") || at(u"\\K"))
                return false;
            noteReference();
            _index += 2;
            continue;
        case u'[':
            if (!skipClass())
                return false;
            continue;
        case u'(':
            if (at(u"(?#") || at(u"(*"))
                return false;
            noteKindOfGroup();
            ++depth;
            break;
        case u')':
            if (--depth == 0) {
                ++_index;
                return true;
            }
            break;
        case u'#':
            if (_extended && !skipComment())
                return false;
            break;
        default:
            break;
        }
        ++_index;
    }
    return false;
}

bool OutlineReader::isAssertion() const { return at(u"(?=") || at(u"(?!") || at(u"(?<=") || at(u"(?<!"); }

bool OutlineReader::setsOptions() const {
    const char16_t letter = at(u"(?") && _index + 2 < _pattern.size() ? _pattern[_index + 2] : u'\0';
    return (letter >= u'a' && letter <= u'z') || letter == u'J' || letter == u'U' || letter == u'^' ||
           letter == u'-';
}

/// Groups that set options, have names, or stand for others, can't be cut off from the rest.
void OutlineReader::noteKindOfGroup() { _canCut &= isAssertion() || at(u"(?:") || at(u"(?>") || !at(u"(?"); }

void OutlineReader::readVerb() {
    const std::size_t end = _pattern.find(u')', _index);
    const std::u16string_view verb = _pattern.substr(_index, end == _pattern.npos ? end : end + 1 - _index);
    if (verb == u"(*FAIL)" || verb == u"(*F)")
        alternative().fails = true;
    else if (verb != u"(*SKIP)")
        _isKnown = false;
    addAssertion();
    _index += verb.size();
}

void OutlineReader::readGroup() {
    if (at(u"(*")) {
        readVerb();
        return;
    }
    const std::size_t start = _index;
    const std::size_t firstText = alternative().firstText;
    const bool looksElsewhere = isAssertion() && !at(u"(?=");
    const bool setsOptions = this->setsOptions();
    if (isAssertion())
        addAssertion();
    else
        addText();
    _isKnown &= skipGroup();
    // What a group takes is not read, and options may turn what looks like text into comments.
    alternative().firstText = firstText;
    if (firstText == 0 && !looksElsewhere)
        alternative().mayLookAheadFirst |=
            setsOptions || QVPatternOutline::mayLookAhead(_pattern.substr(start, _index - start));
}

void OutlineReader::readEscape() {
    const char16_t letter = _index + 1 < _pattern.size() ? _pattern[_index + 1] : u'\0';
    noteReference();
    _index += 2;
    switch (letter) {
    case u'K':
        addAssertion();
        alternative().tailStart = _index;
        alternative().tailElements = 0;
        break;
    case u'b':
    case u'B':
    case u'A':
    case u'z':
    case u'Z':
        addAssertion();
        break;
    case u'\0':
    case u'Q':
    case u'E':
    case u'G':
        _isKnown = false;
        break;
    default:
        addText();
    }
}

/// How often what came before may come, which may be not at all.
void OutlineReader::readCount() {
    _isKnown &= alternative().tailElements != 0;
    if (alternative().elements == 1)
        alternative().beginsAtLineStart = false;
    if (alternative().elements == alternative().firstText)
        alternative().firstText = 0;
}

void OutlineReader::readElement() {
    switch (_pattern[_index]) {
    case u'\\':
        readEscape();
        return;
    case u'(':
        readGroup();
        return;
    case u'[':
        addText();
        _isKnown &= skipClass();
        return;
    case u'^':
        alternative().beginsAtLineStart |= alternative().elements == 0;
        addAssertion();
        break;
    case u'$':
        addAssertion();
        break;
    case u'|':
        if (!alternative().fails)
            _tails.push_back(_pattern.substr(alternative().tailStart, _index - alternative().tailStart));
        _alternatives.push_back({_index + 1});
        break;
    case u'?':
    case u'*':
    case u'+':
        readCount();
        break;
    case u'{':
        readCount();
        // The figures of a count are no text.
        alternative().mayLookAheadFirst |= alternative().firstText == 0;
        addText();
        break;
    case u'#':
    case u' ':
    case u'\t':
    case u'\n':
        if (!_extended)
            addText();
        else if (_pattern[_index] == u'#')
            _isKnown &= skipComment();
        break;
    default:
        addText();
    }
    ++_index;
}

QVPatternOutline OutlineReader::read() {
    _alternatives.push_back({0});
    while (_isKnown && _index < _pattern.size())
        readElement();
    if (!_isKnown)
        return {};
    if (!alternative().fails)
        _tails.push_back(_pattern.substr(alternative().tailStart));
    QVPatternOutline outline;
    const auto all = [this](auto property) {
        return std::all_of(_alternatives.begin(), _alternatives.end(), property);
    };
    outline.matchesEmptyTextAlone = all([](const Alternative &one) { return one.isEmpty; });
    outline.startsAtLineStartsAlone = all([](const Alternative &one) { return one.beginsAtLineStart; });
    outline.mayLookAheadFirst = !all([](const Alternative &one) { return !one.mayLookAheadFirst; });
    if (_canCut)
        outline.tails = std::move(_tails);
    return outline;
}

} // namespace

QVPatternOutline QVPatternOutline::outlineOfPattern(std::u16string_view pattern, bool extended) {
    return OutlineReader(pattern, extended).read();
}

bool QVPatternOutline::mayLookAhead(std::u16string_view pattern) {
    const auto has = [&](std::u16string_view spelling) { return pattern.find(spelling) != pattern.npos; };
    return has(u"(?=") || has(u"(?*") || has(u"pla:") || has(u"lookahead:");
}

} // namespace quorvane
