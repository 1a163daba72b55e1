#include "Quorvane/RegularExpressions/QVWordList.h"

#include <algorithm>

namespace quorvane {

namespace {

constexpr char16_t lowerCase(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 0x20) : unit;
}

} // namespace

std::shared_ptr<const QVWordList> QVWordList::wordListWithWords(const std::vector<NSString> &words,
                                                                bool caseInsensitive) {
    std::shared_ptr<QVWordList> list(new QVWordList);
    list->_caseInsensitive = caseInsensitive;
    for (const NSString &word : words) {
        if (word.length() == 0 || !std::all_of(word.view().begin(), word.view().end(), QVIsWordUnit))
            return nullptr;
        std::u16string text(word.view());
        if (caseInsensitive)
            std::transform(text.begin(), text.end(), text.begin(), lowerCase);
        list->_words.emplace_back(std::move(text));
    }
    std::sort(list->_words.begin(), list->_words.end());
    list->_words.erase(std::unique(list->_words.begin(), list->_words.end()), list->_words.end());
    std::size_t next = 0;
    for (std::size_t unit = 0; unit < list->_starts.size(); ++unit) {
        while (next < list->_words.size() && list->_words[next].characterAtIndex(0) < unit)
            ++next;
        list->_starts[unit] = static_cast<std::uint32_t>(next);
    }
    return list;
}

bool QVWordList::containsRun(std::u16string_view run) const {
    const char16_t first = _caseInsensitive ? lowerCase(run.front()) : run.front();
    for (std::uint32_t index = _starts[first]; index < _starts[first + 1]; ++index) {
        const std::u16string_view word = _words[index].view();
        if (word.size() != run.size())
            continue;
        const bool equal = _caseInsensitive
                               ? std::equal(word.begin(), word.end(), run.begin(),
                                            [](char16_t a, char16_t b) { return a == lowerCase(b); })
                               : word == run;
        if (equal)
            return true;
    }
    return false;
}

} // namespace quorvane
