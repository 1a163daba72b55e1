// Selectors: any text, bytes taken as UTF-16 so that lone surrogates come up, is parsed and evaluated on a
// small tree. Chains end, steps agree with themselves, and a copy finds what its original finds.
#include "Fuzz/FuzzTarget.h"

#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Selectors/QVSelectorCombinator.h"
#include "Tests/Quorvane/Selectors/FakeSelectable.h"

#include <cstring>
#include <set>

using namespace quorvane;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::silenceLog();
    // New classes are interned for good; the bound keeps a long search within memory.
    std::u16string text(std::min<std::size_t>(size / 2, 4096), u'\0');
    if (!text.empty())
        std::memcpy(text.data(), data, text.size() * sizeof(char16_t));
    static test::FakeTree tree("a(b.c(a d) -(a.b(c)) b() d a#2(b#2(b#3 c#2(a#3))) *)");

    std::vector<NSUInteger> specificity;
    const auto heads = QVSelectorCombinator::selectorCombinatorsFromString(text, &specificity);
    fuzz::require(specificity.size() == 4);
    NSUInteger classes = 0;
    for (const auto &head : heads) {
        const auto found = head->evaluateWithArray({tree.root()}, true);
        fuzz::require(std::set<QVSelectable *>(found.begin(), found.end()).size() == found.size());
        std::size_t steps = 0;
        for (const QVSelectorCombinator *step = head.get(); step; step = step->next().get()) {
            fuzz::require(++steps <= limits::selectorChainLength);
            fuzz::require(step->matches().size() == step->matchedThrough().size());
            fuzz::require(!step->next() || step->next()->previous() == step);
            fuzz::require((step->type() == QVSelectorCombinatorTypeCapture) == !step->captureName().isNull());
            fuzz::require(step->simpleSelectors().empty() == !step->captureName().isNull());
            for (const auto &selector : step->simpleSelectors())
                classes += selector->specificity();
        }
        fuzz::require(head->copy()->evaluateWithArray({tree.root()}, true) == found);
    }
    fuzz::require(specificity[2] == classes);
    return 0;
}
