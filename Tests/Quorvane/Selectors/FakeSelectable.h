#pragma once

#include "Quorvane/Selectors/QVSelectable.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"

#include <deque>
#include <string>

namespace quorvane::test {

/// A node of a tree that a test draws as text.
class FakeSelectable final : public QVSelectable {
public:
    std::string name;
    std::shared_ptr<const QVSimpleSelector> ownSelector;
    FakeSelectable *parent = nullptr;
    FakeSelectable *next = nullptr;
    std::vector<FakeSelectable *> children;
    bool isContainer = false;
    mutable int enumerations = 0;
    mutable int questions = 0;

    const QVSimpleSelector *selector() const override {
        ++questions;
        return ownSelector.get();
    }
    QVSelectable *parentSelectable() const override { return parent; }
    QVSelectable *nextSelectable() const override { return next; }
    bool offersSelectableChildren() const override { return isContainer; }
    void enumerateSelectableChildrenUsingBlock(
        QVBlock<void(QVSelectable *child, bool &stop)> block) const override {
        ++enumerations;
        bool stop = false;
        for (FakeSelectable *child : children) {
            block(child, stop);
            if (stop)
                return;
        }
    }
};

/// A tree from a drawing such as "a(b.x c#2(d) -)": blanks separate siblings, parentheses hold children (and
/// make a container even when they hold none), a "#" begins a mark that tells nodes of one class apart, and
/// "-" is a node without a selector. Nodes are named by what is drawn, and answer their next sibling.
class FakeTree {
public:
    explicit FakeTree(std::string_view drawing) { readSiblings(drawing, nullptr, _roots); }

    FakeSelectable *root() const { return _roots.front(); }
    /// The node of that name.
    FakeSelectable *operator[](std::string_view name) {
        for (FakeSelectable &node : _nodes)
            if (node.name == name)
                return &node;
        return nullptr;
    }

private:
    void readSiblings(std::string_view &drawing, FakeSelectable *parent,
                      std::vector<FakeSelectable *> &into) {
        while (!drawing.empty() && drawing.front() != ')') {
            if (drawing.front() == ' ') {
                drawing.remove_prefix(1);
                continue;
            }
            FakeSelectable &node = _nodes.emplace_back();
            node.name = drawing.substr(0, drawing.find_first_of(" ()"));
            drawing.remove_prefix(node.name.size());
            node.parent = parent;
            if (node.name.front() != '-')
                node.ownSelector = QVSimpleSelector::simpleSelectorWithString(
                    NSString::stringWithUTF8String(node.name.substr(0, node.name.find('#'))));
            if (!into.empty())
                into.back()->next = &node;
            into.push_back(&node);
            if (!drawing.empty() && drawing.front() == '(') {
                drawing.remove_prefix(1);
                node.isContainer = true;
                readSiblings(drawing, &node, node.children);
                drawing.remove_prefix(1);
            }
        }
    }

    std::deque<FakeSelectable> _nodes;
    std::vector<FakeSelectable *> _roots;
};

/// The names of nodes, separated by blanks; "null" for none.
inline std::string namesOf(const std::vector<QVSelectable *> &nodes) {
    std::string text;
    for (const QVSelectable *node : nodes)
        text += (text.empty() ? "" : " ") +
                (node ? static_cast<const FakeSelectable *>(node)->name : std::string("null"));
    return text;
}

} // namespace quorvane::test
