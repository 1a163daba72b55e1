#pragma once

#include "Quorvane/Selectors/QVSelectable.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"

namespace quorvane {

class QVMatch;

/// The relation of a step to the step before it. The numbers are part of archives.
enum QVSelectorCombinatorType : std::uint64_t {
    /// The head of a chain.
    QVSelectorCombinatorTypeNone = 0,
    /// White space: descendants.
    QVSelectorCombinatorTypeSimple = 1,
    /// ">"
    QVSelectorCombinatorTypeChild = 2,
    /// "~": all that follow.
    QVSelectorCombinatorTypeIndirectAdjacent = 3,
    /// "+": the next one.
    QVSelectorCombinatorTypeDirectAdjacent = 4,
    /// ":not("
    QVSelectorCombinatorTypeNot = 5,
    /// ":has-child("
    QVSelectorCombinatorTypeHasChild = 6,
    /// ":capture("
    QVSelectorCombinatorTypeCapture = 7,
};

/// The name of a type; "unknown" for any other number.
QV_EXPORT NSString QVSelectorCombinatorTypeToString(NSUInteger type);

/// One step of a compound selector such as "function:capture(name) > argument:not(optional)"; a chain of
/// steps says how nodes stand to each other. Completion providers are selected this way.
///
/// An evaluation leaves in each step the nodes that it let pass, each once, and for each the node through
/// which it was first reached; captures are read from there afterwards. So a chain serves one thread at a
/// time, and whoever shares one evaluates a copy. The nodes stay valid only during the access to their tree
/// under which the evaluation ran.
class QV_EXPORT QVSelectorCombinator final : public NSObject, public NSSecureCoding {
public:
    using Selectors = std::vector<std::shared_ptr<const QVSimpleSelector>>;
    using Selectables = std::vector<QVSelectable *>;

    /// A step with no alternatives.
    QVSelectorCombinator() = default;
    QVSelectorCombinator(const QVSelectorCombinator &) = delete;
    QVSelectorCombinator &operator=(const QVSelectorCombinator &) = delete;
    ~QVSelectorCombinator() override;

    /// The heads of the chains of a whole selector list, one for each alternative between commas outside of
    /// parentheses. Where `specificity` is given it is set to four numbers, of which the third counts the
    /// classes of all chains and the others are 0. An alternative that is empty, holds a "[" or has more
    /// steps than `limits::selectorChainLength` is skipped after logging "Could not compile selector: %@".
    /// White space around combinators and commas goes; elsewhere a run of two or more blanks vanishes without
    /// a trace, so that "a  b" is one class while "a b" is a descendant.
    static std::vector<std::shared_ptr<QVSelectorCombinator>>
    selectorCombinatorsFromString(const NSString &string, std::vector<NSUInteger> *specificity);
    /// The head of one chain, without the list's treatment of white space. The text is consumed: left empty
    /// on success, and as it is where the answer is null (an empty text, a "[", too many steps).
    static std::shared_ptr<QVSelectorCombinator> selectorCombinatorsFromString(std::u16string &string);
    /// The parts between commas outside of parentheses, at least one.
    static std::vector<std::u16string> splitOnCommas(std::u16string_view string);

    /// Lets nodes through a step and all steps after it and answers what comes out at the end. No step (null)
    /// lets everything through.
    static Selectables updateMatches(Selectables matches, QVSelectorCombinator *withCombinator);

    /// Evaluates the chain from this head on the nodes, or, recursively, on all nodes of the trees below
    /// them. The head's type plays no part. Answers each node once.
    Selectables evaluateWithArray(const Selectables &array, bool recursively);

    /// What the steps named by ":capture(" matched on the way to a match that the last evaluation of this
    /// chain answered: texts of the source by name. Needs the same access to the parse as the evaluation.
    std::map<NSString, NSString> capturesStartingAtMatch(QVMatch *match, QVTextReader outOfSource) const;

    /// Forgets the last evaluation, in this step and all after it.
    void clearMatches();

    /// A `QVSelectorCombinatorType`; archives may bring other numbers.
    NSUInteger type() const { return _type; }
    void setType(NSUInteger type) { _type = type; }
    /// Alternatives: the step matches a node when any of them does. Empty for captures.
    const Selectors &simpleSelectors() const { return _simpleSelectors; }
    void setSimpleSelectors(Selectors selectors) { _simpleSelectors = std::move(selectors); }
    /// The following step, null at the end of the chain.
    const std::shared_ptr<QVSelectorCombinator> &next() const { return _next; }
    /// Links the step behind this one and this one before it. A step that would close a circle or make the
    /// chain longer than `limits::selectorChainLength` is refused: the answer is false and nothing changes.
    bool setNext(std::shared_ptr<QVSelectorCombinator> next);
    /// The preceding step, null at the head or when it is gone.
    QVSelectorCombinator *previous() const { return _previous; }
    /// Null except for captures.
    const NSString &captureName() const { return _captureName; }
    void setCaptureName(NSString captureName) { _captureName = std::move(captureName); }
    /// The nodes that the step let pass in the last evaluation, and at the same index the node through which
    /// each was reached.
    const Selectables &matches() const { return _matches; }
    void setMatches(const Selectables &matches) { _matches = matches; }
    const Selectables &matchedThrough() const { return _matchedThrough; }
    void setMatchedThrough(const Selectables &matchedThrough) { _matchedThrough = matchedThrough; }

    /// A chain of its own from this step on, without the last evaluation.
    std::shared_ptr<QVSelectorCombinator> copy() const;

    std::u16string_view className() const override { return u"QVSelectorCombinator"; }
    /// "<%@: %p : type=%@>"
    NSString description() const override;

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    /// Fails the archive when its steps form a circle or too long a chain.
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    class Evaluation;

    bool matchesNode(const QVSelectable *node) const;
    /// The node through which a match of this step was reached, null for any other node.
    QVSelectable *nodeThroughWhichMatched(const QVSelectable *match) const;
    QVMatch *matchThroughWhichReached(const QVMatch *match) const;

    NSUInteger _type = QVSelectorCombinatorTypeNone;
    Selectors _simpleSelectors;
    std::shared_ptr<QVSelectorCombinator> _next;
    QVSelectorCombinator *_previous = nullptr;
    NSString _captureName;
    Selectables _matches;
    Selectables _matchedThrough;
};

} // namespace quorvane
