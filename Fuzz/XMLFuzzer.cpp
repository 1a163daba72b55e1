// Package files: any bytes give a tree or an error, never both and never neither; the tree is one that
// readers can count on.
#include "Fuzz/FuzzTarget.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/XML/QVXMLDocument.h"
#include "Quorvane/XML/QVXMLTextNode.h"

using namespace quorvane;

namespace {

void walk(const QVXMLElement &element, std::size_t depth) {
    fuzz::require(depth <= limits::xmlNestingDepth);
    for (const auto &child : element.children()) {
        fuzz::require(child->lineNumber() >= 1);
        if (const auto *inner = dynamic_cast<const QVXMLElement *>(child.get())) {
            fuzz::require(inner->name().length() > 0);
            walk(*inner, depth + 1);
        } else {
            fuzz::require(dynamic_cast<const QVXMLTextNode *>(child.get()) != nullptr);
        }
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::silenceLog();
    std::shared_ptr<NSError> error;
    const auto document =
        QVXMLDocument::initWithData(NSData(std::vector<std::uint8_t>(data, data + size)), &error);
    fuzz::require((document == nullptr) == (error != nullptr));
    if (!document) {
        fuzz::require(error->code() != 0);
        return 0;
    }
    const auto &root = *document->rootElement();
    fuzz::require(root.children().size() == 1);
    walk(root, 0);
    fuzz::require(root.stringValue() == root.text());
    return 0;
}
