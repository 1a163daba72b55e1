#include "Quorvane/Selectors/QVSelectorCombinator.h"

#include "Quorvane/Matches/QVScopeMatch.h"

namespace quorvane {

QVMatch *QVSelectorCombinator::matchThroughWhichReached(const QVMatch *match) const {
    // A match was found among the step's nodes, so the node that led to it is a match of the same tree.
    return static_cast<QVMatch *>(nodeThroughWhichMatched(match));
}

std::map<NSString, NSString> QVSelectorCombinator::capturesStartingAtMatch(QVMatch *match,
                                                                           QVTextReader outOfSource) const {
    std::map<NSString, NSString> captures;
    if (match == nullptr)
        return captures;
    const auto keepText = [&](const QVSelectorCombinator &step, const QVMatch *captured) {
        const NSRange range = captured->range();
        const NSUInteger length = outOfSource.length();
        if (range.length != 0 && range.location <= length && range.length <= length - range.location)
            captures.insert_or_assign(step._captureName, NSString(outOfSource.substringWithRange(range)));
    };

    const QVSelectorCombinator *step = this;
    while (step->_next)
        step = step->_next.get();
    // Each step is undone by going back to the match through which it was passed. The evaluation kept that
    // one, so there is no need to look for it along the tree; a match that the step did not let pass goes as
    // far back as that step could have come from.
    for (QVMatch *current = match; step && step->_previous; step = step->_previous) {
        switch (step->_type) {
        case QVSelectorCombinatorTypeSimple:
        case QVSelectorCombinatorTypeChild:
            if (QVMatch *through = step->matchThroughWhichReached(current))
                current = through;
            else
                while (current->parentMatch())
                    current = current->parentMatch();
            break;
        case QVSelectorCombinatorTypeIndirectAdjacent:
        case QVSelectorCombinatorTypeDirectAdjacent:
            if (QVMatch *through = step->matchThroughWhichReached(current))
                current = through;
            else
                while (current->previousSibling())
                    current = current->previousSibling();
            break;
        case QVSelectorCombinatorTypeCapture:
            if (step->_previous->_type == QVSelectorCombinatorTypeHasChild) {
                // Behind a has-child step a capture names the child.
                const QVSelectorCombinator *const capture = step;
                step = step->_previous;
                if (const QVMatch *child = step->matchThroughWhichReached(current))
                    keepText(*capture, child);
            } else {
                keepText(*step, current);
            }
            break;
        default:
            // The steps that only sift let the match itself pass.
            break;
        }
    }
    return captures;
}

} // namespace quorvane
