#pragma once

#include "Platform/Foundation/NSCoder.h"
#include "Platform/Foundation/QVBlock.h"

#include <algorithm>
#include <span>

namespace quorvane {

class QVSelectable;

/// A set of class names such as "string.quoted": what a node is, and what a theme or a grammar asks nodes to
/// be. A selector matches every node that carries at least all of its classes. Selectors are immutable and
/// interned in one table for the process's life, so scopes and styles that name the same classes share one
/// object and a raw pointer to an interned selector stays good. Any thread may make and use them.
///
/// Matching compares sorted numbers of class names, after a test of one word that settles most pairs.
class QV_EXPORT QVSimpleSelector final : public NSObject, public NSSecureCoding {
public:
    /// The selector of "*": no classes, matches everything.
    static const std::shared_ptr<const QVSimpleSelector> &universalSelector();
    /// The interned selector of a dotted text. Characters other than "*", word characters, "." and "-" are
    /// dropped; the order of the classes makes no difference, the text seen first stays. An empty text is one
    /// empty class, not the universal selector. Null for a null text.
    static std::shared_ptr<const QVSimpleSelector> simpleSelectorWithString(const NSString &string);
    /// A selector for each piece of the text between commas, in order; none for a null text.
    static std::vector<std::shared_ptr<const QVSimpleSelector>>
    simpleSelectorsJoinedByString(const NSString &string);
    /// A selector that is not interned.
    static std::shared_ptr<const QVSimpleSelector> initWithString(NSString string,
                                                                  const std::vector<NSString> &classes);

    /// Walks the tree depth first, parents before children, and reports each node once that any of the
    /// selectors matches, until the callback sets stop.
    static void
    walkTreeStartingAtSelectable(QVSelectable *selectable,
                                 std::span<const std::shared_ptr<const QVSimpleSelector>> withSelectors,
                                 QVBlock<void(QVSelectable *node, bool &stop)> usingBlock);
    /// The same; false when the callback asked to stop.
    static bool walkTreeRecursivelyStartingAtSelectable(
        QVSelectable *selectable, std::span<const std::shared_ptr<const QVSimpleSelector>> withSelectors,
        QVBlock<void(QVSelectable *node, bool &stop)> usingBlock);

    const std::set<NSString> &classes() const { return _classes; }
    /// The text without the characters that were dropped, in the order written.
    const NSString &string() const { return _string; }
    /// The number of classes.
    NSUInteger specificity() const { return _classes.size(); }

    /// Orders by specificity alone, ascending; null counts as 0.
    NSComparisonResult compare(const QVSimpleSelector *other) const;

    /// Whether this selector, the pattern, matches a node with the other one. True for every node, null
    /// included, if this one is empty or holds "*".
    bool matchesSelector(const QVSimpleSelector *selector) const {
        if (_empty || _universal)
            return true;
        return selector != nullptr && (_classMask & ~selector->_classMask) == 0 &&
               std::includes(selector->_classNumbers.begin(), selector->_classNumbers.end(),
                             _classNumbers.begin(), _classNumbers.end());
    }
    /// The same against a set of names.
    bool matchesClasses(const std::set<NSString> &classes) const;
    /// Whether the name is among the classes; also true if this one is empty or holds "*".
    bool matchesClass(const NSString &name) const;

    /// The same instance.
    std::shared_ptr<const QVSimpleSelector> copy() const;

    /// By the text alone.
    bool isEqual(const NSObject *other) const override;
    std::size_t hash() const override { return _string.hash(); }
    std::u16string_view className() const override { return u"QVSimpleSelector"; }
    /// "<%@: %p : classes=(%@)>", the classes in alphabetical order.
    NSString description() const override;

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    /// Answers the interned selector of the archived text where there is one.
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    QVSimpleSelector() = default;
    void setClasses(std::set<NSString> classes);

    NSString _string = u"";
    std::set<NSString> _classes;
    /// One number for each class name of the process, ascending.
    std::vector<std::uint32_t> _classNumbers;
    /// The bit of each number modulo 64.
    std::uint64_t _classMask = 0;
    bool _empty = true;
    bool _universal = false;
};

} // namespace quorvane
