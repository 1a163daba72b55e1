#pragma once

#include "Platform/Foundation/QVBlock.h"
#include "Platform/Foundation/QVExport.h"

namespace quorvane {

class QVSimpleSelector;

/// What selectors can name: a node of a grammar's tree or of a match tree, with its class set and its
/// relations. For walks only: nobody keeps a pointer to one past the access under which it was got.
class QV_EXPORT QVSelectable {
public:
    /// The node's own class set. A node without one (null) never matches, its children are visited all the
    /// same.
    virtual const QVSimpleSelector *selector() const = 0;
    /// The enclosing node, null at the top.
    virtual QVSelectable *parentSelectable() const = 0;
    /// The following sibling, null behind the last.
    virtual QVSelectable *nextSelectable() const = 0;

    /// Whether the node's class enumerates children at all. Relations that need a container ask this, so a
    /// container that happens to be empty still answers true.
    virtual bool offersSelectableChildren() const { return false; }
    /// The children in document order, until the callback sets stop. Nothing unless
    /// `offersSelectableChildren`.
    virtual void
    enumerateSelectableChildrenUsingBlock(QVBlock<void(QVSelectable *child, bool &stop)> block) const {
        static_cast<void>(block);
    }

    /// Whether both are the same node.
    bool isEqualToSelectable(const QVSelectable *other) const { return this == other; }

protected:
    QVSelectable() = default;
    QVSelectable(const QVSelectable &) = default;
    QVSelectable &operator=(const QVSelectable &) = default;
    /// Nobody owns a node through this interface.
    ~QVSelectable() = default;
};

} // namespace quorvane
