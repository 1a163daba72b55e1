#pragma once

#include "Platform/Foundation/NSString.h"

#include <array>
#include <vector>

namespace quorvane {

/// Whether the unit belongs to a word as patterns see it: an ASCII letter, digit or underscore.
constexpr bool QVIsWordUnit(char16_t unit) {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
           (unit >= u'0' && unit <= u'9') || unit == u'_';
}

/// The words of a pattern that matches whole words of a list and nothing else: grammars hold hundreds of
/// keywords, and a word of the text is looked up faster than searched for. Immutable.
class QVWordList {
public:
    /// Null unless each word is made of word units; then a match can only be a whole run of them.
    static std::shared_ptr<const QVWordList> wordListWithWords(const std::vector<NSString> &words,
                                                               bool caseInsensitive);

    /// Whether a whole run of word units is one of the words.
    bool containsRun(std::u16string_view run) const;

    bool isCaseInsensitive() const { return _caseInsensitive; }
    /// Sorted, each once; in lower case where case makes no difference.
    const std::vector<NSString> &words() const { return _words; }

private:
    QVWordList() = default;

    std::vector<NSString> _words;
    bool _caseInsensitive = false;
    /// Where the words that begin with each ASCII unit start.
    std::array<std::uint32_t, 129> _starts{};
};

} // namespace quorvane
