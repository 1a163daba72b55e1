#include "Quorvane/Selectors/QVSelectorCombinator.h"

#include "Platform/Foundation/NSLog.h"

#include <unordered_set>

namespace quorvane {

/// One step's pass over its sources. A node that was reached once is not reached again: captures are looked
/// up by the first way to a node, and so the work of a step stays within the size of the tree even where
/// sources lie within one another, or where each of a long row of siblings is a source.
class QVSelectorCombinator::Evaluation {
public:
    Evaluation(const QVSelectorCombinator &step, Selectables &matches, Selectables &matchedThrough)
        : _step(step), _matches(matches), _matchedThrough(matchedThrough),
          _reached(matches.begin(), matches.end()) {}

    void add(QVSelectable *match, QVSelectable *through) {
        if (!_reached.insert(match).second)
            return;
        _matches.push_back(match);
        _matchedThrough.push_back(through);
    }

    void test(QVSelectable *node, QVSelectable *through) {
        if (_step.matchesNode(node))
            add(node, through);
    }

    void testDescendants(QVSelectable *node, QVSelectable *through) {
        if (!node->offersSelectableChildren() || !_walked.insert(node).second)
            return;
        node->enumerateSelectableChildrenUsingBlock([&](QVSelectable *child, bool &) {
            test(child, through);
            testDescendants(child, through);
        });
    }

    void testChildren(QVSelectable *source) {
        if (source->offersSelectableChildren())
            source->enumerateSelectableChildrenUsingBlock(
                [&](QVSelectable *child, bool &) { test(child, source); });
    }

    void testFollowing(QVSelectable *source) {
        // Some nodes name themselves as their next one; where walks meet, the rest was walked before.
        QVSelectable *node = source;
        for (QVSelectable *next; (next = node->nextSelectable()) && next != node; node = next) {
            if (!_walked.insert(next).second)
                return;
            test(next, source);
        }
    }

    void testForChild(QVSelectable *source) {
        if (!source->offersSelectableChildren())
            return;
        for (const auto &selector : _step.simpleSelectors()) {
            QVSelectable *found = nullptr;
            source->enumerateSelectableChildrenUsingBlock([&](QVSelectable *child, bool &stop) {
                const QVSimpleSelector *own = child->selector();
                if (own && selector && selector->matchesSelector(own)) {
                    found = child;
                    stop = true;
                }
            });
            if (found)
                return add(source, found);
        }
    }

    void pass(QVSelectable *source) {
        switch (_step.type()) {
        case QVSelectorCombinatorTypeSimple:
            return testDescendants(source, source);
        case QVSelectorCombinatorTypeChild:
            return testChildren(source);
        case QVSelectorCombinatorTypeIndirectAdjacent:
            return testFollowing(source);
        case QVSelectorCombinatorTypeDirectAdjacent:
            // That the source be a container is meant, though its children are not asked.
            if (source->offersSelectableChildren())
                if (QVSelectable *next = source->nextSelectable())
                    test(next, source);
            return;
        case QVSelectorCombinatorTypeNot:
            if (!_step.matchesNode(source))
                add(source, source);
            return;
        case QVSelectorCombinatorTypeHasChild:
            return testForChild(source);
        case QVSelectorCombinatorTypeCapture:
            return add(source, source);
        default:
            NSLog(u"unhandled selector combinator case.");
        }
    }

private:
    const QVSelectorCombinator &_step;
    Selectables &_matches;
    Selectables &_matchedThrough;
    std::unordered_set<const QVSelectable *> _reached;
    /// Containers whose children, or siblings that with all behind them, were tested.
    std::unordered_set<const QVSelectable *> _walked;
};

bool QVSelectorCombinator::matchesNode(const QVSelectable *node) const {
    const QVSimpleSelector *own = node->selector();
    return own != nullptr &&
           std::any_of(_simpleSelectors.begin(), _simpleSelectors.end(),
                       [own](const auto &selector) { return selector && selector->matchesSelector(own); });
}

QVSelectorCombinator::Selectables QVSelectorCombinator::updateMatches(Selectables matches,
                                                                      QVSelectorCombinator *withCombinator) {
    const Selectables *sources = &matches;
    for (QVSelectorCombinator *step = withCombinator; step; step = step->_next.get()) {
        // What was set before may be uneven; the two lists are read by one index.
        step->_matchedThrough.resize(step->_matches.size(), nullptr);
        Evaluation evaluation(*step, step->_matches, step->_matchedThrough);
        for (QVSelectable *source : *sources)
            if (source)
                evaluation.pass(source);
        sources = &step->_matches;
    }
    return *sources;
}

QVSelectorCombinator::Selectables QVSelectorCombinator::evaluateWithArray(const Selectables &array,
                                                                          bool recursively) {
    clearMatches();
    Selectables found;
    Selectables foundThrough;
    Evaluation evaluation(*this, found, foundThrough);
    for (QVSelectable *node : array) {
        if (!node)
            continue;
        evaluation.test(node, nullptr);
        if (recursively)
            evaluation.testDescendants(node, nullptr);
    }
    return updateMatches(std::move(found), _next.get());
}

QVSelectable *QVSelectorCombinator::nodeThroughWhichMatched(const QVSelectable *match) const {
    const auto found = std::find_if(_matches.begin(), _matches.end(), [match](const QVSelectable *node) {
        return node->isEqualToSelectable(match);
    });
    const auto index = static_cast<std::size_t>(found - _matches.begin());
    return index < _matchedThrough.size() && index < _matches.size() ? _matchedThrough[index] : nullptr;
}

} // namespace quorvane
