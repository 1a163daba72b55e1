#include "Quorvane/Selectors/QVSelectorCombinator.h"
#include "Tests/Quorvane/Selectors/FakeSelectable.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

#include <random>

// The evaluation reaches each node once and remembers what it walked. Here it is held against a slow and
// obvious twin that takes every way to every node, on random trees.

using namespace quorvane;
using namespace quorvane::test;

namespace {

using Nodes = std::vector<QVSelectable *>;

bool passes(const QVSelectorCombinator &step, const QVSelectable *node) {
    for (const auto &selector : step.simpleSelectors())
        if (node->selector() && selector->matchesSelector(node->selector()))
            return true;
    return false;
}

Nodes childrenOf(const QVSelectable *node) {
    Nodes children;
    if (node->offersSelectableChildren())
        node->enumerateSelectableChildrenUsingBlock(
            [&](QVSelectable *child, bool &) { children.push_back(child); });
    return children;
}

void appendDescendants(const QVSelectable *node, Nodes &descendants) {
    for (QVSelectable *child : childrenOf(node)) {
        descendants.push_back(child);
        appendDescendants(child, descendants);
    }
}

/// Where the ways out of one source end, each with the node that is remembered for it.
std::vector<std::pair<QVSelectable *, QVSelectable *>> waysFrom(const QVSelectorCombinator &step,
                                                                QVSelectable *source) {
    Nodes candidates;
    switch (step.type()) {
    case QVSelectorCombinatorTypeSimple:
        appendDescendants(source, candidates);
        break;
    case QVSelectorCombinatorTypeChild:
        candidates = childrenOf(source);
        break;
    case QVSelectorCombinatorTypeIndirectAdjacent:
        for (QVSelectable *next = source->nextSelectable(); next; next = next->nextSelectable())
            candidates.push_back(next);
        break;
    case QVSelectorCombinatorTypeDirectAdjacent:
        if (source->offersSelectableChildren() && source->nextSelectable())
            candidates.push_back(source->nextSelectable());
        break;
    case QVSelectorCombinatorTypeNot:
        if (!passes(step, source))
            return {{source, source}};
        break;
    case QVSelectorCombinatorTypeHasChild:
        for (const auto &selector : step.simpleSelectors())
            for (QVSelectable *child : childrenOf(source))
                if (child->selector() && selector->matchesSelector(child->selector()))
                    return {{source, child}};
        break;
    case QVSelectorCombinatorTypeCapture:
        return {{source, source}};
    default:
        break;
    }
    std::vector<std::pair<QVSelectable *, QVSelectable *>> ways;
    for (QVSelectable *candidate : candidates)
        if (passes(step, candidate))
            ways.emplace_back(candidate, source);
    return ways;
}

/// Every way through a whole chain: for each step its matches and what they were reached through, with all
/// repetitions.
struct Twin {
    std::vector<Nodes> matches;
    std::vector<Nodes> through;

    Twin(const QVSelectorCombinator &head, QVSelectable *root) {
        Nodes sources;
        Nodes all{root};
        appendDescendants(root, all);
        for (QVSelectable *node : all)
            if (passes(head, node))
                sources.push_back(node);
        matches.push_back(sources);
        through.emplace_back();
        for (const QVSelectorCombinator *step = head.next().get(); step; step = step->next().get()) {
            matches.emplace_back();
            through.emplace_back();
            for (QVSelectable *source : sources)
                for (const auto &[match, way] : waysFrom(*step, source)) {
                    matches.back().push_back(match);
                    through.back().push_back(way);
                }
            sources = matches.back();
        }
    }
};

/// Nodes with what belongs to them, the first appearance of each.
std::string firstAppearances(const Nodes &nodes, const Nodes &through) {
    std::set<QVSelectable *> seen;
    std::string text;
    for (std::size_t index = 0; index < nodes.size(); ++index)
        if (seen.insert(nodes[index]).second)
            text += namesOf({nodes[index]}) +
                    (index < through.size() ? "<" + namesOf({through[index]}) : std::string()) + " ";
    return text;
}

class Generator {
public:
    explicit Generator(unsigned seed) : _random(seed) {}

    unsigned below(unsigned bound) { return _random() % bound; }

    std::string tree() {
        unsigned budget = 3 + below(12);
        std::string text = "a.r(";
        siblings(text, budget, 0);
        return text + ")";
    }

    std::u16string selector() {
        static constexpr const char16_t *combinators[] = {u" ",     u">",           u"~",         u"+",
                                                          u":not(", u":has-child(", u":capture(", u" "};
        std::u16string text = classes();
        for (unsigned steps = below(4); steps > 0; --steps)
            text += combinators[below(std::size(combinators))] + classes() + (below(3) == 0 ? u",c" : u"");
        return text;
    }

private:
    void siblings(std::string &text, unsigned &budget, unsigned depth) {
        for (unsigned count = 1 + below(4); count > 0 && budget > 0; --count, --budget) {
            static constexpr const char *names[] = {"a", "b", "a.b", "c", "-"};
            text += std::string(" ") + names[below(std::size(names))] + "#" + std::to_string(budget);
            if (depth < 5 && below(2) == 0) {
                text += "(";
                if (--budget > 0)
                    siblings(text, budget, depth + 1);
                text += ")";
                if (budget == 0)
                    return;
            }
        }
    }

    std::u16string classes() {
        static constexpr const char16_t *texts[] = {u"a", u"b", u"c", u"a.b", u"*"};
        return texts[below(std::size(texts))];
    }

    std::mt19937 _random;
};

} // namespace

TEST(QVSelectorCombinatorLaw, EvaluationsEqualTheFirstOfAllWays) {
    std::size_t longest = 0;
    for (unsigned seed = 0; seed < 4000; ++seed) {
        Generator generator(seed);
        const std::string drawing = generator.tree();
        const std::u16string text = generator.selector();
        SCOPED_TRACE("seed " + std::to_string(seed) + ": " + NSString(text).UTF8String() + " on " + drawing);

        FakeTree tree(drawing);
        // One chain, so that a comma stands for an alternative everywhere.
        std::u16string consumed = text;
        const auto head = QVSelectorCombinator::selectorCombinatorsFromString(consumed);
        const Nodes found = head->evaluateWithArray({tree.root()}, true);
        const Twin twin(*head, tree.root());

        ASSERT_EQ(firstAppearances(found, {}), firstAppearances(twin.matches.back(), {}));
        ASSERT_EQ(std::set<QVSelectable *>(found.begin(), found.end()).size(), found.size());
        std::size_t index = 1;
        for (const QVSelectorCombinator *step = head->next().get(); step;
             step = step->next().get(), ++index) {
            ASSERT_EQ(step->matches().size(), step->matchedThrough().size());
            ASSERT_EQ(firstAppearances(step->matches(), step->matchedThrough()),
                      firstAppearances(twin.matches[index], twin.through[index]))
                << "step " << index;
        }
        longest = std::max(longest, found.size());
    }
    EXPECT_GE(longest, 8u);
}
