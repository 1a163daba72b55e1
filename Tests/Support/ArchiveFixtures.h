#pragma once

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSKeyedArchiver.h"

#include <map>
#include <mutex>

/// A small graph of archivable classes: a node with children, a back link and attachments, a subclass of it,
/// and a class whose objects are interned by name.
namespace quorvane::test {

/// Reading answers the one object of that name; null for the empty name and an error for "!fail".
class Interned final : public NSSecureCoding {
public:
    static std::shared_ptr<Interned> named(const NSString &name) {
        static std::mutex mutex;
        static std::map<NSString, std::shared_ptr<Interned>> known;
        const std::lock_guard guard(mutex);
        auto &entry = known[name];
        if (!entry) {
            entry = std::make_shared<Interned>();
            entry->_name = name;
        }
        return entry;
    }

    static const NSCodingClass &codingClass() {
        static constexpr NSCodingClass description{
            u"Interned", nullptr,
            []() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<Interned>(); }};
        return description;
    }
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override { coder.encodeString(_name, u"name"); }
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder, std::shared_ptr<NSSecureCoding>) override {
        const NSString name = coder.decodeString(u"name");
        if (name == u"!fail")
            coder.failWithError(NSError::errorWithDomain(u"InternedErrorDomain", 12));
        // Names from anywhere would fill the table for ever.
        return name.length() == 0 || name.length() > 8 ? nullptr : named(name);
    }

private:
    NSString _name;
};

class Node : public NSSecureCoding {
public:
    NSString name;
    std::vector<std::shared_ptr<Node>> children;
    std::weak_ptr<Node> back;
    std::vector<std::shared_ptr<Interned>> attachments;
    bool hadAttachments = false;
    std::shared_ptr<Interned> single;

    static std::shared_ptr<Node> make(NSString name, std::vector<std::shared_ptr<Node>> children = {}) {
        auto node = std::make_shared<Node>();
        node->name = std::move(name);
        node->children = std::move(children);
        return node;
    }

    /// Where every node made from now on is noted, null for nowhere: a hostile archive may make nodes own
    /// each other in a circle.
    inline static std::vector<std::weak_ptr<Node>> *notedNodes = nullptr;
    static std::shared_ptr<Node> noted(std::shared_ptr<Node> node) {
        if (notedNodes)
            notedNodes->push_back(node);
        return node;
    }

    /// "name(child child)", for trees without cycles.
    std::u16string drawing() const {
        std::u16string text(name.view());
        for (std::size_t index = 0; index < children.size(); ++index)
            text += (index == 0 ? u"(" : u" ") + children[index]->drawing();
        return children.empty() ? text : text + u")";
    }

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override {
        coder.encodeString(name, u"name");
        coder.encodeArray(children, u"children");
        coder.encodeObject(back.lock(), u"back");
        coder.encodeArray(attachments, u"attachments");
        coder.encodeObject(single, u"single");
    }
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override {
        name = coder.decodeString(u"name");
        children = coder.decodeArrayOfClass<Node>(u"children").value_or(children);
        back = coder.decodeObjectOfClass<Node>(u"back");
        auto decoded = coder.decodeArrayOfClass<Interned>(u"attachments");
        hadAttachments = decoded.has_value();
        attachments = std::move(decoded).value_or(attachments);
        single = coder.decodeObjectOfClass<Interned>(u"single");
        return self;
    }
};

class SpecialNode final : public Node {
public:
    NSInteger extra = 0;

    static const NSCodingClass &codingClass() {
        static const NSCodingClass description{
            u"SpecialNode", &Node::codingClass(),
            []() -> std::shared_ptr<NSSecureCoding> { return noted(std::make_shared<SpecialNode>()); }};
        return description;
    }
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override {
        Node::encodeWithCoder(coder);
        coder.encodeInteger(extra, u"extra");
    }
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override {
        extra = coder.decodeInteger(u"extra");
        return Node::initWithCoder(coder, std::move(self));
    }
};

inline const NSCodingClass &Node::codingClass() {
    static constexpr NSCodingClass description{
        u"Node", nullptr, []() -> std::shared_ptr<NSSecureCoding> { return noted(std::make_shared<Node>()); },
        []() -> std::span<const NSCodingClass *const> {
            static const NSCodingClass *const subclasses[] = {&SpecialNode::codingClass()};
            return subclasses;
        }};
    return description;
}

} // namespace quorvane::test
