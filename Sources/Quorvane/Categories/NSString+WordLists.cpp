#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

#include "Platform/Foundation/NSRegularExpression.h"

namespace quorvane {

namespace {

/// How many units the first character has: a key that cut a pair of surrogates would leave two halves that no
/// matcher takes for characters.
std::size_t lengthOfFirstCharacter(std::u16string_view word) {
    const auto isLead = [](char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; };
    const auto isTrail = [](char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; };
    return word.size() >= 2 && isLead(word[0]) && isTrail(word[1]) ? 2 : 1;
}

} // namespace

NSString qv_regularExpressionPatternForWordList(const std::vector<NSString> &wordList) {
    std::set<NSString> singles;
    std::map<NSString, std::set<NSString>> wordsByKey;
    for (const NSString &word : wordList) {
        if (word.length() == 0)
            continue;
        const std::size_t first = lengthOfFirstCharacter(word);
        if (word.length() == first)
            singles.insert(word);
        else
            wordsByKey[word.substringToIndex(first)].insert(word);
    }
    if (singles.empty() && wordsByKey.empty())
        return u"";

    std::u16string pattern = u"(?:";
    for (const NSString &single : singles) {
        pattern += NSRegularExpression::escapedPatternForString(single).view();
        pattern += u"|";
    }
    for (const auto &[key, words] : wordsByKey) {
        pattern +=
            NSString::stringWithFormat(u"(?:%@(?:", NSRegularExpression::escapedPatternForString(key)).view();
        // Longer words first: of alternatives the first that matches wins.
        std::vector<NSString> longestFirst(words.begin(), words.end());
        std::stable_sort(longestFirst.begin(), longestFirst.end(),
                         [](const NSString &a, const NSString &b) { return a.length() > b.length(); });
        for (const NSString &word : longestFirst) {
            pattern += NSRegularExpression::escapedPatternForString(word.view().substr(key.length())).view();
            pattern += u"|";
        }
        pattern.back() = u')';
        pattern += u")|";
    }
    pattern.back() = u')';
    return pattern;
}

} // namespace quorvane
