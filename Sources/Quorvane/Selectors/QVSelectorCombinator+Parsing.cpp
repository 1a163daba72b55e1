#include "Quorvane/Selectors/QVSelectorCombinator.h"

#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/QVLimits.h"
#include "Platform/Foundation/QVWordCharacters.h"
#include "Quorvane/Selectors/QVClassText.h"

namespace quorvane {

namespace {

struct Token {
    std::size_t length = 0;
    NSUInteger type = QVSelectorCombinatorTypeNone;
};

/// The combinator that a text begins with; of length 0 where it begins with none.
Token combinatorAtStart(std::u16string_view text) {
    if (text.empty())
        return {};
    switch (text.front()) {
    case u'>':
        return {1, QVSelectorCombinatorTypeChild};
    case u'~':
        return {1, QVSelectorCombinatorTypeIndirectAdjacent};
    case u'+':
        return {1, QVSelectorCombinatorTypeDirectAdjacent};
    case u':':
        for (const auto &[word, type] :
             {std::pair(std::u16string_view(u":not("), QVSelectorCombinatorTypeNot),
              std::pair(std::u16string_view(u":has-child("), QVSelectorCombinatorTypeHasChild),
              std::pair(std::u16string_view(u":capture("), QVSelectorCombinatorTypeCapture)})
            if (text.starts_with(word))
                return {word.size(), type};
        return {};
    default:
        if (QVIsWhiteSpace(text.front()))
            return {1, QVSelectorCombinatorTypeSimple};
        return {};
    }
}

std::size_t lengthOfWhiteSpace(std::u16string_view text) {
    const auto end = std::find_if_not(text.begin(), text.end(), QVIsWhiteSpace);
    return static_cast<std::size_t>(end - text.begin());
}

std::u16string_view trimmed(std::u16string_view text) {
    text.remove_prefix(lengthOfWhiteSpace(text));
    while (!text.empty() && QVIsWhiteSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

/// The text without white space around combinators and commas. A single blank elsewhere is a combinator
/// itself and stays; two or more vanish and join what stood around them.
std::u16string normalized(std::u16string_view text) {
    std::u16string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t blanks = lengthOfWhiteSpace(text);
        if (blanks >= 2) {
            text.remove_prefix(blanks);
            continue;
        }
        const std::u16string_view rest = text.substr(blanks);
        const std::size_t length = !rest.empty() && rest.front() == u',' ? 1 : combinatorAtStart(rest).length;
        if (length != 0) {
            result += rest.substr(0, length);
            text = rest.substr(length);
            text.remove_prefix(lengthOfWhiteSpace(text));
        } else {
            result.push_back(text.front());
            text.remove_prefix(1);
        }
    }
    return result;
}

/// Where the next combinator starts, or the end of the text. A closing parenthesis ends nothing: cleaning
/// drops it from the name that it follows.
std::size_t endOfStep(std::u16string_view text) {
    std::size_t end = 0;
    while (end < text.size() && combinatorAtStart(text.substr(end)).length == 0)
        ++end;
    return end;
}

} // namespace

std::vector<std::u16string> QVSelectorCombinator::splitOnCommas(std::u16string_view string) {
    std::vector<std::u16string> parts;
    std::int64_t depth = 0;
    std::size_t start = 0;
    for (std::size_t index = 0; index < string.size(); ++index) {
        const char16_t unit = string[index];
        if (unit == u'(') {
            ++depth;
        } else if (unit == u')') {
            --depth;
        } else if (unit == u',' && depth == 0) {
            parts.emplace_back(string.substr(start, index - start));
            start = index + 1;
        }
    }
    parts.emplace_back(string.substr(start));
    return parts;
}

std::vector<std::shared_ptr<QVSelectorCombinator>>
QVSelectorCombinator::selectorCombinatorsFromString(const NSString &string,
                                                    std::vector<NSUInteger> *specificity) {
    std::vector<std::shared_ptr<QVSelectorCombinator>> heads;
    std::vector<NSUInteger> sums(4, 0);
    for (std::u16string &part : splitOnCommas(normalized(trimmed(string)))) {
        auto head = selectorCombinatorsFromString(part);
        if (!head) {
            NSLog(u"Could not compile selector: %@", part);
            continue;
        }
        for (const QVSelectorCombinator *step = head.get(); step; step = step->_next.get())
            for (const auto &selector : step->_simpleSelectors)
                sums[2] += selector->specificity();
        heads.push_back(std::move(head));
    }
    if (specificity)
        *specificity = std::move(sums);
    return heads;
}

std::shared_ptr<QVSelectorCombinator>
QVSelectorCombinator::selectorCombinatorsFromString(std::u16string &string) {
    // A "[" has no meaning yet. It is kept free for one, so it must not pass for a part of a name.
    if (string.find(u'[') != std::u16string::npos)
        return nullptr;
    std::shared_ptr<QVSelectorCombinator> head;
    QVSelectorCombinator *last = nullptr;
    std::size_t steps = 0;
    for (std::u16string_view rest = string; !rest.empty();) {
        if (++steps > limits::selectorChainLength)
            return nullptr;
        auto step = std::make_shared<QVSelectorCombinator>();
        const Token combinator = combinatorAtStart(rest);
        step->_type = combinator.type;
        rest.remove_prefix(combinator.length);

        std::u16string_view text = rest.substr(0, endOfStep(rest));
        rest.remove_prefix(text.size());
        if (step->_type == QVSelectorCombinatorTypeCapture) {
            step->_captureName = QVCleanedClassText(text);
        } else {
            // The list was split at the commas outside of parentheses, so these separate alternatives.
            for (std::size_t comma; (comma = text.find(u',')) != std::u16string_view::npos;) {
                step->_simpleSelectors.push_back(
                    QVSimpleSelector::simpleSelectorWithString(NSString(text.substr(0, comma))));
                text.remove_prefix(comma + 1);
            }
            step->_simpleSelectors.push_back(QVSimpleSelector::simpleSelectorWithString(NSString(text)));
        }

        step->_previous = last;
        QVSelectorCombinator *const current = step.get();
        (last ? last->_next : head) = std::move(step);
        last = current;
    }
    string.clear();
    return head;
}

} // namespace quorvane
