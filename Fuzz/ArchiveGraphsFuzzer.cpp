// Archives of a small graph of classes: what comes out, circles and all, is written and read again.
#include "Fuzz/FuzzTarget.h"

#include "Tests/Support/ArchiveFixtures.h"

#include <unordered_set>

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::size_t countOfNodes(const std::shared_ptr<Node> &root) {
    std::unordered_set<const Node *> seen{root.get()};
    std::vector<std::shared_ptr<Node>> pending{root};
    while (!pending.empty()) {
        const auto node = pending.back();
        pending.pop_back();
        auto reached = node->children;
        reached.push_back(node->back.lock());
        for (const auto &next : reached)
            if (next && seen.insert(next.get()).second)
                pending.push_back(next);
    }
    return seen.size();
}

/// Nodes own their children, which a hostile archive may close to a circle; this opens it.
struct Dismantling {
    std::vector<std::weak_ptr<Node>> nodes;
    Dismantling() { Node::notedNodes = &nodes; }
    ~Dismantling() {
        Node::notedNodes = nullptr;
        std::vector<std::shared_ptr<Node>> children;
        for (const auto &noted : nodes)
            if (const auto node = noted.lock())
                std::move(node->children.begin(), node->children.end(), std::back_inserter(children));
    }
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const NSData archive(std::vector<std::uint8_t>(data, data + size));
    const Dismantling dismantling;
    std::shared_ptr<NSError> error;
    const auto node = NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(archive, &error);
    fuzz::require((node == nullptr) == (error != nullptr));
    if (!node)
        return 0;
    const std::size_t count = countOfNodes(node);
    const NSData again = NSKeyedArchiver::archivedDataWithRootObject(node);
    const auto copy = NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(again, &error);
    fuzz::require(copy != nullptr && countOfNodes(copy) == count);
    return 0;
}
